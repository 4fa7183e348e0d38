#pragma once

#include <viewer/FenceShape.h>

#include <QtCore/QString>

/// A fence in a JSON file, in model coordinates:
///
///     {"type": "sphere", "center": [x, y, z], "radius": r}
///     {"type": "prism", "points": [[x, y, z], ...], "direction": [x, y, z], "height": h}
///     {"type": "frustum", "eye": [x, y, z], "target": [x, y, z], "up": [x, y, z], "fov": degrees,
///      "polygon": [[x, y], ...], "near": m, "far": m}
///
/// A prism's polygon is swept along the direction, from the mean of its points on; without "height" it has no
/// end. A frustum's is drawn on the picture of the camera: y runs from -1 at the lower to 1 at the upper
/// border of the field of view, x to the right in the same units from the middle on. Without "up" that is
/// 0, 0, 1; without "far" it has no end. Polygons may repeat their first point at the end. Anything else is
/// refused.
namespace FenceFile {

/// Never none. Throws ksp::CommonError, whose text names the file and what is wrong in it.
FenceShape read(const QString& path);

} // namespace FenceFile
