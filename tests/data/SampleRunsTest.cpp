// What is computed on many samples at a time, against the plain loops that define it, over lengths
// around the sizes in which samples are taken, and over odd values at every place.
#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <random>

#include "core/CoreGlobal.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/WaveformTestData.h"

namespace {

using Values = std::vector<float>;

const int Lengths[] = {1,  2,  3,  4,   5,   7,   8,   15,  16,   17,   31,   32,   33,   63,  64,
                       65, 66, 67, 127, 128, 129, 130, 200, 1000, 4095, 4096, 4097, 4098, 9000};

/// Values that comparisons, sums and extrema treat in ways of their own.
const Values OddValues = {NotANumber, Infinity, -Infinity, -3.3e38f, 3.3e38f, 9.9e34f,
                          -9.9e34f,   -9.9e33f, -9.8e33f,  0.0f,     -0.0f};

uint32_t Bits(float value) {
    uint32_t bits = 0;
    memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::vector<uint32_t> Bits(const Values& values) {
    std::vector<uint32_t> bits;
    for (const float value : values)
        bits.push_back(Bits(value));
    return bits;
}

/// Values of few different magnitudes, so that extrema and levels have many equals.
Values RandomValues(int count, unsigned seed) {
    std::mt19937 random(seed);
    Values values(static_cast<size_t>(count));
    for (float& value : values)
        value = static_cast<float>(static_cast<int>(random() % 9) - 4) * 0.5f;
    return values;
}

/// The same, with some odd values among them: none for a seed that divides by 3.
Values OddlyMixed(int count, unsigned seed) {
    Values values = RandomValues(count, seed);
    std::mt19937 random(seed + 1000);
    const unsigned odd = seed % 3 == 0 ? 0 : 1 + random() % 4;
    for (unsigned i = 0; i < odd; ++i)
        values[random() % values.size()] = OddValues[random() % OddValues.size()];
    return values;
}

float InOrder(const Values& values, size_t first) {
    float sum = 0.0f;
    for (size_t k = first; k < values.size(); ++k)
        sum += values[k];
    return sum;
}

float Value(const Waveform& trace, const char* name) { return trace.GetTraceParam(name); }

}  // namespace

// ---- Sums

TEST(SampleSums, WholeNumbersHaveOneSumInEveryOrder) {
    for (const int length : Lengths) {
        const Values values = RandomValues(length, 1);
        const Waveform trace = MakeTrace(values);
        EXPECT_EQ(Value(trace, "in"), InOrder(values, 1)) << length;
        const float mean = InOrder(values, 0) / static_cast<float>(length);
        float moment = 0.0f;
        for (int k = 0; k < length; ++k)
            moment += static_cast<float>(k) * trace[k];
        const float weight = InOrder(values, 0);
        EXPECT_EQ(Value(trace, "wa"), weight == 0.0f ? 0.0f : moment / weight) << length;
        double squares = 0.0;
        for (const float value : values)
            squares += pow(static_cast<double>(value - mean), 2);
        const double deviation = sqrt(squares / std::max(length - 1, 1));
        EXPECT_NEAR(static_cast<double>(Value(trace, "sd")), deviation, deviation * 1e-6) << length;
    }
}

TEST(SampleSums, ShortRunsAreSummedUpInTheirOrder) {
    const Values values = {1e8f, 1.0f, -1e8f, 1.0f, 3.0f, 1e8f, 1.0f};
    for (size_t length = 1; length <= values.size(); ++length) {
        const Values head(values.begin(), values.begin() + static_cast<int>(length));
        EXPECT_EQ(Value(MakeTrace(head), "in"), InOrder(head, 1)) << length;
    }
}

TEST(SampleSums, LongRunsStayWithinTheRoundingOfTheirTerms) {
    std::mt19937 random(7);
    Waveform trace(1000003);
    double sum = 0.0;
    for (int k = 0; k < trace.Count(); ++k) {
        trace[k] = static_cast<float>(random() % 1000000) * 1e-6f;
        if (k > 0) sum += static_cast<double>(trace[k]);
    }
    EXPECT_NEAR(static_cast<double>(Value(trace, "in")) / sum, 1.0, 1e-5);
    EXPECT_NEAR(static_cast<double>(Value(trace, "pi")) / sum, 1.0, 1e-5);
    EXPECT_NEAR(static_cast<double>(Value(trace, "av")) / (sum / 1000002), 1.0, 1e-5);
}

TEST(SampleSums, SumsOverflowOnlyWhereTheSamplesInTheirOrderDo) {
    constexpr float Huge = 3e38f;
    Waveform trace = MakeTrace(Values(400, 0.0f));
    for (const int at : {1, 33, 65})
        trace[at] = -(trace[at + 1] = Huge);
    EXPECT_EQ(Value(trace, "in"), 0.0f);
    EXPECT_EQ(Value(trace, "sd"), Infinity);
    trace[300] = -Huge;
    trace[1] = trace[2] = Huge;
    EXPECT_EQ(Value(trace, "in"), Infinity);
    trace.Zero();
    trace[50] = -Huge;
    trace[150] = trace[151] = Huge;
    EXPECT_EQ(Value(trace, "pi"), Huge);
}

TEST(SampleSums, TermsThatAreNotFiniteSpoilTheSumWhereverTheyStand) {
    for (int at = 1; at < 70; ++at) {
        Waveform trace = MakeTrace(Values(70, 1.0f));
        trace[at] = NotANumber;
        EXPECT_TRUE(isnan(Value(trace, "in"))) << at;
        EXPECT_EQ(Value(trace, "wa"), 0.0f) << at;
        EXPECT_TRUE(isnan(Value(trace, "av")) == (at < 69)) << at;
        trace[at] = -Infinity;
        EXPECT_EQ(Value(trace, "in"), -Infinity) << at;
    }
}

TEST(SampleSums, PeakIntegralIsTheGreatestRunningSum) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        for (const int length : {1, 2, 15, 16, 17, 18, 33, 34, 100, 1001}) {
            const Values values = RandomValues(length, seed);
            float sum = 0.0f;
            float greatest = 0.0f;
            for (size_t k = 1; k < values.size(); ++k) {
                sum += values[k];
                greatest = std::max(greatest, sum);
            }
            EXPECT_EQ(Value(MakeTrace(values), "pi"), greatest) << length << " " << seed;
        }
    }
}

TEST(SampleSums, PeakIntegralEndsAtTheFirstValueThatIsNoNumber) {
    for (int at = 1; at < 70; ++at) {
        Waveform trace = MakeTrace(Values(70, 1.0f));
        trace[at] = NotANumber;
        EXPECT_EQ(Value(trace, "pi"), static_cast<float>(at - 1)) << at;
        trace[at] = -Infinity;
        EXPECT_EQ(Value(trace, "pi"), static_cast<float>(at - 1)) << at;
        trace[at] = Infinity;
        EXPECT_EQ(Value(trace, "pi"), Infinity) << at;
        trace[at] = -1e3f;
        EXPECT_EQ(Value(trace, "pi"), static_cast<float>(at - 1)) << at;
    }
}

// ---- Extrema of a trace

namespace {

struct Scaled {
    Values m_Samples;
    float m_Max = -3.3e38f;
    float m_Min = 3.3e38f;
    int m_MaxIndex = 0;
    int m_MinIndex = 0;
};

Scaled ScaledPlainly(const Values& values) {
    Scaled scaled;
    scaled.m_Samples = values;
    for (size_t k = 0; k < values.size(); ++k) {
        float& sample = scaled.m_Samples[k];
        if (!IsVF(sample)) sample = -3.3e38f;
        if (sample > scaled.m_Max) {
            scaled.m_Max = sample;
            scaled.m_MaxIndex = static_cast<int>(k) + 1;
        }
        if (sample<scaled.m_Min&& static_cast<double>(sample)> - 9.9e33) {
            scaled.m_Min = sample;
            scaled.m_MinIndex = static_cast<int>(k) + 1;
        }
    }
    if (std::max(fabsf(scaled.m_Max), fabsf(scaled.m_Min)) < 1e-30f) scaled.m_MaxIndex = 0;
    return scaled;
}

void ExpectScaledAsPlainly(const Values& values, unsigned seed) {
    const Scaled expected = ScaledPlainly(values);
    const Waveform trace = MakeScaledTrace(values);
    EXPECT_EQ(Bits(trace.m_Max), Bits(expected.m_Max)) << values.size() << " " << seed;
    EXPECT_EQ(Bits(trace.m_Min), Bits(expected.m_Min)) << values.size() << " " << seed;
    EXPECT_EQ(trace.m_MaxIndex, expected.m_MaxIndex) << values.size() << " " << seed;
    EXPECT_EQ(trace.m_MinIndex, expected.m_MinIndex) << values.size() << " " << seed;
    EXPECT_EQ(Bits(Samples(trace)), Bits(expected.m_Samples)) << values.size() << " " << seed;
}

}  // namespace

TEST(SampleExtrema, AreThoseOfAPlainLoopForEveryLength) {
    for (const int length : Lengths) {
        for (unsigned seed = 0; seed < 30; ++seed)
            ExpectScaledAsPlainly(OddlyMixed(length, seed), seed);
    }
}

TEST(SampleExtrema, FirstOfEqualOnesCountsAcrossBlocks) {
    for (const int first : {0, 1, 15, 4095, 4096, 4097, 8191}) {
        Values values(9000, 0.0f);
        values[static_cast<size_t>(first)] = values[8192] = values[8999] = 5.0f;
        values[static_cast<size_t>(first) + 1] = values[8500] = -5.0f;
        const Waveform trace = MakeScaledTrace(values);
        EXPECT_EQ(trace.m_MaxIndex, first + 1);
        EXPECT_EQ(trace.m_MinIndex, first + 2);
    }
}

TEST(SampleExtrema, EachOddValueAtEachPlaceIsTreatedAsInAPlainLoop) {
    for (const float odd : OddValues) {
        for (const unsigned at : {0U, 1U, 4U, 16U, 50U, 4095U, 4096U, 4100U}) {
            Values values = RandomValues(4200, 3);
            values[at] = odd;
            ExpectScaledAsPlainly(values, at);
        }
    }
}

TEST(SampleExtrema, ZeroHasTheSignOfTheFirstOne) {
    for (const float first : {0.0f, -0.0f}) {
        for (const int length : {40, 5000}) {
            Values values(static_cast<size_t>(length), first);
            values[17] = values[20] = -first;
            values[3] = -1.0f;
            ExpectScaledAsPlainly(values, 0);
            values[3] = 1.0f;
            ExpectScaledAsPlainly(values, 1);
        }
    }
}

TEST(SampleExtrema, TraceOfInvalidSamplesHasNone) {
    for (const float odd : {NotANumber, Infinity, -Infinity, 1e35f, -1e35f})
        ExpectScaledAsPlainly(Values(5000, odd), 0);
}

// ---- Extrema of matrices and particle groups

TEST(SampleExtrema, MatrixHasThoseOfAPlainLoop) {
    for (const int length : Lengths) {
        for (unsigned seed = 0; seed < 30; ++seed) {
            const Values values = OddlyMixed(length, seed);
            Matrix matrix(length, 1, 1);
            std::copy(values.begin(), values.end(), matrix.Data());
            matrix.Scale();
            float max = -3.3e38f;
            float min = 3.3e38f;
            for (const float value : values) {
                if (value > max) max = value;
                if (value < min) min = value;
            }
            EXPECT_EQ(Bits(matrix.m_Max), Bits(max)) << length << " " << seed;
            EXPECT_EQ(Bits(matrix.m_Min), Bits(min)) << length << " " << seed;
            EXPECT_EQ(Bits(Values(matrix.Data(), matrix.Data() + length)), Bits(values));
        }
    }
}

TEST(SampleExtrema, ZeroOfAMatrixHasTheSignOfTheFirstOne) {
    for (const float first : {0.0f, -0.0f}) {
        for (const float other : {-1.0f, 1.0f}) {
            Matrix matrix(100, 2, 1);
            std::fill_n(matrix.Data(), 200, -first);
            matrix[70] = first;
            std::fill_n(matrix.Data(), 70, other);
            matrix.Scale();
            EXPECT_EQ(Bits(other < 0.0f ? matrix.m_Max : matrix.m_Min), Bits(first));
        }
    }
}

TEST(SampleExtrema, ParticlesHaveThoseOfAPlainLoopInEachColumn) {
    constexpr int Columns = ParticleGroup::Columns;
    for (const int particles : {0, 1, 2, 3, 50}) {
        for (unsigned seed = 0; seed < 30; ++seed) {
            const Values values = OddlyMixed(std::max(particles, 1) * Columns, seed);
            ParticleGroup group(particles);
            std::copy_n(values.begin(), particles * Columns, group.Data());
            group.Scale();
            for (int c = 0; c < Columns; ++c) {
                float max = -3.3e38f;
                float min = 3.3e38f;
                for (int p = 0; p < particles; ++p) {
                    const float value = values[static_cast<size_t>(p * Columns + c)];
                    if (value > max) max = value;
                    if (value < min) min = value;
                }
                EXPECT_EQ(Bits(group.m_Max[c]), Bits(max)) << particles << " " << seed << " " << c;
                EXPECT_EQ(Bits(group.m_Min[c]), Bits(min)) << particles << " " << seed << " " << c;
            }
        }
    }
}

// ---- Searches, on traces at the times 0, 1, 2, ... of which every level counts as on the trace

namespace {

Waveform Searched(const Values& values) {
    Waveform trace = MakeTrace(values);
    trace.m_Max = Infinity;
    trace.m_Min = -Infinity;
    return trace;
}

int CrossingPlainly(const Values& x, float level) {
    const int last = static_cast<int>(x.size()) - 1;
    for (int k = 1; k < last; ++k) {
        const float sample = x[static_cast<size_t>(k)];
        if (x[0] > level ? level > sample : level < sample) return k;
    }
    return last;
}

int CrossingFromEndPlainly(const Values& x, float level) {
    const int last = static_cast<int>(x.size()) - 1;
    if (last - 1 < 2) return last - 1;
    for (int k = last - 1; k >= 2; --k) {
        const float sample = x[static_cast<size_t>(k)];
        if (x.back() > level ? level > sample : level < sample) return k;
    }
    return 1;
}

float TimePlainly(const Values& x, int k, float level) {
    const float before = x[static_cast<size_t>(k)];
    const float behind = x[static_cast<size_t>(k) + 1];
    return (level - before) / (behind - before) + static_cast<float>(k);
}

}  // namespace

TEST(SampleSearch, CrossingsAreThoseOfPlainLoops) {
    for (const int length : Lengths) {
        if (length < 2) continue;
        for (unsigned seed = 0; seed < 30; ++seed) {
            const Values values = OddlyMixed(length, seed);
            const Waveform trace = Searched(values);
            for (const float level : {-1.75f, -1.5f, 0.0f, 0.25f, 1.75f}) {
                if (level != values.front()) {
                    const int k = CrossingPlainly(values, level) - 1;
                    EXPECT_EQ(Bits(trace.TimeAtVal(level)), Bits(TimePlainly(values, k, level)))
                        << length << " " << seed << " " << level;
                }
                if (level != values.back()) {
                    const int k = CrossingFromEndPlainly(values, level);
                    EXPECT_EQ(Bits(trace.TimeAtValR(level)), Bits(TimePlainly(values, k, level)))
                        << length << " " << seed << " " << level;
                }
            }
        }
    }
}

TEST(SampleSearch, SingleCrossingIsFoundWhereverItIs) {
    constexpr int Length = 300;
    for (int at = 1; at < Length - 1; ++at) {
        Values values(Length, 1.0f);
        values[static_cast<size_t>(at)] = 3.0f;
        EXPECT_EQ(Searched(values).TimeAtVal(2.0f), static_cast<float>(at) - 0.5f) << at;
        EXPECT_EQ(Searched(values).TimeAtValR(2.0f), static_cast<float>(at) + 0.5f) << at;
        for (float& value : values)
            value = -value;
        EXPECT_EQ(Searched(values).TimeAtVal(-2.0f), static_cast<float>(at) - 0.5f) << at;
    }
}

TEST(SampleSearch, NotANumberIsNoCrossing) {
    Values values(300, 1.0f);
    for (size_t k = 1; k < 200; ++k)
        values[k] = NotANumber;
    values[250] = 3.0f;
    EXPECT_EQ(Searched(values).TimeAtVal(2.0f), 249.5f);
    values[298] = NotANumber;
    EXPECT_EQ(Searched(values).TimeAtValR(2.0f), 250.5f);
}

TEST(SampleSearch, WidthIsThatOfPlainLoops) {
    constexpr int Length = 400;
    for (const int peak : {1, 2, 63, 64, 65, 66, 200, 335, 336, 337, 399, 400}) {
        for (const int reach : {1, 2, 5, 62, 63, 64, 65, 130, 500}) {
            Values values(Length, 4.0f);
            float left = 0.0f;
            float right = static_cast<float>(Length - 1);
            if (peak - 1 - reach >= 0) {
                values[static_cast<size_t>(peak - 1 - reach)] = 0.0f;
                left = static_cast<float>(peak - 1 - reach) + 0.5f;
            }
            if (peak - 1 + reach < Length) {
                values[static_cast<size_t>(peak - 1 + reach)] = 0.0f;
                right = static_cast<float>(peak - 1 + reach) - 0.5f;
            }
            Waveform trace = Searched(values);
            trace.m_Max = 4.0f;
            trace.m_MaxIndex = peak;
            EXPECT_EQ(Value(trace, "fh"), right - left) << peak << " " << reach;
        }
    }
}

// ---- Resampling

namespace {

Values AlignedPlainly(const Values& x, int points, float start, float step) {
    Values target(static_cast<size_t>(points), 0.0f);
    const auto last = static_cast<double>(x.size()) - 1;
    double position = static_cast<double>(start);
    size_t k = 0;
    for (; k < target.size() && position < 0; ++k)
        position += static_cast<double>(step);
    for (; k < target.size() && position >= 0 && position < last; ++k) {
        const auto i = static_cast<size_t>(position);
        const auto fraction = static_cast<float>(position - static_cast<double>(i));
        target[k] = x[i] + (x[i + 1] - x[i]) * fraction;
        position += static_cast<double>(step);
    }
    if (k < target.size() && position == last) target[k] = x.back();
    return target;
}

void ExpectAlignedAsPlainly(const Values& values, int points, float start, float step) {
    Waveform trace = MakeTrace(values);
    trace.Align(points, start, step);
    EXPECT_EQ(Bits(Samples(trace)), Bits(AlignedPlainly(values, points, start, step)))
        << values.size() << " to " << points << " from " << start << " by " << step;
    EXPECT_EQ(trace.Capacity(), DArray<float>(points).Capacity());
}

}  // namespace

TEST(SampleAlign, PointsAreThoseOfAPlainLoop) {
    for (const int length : {1, 2, 3, 64, 65, 66, 127, 129, 1000}) {
        for (const float step : {1.0f, 0.5f, 2.0f, 0.3f, 1.7f, 0.01f, 63.0f, 1.00001f}) {
            for (const float start :
                 {0.0f, 0.25f, 0.1f, 1e-7f, 1e-20f, 3.0f, -0.25f, -7.3f, 62.5f}) {
                if (start == 0.0f && step == 1.0f) continue;
                for (const int points : {1, length, length + 3, 1024, 1300})
                    ExpectAlignedAsPlainly(RandomValues(length, 5), points, start, step);
            }
        }
    }
}

TEST(SampleAlign, PointsAroundABlockAreThoseOfAPlainLoop) {
    for (const int length : {15, 16, 17, 18, 31, 32, 33, 34, 49}) {
        for (const float step : {1.0f, 0.95f, 0.5f, 1.3f, 2.0f}) {
            for (const float start : {0.25f, 3.0f, 17.0f, -1.5f}) {
                for (const int points : {length, 14, 15, 16, 17, 18, 31, 32, 33, 34, 40})
                    ExpectAlignedAsPlainly(RandomValues(length, 6), points, start, step);
            }
        }
    }
    ExpectAlignedAsPlainly(RandomValues(300, 6), 300, 0.25f, 0.95f);
}

TEST(SampleAlign, ZeroKeepsItsSignHoweverManyPointsThereAre) {
    Values values(100, 1.0f);
    values[0] = -0.0f;
    for (const int points : {1, 10, 15, 16, 17, 63, 64, 200}) {
        ExpectAlignedAsPlainly(values, points, -0.0f, 0.5f);
        ExpectAlignedAsPlainly(values, points, 0.0f, 0.5f);
    }
}

TEST(SampleAlign, TakesNoSampleBehindTheLast) {
    for (const auto& [length, points, start, step] :
         {std::tuple{66, 40, 3.0f, 2.0f}, std::tuple{49, 40, 17.0f, 1.0f}}) {
        const Values values = RandomValues(length, 8);
        Waveform trace = MakeTrace(values);
        trace.ReSize(1, length + 8);
        std::fill(trace.Data() + length, trace.Data() + length + 8, NAN);
        trace.ReSize(1, length);
        trace.Align(points, start, step);
        EXPECT_EQ(Bits(Samples(trace)), Bits(AlignedPlainly(values, points, start, step)));
    }
}

TEST(SampleAlign, PositionsAreSummedUpPointByPoint) {
    // Each sum is rounded, and the errors add up to more than the rounding of a product.
    for (const float step : {3e-12f, 1e-11f, 2.5e-13f})
        ExpectAlignedAsPlainly(RandomValues(2000, 9), 100000, 1000.3f, step);
    for (const float start : {1e-12f, 3.3e-9f, 0.1f}) {
        for (const float step : {0.1f, 1.1e-3f, 1.0000001f})
            ExpectAlignedAsPlainly(RandomValues(20000, 9), 30000, start, step);
    }
}

TEST(SampleAlign, TraceThatWasLongerOrATableIsAlignedAlike) {
    const Values values = RandomValues(300, 11);
    for (const float start : {0.25f, -3.5f}) {
        Waveform shrunk = MakeTrace(values);
        shrunk.ReSize(1, 5000);
        shrunk.ReSize(1, 300);
        shrunk.Align(300, start, 1.0f);
        EXPECT_EQ(Bits(Samples(shrunk)), Bits(AlignedPlainly(values, 300, start, 1.0f)));
        EXPECT_EQ(shrunk.Capacity(), DArray<float>(300).Capacity());
        Waveform table = MakeTrace(values);
        table.ReSize(3, 100);
        table.Align(300, start, 1.0f);
        EXPECT_EQ(Bits(Samples(table)), Bits(AlignedPlainly(values, 300, start, 1.0f)));
        EXPECT_EQ(table.RCount(), 1);
        EXPECT_EQ(table.CCount(), 300);
    }
}

TEST(SampleAlign, OddValuesSpreadToTheirNeighboursAlone) {
    for (unsigned seed = 1; seed < 20; ++seed) {
        for (const float step : {1.0f, 0.3f, 2.5f})
            ExpectAlignedAsPlainly(OddlyMixed(300, seed), 300, 0.25f, step);
    }
}
