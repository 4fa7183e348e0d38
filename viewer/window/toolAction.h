#pragma once

class QAction;
class QKeySequence;
class QMenu;
class QString;
class ViewTool;
class ViewTools;

/// Adds an action to the menu that chooses the tool, and shows whether it is chosen. name: the action's
/// object name. None is owned.
QAction* addToolAction(QMenu& menu, const QString& text, const char* name, const QKeySequence& shortcut,
                       ViewTools& tools, ViewTool* tool);
