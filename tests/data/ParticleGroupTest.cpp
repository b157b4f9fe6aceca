// ParticleGroup: the record, and what is computed on its particles.
#include "data/ParticleGroup.h"

#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <limits>
#include <type_traits>

#include "data/ParticleTestData.h"

namespace {

constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float HalfPi = 1.57079633f;

std::vector<float> Extrema(const float (&extrema)[8]) {
    return {std::begin(extrema), std::end(extrema)};
}

// What CopyHeader takes from UsedGroup.
void ExpectCopiedHeader(const ParticleGroup& group) {
    EXPECT_EQ(group.m_HeaderA, 51.0f);
    EXPECT_EQ(group.m_HeaderB, 52.0f);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(group.m_Params[i], static_cast<float>(60 + i));
    EXPECT_STREQ(group.m_Label, "old label");
    EXPECT_STREQ(group.m_Note, "old note");
    EXPECT_STREQ(group.m_Date, "old date");
    EXPECT_EQ(group.m_Geometry, 53);
    EXPECT_EQ(group.m_Particles, 2);
}

void ExpectExtrema(const ParticleGroup& group, float max, float min) {
    EXPECT_EQ(Extrema(group.m_Max), std::vector<float>(8, max));
    EXPECT_EQ(Extrema(group.m_Min), std::vector<float>(8, min));
}

}  // namespace

// ---- The record

TEST(ParticleGroup, IsMadeOfZeros) {
    const ParticleGroup group(3);
    EXPECT_EQ(group.m_Particles, 3);
    EXPECT_EQ(group.m_FileParticles, 3);
    EXPECT_EQ(Values(group), std::vector<float>(24, 0.0f));
    EXPECT_EQ(group.m_HeaderA, 0.0f);
    EXPECT_EQ(group.m_HeaderB, 0.0f);
    for (const float param : group.m_Params)
        EXPECT_EQ(param, 0.0f);
    EXPECT_TRUE(group.m_Label.IsEmpty() && group.m_Note.IsEmpty() && group.m_Date.IsEmpty());
    EXPECT_EQ(group.m_Geometry, 0);
    EXPECT_EQ(group.m_FileGeometry, 0);
    ExpectExtrema(group, 0.0f, 0.0f);
}

TEST(ParticleGroup, NegativeCountIsNone) {
    for (const int n : {0, -1, -2147483647 - 1}) {
        const ParticleGroup group(n);
        EXPECT_EQ(group.m_Particles, 0) << n;
        EXPECT_EQ(group.m_FileParticles, 0) << n;
        EXPECT_EQ(group.Count(), 0) << n;
        EXPECT_EQ(group.Capacity(), 0) << n;
    }
}

TEST(ParticleGroup, MoreValuesThanAnIntCountsAreNone) {
    for (const int n : {268435456, 2147483647}) {
        const ParticleGroup group(n);
        EXPECT_EQ(group.Count(), 0) << n;
        EXPECT_EQ(group.m_Particles, 0) << n;
        EXPECT_EQ(group.m_FileParticles, 0) << n;
    }
}

TEST(ParticleGroup, ValuesAreWrittenAndReadInPlace) {
    ParticleGroup group(2);
    group[8 + 3] = 5.0f;
    group.Data()[8 + 4] = 6.0f;
    const ParticleGroup& constant = group;
    EXPECT_EQ(constant[11], 5.0f);
    EXPECT_EQ(constant.Data()[12], 6.0f);
    EXPECT_EQ(constant.Count(), 16);
    EXPECT_EQ(constant.Capacity(), 256);
}

TEST(ParticleGroup, IsNoArrayToItsCallers) {
    EXPECT_FALSE((std::is_convertible_v<ParticleGroup*, DArray<float>*>));
    EXPECT_TRUE(std::has_virtual_destructor_v<ParticleGroup>);
}

TEST(ParticleGroup, FieldsStandInTheirOrder) {
    const ParticleGroup group(0);
    const void* const fields[] = {&group.m_HeaderA,      &group.m_HeaderB,  &group.m_Params,
                                  &group.m_Label,        &group.m_Note,     &group.m_Date,
                                  &group.m_Particles,    &group.m_Geometry, &group.m_FileParticles,
                                  &group.m_FileGeometry, &group.m_Max,      &group.m_Min};
    EXPECT_TRUE(std::is_sorted(std::begin(fields), std::end(fields)));
}

TEST(ParticleGroup, CopyHasItsOwnValuesAndNoExtrema) {
    ParticleGroup group = UsedGroup();
    const ParticleGroup copy(group);
    group[0] = -1.0f;
    ExpectCopiedHeader(copy);
    EXPECT_EQ(Values(copy), Numbered({70, 71}));
    ExpectExtrema(copy, 0.0f, 0.0f);
}

TEST(ParticleGroup, CopyTakesTheFileFieldsFromTheGroupInMemory) {
    const ParticleGroup group = UsedGroup();
    const ParticleGroup copy(group);
    EXPECT_EQ(copy.m_FileParticles, 2);
    EXPECT_EQ(copy.m_FileGeometry, 53);
}

TEST(ParticleGroup, AssignmentKeepsTheExtremaOfItsTarget) {
    const ParticleGroup group = UsedGroup();
    ParticleGroup target = MakeGroup(Numbered({7, 8, 9}));
    target.Scale();
    const std::vector<float> max = Extrema(target.m_Max);
    const std::vector<float> min = Extrema(target.m_Min);
    target = group;
    ExpectCopiedHeader(target);
    EXPECT_EQ(Values(target), Numbered({70, 71}));
    EXPECT_EQ(target.m_FileParticles, 2);
    EXPECT_EQ(target.m_FileGeometry, 53);
    EXPECT_EQ(Extrema(target.m_Max), max);
    EXPECT_EQ(Extrema(target.m_Min), min);
}

TEST(ParticleGroup, AssignmentToItselfChangesNothing) {
    ParticleGroup group = UsedGroup();
    ParticleGroup& same = group;
    group = same;
    ExpectCopiedHeader(group);
    EXPECT_EQ(Values(group), Numbered({70, 71}));
    EXPECT_EQ(group.m_FileParticles, 99);
    EXPECT_EQ(group.m_FileGeometry, 54);
}

TEST(ParticleGroup, CopyHeaderLeavesValuesAndExtrema) {
    ParticleGroup target = MakeGroup(Numbered({7, 8, 9}));
    target.m_Max[2] = 6.0f;
    target.m_Min[3] = 7.0f;
    target.CopyHeader(UsedGroup());
    ExpectCopiedHeader(target);
    EXPECT_EQ(target.m_FileParticles, 2);
    EXPECT_EQ(target.m_FileGeometry, 53);
    EXPECT_EQ(Values(target), Numbered({7, 8, 9}));
    EXPECT_EQ(target.m_Max[2], 6.0f);
    EXPECT_EQ(target.m_Min[3], 7.0f);
}

// ---- Coordinates

TEST(ParticleCoordinates, PolarBecomesCartesian) {
    ParticleGroup group = MakeGroup({1.0f, HalfPi, 2.0f, 1.0f, 0.0f, 3.0f, 4.0f, 5.0f});
    group.m_Geometry = 1;
    EXPECT_TRUE(group.SetGeometry(0));
    EXPECT_EQ(group.m_Geometry, 0);
    const float cosine = -4.37113883e-8f;  // of the float nearest to half of pi
    EXPECT_EQ(Values(group),
              (std::vector<float>{cosine, 1.0f, 2.0f, cosine, 1.0f, 3.0f, 4.0f, 5.0f}));
}

TEST(ParticleCoordinates, VectorTurnsWithThePosition) {
    ParticleGroup group = MakeGroup({2.0f, 0.5f, 0, 3.0f, 7.0f, 0, 0, 0});
    group.m_Geometry = 1;
    group.SetGeometry(0);
    const float c = 0.87758255f;  // the cosine of 0.5
    const float s = 0.47942555f;
    EXPECT_EQ(group[0], c * 2.0f);
    EXPECT_EQ(group[1], s * 2.0f);
    EXPECT_EQ(group[3], c * 3.0f - s * 7.0f);
    EXPECT_EQ(group[4], c * 7.0f + s * 3.0f);
}

TEST(ParticleCoordinates, CartesianBecomesPolar) {
    ParticleGroup group = MakeGroup({3.0f, 4.0f, 2.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f});
    EXPECT_TRUE(group.SetGeometry(1));
    EXPECT_EQ(group.m_Geometry, 1);
    EXPECT_EQ(Values(group), (std::vector<float>{5.0f, 0.92729522f, 2.0f, 0.6f * 1.0f + 0.8f * 2.0f,
                                                 0.6f * 2.0f - 0.8f * 1.0f, 3.0f, 4.0f, 5.0f}));
}

TEST(ParticleCoordinates, AngleRunsFromMinusPiToPi) {
    constexpr float Pi = 3.14159265f;
    const struct {
        float m_X, m_Y, m_Angle;
    } points[] = {{1.0f, 0.0f, 0.0f},        {0.0f, 2.0f, Pi / 2},   {-1.0f, 0.0f, Pi},
                  {-1.0f, -0.0f, -Pi},       {0.0f, -2.0f, -Pi / 2}, {1.0f, -1.0f, -Pi / 4},
                  {-1.0f, 1.0f, 2.35619449f}};
    for (const auto& [x, y, angle] : points) {
        ParticleGroup group = MakeGroup({x, y, 0, 0, 0, 0, 0, 0});
        group.SetGeometry(1);
        EXPECT_EQ(group[1], angle) << x << ", " << y;
    }
}

TEST(ParticleCoordinates, RadiusIsComputedInDoublePrecision) {
    for (const float scale : {1e30f, 1e-30f}) {
        ParticleGroup group = MakeGroup({3 * scale, 4 * scale, 0, 0, 0, 0, 0, 0});
        group.SetGeometry(1);
        EXPECT_FLOAT_EQ(group[0], 5 * scale);
    }
    ParticleGroup group = MakeGroup({0.224999994f, 1.04999995f, 0, 0, 0, 0, 0, 0});
    group.SetGeometry(1);
    EXPECT_EQ(group[0], 1.07383657f);  // 1.07383645 in single precision
}

// The angle 1.1071487 in single precision has the cosine 0.44721356 and the sine 0.89442724.
TEST(ParticleCoordinates, VectorIsTurnedByTheUnroundedAngle) {
    ParticleGroup group = MakeGroup({1.0f, 2.0f, 0, 1.0f, 0.0f, 0, 0, 0});
    group.SetGeometry(1);
    EXPECT_EQ(group[1], 1.10714872f);
    EXPECT_EQ(group[3], 0.44721359f);
    EXPECT_EQ(group[4], -0.89442718f);
}

TEST(ParticleCoordinates, OriginGoesToZeroAndKeepsItsVector) {
    ParticleGroup group = MakeGroup({0, 0, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f});
    group.SetGeometry(1);
    EXPECT_EQ(Values(group), (std::vector<float>{0, 0, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f}));
}

TEST(ParticleCoordinates, SameValueLeavesEveryBit) {
    const std::vector<float> values = {NotANumber, -0.0f, 1.0f, Infinity, 2.0f, 3.0f, 4.0f, 5.0f};
    for (const int geometry : {0, 1, -3}) {
        ParticleGroup group = MakeGroup(values);
        group.m_Geometry = geometry;
        EXPECT_TRUE(group.SetGeometry(geometry));
        EXPECT_EQ(memcmp(group.Data(), values.data(), 32), 0) << geometry;
    }
}

TEST(ParticleCoordinates, FromOneToTwoConvertsAgain) {
    ParticleGroup twice = MakeGroup({3.0f, 4.0f, 0, 1.0f, 2.0f, 0, 0, 0});
    twice.SetGeometry(1);
    ParticleGroup again = MakeGroup(Values(twice));
    again.SetGeometry(1);
    twice.SetGeometry(2);
    EXPECT_EQ(twice.m_Geometry, 2);
    EXPECT_FLOAT_EQ(twice[0], sqrtf(25.0f + 0.92729522f * 0.92729522f));
    EXPECT_EQ(Values(twice), Values(again));
}

TEST(ParticleCoordinates, EveryOtherValueIsPolar) {
    for (const int geometry : {-1, 2, 2147483647}) {
        ParticleGroup group = MakeGroup({3.0f, 4.0f, 0, 0, 0, 0, 0, 0});
        group.SetGeometry(geometry);
        EXPECT_EQ(group.m_Geometry, geometry);
        EXPECT_EQ(group[0], 5.0f);
        group.SetGeometry(0);
        EXPECT_FLOAT_EQ(group[0], 3.0f);
        EXPECT_FLOAT_EQ(group[1], 4.0f);
    }
}

TEST(ParticleCoordinates, EveryParticleIsConverted) {
    ParticleGroup group(1000);
    for (int p = 0; p < 1000; ++p)
        group[8 * p + 1] = static_cast<float>(p);
    group.SetGeometry(1);
    for (int p = 1; p < 1000; ++p) {
        EXPECT_EQ(group[8 * p], static_cast<float>(p));
        EXPECT_EQ(group[8 * p + 1], HalfPi);
    }
}

TEST(ParticleCoordinates, ZerosStayZeros) {
    ParticleGroup group(2);
    group.SetGeometry(1);
    EXPECT_EQ(group.m_Geometry, 1);
    group.SetGeometry(0);
    EXPECT_EQ(Values(group), std::vector<float>(16, 0.0f));
}

TEST(ParticleCoordinates, EmptyGroupTakesTheValue) {
    ParticleGroup group(0);
    EXPECT_TRUE(group.SetGeometry(5));
    EXPECT_EQ(group.m_Geometry, 5);
    EXPECT_EQ(group.Count(), 0);
}

TEST(ParticleCoordinates, ExtremaAndFileFieldsStay) {
    ParticleGroup group = MakeGroup({3.0f, 4.0f, 0, 0, 0, 0, 0, 0});
    group.Scale();
    group.SetGeometry(1);
    EXPECT_EQ(group.m_Max[0], 3.0f);
    EXPECT_EQ(group.m_Min[1], 4.0f);
    EXPECT_EQ(group.m_FileGeometry, 0);
}

TEST(ParticleCoordinates, OnlyTheToldParticlesAreConverted) {
    ParticleGroup group = MakeGroup({3.0f, 4.0f, 0, 0, 0, 0, 0, 0, 3.0f, 4.0f, 0, 0, 0, 0, 0, 0});
    group.m_Particles = 1;
    group.SetGeometry(1);
    EXPECT_EQ(group[0], 5.0f);
    EXPECT_EQ(group[8], 3.0f);
}

// The sanitizer tells of a step beyond the values.
TEST(ParticleCoordinates, MoreToldThanHeldStopAtTheEnd) {
    for (const int particles : {33, 2147483647, -1}) {
        ParticleGroup group(32);
        group[8 * 31] = -1.0f;
        group.m_Particles = particles;
        group.SetGeometry(1);
        EXPECT_EQ(group[8 * 31], particles > 0 ? 1.0f : -1.0f);
    }
}

// ---- Extrema

TEST(ParticleScale, FindsTheExtremaOfEachColumn) {
    ParticleGroup group = MakeGroup(Numbered({2, -3, 1}));
    group.Scale();
    EXPECT_EQ(Extrema(group.m_Max), Ascending(20.0f));
    EXPECT_EQ(Extrema(group.m_Min), Ascending(-30.0f));
}

TEST(ParticleScale, EmptyGroupKeepsTheStartValues) {
    ParticleGroup group(0);
    group.Scale();
    ExpectExtrema(group, -DFMax, DFMax);
}

TEST(ParticleScale, NaNNeitherReplacesNorStops) {
    ParticleGroup group = MakeGroup(Numbered({1, 2, 3}));
    group[0] = group[8 + 1] = group[16 + 2] = NotANumber;
    for (int p = 0; p < 3; ++p)
        group[8 * p + 7] = NotANumber;
    group.Scale();
    EXPECT_EQ(Extrema(group.m_Max),
              (std::vector<float>{30.0f, 31.0f, 22.0f, 33.0f, 34.0f, 35.0f, 36.0f, -DFMax}));
    EXPECT_EQ(Extrema(group.m_Min),
              (std::vector<float>{20.0f, 11.0f, 12.0f, 13.0f, 14.0f, 15.0f, 16.0f, DFMax}));
}

TEST(ParticleScale, InvalidNumbersCount) {
    ParticleGroup group(2);
    group[0] = Infinity;
    group[8] = -Infinity;
    group[1] = 3.4e38f;
    group[9] = -3.4e38f;
    group.Scale();
    EXPECT_EQ(group.m_Max[0], Infinity);
    EXPECT_EQ(group.m_Min[0], -Infinity);
    EXPECT_EQ(group.m_Max[1], 3.4e38f);
    EXPECT_EQ(group.m_Min[1], -3.4e38f);
}

TEST(ParticleScale, GoesByTheToldParticlesUpToThoseHeld) {
    ParticleGroup group = MakeGroup(Numbered({1, 2, 3}));
    group.m_Particles = 2;
    group.Scale();
    EXPECT_EQ(group.m_Max[0], 20.0f);
    ParticleGroup more(32);  // fills its storage to the last value
    more.m_Particles = 33;
    more.Scale();
    ExpectExtrema(more, 0.0f, 0.0f);
    more.m_Particles = -1;
    more.Scale();
    ExpectExtrema(more, -DFMax, DFMax);
}

// ---- Clean-up

TEST(ParticleCleanUp, LastParticleTakesThePlaceOfABadOne) {
    ParticleGroup group = MakeGroup(Numbered({0, 1, 2, 3}));
    group[8 + 5] = NotANumber;
    group.CleanUp();
    EXPECT_EQ(Values(group), Numbered({0, 3, 2}));
    EXPECT_EQ(group.m_Particles, 3);
}

TEST(ParticleCleanUp, MovedParticleIsLookedAtToo) {
    ParticleGroup group = MakeGroup(Numbered({0, 1, 2, 3}));
    group[0] = NotANumber;
    group[8 * 3] = Infinity;
    group.CleanUp();
    EXPECT_EQ(Values(group), Numbered({2, 1}));
}

TEST(ParticleCleanUp, EveryColumnCanBeBad) {
    for (int c = 0; c < 8; ++c) {
        for (const float bad : {NotANumber, Infinity, -Infinity}) {
            ParticleGroup group = MakeGroup(Numbered({0, 1}));
            group[c] = bad;
            group.CleanUp();
            EXPECT_EQ(Values(group), Numbered({1})) << c << ", " << bad;
        }
    }
}

TEST(ParticleCleanUp, GreatFiniteNumbersStay) {
    std::vector<float> values = Numbered({0});
    values[2] = std::numeric_limits<float>::max();
    values[3] = -std::numeric_limits<float>::max();
    values[4] = std::numeric_limits<float>::denorm_min();
    ParticleGroup group = MakeGroup(values);
    group.CleanUp();
    EXPECT_EQ(Values(group), values);
}

TEST(ParticleCleanUp, BadLastParticleIsDropped) {
    ParticleGroup group = MakeGroup(Numbered({0, 1, 2}));
    group[8 * 2 + 7] = Infinity;
    group.CleanUp();
    EXPECT_EQ(Values(group), Numbered({0, 1}));
}

TEST(ParticleCleanUp, OnlyBadParticlesLeaveNone) {
    ParticleGroup group = MakeGroup(std::vector<float>(24, NotANumber));
    group.CleanUp();
    EXPECT_EQ(group.m_Particles, 0);
    EXPECT_EQ(group.Count(), 0);
    EXPECT_EQ(group.Capacity(), 256);
}

TEST(ParticleCleanUp, EmptyGroupStaysEmpty) {
    ParticleGroup group(0);
    group.CleanUp();
    EXPECT_EQ(group.m_Particles, 0);
    EXPECT_EQ(group.Count(), 0);
}

TEST(ParticleCleanUp, FileCountAndExtremaStay) {
    ParticleGroup group = MakeGroup(Numbered({0, 1}));
    group.Scale();
    group[8] = NotANumber;
    group.CleanUp();
    EXPECT_EQ(group.m_Particles, 1);
    EXPECT_EQ(group.m_FileParticles, 2);
    EXPECT_EQ(group.m_Max[0], 10.0f);
}

TEST(ParticleCleanUp, ParticlesBeyondTheToldOnesGo) {
    ParticleGroup group = MakeGroup(Numbered({0, 1, 2}));
    group.m_Particles = 2;
    group[0] = NotANumber;
    group.CleanUp();
    EXPECT_EQ(Values(group), Numbered({1}));
}

TEST(ParticleCleanUp, MoreToldThanHeldAreThoseHeld) {
    ParticleGroup group(32);  // fills its storage to the last value
    group.m_Particles = 2147483647;
    group[0] = NotANumber;
    group.CleanUp();
    EXPECT_EQ(group.m_Particles, 31);
    EXPECT_EQ(Values(group), std::vector<float>(31 * 8, 0.0f));
}

// ---- Parameter names

TEST(ParticleParameter, NamesOfTheFreeNumbers) {
    const ParticleGroup group = UsedGroup();
    for (const char* name : {"t1", "T1"})
        EXPECT_EQ(group.GetPGroupParam(name), 60.0f);
    EXPECT_EQ(group.GetPGroupParam("t2"), 61.0f);
    EXPECT_EQ(group.GetPGroupParam("t3"), 62.0f);
    EXPECT_EQ(group.GetPGroupParam("t4"), 63.0f);
    EXPECT_EQ(group.GetPGroupParam("T5"), 64.0f);
}

TEST(ParticleParameter, CountIsThatOfTheFile) {
    const ParticleGroup group = UsedGroup();
    for (const char* name : {"np", "NP", "Np"})
        EXPECT_EQ(group.GetPGroupParam(name), 99.0f);
}

TEST(ParticleParameter, CountOfAGroupInMemorySurvivesCleanUp) {
    ParticleGroup group(4);
    EXPECT_EQ(group.GetPGroupParam("np"), 4.0f);
    group[0] = NotANumber;
    group.CleanUp();
    EXPECT_EQ(group.GetPGroupParam("np"), 4.0f);
}

TEST(ParticleParameter, LargeCountIsRoundedToAFloat) {
    ParticleGroup group(0);
    group.m_FileParticles = 16777219;
    EXPECT_EQ(group.GetPGroupParam("np"), 16777220.0f);
}

TEST(ParticleParameter, OtherNamesAreMissing) {
    const ParticleGroup group = UsedGroup();
    for (const char* name : {"", "t", "t0", "t6", "t10", "t1 ", " t1", "t11", "tt", "n", "p", "np ",
                             "npp", "np1", "mx", "t:", "t/", "1t", "u1"})
        EXPECT_EQ(group.GetPGroupParam(name), -DFMax) << name;
    EXPECT_EQ(group.GetPGroupParam(DString()), -DFMax);
}

TEST(ParticleParameter, NameStaysAsGiven) {
    const DString name("T1");
    UsedGroup().GetPGroupParam(name);
    EXPECT_STREQ(name, "T1");
}
