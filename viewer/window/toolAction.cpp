#include <viewer/window/toolAction.h>

#include <viewer/window/ViewTools.h>

#include <QtWidgets/QAction>
#include <QtWidgets/QMenu>

QAction* addToolAction(QMenu& menu, const QString& text, const char* name, const QKeySequence& shortcut,
                       ViewTools& tools, ViewTool* tool)
{
    QAction* action = menu.addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(shortcut);
    action->setCheckable(true);
    QObject::connect(action, &QAction::triggered, &tools,
                     [&tools, tool](bool checked) { tools.setTool(checked ? tool : nullptr); });
    QObject::connect(&tools, &ViewTools::toolChanged, action,
                     [action, tool](ViewTool* now) { action->setChecked(now == tool); });
    return action;
}
