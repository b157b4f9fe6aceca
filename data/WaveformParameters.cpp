// Waveform: the measurements, and the names under which they and the header are known.
#include <math.h>
#include <string.h>

#include <algorithm>
#include <iterator>

#include "core/CoreGlobal.h"
#include "data/Numeric.h"
#include "data/SampleRuns.h"
#include "data/Waveform.h"

namespace {

// ---- Levels and their crossings

bool IsOnTrace(const Waveform& trace, float level) {
    return !(level > trace.m_Max) && level >= trace.m_Min;
}

// The index behind the first crossing of `level` in the first `points` samples, at least 2. Without
// a crossing it is the last one.
int CrossingFromStart(const float* samples, int points, float level) {
    const auto below = [level](auto sample) { return level > sample; };
    const auto above = [level](auto sample) { return level < sample; };
    const bool falling = samples[0] > level;
    return falling ? FindFirst(samples, 1, points - 1, below)
                   : FindFirst(samples, 1, points - 1, above);
}

// The index ahead of the first crossing of `level` seen from the end, at least 2 points. No sample
// below `lowest` is tested: without a crossing the index is the one below that.
int CrossingFromEnd(const float* samples, int points, float level, int lowest) {
    const auto below = [level](auto sample) { return level > sample; };
    const auto above = [level](auto sample) { return level < sample; };
    const bool falling = samples[points - 1] > level;
    return falling ? FindLast(samples, points - 2, lowest, below)
                   : FindLast(samples, points - 2, lowest, above);
}

// How far `level` is on the way from samples[k] to samples[k + 1].
float Fraction(const float* samples, int k, float level) {
    return (level - samples[k]) / (samples[k + 1] - samples[k]);
}

// The abscissa that belongs to `level` in the interval from k on, which runs against the ordinate.
float ReversedAbscissa(const float* x, const float* y, int k, float level) {
    return (x[k] - x[k + 1]) * (level - y[k]) / (y[k + 1] - y[k]) + x[k + 1];
}

// ---- Measured quantities

// The time of the last of so many samples.
float FinalTime(const Waveform& trace, int points) {
    return static_cast<float>(points - 1) * trace.m_TimePerPoint + trace.StartTime();
}

float FinalTime(const Waveform& trace) { return FinalTime(trace, trace.Count()); }

float TimeOfIndex(const Waveform& trace, int index) {
    return static_cast<float>(index) * trace.m_TimePerPoint + trace.StartTime();
}

float RiseTime(const Waveform& trace, float from, float to) {
    return trace.TimeAtVal(to * trace.m_Max) - trace.TimeAtVal(from * trace.m_Max);
}

float Integral(const Waveform& trace) {
    return SumOfRun(trace.Data(), 1, trace.Count()) * trace.m_TimePerPoint;
}

// The disc is taken in units of time and the rings in points, and each step is rounded to single
// precision.
float RadialIntegral(const Waveform& trace) {
    const float radius = std::max(trace.StartTime(), 0.0f);
    const float interval = trace.m_TimePerPoint;
    const float ringArea = (interval * interval) * (pi + pi);
    const double offset = static_cast<double>(radius) + -0.5;
    float sum = radius * radius * (trace[0] * pi);
    for (int k = 1; k < trace.Count(); ++k) {
        const double ringRadius = static_cast<double>(static_cast<float>(k)) + offset;
        const double ring = static_cast<double>(trace[k] * ringArea);
        sum = static_cast<float>(static_cast<double>(sum) + ringRadius * ring);
    }
    return sum;
}

float PeakIntegral(const Waveform& trace) {
    return GreatestSum(trace.Data(), 1, trace.Count()) * trace.m_TimePerPoint;
}

float StandardDeviation(const Waveform& trace) {
    const int points = trace.Count();
    const float mean = SumOfRun(trace.Data(), 0, points) / static_cast<float>(points);
    const auto [squares] = Sums(trace.Data(), 0, points, [mean](auto sample, auto) {
        const auto deviation = sample - mean;
        return deviation * deviation;
    });
    const float divisor = points >= 2 ? static_cast<float>(points - 1) : 1.0f;
    return sqrtf(std::max(squares / divisor, 0.0f));
}

float WeightedTime(const Waveform& trace) {
    const float start = trace.StartTime();
    const float interval = trace.m_TimePerPoint;
    const auto [weight, moment] = Sums(
        trace.Data(), 0, trace.Count(), [](auto sample, auto) { return sample; },
        [=](auto sample, auto index) { return (index * interval + start) * sample; });
    return weight == 0.0f || isnan(weight) ? 0.0f : moment / weight;
}

// A position between two samples, in points.
float PointsFrom(int index, float fraction) {
    return static_cast<float>(static_cast<double>(index) + static_cast<double>(fraction));
}

// Where the samples fall below `level` to the left of index `peak`; the start of the trace if they
// don't.
float LeftEdge(const Waveform& trace, int peak, float level) {
    const int i =
        FindLast(trace.Data(), peak - 1, 0, [level](auto sample) { return level > sample; });
    if (i < 0) return 0.0f;
    const bool isLast = i == trace.Count() - 1;
    return PointsFrom(i, isLast ? 0.0f : Fraction(trace.Data(), i, level));
}

// Where they fall below it from `peak` on; the end of the trace if they don't.
float RightEdge(const Waveform& trace, int peak, float level) {
    const int end = trace.Count();
    const int i =
        FindFirst(trace.Data(), peak, end, [level](auto sample) { return level > sample; });
    if (i == end) return static_cast<float>(end - 1);
    return i == 0 ? 0.0f : PointsFrom(i - 1, Fraction(trace.Data(), i - 1, level));
}

// m_MaxIndex is the peak's index plus one, and comes from the file as it was written there.
float FullWidthAtHalfMaximum(const Waveform& trace) {
    const float half = trace.m_Max * 0.5f;
    const int peak = std::clamp(trace.m_MaxIndex, 0, std::max(trace.Count(), 0));
    return (RightEdge(trace, peak, half) - LeftEdge(trace, peak, half)) * trace.m_TimePerPoint;
}

float TimeOfLastSampleBefore(const Waveform& trace, float time) {
    const float start = trace.StartTime();
    const float interval = trace.m_TimePerPoint;
    return floorf((time - start) / interval) * interval + start;
}

// ---- Parameter names

/// A name as the caller writes it, taken apart.
struct ParsedName {
    DString m_Name;           ///< in lower case, without the argument
    float m_Argument = 0.0f;  ///< 0 if there is none
};

ParsedName ParseName(const DString& text) {
    constexpr int NameLength = 2;
    ParsedName parsed;
    parsed.m_Name = text;
    if (text.GetLength() > NameLength) {
        parsed.m_Name = text.Left(NameLength);
        const DString argument = text.Mid(NameLength + 1, text.GetLength() - NameLength - 2);
        if (!argument.ToFloat(parsed.m_Argument)) parsed.m_Argument = 0.0f;
    }
    parsed.m_Name.ToLower();
    return parsed;
}

// The entry of a table of names, null if there is none.
template <typename Entry, size_t Size>
const Entry* FindEntry(const Entry (&table)[Size], const DString& name) {
    const auto fits = [&name](const Entry& entry) { return name == entry.m_Name; };
    const Entry* entry = std::find_if(std::begin(table), std::end(table), fits);
    return entry == std::end(table) ? nullptr : entry;
}

using Trace = const Waveform&;

/// A parameter that the header answers, for a trace of so many samples.
struct HeaderParameter {
    const char* m_Name;
    float (*m_Value)(Trace trace, int points, float argument);
};

/// A parameter that is measured on the samples.
struct SampleParameter {
    const char* m_Name;
    float (*m_Value)(Trace trace, float argument);
};

template <int Index>
float FreeNumber(Trace trace, int, float) {
    return trace.m_Params[Index];
}

template <float Waveform::*Field>
float Stored(Trace trace, int, float) {
    return trace.*Field;
}

template <float (*Quantity)(Trace)>
float Measured(Trace trace, float) {
    return Quantity(trace);
}

float Percent(Trace trace, float argument) { return argument * 0.01f * trace.m_Max; }

constexpr HeaderParameter HeaderParameters[] = {
    {"t1", FreeNumber<0>},
    {"t2", FreeNumber<1>},
    {"t3", FreeNumber<2>},
    {"t4", FreeNumber<3>},
    {"t5", FreeNumber<4>},
    {"t6", FreeNumber<5>},
    {"t7", FreeNumber<6>},
    {"t8", FreeNumber<7>},
    {"t9", FreeNumber<8>},
    {"ta", FreeNumber<9>},
    {"tb", FreeNumber<10>},
    {"tc", FreeNumber<11>},
    {"st", [](Trace w, int, float) { return w.StartTime(); }},
    {"it", [](Trace w, int, float) { return w.m_ScopePT + w.m_InitialStart + w.m_ScopeTD; }},
    {"ts", Stored<&Waveform::m_TimeShift>},
    {"is", Stored<&Waveform::m_InitialStart>},
    {"pt", Stored<&Waveform::m_ScopePT>},
    {"td", Stored<&Waveform::m_ScopeTD>},
    {"ft", [](Trace w, int points, float) { return FinalTime(w, points); }},
    {"su", Stored<&Waveform::m_ScaleUnit>},
    {"mx", Stored<&Waveform::m_Max>},
    {"mn", Stored<&Waveform::m_Min>},
    {"cl", Stored<&Waveform::m_Calib>},
    {"at", Stored<&Waveform::m_Atten>},
    {"tp", Stored<&Waveform::m_TimePerPoint>},
    {"bl", Stored<&Waveform::m_Baseline>},
    {"sv", Stored<&Waveform::m_ScopeSV>},
    {"tm", [](Trace w, int, float) { return TimeOfIndex(w, w.m_MaxIndex); }},
    {"tn", [](Trace w, int, float) { return TimeOfIndex(w, w.m_MinIndex); }},
    {"lt", [](Trace w, int, float a) { return TimeOfLastSampleBefore(w, a); }},
};

constexpr SampleParameter SampleParameters[] = {
    {"19", [](Trace w, float) { return RiseTime(w, 0.1f, 0.9f); }},
    {"28", [](Trace w, float) { return RiseTime(w, 0.2f, 0.8f); }},
    {"av", [](Trace w, float) { return w.Avg(w.StartTime(), FinalTime(w)); }},
    {"in", Measured<Integral>},
    {"ri", Measured<RadialIntegral>},
    {"pi", Measured<PeakIntegral>},
    {"sd", Measured<StandardDeviation>},
    {"wa", Measured<WeightedTime>},
    {"fh", Measured<FullWidthAtHalfMaximum>},
    {"vt", [](Trace w, float a) { return w.ValAtTime(a); }},
    {"tv", [](Trace w, float a) { return w.TimeAtVal(a); }},
    {"t%", [](Trace w, float a) { return w.TimeAtVal(Percent(w, a)); }},
    {"bv", [](Trace w, float a) { return w.TimeAtValR(a); }},
    {"b%", [](Trace w, float a) { return w.TimeAtValR(Percent(w, a)); }},
    {"la", [](Trace w, float a) { return w.Avg(w.StartTime(), a); }},
};

// The parameter of the header in a trace of so many samples; -DFMax for any other name, and for a
// trace without samples.
float HeaderValue(const Waveform& trace, int points, const ParsedName& name) {
    const HeaderParameter* parameter = FindEntry(HeaderParameters, name.m_Name);
    return parameter && points != 0 ? parameter->m_Value(trace, points, name.m_Argument) : -DFMax;
}

// ---- Names of a pair of traces

struct XYParameter {
    const char* m_Name;
    float (*m_Value)(const Waveform& y, const Waveform& x, float argument);
};

// The abscissa at an index that a file may have given.
float AbscissaAt(const Waveform& x, int index) {
    return x[std::clamp(index, 0, std::max(x.Count() - 1, 0))];
}

float XYRiseTime(const Waveform& y, const Waveform& x, float from, float to) {
    return y.XYTimeAtVal(to * y.m_Max, x) - y.XYTimeAtVal(from * y.m_Max, x);
}

// The percentage runs the other way than in Percent.
float XYPercent(const Waveform& y, float argument) { return argument * 100.0f / y.m_Max; }

constexpr XYParameter XYParameters[] = {
    {"st", [](Trace, Trace x, float) { return x[0]; }},
    {"ft", [](Trace, Trace x, float) { return AbscissaAt(x, x.Count() - 1); }},
    {"tm", [](Trace y, Trace x, float) { return AbscissaAt(x, y.m_MaxIndex); }},
    {"tn", [](Trace y, Trace x, float) { return AbscissaAt(x, y.m_MinIndex); }},
    {"19", [](Trace y, Trace x, float) { return XYRiseTime(y, x, 0.1f, 0.9f); }},
    {"28", [](Trace y, Trace x, float) { return XYRiseTime(y, x, 0.2f, 0.8f); }},
    {"vt", [](Trace y, Trace x, float a) { return y.ValAtTime(x.TimeAtVal(a)); }},
    {"tv", [](Trace y, Trace x, float a) { return y.XYTimeAtVal(a, x); }},
    {"t%", [](Trace y, Trace x, float a) { return y.XYTimeAtVal(XYPercent(y, a), x); }},
    {"bv", [](Trace y, Trace x, float a) { return y.XYTimeAtValR(a, x); }},
    {"b%", [](Trace y, Trace x, float a) { return y.XYTimeAtValR(XYPercent(y, a), x); }},
    {"la", [](Trace y, Trace x, float a) { return y.Avg(y.StartTime(), x.TimeAtVal(a)); }},
    {"ta", [](Trace y, Trace x, float a) { return y.Avg(x.TimeAtVal(a), FinalTime(y)); }},
};

}  // namespace

// ---- Parameters by name

float Waveform::GetTraceParam(DString const& name) const {
    if (Count() == 0) return -DFMax;
    const ParsedName parsed = ParseName(name);
    const SampleParameter* parameter = FindEntry(SampleParameters, parsed.m_Name);
    return parameter ? parameter->m_Value(*this, parsed.m_Argument)
                     : HeaderValue(*this, Count(), parsed);
}

bool Waveform::NeedsSamples(DString const& name) {
    return FindEntry(SampleParameters, ParseName(name).m_Name) != nullptr;
}

float Waveform::GetHeaderParam(DString const& name) const {
    return HeaderValue(*this, std::max(m_HeaderPoints, 0), ParseName(name));
}

float Waveform::GetXYTraceParam(DString const& name, Waveform const& xAxis) const {
    if (Count() != xAxis.Count() || Count() == 0) return -DFMax;
    const ParsedName parsed = ParseName(name);
    const XYParameter* parameter = FindEntry(XYParameters, parsed.m_Name);
    return parameter ? parameter->m_Value(*this, xAxis, parsed.m_Argument) : GetTraceParam(name);
}

// ---- Measurements

float Waveform::TimeAtVal(float level) const {
    const int points = Count();
    const float start = StartTime();
    if (points <= 0 || !IsOnTrace(*this, level)) {
        return static_cast<float>(points - 1) * m_TimePerPoint + m_TimePerPoint + start;
    }
    if (level == m_Data[0] || points == 1) return start;
    const int k = CrossingFromStart(m_Data, points, level) - 1;
    return (Fraction(m_Data, k, level) + static_cast<float>(k)) * m_TimePerPoint + start;
}

float Waveform::TimeAtValR(float level) const {
    constexpr int LowestTested = 2;
    const int points = Count();
    if (points <= 0 || !IsOnTrace(*this, level)) return StartTime() - m_TimePerPoint;
    if (level == m_Data[points - 1] || points == 1) return FinalTime(*this);
    const int k = CrossingFromEnd(m_Data, points, level, LowestTested);
    return (Fraction(m_Data, k, level) + static_cast<float>(k)) * m_TimePerPoint + StartTime();
}

float Waveform::Avg(float from, float to) const {
    const int points = Count();
    if (points <= 0) return 0.0f;
    const float start = StartTime();
    const float pointsPerTime = 1.0f / m_TimePerPoint;
    const float first = std::max(from, start);
    const float last = std::min(FinalTime(*this), to);
    const int begin = std::max(FloorToInt((first - start) * pointsPerTime), 0);
    const int end = std::min(FloorToInt((last - start) * pointsPerTime), points);
    if (begin > end) return 0.0f;
    if (begin == end) return m_Data[std::min(begin, points - 1)];
    return SumOfRun(m_Data, begin, end) / static_cast<float>(end - begin);
}

float Waveform::ValAtTime(float time) const {
    const int points = Count();
    if (points <= 0) return 0.0f;
    const float position = (time - StartTime()) / m_TimePerPoint;
    const int i = FloorToInt(position);
    if (i < 0 || i > points) return 0.0f;
    if (i >= points - 1) return m_Data[points - 1];
    return (m_Data[i + 1] - m_Data[i]) * (position - static_cast<float>(i)) + m_Data[i];
}

float Waveform::XYTimeAtVal(float level, Waveform const& xAxis) const {
    if (xAxis.Count() <= 0) return 0.0f;
    const float* x = xAxis.Data();
    const int points = std::min(Count(), xAxis.Count());
    if (points <= 0) return x[xAxis.Count() - 1];
    if (!IsOnTrace(*this, level)) return x[points - 1];
    if (level == m_Data[0] || points == 1) return x[0];
    const int k = CrossingFromStart(m_Data, points, level) - 1;
    return ReversedAbscissa(x, m_Data, k, level);
}

float Waveform::XYTimeAtValR(float level, Waveform const& xAxis) const {
    constexpr int LowestTested = 1;
    if (xAxis.Count() <= 0) return 0.0f;
    const float* x = xAxis.Data();
    const int points = std::min(Count(), xAxis.Count());
    if (points <= 0 || !IsOnTrace(*this, level)) return x[0];
    if (level == m_Data[points - 1] || points == 1) return x[points - 1];
    const int k = CrossingFromEnd(m_Data, points, level, LowestTested);
    return ReversedAbscissa(x, m_Data, k, level);
}
