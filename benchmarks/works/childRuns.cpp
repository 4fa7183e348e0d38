#include <benchmarks/works/childRuns.h>

#include <benchmarks/harness/Stopwatch.h>
#include <benchmarks/harness/residentBytes.h>
#include <benchmarks/plain/PlainLines.h>
#include <benchmarks/works/addElements.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>

#include <cstdio>
#include <stdexcept>

namespace {

void tellStart(const Lap& lap, const QImage& picture, const QString& path)
{
    if (!picture.save(path)) throw std::runtime_error("cannot write " + path.toStdString());
    std::printf("%.6f %.6f\n", lap.wall, lap.processor);
}

void startOurs(const QString& path, qint64 count)
{
    const LineSet set(count);
    const Stopwatch stopwatch;
    BenchScene scene(View::whole());
    addLines(scene, set, 1.0f);
    scene.drawFrame();
    tellStart(stopwatch.lap(), scene.picture(), path);
}

void startPlain(const QString& path, qint64 count)
{
    const LineSet set(count);
    const Stopwatch stopwatch;
    PlainContext context(View::whole().size);
    PlainLines lines(context, View::whole(), PlainLines::Thin, 1.0f);
    lines.load(set);
    context.beginFrame();
    lines.draw();
    context.endFrame();
    tellStart(stopwatch.lap(), context.picture(), path);
}

void tellMemory(qint64 count)
{
    const LineSet set(count);
    BenchScene scene(View::whole());
    addLines(scene, set, 1.0f);
    // What the driver keeps of the pixels of a frame differs from run to run by tens of megabytes.
    scene.gl().glEnable(GL_RASTERIZER_DISCARD);
    scene.drawFrame();
    scene.prepare();
    std::printf("%lld\n", residentBytes());
}

} // namespace

int runChild(const QStringList& arguments)
{
    const QString what = arguments.value(0), path = arguments.value(2);
    const qint64 count = arguments.value(1).toLongLong();
    if (what == "start-ours")
        startOurs(path, count);
    else if (what == "start-plain")
        startPlain(path, count);
    else if (what == "memory")
        tellMemory(count);
    else
        throw std::runtime_error("a child knows nothing of '" + what.toStdString() + "'");
    return 0;
}

QStringList askChild(const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(QCoreApplication::applicationFilePath(), QStringList("--child") + arguments);
    const bool isDone = process.waitForFinished(300000);
    if (!isDone || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        throw std::runtime_error("a process of its own has failed: " +
                                 process.readAllStandardError().trimmed().toStdString());
    return QString::fromLatin1(process.readAllStandardOutput()).split(' ', Qt::SkipEmptyParts);
}
