#include <viewer/window/PolygonTool.h>

#include <QtCore/QLineF>

namespace {

constexpr double lassoStep = 4.0; // logical pixels between the points of a drag

} // namespace

bool PolygonTool::press(const QPointF& place, Qt::KeyboardModifiers)
{
    m_isLasso = m_corners.isEmpty();
    m_isDown = true;
    m_mouse = place;
    if (m_corners.isEmpty() || m_corners.last() != place) m_corners.append(place);
    Q_EMIT changed();
    return true;
}

void PolygonTool::drag(const QPointF& place)
{
    if (!m_isDown) return;
    m_mouse = place;
    if (QLineF(m_corners.last(), place).length() >= lassoStep) m_corners.append(place);
    Q_EMIT changed();
}

void PolygonTool::release(const QPointF& place, Qt::KeyboardModifiers modifiers)
{
    if (!m_isDown) return;
    drag(place);
    m_isDown = false;
    if (m_isLasso && m_corners.size() > 2) finish(modifiers);
}

void PolygonTool::hover(const QPointF& place)
{
    m_mouse = place;
    if (!m_corners.isEmpty()) Q_EMIT changed();
}

void PolygonTool::finish(Qt::KeyboardModifiers modifiers)
{
    if (m_corners.size() < 3) return;
    const QPolygonF area = m_corners;
    clear();
    Q_EMIT areaChosen(area, modifiers);
}

void PolygonTool::stepBack()
{
    if (m_corners.isEmpty() || m_isDown) return;
    if (m_corners.size() == 1) {
        cancel();
        return;
    }
    m_corners.removeLast();
    Q_EMIT changed();
}

bool PolygonTool::cancel()
{
    if (m_corners.isEmpty()) return false;
    clear();
    Q_EMIT areaCancelled();
    return true;
}

void PolygonTool::clear()
{
    m_corners.clear();
    m_isDown = false;
    Q_EMIT changed();
}

QPolygonF PolygonTool::sketch() const
{
    if (m_corners.isEmpty()) return {};
    QPolygonF sketch = m_corners;
    if (sketch.last() != m_mouse) sketch.append(m_mouse);
    return sketch;
}
