#pragma once

#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/Prism3D.h>

#include <framework/gmx/IFence3D.h>

#include <variant>

/// A polygon swept into depth, along lines of sight or parallels, as the host's fence. Made by getIFence3D,
/// which says what modelToScene is; keeps a copy of the fence.
class PrismFence3DImpl : public gmx::IFence3D
{
public:
    PrismFence3DImpl(const Frustum3D& fence, const glm::dmat4& modelToScene);
    PrismFence3DImpl(const Prism3D& fence, const glm::dmat4& modelToScene);

    bool contains(const glm::dvec3& point) const override;
    std::optional<gmx::BoundingBox> getBoundingBox() const override { return m_box; }

private:
    std::variant<Frustum3D, Prism3D> m_fence;
    glm::dmat4 m_sceneToModel;
    std::optional<gmx::BoundingBox> m_box;
};
