#include <viewer/cli/CommandLine.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/UsageError.h>
#include <viewer/printable.h>

#include <QtCore/QFileInfo>

namespace {

const QStringList commands = {"render", "depth", "select", "export", "info", "plugins"};

/// A first argument that is neither a command nor a file is a command mistyped.
void refuseUnknownCommand(const QString& word)
{
    if (QFileInfo::exists(word) || word.contains(QLatin1Char('/')) || word.contains(QLatin1Char('.'))) return;
    const QString nearest = nearestWord(word, commands);
    throw UsageError(QStringLiteral("%1 is neither a command nor a file; ").arg(shownName(word)) +
                     (nearest.isEmpty() ? QStringLiteral("the commands are %1").arg(commands.join(", "))
                                        : QStringLiteral("did you mean %1?").arg(nearest)));
}

template <typename Options>
constexpr bool readsFiles = !std::is_same_v<Options, PluginsOptions>;

/// The arguments of one command, without its word.
template <typename Options>
Command parse(const QStringList& arguments)
{
    constexpr bool isWindow = std::is_same_v<Options, WindowOptions>; // which has no word of its own
    CommandParser parser(Options::synopsis, Options::description);
    Options::declare(parser);
    if constexpr (readsFiles<Options>) ReadingOptions::declare(parser);
    // before its options are found unknown, which they would not be to the command that was meant
    if (isWindow && !arguments.isEmpty() && !arguments.first().startsWith(QLatin1Char('-')))
        refuseUnknownCommand(arguments.first());
    parser.parse(arguments);
    if (parser.isHelpAsked()) return HelpRequest{parser.helpText()};
    if (isWindow && parser.isSet("version"))
        return HelpRequest{QStringLiteral("viewer3d %1\n").arg(QStringLiteral(V3D_VERSION))};
    if (isWindow && !parser.positionalArguments().isEmpty())
        refuseUnknownCommand(parser.positionalArguments().first());
    Options options = Options::read(parser);
    if constexpr (readsFiles<Options>) options.reading = ReadingOptions::read(parser);
    return options;
}

} // namespace

Command parseCommandLine(const QStringList& arguments)
{
    const QString word = arguments.value(0);
    if (word == "render") return parse<RenderOptions>(arguments.mid(1));
    if (word == "depth") return parse<DepthOptions>(arguments.mid(1));
    if (word == "select") return parse<SelectOptions>(arguments.mid(1));
    if (word == "export") return parse<ExportOptions>(arguments.mid(1));
    if (word == "info") return parse<InfoOptions>(arguments.mid(1));
    if (word == "plugins") return parse<PluginsOptions>(arguments.mid(1));
    return parse<WindowOptions>(arguments);
}
