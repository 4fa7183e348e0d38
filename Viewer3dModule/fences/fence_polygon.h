#pragma once

#include <glm/glm.hpp>

#include <cmath>
#include <vector>

namespace ksp {
class CQtArchive;
}

/// What the fences that sweep a polygon into depth have in common: the polygon. It lies in a plane of the
/// fence's own and is stored closed, its last point repeating its first.
namespace fence_polygon {

using Points = std::vector<glm::vec2>;

template <glm::length_t size, typename Number>
bool isFinite(const glm::vec<size, Number>& v)
{
    for (glm::length_t i = 0; i < size; ++i)
        if (!std::isfinite(v[i])) return false;
    return true;
}

/// Whether the points are a closed polygon: more than 3 of them, the last the same as the first.
template <typename Point>
bool isClosed(const std::vector<Point>& points)
{
    return points.size() > 3 && points.front() == points.back();
}

/// Whether this is a polygon that a fence can have: none, or a closed one of finite numbers.
bool isAllowed(const Points& polygon);

/// The even-odd rule: whether a ray from the point towards +x crosses the polygon's edges an odd number of
/// times. An edge counts when exactly one of its ends lies above the point and the point lies strictly left
/// of it. So of two polygons that share an edge exactly one contains a point on it; an axis-parallel
/// rectangle contains its left and lower edge without their upper and right ends, and nothing of the other
/// two. Areas that a self-crossing polygon winds round twice are outside. An edge takes the same decision
/// whichever way it runs. False for a point with a NaN. The time is proportional to the number of points.
bool contains(const Points& polygon, const glm::dvec2& point);
/// The same for a place that is given in floats. A function of its own: compilers have been seen to leave out
/// the way of two doubles through floats and back when both ends are in sight.
bool contains(const Points& polygon, const glm::vec2& point);

/// Reads or writes the number of points (32 bits) and their coordinates (floats).
void serialize(ksp::CQtArchive& archive, Points& polygon);

} // namespace fence_polygon
