#pragma once

#include <viewer/cli/ReadingOptions.h>

#include <QtCore/QStringList>

#include <optional>

class CommandParser;

/// What the window is opened with.
struct WindowOptions
{
    QStringList files;
    ReadingOptions reading;         ///< is set for every command alike
    std::optional<float> pointSize; ///< pixels; nothing: as usual
    std::optional<QString> labels;  ///< the property that labels show; nothing: none are shown at first
    QString fence;                  ///< a file (FenceFile.h), or empty

    static const char* const synopsis;
    static const char* const description;
    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static WindowOptions read(const CommandParser& parser);
};
