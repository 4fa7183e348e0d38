#pragma once

#include <viewer/window/AreaTool.h>

/// Draws a polygon: click for click, a double click or Enter ending it and Backspace taking a corner back, or
/// as a lasso in one drag, which ends where the button goes up.
class PolygonTool : public AreaTool
{
    Q_OBJECT
public:
    using AreaTool::AreaTool;

    bool press(const QPointF& place, Qt::KeyboardModifiers modifiers) override;
    void drag(const QPointF& place) override;
    void release(const QPointF& place, Qt::KeyboardModifiers modifiers) override;
    void hover(const QPointF& place) override;
    void finish(Qt::KeyboardModifiers modifiers) override;
    void stepBack() override;
    bool cancel() override;
    /// The corners, and where the mouse is.
    QPolygonF sketch() const override;

private:
    void clear();

    QPolygonF m_corners;
    QPointF m_mouse;
    bool m_isDown = false;
    bool m_isLasso = false; // so far all corners come from one drag
};
