// The C calls of traces.
#include <string.h>

#include <cmath>
#include <limits>

#include "core/OpenSession.h"
#include "data/WaveformTestData.h"
#include "support/BytesRead.h"

namespace {
/// Where the samples of a file begin that has a date, but no label and no note.
constexpr size_t SamplesOffset = 112 + 19 + 28;

template <typename T>
T At(const std::string& bytes, size_t offset) {
    T value{};
    if (offset + sizeof value > bytes.size()) {
        ADD_FAILURE() << "the file ends before " << offset;
    } else {
        memcpy(&value, bytes.data() + offset, sizeof value);
    }
    return value;
}

std::vector<float> FileSamples(const std::string& bytes) {
    std::vector<float> samples;
    for (size_t at = SamplesOffset; at < bytes.size(); at += sizeof(float)) {
        samples.push_back(At<float>(bytes, at));
    }
    return samples;
}

struct Info {
    int m_Points = -1;
    float m_Start = -1;
    float m_Step = -1;
    bool operator==(const Info&) const = default;
};

void PrintTo(const Info& info, std::ostream* out) {
    *out << info.m_Points << " points from " << info.m_Start << " by " << info.m_Step;
}

Info InfoOf(const char* name) {
    Info info;
    GetWaveformInfoC(name, &info.m_Points, &info.m_Start, &info.m_Step);
    return info;
}

/// `points` values of a trace; the buffer around them has to stay as it was.
std::vector<float> Values(const char* name, float start, float step, int points) {
    const size_t count = points > 0 ? static_cast<size_t>(points) : 0;
    std::vector<float> data(count + 3, -7.0f);
    GetWaveformC(name, start, step, points, data.data());
    EXPECT_EQ(std::vector<float>(data.begin() + points, data.end()), std::vector<float>(3, -7.0f));
    data.resize(count);
    return data;
}

class WaveformCalls : public OpenShot {
protected:
    static std::string File(const std::string& name) { return Shot("7") + "/" + name + ".wvf"; }

    static void Store(const char* name, const std::vector<float>& samples, float start = 10,
                      float step = 0.5f) {
        SetWaveformC(name, start, step, static_cast<int>(samples.size()), samples.data());
    }
};

const Info Missing = {0, 0, 1};
const std::vector<float> Ramp = {1, 2, 4, 3};

}  // namespace

// ---- The header

TEST_F(WaveformCalls, InfoOfAMissingTraceIsNoPointsFromZeroByOne) {
    EXPECT_EQ(InfoOf("I"), Missing);
    EXPECT_EQ(InfoOf("99\\I"), Missing);
    EXPECT_EQ(InfoOf(""), Missing);
    EXPECT_EQ(InfoOf(nullptr), Missing);
}

TEST_F(WaveformCalls, InfoStartsAtTheSumOfTheStartTimes) {
    WriteBytes(File("I"), WvfFile().Bytes());
    // 0.75, the time shift, and 100.5, the initial time with the scope's two terms in it.
    EXPECT_EQ(InfoOf("I"), (Info{3, 101.25f, 0.25f}));
}

TEST_F(WaveformCalls, InfoReadsTheHeaderAlone) {
    constexpr long Points = 1000000;
    WvfFile file;
    file.m_Points = Points;
    file.m_Samples = std::string(Points * sizeof(float), '\0');
    WriteBytes(File("I"), file.Bytes());
    const long before = BytesRead();
    EXPECT_EQ(InfoOf("I").m_Points, Points);
    EXPECT_LT(BytesRead() - before, Points);
}

TEST_F(WaveformCalls, InfoTakesTheNumberOfPointsFromTheHeader) {
    WvfFile file;
    file.m_Points = 1000000000;
    file.m_Samples = "";
    WriteBytes(File("I"), file.Bytes());
    EXPECT_EQ(InfoOf("I").m_Points, 1000000000);
}

TEST_F(WaveformCalls, InfoOfATooNewFileIsThatOfAMissingOne) {
    WvfFile file;
    file.m_Version = 5;
    WriteBytes(File("I"), file.Bytes());
    EXPECT_EQ(InfoOf("I"), Missing);
    EXPECT_EQ(Values("I", 0, 1, 2), (std::vector<float>{0, 0}));
}

TEST_F(WaveformCalls, InfoMissingPointersAreNotTouched) {
    Store("I", Ramp);
    GetWaveformInfoC("I", nullptr, nullptr, nullptr);
    int points = 0;
    GetWaveformInfoC("I", &points, nullptr, nullptr);
    EXPECT_EQ(points, 4);
}

// ---- Reading

TEST_F(WaveformCalls, TraceIsReadOnItsOwnGrid) {
    WriteBytes(File("I"), WvfFile().Bytes());
    EXPECT_EQ(Values("I", 101.25f, 0.25f, 3), (std::vector<float>{-3, 1, 9}));
}

TEST_F(WaveformCalls, TraceIsInterpolatedAndZeroOutside) {
    Store("I", Ramp);
    EXPECT_EQ(Values("I", 9.75f, 0.25f, 10),
              (std::vector<float>{0, 1, 1.5f, 2, 3, 4, 3.5f, 3, 0, 0}));
    EXPECT_EQ(Values("I", 10, 0.5f, 6), (std::vector<float>{1, 2, 4, 3, 0, 0}));
    EXPECT_EQ(Values("I", 10, 0.5f, 2), (std::vector<float>{1, 2}));
    EXPECT_EQ(Values("I", 50, 0.5f, 2), (std::vector<float>{0, 0}));
}

TEST_F(WaveformCalls, TraceWithNoStepGivenKeepsItsOwnAndBeginsOnASample) {
    Store("I", Ramp);
    EXPECT_EQ(Values("I", 10.75f, 0, 3), (std::vector<float>{2, 4, 3}));
    EXPECT_EQ(Values("I", 10.75f, -1, 3), (std::vector<float>{2, 4, 3}));
    EXPECT_EQ(Values("I", 9.9f, 0, 3), (std::vector<float>{0, 1, 2}));
}

TEST_F(WaveformCalls, TraceThatIsMissingGivesZeros) {
    const std::vector<float> zeros = {0, 0, 0};
    EXPECT_EQ(Values("I", 0, 1, 3), zeros);
    EXPECT_EQ(Values("I", -1, 0, 3), zeros);
    EXPECT_EQ(Values("99\\I", 0, 1, 3), zeros);
    EXPECT_EQ(Values(nullptr, 0, 1, 3), zeros);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Values("I", nan, nan, 3), zeros);
}

TEST_F(WaveformCalls, TraceOfNoOrFewerPointsTouchesNothing) {
    Store("I", Ramp);
    for (const int points : {0, -1, INT_MIN}) {
        float data[] = {-7, -7};
        GetWaveformC("I", 10, 0.5f, points, data);
        EXPECT_EQ(data[0], -7) << points;
        EXPECT_EQ(data[1], -7) << points;
        GetWaveformC("I", 10, 0.5f, points, nullptr);
    }
    GetWaveformC("I", 10, 0.5f, 4, nullptr);
}

TEST_F(WaveformCalls, TraceIsReadAnewAtEachCall) {
    Store("I", Ramp);
    ASSERT_EQ(Values("I", 10, 0.5f, 1), std::vector<float>{1});
    Store("I", {5, 6});
    EXPECT_EQ(Values("I", 10, 0.5f, 1), std::vector<float>{5});
    ASSERT_EQ(remove(File("I").c_str()), 0);
    EXPECT_EQ(Values("I", 10, 0.5f, 1), std::vector<float>{0});
}

// ---- Storing

TEST_F(WaveformCalls, StoredTraceHasItsTimeBaseSamplesAndExtrema) {
    Store("I", Ramp, 10, 0.5f);
    const std::string bytes = ReadBytes(File("I"));
    EXPECT_EQ(At<int16_t>(bytes, 0), 4);
    EXPECT_EQ(At<int32_t>(bytes, 4), 4) << "points";
    EXPECT_EQ(At<float>(bytes, 12), 0.5f) << "interval";
    EXPECT_EQ(At<float>(bytes, 28), 10.0f) << "initial time";
    EXPECT_EQ(At<float>(bytes, 32), 0.0f) << "time shift";
    EXPECT_EQ(At<float>(bytes, 36), 4.0f) << "maximum";
    EXPECT_EQ(At<float>(bytes, 40), 1.0f) << "minimum";
    EXPECT_EQ(At<int32_t>(bytes, 44), 3) << "index of the maximum plus one";
    EXPECT_EQ(At<int32_t>(bytes, 48), 1) << "index of the minimum plus one";
    EXPECT_EQ(At<float>(bytes, 78), 0.0f) << "first scope term of the start";
    EXPECT_EQ(At<float>(bytes, 82), 0.0f) << "second scope term of the start";
    EXPECT_EQ(FileSamples(bytes), Ramp);
    EXPECT_EQ(InfoOf("I"), (Info{4, 10, 0.5f}));
}

TEST_F(WaveformCalls, StoringLeavesTheCallersSamplesAlone) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> samples = {1, nan, 2};
    Store("I", samples);
    EXPECT_TRUE(std::isnan(samples[1]));
    EXPECT_EQ(FileSamples(ReadBytes(File("I"))), (std::vector<float>{1, -DFMax, 2}));
}

TEST_F(WaveformCalls, StoringNoOrFewerPointsMakesAnEmptyTrace) {
    for (const int points : {0, -1, INT_MIN}) {
        remove(File("I").c_str());
        SetWaveformC("I", 10, 0.5f, points, nullptr);
        EXPECT_EQ(InfoOf("I"), (Info{0, 10, 0.5f})) << points;
        EXPECT_EQ(ReadBytes(File("I")).size(), SamplesOffset) << points;
    }
}

TEST_F(WaveformCalls, StoringWithoutSamplesDoesNothing) {
    SetWaveformC("I", 10, 0.5f, 3, nullptr);
    SetWaveformXYC("I", 3, nullptr);
    EXPECT_FALSE(Exists(File("I")));
}

TEST_F(WaveformCalls, StoringInAnUnknownShotOrWithoutANameDoesNothing) {
    Store("99\\I", Ramp);
    Store("", Ramp);
    Store(nullptr, Ramp);
    ExpectNoNewFiles();
}

TEST_F(WaveformCalls, DataNameReachesAnotherShotAndHoldsFields) {
    ASSERT_EQ(CreateShotC("8"), 1);
    SetStringDataC("Trace", "I");
    Store("7\\![Trace]", Ramp);
    EXPECT_TRUE(Exists(File("I")));
    EXPECT_EQ(Values("7\\I", 10, 0.5f, 4), Ramp);
    EXPECT_EQ(InfoOf("I"), Missing);
}

TEST_F(WaveformCalls, LockedFileIsKeptWithAMessage) {
    WvfFile file;
    file.m_Version = -4;
    WriteBytes(File("I"), file.Bytes());
    EXPECT_EQ(PrintedBy([] { Store("I", Ramp); }),
              "Could not write to " + File("I") + " because it is locked\n");
    EXPECT_EQ(ReadBytes(File("I")), file.Bytes());
}

// ---- Pairs of time and value

TEST_F(WaveformCalls, PairsMakeAUniformTimeBaseFromTheFirstToTheLast) {
    const float xy[] = {2, 10, 2.1f, 20, 2.2f, 30, 5, 40};
    SetWaveformXYC("I", 4, xy);
    const std::string bytes = ReadBytes(File("I"));
    EXPECT_EQ(At<float>(bytes, 12), 1.0f) << "interval";
    EXPECT_EQ(At<float>(bytes, 28), 2.0f) << "initial time";
    EXPECT_EQ(At<float>(bytes, 36), 40.0f) << "maximum";
    EXPECT_EQ(FileSamples(bytes), (std::vector<float>{10, 20, 30, 40}));
}

TEST_F(WaveformCalls, TwoPairsHaveTheIntervalBetweenThem) {
    const float xy[] = {3, 1, 3.75f, 2};
    SetWaveformXYC("I", 2, xy);
    EXPECT_EQ(InfoOf("I"), (Info{2, 3, 0.75f}));
}

TEST_F(WaveformCalls, IntervalOfPairsIsComputedInSinglePrecision) {
    const float xy[] = {0.1f, 1, 0, 2, 0, 3, 1.1f, 4};
    SetWaveformXYC("I", 4, xy);
    const volatile float span = 1.1f - 0.1f;
    const volatile float interval = span / 3.0f;
    EXPECT_EQ(InfoOf("I").m_Step, interval);
}

TEST_F(WaveformCalls, FewerThanTwoPairsMakeNoFile) {
    const float xy[] = {3, 1, 4, 2};
    for (const int points : {1, 0, -1, INT_MIN}) {
        SetWaveformXYC("I", points, xy);
        EXPECT_FALSE(Exists(File("I"))) << points;
    }
    Store("I", Ramp);
    const std::string before = ReadBytes(File("I"));
    SetWaveformXYC("I", 1, xy);
    EXPECT_EQ(ReadBytes(File("I")), before);
}

TEST_F(WaveformCalls, PairsInAnUnknownShotDoNothing) {
    const float xy[] = {3, 1, 4, 2};
    SetWaveformXYC("99\\I", 2, xy);
    ExpectNoNewFiles();
}
