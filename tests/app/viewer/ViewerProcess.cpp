#include "ViewerProcess.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QThread>

#include <csignal>

QStringList ViewerRun::errorLines() const
{
    return QString::fromLocal8Bit(error).split('\n', Qt::SkipEmptyParts);
}

QString viewerProgram()
{
    return QStringLiteral(V3D_BINARY_DIR "/bin/viewer3d");
}

ViewerRun runViewer(const QStringList& arguments, const Environment& environment)
{
    return runProgram(viewerProgram(), arguments, environment);
}

ViewerRun runProgram(const QString& program, const QStringList& arguments, const Environment& environment)
{
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : environment) {
        if (value.isNull())
            variables.remove(name);
        else
            variables.insert(name, value);
    }
    QProcess process;
    process.setProcessEnvironment(variables);
    QElapsedTimer timer;
    timer.start();
    process.start(program, arguments);
    ViewerRun run;
    if (process.waitForFinished(30'000) && process.exitStatus() == QProcess::NormalExit)
        run.status = process.exitCode();
    run.seconds = static_cast<double>(timer.elapsed()) / 1000.0;
    run.out = process.readAllStandardOutput();
    run.error = process.readAllStandardError();
    return run;
}

bool waitForWork(const QProcess& process)
{
    constexpr quint64 interrupt = 1u << (SIGINT - 1); // in the mask of the signals that are caught
    for (int i = 0; i < 3000; ++i) {
        QFile status(QStringLiteral("/proc/%1/status").arg(process.processId()));
        if (!status.open(QIODevice::ReadOnly)) return false;
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.startsWith("SigCgt:") && line.mid(7).trimmed().toULongLong(nullptr, 16) & interrupt)
                return true;
        QThread::msleep(10);
    }
    return false;
}

QStringList sampleFiles()
{
    const QDir folder(QStringLiteral(V3D_SOURCE_DIR "/samples/town"));
    QStringList files;
    for (const QString& name : folder.entryList({"*.ply", "*.obj", "*.geojson"}, QDir::Files, QDir::Name))
        files.append(folder.filePath(name));
    return files;
}

void ViewerTest::SetUp()
{
    ASSERT_TRUE(m_folder.isValid());
}

QString ViewerTest::write(const QString& name, const QByteArray& content) const
{
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(name);
    file.write(content);
    return path(name);
}

QByteArray ViewerTest::read(const QString& name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
