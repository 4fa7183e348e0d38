#include "ViewerProcess.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QThread>

#include <cmath>
#include <csignal>

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

// What the program does as a process: progress on terminals, Ctrl-C, memory.

namespace {

/// A field of squares, two triangles each, a side of n squares.
QByteArray field(int n)
{
    QByteArray obj;
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i)
            obj += QByteArray("v ") + QByteArray::number(2.7e6 + i * 0.5, 'f', 2) + ' ' +
                   QByteArray::number(1.2e6 + j * 0.5, 'f', 2) + ' ' + QByteArray::number((i * j) % 7) + '\n';
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const int a = j * (n + 1) + i + 1;
            for (const int b : {0, 1}) {
                const int second = b == 0 ? a + 1 : a + n + 2, third = b == 0 ? a + n + 2 : a + n + 1;
                obj += "f " + QByteArray::number(a) + ' ' + QByteArray::number(second) + ' ' +
                       QByteArray::number(third) + '\n';
            }
        }
    return obj;
}

/// The program with standard error on a terminal of its own.
class TerminalProcess : public QProcess
{
public:
    TerminalProcess()
    {
        EXPECT_EQ(openpty(&m_master, &m_slave, nullptr, nullptr, nullptr), 0);
        fcntl(m_master, F_SETFL, O_NONBLOCK);
    }
    ~TerminalProcess() override
    {
        ::close(m_master);
        ::close(m_slave);
    }
    QByteArray terminalOutput() const
    {
        QByteArray all;
        char bytes[4096];
        for (ssize_t count; (count = ::read(m_master, bytes, sizeof bytes)) > 0;)
            all.append(bytes, static_cast<int>(count));
        return all;
    }

protected:
    void setupChildProcess() override { dup2(m_slave, STDERR_FILENO); }

private:
    int m_master = -1;
    int m_slave = -1;
};

const QString program = viewerProgram();

/// The most memory that a run of the program had, bytes; -1 when it failed. Asked through a small process,
/// because the system counts what the one that starts a program holds until then, too.
double peakMemory(const QStringList& arguments)
{
    const QString script = QStringLiteral("import os, sys\n"
                                          "null = [(os.POSIX_SPAWN_OPEN, 1, '/dev/null', os.O_WRONLY, 0)]\n"
                                          "child = os.posix_spawn(sys.argv[1], sys.argv[1:], os.environ, "
                                          "file_actions=null)\n"
                                          "_, status, usage = os.wait4(child, 0)\n"
                                          "print(usage.ru_maxrss if status == 0 else -1)\n");
    QProcess process;
    process.start("python3", QStringList{"-c", script, program} + arguments);
    if (!process.waitForFinished()) return -1.0;
    return process.readAllStandardOutput().trimmed().toDouble() * 1024.0;
}

} // namespace

class ProcessBehaviour : public ViewerTest
{
};

TEST_F(ProcessBehaviour, BarOnATerminalAndNoneInAPipe)
{
    const QString file = write("field.obj", field(100));
    EXPECT_EQ(runViewer({"info", file}).error, "");
    TerminalProcess process;
    process.start(program, {"info", file});
    ASSERT_TRUE(process.waitForFinished());
    const QByteArray shown = process.terminalOutput();
    EXPECT_TRUE(shown.contains("field.obj")) << shown.constData();
    EXPECT_TRUE(shown.contains("[#")) << shown.constData();
    EXPECT_TRUE(shown.endsWith(" \r")) << "the bar is wiped at the end";
    EXPECT_TRUE(process.readAllStandardOutput().contains("20000 triangles"));
}

TEST_F(ProcessBehaviour, BarTellsHowMuchOfAPictureIsThere)
{
    const QString file = write("field.obj", field(2));
    TerminalProcess process;
    process.start(program, {"render", file, "-o", path("wide.png"), "--size", "9000x100"});
    ASSERT_TRUE(process.waitForFinished());
    ASSERT_EQ(process.exitCode(), 0);
    const QByteArray shown = process.terminalOutput();
    EXPECT_TRUE(shown.contains("field.obj")) << shown.constData();
    // five tiles, the first of which ends at 30 % + 70 % / 5
    EXPECT_TRUE(shown.contains(" 44 %  wide.png")) << shown.constData();
    EXPECT_TRUE(shown.contains("100 %  wide.png")) << shown.constData();
    EXPECT_TRUE(shown.endsWith(" \r")) << "the bar is wiped at the end";
}

TEST_F(ProcessBehaviour, ControlCCancelsAndWritesNothing)
{
    const QString file = write("field.obj", field(700));
    write("out.png", "old");
    QProcess process;
    process.start(program, {"render", file, "-o", path("out.png")});
    ASSERT_TRUE(process.waitForStarted());
    ASSERT_TRUE(waitForWork(process));
    QThread::msleep(150);
    ASSERT_EQ(process.state(), QProcess::Running);
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_EQ(process.readAllStandardError(), "viewer3d: cancelled\n");
    EXPECT_EQ(read("out.png"), "old");
}

TEST_F(ProcessBehaviour, WindowOpensWithTheFilesThatAreThere)
{
    QProcess process;
    process.start(program, {write("good.obj", field(2)), path("missing.obj")});
    EXPECT_FALSE(process.waitForFinished(1500)) << process.readAllStandardError().constData();
    process.terminate();
    process.waitForFinished();
    EXPECT_EQ(process.readAllStandardError(), ""); // it shows among the window's messages
}

// Said before anything is installed or built.
TEST_F(ProcessBehaviour, RunScriptOpensNoWindowThatNobodySees)
{
    const QString file = write("good.obj", field(2));
    const ViewerRun run = runProgram(V3D_SOURCE_DIR "/run.sh", {file}, {{"DISPLAY", QString()}});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(), QStringList("run.sh: no display here to open a window on; './run.sh render "
                                            "FILES... -o OUT.png' makes a picture"));
    EXPECT_LT(run.seconds, 2.0);
}

// While it reads, draws and writes: a picture of 80 million pixels takes the software driver ten seconds.
TEST_F(ProcessBehaviour, ControlCEndsTheDrawingOfALargePicture)
{
    const QString file = write("field.obj", field(300));
    for (const unsigned long delay : {100, 400, 1000}) {
        QProcess process;
        process.start(program, {"render", file, "-o", path("out.png"), "--size", "4000x20000"});
        ASSERT_TRUE(process.waitForStarted());
        ASSERT_TRUE(waitForWork(process));
        QThread::msleep(delay);
        ASSERT_EQ(process.state(), QProcess::Running);
        QElapsedTimer timer;
        timer.start();
        ::kill(static_cast<pid_t>(process.processId()), SIGINT);
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_LT(timer.elapsed(), 500);
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 1);
        EXPECT_EQ(process.readAllStandardError(), "viewer3d: cancelled\n");
        EXPECT_EQ(QDir(path(".")).entryList(QDir::Files | QDir::Hidden), QStringList("field.obj"));
    }
}

// Of a picture of 6.5 million pixels, which would be 26 MB, 16 MB more than its first band. Its tiles are of
// four sizes.
TEST_F(ProcessBehaviour, MemoryOfALargePictureIsThatOfABand)
{
    const QString file = write("field.obj", field(10));
    const auto render = [&](const char* size) {
        return peakMemory({"render", file, "-o", path("out.png"), "--size", size, "--view", "top"});
    };
    const double small = render("2048x1280"), large = render("2500x2600");
    ASSERT_GT(small, 0.0);
    ASSERT_GT(large, 0.0);
    RecordProperty("megabytes", std::to_string((large - small) / 1e6));
#ifndef __SANITIZE_ADDRESS__ // which keeps back what was freed
    EXPECT_LT(large - small, 8e6);
#endif
}

// Of what the program itself keeps; a software driver adds a copy of every triangle of a frame to it.
TEST_F(ProcessBehaviour, MemoryStaysBelowFourTimesTheVertexData)
{
    const int n = 224; // 100,352 triangles
    const double vertices = (n + 1) * (n + 1), triangles = 2.0 * n * n;
    const double vertexData = vertices * 2 * 3 * sizeof(float) + triangles * 3 * sizeof(std::uint32_t);
    const double empty = peakMemory({"info", write("one.obj", field(1))});
    const double full = peakMemory({"info", write("field.obj", field(n))});
    ASSERT_GT(empty, 0.0);
    ASSERT_GT(full, 0.0);
    RecordProperty("times", std::to_string((full - empty) / vertexData));
    EXPECT_GT(full - empty, 0.5 * vertexData) << "this measures nothing";
#ifndef __SANITIZE_ADDRESS__ // which keeps back what was freed
    EXPECT_LT(full - empty, 4.0 * vertexData);
#endif
}

// The same of a picture with its back to the mesh: read, uploaded, and drawn as far as the program can tell,
// but with no triangle in the frame, for which the software driver would keep some 250 bytes each (a plain
// OpenGL program takes 25 to 30 MB more for this mesh, too).
TEST_F(ProcessBehaviour, MemoryOfAPictureStaysBelowFourTimesTheVertexData)
{
    const int n = 224;
    const double vertexData =
        (n + 1) * (n + 1) * 2.0 * 3 * sizeof(float) + 2.0 * n * n * 3 * sizeof(std::uint32_t);
    const auto render = [this](const QString& file) {
        return peakMemory({"render", file, "-o", path("out.png"), "--eye", "2699000,1199000,10", "--target",
                           "2698000,1198000,10"});
    };
    const double empty = render(write("one.obj", field(1)));
    const double full = render(write("field.obj", field(n)));
    ASSERT_GT(empty, 0.0);
    ASSERT_GT(full, 0.0);
    RecordProperty("times", std::to_string((full - empty) / vertexData));
    EXPECT_GT(full - empty, 0.5 * vertexData) << "this measures nothing";
#ifndef __SANITIZE_ADDRESS__ // which keeps back what was freed
    EXPECT_LT(full - empty, 4.0 * vertexData);
#endif
}

// A map of 2048 x 5120 pixels is a file of 42 MB; in memory is one of its four bands, 10 MB.
TEST_F(ProcessBehaviour, MemoryOfALargeDepthMapIsThatOfItsBands)
{
    const QString file = write("field.obj", field(10));
    const auto depth = [this, &file](const QString& name, const QString& size) {
        return peakMemory({"depth", file, "-o", path(name), "--size", size, "--preview", path("map.png")});
    };
    const double tiny = depth("map.pfm", "64x64");
    for (const char* name : {"map.pfm", "map.tiff"}) {
        const double band = depth(name, "2048x1280"), bands = depth(name, "2048x5120");
        ASSERT_GT(tiny, 0.0);
        ASSERT_GT(bands, 0.0);
        EXPECT_EQ(QFileInfo(path(name)).size() / 1'000'000, 41);
        EXPECT_GT(band - tiny, 10e6) << "this measures nothing";
        EXPECT_LT(bands - band, 20e6) << name;
    }
}
