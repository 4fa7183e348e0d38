#pragma once

#include <viewer/window/AreaTool.h>

#include <optional>

/// Draws a rectangle by dragging from one corner to the other. A click is a small one about its place.
class RectangleTool : public AreaTool
{
    Q_OBJECT
public:
    using AreaTool::AreaTool;

    bool press(const QPointF& place, Qt::KeyboardModifiers modifiers) override;
    void drag(const QPointF& place) override;
    void release(const QPointF& place, Qt::KeyboardModifiers modifiers) override;
    bool cancel() override;
    QPolygonF sketch() const override;

private:
    std::optional<QRectF> m_rectangle; // from the first corner to the mouse; while the button is down
};
