// The extents of each kind of body, and the bounding box of all.
#include <gtest/gtest.h>

#include <limits>

#include "data/GeometryTestData.h"

namespace {

constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

// A body at this place has the extents themselves for a box.
const std::vector<float> Origin = {0.0f, 0.0f, 0.0f};

using Bounds = std::vector<float>;

Bounds Max(const Geometry& geometry) { return {geometry.m_Max, geometry.m_Max + 3}; }

Bounds Min(const Geometry& geometry) { return {geometry.m_Min, geometry.m_Min + 3}; }

Geometry Scaled(const std::vector<Object>& bodies) {
    Geometry geometry = MakeGeometry(bodies);
    geometry.Scale();
    return geometry;
}

void ExpectBox(const Geometry& geometry, const Bounds& min, const Bounds& max) {
    EXPECT_EQ(Min(geometry), min);
    EXPECT_EQ(Max(geometry), max);
}

void ExpectRadii(const Object& body, float min, float max) {
    EXPECT_EQ(body.m_RMin, min);
    EXPECT_EQ(body.m_RMax, max);
}

// A body of kind 1 to 12 whose radii were set before.
Object Marked(int kind, const std::vector<float>& numbers) {
    Object body = Body(kind, numbers);
    body.m_RMin = -77.0f;
    body.m_RMax = -78.0f;
    return body;
}

}  // namespace

// ---- The box

TEST(GeometryExtents, EmptyListLeavesAnEmptyBox) {
    Geometry geometry;
    geometry.m_Max[1] = 5.0f;
    geometry.Scale();
    ExpectBox(geometry, {DFMax, DFMax, DFMax}, {-DFMax, -DFMax, -DFMax});
}

TEST(GeometryExtents, BodiesOfNoKnownKindTakeNoPart) {
    for (const int kind : {0, 13, -1, 2147483647}) {
        Geometry geometry = Scaled({Body(1, {1.0f}), Marked(kind, {50.0f, 50.0f, 50.0f})});
        ExpectBox(geometry, {-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f});
        ExpectRadii(geometry.m_Objects[1], -77.0f, -78.0f);
        ExpectBox(Scaled({Body(kind, {1.0f})}), {DFMax, DFMax, DFMax}, {-DFMax, -DFMax, -DFMax});
    }
}

TEST(GeometryExtents, PositionMovesTheExtents) {
    ExpectBox(Scaled({Body(1, {2.0f}, {1.0f, 0.0f, 0.0f})}), {-1.0f, -2.0f, -2.0f},
              {3.0f, 2.0f, 2.0f});
    ExpectBox(Scaled({Body(9, {1.0f, 2.0f, 3.0f}, {10.0f, 20.0f, 30.0f})}), {9.0f, 18.0f, 30.0f},
              {11.0f, 22.0f, 33.0f});
}

TEST(GeometryExtents, BoxHoldsAllBodies) {
    ExpectBox(Scaled({Body(1, {1.0f}, {10.0f, 0.0f, 0.0f}), Body(1, {2.0f}, {0.0f, -10.0f, 0.0f}),
                      Body(1, {3.0f}, {0.0f, 0.0f, 5.0f})}),
              {-3.0f, -12.0f, -2.0f}, {11.0f, 3.0f, 8.0f});
}

TEST(GeometryExtents, BoxIsComputedAnew) {
    Geometry geometry = MakeGeometry({Body(1, {1.0f})});
    geometry.m_Max[0] = 100.0f;
    geometry.m_Min[0] = -100.0f;
    geometry.Scale();
    geometry.Scale();
    ExpectBox(geometry, {-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f});
}

// A box that holds height 0 in one body needn't reach to the place 0.
TEST(GeometryExtents, BoxNeedNotHoldTheOrigin) {
    ExpectBox(Scaled({Body(3, {1.0f, 2.0f}, {10.0f, 10.0f, 10.0f})}), {9.0f, 9.0f, 10.0f},
              {11.0f, 11.0f, 12.0f});
}

TEST(GeometryExtents, NaNLeavesTheBox) {
    ExpectBox(Scaled({Body(1, {1.0f}), Body(1, {2.0f}, {NotANumber, 0.0f, 0.0f})}),
              {-1.0f, -2.0f, -2.0f}, {1.0f, 2.0f, 2.0f});
}

// ---- Single kinds

TEST(GeometryExtents, Sphere) {
    Geometry geometry = Scaled({Marked(1, {2.0f, 9.0f})});
    ExpectBox(geometry, {-2.0f, -2.0f, -2.0f}, {2.0f, 2.0f, 2.0f});
    ExpectRadii(geometry.m_Objects[0], -77.0f, 2.0f);
}

TEST(GeometryExtents, Torus) {
    Geometry geometry = Scaled({Marked(2, {5.0f, 1.5f, 9.0f})});
    ExpectBox(geometry, {-6.5f, -6.5f, -1.5f}, {6.5f, 6.5f, 1.5f});
    ExpectRadii(geometry.m_Objects[0], 3.5f, 6.5f);
}

TEST(GeometryExtents, Cylinder) {
    Geometry geometry = Scaled({Marked(3, {2.0f, 7.0f, 9.0f})});
    ExpectBox(geometry, {-2.0f, -2.0f, 0.0f}, {2.0f, 2.0f, 7.0f});
    ExpectRadii(geometry.m_Objects[0], -77.0f, 2.0f);
}

TEST(GeometryExtents, Tube) {
    Geometry geometry = Scaled({Marked(6, {2.0f, 7.0f, 3.0f})});
    ExpectBox(geometry, {-3.0f, -3.0f, 0.0f}, {3.0f, 3.0f, 7.0f});
    ExpectRadii(geometry.m_Objects[0], 2.0f, 3.0f);
}

TEST(GeometryExtents, Block) {
    Geometry geometry = Scaled({Marked(9, {2.0f, 3.0f, 7.0f})});
    ExpectBox(geometry, {-2.0f, -3.0f, 0.0f}, {2.0f, 3.0f, 7.0f});
    ExpectRadii(geometry.m_Objects[0], -77.0f, -78.0f);
}

TEST(GeometryExtents, MissingNumbersAreZero) {
    for (const int kind : {1, 2, 3, 6, 7, 8, 9, 10, 11, 12})
        ExpectBox(Scaled({Body(kind, {}, {1.0f, 2.0f, 3.0f})}), {1.0f, 2.0f, 3.0f},
                  {1.0f, 2.0f, 3.0f});
    ExpectBox(Scaled({Body(6, {2.0f, 7.0f})}), {0.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 7.0f});
    ExpectBox(Scaled({Body(9, {2.0f})}), {-2.0f, 0.0f, 0.0f}, {2.0f, 0.0f, 0.0f});
}

// ---- Points

TEST(GeometryExtents, PointsReachFromTheLeastToTheGreatest) {
    for (const int kind : {10, 11, 12}) {
        Geometry geometry =
            Scaled({Marked(kind, {1.0f, -2.0f, 3.0f, 4.0f, -5.0f, 6.0f, 2.0f, -1.0f, -7.0f})});
        ExpectBox(geometry, {1.0f, -5.0f, -7.0f}, {4.0f, -1.0f, 6.0f});
        ExpectRadii(geometry.m_Objects[0], -77.0f, -78.0f);
    }
}

TEST(GeometryExtents, IncompletePointsTakeNoPart) {
    for (const int kind : {10, 11, 12}) {
        ExpectBox(Scaled({Body(kind, {1.0f, 1.0f, 1.0f, 9.0f})}), {1.0f, 1.0f, 1.0f},
                  {1.0f, 1.0f, 1.0f});
        ExpectBox(Scaled({Body(kind, {1.0f, 1.0f, 1.0f, 9.0f, 9.0f})}), {1.0f, 1.0f, 1.0f},
                  {1.0f, 1.0f, 1.0f});
        ExpectBox(Scaled({Body(kind, {1.0f, 1.0f, 1.0f, 2.0f, 2.0f, 2.0f, 9.0f, 9.0f})}),
                  {1.0f, 1.0f, 1.0f}, {2.0f, 2.0f, 2.0f});
    }
}

TEST(GeometryExtents, IncompleteFirstPointCounts) {
    ExpectBox(Scaled({Body(10, {4.0f, -5.0f})}), {4.0f, -5.0f, 0.0f}, {4.0f, -5.0f, 0.0f});
}

// ---- Turned outlines

TEST(GeometryOutline, ReachesAsFarAsItsGreatestRadius) {
    for (const int kind : {7, 8}) {
        Geometry geometry = Scaled({Body(kind, {1.0f, -2.0f, 5.0f, 3.0f, 2.0f})});
        ExpectBox(geometry, {-5.0f, -5.0f, -2.0f}, {5.0f, 5.0f, 3.0f});
        ExpectRadii(geometry.m_Objects[0], 0.0f, 5.0f);
    }
}

TEST(GeometryOutline, HeightZeroIsAlwaysInside) {
    ExpectBox(Scaled({Body(7, {1.0f, 2.0f, 1.0f, 5.0f, 1.0f})}), {-1.0f, -1.0f, 0.0f},
              {1.0f, 1.0f, 5.0f});
    ExpectBox(Scaled({Body(8, {1.0f, -2.0f, 1.0f, -5.0f, 1.0f})}), {-1.0f, -1.0f, -5.0f},
              {1.0f, 1.0f, 0.0f});
}

TEST(GeometryOutline, FirstRadiusCanBeTheGreatest) {
    const Geometry geometry = Scaled({Body(7, {9.0f, 1.0f, 2.0f})});
    ExpectBox(geometry, {-9.0f, -9.0f, 0.0f}, {9.0f, 9.0f, 1.0f});
}

TEST(GeometryOutline, LastHeightOfPairsTakesNoPart) {
    ExpectBox(Scaled({Body(7, {1.0f, 2.0f, 3.0f, 50.0f})}), {-3.0f, -3.0f, 0.0f},
              {3.0f, 3.0f, 2.0f});
    ExpectBox(Scaled({Body(7, {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 50.0f})}), {-5.0f, -5.0f, 0.0f},
              {5.0f, 5.0f, 4.0f});
    ExpectBox(Scaled({Body(7, {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f})}), {-7.0f, -7.0f, 0.0f},
              {7.0f, 7.0f, 6.0f});
}

TEST(GeometryOutline, OfTwoNumbersOrLessIsAFlatDisc) {
    for (const std::vector<float>& numbers : {Bounds{4.0f}, Bounds{4.0f, 50.0f}}) {
        Geometry geometry = Scaled({Body(1, {3.0f}, Origin), Marked(7, numbers)});
        ExpectRadii(geometry.m_Objects[1], 3.0f, 4.0f);
        ExpectBox(Scaled({Body(7, numbers)}), {-4.0f, -4.0f, 0.0f}, {4.0f, 4.0f, 0.0f});
    }
}

TEST(GeometryOutline, InnerRadiusStartsAtTheExtentOfTheBodyBefore) {
    Geometry geometry =
        Scaled({Body(9, {5.0f, 1.0f, 1.0f}), Body(7, {8.0f, 1.0f, 6.0f, 2.0f, 7.0f}),
                Body(8, {9.0f, 1.0f, 4.0f}), Body(7, {2.0f, 1.0f, 50.0f})});
    ExpectRadii(geometry.m_Objects[1], 5.0f, 8.0f);   // no radius below 5
    ExpectRadii(geometry.m_Objects[2], 4.0f, 9.0f);   // starts at 8
    ExpectRadii(geometry.m_Objects[3], 9.0f, 50.0f);  // its first number isn't looked at
}

TEST(GeometryOutline, InnerRadiusOfAFirstBodyStartsAtZero) {
    Geometry geometry = Scaled({Marked(7, {5.0f, 1.0f, 3.0f}), Marked(8, {-5.0f, 1.0f, -3.0f})});
    ExpectRadii(geometry.m_Objects[0], 0.0f, 5.0f);
    ExpectRadii(geometry.m_Objects[1], -3.0f, -3.0f);
}

TEST(GeometryOutline, BodyThatTakesNoPartIsNoneBefore) {
    Geometry geometry = Scaled({Body(1, {3.0f}), Body(0, {50.0f}), Body(7, {5.0f, 1.0f, 6.0f})});
    EXPECT_EQ(geometry.m_Objects[2].m_RMin, 3.0f);
}

// ---- Bodies with the extents of the one before

TEST(GeometryRepeat, TakesTheExtentsOfTheBodyBeforeAtItsOwnPlace) {
    for (const int kind : {4, 5}) {
        Geometry geometry =
            Scaled({Body(9, {1.0f, 2.0f, 3.0f}), Body(kind, {50.0f}, {10.0f, 20.0f, -30.0f})});
        ExpectBox(geometry, {-1.0f, -2.0f, -30.0f}, {11.0f, 22.0f, 3.0f});
    }
}

TEST(GeometryRepeat, PositionOfTheBodyBeforeDoesNotCount) {
    ExpectBox(Scaled({Body(1, {1.0f}, {10.0f, 10.0f, 10.0f}), Body(4, {}, {10.0f, 10.0f, 12.0f})}),
              {9.0f, 9.0f, 9.0f}, {11.0f, 11.0f, 13.0f});
}

TEST(GeometryRepeat, KeepsItsRadii) {
    Geometry geometry = Scaled({Body(1, {1.0f}), Marked(4, {5.0f}), Marked(5, {5.0f})});
    ExpectRadii(geometry.m_Objects[1], -77.0f, -78.0f);
    ExpectRadii(geometry.m_Objects[2], -77.0f, -78.0f);
}

TEST(GeometryRepeat, GoesOnThroughRepeatsAndBodiesThatTakeNoPart) {
    ExpectBox(Scaled({Body(1, {1.0f}), Body(0, {50.0f}), Body(4, {}, {5.0f, 0.0f, 0.0f}),
                      Body(13, {}), Body(5, {}, {0.0f, 5.0f, 0.0f})}),
              {-1.0f, -1.0f, -1.0f}, {6.0f, 6.0f, 1.0f});
}

TEST(GeometryRepeat, FirstBodyIsAPoint) {
    for (const int kind : {4, 5})
        ExpectBox(Scaled({Body(0, {}), Body(kind, {50.0f}, {1.0f, 2.0f, 3.0f})}),
                  {1.0f, 2.0f, 3.0f}, {1.0f, 2.0f, 3.0f});
}

TEST(GeometryRepeat, EveryScaleStartsWithoutABodyBefore) {
    Geometry geometry = MakeGeometry({Body(4, {}, {1.0f, 2.0f, 3.0f}), Body(1, {5.0f})});
    geometry.Scale();
    geometry.m_Objects.Remove(1, 1);
    geometry.Scale();
    ExpectBox(geometry, {1.0f, 2.0f, 3.0f}, {1.0f, 2.0f, 3.0f});
}
