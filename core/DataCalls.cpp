// The C interface: whole data objects of the current shot. Each call works on an object of its own.
#include <algorithm>

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "data/Waveform.h"
#include "experiment/Experiment.h"

namespace {

template <typename T>
void Put(T* target, T value) {
    if (target) *target = value;
}

// Reads a trace; one whose name leads to no file stays as it was made.
void ReadWaveform(const char* name, int points, Waveform& waveform) {
    const DString path = Expt.GetDataFileName(name);
    if (!path.IsEmpty()) waveform.Read(path, points);
}

// Stores a trace of `points` samples; `fill(samples)` gives them.
template <typename Fill>
void StoreWaveform(const char* name, float start, float step, int points, Fill fill) {
    Waveform waveform(0);
    waveform.Size(points);
    if (waveform.Count() != points) return;
    waveform.m_TimePerPoint = step;
    waveform.m_InitialStart = start;
    fill(waveform.Data());
    waveform.Scale();
    const DString path = Expt.GetDataFileName(name);
    if (!path.IsEmpty()) waveform.Write(path);
}

}  // namespace

void GetWaveformInfoC(const char* name, int* points, float* start, float* step) {
    Waveform waveform(0);
    ReadWaveform(name, 0, waveform);
    Put(points, waveform.m_HeaderPoints);
    Put(start, waveform.StartTime());
    Put(step, waveform.m_TimePerPoint);
}

void GetWaveformC(const char* name, float start, float step, int points, float* data) {
    if (!data || points <= 0) return;
    Waveform waveform(0);
    ReadWaveform(name, -1, waveform);
    waveform.Align(points, start, step);
    const int available = std::min(points, waveform.Count());
    std::copy_n(waveform.Data(), available, data);
    std::fill(data + available, data + points, 0.0f);
}

void SetWaveformC(const char* name, float start, float step, int points, const float* data) {
    points = std::max(points, 0);
    if (!data && points > 0) return;
    StoreWaveform(name, start, step, points,
                  [=](float* samples) { std::copy_n(data, points, samples); });
}

void SetWaveformXYC(const char* name, int points, const float* xy) {
    if (!xy || points < 2) return;
    const long last = 2 * (static_cast<long>(points) - 1);
    const float step = (xy[last] - xy[0]) / static_cast<float>(points - 1);
    StoreWaveform(name, xy[0], step, points, [=](float* samples) {
        for (long i = 0; i < points; ++i)
            samples[i] = xy[2 * i + 1];
    });
}
