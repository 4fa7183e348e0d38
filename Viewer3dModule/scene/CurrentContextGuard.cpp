#include <Viewer3dModule/scene/CurrentContextGuard.h>

CurrentContextGuard::CurrentContextGuard()
    : m_context(QOpenGLContext::currentContext())
    , m_surface(m_context ? m_context->surface() : nullptr)
    , m_hadContext(m_context != nullptr)
{
}

CurrentContextGuard::~CurrentContextGuard()
{
    QOpenGLContext* current = QOpenGLContext::currentContext();
    if (m_context && m_surface) {
        if (current != m_context || current->surface() != m_surface) m_context->makeCurrent(m_surface);
    } else if (!m_hadContext && current) {
        current->doneCurrent();
    }
}
