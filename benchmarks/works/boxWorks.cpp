#include <benchmarks/works/boxWorks.h>

#include <benchmarks/plain/PlainAtOnce.h>
#include <benchmarks/plain/PlainBoxes.h>
#include <benchmarks/works/addElements.h>
#include <benchmarks/works/compareFrames.h>
#include <benchmarks/works/lightOf.h>

namespace {

std::vector<Result> compareBoxes(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    const BoxSet set(size);
    BenchScene scene(view);
    addBoxes(scene, set);
    PlainContext context(view.size);
    PlainBoxes plain(context, set, view, lightOf(view));
    return compareFrames(
        scene, context, [&] { plain.draw(); }, effort, 0.005);
}

std::vector<Result> compareBatched(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    const BoxSet set(size);
    BenchScene scene(view, BenchScene::Batched);
    addBoxes(scene, set);
    PlainContext context(view.size);
    PlainAtOnce plain(context, set, view, lightOf(view));
    return compareFrames(
        scene, context, [&] { plain.draw(); }, effort, 0.005);
}

} // namespace

std::vector<Work> boxWorks()
{
    return {{QStringLiteral("B3"),
             QStringLiteral("lit boxes of 12 triangles, beside one draw an item"),
             1.05,
             {1000, 10000},
             {1000, 10000},
             compareBoxes},
            {QStringLiteral("B3m"),
             QStringLiteral("the batched drawer, beside one draw for all"),
             1.20,
             {1000, 10000},
             {10000},
             compareBatched}};
}
