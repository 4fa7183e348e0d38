#include <Viewer3dModule/fences/FenceSides.h>

#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/PrismFence.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/fences/fence_polygon.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// By how much floats of the shaders may be off, of the numbers that they calculate with.
constexpr double roughness = 1e-5;
constexpr std::size_t mostPoints = 65;

double largestOf(const glm::dvec3& low, const glm::dvec3& high)
{
    const glm::dvec3 most = glm::max(glm::abs(low), glm::abs(high));
    return std::max({most.x, most.y, most.z});
}

} // namespace

std::optional<SweptFence> sweptFence(const Fence3DObject& fence)
{
    if (const auto* prism = dynamic_cast<const PrismFence*>(&fence))
        return SweptFence{prism->prism().matrix(), &prism->prism().fence(), 0.0, prism->prism().zFar(),
                          false};
    const auto* frustum = dynamic_cast<const Frustum3D*>(&fence);
    if (!frustum) return std::nullopt;
    const double scale = 1.0 / frustum->tanHalfFovy();
    return SweptFence{glm::scale(glm::dmat4(1.0), glm::dvec3(scale, scale, 1.0)) * frustum->fromWorldMatrix(),
                      &frustum->fence(), frustum->zNear(), frustum->zFar(), true};
}

FenceSides::FenceSides(const Fence3DObject& fence, const FenceBox& innerBox, const FenceBox& outerBox,
                       const glm::dmat4& sceneToModel)
    : m_inner(innerBox)
    , m_outer(outerBox)
{
    if (const std::optional<SweptFence> swept = sweptFence(fence)) {
        m_isSwept = true;
        m_fromScene = swept->fromModel * sceneToModel;
        if (swept->polygon->size() <= mostPoints) m_polygon = *swept->polygon;
        m_zNear = swept->zNear;
        m_zFar = swept->zFar;
        m_spreads = swept->spreads;
    } else if (const auto* sphere = dynamic_cast<const SphereFence*>(&fence)) {
        const glm::dmat4 modelToScene = glm::inverse(sceneToModel);
        m_center = glm::dvec3(modelToScene * glm::dvec4(sphere->getCenter(), 1.0));
        m_radius = std::copysign(
            glm::length(glm::dvec3(modelToScene * glm::dvec4(0.0, 0.0, sphere->getRadius(), 0.0))),
            sphere->getRadius());
    }
}

FenceSide FenceSides::sideOf(const gmx::BoundingBox& box) const
{
    if (!box.isValid()) return FenceSide::Across;
    return m_isSwept ? sideOfSweep(box) : sideOfSphere(box);
}

FenceSide FenceSides::sideOfSphere(const gmx::BoundingBox& box) const
{
    const glm::dvec3 low = box.getMin() - m_center, high = box.getMax() - m_center;
    const double margin = roughness * (largestOf(box.getMin(), box.getMax()) + largestOf(m_center, m_center));
    const double farthest = glm::length(glm::max(glm::abs(low), glm::abs(high)));
    const double nearest = glm::length(glm::max(glm::max(low, -high), glm::dvec3(0.0)));
    if (farthest < m_radius - margin) return FenceSide::Inside;
    return nearest > m_radius + margin ? FenceSide::Outside : FenceSide::Across;
}

FenceSide FenceSides::sideOfSweep(const gmx::BoundingBox& box) const
{
    glm::dvec3 low(std::numeric_limits<double>::infinity()), high(-low);
    double nearest = low.z, farthest = high.z;
    const glm::dmat3 turn(m_fromScene);
    const glm::dvec3 first(m_fromScene * glm::dvec4(box.getMin(), 1.0)), size = box.getSize();
    for (unsigned int i = 0; i < 8; ++i) {
        const glm::dvec3 step((i & 1u) != 0 ? size.x : 0.0, (i & 2u) != 0 ? size.y : 0.0,
                              (i & 4u) != 0 ? size.z : 0.0);
        glm::dvec3 corner = first + turn * step;
        nearest = std::min(nearest, corner.z);
        farthest = std::max(farthest, corner.z);
        if (m_spreads) corner /= corner.z;
        low = glm::min(low, corner);
        high = glm::max(high, corner);
    }
    const double margin = roughness * (std::max(std::abs(nearest), std::abs(farthest)) +
                                       glm::length(glm::dvec3(m_fromScene[3])));
    const bool hasEnd = m_zFar > m_zNear;
    const double begin = m_spreads ? std::max(m_zNear, 0.0) : m_zNear;
    if (farthest < begin - margin || (hasEnd && nearest > m_zFar + margin)) return FenceSide::Outside;
    if (m_spreads && nearest <= margin) return FenceSide::Across; // about the eye corners say nothing
    const double offset = glm::length(glm::dvec3(m_fromScene[3])) / (m_spreads ? nearest : 1.0);
    const FenceSide side = sideOfPolygon({glm::dvec2(low), glm::dvec2(high)}, offset);
    const bool isBetween = nearest > begin + margin && (!hasEnd || farthest < m_zFar - margin);
    return side == FenceSide::Inside && !isBetween ? FenceSide::Across : side;
}

FenceSide FenceSides::sideOfPolygon(const Rect& rect, double offset) const
{
    const glm::dvec2 most = glm::max(glm::abs(rect.low), glm::abs(rect.high));
    const glm::dvec2 reach = glm::max(glm::abs(glm::dvec2(m_outer.low)), glm::abs(glm::dvec2(m_outer.high)));
    const glm::dvec2 margin(roughness * (std::max(most.x, most.y) + std::max(reach.x, reach.y) + offset));
    const Rect larger{rect.low - margin, rect.high + margin};
    const auto isBelow = [](const glm::dvec2& a, const glm::dvec2& b) { return a.x < b.x || a.y < b.y; };
    if (isBelow(larger.high, glm::dvec2(m_outer.low)) || isBelow(glm::dvec2(m_outer.high), larger.low))
        return FenceSide::Outside;
    if (!isBelow(larger.low, glm::dvec2(m_inner.low)) && !isBelow(glm::dvec2(m_inner.high), larger.high))
        return FenceSide::Inside;
    if (m_polygon.empty() || meetsAnEdge(larger)) return FenceSide::Across;
    const bool isInside = fence_polygon::contains(m_polygon, 0.5 * (rect.low + rect.high));
    return isInside ? FenceSide::Inside : FenceSide::Outside;
}

bool FenceSides::meetsAnEdge(const Rect& rect) const
{
    const glm::dvec2 center = 0.5 * (rect.low + rect.high), half = 0.5 * (rect.high - rect.low);
    for (std::size_t i = 1; i < m_polygon.size(); ++i) {
        const glm::dvec2 a = glm::dvec2(m_polygon[i - 1]) - center, b = glm::dvec2(m_polygon[i]) - center;
        if (std::min(a.x, b.x) > half.x || std::max(a.x, b.x) < -half.x || std::min(a.y, b.y) > half.y ||
            std::max(a.y, b.y) < -half.y)
            continue;
        const glm::dvec2 edge = b - a;
        const double off = std::abs(a.x * edge.y - a.y * edge.x);
        if (off <= half.x * std::abs(edge.y) + half.y * std::abs(edge.x)) return true;
    }
    return false;
}
