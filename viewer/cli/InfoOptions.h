#pragma once

#include <viewer/cli/ReadingOptions.h>

#include <QtCore/QStringList>

class CommandParser;

/// What "viewer3d info" is asked for.
struct InfoOptions
{
    QStringList files;
    ReadingOptions reading; ///< is set for every command alike
    bool json = false;

    static const char* const synopsis;
    static const char* const description;
    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static InfoOptions read(const CommandParser& parser);
};
