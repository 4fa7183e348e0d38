#include <viewer/cli/ElevationOptions.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/UsageError.h>

void ElevationOptions::declare(CommandParser& parser)
{
    parser.addWithOptionalValue("elevation",
                                "colour by height, with the levels of a file: HEIGHT COLOUR a line",
                                "LEVELS.txt", ".txt");
    parser.add({"discrete"}, "with --elevation: one colour a level, none in between");
    parser.add({"legend"}, "with --elevation: heights and their colours in a corner");
}

ElevationOptions ElevationOptions::read(const CommandParser& parser)
{
    ElevationOptions options;
    options.isAsked = parser.isSet("elevation");
    options.isDiscrete = parser.isSet("discrete");
    options.hasLegend = parser.isSet("legend");
    options.file = parser.value("elevation");
    for (const char* option : {"discrete", "legend"})
        if (parser.isSet(option) && !options.isAsked)
            throw UsageError(QStringLiteral("--%1 belongs to --elevation; add that").arg(option));
    return options;
}
