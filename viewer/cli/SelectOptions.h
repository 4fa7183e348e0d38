#pragma once

#include <viewer/cli/CameraOptions.h>
#include <viewer/cli/ReadingOptions.h>

#include <Viewer3dModule/scene/SelectionOptions.h>

#include <QtCore/QStringList>
#include <QtGui/QPolygonF>

#include <optional>

class CommandParser;

/// What "viewer3d select" is asked for.
struct SelectOptions
{
    QStringList files;
    ReadingOptions reading; ///< is set for every command alike
    CameraOptions camera;
    QPolygonF area; ///< pixels of the picture, origin top left
    SelectionMode mode = SelectionMode::Through;
    SelectionRule rule = SelectionRule::Touching;
    std::optional<float> pointSize; ///< pixels; nothing: as usual
    QString fence;                  ///< a file (FenceFile.h), or empty
    bool json = false;

    static const char* const synopsis;
    static const char* const description;
    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static SelectOptions read(const CommandParser& parser);
};
