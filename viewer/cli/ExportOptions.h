#pragma once

#include <viewer/cli/ReadingOptions.h>

#include <QtCore/QStringList>

class CommandParser;

/// What "viewer3d export" is asked for.
struct ExportOptions
{
    QStringList files;
    ReadingOptions reading; ///< is set for every command alike
    QString output;
    bool ascii = false; ///< numbers as text
    QString fence;      ///< a file (FenceFile.h), or empty

    static const char* const synopsis;
    static const char* const description;
    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static ExportOptions read(const CommandParser& parser);
};
