// Scalars: an expression read as a number, and a number written to a field or a stored parameter.
#include <string>

#include "core/CoreGlobal.h"
#include "data/MatrixTestData.h"
#include "data/ParticleTestData.h"
#include "data/WaveformTestData.h"
#include "experiment/Experiment.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

// Shot 7 holds the trace W.
class Scalars : public ShotTest {
protected:
    Scalars() {
        SelectNewShot("7", "a=2\r\nname=a\r\nTrace=W\r\nhuge=1e35\r\ntext=x\r\nAway=99\\W\r\n");
        WriteBytes(TraceFile(), WvfFile().Bytes());
    }

    static std::string TraceFile() { return ShotFolder("7") + "/W.wvf"; }
    static float Get(const char* text) { return Expt.GetScalarData(text, nullptr); }
};

constexpr size_t DateOffset = 94 + 2 + sizeof "the label" - 1 + 2;
constexpr size_t LateParamOffset = DateOffset + DateLength + 2 + sizeof "a note" - 1 + 2;

// A file with `value` at `offset` and the date of the writing blanked.
std::string WithFloat(std::string bytes, size_t offset, float value) {
    return bytes.replace(offset, 4, Float32(value));
}

std::string WithoutDate(std::string bytes) {
    return bytes.replace(DateOffset, DateLength, std::string(DateLength, ' '));
}

}  // namespace

// ---- Reading

TEST_F(Scalars, ReadsNumbersFieldsAndExpressions) {
    EXPECT_EQ(Get("1.5"), 1.5f);
    EXPECT_EQ(Get("a"), 2.0f);
    EXPECT_EQ(Get("a*3+1"), 7.0f);
    EXPECT_EQ(Get("W\\mx*2"), 18.0f);
}

TEST_F(Scalars, FieldsAreFilledInFirst) {
    EXPECT_EQ(Get("![name]*10"), 20.0f);
    EXPECT_EQ(Get("![Trace]\\t1"), 1.5f);
    EXPECT_EQ(Get("[a]*10"), 20.0f);
}

TEST_F(Scalars, PlainBracketsAreLeftForTheEvaluator) {
    EXPECT_EQ(Get("![name]+1"), 3.0f);
    EXPECT_EQ(Get("[name]+1"), -DFMax);
}

TEST_F(Scalars, MissingValueIsMarked) {
    EXPECT_EQ(Get("missing"), -DFMax);
    EXPECT_EQ(Get("1+![missing]"), -DFMax);
    EXPECT_EQ(Get("text"), -DFMax);
    EXPECT_EQ(Get("W\\zz"), -DFMax);
    EXPECT_EQ(Get("1/0"), -DFMax);
    EXPECT_EQ(Get(""), -DFMax);
}

TEST_F(Scalars, NumberThatIsNoValidValueIsMarkedToo) {
    EXPECT_EQ(Get("huge"), -DFMax);
    EXPECT_EQ(Get("-1e35"), -DFMax);
    EXPECT_EQ(Get("nan"), -DFMax);
    EXPECT_EQ(Get("9.8e34"), 9.8e34f);
}

TEST_F(Scalars, ResolverIsAskedForTheOperands) {
    const ValueCallback resolver = [](DString const& name, float& value) {
        value = 5.0f;
        return name == "p";
    };
    EXPECT_EQ(Expt.GetScalarData("p*a", resolver), 10.0f);
}

// ---- Writing a field

TEST_F(Scalars, NumberBecomesAFieldInBothFiles) {
    Expt.SetScalarData("x", 1.5f);
    EXPECT_NE(ReadBytes(ShotFolder("7") + "/Scalars.ini").find("x=1.5"), std::string::npos);
    EXPECT_EQ(ReadBytes(Folder() + "/Shots/ScalarCache.ini"), "[Shot7]\r\nx=1.5");
}

TEST_F(Scalars, FieldHoldsEightDigits) {
    Expt.SetScalarData("x", 1000.00006f);
    EXPECT_EQ(Text(Expt.GetShotData("x")), "1000.0001");
    Expt.SetScalarData("x", -1e-7f);
    EXPECT_EQ(Text(Expt.GetShotData("x")), "-1e-07");
    EXPECT_EQ(Get("x*1"), -1e-7f);
}

TEST_F(Scalars, NothingIsWrittenWithoutAShot) {
    const std::string before = ReadBytes(TraceFile());
    Expt.SetExperimentFolder(Folder().c_str());
    Expt.SetScalarData("x", 1.5f);
    Expt.SetScalarData("7\\W\\t1", 1.5f);
    Expt.SetScalarData((".\\Shots\\Shot7\\W\\t1"), 1.5f);
    EXPECT_EQ(ReadBytes(TraceFile()), before);
    EXPECT_FALSE(Exists(Folder() + "/Scalars.ini"));
}

// ---- Writing a stored parameter

TEST_F(Scalars, ParameterIsChangedInItsFileAndNothingElse) {
    const struct {
        const char* m_Key;
        size_t m_Offset;
    } Parameters[] = {
        {"W\\t1", 62},
        {"W\\t2", 66},
        {"W\\T3", 70},
        {"W\\t4", 8},
        {"W\\t5", 16},
        {"W\\t6", LateParamOffset},
        {"W\\t7", LateParamOffset + 4},
        {"W\\t8", LateParamOffset + 8},
        {"W\\t9", LateParamOffset + 12},
        {"W\\ta", LateParamOffset + 16},
        {"W\\tA", LateParamOffset + 16},
        {"W\\tb", LateParamOffset + 20},
        {"W\\TB", LateParamOffset + 20},
        {"W\\tc", LateParamOffset + 24},
        {"W\\tC", LateParamOffset + 24},
    };
    const std::string before = WvfFile().Bytes();
    for (const auto& parameter : Parameters) {
        WriteBytes(TraceFile(), before);
        Expt.SetScalarData(parameter.m_Key, 77.25f);
        EXPECT_EQ(WithoutDate(ReadBytes(TraceFile())),
                  WithoutDate(WithFloat(before, parameter.m_Offset, 77.25f)))
            << parameter.m_Key;
    }
}

TEST_F(Scalars, WrittenParameterCanBeRead) {
    Expt.SetScalarData("W\\t1", 2.5f);
    Expt.SetScalarData("![Trace]\\tc", 3.5f);
    EXPECT_EQ(Get("W\\t1+W\\tc"), 6.0f);
}

TEST_F(Scalars, FileOfTheParameterGetsTheDateOfTheWriting) {
    Expt.SetScalarData("W\\t1", 2.5f);
    EXPECT_EQ(ReadBytes(TraceFile()).substr(DateOffset, 6), Text(Now()).substr(0, 6));
}

TEST_F(Scalars, OtherKeysWithABackslashChangeNothing) {
    const std::string before = ReadBytes(TraceFile());
    for (const char* key :
         {"W\\t0", "W\\tab", "W\\x1", "W\\td", "W\\t", "W\\", "W\\t1 ", "\\t1", "W\\t[1]", "W\\mx",
          "W\\\xF4"
          "1"}) {
        Expt.SetScalarData(key, 77.0f);
        EXPECT_EQ(ReadBytes(TraceFile()), before) << key;
    }
    EXPECT_EQ(Names(ShotFolder("7")), (std::vector<std::string>{"Scalars.ini", "W.wvf"}));
}

TEST_F(Scalars, KeyWithAShotInFrontChangesNothing) {
    const std::string before = ReadBytes(TraceFile());
    Expt.SetScalarData("7\\W\\t1", 77.0f);
    EXPECT_EQ(ReadBytes(TraceFile()), before);
}

TEST_F(Scalars, NoTraceIsMadeOfAParameter) {
    RecordingSink sink;
    Expt.SetScalarData("X\\t1", 77.0f);
    EXPECT_FALSE(Exists(ShotFolder("7") + "/X.wvf"));
    EXPECT_TRUE(sink.m_Entries.empty());
}

TEST_F(Scalars, TraceWithoutPointsStaysAsItIs) {
    WvfFile empty;
    empty.m_Points = 0;
    empty.m_Samples = "";
    WvfFile tooNew;
    tooNew.m_Version = 5;
    for (const WvfFile& file : {empty, tooNew}) {
        WriteBytes(TraceFile(), file.Bytes());
        Expt.SetScalarData("W\\t1", 77.0f);
        EXPECT_EQ(ReadBytes(TraceFile()), file.Bytes());
    }
}

TEST_F(Scalars, LockedTraceStaysAsItIsWithAMessage) {
    WvfFile locked;
    locked.m_Version = -4;
    WriteBytes(TraceFile(), locked.Bytes());
    RecordingSink sink;
    Expt.SetScalarData("W\\t1", 77.0f);
    EXPECT_EQ(ReadBytes(TraceFile()), locked.Bytes());
    EXPECT_EQ(
        sink.Texts(NT_Message),
        (std::vector<std::string>{"Could not write to " + TraceFile() + " because it is locked"}));
}

TEST_F(Scalars, KeyThatCannotBeFilledChangesNothing) {
    Expt.SetScalarData("![missing]W\\t1", 77.0f);
    EXPECT_EQ(ReadBytes(TraceFile()), WvfFile().Bytes());
    EXPECT_FALSE(Exists(ShotFolder("7") + ".wvf"));
}

TEST_F(Scalars, KeyWithoutAPathChangesNoFileOfTheCurrentFolder) {
    WriteBytes(Scratch(".wvf"), WvfFile().Bytes());
    Expt.SetScalarData("![Away]\\t1", 77.0f);
    Expt.SetScalarData("\\t1", 77.0f);
    EXPECT_EQ(ReadBytes(Scratch(".wvf")), WvfFile().Bytes());
}

// ---- Writing a stored parameter of a matrix

namespace {

// Shot 7 holds the matrix M as well.
class MatrixScalars : public Scalars {
protected:
    MatrixScalars() { WriteBytes(MatrixFile(), DmtFile().Bytes()); }

    static std::string MatrixFile() { return ShotFolder("7") + "/M.dmt"; }

    // The matrix is the default one with `value` at `offset`, written today.
    static void ExpectChangedAt(size_t offset, float value) {
        const std::string now = Text(Now());
        std::string bytes = ReadBytes(MatrixFile());
        ASSERT_EQ(bytes.size(), DmtFile().Bytes().size());
        EXPECT_EQ(bytes.substr(MatrixDate, 6), now.substr(0, 6));
        bytes.replace(MatrixDate, DateLength, "06/07/2021 08:09:10");
        EXPECT_EQ(bytes, WithFloat(DmtFile().Bytes(), offset, value));
    }

    static constexpr size_t MatrixParams = 72;
    static constexpr size_t MatrixDate = 115 + 4;
};

}  // namespace

TEST_F(MatrixScalars, FiveNumbersAreChangedInTheFileAndNothingElse) {
    const char* keys[] = {"M\\t1", "M\\T2", "M\\t3", "![Away]\\t4", "M\\t5"};
    Expt.SetShotData("Away", "M");
    for (size_t i = 0; i < 5; ++i) {
        WriteBytes(MatrixFile(), DmtFile().Bytes());
        Expt.SetScalarData(keys[i], 77.25f);
        ExpectChangedAt(MatrixParams + 4 * i, 77.25f);
    }
}

TEST_F(MatrixScalars, WrittenNumberCanBeRead) {
    Expt.SetScalarData("M\\t1", 2.5f);
    Expt.SetScalarData("M\\t5", 3.5f);
    EXPECT_EQ(Get("M\\t1+M\\t5"), 6.0f);
}

TEST_F(MatrixScalars, NumbersBeyondTheFifthWriteNothing) {
    for (const char* key : {"M\\t6", "M\\t7", "M\\t8", "M\\t9", "M\\ta", "M\\tB", "M\\tc", "M\\t0",
                            "M\\td", "M\\mx", "M\\t1 "}) {
        Expt.SetScalarData(key, 77.0f);
        EXPECT_EQ(ReadBytes(MatrixFile()), DmtFile().Bytes()) << key;
    }
}

TEST_F(MatrixScalars, PartOfAMatrixIsWrittenNeitherOverNorBesideTheWhole) {
    Expt.SetShotData("Away", "M[1,3]");
    for (const char* key :
         {"M[2,5]\\t1", "M[0,4]\\t1", "M[,]\\t1", "M[]\\t1", "M[\\t1", "![Away]\\t1"}) {
        Expt.SetScalarData(key, 77.0f);
        EXPECT_EQ(ReadBytes(MatrixFile()), DmtFile().Bytes()) << key;
    }
    EXPECT_EQ(Names(ShotFolder("7")), (std::vector<std::string>{"M.dmt", "Scalars.ini", "W.wvf"}));
}

TEST_F(MatrixScalars, FewerThanTwoValuesWriteNothing) {
    DmtFile one = FlatDmtFile();
    one.m_Axes = AxisRecord(1, 0.5f, {10}) + AxisRecord(1, 2, {-1});
    one.m_Values = Float32(5);
    DmtFile none = one;
    none.m_Axes = AxisRecord(2, 0.5f, {10}) + AxisRecord(0, 2, {-1});
    DmtFile tooManyDimensions;
    tooManyDimensions.m_NDims = 4;
    DmtFile noDimensions;
    noDimensions.m_NDims = 0;
    for (const DmtFile& file : {one, none, tooManyDimensions, noDimensions}) {
        WriteBytes(MatrixFile(), file.Bytes());
        Expt.SetScalarData("M\\t1", 77.0f);
        EXPECT_EQ(ReadBytes(MatrixFile()), file.Bytes());
    }
}

TEST_F(MatrixScalars, TwoValuesAreEnough) {
    DmtFile two = FlatDmtFile();
    two.m_Axes = AxisRecord(2, 0.5f, {10}) + AxisRecord(1, 2, {-1});
    two.m_Values = Floats({5, 6});
    WriteBytes(MatrixFile(), two.Bytes());
    Expt.SetScalarData("M\\t1", 77.0f);
    EXPECT_EQ(Get("M\\t1"), 77.0f);
}

TEST_F(MatrixScalars, TraceOfTheNameComesFirst) {
    WriteBytes(ShotFolder("7") + "/M.wvf", WvfFile().Bytes());
    Expt.SetScalarData("M\\t1", 77.0f);
    EXPECT_EQ(ReadBytes(MatrixFile()), DmtFile().Bytes());
    EXPECT_EQ(ReadBytes(ShotFolder("7") + "/M.wvf").substr(62, 4), Float32(77.0f));
}

TEST_F(MatrixScalars, LockedTraceOfTheNameKeepsTheMatrixFromBeingWritten) {
    WvfFile locked;
    locked.m_Version = -4;
    WriteBytes(ShotFolder("7") + "/M.wvf", locked.Bytes());
    RecordingSink sink;
    Expt.SetScalarData("M\\t1", 77.0f);
    EXPECT_EQ(ReadBytes(MatrixFile()), DmtFile().Bytes());
    EXPECT_EQ(sink.Texts(NT_Message).size(), 1u);
}

TEST_F(MatrixScalars, TraceWithoutPointsIsPassedOver) {
    WvfFile empty;
    empty.m_Points = 0;
    empty.m_Samples = "";
    WriteBytes(ShotFolder("7") + "/M.wvf", empty.Bytes());
    Expt.SetScalarData("M\\t2", 77.25f);
    ExpectChangedAt(MatrixParams + 4, 77.25f);
    EXPECT_EQ(ReadBytes(ShotFolder("7") + "/M.wvf"), empty.Bytes());
}

TEST_F(MatrixScalars, ParticleGroupIsNotWritten) {
    WriteBytes(ShotFolder("7") + "/P.dpt", DptFile().Bytes());
    Expt.SetScalarData("P\\t1", 77.0f);
    EXPECT_EQ(ReadBytes(ShotFolder("7") + "/P.dpt"), DptFile().Bytes());
    EXPECT_EQ(Names(ShotFolder("7")),
              (std::vector<std::string>{"M.dmt", "P.dpt", "Scalars.ini", "W.wvf"}));
}

TEST_F(MatrixScalars, KeyWithoutAPathChangesNoMatrixOfTheCurrentFolder) {
    WriteBytes(Scratch(".dmt"), DmtFile().Bytes());
    Expt.SetScalarData("![Away]\\t1", 77.0f);
    Expt.SetScalarData("\\t1", 77.0f);
    EXPECT_EQ(ReadBytes(Scratch(".dmt")), DmtFile().Bytes());
}
