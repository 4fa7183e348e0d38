#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QPointer>
#include <QtGui/QOpenGLContext>

class QSurface;

/// Remembers which OpenGL context is current, on which surface, and makes it current again at the end of the
/// scope; where none was, none is afterwards. A context that was destroyed meanwhile is not made current.
class VIEWER3DMODULE_EXPORT CurrentContextGuard
{
public:
    CurrentContextGuard();
    ~CurrentContextGuard();
    CurrentContextGuard(const CurrentContextGuard&) = delete;
    CurrentContextGuard& operator=(const CurrentContextGuard&) = delete;

private:
    QPointer<QOpenGLContext> m_context;
    QSurface* m_surface;
    bool m_hadContext;
};
