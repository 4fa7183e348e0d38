#include <viewer/window/SelectionMenu.h>

#include <viewer/window/ElementSelection.h>
#include <viewer/window/PolygonTool.h>
#include <viewer/window/RectangleTool.h>
#include <viewer/window/View3dWidget.h>
#include <viewer/window/ViewTools.h>
#include <viewer/window/toolAction.h>

#include <QtWidgets/QMenu>

namespace {

QAction* addSwitch(QMenu& menu, const QString& text, const char* name)
{
    QAction* action = menu.addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setCheckable(true);
    return action;
}

ElementSelection::Change changeFor(Qt::KeyboardModifiers modifiers)
{
    if (modifiers & Qt::ControlModifier) return ElementSelection::Remove;
    return modifiers & Qt::ShiftModifier ? ElementSelection::Add : ElementSelection::Replace;
}

} // namespace

SelectionMenu::SelectionMenu(QMenu& menu, View3dWidget& view, ElementSelection& selection)
    : QObject(&menu)
    , m_view(view)
    , m_selection(selection)
{
    auto* rectangle = new RectangleTool(this);
    auto* polygon = new PolygonTool(this);
    addToolAction(menu, tr("By &rectangle"), "selectByRectangle", QKeySequence(Qt::Key_R), view.tools(),
                  rectangle);
    addToolAction(menu, tr("By &polygon or lasso"), "selectByPolygon", QKeySequence(Qt::Key_G), view.tools(),
                  polygon);
    for (AreaTool* tool : std::initializer_list<AreaTool*>{rectangle, polygon})
        connect(tool, &AreaTool::areaChosen, this, &SelectionMenu::select);
    menu.addSeparator();
    m_visibleOnly = addSwitch(menu, tr("Only what is &seen"), "selectVisible");
    m_inside = addSwitch(menu, tr("Only what lies wholly &inside"), "selectInside");
    menu.addSeparator();
    QAction* none = menu.addAction(tr("Select &nothing"), this,
                                   [this] { m_selection.change({}, ElementSelection::Replace); });
    none->setObjectName(QStringLiteral("selectNothing"));
    connect(&selection, &ElementSelection::changed, this, &SelectionMenu::tellCount);
    connect(&view.tools(), &ViewTools::toolChanged, this, [this, rectangle, polygon](ViewTool* tool) {
        const QString more = tr("Shift adds, Ctrl takes out, Esc ends");
        if (tool == rectangle) Q_EMIT told(tr("Drag a rectangle over what to select; %1").arg(more));
        if (tool == polygon)
            Q_EMIT told(tr("Click the corners, double click ends, or drag a lasso; %1").arg(more));
    });
}

SelectionOptions SelectionMenu::options() const
{
    SelectionOptions options;
    options.mode = m_visibleOnly->isChecked() ? SelectionMode::Visible : SelectionMode::Through;
    options.rule = m_inside->isChecked() ? SelectionRule::Inside : SelectionRule::Touching;
    return options;
}

void SelectionMenu::select(const QPolygonF& area, Qt::KeyboardModifiers modifiers)
{
    m_selection.change(m_view.select(area, options()), changeFor(modifiers));
}

void SelectionMenu::tellCount()
{
    const auto count = m_selection.ids().size();
    Q_EMIT told(count == 1 ? tr("1 element is selected") : tr("%1 elements are selected").arg(count));
}
