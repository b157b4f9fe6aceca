// Waveform: resampling, the time axis, extrema and scale unit, calibration, and the way from time
// to index.
#include <math.h>

#include <algorithm>

#include "core/CoreGlobal.h"
#include "data/Numeric.h"
#include "data/Waveform.h"

namespace {

// Fills `target` by linear interpolation at `position`, in samples of `source`, and every
// `increment` from there. Points outside `source` stay as they are. The position is summed up in
// double, point by point.
void Interpolate(const DArray<float>& source, double position, double increment,
                 DArray<float>& target) {
    const int points = target.Count();
    const int last = source.Count() - 1;
    int k = 0;
    for (; k < points && position < 0; ++k)
        position += increment;
    for (; k < points && position >= 0 && position < last; ++k) {
        const int i = static_cast<int>(position);
        const float fraction = static_cast<float>(position - i);
        target[k] = source[i] + (source[i + 1] - source[i]) * fraction;
        position += increment;
    }
    if (k < points && position == last) target[k] = source[last];
}

// What counts as a minimum lies above this limit, so that the mark of a replaced sample never does.
bool CanBeMinimum(float sample) { return static_cast<double>(sample) > -9.9e33; }

bool IsGiven(float factor) { return factor != 0.0f && IsVF(factor); }

}  // namespace

// ---- Resampling

void Waveform::Align(int n, float start, float step) {
    const bool keepsGrid = !(step > 0.0f);
    const float newStep = keepsGrid ? m_TimePerPoint : step;
    if (m_TimeShift + m_ScopeTD + (m_ScopePT + m_InitialStart) == start &&
        newStep == m_TimePerPoint && Count() == n) {
        return;
    }
    ScopeZero();
    const float oldStart = m_InitialStart + m_TimeShift;
    if (oldStart == start && newStep == m_TimePerPoint) {
        ReSize(1, n);
        return;
    }
    const float pointsPerTime = 1.0f / m_TimePerPoint;
    float position = (start - oldStart) * pointsPerTime;
    float increment = newStep * pointsPerTime;
    if (keepsGrid) {
        position = floorf(position);
        increment = 1.0f;
        start = m_TimePerPoint * position + oldStart;
    }
    DArray<float> resampled(n);
    Interpolate(*this, static_cast<double>(position), static_cast<double>(increment), resampled);
    SwapData(resampled);
    m_InitialStart = start;
    m_TimeShift = 0.0f;
    m_TimePerPoint = newStep;
}

void Waveform::AlignTo(Waveform const& other) {
    Align(other.Count(), other.StartTime(), other.m_TimePerPoint);
    m_TimeShift = other.m_TimeShift;
    m_InitialStart = other.m_InitialStart;
}

void Waveform::TimeFill(DArray<float>& times, int from) const {
    const int first = std::max(from, 0);
    const int points = Count() > first ? Count() - first : 0;
    const float start = StartTime();
    times.Size(points);
    for (int j = 0; j < times.Count(); ++j) {
        times[j] = static_cast<float>(first + j) * m_TimePerPoint + start;
    }
}

// ---- Scale and calibration

void Waveform::Scale() {
    m_Max = -DFMax;
    m_Min = DFMax;
    m_MaxIndex = 0;
    m_MinIndex = 0;
    for (int k = 0; k < Count(); ++k) {
        float& sample = m_Data[k];
        if (!IsVF(sample)) sample = -DFMax;
        if (sample > m_Max) {
            m_Max = sample;
            m_MaxIndex = k + 1;
        }
        if (sample < m_Min && CanBeMinimum(sample)) {
            m_Min = sample;
            m_MinIndex = k + 1;
        }
    }
    const float magnitude = GreaterMagnitude(m_Min, m_Max);
    if (!IsScalable(magnitude)) m_MaxIndex = 0;
    m_ScaleUnit = ScaleUnitOf(magnitude);
}

void Waveform::SetCalAttOff(float cal, float att, float off) {
    const float newCalib = IsGiven(cal) ? cal : m_Calib;
    const float newAtten = IsGiven(att) ? att : m_Atten;
    const float oldGain = m_Atten * m_Calib;
    const float newBaseline = IsVF(off) ? off / oldGain : m_Baseline;
    const float shift = (newBaseline - m_Baseline) * oldGain;
    const float gain = newAtten * newCalib;
    const float inverse = 1.0f / oldGain;
    for (int k = 0; k < Count(); ++k)
        m_Data[k] = (m_Data[k] - shift) * gain * inverse;
    m_Baseline = newBaseline;
    m_Calib = newCalib;
    m_Atten = newAtten;
}

// ---- Time to index

int Waveform::Index(float time) const { return FloorToInt((time - StartTime()) / m_TimePerPoint); }

int Waveform::PointAtTime(float time) const {
    const float start = StartTime();
    if (start > time) return 0;
    const int last = Count() - 1;
    if (time > static_cast<float>(last) * m_TimePerPoint + start) return last;
    return std::clamp(SaturatedInt((time - start) / m_TimePerPoint), 0, std::max(last, 0));
}
