// The .dmt format, read whole and in parts, and written, against bytes put together by hand.
#include <gtest/gtest.h>
#include <limits.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

#include "data/MatrixTestData.h"
#include "support/ProcessMemory.h"
#include "system/DFile.h"

namespace {

const FloatList FileValues = LayerValues(2, 3, 0, 4);

void ExpectNumbersOfFile(const Matrix& matrix) {
    EXPECT_EQ(matrix.m_Max, 312.5f);
    EXPECT_EQ(matrix.m_Min, -7.5f);
    EXPECT_EQ(matrix.m_ScaleUnit, 0.25f);
    const float params[] = {1.5f, 2.5f, 3.5f, 4.5f, 5.5f};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(matrix.m_Params[i], params[i]) << i;
}

void ExpectTextsOfFile(const Matrix& matrix) {
    EXPECT_STREQ(matrix.m_Note, "a note");
    EXPECT_STREQ(matrix.m_Label, "the label");
    EXPECT_STREQ(matrix.m_Date, "06/07/2021 08:09:10");
}

// Axes and values of the layers from `first` up to `end`.
void ExpectLayersOfFile(const Matrix& matrix, int first, int end) {
    EXPECT_EQ(Coords(matrix, 1), (FloatList{10.0f, 10.5f}));
    EXPECT_EQ(Coords(matrix, 2), (FloatList{1.0f, 2.5f, 8.0f}));
    const FloatList layers = {-1.0f, 1.0f, 3.0f, 5.0f};
    EXPECT_EQ(Coords(matrix, 3), FloatList(layers.begin(), layers.begin() + (end - first)));
    EXPECT_EQ(matrix.GetOrigSize(3), 4);
    EXPECT_EQ(Values(matrix), LayerValues(2, 3, first, end)) << first << " to " << end;
}

// What `matrix` writes to the file out.dmt.
std::string Written(Matrix& matrix) {
    EXPECT_TRUE(matrix.Write(Scratch("out").c_str()));
    return ReadBytes(Scratch("out.dmt"));
}

// The matrix that writes the hand-made file, but for its date.
Matrix MatrixOf(const DmtFile& file) {
    Matrix matrix;
    EXPECT_TRUE(ReadFrom(file, matrix));
    return matrix;
}

// Expects `matrix` to write `file`, with a date of its own.
void ExpectWrites(Matrix& matrix, DmtFile file) {
    const std::string bytes = Written(matrix);
    file.m_Date = LongText(Text(matrix.m_Date));
    EXPECT_EQ(bytes, file.Bytes());
}

// Reads the range "[...]" of the hand-made file by name.
Matrix ReadRange(const std::string& range, int stop = -1, int start = 0) {
    WriteBytes(Scratch("matrix.dmt"), DmtFile().Bytes());
    Matrix matrix;
    EXPECT_TRUE(matrix.Read(Scratch("matrix" + range).c_str(), stop, start)) << range;
    return matrix;
}

}  // namespace

// ---- Reading

TEST(MatrixFile, ReadsEveryFieldFromItsPlace) {
    Matrix matrix = UsedMatrix();
    ASSERT_TRUE(ReadFrom(DmtFile(), matrix));
    EXPECT_EQ(matrix.m_NDims, 3);
    ExpectNumbersOfFile(matrix);
    EXPECT_EQ(matrix.m_Calib, 2.5f);
    ExpectTextsOfFile(matrix);
    ExpectLayersOfFile(matrix, 0, 4);
    EXPECT_EQ(matrix.GetStep(1), 0.5f);
    EXPECT_EQ(matrix.GetStep(2), 0.0f);
    EXPECT_EQ(matrix.GetStep(3), 2.0f);
    EXPECT_EQ(matrix.GetOrigSize(1), 2);
    EXPECT_EQ(matrix.GetOrigSize(2), 3);
}

TEST(MatrixFile, ReadsATwoDimensionalFileIntoAFreshMatrix) {
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(FlatDmtFile(), matrix));
    EXPECT_EQ(matrix.m_NDims, 2);
    EXPECT_EQ(Coords(matrix, 2), (FloatList{-1.0f, 1.0f, 3.0f}));
    EXPECT_EQ(matrix.GetSize(3), 1);
    EXPECT_EQ(Values(matrix), LayerValues(2, 3, 0, 1));
    ExpectNumbersOfFile(matrix);
    ExpectTextsOfFile(matrix);
}

TEST(MatrixFile, TwoDimensionalFileLeavesTheLayerAxisAndCountsItsPoints) {
    Matrix matrix = UsedMatrix();
    ASSERT_TRUE(ReadFrom(FlatDmtFile(), matrix));
    EXPECT_EQ(matrix.m_NDims, 2);
    EXPECT_EQ(Coords(matrix, 3), (FloatList{3.0f, 33.0f}));
    FloatList expected = LayerValues(2, 3, 0, 1);
    expected.resize(12, 0.0f);
    EXPECT_EQ(Values(matrix), expected);
}

TEST(MatrixFile, OneDimensionalFileReadsTheRowAxisAlone) {
    DmtFile file;
    file.m_NDims = 1;
    file.m_Axes = AxisRecord(3, 1.0f, {4.0f});
    file.m_Values = Floats({7.0f, 8.0f, 9.0f});
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_EQ(matrix.m_NDims, 1);
    EXPECT_EQ(Values(matrix), (FloatList{7.0f, 8.0f, 9.0f}));
    ASSERT_TRUE(ReadFrom(file, matrix, 3, 1));
    EXPECT_EQ(Coords(matrix, 1), (FloatList{4.0f, 5.0f}));
    EXPECT_EQ(Values(matrix), (FloatList{8.0f, 9.0f}));
}

TEST(MatrixFile, VersionsBelowFourHaveNoCalibration) {
    for (const long version : {3L, 2L, 1L, 0L, -1L, -4L, long{INT_MIN}}) {
        DmtFile file;
        file.m_Version = version;
        file.m_Calib.clear();
        Matrix matrix = UsedMatrix();
        ASSERT_TRUE(ReadFrom(file, matrix)) << version;
        EXPECT_EQ(matrix.m_Calib, 1.0f) << version;
        ExpectNumbersOfFile(matrix);
        ExpectTextsOfFile(matrix);
        ExpectLayersOfFile(matrix, 0, 4);
    }
}

TEST(MatrixFile, VersionsFromFourOnHaveACalibrationWithoutALimit) {
    for (const long version : {4L, 5L, 1000L, long{INT_MAX}}) {
        DmtFile file;
        file.m_Version = version;
        Matrix matrix = UsedMatrix();
        ASSERT_TRUE(ReadFrom(file, matrix)) << version;
        EXPECT_EQ(matrix.m_Calib, 2.5f) << version;
        ExpectNumbersOfFile(matrix);
        ExpectLayersOfFile(matrix, 0, 4);
    }
}

TEST(MatrixFile, OldVersionIsReadInPartsToo) {
    DmtFile file;
    file.m_Version = 3;
    file.m_Calib.clear();
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix, 3, 1));
    ExpectLayersOfFile(matrix, 1, 3);
}

TEST(MatrixFile, SpecialValuesAreReadAsTheyStand) {
    DmtFile file = FlatDmtFile();
    file.m_Values = Floats({Infinity, -Infinity, NotANumber, -0.0f, 1e-44f, 3.3e38f});
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_EQ(memcmp(matrix.Data(), file.m_Values.data(), file.m_Values.size()), 0);
}

TEST(MatrixFile, EmptyTextsLeaveThoseOfAUsedMatrix) {
    DmtFile file;
    file.m_Note = Int32(0);
    file.m_Label = Int32(-5);
    file.m_Date = LongText(std::string("a\0b", 3));
    Matrix matrix = UsedMatrix();
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_STREQ(matrix.m_Note, "old note");
    EXPECT_STREQ(matrix.m_Label, "old label");
    EXPECT_EQ(Text(matrix.m_Date), std::string("a\0b", 3));
    ExpectLayersOfFile(matrix, 0, 4);
}

TEST(MatrixFile, TextsAreOfTheLongForm) {
    DmtFile file;
    file.m_Note = LongText(std::string(140000, 'n'));
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_EQ(Text(matrix.m_Note), std::string(140000, 'n'));
    ExpectLayersOfFile(matrix, 0, 4);
    ExpectWrites(matrix, file);
}

// ---- Axes

TEST(MatrixFile, StepsOtherThanZeroHaveOneCoordinateInTheFile) {
    for (const float step : {0.1f, -0.1f, -3.0f, 1e-44f, 1e30f}) {
        DmtFile file = FlatDmtFile();
        file.m_Axes = AxisRecord(2, 1.0f, {0.0f}) + AxisRecord(3, step, {0.7f});
        Matrix matrix;
        ASSERT_TRUE(ReadFrom(file, matrix));
        EXPECT_EQ(matrix.GetStep(2), step);
        EXPECT_EQ(Coords(matrix, 2), (FloatList{0.7f, 1.0f * step + 0.7f, 2.0f * step + 0.7f}));
        EXPECT_EQ(Values(matrix), LayerValues(2, 3, 0, 1));
        ExpectWrites(matrix, file);
    }
}

TEST(MatrixFile, StepOfZeroOfEitherSignHasAllCoordinatesInTheFile) {
    for (const float zero : {0.0f, -0.0f}) {
        DmtFile file = FlatDmtFile();
        file.m_Axes = AxisRecord(2, zero, {9.0f, -9.0f}) + AxisRecord(3, zero, {5.0f, 3.0f, 4.0f});
        Matrix matrix;
        ASSERT_TRUE(ReadFrom(file, matrix));
        EXPECT_EQ(Coords(matrix, 1), (FloatList{9.0f, -9.0f}));
        EXPECT_EQ(Coords(matrix, 2), (FloatList{5.0f, 3.0f, 4.0f}));
        EXPECT_EQ(Values(matrix), LayerValues(2, 3, 0, 1));
        ExpectWrites(matrix, file);
    }
}

TEST(MatrixFile, AxisWithANegativeStepComesBackEvenlySpacedDownwards) {
    Matrix matrix(1, 3, 1);
    SetCoords(matrix, 2, {4.0f, 5.0f, 9.0f});
    matrix.SetStep(2, -2.0f, 0.0f);
    const std::string bytes = Written(matrix);
    EXPECT_EQ(bytes.substr(24, 12), AxisRecord(3, -2.0f, {4.0f}));
    Matrix back;
    ASSERT_TRUE(back.Read(Scratch("out").c_str(), -1, 0));
    EXPECT_EQ(Coords(back, 2), (FloatList{4.0f, 2.0f, 0.0f}));
    EXPECT_EQ(back.GetStep(2), -2.0f);
}

TEST(MatrixFile, StepThatIsNoNumberHasOneCoordinateInTheFile) {
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(2, NotANumber, {1.0f}) + AxisRecord(3, 1.0f, {0.0f});
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_EQ(matrix.GetSize(1), 2);
    EXPECT_EQ(Coords(matrix, 2), (FloatList{0.0f, 1.0f, 2.0f}));
    EXPECT_EQ(Values(matrix), LayerValues(2, 3, 0, 1));
}

TEST(MatrixFile, FirstCoordinateOfARegularAxisIsThatOfTheFileToTheBit) {
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(2, NotANumber, {1.0f}) + AxisRecord(3, 1.0f, {-0.0f});
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_EQ(Float32(matrix.GetCoord(1, 0)), Float32(1.0f));
    EXPECT_EQ(Float32(matrix.GetCoord(2, 0)), Float32(-0.0f));
}

TEST(MatrixFile, ReadThrowsTheCoordinatesAndRowsOfTheAxesAway) {
    Matrix matrix(50, 60, 70);
    matrix.m_Dims[0].ReSize(5, 10);
    ASSERT_TRUE(ReadFrom(DmtFile(), matrix));
    ExpectLayersOfFile(matrix, 0, 4);
    EXPECT_EQ(matrix.m_Dims[0].RCount(), 1);
}

// ---- Header extension

TEST(MatrixFile, HeaderExtensionIsPassedOver) {
    DmtFile file;
    file.m_ExtensionLength = 70001;
    file.m_Extension = std::string(70001, 'x');
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix));
    ExpectNumbersOfFile(matrix);
    ExpectLayersOfFile(matrix, 0, 4);
}

TEST(MatrixFile, ExtensionAheadOfTheFileIsIgnored) {
    for (const long length : {-9L, -1000L, long{INT_MIN}}) {
        DmtFile file;
        file.m_ExtensionLength = length;
        Matrix matrix;
        ASSERT_TRUE(ReadFrom(file, matrix));
        ExpectNumbersOfFile(matrix);
        ExpectLayersOfFile(matrix, 0, 4);
    }
}

TEST(MatrixFile, NegativeExtensionGoesBack) {
    Matrix matrix = UsedMatrix();
    // Eight bytes back stands the version word, which is read as the number of dimensions.
    ASSERT_TRUE(ReadFrom(Int32(7) + Int32(-8) + DmtFile().Bytes(), matrix));
    EXPECT_EQ(matrix.m_NDims, 7);
    ExpectUsedMatrix(matrix);
}

TEST(MatrixFile, ExtensionBeyondTheFileLeavesAllFieldsAndNoValues) {
    DmtFile file;
    file.m_ExtensionLength = INT_MAX;
    Matrix matrix = UsedMatrix();
    ASSERT_TRUE(ReadFrom(file, matrix));
    ExpectFieldsOfUsedMatrix(matrix);
    EXPECT_EQ(matrix.m_NDims, 3);
    EXPECT_EQ(matrix.Count(), 0);
}

// ---- Parts of a file

TEST(MatrixFile, PartsAreCountedInLayersFromStartUpToStop) {
    struct Part {
        int m_Stop, m_Start, m_First, m_End;
    };
    const Part parts[] = {
        {-1, 0, 0, 4}, {-1000, -5, 0, 4}, {0, 0, 0, 1},   {1, 0, 0, 1},
        {2, 0, 0, 2},  {4, 0, 0, 4},      {99, 0, 0, 4},  {4, 1, 1, 4},
        {3, 1, 1, 3},  {3, 2, 2, 3},      {2, 2, 1, 2},   {2, 3, 1, 2},
        {99, 3, 3, 4}, {4, 4, 3, 4},      {99, 99, 3, 4}, {INT_MAX, INT_MAX, 3, 4},
        {-1, 1, 0, 1}, {-1, 99, 0, 1},    {0, 3, 0, 1},
    };
    for (const Part& part : parts) {
        Matrix matrix = UsedMatrix();
        ASSERT_TRUE(ReadFrom(DmtFile(), matrix, part.m_Stop, part.m_Start));
        ExpectLayersOfFile(matrix, part.m_First, part.m_End);
        ExpectNumbersOfFile(matrix);
        EXPECT_EQ(matrix.m_NDims, 3);
    }
}

TEST(MatrixFile, PartsOfATwoDimensionalFileAreCountedInColumns) {
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(FlatDmtFile(), matrix, 3, 1));
    EXPECT_EQ(Values(matrix), (FloatList{10.0f, 11.0f, 20.0f, 21.0f}));
    EXPECT_EQ(Coords(matrix, 2), (FloatList{-1.0f, 1.0f}));
    EXPECT_EQ(matrix.GetOrigSize(2), 3);
    ASSERT_TRUE(ReadFrom(FlatDmtFile(), matrix, 0, 0));
    EXPECT_EQ(Values(matrix), (FloatList{0.0f, 1.0f}));
    EXPECT_EQ(matrix.GetSize(1), 2);
}

TEST(MatrixFile, PartOfAnIrregularAxisKeepsItsFirstCoordinates) {
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(2, 0.5f, {10.0f}) + AxisRecord(3, 0.0f, {1.0f, 5.0f, 6.0f});
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix, 3, 1));
    EXPECT_EQ(Coords(matrix, 2), (FloatList{1.0f, 5.0f}));
    EXPECT_EQ(Values(matrix), (FloatList{10.0f, 11.0f, 20.0f, 21.0f}));
}

TEST(MatrixFile, NegativeStartLengthensThePartAndSeeksNowhere) {
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(DmtFile(), matrix, 2, -1));
    EXPECT_EQ(Coords(matrix, 3), (FloatList{-1.0f, 1.0f, 3.0f}));
    EXPECT_EQ(Values(matrix), LayerValues(2, 3, 0, 3));
    ASSERT_TRUE(ReadFrom(DmtFile(), matrix, 4, -2));
    EXPECT_EQ(Coords(matrix, 3), (FloatList{-1.0f, 1.0f, 3.0f, 5.0f, 0.0f, 0.0f}));
    FloatList expected = FileValues;
    expected.resize(36, 0.0f);
    EXPECT_EQ(Values(matrix), expected);
    EXPECT_EQ(matrix.GetOrigSize(3), 4);
}

TEST(MatrixFile, LeastStartCostsNoMemory) {
    for (const int start : {INT_MIN, -2000000000}) {
        Matrix matrix;
        const long before = ResidentBytes();
        ASSERT_TRUE(ReadFrom(DmtFile(), matrix, 1, start));
        EXPECT_LT(ResidentBytes() - before, 100000000);
        EXPECT_EQ(matrix.GetCoord(3, 1), 1.0f);
        EXPECT_EQ(matrix.GetCoord(1, 1), 10.5f);
    }
}

TEST(MatrixFile, PartOfALastAxisWithoutPointsIsOnePoint) {
    DmtFile file;
    file.m_Axes =
        AxisRecord(2, 0.5f, {10.0f}) + AxisRecord(3, 2.0f, {-1.0f}) + AxisRecord(0, 1.0f, {3.0f});
    file.m_Values.clear();
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_EQ(matrix.Count(), 0);
    EXPECT_EQ(matrix.GetSize(3), 0);
    ASSERT_TRUE(ReadFrom(file, matrix, 5, 2));
    EXPECT_EQ(Coords(matrix, 3), FloatList{0.0f});
    EXPECT_EQ(matrix.GetOrigSize(3), 0);
    EXPECT_EQ(Values(matrix), FloatList(6, 0.0f));
}

// ---- Ranges in names

TEST(MatrixFile, RangeInTheNameGivesStartAndStop) {
    ExpectLayersOfFile(ReadRange("[1,3]"), 1, 3);
    ExpectLayersOfFile(ReadRange("[ 1 ,  3 ]"), 1, 3);
    ExpectLayersOfFile(ReadRange("[2,5]"), 2, 4);
    ExpectLayersOfFile(ReadRange("[0,0]"), 0, 1);
    ExpectLayersOfFile(ReadRange("[+1,3x]"), 1, 3);
    ExpectLayersOfFile(ReadRange("[1,3] and more"), 1, 3);
    ExpectLayersOfFile(ReadRange("[1,3][0,1]"), 1, 3);
}

TEST(MatrixFile, RangeInTheNameOverridesTheArguments) {
    ExpectLayersOfFile(ReadRange("[1,3]", 1, 0), 1, 3);
    ExpectLayersOfFile(ReadRange("[,]", 2, 1), 0, 4);
    ExpectLayersOfFile(ReadRange("[", 2, 1), 0, 4);
    ExpectLayersOfFile(ReadRange("", 2, 1), 1, 2);
}

TEST(MatrixFile, PartsOfARangeThatDoNotConvertCountAsTheWhole) {
    for (const char* whole :
         {"[,]", "[x,y]", "[,", "[", "[]", "[2]", "[2", "[0,", "[0,-1]", "[;3]"})
        ExpectLayersOfFile(ReadRange(whole), 0, 4);
    ExpectLayersOfFile(ReadRange("[,2]"), 0, 2);
    ExpectLayersOfFile(ReadRange("[x,2]"), 0, 2);
}

TEST(MatrixFile, StartWithoutAStopLeavesTheFirstLayerAlone) {
    for (const char* range : {"[2,]", "[2,x]", "[2,", "[2,-1]", "[2,3"})
        ExpectLayersOfFile(ReadRange(range), 0, 1);
}

TEST(MatrixFile, CommaIsLookedForBehindTheBracketAndTheBracketBehindTheComma) {
    MakeFolder(Scratch("a,b]c"));
    WriteBytes(Scratch("a,b]c/m,1].dmt"), DmtFile().Bytes());
    Matrix matrix;
    ASSERT_TRUE(matrix.Read(Scratch("a,b]c/m,1][1,3]").c_str(), -1, 0));
    ExpectLayersOfFile(matrix, 1, 3);
    ASSERT_TRUE(matrix.Read(Scratch("a,b]c/m,1][1],3]").c_str(), -1, 0));
    ExpectLayersOfFile(matrix, 1, 3);
    // The only "]" stands ahead of the comma, so the stop has none behind it.
    ASSERT_TRUE(matrix.Read(Scratch("a,b]c/m,1][1],3").c_str(), -1, 0));
    ExpectLayersOfFile(matrix, 0, 1);
}

TEST(MatrixFile, NameIsCutAtItsFirstBracket) {
    Matrix matrix = UsedMatrix();
    WriteBytes(Scratch("m[1.dmt"), DmtFile().Bytes());
    EXPECT_FALSE(matrix.Read(Scratch("m[1").c_str(), -1, 0));
    ExpectUsedMatrix(matrix);
}

// ---- Names

TEST(MatrixFile, SuffixIsAlwaysAppended) {
    Matrix matrix = MatrixOf(FlatDmtFile());
    EXPECT_FALSE(matrix.Read(Scratch("matrix.dmt").c_str(), -1, 0));
    EXPECT_TRUE(matrix.Write(Scratch("a.dmt").c_str()));
    EXPECT_TRUE(matrix.Append(Scratch("b.dmt").c_str()));
    EXPECT_EQ(Names(ScratchFolder()),
              (std::vector<std::string>{"a.dmt.dmt", "b.dmt.dmt", "matrix.dmt"}));
    EXPECT_TRUE(matrix.Read(Scratch("a.dmt").c_str(), -1, 0));
}

TEST(MatrixFile, CallersNameStaysAsItWas) {
    const DString name(Scratch("matrix[1,2]").c_str());
    Matrix matrix = MatrixOf(DmtFile());
    EXPECT_TRUE(matrix.Read(name, -1, 0));
    EXPECT_EQ(Text(name), Scratch("matrix[1,2]"));
}

TEST(MatrixFile, RangeMeansNothingToAWrite) {
    Matrix matrix = MatrixOf(FlatDmtFile());
    EXPECT_TRUE(matrix.Write(Scratch("a[1,2]").c_str()));
    EXPECT_TRUE(matrix.Append(Scratch("b[1,2]").c_str()));
    EXPECT_EQ(Names(ScratchFolder()),
              (std::vector<std::string>{"a[1,2].dmt", "b[1,2].dmt", "matrix.dmt"}));
}

TEST(MatrixFile, NameThatDiffersInCaseFindsTheFile) {
    WriteBytes(Scratch("Stack.dmt"), DmtFile().Bytes());
    Matrix matrix;
    ASSERT_TRUE(matrix.Read(Scratch("sTACK").c_str(), -1, 0));
    ExpectLayersOfFile(matrix, 0, 4);
    EXPECT_TRUE(matrix.Write(Scratch("STACK").c_str()));
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"Stack.dmt"});
}

TEST(MatrixFile, MissingFileLeavesTheMatrixWithoutAMessage) {
    RecordingSink sink;
    Matrix matrix = UsedMatrix();
    EXPECT_FALSE(matrix.Read(Scratch("missing").c_str(), -1, 0));
    EXPECT_FALSE(matrix.Read(Scratch("missing[0,1]").c_str(), -1, 0));
    EXPECT_FALSE(matrix.Read(DString(), 0, 0));
    ExpectUsedMatrix(matrix);
    EXPECT_EQ(matrix.m_NDims, 3);
    EXPECT_TRUE(sink.m_Entries.empty());
}

// ---- Corrupt headers

TEST(MatrixFile, FourDimensionsAndMoreChangeTheirNumberAlone) {
    for (const long dims : {4L, 5L, 1000L, long{INT_MAX}}) {
        DmtFile file;
        file.m_NDims = dims;
        Matrix matrix = UsedMatrix();
        EXPECT_TRUE(ReadFrom(file, matrix, 1, 0));
        EXPECT_EQ(matrix.m_NDims, dims);
        ExpectUsedMatrix(matrix);
    }
}

TEST(MatrixFile, FourDimensionsEndTheReadingOfTheStream) {
    DmtFile file;
    file.m_NDims = 4;
    WriteBytes(Scratch("matrix.dmt"), file.Bytes());
    DFile stream;
    ASSERT_TRUE(stream.Open(Scratch("matrix.dmt").c_str(), 5));
    Matrix matrix;
    matrix.Read(stream, -1, 0);
    EXPECT_EQ(ftell(stream.m_Stream), 12);
}

TEST(MatrixFile, NoDimensionsReadNoAxisTheOtherFieldsAndNoValues) {
    for (const long dims : {0L, -1L, long{INT_MIN}}) {
        for (const int stop : {-1, 0, 5}) {
            DmtFile file;
            file.m_NDims = dims;
            file.m_Axes.clear();
            Matrix matrix = UsedMatrix();
            ASSERT_TRUE(ReadFrom(file, matrix, stop, 2));
            EXPECT_EQ(matrix.m_NDims, dims);
            ExpectNumbersOfFile(matrix);
            EXPECT_EQ(matrix.m_Calib, 2.5f);
            ExpectTextsOfFile(matrix);
            EXPECT_EQ(Coords(matrix, 1), (FloatList{1.0f, 11.0f}));
            EXPECT_EQ(Coords(matrix, 3), (FloatList{3.0f, 33.0f}));
            EXPECT_EQ(matrix.Count(), 0);
        }
    }
}

TEST(MatrixFile, NegativeSizesCountAsNone) {
    for (const long size : {-1L, -3L, long{INT_MIN}}) {
        for (const float step : {0.0f, 0.5f}) {
            DmtFile file;
            const FloatList coords = step == 0.0f ? FloatList() : FloatList{10.0f};
            file.m_Axes = AxisRecord(size, step, coords) + AxisRecord(3, 2.0f, {-1.0f}) +
                          AxisRecord(4, 2.0f, {-1.0f});
            Matrix matrix = UsedMatrix();
            ASSERT_TRUE(ReadFrom(file, matrix));
            EXPECT_EQ(matrix.GetSize(1), 0);
            EXPECT_EQ(matrix.GetOrigSize(1), 0);
            EXPECT_EQ(matrix.GetStep(1), step);
            EXPECT_EQ(matrix.GetSize(2), 3);
            EXPECT_EQ(matrix.Count(), 0);
            ExpectNumbersOfFile(matrix);
            ExpectTextsOfFile(matrix);
        }
    }
}

TEST(MatrixFile, MoreValuesThanAnIntCountsAreNone) {
    DmtFile file;
    file.m_Axes = AxisRecord(100000, 1.0f, {0.0f}) + AxisRecord(1 << 20, 1.0f, {0.0f}) +
                  AxisRecord(1 << 24, 1.0f, {0.0f});
    Matrix matrix = UsedMatrix();
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_EQ(matrix.Count(), 0);
    EXPECT_EQ(matrix.GetSize(1), 100000);
    EXPECT_EQ(matrix.GetSize(3), 1 << 24);
    EXPECT_EQ(matrix.GetCoord(1, 99999), 99999.0f);
    ExpectNumbersOfFile(matrix);
    ExpectTextsOfFile(matrix);
}

TEST(MatrixFile, LayerThatNoFileCanHoldIsZero) {
    DmtFile file;
    file.m_Axes = AxisRecord(1 << 15, 1.0f, {0.0f}) + AxisRecord(1 << 15, 0.0f, {}) +
                  std::string(4 << 15, '\0') + AxisRecord(1 << 24, 0.0f, {}) +
                  std::string(4 << 24, '\0');
    Matrix matrix;
    // The layer would begin 64 PiB behind the header, further than most file systems go.
    ASSERT_TRUE(ReadFrom(file, matrix, 1 << 24, (1 << 24) - 1));
    EXPECT_EQ(matrix.GetOrigSize(3), 1 << 24);
    EXPECT_EQ(matrix.GetSize(3), 1);
    if (matrix.Count() == 0) GTEST_SKIP() << "this machine grants no 4 GB of address space";
    ASSERT_EQ(matrix.Count(), 1 << 30);
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(matrix[i], 0.0f) << i;
}

TEST(MatrixFile, HugeSizesOfAShortFileCostNoMemoryForTheValues) {
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(20000, 1.0f, {0.0f}) + AxisRecord(25000, 1.0f, {0.0f});
    Matrix matrix;
    const long before = ResidentBytes();
    ASSERT_TRUE(ReadFrom(file, matrix));
    EXPECT_LT(ResidentBytes() - before, 100000000);
    if (matrix.Count() == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    EXPECT_EQ(matrix.Count(), 500000000);
    EXPECT_EQ(matrix[5], 21.0f);
    EXPECT_EQ(matrix[499999999], 0.0f);
}

TEST(MatrixFile, HugeIrregularAxisOfAShortFileCostsNoMemory) {
    Matrix matrix;
    const long before = ResidentBytes();
    ASSERT_TRUE(
        ReadFrom(Int32(4) + Int32(0) + Int32(2) + AxisRecord(500000000, 0.0f, {3.0f}), matrix));
    EXPECT_LT(ResidentBytes() - before, 100000000);
    EXPECT_EQ(matrix.GetOrigSize(1), 500000000);
    if (matrix.GetSize(1) == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    EXPECT_EQ(matrix.GetCoord(1, 0), 3.0f);
    EXPECT_EQ(matrix.GetCoord(1, 499999999), 0.0f);
    EXPECT_EQ(matrix.Count(), 0);
}

TEST(MatrixFile, HugeEvenAxisOfAShortFileCostsNoMemory) {
    Matrix matrix;
    const long before = ResidentBytes();
    ASSERT_TRUE(
        ReadFrom(Int32(4) + Int32(0) + Int32(2) + AxisRecord(500000000, 0.5f, {3.0f}), matrix));
    EXPECT_LT(ResidentBytes() - before, 50000000);
    EXPECT_EQ(matrix.GetOrigSize(1), 500000000);
    if (matrix.GetSize(1) == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    EXPECT_EQ(matrix.GetSize(1), 500000000);
    EXPECT_EQ(matrix.GetCoord(1, 0), 3.0f);
    EXPECT_EQ(matrix.GetCoord(1, 1048575), 1048575.0f * 0.5f + 3.0f);
    EXPECT_EQ(matrix.GetCoord(1, 1048576), 0.0f);
    EXPECT_EQ(matrix.GetCoord(1, 499999999), 499999999.0f * 0.5f + 3.0f);
}

TEST(MatrixFile, LongEvenAxisHasAllCoordinatesWhereTheFileCanHoldItsValues) {
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(1100000, 0.5f, {3.0f}) + AxisRecord(1, 2.0f, {-1.0f});
    file.m_Values = std::string(4 * 1100000, '\0');
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix));
    ASSERT_EQ(matrix.Count(), 1100000);
    EXPECT_EQ(matrix.GetCoord(1, 1048576), 3.0f + 1048576 * 0.5f);
    EXPECT_EQ(matrix.GetCoord(1, 1099999), 3.0f + 1099999 * 0.5f);
}

TEST(MatrixFile, LongEvenAxisFromAStreamInMemoryHasAllCoordinates) {
    std::string bytes = Int32(4) + Int32(0) + Int32(2) + AxisRecord(1100000, 0.5f, {3.0f}) +
                        AxisRecord(0, 1.0f, {});
    DFile file;
    file.m_Stream = fmemopen(bytes.data(), bytes.size(), "rb");
    ASSERT_NE(file.m_Stream, nullptr);
    Matrix matrix;
    matrix.Read(file, -1, 0);
    EXPECT_EQ(matrix.GetCoord(1, 1099999), 3.0f + 1099999 * 0.5f);
}

TEST(MatrixFile, FolderOfItsNameIsReadAsAnEmptyFile) {
    MakeFolder(Scratch("matrix.dmt"));
    WriteBytes(Scratch("empty.dmt"), "");
    Matrix matrix = UsedMatrix();
    Matrix other = UsedMatrix();
    EXPECT_TRUE(matrix.Read(Scratch("matrix").c_str(), -1, 0));
    EXPECT_TRUE(other.Read(Scratch("empty").c_str(), -1, 0));
    EXPECT_EQ(matrix.Count(), 0);
    EXPECT_EQ(matrix.m_NDims, other.m_NDims);
    EXPECT_EQ(Text(matrix.m_Label), Text(other.m_Label));
}

TEST(MatrixFile, ValuesThatGetNoMemoryAreNone) {
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(46340, 1.0f, {0.0f}) + AxisRecord(46340, 1.0f, {0.0f});
    Matrix matrix = UsedMatrix();
    {
        const AddressSpaceLimit limit(1000000000);
        EXPECT_TRUE(ReadFrom(file, matrix));
    }
    EXPECT_EQ(matrix.Count(), 0);
    EXPECT_EQ(matrix.GetSize(2), 46340);
    ExpectNumbersOfFile(matrix);
    ExpectTextsOfFile(matrix);
}

TEST(MatrixFile, RegularAxisThatGetsNoMemoryIsEmptyAndTheReadingGoesOn) {
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(INT_MAX, 1.0f, {7.0f}) + AxisRecord(3, 2.0f, {-1.0f});
    Matrix matrix;
    {
        const AddressSpaceLimit limit(1000000000);
        EXPECT_TRUE(ReadFrom(file, matrix));
    }
    EXPECT_EQ(matrix.GetSize(1), 0);
    EXPECT_EQ(matrix.GetOrigSize(1), INT_MAX);
    EXPECT_EQ(Coords(matrix, 2), (FloatList{-1.0f, 1.0f, 3.0f}));
    EXPECT_EQ(matrix.Count(), 0);
    ExpectNumbersOfFile(matrix);
}

TEST(MatrixFile, IrregularAxisThatGetsNoMemoryIsPassedOver) {
    constexpr long Points = 500000000;
    const DmtFile file;
    const std::string front = Int32(4) + Int32(0) + Int32(1) + AxisRecord(Points, 0.0f, {});
    const std::string numbers = file.m_Extrema + file.m_Calib + file.m_Numbers;
    WriteBytes(Scratch("matrix.dmt"), front);
    std::filesystem::resize_file(Scratch("matrix.dmt"), front.size() + 4 * Points);
    std::ofstream(Scratch("matrix.dmt"), std::ios::binary | std::ios::app) << numbers;
    Matrix matrix;
    {
        const AddressSpaceLimit limit(1000000000);
        EXPECT_TRUE(matrix.Read(Scratch("matrix").c_str(), -1, 0));
    }
    EXPECT_EQ(matrix.GetSize(1), 0);
    EXPECT_EQ(matrix.Count(), 0);
    ExpectNumbersOfFile(matrix);
}

// ---- Files that end early

TEST(MatrixFile, EveryNumberChangesOnlyWithItsOwnBytes) {
    const std::vector<FieldEnd<Matrix>> fields = {
        {12, [](const Matrix& m) { return m.m_NDims; }},
        {16, [](const Matrix& m) { return m.GetOrigSize(1); }},
        {20, [](const Matrix& m) { return m.GetStep(1); }},
        {28, [](const Matrix& m) { return m.GetOrigSize(2); }},
        {32, [](const Matrix& m) { return m.GetStep(2); }},
        {48, [](const Matrix& m) { return m.GetOrigSize(3); }},
        {52, [](const Matrix& m) { return m.GetStep(3); }},
        {60, [](const Matrix& m) { return m.m_Max; }},
        {64, [](const Matrix& m) { return m.m_Min; }},
        {68, [](const Matrix& m) { return m.m_Calib; }},
        {72, [](const Matrix& m) { return m.m_ScaleUnit; }},
        {76, [](const Matrix& m) { return m.m_Params[0]; }},
        {80, [](const Matrix& m) { return m.m_Params[1]; }},
        {84, [](const Matrix& m) { return m.m_Params[2]; }},
        {88, [](const Matrix& m) { return m.m_Params[3]; }},
        {92, [](const Matrix& m) { return m.m_Params[4]; }},
    };
    ExpectWholeFieldsOnly<Matrix>(
        DmtFile().Bytes(), fields,
        [](const std::string& bytes, Matrix& matrix) { EXPECT_TRUE(ReadFrom(bytes, matrix)); },
        [](Matrix& matrix) {
            matrix = UsedMatrix();
            matrix.m_Calib = 74.0f;
            matrix.m_NDims = 2;
            for (Matrix::MDim& axis : matrix.m_Dims)
                axis.m_OrigSize = 90;
        });
}

TEST(MatrixFile, DimensionsOfAFileCutShortHoldNoOldPoints) {
    const std::string whole = DmtFile().Bytes();
    for (size_t length = 12; length < 56; ++length) {
        Matrix matrix = UsedMatrix();
        ASSERT_TRUE(ReadFrom(whole.substr(0, length), matrix));
        EXPECT_EQ(matrix.GetSize(1), length < 16 ? 0 : 2) << length;
        EXPECT_EQ(matrix.GetSize(2), length < 28 ? 0 : 3) << length;
        EXPECT_EQ(matrix.GetSize(3), length < 48 ? 0 : 4) << length;
        EXPECT_EQ(matrix.Count(), length < 48 ? 0 : 24) << length;
    }
}

// A float of which the file has the first bytes alone: the others are zero.
float WithoutLastBytes(float value, size_t missing) {
    char bytes[sizeof value];
    memcpy(bytes, &value, sizeof value);
    memset(bytes + sizeof value - missing, 0, missing);
    memcpy(&value, bytes, sizeof value);
    return value;
}

TEST(MatrixFile, CoordinatesThatAreNotThereAreZero) {
    const std::string whole = DmtFile().Bytes();
    Matrix matrix;
    for (const size_t length : {20u, 23u}) {
        ASSERT_TRUE(ReadFrom(whole.substr(0, length), matrix));
        EXPECT_EQ(Coords(matrix, 1), (FloatList{0.0f, 0.0f})) << length;
    }
    for (const size_t length : {36u, 37u, 39u}) {
        ASSERT_TRUE(ReadFrom(whole.substr(0, length), matrix));
        const float cut = WithoutLastBytes(2.5f, 40 - length);
        EXPECT_EQ(Coords(matrix, 2), (FloatList{1.0f, cut, 0.0f})) << length;
    }
}

TEST(MatrixFile, ValuesThatAreNotThereAreZero) {
    const std::string whole = DmtFile().Bytes();
    for (size_t missing = 0; missing <= 24 * 4; ++missing) {
        Matrix matrix = UsedMatrix();
        ASSERT_TRUE(ReadFrom(whole.substr(0, whole.size() - missing), matrix));
        FloatList expected(FileValues.begin(), FileValues.end() - static_cast<long>(missing / 4));
        if (missing % 4 != 0) expected.back() = WithoutLastBytes(expected.back(), missing % 4);
        expected.resize(24, 0.0f);
        EXPECT_EQ(Values(matrix), expected) << missing;
    }
}

TEST(MatrixFile, PartBehindTheEndOfAFileCutShortIsZero) {
    const std::string whole = DmtFile().Bytes();
    Matrix matrix = UsedMatrix();
    ASSERT_TRUE(ReadFrom(whole.substr(0, whole.size() - 80), matrix, 4, 3));
    EXPECT_EQ(Values(matrix), FloatList(6, 0.0f));
}

TEST(MatrixFile, CutShortTextIsFilledUpWithZeroBytes) {
    const std::string whole = DmtFile().Bytes();
    Matrix matrix = UsedMatrix();
    ASSERT_TRUE(ReadFrom(whole.substr(0, 92 + 4 + 3), matrix));
    EXPECT_EQ(Text(matrix.m_Note), std::string("a n\0\0\0", 6));
    EXPECT_STREQ(matrix.m_Label, "old label");
    EXPECT_EQ(Values(matrix), FloatList(24, 0.0f));
}

TEST(MatrixFile, EmptyFileLeavesAllFieldsAndNoValues) {
    Matrix matrix = UsedMatrix();
    EXPECT_TRUE(ReadFrom(std::string(), matrix, 1, 1));
    ExpectFieldsOfUsedMatrix(matrix);
    EXPECT_EQ(matrix.m_NDims, 3);
    EXPECT_EQ(Coords(matrix, 3), (FloatList{3.0f, 33.0f}));
    EXPECT_EQ(matrix.Count(), 0);
}

TEST(MatrixFile, OldVersionSetsTheCalibrationWhereverTheFileEnds) {
    Matrix matrix = UsedMatrix();
    ASSERT_TRUE(ReadFrom(Int32(3), matrix));
    EXPECT_EQ(matrix.m_Calib, 1.0f);
}

TEST(MatrixFile, ClosedStreamIsReadAndWrittenWithoutEffect) {
    DFile closed;
    Matrix matrix = UsedMatrix();
    matrix.Read(closed, 2, 1);
    ExpectFieldsOfUsedMatrix(matrix);
    EXPECT_EQ(matrix.Count(), 0);
    matrix.Write(closed);
    matrix.Append(closed);
    EXPECT_EQ(closed.m_Stream, nullptr);
}

// ---- Writing

TEST(MatrixFile, WritesEveryFieldInItsPlace) {
    Matrix matrix = MatrixOf(DmtFile());
    ExpectWrites(matrix, DmtFile());
}

TEST(MatrixFile, WritesTwoAxesOfATwoDimensionalMatrix) {
    Matrix matrix = MatrixOf(FlatDmtFile());
    ExpectWrites(matrix, FlatDmtFile());
}

TEST(MatrixFile, OldFileIsWrittenAsVersionFour) {
    DmtFile file;
    file.m_Version = 3;
    file.m_Calib.clear();
    Matrix matrix = MatrixOf(file);
    file.m_Version = 4;
    file.m_Calib = Float32(1.0f);
    ExpectWrites(matrix, file);
}

TEST(MatrixFile, FreshMatrixIsAHeaderOfDefaultsAndAZero) {
    Matrix matrix;
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(1, 1.0f, {0.0f}) + AxisRecord(1, 1.0f, {0.0f});
    file.m_Extrema = Floats({0.0f, 0.0f});
    file.m_Calib = Float32(1.0f);
    file.m_Numbers = Floats({1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f});
    file.m_Note = Int32(0);
    file.m_Label = Int32(0);
    file.m_Values = Float32(0.0f);
    ExpectWrites(matrix, file);
}

TEST(MatrixFile, WriteSetsTheDateToNow) {
    Matrix matrix = MatrixOf(DmtFile());
    const std::string before = Text(Now());
    Written(matrix);
    const std::string after = Text(Now());
    EXPECT_TRUE(Text(matrix.m_Date) == before || Text(matrix.m_Date) == after) << matrix.m_Date;
}

TEST(MatrixFile, PartIsWrittenAsAMatrixOfItsOwn) {
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(DmtFile(), matrix, 3, 1));
    DmtFile file;
    file.m_Axes = file.m_Axes.substr(0, 32) + AxisRecord(2, 2.0f, {-1.0f});
    file.m_Values = Floats(LayerValues(2, 3, 1, 3));
    ExpectWrites(matrix, file);
}

TEST(MatrixFile, AllValuesAreWrittenWhateverTheAxesSay) {
    Matrix matrix = MatrixOf(FlatDmtFile());
    matrix.Reserve(1, 1, 1);
    DmtFile file = FlatDmtFile();
    file.m_Axes = AxisRecord(1, 0.5f, {10.0f}) + AxisRecord(1, 2.0f, {-1.0f});
    ExpectWrites(matrix, file);
}

TEST(MatrixFile, AxisWithoutPointsIsWrittenWithAFirstCoordinateOfZero) {
    Matrix matrix = MatrixOf(FlatDmtFile());
    DmtFile file = FlatDmtFile();
    for (const float step : {2.0f, 0.0f}) {
        matrix.m_Dims[1].Clear();
        matrix.m_Dims[1].m_Step = step;
        file.m_Axes = AxisRecord(2, 0.5f, {10.0f}) +
                      AxisRecord(0, step, step == 0.0f ? FloatList() : FloatList{0.0f});
        ExpectWrites(matrix, file);
    }
}

TEST(MatrixFile, MoreThanThreeDimensionsAreWrittenAsThree) {
    Matrix matrix = MatrixOf(DmtFile());
    matrix.m_NDims = 1000;
    ExpectWrites(matrix, DmtFile());
    EXPECT_EQ(matrix.m_NDims, 1000);
}

TEST(MatrixFile, NoDimensionsAreWrittenWithoutAxes) {
    Matrix matrix = MatrixOf(DmtFile());
    DmtFile file;
    file.m_Axes.clear();
    for (const int dims : {0, -3}) {
        matrix.m_NDims = dims;
        file.m_NDims = dims;
        ExpectWrites(matrix, file);
    }
}

TEST(MatrixFile, SmallerMatrixReplacesALongerFile) {
    Matrix longer(100, 100, 1);
    Written(longer);
    Matrix matrix = MatrixOf(FlatDmtFile());
    ExpectWrites(matrix, FlatDmtFile());
}

TEST(MatrixFile, UnwritableNameIsFalseWithoutAMessage) {
    RecordingSink sink;
    Matrix matrix = UsedMatrix();
    MakeFolder(Scratch("taken.dmt"));
    EXPECT_FALSE(matrix.Write(Scratch("no/such/folder").c_str()));
    EXPECT_FALSE(matrix.Write(Scratch("taken").c_str()));
    EXPECT_FALSE(matrix.Append(Scratch("no/such/folder").c_str()));
    EXPECT_FALSE(matrix.Append(Scratch("taken").c_str()));
    ExpectUsedMatrix(matrix);
    EXPECT_TRUE(sink.m_Entries.empty());
}

// ---- Appending

TEST(MatrixFile, AppendWritesAMissingFile) {
    Matrix matrix = MatrixOf(DmtFile());
    matrix.m_Date = "old date";
    EXPECT_TRUE(matrix.Append(Scratch("new").c_str()));
    DmtFile file;
    file.m_Date = LongText(Text(matrix.m_Date));
    EXPECT_EQ(ReadBytes(Scratch("new.dmt")), file.Bytes());
    EXPECT_EQ(matrix.m_Date.GetLength(), DateLength);
}

TEST(MatrixFile, AppendLeavesAnExistingFile) {
    const DString name(Scratch("matrix").c_str());
    for (const std::string& bytes : {DmtFile().Bytes(), std::string("no matrix"), std::string()}) {
        WriteBytes(Scratch("matrix.dmt"), bytes);
        Matrix matrix = UsedMatrix();
        EXPECT_TRUE(matrix.Append(name));
        EXPECT_EQ(ReadBytes(Scratch("matrix.dmt")), bytes);
        ExpectUsedMatrix(matrix);
    }
    EXPECT_EQ(Text(name), Scratch("matrix"));
}

TEST(MatrixFile, AppendFindsAFileWhoseNameDiffersInCase) {
    WriteBytes(Scratch("Stack.dmt"), DmtFile().Bytes());
    Matrix matrix(1, 1, 1);
    EXPECT_TRUE(matrix.Append(Scratch("stack").c_str()));
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"Stack.dmt"});
    EXPECT_EQ(ReadBytes(Scratch("Stack.dmt")), DmtFile().Bytes());
}

TEST(MatrixFile, AppendToAStreamDoesNothing) {
    WriteBytes(Scratch("matrix.dmt"), DmtFile().Bytes());
    DFile file;
    ASSERT_TRUE(file.Open(Scratch("matrix.dmt").c_str(), 7));
    Matrix matrix = UsedMatrix();
    matrix.Append(file);
    EXPECT_EQ(ftell(file.m_Stream), 0);
    file.Close();
    EXPECT_EQ(ReadBytes(Scratch("matrix.dmt")), DmtFile().Bytes());
    ExpectUsedMatrix(matrix);
}

// ---- Large files, of which parts are read

namespace {

constexpr int LargeRows = 256;
constexpr int LargeCols = 256;
constexpr long LayerBytes = 4L * LargeRows * LargeCols;

DmtFile LargeFile(int layers) {
    DmtFile file;
    file.m_Axes = AxisRecord(LargeRows, 1.0f, {0.0f}) + AxisRecord(LargeCols, 1.0f, {0.0f}) +
                  AxisRecord(layers, 0.5f, {0.0f});
    file.m_Values.clear();
    return file;
}

FloatList MarkedLayer(float first) {
    FloatList values(LargeRows * LargeCols);
    for (float& value : values)
        value = first++;
    return values;
}

// A sparse file of `layers` layers, of which the numbered ones hold their number and what follows.
void WriteSparseStack(int layers, const std::vector<int>& marked) {
    const std::string header = LargeFile(layers).Header();
    WriteBytes(Scratch("large.dmt"), header);
    std::filesystem::resize_file(Scratch("large.dmt"),
                                 header.size() + static_cast<size_t>(layers) * LayerBytes);
    std::fstream file(Scratch("large.dmt"), std::ios::binary | std::ios::in | std::ios::out);
    for (const int layer : marked) {
        file.seekp(static_cast<long>(header.size()) + layer * LayerBytes);
        file << Floats(MarkedLayer(static_cast<float>(layer)));
    }
    ASSERT_TRUE(file.good());
}

void ExpectLayer(const Matrix& matrix, int layer, const FloatList& expected) {
    const float* values = matrix.Data() + layer * LargeRows * LargeCols;
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), values)) << layer;
}

// A file of a head and zeros behind it, which remembers the bytes that it delivered or took and
// stores none.
struct RemoteFile {
    std::string m_Head;
    long m_Size = 0;
    long m_Position = 0;
    long m_Transferred = 0;
    std::vector<std::pair<long, long>> m_Reads;  // first byte, and the one behind the last
};

ssize_t Deliver(void* cookie, char* buffer, size_t size) {
    RemoteFile& file = *static_cast<RemoteFile*>(cookie);
    const long head = static_cast<long>(file.m_Head.size());
    const long wanted = static_cast<long>(size);
    const bool inHead = file.m_Position < head;
    const long n = std::clamp((inHead ? head : file.m_Size) - file.m_Position, 0L, wanted);
    // The buffer is left alone behind the head, so that reading a large array costs no memory.
    if (inHead) memcpy(buffer, file.m_Head.data() + file.m_Position, static_cast<size_t>(n));
    file.m_Reads.emplace_back(file.m_Position, file.m_Position + n);
    file.m_Position += n;
    file.m_Transferred += n;
    return n;
}

ssize_t Take(void* cookie, const char*, size_t size) {
    static_cast<RemoteFile*>(cookie)->m_Transferred += static_cast<long>(size);
    return static_cast<ssize_t>(size);
}

int Seek(void* cookie, off64_t* offset, int whence) {
    RemoteFile& file = *static_cast<RemoteFile*>(cookie);
    const long base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.m_Position : file.m_Size;
    if (base + *offset < 0) return -1;
    file.m_Position = base + *offset;
    *offset = file.m_Position;
    return 0;
}

void OpenRemote(DFile& file, RemoteFile& remote, const char* mode) {
    file.m_Stream = fopencookie(&remote, mode, {Deliver, Take, Seek, nullptr});
    ASSERT_NE(file.m_Stream, nullptr);
}

}  // namespace

TEST(MatrixFile, PartOfALargeStackHoldsItsLayersAlone) {
    WriteSparseStack(20000, {0, 6, 7, 8, 12345, 19999});
    Matrix matrix;
    const long before = ResidentBytes();
    ASSERT_TRUE(matrix.Read(Scratch("large[7,10]").c_str(), -1, 0));
    ASSERT_EQ(matrix.Count(), 3 * LargeRows * LargeCols);
    ExpectLayer(matrix, 0, MarkedLayer(7.0f));
    ExpectLayer(matrix, 1, MarkedLayer(8.0f));
    ExpectLayer(matrix, 2, FloatList(LargeRows * LargeCols, 0.0f));
    EXPECT_EQ(Coords(matrix, 3), (FloatList{0.0f, 0.5f, 1.0f}));
    EXPECT_EQ(matrix.GetOrigSize(3), 20000);
    ASSERT_TRUE(matrix.Read(Scratch("large[12345,12346]").c_str(), -1, 0));
    ExpectLayer(matrix, 0, MarkedLayer(12345.0f));
    ASSERT_TRUE(matrix.Read(Scratch("large").c_str(), INT_MAX, INT_MAX));
    ASSERT_EQ(matrix.Count(), LargeRows * LargeCols);
    ExpectLayer(matrix, 0, MarkedLayer(19999.0f));
    ASSERT_TRUE(matrix.Read(Scratch("large").c_str(), 0, 0));
    ExpectLayer(matrix, 0, MarkedLayer(0.0f));
    EXPECT_LT(ResidentBytes() - before, 100000000);
}

TEST(MatrixFile, StackOfMoreValuesThanAnIntCountsIsReadInParts) {
    constexpr int Layers = 40000;
    static_assert(1L * LargeRows * LargeCols * Layers > INT_MAX);
    WriteSparseStack(Layers, {39998, 39999});
    Matrix matrix;
    ASSERT_TRUE(matrix.Read(Scratch("large").c_str(), -1, 0));
    EXPECT_EQ(matrix.Count(), 0);
    EXPECT_EQ(matrix.GetSize(3), Layers);
    ASSERT_TRUE(matrix.Read(Scratch("large").c_str(), Layers, Layers - 2));
    ASSERT_EQ(matrix.Count(), 2 * LargeRows * LargeCols);
    ExpectLayer(matrix, 0, MarkedLayer(39998.0f));
    ExpectLayer(matrix, 1, MarkedLayer(39999.0f));
}

TEST(MatrixFile, PartReadTouchesHeaderAndWantedLayersAlone) {
    RemoteFile remote;
    remote.m_Head = LargeFile(1000).Header();
    const long header = static_cast<long>(remote.m_Head.size());
    remote.m_Size = header + 1000 * LayerBytes;
    DFile file;
    OpenRemote(file, remote, "r");
    Matrix matrix;
    matrix.Read(file, 503, 500);
    ASSERT_EQ(matrix.Count(), 3 * LargeRows * LargeCols);
    const long first = header + 500 * LayerBytes;
    const long end = first + 3 * LayerBytes;
    for (const auto& [from, to] : remote.m_Reads) {
        const bool ofHeader = to <= header + BUFSIZ;
        const bool ofLayers = from >= first - BUFSIZ && to <= end + BUFSIZ;
        EXPECT_TRUE(ofHeader || ofLayers) << from << " to " << to;
    }
    EXPECT_LE(remote.m_Transferred, header + 3 * LayerBytes + 2 * BUFSIZ);
}

TEST(MatrixFile, LargeMatrixIsReadAndWrittenWhole) {
    constexpr int Size = 23171;  // its square holds more than 2^31 bytes
    RemoteFile remote;
    DmtFile head = FlatDmtFile();
    head.m_Axes = AxisRecord(Size, 1.0f, {0.0f}) + AxisRecord(Size, 1.0f, {0.0f});
    remote.m_Head = head.Header();
    remote.m_Size = static_cast<long>(remote.m_Head.size()) + 4L * Size * Size;
    Matrix matrix;
    {
        DFile file;
        OpenRemote(file, remote, "r");
        matrix.Read(file, -1, 0);
    }
    if (matrix.Count() == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    EXPECT_EQ(matrix.Count(), Size * Size);
    EXPECT_EQ(remote.m_Transferred, remote.m_Size);
    RemoteFile written;
    {
        DFile file;
        OpenRemote(file, written, "w");
        matrix.Write(file);
    }
    EXPECT_EQ(written.m_Transferred, remote.m_Size);
}
