#include <benchmarks/works/lifeWorks.h>

#include <benchmarks/data/Dice.h>
#include <benchmarks/harness/comparePictures.h>
#include <benchmarks/plain/PlainLines.h>
#include <benchmarks/scene/LineElement.h>
#include <benchmarks/works/addElements.h>
#include <benchmarks/works/childRuns.h>
#include <benchmarks/works/compareFrames.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>

namespace {

constexpr double allowed = 0.005;

// From the context to the first picture, each run in a process of its own.
std::vector<Result> compareStarts(qint64 size, const PairedRuns::Effort& effort)
{
    const QTemporaryDir folder;
    const QString ours = folder.filePath(QStringLiteral("ours.png"));
    const QString plain = folder.filePath(QStringLiteral("plain.png"));
    const auto start = [size](const char* what, const QString& path) -> PairedRuns::Side {
        return [what, size, path] {
            const QStringList times = askChild({what, QString::number(size), path});
            return Lap{times.value(0).toDouble(), times.value(1).toDouble()};
        };
    };
    const PairedRuns runs(start("start-ours", ours), start("start-plain", plain), effort);
    Result result = Result::of(runs);
    result.problem = comparePictures(QImage(ours), QImage(plain), allowed);
    return {result};
}

// From vertices in memory to the first frame that shows them: uploads that wait for a frame count.
std::vector<Result> compareBuilding(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    const LineSet set(size);
    BenchScene scene(view);
    PlainContext context(view.size);
    PlainLines plain(context, view, PlainLines::Thin, 1.0f);
    const PairedRuns runs(PairedRuns::timed([&] { scene.removeAll(LineElement::Type); },
                                            [&] {
                                                addLines(scene, set, 1.0f);
                                                scene.drawFrame();
                                            }),
                          PairedRuns::timed(
                              [&] {
                                  context.makeCurrent();
                                  plain.clear();
                              },
                              [&] {
                                  plain.load(set);
                                  context.beginFrame();
                                  plain.draw();
                                  context.endFrame();
                              }),
                          effort);
    Result result = Result::of(runs);
    result.problem = comparePictures(scene.picture(), context.picture(), allowed);
    return {result};
}

// A new colour for one, whose vertices are sent again, and the frame that shows it.
std::vector<Result> compareEditing(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    const LineSet set(size);
    const std::size_t edited = set.lines.size() / 3;
    BenchScene scene(view);
    auto* element = static_cast<LineElement*>(addLines(scene, set, 1.0f)[edited]);
    PlainContext context(view.size);
    PlainLines plain(context, view, PlainLines::Thin, 1.0f);
    plain.load(set);
    Dice ourDice, plainDice;
    QColor color;
    const PairedRuns runs(PairedRuns::timed([&] { scene.prepare(); },
                                            [&] {
                                                color = ourDice.color();
                                                element->setColor(color);
                                                QCoreApplication::processEvents();
                                                scene.drawFrame();
                                            }),
                          PairedRuns::timed([&] { context.makeCurrent(); },
                                            [&] {
                                                plain.edit(static_cast<std::uint32_t>(edited + 1),
                                                           plainDice.color(), set.copyOf(edited));
                                                context.beginFrame();
                                                plain.draw();
                                                context.endFrame();
                                            }),
                          effort);
    Result result = Result::of(runs);
    const QImage ours = scene.picture(), theirs = context.picture();
    result.problem = comparePictures(ours, theirs, allowed);
    if (result.problem.isEmpty()) result.problem = compareColored(ours, theirs, color);
    return {result};
}

// The slope between half of the items and all of them, so that what a scene costs by itself does not count;
// vertices, which lie in the set and in a buffer, do not either.
std::vector<Result> measureMemory(qint64 size, const PairedRuns::Effort&)
{
    const auto bytes = [](qint64 count) {
        return askChild({QStringLiteral("memory"), QString::number(count)}).value(0).toDouble();
    };
    constexpr double vertices = 2.0 * LineSet::VerticesPerLine * sizeof(glm::vec3) + sizeof(LineSet::Line);
    Result result;
    result.kind = Result::Single;
    result.unit = QStringLiteral("B");
    const qint64 half = size / 2;
    result.processor.ours = (bytes(size) - bytes(half)) / static_cast<double>(size - half) - vertices;
    return {result};
}

} // namespace

std::vector<Work> lifeWorks()
{
    return {
        {QStringLiteral("B9s"),
         QStringLiteral("start to first picture, of so many polylines"),
         1.10,
         {100},
         {100},
         compareStarts},
        {QStringLiteral("B9b"),
         QStringLiteral("building polylines, to their first frame"),
         1.20,
         {1000, 10000},
         {10000},
         compareBuilding},
        {QStringLiteral("B9e"),
         QStringLiteral("editing one of the polylines, and the frame after it"),
         1.03,
         {1000, 10000},
         {10000},
         compareEditing},
        {QStringLiteral("B10"),
         QStringLiteral("memory an item beyond its vertices"),
         700,
         {100000},
         {100000},
         measureMemory},
    };
}
