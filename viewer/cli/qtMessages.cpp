#include <viewer/cli/qtMessages.h>

#include <viewer/cli/tell.h>

#include <framework/ksp/Log.h>

#include <QtCore/QByteArray>
#include <QtCore/QMutex>
#include <QtCore/QString>

#include <unistd.h>

namespace {

/// The first reason that the platform gave for not starting. Messages may come from any thread, and while the
/// program's static objects are destroyed: this is none of them.
QBasicMutex reasonMutex;
QString& platformReason = *new QString;

void keepReason(const QString& text)
{
    const QMutexLocker lock(&reasonMutex);
    if (platformReason.isEmpty()) platformReason = text;
}

/// Qt says why in warnings and then ends the program by abort(); no destructor would run there either.
[[noreturn]] void end(const QString& text)
{
    const QMutexLocker lock(&reasonMutex);
    if (text.contains(QLatin1String("platform plugin")))
        tell(QStringLiteral("there is no usable display (%1): set DISPLAY, or start it with xvfb-run")
                 .arg(platformReason.isEmpty() ? QStringLiteral("no reason given") : platformReason));
    else
        tell(text.trimmed());
    _exit(1);
}

void onMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtFatalMsg) end(text);
    if (QByteArray(context.category).startsWith("qt.qpa")) keepReason(text.trimmed());
    ksp::Log::message(type == QtCriticalMsg ? ksp::Log::Info : ksp::Log::Debug,
                      QStringLiteral("Qt: ") + text);
}

} // namespace

void takeOverQtMessages()
{
    qInstallMessageHandler(onMessage);
}
