#pragma once

#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

namespace readers {

/// Divides polygons into triangles: a fan where the polygon is convex, otherwise ears cut off in its plane.
/// The work on one file is bounded: a polygon beyond the bound becomes a fan and is counted.
class PolygonTriangulator
{
public:
    /// Appends the corner numbers (0 is the first of the points) of points.size() - 2 triangles that wind as
    /// the polygon does. The points are finite, the plane is the one that fits the polygon best; nothing
    /// happens for fewer than three points.
    void triangulate(const std::vector<glm::dvec3>& points, std::vector<std::uint32_t>& triangles);
    /// Polygons that became fans because dividing them would take too long.
    std::size_t getFannedCount() const { return m_fannedCount; }
    /// Counts one that somebody else made a fan of.
    void countFan() { ++m_fannedCount; }

private:
    struct Corner
    {
        glm::dvec2 point;
        std::uint32_t previous;
        std::uint32_t next;
    };
    void flatten(const std::vector<glm::dvec3>& points);
    bool isConvex() const;
    double turnAt(std::uint32_t corner) const;
    bool isEar(std::uint32_t corner);
    void findReflexCorners();
    void cut(std::uint32_t corner, std::vector<std::uint32_t>& triangles);
    void cutEars(std::vector<std::uint32_t>& triangles);

    std::vector<Corner> m_corners;
    std::vector<std::uint32_t> m_reflex; // corners that turned inwards at first; only these can lie in an ear
    std::int64_t m_stepsLeft = 100'000'000;
    std::size_t m_fannedCount = 0;
};

} // namespace readers
