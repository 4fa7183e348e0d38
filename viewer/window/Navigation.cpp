#include <viewer/window/Navigation.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double largestRatio = 1e9; // scene units a pixel, far beyond any scene
constexpr double smallestRatio = 1e-12;
constexpr double farthest = 1e6; // scene units from the eye to what is looked at; a scene is 1000 large

void shift(CCamera& camera, const glm::dvec3& by)
{
    camera.setPositionCamera(camera.getPosition() + by, camera.getView() + by, camera.getUp());
}

/// Puts the point looked at beside the anchor on the line of sight: how far away things are decides how far a
/// pixel of panning goes and where the near plane lies.
void lookAsFarAs(Viewpoint& viewpoint, const glm::dvec3& anchor)
{
    const double depth = viewpoint.depthOf(anchor);
    if (depth <= 0.0 || !std::isfinite(depth)) return;
    CCamera& camera = viewpoint.camera();
    camera.setPositionCamera(camera.getPosition(), camera.getPosition() + depth * camera.getDirection(),
                             camera.getUp());
}

} // namespace

void navigation::orbit(Viewpoint& viewpoint, const glm::dvec3& center, double yaw, double pitch)
{
    CCamera& camera = viewpoint.camera();
    camera.setCenter(center);
    camera.rotateAroundCenter(yaw, pitch);
}

void navigation::pan(Viewpoint& viewpoint, const glm::dvec2& delta, double depth, const QSizeF& size)
{
    CCamera& camera = viewpoint.camera();
    const double unit = viewpoint.unitsPerPixel(depth, size);
    camera.moveAside(delta.x * unit);
    camera.moveUp(delta.y * unit);
}

void navigation::zoom(Viewpoint& viewpoint, const glm::dvec3& anchor, const glm::dvec2& pixel, double factor,
                      const QSizeF& size)
{
    CCamera& camera = viewpoint.camera();
    if (viewpoint.isParallel()) {
        const double before = viewpoint.projection().getZoom();
        const double after = std::clamp(before * factor, smallestRatio, largestRatio);
        viewpoint.projection().setZoom(after);
        const double right = (pixel.x - size.width() / 2.0) * (before - after);
        const double up = (size.height() / 2.0 - pixel.y) * (before - after);
        shift(camera,
              right * camera.getLeftVector() + up * camera.getUpVector()); // "left" points to the right
        return;
    }
    const double distance = glm::distance(anchor, camera.getPosition());
    if (distance > 0.0) factor = std::min(factor, std::max(1.0, farthest / distance));
    if (distance > 0.0) camera.zoomCamera(distance * (1.0 - factor), anchor);
    lookAsFarAs(viewpoint, anchor);
}
