#pragma once

#include "CellDrawing.h"

#include <QtGui/QImage>

#include <vector>

class QPainter;

/// Where the cells of the contact sheet lie: strips side by side as long as there is room, then on the next
/// line.
class SheetLayout
{
public:
    /// What the names and colours below the last strip tell.
    using Legend = std::vector<std::pair<QColor, const char*>>;

    SheetLayout(const std::vector<Strip>& strips, int cellSize);

    QRect cellRect(std::size_t strip, std::size_t cell) const;
    QImage compose(const Legend& legend) const;

private:
    void drawStrip(QPainter& painter, std::size_t strip) const;
    void drawLegend(QPainter& painter, const Legend& legend) const;

    const std::vector<Strip>& m_strips;
    int m_cellSize;
    std::vector<QPoint> m_places; // of the strips
    QPoint m_end;                 // of the last one, upper right
};
