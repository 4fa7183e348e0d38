#include <viewer/window/FenceNodeTool.h>

#include <QtCore/QLineF>

namespace {

constexpr double reach = 8.0; // logical pixels from a node's middle

} // namespace

FenceNodeTool::FenceNodeTool(Handles& handles, QObject* parent)
    : ViewTool(parent)
    , m_handles(handles)
{
}

bool FenceNodeTool::press(const QPointF& place, Qt::KeyboardModifiers)
{
    double nearest = reach;
    const std::vector<std::optional<QPointF>> places = m_handles.places();
    m_node.reset();
    for (std::size_t i = 0; i < places.size(); ++i) {
        const double distance = places[i] ? QLineF(*places[i], place).length() : reach + 1.0;
        if (distance > nearest) continue;
        nearest = distance;
        m_node = i;
    }
    m_isMoved = false;
    return m_node.has_value();
}

void FenceNodeTool::drag(const QPointF& place)
{
    if (!m_node) return;
    m_isMoved = true;
    m_node = m_handles.moveNode(*m_node, place);
}

void FenceNodeTool::release(const QPointF&, Qt::KeyboardModifiers)
{
    if (m_node && m_isMoved) m_handles.endMove(true);
    m_node.reset();
}

bool FenceNodeTool::cancel()
{
    if (!m_node) return false;
    if (m_isMoved) m_handles.endMove(false);
    m_node.reset();
    return true;
}
