#pragma once

#include <QtCore/QObject>

class FenceEditor;
class PolygonTool;
class QMenu;
class SphereTool;
class View3dWidget;

/// The menu with the tools that draw the project's fence in the view, and what removes it. The fence's node
/// points can be dragged while no tool is chosen.
class FenceMenu : public QObject
{
    Q_OBJECT
public:
    /// Fills the menu, which owns this. The others are not owned and outlive it.
    FenceMenu(QMenu& menu, View3dWidget& view, FenceEditor& editor);

Q_SIGNALS:
    /// A line for the status bar.
    void told(const QString& text);

private:
    PolygonTool* makePolygonTool();
    SphereTool* makeSphereTool();
    void finish();

    View3dWidget& m_view;
    FenceEditor& m_editor;
};
