#pragma once

#include <viewer/cli/CameraOptions.h>

#include <QtCore/QStringList>

#include <optional>

class CommandParser;

/// What "viewer3d depth" is asked for.
struct DepthOptions
{
    QStringList files;
    QString output;
    QString preview;    ///< empty: none
    QString cameraFile; ///< empty: none
    CameraOptions camera;
    std::optional<float> pointSize; ///< pixels; nothing: as usual

    /// The world file beside a map from above with a given length of a pixel; empty for others, and for PFM,
    /// which has none.
    QString worldFile() const;
    /// All files to write.
    QStringList outputs() const;

    static const char* const synopsis;
    static const char* const description;
    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static DepthOptions read(const CommandParser& parser);
};
