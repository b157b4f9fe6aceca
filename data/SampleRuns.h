/// Sums, extrema and searches over long runs of samples, several samples at a time, for the
/// measurements of the data objects. Internal to the library.
///
/// A term or test is a function that takes one sample as well as FourFloats, so as a lambda of
/// `auto` arguments.
#pragma once

#include <limits.h>
#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <bit>

#include "types/Prefetch.h"

/// Samples that are computed on at once; a comparison gives -1 or 0 for each of them.
using FourFloats [[gnu::vector_size(16)]] = float;
using FourInts [[gnu::vector_size(16)]] = int32_t;

inline FourFloats LoadFour(const float* samples) {
    FourFloats values;
    memcpy(&values, samples, sizeof values);
    return values;
}

/// Fetches the SamplesPerFetch samples that stand `ahead` samples on, or back, which may lie
/// outside the array. The machine foresees the loads of a pass by itself, but not across the border
/// of a page, which costs a search or a pass for several results a tenth to two fifths of its time.
[[gnu::always_inline]] inline void FetchAhead(const float* samples, int ahead) {
    Prefetch(samples, int64_t{ahead} * int64_t{sizeof(float)});
}

constexpr int SamplesAhead = 1024;   ///< of a search or pass: one page
constexpr int SamplesPerFetch = 16;  ///< in one line of the cache

inline bool IsAnySet(FourInts flags) {
    const auto halves = std::bit_cast<std::array<int64_t, 2>>(flags);
    return (halves[0] | halves[1]) != 0;
}

// ---- Sums

/// The sum of term(sample, index as a float) over the samples from index `from` up to, but without,
/// `to`, in the samples' order.
template <typename Term>
float SumInOrder(const float* samples, int from, int to, Term term, float sum = 0.0f) {
    for (int k = from; k < to; ++k)
        sum += term(samples[k], static_cast<float>(k));
    return sum;
}

/// The sums of several terms in single precision, found in one pass. Long runs are summed up in an
/// order of their own, the same on every machine; a sum that isn't finite is the one in the
/// samples' order.
template <typename... Terms>
std::array<float, sizeof...(Terms)> Sums(const float* samples, int from, int to, Terms... terms) {
    constexpr size_t Count = sizeof...(Terms);
    constexpr size_t Vectors = Count > 1 ? 4 : 8;  // of each sum: more would not stay in registers
    constexpr int Stride = 4 * int{Vectors};
    FourFloats partial[Count][Vectors] = {};
    int k = from;
    for (; to - k >= Stride; k += Stride) {
        // A sum alone is as fast without.
        static_assert(Count == 1 || Stride == SamplesPerFetch);
        if constexpr (Count > 1) FetchAhead(samples + k, SamplesAhead);
        for (size_t v = 0; v < Vectors; ++v) {
            const int i = k + 4 * static_cast<int>(v);
            const FourFloats values = LoadFour(samples + i);
            const FourFloats indexes =
                __builtin_convertvector((FourInts{0, 1, 2, 3} + i), FourFloats);
            size_t n = 0;
            ((partial[n++][v] += terms(values, indexes)), ...);
        }
    }
    const auto total = [&](const FourFloats(&vectors)[Vectors], const auto& term) {
        float sum = 0.0f;
        for (const FourFloats& vector : vectors)
            sum += vector[0] + vector[1] + vector[2] + vector[3];
        sum = SumInOrder(samples, k, to, term, sum);
        return isfinite(sum) ? sum : SumInOrder(samples, from, to, term);
    };
    size_t n = 0;
    return {total(partial[n++], terms)...};
}

/// The sum of the samples themselves.
inline float SumOfRun(const float* samples, int from, int to) {
    return Sums(samples, from, to, [](auto sample, auto) { return sample; })[0];
}

/// One row for each of four runs becomes one row for each place in them.
inline std::array<FourFloats, 4> Transposed(const std::array<FourFloats, 4>& rows) {
    const FourFloats low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
    const FourFloats high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
    const FourFloats low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
    const FourFloats high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
    return {__builtin_shufflevector(low01, low23, 0, 1, 4, 5),
            __builtin_shufflevector(low01, low23, 2, 3, 6, 7),
            __builtin_shufflevector(high01, high23, 0, 1, 4, 5),
            __builtin_shufflevector(high01, high23, 2, 3, 6, 7)};
}

/// The greatest of 0 and the running sums from index `from` on, up to each index below `to`. What
/// is told of the order of Sums holds here: a quarter of the run is summed up in each lane.
inline float GreatestSum(const float* samples, int from, int to) {
    const auto step = [](const auto& sample, auto& sum, auto& greatest) {
        sum += sample;
        greatest = sum > greatest ? sum : greatest;
    };
    const int length = (to - from) / 16 * 4;
    const float* quarters = samples + from;
    FourFloats sums = {};
    FourFloats peaks = {};
    for (int i = 0; i < length; i += 4) {
        const float* first = quarters + i;
        const std::array<FourFloats, 4> columns = Transposed(
            {LoadFour(first), LoadFour(first + length), LoadFour(first + ptrdiff_t{length} * 2),
             LoadFour(first + ptrdiff_t{length} * 3)});
        for (const FourFloats& column : columns)
            step(column, sums, peaks);
    }
    float sum = 0.0f;
    float greatest = 0.0f;
    for (int lane = 0; lane < 4; ++lane) {
        greatest = std::max(greatest, sum + peaks[lane]);
        sum += sums[lane];
    }
    int rest = from + 4 * length;
    if (!isfinite(sum)) {
        sum = greatest = 0.0f;
        rest = from;
    }
    for (int k = rest; k < to; ++k)
        step(samples[k], sum, greatest);
    return greatest;
}

// ---- Searches

constexpr int SamplesPerSearch = 64;

/// Some of the SamplesPerSearch samples pass the test. Those `ahead` of them are fetched.
template <typename Test>
bool HasHit(const float* samples, Test test, int ahead) {
    for (int i = 0; i < SamplesPerSearch; i += SamplesPerFetch)
        FetchAhead(samples + i, ahead);
    FourInts hits = {};
    for (int i = 0; i < SamplesPerSearch; i += 4)
        hits |= test(LoadFour(samples + i));
    return IsAnySet(hits);
}

/// The first index from `from` up to, but without, `to` whose sample passes the test; `to`, or
/// `from` if that is greater, if there is none.
template <typename Test>
int FindFirst(const float* samples, int from, int to, Test test) {
    int k = from;
    while (to - k >= SamplesPerSearch && !HasHit(samples + k, test, SamplesAhead))
        k += SamplesPerSearch;
    while (k < to && !test(samples[k]))
        ++k;
    return k;
}

/// The last index from `from` down to `lowest` whose sample passes the test; the one below
/// `lowest`, or `from` if that is less, if there is none.
template <typename Test>
int FindLast(const float* samples, int from, int lowest, Test test) {
    constexpr int Back = SamplesPerSearch - 1;
    int k = from;
    while (k - lowest >= Back && !HasHit(samples + k - Back, test, -SamplesAhead))
        k -= SamplesPerSearch;
    while (k >= lowest && !test(samples[k]))
        --k;
    return k;
}

// ---- Extrema

struct SampleRange {
    float m_Min = INFINITY;
    float m_Max = -INFINITY;
    bool m_HasNaN = false;  ///< NaNs are passed over
};

/// Least and greatest of the samples. Of a zero the sign may be that of any zero among them.
inline SampleRange RangeOf(const float* samples, int count) {
    constexpr int Stride = SamplesPerFetch;
    constexpr int Vectors = Stride / 4;
    SampleRange range;
    FourFloats least[Vectors];
    FourFloats greatest[Vectors];
    FourInts unordered = {};
    for (int v = 0; v < Vectors; ++v) {
        least[v] = FourFloats{} + range.m_Min;
        greatest[v] = FourFloats{} + range.m_Max;
    }
    int k = 0;
    for (; count - k >= Stride; k += Stride) {
        FetchAhead(samples + k, SamplesAhead);
        for (int v = 0; v < Vectors; ++v) {
            const FourFloats values = LoadFour(samples + k + ptrdiff_t{4} * v);
            least[v] = values < least[v] ? values : least[v];
            greatest[v] = values > greatest[v] ? values : greatest[v];
            unordered |= values != values;
        }
    }
    range.m_HasNaN = IsAnySet(unordered);
    for (int v = 0; v < Vectors; ++v) {
        for (int l = 0; l < 4; ++l) {
            range.m_Min = std::min(range.m_Min, float{least[v][l]});
            range.m_Max = std::max(range.m_Max, float{greatest[v][l]});
        }
    }
    for (; k < count; ++k) {
        const float sample = samples[k];
        if (sample < range.m_Min) range.m_Min = sample;
        if (sample > range.m_Max) range.m_Max = sample;
        if (isnan(sample)) range.m_HasNaN = true;
    }
    return range;
}
