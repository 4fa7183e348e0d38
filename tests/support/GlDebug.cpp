#include "GlDebug.h"

#include <gtest/gtest.h>

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

GlDebug::GlDebug(QOpenGLContext& context)
    : m_logger(std::make_unique<QOpenGLDebugLogger>())
{
    EXPECT_TRUE(context.format().testOption(QSurfaceFormat::DebugContext));
    if (!m_logger->initialize()) {
        ADD_FAILURE() << "the context gives no debug messages";
        return;
    }
    for (const QOpenGLDebugMessage& message : m_logger->loggedMessages())
        add(message);
    QObject::connect(
        m_logger.get(), &QOpenGLDebugLogger::messageLogged, m_logger.get(),
        [this](const QOpenGLDebugMessage& message) { add(message); }, Qt::DirectConnection);
    m_logger->startLogging(QOpenGLDebugLogger::SynchronousLogging);
}

GlDebug::~GlDebug()
{
    if (QOpenGLContext* current = QOpenGLContext::currentContext()) {
        const unsigned error = current->functions()->glGetError();
        EXPECT_EQ(error, 0u) << "pending OpenGL error";
    }
    for (const QString& message : m_messages)
        ADD_FAILURE() << "OpenGL: " << message.toStdString();
}

QStringList GlDebug::take()
{
    QOpenGLFunctions* functions = QOpenGLContext::currentContext()->functions();
    while (functions->glGetError() != 0) {
    }
    QStringList taken;
    taken.swap(m_messages);
    return taken;
}

void GlDebug::add(const QOpenGLDebugMessage& message)
{
    const bool severe = message.severity() == QOpenGLDebugMessage::HighSeverity ||
                        message.severity() == QOpenGLDebugMessage::MediumSeverity;
    if (severe && message.type() != QOpenGLDebugMessage::PerformanceType)
        m_messages.append(message.message());
}
