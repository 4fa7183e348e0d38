#include <viewer/cli/Commands.h>

#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/PictureFile.h>
#include <viewer/SceneExporter.h>
#include <viewer/cli/ProgressBar.h>
#include <viewer/printable.h>

#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/Canceled.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CProject.h>

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

namespace {

void write(SceneExporter& exporter, const ExportOptions& options, ksp::StagedProgress progress)
{
    const auto fail = [&options](const QString& reason) {
        throw ksp::CommonError(
            QStringLiteral("%1: cannot be written: %2").arg(shownName(options.output), reason));
    };
    QSaveFile file(options.output);
    if (!file.open(QIODevice::WriteOnly)) fail(file.errorString());
    try {
        exporter.write(file, options.ascii ? PlyWriter::Format::Ascii : PlyWriter::Format::Binary, progress);
    } catch (const ksp::Canceled&) {
        throw;
    } catch (const ksp::CommonError& error) {
        fail(error.text());
    }
    if (!file.commit()) fail(file.errorString());
}

} // namespace

void commands::exportScene(const ExportOptions& options)
{
    PictureFile::requireWritable(options.output);
    ProgressBar bar;
    Host host(Host::Settings::InMemory);
    const std::unique_ptr<CProject> project = host.createProject();
    const std::unique_ptr<Scene3d> scene = host.createScene(*project);
    FileOpener opener(host, *project, scene.get());
    ksp::StagedProgress progress = bar.progress();
    opener.open(options.files, progress.startStage(50.0));
    PictureFile::requireNoInput(options.output, options.files + opener.getMeshFiles());

    scene->flushBounds();
    SceneExporter exporter(*scene);
    if (exporter.counts().vertices() == 0)
        throw ksp::CommonError(QStringLiteral("%1: not written: the files hold nothing that is drawn")
                                   .arg(shownName(options.output)));
    write(exporter, options, progress.startStage(100.0, printable(QFileInfo(options.output).fileName())));
}
