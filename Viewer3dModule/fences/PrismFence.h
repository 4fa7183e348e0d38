#pragma once

#include <Viewer3dModule/fences/Fence3DObject.h>
#include <Viewer3dModule/fences/Prism3D.h>

/// A prism as the fence of a view.
///
/// A kind of its own beside the frustum, because no frustum is a prism: lines of sight meet in an eye, and
/// one far enough away to pass for parallels leaves no digits for the polygon.
class VIEWER3DMODULE_EXPORT PrismFence : public Fence3DObject
{
public:
    /// An empty prism.
    PrismFence() = default;

    /// The prism itself, to be set and moved. Whoever changes that of a Fence3dItem notifies after it.
    Prism3D& prism() { return m_prism; }
    const Prism3D& prism() const { return m_prism; }

    Type getType() const override { return Fence3DObject::PrismFence; }
    bool empty() const override { return m_prism.empty(); }
    void serialize(ksp::CQtArchive& archive) override { m_prism.serialize(archive); }
    bool contains(const glm::dvec3& point) const override { return m_prism.contains(point); }
    bool reaches(const std::vector<glm::dvec3>& corners) const override { return m_prism.reaches(corners); }
    std::shared_ptr<gmx::IFence3D> getIFence3D(const glm::dmat4& modelToScene) const override
    {
        return m_prism.getIFence3D(modelToScene);
    }

private:
    Prism3D m_prism;
};
