#pragma once

#include <QtCore/QString>

class CommandParser;

/// Colours by height: the options --elevation, --discrete and --legend.
struct ElevationOptions
{
    bool isAsked = false;
    QString file; ///< with the levels; empty: built-in colours over what is seen
    bool isDiscrete = false;
    bool hasLegend = false;

    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static ElevationOptions read(const CommandParser& parser);
};
