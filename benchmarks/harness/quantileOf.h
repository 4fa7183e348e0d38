#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

/// The value below which this share (0 to 1) of the values lies, between two of them in proportion; 0.5: the
/// median. 0 without values.
inline double quantileOf(std::vector<double> values, double share)
{
    if (values.empty()) return 0.0;
    std::sort(values.begin(), values.end());
    const double place = share * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(std::floor(place));
    const std::size_t above = std::min(below + 1, values.size() - 1);
    const double part = place - static_cast<double>(below);
    return values[below] + part * (values[above] - values[below]);
}
