// The record of a matrix: its fields, sizes and copies.
#include <gtest/gtest.h>
#include <limits.h>

#include <type_traits>

#include "data/MatrixTestData.h"

namespace {

template <typename T>
const char* Address(const T& field) {
    return reinterpret_cast<const char*>(&field);
}

struct Sizes {
    int m_Rows, m_Cols, m_Layers;
};

// The total that setcoords gives for `sizes`, which it changes.
int SetCoordsOf(Matrix& matrix, Sizes& sizes) {
    return matrix.setcoords(sizes.m_Rows, sizes.m_Cols, sizes.m_Layers);
}

void ExpectSizes(const Matrix& matrix, const Sizes& sizes) {
    const int expected[] = {sizes.m_Rows, sizes.m_Cols, sizes.m_Layers};
    for (int d = 1; d <= 3; ++d) {
        EXPECT_EQ(matrix.GetSize(d), expected[d - 1]) << d;
        EXPECT_EQ(matrix.GetOrigSize(d), expected[d - 1]) << d;
    }
}

}  // namespace

// ---- A fresh matrix

TEST(MatrixRecord, FreshMatrixHasDefaults) {
    const Matrix matrix(2, 3, 4);
    EXPECT_EQ(matrix.m_ScaleUnit, 1.0f);
    for (const float param : matrix.m_Params)
        EXPECT_EQ(param, 0.0f);
    EXPECT_TRUE(matrix.m_Label.IsEmpty());
    EXPECT_TRUE(matrix.m_Note.IsEmpty());
    EXPECT_TRUE(matrix.m_Date.IsEmpty());
    EXPECT_EQ(matrix.m_NDims, 3);
    EXPECT_EQ(matrix.m_Max, 0.0f);
    EXPECT_EQ(matrix.m_Min, 0.0f);
    EXPECT_EQ(matrix.m_Calib, 1.0f);
    for (const Matrix::MDim& axis : matrix.m_Dims)
        EXPECT_EQ(axis.m_Step, 1.0f);
    EXPECT_EQ(Values(matrix), FloatList(24, 0.0f));
}

TEST(MatrixRecord, FreshAxisHasOnePointAtZero) {
    const Matrix::MDim axis;
    EXPECT_EQ(Samples(axis), FloatList{0.0f});
    EXPECT_EQ(axis.m_Step, 1.0f);
}

TEST(MatrixRecord, FieldsStandInTheOrderOnWhichHostsRely) {
    const Matrix matrix;
    const char* const addresses[] = {
        Address(matrix.m_ScaleUnit), Address(matrix.m_Params),       Address(matrix.m_Label),
        Address(matrix.m_Note),      Address(matrix.m_Date),         Address(matrix.m_Dims),
        Address(matrix.m_NDims),     Address(matrix.m_Max),          Address(matrix.m_Min),
        Address(matrix.m_Calib),     Address(matrix) + sizeof matrix};
    const char* before = Address(matrix);
    for (const char* address : addresses) {
        EXPECT_LT(before, address);
        before = address;
    }
}

TEST(MatrixRecord, ArrayOfValuesIsReachedThroughTheMatrixAlone) {
    static_assert(!std::is_convertible_v<Matrix*, DArray<float>*>);
    static_assert(std::is_convertible_v<Matrix::MDim*, DArray<float>*>);
    static_assert(std::has_virtual_destructor_v<Matrix>);
    static_assert(std::is_same_v<decltype(std::declval<const Matrix&>().Data()), const float*>);
    static_assert(std::is_same_v<decltype(std::declval<Matrix&>().Data()), float*>);
    Matrix matrix(2, 2, 1);
    matrix[3] = 7.0f;
    EXPECT_EQ(matrix.Data()[3], 7.0f);
    EXPECT_EQ(static_cast<const Matrix&>(matrix)[3], 7.0f);
    EXPECT_GE(matrix.Capacity(), matrix.Count());
}

// ---- Sizes

TEST(MatrixRecord, SizesBelowTwoBecomeOne) {
    for (const int size : {1, 0, -1, INT_MIN}) {
        const Matrix matrix(size, size, size);
        ExpectSizes(matrix, {1, 1, 1});
        EXPECT_EQ(matrix.m_NDims, 2);
        EXPECT_EQ(Values(matrix), FloatList{0.0f});
    }
}

TEST(MatrixRecord, TwoLayersMakeAMatrixThreeDimensional) {
    const Matrix flat(4, 3, 1);
    EXPECT_EQ(flat.m_NDims, 2);
    EXPECT_EQ(flat.Count(), 12);
    ExpectSizes(flat, {4, 3, 1});
    const Matrix stack(4, 3, 2);
    EXPECT_EQ(stack.m_NDims, 3);
    EXPECT_EQ(stack.Count(), 24);
    ExpectSizes(stack, {4, 3, 2});
}

TEST(MatrixRecord, SetCoordsHandsTheClampedSizesBack) {
    Matrix matrix;
    Sizes sizes{-3, 5, 0};
    EXPECT_EQ(SetCoordsOf(matrix, sizes), 5);
    EXPECT_EQ(sizes.m_Rows, 1);
    EXPECT_EQ(sizes.m_Cols, 5);
    EXPECT_EQ(sizes.m_Layers, 1);
    ExpectSizes(matrix, {1, 5, 1});
    EXPECT_EQ(matrix.Count(), 1);
}

TEST(MatrixRecord, MoreValuesThanAnIntCountsGiveNone) {
    const Sizes tooLarge[] = {{46341, 46341, 1},
                              {65536, 65536, 1},
                              {2048, 1024, 1024},
                              {1 << 22, 1 << 21, 1 << 21},  // the product is 0 in 64 bits
                              {3000000, 3000000, 3000000}};
    for (const Sizes& sizes : tooLarge) {
        Matrix matrix(2, 2, 1);
        matrix.Size(sizes.m_Rows, sizes.m_Cols, sizes.m_Layers);
        EXPECT_EQ(matrix.Count(), 0);
        ExpectSizes(matrix, sizes);
    }
    Matrix matrix;
    Sizes largest{46340, 46340, 1};
    EXPECT_EQ(SetCoordsOf(matrix, largest), 2147395600);
}

TEST(MatrixRecord, SizeThrowsTheValuesAway) {
    Matrix matrix = UsedMatrix();
    matrix.Size(2, 2, 1);
    EXPECT_EQ(Values(matrix), FloatList(4, 0.0f));
    EXPECT_EQ(matrix.m_NDims, 2);
    ExpectFieldsOfUsedMatrix(matrix);
}

TEST(MatrixRecord, ReSizeKeepsValuesAtTheirFlatIndex) {
    Matrix matrix = MakeColumn({1.0f, 2.0f, 3.0f});
    matrix.ReSize(2, 2, 1);
    EXPECT_EQ(Values(matrix), (FloatList{1.0f, 2.0f, 3.0f, 0.0f}));
    matrix.ReSize(1, 2, 1);
    EXPECT_EQ(Values(matrix), (FloatList{1.0f, 2.0f}));
    matrix.ReSize(1, 3, 2);
    EXPECT_EQ(Values(matrix), (FloatList{1.0f, 2.0f, 0.0f, 0.0f, 0.0f, 0.0f}));
    ExpectSizes(matrix, {1, 3, 2});
    matrix.ReSize(65536, 65536, 1);
    EXPECT_EQ(matrix.Count(), 0);
}

TEST(MatrixRecord, ReserveSizesTheAxesAndLeavesTheValues) {
    Matrix matrix = MakeColumn({1.0f, 2.0f});
    matrix.Reserve(100, 10, 2);
    ExpectSizes(matrix, {100, 10, 2});
    EXPECT_EQ(matrix.m_NDims, 3);
    EXPECT_EQ(Values(matrix), (FloatList{1.0f, 2.0f}));
    EXPECT_GE(matrix.Capacity(), 2000);
    const int capacity = matrix.Capacity();
    matrix.Reserve(1, 1, 1);
    EXPECT_EQ(matrix.Capacity(), capacity);
    EXPECT_EQ(matrix.Count(), 2);
}

TEST(MatrixRecord, ZeroSetsTheValuesAlone) {
    Matrix matrix = UsedMatrix();
    matrix.Zero();
    EXPECT_EQ(Values(matrix), FloatList(8, 0.0f));
    EXPECT_EQ(Coords(matrix, 2), (FloatList{2.0f, 22.0f}));
    ExpectFieldsOfUsedMatrix(matrix);
    Matrix empty;
    empty.Size(65536, 65536, 1);
    empty.Zero();
    EXPECT_EQ(empty.Count(), 0);
}

// ---- Axes that change their size

TEST(MatrixRecord, AxisGrownFromItsFirstPointBeginsWithTwoZeros) {
    const Matrix matrix(4, 1, 1);
    EXPECT_EQ(Coords(matrix, 1), (FloatList{0.0f, 0.0f, 1.0f, 2.0f}));
    EXPECT_EQ(matrix.GetCoord(1, 1), matrix.GetCoord(1, 0));
}

TEST(MatrixRecord, NewPointsOfAnAxisAreNumberedFromZeroInItsStep) {
    Matrix matrix(2, 1, 1);
    matrix.SetStep(1, 0.5f, 3.0f);
    matrix.ReSize(5, 1, 1);
    EXPECT_EQ(Coords(matrix, 1), (FloatList{3.0f, 3.5f, 0.0f, 0.5f, 1.0f}));
    matrix.Size(7, 1, 1);
    EXPECT_EQ(Coords(matrix, 1), (FloatList{3.0f, 3.5f, 0.0f, 0.5f, 1.0f, 0.0f, 0.5f}));
    EXPECT_EQ(matrix.GetStep(1), 0.5f);
}

TEST(MatrixRecord, NewPointsOfAnIrregularAxisAreNumberedInOnes) {
    for (const float step : {0.0f, -2.0f}) {
        Matrix matrix(1, 2, 1);
        matrix.SetStep(2, 4.0f, 5.0f);
        matrix.SetStep(2, step, 0.0f);
        matrix.ReSize(1, 5, 1);
        EXPECT_EQ(Coords(matrix, 2), (FloatList{5.0f, 9.0f, 0.0f, 1.0f, 2.0f})) << step;
        EXPECT_EQ(matrix.GetStep(2), step);
    }
}

TEST(MatrixRecord, ShrunkAxisKeepsItsFirstCoordinates) {
    Matrix matrix(4, 1, 1);
    matrix.SetStep(1, 2.0f, 1.0f);
    matrix.Size(2, 1, 1);
    EXPECT_EQ(Coords(matrix, 1), (FloatList{1.0f, 3.0f}));
    EXPECT_EQ(matrix.GetOrigSize(1), 2);
}

TEST(MatrixRecord, LayerAxisOfATwoDimensionalMatrixIsResetButForItsStep) {
    Matrix matrix(2, 2, 5000);
    matrix.SetStep(3, 4.0f, 5.0f);
    matrix.ReSize(2, 2, 1);
    EXPECT_EQ(Coords(matrix, 3), FloatList{0.0f});
    EXPECT_EQ(matrix.GetOrigSize(3), 1);
    EXPECT_EQ(matrix.GetStep(3), 4.0f);
    EXPECT_LT(matrix.m_Dims[2].Capacity(), 5000);
}

// ---- Copies

TEST(MatrixRecord, CopyTakesEverythingButTheCalibration) {
    Matrix matrix = UsedMatrix();
    matrix.m_Dims[1].m_OrigSize = 9;
    const Matrix copy(matrix);
    EXPECT_EQ(copy.m_Calib, 1.0f);
    EXPECT_EQ(copy.m_NDims, 3);
    EXPECT_EQ(copy.GetOrigSize(2), 9);
    matrix.Zero();
    matrix.SetStep(2, 1.0f, 0.0f);
    matrix.m_Label = "changed";
    Matrix expected = copy;
    expected.m_Calib = 74.0f;
    expected.m_Dims[1].m_OrigSize = 2;
    ExpectUsedMatrix(expected);
}

TEST(MatrixRecord, AssignmentKeepsTheCalibrationOfTheTarget) {
    Matrix target(5, 5, 1);
    target.m_Calib = 74.0f;
    EXPECT_EQ(&(target = UsedMatrix()), &target);
    EXPECT_EQ(target.m_NDims, 3);
    ExpectUsedMatrix(target);
    Matrix other(1, 1, 1);
    other = target;
    EXPECT_EQ(other.m_Calib, 1.0f);
}

TEST(MatrixRecord, SelfAssignmentChangesNothing) {
    Matrix matrix = UsedMatrix();
    const Matrix& same = matrix;
    matrix = same;
    ExpectUsedMatrix(matrix);
    matrix.CopyHeader(same);
    ExpectUsedMatrix(matrix);
    matrix.InitFrom(same, true);
    ExpectUsedMatrix(matrix);
}

TEST(MatrixRecord, CopyHeaderLeavesTheValues) {
    Matrix matrix = MakeColumn({1.0f, 2.0f, 3.0f});
    Matrix source = UsedMatrix();
    source.m_Calib = 5.0f;
    matrix.CopyHeader(source);
    EXPECT_EQ(matrix.m_Calib, 1.0f);
    EXPECT_EQ(Values(matrix), (FloatList{1.0f, 2.0f, 3.0f}));
    matrix = source;
    matrix.m_Calib = 74.0f;
    ExpectUsedMatrix(matrix);
}

TEST(MatrixRecord, CopyHeaderTakesTheAxesAndTheirSizes) {
    Matrix matrix = MakeColumn({1.0f, 2.0f, 3.0f});
    Matrix source = UsedMatrix();
    source.m_Dims[2].m_OrigSize = 77;
    matrix.CopyHeader(source);
    EXPECT_EQ(matrix.m_NDims, 3);
    EXPECT_EQ(Coords(matrix, 3), (FloatList{3.0f, 33.0f}));
    EXPECT_EQ(matrix.GetStep(3), 30.0f);
    EXPECT_EQ(matrix.GetOrigSize(3), 77);
}

TEST(MatrixRecord, InitFromGivesZerosOnTheAxesOfTheOther) {
    Matrix source(3, 2, 2);
    source.SetStep(1, 0.5f, 7.0f);
    source.m_Dims[2].m_OrigSize = 40;
    source.m_Params[4] = 1.0f;
    source.m_Max = 2.0f;
    source[0] = 3.0f;
    Matrix matrix = UsedMatrix();
    EXPECT_EQ(&matrix.InitFrom(source, false), &matrix);
    EXPECT_EQ(Values(matrix), FloatList(12, 0.0f));
    EXPECT_EQ(Coords(matrix, 1), (FloatList{7.0f, 7.5f, 8.0f}));
    EXPECT_EQ(matrix.GetStep(1), 0.5f);
    EXPECT_EQ(matrix.GetOrigSize(3), 40);
    ExpectFieldsOfUsedMatrix(matrix);
    matrix.InitFrom(Matrix(2, 2, 1), false);
    EXPECT_EQ(matrix.m_NDims, 2);
}

TEST(MatrixRecord, InitFromTakesParametersAndCalibrationWhereAsked) {
    Matrix source(1, 1, 1);
    for (int i = 0; i < 5; ++i)
        source.m_Params[i] = static_cast<float>(i + 1);
    source.m_Calib = 8.0f;
    source.m_Max = 9.0f;
    source.m_Label = "not taken";
    Matrix matrix = UsedMatrix();
    matrix.InitFrom(source, true);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(matrix.m_Params[i], static_cast<float>(i + 1));
    EXPECT_EQ(matrix.m_Calib, 8.0f);
    EXPECT_EQ(matrix.m_Max, 72.0f);
    EXPECT_EQ(matrix.m_Min, 73.0f);
    EXPECT_EQ(matrix.m_ScaleUnit, 71.0f);
    EXPECT_STREQ(matrix.m_Label, "old label");
}

TEST(MatrixRecord, InitFromCountsTheValuesAndNotTheAxes) {
    Matrix source(2, 2, 1);
    source.Reserve(10, 10, 1);
    Matrix matrix;
    matrix.InitFrom(source, false);
    EXPECT_EQ(matrix.Count(), 4);
    EXPECT_EQ(matrix.GetSize(1), 10);
}

TEST(MatrixRecord, ArrayOfMatricesGrowsAndCopiesThem) {
    DArray<Matrix> matrices;
    for (int i = 0; i < 300; ++i)
        matrices.Add(MakeColumn({static_cast<float>(i), 1.0f}));
    const DArray<Matrix> copies(matrices);
    matrices[299][0] = -1.0f;
    ASSERT_EQ(copies.Count(), 300);
    EXPECT_EQ(Values(copies[299]), (FloatList{299.0f, 1.0f}));
    EXPECT_EQ(copies[0].GetSize(1), 2);
}
