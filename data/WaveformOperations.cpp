// Waveform: resampling, the time axis, extrema and scale unit, calibration, and the way from time
// to index.
#include <math.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <bit>
#include <limits>

#include "core/CoreGlobal.h"
#include "data/Numeric.h"
#include "data/SampleRuns.h"
#include "data/Waveform.h"

namespace {

/// The positions of new points in samples of the old trace, summed up in double, point by point.
class Positions {
public:
    /// Points that are looked ahead at once: a few, so that the chain of sums goes on while the
    /// points before are interpolated.
    static constexpr int Ahead = 16;

    /// `last` is the greatest position that is asked for.
    Positions(double start, double increment, double last)
        : m_Next(start), m_Increment(increment), m_IsExact(IsExact(last)) {}

    double Next() const { return m_Next; }
    void Advance() { m_Next += m_Increment; }
    /// All positions lie at the same place between two samples.
    bool HaveOneFraction() const { return m_IsExact && m_Increment == 1.0; }

    /// Passes over those of the next `points` positions that are below `end`, where all have one
    /// fraction and the next one is below it; their number.
    int PassBelow(double end, int points) {
        const int count = static_cast<int>(std::min<double>(points, ceil(end - m_Next)));
        m_Next += count;
        return count;
    }

    /// The next positions if all of them are at least 0 and below `end`. False, with nothing done,
    /// otherwise.
    bool TakeBelow(double end, double (&positions)[Ahead]) {
        // Sums that are exact don't depend on their order.
        double next = m_Next;
        if (m_IsExact) {
            for (int j = 0; j < Ahead; ++j)
                positions[j] = m_Next + j * m_Increment;
            next = m_Next + Ahead * m_Increment;
        } else {
            for (double& position : positions) {
                position = next;
                next += m_Increment;
            }
        }
        const double final = positions[Ahead - 1];
        if (!(m_Next >= 0 && m_Next < end && final >= 0 && final < end)) return false;
        m_Next = next;
        return true;
    }

private:
    // The value of the lowest bit that is set in a finite number.
    static double LowestBit(double value) {
        constexpr int Digits = std::numeric_limits<double>::digits;
        int exponent = 0;
        const auto bits = static_cast<int64_t>(ldexp(frexp(fabs(value), &exponent), Digits));
        if (bits == 0) return INFINITY;
        return ldexp(1.0, exponent - Digits + std::countr_zero(static_cast<uint64_t>(bits)));
    }

    // No sum has more digits than a double, since all are multiples of the lowest bit. A zero keeps
    // its sign only where nothing is added to it.
    bool IsExact(double last) const {
        if (!isfinite(m_Next) || !isfinite(m_Increment)) return false;
        if (m_Next == 0.0 && signbit(m_Next)) return false;
        const double greatest = std::max(fabs(m_Next), last) + Ahead * fabs(m_Increment);
        const double unit = std::min(LowestBit(m_Next), LowestBit(m_Increment));
        return greatest < unit * 0x1p53;
    }

    double m_Next;
    double m_Increment;
    bool m_IsExact;
};

float FractionOf(double position) {
    return static_cast<float>(position - static_cast<int>(position));
}

template <typename Value>
Value Between(Value before, Value behind, Value fraction) {
    return before + (behind - before) * fraction;
}

// Two samples from each of two places.
FourFloats LoadPairs(const float* first, const float* second) {
    using Pairs [[gnu::vector_size(16)]] = int64_t;
    int64_t pairs[2];
    memcpy(&pairs[0], first, sizeof pairs[0]);
    memcpy(&pairs[1], second, sizeof pairs[1]);
    return std::bit_cast<FourFloats>(Pairs{pairs[0], pairs[1]});
}

// One step for all points after the other, and each for several points at once. The target may lie
// among the samples if no point of it is behind the sample of its own position.
void InterpolateBlock(const float* source, const double (&positions)[Positions::Ahead],
                      float* target) {
    int index[Positions::Ahead];
    float fraction[Positions::Ahead];
    for (int j = 0; j < Positions::Ahead; ++j)
        index[j] = static_cast<int>(positions[j]);
    for (int j = 0; j < Positions::Ahead; ++j)
        fraction[j] = static_cast<float>(positions[j] - index[j]);
    for (int j = 0; j < Positions::Ahead; j += 4) {
        const FourFloats low = LoadPairs(source + index[j], source + index[j + 1]);
        const FourFloats high = LoadPairs(source + index[j + 2], source + index[j + 3]);
        const FourFloats before = __builtin_shufflevector(low, high, 0, 2, 4, 6);
        const FourFloats behind = __builtin_shufflevector(low, high, 1, 3, 5, 7);
        const FourFloats values = Between(before, behind, LoadFour(fraction + j));
        memcpy(target + j, &values, sizeof values);
    }
}

// The same for as many positions as there are points, each 1 behind the one before, so that all
// have one fraction. They go through an array of their own, since the target may lie among the
// samples.
void InterpolateAlike(const float* source, double position, float* target, int points) {
    constexpr int PointsPerBlock = 64;
    const float* samples = source + static_cast<int>(position);
    const float fraction = FractionOf(position);
    float values[PointsPerBlock];
    for (int done = 0; done < points; done += PointsPerBlock) {
        const int count = std::min(points - done, PointsPerBlock);
        for (int j = 0; j < count; ++j)
            values[j] = Between(samples[done + j], samples[done + j + 1], fraction);
        std::copy_n(values, count, target + done);
    }
}

// Fills `target` by linear interpolation at `start`, in samples of `source`, and every
// `increment` from there. Points outside `source` stay as they are; the result is the index of the
// first one behind it.
int Interpolate(const DArray<float>& source, double start, double increment,
                DArray<float>& target) {
    const int points = target.Count();
    const int last = source.Count() - 1;
    Positions position(start, increment, last);
    int k = 0;
    for (; k < points && position.Next() < 0; ++k)
        position.Advance();
    if (position.HaveOneFraction() && k < points && position.Next() < last) {
        const double first = position.Next();
        const int count = position.PassBelow(last, points - k);
        InterpolateAlike(source.Data(), first, target.Data() + k, count);
        k += count;
    }
    double ahead[Positions::Ahead];
    while (points - k >= Positions::Ahead && position.TakeBelow(last, ahead)) {
        InterpolateBlock(source.Data(), ahead, target.Data() + k);
        k += Positions::Ahead;
    }
    for (; k < points && position.Next() >= 0 && position.Next() < last; ++k) {
        const int i = static_cast<int>(position.Next());
        target[k] = Between(source[i], source[i + 1], FractionOf(position.Next()));
        position.Advance();
    }
    if (k < points && position.Next() == last) target[k++] = source[last];
    return k;
}

// No point is ahead of the samples that it comes from, and an array made anew would be no bigger or
// smaller. Memory that is new costs more than the interpolation.
bool CanAlignInPlace(const Waveform& trace, int points, float start, float increment) {
    const DArray<float> fresh;
    const int64_t capacity = int64_t{points} + fresh.m_Grain - points % fresh.m_Grain;
    return points > 0 && points == trace.Count() && trace.m_Capacity == capacity && start >= 0.0f &&
           increment >= 1.0f;
}

// What counts as a minimum lies above this limit, so that the mark of a replaced sample never does.
bool CanBeMinimum(float sample) { return static_cast<double>(sample) > -9.9e33; }

/// Collects extrema block by block. Where the samples of a block are all valid, their places are
/// found at the end, and only in the block that holds them.
class ExtremaSearch {
public:
    explicit ExtremaSearch(Waveform& trace) : m_Trace(trace) {}

    void TakeBlock(int from, int to) {
        const SampleRange range = RangeOf(m_Trace.Data() + from, to - from);
        if (range.m_HasNaN || !CanBeMinimum(range.m_Min) || !IsVF(range.m_Max)) {
            for (int k = from; k < to; ++k)
                TakeSample(k);
            return;
        }
        if (range.m_Max > m_Max.m_Value) m_Max = {range.m_Max, from, to};
        if (range.m_Min < m_Min.m_Value) m_Min = {range.m_Min, from, to};
    }

    void Finish() {
        Locate(m_Max, m_Trace.m_Max, m_Trace.m_MaxIndex);
        Locate(m_Min, m_Trace.m_Min, m_Trace.m_MinIndex);
    }

private:
    struct Extreme {
        float m_Value;
        int m_From = 0;  ///< it stands from this index on,
        int m_To = 0;    ///< ahead of this one, or nowhere if that is 0
    };

    void TakeSample(int k) {
        float& sample = m_Trace[k];
        if (!IsVF(sample)) sample = -DFMax;
        if (sample > m_Max.m_Value) m_Max = {sample, k, k + 1};
        if (sample < m_Min.m_Value && CanBeMinimum(sample)) m_Min = {sample, k, k + 1};
    }

    void Locate(const Extreme& extreme, float& value, int& index) const {
        value = extreme.m_Value;
        index = 0;
        if (extreme.m_To == 0) return;
        const auto isExtreme = [value](auto sample) { return sample == value; };
        const int k = FindFirst(m_Trace.Data(), extreme.m_From, extreme.m_To, isExtreme);
        value = m_Trace[k];  // the same but for the sign of a zero
        index = k + 1;
    }

    Waveform& m_Trace;
    Extreme m_Max{-DFMax};
    Extreme m_Min{DFMax};
};

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
    if (CanAlignInPlace(*this, n, position, increment)) {
        ReSize(1, n);
        const int end = Interpolate(*this, static_cast<double>(position),
                                    static_cast<double>(increment), *this);
        std::fill(m_Data + end, m_Data + n, 0.0f);
    } else {
        DArray<float> resampled(n);
        Interpolate(*this, static_cast<double>(position), static_cast<double>(increment),
                    resampled);
        SwapData(resampled);
    }
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
    constexpr int SamplesPerBlock = 4096;
    ExtremaSearch search(*this);
    int from = 0;
    for (; Count() - from > SamplesPerBlock; from += SamplesPerBlock)
        search.TakeBlock(from, from + SamplesPerBlock);
    search.TakeBlock(from, Count());
    search.Finish();
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
