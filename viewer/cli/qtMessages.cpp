#include <viewer/cli/qtMessages.h>

#include <viewer/cli/tell.h>

#include <framework/ksp/Log.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <unistd.h>

namespace {

/// The first reason that a platform gave for not starting; static, because Qt's handlers carry no state.
QString& platformReason()
{
    static QString reason;
    return reason;
}

/// Qt says why in warnings and then ends the program by abort(); no destructor would run there either.
[[noreturn]] void end(const QString& text)
{
    if (text.contains(QLatin1String("platform plugin")))
        tell(QStringLiteral("there is no usable display (%1): set DISPLAY, or start it with xvfb-run")
                 .arg(platformReason().isEmpty() ? QStringLiteral("no reason given") : platformReason()));
    else
        tell(text.trimmed());
    _exit(1);
}

void onMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtFatalMsg) end(text);
    if (QByteArray(context.category).startsWith("qt.qpa") && platformReason().isEmpty())
        platformReason() = text.trimmed();
    ksp::Log::message(type == QtCriticalMsg ? ksp::Log::Info : ksp::Log::Debug,
                      QStringLiteral("Qt: ") + text);
}

} // namespace

void takeOverQtMessages()
{
    qInstallMessageHandler(onMessage);
}
