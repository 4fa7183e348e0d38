#include <benchmarks/works/lineWorks.h>

#include <benchmarks/harness/comparePictures.h>
#include <benchmarks/plain/PlainAtOnce.h>
#include <benchmarks/plain/PlainLines.h>
#include <benchmarks/plain/PlainPlaced.h>
#include <benchmarks/works/addElements.h>
#include <benchmarks/works/compareFrames.h>

namespace {

// Up to thirty lines lie over each other, and most pixels show one near its edge, which two programs round
// otherwise.
constexpr double wideAllowed = 0.02;

struct Pen
{
    float width; ///< pixels
    PlainLines::Technique technique;
    double allowed; ///< share of pixels that may differ
};

std::vector<Result> compareLines(qint64 size, const PairedRuns::Effort& effort, const Pen& pen)
{
    const LineSet set(size);
    BenchScene scene(View::whole());
    addLines(scene, set, pen.width);
    PlainContext context(View::whole().size);
    PlainLines plain(context, View::whole(), pen.technique, pen.width);
    plain.load(set);
    return compareFrames(
        scene, context, [&] { plain.draw(); }, effort, pen.allowed);
}

std::vector<Result> compareBatched(qint64 size, const PairedRuns::Effort& effort, bool isAtOnce)
{
    const LineSet set(size);
    const View view = View::whole();
    BenchScene scene(view, BenchScene::Batched);
    addLines(scene, set, 1.0f);
    PlainContext context(view.size);
    if (isAtOnce) {
        PlainAtOnce plain(context, set, view);
        return compareFrames(
            scene, context, [&] { plain.draw(); }, effort, 0.005);
    }
    PlainLines plain(context, view, PlainLines::Thin, 1.0f);
    plain.load(set);
    return compareFrames(
        scene, context, [&] { plain.draw(); }, effort, 0.005);
}

// Nothing of ours: how far below one draw an item any program could come.
std::vector<Result> comparePlaced(qint64 size, const PairedRuns::Effort& effort)
{
    const LineSet set(size);
    const View view = View::whole();
    PlainContext placedContext(view.size), context(view.size);
    PlainLines plain(context, view, PlainLines::Thin, 1.0f);
    plain.load(set);
    placedContext.makeCurrent();
    PlainPlaced placed(placedContext, set, view);
    const auto frames = [](PlainContext& where, auto& drawn) {
        return PairedRuns::timed([&where] { where.makeCurrent(); },
                                 [&where, &drawn] {
                                     where.beginFrame();
                                     drawn.draw();
                                     where.endFrame();
                                 });
    };
    Result result = Result::of(PairedRuns(frames(placedContext, placed), frames(context, plain), effort));
    result.problem = comparePictures(placedContext.picture(), context.picture(), 0.005);
    return {result};
}

Work batched(const QString& key, const QString& title, double goal, bool isAtOnce)
{
    const auto measure = [isAtOnce](qint64 size, const auto& effort) {
        return compareBatched(size, effort, isAtOnce);
    };
    return {key, title, goal, {1000, 10000, 100000}, {10000}, measure};
}

Work drawing(const QString& key, const QString& title, const Pen& pen)
{
    const auto measure = [pen](qint64 size, const auto& effort) { return compareLines(size, effort, pen); };
    return {key, title, 1.10, {1000, 10000, 100000}, {1000, 10000}, measure};
}

std::vector<Result> compareZoomed(qint64 size, const PairedRuns::Effort& effort)
{
    const View zoomed = View::ofShare(0.04);
    const LineSet set(size);
    BenchScene scene(zoomed);
    addLines(scene, set, 1.0f);
    PlainContext context(zoomed.size);
    PlainLines plain(context, zoomed, PlainLines::Thin, 1.0f);
    plain.load(set);
    return compareFrames(
        scene, context, [&] { plain.drawVisible(); }, effort, 0.005);
}

} // namespace

std::vector<Work> lineWorks()
{
    return {
        drawing(QStringLiteral("B1"), QStringLiteral("polylines, 1 px, beside one draw an item"),
                {1.0f, PlainLines::Thin, 0.005}),
        batched(QStringLiteral("B1b"), QStringLiteral("the batched drawer, beside one draw an item"), 0.85,
                false),
        batched(QStringLiteral("B1m"), QStringLiteral("the batched drawer, beside one draw for all"), 1.20,
                true),
        {QStringLiteral("B1p"),
         QStringLiteral("for scale: placed beforehand, plain too, beside one draw an item"),
         0.0,
         {100000},
         {},
         comparePlaced},
        drawing(QStringLiteral("B2"), QStringLiteral("polylines, 5 px, beside a geometry stage"),
                {5.0f, PlainLines::Stage, wideAllowed}),
        drawing(QStringLiteral("B2q"), QStringLiteral("polylines, 5 px, beside pulled quads"),
                {5.0f, PlainLines::Quads, wideAllowed}),
    };
}

std::vector<Work> zoomWorks()
{
    return {{QStringLiteral("B11"),
             QStringLiteral("polylines, 4 % of them in view"),
             1.15,
             {1000, 10000, 100000},
             {10000},
             compareZoomed}};
}
