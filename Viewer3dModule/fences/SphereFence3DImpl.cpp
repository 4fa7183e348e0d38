#include <Viewer3dModule/fences/SphereFence3DImpl.h>

#include <Viewer3dModule/fences/fence_box.h>

namespace {

std::optional<gmx::BoundingBox> boxOf(const SphereFence& fence, const glm::dmat4& modelToScene)
{
    if (fence.empty() || !(fence.getRadius() >= 0.0)) return gmx::BoundingBox();
    // the ball's points that go farthest along an axis of the scene lie in the direction of its row
    const glm::dmat3 rows = glm::transpose(glm::dmat3(modelToScene));
    std::vector<glm::dvec3> points;
    for (glm::length_t axis = 0; axis < 3; ++axis) {
        const double length = glm::length(rows[axis]);
        const glm::dvec3 way = length > 0.0 ? rows[axis] * (fence.getRadius() / length) : glm::dvec3(0.0);
        points.push_back(fence.getCenter() + way);
        points.push_back(fence.getCenter() - way);
    }
    return fenceBox(points, modelToScene);
}

} // namespace

SphereFence3DImpl::SphereFence3DImpl(const SphereFence& fence, const glm::dmat4& modelToScene)
    : m_fence(fence)
    , m_sceneToModel(glm::inverse(modelToScene))
    , m_box(boxOf(fence, modelToScene))
{
}

bool SphereFence3DImpl::contains(const glm::dvec3& point) const
{
    return m_fence.contains(glm::dvec3(m_sceneToModel * glm::dvec4(point, 1.0)));
}
