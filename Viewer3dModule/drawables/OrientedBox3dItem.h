#pragma once

#include <Viewer3dModule/drawables/Polyline3dForegroundItem.h>
#include <framework/gmx/BoundingBox.h>

#include <array>

/// The twelve edges of a box of any orientation, as one polyline of 23 points. Coordinates are the scene's.
class VIEWER3DMODULE_EXPORT OrientedBox3dItem : public Polyline3dForegroundItem
{
public:
    using Axes = std::array<glm::dvec3, 3>;
    using Extent = std::array<double, 3>;

    /// No points.
    OrientedBox3dItem();
    /// @param axes    directions of the edges, used as they are
    /// @param extent  half sizes along them
    OrientedBox3dItem(const glm::dvec3& center, const Axes& axes, const Extent& extent);

    void reset(const glm::dvec3& center, const Axes& axes, const Extent& extent);
    void setCenter(const glm::dvec3& center);
    void setAxis(const Axes& axes);
    void setExtent(const Extent& extent);

    /// The box of the outline along the scene's axes; null without points.
    gmx::BoundingBox getBoundingBox() const;

private:
    void updatePoints();

    glm::dvec3 m_center = glm::dvec3(0.0);
    Axes m_axes = {glm::dvec3(0.0), glm::dvec3(0.0), glm::dvec3(0.0)};
    Extent m_extent = {0.0, 0.0, 0.0};
};
