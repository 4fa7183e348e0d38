#include "../viewer/ViewerProcess.h"

#include <viewer/OutputFile.h>
#include <viewer/UnfinishedFiles.h>

#include <QtCore/QFileInfo>
#include <QtGui/QImage>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// Outputs appear whole or not at all.

namespace {

const QByteArray triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0.3\nf 1 2 3\n";
/// Of many colours: a picture of it is far larger than a few KiB.
const QString terrain = QStringLiteral(V3D_SOURCE_DIR "/samples/town/terrain.ply");

} // namespace

class Output : public ViewerTest
{
protected:
    QStringList files() const { return QDir(path(".")).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    /// Runs a command line of bash in which RENDER stands for the program with this output.
    ViewerRun render(const QString& commands, const QString& output)
    {
        const QString command = QString("'%1' render '%2' -o '%3'").arg(viewerProgram(), terrain, output);
        return runProgram("bash", {"-c", QString(commands).replace("RENDER", command)});
    }
    /// The same to a disk of its own, mounted with these options and seen by nobody else; false where none
    /// can be mounted. What the disk holds afterwards is told behind the program's own lines.
    bool renderToDisk(const QString& options, ViewerRun& run)
    {
        QDir(path(".")).mkdir("disk");
        const QString mount =
            QString("mount -t tmpfs -o %1 none '%2' 2>/dev/null || exit 77; ").arg(options, path("disk"));
        const QString list = QString("; status=$?; ls -A '%1' >&2; exit $status").arg(path("disk"));
        write("script.sh",
              (mount +
               QString("'%1' render '%2' -o '%3/out.png'").arg(viewerProgram(), terrain, path("disk")) + list)
                  .toLocal8Bit());
        run = runProgram("unshare", {"--mount", "bash", path("script.sh")});
        return run.status != 77 && !run.error.startsWith("unshare: ");
    }
};

// A disk of 8 KiB.
TEST_F(Output, FullDiskLeavesNothing)
{
    ViewerRun run;
    if (!renderToDisk("size=8k", run)) GTEST_SKIP() << "no disk can be mounted here";
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + path("disk/out.png") +
                                            ": cannot be written: No space left on device"));
}

TEST_F(Output, ReadOnlyDiskIsRefusedBeforeTheWork)
{
    ViewerRun run;
    if (!renderToDisk("ro", run)) GTEST_SKIP() << "no disk can be mounted here";
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + path("disk/out.png") +
                                            ": cannot be written: Read-only file system"));
    EXPECT_LT(run.seconds, 1.0);
}

TEST_F(Output, ReadOnlyFolderIsRefusedBeforeTheWork)
{
    QDir(path(".")).mkdir("folder");
    ASSERT_EQ(chmod(qPrintable(path("folder")), 0555), 0);
    // root may write to every folder, unless that right is taken away
    const QString asOwner = geteuid() == 0 ? "setpriv --bounding-set=-dac_override,-dac_read_search " : "";
    const ViewerRun run = render(asOwner + "RENDER", path("folder/out.png"));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(),
              QStringList("viewer3d: " + path("folder/out.png") + ": cannot be written: Permission denied"));
}

// The program takes the signal that tells of the limit for itself.
TEST_F(Output, FileSizeLimitLeavesNothing)
{
    const ViewerRun run = render("ulimit -f 8; RENDER", path("out.png"));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(),
              QStringList("viewer3d: " + path("out.png") + ": cannot be written: File too large"));
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(Output, FileSizeLimitKeepsTheOldPicture)
{
    write("out.png", "old");
    EXPECT_EQ(render("ulimit -f 8; RENDER", path("out.png")).status, 1);
    EXPECT_EQ(read("out.png"), "old");
    EXPECT_EQ(files(), QStringList("out.png"));
}

TEST_F(Output, SmallestPictureIsOnePixel)
{
    const ViewerRun run =
        runViewer({"render", write("a.obj", triangle), "-o", path("out.png"), "--size", "1x1"});
    EXPECT_EQ(run.status, 0) << run.error.constData();
    EXPECT_EQ(QImage(path("out.png")).size(), QSize(1, 1));
}

// Wider and higher than drivers draw in one pass.
TEST_F(Output, PictureBeyondTheDriversLimitIsDrawn)
{
    const ViewerRun run = runViewer({"render", write("a.obj", triangle), "-o", path("out.png"), "--size",
                                     "40000x30", "--view", "top", "--background", "black"});
    EXPECT_EQ(run.status, 0) << run.error.constData();
    const QImage image(path("out.png"));
    ASSERT_EQ(image.size(), QSize(40000, 30));
    EXPECT_GT(qRed(image.pixel(20000, 20)), 40);
    EXPECT_EQ(image.pixel(19000, 15), qRgb(0, 0, 0));
}

TEST_F(Output, HugeSizeIsRefusedWithTheMemoryThatItWouldTake)
{
    const ViewerRun run =
        runViewer({"render", write("a.obj", triangle), "-o", path("out.png"), "--size", "100000x100000"});
    EXPECT_EQ(run.status, 2);
    ASSERT_EQ(run.errorLines().size(), 1);
    EXPECT_TRUE(run.errorLines().first().contains("37.3 GiB")) << run.error.constData();
}

// A process that ends at once inside such work deletes what has a name already.
TEST_F(Output, UnfinishedFilesCanBeDeletedAtAnyTime)
{
    write("named", "unfinished");
    UnfinishedFiles::add(path("named"));
    const pid_t child = fork();
    if (child == 0) {
        UnfinishedFiles::deleteAll();
        _exit(0);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(files().isEmpty());
    write("named", "finished");
    UnfinishedFiles::remove(path("named"));
    UnfinishedFiles::deleteAll();
    EXPECT_EQ(read("named"), "finished");
}
