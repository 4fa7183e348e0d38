#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QString>
#include <glm/glm.hpp>

#include <array>
#include <cstdint>
#include <vector>

namespace ksp {
class StagedProgress;
}

namespace surf {

/// Three vertices of a CSurface, by number, counter-clockwise as seen from the side to which the surface's
/// normal points.
using Triangle = std::array<std::uint32_t, 3>;

/// A vertex that nobody gave: two edges cross there. It lies half on the one edge and half on the other.
struct Crossing
{
    /// The ends of the one edge and those of the other: vertices that were given, or earlier crossings.
    std::array<std::uint32_t, 4> sources;
    /// What each of them contributes to the position and to attributes; the sum is 1.
    std::array<double, 4> weights;
};

/// Appends an attribute's values at crossings to its values at the vertices that were given.
/// @param values  one vector of glm a vertex
template <class Vector>
void appendCrossings(const std::vector<Crossing>& crossings, std::vector<Vector>& values)
{
    using Scalar = typename Vector::value_type;
    values.reserve(values.size() + crossings.size());
    for (const Crossing& crossing : crossings) {
        Vector sum(Scalar(0));
        for (std::size_t i = 0; i < 4; ++i)
            sum += values[crossing.sources[i]] * static_cast<Scalar>(crossing.weights[i]);
        values.push_back(sum);
    }
}

/// A flat region in space that is divided into triangles.
///
/// Contours bound the region by the odd-even rule: a point belongs to it when a ray from it crosses the
/// contours an odd number of times. Holes, islands within them, contours that touch, repeat points or cross
/// one another and themselves need no order and no orientation. Contours close by themselves; a last point
/// that repeats the first one does no harm.
///
/// Positions are in any unit, in double precision; the work is done relative to an origin of its own, so that
/// geodetic coordinates lose nothing. Points that are not quite in a plane are divided as seen along the
/// normal.
///
/// Vertices have numbers: those that were given from 0 in the order of addVertex, those that were made at
/// crossings after them. Memory grows with the number of points and crossings, some 500 bytes each; time
/// does, too, times the number of edges that lie beside each other in the direction of the sweep: a smooth
/// ring of 120,000 points takes 0.2 s, one of as many needles half a minute. Needs no OpenGL; not
/// thread-safe, but several surfaces may be divided at the same time.
class HOSTFRAMEWORK_EXPORT CSurface
{
public:
    /// @param name  what messages call it, for instance the name of the element
    explicit CSurface(const QString& name = {});

    /// Adds a vertex and returns its number.
    std::uint32_t addVertex(double x, double y, double z);
    /// Moves a vertex that was given; what follows from that takes an update().
    void setVertex(std::uint32_t vertex, const glm::dvec3& position);
    /// Adds a contour through these vertices. One of fewer than three bounds nothing.
    void addContour(const std::vector<std::uint32_t>& vertices);

    /// How far from its true place a vertex may lie, where that is more than the rounding of double
    /// precision: for instance half the spacing of the single precision values that the positions come from.
    /// What is nearer to an edge than four times that touches it; a region that is nowhere wider than twice
    /// that is a line.
    void setPrecision(double precision);

    /// Finds the triangles. On failure there are none, and one line in the log names the surface and the
    /// reason: there is no contour of three points, a number is not finite, a contour names a vertex that is
    /// not there, all points lie on a line, or the edges cross too often.
    /// @param keepFlatTriangles  whether triangles without area stay, which join points on a line to their
    ///                           neighbours
    /// @param maximumCrossings   a region with more is refused; -1 for as many as memory can be spent on,
    ///                           100,000 and 16 a point, by an estimate
    /// @param progress           may be null. When it is canceled there are no triangles, and no line; the
    ///                           sweep itself is not interrupted.
    /// @return whether there is a division for update()
    bool createTriangulation(bool keepFlatTriangles, std::int64_t maximumCrossings,
                             const ksp::StagedProgress* progress);
    /// Works out what follows from the division and the positions: getPosition of crossings and getTriangles.
    /// After createTriangulation, and after setVertex. Returns whether there are triangles; where a division
    /// leaves none (a path there and back encloses nothing), a line in the log says so.
    bool update();

    /// Empty before update() and after a failure.
    const std::vector<Triangle>& getTriangles() const { return m_triangles; }
    /// The vertices from getGivenCount() on, in order; see also appendCrossings.
    const std::vector<Crossing>& getCrossings() const { return m_crossings; }
    /// Of vertices that were given.
    std::size_t getGivenCount() const { return m_givenCount; }
    /// Of all vertices: given ones and, after update(), crossings.
    std::size_t getVertexCount() const { return m_positions.size(); }
    /// Of any vertex.
    const glm::dvec3& getPosition(std::uint32_t vertex) const { return m_positions[vertex]; }
    /// Unit normal of the plane, to the side from which the first contour runs counter-clockwise; found by
    /// createTriangulation, null before.
    const glm::dvec3& getNormal() const { return m_normal; }

private:
    void dropDivision();
    bool fail(const QString& reason);
    QString findFault() const;
    bool findFrame();
    bool findNormal(const std::vector<glm::dvec3>& points);
    std::vector<glm::dvec3> localPositions() const;

    QString m_name;
    std::vector<glm::dvec3> m_positions;
    std::size_t m_givenCount = 0;
    std::vector<std::uint32_t> m_corners;   // of all contours, one contour after the other
    std::vector<std::size_t> m_contourEnds; // in m_corners
    double m_givenPrecision = 0.0;

    // local position = (position - origin) * scale: all within -2 to 2
    glm::dvec3 m_origin = glm::dvec3(0.0);
    double m_scale = 1.0;
    double m_tolerance = 0.0; // local: how far rounding moves things
    glm::dvec3 m_normal = glm::dvec3(0.0);

    bool m_isDivided = false;
    bool m_keepsFlatTriangles = false;
    std::vector<Triangle> m_division;
    std::vector<Crossing> m_crossings;
    std::vector<Triangle> m_triangles;
};

} // namespace surf
