#pragma once

#include <viewer/window/ViewTool.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>

class QKeyEvent;
class QMouseEvent;
class QWidget;

/// Hands the mouse and the keys of a view to the tool that is chosen, and shows over the view what it draws.
class ViewTools : public QObject
{
    Q_OBJECT
public:
    /// The view owns this.
    explicit ViewTools(QWidget& view);

    /// The chosen tool; null when there is none.
    ViewTool* tool() const { return m_tool; }
    /// Chooses a tool, or none with null; the former one is cancelled. Not owned.
    void setTool(ViewTool* tool);
    /// A tool that has the mouse wherever it takes it and no tool is chosen. Not owned.
    void setIdleTool(ViewTool* tool) { m_idleTool = tool; }

    // Each returns whether a tool took the event, so that the view does nothing with it.

    bool press(const QMouseEvent& event);
    bool move(const QMouseEvent& event);
    bool release(const QMouseEvent& event);
    bool doubleClick(const QMouseEvent& event);
    /// Escape cancels what the tool has begun, and where it has begun nothing, the tool.
    bool key(const QKeyEvent& event);

Q_SIGNALS:
    /// Another tool, or none, is chosen.
    void toolChanged(ViewTool* tool);

private:
    class Overlay;

    QPointer<ViewTool> m_tool;
    QPointer<ViewTool> m_idleTool;
    QPointer<ViewTool> m_holder; // has the mouse
    Overlay* m_overlay;
};
