// A matrix's extrema and scale unit, its calibration, and the names of its numbers.
#include <gtest/gtest.h>
#include <math.h>

#include "core/CoreGlobal.h"
#include "data/MatrixTestData.h"

namespace {

float DecadeUnit(int decade) { return exp2f(static_cast<float>(decade) * 3.321928f); }

float ScaleUnitAfterScale(const FloatList& values) {
    Matrix matrix = MakeColumn(values);
    matrix.Scale();
    return matrix.m_ScaleUnit;
}

// 2 rows, 3 columns, 4 layers, with a value of its own for each parameter.
Matrix SampleMatrix() {
    Matrix matrix(2, 3, 4);
    matrix.SetStep(1, 0.5f, 10.0f);
    SetCoords(matrix, 2, {1.0f, 2.5f, 8.0f});
    matrix.SetStep(3, 2.0f, -1.0f);
    for (int i = 0; i < 5; ++i)
        matrix.m_Params[i] = static_cast<float>(i) + 21.0f;
    matrix.m_ScaleUnit = 31.0f;
    matrix.m_Max = 32.0f;
    matrix.m_Min = 33.0f;
    return matrix;
}

struct Parameter {
    const char* m_Name;
    float m_Value;
};

template <size_t N>
void ExpectParameters(const Matrix& matrix, const Parameter (&parameters)[N]) {
    for (const Parameter& parameter : parameters)
        EXPECT_EQ(matrix.GetMatrixParam(parameter.m_Name), parameter.m_Value) << parameter.m_Name;
}

// Layers `start` up to `stop` of a stack of 2 by 2 by 5 whose layer axis has this record.
Matrix ReadStack(const std::string& layerAxis, int stop, int start) {
    DmtFile file;
    file.m_Axes = AxisRecord(2, 1.0f, {0.0f}) + AxisRecord(2, 1.0f, {0.0f}) + layerAxis;
    file.m_Values = Floats(FloatList(20, 1.0f));
    Matrix matrix;
    EXPECT_TRUE(ReadFrom(file, matrix, stop, start));
    return matrix;
}

}  // namespace

// ---- Extrema and scale unit

TEST(MatrixScale, FindsTheExtremaOfAllValues) {
    Matrix matrix = MakeColumn({3.0f, -8.0f, 7.0f, 0.0f});
    matrix.Scale();
    EXPECT_EQ(matrix.m_Max, 7.0f);
    EXPECT_EQ(matrix.m_Min, -8.0f);
    EXPECT_EQ(matrix.m_ScaleUnit, 1.0f);
    EXPECT_EQ(Values(matrix), (FloatList{3.0f, -8.0f, 7.0f, 0.0f}));
    EXPECT_EQ(matrix.m_Calib, 1.0f);
}

TEST(MatrixScale, UnitIsFiveTwoOrOneTimesAPowerOfTen) {
    EXPECT_EQ(ScaleUnitAfterScale({7.0f}), 1.0f);
    EXPECT_EQ(ScaleUnitAfterScale({0.0f, 3.0f}), 0.5f);
    EXPECT_EQ(ScaleUnitAfterScale({-1.5f, 1.0f}), 0.2f);
    EXPECT_EQ(ScaleUnitAfterScale({-75.0f, 20.0f}), DecadeUnit(1));
    EXPECT_EQ(ScaleUnitAfterScale({0.03f}), DecadeUnit(-2) * 0.5f);
    EXPECT_EQ(ScaleUnitAfterScale({0.0f}), DecadeUnit(-30) * 0.2f);
}

TEST(MatrixScale, ValuesThatAreNotValidTakePart) {
    Matrix matrix = MakeColumn({1.0f, 2e38f, -1e37f});
    matrix.Scale();
    EXPECT_EQ(matrix.m_Max, 2e38f);
    EXPECT_EQ(matrix.m_Min, -1e37f);
    EXPECT_EQ(matrix[1], 2e38f);
}

TEST(MatrixScale, WhatIsNoNumberIsPassedOver) {
    Matrix matrix = MakeColumn({NotANumber, 2.0f, NotANumber, -1.0f});
    matrix.Scale();
    EXPECT_EQ(matrix.m_Max, 2.0f);
    EXPECT_EQ(matrix.m_Min, -1.0f);
    EXPECT_TRUE(isnan(matrix[0]));
}

TEST(MatrixScale, InfiniteValuesHaveAnInfiniteUnit) {
    Matrix above = MakeColumn({1.0f, Infinity});
    above.Scale();
    EXPECT_EQ(above.m_Max, Infinity);
    EXPECT_EQ(above.m_Min, 1.0f);
    EXPECT_EQ(above.m_ScaleUnit, Infinity);
    Matrix below = MakeColumn({-Infinity, 1.0f});
    below.Scale();
    EXPECT_EQ(below.m_Max, 1.0f);
    EXPECT_EQ(below.m_Min, -Infinity);
    EXPECT_EQ(below.m_ScaleUnit, Infinity);
}

TEST(MatrixScale, ValuesBeyondTheBoundLeaveItAsExtremum) {
    Matrix above = MakeColumn({3.4e38f});
    above.Scale();
    EXPECT_EQ(above.m_Max, 3.4e38f);
    EXPECT_EQ(above.m_Min, DFMax);
    Matrix below = MakeColumn({-3.4e38f});
    below.Scale();
    EXPECT_EQ(below.m_Max, -DFMax);
    EXPECT_EQ(below.m_Min, -3.4e38f);
}

TEST(MatrixScale, MatrixWithoutValuesKeepsTheStartValues) {
    Matrix matrix;
    matrix.Size(65536, 65536, 1);
    ASSERT_EQ(matrix.Count(), 0);
    matrix.Scale();
    EXPECT_EQ(matrix.m_Max, -DFMax);
    EXPECT_EQ(matrix.m_Min, DFMax);
    EXPECT_EQ(matrix.m_ScaleUnit, DecadeUnit(38) * 0.5f);
}

TEST(MatrixScale, GoesByTheNumberOfValuesAndNotByTheAxes) {
    Matrix matrix = MakeColumn({1.0f, 9.0f});
    matrix.Reserve(1, 1, 1);
    matrix.Scale();
    EXPECT_EQ(matrix.m_Max, 9.0f);
    matrix.Reserve(100, 100, 1);
    matrix.Scale();
    EXPECT_EQ(matrix.m_Max, 9.0f);
    EXPECT_EQ(matrix.m_Min, 1.0f);
}

// ---- Calibration

TEST(MatrixCalibration, ValuesCarryTheNewFactorInPlaceOfTheOld) {
    Matrix matrix = MakeColumn({2.0f, -6.0f, 14.0f});
    matrix.m_Calib = 4.0f;
    matrix.SetCalibration(2.0f);
    EXPECT_EQ(Values(matrix), (FloatList{1.0f, -3.0f, 7.0f}));
    EXPECT_EQ(matrix.m_Calib, 2.0f);
    EXPECT_EQ(matrix.m_Max, 7.0f);
    EXPECT_EQ(matrix.m_Min, -3.0f);
    EXPECT_EQ(matrix.m_ScaleUnit, 1.0f);
}

TEST(MatrixCalibration, MultipliesInSinglePrecisionInOrder) {
    Matrix matrix = MakeColumn({0.3f, 2e38f});
    matrix.m_Calib = 7.0f;
    matrix.SetCalibration(11.0f);
    // Any other order or precision ends one bit lower.
    EXPECT_EQ(matrix[0], 0.471428633f);
    EXPECT_NE(matrix[0], static_cast<float>(0.3f * 11.0 / 7.0));
    // The first product is beyond single precision, though the second one would bring it back.
    EXPECT_EQ(matrix[1], Infinity);
}

TEST(MatrixCalibration, NegativeFactorExchangesTheExtrema) {
    Matrix matrix = MakeColumn({1.0f, 4.0f});
    matrix.SetCalibration(-1.0f);
    EXPECT_EQ(matrix.m_Max, -1.0f);
    EXPECT_EQ(matrix.m_Min, -4.0f);
    EXPECT_EQ(matrix.m_Calib, -1.0f);
}

TEST(MatrixCalibration, SameFactorStillFindsTheExtrema) {
    Matrix matrix = MakeColumn({1.0f, 4.0f});
    matrix.SetCalibration(1.0f);
    EXPECT_EQ(Values(matrix), (FloatList{1.0f, 4.0f}));
    EXPECT_EQ(matrix.m_Max, 4.0f);
}

TEST(MatrixCalibration, ZeroAndInvalidFactorsChangeNothing) {
    for (const float cal : {0.0f, -0.0f, NotANumber, Infinity, -Infinity, 1e35f, -3.3e38f}) {
        Matrix matrix = MakeColumn({2.0f, 3.0f});
        matrix.m_Calib = 4.0f;
        matrix.m_Max = 50.0f;
        matrix.m_ScaleUnit = 60.0f;
        matrix.SetCalibration(cal);
        EXPECT_EQ(Values(matrix), (FloatList{2.0f, 3.0f})) << cal;
        EXPECT_EQ(matrix.m_Calib, 4.0f) << cal;
        EXPECT_EQ(matrix.m_Max, 50.0f) << cal;
        EXPECT_EQ(matrix.m_ScaleUnit, 60.0f) << cal;
    }
}

TEST(MatrixCalibration, OldFactorOfZeroMakesTheValuesInfinite) {
    Matrix matrix = MakeColumn({2.0f, -3.0f});
    matrix.m_Calib = 0.0f;
    matrix.SetCalibration(2.0f);
    EXPECT_EQ(Values(matrix), (FloatList{Infinity, -Infinity}));
    EXPECT_EQ(matrix.m_Calib, 2.0f);
}

TEST(MatrixCalibration, MatrixWithoutValuesTakesTheFactor) {
    Matrix matrix;
    matrix.Size(65536, 65536, 1);
    matrix.SetCalibration(2.0f);
    EXPECT_EQ(matrix.m_Calib, 2.0f);
    EXPECT_EQ(matrix.m_Max, -DFMax);
}

// ---- Parameters

TEST(MatrixParameters, EveryNameHasItsValue) {
    ExpectParameters(
        SampleMatrix(),
        {{"t1", 21.0f}, {"t2", 22.0f}, {"t3", 23.0f}, {"t4", 24.0f}, {"t5", 25.0f}, {"su", 31.0f},
         {"mx", 32.0f}, {"mn", 33.0f}, {"rc", 2.0f},  {"rs", 0.5f},  {"rb", 10.0f}, {"r1", 0.5f},
         {"re", 10.5f}, {"cc", 3.0f},  {"cs", 0.0f},  {"cb", 1.0f},  {"c1", 1.5f},  {"ce", 8.0f},
         {"lc", 4.0f},  {"ls", 2.0f},  {"lb", -1.0f}, {"l1", 2.0f},  {"le", 5.0f}});
}

TEST(MatrixParameters, NamesAreTakenInEitherCaseAndLeftAsTheyWere) {
    const DString name("cE");
    EXPECT_EQ(SampleMatrix().GetMatrixParam(name), 8.0f);
    EXPECT_EQ(Text(name), "cE");
    ExpectParameters(SampleMatrix(), {{"MX", 32.0f}, {"T5", 25.0f}, {"Lb", -1.0f}});
}

TEST(MatrixParameters, OtherTextsHaveNoValue) {
    const Matrix matrix = SampleMatrix();
    for (const char* name : {"", "t", "t0", "t6", "m", "mx ", " mx", "mx[1]", "mxx", "rr", "r2",
                             "xc", "1", "dt", "np", "t10"})
        EXPECT_EQ(matrix.GetMatrixParam(name), -DFMax) << name;
    EXPECT_EQ(matrix.GetMatrixParam(DString()), -DFMax);
}

TEST(MatrixParameters, ExtremaAreThoseOfTheRecord) {
    Matrix matrix = MakeColumn({5.0f, 6.0f});
    ExpectParameters(matrix, {{"mx", 0.0f}, {"mn", 0.0f}, {"su", 1.0f}});
    matrix.Scale();
    ExpectParameters(matrix, {{"mx", 6.0f}, {"mn", 5.0f}});
}

TEST(MatrixParameters, TwoDimensionalMatrixHasOneLayer) {
    Matrix matrix(2, 3, 1);
    ExpectParameters(matrix,
                     {{"lc", 1.0f}, {"lb", 0.0f}, {"le", 0.0f}, {"l1", 0.0f}, {"ls", 1.0f}});
}

TEST(MatrixParameters, DistanceOfASinglePointIsZero) {
    const Matrix matrix;
    ExpectParameters(matrix, {{"r1", 0.0f}, {"c1", 0.0f}, {"l1", 0.0f}});
    ExpectParameters(matrix, {{"rc", 1.0f}, {"cc", 1.0f}, {"lc", 1.0f}});
}

TEST(MatrixParameters, FirstDistanceIsThatOfTheCoordinatesAndNotTheStep) {
    Matrix matrix(4, 4, 4);
    ExpectParameters(matrix, {{"r1", 0.0f}, {"c1", 0.0f}, {"l1", 0.0f}});
    matrix.SetStep(3, 0.1f, 0.7f);
    const float second = 1.0f * 0.1f + 0.7f;
    EXPECT_EQ(matrix.GetMatrixParam("l1"), second - 0.7f);
}

// ---- Parameters of a part

TEST(MatrixParameters, PartialReadReportsTheSizesOfTheFile) {
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(FlatDmtFile(), matrix, 2, 0));
    ExpectParameters(matrix, {{"rc", 2.0f}, {"cc", 3.0f}, {"ce", 1.0f}, {"c1", 2.0f}});
    ASSERT_TRUE(ReadFrom(DmtFile(), matrix, 3, 1));
    ExpectParameters(matrix, {{"rc", 2.0f}, {"cc", 3.0f}, {"lc", 4.0f}, {"lb", -1.0f}});
    ExpectParameters(matrix, {{"le", 1.0f}, {"l1", 2.0f}, {"ce", 8.0f}});
}

TEST(MatrixParameters, RowsAreCountedInMemory) {
    DmtFile file;
    file.m_NDims = 1;
    file.m_Axes = AxisRecord(4, 1.0f, {5.0f});
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(file, matrix, 0, 0));
    EXPECT_EQ(matrix.GetOrigSize(1), 4);
    ExpectParameters(matrix, {{"rc", 1.0f}, {"r1", 0.0f}, {"re", 5.0f}});
}

TEST(MatrixParameters, OneLayerOfARegularAxisKnowsTheDistanceOfTheLayers) {
    ExpectParameters(ReadStack(AxisRecord(5, 2.0f, {-1.0f}), 0, 0),
                     {{"l1", 2.0f}, {"lc", 5.0f}, {"ls", 2.0f}, {"lb", -1.0f}, {"le", -1.0f}});
}

TEST(MatrixParameters, DistanceFromOneLayerIsThatOfTheWholeStack) {
    // Rounding: the coordinates' distance isn't the step itself.
    const std::string axis = AxisRecord(5, 0.1f, {1000.0f});
    const float whole = ReadStack(axis, -1, 0).GetMatrixParam("l1");
    EXPECT_NE(whole, 0.1f);
    EXPECT_EQ(ReadStack(axis, 0, 0).GetMatrixParam("l1"), whole);
}

TEST(MatrixParameters, OneLayerOfAnIrregularAxisHasNoDistance) {
    const std::string axis = AxisRecord(5, 0.0f, {1.0f, 2.0f, 4.0f, 8.0f, 16.0f});
    EXPECT_EQ(ReadStack(axis, 0, 0).GetMatrixParam("l1"), 0.0f);
    EXPECT_EQ(ReadStack(axis, 2, 0).GetMatrixParam("l1"), 1.0f);
}

TEST(MatrixParameters, OneLayerOfAOneLayerStackHasNoDistance) {
    EXPECT_EQ(ReadStack(AxisRecord(1, 2.0f, {-1.0f}), 0, 0).GetMatrixParam("l1"), 0.0f);
}

TEST(MatrixParameters, OneColumnOfARegularAxisKnowsTheDistanceOfTheColumns) {
    Matrix matrix;
    ASSERT_TRUE(ReadFrom(FlatDmtFile(), matrix, 0, 0));
    ExpectParameters(matrix, {{"cc", 3.0f}, {"c1", 2.0f}, {"cb", -1.0f}, {"ce", -1.0f}});
}

TEST(MatrixParameters, NothingBehindAnEmptyAxisIsRead) {
    Matrix matrix = SampleMatrix();
    for (Matrix::MDim& axis : matrix.m_Dims)
        axis.Clear();
    ExpectParameters(matrix, {{"rc", 0.0f}, {"rb", 0.0f}, {"re", 0.0f}, {"r1", 0.0f}});
    ExpectParameters(matrix, {{"cc", 3.0f}, {"cb", 0.0f}, {"ce", 0.0f}, {"c1", 0.0f}});
    ExpectParameters(matrix, {{"lc", 4.0f}, {"lb", 0.0f}, {"le", 0.0f}, {"l1", 0.0f}});
}

TEST(MatrixParameters, NothingBehindTheEndOfAShrunkAxisIsRead) {
    Matrix matrix = SampleMatrix();
    matrix.m_Dims[1].ReSize(1, 1);
    matrix.m_Dims[2].ReSize(1, 2);
    ExpectParameters(matrix, {{"cc", 3.0f}, {"c1", 0.0f}, {"ce", 1.0f}});
    ExpectParameters(matrix, {{"lc", 4.0f}, {"l1", 2.0f}, {"le", 1.0f}});
}
