#include <viewer/cli/RenderOptions.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/OptionValue.h>
#include <viewer/cli/PointSizeOption.h>
#include <viewer/cli/UsageError.h>

#include <QtCore/QFileInfo>

const char* const RenderOptions::synopsis = "render FILES... -o OUT.png [OPTIONS]";
const char* const RenderOptions::description = "Draws the files and writes the picture as PNG.";

void RenderOptions::declare(CommandParser& parser)
{
    parser.add({"o", "output"}, "the picture to write", "OUT.png");
    CameraOptions::declare(parser);
    parser.add({"background"}, "colour behind the scene: a name, #rrggbb, #aarrggbb or transparent",
               "COLOUR");
    PointSizeOption::declare(parser);
}

RenderOptions RenderOptions::read(const CommandParser& parser)
{
    RenderOptions options;
    options.files = parser.positionalArguments();
    if (options.files.isEmpty())
        throw UsageError(QStringLiteral("render: no files; usage: viewer3d render FILES... -o OUT.png"));
    options.output = parser.value("output");
    if (options.output.isEmpty()) throw UsageError(QStringLiteral("render: no output; add -o OUT.png"));
    if (QFileInfo(options.output).suffix().toLower() != "png")
        throw UsageError(
            QStringLiteral("-o %1: render writes PNG; the name must end in .png").arg(options.output));
    options.camera = CameraOptions::read(parser);
    if (parser.isSet("background"))
        options.background = OptionValue::color("background", parser.value("background"));
    options.pointSize = PointSizeOption::read(parser);
    return options;
}
