// The C interface: whole data objects of the current shot. Each call works on an object of its own.
#include <limits.h>
#include <stdint.h>

#include <algorithm>

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "core/TraceAccess.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/Waveform.h"
#include "experiment/Experiment.h"
#include "types/MemoryWatch.h"

namespace {

template <typename T>
void Put(T* target, T value) {
    if (target) *target = value;
}

// Scales an object and writes it, unless its name leads to no file.
template <typename T>
void Store(const char* name, T& object) {
    object.Scale();
    const DString path = Expt.GetDataFileName(name);
    if (!path.IsEmpty()) object.Write(path);
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
    Store(name, waveform);
}

void ReadMatrix(const char* name, Matrix& matrix) {
    const DString path = Expt.GetDataFileName(name);
    if (!path.IsEmpty()) matrix.Read(path, -1, 0);
}

// Size, first coordinate and step of an axis. An axis of one point has no step: 0 / 0.
void PutAxis(const Matrix& matrix, int dimension, int* size, float* start, float* step) {
    const int n = matrix.GetOrigSize(dimension);
    const float first = matrix.GetCoord(dimension, 0);
    Put(size, n);
    Put(start, first);
    Put(step, (matrix.GetCoord(dimension, n - 1) - first) / static_cast<float>(n - 1));
}

// The values that a caller gives for these sizes.
int64_t ValueCount(int n1, int n2, int n3) {
    const int64_t layer = int64_t{std::max(n1, 0)} * std::max(n2, 0);
    return n3 > 0 && layer > INT64_MAX / n3 ? INT64_MAX : layer * std::max(n3, 0);
}

void ReadPGroup(const char* name, int count, int first, ParticleGroup& group) {
    const DString path = Expt.GetDataFileName(name);
    if (!path.IsEmpty()) group.Read(path, count, first);
}

// Fills a group of `count` particles with the caller's, which are in the stated coordinates
// already, and scales it. False where there was no memory for them.
bool FillPGroup(ParticleGroup& group, int count, int geometry, const float* data, float second,
                float first) {
    if (group.m_Particles != std::max(count, 0) || (!data && count > 0)) return false;
    group.m_Geometry = geometry;
    group.m_HeaderA = first;
    group.m_HeaderB = second;
    std::copy_n(data, group.Count(), group.Data());
    group.Scale();
    return true;
}

}  // namespace

// ---- Traces

void ReadWaveform(const char* name, int points, Waveform& waveform) {
    const DString path = Expt.GetDataFileName(name);
    if (!path.IsEmpty()) waveform.Read(path, points);
}

void CopyAligned(Waveform& waveform, float start, float step, int points, float* data) {
    points = std::max(points, 0);
    waveform.Align(points, start, step);
    const int available = std::min(points, waveform.Count());
    std::copy_n(waveform.Data(), available, data);
    std::fill(data + available, data + points, 0.0f);
}

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
    CopyAligned(waveform, start, step, points, data);
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

// ---- Matrices

void GetMatrixInfoC(const char* name, int* n1, float* start1, float* step1, int* n2, float* start2,
                    float* step2, int* n3, float* start3, float* step3) {
    Matrix matrix(1, 1, 1);
    ReadMatrix(name, matrix);
    PutAxis(matrix, 1, n1, start1, step1);
    PutAxis(matrix, 2, n2, start2, step2);
    PutAxis(matrix, 3, n3, start3, step3);
}

void GetMatrixC(const char* name, int n1, int n2, int n3, float* data) {
    if (!data) return;
    Matrix matrix(1, 1, 1);
    ReadMatrix(name, matrix);
    if (matrix.GetSize(1) != n1 || matrix.GetSize(2) != n2 || matrix.GetSize(3) != n3) return;
    std::copy_n(matrix.Data(), std::min<int64_t>(ValueCount(n1, n2, n3), matrix.Count()), data);
}

void SetMatrixC(const char* name, int n1, int n2, int n3, const float* data, float start1,
                float step1, float start2, float step2, float start3, float step3) {
    const int64_t given = ValueCount(n1, n2, n3);
    // Of sizes that make no matrix, the axes alone could fill the memory.
    const bool tooLarge = ValueCount(std::max(n1, 1), std::max(n2, 1), std::max(n3, 1)) > INT_MAX;
    if ((!data && given > 0) || tooLarge) return;
    const MemoryWatch memory;
    Matrix matrix(1, 1, 1);
    matrix.Size(n1, n2, n3);
    if (matrix.Count() == 0 || !memory.Whole()) return;
    matrix.SetStep(1, step1, start1);
    matrix.SetStep(2, step2, start2);
    matrix.SetStep(3, step3, start3);
    std::copy_n(data, std::min<int64_t>(given, matrix.Count()), matrix.Data());
    Store(name, matrix);
}

// ---- Particle groups

void GetPGroupInfoC(const char* name, int* total, int* geometry, float* second, float* first) {
    ParticleGroup group(0);
    ReadPGroup(name, 0, 0, group);
    Put(total, group.m_FileParticles);
    Put(geometry, group.m_Geometry);
    Put(second, group.m_HeaderB);
    Put(first, group.m_HeaderA);
}

void GetPGroupC(const char* name, int* count, int start, float* data) {
    constexpr int FromStartAsCartesian = -77;
    if (!count) return;
    const bool convert = start == FromStartAsCartesian;
    ParticleGroup group(0);
    ReadPGroup(name, data ? *count : 0, convert ? 0 : start, group);
    if (convert) group.SetGeometry(0);
    if (data) std::copy_n(group.Data(), group.Count(), data);
    *count = group.m_Particles;
}

void SetPGroupC(const char* name, int count, int geometry, const float* data, float second,
                float first) {
    ParticleGroup group(count);
    if (!FillPGroup(group, count, geometry, data, second, first)) return;
    const DString path = Expt.GetDataFileName(name);
    if (!path.IsEmpty()) group.Write(path);
}

void AppendPGroupC(const char* name, int count, int geometry, const float* data, float second,
                   float first) {
    ParticleGroup group(count);
    if (!FillPGroup(group, count, geometry, data, second, first)) return;
    const DString path = Expt.GetDataFileName(name);
    if (!path.IsEmpty()) group.Append(path);
}
