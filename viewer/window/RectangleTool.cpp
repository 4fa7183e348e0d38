#include <viewer/window/RectangleTool.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double clickReach = 3.0; // logical pixels: a shorter drag is a click, which takes what is so near

QPolygonF cornersOf(const QRectF& rectangle)
{
    return QPolygonF(
        {rectangle.topLeft(), rectangle.topRight(), rectangle.bottomRight(), rectangle.bottomLeft()});
}

} // namespace

bool RectangleTool::press(const QPointF& place, Qt::KeyboardModifiers)
{
    m_rectangle = QRectF(place, place);
    Q_EMIT changed();
    return true;
}

void RectangleTool::drag(const QPointF& place)
{
    if (!m_rectangle) return;
    m_rectangle->setBottomRight(place);
    Q_EMIT changed();
}

void RectangleTool::release(const QPointF& place, Qt::KeyboardModifiers modifiers)
{
    if (!m_rectangle) return;
    m_rectangle->setBottomRight(place);
    QRectF area = m_rectangle->normalized();
    m_rectangle.reset();
    if (std::max(area.width(), area.height()) < clickReach)
        area.adjust(-clickReach, -clickReach, clickReach, clickReach);
    Q_EMIT changed();
    Q_EMIT areaChosen(cornersOf(area), modifiers);
}

bool RectangleTool::cancel()
{
    if (!m_rectangle) return false;
    m_rectangle.reset();
    Q_EMIT changed();
    Q_EMIT areaCancelled();
    return true;
}

QPolygonF RectangleTool::sketch() const
{
    return m_rectangle ? cornersOf(m_rectangle->normalized()) : QPolygonF();
}
