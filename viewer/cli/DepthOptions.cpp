#include <viewer/cli/DepthOptions.h>

#include <viewer/DepthWriter.h>
#include <viewer/WorldFile.h>
#include <viewer/cli/CommandParser.h>
#include <viewer/cli/PointSizeOption.h>
#include <viewer/cli/UsageError.h>
#include <viewer/printable.h>

#include <QtCore/QFileInfo>

namespace {

/// The value of an option that names a file with one of the extensions; empty when it is not given.
QString fileName(const CommandParser& parser, const QString& option, const QStringList& extensions)
{
    if (!parser.isSet(option)) return {};
    const QString name = parser.value(option);
    if (!extensions.contains(QFileInfo(name).suffix().toLower()))
        throw UsageError(QStringLiteral("--%1 %2: the name must end in .%3")
                             .arg(option, shownName(name), extensions.join(QStringLiteral(" or ."))));
    return name;
}

} // namespace

const char* const DepthOptions::synopsis = "depth FILES... -o OUT.pfm|OUT.tiff [OPTIONS]";
const char* const DepthOptions::description =
    "Writes a depth map of the files as 32-bit floats: for each pixel the distance along the camera's axis, "
    "in\nmodel units, and NaN where nothing is.";

QString DepthOptions::worldFile() const
{
    const bool isTiff = QFileInfo(output).suffix().toLower() != QLatin1String("pfm");
    return isTiff && camera.gsd ? WorldFile::pathFor(output) : QString();
}

QStringList DepthOptions::outputs() const
{
    QStringList names = {output, preview, cameraFile, worldFile()};
    names.removeAll(QString());
    return names;
}

void DepthOptions::declare(CommandParser& parser)
{
    parser.add({"o", "output"}, "the map to write: .pfm, .tiff or .tif", "OUT");
    parser.add({"preview"}, "also as a picture: near is bright, far is dark, nothing is transparent",
               "OUT.png");
    parser.add({"json"}, "also the camera, which turns pixels into points", "OUT.json");
    CameraOptions::declare(parser);
    PointSizeOption::declare(parser);
}

DepthOptions DepthOptions::read(const CommandParser& parser)
{
    DepthOptions options;
    options.files = parser.positionalArguments();
    if (options.files.isEmpty())
        throw UsageError(QStringLiteral("depth: no files; usage: viewer3d depth FILES... -o OUT.pfm"));
    if (parser.value("output").isEmpty())
        throw UsageError(QStringLiteral("depth: no output; add -o OUT.pfm or -o OUT.tiff"));
    options.output = fileName(parser, "output", DepthWriter::extensions());
    options.preview = fileName(parser, "preview", {"png"});
    options.cameraFile = fileName(parser, "json", {"json"});
    options.camera = CameraOptions::read(parser);
    options.pointSize = PointSizeOption::read(parser);
    return options;
}
