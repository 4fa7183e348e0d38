#include <viewer/cli/Commands.h>

#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/InputFiles.h>
#include <viewer/OutputFile.h>
#include <viewer/SceneExporter.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/ProgressBar.h>
#include <viewer/printable.h>

#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/Canceled.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CProject.h>

#include <QtCore/QFileInfo>

namespace {

void write(SceneExporter& exporter, const ExportOptions& options, ksp::StagedProgress progress)
{
    OutputFile file(options.output);
    try {
        exporter.write(file.device(), options.ascii ? PlyWriter::Format::Ascii : PlyWriter::Format::Binary,
                       progress);
    } catch (const ksp::Canceled&) {
        throw;
    } catch (const ksp::CommonError& error) {
        file.fail(error.text());
    }
    file.commit();
}

} // namespace

void commands::exportScene(const ExportOptions& options)
{
    OutputFile::requireWritable(options.output);
    const FenceShape fence = FenceOption::load(options.fence);
    ProgressBar bar;
    Host host(Host::Settings::InMemory);
    options.reading.applyTo(host);
    const std::unique_ptr<CProject> project = host.createProject();
    const std::unique_ptr<Scene3d> scene = host.createScene(*project);
    FileOpener opener(host, *project, scene.get());
    ksp::StagedProgress progress = bar.progress();
    opener.open(options.files, progress.startStage(50.0));
    FenceOption::apply(fence, *project);
    QStringList read = options.files + opener.getMeshFiles();
    if (!options.fence.isEmpty()) read.append(options.fence);
    OutputFile::requireNoInput(options.output, InputFiles(read));

    scene->flushBounds();
    SceneExporter exporter = bar.runSilent([&] { return SceneExporter(*scene); });
    if (exporter.counts().vertices() == 0)
        throw ksp::CommonError(QStringLiteral("%1: not written: the files hold nothing that is drawn%2")
                                   .arg(shownName(options.output),
                                        scene->isFenced() ? QStringLiteral(" inside the fence") : QString()));
    write(exporter, options, progress.startStage(100.0, printable(QFileInfo(options.output).fileName())));
}
