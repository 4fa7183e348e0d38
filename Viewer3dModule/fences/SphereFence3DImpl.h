#pragma once

#include <Viewer3dModule/fences/SphereFence.h>

#include <framework/gmx/IFence3D.h>

/// A ball as the host's fence; in a scene whose axes are scaled by themselves it is an ellipsoid there. Made
/// by getIFence3D, which says what modelToScene is; keeps a copy of the fence.
class SphereFence3DImpl : public gmx::IFence3D
{
public:
    SphereFence3DImpl(const SphereFence& fence, const glm::dmat4& modelToScene);

    bool contains(const glm::dvec3& point) const override;
    std::optional<gmx::BoundingBox> getBoundingBox() const override { return m_box; }

private:
    SphereFence m_fence;
    glm::dmat4 m_sceneToModel;
    std::optional<gmx::BoundingBox> m_box;
};
