#pragma once

#include <Viewer3dModule/camera/CCamera.h>
#include <Viewer3dModule/camera/IProjection.h>
#include <framework/gmx/BoundingBox.h>
#include <framework/gmx/math_utils.h>

#include <QtCore/QSizeF>
#include <QtCore/QStringList>
#include <glm/glm.hpp>

#include <memory>
#include <optional>

/// A projection of the type, as it is at first.
std::unique_ptr<IProjection> makeProjection(IProjection::Projection type);

/// The directions that a scene is looked at from by name. Front is from the south (-y), left from the west
/// (-x).
enum class StandardView { Iso, Top, Bottom, Front, Back, Left, Right };

/// Names of the standard views in the order of the enumeration: "iso", "top", ...
QStringList standardViewNames();
/// Where the view looks to, of unit length. Never exactly vertical, so that the world's vertical stays the up
/// vector.
glm::dvec3 standardViewDirection(StandardView view);

/// Where a picture is taken from: a camera and a projection. Plain values in one coordinate system, scene
/// coordinates where nothing else is said; the zoom of a parallel projection is in its units a pixel.
class Viewpoint
{
public:
    static constexpr double usualFov = math_utils::pi / 4.0; ///< of central projections, vertical, radians

    /// Looks along +y from the origin, in central projection.
    Viewpoint();
    Viewpoint(const CCamera& camera, std::unique_ptr<IProjection> projection);
    Viewpoint(const Viewpoint& other);
    Viewpoint& operator=(const Viewpoint& other);
    Viewpoint(Viewpoint&&) = default;
    Viewpoint& operator=(Viewpoint&&) = default;
    ~Viewpoint() = default;

    /// Looks from the eye to the target; a parallel projection shows at the target what the central one
    /// would. fov: of that, vertical, radians, below pi.
    static Viewpoint looking(const glm::dvec3& eye, const glm::dvec3& target, const glm::dvec3& up,
                             IProjection::Projection type, const QSizeF& size, double fov = usualFov);
    /// Looks along the direction so that the whole box is in the picture and as large as it can be. size in
    /// pixels.
    static Viewpoint fitting(const gmx::BoundingBox& box, const glm::dvec3& direction,
                             IProjection::Projection type, const QSizeF& size, double fov = usualFov);

    CCamera& camera() { return m_camera; }
    const CCamera& camera() const { return m_camera; }
    IProjection& projection() { return *m_projection; }
    const IProjection& projection() const { return *m_projection; }
    bool isParallel() const { return m_projection->getType() == IProjection::Parallel; }

    /// Length that a pixel covers at the depth along the line of sight.
    double unitsPerPixel(double depth, const QSizeF& size) const;
    /// Distance of the point from the eye along the line of sight; negative behind the eye.
    double depthOf(const glm::dvec3& point) const;
    /// The point that pixel (origin top left) shows at the depth.
    glm::dvec3 pointAt(const glm::dvec2& pixel, double depth, const QSizeF& size) const;
    /// The pixel (origin top left) that shows the point, in the picture or beyond it; none of a point that
    /// lies behind the eye of a central projection.
    std::optional<glm::dvec2> pixelOf(const glm::dvec3& point, const QSizeF& size) const;
    /// Projection matrix whose near and far planes enclose the box. smallestNear: how near the near plane may
    /// come when the eye is in or close to the box; nearer only when the point looked at is.
    glm::dmat4 projectionMatrix(const gmx::BoundingBox& box, const QSizeF& size, double smallestNear) const;

    /// Changes to the other projection; what is looked at keeps its size.
    void setProjectionType(IProjection::Projection type, const QSizeF& size);
    /// The same viewpoint in other coordinates. The matrix moves, turns and scales alike along all axes.
    Viewpoint transformed(const glm::dmat4& matrix) const;

private:
    CCamera m_camera;
    std::unique_ptr<IProjection> m_projection;
};
