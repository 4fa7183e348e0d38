#pragma once

#include <Viewer3dModule/camera/IProjection.h>

#include <framework/gmx/math_utils.h>

/// Perspective: zooms by the vertical field of view, 45 degrees at first. Angles are radians.
class VIEWER3DMODULE_EXPORT CentralProjection : public IProjection
{
public:
    /// The whole vertical angle of view.
    double getFov() const { return m_fov; }

    Projection getType() const override { return Central; }
    glm::dmat4 calcProjectionMatrix(const QSizeF& viewport, double zFar, double zNear) const override;
    /// Adds the angle to the field of view while that is below 85 degrees (delta > 0) or above 10 degrees
    /// (delta < 0). The result is not clamped: the last step may end beyond the bound.
    void zoom(double delta) override;
    /// Narrows the field of view by 2 degrees while it is above 10.
    void zoomIn() override;
    /// Widens the field of view by 2 degrees while it is below 85.
    void zoomOut() override;
    /// The zoom is tan(45 degrees) / tan(field of view): 1 at first, larger for a narrower view.
    void setZoom(double zoom) override;
    double getZoom() const override;
    /// The field of view only.
    void serialize(ksp::IArchive& archive) override;
    std::unique_ptr<IProjection> clone() const override;

private:
    double m_baseFov = math_utils::pi / 4.0;
    double m_minFov = math_utils::toRadian(10.0);
    double m_maxFov = math_utils::toRadian(85.0);
    double m_fovStep = math_utils::toRadian(2.0);
    double m_fov = math_utils::pi / 4.0;
};
