#include <benchmarks/works/meshWorks.h>

#include <benchmarks/plain/PlainMesh.h>
#include <benchmarks/plain/PlainPoints.h>
#include <benchmarks/scene/BenchScene.h>
#include <benchmarks/works/addElements.h>
#include <benchmarks/works/compareFrames.h>
#include <benchmarks/works/lightOf.h>

namespace {

std::vector<Result> compareMesh(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    const QColor color(180, 160, 120);
    const GroundMesh mesh(size);
    BenchScene scene(view);
    addMesh(scene, mesh, color);
    PlainContext context(view.size);
    PlainMesh plain(context, mesh, view, lightOf(view), color);
    return compareFrames(
        scene, context, [&] { plain.draw(); }, effort, 0.005);
}

std::vector<Result> comparePoints(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    const PointSet set(size);
    BenchScene scene(view);
    addPoints(scene, set);
    PlainContext context(view.size);
    PlainPoints plain(context, set, view);
    return compareFrames(
        scene, context, [&] { plain.draw(); }, effort, 0.005);
}

} // namespace

std::vector<Work> meshWorks()
{
    return {
        {QStringLiteral("B4"),
         QStringLiteral("a lit mesh, of so many triangles"),
         1.05,
         {1000000, 5000000},
         {1000000},
         compareMesh},
        {QStringLiteral("B5"),
         QStringLiteral("coloured points, 2 px"),
         1.05,
         {1000, 10000, 100000, 1000000, 10000000},
         {1000, 1000000},
         comparePoints},
    };
}
