#include <Viewer3dModule/fences/fence_polygon.h>

#include <framework/ksp/CQtArchive.h>

#include <algorithm>
#include <utility>

namespace fence_polygon {
namespace {

/// Whether the point lies strictly left of the edge, whose ends are above and not above the point. Without a
/// division: for a point of floats the products are exact.
bool isLeftOf(const glm::dvec2& point, const glm::dvec2& lower, const glm::dvec2& upper)
{
    const glm::dvec2 edge = upper - lower;
    return (point.x - lower.x) * edge.y < edge.x * (point.y - lower.y);
}

} // namespace

bool isAllowed(const Points& polygon)
{
    const auto isFinitePoint = [](const glm::vec2& point) { return isFinite(point); };
    return polygon.empty() ||
           (isClosed(polygon) && std::all_of(polygon.begin(), polygon.end(), isFinitePoint));
}

bool contains(const Points& polygon, const glm::dvec2& point)
{
    if (polygon.empty()) return false;
    bool inside = false;
    glm::dvec2 previous(polygon.back());
    for (const glm::dvec2 current : polygon) {
        const bool rises = current.y > point.y;
        if (rises != (previous.y > point.y) &&
            (rises ? isLeftOf(point, previous, current) : isLeftOf(point, current, previous)))
            inside = !inside;
        previous = current;
    }
    return inside;
}

bool contains(const Points& polygon, const glm::vec2& point)
{
    return contains(polygon, glm::dvec2(point));
}

void serialize(ksp::CQtArchive& archive, Points& polygon)
{
    static_assert(sizeof(glm::vec2) == 8, "points are stored as blocks of two floats");
    if (archive.isLoading())
        polygon.resize(archive.readCount(sizeof(glm::vec2)));
    else
        archive.writeUInt(static_cast<std::uint32_t>(polygon.size()));
    archive.block(polygon.data(), polygon.size() * sizeof(glm::vec2));
}

} // namespace fence_polygon
