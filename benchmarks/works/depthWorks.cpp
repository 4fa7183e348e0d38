#include <benchmarks/plain/PlainDepth.h>
#include <benchmarks/scene/BenchScene.h>
#include <benchmarks/works/addElements.h>
#include <benchmarks/works/meshWorks.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>

#include <cmath>

namespace {

/// Pixels whose distances differ by more than a hundredth of a unit, or where only one has any.
QString compareDistances(const QImage& map, const std::vector<float>& plain)
{
    int different = 0, covered = 0;
    for (int y = 0; y < map.height(); ++y) {
        const auto* row = reinterpret_cast<const float*>(map.constScanLine(y));
        for (int x = 0; x < map.width(); ++x) {
            const float other = plain[static_cast<std::size_t>((map.height() - 1 - y) * map.width() + x)];
            covered += !std::isnan(other);
            different += std::isnan(row[x]) != std::isnan(other) || std::abs(row[x] - other) > 0.01f;
        }
    }
    if (covered < map.width() * map.height() / 4) return QStringLiteral("the map is empty");
    if (different <= covered / 200) return {};
    return QStringLiteral("the maps differ in %1 of %2 pixels").arg(different).arg(covered);
}

std::vector<Result> compareDepthMaps(qint64 size, const PairedRuns::Effort& effort)
{
    const View whole = View::whole();
    const glm::dmat4 view(whole.view), projection(whole.projection);
    const GroundMesh mesh(size);
    BenchScene scene(whole);
    const CModelElement* element = addMesh(scene, mesh, Qt::white);
    const std::vector<Drawable3dItem*> items = {scene.scene().getItems().at(element->getId())};
    SceneDepthMapGenerator generator(whole.size);
    PlainContext context(whole.size);
    PlainDepth plain(context, mesh);

    QImage map;
    std::vector<float> distances;
    const PairedRuns runs(PairedRuns::timed([&] { scene.prepare(); },
                                            [&] { map = generator.generate(items, view, projection); }),
                          PairedRuns::timed([&] { context.makeCurrent(); },
                                            [&] { distances = plain.distances(view, projection); }),
                          effort);
    Result result = Result::of(runs);
    result.problem = compareDistances(map, distances);
    return {result};
}

} // namespace

std::vector<Work> depthWorks()
{
    return {{QStringLiteral("B8"),
             QStringLiteral("depth map of a mesh of so many triangles"),
             1.05,
             {1000000},
             {1000000},
             compareDepthMaps}};
}
