#pragma once

class CommandParser;

/// "viewer3d plugins" lists the plug-ins.
struct PluginsOptions
{
    static const char* const synopsis;
    static const char* const description;
    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static PluginsOptions read(const CommandParser& parser);
};
