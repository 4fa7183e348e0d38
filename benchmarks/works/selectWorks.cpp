#include <benchmarks/works/selectWorks.h>

#include <benchmarks/plain/PlainSelection.h>
#include <benchmarks/works/addElements.h>

#include <Viewer3dModule/scene/SelectionOptions.h>

#include <algorithm>
#include <iterator>

namespace {

/// The elements got their identifiers in the order of the lines.
QString compareSets(std::vector<LONGID> ours, const std::vector<CModelElement*>& elements,
                    const std::vector<std::uint32_t>& plain)
{
    std::vector<LONGID> expected;
    for (const std::uint32_t number : plain)
        expected.push_back(elements[number - 1]->getId());
    std::sort(ours.begin(), ours.end());
    std::sort(expected.begin(), expected.end());
    std::vector<LONGID> different;
    std::set_symmetric_difference(ours.begin(), ours.end(), expected.begin(), expected.end(),
                                  std::back_inserter(different));
    if (ours.size() < elements.size() / 40) return QStringLiteral("too few items are selected");
    // A line that touches the border of a pixel may touch it in one program only.
    if (different.size() <= ours.size() / 500) return {};
    return QStringLiteral("%1 of %2 items are selected by one of the two only")
        .arg(different.size())
        .arg(ours.size());
}

std::vector<Result> compareSelections(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    const LineSet set(size);
    BenchScene scene(view);
    const std::vector<CModelElement*> elements = addLines(scene, set, 1.0f);
    PlainContext context(view.size);
    PlainSelection plain(context, set, view);

    std::vector<LONGID> ours;
    std::vector<std::uint32_t> found;
    const PaintContext pass = scene.context();
    const PairedRuns runs(
        PairedRuns::timed([&] { scene.prepare(); },
                          [&] { ours = scene.scene().selectItems(pass, QRectF(selectedRect()), {}); }),
        PairedRuns::timed(
            [&] {
                context.makeCurrent();
                context.beginFrame();
                context.endFrame();
            },
            [&] { found = plain.select(selectedRect()); }),
        effort);
    Result result = Result::of(runs);
    result.problem = compareSets(ours, elements, found);
    return {result};
}

} // namespace

std::vector<Work> selectWorks()
{
    return {{QStringLiteral("B7"),
             QStringLiteral("rectangle selection of 5 % of the polylines"),
             1.25,
             {1000, 10000, 100000},
             {10000},
             compareSelections}};
}
