#include <viewer/cli/Commands.h>

#include <viewer/FileOpener.h>
#include <viewer/FrameRenderer.h>
#include <viewer/Host.h>
#include <viewer/PictureFile.h>
#include <viewer/cli/ProgressBar.h>

#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CProject.h>

void commands::render(const RenderOptions& options)
{
    PictureFile::requireWritable(options.output);
    ProgressBar bar;
    Host host(Host::Settings::InMemory);
    host.setPointSize(options.pointSize);
    const std::unique_ptr<CProject> project = host.createProject();
    const std::unique_ptr<Scene3d> scene = host.createScene(*project);
    FileOpener opener(host, *project, scene.get());
    opener.open(options.files, bar.progress());
    PictureFile::requireNoInput(options.output, options.files + opener.getMeshFiles());

    scene->flushBounds();
    FrameRenderer renderer(*scene);
    const QColor background = options.background.isValid()
                                  ? options.background
                                  : View3dSettings::getInstance()->getBackgroundColor();
    const Viewpoint viewpoint = options.camera.viewpoint(*scene, renderer.visibleBounds());
    const QImage picture =
        bar.runSilent([&] { return renderer.picture(viewpoint, options.camera.size, background); });
    bar.throwIfInterrupted();
    PictureFile::write(options.output, picture);
}
