// What is read of a stored object to answer for a parameter: no more than it needs, with the result
// that the whole object would give.
#include <string.h>

#include <string>

#include "core/CoreGlobal.h"
#include "data/MatrixTestData.h"
#include "data/ParticleTestData.h"
#include "data/Waveform.h"
#include "data/WaveformTestData.h"
#include "experiment/Experiment.h"
#include "support/BytesRead.h"
#include "support/ProcessMemory.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

const char* const HeaderNames[] = {
    "t1", "t2", "t3", "t4",        "t5", "t6", "t7", "t8", "t9", "ta",    "tb",  "tc", "st",
    "it", "ts", "is", "pt",        "td", "ft", "su", "mx", "mn", "cl",    "at",  "tp", "bl",
    "sv", "tm", "tn", "lt[101.6]", "MX", "Ft", "zz", "",   "m",  "mx[1]", "stop"};
const char* const SampleNames[] = {"19",    "28",     "av",        "in",        "ri",    "pi",
                                   "sd",    "wa",     "fh",        "vt[101.5]", "tv[0]", "t%[50]",
                                   "bv[0]", "b%[50]", "la[101.6]", "AV"};

bool SameBits(float a, float b) { return memcmp(&a, &b, sizeof a) == 0; }

// The header of a matrix in the scratch folder is that of its first layer, or range.
void ExpectHeaderAsOfTheWhole(const char* name, const std::string& what) {
    Matrix whole(1, 1, 1);
    Matrix header(1, 1, 1);
    ASSERT_TRUE(whole.Read(Scratch(name).c_str(), 0, 0));
    ASSERT_TRUE(header.ReadHeader(Scratch(name).c_str()));
    EXPECT_EQ(header.Count(), 0);
    EXPECT_EQ(header.m_NDims, whole.m_NDims) << what;
    for (const char* parameter :
         {"t1", "t2", "t3", "t4", "t5", "su", "mx", "mn", "rc", "rs", "rb", "r1",
          "re", "cc", "cs", "cb", "ce", "c1", "lc", "ls", "lb", "le", "l1"}) {
        EXPECT_TRUE(SameBits(header.GetMatrixParam(parameter), whole.GetMatrixParam(parameter)))
            << name << " of " << what << ": " << parameter;
    }
    EXPECT_EQ(Text(header.m_Note), Text(whole.m_Note)) << what;
    EXPECT_EQ(Text(header.m_Label), Text(whole.m_Label)) << what;
    EXPECT_EQ(Text(header.m_Date), Text(whole.m_Date)) << what;
}

class ParameterRead : public ShotTest {
protected:
    ParameterRead() { SelectNewShot("7", ""); }

    static std::string Path(const std::string& name) { return ShotFolder("7") + "/" + name; }
    static float Eval(const std::string& term) { return Expt.ParseSingle(term.c_str(), nullptr); }

    // The parameters of the trace W are those of the trace that is read whole.
    static void ExpectAsOfTheWhole(const std::string& bytes, const std::string& what) {
        WriteBytes(Path("W.wvf"), bytes);
        Waveform whole(0);
        const bool isTrace = whole.Read(Path("W").c_str(), -1) && whole.Count() != 0;
        const auto expect = [&](const char* name) {
            const float value = Eval(std::string("W\\") + name);
            if (isTrace) {
                EXPECT_TRUE(SameBits(value, whole.GetTraceParam(name))) << what << ": " << name;
            } else {
                EXPECT_FALSE(IsVF(value)) << what << ": " << name;
            }
        };
        for (const char* name : HeaderNames)
            expect(name);
        for (const char* name : SampleNames)
            expect(name);
        EXPECT_EQ(Expt.m_DataPtrs.Count(), 0);
    }
};

}  // namespace

TEST_F(ParameterRead, EachIsThatOfTheWholeTrace) {
    ExpectAsOfTheWhole(WvfFile().Bytes(), "golden");
}

TEST_F(ParameterRead, EachIsThatOfTheWholeTraceWhereverTheFileIsCut) {
    const std::string bytes = WvfFile().Bytes();
    for (size_t size = 0; size < bytes.size(); ++size)
        ExpectAsOfTheWhole(bytes.substr(0, size), std::to_string(size));
}

TEST_F(ParameterRead, EachIsThatOfTheWholeTraceForEveryVersionAndCount) {
    for (const int version : {-5, -4, 0, 1, 3, 4, 5, 32767}) {
        for (const long points : {-2147483647L, -1L, 0L, 1L, 2L, 3L, 4L, 1000L}) {
            WvfFile file;
            file.m_Version = version;
            file.m_Points = points;
            ExpectAsOfTheWhole(file.Bytes(),
                               std::to_string(version) + ", " + std::to_string(points));
        }
    }
}

TEST_F(ParameterRead, TraceThatCannotBeReadIsPassedOverForTheOtherKinds) {
    WriteBytes(Path("W.dmt"), DmtFile().Bytes());
    WvfFile trace;
    trace.m_Version = 5;
    WriteBytes(Path("W.wvf"), trace.Bytes());
    EXPECT_EQ(Eval("W\\lc"), 4.0f);
    EXPECT_EQ(Eval("W\\mx"), 312.5f);
    trace = WvfFile();
    trace.m_Points = 0;
    WriteBytes(Path("W.wvf"), trace.Bytes());
    EXPECT_EQ(Eval("W\\mx"), 312.5f);
}

TEST_F(ParameterRead, HeaderAnswersWithoutTheSamples) {
    constexpr long Many = 1000000;
    WvfFile trace;
    trace.m_Points = Many;
    trace.m_Samples = std::string(Many * sizeof(float), '\0');
    WriteBytes(Path("W.wvf"), trace.Bytes());
    for (const char* name : HeaderNames) {
        const long before = BytesRead();
        Eval(std::string("W\\") + name);
        EXPECT_LT(BytesRead() - before, 20000) << name;
    }
    EXPECT_EQ(Eval("W\\ft"), static_cast<float>(Many - 1) * 0.25f + 101.25f);
    for (const char* name : SampleNames) {
        const long before = BytesRead();
        Eval(std::string("W\\") + name);
        EXPECT_GT(BytesRead() - before, Many * 4) << name;
    }
}

TEST_F(ParameterRead, HeaderAnswersInLittleMemoryHoweverManySamplesThereAre) {
    WvfFile trace;
    trace.m_Points = 500000000;
    WriteBytes(Path("W.wvf"), trace.Bytes());
    DmtFile matrix;
    matrix.m_Axes = AxisRecord(30000, 1, {0}) + AxisRecord(30000, 1, {0}) + AxisRecord(2, 1, {0});
    WriteBytes(Path("M.dmt"), matrix.Bytes());
    DptFile group;
    group.m_Particles = 200000000;
    WriteBytes(Path("P.dpt"), group.Bytes());
    const AddressSpaceLimit limit(1000000000);
    EXPECT_EQ(Eval("W\\mx"), 9.0f);
    EXPECT_EQ(Eval("W\\ft"), 499999999.0f * 0.25f + 101.25f);
    EXPECT_EQ(Eval("M\\rc"), 30000.0f);
    EXPECT_EQ(Eval("M\\lc"), 2.0f);
    EXPECT_EQ(Eval("P\\np"), 200000000.0f);
}

TEST_F(ParameterRead, MatrixIsReadUpToItsValues) {
    DmtFile matrix;
    matrix.m_Axes = AxisRecord(1000, 1, {0}) + AxisRecord(1000, 1, {0}) + AxisRecord(2, 1, {0});
    matrix.m_Values = std::string(2 * 1000 * 1000 * sizeof(float), '\0');
    WriteBytes(Path("M.dmt"), matrix.Bytes());
    const long before = BytesRead();
    EXPECT_EQ(Eval("M\\mx"), 312.5f);
    EXPECT_EQ(Eval("M\\re"), 999.0f);
    EXPECT_EQ(Eval("M\\ce"), 999.0f);
    EXPECT_EQ(Eval("M\\le"), 0.0f);
    EXPECT_LT(BytesRead() - before, 100000);
}

TEST_F(ParameterRead, TraceInMemoryAnswersForTheSamplesThatItHolds) {
    void* object = Expt.InitDataPtr("@T", DataWaveform);
    Waveform& trace = *static_cast<Waveform*>(object);
    trace = MakeScaledTrace({0.0f, 5.0f}, 10.0f);
    trace.m_HeaderPoints = 1000;
    EXPECT_EQ(Eval("@T\\ft"), 11.0f);
    object = Expt.InitDataPtr("@T", DataWaveform);
    static_cast<Waveform*>(object)->m_HeaderPoints = 1000;
    EXPECT_FALSE(IsVF(Eval("@T\\ft"))) << "it holds none";
    EXPECT_EQ(Expt.m_DataPtrs.Count(), 0);
}

// ---- The calls on the objects

TEST(WaveformHeaderParam, ToldApartFromThoseThatNeedSamples) {
    for (const char* name : HeaderNames)
        EXPECT_FALSE(Waveform::NeedsSamples(name)) << name;
    for (const char* name : SampleNames)
        EXPECT_TRUE(Waveform::NeedsSamples(name)) << name;
}

TEST(WaveformHeaderParam, IsOfAsManySamplesAsTheHeaderAnnounces) {
    Waveform header(0);
    ASSERT_TRUE(ReadFrom(WvfFile(), header, 0));
    EXPECT_EQ(header.GetHeaderParam("ft"), 101.75f);
    EXPECT_EQ(header.GetHeaderParam("mx"), 9.0f);
    EXPECT_EQ(header.GetHeaderParam("lt[101.6]"), 101.5f);
    EXPECT_EQ(header.GetTraceParam("mx"), -3.3e38f) << "the samples aren't there";
    for (const char* name : SampleNames)
        EXPECT_EQ(header.GetHeaderParam(name), -3.3e38f) << name;
    header.m_HeaderPoints = 0;
    EXPECT_EQ(header.GetHeaderParam("mx"), -3.3e38f);
    header.m_HeaderPoints = -1;
    EXPECT_EQ(header.GetHeaderParam("mx"), -3.3e38f);
}

TEST(MatrixReadHeader, GivesWhatAReadOfTheFirstLayerGivesButForTheValues) {
    const std::string bytes = DmtFile().Bytes();
    for (size_t size = 0; size <= bytes.size(); ++size) {
        const std::string what = std::to_string(size) + " bytes";
        WriteBytes(Scratch("cut.dmt"), bytes.substr(0, size));
        ExpectHeaderAsOfTheWhole("cut", what);
        ExpectHeaderAsOfTheWhole("cut[1,3]", what);
    }
    EXPECT_FALSE(Matrix(1, 1, 1).ReadHeader(Scratch("missing").c_str()));
}

TEST(MatrixReadHeader, HasTheEndsOfEvenAxesOfEveryLength) {
    for (const int points : {0, 1, 2, 3, 4, 7, 100, 3000000}) {
        for (const float step : {0.75f, -0.1f}) {
            DmtFile file;
            file.m_Axes = AxisRecord(points, step, {1.7f}) + AxisRecord(5, -step, {-2.2f}) +
                          AxisRecord(points, step, {0.3f});
            WriteBytes(Scratch("even.dmt"), file.Bytes());
            for (const char* name : {"even", "even[0,1]", "even[0,2]", "even[1,4]", "even[90,95]",
                                     "even[-3,2]", "even[0,-1]", "even[2999998,3000000]"}) {
                ExpectHeaderAsOfTheWhole(name, std::to_string(points) + " points");
            }
        }
    }
}
