#include <viewer/cli/Commands.h>

#include <viewer/FileOpener.h>
#include <viewer/FrameRenderer.h>
#include <viewer/Host.h>
#include <viewer/PictureFile.h>
#include <viewer/cli/ProgressBar.h>

#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CProject.h>

namespace {

/// The viewpoint in scene coordinates; the scene's bounds must be up to date.
Viewpoint makeViewpoint(const CameraOptions& options, const Scene3d& scene, const FrameRenderer& renderer,
                        const QSize& size)
{
    if (!options.position)
        return Viewpoint::fitting(renderer.visibleBounds(), standardViewDirection(options.view),
                                  options.projection, size);
    const CameraOptions::Position& position = *options.position;
    const glm::dmat4 toScene = scene.modelToSceneTransform();
    const glm::dvec3 eye = scene.mapFromModel(position.eye);
    const glm::dvec3 forward(toScene * glm::dvec4(position.target - position.eye, 0.0));
    const glm::dvec3 up = glm::normalize(glm::dvec3(toScene * glm::dvec4(position.up, 0.0)));
    return Viewpoint::looking(eye, eye + forward, up, options.projection, size);
}

} // namespace

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
    const Viewpoint viewpoint = makeViewpoint(options.camera, *scene, renderer, options.camera.size);
    const QImage picture =
        bar.runSilent([&] { return renderer.picture(viewpoint, options.camera.size, background); });
    bar.throwIfInterrupted();
    PictureFile::write(options.output, picture);
}
