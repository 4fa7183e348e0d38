#include <benchmarks/harness/Machine.h>

#include <benchmarks/plain/PlainContext.h>

#include <QtCore/QDate>
#include <QtCore/QFile>
#include <QtCore/QThread>

namespace {

QString processorName()
{
    QFile file(QStringLiteral("/proc/cpuinfo"));
    if (file.open(QIODevice::ReadOnly))
        for (const QString& line : QString::fromUtf8(file.readAll()).split('\n'))
            if (line.startsWith(QLatin1String("model name"))) return line.section(':', 1).trimmed();
    return QStringLiteral("unknown processor");
}

} // namespace

Machine Machine::here(const QString& commit)
{
    PlainContext context(QSize(16, 16));
    const auto text = [&](GLenum name) {
        return QString::fromUtf8(reinterpret_cast<const char*>(context.gl().glGetString(name)));
    };
    return {QStringLiteral("%1; OpenGL %2").arg(text(GL_RENDERER), text(GL_VERSION)),
            QStringLiteral("%1, %2 cores").arg(processorName()).arg(QThread::idealThreadCount()),
            QDate::currentDate().toString(Qt::ISODate), commit};
}
