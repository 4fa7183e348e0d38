// A minimal host: loads the plug-ins, shows a line of its own and whatever the plug-ins add, and writes a
// picture.
//     example_host PICTURE.png [PLUGIN_FOLDER]
#include "LineItem.h"

#include <Viewer3dModule/camera/CCamera.h>
#include <Viewer3dModule/camera/ParallelProjection.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/host/CGraphics3dExtension.h>
#include <Viewer3dModule/host/IScene3dExtension.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/app/Application.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtGui/QOpenGLFramebufferObject>
#include <QtWidgets/QApplication>

#include <algorithm>

static QImage drawPicture(Scene3d& scene, const QSize& size)
{
    scene.flushBounds();
    const glm::dvec3 center = scene.getCenter(), extent = scene.getMax() - scene.getMin();
    CCamera camera; // from above, north up, with a margin of a quarter of the extent
    camera.setPositionCamera(center + glm::dvec3(0, 0, 1000), center, glm::dvec3(0, 1, 0));
    ParallelProjection projection;
    projection.setProjectionRatio(1.25 * std::max(extent.x / size.width(), extent.y / size.height()));

    PaintContext context;
    context.setViewport(QRect(QPoint(0, 0), size));
    context.view = glm::mat4(camera.getViewMatrix());
    context.projection = glm::mat4(projection.calcProjectionMatrix(size, 2000.0, 1.0)); // far, near
    context.vertexArray = scene.getDefaultVao();
    context.scene = &scene;

    scene.makeCurrent();
    QOpenGLFramebufferObject target(size, QOpenGLFramebufferObject::CombinedDepthStencil);
    target.bind();
    OpenGLFunctions* gl = scene.getGLFunctions();
    gl->glViewport(0, 0, size.width(), size.height());
    gl->glClearColor(1.0f, 1.0f, 1.0f, 1.0f);
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    scene.drawFrame(context, nullptr, {});
    return target.toImage();
}

int main(int argc, char** argv)
{
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QSurfaceFormat::setDefaultFormat(format);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts); // scenes and views share what is on the GPU
    QApplication application(argc, argv);

    Application host;
    host.loadPlugins(application.arguments().mid(2) + PluginLoader::defaultFolders());
    const std::unique_ptr<CProject> project = host.createProject();
    CProjectModel* model = project->getModel();
    Scene3d scene(model, nullptr);
    CGraphics3dExtension::registerElementType<LineElement, LineItem>(LineElement::Type, &scene);
    for (QObject* extension : host.getExtensions())
        if (auto* forScenes = qobject_cast<IScene3dExtension*>(extension)) forScenes->extendScene(&scene);

    // A square of 100 m, in the coordinates of a national grid.
    auto line = std::make_unique<LineElement>();
    for (const glm::dvec2& corner : {glm::dvec2(0, 0), {100, 0}, {100, 100}, {0, 100}, {0, 0}})
        line->points.emplace_back(600000 + corner.x, 5000000 + corner.y, 250);
    model->getCreateItemManager(LineElement::Type)->addItem(std::move(line));

    return drawPicture(scene, QSize(400, 400)).save(application.arguments().value(1)) ? 0 : 1;
}
