#include <readers/colmap/ColmapPlugin.h>

#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <framework/ksp/CommonError.h>
#include <readers/colmap/ColmapPointsParser.h>
#include <readers/colmap/readColmap.h>
#include <readers/common/reading.h>

#include <QtCore/QFileInfo>

namespace {

bool isNamed(const QString& path, const char* name)
{
    return QFileInfo(path).fileName().compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

std::vector<MeshData> parsePoints(QIODevice& device, const QString& path, ksp::StagedProgress progress)
{
    return readers::ColmapPointsParser(device, path, std::move(progress)).parse();
}

std::unique_ptr<IDrawableNode3d> makePoints(const QString& path, ksp::StagedProgress progress)
{
    if (!isNamed(path, "points3D.txt"))
        throw ksp::CommonError(path + QStringLiteral(": belongs to no COLMAP model, a folder with "
                                                     "cameras.txt, images.txt and points3D.txt"));
    std::vector<MeshData> meshes = readers::readMeshFile(path, &parsePoints, std::move(progress));
    return std::make_unique<MeshNode3d>(std::move(meshes.front()));
}

} // namespace

bool ColmapPlugin::extendApplication(Application*, const std::vector<int>&)
{
    constexpr int last = 99;
    DrawableNode3dFactory::instance().registerNodeCreator({QStringLiteral("txt")}, &makePoints, last);
    return true;
}

QStringList ColmapPlugin::getExtensions() const
{
    return {QStringLiteral("txt")};
}

bool ColmapPlugin::recognizes(const QString& path) const
{
    return isNamed(path, "images.txt");
}

std::vector<std::unique_ptr<CModelElement>> ColmapPlugin::read(const QString& path,
                                                               ksp::StagedProgress progress)
{
    std::vector<std::unique_ptr<CModelElement>> elements;
    for (auto& station : readers::readColmapStations(path, std::move(progress)))
        elements.push_back(std::move(station));
    return elements;
}
