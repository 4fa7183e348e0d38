#include "ViewerProcess.h"

#include <QtCore/QFileInfo>

namespace {

const QByteArray triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

} // namespace

/// Work that fails: one line that names the file, exit status 1, nothing written.
class Failure : public ViewerTest
{
protected:
    void expectRefused(const QString& file, const QString& reason)
    {
        const ViewerRun run = runViewer({"render", file, "-o", path("out.png")});
        EXPECT_EQ(run.status, 1);
        ASSERT_EQ(run.errorLines().size(), 1) << run.error.constData();
        const QString line = run.errorLines().first();
        EXPECT_TRUE(line.startsWith("viewer3d: " + file + ": ")) << qPrintable(line);
        EXPECT_TRUE(line.contains(reason)) << qPrintable(line);
        EXPECT_TRUE(run.out.isEmpty());
        EXPECT_FALSE(QFileInfo::exists(path("out.png")));
        EXPECT_LT(run.seconds, 5.0);
    }
};

TEST_F(Failure, MissingFile)
{
    expectRefused(path("none.obj"), "there is no such file");
}

TEST_F(Failure, Folder)
{
    QDir(path(".")).mkdir("folder.obj");
    expectRefused(path("folder.obj"), "is a folder");
}

TEST_F(Failure, EmptyFile)
{
    expectRefused(write("empty.ply", ""), "is empty");
}

TEST_F(Failure, UnknownFormatNamesTheKnownOnes)
{
    expectRefused(write("notes.txt", "hello"), "unknown file format; readable are: ");
}

TEST_F(Failure, NothingToDraw)
{
    expectRefused(write("comment.obj", "# nothing\n"), "");
}

TEST_F(Failure, DamagedFile)
{
    expectRefused(
        write("bad.ply", "ply\nformat ascii 1.0\nelement vertex 2147483648\nproperty float x\nend_header\n"),
        "");
}

TEST_F(Failure, DamagedProject)
{
    expectRefused(write("bad.v3d", "V3DA this is no project"), "");
}

TEST_F(Failure, TwoProjects)
{
    const QString one = write("one.v3d", "x"), two = write("two.v3d", "x");
    const ViewerRun run = runViewer({"info", one, two});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.error.contains("only one project can be open")) << run.error.constData();
}

TEST_F(Failure, OneBadFileAmongGoodOnesStopsAll)
{
    const QString good = write("good.obj", triangle);
    const ViewerRun run = runViewer({"render", good, path("none.obj"), "-o", path("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_FALSE(QFileInfo::exists(path("out.png")));
}

TEST_F(Failure, OldPictureStaysAsItWas)
{
    write("out.png", "old picture");
    const ViewerRun run = runViewer({"render", path("none.obj"), "-o", path("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(read("out.png"), "old picture");
}

TEST_F(Failure, OutputFolderThatIsNotThere)
{
    const QString file = write("good.obj", triangle);
    const ViewerRun run = runViewer({"render", file, "-o", path("nowhere/out.png")});
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.errorLines().size(), 1) << run.error.constData();
    EXPECT_TRUE(
        run.errorLines().first().startsWith("viewer3d: " + path("nowhere/out.png") + ": cannot be written"));
    EXPECT_TRUE(run.error.contains("there is no folder"));
}

TEST_F(Failure, OutputThatIsAFolder)
{
    QDir(path(".")).mkdir("out.png");
    const ViewerRun run = runViewer({"render", write("good.obj", triangle), "-o", path("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.error.contains("it is a folder")) << run.error.constData();
}

// The kernel's own folders can be written by nobody, whoever runs the tests.
TEST_F(Failure, OutputInAFolderThatCannotBeWritten)
{
    const ViewerRun run = runViewer({"render", write("good.obj", triangle), "-o", "/proc/out.png"});
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.errorLines().size(), 1) << run.error.constData();
    EXPECT_TRUE(run.errorLines().first().startsWith("viewer3d: /proc/out.png: cannot be written"));
}

TEST_F(Failure, WrongOptionHasAStatusOfItsOwn)
{
    const ViewerRun run = runViewer({"render", "a.obj", "-o", path("out.png"), "--siez", "1x1"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: unknown option --siez; did you mean --size?"));
}

TEST_F(Failure, UnknownCommandHasTheSameStatus)
{
    const ViewerRun run = runViewer({"depth", "a.obj"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errorLines().size(), 1);
}

TEST_F(Failure, WindowOfAMissingFileDoesNotOpen)
{
    const ViewerRun run = runViewer({path("none.obj")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + path("none.obj") + ": there is no such file"));
}

TEST_F(Failure, WithoutADisplayOneLineSaysSo)
{
    qputenv("KEPT_DISPLAY", qgetenv("DISPLAY"));
    qunsetenv("DISPLAY");
    const ViewerRun run = runViewer({"render", write("good.obj", triangle), "-o", path("out.png")});
    qputenv("DISPLAY", qgetenv("KEPT_DISPLAY"));
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.errorLines().size(), 1) << run.error.constData();
    EXPECT_TRUE(run.errorLines().first().startsWith("viewer3d: there is no display"));
}
