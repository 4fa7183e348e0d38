#include <viewer/window/FenceMenu.h>

#include <viewer/window/FenceEditor.h>
#include <viewer/window/PolygonTool.h>
#include <viewer/window/SphereTool.h>
#include <viewer/window/View3dWidget.h>
#include <viewer/window/ViewTools.h>
#include <viewer/window/toolAction.h>

#include <QtWidgets/QMenu>

FenceMenu::FenceMenu(QMenu& menu, View3dWidget& view, FenceEditor& editor)
    : QObject(&menu)
    , m_view(view)
    , m_editor(editor)
{
    PolygonTool* polygon = makePolygonTool();
    SphereTool* sphere = makeSphereTool();
    addToolAction(menu, tr("By &polygon"), "fenceByPolygon", {}, view.tools(), polygon);
    addToolAction(menu, tr("By &sphere"), "fenceBySphere", {}, view.tools(), sphere);
    menu.addSeparator();
    QAction* remove = menu.addAction(tr("&Remove"), this, [this] { m_editor.remove(); });
    remove->setObjectName(QStringLiteral("fenceRemove"));
    connect(&menu, &QMenu::aboutToShow, this, [this, remove] { remove->setEnabled(m_editor.hasFence()); });
    connect(&menu, &QMenu::aboutToHide, this, [remove] { remove->setEnabled(true); });

    auto* nodes = new FenceNodeTool(editor, this);
    view.tools().setIdleTool(nodes);
    connect(&view.tools(), &ViewTools::toolChanged, this, [this, polygon, sphere](ViewTool* tool) {
        if (tool == polygon)
            Q_EMIT told(tr("Click the fence's corners, double click ends, or drag a lasso; Esc ends"));
        if (tool == sphere) Q_EMIT told(tr("Press on the fence's centre and drag its radius; Esc ends"));
    });
    connect(&editor, &FenceEditor::fenceChanged, this, [this] {
        Q_EMIT told(m_editor.hasFence() ? tr("What lies outside of the fence is hidden; drag its points")
                                        : tr("There is no fence now"));
    });
}

PolygonTool* FenceMenu::makePolygonTool()
{
    auto* tool = new PolygonTool(this);
    connect(tool, &ViewTool::changed, this,
            [this, tool] { m_editor.preview(m_editor.sweptArea(tool->sketch())); });
    connect(tool, &AreaTool::areaChosen, this, [this](const QPolygonF& area) {
        m_editor.accept(m_editor.sweptArea(area));
        finish();
    });
    connect(tool, &AreaTool::areaCancelled, &m_editor, &FenceEditor::giveUp);
    return tool;
}

SphereTool* FenceMenu::makeSphereTool()
{
    const auto pick = [this](const QPointF& place) { return m_view.pointAt(place); };
    const auto distance = [this](const glm::dvec3& from, const QPointF& place) {
        return glm::distance(from, m_view.pointAtDepth(place, m_view.viewpoint().depthOf(from)));
    };
    auto* tool = new SphereTool(pick, distance, this);
    connect(tool, &SphereTool::sphereChanged, this, [this](const glm::dvec3& center, double radius) {
        m_editor.preview(m_editor.ball(center, radius));
    });
    connect(tool, &SphereTool::sphereChosen, this, [this](const glm::dvec3& center, double radius) {
        m_editor.accept(m_editor.ball(center, radius));
        finish();
    });
    connect(tool, &SphereTool::sphereCancelled, &m_editor, &FenceEditor::giveUp);
    return tool;
}

/// The view is for looking again.
void FenceMenu::finish()
{
    m_view.tools().setTool(nullptr);
}
