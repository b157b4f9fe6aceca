// The .wvf format, read and written, against bytes put together by hand.
#include <gtest/gtest.h>
#include <string.h>

#include <bit>
#include <filesystem>
#include <functional>

#include "data/WaveformTestData.h"
#include "support/ProcessMemory.h"
#include "system/DFile.h"

namespace {

constexpr int DateLength = 19;

// A trace as an earlier use left it: no field has the value of the hand-made file.
Waveform UsedTrace() {
    Waveform trace = MakeTrace(std::vector<float>(300, 50.0f), 51.0f, 52.0f);
    trace.m_TimeShift = 53.0f;
    trace.m_ScaleUnit = 54.0f;
    for (int i = 0; i < 12; ++i)
        trace.m_Params[i] = static_cast<float>(60 + i);
    trace.m_ScopePT = 55.0f;
    trace.m_ScopeSV = 56.0f;
    trace.m_ScopeX = 57.0f;
    trace.m_ScopeY = 58.0f;
    trace.m_ScopeTD = 59.0f;
    trace.m_Label = "old label";
    trace.m_Date = "old date";
    trace.m_Note = "old note";
    trace.m_HeaderPoints = 99;
    trace.m_Atten = 72.0f;
    trace.m_Calib = 73.0f;
    trace.m_Baseline = 74.0f;
    trace.m_Max = 75.0f;
    trace.m_Min = 76.0f;
    trace.m_MaxIndex = 77;
    trace.m_MinIndex = 78;
    return trace;
}

void ExpectHeaderOfUsedTrace(const Waveform& trace) {
    EXPECT_EQ(trace.m_TimePerPoint, 52.0f);
    EXPECT_EQ(trace.m_InitialStart, 51.0f);
    EXPECT_EQ(trace.m_TimeShift, 53.0f);
    EXPECT_EQ(trace.m_ScaleUnit, 54.0f);
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(trace.m_Params[i], static_cast<float>(60 + i));
    EXPECT_EQ(trace.m_ScopePT, 55.0f);
    EXPECT_EQ(trace.m_ScopeTD, 59.0f);
    EXPECT_STREQ(trace.m_Label, "old label");
    EXPECT_STREQ(trace.m_Date, "old date");
    EXPECT_STREQ(trace.m_Note, "old note");
    EXPECT_EQ(trace.m_HeaderPoints, 99);
    EXPECT_EQ(trace.m_Atten, 72.0f);
    EXPECT_EQ(trace.m_MinIndex, 78);
}

void ExpectNumbersOfFile(const Waveform& trace) {
    EXPECT_EQ(trace.m_HeaderPoints, 3);
    const float params[] = {1.5f, 2.5f, 3.5f, 4.5f, 5.5f};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(trace.m_Params[i], params[i]) << i;
    EXPECT_EQ(trace.m_TimePerPoint, 0.25f);
    EXPECT_EQ(trace.m_Calib, 2.0f);
    EXPECT_EQ(trace.m_Atten, 10.0f);
    EXPECT_EQ(trace.m_InitialStart, 97.0f);  // 100.5 - (1.25 + 2.25)
    EXPECT_EQ(trace.m_TimeShift, 0.75f);
    EXPECT_EQ(trace.m_Max, 9.0f);
    EXPECT_EQ(trace.m_Min, -3.0f);
    EXPECT_EQ(trace.m_MaxIndex, 3);
    EXPECT_EQ(trace.m_MinIndex, 1);
    EXPECT_EQ(trace.m_ScaleUnit, 2.0f);
    EXPECT_EQ(trace.m_ScopeSV, 6.25f);
    EXPECT_EQ(trace.m_Baseline, 0.125f);
    EXPECT_EQ(trace.m_ScopePT, 1.25f);
    EXPECT_EQ(trace.m_ScopeTD, 2.25f);
    EXPECT_EQ(trace.m_ScopeX, 7.25f);
    EXPECT_EQ(trace.m_ScopeY, 8.25f);
}

const std::vector<float> FileSamples = {-3.0f, 1.0f, 9.0f};

// A trace that writes the hand-made file, but for its date.
Waveform TraceOfFile() {
    Waveform trace(0);
    EXPECT_TRUE(ReadFrom(WvfFile(), trace));
    return trace;
}

// What `trace` writes to the file out.wvf.
std::string Written(Waveform& trace) {
    EXPECT_TRUE(trace.Write(Scratch("out").c_str()));
    return ReadBytes(Scratch("out.wvf"));
}

int VersionWord(const std::string& bytes) {
    int16_t word = 0;
    memcpy(&word, bytes.data(), sizeof word);
    return word;
}

}  // namespace

// ---- Reading

TEST(WaveformFile, ReadsEveryFieldFromItsPlace) {
    Waveform trace = UsedTrace();
    ASSERT_TRUE(ReadFrom(WvfFile(), trace));
    ExpectNumbersOfFile(trace);
    const float late[] = {6.5f, 7.5f, 8.5f, 9.5f, 10.5f, 11.5f, 12.5f};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(trace.m_Params[5 + i], late[i]) << i;
    EXPECT_STREQ(trace.m_Label, "the label");
    EXPECT_STREQ(trace.m_Date, "06/07/2021 08:09:10");
    EXPECT_STREQ(trace.m_Note, "a note");
    EXPECT_EQ(trace.m_Flags, 0);
    EXPECT_EQ(Samples(trace), FileSamples);
    EXPECT_EQ(trace.RCount(), 1);
    EXPECT_EQ(trace.CCount(), 3);
    EXPECT_EQ(trace.StartTime(), 101.25f);
}

TEST(WaveformFile, AnyNegativeNumberOfPointsReadsAllThatTheHeaderAnnounces) {
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(WvfFile(), trace, -1000));
    EXPECT_EQ(Samples(trace), FileSamples);
}

TEST(WaveformFile, ZeroPointsReadTheHeaderAlone) {
    Waveform trace = UsedTrace();
    ASSERT_TRUE(ReadFrom(WvfFile(), trace, 0));
    ExpectNumbersOfFile(trace);
    EXPECT_EQ(trace.Count(), 0);
    EXPECT_EQ(trace.CCount(), 0);
    EXPECT_EQ(trace.Capacity(), 0);
}

TEST(WaveformFile, HeaderReadStopsAheadOfTheSamples) {
    const std::string bytes = WvfFile().Bytes();
    WriteBytes(Scratch("trace.wvf"), bytes);
    DFile file;
    ASSERT_TRUE(file.Open(Scratch("trace.wvf").c_str(), 5));
    Waveform trace(0);
    trace.Read(file, 0);
    EXPECT_EQ(ftell(file.m_Stream), static_cast<long>(bytes.size() - 12));
}

TEST(WaveformFile, FewerPointsReadTheFirstOnes) {
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(WvfFile(), trace, 2));
    EXPECT_EQ(Samples(trace), (std::vector<float>{-3.0f, 1.0f}));
    EXPECT_EQ(trace.m_HeaderPoints, 3);
}

TEST(WaveformFile, MorePointsThanTheFileHasEndInZeros) {
    Waveform trace = UsedTrace();
    ASSERT_TRUE(ReadFrom(WvfFile(), trace, 5));
    EXPECT_EQ(Samples(trace), (std::vector<float>{-3.0f, 1.0f, 9.0f, 0.0f, 0.0f}));
    EXPECT_EQ(trace.m_HeaderPoints, 3);
}

TEST(WaveformFile, PointsBehindTheAnnouncedOnesAreReadWhereAskedFor) {
    WvfFile file;
    file.m_Points = 1;
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(file, trace, 3));
    EXPECT_EQ(Samples(trace), FileSamples);
    EXPECT_EQ(trace.m_HeaderPoints, 1);
}

TEST(WaveformFile, NegativeAnnouncedCountGivesNoSamples) {
    WvfFile file;
    file.m_Points = -5;
    Waveform trace = UsedTrace();
    ASSERT_TRUE(ReadFrom(file, trace));
    EXPECT_EQ(trace.m_HeaderPoints, -5);
    EXPECT_EQ(trace.Count(), 0);
}

TEST(WaveformFile, SpecialValuesOfSamplesAreReadAsTheyStand) {
    WvfFile file;
    file.m_Samples = Float32(Infinity) + Float32(-0.0f) + Float32(NotANumber);
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(file, trace));
    EXPECT_EQ(memcmp(trace.Data(), file.m_Samples.data(), file.m_Samples.size()), 0);
}

// ---- Header extension

TEST(WaveformFile, HeaderExtensionIsPassedOver) {
    WvfFile file;
    file.m_ExtensionLength = 6;
    file.m_Extension = "extend";
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(file, trace));
    ExpectNumbersOfFile(trace);
    EXPECT_EQ(Samples(trace), FileSamples);
}

TEST(WaveformFile, NegativeExtensionGoesBack) {
    const std::string numbers = WvfFile().Numbers().substr(4);
    Waveform trace(0);
    // The point count begins with the extension length, FE FF.
    ASSERT_TRUE(ReadFrom(Int16(4) + Int16(-2) + Int16(1) + numbers, trace, 0));
    EXPECT_EQ(trace.m_HeaderPoints, 0x1FFFE);
    EXPECT_EQ(trace.m_ScopeY, 8.25f);
}

TEST(WaveformFile, ExtensionAheadOfTheFileIsIgnored) {
    WvfFile file;
    file.m_ExtensionLength = -5;
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(file, trace));
    ExpectNumbersOfFile(trace);
    EXPECT_EQ(Samples(trace), FileSamples);
}

TEST(WaveformFile, ExtensionBeyondTheFileLeavesTheHeader) {
    WvfFile file;
    file.m_ExtensionLength = 32767;
    Waveform trace = UsedTrace();
    ASSERT_TRUE(ReadFrom(file, trace));
    ExpectHeaderOfUsedTrace(trace);
    EXPECT_EQ(trace.Count(), 0);
}

// ---- Versions

TEST(WaveformFile, VersionsBelowFourHaveNoScopeTD) {
    for (const int version : {0, 1, 2, 3, -1, -3}) {
        WvfFile file;
        file.m_Version = version;
        Waveform trace = UsedTrace();
        ASSERT_TRUE(ReadFrom(file, trace)) << version;
        EXPECT_EQ(trace.m_ScopeTD, 0.0f) << version;
        EXPECT_EQ(trace.m_InitialStart, 100.5f - 1.25f) << version;
        EXPECT_EQ(trace.m_ScopeX, 7.25f) << version;
        EXPECT_EQ(Samples(trace), FileSamples) << version;
    }
}

TEST(WaveformFile, NegativeVersionsCountByTheirMagnitudeWithoutALimit) {
    for (const int version : {-4, -5, -1000, -32768}) {
        WvfFile file;
        file.m_Version = version;
        Waveform trace(0);
        ASSERT_TRUE(ReadFrom(file, trace)) << version;
        ExpectNumbersOfFile(trace);
        EXPECT_EQ(Samples(trace), FileSamples) << version;
        EXPECT_EQ(trace.m_Flags, 1) << version;
    }
}

TEST(WaveformFile, VersionsAboveFourLeaveAnEmptyTraceAndTheHeader) {
    for (const int version : {5, 6, 32767}) {
        WvfFile file;
        file.m_Version = version;
        Waveform trace = UsedTrace();
        trace.m_Flags = 2;
        EXPECT_TRUE(ReadFrom(file, trace)) << version;
        EXPECT_EQ(trace.Count(), 0);
        EXPECT_EQ(trace.RCount(), 1);
        EXPECT_EQ(trace.CCount(), 0);
        EXPECT_EQ(trace.Capacity(), 512);
        EXPECT_EQ(trace.m_Flags, 2);
        ExpectHeaderOfUsedTrace(trace);
    }
}

TEST(WaveformFile, TooNewVersionEndsTheReadingOfTheStream) {
    WvfFile file;
    file.m_Version = 5;
    WriteBytes(Scratch("trace.wvf"), file.Bytes());
    DFile stream;
    ASSERT_TRUE(stream.Open(Scratch("trace.wvf").c_str(), 5));
    Waveform trace(0);
    trace.Read(stream, -1);
    EXPECT_EQ(ftell(stream.m_Stream), 2);
}

TEST(WaveformFile, LockedFileSetsTheFlagsToOne) {
    WvfFile file;
    file.m_Version = -4;
    Waveform trace(0);
    trace.m_Flags = 6;
    ASSERT_TRUE(ReadFrom(file, trace));
    EXPECT_EQ(trace.m_Flags, 1);
}

TEST(WaveformFile, UnlockedFileLeavesTheFlags) {
    Waveform trace(0);
    trace.m_Flags = 3;
    ASSERT_TRUE(ReadFrom(WvfFile(), trace));
    EXPECT_EQ(trace.m_Flags, 3);
}

// ---- Fields with a meaning of their own

TEST(WaveformFile, StepsOfZeroReadAsOne) {
    for (const float zero : {0.0f, -0.0f}) {
        WvfFile file;
        file.m_TimePerPoint = zero;
        file.m_ScaleUnit = zero;
        Waveform trace = UsedTrace();
        ASSERT_TRUE(ReadFrom(file, trace));
        EXPECT_EQ(trace.m_TimePerPoint, 1.0f);
        EXPECT_EQ(trace.m_ScaleUnit, 1.0f);
    }
}

TEST(WaveformFile, NegativeAndTinyStepsStay) {
    for (const float step : {-0.5f, 1e-40f, -1e30f}) {
        WvfFile file;
        file.m_TimePerPoint = step;
        file.m_ScaleUnit = step;
        Waveform trace(0);
        ASSERT_TRUE(ReadFrom(file, trace));
        EXPECT_EQ(trace.m_TimePerPoint, step);
        EXPECT_EQ(trace.m_ScaleUnit, step);
    }
}

TEST(WaveformFile, ScopeTermsAreAddedBeforeTheyAreTakenFromTheInitialTime) {
    WvfFile file;
    file.m_InitialTime = 1e8f;
    file.m_ScopeTD = 3.0f;
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(file, trace));
    // One by one, neither 1.25 nor 3 would move a number of this size, but their sum does.
    EXPECT_EQ(trace.m_InitialStart, 99999992.0f);
}

TEST(WaveformFile, LateParametersOfAnotherSizeKeepTheirOldValues) {
    for (const int size : {0, 4, 27, 29, 300}) {
        WvfFile file;
        file.m_LateParamBytes = size;
        file.m_LateParams = std::string(static_cast<size_t>(size), 'x');
        Waveform trace = UsedTrace();
        ASSERT_TRUE(ReadFrom(file, trace)) << size;
        for (int i = 5; i < 12; ++i)
            EXPECT_EQ(trace.m_Params[i], static_cast<float>(60 + i));
        EXPECT_EQ(Samples(trace), FileSamples) << size;
    }
}

TEST(WaveformFile, NegativeSizeOfLateParametersGoesBack) {
    WvfFile file;
    file.m_LateParamBytes = -2;
    file.m_LateParams = "";
    std::string bytes = file.Bytes();
    bytes.erase(bytes.size() - 12 - 2, 2);  // the reserved bytes begin with the size
    Waveform trace = UsedTrace();
    ASSERT_TRUE(ReadFrom(bytes, trace));
    EXPECT_EQ(trace.m_Params[5], 65.0f);
    EXPECT_EQ(Samples(trace), FileSamples);
}

TEST(WaveformFile, EmptyAndNegativeTextLengthsLeaveTheTexts) {
    WvfFile file;
    file.m_Label = Int16(0);
    file.m_Date = Int16(-1);
    file.m_Note = Int16(-32768);
    Waveform used = UsedTrace();
    ASSERT_TRUE(ReadFrom(file, used));
    EXPECT_STREQ(used.m_Label, "old label");
    EXPECT_STREQ(used.m_Date, "old date");
    EXPECT_STREQ(used.m_Note, "old note");
    EXPECT_EQ(Samples(used), FileSamples);
    Waveform fresh(0);
    ASSERT_TRUE(ReadFrom(file, fresh));
    EXPECT_TRUE(fresh.m_Label.IsEmpty());
}

TEST(WaveformFile, TextsMayHoldAnyByte) {
    WvfFile file;
    file.m_Note = ShortText(std::string("a\0b\xff", 4));
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(file, trace));
    EXPECT_EQ(Text(trace.m_Note), std::string("a\0b\xff", 4));
}

// ---- Files that end early

TEST(WaveformFile, EveryNumberChangesOnlyWithItsOwnBytes) {
    struct Field {
        size_t m_End;  // behind its last byte
        std::function<float(const Waveform&)> m_Value;
        float m_New;
    };
    const Field fields[] = {
        {8, [](const Waveform& w) { return static_cast<float>(w.m_HeaderPoints); }, 3.0f},
        {12, [](const Waveform& w) { return w.m_Params[3]; }, 4.5f},
        {16, [](const Waveform& w) { return w.m_TimePerPoint; }, 0.25f},
        {20, [](const Waveform& w) { return w.m_Params[4]; }, 5.5f},
        {24, [](const Waveform& w) { return w.m_Calib; }, 2.0f},
        {28, [](const Waveform& w) { return w.m_Atten; }, 10.0f},
        {36, [](const Waveform& w) { return w.m_TimeShift; }, 0.75f},
        {40, [](const Waveform& w) { return w.m_Max; }, 9.0f},
        {44, [](const Waveform& w) { return w.m_Min; }, -3.0f},
        {48, [](const Waveform& w) { return static_cast<float>(w.m_MaxIndex); }, 3.0f},
        {52, [](const Waveform& w) { return static_cast<float>(w.m_MinIndex); }, 1.0f},
        {56, [](const Waveform& w) { return w.m_ScaleUnit; }, 2.0f},
        {62, [](const Waveform& w) { return w.m_ScopeSV; }, 6.25f},
        {66, [](const Waveform& w) { return w.m_Params[0]; }, 1.5f},
        {70, [](const Waveform& w) { return w.m_Params[1]; }, 2.5f},
        {74, [](const Waveform& w) { return w.m_Params[2]; }, 3.5f},
        {78, [](const Waveform& w) { return w.m_Baseline; }, 0.125f},
        {82, [](const Waveform& w) { return w.m_ScopePT; }, 1.25f},
        {86, [](const Waveform& w) { return w.m_ScopeTD; }, 2.25f},
        {90, [](const Waveform& w) { return w.m_ScopeX; }, 7.25f},
        {94, [](const Waveform& w) { return w.m_ScopeY; }, 8.25f},
        {140, [](const Waveform& w) { return w.m_Params[5]; }, 6.5f},
        {144, [](const Waveform& w) { return w.m_Params[6]; }, 7.5f},
        {164, [](const Waveform& w) { return w.m_Params[11]; }, 12.5f},
    };
    const std::string whole = WvfFile().Bytes();
    const Waveform used = UsedTrace();
    for (size_t length = 0; length <= whole.size(); ++length) {
        Waveform trace = UsedTrace();
        ASSERT_TRUE(ReadFrom(whole.substr(0, length), trace));
        for (const Field& field : fields) {
            const float expected = length < field.m_End ? field.m_Value(used) : field.m_New;
            EXPECT_EQ(field.m_Value(trace), expected) << field.m_End << " of " << length;
        }
    }
}

TEST(WaveformFile, CutShortFileKeepsTheStartTimeThatItTells) {
    const std::string whole = WvfFile().Bytes();
    for (size_t length = 0; length <= 94; ++length) {
        Waveform trace = UsedTrace();
        ASSERT_TRUE(ReadFrom(whole.substr(0, length), trace));
        // The scope terms of the file count once they are there, until then the old ones do.
        const float scope = (length < 82 ? 55.0f : 1.25f) + (length < 86 ? 59.0f : 2.25f);
        EXPECT_EQ(trace.m_InitialStart, length < 32 ? 51.0f : 100.5f - scope) << length;
    }
}

TEST(WaveformFile, OldVersionCutShortKeepsScopeTDUntilItsPlace) {
    WvfFile file;
    file.m_Version = 3;
    for (const size_t length : {2u, 50u, 85u, 86u}) {
        Waveform trace = UsedTrace();
        ASSERT_TRUE(ReadFrom(file.Bytes().substr(0, length), trace));
        EXPECT_EQ(trace.m_ScopeTD, length < 86 ? 59.0f : 0.0f) << length;
    }
}

TEST(WaveformFile, CutShortTextIsFilledUpWithZeroBytes) {
    const std::string whole = WvfFile().Bytes();
    Waveform trace = UsedTrace();
    ASSERT_TRUE(ReadFrom(whole.substr(0, 96 + 3), trace));
    EXPECT_EQ(Text(trace.m_Label), std::string("the\0\0\0\0\0\0", 9));
    EXPECT_STREQ(trace.m_Date, "old date");
    ASSERT_TRUE(ReadFrom(whole.substr(0, 95), trace = UsedTrace()));
    EXPECT_STREQ(trace.m_Label, "old label");
}

TEST(WaveformFile, CutShortCountAnnouncesNoPoints) {
    Waveform trace = UsedTrace();
    ASSERT_TRUE(ReadFrom(WvfFile().Bytes().substr(0, 7), trace));
    EXPECT_EQ(trace.Count(), 0);
}

TEST(WaveformFile, CutShortSamplesEndInZeros) {
    const std::string whole = WvfFile().Bytes();
    Waveform trace(0);
    ASSERT_TRUE(ReadFrom(whole.substr(0, whole.size() - 4), trace));
    EXPECT_EQ(Samples(trace), (std::vector<float>{-3.0f, 1.0f, 0.0f}));
    ASSERT_TRUE(ReadFrom(whole.substr(0, 20), trace));
    EXPECT_EQ(Samples(trace), (std::vector<float>{0.0f, 0.0f, 0.0f}));
}

TEST(WaveformFile, EmptyFileReadsAsAnEmptyTrace) {
    Waveform trace = UsedTrace();
    trace.m_Flags = 2;
    EXPECT_TRUE(ReadFrom(std::string(), trace));
    EXPECT_EQ(trace.Count(), 0);
    EXPECT_EQ(trace.m_Flags, 2);
    ExpectHeaderOfUsedTrace(trace);
}

TEST(WaveformFile, HalfAVersionWordIsNone) {
    Waveform trace = UsedTrace();
    EXPECT_TRUE(ReadFrom("\xff", trace));
    EXPECT_EQ(trace.m_Flags, 0);
    EXPECT_EQ(trace.Count(), 0);
}

TEST(WaveformFile, ClosedStreamIsReadAndWrittenWithoutEffect) {
    DFile closed;
    Waveform trace = UsedTrace();
    trace.Read(closed, -1);
    ExpectHeaderOfUsedTrace(trace);
    EXPECT_EQ(trace.Count(), 0);
    trace.Write(closed);
    EXPECT_EQ(closed.m_Stream, nullptr);
}

TEST(WaveformFile, HugeCountOfAShortFileCostsNoMemory) {
    WvfFile file;
    file.m_Points = 500000000;
    Waveform trace(0);
    const long before = ResidentBytes();
    ASSERT_TRUE(ReadFrom(file, trace));
    EXPECT_LT(ResidentBytes() - before, 100000000);
    EXPECT_EQ(trace.m_HeaderPoints, 500000000);
    if (trace.Count() == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    EXPECT_EQ(trace.Count(), 500000000);
    EXPECT_EQ(trace[2], 9.0f);
    EXPECT_EQ(trace[499999999], 0.0f);
}

TEST(WaveformFile, ReadingTakesTheMemoryOfItsPointsOnce) {
    WvfFile file;
    file.m_Points = 25000000;
    file.m_Samples.clear();
    const std::string header = file.Bytes();
    WriteBytes(Scratch("trace.wvf"), header);
    std::filesystem::resize_file(Scratch("trace.wvf"), header.size() + 100000000);
    Waveform trace;
    const long peak = PeakBytesOf([&trace] { trace.Read(Scratch("trace").c_str(), -1); });
    EXPECT_EQ(trace.Count(), 25000000);
    EXPECT_GE(peak, 100000000);
    EXPECT_LT(peak, 120000000);  // the address sanitizer takes an eighth more
}

TEST(WaveformFile, LargeTraceIsReadOverOldSamplesWithoutARest) {
    WvfFile file;
    file.m_Points = 10000;
    file.m_Samples = std::string(4 * 9999, '\x3f') + "abc";
    Waveform trace(20000);
    std::fill(trace.Data(), trace.Data() + 20000, 7.0f);
    ASSERT_TRUE(ReadFrom(file, trace));
    EXPECT_EQ(trace.Count(), 10000);
    EXPECT_EQ(trace.RCount(), 1);
    EXPECT_EQ(trace.CCount(), 10000);
    EXPECT_NE(trace[9998], 0.0f);
    // "abc" and a zero byte
    EXPECT_EQ(trace[9999], std::bit_cast<float>(0x00636261));
    file.m_Samples = std::string(4 * 10000, '\x3f');
    ASSERT_TRUE(ReadFrom(file, trace));
    EXPECT_EQ(trace[9999], trace[0]);
    ASSERT_TRUE(ReadFrom(file, trace, 10001));
    EXPECT_EQ(trace.Count(), 10001);
    EXPECT_EQ(trace[9999], trace[0]);
    EXPECT_EQ(trace[10000], 0.0f);
}

TEST(WaveformFile, CountThatGetsNoMemoryLeavesAnEmptyTrace) {
    WvfFile file;
    file.m_Points = 2147483647;
    Waveform trace = UsedTrace();
    {
        const AddressSpaceLimit limit(1000000000);
        EXPECT_TRUE(ReadFrom(file, trace));
    }
    EXPECT_EQ(trace.Count(), 0);
    EXPECT_EQ(trace.CCount(), 0);
    EXPECT_EQ(trace.m_HeaderPoints, 2147483647);
    EXPECT_EQ(trace.m_ScopeY, 8.25f);
}

// ---- Names

TEST(WaveformFile, NameThatEndsInSuffixGetsItTwice) {
    WriteBytes(Scratch("trace.wvf"), WvfFile().Bytes());
    Waveform trace(0);
    EXPECT_FALSE(trace.Read(Scratch("trace.wvf").c_str(), -1));
    WriteBytes(Scratch("trace.wvf.wvf"), WvfFile().Bytes());
    EXPECT_TRUE(trace.Read(Scratch("trace.wvf").c_str(), -1));
    EXPECT_EQ(Samples(trace), FileSamples);
    EXPECT_TRUE(trace.Write(Scratch("other.wvf").c_str()));
    EXPECT_EQ(Names(ScratchFolder()),
              (std::vector<std::string>{"other.wvf.wvf", "trace.wvf", "trace.wvf.wvf"}));
}

TEST(WaveformFile, CallersNameStaysAsItWas) {
    const DString name(Scratch("trace").c_str());
    Waveform trace = TraceOfFile();
    EXPECT_TRUE(trace.Write(name));
    EXPECT_TRUE(trace.Read(name, -1));
    EXPECT_EQ(Text(name), Scratch("trace"));
}

TEST(WaveformFile, MissingFileLeavesAnEmptyTraceAndTheHeader) {
    Waveform trace = UsedTrace();
    trace.m_Flags = 3;
    EXPECT_FALSE(trace.Read(Scratch("missing").c_str(), -1));
    EXPECT_EQ(trace.Count(), 0);
    EXPECT_EQ(trace.RCount(), 1);
    EXPECT_EQ(trace.CCount(), 0);
    EXPECT_EQ(trace.Capacity(), 512);
    EXPECT_EQ(trace.m_Flags, 3);
    ExpectHeaderOfUsedTrace(trace);
}

// ---- Writing

TEST(WaveformFile, FolderOfItsNameIsReadAsAnEmptyFile) {
    MakeFolder(Scratch("trace.wvf"));
    Waveform trace(3);
    EXPECT_TRUE(trace.Read(Scratch("trace").c_str(), -1));
    EXPECT_EQ(trace.Count(), 0);
}

TEST(WaveformFile, WritesEveryFieldInItsPlace) {
    Waveform trace = TraceOfFile();
    const std::string bytes = Written(trace);
    WvfFile file;
    file.m_Date = ShortText(Text(trace.m_Date));
    EXPECT_EQ(bytes, file.Bytes());
}

TEST(WaveformFile, EmptyTraceIsAHeaderOfDefaults) {
    Waveform trace(0);
    const std::string bytes = Written(trace);
    const std::string one = Float32(1.0f);
    const std::string zero = Float32(0.0f);
    std::string expected = Int16(4) + Int16(0) + Int32(0);
    expected += zero + one + zero + one + one;                        // t4 ... attenuation
    expected += zero + zero + zero + zero + Int32(0) + Int32(0);      // start ... indexes
    expected += one + Int16(0);                                       // scale unit
    expected += zero + zero + zero + zero + zero + zero;              // scope SV ... scope PT
    expected += zero + zero + zero;                                   // scope TD, X, Y
    expected += Int16(0) + ShortText(Text(trace.m_Date)) + Int16(0);  // texts
    expected += Int16(28) + std::string(28, '\0');
    expected += Int16(1) + Int32(0) + Int32(1);
    EXPECT_EQ(bytes, expected);
}

TEST(WaveformFile, WriteSetsTheDateToNow) {
    Waveform trace = TraceOfFile();
    const std::string before = Text(Now());
    Written(trace);
    const std::string after = Text(Now());
    EXPECT_TRUE(Text(trace.m_Date) == before || Text(trace.m_Date) == after) << trace.m_Date;
    EXPECT_EQ(trace.m_Date.GetLength(), DateLength);
}

TEST(WaveformFile, ConsecutiveWritesDifferInTheDateOnly) {
    Waveform trace = TraceOfFile();
    std::string first = Written(trace);
    std::string second = Written(trace);
    const size_t date = 96 + strlen("the label") + 2;
    EXPECT_EQ(first.erase(date, DateLength), second.erase(date, DateLength));
}

TEST(WaveformFile, WriteStoresTheCountAndLeavesTheHeaderPoints) {
    Waveform trace(4);
    trace.m_HeaderPoints = 1000;
    const std::string bytes = Written(trace);
    EXPECT_EQ(bytes.substr(4, 4), Int32(4));
    EXPECT_EQ(trace.m_HeaderPoints, 1000);
}

TEST(WaveformFile, WriteStoresTheInitialTimeAsASumInOrder) {
    Waveform trace(0);
    trace.m_ScopePT = 1e8f;
    trace.m_InitialStart = -1e8f;
    trace.m_ScopeTD = 3.0f;
    EXPECT_EQ(Written(trace).substr(28, 4), Float32(3.0f));
}

TEST(WaveformFile, StartTimeSurvivesWhereTheInitialStartIsRounded) {
    Waveform trace(1);
    trace.m_InitialStart = 0.1f;
    trace.m_ScopePT = 1000.0f;
    const float start = trace.StartTime();
    Written(trace);
    Waveform back(0);
    ASSERT_TRUE(back.Read(Scratch("out").c_str(), -1));
    EXPECT_NE(back.m_InitialStart, 0.1f);
    EXPECT_EQ(back.StartTime(), start);
}

TEST(WaveformFile, WrittenTraceReadsBack) {
    Waveform trace = MakeScaledTrace({0.5f, -0.25f, 3.0f}, 2.0f, 0.5f);
    trace.m_Note = "kept";
    trace.m_Params[11] = 5.0f;
    Written(trace);
    Waveform back(0);
    ASSERT_TRUE(back.Read(Scratch("out").c_str(), -1));
    EXPECT_EQ(Samples(back), Samples(trace));
    EXPECT_EQ(back.StartTime(), 2.0f);
    EXPECT_EQ(back.m_Max, 3.0f);
    EXPECT_EQ(back.m_MaxIndex, 3);
    EXPECT_EQ(back.m_Params[11], 5.0f);
    EXPECT_STREQ(back.m_Note, "kept");
    EXPECT_STREQ(back.m_Date, trace.m_Date);
    EXPECT_EQ(back.m_HeaderPoints, 3);
}

TEST(WaveformFile, ShorterTraceReplacesALongerFile) {
    Waveform longer(1000);
    Written(longer);
    Waveform shorter = TraceOfFile();
    WvfFile file;
    const std::string bytes = Written(shorter);
    file.m_Date = ShortText(Text(shorter.m_Date));
    EXPECT_EQ(bytes, file.Bytes());
}

TEST(WaveformFile, UnwritableNameIsFalseWithoutAMessage) {
    RecordingSink sink;
    Waveform trace(1);
    EXPECT_FALSE(trace.Write(Scratch("no/such/folder").c_str()));
    MakeFolder(Scratch("taken.wvf"));
    EXPECT_FALSE(trace.Write(Scratch("taken").c_str()));
    EXPECT_TRUE(sink.m_Entries.empty());
    EXPECT_TRUE(trace.m_Date.IsEmpty());
}

// ---- Locks

TEST(WaveformLock, BitOfValueTwoLocksTheFile) {
    const std::pair<int, int> versions[] = {{0, 4}, {1, 4}, {2, -4}, {3, -4}, {4, 4}, {6, -4}};
    for (const auto& [flags, version] : versions) {
        DFile file;
        ASSERT_TRUE(file.Open(Scratch("out.wvf").c_str(), 6));
        Waveform trace(1);
        trace.m_Flags = flags;
        trace.Write(file);
        file.Close();
        EXPECT_EQ(VersionWord(ReadBytes(Scratch("out.wvf"))), version) << flags;
        EXPECT_EQ(trace.m_Flags, flags);
    }
}

TEST(WaveformLock, LockedFileIsRefusedWithAMessage) {
    WvfFile locked;
    locked.m_Version = -4;
    for (const int flags : {0, 1, 2, 3, -1}) {
        WriteBytes(Scratch("out.wvf"), locked.Bytes());
        RecordingSink sink;
        Waveform trace(1);
        trace.m_Flags = flags;
        EXPECT_FALSE(trace.Write(Scratch("out").c_str())) << flags;
        EXPECT_EQ(ReadBytes(Scratch("out.wvf")), locked.Bytes());
        EXPECT_EQ(sink.Texts(NT_Message),
                  (std::vector<std::string>{"Could not write to " + Scratch("out.wvf") +
                                            " because it is locked"}));
        EXPECT_EQ(sink.m_Entries.size(), 1u);
        EXPECT_TRUE(trace.m_Date.IsEmpty());
    }
}

TEST(WaveformLock, FlagsOfFourAndMoreOverwriteALockedFile) {
    WvfFile locked;
    locked.m_Version = -4;
    const std::pair<int, int> versions[] = {{4, 4}, {5, 4}, {6, -4}, {8, 4}};
    for (const auto& [flags, version] : versions) {
        WriteBytes(Scratch("out.wvf"), locked.Bytes());
        Waveform trace(1);
        trace.m_Flags = flags;
        EXPECT_EQ(VersionWord(Written(trace)), version) << flags;
    }
}

TEST(WaveformLock, AnyNegativeVersionWordLocks) {
    for (const int version : {-1, -5, -32768}) {
        WriteBytes(Scratch("out.wvf"), Int16(version));
        RecordingSink sink;
        Waveform trace(1);
        EXPECT_FALSE(trace.Write(Scratch("out").c_str())) << version;
        EXPECT_EQ(ReadBytes(Scratch("out.wvf")), Int16(version));
    }
}

TEST(WaveformLock, FileTooShortForAVersionWordIsNotLocked) {
    for (const std::string& bytes : {std::string(), std::string("\xff")}) {
        WriteBytes(Scratch("out.wvf"), bytes);
        Waveform trace(1);
        EXPECT_EQ(VersionWord(Written(trace)), 4);
    }
}

TEST(WaveformLock, FileReadAsLockedIsUnlockedByAForcedWrite) {
    Waveform trace(1);
    trace.m_Flags = 2;
    EXPECT_EQ(VersionWord(Written(trace)), -4);
    Waveform back(0);
    ASSERT_TRUE(back.Read(Scratch("out").c_str(), -1));
    EXPECT_EQ(back.m_Flags, 1);
    {
        RecordingSink sink;
        EXPECT_FALSE(back.Write(Scratch("out").c_str()));
    }
    back.m_Flags |= 4;
    EXPECT_EQ(VersionWord(Written(back)), 4);
}

// ---- Traces of more bytes than an int counts

namespace {

constexpr int LargePoints = (1 << 29) + 3;

// A stream that takes and delivers bytes without storing any: what goes through it is counted.
struct CountedBytes {
    std::string m_Head;      // delivered first
    long m_Behind = 0;       // bytes that can be delivered behind it
    long m_Transferred = 0;  // bytes in all
};

ssize_t Deliver(void* cookie, char* buffer, size_t size) {
    CountedBytes& bytes = *static_cast<CountedBytes*>(cookie);
    const size_t done = static_cast<size_t>(bytes.m_Transferred);
    const size_t head = bytes.m_Head.size();
    const size_t total = head + static_cast<size_t>(bytes.m_Behind);
    const size_t n = std::min(size, done < head ? head - done : total - done);
    if (done < head) memcpy(buffer, bytes.m_Head.data() + done, n);
    bytes.m_Transferred += static_cast<long>(n);
    return static_cast<ssize_t>(n);
}

ssize_t Take(void* cookie, const char*, size_t size) {
    static_cast<CountedBytes*>(cookie)->m_Transferred += static_cast<long>(size);
    return static_cast<ssize_t>(size);
}

void OpenCounted(DFile& file, CountedBytes& bytes, const char* mode) {
    file.m_Stream = fopencookie(&bytes, mode, {Deliver, Take, nullptr, nullptr});
    ASSERT_NE(file.m_Stream, nullptr);
}

}  // namespace

TEST(WaveformFile, LargeTraceIsWrittenWhole) {
    Waveform trace(LargePoints);
    if (trace.Count() == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    CountedBytes bytes;
    DFile file;
    OpenCounted(file, bytes, "w");
    trace.Write(file);
    file.Close();
    const long header = 112 + DateLength + 28;
    EXPECT_EQ(bytes.m_Transferred, header + 4L * LargePoints);
}

TEST(WaveformFile, LargeTraceIsReadWhole) {
    WvfFile head;
    head.m_Points = LargePoints;
    head.m_Samples.clear();
    CountedBytes bytes;
    bytes.m_Head = head.Bytes();
    bytes.m_Behind = 4L * LargePoints;
    DFile file;
    OpenCounted(file, bytes, "r");
    Waveform trace(0);
    trace.Read(file, -1);
    if (trace.Count() == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    EXPECT_EQ(trace.Count(), LargePoints);
    EXPECT_EQ(bytes.m_Transferred, static_cast<long>(bytes.m_Head.size()) + bytes.m_Behind);
}
