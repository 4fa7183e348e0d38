#pragma once

#include <viewer/cli/CameraOptions.h>
#include <viewer/cli/ReadingOptions.h>

#include <QtCore/QStringList>

#include <optional>
#include <vector>

class CommandParser;

/// What "viewer3d depth" is asked for.
struct DepthOptions
{
    /// One map and its files.
    struct Map
    {
        CameraOptions camera;
        QString output;
        QString preview;    ///< empty: none
        QString cameraFile; ///< empty: none

        /// The world file beside a map from above with a given length of a pixel; empty for others, and for
        /// PFM, which has none.
        QString worldFile() const;
        /// All files to write.
        QStringList outputs() const;
    };

    QStringList files;
    ReadingOptions reading; ///< is set for every command alike
    QString cameras;        ///< a list of them (CameraList.h), or empty
    /// The one map; with a list the patterns of its files.
    Map map;
    std::optional<float> pointSize; ///< pixels; nothing: as usual
    QString fence;                  ///< a file (FenceFile.h), or empty

    /// The maps to make. Reads the list; throws ksp::CommonError as that does.
    std::vector<Map> maps() const;

    static const char* const synopsis;
    static const char* const description;
    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static DepthOptions read(const CommandParser& parser);
};
