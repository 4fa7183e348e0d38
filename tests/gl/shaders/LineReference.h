#pragma once

#include <QtGui/QColor>
#include <glm/glm.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

/// Lines on screen, worked out on the processor in doubles. Pixels are counted from the top left of a picture
/// of 64 x 64, y down.
namespace line_reference {

const double pi = std::acos(-1.0);

using Point = glm::dvec2;

inline const glm::vec4 orange(1.0f, 0.6f, 0.0f, 1.0f);
inline const QColor orangeColor(255, 153, 0);

inline Point toPixels(const glm::dvec4& clip)
{
    return {(clip.x / clip.w + 1.0) * 32.0, (1.0 - clip.y / clip.w) * 32.0};
}

/// The six corners of a wide line's hexagon, in order round it, from its ends in pixels.
inline std::vector<Point> hexagon(const Point& from, const Point& to, double width)
{
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const Point along = length < 1.0 ? Point(0, 1) : (to - from) / length;
    const Point across(along.y, -along.x);
    const double half = width / 2.0;
    return {from - half * along, from + half * across, to + half * across,
            to + half * along,   to - half * across,   from - half * across};
}

/// The distance of a point from the nearest edge of a convex polygon, positive inside.
inline double depthInside(const std::vector<Point>& polygon, const Point& p)
{
    double area = 0.0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point& a = polygon[i];
        const Point& b = polygon[(i + 1) % polygon.size()];
        area += a.x * b.y - b.x * a.y;
    }
    double least = 1e9;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point& a = polygon[i];
        const Point edge = polygon[(i + 1) % polygon.size()] - a;
        const double length = std::hypot(edge.x, edge.y);
        if (length < 1e-9) continue;
        const double distance = (edge.x * (p.y - a.y) - edge.y * (p.x - a.x)) / length;
        least = std::min(least, area > 0 ? distance : -distance);
    }
    return least;
}

} // namespace line_reference
