#include <viewer/cli/InfoOptions.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/UsageError.h>

const char* const InfoOptions::synopsis = "info FILES... [--json]";
const char* const InfoOptions::description = "Lists elements, counts and bounds in model coordinates.";

void InfoOptions::declare(CommandParser& parser)
{
    parser.add({"json"}, "as JSON, for programs");
}

InfoOptions InfoOptions::read(const CommandParser& parser)
{
    if (parser.positionalArguments().isEmpty())
        throw UsageError(QStringLiteral("info: no files; usage: viewer3d info FILES... [--json]"));
    InfoOptions options;
    options.files = parser.positionalArguments();
    options.json = parser.isSet("json");
    return options;
}
