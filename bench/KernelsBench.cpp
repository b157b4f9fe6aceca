// Arithmetic on the samples of data objects in memory, beside the least passes over the same
// samples that the definitions allow.
#include <math.h>
#include <string.h>

#include <algorithm>

#include "core/CoreGlobal.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/Waveform.h"
#include "support/Bench.h"

namespace {

constexpr int Samples = 10000000;
constexpr int Particles = 1000000;
const char ManySamples[] = "10,000,000 samples";

// ---- The traces

// A slow rise with a ripple on it: no level is crossed before its time, extrema are late.
float Ramp(int k) { return static_cast<float>(k) * 1e-7f + static_cast<float>(k % 64) * 1e-9f; }

// Flat but for the two ends, with the peak in the middle.
float Plateau(int k) {
    const bool low = k < Samples / 20 || k > Samples - Samples / 20;
    return low ? 0.25f : 0.75f + static_cast<float>(k % 64) * 1e-3f;
}

Waveform MakeTrace(float (*sample)(int)) {
    Waveform trace(Samples);
    for (int k = 0; k < Samples; ++k)
        trace[k] = sample(k);
    trace.m_InitialStart = 1.0f;
    trace.m_TimePerPoint = 0.5f;
    trace.Scale();
    return trace;
}

Waveform& RampTrace() {
    static Waveform trace = MakeTrace(Ramp);
    return trace;
}

Waveform& PlateauTrace() {
    static Waveform trace = [] {
        Waveform plateau = MakeTrace(Plateau);
        plateau.m_Max = 1.0f;
        plateau.m_MaxIndex = Samples / 2;
        return plateau;
    }();
    return trace;
}

template <Waveform& (*Trace)()>
void Parameter(benchmark::State& state, const char* name) {
    const Waveform& trace = Trace();
    const DString parameter(name);
    for (auto _ : state)
        benchmark::DoNotOptimize(trace.GetTraceParam(parameter));
}

// ---- Yardsticks that are bound by memory alone: independent lanes, which compilers make vectors

constexpr int Lanes = 32;

float StreamedSum(const float* samples, int count) {
    float lanes[Lanes] = {};
    for (int k = 0; k + Lanes <= count; k += Lanes) {
        for (int l = 0; l < Lanes; ++l)
            lanes[l] += samples[k + l];
    }
    float sum = 0.0f;
    for (const float lane : lanes)
        sum += lane;
    return sum;
}

using FourFloats [[gnu::vector_size(16)]] = float;

float StreamedRange(const float* samples, int count) {
    constexpr int Vectors = 4;
    FourFloats least[Vectors];
    FourFloats greatest[Vectors];
    for (int v = 0; v < Vectors; ++v)
        least[v] = greatest[v] = FourFloats{samples[0], samples[0], samples[0], samples[0]};
    for (int k = 0; k + 4 * Vectors <= count; k += 4 * Vectors) {
        for (int v = 0; v < Vectors; ++v) {
            FourFloats values;
            memcpy(&values, samples + k + 4 * v, sizeof values);
            greatest[v] = values > greatest[v] ? values : greatest[v];
            least[v] = values < least[v] ? values : least[v];
        }
    }
    float range = 0.0f;
    for (int v = 0; v < Vectors; ++v) {
        for (int l = 0; l < 4; ++l)
            range = std::max(range, greatest[v][l] - least[v][l]);
    }
    return range;
}

template <int Passes>
void SumPasses(benchmark::State& state) {
    const Waveform& trace = RampTrace();
    for (auto _ : state) {
        for (int pass = 0; pass < Passes; ++pass)
            benchmark::DoNotOptimize(StreamedSum(trace.Data(), trace.Count()));
    }
}

void RangePass(benchmark::State& state) {
    const Waveform& trace = RampTrace();
    for (auto _ : state)
        benchmark::DoNotOptimize(StreamedRange(trace.Data(), trace.Count()));
}

// ---- Sums

void Average(benchmark::State& state) { Parameter<RampTrace>(state, "av"); }
void Integral(benchmark::State& state) { Parameter<RampTrace>(state, "in"); }
void Deviation(benchmark::State& state) { Parameter<RampTrace>(state, "sd"); }
void WeightedTime(benchmark::State& state) { Parameter<RampTrace>(state, "wa"); }
void PeakIntegral(benchmark::State& state) { Parameter<RampTrace>(state, "pi"); }
void RadialIntegral(benchmark::State& state) { Parameter<RampTrace>(state, "ri"); }

// Its sum is rounded to single precision at every step, so that each step waits for the one before.
void RoundedChain(benchmark::State& state) {
    for (auto _ : state) {
        double step = 0.1;
        benchmark::DoNotOptimize(step);
        float sum = 0.0f;
        for (int k = 0; k < Samples; ++k)
            sum = static_cast<float>(static_cast<double>(sum) + step);
        benchmark::DoNotOptimize(sum);
    }
}

const Row mAverage{"av, 1 pass", ManySamples, 1.2, Average, SumPasses<1>};
const Row mIntegral{"in, 1 pass", ManySamples, 1.2, Integral, SumPasses<1>};
const Row mDeviation{"sd, 2 passes", ManySamples, 1.2, Deviation, SumPasses<2>};
const Row mWeightedTime{"wa, 1 pass for 2 sums", ManySamples, 1.2, WeightedTime, SumPasses<1>};
const Row mPeakIntegral{"pi, 1 pass", ManySamples, 1.2, PeakIntegral, SumPasses<1>};
const Row mRadialIntegral{"ri, a chain of rounded sums", ManySamples, 1.2, RadialIntegral,
                          RoundedChain};

// ---- Extrema

void TraceScale(benchmark::State& state) {
    Waveform& trace = RampTrace();
    for (auto _ : state)
        trace.Scale();
}

void MatrixScale(benchmark::State& state) {
    static Matrix matrix = [] {
        Matrix made(1000, Samples / 1000, 1);
        std::copy_n(RampTrace().Data(), Samples, made.Data());
        return made;
    }();
    for (auto _ : state)
        matrix.Scale();
}

// Eight samples a particle, so that both sides stream the same bytes.
void ParticleScale(benchmark::State& state) {
    static ParticleGroup group = [] {
        ParticleGroup made(Samples / ParticleGroup::Columns);
        std::copy_n(RampTrace().Data(), Samples, made.Data());
        return made;
    }();
    for (auto _ : state)
        group.Scale();
}

const Row mTraceScale{"Scale of a trace, 1 pass", ManySamples, 1.2, TraceScale, RangePass};
const Row mMatrixScale{"Scale of a matrix, 1 pass", ManySamples, 1.2, MatrixScale, RangePass};
const Row mParticleScale{"Scale of particles, 1 pass", ManySamples, 1.2, ParticleScale, RangePass};

// ---- Searches

int FirstAbove(const float* samples, int count, float level) {
    int k = 1;
    while (k < count - 1 && !(level < samples[k]))
        ++k;
    return k;
}

void RiseTime(benchmark::State& state) { Parameter<RampTrace>(state, "19"); }

void RiseTimePlain(benchmark::State& state) {
    const Waveform& trace = RampTrace();
    for (auto _ : state) {
        benchmark::DoNotOptimize(FirstAbove(trace.Data(), Samples, 0.9f * trace.m_Max));
        benchmark::DoNotOptimize(FirstAbove(trace.Data(), Samples, 0.1f * trace.m_Max));
    }
}

void TimeAtValue(benchmark::State& state) { Parameter<RampTrace>(state, "tv[0.95]"); }

void TimeAtValuePlain(benchmark::State& state) {
    const Waveform& trace = RampTrace();
    for (auto _ : state)
        benchmark::DoNotOptimize(FirstAbove(trace.Data(), Samples, 0.95f));
}

void Width(benchmark::State& state) { Parameter<PlateauTrace>(state, "fh"); }

void WidthPlain(benchmark::State& state) {
    const Waveform& trace = PlateauTrace();
    const float half = trace.m_Max * 0.5f;
    for (auto _ : state) {
        int left = trace.m_MaxIndex - 1;
        while (left >= 0 && !(half > trace[left]))
            --left;
        int right = trace.m_MaxIndex;
        while (right < Samples && !(half > trace[right]))
            ++right;
        benchmark::DoNotOptimize(right - left);
    }
}

const Row mRiseTime{"19, 2 searches", ManySamples, 0.5, RiseTime, RiseTimePlain};
const Row mTimeAtValue{"tv, 1 search", ManySamples, 0.5, TimeAtValue, TimeAtValuePlain};
const Row mWidth{"fh, 2 searches", ManySamples, 0.5, Width, WidthPlain};

// ---- Resampling

// Each call moves the grid by a quarter of a sample, so that every point is interpolated anew.
void Align(benchmark::State& state) {
    Waveform trace = RampTrace();
    for (auto _ : state)
        trace.Align(Samples, trace.StartTime() + 0.125f, 0.5f);
}

// The same at an interval that isn't a power of two, there and back.
void AlignOddly(benchmark::State& state) {
    Waveform trace = RampTrace();
    bool there = true;
    for (auto _ : state) {
        trace.Align(Samples, trace.StartTime() + 0.1f, there ? 0.7f : 0.3f);
        there = !there;
    }
}

void AddedPositions(benchmark::State& state) {
    for (auto _ : state) {
        double position = 0.25;
        double increment = 1.0;
        benchmark::DoNotOptimize(increment);
        for (int k = 0; k < Samples; ++k)
            position += increment;
        benchmark::DoNotOptimize(position);
    }
}

const Row mAlign{"Align, a chain of double sums", ManySamples, 1.3, Align, AddedPositions};
const Row mAlignOddly{"Align to odd intervals, the same", ManySamples, 1.3, AlignOddly,
                      AddedPositions};

// ---- Coordinates of particles

ParticleGroup MakeGroup(int geometry) {
    ParticleGroup group(Particles);
    for (int p = 0; p < Particles; ++p) {
        for (int c = 0; c < ParticleGroup::Columns; ++c)
            group[p * ParticleGroup::Columns + c] = static_cast<float>((p + c) % 1000) * 0.01f - 3;
    }
    group.m_Geometry = geometry;
    return group;
}

void SetGeometry(benchmark::State& state, int from, int to) {
    const ParticleGroup original = MakeGroup(from);
    ParticleGroup group = original;
    for (auto _ : state) {
        group.SetGeometry(to);
        state.PauseTiming();
        group = original;
        state.ResumeTiming();
    }
}

template <typename Convert>
void ConvertPlainly(benchmark::State& state, Convert convert) {
    const ParticleGroup original = MakeGroup(0);
    ParticleGroup group = original;
    for (auto _ : state) {
        for (int p = 0; p < Particles; ++p)
            convert(&group[p * ParticleGroup::Columns]);
        state.PauseTiming();
        group = original;
        state.ResumeTiming();
    }
}

void ToCartesian(benchmark::State& state) { SetGeometry(state, 1, 0); }

void ToCartesianPlain(benchmark::State& state) {
    ConvertPlainly(state, [](float* particle) {
        const float radius = particle[0];
        double sine = 0.0;
        double cosine = 0.0;
        sincos(static_cast<double>(particle[1]), &sine, &cosine);
        const float c = static_cast<float>(cosine);
        const float s = static_cast<float>(sine);
        const float u = particle[3];
        const float v = particle[4];
        particle[0] = c * radius;
        particle[1] = s * radius;
        particle[3] = c * u - s * v;
        particle[4] = c * v + s * u;
    });
}

void ToPolar(benchmark::State& state) { SetGeometry(state, 0, 1); }

void ToPolarPlain(benchmark::State& state) {
    ConvertPlainly(state, [](float* particle) {
        const double x = static_cast<double>(particle[0]);
        const double y = static_cast<double>(particle[1]);
        const double angle = atan2(y, x);
        particle[0] = static_cast<float>(sqrt(x * x + y * y));
        particle[1] = static_cast<float>(angle);
        double sine = 0.0;
        double cosine = 0.0;
        sincos(angle, &sine, &cosine);
        const float c = static_cast<float>(cosine);
        const float s = static_cast<float>(sine);
        const float u = particle[3];
        const float v = particle[4];
        particle[3] = c * u + s * v;
        particle[4] = c * v - s * u;
    });
}

const Row mToCartesian{"SetGeometry(0)", "1,000,000 particles", 1.05, ToCartesian,
                       ToCartesianPlain};
const Row mToPolar{"SetGeometry(1)", "1,000,000 particles", 1.05, ToPolar, ToPolarPlain};

}  // namespace
