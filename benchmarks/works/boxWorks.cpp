#include <benchmarks/works/boxWorks.h>

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

} // namespace

std::vector<Work> boxWorks()
{
    return {{QStringLiteral("B3"),
             QStringLiteral("lit boxes of 12 triangles, beside one draw an item"),
             1.05,
             {1000, 10000},
             {1000, 10000},
             compareBoxes}};
}
