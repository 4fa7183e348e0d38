#pragma once

namespace math_utils {

constexpr double pi = 3.14159265358979323846;

/// Degrees to radians.
constexpr double toRadian(double degrees)
{
    return degrees * pi / 180.0;
}

/// Radians to degrees.
constexpr double toDegree(double radians)
{
    return radians * 180.0 / pi;
}

} // namespace math_utils
