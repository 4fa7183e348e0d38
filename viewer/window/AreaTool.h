#pragma once

#include <viewer/window/ViewTool.h>

/// A tool that draws an area of the view.
class AreaTool : public ViewTool
{
    Q_OBJECT
public:
    using ViewTool::ViewTool;

Q_SIGNALS:
    /// An area of three points or more is drawn, with the keys that were held at its end.
    void areaChosen(const QPolygonF& area, Qt::KeyboardModifiers modifiers);
    /// It was given up.
    void areaCancelled();
};
