#include <viewer/window/SphereTool.h>

SphereTool::SphereTool(Pick pick, Distance distance, QObject* parent)
    : ViewTool(parent)
    , m_pick(std::move(pick))
    , m_distance(std::move(distance))
{
}

bool SphereTool::press(const QPointF& place, Qt::KeyboardModifiers)
{
    m_center = m_pick(place);
    return true;
}

void SphereTool::drag(const QPointF& place)
{
    if (!m_center) return;
    const double radius = m_distance(*m_center, place);
    if (radius > 0.0) Q_EMIT sphereChanged(*m_center, radius);
}

void SphereTool::release(const QPointF& place, Qt::KeyboardModifiers)
{
    if (!m_center) return;
    const glm::dvec3 center = *m_center;
    m_center.reset();
    const double radius = m_distance(center, place);
    if (radius > 0.0)
        Q_EMIT sphereChosen(center, radius);
    else
        Q_EMIT sphereCancelled();
}

bool SphereTool::cancel()
{
    if (!m_center) return false;
    m_center.reset();
    Q_EMIT sphereCancelled();
    return true;
}
