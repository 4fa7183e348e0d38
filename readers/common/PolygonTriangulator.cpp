#include <readers/common/PolygonTriangulator.h>

#include <cmath>

namespace readers {

namespace {

double cross(const glm::dvec2& a, const glm::dvec2& b)
{
    return a.x * b.y - a.y * b.x;
}

// Twice the area vector: the plane that fits best has this normal.
glm::dvec3 areaVector(const std::vector<glm::dvec3>& points)
{
    glm::dvec3 sum(0.0);
    for (std::size_t i = 1; i + 1 < points.size(); ++i)
        sum += glm::cross(points[i] - points[0], points[i + 1] - points[0]);
    return sum;
}

} // namespace

void PolygonTriangulator::triangulate(const std::vector<glm::dvec3>& points,
                                      std::vector<std::uint32_t>& triangles)
{
    const auto count = static_cast<std::uint32_t>(points.size());
    if (count < 3) return;
    if (count > 3) {
        flatten(points);
        if (!isConvex()) {
            findReflexCorners();
            cutEars(triangles);
            return;
        }
    }
    for (std::uint32_t i = 1; i + 1 < count; ++i)
        triangles.insert(triangles.end(), {0, i, i + 1});
}

// Leaves out the coordinate in which the plane is steepest; the rest winds counter-clockwise.
void PolygonTriangulator::flatten(const std::vector<glm::dvec3>& points)
{
    const glm::dvec3 normal = areaVector(points);
    const glm::dvec3 size = glm::abs(normal);
    int u = 0;
    int v = 1;
    double sign = normal.z;
    if (size.x >= size.y && size.x >= size.z) {
        u = 1;
        v = 2;
        sign = normal.x;
    } else if (size.y >= size.z) {
        u = 2;
        v = 0;
        sign = normal.y;
    }
    if (sign < 0.0) std::swap(u, v);
    const auto count = static_cast<std::uint32_t>(points.size());
    m_corners.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const glm::dvec3 p = points[i] - points[0];
        m_corners[i] = {{p[u], p[v]}, i == 0 ? count - 1 : i - 1, i + 1 == count ? 0 : i + 1};
    }
}

double PolygonTriangulator::turnAt(std::uint32_t corner) const
{
    const Corner& c = m_corners[corner];
    return cross(c.point - m_corners[c.previous].point, m_corners[c.next].point - c.point);
}

// Turns left everywhere, and once round only: then its edges change between left and right twice.
bool PolygonTriangulator::isConvex() const
{
    int changes = 0;
    double lastDirection = 0.0;
    double firstDirection = 0.0;
    for (std::uint32_t i = 0; i < m_corners.size(); ++i) {
        if (turnAt(i) < 0.0) return false;
        const double direction = m_corners[m_corners[i].next].point.x - m_corners[i].point.x;
        if (direction == 0.0) continue;
        if (direction * lastDirection < 0.0) ++changes;
        if (firstDirection == 0.0) firstDirection = direction;
        lastDirection = direction;
    }
    if (firstDirection * lastDirection < 0.0) ++changes;
    return changes <= 2;
}

void PolygonTriangulator::findReflexCorners()
{
    m_reflex.clear();
    for (std::uint32_t i = 0; i < m_corners.size(); ++i) {
        if (turnAt(i) <= 0.0) m_reflex.push_back(i);
    }
}

bool PolygonTriangulator::isEar(std::uint32_t corner)
{
    if (turnAt(corner) <= 0.0) return false;
    const glm::dvec2 a = m_corners[m_corners[corner].previous].point;
    const glm::dvec2 b = m_corners[corner].point;
    const glm::dvec2 c = m_corners[m_corners[corner].next].point;
    for (std::uint32_t other : m_reflex) {
        --m_stepsLeft;
        const glm::dvec2 p = m_corners[other].point;
        if (p == a || p == b || p == c) continue; // where a polygon touches itself
        if (cross(b - a, p - a) >= 0.0 && cross(c - b, p - b) >= 0.0 && cross(a - c, p - c) >= 0.0) {
            // a corner that was cut off already is none any more
            if (m_corners[m_corners[other].next].previous == other) return false;
        }
    }
    return true;
}

void PolygonTriangulator::cut(std::uint32_t corner, std::vector<std::uint32_t>& triangles)
{
    const Corner c = m_corners[corner];
    triangles.insert(triangles.end(), {c.previous, corner, c.next});
    m_corners[c.previous].next = c.next;
    m_corners[c.next].previous = c.previous;
}

void PolygonTriangulator::cutEars(std::vector<std::uint32_t>& triangles)
{
    std::size_t left = m_corners.size();
    std::size_t misses = 0; // corners in a row that were no ears
    std::uint32_t corner = 0;
    while (left > 3 && m_stepsLeft > 0) {
        --m_stepsLeft;
        // where a polygon crosses itself there may be no ear: it goes on with what is flat, then with any
        // corner
        const bool cuts = isEar(corner) || (misses > left && turnAt(corner) == 0.0) || misses > 2 * left;
        const std::uint32_t next = m_corners[corner].next;
        if (!cuts) {
            ++misses;
            corner = next;
            continue;
        }
        cut(corner, triangles);
        --left;
        misses = 0;
        corner = m_corners[next].next;
    }
    if (left > 3) ++m_fannedCount;
    const std::uint32_t first = m_corners[corner].previous;
    for (std::uint32_t i = corner; m_corners[i].next != first; i = m_corners[i].next)
        triangles.insert(triangles.end(), {first, i, m_corners[i].next});
}

} // namespace readers
