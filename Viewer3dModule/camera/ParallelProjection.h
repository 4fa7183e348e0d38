#pragma once

#include <Viewer3dModule/camera/IProjection.h>

/// Orthographic, centred on the line of sight: zooms by the ratio, scene units a pixel of the viewport, 1 at
/// first.
///
/// Between 0.2 and 2 (both excluded) the ratio changes by addition, in fine steps; elsewhere it doubles or
/// halves.
class VIEWER3DMODULE_EXPORT ParallelProjection : public IProjection
{
public:
    /// The same as setZoom().
    void setProjectionRatio(double ratio) { setZoom(ratio); }

    Projection getType() const override { return Parallel; }
    glm::dmat4 calcProjectionMatrix(const QSizeF& viewport, double zFar, double zNear) const override;
    /// Adds delta in the band; outside of it doubles (delta > 0) or halves, whatever delta's size.
    void zoom(double delta) override;
    /// Subtracts 0.1 in the band, halves outside.
    void zoomIn() override;
    /// Adds 0.1 in the band, doubles outside.
    void zoomOut() override;
    /// The zoom is the ratio: larger shows more of the scene.
    void setZoom(double zoom) override { m_ratio = zoom; }
    double getZoom() const override { return m_ratio; }
    void serialize(ksp::IArchive& archive) override;
    std::unique_ptr<IProjection> clone() const override;

private:
    double m_ratio = 1.0;
};
