// The waveform's record: construction, copies, and the operations on header and samples alone.
#include <gtest/gtest.h>

#include <memory>

#include "data/WaveformTestData.h"

namespace {

// A trace with a value of its own in every field.
Waveform FullTrace() {
    Waveform trace = MakeTrace({1.0f, 2.0f, 4.0f}, 0.5f, 0.25f);
    trace.m_TimeShift = 0.75f;
    trace.m_ScaleUnit = 5.0f;
    for (int i = 0; i < 12; ++i)
        trace.m_Params[i] = static_cast<float>(i) + 0.5f;
    trace.m_ScopePT = 1.25f;
    trace.m_ScopeSV = 1.5f;
    trace.m_ScopeX = 1.75f;
    trace.m_ScopeY = 2.25f;
    trace.m_ScopeTD = 2.5f;
    trace.m_Label = "label";
    trace.m_Date = "date";
    trace.m_Note = "note";
    trace.m_HeaderPoints = 77;
    trace.m_Flags = 6;
    trace.m_Atten = 10.0f;
    trace.m_Calib = 3.0f;
    trace.m_Baseline = 0.125f;
    trace.m_Max = 4.0f;
    trace.m_Min = 1.0f;
    trace.m_MaxIndex = 3;
    trace.m_MinIndex = 1;
    return trace;
}

void ExpectHeaderOfFullTrace(const Waveform& trace) {
    EXPECT_EQ(trace.m_TimePerPoint, 0.25f);
    EXPECT_EQ(trace.m_TimeShift, 0.75f);
    EXPECT_EQ(trace.m_InitialStart, 0.5f);
    EXPECT_EQ(trace.m_ScaleUnit, 5.0f);
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(trace.m_Params[i], static_cast<float>(i) + 0.5f);
    EXPECT_EQ(trace.m_ScopePT, 1.25f);
    EXPECT_EQ(trace.m_ScopeSV, 1.5f);
    EXPECT_EQ(trace.m_ScopeX, 1.75f);
    EXPECT_EQ(trace.m_ScopeY, 2.25f);
    EXPECT_EQ(trace.m_ScopeTD, 2.5f);
    EXPECT_STREQ(trace.m_Label, "label");
    EXPECT_STREQ(trace.m_Date, "date");
    EXPECT_STREQ(trace.m_Note, "note");
    EXPECT_EQ(trace.m_HeaderPoints, 77);
    EXPECT_EQ(trace.m_Atten, 10.0f);
    EXPECT_EQ(trace.m_Calib, 3.0f);
    EXPECT_EQ(trace.m_Baseline, 0.125f);
    EXPECT_EQ(trace.m_Max, 4.0f);
    EXPECT_EQ(trace.m_Min, 1.0f);
    EXPECT_EQ(trace.m_MaxIndex, 3);
    EXPECT_EQ(trace.m_MinIndex, 1);
}

}  // namespace

// ---- Construction

TEST(Waveform, NewTraceHasZeroSamplesAndDefaultHeader) {
    const Waveform trace(5);
    EXPECT_EQ(Samples(trace), std::vector<float>(5, 0.0f));
    EXPECT_EQ(trace.m_HeaderPoints, 5);
    EXPECT_EQ(trace.RCount(), 1);
    EXPECT_EQ(trace.CCount(), 5);
    EXPECT_EQ(trace.m_TimePerPoint, 1.0f);
    EXPECT_EQ(trace.m_TimeShift, 0.0f);
    EXPECT_EQ(trace.m_InitialStart, 0.0f);
    EXPECT_EQ(trace.m_ScaleUnit, 1.0f);
    for (const float param : trace.m_Params)
        EXPECT_EQ(param, 0.0f);
    for (const float scope :
         {trace.m_ScopePT, trace.m_ScopeSV, trace.m_ScopeX, trace.m_ScopeY, trace.m_ScopeTD}) {
        EXPECT_EQ(scope, 0.0f);
    }
    EXPECT_TRUE(trace.m_Label.IsEmpty());
    EXPECT_TRUE(trace.m_Date.IsEmpty());
    EXPECT_TRUE(trace.m_Note.IsEmpty());
    EXPECT_EQ(trace.m_Flags, 0);
    EXPECT_EQ(trace.m_Atten, 1.0f);
    EXPECT_EQ(trace.m_Calib, 1.0f);
    EXPECT_EQ(trace.m_Baseline, 0.0f);
    EXPECT_EQ(trace.m_Max, 0.0f);
    EXPECT_EQ(trace.m_Min, 0.0f);
    EXPECT_EQ(trace.m_MaxIndex, 0);
    EXPECT_EQ(trace.m_MinIndex, 0);
}

TEST(Waveform, NegativeLengthCountsAsZero) {
    const Waveform trace(-3);
    EXPECT_EQ(trace.Count(), 0);
    EXPECT_EQ(trace.CCount(), 0);
    EXPECT_EQ(trace.m_HeaderPoints, 0);
}

TEST(Waveform, FieldsStandInTheirOrderBehindTheArray) {
    const Waveform w(0);
    const void* const order[] = {
        &w.m_Data,      &w.m_TimePerPoint, &w.m_TimeShift, &w.m_InitialStart, &w.m_ScaleUnit,
        &w.m_Params[0], &w.m_ScopePT,      &w.m_ScopeSV,   &w.m_ScopeX,       &w.m_ScopeY,
        &w.m_ScopeTD,   &w.m_Label,        &w.m_Date,      &w.m_Note,         &w.m_HeaderPoints,
        &w.m_Flags,     &w.m_Atten,        &w.m_Calib,     &w.m_Baseline,     &w.m_Max,
        &w.m_Min,       &w.m_MaxIndex,     &w.m_MinIndex};
    EXPECT_TRUE(std::is_sorted(std::begin(order), std::end(order)));
}

TEST(Waveform, IsDestroyedWholeThroughItsBase) {
    const DString label("a text that is too long for the smallest block");
    auto trace = std::make_unique<Waveform>(3);
    trace->m_Label = label;
    EXPECT_EQ(label.GetRefs(), 2);
    std::unique_ptr<DArray<float>> base = std::move(trace);
    base.reset();
    EXPECT_EQ(label.GetRefs(), 1);
}

TEST(Waveform, StartTimeIsTheSumOfFourTermsInTheirOrder) {
    Waveform trace(1);
    trace.m_TimeShift = 1e8f;
    trace.m_InitialStart = -1e8f;
    trace.m_ScopePT = 3.0f;
    trace.m_ScopeTD = 0.25f;
    trace.m_ScopeSV = trace.m_ScopeX = trace.m_ScopeY = trace.m_Baseline = 50.0f;
    EXPECT_EQ(trace.StartTime(), 3.25f);
    trace.m_TimeShift = 3.0f;
    trace.m_ScopePT = 1e8f;
    EXPECT_EQ(trace.StartTime(), 0.25f);  // the 3 is lost in the first sum
}

// ---- Copies

TEST(WaveformCopy, NewObjectTakesAllButTheFlags) {
    const Waveform original = FullTrace();
    Waveform copy(original);
    ExpectHeaderOfFullTrace(copy);
    EXPECT_EQ(copy.m_Flags, 0);
    EXPECT_EQ(Samples(copy), (std::vector<float>{1.0f, 2.0f, 4.0f}));
    copy[0] = 100.0f;
    EXPECT_EQ(original[0], 1.0f);
}

TEST(WaveformCopy, SharesTheTexts) {
    const Waveform original = FullTrace();
    const Waveform copy(original);
    EXPECT_EQ(static_cast<const char*>(copy.m_Label), static_cast<const char*>(original.m_Label));
}

TEST(WaveformCopy, AssignmentKeepsOwnFlags) {
    const Waveform original = FullTrace();
    Waveform target(1000);
    target.m_Flags = 2;
    Waveform& result = target = original;
    EXPECT_EQ(&result, &target);
    ExpectHeaderOfFullTrace(target);
    EXPECT_EQ(target.m_Flags, 2);
    EXPECT_EQ(Samples(target), Samples(original));
    EXPECT_EQ(target.Capacity(), 256);
    target[1] = 100.0f;
    EXPECT_EQ(original[1], 2.0f);
}

TEST(WaveformCopy, SelfAssignmentChangesNothing) {
    Waveform trace = FullTrace();
    trace.m_Flags = 6;
    const Waveform& same = trace;
    trace = same;
    ExpectHeaderOfFullTrace(trace);
    EXPECT_EQ(trace.m_Flags, 6);
    EXPECT_EQ(Samples(trace), (std::vector<float>{1.0f, 2.0f, 4.0f}));
}

TEST(WaveformCopy, HeaderAloneLeavesSamplesAndFlags) {
    Waveform target = MakeTrace({8.0f, 9.0f});
    target.m_Flags = 1;
    target.CopyHeader(FullTrace());
    ExpectHeaderOfFullTrace(target);
    EXPECT_EQ(target.m_Flags, 1);
    EXPECT_EQ(Samples(target), (std::vector<float>{8.0f, 9.0f}));
}

// ---- InitFrom

TEST(WaveformInitFrom, GivesZerosOnTheOthersTimeBase) {
    const Waveform other = FullTrace();
    Waveform target = MakeTrace({8.0f, 9.0f}, 40.0f, 2.0f);
    target.m_ScopePT = 7.0f;
    target.m_ScopeSV = target.m_ScopeX = target.m_ScopeY = target.m_ScopeTD = 8.0f;
    target.m_Baseline = 6.0f;
    Waveform& result = target.InitFrom(other, false, false);
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(Samples(target), std::vector<float>(3, 0.0f));
    EXPECT_EQ(target.m_TimePerPoint, 0.25f);
    EXPECT_EQ(target.m_TimeShift, 0.75f);
    EXPECT_EQ(target.m_InitialStart, 0.5f + 1.25f + 2.5f);
    EXPECT_EQ(target.StartTime(), other.StartTime());
    for (const float cleared : {target.m_ScopePT, target.m_ScopeSV, target.m_ScopeX,
                                target.m_ScopeY, target.m_ScopeTD, target.m_Baseline}) {
        EXPECT_EQ(cleared, 0.0f);
    }
}

TEST(WaveformInitFrom, LeavesWhatIsNotAskedFor) {
    Waveform target(2);
    target.m_Label = "own";
    target.m_Max = 12.0f;
    target.m_Params[3] = 13.0f;
    target.m_Atten = 14.0f;
    target.m_Calib = 15.0f;
    target.m_Flags = 2;
    target.InitFrom(FullTrace(), false, false);
    EXPECT_STREQ(target.m_Label, "own");
    EXPECT_EQ(target.m_Max, 12.0f);
    EXPECT_EQ(target.m_Params[3], 13.0f);
    EXPECT_EQ(target.m_Atten, 14.0f);
    EXPECT_EQ(target.m_Calib, 15.0f);
    EXPECT_EQ(target.m_HeaderPoints, 2);
    EXPECT_EQ(target.m_Flags, 2);
}

TEST(WaveformInitFrom, TakesParametersAndCalibrationWhereAsked) {
    Waveform params(0);
    params.InitFrom(FullTrace(), true, false);
    EXPECT_EQ(params.m_Params[0], 0.5f);
    EXPECT_EQ(params.m_Params[11], 11.5f);
    EXPECT_EQ(params.m_Calib, 1.0f);
    Waveform calib(0);
    calib.InitFrom(FullTrace(), false, true);
    EXPECT_EQ(calib.m_Params[11], 0.0f);
    EXPECT_EQ(calib.m_Atten, 10.0f);
    EXPECT_EQ(calib.m_Calib, 3.0f);
}

TEST(WaveformInitFrom, FreesTheOldStorage) {
    Waveform target(1000);
    target.InitFrom(FullTrace(), false, false);
    EXPECT_EQ(target.Capacity(), 256);
}

TEST(WaveformInitFrom, OwnObjectChangesNothing) {
    Waveform trace = FullTrace();
    trace.InitFrom(trace, true, true);
    ExpectHeaderOfFullTrace(trace);
    EXPECT_EQ(Samples(trace), (std::vector<float>{1.0f, 2.0f, 4.0f}));
}

// ---- Zeroing

TEST(WaveformZero, ClearsTheSamplesAndLeavesTheHeader) {
    Waveform trace = FullTrace();
    trace.Zero();
    EXPECT_EQ(Samples(trace), std::vector<float>(3, 0.0f));
    ExpectHeaderOfFullTrace(trace);
}

TEST(WaveformZero, EmptyTraceStaysEmpty) {
    Waveform trace(0);
    trace.Zero();
    EXPECT_EQ(trace.Count(), 0);
}

TEST(WaveformScopeZero, FoldsTheScopeIntoTheInitialStart) {
    Waveform trace = FullTrace();
    const float start = trace.StartTime();
    trace.ScopeZero();
    EXPECT_EQ(trace.m_InitialStart, 0.5f + 1.25f + 2.5f);
    EXPECT_EQ(trace.StartTime(), start);
    EXPECT_EQ(trace.m_TimeShift, 0.75f);
    for (const float cleared : {trace.m_ScopePT, trace.m_ScopeSV, trace.m_ScopeX, trace.m_ScopeY,
                                trace.m_ScopeTD, trace.m_Baseline}) {
        EXPECT_EQ(cleared, 0.0f);
    }
    EXPECT_EQ(Samples(trace), (std::vector<float>{1.0f, 2.0f, 4.0f}));
}

TEST(WaveformScopeZero, AddsInOrder) {
    Waveform trace(0);
    trace.m_InitialStart = 1e8f;
    trace.m_ScopePT = -1e8f;
    trace.m_ScopeTD = 3.0f;
    trace.ScopeZero();
    EXPECT_EQ(trace.m_InitialStart, 3.0f);
}

// ---- Arrays of waveforms

TEST(WaveformArray, BlankElementsAreEmptyTraces) {
    DArray<Waveform> traces(2);
    EXPECT_EQ(traces[1].Count(), 0);
    EXPECT_EQ(traces[1].m_TimePerPoint, 1.0f);
    EXPECT_EQ(traces[1].m_HeaderPoints, 0);
}

TEST(WaveformArray, ElementsKeepTheirContentWhileTheArrayGrowsAndShifts) {
    DArray<Waveform> traces;
    for (int i = 0; i < 300; ++i)
        traces.Add(FullTrace(), 1);
    traces.Remove(0, 1);
    traces.InsertBlank(0, 1);
    EXPECT_EQ(traces.Count(), 300);
    EXPECT_EQ(traces[0].Count(), 0);
    ExpectHeaderOfFullTrace(traces[299]);
    EXPECT_EQ(Samples(traces[299]), (std::vector<float>{1.0f, 2.0f, 4.0f}));
}

TEST(WaveformArray, ReplaceAssignsToTheElement) {
    DArray<Waveform> traces(3);
    traces[1].m_Flags = 2;
    const Waveform other = FullTrace();
    traces.Replace(&other, 1, 1);
    ExpectHeaderOfFullTrace(traces[1]);
    EXPECT_EQ(traces[1].m_Flags, 2);
    EXPECT_EQ(traces[2].Count(), 0);
}
