#include "../viewer/ViewerProcess.h"

#include "../../support/ImageCheck.h"

#include <QtCore/QFileInfo>
#include <QtGui/QImage>

#include <glm/glm.hpp>

#include <cmath>

// Pictures from above with a world file.

namespace {

QByteArray marker(const glm::dvec3& place, const char* color)
{
    return QStringLiteral(
               R"({"type":"Feature","properties":{"marker-color":"%1","marker-size":9},"geometry":)"
               R"({"type":"Point","coordinates":[%2,%3,%4]}})")
        .arg(color)
        .arg(place.x, 0, 'f', 4)
        .arg(place.y, 0, 'f', 4)
        .arg(place.z, 0, 'f', 4)
        .toLatin1();
}

QByteArray collection(const QList<QByteArray>& features)
{
    return R"({"type":"FeatureCollection","features":[)" + features.join(',') + "]}";
}

/// A marker and how much of its colour a pixel has.
struct Seen
{
    glm::dvec3 place;
    int (*amount)(QRgb);
};

/// The middle, in columns and rows counted from the middle of the upper left pixel, of what the measure
/// finds.
glm::dvec2 middleOf(const QImage& image, int (*amount)(QRgb))
{
    glm::dvec2 sum(0.0);
    double weight = 0.0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const double w = amount(image.pixel(x, y));
            sum += w * glm::dvec2(x, y);
            weight += w;
        }
    return sum / weight;
}

} // namespace

class OrthoPicture : public ViewerTest
{
protected:
    QImage render(const QStringList& arguments, const QString& name = "out.png")
    {
        const ViewerRun run = runViewer(QStringList{"render", "--view", "top", "--projection", "parallel",
                                                    "--background", "black", "-o", path(name)} +
                                        arguments);
        EXPECT_EQ(run.status, 0) << run.error.constData();
        EXPECT_EQ(run.error, "");
        return QImage(path(name));
    }
    /// The model coordinates that the world file tells of a place in the picture.
    glm::dvec2 mapped(const glm::dvec2& place, const QString& name = "out.pgw") const
    {
        const QList<QByteArray> lines = read(name).split('\n');
        EXPECT_EQ(lines.size(), 7);
        EXPECT_EQ(lines.value(6), "");
        double n[6] = {};
        for (int i = 0; i < 6; ++i)
            n[i] = lines.value(i).toDouble();
        return {n[0] * place.x + n[2] * place.y + n[4], n[1] * place.x + n[3] * place.y + n[5]};
    }
};

// Also at large coordinates, in small pixels, at the far end of a picture of several tiles, and whatever the
// height.
TEST_F(OrthoPicture, WorldFileMapsPixelsToWhereMarkersWerePut)
{
    const glm::dvec3 red(2700003.21, 1200024.37, 400.0), green(2700418.93, 1199801.58, 913.0);
    const QString file =
        write("markers.geojson", collection({marker(red, "#ff0000"), marker(green, "#00ff00")}));
    for (const char* gsd : {"0.16", "1", "3.7"}) {
        const QImage image =
            render({file, "--gsd", gsd, "--size", QString(gsd) == "0.16" ? "3000x1700" : "600x400"});
        const double pixel = QByteArray(gsd).toDouble();
        for (const auto& [place, amount] : {Seen{red, qRed}, {green, qGreen}}) {
            const glm::dvec2 found = mapped(middleOf(image, amount));
            EXPECT_NEAR(found.x, place.x, 0.3 * pixel) << gsd;
            EXPECT_NEAR(found.y, place.y, 0.3 * pixel) << gsd;
        }
    }
}

TEST_F(OrthoPicture, MillimetresAreRightFarFromTheOrigin)
{
    const glm::dvec3 red(2700000.1234, 1200000.5678, 400.0), green(2700000.4321, 1200000.8765, 401.0);
    const QString file =
        write("markers.geojson", collection({marker(red, "#ff0000"), marker(green, "#00ff00")}));
    const QImage image = render({file, "--gsd", "0.001", "--size", "400x400"});
    for (const auto& [place, amount] : {Seen{red, qRed}, {green, qGreen}}) {
        const glm::dvec2 found = mapped(middleOf(image, amount));
        EXPECT_NEAR(found.x, place.x, 0.0004);
        EXPECT_NEAR(found.y, place.y, 0.0004);
    }
}

TEST_F(OrthoPicture, IsAsLargeAsItsContentNeeds)
{
    const QString file =
        write("square.obj", "v 100.2 50.3 5\nv 107.9 50.3 5\nv 107.9 53.8 9\nv 100.2 53.8 9\n"
                            "f 1 2 3 4\n");
    const QImage image = render({file, "--gsd", "0.5"});
    EXPECT_EQ(image.size(), QSize(16, 8)); // 100 to 108, 50 to 54
    EXPECT_EQ(read("out.pgw"), "0.5\n0\n0\n-0.5\n100.25\n53.75\n");
    EXPECT_GT(qRed(image.pixel(8, 4)), 60);
}

TEST_F(OrthoPicture, AsTiffHasItsOwnWorldFile)
{
    const QString file = write("square.obj", "v 100 50 5\nv 108 50 5\nv 108 54 9\nv 100 54 9\nf 1 2 3 4\n");
    for (const char* name : {"out.tif", "out.tiff"}) {
        render({file, "--gsd", "2", "--size", "10x6"}, name);
        EXPECT_EQ(read("out.tfw"), "2\n0\n0\n-2\n95\n57\n") << name; // 94 to 114, 46 to 58
        EXPECT_TRUE(read(name).startsWith("II*")) << name;
        QFile::remove(path("out.tfw"));
    }
}

TEST_F(OrthoPicture, WithASizeIsThatOfTheMiddle)
{
    const QString file = write("square.obj", "v 100 50 5\nv 108 50 5\nv 108 54 9\nv 100 54 9\nf 1 2 3 4\n");
    const QImage image = render({file, "--gsd", "2", "--size", "10x6"});
    EXPECT_EQ(image.size(), QSize(10, 6));
    EXPECT_EQ(read("out.pgw"), "2\n0\n0\n-2\n95\n57\n"); // 94 to 114, 46 to 58
}

TEST_F(OrthoPicture, OfOnePointHasAtLeastOnePixel)
{
    const QString file = write("markers.geojson", collection({marker({10.3, 20.6, 5}, "#ff0000")}));
    const QImage image = render({file, "--gsd", "1"});
    EXPECT_EQ(image.size(), QSize(1, 1));
    EXPECT_EQ(qRed(image.pixel(0, 0)), 255);
    EXPECT_EQ(read("out.pgw"), "1\n0\n0\n-1\n10.5\n20.5\n");
}

// What a picture of several tiles shows, one of larger pixels shows, too.
TEST_F(OrthoPicture, LargeOneReducedIsTheSmallOne)
{
    const QString folder = QStringLiteral(V3D_SOURCE_DIR "/samples/town/");
    const QStringList files = {folder + "terrain.ply", folder + "trees.obj"};
    const QImage large = render(files + QStringList{"--gsd", "0.1", "--size", "2200x1400"}, "large.png");
    const QImage small = render(files + QStringList{"--gsd", "0.4", "--size", "550x350"}, "small.png");
    ASSERT_EQ(large.size(), QSize(2200, 1400));
    ASSERT_EQ(small.size(), QSize(550, 350));
    EXPECT_NEAR(mapped({0, 0}, "large.pgw").x - 0.05, mapped({0, 0}, "small.pgw").x - 0.2, 1e-9);
    const QImage reduced = large.scaled(550, 350, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    double sum = 0.0;
    int far = 0;
    for (int y = 0; y < 350; ++y)
        for (int x = 0; x < 550; ++x) {
            const QRgb p = reduced.pixel(x, y), q = small.pixel(x, y);
            const int by = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                     std::abs(qBlue(p) - qBlue(q))});
            sum += by;
            far += by > 48;
        }
    EXPECT_LT(sum / (550 * 350), 1.0);
    EXPECT_LT(far, 550 * 350 / 1000); // rims of trees, of which the small picture has four samples a pixel
}

TEST_F(OrthoPicture, BeyondTheLimitIsRefusedInOneLine)
{
    const QString file = write("square.obj", "v 0 0 0\nv 400 0 0\nv 400 300 0\nf 1 2 3\n");
    const ViewerRun run = runViewer({"render", file, "-o", path("out.png"), "--view", "top", "--projection",
                                     "parallel", "--gsd", "0.001"});
    EXPECT_EQ(run.status, 1);
    // 400,002 x 300,002 pixels of 4 bytes, in units of 2^30
    EXPECT_EQ(
        run.errorLines(),
        QStringList("viewer3d: " + path("out.png") +
                    ": not drawn: 400002 x 300002 pixels: such a picture takes 447 GiB of memory wherever "
                    "it is opened, 4 bytes a pixel; at most 16 GiB can be asked for"));
    EXPECT_FALSE(QFileInfo::exists(path("out.png")));
    EXPECT_FALSE(QFileInfo::exists(path("out.pgw")));
}

TEST_F(OrthoPicture, WorldFileReplacesNoInput)
{
    const QString file = write("square.obj", "mtllib out.pgw\nv 0 0 0\nv 4 0 0\nv 4 3 0\nf 1 2 3\n");
    write("out.pgw", "newmtl m\n");
    const ViewerRun run = runViewer(
        {"render", file, "-o", path("out.png"), "--view", "top", "--projection", "parallel", "--gsd", "1"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + path("out.pgw") +
                                            ": cannot be written: it is one of the files that are read"));
    EXPECT_EQ(read("out.pgw"), "newmtl m\n");
    EXPECT_FALSE(QFileInfo::exists(path("out.png")));
}

// Of several parts none gets its name when one of them does not find room: here the picture lacks its last
// byte.
TEST_F(OrthoPicture, AndItsWorldFileAppearTogether)
{
    const QString command =
        QString("'%1' render '%2' -o '%3' --view top --projection parallel --gsd 0.8")
            .arg(viewerProgram(), QStringLiteral(V3D_SOURCE_DIR "/samples/town/terrain.ply"),
                 path("out.png"));
    ASSERT_EQ(runProgram("bash", {"-c", command}).status, 0);
    const qint64 size = QFileInfo(path("out.png")).size(); // above 100 KiB
    ASSERT_GT(size, 100 * 1024);
    for (const char* name : {"out.png", "out.pgw"})
        ASSERT_TRUE(QFile::remove(path(name)));
    const ViewerRun run =
        runProgram("bash", {"-c", QString("ulimit -f %1; %2").arg((size - 1) / 1024).arg(command)});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(),
              QStringList("viewer3d: " + path("out.png") + ": cannot be written: File too large"));
    EXPECT_EQ(QDir(path(".")).entryList(QDir::Files), QStringList());
}

// --- what is left of a picture that was there before

class OldWorldFile : public OrthoPicture
{
protected:
    void SetUp() override
    {
        OrthoPicture::SetUp();
        m_file = write("square.obj", "v 100 50 5\nv 108 50 5\nv 108 54 9\nv 100 54 9\nf 1 2 3 4\n");
    }
    /// Puts a picture from the side where one from above lay, or may have lain.
    void renderFromTheSide(const QString& name) const
    {
        const ViewerRun run =
            runViewer({"render", m_file, "-o", path(name), "--view", "front", "--size", "10x6"});
        EXPECT_EQ(run.status, 0) << run.error.constData();
    }
    QString m_file;
};

TEST_F(OldWorldFile, GoesWithItsPicture)
{
    for (const auto& [picture, world] : {std::pair("a.png", "a.pgw"), {"b.tiff", "b.tfw"}}) {
        render({m_file, "--gsd", "2"}, picture);
        ASSERT_TRUE(QFileInfo::exists(path(world)));
        renderFromTheSide(picture);
        EXPECT_FALSE(QFileInfo::exists(path(world))) << world;
    }
}

TEST_F(OldWorldFile, GoesWithTheDepthMapThatTakesItsPlace)
{
    render({m_file, "--gsd", "2"}, "a.tif");
    render({m_file, "--gsd", "2"}, "b.png");
    ASSERT_EQ(runViewer({"depth", m_file, "-o", path("a.tif"), "--preview", path("b.png"), "--size", "10x6"})
                  .status,
              0);
    EXPECT_EQ(QDir(path(".")).entryList({"*w"}, QDir::Files), QStringList());
}

TEST_F(OldWorldFile, OfSomebodyElseStays)
{
    const QByteArray theirs = "2.0\n0.0\n0.0\n-2.0\n101.0\n53.0\n";
    write("a.pgw", theirs);
    renderFromTheSide("a.png");
    EXPECT_EQ(read("a.pgw"), theirs);
}

TEST_F(OldWorldFile, OfAnotherPictureStays)
{
    render({m_file, "--gsd", "2", "--size", "10x6"}, "a.tif");
    renderFromTheSide("a.tiff");
    EXPECT_EQ(read("a.tfw"), "2\n0\n0\n-2\n95\n57\n");
}

TEST_F(OldWorldFile, ThatIsReadStays)
{
    render({m_file, "--gsd", "2", "--size", "10x6"}, "a.png");
    ASSERT_TRUE(QFile::rename(path("a.pgw"), path("b.pgw")));
    ASSERT_TRUE(QFile::link(path("b.pgw"), path("a.pgw")));
    ASSERT_TRUE(
        QFile::rename(path("a.png"), path("b.png"))); // b.png is read with b.pgw, to which a.pgw leads
    m_file = path("b.png");
    renderFromTheSide("a.png");
    EXPECT_EQ(read("b.pgw"), "2\n0\n0\n-2\n95\n57\n");
    EXPECT_TRUE(QFileInfo::exists(path("a.pgw")));
}
