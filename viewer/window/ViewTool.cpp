#include <viewer/window/ViewTool.h>

ViewTool::~ViewTool() = default;

void ViewTool::drag(const QPointF&) {}

void ViewTool::release(const QPointF&, Qt::KeyboardModifiers) {}

void ViewTool::hover(const QPointF&) {}

void ViewTool::finish(Qt::KeyboardModifiers) {}

void ViewTool::stepBack() {}

bool ViewTool::cancel()
{
    return false;
}

QPolygonF ViewTool::sketch() const
{
    return {};
}
