// Parameters of data objects as operands of expressions.
#include <string>

#include "core/CoreGlobal.h"
#include "data/Waveform.h"
#include "data/WaveformTestData.h"
#include "experiment/Experiment.h"
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
