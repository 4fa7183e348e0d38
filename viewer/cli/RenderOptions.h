#pragma once

#include <viewer/EyeDomeShading.h>
#include <viewer/cli/CameraOptions.h>
#include <viewer/cli/ElevationOptions.h>
#include <viewer/cli/ReadingOptions.h>

#include <QtCore/QStringList>
#include <QtGui/QColor>

#include <optional>

class CommandParser;

/// What "viewer3d render" is asked for.
struct RenderOptions
{
    QStringList files;
    ReadingOptions reading; ///< is set for every command alike
    QString output;         ///< the picture; with a list of cameras the pattern of their names, or nothing
    QString cameras;        ///< the list of cameras, a file; nothing: the one camera
    CameraOptions camera;
    QColor background;              ///< invalid: that of the settings
    std::optional<float> pointSize; ///< pixels; nothing: as usual
    QString fence;                  ///< a file (FenceFile.h), or empty
    bool previewsFence = false;     ///< what lies outside in grey, and the fence's outline
    EyeDomeShading eyeDome = EyeDomeShading::Off;
    ElevationOptions elevation;
    std::optional<QString> labels; ///< the property that labels show; nothing: no labels

    static const char* const synopsis;
    static const char* const description;
    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static RenderOptions read(const CommandParser& parser);
};
