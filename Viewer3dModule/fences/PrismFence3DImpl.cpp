#include <Viewer3dModule/fences/PrismFence3DImpl.h>

#include <Viewer3dModule/fences/fence_box.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

/// By how much rounding to floats can move a coordinate, with as much again to spare.
float roundingOf(float coordinate)
{
    return std::abs(coordinate) * std::numeric_limits<float>::epsilon() + std::numeric_limits<float>::min();
}

/// The world points at the depth to which the corners of the frustum's polygon can be moved when points on
/// the screen are rounded to floats.
void addRoundedFence(std::vector<glm::dvec3>& points, const Frustum3D& fence, double depth)
{
    const glm::dmat4 toWorld = glm::inverse(fence.fromWorldMatrix());
    for (const glm::vec2& corner : fence.fence()) {
        const glm::dvec2 far(roundingOf(corner.x), roundingOf(corner.y));
        for (const glm::dvec2 way : {far, glm::dvec2(far.x, -far.y), glm::dvec2(-far.x, far.y), -far}) {
            const glm::dvec2 xy = (glm::dvec2(corner) + way) * (depth * fence.tanHalfFovy());
            points.emplace_back(toWorld * glm::dvec4(xy, depth, 1.0));
        }
    }
}

std::optional<gmx::BoundingBox> boxOf(const Frustum3D& fence, const glm::dmat4& modelToScene)
{
    if (fence.empty()) return gmx::BoundingBox();
    if (!(fence.zFar() > fence.zNear())) return std::nullopt;
    std::vector<glm::dvec3> points;
    addRoundedFence(points, fence, fence.zNear());
    addRoundedFence(points, fence, fence.zFar());
    return fenceBox(points, modelToScene);
}

std::optional<gmx::BoundingBox> boxOf(const Prism3D& fence, const glm::dmat4& modelToScene)
{
    if (fence.empty()) return gmx::BoundingBox();
    if (!(fence.zFar() > 0.0)) return std::nullopt;
    std::vector<glm::dvec3> points = fence.getNearFence();
    const std::vector<glm::dvec3> top = fence.getFarFence();
    points.insert(points.end(), top.begin(), top.end());
    return fenceBox(points, modelToScene);
}

} // namespace

PrismFence3DImpl::PrismFence3DImpl(const Frustum3D& fence, const glm::dmat4& modelToScene)
    : m_fence(fence)
    , m_sceneToModel(glm::inverse(modelToScene))
    , m_box(boxOf(fence, modelToScene))
{
}

PrismFence3DImpl::PrismFence3DImpl(const Prism3D& fence, const glm::dmat4& modelToScene)
    : m_fence(fence)
    , m_sceneToModel(glm::inverse(modelToScene))
    , m_box(boxOf(fence, modelToScene))
{
}

bool PrismFence3DImpl::contains(const glm::dvec3& point) const
{
    const glm::dvec3 inModel(m_sceneToModel * glm::dvec4(point, 1.0));
    return std::visit([&inModel](const auto& fence) { return fence.contains(inModel); }, m_fence);
}
