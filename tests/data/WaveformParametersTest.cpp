// The measurements on a trace, and the names under which they and the header are known.
#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>

#include "data/WaveformTestData.h"

namespace {

using Values = std::vector<float>;

constexpr float NoParameter = -3.3e38f;

// A pulse from time 10 on at intervals of 0.5; the last sample is at 12.5.
Waveform Pulse() { return MakeScaledTrace({0.0f, 2.0f, 4.0f, 8.0f, 4.0f, 1.0f}, 10.0f, 0.5f); }

// An abscissa for it, at times 0, 1, 2, ...
Waveform Abscissa() { return MakeScaledTrace({0.0f, 1.0f, 3.0f, 6.0f, 10.0f, 15.0f}); }

// Samples at 0, 1, 2, ... whose extrema are told and not found.
Waveform TraceWithExtrema(const Values& samples, float min, float max, int maxIndex = 0) {
    Waveform trace = MakeTrace(samples);
    trace.m_Min = min;
    trace.m_Max = max;
    trace.m_MaxIndex = maxIndex;
    return trace;
}

float Value(const Waveform& trace, const char* name) { return trace.GetTraceParam(name); }

}  // namespace

// ---- TimeAtVal

TEST(WaveformTimeAtVal, RisingCrossingIsInterpolated) {
    EXPECT_EQ(Pulse().TimeAtVal(3.0f), 10.75f);
    EXPECT_EQ(Pulse().TimeAtVal(1.0f), 10.25f);
    EXPECT_EQ(Pulse().TimeAtVal(7.0f), 11.375f);
}

TEST(WaveformTimeAtVal, FallingCrossingIsInterpolated) {
    EXPECT_EQ(MakeScaledTrace({8.0f, 6.0f, 2.0f, 1.0f}).TimeAtVal(4.0f), 1.5f);
}

TEST(WaveformTimeAtVal, FirstOfSeveralCrossingsCounts) {
    EXPECT_EQ(MakeScaledTrace({0.0f, 4.0f, 0.0f, 4.0f, 0.0f}).TimeAtVal(2.0f), 0.5f);
}

TEST(WaveformTimeAtVal, LevelOfTheFirstSampleIsTheStart) {
    EXPECT_EQ(Pulse().TimeAtVal(0.0f), 10.0f);
}

TEST(WaveformTimeAtVal, SampleEqualToTheLevelIsPassedOver) {
    EXPECT_EQ(MakeScaledTrace({0.0f, 2.0f, 2.0f, 4.0f, 4.0f}).TimeAtVal(2.0f), 2.0f);
}

TEST(WaveformTimeAtVal, LevelOffTheTraceIsOneStepBehindTheEnd) {
    for (const float level : {8.5f, -0.5f, Infinity, -Infinity, NotANumber}) {
        EXPECT_EQ(Pulse().TimeAtVal(level), 13.0f) << level;
    }
}

TEST(WaveformTimeAtVal, BoundsAreTheExtremaAsTheyStand) {
    const Waveform stale = TraceWithExtrema({0.0f, 2.0f, 8.0f}, 1.0f, 3.0f);
    EXPECT_EQ(stale.TimeAtVal(4.0f), 3.0f);
    EXPECT_EQ(stale.TimeAtVal(0.5f), 3.0f);
    EXPECT_EQ(stale.TimeAtVal(1.0f), 0.5f);
    EXPECT_EQ(stale.TimeAtVal(3.0f), (3.0f - 2.0f) / 6.0f + 1.0f);
}

TEST(WaveformTimeAtVal, NoCrossingTakesTheLastInterval) {
    // Reached there.
    EXPECT_EQ(MakeScaledTrace({8.0f, 6.0f, 5.0f, 1.0f}).TimeAtVal(2.0f), 2.75f);
    // Not reached, by an extremum of a file or by the peak itself.
    EXPECT_EQ(TraceWithExtrema({8.0f, 6.0f, 5.0f, 4.0f}, 0.0f, 8.0f).TimeAtVal(2.0f), 5.0f);
    const float beyond = (8.0f - 4.0f) / (1.0f - 4.0f) + 4.0f;
    EXPECT_EQ(Pulse().TimeAtVal(8.0f), beyond * 0.5f + 10.0f);
}

TEST(WaveformTimeAtVal, TwoPointsHaveOneInterval) {
    EXPECT_EQ(MakeScaledTrace({0.0f, 4.0f}).TimeAtVal(1.0f), 0.25f);
    EXPECT_EQ(MakeScaledTrace({4.0f, 0.0f}).TimeAtVal(0.0f), 1.0f);
}

TEST(WaveformTimeAtVal, FlatIntervalStaysWhatTheDivisionMakesOfIt) {
    EXPECT_TRUE(isnan(MakeScaledTrace({0.0f, 2.0f, 2.0f}).TimeAtVal(2.0f)));
    EXPECT_EQ(TraceWithExtrema({0.0f, 2.0f, 2.0f}, 0.0f, 3.0f).TimeAtVal(3.0f), Infinity);
}

TEST(WaveformTimeAtVal, CrossingOnOnePointIsItsTime) {
    Waveform point = TraceWithExtrema({5.0f}, 0.0f, 10.0f);
    point.m_InitialStart = 3.0f;
    EXPECT_EQ(point.TimeAtVal(5.0f), 3.0f);
    EXPECT_EQ(point.TimeAtVal(7.0f), 3.0f);
    EXPECT_EQ(point.TimeAtVal(11.0f), 4.0f);
}

TEST(WaveformTimeAtVal, EmptyTraceIsOffTheTrace) {
    Waveform empty(0);
    empty.m_InitialStart = 3.0f;
    empty.m_TimePerPoint = 0.5f;
    EXPECT_EQ(empty.TimeAtVal(0.0f), 3.0f);
    EXPECT_EQ(empty.TimeAtValR(0.0f), 2.5f);
}

// ---- TimeAtValR

TEST(WaveformTimeAtValR, LastCrossingIsInterpolated) {
    const float third = (3.0f - 4.0f) / (1.0f - 4.0f) + 4.0f;
    EXPECT_EQ(Pulse().TimeAtValR(3.0f), third * 0.5f + 10.0f);
    EXPECT_EQ(Pulse().TimeAtValR(6.0f), 11.75f);
    EXPECT_EQ(MakeScaledTrace({0.0f, 0.0f, 4.0f, 0.0f, 4.0f}).TimeAtValR(2.0f), 3.5f);
}

TEST(WaveformTimeAtValR, LevelOfTheLastSampleIsTheFinalTime) {
    EXPECT_EQ(Pulse().TimeAtValR(1.0f), 12.5f);
}

TEST(WaveformTimeAtValR, LevelOffTheTraceIsOneStepBeforeTheStart) {
    for (const float level : {8.5f, -0.5f, Infinity, -Infinity, NotANumber}) {
        EXPECT_EQ(Pulse().TimeAtValR(level), 9.5f) << level;
    }
}

TEST(WaveformTimeAtValR, FirstIntervalIsNeverUsed) {
    // Crossed between the first two samples, but taken from the line through the next two.
    EXPECT_EQ(MakeScaledTrace({0.0f, 4.0f, 5.0f, 6.0f}).TimeAtValR(3.0f), 0.0f);
    EXPECT_EQ(Pulse().TimeAtValR(0.5f), 10.125f);
}

TEST(WaveformTimeAtValR, SampleEqualToTheLevelIsPassedOver) {
    EXPECT_EQ(MakeScaledTrace({9.0f, 9.0f, 0.0f, 1.0f, 2.0f, 2.0f, 4.0f}).TimeAtValR(2.0f), 4.0f);
}

TEST(WaveformTimeAtValR, ThreePointsUseTheLastIntervalWithoutATest) {
    EXPECT_EQ(MakeScaledTrace({0.0f, 5.0f, 1.0f}).TimeAtValR(0.5f), -4.5f / -4.0f + 1.0f);
}

TEST(WaveformTimeAtValR, TwoPointsHaveOneInterval) {
    EXPECT_EQ(MakeScaledTrace({0.0f, 4.0f}).TimeAtValR(1.0f), 0.25f);
}

TEST(WaveformTimeAtValR, CrossingOnOnePointIsItsTime) {
    Waveform point = TraceWithExtrema({5.0f}, 0.0f, 10.0f);
    point.m_InitialStart = 3.0f;
    EXPECT_EQ(point.TimeAtValR(5.0f), 3.0f);
    EXPECT_EQ(point.TimeAtValR(7.0f), 3.0f);
    EXPECT_EQ(point.TimeAtValR(11.0f), 2.0f);
}

// ---- Avg

TEST(WaveformAvg, SpanIsHalfOpen) {
    EXPECT_EQ(Pulse().Avg(10.0f, 11.0f), 1.0f);
    EXPECT_EQ(Pulse().Avg(10.5f, 12.0f), 14.0f / 3.0f);
    EXPECT_EQ(Pulse().Avg(10.9f, 12.4f), 14.0f / 3.0f);
}

TEST(WaveformAvg, SpanIsLimitedToTheTraceWithoutItsLastSample) {
    EXPECT_EQ(Pulse().Avg(-100.0f, 100.0f), 18.0f / 5.0f);
    EXPECT_EQ(Pulse().Avg(-Infinity, Infinity), 18.0f / 5.0f);
}

TEST(WaveformAvg, SpanWithinOneIntervalIsTheSampleAtItsStart) {
    EXPECT_EQ(Pulse().Avg(11.6f, 11.9f), 8.0f);
    EXPECT_EQ(Pulse().Avg(12.5f, 20.0f), 1.0f);
}

TEST(WaveformAvg, SpanThatEndsBeforeItStartsIsZero) {
    const Waveform trace = MakeTrace({5.0f, 6.0f, 7.0f, 8.0f}, 10.0f, 0.5f);
    EXPECT_EQ(trace.Avg(11.0f, 10.5f), 0.0f);
    EXPECT_EQ(trace.Avg(20.0f, 30.0f), 0.0f);
    EXPECT_EQ(trace.Avg(0.0f, 5.0f), 0.0f);
}

TEST(WaveformAvg, TimesBecomeIndexesByTheReciprocalOfTheInterval) {
    ASSERT_LT(41.0f * (1.0f / 41.0f), 1.0f);
    ASSERT_LT(82.0f * (1.0f / 41.0f), 2.0f);
    const Waveform trace = MakeTrace({3.0f, 5.0f, 7.0f, 9.0f}, 0.0f, 41.0f);
    EXPECT_EQ(trace.Avg(41.0f, 41.0f), 3.0f);  // 41 falls on the first sample
    EXPECT_EQ(trace.Avg(0.0f, 82.0f), 3.0f);   // and 82 on the second
}

TEST(WaveformAvg, TimesThatAreRoundedBehindTheTraceGiveTheLastSample) {
    // Times of this size go in steps of 8, so the last sample's is rounded to that of sample 8.
    const Waveform trace = MakeTrace({1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f}, 1e8f);
    EXPECT_EQ(trace.Avg(1e8f + 8.0f, 2e8f), 8.0f);
}

TEST(WaveformAvg, EmptyTraceHasNone) { EXPECT_EQ(Waveform(0).Avg(0.0f, 1.0f), 0.0f); }

// ---- ValAtTime

TEST(WaveformValAtTime, IsInterpolated) {
    EXPECT_EQ(Pulse().ValAtTime(10.0f), 0.0f);
    EXPECT_EQ(Pulse().ValAtTime(10.25f), 1.0f);
    EXPECT_EQ(Pulse().ValAtTime(11.125f), 5.0f);
    EXPECT_EQ(Pulse().ValAtTime(12.25f), 2.5f);
}

TEST(WaveformValAtTime, IsTheLastSampleFromItsTimeUpToTwoIntervalsOn) {
    for (const float time : {12.5f, 12.75f, 13.0f, 13.25f}) {
        EXPECT_EQ(Pulse().ValAtTime(time), 1.0f) << time;
    }
    EXPECT_EQ(Pulse().ValAtTime(13.5f), 0.0f);
}

TEST(WaveformValAtTime, IsZeroBeforeTheTrace) {
    EXPECT_EQ(MakeTrace({5.0f, 6.0f}).ValAtTime(-0.001f), 0.0f);
    EXPECT_EQ(MakeTrace({5.0f, 6.0f}).ValAtTime(-1e38f), 0.0f);
}

TEST(WaveformValAtTime, OnePointAndEmptyTrace) {
    EXPECT_EQ(MakeTrace({5.0f}).ValAtTime(0.5f), 5.0f);
    EXPECT_EQ(Waveform(0).ValAtTime(0.0f), 0.0f);
}

// ---- Names

TEST(WaveformParameters, HeaderFieldsHaveNames) {
    Waveform trace = MakeTrace({1.0f, 2.0f, 3.0f}, 0.25f, 0.5f);
    trace.m_TimeShift = 1.0f;
    trace.m_ScopePT = 2.0f;
    trace.m_ScopeTD = 4.0f;
    trace.m_ScopeSV = 5.0f;
    trace.m_ScaleUnit = 6.0f;
    trace.m_Max = 7.0f;
    trace.m_Min = -8.0f;
    trace.m_MaxIndex = 40;
    trace.m_MinIndex = -20;
    trace.m_Calib = 9.0f;
    trace.m_Atten = 10.0f;
    trace.m_Baseline = 11.0f;
    for (int i = 0; i < 12; ++i)
        trace.m_Params[i] = static_cast<float>(100 + i);
    const std::pair<const char*, float> values[] = {
        {"t1", 100.0f}, {"t2", 101.0f}, {"t3", 102.0f}, {"t4", 103.0f}, {"t5", 104.0f},
        {"t6", 105.0f}, {"t7", 106.0f}, {"t8", 107.0f}, {"t9", 108.0f}, {"ta", 109.0f},
        {"tb", 110.0f}, {"tc", 111.0f}, {"st", 7.25f},  {"it", 6.25f},  {"ts", 1.0f},
        {"is", 0.25f},  {"pt", 2.0f},   {"td", 4.0f},   {"ft", 8.25f},  {"su", 6.0f},
        {"mx", 7.0f},   {"mn", -8.0f},  {"cl", 9.0f},   {"at", 10.0f},  {"tp", 0.5f},
        {"bl", 11.0f},  {"sv", 5.0f},   {"tm", 27.25f}, {"tn", -2.75f}};
    for (const auto& [name, value] : values)
        EXPECT_EQ(Value(trace, name), value) << name;
}

TEST(WaveformParameters, InitialTimeIsASumInOrder) {
    Waveform trace(1);
    trace.m_ScopePT = 1e8f;
    trace.m_InitialStart = -1e8f;
    trace.m_ScopeTD = 3.0f;
    EXPECT_EQ(Value(trace, "it"), 3.0f);
}

TEST(WaveformParameters, TimesOfTheExtremaAreOneIntervalLate) {
    EXPECT_EQ(Value(Pulse(), "tm"), 12.0f);  // the greatest sample is at 11.5
    EXPECT_EQ(Value(Pulse(), "tn"), 10.5f);
}

TEST(WaveformParameters, CaseOfTheNameDoesNotMatter) {
    EXPECT_EQ(Value(Pulse(), "ST"), 10.0f);
    EXPECT_EQ(Value(Pulse(), "sT"), 10.0f);
    EXPECT_EQ(Value(Pulse(), "TV[3]"), 10.75f);
}

TEST(WaveformParameters, UnknownNamesAndEmptyTracesHaveNoValue) {
    for (const char* name : {"", "s", "xx", "t0", "[1]"}) {
        EXPECT_EQ(Value(Pulse(), name), NoParameter) << name;
    }
    for (const char* name : {"st", "mx", "tv[1]", "t1", ""}) {
        EXPECT_EQ(Value(Waveform(0), name), NoParameter) << name;
    }
}

TEST(WaveformParameters, OnlyTheFirstTwoCharactersNameAParameter) {
    EXPECT_EQ(Value(Pulse(), "start"), 10.0f);
    EXPECT_EQ(Value(Pulse(), "st "), 10.0f);
    EXPECT_EQ(Value(Pulse(), " st"), NoParameter);
}

TEST(WaveformParameters, ArgumentStandsBetweenTwoCharactersThatAreNotLookedAt) {
    for (const char* name :
         {"tv[3]", "tv(3)", "tvx3y", "tv[3.0]", "tv[ 3]", "tv[+3e0]", "tv[0x3]"}) {
        EXPECT_EQ(Value(Pulse(), name), 10.75f) << name;
    }
}

TEST(WaveformParameters, ArgumentThatIsNoNumberCountsAsZero) {
    const Waveform trace = MakeScaledTrace({-1.0f, 1.0f, 7.0f});
    const float atZero = 0.5f;
    for (const char* name :
         {"tv", "tv[", "tv3", "tv[]", "tv[3", "tv[3 ]", "tv[3x]", "tv[x]", "tv3]"}) {
        EXPECT_EQ(Value(trace, name), atZero) << name;
    }
}

TEST(WaveformParameters, CallersNameStaysAsItWas) {
    const DString name("TV[3]");
    Pulse().GetTraceParam(name);
    EXPECT_STREQ(name, "TV[3]");
}

// ---- Measured quantities

TEST(WaveformParameters, RiseTimesAreBetweenLevelsOfTheMaximum) {
    const float at90 = ((0.9f * 8.0f - 4.0f) / 4.0f + 2.0f) * 0.5f + 10.0f;
    const float at10 = ((0.1f * 8.0f - 0.0f) / 2.0f + 0.0f) * 0.5f + 10.0f;
    EXPECT_EQ(Value(Pulse(), "19"), at90 - at10);
    const float at80 = ((0.8f * 8.0f - 4.0f) / 4.0f + 2.0f) * 0.5f + 10.0f;
    const float at20 = ((0.2f * 8.0f - 0.0f) / 2.0f + 0.0f) * 0.5f + 10.0f;
    EXPECT_EQ(Value(Pulse(), "28"), at80 - at20);
}

TEST(WaveformParameters, RiseTimeWithoutAPositiveMaximumIsWhatTheLevelsGive) {
    const Waveform negative = MakeScaledTrace({-4.0f, -2.0f, -3.0f});
    // 0.9 of -2 is above the maximum: one step behind the end. So is 0.1 of it.
    EXPECT_EQ(Value(negative, "19"), 0.0f);
    const Waveform zero = TraceWithExtrema({1.0f, -1.0f, -1.0f}, -1.0f, 0.0f);
    EXPECT_EQ(Value(zero, "19"), 0.0f);
}

TEST(WaveformParameters, AverageLeavesTheLastSampleOut) {
    EXPECT_EQ(Value(Pulse(), "av"), 18.0f / 5.0f);
    EXPECT_EQ(Value(MakeTrace({5.0f, 9.0f}), "av"), 5.0f);
    EXPECT_EQ(Value(MakeTrace({5.0f}), "av"), 5.0f);
}

TEST(WaveformParameters, IntegralLeavesTheFirstSampleOut) {
    EXPECT_EQ(Value(MakeTrace({100.0f, 2.0f, 4.0f, -1.0f}, 10.0f, 0.5f), "in"), 2.5f);
    EXPECT_EQ(Value(MakeTrace({100.0f}), "in"), 0.0f);
}

TEST(WaveformParameters, PeakIntegralIsTheGreatestRunningSum) {
    EXPECT_EQ(Value(MakeTrace({50.0f, 1.0f, -3.0f, 4.0f, 2.0f, -10.0f}, 0.0f, 0.5f), "pi"), 2.0f);
    EXPECT_EQ(Value(MakeTrace({50.0f, -1.0f, -3.0f}), "pi"), 0.0f);
    EXPECT_EQ(Value(MakeTrace({50.0f}), "pi"), 0.0f);
}

TEST(WaveformParameters, RadialIntegralFromTheAxisIsTheDiscIntegral) {
    const Waveform flat = MakeTrace(Values(11, 1.0f), 0.0f, 0.5f);
    EXPECT_NEAR(Value(flat, "ri"), 3.14159265 * 5.0 * 5.0, 1e-4);
}

TEST(WaveformParameters, RadialIntegralTakesTheDiscInTimeAndTheRingsInPoints) {
    const Waveform trace = MakeTrace({0.3f, 0.7f, 1.9f, 0.11f}, 2.5f, 0.3f);
    const float pi32 = 3.14159274f;
    const float area = (0.3f * 0.3f) * (pi32 + pi32);
    float sum = 2.5f * 2.5f * (0.3f * pi32);
    sum = static_cast<float>(static_cast<double>(sum) +
                             (1.0 + (2.5 - 0.5)) * static_cast<double>(0.7f * area));
    sum = static_cast<float>(static_cast<double>(sum) +
                             (2.0 + (2.5 - 0.5)) * static_cast<double>(1.9f * area));
    sum = static_cast<float>(static_cast<double>(sum) +
                             (3.0 + (2.5 - 0.5)) * static_cast<double>(0.11f * area));
    EXPECT_EQ(Value(trace, "ri"), sum);
}

TEST(WaveformParameters, RadialIntegralIsRoundedAtEveryStep) {
    // 2^24 is where adding 1 is lost in single precision: each of the rings is, one by one.
    const float pi32 = 3.14159274f;
    Values samples(1001, 0.01f);
    samples[1] = 1e8f;
    const Waveform trace = MakeTrace(samples);
    const float ring = 0.01f * (pi32 + pi32);
    double exact = 0.5 * static_cast<double>(1e8f * (pi32 + pi32));
    float rounded = static_cast<float>(exact);
    for (int k = 2; k <= 1000; ++k) {
        exact += (k - 0.5) * static_cast<double>(ring);
        rounded = static_cast<float>(static_cast<double>(rounded) +
                                     (k - 0.5) * static_cast<double>(ring));
    }
    ASSERT_NE(rounded, static_cast<float>(exact));
    EXPECT_EQ(Value(trace, "ri"), rounded);
}

TEST(WaveformParameters, RadialIntegralTakesANegativeRadiusAsZero) {
    const Values samples = {0.3f, 0.7f, 1.9f};
    EXPECT_EQ(Value(MakeTrace(samples, -5.0f), "ri"), Value(MakeTrace(samples, 0.0f), "ri"));
    EXPECT_EQ(Value(MakeTrace({2.0f}, 3.0f), "ri"), 9.0f * (2.0f * 3.14159274f));
    EXPECT_EQ(Value(MakeTrace({2.0f}, -3.0f), "ri"), 0.0f);
}

TEST(WaveformParameters, StandardDeviationIsOverOneLessThanThePoints) {
    const Waveform trace = MakeTrace({2.0f, 4.0f, 4.0f, 4.0f, 5.0f, 5.0f, 7.0f, 9.0f});
    EXPECT_EQ(Value(trace, "sd"), sqrtf(32.0f / 7.0f));
    EXPECT_EQ(Value(MakeTrace({3.0f, 5.0f}), "sd"), sqrtf(2.0f));
    EXPECT_EQ(Value(MakeTrace({3.0f}), "sd"), 0.0f);
}

TEST(WaveformParameters, StandardDeviationOfANegativeCountIsZero) {
    Waveform trace = MakeTrace({3.0f, 5.0f});
    trace.m_Count = 1L << 31;  // what an int makes negative
    EXPECT_EQ(Value(trace, "sd"), 0.0f);
    trace.m_Count = 2;
}

TEST(WaveformParameters, WeightedTimeIsTheCentroid) {
    EXPECT_EQ(Value(MakeTrace({1.0f, 2.0f, 5.0f}, 10.0f, 0.5f), "wa"), (10.0f + 21.0f + 55.0f) / 8);
    EXPECT_EQ(Value(MakeTrace({1.0f, -1.0f}), "wa"), 0.0f);
    EXPECT_EQ(Value(MakeTrace({1.0f, NotANumber}), "wa"), 0.0f);
}

TEST(WaveformParameters, TermsWithAnArgument) {
    const std::pair<const char*, float> values[] = {
        {"vt[10.25]", 1.0f},       {"vt[9]", 0.0f},      {"tv[3]", 10.75f},   {"t%[50]", 11.0f},
        {"t%[0]", 10.0f},          {"bv[6]", 11.75f},    {"b%[75]", 11.75f},  {"la[11]", 1.0f},
        {"la[100]", 18.0f / 5.0f}, {"la[9]", 0.0f},      {"lt[11.2]", 11.0f}, {"lt[11.5]", 11.5f},
        {"lt[9.9]", 9.5f},         {"lt[112.3]", 112.0f}};
    for (const auto& [name, value] : values)
        EXPECT_EQ(Value(Pulse(), name), value) << name;
}

TEST(WaveformParameters, PercentIsMultipliedInOrder) {
    const Waveform trace = MakeScaledTrace({0.0f, 0.7f});
    const float level = 5.0f * 0.01f * 0.7f;
    ASSERT_NE(level, 5.0f * (0.01f * 0.7f));
    EXPECT_EQ(Value(trace, "t%[5]"), level / 0.7f);
    EXPECT_EQ(Value(trace, "b%[5]"), level / 0.7f);
}

// ---- Full width at half maximum

TEST(WaveformFullWidth, IsInterpolatedOnBothSides) {
    EXPECT_EQ(Value(MakeScaledTrace({0.0f, 2.0f, 4.0f, 2.0f, 0.0f}, 10.0f, 0.5f), "fh"), 1.0f);
    EXPECT_EQ(Value(MakeScaledTrace({0.0f, 8.0f, 0.0f}), "fh"), 1.0f);
    const float right =
        static_cast<float>(4.0 + static_cast<double>((3.0f - 5.0f) / (1.0f - 5.0f)));
    EXPECT_EQ(Value(MakeScaledTrace({0.0f, 4.0f, 6.0f, 6.0f, 5.0f, 1.0f}), "fh"), right - 0.75f);
}

TEST(WaveformFullWidth, IsTakenFromThePeakOutwards) {
    const Values twoPeaks = {0.0f, 5.0f, 0.0f, 8.0f, 0.0f, 5.0f, 0.0f};
    EXPECT_EQ(Value(MakeScaledTrace(twoPeaks), "fh"), 1.0f);
}

TEST(WaveformFullWidth, SideThatStaysAboveReachesToTheEnd) {
    EXPECT_EQ(Value(MakeScaledTrace({3.0f, 3.0f, 3.0f}, 0.0f, 0.5f), "fh"), 1.0f);
    EXPECT_EQ(Value(MakeScaledTrace({0.0f, 4.0f}), "fh"), 0.5f);
    EXPECT_EQ(Value(MakeScaledTrace({4.0f, 3.0f, 1.0f}), "fh"), 1.5f);
    EXPECT_EQ(Value(MakeScaledTrace({0.0f, 3.0f, 4.0f, 3.0f}), "fh"), 3.0f - 2.0f / 3.0f);
}

TEST(WaveformFullWidth, SampleAtHalfIsNotBelow) {
    EXPECT_EQ(Value(MakeScaledTrace({2.0f, 4.0f, 2.0f}), "fh"), 2.0f);
}

TEST(WaveformFullWidth, WithoutANeighbourTheEdgeIsTheSampleItself) {
    // No sample ahead of the first: the right edge is 0.
    EXPECT_EQ(Value(TraceWithExtrema({1.0f, 8.0f}, 1.0f, 8.0f, 0), "fh"), 0.0f);
    // No sample behind the last: the left edge is that sample.
    EXPECT_EQ(Value(TraceWithExtrema({8.0f, 8.0f, 1.0f}, 1.0f, 8.0f, 3), "fh"), 0.0f);
    EXPECT_EQ(Value(TraceWithExtrema({1.0f}, 1.0f, 8.0f, 1), "fh"), 0.0f);
}

TEST(WaveformFullWidth, IndexOfAFileIsLimitedToTheTrace) {
    const Values samples = {0.0f, 8.0f, 0.0f, 0.0f};
    for (const int index : {4, 5, 1000000, INT_MAX}) {
        // From the last sample: left edge 3, right edge at the end.
        EXPECT_EQ(Value(TraceWithExtrema(samples, 0.0f, 8.0f, index), "fh"), 0.0f) << index;
    }
    for (const int index : {0, -1, -1000000, INT_MIN}) {
        // From ahead of the first: both edges 0.
        EXPECT_EQ(Value(TraceWithExtrema(samples, 0.0f, 8.0f, index), "fh"), 0.0f) << index;
    }
}

// ---- Pairs of traces

TEST(WaveformXY, CrossingRunsAgainstTheOrdinateWithinItsInterval) {
    const Waveform x = Abscissa();
    EXPECT_EQ(Pulse().XYTimeAtVal(3.0f, x), 2.0f);
    EXPECT_EQ(Pulse().XYTimeAtVal(2.5f, x), 2.5f);
    EXPECT_EQ(Pulse().XYTimeAtVal(2.0f, x), 3.0f);  // the abscissa behind the sample at 2
}

TEST(WaveformXY, CrossingFromTheEnd) {
    const Waveform x = Abscissa();
    EXPECT_EQ(Pulse().XYTimeAtValR(3.0f, x), -5.0f * -1.0f / -3.0f + 15.0f);
    EXPECT_EQ(Pulse().XYTimeAtValR(6.0f, x), 8.0f);
}

TEST(WaveformXY, CrossingFromTheEndReachesTheFirstInterval) {
    EXPECT_EQ(Pulse().XYTimeAtValR(0.5f, Abscissa()), 0.75f);
    // Sample 1 is tested here.
    const Waveform y = MakeScaledTrace({9.0f, 0.0f, 6.0f, 8.0f});
    const Waveform x = MakeTrace({0.0f, 10.0f, 20.0f, 30.0f});
    EXPECT_EQ(y.XYTimeAtValR(3.0f, x), 15.0f);
    const Waveform rising = MakeScaledTrace({0.0f, 4.0f, 5.0f, 6.0f});
    EXPECT_EQ(rising.XYTimeAtValR(3.0f, x), 2.5f);
}

TEST(WaveformXY, LevelsOfTheEndsAndOffTheTrace) {
    const Waveform x = Abscissa();
    EXPECT_EQ(Pulse().XYTimeAtVal(0.0f, x), 0.0f);
    EXPECT_EQ(Pulse().XYTimeAtValR(1.0f, x), 15.0f);
    for (const float level : {9.0f, -1.0f, NotANumber}) {
        EXPECT_EQ(Pulse().XYTimeAtVal(level, x), 15.0f) << level;
        EXPECT_EQ(Pulse().XYTimeAtValR(level, x), 0.0f) << level;
    }
}

TEST(WaveformXY, NoCrossingFromTheStartTakesTheLastInterval) {
    const Waveform y = TraceWithExtrema({8.0f, 6.0f, 5.0f}, 0.0f, 8.0f);
    const Waveform x = MakeTrace({10.0f, 20.0f, 40.0f});
    EXPECT_EQ(y.XYTimeAtVal(2.0f, x), -20.0f * -4.0f / -1.0f + 40.0f);
}

TEST(WaveformXY, TwoPointsHaveOneInterval) {
    const Waveform y = MakeScaledTrace({0.0f, 4.0f});
    const Waveform x = MakeTrace({10.0f, 20.0f});
    EXPECT_EQ(y.XYTimeAtVal(1.0f, x), 17.5f);
    EXPECT_EQ(y.XYTimeAtValR(1.0f, x), 17.5f);
}

TEST(WaveformXY, OnePointGivesItsAbscissa) {
    const Waveform y = TraceWithExtrema({5.0f}, 0.0f, 10.0f);
    const Waveform x = MakeTrace({30.0f});
    for (const float level : {5.0f, 7.0f, 11.0f}) {
        EXPECT_EQ(y.XYTimeAtVal(level, x), 30.0f) << level;
        EXPECT_EQ(y.XYTimeAtValR(level, x), 30.0f) << level;
    }
}

TEST(WaveformXY, LongerTraceCountsAsCutToTheShorter) {
    const Waveform y = MakeScaledTrace({0.0f, 4.0f, 6.0f, 8.0f});
    const Waveform x = MakeTrace({10.0f, 20.0f, 40.0f});
    EXPECT_EQ(y.XYTimeAtVal(7.0f, x), -20.0f * 3.0f / 2.0f + 40.0f);
    EXPECT_EQ(y.XYTimeAtVal(9.0f, x), 40.0f);
    EXPECT_EQ(y.XYTimeAtValR(6.0f, x), 40.0f);
    EXPECT_EQ(y.XYTimeAtValR(5.0f, x), -20.0f * 1.0f / 2.0f + 40.0f);
    const Waveform longX = MakeTrace({10.0f, 20.0f, 40.0f, 50.0f, 60.0f});
    EXPECT_EQ(y.XYTimeAtVal(9.0f, longX), 50.0f);
    EXPECT_EQ(y.XYTimeAtValR(8.0f, longX), 50.0f);
}

TEST(WaveformXY, EmptyTracesAreOffTheTrace) {
    const Waveform empty(0);
    const Waveform x = MakeTrace({10.0f, 20.0f});
    EXPECT_EQ(empty.XYTimeAtVal(0.0f, x), 20.0f);
    EXPECT_EQ(empty.XYTimeAtValR(0.0f, x), 10.0f);
    EXPECT_EQ(x.XYTimeAtVal(0.0f, empty), 0.0f);
    EXPECT_EQ(x.XYTimeAtValR(0.0f, empty), 0.0f);
}

TEST(WaveformXY, NamesAnswerOnTheAbscissa) {
    const Waveform x = Abscissa();
    const Waveform y = Pulse();
    const std::pair<const char*, float> values[] = {
        {"st", 0.0f}, {"ft", 15.0f},   {"tm", 10.0f},  // the greatest sample is at 6
        {"tn", 1.0f}, {"tv[3]", 2.0f}, {"TV(3)", 2.0f}, {"bv[6]", 8.0f},
        {"mx", 8.0f}, {"tp", 0.5f},    {"is", 10.0f},   {"tb", 0.0f},
        {"in", 9.5f}, {"vt[3]", 0.0f}, {"start", 0.0f}};
    for (const auto& [name, value] : values) {
        EXPECT_EQ(y.GetXYTraceParam(name, x), value) << name;
    }
}

TEST(WaveformXY, PercentRunsTheOtherWay) {
    const Waveform x = Abscissa();
    // 24 * 100 / 8 is off the trace; 0.24 * 100 / 8 is the level 3.
    EXPECT_EQ(Pulse().GetXYTraceParam("t%[24]", x), 15.0f);
    EXPECT_EQ(Pulse().GetXYTraceParam("t%[0.24]", x),
              Pulse().XYTimeAtVal(0.24f * 100.0f / 8.0f, x));
    EXPECT_EQ(Pulse().GetXYTraceParam("b%[0.48]", x),
              Pulse().XYTimeAtValR(0.48f * 100.0f / 8.0f, x));
    EXPECT_NEAR(Pulse().GetXYTraceParam("t%[0.24]", x), 2.0f, 1e-5f);
}

TEST(WaveformXY, RiseTimesAreDifferencesOfAbscissas) {
    const Waveform x = Abscissa();
    const Waveform y = Pulse();
    const float at90 = -3.0f * (0.9f * 8.0f - 4.0f) / 4.0f + 6.0f;
    const float at10 = -1.0f * (0.1f * 8.0f - 0.0f) / 2.0f + 1.0f;
    EXPECT_EQ(y.GetXYTraceParam("19", x), at90 - at10);
    const float at80 = -3.0f * (0.8f * 8.0f - 4.0f) / 4.0f + 6.0f;
    const float at20 = -1.0f * (0.2f * 8.0f - 0.0f) / 2.0f + 1.0f;
    EXPECT_EQ(y.GetXYTraceParam("28", x), at80 - at20);
}

TEST(WaveformXY, ValueAndAveragesGoByTheTimeOfTheAbscissa) {
    Waveform x = Abscissa();
    x.m_InitialStart = 10.0f;
    x.m_TimePerPoint = 0.5f;
    Waveform y = Pulse();
    y.m_Params[9] = 77.0f;
    EXPECT_EQ(y.GetXYTraceParam("vt[2]", x), 3.0f);          // the abscissa is 2 at time 10.75
    EXPECT_EQ(y.GetXYTraceParam("la[3]", x), 1.0f);          // samples 0 and 1
    EXPECT_EQ(y.GetXYTraceParam("ta[3]", x), 16.0f / 3.0f);  // samples 2, 3 and 4
    EXPECT_EQ(Value(y, "ta[3]"), 77.0f);
}

TEST(WaveformXY, IndexesOfAFileAreLimitedToTheTrace) {
    const Waveform x = MakeTrace({10.0f, 20.0f, 40.0f});
    Waveform y = MakeScaledTrace({1.0f, 2.0f, 4.0f});
    EXPECT_EQ(y.GetXYTraceParam("tm", x), 40.0f);  // none behind the last sample
    y.m_MaxIndex = INT_MAX;
    y.m_MinIndex = INT_MIN;
    EXPECT_EQ(y.GetXYTraceParam("tm", x), 40.0f);
    EXPECT_EQ(y.GetXYTraceParam("tn", x), 10.0f);
}

TEST(WaveformXY, UnequalOrEmptyTracesAndUnknownNamesHaveNoValue) {
    const Waveform x = Abscissa();
    EXPECT_EQ(MakeTrace({1.0f, 2.0f}).GetXYTraceParam("mx", x), NoParameter);
    EXPECT_EQ(Waveform(0).GetXYTraceParam("st", Waveform(0)), NoParameter);
    EXPECT_EQ(Pulse().GetXYTraceParam("", x), NoParameter);
    EXPECT_EQ(Pulse().GetXYTraceParam("xx", x), NoParameter);
    EXPECT_EQ(Pulse().GetXYTraceParam("s", x), NoParameter);
}

// ---- Safety

namespace {

constexpr const char* EveryName[] = {
    "t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8", "t9", "ta", "tb", "tc", "st", "it", "ts",
    "is", "pt", "td", "ft", "su", "mx", "mn", "cl", "at", "tp", "bl", "sv", "tm", "tn", "19",
    "28", "av", "in", "ri", "pi", "sd", "wa", "fh", "vt", "tv", "t%", "bv", "b%", "la", "lt"};

// The trace in storage whose other elements all hold `filling`.
Waveform InStorageOf(const Waveform& trace, float filling) {
    Waveform result(trace);
    for (int i = trace.Count(); i < result.Capacity(); ++i)
        result[i] = filling;
    return result;
}

void ExpectSameValue(float a, float b, const std::string& what) {
    if (isnan(a) && isnan(b)) return;
    EXPECT_EQ(a, b) << what;
}

std::vector<Waveform> OddTraces() {
    std::vector<Waveform> traces;
    for (int points = 1; points <= 5; ++points) {
        for (const float interval : {1.0f, -1.0f, 0.0f, 1e-38f, 1e38f, NotANumber}) {
            for (const int index : {INT_MIN, -1, 0, 1, points, points + 1, INT_MAX}) {
                Waveform trace = MakeTrace({5.0f, 1.0f, 3.0f, 0.0f, 4.0f}, 1.0f, interval);
                trace.ReSize(points);
                trace.m_Min = -8.0f;
                trace.m_Max = 8.0f;
                trace.m_MaxIndex = trace.m_MinIndex = index;
                traces.push_back(trace);
            }
        }
    }
    return traces;
}

}  // namespace

TEST(WaveformParameters, NeverReadOutsideTheSamples) {
    const char* const arguments[] = {"[0]",    "[1]",     "[3.5]", "[-3.5]",
                                     "[1e38]", "[-1e38]", "[inf]", "[nan]"};
    for (const Waveform& trace : OddTraces()) {
        const Waveform one = InStorageOf(trace, 1e6f);
        const Waveform other = InStorageOf(trace, -1e6f);
        for (const std::string name : EveryName) {
            for (const char* argument : arguments) {
                const DString text((name + argument).c_str());
                ExpectSameValue(one.GetTraceParam(text), other.GetTraceParam(text), name);
                ExpectSameValue(one.GetXYTraceParam(text, one), other.GetXYTraceParam(text, other),
                                name);
            }
        }
    }
}

TEST(WaveformParameters, AveragesNeverReadOutsideTheSamples) {
    const float times[] = {-1e38f, -3.5f, 0.0f, 1.0f, 2.0f, 3.5f, 5.0f, 6.0f, 1e38f, NotANumber};
    for (const Waveform& trace : OddTraces()) {
        const Waveform one = InStorageOf(trace, 1e6f);
        const Waveform other = InStorageOf(trace, -1e6f);
        for (const float from : times) {
            for (const float to : times) {
                ExpectSameValue(one.Avg(from, to), other.Avg(from, to), "Avg");
            }
        }
    }
}
