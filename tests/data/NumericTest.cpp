// Arithmetic that the data objects share.
#include "data/Numeric.h"

#include <gtest/gtest.h>
#include <math.h>

#include "data/WaveformTestData.h"

TEST(Numeric, FloatsAreTruncatedTowardsZero) {
    EXPECT_EQ(SaturatedInt(2.9f), 2);
    EXPECT_EQ(SaturatedInt(-2.9f), -2);
    EXPECT_EQ(SaturatedInt(-0.5f), 0);
    EXPECT_EQ(SaturatedInt(2147483520.0f), 2147483520);
    EXPECT_EQ(SaturatedInt(-2147483648.0f), INT_MIN);
}

TEST(Numeric, FloatsBeyondAnIntSaturate) {
    EXPECT_EQ(SaturatedInt(2147483648.0f), INT_MAX);
    EXPECT_EQ(SaturatedInt(Infinity), INT_MAX);
    EXPECT_EQ(SaturatedInt(-2147483904.0f), INT_MIN);
    EXPECT_EQ(SaturatedInt(-Infinity), INT_MIN);
    EXPECT_EQ(SaturatedInt(NotANumber), 0);
}

TEST(Numeric, DoublesSaturateAlike) {
    EXPECT_EQ(SaturatedInt(2147483647.9), INT_MAX);
    EXPECT_EQ(SaturatedInt(2147483648.0), INT_MAX);
    EXPECT_EQ(SaturatedInt(-2147483647.9), -INT_MAX);
    EXPECT_EQ(SaturatedInt(-1e300), INT_MIN);
    EXPECT_EQ(SaturatedInt(static_cast<double>(Infinity)), INT_MAX);
    EXPECT_EQ(SaturatedInt(static_cast<double>(NotANumber)), 0);
}

TEST(Numeric, FloorGoesDown) {
    EXPECT_EQ(FloorToInt(2.9f), 2);
    EXPECT_EQ(FloorToInt(-0.5f), -1);
    EXPECT_EQ(FloorToInt(-2.0f), -2);
    EXPECT_EQ(FloorToInt(-1e30f), INT_MIN);
    EXPECT_EQ(FloorToInt(NotANumber), 0);
}

TEST(Numeric, ScaleUnitIsFiveTwoOrOneTimesAPowerOfTen) {
    struct Case {
        float m_Magnitude;
        int m_Decade;
        float m_Factor;
    };
    const Case cases[] = {{7.0f, 0, 1.0f},   {5.0f, 0, 1.0f},     {4.99f, 0, 0.5f},
                          {3.0f, 0, 0.5f},   {2.0f, 0, 0.5f},     {1.99f, 0, 0.2f},
                          {1.5f, 0, 0.2f},   {1.0f, 0, 0.2f},     {20.5f, 1, 0.5f},
                          {75.0f, 1, 1.0f},  {1500.0f, 3, 0.2f},  {0.5f, -1, 1.0f},
                          {0.35f, -1, 0.5f}, {0.15f, -1, 0.2f},   {0.07f, -2, 1.0f},
                          {3e-5f, -5, 0.5f}, {3.3e38f, 38, 0.5f}, {7e-30f, -30, 1.0f}};
    for (const Case& expected : cases) {
        const float unit = exp2f(static_cast<float>(expected.m_Decade) * 3.321928f);
        EXPECT_EQ(ScaleUnitOf(expected.m_Magnitude), unit * expected.m_Factor)
            << expected.m_Magnitude;
    }
}

TEST(Numeric, ScaleUnitOfAPowerOfTenBelowOneIsThatOfTheDecadeBelow) {
    // 0.01 is held a little below its name, so its logarithm ends at -2 and goes down once more.
    EXPECT_EQ(ScaleUnitOf(0.01f), exp2f(-3.0f * 3.321928f));
}

TEST(Numeric, ScaleUnitOfNothingIsThatOfTheLeastMagnitude) {
    const float least = exp2f(-30.0f * 3.321928f);
    const int steps = static_cast<int>(1e-30f / least);
    ASSERT_LE(steps, 1);
    for (const float magnitude : {0.0f, 1e-38f, nextafterf(1e-30f, 0.0f)}) {
        EXPECT_FALSE(IsScalable(magnitude));
        EXPECT_EQ(ScaleUnitOf(magnitude), least * 0.2f);
    }
    EXPECT_TRUE(IsScalable(1e-30f));
}

TEST(Numeric, ScaleUnitOfAnInfiniteRangeIsInfinite) { EXPECT_EQ(ScaleUnitOf(Infinity), Infinity); }
