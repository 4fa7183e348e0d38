#include <framework/surf/ContourJoiner.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace surf {

ContourJoiner::ContourJoiner(const std::vector<glm::dvec2>& points, double tolerance)
    : m_points(points)
    , m_tolerance(tolerance)
{
}

void ContourJoiner::join(std::vector<std::uint32_t>& corners, std::vector<std::size_t>& ends)
{
    constexpr std::int64_t stepsPerCorner = 1000;
    mergeCorners(corners);
    makeGrid(corners);
    m_stepsLeft = stepsPerCorner * static_cast<std::int64_t>(corners.size());
    const std::size_t room = 4 * corners.size() + 1000;
    std::vector<std::uint32_t> joined;
    joined.reserve(corners.size());
    std::size_t begin = 0;
    for (std::size_t& end : ends) {
        for (std::size_t i = begin; i < end; ++i) {
            const std::uint32_t from = corners[i];
            const std::uint32_t to = corners[i + 1 < end ? i + 1 : begin];
            if (from == to) continue;
            joined.push_back(from);
            m_found.clear();
            if (m_stepsLeft > 0 && joined.size() < room) findOnEdge(from, to);
            for (const OnEdge& found : m_found)
                joined.push_back(found.vertex);
        }
        begin = end;
        end = joined.size();
    }
    corners = std::move(joined);
}

// Each corner becomes the first one that is in its place: the plane has square cells of twice the tolerance,
// and what is near lies in the same cell or a neighbour.
void ContourJoiner::mergeCorners(std::vector<std::uint32_t>& corners) const
{
    const double cell = 2.0 * m_tolerance;
    const auto keyOf = [](double column, double row) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(column)) * 0x9E3779B97F4A7C15u ^
               static_cast<std::uint64_t>(static_cast<std::int64_t>(row));
    };
    std::unordered_map<std::uint64_t, std::uint32_t> firsts;
    firsts.reserve(corners.size());
    for (std::uint32_t& corner : corners) {
        const glm::dvec2 place = m_points[corner] / cell;
        const glm::dvec2 nearest = glm::round(place);
        bool isFound = false;
        for (const double column : {nearest.x - 1.0, nearest.x})
            for (const double row : {nearest.y - 1.0, nearest.y}) {
                if (isFound) break;
                const auto first = firsts.find(keyOf(column, row));
                if (first == firsts.end()) continue;
                const glm::dvec2 apart = glm::abs(m_points[first->second] - m_points[corner]);
                isFound = std::max(apart.x, apart.y) <= m_tolerance;
                if (isFound) corner = first->second;
            }
        if (!isFound) firsts.emplace(keyOf(std::floor(place.x), std::floor(place.y)), corner);
    }
}

std::size_t ContourJoiner::columnOf(double u) const
{
    return static_cast<std::size_t>(
        std::clamp((u - m_low.x) / m_cellSize.x, 0.0, static_cast<double>(m_sideCount - 1)));
}

std::size_t ContourJoiner::rowOf(double v) const
{
    return static_cast<std::size_t>(
        std::clamp((v - m_low.y) / m_cellSize.y, 0.0, static_cast<double>(m_sideCount - 1)));
}

// Sorts the vertices into about as many cells as there are.
void ContourJoiner::makeGrid(std::vector<std::uint32_t> corners)
{
    std::sort(corners.begin(), corners.end());
    corners.erase(std::unique(corners.begin(), corners.end()), corners.end());
    m_low = m_points[corners.front()];
    glm::dvec2 high = m_low;
    for (const std::uint32_t corner : corners) {
        m_low = glm::min(m_low, m_points[corner]);
        high = glm::max(high, m_points[corner]);
    }
    m_sideCount = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(corners.size()))));
    m_cellSize = glm::max((high - m_low) / static_cast<double>(m_sideCount), glm::dvec2(m_tolerance));
    const auto cellOf = [this](std::uint32_t vertex) {
        return rowOf(m_points[vertex].y) * m_sideCount + columnOf(m_points[vertex].x);
    };
    m_cellBegins.assign(m_sideCount * m_sideCount + 1, 0);
    for (const std::uint32_t corner : corners)
        ++m_cellBegins[cellOf(corner) + 1];
    for (std::size_t i = 1; i < m_cellBegins.size(); ++i)
        m_cellBegins[i] += m_cellBegins[i - 1];
    m_cellVertices.resize(corners.size());
    std::vector<std::uint32_t> filled(m_cellBegins.begin(), m_cellBegins.end() - 1);
    for (const std::uint32_t corner : corners)
        m_cellVertices[filled[cellOf(corner)]++] = corner;
}

// The vertices within an edge, in their order along it; found in the cells that it passes, row by row.
void ContourJoiner::findOnEdge(std::uint32_t from, std::uint32_t to)
{
    glm::dvec2 low = m_points[from];
    glm::dvec2 high = m_points[to];
    if (low.y > high.y) std::swap(low, high);
    const double slope = high.y > low.y ? (high.x - low.x) / (high.y - low.y) : 0.0;
    const double left = std::min(low.x, high.x);
    const double right = std::max(low.x, high.x);
    const std::size_t lastRow = rowOf(high.y + m_tolerance);
    for (std::size_t row = rowOf(low.y - m_tolerance); row <= lastRow; ++row) {
        double rowLeft = left;
        double rowRight = right;
        if (high.y - low.y > m_cellSize.y) { // else it is as wide as it is within one row
            const double bottom = m_low.y + m_cellSize.y * static_cast<double>(row);
            const double a = low.x + slope * (std::max(bottom, low.y) - low.y);
            const double b = low.x + slope * (std::min(bottom + m_cellSize.y, high.y) - low.y);
            const double margin = 0.01 * m_cellSize.x + m_tolerance * (1.0 + std::abs(slope));
            rowLeft = std::max(left, std::min(a, b) - margin);
            rowRight = std::min(right, std::max(a, b) + margin);
        }
        const std::size_t lastColumn = columnOf(rowRight + m_tolerance);
        for (std::size_t column = columnOf(rowLeft - m_tolerance); column <= lastColumn; ++column)
            look(row * m_sideCount + column, from, to);
    }
    std::sort(m_found.begin(), m_found.end(),
              [](const OnEdge& a, const OnEdge& b) { return a.along < b.along; });
}

void ContourJoiner::look(std::size_t cell, std::uint32_t from, std::uint32_t to)
{
    --m_stepsLeft;
    const glm::dvec2 edge = m_points[to] - m_points[from];
    const double length = glm::length(edge);
    for (std::uint32_t i = m_cellBegins[cell]; i < m_cellBegins[cell + 1] && m_stepsLeft > 0; ++i) {
        --m_stepsLeft;
        const std::uint32_t vertex = m_cellVertices[i];
        if (vertex == from || vertex == to) continue;
        const glm::dvec2 offset = m_points[vertex] - m_points[from];
        const double along = glm::dot(offset, edge) / length;
        const double aside = std::abs(edge.x * offset.y - edge.y * offset.x) / length;
        if (aside <= m_tolerance && along > 0.0 && along < length) m_found.push_back({along, vertex});
    }
}

} // namespace surf
