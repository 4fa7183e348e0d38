#pragma once

#include <Viewer3dModule/fences/Fence3DObject.h>

/// A ball. A new one has its centre at the origin and the radius 0.
class VIEWER3DMODULE_EXPORT SphereFence : public Fence3DObject
{
public:
    /// Centre in the world; radius in its length unit. Both are taken as they are: with a NaN in the centre
    /// the fence is empty, with a radius that is negative or NaN it contains nothing.
    void setFence(const glm::dvec3& center, double radius);
    const glm::dvec3& getCenter() const { return m_center; }
    double getRadius() const { return m_radius; }

    Type getType() const override { return Fence3DObject::SphereFence; }
    /// Whether the centre has a NaN; the radius does not matter.
    bool empty() const override;
    /// Centre, radius. Whatever numbers these are, they come back.
    void serialize(ksp::CQtArchive& archive) override;
    /// Whether the point is at most the radius away from the centre. Points on the sphere are inside; with
    /// the radius 0 that is the centre alone.
    bool contains(const glm::dvec3& point) const override;
    bool reaches(const std::vector<glm::dvec3>& corners) const override;
    std::shared_ptr<gmx::IFence3D> getIFence3D(const glm::dmat4& modelToScene) const override;

private:
    glm::dvec3 m_center{0.0};
    double m_radius = 0.0;
};
