// The axes of a matrix: their coordinates, and the operations on them.
#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>

#include "data/MatrixTestData.h"

namespace {

constexpr int BadDimensions[] = {INT_MIN, -1, 0, 4, INT_MAX};

// 2 rows at 1 and 11, 3 uneven columns, 4 layers from -1 in twos.
Matrix SampleMatrix() {
    Matrix matrix(2, 3, 4);
    matrix.SetStep(1, 10.0f, 1.0f);
    SetCoords(matrix, 2, {1.0f, 2.5f, 8.0f});
    matrix.SetStep(3, 2.0f, -1.0f);
    return matrix;
}

const FloatList SampleCoords[] = {{1.0f, 11.0f}, {1.0f, 2.5f, 8.0f}, {-1.0f, 1.0f, 3.0f, 5.0f}};

void ExpectSampleAxes(const Matrix& matrix) {
    const float steps[] = {10.0f, 0.0f, 2.0f};
    for (int d = 1; d <= 3; ++d) {
        EXPECT_EQ(Coords(matrix, d), SampleCoords[d - 1]) << d;
        EXPECT_EQ(matrix.GetStep(d), steps[d - 1]) << d;
        EXPECT_EQ(matrix.GetOrigSize(d), d + 1) << d;
    }
}

// The part of a layer axis at 0, 1, 2, 3, 4.
FloatList PartOfFive(float from, float to) {
    Matrix matrix(1, 1, 5);
    matrix.SetStep(3, 1.0f, 0.0f);
    return Samples(matrix.GetPartialCoords(3, from, to));
}

}  // namespace

// ---- Asking

TEST(MatrixAxes, GettersTellSizeStepAndCoordinates) {
    ExpectSampleAxes(SampleMatrix());
    const Matrix matrix = SampleMatrix();
    for (int d = 1; d <= 3; ++d) {
        EXPECT_EQ(matrix.GetSize(d), d + 1);
        for (int i = 0; i <= d; ++i)
            EXPECT_EQ(matrix.GetCoord(d, i), SampleCoords[d - 1][static_cast<size_t>(i)]);
        EXPECT_EQ(Samples(matrix.GetAllCoords(d)), SampleCoords[d - 1]);
    }
}

TEST(MatrixAxes, BadDimensionsGiveTheFailureValues) {
    const Matrix matrix = SampleMatrix();
    for (const int d : BadDimensions) {
        EXPECT_EQ(matrix.GetSize(d), -1) << d;
        EXPECT_EQ(matrix.GetOrigSize(d), -1) << d;
        EXPECT_EQ(matrix.GetStep(d), -1.0f) << d;
        EXPECT_EQ(matrix.GetCoord(d, 0), -1.0f) << d;
        EXPECT_EQ(matrix.PointAtCoord(d, 3.0f), 0) << d;
        EXPECT_EQ(matrix.GetPartialCoords(d, 0.0f, 9.0f).Count(), 0) << d;
        EXPECT_EQ(Samples(matrix.GetAllCoords(d)), SampleCoords[0]) << d;
    }
}

TEST(MatrixAxes, BadDimensionsAreNotSet) {
    Matrix matrix = SampleMatrix();
    const DArray<float> coords(2);
    for (const int d : BadDimensions) {
        matrix.SetStep(d, 5.0f, 5.0f);
        matrix.SetCoord(d, 0, 5.0f);
        matrix.SetAllCoords(d, coords);
        matrix.SwapCoords(d, 1);
        matrix.SwapCoords(1, d);
        matrix.CopyCoords(d, 1, matrix);
        matrix.CopyCoords(1, d, matrix);
    }
    ExpectSampleAxes(matrix);
}

TEST(MatrixAxes, CoordinateOutOfRangeIsMinusOne) {
    const Matrix matrix(2, 2, 1);
    for (const int i : {-1, 2, 9, INT_MIN, INT_MAX})
        EXPECT_EQ(matrix.GetCoord(2, i), -1.0f) << i;
}

TEST(MatrixAxes, LayerAxisOfATwoDimensionalMatrixCanBeAskedAndSet) {
    Matrix matrix(2, 2, 1);
    EXPECT_EQ(matrix.GetSize(3), 1);
    EXPECT_EQ(matrix.GetCoord(3, 0), 0.0f);
    matrix.SetStep(3, 0.5f, 6.0f);
    EXPECT_EQ(matrix.GetStep(3), 0.5f);
    EXPECT_EQ(matrix.GetCoord(3, 0), 6.0f);
    EXPECT_EQ(matrix.m_NDims, 2);
    EXPECT_EQ(matrix.PointAtCoord(3, 6.0f), 0);
}

TEST(MatrixAxes, AllCoordinatesAreACopy) {
    Matrix matrix = SampleMatrix();
    DArray<float> coords = matrix.GetAllCoords(2);
    coords[0] = -9.0f;
    ExpectSampleAxes(matrix);
}

// ---- Parts of an axis

TEST(MatrixAxes, PartReachesFromTheFirstNotBelowToTheLastNotAbove) {
    EXPECT_EQ(PartOfFive(1.0f, 3.0f), (FloatList{1.0f, 2.0f, 3.0f}));
    EXPECT_EQ(PartOfFive(0.5f, 3.5f), (FloatList{1.0f, 2.0f, 3.0f}));
    EXPECT_EQ(PartOfFive(-5.0f, 0.0f), FloatList{0.0f});
    EXPECT_EQ(PartOfFive(-5.0f, 50.0f), (FloatList{0.0f, 1.0f, 2.0f, 3.0f, 4.0f}));
    EXPECT_EQ(PartOfFive(4.0f, 4.0f), FloatList{4.0f});
}

TEST(MatrixAxes, PartHasAtLeastOnePoint) {
    EXPECT_EQ(PartOfFive(3.0f, 1.0f), FloatList{3.0f});
    EXPECT_EQ(PartOfFive(1.25f, 1.75f), FloatList{2.0f});
    EXPECT_EQ(PartOfFive(-5.0f, -4.0f), FloatList{0.0f});
    EXPECT_EQ(PartOfFive(40.0f, 50.0f), FloatList{4.0f});
}

TEST(MatrixAxes, InvalidBoundsOfAPartAreNone) {
    for (const float invalid : {NotANumber, Infinity, -Infinity, 1e35f, -3.3e38f}) {
        EXPECT_EQ(PartOfFive(invalid, 1.0f), (FloatList{0.0f, 1.0f})) << invalid;
        EXPECT_EQ(PartOfFive(3.0f, invalid), (FloatList{3.0f, 4.0f})) << invalid;
        EXPECT_EQ(PartOfFive(invalid, invalid).size(), 5u) << invalid;
    }
}

TEST(MatrixAxes, CoordinatesThatAreNoNumbersEndNoSearchForAPart) {
    Matrix matrix(3, 1, 1);
    SetCoords(matrix, 1, {NotANumber, 1.0f, NotANumber});
    EXPECT_EQ(Samples(matrix.GetPartialCoords(1, 0.0f, 5.0f)), FloatList{1.0f});
}

TEST(MatrixAxes, PartOfAnAxisWithoutPointsIsEmpty) {
    Matrix matrix(2, 2, 1);
    matrix.m_Dims[1].Clear();
    EXPECT_EQ(matrix.GetPartialCoords(2, 0.0f, 1.0f).Count(), 0);
    EXPECT_EQ(matrix.GetPartialCoords(2, NotANumber, NotANumber).Count(), 0);
}

// ---- Setting

TEST(MatrixAxes, SetStepMakesTheAxisRegular) {
    Matrix matrix(1, 3, 1);
    SetCoords(matrix, 2, {9.0f, 10.0f, 12.0f});
    matrix.SetStep(2, 0.1f, 0.3f);
    EXPECT_EQ(matrix.GetStep(2), 0.1f);
    EXPECT_EQ(Coords(matrix, 2), (FloatList{0.3f, 1.0f * 0.1f + 0.3f, 2.0f * 0.1f + 0.3f}));
    EXPECT_EQ(matrix.GetOrigSize(2), 3);
}

TEST(MatrixAxes, StepOfZeroOrBelowKeepsTheCoordinates) {
    for (const float step : {0.0f, -3.0f}) {
        Matrix matrix = SampleMatrix();
        matrix.SetStep(3, step, 100.0f);
        EXPECT_EQ(matrix.GetStep(3), step);
        EXPECT_EQ(Coords(matrix, 3), SampleCoords[2]);
        matrix.SetCoord(3, 3, 50.0f);
        EXPECT_EQ(matrix.GetCoord(3, 3), 50.0f);
    }
}

TEST(MatrixAxes, StepOfAnAxisWithoutPointsIsStored) {
    Matrix matrix(2, 2, 1);
    matrix.m_Dims[1].Clear();
    matrix.SetStep(2, 4.0f, 1.0f);
    EXPECT_EQ(matrix.GetStep(2), 4.0f);
    EXPECT_EQ(matrix.GetSize(2), 0);
}

TEST(MatrixAxes, SetCoordIsIgnoredOnARegularAxis) {
    Matrix matrix = SampleMatrix();
    matrix.SetCoord(1, 1, 99.0f);
    matrix.SetCoord(3, 0, -99.0f);
    ExpectSampleAxes(matrix);
}

TEST(MatrixAxes, SetCoordOutOfRangeIsIgnored) {
    Matrix matrix = SampleMatrix();
    for (const int i : {-1, 3, INT_MIN, INT_MAX})
        matrix.SetCoord(2, i, 99.0f);
    ExpectSampleAxes(matrix);
}

TEST(MatrixAxes, SetCoordRaisesToThePreviousCoordinateAndALeastStep) {
    Matrix matrix(3, 1, 1);
    SetCoords(matrix, 1, {0.0f, 1.0f, 2.0f});
    matrix.SetCoord(1, 1, -5.0f);
    EXPECT_EQ(matrix.GetCoord(1, 1), 1e-30f);
    matrix.SetCoord(1, 1, 0.0f);
    EXPECT_EQ(matrix.GetCoord(1, 1), 1e-30f);
    matrix.SetCoord(1, 2, 0.0f);
    EXPECT_EQ(matrix.GetCoord(1, 2), static_cast<float>(static_cast<double>(1e-30f) + 1e-30));
    EXPECT_GT(matrix.GetCoord(1, 2), matrix.GetCoord(1, 1));
}

TEST(MatrixAxes, LeastStepIsLostBesideALargeCoordinate) {
    Matrix matrix(2, 1, 1);
    SetCoords(matrix, 1, {5.0f, 9.0f});
    matrix.SetCoord(1, 1, 4.0f);
    EXPECT_EQ(matrix.GetCoord(1, 1), 5.0f);
}

TEST(MatrixAxes, SetCoordTakesRisingValuesAndAnyFirstOneAsTheyAre) {
    Matrix matrix(3, 1, 1);
    SetCoords(matrix, 1, {0.0f, 1.0f, 2.0f});
    matrix.SetCoord(1, 1, 7.0f);
    EXPECT_EQ(Coords(matrix, 1), (FloatList{0.0f, 7.0f, 2.0f}));
    matrix.SetCoord(1, 0, 50.0f);
    EXPECT_EQ(Coords(matrix, 1), (FloatList{50.0f, 7.0f, 2.0f}));
}

TEST(MatrixAxes, SetAllCoordsMakesTheAxisIrregular) {
    Matrix matrix = SampleMatrix();
    DArray<float> coords(4);
    coords[3] = 6.0f;
    matrix.SetAllCoords(3, coords);
    coords[0] = 99.0f;
    EXPECT_EQ(matrix.GetStep(3), 0.0f);
    EXPECT_EQ(Coords(matrix, 3), (FloatList{0.0f, 0.0f, 0.0f, 6.0f}));
    EXPECT_EQ(matrix.GetOrigSize(3), 4);
}

TEST(MatrixAxes, SetAllCoordsOfAnotherLengthChangesNothing) {
    Matrix matrix = SampleMatrix();
    for (const int count : {0, 3, 5})
        matrix.SetAllCoords(3, DArray<float>(count));
    ExpectSampleAxes(matrix);
}

TEST(MatrixAxes, SetAllCoordsOfItselfMakesTheAxisIrregular) {
    Matrix matrix = SampleMatrix();
    matrix.SetAllCoords(3, matrix.m_Dims[2]);
    EXPECT_EQ(Coords(matrix, 3), SampleCoords[2]);
    EXPECT_EQ(matrix.GetStep(3), 0.0f);
}

// ---- Collapse

TEST(MatrixAxes, CollapseOfAOneLayerStackLeavesNoLayerAxis) {
    Matrix matrix = SampleMatrix();
    matrix.m_Dims[2].ReSize(1, 1);
    matrix.Collapse();
    EXPECT_EQ(matrix.m_NDims, 2);
    EXPECT_EQ(matrix.GetSize(3), 0);
    EXPECT_EQ(matrix.m_Dims[2].Capacity(), 0);
    EXPECT_EQ(matrix.m_Dims[2].RCount(), 1);
    EXPECT_EQ(matrix.GetStep(3), 2.0f);
    EXPECT_EQ(matrix.GetOrigSize(3), 4);
    EXPECT_EQ(Coords(matrix, 1), SampleCoords[0]);
    EXPECT_EQ(Coords(matrix, 2), SampleCoords[1]);
    EXPECT_EQ(matrix.Count(), 24);
}

TEST(MatrixAxes, CollapseMovesLaterAxesForwardButForTheirSizesInTheFile) {
    Matrix matrix(1, 3, 2);
    matrix.SetStep(1, 5.0f, 7.0f);
    matrix.SetStep(2, 1.0f, 0.5f);
    matrix.SetStep(3, 2.0f, 4.0f);
    matrix[5] = 9.0f;
    matrix.Collapse();
    EXPECT_EQ(matrix.m_NDims, 2);
    EXPECT_EQ(Coords(matrix, 1), (FloatList{0.5f, 1.5f, 2.5f}));
    EXPECT_EQ(Coords(matrix, 2), (FloatList{4.0f, 6.0f}));
    EXPECT_EQ(matrix.GetSize(3), 0);
    EXPECT_EQ(matrix.GetStep(1), 1.0f);
    EXPECT_EQ(matrix.GetStep(2), 2.0f);
    EXPECT_EQ(matrix.GetStep(3), 5.0f);
    EXPECT_EQ(matrix.GetOrigSize(1), 1);
    EXPECT_EQ(matrix.GetOrigSize(2), 3);
    EXPECT_EQ(matrix.GetOrigSize(3), 2);
    EXPECT_EQ(Values(matrix), (FloatList{0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 9.0f}));
}

TEST(MatrixAxes, CollapseTakesTheLastFlatDimensionAndOneOnly) {
    Matrix matrix(1, 1, 2);
    matrix.SetStep(1, 5.0f, 7.0f);
    matrix.SetStep(3, 2.0f, 4.0f);
    matrix.Collapse();
    EXPECT_EQ(matrix.m_NDims, 2);
    EXPECT_EQ(Coords(matrix, 1), FloatList{7.0f});
    EXPECT_EQ(Coords(matrix, 2), (FloatList{4.0f, 6.0f}));
    matrix.Collapse();
    EXPECT_EQ(matrix.m_NDims, 2);
    EXPECT_EQ(Coords(matrix, 1), FloatList{7.0f});
}

TEST(MatrixAxes, CollapseLeavesFlatMatricesAndFullStacks) {
    Matrix matrix = SampleMatrix();
    matrix.Collapse();
    EXPECT_EQ(matrix.m_NDims, 3);
    ExpectSampleAxes(matrix);
    Matrix flat(1, 3, 1);
    flat.Collapse();
    EXPECT_EQ(flat.m_NDims, 2);
    EXPECT_EQ(flat.GetSize(1), 1);
    EXPECT_EQ(flat.GetSize(3), 1);
}

// ---- Exchanging and copying

TEST(MatrixAxes, SwapCoordsExchangesAxesButForTheirSizesInTheFile) {
    Matrix matrix = SampleMatrix();
    matrix.SwapCoords(2, 3);
    EXPECT_EQ(Coords(matrix, 2), SampleCoords[2]);
    EXPECT_EQ(Coords(matrix, 3), SampleCoords[1]);
    EXPECT_EQ(matrix.GetStep(2), 2.0f);
    EXPECT_EQ(matrix.GetStep(3), 0.0f);
    EXPECT_EQ(matrix.GetOrigSize(2), 3);
    EXPECT_EQ(matrix.GetOrigSize(3), 4);
    EXPECT_EQ(matrix.Count(), 24);
}

TEST(MatrixAxes, SwapCoordsTakesOnlyAFirstNumberBelowTheLastDimension) {
    Matrix matrix = SampleMatrix();
    matrix.SwapCoords(3, 2);
    matrix.SwapCoords(3, 1);
    matrix.SwapCoords(3, 3);
    matrix.SwapCoords(2, 2);
    ExpectSampleAxes(matrix);
    matrix.SwapCoords(2, 1);
    EXPECT_EQ(Coords(matrix, 1), SampleCoords[1]);
    EXPECT_EQ(Coords(matrix, 2), SampleCoords[0]);
}

TEST(MatrixAxes, SwapCoordsStaysWithinTheDimensionsInUse) {
    Matrix matrix(2, 3, 1);
    matrix.SwapCoords(2, 1);
    matrix.SwapCoords(1, 3);
    EXPECT_EQ(matrix.GetSize(1), 2);
    EXPECT_EQ(matrix.GetSize(2), 3);
    EXPECT_EQ(matrix.GetSize(3), 1);
    matrix.SwapCoords(1, 2);
    EXPECT_EQ(matrix.GetSize(1), 3);
    EXPECT_EQ(matrix.GetSize(2), 2);
}

TEST(MatrixAxes, SwappedAxesHaveTheRowCountOfTheSecond) {
    Matrix matrix = SampleMatrix();
    matrix.m_Dims[2].ReSize(2, 2);
    matrix.SwapCoords(1, 3);
    EXPECT_EQ(matrix.m_Dims[0].RCount(), 2);
    EXPECT_EQ(matrix.m_Dims[2].RCount(), 2);
}

TEST(MatrixAxes, CopyCoordsTakesStepAndSizeInTheFile) {
    Matrix source = SampleMatrix();
    source.m_Dims[2].m_OrigSize = 40;
    Matrix matrix(2, 2, 1);
    matrix.CopyCoords(1, 3, source);
    source.SetStep(3, 1.0f, 0.0f);
    EXPECT_EQ(Coords(matrix, 1), SampleCoords[2]);
    EXPECT_EQ(matrix.GetStep(1), 2.0f);
    EXPECT_EQ(matrix.GetOrigSize(1), 40);
    EXPECT_EQ(matrix.Count(), 4);
}

TEST(MatrixAxes, CopyCoordsOntoItselfChangesNothing) {
    Matrix matrix = SampleMatrix();
    matrix.CopyCoords(2, 2, matrix);
    ExpectSampleAxes(matrix);
    matrix.CopyCoords(1, 2, matrix);
    EXPECT_EQ(Coords(matrix, 1), SampleCoords[1]);
    EXPECT_EQ(Coords(matrix, 2), SampleCoords[1]);
}

// ---- Finding

TEST(MatrixAxes, PointAtCoordIsTheFirstNotBelow) {
    const Matrix matrix = SampleMatrix();
    EXPECT_EQ(matrix.PointAtCoord(2, -100.0f), 0);
    EXPECT_EQ(matrix.PointAtCoord(2, 1.0f), 0);
    EXPECT_EQ(matrix.PointAtCoord(2, 1.001f), 1);
    EXPECT_EQ(matrix.PointAtCoord(2, 2.5f), 1);
    EXPECT_EQ(matrix.PointAtCoord(2, 8.0f), 2);
    EXPECT_EQ(matrix.PointAtCoord(3, 4.0f), 3);
}

TEST(MatrixAxes, PointBeyondTheLastCoordinateIsTheLast) {
    const Matrix matrix = SampleMatrix();
    EXPECT_EQ(matrix.PointAtCoord(2, 8.5f), 2);
    EXPECT_EQ(matrix.PointAtCoord(1, Infinity), 1);
    EXPECT_EQ(matrix.PointAtCoord(1, NotANumber), 1);
}

TEST(MatrixAxes, PointOnAnAxisWithoutPointsIsMinusOne) {
    Matrix matrix(2, 2, 1);
    matrix.m_Dims[1].Clear();
    EXPECT_EQ(matrix.PointAtCoord(2, 1.0f), -1);
}

TEST(MatrixAxes, PointOnTheLayersOfATwoDimensionalMatrixIsZero) {
    Matrix matrix(2, 2, 1);
    matrix.m_Dims[2].Clear();
    EXPECT_EQ(matrix.PointAtCoord(3, 1.0f), 0);
}

// ---- A number of dimensions that a bad file announced

TEST(MatrixAxes, MoreThanThreeDimensionsCountAsThree) {
    Matrix matrix = SampleMatrix();
    matrix.m_NDims = INT_MAX;
    EXPECT_EQ(matrix.PointAtCoord(3, 3.0f), 2);
    EXPECT_EQ(matrix.PointAtCoord(4, 3.0f), 0);
    matrix.SwapCoords(3, 4);
    matrix.SwapCoords(4, 5);
    matrix.SwapCoords(3, 2);
    ExpectSampleAxes(matrix);
    matrix.m_Dims[1].ReSize(1, 1);
    matrix.Collapse();
    EXPECT_EQ(matrix.m_NDims, 2);
    EXPECT_EQ(Coords(matrix, 2), SampleCoords[2]);
    EXPECT_EQ(matrix.GetSize(3), 0);
}

TEST(MatrixAxes, FewerThanOneDimensionLeavesNoneToSwapOrSearch) {
    for (const int dims : {0, -1, INT_MIN}) {
        Matrix matrix = SampleMatrix();
        matrix.m_NDims = dims;
        matrix.SwapCoords(1, 1);
        matrix.SwapCoords(1, 2);
        matrix.Collapse();
        EXPECT_EQ(matrix.PointAtCoord(1, 11.0f), 0);
        ExpectSampleAxes(matrix);
        EXPECT_EQ(matrix.m_NDims, dims);
    }
}
