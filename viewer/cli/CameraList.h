#pragma once

#include <viewer/cli/CameraOptions.h>

#include <QtCore/QStringList>

#include <vector>

/// A list of cameras in a JSON file, each with the picture that is made of it:
///
///     [{"name": "north", "eye": [x, y, z], "target": [x, y, z], "fov": 60, "size": [1280, 720]},
///      {"output": "plan.png", "view": "top", "projection": "parallel", "gsd": 0.5}]
///
/// "eye", "target", "up", "view", "projection", "fov", "size" and "gsd" are what the options of the command
/// line are, and have their defaults. "output" names the file, as seen from the list's folder; a camera
/// without one has a "name", which a pattern makes a file's name of. Anything else is refused.
namespace CameraList {

/// What stands in a pattern for a camera's name.
extern const QString namePlace;

struct Entry
{
    CameraOptions camera;
    QString output;
    QString shown;     ///< how messages call the camera, the list's file included
    QString name = {}; ///< may be empty
};

/// Reads the list. pattern: of the outputs of cameras without one of their own, or empty. Throws
/// ksp::CommonError, whose text names the file, the camera by its number from 1 and the key; also when two
/// cameras have the same output.
/// extensions: what the outputs may end in, lower case.
std::vector<Entry> read(const QString& path, const QString& pattern,
                        const QStringList& extensions = {QStringLiteral("png")});
/// The file's name that a pattern makes for a camera. Throws ksp::CommonError where that has no name of its
/// own.
QString named(const QString& pattern, const Entry& entry);

/// The option --cameras of commands that draw: the name of the list, empty where it is not given. Throws
/// UsageError, also for options that say of one camera what the list says of each.
QString readOption(const CommandParser& parser);

} // namespace CameraList
