#pragma once

#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

namespace surf {

/// Joins contours where they touch: points as good as in one place become one, and an edge that passes
/// through a point gets a corner there. A plane sweep needs that, because rounding decides on which side of
/// an edge such a point lies, and otherwise for each edge anew.
///
/// Time and memory grow with the number of corners: where more would have to be done, as with contours that
/// lie upon themselves over and over, the rest stays as it is.
class ContourJoiner
{
public:
    /// @param points     where each vertex lies in the plane; the joiner keeps a reference
    /// @param tolerance  how far apart things are that touch
    ContourJoiner(const std::vector<glm::dvec2>& points, double tolerance);

    /// Replaces the contours.
    /// @param corners  numbers of points, one contour after the other
    /// @param ends     where each contour ends in corners
    void join(std::vector<std::uint32_t>& corners, std::vector<std::size_t>& ends);

private:
    struct OnEdge
    {
        double along; // from the edge's beginning
        std::uint32_t vertex;
    };
    void mergeCorners(std::vector<std::uint32_t>& corners) const;
    void makeGrid(std::vector<std::uint32_t> corners);
    std::size_t columnOf(double u) const;
    std::size_t rowOf(double v) const;
    void findOnEdge(std::uint32_t from, std::uint32_t to);
    void look(std::size_t cell, std::uint32_t from, std::uint32_t to);

    const std::vector<glm::dvec2>& m_points;
    double m_tolerance;

    // vertices by cells, row by row
    glm::dvec2 m_low = glm::dvec2(0.0);
    glm::dvec2 m_cellSize = glm::dvec2(1.0);
    std::size_t m_sideCount = 1; // cells a row, and rows
    std::vector<std::uint32_t> m_cellBegins;
    std::vector<std::uint32_t> m_cellVertices;

    std::vector<OnEdge> m_found; // of the edge at hand
    std::int64_t m_stepsLeft = 0;
};

} // namespace surf
