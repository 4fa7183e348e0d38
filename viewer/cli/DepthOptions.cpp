#include <viewer/cli/DepthOptions.h>

#include <viewer/DepthWriter.h>
#include <viewer/WorldFile.h>
#include <viewer/cli/CameraList.h>
#include <viewer/cli/CommandParser.h>
#include <viewer/cli/FenceOption.h>
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
    if (parser.isSet("cameras") && !name.contains(CameraList::namePlace))
        throw UsageError(
            QStringLiteral("--%1 %2: of several cameras the names need %3, for example --%1 %3.%4")
                .arg(option, shownName(name), CameraList::namePlace, extensions.first()));
    return name;
}

QString madeName(const QString& pattern, const CameraList::Entry& entry)
{
    return pattern.isEmpty() ? QString() : CameraList::named(pattern, entry);
}

} // namespace

const char* const DepthOptions::synopsis = "depth FILES... -o OUT.pfm|OUT.tiff [OPTIONS]";
const char* const DepthOptions::description =
    "Writes a depth map of the files as 32-bit floats: for each pixel the distance along the camera's axis, "
    "in\nmodel units, and NaN where nothing is. Or several maps of one list of cameras.";

QString DepthOptions::Map::worldFile() const
{
    const bool isTiff = QFileInfo(output).suffix().toLower() != QLatin1String("pfm");
    return isTiff && camera.gsd ? WorldFile::pathFor(output) : QString();
}

QStringList DepthOptions::Map::outputs() const
{
    QStringList names = {output, preview, cameraFile, worldFile()};
    names.removeAll(QString());
    return names;
}

std::vector<DepthOptions::Map> DepthOptions::maps() const
{
    if (cameras.isEmpty()) return {map};
    std::vector<Map> result;
    for (const CameraList::Entry& entry : CameraList::read(cameras, map.output, DepthWriter::extensions()))
        result.push_back(
            {entry.camera, entry.output, madeName(map.preview, entry), madeName(map.cameraFile, entry)});
    return result;
}

void DepthOptions::declare(CommandParser& parser)
{
    parser.add({"o", "output"}, "the map to write: .pfm, .tiff or .tif; with --cameras a pattern with {name}",
               "OUT");
    parser.add({"preview"}, "also as a picture: near is bright, far is dark, nothing is transparent",
               "OUT.png");
    parser.add({"json"}, "also the camera, which turns pixels into points", "OUT.json");
    CameraOptions::declare(parser);
    parser.add({"cameras"}, "a list of cameras (JSON), each with a map of its own", "FILE.json");
    PointSizeOption::declare(parser);
    FenceOption::declare(parser);
}

DepthOptions DepthOptions::read(const CommandParser& parser)
{
    DepthOptions options;
    options.files = parser.positionalArguments();
    if (options.files.isEmpty())
        throw UsageError(QStringLiteral("depth: no files; usage: viewer3d depth FILES... -o OUT.pfm"));
    const bool isNamedInList = parser.isSet("cameras") && !parser.isSet("output");
    if (parser.value("output").isEmpty() && !isNamedInList)
        throw UsageError(QStringLiteral("depth: no output; add -o OUT.pfm or -o OUT.tiff"));
    options.map.output = fileName(parser, "output", DepthWriter::extensions());
    options.map.preview = fileName(parser, "preview", {"png"});
    options.map.cameraFile = fileName(parser, "json", {"json"});
    options.cameras = CameraList::readOption(parser);
    options.map.camera = CameraOptions::read(parser);
    options.pointSize = PointSizeOption::read(parser);
    options.fence = FenceOption::read(parser);
    return options;
}
