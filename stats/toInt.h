#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

/// `value` as an int, held at the ends of its range.
constexpr int toInt(std::int64_t value)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// `value` truncated toward zero, held at the ends of the range of an int. `value` is not a NaN.
constexpr int toInt(double value)
{
    return static_cast<int>(
        std::clamp<double>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}
