#include "../viewer/ViewerProcess.h"

#include "../../support/ImageCheck.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QThread>
#include <QtGui/QImage>

#include <csignal>

// Many pictures in one run.

namespace {

/// Cameras of several kinds about the sample town.
const QByteArray cameras = R"([
    {"name": "iso", "size": [320, 200]},
    {"name": "near", "eye": [612130, 5070858, 418], "target": [611996, 5071008, 322], "size": [300, 220]},
    {"name": "wide", "eye": [612030, 5070958, 340], "target": [611996, 5071008, 322], "fov": 80, "size": [64, 48]},
    {"name": "flat", "eye": [612130, 5070858, 418], "target": [611996, 5071008, 322], "projection": "parallel",
     "size": [320, 200]},
    {"name": "plan", "view": "top", "projection": "parallel", "gsd": 1},
    {"name": "left", "view": "left", "fov": 20, "size": [200, 100]}])";

} // namespace

class CameraListRun : public ViewerTest
{
protected:
    QStringList files() const { return QDir(path(".")).entryList(QDir::Files, QDir::Name); }
    ViewerRun render(const QByteArray& list, const QString& pattern, const QString& name = "list.json") const
    {
        return runViewer(QStringList{"render", "--cameras", write(name, list), "-o", pattern} +
                         sampleFiles());
    }
    static QByteArray part(int from, int count)
    {
        QJsonArray all = QJsonDocument::fromJson(cameras).array(), some;
        for (int i = from; i < from + count; ++i)
            some.append(all[i]);
        return QJsonDocument(some).toJson();
    }
};

TEST_F(CameraListRun, EachCameraHasItsPicture)
{
    const ViewerRun run = render(cameras, path("{name}.png"));
    ASSERT_EQ(run.status, 0) << run.error.constData();
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(files(), QStringList({"flat.png", "iso.png", "left.png", "list.json", "near.png", "plan.pgw",
                                    "plan.png", "wide.png"}));
    EXPECT_EQ(QImage(path("near.png")).size(), QSize(300, 220));
    EXPECT_EQ(QImage(path("plan.png")).width(),
              322); // the town is 320 m wide, from one whole metre to another
}

TEST_F(CameraListRun, PictureIsThatOfItsOptions)
{
    ASSERT_EQ(render(part(1, 1), path("{name}.png")).status, 0);
    ASSERT_EQ(runViewer(QStringList{"render", "-o", path("one.png"), "--size", "300x220", "--eye",
                                    "612130,5070858,418", "--target", "611996,5071008,322"} +
                        sampleFiles())
                  .status,
              0);
    EXPECT_FALSE(read("one.png").isEmpty());
    EXPECT_EQ(read("one.png"), read("near.png"));
}

// Of a list and of its parts, in another order and by other processes: file by file the same.
TEST_F(CameraListRun, PartsOfAListGiveTheSameFiles)
{
    for (const char* folder : {"all", "parts"})
        ASSERT_TRUE(QDir(path(".")).mkdir(folder));
    ASSERT_EQ(render(cameras, path("all/{name}.png")).status, 0);
    for (const auto& [from, count] : {std::pair(3, 3), {0, 3}})
        ASSERT_EQ(render(part(from, count), path("parts/{name}.png")).status, 0);
    const QStringList names = QDir(path("all")).entryList(QDir::Files);
    EXPECT_EQ(names.size(), 7);
    EXPECT_EQ(QDir(path("parts")).entryList(QDir::Files), names);
    for (const QString& name : names)
        EXPECT_EQ(read("all/" + name), read("parts/" + name)) << qPrintable(name);
}

TEST_F(CameraListRun, WideViewShowsMore)
{
    const QString file =
        write("square.obj", "v -1 -1 0 1 0 0\nv 1 -1 0 1 0 0\nv 1 1 0 1 0 0\nv -1 1 0 1 0 0\nf 1 2 3 4\n");
    const QString list = write("list.json", R"([
        {"name": "60", "eye": [0, 0, 10], "target": [0, 0, 0], "fov": 60, "size": [400, 400]},
        {"name": "20", "eye": [0, 0, 10], "target": [0, 0, 0], "fov": 20, "size": [400, 400]}])");
    ASSERT_EQ(
        runViewer({"render", file, "--cameras", list, "-o", path("{name}.png"), "--background", "black"})
            .status,
        0);
    for (const double fov : {60.0, 20.0}) {
        // the square of 2 m in a picture that is 2 * 10 m * tan(fov / 2) high
        const double side = 400.0 * 2.0 / (20.0 * std::tan(fov / 2.0 * M_PI / 180.0));
        const QImage image(path(QString::number(fov) + ".png"));
        EXPECT_NEAR(std::sqrt(countPixels(image, [](QRgb p) { return qRed(p) > 30; })), side, 1.5);
    }
}

// Nothing is drawn when one of the outputs cannot be.
TEST_F(CameraListRun, BadOutputsAreRefusedBeforeDrawing)
{
    const QString list = path("list.json");
    const auto expectRefused = [&](const QByteArray& json, const QString& line) {
        const ViewerRun run = render(json, path("{name}.png"));
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + line));
        EXPECT_EQ(files(), QStringList("list.json"));
    };
    expectRefused(R"([{"name": "a"}, {"output": "a.png"}])",
                  list + ": camera 2 of 2: its output " + path("a.png") + " is that of camera 1, too");
    expectRefused(R"([{"name": "a"}, {"output": "none/a.png"}])",
                  path("none/a.png") + ": cannot be written: there is no folder " + path("none"));
    expectRefused(R"([{"name": "a"}, {"name": "b", "eyes": 1}])",
                  list +
                      ": camera 2 of 2: \"eyes\" is no key; there are name, output, view, eye, target, up, "
                      "projection, fov, gsd, size");
    expectRefused(R"([{"name": "a"}, {"name": "b", "view": "top", "projection": "parallel", "gsd": 1e-9}])",
                  path("b.png") +
                      ": not drawn: 2147483647 x 2147483647 pixels: at most 1000000 pixels a side, "
                      "which is the most that readers of pictures take");
}

// .tif and .tiff have a world file of one name.
TEST_F(CameraListRun, TwoPicturesDoNotShareAWorldFile)
{
    const QByteArray list = R"([
        {"output": "a.tif", "view": "top", "projection": "parallel", "gsd": 20},
        {"output": "a.tiff", "view": "top", "projection": "parallel", "gsd": 40}])";
    const ViewerRun run = render(list, path("{name}.png"));
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + path("a.tfw") +
                                            ": another output is the same file; give each one of its own"));
    EXPECT_EQ(files(), QStringList("list.json"));
}

TEST_F(CameraListRun, OutputReplacesNeitherInputsNorTheList)
{
    write("photo.png", "read by the mesh");
    write("house.obj", "mtllib house.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    write("house.mtl", "newmtl m\nmap_Kd photo.png\n");
    const ViewerRun run = runViewer({"render", path("house.obj"), "--cameras",
                                     write("list.json", R"([{"name": "a"}, {"output": "photo.png"}])"), "-o",
                                     path("{name}.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + path("photo.png") +
                                            ": cannot be written: it is one of the files that are read"));
    EXPECT_EQ(read("photo.png"), "read by the mesh");
    EXPECT_FALSE(QFileInfo::exists(path("a.png")));
    ASSERT_TRUE(QFile::link(path("list.json"), path("list.png")));
    EXPECT_EQ(runViewer({"render", write("square.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"), "--cameras",
                         write("list.json", R"([{"output": "list.png"}])")})
                  .status,
              1);
    EXPECT_TRUE(read("list.json").startsWith("[{"));
}

// What is finished stays, what is not leaves nothing.
TEST_F(CameraListRun, ControlCKeepsWhatIsFinished)
{
    const QByteArray list = R"([{"name": "a", "size": [64, 64]}, {"name": "b", "size": [20000, 20000]}])";
    QProcess process;
    process.start(viewerProgram(),
                  QStringList{"render", "--cameras", write("list.json", list), "-o", path("{name}.png")} +
                      sampleFiles());
    ASSERT_TRUE(process.waitForStarted());
    for (int i = 0; i < 200 && !QFileInfo::exists(path("a.png")); ++i)
        QThread::msleep(50);
    ASSERT_TRUE(QFileInfo::exists(path("a.png")));
    QThread::msleep(700);
    ASSERT_EQ(process.state(), QProcess::Running);
    QElapsedTimer timer;
    timer.start();
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_EQ(process.readAllStandardError(), "viewer3d: cancelled\n");
    EXPECT_EQ(files(), QStringList({"a.png", "list.json"}));
    EXPECT_EQ(QImage(path("a.png")).size(), QSize(64, 64));
}
