#include <viewer/cli/RenderOptions.h>

#include <viewer/PictureWriter.h>
#include <viewer/cli/CameraList.h>
#include <viewer/cli/CommandParser.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/LabelsOption.h>
#include <viewer/cli/OptionValue.h>
#include <viewer/cli/PointSizeOption.h>
#include <viewer/cli/UsageError.h>

#include <QtCore/QFileInfo>

namespace {

QString readOutput(const CommandParser& parser)
{
    const QString output = parser.value("output");
    if (output.isEmpty()) {
        if (parser.isSet("cameras") && !parser.isSet("output")) return {};
        throw UsageError(QStringLiteral("render: no output; add -o OUT.png"));
    }
    const QStringList extensions = PictureWriter::extensions();
    if (!extensions.contains(QFileInfo(output).suffix().toLower()))
        throw UsageError(QStringLiteral("-o %1: render writes PNG and TIFF; the name must end in .%2")
                             .arg(output, extensions.join(QStringLiteral(" or ."))));
    if (parser.isSet("cameras") && !output.contains(CameraList::namePlace))
        throw UsageError(QStringLiteral("-o %1: of several cameras the names need %2, for example -o %2.png")
                             .arg(output, CameraList::namePlace));
    return output;
}

} // namespace

const char* const RenderOptions::synopsis = "render FILES... -o OUT.png [OPTIONS]";
const char* const RenderOptions::description =
    "Draws the files and writes the picture as PNG or TIFF, or several pictures of one list of cameras.";

void RenderOptions::declare(CommandParser& parser)
{
    parser.add({"o", "output"},
               "the picture to write: .png, .tif or .tiff; with --cameras a pattern with {name}", "OUT.png");
    CameraOptions::declare(parser);
    parser.add({"cameras"}, "a list of cameras (JSON), each with a picture of its own", "FILE.json");
    parser.add({"background"}, "colour behind the scene: a name, #rrggbb, #aarrggbb or transparent",
               "COLOUR");
    PointSizeOption::declare(parser);
    FenceOption::declare(parser);
    parser.add({"fence-preview"}, "show what lies outside of the fence in grey, and the fence's outline");
    parser.add({"edl"},
               eyeDomeShadingNames().join('|') + ": eye-dome lighting, dark by what lies further or nearer",
               "NAME");
    ElevationOptions::declare(parser);
    LabelsOption::declare(parser);
}

RenderOptions RenderOptions::read(const CommandParser& parser)
{
    RenderOptions options;
    options.files = parser.positionalArguments();
    if (options.files.isEmpty())
        throw UsageError(QStringLiteral("render: no files; usage: viewer3d render FILES... -o OUT.png"));
    options.output = readOutput(parser);
    options.cameras = CameraList::readOption(parser);
    options.camera = CameraOptions::read(parser);
    if (parser.isSet("background"))
        options.background = OptionValue::color("background", parser.value("background"));
    options.pointSize = PointSizeOption::read(parser);
    options.fence = FenceOption::read(parser);
    options.previewsFence = parser.isSet("fence-preview");
    if (parser.isSet("edl"))
        options.eyeDome =
            static_cast<EyeDomeShading>(OptionValue::word("edl", parser.value("edl"), eyeDomeShadingNames()));
    options.elevation = ElevationOptions::read(parser);
    options.labels = LabelsOption::read(parser);
    return options;
}
