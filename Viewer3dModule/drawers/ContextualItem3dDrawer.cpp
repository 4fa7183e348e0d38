#include <Viewer3dModule/drawers/ContextualItem3dDrawer.h>

#include <Viewer3dModule/drawers/Item3dDrawer.h>

ContextualItem3dDrawer::ContextualItem3dDrawer(Item3dDrawer* drawer, const PaintContext& context)
    : m_drawer(drawer)
    , m_context(&context)
{
}

ContextualItem3dDrawer ContextualItem3dDrawer::fromContext(const PaintContext& context)
{
    return ContextualItem3dDrawer(context.drawer, context);
}

glm::dmat4 ContextualItem3dDrawer::getTransform() const
{
    return glm::dmat4(m_drawer->getTransform());
}

void ContextualItem3dDrawer::setTransform(const glm::mat4& matrix, bool multiply) const
{
    m_drawer->setTransform(*m_context, matrix, multiply);
}

void ContextualItem3dDrawer::translate(const glm::vec3& offset) const
{
    m_drawer->translate(*m_context, offset);
}

void ContextualItem3dDrawer::scale(const glm::vec3& factors) const
{
    m_drawer->scale(*m_context, factors);
}

void ContextualItem3dDrawer::rotate(float angle, const glm::vec3& axis) const
{
    m_drawer->rotate(*m_context, angle, axis);
}

void ContextualItem3dDrawer::saveTransformState() const
{
    m_drawer->saveTransformState();
}

void ContextualItem3dDrawer::restoreTransformState() const
{
    m_drawer->restoreTransformState(*m_context);
}
