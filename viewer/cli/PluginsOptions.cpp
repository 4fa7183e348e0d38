#include <viewer/cli/PluginsOptions.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/UsageError.h>

const char* const PluginsOptions::synopsis = "plugins";
const char* const PluginsOptions::description =
    "Lists the plug-ins that were found, those that failed with the reason, and the "
    "file extensions that can be opened.";

void PluginsOptions::declare(CommandParser&) {}

PluginsOptions PluginsOptions::read(const CommandParser& parser)
{
    if (!parser.positionalArguments().isEmpty())
        throw UsageError(QStringLiteral("plugins takes no files; usage: viewer3d plugins"));
    return {};
}
