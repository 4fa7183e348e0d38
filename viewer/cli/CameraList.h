#pragma once

#include <viewer/cli/CameraOptions.h>

#include <QtCore/QString>

#include <vector>

/// A list of cameras in a JSON file, each with the picture that is made of it:
///
///     [{"name": "north", "eye": [x, y, z], "target": [x, y, z], "up": [0, 0, 1], "fov": 60, "size": [1280,
///     720]},
///      {"output": "plan.png", "view": "top", "projection": "parallel", "gsd": 0.5}]
///
/// "eye", "target", "up", "view", "projection", "size" and "gsd" are what the options of the command line
/// are, and have their defaults; "fov" is the vertical field of view in degrees, 45 at first. "output" names
/// the file, as seen from the list's folder; a camera without one has a "name", which a pattern makes a
/// file's name of. Anything else is refused.
namespace CameraList {

/// What stands in a pattern for a camera's name.
extern const QString namePlace;

struct Entry
{
    CameraOptions camera;
    QString output;
    QString shown; ///< how messages call the camera, the list's file included
};

/// Reads the list. pattern: of the outputs of cameras without one of their own, or empty. Throws
/// ksp::CommonError, whose text names the file, the camera by its number from 1 and the key; also when two
/// cameras have the same output.
std::vector<Entry> read(const QString& path, const QString& pattern);

} // namespace CameraList
