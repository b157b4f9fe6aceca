// Parameters of data objects as operands of expressions.
#include <string>

#include "core/CoreGlobal.h"
#include "data/MatrixTestData.h"
#include "data/ParticleTestData.h"
#include "data/Waveform.h"
#include "data/WaveformTestData.h"
#include "experiment/Experiment.h"
#include "support/BytesRead.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

// Shot 7 holds the trace W of the samples 0, 2, 4, 2 at the times 10, 11, 12, 13.
class ObjectTerm : public ShotTest {
protected:
    ObjectTerm() {
        SelectNewShot("7", "a=2\r\nTrace=W\r\nW=100\r\n");
        PutTrace("7", "W", {0.0f, 2.0f, 4.0f, 2.0f});
    }

    static void PutTrace(const std::string& shot, const std::string& name,
                         const std::vector<float>& samples) {
        Waveform trace = MakeScaledTrace(samples, 10.0f);
        trace.m_Params[0] = 1.25f;
        ASSERT_TRUE(trace.Write((ShotFolder(shot) + "/" + name).c_str()));
    }

    static float Eval(const char* text) { return Expt.ParseInput(text, nullptr); }
    static bool IsInvalid(const char* text) { return !IsVF(Eval(text)); }

    // A trace in memory with this peak.
    static void* KeepInMemory(const char* name, float peak) {
        void* object = Expt.InitDataPtr(name, DataWaveform);
        Waveform& trace = *static_cast<Waveform*>(object);
        trace = MakeScaledTrace({0.0f, peak});
        return object;
    }
};

}  // namespace

TEST_F(ObjectTerm, ReadsAParameterOfATraceOfTheShot) {
    EXPECT_EQ(Eval("W\\mx"), 4.0f);
    EXPECT_EQ(Eval("W\\MX"), 4.0f);
    EXPECT_EQ(Eval("W\\t1"), 1.25f);
    EXPECT_EQ(Expt.ParseSingle("W\\tp", nullptr), 1.0f);
}

TEST_F(ObjectTerm, TakesPartInArithmetic) {
    EXPECT_EQ(Eval("W\\mx*2"), 8.0f);
    EXPECT_EQ(Eval("(W\\mx-W\\mn)^a"), 16.0f);
    EXPECT_EQ(Eval("W\\ft-W\\st"), 3.0f);
    EXPECT_EQ(Eval("X\\mx::W\\mx"), 4.0f);
}

TEST_F(ObjectTerm, ReadsATraceOfAHandmadeFile) {
    WriteBytes(ShotFolder("7") + "/I.wvf", WvfFile().Bytes());
    EXPECT_EQ(Eval("I\\mx*2"), 18.0f);
    EXPECT_EQ(Eval("I\\st"), 101.25f);
    EXPECT_EQ(Eval("I\\tc"), 12.5f);
}

TEST_F(ObjectTerm, ArgumentIsComputed) {
    EXPECT_EQ(Eval("W\\vt[11]"), 2.0f);
    EXPECT_EQ(Eval("W\\vt[10+a*0.25]"), 1.0f);
    EXPECT_EQ(Eval("W\\tv[W\\mx/2-1]*2"), 21.0f);
    EXPECT_EQ(Eval("W\\vt[W\\tm-1]"), 4.0f);
    EXPECT_EQ(Eval("W\\t%[25+(50-25)]"), 11.0f);
}

TEST_F(ObjectTerm, ArgumentWithASignOrExponentIsOneNumber) {
    EXPECT_EQ(Eval("1-W\\lt[0-2.5]"), 4.0f);
    EXPECT_EQ(Eval("W\\lt[5e-10]*2+1"), 1.0f);
    EXPECT_EQ(Eval("W\\lt[0-3]^2"), 9.0f);
}

TEST_F(ObjectTerm, InvalidArgumentIsHandedOnAsItIs) {
    EXPECT_EQ(Eval("W\\vt[missing]"), 0.0f);
    EXPECT_EQ(Eval("W\\tv[1/0]"), 14.0f);
}

TEST_F(ObjectTerm, BracketsHoldNamesWithOperators) {
    PutTrace("7", "I-1", {0.0f, 6.0f});
    EXPECT_TRUE(IsInvalid("I-1\\mx"));
    EXPECT_EQ(Eval("[I-1\\mx]"), 6.0f);
    EXPECT_EQ(Eval("[I-1\\mx]*2"), 12.0f);
    EXPECT_EQ(Eval("[I-1\\vt[10.5]]+1"), 4.0f);
}

TEST_F(ObjectTerm, ReachesOtherShots) {
    MakeShot("8", "");
    PutTrace("8", "W", {0.0f, 30.0f});
    EXPECT_EQ(Eval("8\\W\\mx"), 30.0f);
    EXPECT_EQ(Eval(">\\W\\mx+W\\mx"), 34.0f);
    EXPECT_EQ(Eval("<\\W\\mx"), 30.0f);
    EXPECT_EQ(Eval(">1\\W\\vt[11]"), 30.0f);
    EXPECT_EQ(Eval(">x\\W\\mx"), 4.0f);
    EXPECT_TRUE(IsInvalid(">2\\W\\mx"));
    EXPECT_TRUE(IsInvalid("9\\W\\mx"));
}

TEST_F(ObjectTerm, FieldsFillItsName) {
    EXPECT_EQ(Expt.GetScalarData("![Trace]\\mx*2", nullptr), 8.0f);
    EXPECT_EQ(Text(Expt.GetExpandedLabel("peak ![W\\mx%.1f] at ![W\\vt[11]] A")),
              "peak 4.0 at 2 A");
}

TEST_F(ObjectTerm, UnknownTraceOrParameterIsInvalid) {
    EXPECT_TRUE(IsInvalid("X\\mx"));
    EXPECT_TRUE(IsInvalid("W\\zz"));
    EXPECT_TRUE(IsInvalid("W\\"));
    EXPECT_TRUE(IsInvalid("\\mx"));
    EXPECT_TRUE(IsInvalid("\\"));
    EXPECT_TRUE(IsInvalid("\\\\"));
    EXPECT_EQ(Expt.m_DataPtrs.Count(), 0);
}

TEST_F(ObjectTerm, TraceWithoutPointsIsInvalid) {
    PutTrace("7", "Empty", {});
    EXPECT_TRUE(IsInvalid("Empty\\tp"));
}

TEST_F(ObjectTerm, FieldOfItsNameComesFirst) {
    WriteBytes(ShotFolder("7") + "/Scalars.ini", "[Fields]\r\nW\\mx=55\r\n");
    EXPECT_EQ(Eval("W\\mx"), 55.0f);
    EXPECT_EQ(Eval("W\\mx+0"), 4.0f);
}

TEST_F(ObjectTerm, NeedsAShot) {
    Expt.SetExperimentFolder(Folder().c_str());
    EXPECT_TRUE(IsInvalid("7\\W\\mx"));
}

TEST_F(ObjectTerm, LeavesNothingInTheTable) {
    EXPECT_EQ(Eval("W\\mx+W\\mn"), 4.0f);
    EXPECT_EQ(Expt.m_DataPtrs.Count(), 0);
}

TEST_F(ObjectTerm, MemoryObjectIsGoneBehindItsFirstUse) {
    KeepInMemory("@T", 5.0f);
    EXPECT_EQ(Eval("@t\\mx"), 5.0f);
    EXPECT_EQ(Expt.m_DataPtrs.Count(), 0);
    EXPECT_TRUE(IsInvalid("@T\\mx"));
}

TEST_F(ObjectTerm, MemoryObjectCanBeUsedOnceInAnExpression) {
    KeepInMemory("@T", 5.0f);
    EXPECT_TRUE(IsInvalid("@T\\mx+@T\\mn"));
}

TEST_F(ObjectTerm, OtherObjectsOfTheTableStay) {
    void* other = KeepInMemory("@other", 6.0f);
    KeepInMemory("@T", 5.0f);
    EXPECT_EQ(Eval("@T\\mx*W\\mx"), 20.0f);
    EXPECT_EQ(Expt.GetDataPtr("@other", DataWaveform), other);
}

// ---- Calls from within

namespace {

bool ClearTable(DString const& name, float& value) {
    if (name != "clear") return false;
    Expt.ClearDataPtrs();
    value = 0.0f;
    return true;
}

}  // namespace

TEST_F(ObjectTerm, CallbackMayClearTheTable) {
    KeepInMemory("@T", 5.0f);
    KeepInMemory("@U", 6.0f);
    EXPECT_EQ(Expt.ParseInput("@T\\mx+clear+W\\mx", ClearTable), 9.0f);
    EXPECT_FALSE(IsVF(Expt.ParseInput("@U\\mx", nullptr)));
}

// ---- Matrices and particle groups

namespace {

// Shot 7 holds the matrix M of 2 by 3 by 4 and the particle group P, too.
class MatrixTerm : public ObjectTerm {
protected:
    MatrixTerm() {
        WriteBytes(MatrixFile("M"), DmtFile().Bytes());
        WriteBytes(GroupFile("P"), DptFile().Bytes());
    }

    static std::string MatrixFile(const std::string& name) {
        return ShotFolder("7") + "/" + name + ".dmt";
    }
    static std::string GroupFile(const std::string& name) {
        return ShotFolder("7") + "/" + name + ".dpt";
    }
    static std::string TraceFile(const std::string& name) {
        return ShotFolder("7") + "/" + name + ".wvf";
    }
};

struct NamedValue {
    const char* m_Term;
    float m_Value;
};

}  // namespace

TEST_F(MatrixTerm, ReadsEachParameterOfAMatrix) {
    const NamedValue expected[] = {{"M\\t1", 1.5f},
                                   {"M\\t2", 2.5f},
                                   {"M\\t3", 3.5f},
                                   {"M\\t4", 4.5f},
                                   {"M\\t5", 5.5f},
                                   {"M\\su", 0.25f},
                                   {"M\\mx", 312.5f},
                                   {"M\\mn", -7.5f},
                                   {"M\\rc", 2},
                                   {"M\\rs", 0.5f},
                                   {"M\\rb", 10},
                                   {"M\\re", 10.5f},
                                   {"M\\r1", 0.5f},
                                   {"M\\cc", 3},
                                   {"M\\cs", 0},
                                   {"M\\cb", 1},
                                   {"M\\ce", 8},
                                   {"M\\c1", 1.5f},
                                   {"M\\lc", 4},
                                   {"M\\ls", 2},
                                   {"M\\lb", -1},
                                   {"M\\LC", 4},
                                   // The first layer alone is read: the last coordinate in memory
                                   // is the first, and the step stands for the distance.
                                   {"M\\le", -1},
                                   {"M\\l1", 2}};
    for (const NamedValue& term : expected)
        EXPECT_EQ(Eval(term.m_Term), term.m_Value) << term.m_Term;
}

TEST_F(MatrixTerm, FlatMatrixIsReadByItsFirstColumn) {
    WriteBytes(MatrixFile("F"), FlatDmtFile().Bytes());
    const NamedValue expected[] = {{"F\\rc", 2},  {"F\\re", 10.5f}, {"F\\cc", 3}, {"F\\cb", -1},
                                   {"F\\ce", -1}, {"F\\c1", 2},     {"F\\lc", 1}, {"F\\lb", 0},
                                   {"F\\le", 0},  {"F\\l1", 0}};
    for (const NamedValue& term : expected)
        EXPECT_EQ(Eval(term.m_Term), term.m_Value) << term.m_Term;
}

TEST_F(MatrixTerm, IrregularAxisOfWhichOnePointIsReadHasNoDistance) {
    DmtFile file;
    file.m_Axes =
        AxisRecord(2, 0.5f, {10}) + AxisRecord(3, 2, {1}) + AxisRecord(4, 0, {1, 2, 4, 8});
    WriteBytes(MatrixFile("M"), file.Bytes());
    EXPECT_EQ(Eval("M\\l1"), 0);
    EXPECT_EQ(Eval("M\\le"), 1);
    EXPECT_EQ(Eval("M\\lc"), 4);
}

TEST_F(MatrixTerm, ReadsEachParameterOfAParticleGroup) {
    const NamedValue expected[] = {{"P\\t1", 3.5f}, {"P\\t2", 4.5f}, {"P\\T3", 5.5f},
                                   {"P\\t4", 6.5f}, {"P\\t5", 7.5f}, {"P\\np", 3}};
    for (const NamedValue& term : expected)
        EXPECT_EQ(Eval(term.m_Term), term.m_Value) << term.m_Term;
}

TEST_F(MatrixTerm, ReadsNoMoreThanAHeaderAndALayer) {
    constexpr long Many = 100000;
    DmtFile matrix;
    matrix.m_Axes = AxisRecord(2, 1, {0}) + AxisRecord(2, 1, {0}) + AxisRecord(Many, 1, {0});
    matrix.m_Values = std::string(Many * 4 * sizeof(float), '\0');
    WriteBytes(MatrixFile("M"), matrix.Bytes());
    DptFile group;
    group.m_Particles = Many;
    group.m_Records = std::string(Many * 8 * sizeof(float), '\0');
    WriteBytes(GroupFile("P"), group.Bytes());
    const long before = BytesRead();
    EXPECT_EQ(Eval("M\\lc"), static_cast<float>(Many));
    EXPECT_EQ(Eval("P\\np"), static_cast<float>(Many));
    EXPECT_LT(BytesRead() - before, Many);
}

TEST_F(MatrixTerm, TakesPartInArithmetic) {
    EXPECT_EQ(Eval("(M\\mx-M\\mn)/M\\lc*W\\mx+P\\np"), 323.0f);
    EXPECT_EQ(Eval("W\\vt[M\\rb+1]"), 2.0f);
    EXPECT_EQ(Expt.ParseSingle("M\\lc", nullptr), 4.0f);
}

TEST_F(MatrixTerm, ReachesOtherShotsAndFillsFields) {
    MakeShot("8", "");
    WriteBytes(ShotFolder("8") + "/N.dmt", DmtFile().Bytes());
    WriteBytes(ShotFolder("8") + "/Q.dpt", DptFile().Bytes());
    EXPECT_EQ(Eval("8\\N\\lc"), 4.0f);
    EXPECT_EQ(Eval(">\\Q\\np"), 3.0f);
    EXPECT_EQ(Eval(">x\\P\\np"), 3.0f);
    Expt.SetShotData("Image", "M");
    EXPECT_EQ(Expt.GetScalarData("![Image]\\lc*2", nullptr), 8.0f);
}

TEST_F(MatrixTerm, TraceComesBeforeMatrixBeforeParticles) {
    WriteBytes(GroupFile("M"), DptFile().Bytes());
    EXPECT_EQ(Eval("M\\t1"), 1.5f);
    PutTrace("7", "M", {0.0f, 6.0f});
    EXPECT_EQ(Eval("M\\t1"), 1.25f);
    WriteBytes(MatrixFile("P"), "");
    EXPECT_EQ(Eval("P\\t1"), 0.0f) << "a matrix that can be opened counts, whatever it holds";
    remove(MatrixFile("P").c_str());
    EXPECT_EQ(Eval("P\\t1"), 3.5f);
}

TEST_F(MatrixTerm, ParameterOfALaterKindIsNotLookedFor) {
    WriteBytes(GroupFile("M"), DptFile().Bytes());
    EXPECT_TRUE(IsInvalid("M\\np"));
    WriteBytes(MatrixFile("W"), DmtFile().Bytes());
    WriteBytes(GroupFile("W"), DptFile().Bytes());
    EXPECT_TRUE(IsInvalid("W\\lc"));
    EXPECT_TRUE(IsInvalid("W\\np"));
}

TEST_F(MatrixTerm, TraceWithoutPointsIsPassedOver) {
    PutTrace("7", "M", {});
    EXPECT_EQ(Eval("M\\lc"), 4.0f);
    PutTrace("7", "P", {});
    EXPECT_EQ(Eval("P\\np"), 3.0f);
}

TEST_F(MatrixTerm, ParameterIsTheWholeName) {
    EXPECT_TRUE(IsInvalid("M\\zz"));
    EXPECT_TRUE(IsInvalid("M\\"));
    EXPECT_TRUE(IsInvalid("M\\lcc"));
    EXPECT_TRUE(IsInvalid("M\\mx[1]"));
    EXPECT_TRUE(IsInvalid("P\\np[1]"));
    EXPECT_TRUE(IsInvalid("P\\t6"));
    EXPECT_TRUE(IsInvalid("P\\mx"));
    EXPECT_TRUE(IsInvalid("P\\"));
}

TEST_F(MatrixTerm, GeometryHasNoParameters) {
    WriteBytes(ShotFolder("7") + "/G.dgm", std::string(100, '\0'));
    EXPECT_TRUE(IsInvalid("G\\mx"));
}

TEST_F(MatrixTerm, UnknownShotOpensNoFile) {
    WriteBytes(Scratch(".wvf"), WvfFile().Bytes());
    WriteBytes(Scratch(".dmt"), DmtFile().Bytes());
    WriteBytes(Scratch(".dpt"), DptFile().Bytes());
    EXPECT_TRUE(IsInvalid("99\\M\\t1"));
    EXPECT_TRUE(IsInvalid("\\t1"));
    EXPECT_TRUE(IsInvalid(">5\\P\\np"));
    EXPECT_EQ(Expt.m_DataPtrs.Count(), 0);
}

TEST_F(MatrixTerm, LeavesFilesAndTableAsTheyWere) {
    EXPECT_EQ(Eval("M\\lc+P\\np+W\\mx"), 11.0f);
    EXPECT_EQ(Expt.m_DataPtrs.Count(), 0);
    EXPECT_EQ(ReadBytes(MatrixFile("M")), DmtFile().Bytes());
    EXPECT_EQ(ReadBytes(GroupFile("P")), DptFile().Bytes());
}

TEST_F(MatrixTerm, MatrixInMemoryIsNotReachedAndStays) {
    void* object = Expt.InitDataPtr("@M", DataMatrix);
    EXPECT_TRUE(IsInvalid("@M\\rc"));
    EXPECT_EQ(Expt.GetDataPtr("@M", DataMatrix), object);
}

TEST_F(MatrixTerm, MarkedNameThatNoTraceHasInMemoryIsAFileOfTheOtherKinds) {
    WriteBytes(TraceFile("@X"), WvfFile().Bytes());
    EXPECT_TRUE(IsInvalid("@X\\t1"));
    WriteBytes(GroupFile("@X"), DptFile().Bytes());
    EXPECT_EQ(Eval("@X\\t1"), 3.5f);
    WriteBytes(MatrixFile("@X"), DmtFile().Bytes());
    EXPECT_EQ(Eval("@X\\t1"), 1.5f);
    KeepInMemory("@X", 6.0f);
    EXPECT_EQ(Eval("@X\\mx"), 6.0f);
    EXPECT_EQ(Eval("@X\\mx"), 312.5f) << "the trace is gone behind its first use";
}

TEST_F(MatrixTerm, MarkerBehindAShortParameterChangesNothing) {
    EXPECT_TRUE(IsInvalid("M\\\xCA"));
    EXPECT_TRUE(IsInvalid("M\\l\xCA"));
    EXPECT_TRUE(IsInvalid("M\\lc\xCA"));
    EXPECT_TRUE(IsInvalid("P\\\xCA"));
}

TEST_F(MatrixTerm, RangeOfANameIsReadWhereItArrives) {
    EXPECT_EQ(Expt.ParseSingle("M[1,3]\\le", nullptr), 1.0f);
    EXPECT_EQ(Expt.ParseSingle("M[1,3]\\lc", nullptr), 4.0f);
    EXPECT_TRUE(IsInvalid("M[1,3]\\le")) << "brackets of an expression are operands";
}
