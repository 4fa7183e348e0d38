#include <Viewer3dModule/fences/fence_inner_box.h>

#include <Viewer3dModule/fences/fence_polygon.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

/// Cells each way over the polygon's box.
constexpr int count = 32;

/// Which cells lie in the polygon, untouched by its edges.
class CellGrid
{
public:
    explicit CellGrid(const std::vector<glm::vec2>& polygon)
        : m_low(fenceOuterBox(polygon).low)
        , m_cell((glm::dvec2(fenceOuterBox(polygon).high) - m_low) / double(count))
    {
        for (std::size_t i = 0; i + 1 < polygon.size(); ++i)
            touch(polygon[i], polygon[i + 1]);
        for (int y = 0; y < count; ++y)
            for (int x = 0; x < count; ++x) {
                if (at(x, y) == Touched) continue;
                // no edge parts it from an untouched neighbour
                if (x > 0 && at(x - 1, y) != Touched)
                    at(x, y) = at(x - 1, y);
                else
                    at(x, y) = fence_polygon::contains(polygon, centerOf(x, y)) ? Inside : Outside;
            }
    }

    /// The largest box of cells that lie inside: for each row of lower ends, as high as its columns reach.
    FenceBox largestBox() const
    {
        FenceBox best;
        int most = 0;
        std::array<int, count> height{};
        for (int y = 0; y < count; ++y) {
            for (int x = 0; x < count; ++x)
                height[std::size_t(x)] = at(x, y) == Inside ? height[std::size_t(x)] + 1 : 0;
            for (int from = 0; from < count; ++from) {
                int lowest = count;
                for (int to = from; to < count; ++to) {
                    lowest = std::min(lowest, height[std::size_t(to)]);
                    if (lowest * (to - from + 1) <= most) continue;
                    most = lowest * (to - from + 1);
                    best = {cornerOf(from, y - lowest + 1), cornerOf(to + 1, y + 1)};
                }
            }
        }
        return best;
    }

private:
    enum State : char { Unknown, Touched, Inside, Outside };

    State& at(int x, int y) { return m_cells[std::size_t(y * count + x)]; }
    State at(int x, int y) const { return m_cells[std::size_t(y * count + x)]; }
    glm::dvec2 cornerOf(int x, int y) const { return m_low + m_cell * glm::dvec2(x, y); }
    glm::dvec2 centerOf(int x, int y) const { return m_low + m_cell * (glm::dvec2(x, y) + 0.5); }

    void touch(const glm::dvec2& from, const glm::dvec2& to)
    {
        const glm::dvec2 a = (from - m_low) / m_cell, b = (to - m_low) / m_cell; // in cells
        const auto first = [](double one, double other) {
            return std::clamp(int(std::floor(std::min(one, other) - slack)), 0, count - 1);
        };
        const auto last = [](double one, double other) {
            return std::clamp(int(std::floor(std::max(one, other) + slack)), 0, count - 1);
        };
        const glm::dvec2 way = b - a;
        const double reach = (0.5 + slack) * (std::abs(way.x) + std::abs(way.y));
        for (int y = first(a.y, b.y); y <= last(a.y, b.y); ++y)
            for (int x = first(a.x, b.x); x <= last(a.x, b.x); ++x) {
                const glm::dvec2 center = glm::dvec2(x, y) + 0.5 - a;
                if (std::abs(way.x * center.y - way.y * center.x) <= reach) at(x, y) = Touched;
            }
    }

    static constexpr double slack = 1e-3; // of a cell: more than corners are rounded by
    glm::dvec2 m_low;
    glm::dvec2 m_cell;
    std::array<State, count * count> m_cells{};
};

} // namespace

FenceBox fenceOuterBox(const std::vector<glm::vec2>& polygon)
{
    if (polygon.empty()) return {};
    FenceBox box{polygon.front(), polygon.front()};
    for (const glm::vec2& point : polygon) {
        box.low = glm::min(box.low, point);
        box.high = glm::max(box.high, point);
    }
    return box;
}

FenceBox fenceInnerBox(const std::vector<glm::vec2>& polygon)
{
    const FenceBox outer = fenceOuterBox(polygon);
    const glm::vec2 size = outer.high - outer.low;
    const bool hasArea = size.x > 0.0f && size.y > 0.0f && std::isfinite(size.x) && std::isfinite(size.y);
    return hasArea ? CellGrid(polygon).largestBox() : FenceBox();
}
