#include <benchmarks/works/changeWorks.h>

#include <benchmarks/data/Dice.h>
#include <benchmarks/harness/comparePictures.h>
#include <benchmarks/harness/quantileOf.h>
#include <benchmarks/scene/LineElement.h>
#include <benchmarks/works/addElements.h>

#include <QtCore/QCoreApplication>

namespace {

// All that happens between the change and the picture counts: what the scene has queued, and the bounds.
std::vector<Result> compareChanged(qint64 size, const PairedRuns::Effort& effort)
{
    const LineSet set(size);
    BenchScene scene(View::whole());
    const std::vector<CModelElement*> elements = addLines(scene, set, 1.0f);
    Dice dice;
    const auto change = [&](std::size_t index, const QColor& color) {
        static_cast<LineElement*>(elements[index % elements.size()])->setColor(color);
    };
    const auto showAll = [&] {
        QCoreApplication::processEvents();
        scene.drawFrame();
    };
    const PairedRuns runs(PairedRuns::timed(
                              [&] {
                                  scene.prepare();
                                  change(7, dice.color());
                              },
                              showAll),
                          PairedRuns::timed([&] { scene.prepare(); }, showAll), effort);
    Result frame = Result::of(runs);
    change(7, Qt::magenta); // no other line has so little green
    showAll();
    if (pixelsOf(scene.picture(), Qt::magenta) == 0)
        frame.problem = QStringLiteral("the picture does not show the change");

    std::vector<double> wall, processor;
    for (std::size_t i = 0; i < 1000; ++i) {
        const QColor color = dice.color();
        const Stopwatch stopwatch;
        change(i * 7919, color);
        wall.push_back(1e3 * stopwatch.wall());
        processor.push_back(1e3 * stopwatch.processor());
    }
    Result call;
    call.kind = Result::Single;
    call.key = QStringLiteral("C2");
    call.work = QStringLiteral("the call that changes one of the polylines");
    call.goal = 50.0;
    call.unit = QStringLiteral("µs");
    call.processor.ours = quantileOf(processor, 0.5);
    call.wall.ours = quantileOf(wall, 0.5) * 1e-3;
    scene.prepare();
    return {frame, call};
}

} // namespace

std::vector<Work> changeWorks()
{
    return {{QStringLiteral("C1"),
             QStringLiteral("frame after one polyline has changed, beside an unchanged one"),
             1.03,
             {1000, 10000, 100000},
             {10000},
             compareChanged}};
}
