#include <readers/colmap/readColmap.h>

#include <framework/ksp/Canceled.h>
#include <readers/common/reading.h>

#include <QtCore/QFileInfo>

namespace readers {

namespace {

/// Of the file beside the one at the path; its errors are told without the folder.
ColmapCamerasParser::Cameras readCameras(const QString& path, ksp::StagedProgress progress)
{
    const QString folder = QFileInfo(path).absolutePath() + QLatin1Char('/');
    ColmapCamerasParser::Cameras cameras;
    try {
        withFile(folder + QStringLiteral("cameras.txt"),
                 [&](QIODevice& device) { cameras = ColmapCamerasParser(device, progress).parse(); });
    } catch (const ksp::Canceled&) {
        throw;
    } catch (const ksp::CommonError& error) {
        throw ksp::CommonError(QStringLiteral("its ") + error.text().mid(folder.size()));
    }
    return cameras;
}

} // namespace

ColmapImagesParser::Stations readColmapStations(const QString& path, ksp::StagedProgress progress)
{
    constexpr double shareOfCameras = 5.0; // percent
    ColmapImagesParser::Stations stations;
    withFile(path, [&](QIODevice& device) {
        const ColmapCamerasParser::Cameras cameras = readCameras(path, progress.startStage(shareOfCameras));
        stations = ColmapImagesParser(device, cameras, progress.startStage(100.0 - shareOfCameras)).parse();
        if (stations.empty()) throw ksp::CommonError(QStringLiteral("has no pictures"));
    });
    return stations;
}

} // namespace readers
