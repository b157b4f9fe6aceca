// The C calls of matrices.
#include <climits>
#include <cmath>
#include <limits>

#include "core/OpenSession.h"
#include "data/MatrixTestData.h"

namespace {

struct Axis {
    int m_Size = -7;
    float m_Start = -7;
    float m_Step = -7;
    bool operator==(const Axis&) const = default;
};

void PrintTo(const Axis& axis, std::ostream* out) {
    *out << axis.m_Size << " points from " << axis.m_Start << " by " << axis.m_Step;
}

struct Axes {
    Axis m_Rows;
    Axis m_Columns;
    Axis m_Layers;
};

Axes InfoOf(const char* name) {
    Axes a;
    GetMatrixInfoC(name, &a.m_Rows.m_Size, &a.m_Rows.m_Start, &a.m_Rows.m_Step, &a.m_Columns.m_Size,
                   &a.m_Columns.m_Start, &a.m_Columns.m_Step, &a.m_Layers.m_Size,
                   &a.m_Layers.m_Start, &a.m_Layers.m_Step);
    return a;
}

void ExpectOnePointFromZero(const Axis& axis) {
    EXPECT_EQ(axis.m_Size, 1);
    EXPECT_EQ(axis.m_Start, 0.0f);
    EXPECT_TRUE(std::isnan(axis.m_Step)) << axis.m_Step;
}

const FloatList Untouched(30, -7.0f);

/// What a read with these sizes leaves in a buffer of 30 values.
FloatList Got(const char* name, int n1, int n2, int n3) {
    FloatList data = Untouched;
    GetMatrixC(name, n1, n2, n3, data.data());
    return data;
}

FloatList AtTheStart(const FloatList& values) {
    FloatList data = Untouched;
    std::copy(values.begin(), values.end(), data.begin());
    return data;
}

const FloatList Twelve = {7, 1, 2, 3, 4, 5, -3, 0, 1, 2, 3, 4};

void Store(const char* name, int n1, int n2, int n3, const FloatList& values = Twelve) {
    SetMatrixC(name, n1, n2, n3, values.data(), 10, 0.5f, -1, 2, 100, 0.25f);
}

class MatrixCalls : public OpenShot {
protected:
    static std::string File(const std::string& name) { return Shot("7") + "/" + name + ".dmt"; }
};

// A file as the calls store it: `axes` and values are given, no number and no text is.
DmtFile StoredFile(long dims, const std::string& axes, const FloatList& values) {
    DmtFile file;
    file.m_NDims = dims;
    file.m_Axes = axes;
    file.m_Extrema = Float32(7) + Float32(-3);
    file.m_Calib = Float32(1);
    file.m_Numbers = Float32(1) + Floats({0, 0, 0, 0, 0});
    file.m_Note = LongText("");
    file.m_Label = LongText("");
    file.m_Date = LongText(std::string(DateLength, ' '));
    file.m_Values = Floats(values);
    return file;
}

/// The bytes of a stored file, the date of the writing blanked.
std::string WithoutDate(std::string bytes, const DmtFile& golden) {
    const size_t length = DateLength;
    if (bytes.size() < golden.Header().size()) return bytes;
    return bytes.replace(golden.Header().size() - length, length, std::string(length, ' '));
}

}  // namespace

// ---- Sizes and axes

TEST_F(MatrixCalls, InfoOfAMissingMatrixIsOnePointInEachDimension) {
    WriteBytes(Scratch(".dmt"), DmtFile().Bytes());
    for (const char* name : {"M", "99\\M", "", static_cast<const char*>(nullptr)}) {
        const Axes axes = InfoOf(name);
        ExpectOnePointFromZero(axes.m_Rows);
        ExpectOnePointFromZero(axes.m_Columns);
        ExpectOnePointFromZero(axes.m_Layers);
    }
}

TEST_F(MatrixCalls, InfoGivesSizeFirstCoordinateAndMeanStep) {
    WriteBytes(File("M"), DmtFile().Bytes());
    const Axes axes = InfoOf("M");
    EXPECT_EQ(axes.m_Rows, (Axis{2, 10, 0.5f}));
    EXPECT_EQ(axes.m_Columns, (Axis{3, 1, 3.5f})) << "coordinates 1, 2.5 and 8";
    EXPECT_EQ(axes.m_Layers, (Axis{4, -1, 2}));
}

TEST_F(MatrixCalls, InfoOfAFlatMatrixHasOneLayerAtZero) {
    WriteBytes(File("M"), FlatDmtFile().Bytes());
    const Axes axes = InfoOf("M");
    EXPECT_EQ(axes.m_Columns, (Axis{3, -1, 2}));
    ExpectOnePointFromZero(axes.m_Layers);
}

TEST_F(MatrixCalls, StepIsComputedInSinglePrecision) {
    DmtFile file;
    file.m_Axes = AxisRecord(2, 0.5f, {10.0f}) + AxisRecord(4, 0, {0.1f, 0.2f, 0.3f, 1.1f}) +
                  AxisRecord(1, 1, {0});
    WriteBytes(File("M"), file.Bytes());
    const volatile float span = 1.1f - 0.1f;
    const volatile float step = span / 3.0f;
    EXPECT_EQ(InfoOf("M").m_Columns, (Axis{4, 0.1f, step}));
}

TEST_F(MatrixCalls, InfoOfAPartMeasuresFromTheFullSize) {
    WriteBytes(File("M"), DmtFile().Bytes());
    // Layer 3 isn't in memory, and a coordinate that isn't there is -1.
    EXPECT_EQ(InfoOf("M[1,3]").m_Layers, (Axis{4, -1, 0}));
    EXPECT_EQ(InfoOf("M[1,3]").m_Rows, (Axis{2, 10, 0.5f}));
}

TEST_F(MatrixCalls, InfoOfAnAxisWithoutPoints) {
    DmtFile file;
    file.m_Axes = AxisRecord(2, 0.5f, {10}) + AxisRecord(0, 1, {5}) + AxisRecord(4, 2, {-1});
    WriteBytes(File("M"), file.Bytes());
    EXPECT_EQ(InfoOf("M").m_Columns, (Axis{0, -1, 0}));
    EXPECT_EQ(Got("M", 2, 0, 4), Untouched);
}

TEST_F(MatrixCalls, FileOfTooManyDimensionsCountsAsMissing) {
    DmtFile file;
    file.m_NDims = 4;
    WriteBytes(File("M"), file.Bytes());
    ExpectOnePointFromZero(InfoOf("M").m_Rows);
    EXPECT_EQ(Got("M", 2, 3, 4), Untouched);
}

TEST_F(MatrixCalls, InfoMissingPointersAreNotTouched) {
    WriteBytes(File("M"), DmtFile().Bytes());
    GetMatrixInfoC("M", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                   nullptr);
    float step = 0;
    int layers = 0;
    GetMatrixInfoC("M", nullptr, nullptr, nullptr, nullptr, nullptr, &step, &layers, nullptr,
                   nullptr);
    EXPECT_EQ(step, 3.5f);
    EXPECT_EQ(layers, 4);
}

// ---- Values

TEST_F(MatrixCalls, AllValuesAreCopiedAndNoMore) {
    WriteBytes(File("M"), DmtFile().Bytes());
    EXPECT_EQ(Got("M", 2, 3, 4), AtTheStart(LayerValues(2, 3, 0, 4)));
    WriteBytes(File("F"), FlatDmtFile().Bytes());
    EXPECT_EQ(Got("F", 2, 3, 1), AtTheStart(LayerValues(2, 3, 0, 1)));
}

TEST_F(MatrixCalls, OneWrongSizeCopiesNothing) {
    WriteBytes(File("M"), DmtFile().Bytes());
    const int sizes[][3] = {{1, 3, 4}, {3, 3, 4}, {2, 2, 4}, {2, 4, 4},  {2, 3, 3}, {2, 3, 5},
                            {4, 3, 2}, {3, 2, 4}, {0, 0, 0}, {-2, 3, 4}, {2, 3, -4}};
    for (const auto& size : sizes)
        EXPECT_EQ(Got("M", size[0], size[1], size[2]), Untouched)
            << size[0] << ", " << size[1] << ", " << size[2];
}

TEST_F(MatrixCalls, MissingMatrixIsOneZero) {
    WriteBytes(Scratch(".dmt"), DmtFile().Bytes());
    for (const char* name : {"M", "99\\M", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Got(name, 1, 1, 1), AtTheStart({0}));
        EXPECT_EQ(Got(name, 2, 3, 4), Untouched);
    }
}

TEST_F(MatrixCalls, NoBufferIsNotTouched) {
    WriteBytes(File("M"), DmtFile().Bytes());
    GetMatrixC("M", 2, 3, 4, nullptr);
    EXPECT_EQ(ReadBytes(File("M")), DmtFile().Bytes());
}

TEST_F(MatrixCalls, RangeInTheNameGivesThoseLayers) {
    WriteBytes(File("M"), DmtFile().Bytes());
    EXPECT_EQ(Got("M[1,3]", 2, 3, 2), AtTheStart(LayerValues(2, 3, 1, 3)));
    EXPECT_EQ(Got("M[1,3]", 2, 3, 4), Untouched);
    EXPECT_EQ(Got("M[,]", 2, 3, 4), AtTheStart(LayerValues(2, 3, 0, 4)));
}

TEST_F(MatrixCalls, FileCutShortEndsInZeros) {
    const DmtFile file;
    WriteBytes(File("M"), file.Header() + file.m_Values.substr(0, 22 * sizeof(float)));
    FloatList expected = LayerValues(2, 3, 0, 4);
    expected[22] = expected[23] = 0;
    EXPECT_EQ(Got("M", 2, 3, 4), AtTheStart(expected));
}

TEST_F(MatrixCalls, SizesOfMoreThanAnIntCopyNothing) {
    DmtFile file;
    file.m_Axes = AxisRecord(65536, 1, {0}) + AxisRecord(65536, 1, {0}) + AxisRecord(1, 1, {0});
    WriteBytes(File("M"), file.Bytes());
    EXPECT_EQ(InfoOf("M").m_Rows.m_Size, 65536);
    EXPECT_EQ(Got("M", 65536, 65536, 1), Untouched);
}

// ---- Storing

TEST_F(MatrixCalls, StoredMatrixIsScaledAndHasTheGivenAxes) {
    Store("M", 2, 3, 2);
    const DmtFile golden = StoredFile(
        3, AxisRecord(2, 0.5f, {10}) + AxisRecord(3, 2, {-1}) + AxisRecord(2, 0.25f, {100}),
        Twelve);
    const std::string bytes = ReadBytes(File("M"));
    EXPECT_EQ(WithoutDate(bytes, golden), golden.Bytes());
    EXPECT_EQ(bytes.substr(golden.Header().size() - 19, 6), Text(Now()).substr(0, 6));
    EXPECT_EQ(Got("M", 2, 3, 2), AtTheStart(Twelve));
}

TEST_F(MatrixCalls, OneLayerMakesAFlatMatrix) {
    Store("M", 3, 4, 1);
    const DmtFile golden =
        StoredFile(2, AxisRecord(3, 0.5f, {10}) + AxisRecord(4, 2, {-1}), Twelve);
    EXPECT_EQ(WithoutDate(ReadBytes(File("M")), golden), golden.Bytes());
}

TEST_F(MatrixCalls, StepOfZeroNumbersThePointsBehindTheFirstFromZero) {
    SetMatrixC("M", 4, 3, 1, Twelve.data(), 10, 0, 20, -2, 0, 0);
    const DmtFile golden =
        StoredFile(2, AxisRecord(4, 0, {0, 0, 1, 2}) + AxisRecord(3, -2, {0}), Twelve);
    EXPECT_EQ(WithoutDate(ReadBytes(File("M")), golden), golden.Bytes());
}

TEST_F(MatrixCalls, StoringReplacesALongerFile) {
    WriteBytes(File("M"), DmtFile().Bytes() + std::string(1000, 'x'));
    Store("M", 3, 4, 1);
    EXPECT_EQ(Got("M", 3, 4, 1), AtTheStart(Twelve));
    EXPECT_LT(ReadBytes(File("M")).size(), DmtFile().Bytes().size());
}

TEST_F(MatrixCalls, StoringLeavesTheCallersValuesAlone) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const FloatList values = {1, nan, 2, -4};
    Store("M", 2, 2, 1, values);
    EXPECT_TRUE(std::isnan(values[1]));
    const FloatList stored = Got("M", 2, 2, 1);
    EXPECT_TRUE(std::isnan(stored[1])) << "a matrix keeps values that aren't valid";
    EXPECT_EQ(GetScalarDataC("M\\mx"), 2);
    EXPECT_EQ(GetScalarDataC("M\\mn"), -4);
}

TEST_F(MatrixCalls, SizeBelowTwoIsOneAndTakesTheValuesThatAreGiven) {
    Store("M", 3, 0, 0, {8});
    EXPECT_EQ(Got("M", 3, 1, 1), AtTheStart({0, 0, 0}));
    Store("M", -3, -4, 1, {8});
    EXPECT_EQ(Got("M", 1, 1, 1), AtTheStart({0}));
    Store("M", 3, 1, 1, {8, 9, 10});
    EXPECT_EQ(Got("M", 3, 1, 1), AtTheStart({8, 9, 10}));
    Store("M", INT_MIN, INT_MAX, INT_MAX, {8});
    EXPECT_EQ(Got("M", 3, 1, 1), AtTheStart({8, 9, 10})) << "too many values";
}

TEST_F(MatrixCalls, StoringWithoutValuesDoesNothingUnlessNoneAreDue) {
    SetMatrixC("M", 2, 3, 1, nullptr, 0, 1, 0, 1, 0, 1);
    SetMatrixC("M", INT_MAX, INT_MAX, INT_MAX, nullptr, 0, 1, 0, 1, 0, 1);
    EXPECT_FALSE(Exists(File("M")));
    SetMatrixC("M", 2, 3, 0, nullptr, 0, 1, 0, 1, 0, 1);
    EXPECT_EQ(Got("M", 2, 3, 1), AtTheStart(FloatList(6, 0.0f)));
}

TEST_F(MatrixCalls, MoreValuesThanAnIntCountsAreNotStored) {
    const float value = 0;
    SetMatrixC("M", 65536, 65536, 1, &value, 0, 1, 0, 1, 0, 1);
    SetMatrixC("M", 65536, 32768, 1, &value, 0, 1, 0, 1, 0, 1);
    EXPECT_FALSE(Exists(File("M")));
}

TEST_F(MatrixCalls, StoringInAnUnknownShotOrWithoutANameDoesNothing) {
    for (const char* name : {"99\\M", "", static_cast<const char*>(nullptr)})
        Store(name, 3, 4, 1);
    ExpectNoNewFiles();
}

TEST_F(MatrixCalls, DataNameReachesAnotherShotAndHoldsFields) {
    ASSERT_EQ(CreateShotC("8"), 1);
    SetStringDataC("Image", "M");
    Store("7\\![Image]", 3, 4, 1);
    EXPECT_TRUE(Exists(File("M")));
    EXPECT_EQ(Got("7\\M", 3, 4, 1), AtTheStart(Twelve));
    EXPECT_EQ(Got("M", 3, 4, 1), Untouched);
}

TEST_F(MatrixCalls, NameOfAPartIsStoredAsItStands) {
    WriteBytes(File("M"), DmtFile().Bytes());
    Store("M[1,3]", 3, 4, 1);
    EXPECT_EQ(ReadBytes(File("M")), DmtFile().Bytes());
    EXPECT_TRUE(Exists(File("M[1,3]")));
}

TEST_F(MatrixCalls, FileThatCannotBeWrittenIsLeftWithoutAMessage) {
    MakeFolder(File("M"));
    EXPECT_EQ(PrintedBy([] { Store("M", 3, 4, 1); }), "");
    EXPECT_EQ(Names(Shot("7")), (std::vector<std::string>{"M.dmt", "Scalars.ini"}));
}
