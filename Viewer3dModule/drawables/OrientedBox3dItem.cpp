#include <Viewer3dModule/drawables/OrientedBox3dItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>

#include <utility>

namespace {

// A walk along all edges, from the corner where all signs are positive: a step to the other end of the edge
// along this axis. Around the top with a look down at each corner, down, around the bottom, up, and around
// the top again.
constexpr int walk[] = {2, 2, 0, 2, 2, 1, 2, 2, 0, 2, 2, 1, 2, 0, 1, 0, 1, 2, 0, 1, 0, 1};

} // namespace

OrientedBox3dItem::OrientedBox3dItem()
    : Polyline3dForegroundItem(DrawerType::WideLines, {})
{
    setDrawsByPrimitives(true);
}

OrientedBox3dItem::OrientedBox3dItem(const glm::dvec3& center, const Axes& axes, const Extent& extent)
    : OrientedBox3dItem()
{
    reset(center, axes, extent);
}

void OrientedBox3dItem::reset(const glm::dvec3& center, const Axes& axes, const Extent& extent)
{
    m_center = center;
    m_axes = axes;
    m_extent = extent;
    updatePoints();
}

void OrientedBox3dItem::setCenter(const glm::dvec3& center)
{
    m_center = center;
    updatePoints();
}

void OrientedBox3dItem::setAxis(const Axes& axes)
{
    m_axes = axes;
    updatePoints();
}

void OrientedBox3dItem::setExtent(const Extent& extent)
{
    m_extent = extent;
    updatePoints();
}

void OrientedBox3dItem::updatePoints()
{
    Axes half;
    for (std::size_t axis = 0; axis < half.size(); ++axis)
        half[axis] = m_axes[axis] * m_extent[axis];
    // Each edge is walked there and back by the same step with the other sign.
    std::array<double, 3> sign = {-2.0, -2.0, -2.0};
    std::vector<glm::dvec3> points = {m_center + half[0] + half[1] + half[2]};
    for (const int step : walk) {
        const auto axis = static_cast<std::size_t>(step);
        points.push_back(points.back() + sign[axis] * half[axis]);
        sign[axis] = -sign[axis];
    }
    setPoints(std::move(points));
}

gmx::BoundingBox OrientedBox3dItem::getBoundingBox() const
{
    gmx::BoundingBox box;
    for (const glm::dvec3& point : getPoints())
        box.unite(point);
    return box;
}
