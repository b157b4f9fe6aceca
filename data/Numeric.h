/// Arithmetic that the data objects share. Everything is plain IEEE arithmetic, single precision
/// unless a type says otherwise, in the order in which it is written.
#pragma once

#include <limits.h>
#include <math.h>

#include <algorithm>
#include <concepts>

/// Truncated towards zero. What doesn't fit saturates; a NaN gives 0.
template <std::floating_point Float>
int SaturatedInt(Float value) {
    constexpr Float Limit = 2147483648.0f;
    if (isnan(value)) return 0;
    if (value >= Limit) return INT_MAX;
    if (value < -Limit) return INT_MIN;
    return static_cast<int>(value);
}

/// The greatest integer not above `value`, saturated likewise.
inline int FloorToInt(float value) { return SaturatedInt(floorf(value)); }

/// The greater magnitude of two extrema.
inline float GreaterMagnitude(float a, float b) { return std::max(fabsf(a), fabsf(b)); }

/// A magnitude that is told from zero; smaller ones take the scale unit of 1e-30.
inline bool IsScalable(float magnitude) { return static_cast<double>(magnitude) >= 1e-30; }

/// The decimal step size that fits a range of values up to `magnitude`: 5, 2 or 1 times a power of
/// ten below it. For 7 it is 1, for 3 it is 0.5, for 1.5 it is 0.2. An infinite range has an
/// infinite unit.
inline float ScaleUnitOf(float magnitude) {
    constexpr float Log2Of10 = 3.321928f;
    float range = 1e-30f;
    int decade = -30;
    if (IsScalable(magnitude)) {
        range = magnitude;
        decade = SaturatedInt(log10(static_cast<double>(range)));
        if (range < 1.0f) --decade;
    }
    const float unit = exp2f(static_cast<float>(decade) * Log2Of10);
    const int steps = SaturatedInt(range / unit);
    if (steps >= 2 && steps <= 4) return unit * 0.5f;
    if (steps == 0 || steps == 1) return unit * 0.2f;
    return unit;
}
