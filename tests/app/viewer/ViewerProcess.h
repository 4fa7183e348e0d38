#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <glm/glm.hpp>
#include <gtest/gtest.h>

#include <map>

class QProcess;

/// What the program viewer3d did with its arguments.
struct ViewerRun
{
    int status = -1; ///< exit status; -1 when it crashed or did not end in time
    QByteArray out;
    QByteArray error;
    double seconds = 0.0;

    /// Standard error, line by line.
    QStringList errorLines() const;
};

/// A place in model coordinates as surveys have them, where floats are 25 cm apart.
inline const glm::dvec3 faraway(2.7e6, 1.2e6, 400.0);

/// Variables that differ from this process's environment; a null text removes one.
using Environment = std::map<QString, QString>;

/// Starts the built program and waits for its end, half a minute at most.
ViewerRun runViewer(const QStringList& arguments, const Environment& environment = {});
/// The same with any program.
ViewerRun runProgram(const QString& program, const QStringList& arguments,
                     const Environment& environment = {});
/// The built program.
QString viewerProgram();

/// Waits until a process that was started answers Ctrl-C by itself, as it does from when its work begins,
/// half a minute at most; until then the system ends it, without a word. False when it ended or never did.
bool waitForWork(const QProcess& process);

/// The files of the sample project, in the order in which the README opens them.
QStringList sampleFiles();

/// A test with a folder of its own.
class ViewerTest : public ::testing::Test
{
protected:
    void SetUp() override;
    QString path(const QString& name) const { return QDir(m_folder.path()).filePath(name); }
    /// Writes a file of the folder and gives its path.
    QString write(const QString& name, const QByteArray& content) const;
    QByteArray read(const QString& name) const;

private:
    QTemporaryDir m_folder;
};
