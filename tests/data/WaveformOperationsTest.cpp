// Resampling, the time axis, extrema and scale unit, calibration, and the way from time to index.
#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>

#include "data/WaveformTestData.h"

namespace {

// Four samples from time 10 on at intervals of 2, whose scope fields and baseline are set.
Waveform ScopeTrace() {
    Waveform trace = MakeTrace({1.0f, 3.0f, 7.0f, 15.0f}, 4.0f, 2.0f);
    trace.m_TimeShift = 1.0f;
    trace.m_ScopePT = 3.0f;
    trace.m_ScopeTD = 2.0f;
    trace.m_ScopeSV = trace.m_ScopeX = trace.m_ScopeY = trace.m_Baseline = 9.0f;
    return trace;
}

void ExpectFoldedScope(const Waveform& trace) {
    for (const float cleared : {trace.m_ScopePT, trace.m_ScopeSV, trace.m_ScopeX, trace.m_ScopeY,
                                trace.m_ScopeTD, trace.m_Baseline}) {
        EXPECT_EQ(cleared, 0.0f);
    }
}

using Values = std::vector<float>;

}  // namespace

// ---- Align

TEST(WaveformAlign, SameGridChangesNothingAtAll) {
    for (const float step : {2.0f, 0.0f, -1.0f, NotANumber}) {
        Waveform trace = ScopeTrace();
        trace.Align(4, 10.0f, step);
        EXPECT_EQ(Samples(trace), (Values{1.0f, 3.0f, 7.0f, 15.0f}));
        EXPECT_EQ(trace.m_TimeShift, 1.0f);
        EXPECT_EQ(trace.m_InitialStart, 4.0f);
        EXPECT_EQ(trace.m_ScopePT, 3.0f);
        EXPECT_EQ(trace.m_ScopeTD, 2.0f);
        EXPECT_EQ(trace.m_ScopeSV, 9.0f);
        EXPECT_EQ(trace.m_Baseline, 9.0f);
    }
}

TEST(WaveformAlign, LongerTraceOnTheSameGridEndsInZeros) {
    Waveform trace = ScopeTrace();
    trace.Align(14, 10.0f, 2.0f);
    Values expected = {1.0f, 3.0f, 7.0f, 15.0f};
    expected.resize(14, 0.0f);
    EXPECT_EQ(Samples(trace), expected);
    ExpectFoldedScope(trace);
    EXPECT_EQ(trace.m_InitialStart, 9.0f);
    EXPECT_EQ(trace.m_TimeShift, 1.0f);
    EXPECT_EQ(trace.StartTime(), 10.0f);
}

TEST(WaveformAlign, ShorterTraceOnTheSameGridKeepsItsStorage) {
    Waveform trace = MakeTrace(Values(300, 5.0f));
    trace.Align(2, 0.0f, 0.0f);
    EXPECT_EQ(Samples(trace), (Values{5.0f, 5.0f}));
    EXPECT_EQ(trace.Capacity(), 512);
    trace.Align(4, 0.0f, 1.0f);
    EXPECT_EQ(Samples(trace), (Values{5.0f, 5.0f, 0.0f, 0.0f}));
}

TEST(WaveformAlign, NewGridIsInterpolated) {
    Waveform trace = MakeTrace({0.0f, 10.0f, 20.0f, 40.0f});
    trace.Align(5, 0.5f, 0.5f);
    EXPECT_EQ(Samples(trace), (Values{5.0f, 10.0f, 15.0f, 20.0f, 30.0f}));
    EXPECT_EQ(trace.m_InitialStart, 0.5f);
    EXPECT_EQ(trace.m_TimePerPoint, 0.5f);
    EXPECT_EQ(trace.RCount(), 1);
    EXPECT_EQ(trace.CCount(), 5);
    EXPECT_EQ(trace.Capacity(), 256);
}

TEST(WaveformAlign, NewStartTakesThePlaceOfAllItsTerms) {
    Waveform trace = ScopeTrace();
    trace.Align(3, 11.0f, 2.0f);
    EXPECT_EQ(Samples(trace), (Values{2.0f, 5.0f, 11.0f}));
    ExpectFoldedScope(trace);
    EXPECT_EQ(trace.m_TimeShift, 0.0f);
    EXPECT_EQ(trace.m_InitialStart, 11.0f);
    EXPECT_EQ(trace.StartTime(), 11.0f);
}

TEST(WaveformAlign, GridAroundTheTraceIsPaddedWithZeros) {
    Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f});
    trace.Align(8, -2.0f, 1.0f);
    EXPECT_EQ(Samples(trace), (Values{0.0f, 0.0f, 1.0f, 2.0f, 4.0f, 0.0f, 0.0f, 0.0f}));
    EXPECT_EQ(trace.StartTime(), -2.0f);
}

TEST(WaveformAlign, PointsBetweenTheEdgeAndTheTraceAreZero) {
    Waveform trace = MakeTrace({4.0f, 4.0f, 4.0f});
    trace.Align(4, -0.25f, 0.75f);  // the last at 2.0, the last sample
    EXPECT_EQ(Samples(trace), (Values{0.0f, 4.0f, 4.0f, 4.0f}));
    trace = MakeTrace({4.0f, 4.0f, 4.0f});
    trace.Align(3, 0.5f, 0.8f);  // the last at 2.1
    EXPECT_EQ(Samples(trace), (Values{4.0f, 4.0f, 0.0f}));
}

TEST(WaveformAlign, StartOnTheLastSampleTakesItAndZeros) {
    Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f});
    trace.Align(3, 2.0f, 1.0f);
    EXPECT_EQ(Samples(trace), (Values{4.0f, 0.0f, 0.0f}));
}

TEST(WaveformAlign, StartBehindTheTraceGivesZeros) {
    Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f});
    trace.Align(3, 2.5f, 1.0f);
    EXPECT_EQ(Samples(trace), Values(3, 0.0f));
    EXPECT_EQ(trace.StartTime(), 2.5f);
}

TEST(WaveformAlign, NoStepStartsOnTheSampleAtOrBeforeTheStart) {
    for (const float step : {0.0f, -3.0f}) {
        Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f, 8.0f}, 10.0f, 0.5f);
        trace.Align(3, 10.75f, step);
        EXPECT_EQ(Samples(trace), (Values{2.0f, 4.0f, 8.0f}));
        EXPECT_EQ(trace.m_InitialStart, 10.5f);
        EXPECT_EQ(trace.m_TimePerPoint, 0.5f);
    }
}

TEST(WaveformAlign, NoStepAheadOfTheTraceStaysOnItsGrid) {
    Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f}, 10.0f, 0.5f);
    trace.Align(3, 9.6f, 0.0f);
    EXPECT_EQ(Samples(trace), (Values{0.0f, 1.0f, 2.0f}));
    EXPECT_EQ(trace.m_InitialStart, 9.5f);
}

TEST(WaveformAlign, PositionIsAProductWithTheReciprocalOfTheInterval) {
    Waveform trace = MakeTrace({0.0f, 0.0f, 0.0f, 1.0f}, 0.0f, 3.0f);
    trace.Align(1, 7.0f, 1.0f);
    const float position = 7.0f * (1.0f / 3.0f);
    ASSERT_NE(position, 7.0f / 3.0f);
    EXPECT_EQ(trace[0], position - 2.0f);
}

TEST(WaveformAlign, PositionsAreSummedUpInDouble) {
    const int points = 100000;
    Waveform trace = MakeTrace({0.0f, 1024.0f});
    trace.Align(points, 0.0f, 1e-5f);
    double position = 0.0;
    float roundedPosition = 0.0f;
    int differences = 0;
    for (int k = 0; k < points; ++k) {
        ASSERT_EQ(trace[k], 1024.0f * static_cast<float>(position)) << k;
        if (static_cast<float>(position) != roundedPosition) ++differences;
        position += static_cast<double>(1e-5f);
        roundedPosition += 1e-5f;
    }
    EXPECT_GT(differences, points / 2);
}

TEST(WaveformAlign, IncrementIsAProductWithTheReciprocalOfTheInterval) {
    Waveform trace = MakeTrace({0.0f, 1.0f}, 0.0f, 49.0f);
    trace.Align(2, 0.0f, 7.0f);
    const float increment = 7.0f * (1.0f / 49.0f);
    ASSERT_NE(increment, 7.0f / 49.0f);
    EXPECT_EQ(trace[1], increment);
}

TEST(WaveformAlign, NoPointsLeaveAnEmptyTraceOnTheNewGrid) {
    for (const int points : {0, -4}) {
        Waveform trace = ScopeTrace();
        trace.Align(points, 12.0f, 0.5f);
        EXPECT_EQ(trace.Count(), 0);
        EXPECT_EQ(trace.CCount(), 0);
        EXPECT_EQ(trace.RCount(), 1);
        EXPECT_EQ(trace.m_TimePerPoint, 0.5f);
        EXPECT_EQ(trace.StartTime(), 12.0f);
    }
}

TEST(WaveformAlign, EmptyTraceGivesZeros) {
    Waveform trace(0);
    trace.Align(3, -2.0f, 0.5f);
    EXPECT_EQ(Samples(trace), Values(3, 0.0f));
    Waveform sameGrid(0);
    sameGrid.Align(3, 0.0f, 1.0f);
    EXPECT_EQ(Samples(sameGrid), Values(3, 0.0f));
}

TEST(WaveformAlign, ExtremaAndHeaderPointsStay) {
    Waveform trace = MakeScaledTrace({1.0f, 2.0f, 4.0f});
    const float unit = trace.m_ScaleUnit;
    trace.Align(2, 0.5f, 0.5f);
    EXPECT_EQ(trace.m_Max, 4.0f);
    EXPECT_EQ(trace.m_MaxIndex, 3);
    EXPECT_EQ(trace.m_Min, 1.0f);
    EXPECT_EQ(trace.m_ScaleUnit, unit);
    EXPECT_EQ(trace.m_HeaderPoints, 3);
}

TEST(WaveformAlign, NegativeIntervalStopsAtTheEdgeAndLeavesZeros) {
    Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f, 8.0f}, 0.0f, -1.0f);
    trace.Align(5, -1.5f, 1.0f);  // positions 1.5, 0.5, -0.5, ...
    EXPECT_EQ(Samples(trace), (Values{3.0f, 1.5f, 0.0f, 0.0f, 0.0f}));
}

TEST(WaveformAlign, IntervalThatIsNoNumberOrZeroLeavesZeros) {
    for (const float interval : {0.0f, NotANumber}) {
        for (const float start : {-5.0f, 0.0f, 5.0f}) {
            Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f}, 1.0f, interval);
            trace.Align(3, start, 1.0f);
            EXPECT_EQ(Samples(trace), Values(3, 0.0f));
            EXPECT_EQ(trace.m_TimePerPoint, 1.0f);
        }
    }
}

TEST(WaveformAlign, StartFarAwayLeavesZeros) {
    for (const float start : {1e38f, -1e38f, Infinity, -Infinity, NotANumber}) {
        Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f});
        trace.Align(3, start, 0.5f);
        EXPECT_EQ(Samples(trace), Values(3, 0.0f));
        trace = MakeTrace({1.0f, 2.0f, 4.0f});
        trace.Align(3, start, 0.0f);
        EXPECT_EQ(Samples(trace), Values(3, 0.0f));
    }
}

// ---- AlignTo

TEST(WaveformAlign, OtherTraceGivesItsGrid) {
    Waveform other(3);
    other.m_TimePerPoint = 0.5f;
    other.m_TimeShift = 0.25f;
    other.m_InitialStart = 0.25f;
    Waveform trace = MakeTrace({0.0f, 10.0f, 30.0f});
    trace.AlignTo(other);
    EXPECT_EQ(Samples(trace), (Values{5.0f, 10.0f, 20.0f}));
    EXPECT_EQ(trace.m_TimeShift, 0.25f);
    EXPECT_EQ(trace.m_InitialStart, 0.25f);
    EXPECT_EQ(trace.StartTime(), other.StartTime());
}

TEST(WaveformAlign, ScopeTermsOfTheOtherTraceAreMissingFromTheStart) {
    Waveform other(2);
    other.m_InitialStart = 0.5f;
    other.m_ScopePT = 0.25f;
    other.m_ScopeTD = 0.25f;
    Waveform trace = MakeTrace({0.0f, 10.0f, 30.0f});
    trace.AlignTo(other);
    EXPECT_EQ(Samples(trace), (Values{10.0f, 30.0f}));
    EXPECT_EQ(trace.StartTime(), 0.5f);
}

TEST(WaveformAlign, OwnTraceStaysAsItIs) {
    Waveform trace = ScopeTrace();
    trace.AlignTo(trace);
    EXPECT_EQ(Samples(trace), (Values{1.0f, 3.0f, 7.0f, 15.0f}));
    EXPECT_EQ(trace.StartTime(), 10.0f);
}

// ---- TimeFill

TEST(WaveformTimeFill, GivesTheTimeOfEachSample) {
    const Waveform trace = ScopeTrace();
    DArray<float> times(7);
    trace.TimeFill(times, 0);
    EXPECT_EQ(Samples(times), (Values{10.0f, 12.0f, 14.0f, 16.0f}));
    trace.TimeFill(times, -5);
    EXPECT_EQ(times.Count(), 4);
    trace.TimeFill(times, 2);
    EXPECT_EQ(Samples(times), (Values{14.0f, 16.0f}));
}

TEST(WaveformTimeFill, MultipliesAndThenAdds) {
    const Waveform trace = MakeTrace(Values(100, 0.0f), 0.7f, 0.1f);
    DArray<float> times;
    trace.TimeFill(times, 1);
    ASSERT_EQ(times.Count(), 99);
    for (int k = 1; k < 100; ++k) {
        const float product = static_cast<float>(k) * 0.1f;
        EXPECT_EQ(times[k - 1], product + 0.7f);
    }
}

TEST(WaveformTimeFill, BeginningBehindTheTraceEmptiesTheArray) {
    const Waveform trace = ScopeTrace();
    for (const int from : {4, 5, INT_MAX}) {
        DArray<float> times(2, 3);
        trace.TimeFill(times, from);
        EXPECT_EQ(times.Count(), 0);
        EXPECT_EQ(times.RCount(), 1);
        EXPECT_EQ(times.Capacity(), 0);
    }
}

TEST(WaveformTimeFill, TableBecomesAList) {
    DArray<float> times(2, 3);
    ScopeTrace().TimeFill(times, 1);
    EXPECT_EQ(times.RCount(), 1);
    EXPECT_EQ(times.CCount(), 3);
}

TEST(WaveformTimeFill, TraceMayTakeItsOwnTimes) {
    Waveform trace = ScopeTrace();
    trace.TimeFill(trace, 1);
    EXPECT_EQ(Samples(trace), (Values{12.0f, 14.0f, 16.0f}));
}

// ---- Scale

TEST(WaveformScale, FindsTheExtremaAndOneAboveTheirIndexes) {
    const Waveform trace = MakeScaledTrace({2.0f, -3.0f, 7.5f, 0.0f});
    EXPECT_EQ(trace.m_Max, 7.5f);
    EXPECT_EQ(trace.m_MaxIndex, 3);
    EXPECT_EQ(trace.m_Min, -3.0f);
    EXPECT_EQ(trace.m_MinIndex, 2);
    EXPECT_EQ(trace.m_ScaleUnit, 1.0f);
}

TEST(WaveformScale, GreatestValueAtTheFirstSampleHasIndexOne) {
    const Waveform trace = MakeScaledTrace({7.0f, 3.0f});
    EXPECT_EQ(trace.m_MaxIndex, 1);
    EXPECT_EQ(trace.m_MinIndex, 2);
}

TEST(WaveformScale, FirstOfEqualExtremaCounts) {
    const Waveform trace = MakeScaledTrace({1.0f, 5.0f, 0.0f, 5.0f, 0.0f});
    EXPECT_EQ(trace.m_MaxIndex, 2);
    EXPECT_EQ(trace.m_MinIndex, 3);
}

TEST(WaveformScale, UnitFollowsTheGreaterMagnitude) {
    EXPECT_EQ(MakeScaledTrace({-3.0f, 1.0f}).m_ScaleUnit, 0.5f);
    EXPECT_EQ(MakeScaledTrace({-3.0f, 7.0f}).m_ScaleUnit, 1.0f);
    EXPECT_EQ(MakeScaledTrace({-1.5f, -1.0f}).m_ScaleUnit, 0.2f);
}

TEST(WaveformScale, ForgetsEarlierExtrema) {
    Waveform trace = MakeTrace({1.0f, 2.0f});
    trace.m_Max = 1000.0f;
    trace.m_Min = -1000.0f;
    trace.m_MaxIndex = trace.m_MinIndex = 50;
    trace.Scale();
    EXPECT_EQ(trace.m_Max, 2.0f);
    EXPECT_EQ(trace.m_Min, 1.0f);
    EXPECT_EQ(trace.m_MaxIndex, 2);
    EXPECT_EQ(trace.m_MinIndex, 1);
}

TEST(WaveformScale, InvalidSamplesAreReplacedForGood) {
    const Waveform trace =
        MakeScaledTrace({NotANumber, 2.0f, Infinity, -Infinity, 1.0f, 1e35f, -1e35f, 3e38f});
    EXPECT_EQ(Samples(trace),
              (Values{-3.3e38f, 2.0f, -3.3e38f, -3.3e38f, 1.0f, -3.3e38f, -3.3e38f, -3.3e38f}));
    EXPECT_EQ(trace.m_Max, 2.0f);
    EXPECT_EQ(trace.m_MaxIndex, 2);
    EXPECT_EQ(trace.m_Min, 1.0f);
    EXPECT_EQ(trace.m_MinIndex, 5);
}

TEST(WaveformScale, GreatNegativeSamplesAreValidButNoMinimum) {
    const Waveform trace = MakeScaledTrace({4.0f, -5e34f, -1e34f, -9.8e33f});
    EXPECT_EQ(Samples(trace), (Values{4.0f, -5e34f, -1e34f, -9.8e33f}));
    EXPECT_EQ(trace.m_Min, -9.8e33f);
    EXPECT_EQ(trace.m_MinIndex, 4);
}

TEST(WaveformScale, LimitOfTheMinimumIsComparedInDouble) {
    // The float next to the limit lies on one side of it; its neighbour lies on the other.
    const float nearest = -9.9e33f;
    const float inside = static_cast<double>(nearest) > -9.9e33 ? nearest : nextafterf(nearest, 0);
    const float outside = nextafterf(inside, -Infinity);
    ASSERT_LE(static_cast<double>(outside), -9.9e33);
    EXPECT_EQ(MakeScaledTrace({4.0f, inside}).m_MinIndex, 2);
    EXPECT_EQ(MakeScaledTrace({4.0f, outside}).m_MinIndex, 1);
}

TEST(WaveformScale, NothingValidLeavesTheBounds) {
    const Waveform trace = MakeScaledTrace({NotANumber, Infinity});
    EXPECT_EQ(trace.m_Max, -3.3e38f);
    EXPECT_EQ(trace.m_Min, 3.3e38f);
    EXPECT_EQ(trace.m_MaxIndex, 0);
    EXPECT_EQ(trace.m_MinIndex, 0);
}

TEST(WaveformScale, EmptyTraceLeavesTheBounds) {
    const Waveform trace = MakeScaledTrace({});
    EXPECT_EQ(trace.m_Max, -3.3e38f);
    EXPECT_EQ(trace.m_Min, 3.3e38f);
    EXPECT_EQ(trace.m_MaxIndex, 0);
    EXPECT_EQ(trace.m_MinIndex, 0);
    EXPECT_EQ(trace.m_ScaleUnit, exp2f(38.0f * 3.321928f) * 0.5f);
}

TEST(WaveformScale, TraceOfZerosHasAMinimumAndNoMaximum) {
    const Waveform trace = MakeScaledTrace({0.0f, 0.0f});
    EXPECT_EQ(trace.m_Max, 0.0f);
    EXPECT_EQ(trace.m_Min, 0.0f);
    EXPECT_EQ(trace.m_MaxIndex, 0);
    EXPECT_EQ(trace.m_MinIndex, 1);
    EXPECT_EQ(trace.m_ScaleUnit, exp2f(-30.0f * 3.321928f) * 0.2f);
}

TEST(WaveformScale, RangeBelowTheLeastMagnitudeHasNoMaximumIndex) {
    const Waveform below = MakeScaledTrace({0.0f, 9e-31f});
    EXPECT_EQ(below.m_Max, 9e-31f);
    EXPECT_EQ(below.m_MaxIndex, 0);
    EXPECT_EQ(MakeScaledTrace({0.0f, 1e-30f}).m_MaxIndex, 2);
}

// ---- SetCalAttOff

TEST(WaveformCalibration, SamplesFollowCalibrationAttenuationAndOffset) {
    Waveform trace = MakeTrace({8.0f, 24.0f});
    trace.m_Calib = 2.0f;
    trace.m_Atten = 4.0f;
    trace.m_Baseline = 0.5f;
    trace.SetCalAttOff(3.0f, 8.0f, 16.0f);
    // The baseline becomes 16 / 8 = 2, so (2 - 0.5) * 8 = 12 is taken off; then 24 for each 8.
    EXPECT_EQ(Samples(trace), (Values{-12.0f, 36.0f}));
    EXPECT_EQ(trace.m_Baseline, 2.0f);
    EXPECT_EQ(trace.m_Calib, 3.0f);
    EXPECT_EQ(trace.m_Atten, 8.0f);
}

TEST(WaveformCalibration, ZeroAndInvalidFactorsKeepTheOldOnes) {
    for (const float none : {0.0f, -0.0f, NotANumber, Infinity, -3.3e38f}) {
        Waveform trace = MakeTrace({8.0f});
        trace.m_Calib = 2.0f;
        trace.m_Atten = 4.0f;
        trace.SetCalAttOff(none, 8.0f, NotANumber);
        EXPECT_EQ(trace.m_Calib, 2.0f);
        EXPECT_EQ(trace.m_Atten, 8.0f);
        EXPECT_EQ(trace[0], 16.0f);
        trace.SetCalAttOff(-4.0f, none, NotANumber);
        EXPECT_EQ(trace.m_Calib, -4.0f);
        EXPECT_EQ(trace.m_Atten, 8.0f);
        EXPECT_EQ(trace[0], -32.0f);
    }
}

TEST(WaveformCalibration, OffsetOfZeroMovesTheBaselineToZero) {
    Waveform trace = MakeTrace({8.0f});
    trace.m_Calib = 2.0f;
    trace.m_Baseline = 3.0f;
    trace.SetCalAttOff(0.0f, 0.0f, 0.0f);
    EXPECT_EQ(trace.m_Baseline, 0.0f);
    EXPECT_EQ(trace[0], 14.0f);
}

TEST(WaveformCalibration, InvalidOffsetKeepsTheBaseline) {
    for (const float none : {NotANumber, Infinity, 3.3e38f}) {
        Waveform trace = MakeTrace({8.0f});
        trace.m_Baseline = 3.0f;
        trace.SetCalAttOff(2.0f, 0.0f, none);
        EXPECT_EQ(trace.m_Baseline, 3.0f);
        EXPECT_EQ(trace[0], 16.0f);
    }
}

TEST(WaveformCalibration, NoChangeStillRewritesTheSamplesWithRounding) {
    Values before;
    for (int k = 1; k <= 100; ++k)
        before.push_back(static_cast<float>(k) * 0.1f);
    Waveform trace = MakeTrace(before);
    trace.m_Calib = 0.3f;
    trace.m_Atten = 0.7f;
    trace.SetCalAttOff(0.0f, 0.0f, NotANumber);
    const float gain = 0.7f * 0.3f;
    const float inverse = 1.0f / gain;
    for (int k = 0; k < 100; ++k) {
        const float scaled = before[static_cast<size_t>(k)] * gain;
        EXPECT_EQ(trace[k], scaled * inverse);
    }
    EXPECT_NE(Samples(trace), before);
}

TEST(WaveformCalibration, EmptyTraceChangesItsFieldsAlone) {
    Waveform trace(0);
    trace.SetCalAttOff(2.0f, 4.0f, 8.0f);
    EXPECT_EQ(trace.m_Calib, 2.0f);
    EXPECT_EQ(trace.m_Atten, 4.0f);
    EXPECT_EQ(trace.m_Baseline, 8.0f);
}

TEST(WaveformCalibration, ExtremaStay) {
    Waveform trace = MakeScaledTrace({1.0f, 2.0f});
    trace.SetCalAttOff(10.0f, 0.0f, NotANumber);
    EXPECT_EQ(trace[1], 20.0f);
    EXPECT_EQ(trace.m_Max, 2.0f);
}

// ---- Time to index

TEST(WaveformIndex, IsTheSampleAtOrBeforeTheTimeWithoutLimits) {
    const Waveform trace = ScopeTrace();
    EXPECT_EQ(trace.Index(10.0f), 0);
    EXPECT_EQ(trace.Index(11.9f), 0);
    EXPECT_EQ(trace.Index(12.0f), 1);
    EXPECT_EQ(trace.Index(9.9f), -1);
    EXPECT_EQ(trace.Index(0.0f), -5);
    EXPECT_EQ(trace.Index(110.0f), 50);
}

TEST(WaveformIndex, SaturatesWhereTheIndexDoesNotFit) {
    const Waveform trace = MakeTrace({1.0f}, 0.0f, 1e-30f);
    EXPECT_EQ(trace.Index(1.0f), INT_MAX);
    EXPECT_EQ(trace.Index(-1.0f), INT_MIN);
    EXPECT_EQ(trace.Index(NotANumber), 0);
}

TEST(WaveformPointAtTime, IsTheSampleAtOrBeforeTheTimeWithinTheTrace) {
    const Waveform trace = ScopeTrace();
    EXPECT_EQ(trace.PointAtTime(10.0f), 0);
    EXPECT_EQ(trace.PointAtTime(11.9f), 0);
    EXPECT_EQ(trace.PointAtTime(15.9f), 2);
    EXPECT_EQ(trace.PointAtTime(16.0f), 3);
    EXPECT_EQ(trace.PointAtTime(16.1f), 3);
    EXPECT_EQ(trace.PointAtTime(1e30f), 3);
    EXPECT_EQ(trace.PointAtTime(9.9f), 0);
    EXPECT_EQ(trace.PointAtTime(-1e30f), 0);
}

TEST(WaveformPointAtTime, TimeOfASampleCanBeRoundedToTheOneBefore) {
    const float interval = 1.0f * 0.1f;
    const float start = 1.0f * 0.7f;
    const Waveform trace = MakeTrace({1.0f, 2.0f, 3.0f}, start, interval);
    const float last = 2.0f * interval + start;
    ASSERT_LT((last - start) / interval, 2.0f);
    EXPECT_EQ(trace.PointAtTime(last), 1);
    EXPECT_EQ(trace.PointAtTime(nextafterf(last, 1.0f)), 2);
}

TEST(WaveformPointAtTime, NeverLeavesATraceWithPoints) {
    for (const float interval : {1.0f, 0.0f, -1.0f, 1e-45f, 1e38f, NotANumber}) {
        const Waveform trace = MakeTrace({1.0f, 2.0f, 3.0f}, 1.0f, interval);
        for (const float time : {-1e38f, -2.0f, 0.9f, 1.0f, 1.1f, 2.0f, 9.0f, 1e38f, NotANumber}) {
            EXPECT_GE(trace.PointAtTime(time), 0) << interval << " " << time;
            EXPECT_LE(trace.PointAtTime(time), 2) << interval << " " << time;
        }
    }
}

TEST(WaveformPointAtTime, EmptyTraceHasNoPoint) {
    const Waveform trace(0);
    EXPECT_EQ(trace.PointAtTime(1.0f), -1);
    EXPECT_EQ(trace.PointAtTime(-5.0f), 0);
}
