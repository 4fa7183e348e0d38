#include <viewer/cli/CommandLine.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/UsageError.h>
#include <viewer/printable.h>

#include <QtCore/QFileInfo>

#include <algorithm>
#include <cmath>

namespace {

constexpr int longestSide = 16384;         // pixels; the most that OpenGL drivers commonly draw
constexpr qint64 mostPixels = 100'000'000; // colour and depth of a picture take 8 bytes a pixel and more
constexpr double largestCoordinate = 1e12; // model units: in millimetres far beyond the moon
constexpr double largestPoint = 255.0;     // pixels; OpenGL drivers draw larger points no larger
constexpr double smallestAngle = 1e-7;     // radians between the line of sight and the up vector
const QStringList commands = {"render", "info", "plugins"};

const char* const overview =
    "Shows files of meshes, points and features, and makes pictures of them.\n\n"
    "  viewer3d [FILES...] [OPTIONS]          open the files in a window\n"
    "  viewer3d render FILES... -o OUT.png    make a picture\n"
    "  viewer3d info FILES...                 list elements, counts and bounds\n"
    "  viewer3d plugins                       list the plug-ins and what can be read\n\n"
    "viewer3d COMMAND --help tells the options of a command. Exit status: 0 done, 1 failed, 2 wrong usage.";

glm::dvec3 parsePoint(const QString& option, const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    glm::dvec3 point(0.0);
    bool isGood = parts.size() == 3;
    for (int i = 0; isGood && i < 3; ++i) {
        point[i] = parts[i].trimmed().toDouble(&isGood);
        isGood = isGood && std::isfinite(point[i]);
    }
    if (!isGood)
        throw UsageError(QStringLiteral("--%1 %2: three numbers are wanted, for example 612000,5071000,350")
                             .arg(option, text));
    if (std::max({std::abs(point.x), std::abs(point.y), std::abs(point.z)}) > largestCoordinate)
        throw UsageError(QStringLiteral("--%1 %2: coordinates go to 1e12 at most").arg(option, text));
    return point;
}

QSize parseSize(const QString& text)
{
    const QStringList parts = text.toLower().split(QLatin1Char('x'));
    bool isWidth = false, isHeight = false;
    const QSize size(parts.value(0).toInt(&isWidth), parts.value(1).toInt(&isHeight));
    if (parts.size() != 2 || !isWidth || !isHeight)
        throw UsageError(
            QStringLiteral("--size %1: WIDTHxHEIGHT in pixels is wanted, for example 1280x720").arg(text));
    const QString refused = refusePictureSize(size);
    if (!refused.isEmpty()) throw UsageError(QStringLiteral("--size %1: %2").arg(text, refused));
    return size;
}

/// The number of the word in the list.
int parseWord(const QString& option, const QString& text, const QStringList& words)
{
    const int number = words.indexOf(text.toLower());
    if (number < 0)
        throw UsageError(QStringLiteral("--%1 %2: one of %3 is wanted")
                             .arg(option, text, words.join(QStringLiteral(", "))));
    return number;
}

QColor parseColor(const QString& text)
{
    const QColor color(text);
    if (!color.isValid())
        throw UsageError(
            QStringLiteral("--background %1: no such colour; a name such as lightgray, #rrggbb or "
                           "transparent is wanted")
                .arg(text));
    return color;
}

bool isAlong(const glm::dvec3& a, const glm::dvec3& b)
{
    return glm::length(glm::cross(glm::normalize(a), glm::normalize(b))) < smallestAngle;
}

CameraOptions::Position parsePosition(const CommandParser& parser)
{
    if (!parser.isSet("eye") || !parser.isSet("target"))
        throw UsageError(QStringLiteral("--eye and --target belong together, and --up to both"));
    if (parser.isSet("view"))
        throw UsageError(QStringLiteral("--view and --eye exclude each other; give one of them"));
    CameraOptions::Position position;
    position.eye = parsePoint("eye", parser.value("eye"));
    position.target = parsePoint("target", parser.value("target"));
    const glm::dvec3 direction = position.target - position.eye;
    if (glm::length(direction) == 0.0)
        throw UsageError(QStringLiteral("--eye and --target are the same point; they must differ"));
    position.up = glm::dvec3(0.0, 0.0, 1.0);
    if (parser.isSet("up")) {
        position.up = parsePoint("up", parser.value("up"));
        if (glm::length(position.up) == 0.0)
            throw UsageError(QStringLiteral("--up has no direction; 0,0,1 is upright"));
        if (isAlong(direction, position.up))
            throw UsageError(
                QStringLiteral("--up lies along the line from --eye to --target; it must point elsewhere"));
    } else if (isAlong(direction, position.up)) {
        position.up = glm::dvec3(0.0, 1.0, 0.0);
    }
    return position;
}

CameraOptions parseCamera(const CommandParser& parser)
{
    CameraOptions camera;
    if (parser.isSet("view"))
        camera.view = static_cast<StandardView>(parseWord("view", parser.value("view"), standardViewNames()));
    if (parser.isSet("projection")) {
        const int number = parseWord("projection", parser.value("projection"), {"central", "parallel"});
        camera.projection = number == 0 ? IProjection::Central : IProjection::Parallel;
    }
    if (parser.isSet("eye") || parser.isSet("target") || parser.isSet("up"))
        camera.position = parsePosition(parser);
    return camera;
}

void addPointSizeOption(CommandParser& parser)
{
    parser.add({"point-size"}, "size of points without one of their own; 2 at first, in features 6",
               "PIXELS");
}

std::optional<float> parsePointSize(const CommandParser& parser)
{
    if (!parser.isSet("point-size")) return {};
    const QString text = parser.value("point-size");
    bool isNumber = false;
    const double size = text.trimmed().toDouble(&isNumber);
    if (!isNumber || !(size > 0.0 && size <= largestPoint))
        throw UsageError(
            QStringLiteral("--point-size %1: a number of pixels is wanted, more than 0 and at most %2")
                .arg(text, QString::number(largestPoint)));
    return static_cast<float>(size);
}

void addCameraOptions(CommandParser& parser)
{
    parser.add({"size"}, "size of the picture in pixels; 1280x720 at first", "WxH");
    parser.add({"view"}, standardViewNames().join('|') + ": look from there at everything; iso at first",
               "NAME");
    parser.add({"projection"}, "central|parallel; central at first", "NAME");
    parser.add({"eye"}, "look from this point, in model coordinates ...", "x,y,z");
    parser.add({"target"}, "... to this one", "x,y,z");
    parser.add({"up"}, "what is up with --eye; 0,0,1 at first", "x,y,z");
}

Command parseRender(const QStringList& arguments)
{
    CommandParser parser("render FILES... -o OUT.png [OPTIONS]",
                         "Draws the files and writes the picture as PNG.");
    parser.add({"o", "output"}, "the picture to write", "OUT.png");
    addCameraOptions(parser);
    parser.add({"background"}, "colour behind the scene: a name, #rrggbb, #aarrggbb or transparent",
               "COLOUR");
    addPointSizeOption(parser);
    parser.parse(arguments);
    if (parser.isHelpAsked()) return HelpRequest{parser.helpText()};

    RenderOptions options;
    options.files = parser.positionalArguments();
    if (options.files.isEmpty())
        throw UsageError(QStringLiteral("render: no files; usage: viewer3d render FILES... -o OUT.png"));
    options.output = parser.value("output");
    if (options.output.isEmpty()) throw UsageError(QStringLiteral("render: no output; add -o OUT.png"));
    if (QFileInfo(options.output).suffix().toLower() != "png")
        throw UsageError(
            QStringLiteral("-o %1: render writes PNG; the name must end in .png").arg(options.output));
    if (parser.isSet("size")) options.size = parseSize(parser.value("size"));
    if (parser.isSet("background")) options.background = parseColor(parser.value("background"));
    options.pointSize = parsePointSize(parser);
    options.camera = parseCamera(parser);
    return options;
}

Command parseInfo(const QStringList& arguments)
{
    CommandParser parser("info FILES... [--json]", "Lists elements, counts and bounds in model coordinates.");
    parser.add({"json"}, "as JSON, for programs");
    parser.parse(arguments);
    if (parser.isHelpAsked()) return HelpRequest{parser.helpText()};
    if (parser.positionalArguments().isEmpty())
        throw UsageError(QStringLiteral("info: no files; usage: viewer3d info FILES... [--json]"));
    return InfoOptions{parser.positionalArguments(), parser.isSet("json")};
}

Command parsePlugins(const QStringList& arguments)
{
    CommandParser parser("plugins",
                         "Lists the plug-ins that were found, those that failed with the reason, and the "
                         "file extensions that can be opened.");
    parser.parse(arguments);
    if (parser.isHelpAsked()) return HelpRequest{parser.helpText()};
    if (!parser.positionalArguments().isEmpty())
        throw UsageError(QStringLiteral("plugins takes no files; usage: viewer3d plugins"));
    return PluginsOptions{};
}

/// A first argument that is neither a command nor a file is a command mistyped.
void refuseUnknownCommand(const QString& word)
{
    if (QFileInfo::exists(word) || word.contains(QLatin1Char('/')) || word.contains(QLatin1Char('.'))) return;
    const QString nearest = nearestWord(word, commands);
    throw UsageError(QStringLiteral("%1 is neither a command nor a file; ").arg(shownName(word)) +
                     (nearest.isEmpty() ? QStringLiteral("the commands are %1").arg(commands.join(", "))
                                        : QStringLiteral("did you mean %1?").arg(nearest)));
}

Command parseWindow(const QStringList& arguments)
{
    CommandParser parser("[FILES...] [OPTIONS]", overview);
    parser.add({"v", "version"}, "show the version");
    addPointSizeOption(parser);
    // before its options are found unknown, which they would not be to the command that was meant
    if (!arguments.isEmpty() && !arguments.first().startsWith(QLatin1Char('-')))
        refuseUnknownCommand(arguments.first());
    parser.parse(arguments);
    if (parser.isHelpAsked()) return HelpRequest{parser.helpText()};
    if (parser.isSet("version"))
        return HelpRequest{QStringLiteral("viewer3d %1\n").arg(QStringLiteral(V3D_VERSION))};
    if (!parser.positionalArguments().isEmpty()) refuseUnknownCommand(parser.positionalArguments().first());
    return WindowOptions{parser.positionalArguments(), parsePointSize(parser)};
}

} // namespace

QString refusePictureSize(const QSize& size)
{
    if (size.width() < 1 || size.height() < 1)
        return QStringLiteral("width and height must be at least 1 pixel");
    if (size.width() > longestSide || size.height() > longestSide)
        return QStringLiteral("at most %1 pixels a side, which is what OpenGL drivers draw").arg(longestSide);
    if (static_cast<qint64>(size.width()) * size.height() > mostPixels)
        return QStringLiteral("at most %1 million pixels, because colour and depth are kept in memory")
            .arg(mostPixels / 1'000'000);
    return {};
}

Command parseCommandLine(const QStringList& arguments)
{
    const QString word = arguments.value(0);
    if (word == "render") return parseRender(arguments.mid(1));
    if (word == "info") return parseInfo(arguments.mid(1));
    if (word == "plugins") return parsePlugins(arguments.mid(1));
    return parseWindow(arguments);
}
