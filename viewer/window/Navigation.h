#pragma once

#include <viewer/Viewpoint.h>

/// The motions of a view, on viewpoints in scene coordinates. Pixels have their origin top left; size is the
/// view's.
namespace navigation {

/// Turns about a point: yaw about the vertical, pitch up and down, radians. The point stays where it is on
/// screen.
void orbit(Viewpoint& viewpoint, const glm::dvec3& center, double yaw, double pitch);
/// Moves so that what lies at the depth follows the cursor by delta pixels.
void pan(Viewpoint& viewpoint, const glm::dvec2& delta, double depth, const QSizeF& size);
/// Shows what lies at the anchor larger (factor below 1) or smaller; the anchor, which is shown at the pixel,
/// stays there.
void zoom(Viewpoint& viewpoint, const glm::dvec3& anchor, const glm::dvec2& pixel, double factor,
          const QSizeF& size);

} // namespace navigation
