#include <viewer/cli/Commands.h>

#include <viewer/FileOpener.h>
#include <viewer/FrameRenderer.h>
#include <viewer/Host.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/ProgressBar.h>
#include <viewer/elements/ElementTypes.h>

#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/scene/longestTargetSide.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

namespace {

/// A picture that one pass cannot draw is refused: an element that lies in several tiles is one element.
void requireOnePass(const FrameRenderer& renderer, const QSize& size)
{
    const int longest = longestTargetSide(renderer.makeCurrent());
    if (size.width() > longest || size.height() > longest)
        throw ksp::CommonError(QStringLiteral("nothing is selected in a picture of %1 x %2 pixels: this "
                                              "driver takes at most %3 pixels a side")
                                   .arg(size.width())
                                   .arg(size.height())
                                   .arg(longest));
}

/// Ascending.
std::vector<LONGID> selectedBy(Scene3d& scene, const SelectOptions& options)
{
    scene.flushBounds();
    const FrameRenderer renderer(scene);
    const CameraOptions::View view = options.camera.see(scene, renderer.visibleBounds());
    requireOnePass(renderer, view.size);
    const PaintContext context = renderer.paintContext(view.viewpoint, view.size,
                                                       QRect(QPoint(0, 0), view.size), scene.getDefaultVao());
    SelectionOptions how;
    how.mode = options.mode;
    how.rule = options.rule;
    how.visibilityFilter = scene.getVisibilityFilter();
    std::vector<LONGID> ids = scene.selectItems(context, options.area, how);
    std::sort(ids.begin(), ids.end());
    return ids;
}

QByteArray asJson(const std::vector<LONGID>& ids, const CProjectModel& model)
{
    QJsonArray elements;
    for (const LONGID id : ids) {
        const CModelElement* element = model.getElement(id);
        if (!element) continue;
        elements.append(QJsonObject{{"id", static_cast<qint64>(id)},
                                    {"type", element_types::name(element->getType())},
                                    {"name", element->getName()}});
    }
    return QJsonDocument(QJsonObject{{"elements", elements}}).toJson();
}

QByteArray asLines(const std::vector<LONGID>& ids)
{
    QByteArray lines;
    for (const LONGID id : ids)
        lines += QByteArray::number(static_cast<qlonglong>(id)) + '\n';
    return lines;
}

} // namespace

QByteArray commands::select(const SelectOptions& options)
{
    const FenceShape fence = FenceOption::load(options.fence);
    ProgressBar bar;
    Host host(Host::Settings::InMemory);
    host.setPointSize(options.pointSize);
    options.reading.applyTo(host);
    const std::unique_ptr<CProject> project = host.createProject();
    const std::unique_ptr<Scene3d> scene = host.createScene(*project);
    FileOpener(host, *project, scene.get()).open(options.files, bar.progress());
    FenceOption::apply(fence, *project);
    const std::vector<LONGID> ids = bar.runSilent([&] { return selectedBy(*scene, options); });
    return options.json ? asJson(ids, *project->getModel()) : asLines(ids);
}
