#pragma once

#include <QtCore/QStringList>
#include <QtGui/QOpenGLDebugLogger>

#include <memory>

class QOpenGLContext;

/// Collects the debug messages of one context that count as mistakes: of high or medium severity, performance
/// hints excepted. The context must be current when it is made; messages from before are collected too. What
/// nobody took until it is destroyed fails the running test, and so does a pending glGetError if a context is
/// current then. The context may be destroyed first; what it reports on its way out counts.
class GlDebug
{
public:
    explicit GlDebug(QOpenGLContext& context);
    ~GlDebug();

    /// The messages so far; they count as expected. Also clears pending glGetError codes.
    QStringList take();

private:
    void add(const QOpenGLDebugMessage& message);

    std::unique_ptr<QOpenGLDebugLogger> m_logger;
    QStringList m_messages;
};
