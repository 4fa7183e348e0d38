#include "ViewerProcess.h"

#include "../../support/ImageCheck.h"

#include <QtGui/QImage>

namespace {

/// A unit square in the plane z = height, a triangle fan of two, coloured by its vertices.
QByteArray square(double x, double y, double height, const char* color)
{
    QByteArray obj;
    for (const auto& [dx, dy] : {std::pair(0, 0), {1, 0}, {1, 1}, {0, 1}})
        obj += QStringLiteral("v %1 %2 %3 %4\n")
                   .arg(x + dx, 0, 'f', 3)
                   .arg(y + dy, 0, 'f', 3)
                   .arg(height, 0, 'f', 3)
                   .arg(color)
                   .toLatin1();
    return obj + "f -4 -3 -2\nf -4 -2 -1\n";
}

bool isAbout(QRgb pixel, const QColor& color, int limit)
{
    return std::abs(qRed(pixel) - color.red()) <= limit && std::abs(qGreen(pixel) - color.green()) <= limit &&
           std::abs(qBlue(pixel) - color.blue()) <= limit;
}

} // namespace

class Render : public ViewerTest
{
protected:
    /// Renders and gives the picture; the run must succeed and say nothing.
    QImage render(const QStringList& arguments)
    {
        const ViewerRun run =
            runViewer(QStringList{"render"} + arguments + QStringList{"-o", path("out.png")});
        EXPECT_EQ(run.status, 0) << run.error.constData();
        EXPECT_TRUE(run.errorLines().isEmpty()) << run.error.constData();
        EXPECT_TRUE(run.out.isEmpty());
        return QImage(path("out.png"));
    }
};

TEST_F(Render, SamplesShowTheTown)
{
    const QImage image = render(sampleFiles() + QStringList{"--size", "640x360", "--background", "#ff00ff"});
    ASSERT_EQ(image.size(), QSize(640, 360));
    const int pixels = 640 * 360;
    const int background = countPixels(image, QColor(255, 0, 255));
    EXPECT_GT(background, pixels / 5);
    EXPECT_LT(background, pixels * 4 / 5);
    // meadows and trees, streets, roofs, the stream
    EXPECT_GT(
        countPixels(image, [](QRgb p) { return qGreen(p) > qRed(p) + 15 && qGreen(p) > qBlue(p) + 25; }),
        pixels / 12);
    EXPECT_GT(
        countPixels(image,
                    [](QRgb p) { return qRed(p) > 2 * qGreen(p) && qRed(p) > 2 * qBlue(p) && qRed(p) > 90; }),
        100);
    EXPECT_GT(countPixels(image,
                          [](QRgb p) {
                              return qBlue(p) > qRed(p) + 30 && qBlue(p) > qGreen(p) + 10 && qRed(p) < 150;
                          }),
              500);
}

TEST_F(Render, CameraStationsHaveTheirColour)
{
    const QString folder = QStringLiteral(V3D_SOURCE_DIR "/samples/town/");
    const QImage image = render({folder + "stations.geojson", "--size", "640x360", "--background", "white"});
    EXPECT_GT(countPixels(image, QColor("#1f4fd8"), 8), 300); // view lines, 2 pixels wide
    EXPECT_GT(countPixels(image, QColor("#ffe14d"), 8),
              300); // ten points of 9 x 9 pixels, parts of them behind lines
}

// Light from 30 degrees west of south, 50 degrees high, on grey 200: 0.3 + |n . l|, where l = (-0.321,
// -0.557, 0.766).
TEST_F(Render, WallsOfAHouseAlongTheAxesDiffer)
{
    const QString box =
        write("box.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n"
                         "f 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\nf 5 6 7 8\nf 4 3 2 1\n");
    const auto middle = [&](const char* view) {
        return render({box, "--size", "64x64", "--view", view}).pixelColor(32, 32);
    };
    EXPECT_NEAR(middle("front").red(), 171, 2);
    EXPECT_NEAR(middle("left").red(), 124, 2);
    EXPECT_NEAR(middle("top").red(), 213, 2);
}

// A square of 1 m in the middle of a view of 4 m height: 100 of 400 pixels.
TEST_F(Render, PutsPointsWhereTheCameraSeesThem)
{
    const QString file = write("square.obj", square(-0.5, -0.5, 0.0, "1 0 0"));
    const double height =
        2.0 / std::tan(M_PI / 8.0); // at 45 degrees of view this far away 4 m are in the picture
    const QImage image = render({file, "--size", "600x400", "--background", "black", "--eye",
                                 QStringLiteral("0,0,%1").arg(height, 0, 'f', 12), "--target", "0,0,0"});
    EXPECT_TRUE(isAbout(image.pixel(300, 200), Qt::red, 120) && qRed(image.pixel(300, 200)) > 100);
    EXPECT_NEAR(countPixels(image, [](QRgb p) { return qRed(p) > 60; }), 100 * 100, 400);
    for (const auto& [x, y] : {std::pair(253, 200), {346, 200}, {300, 153}, {300, 246}})
        EXPECT_GT(qRed(image.pixel(x, y)), 60) << x << " " << y;
    for (const auto& [x, y] : {std::pair(247, 200), {352, 200}, {300, 147}, {300, 252}})
        EXPECT_EQ(image.pixel(x, y), qRgb(0, 0, 0)) << x << " " << y;
}

TEST_F(Render, ViewsLookFromWhereTheySay)
{
    // red in the west, green in the east
    const QString file = write("two.obj", square(0, 0, 0, "1 0 0") + square(3, 0, 0, "0 1 0"));
    const QImage top = render({file, "--view", "top", "--projection", "parallel", "--background", "black"});
    EXPECT_GT(qRed(top.pixel(200, 360)), 60);
    EXPECT_GT(qGreen(top.pixel(1080, 360)), 60);
    const QImage bottom =
        render({file, "--view", "bottom", "--projection", "parallel", "--background", "black"});
    EXPECT_GT(qRed(bottom.pixel(200, 360)), 20); // the east stays to the right, the north goes down
    EXPECT_GT(qGreen(bottom.pixel(1080, 360)), 20);
}

TEST_F(Render, NearThingsHideFarOnes)
{
    const QString file = write("stack.obj", square(0, 0, 0, "1 0 0") + square(0, 0, 0.001, "0 1 0"));
    const QImage image = render({file, "--view", "top", "--background", "black"});
    EXPECT_GT(countPixels(image, [](QRgb p) { return qGreen(p) > 60; }), 100'000);
    EXPECT_EQ(countPixels(image, [](QRgb p) { return qRed(p) > 60; }), 0);
}

TEST_F(Render, TransparentBackgroundStaysTransparent)
{
    const QString file = write("square.obj", square(0, 0, 0, "1 0 0"));
    const QImage image = render({file, "--view", "top", "--background", "transparent"});
    ASSERT_TRUE(image.hasAlphaChannel());
    EXPECT_EQ(qAlpha(image.pixel(2, 2)), 0);
    EXPECT_EQ(qAlpha(image.pixel(640, 360)), 255);
}

TEST_F(Render, BackgroundIsThatOfTheSettingsAtFirst)
{
    const QString file = write("square.obj", square(0, 0, 0, "1 0 0"));
    EXPECT_EQ(render({file, "--view", "top"}).pixelColor(2, 2), QColor(Qt::lightGray));
}

TEST_F(Render, LinesShowTheirPens)
{
    const QString file = write("lines.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","properties":{"stroke":"#ff0000","stroke-width":9},
         "geometry":{"type":"LineString","coordinates":[[2700000,1200000,400],[2700100,1200000,400]]}},
        {"type":"Feature","properties":{"stroke":"#00ff00","stroke-dasharray":"10 10"},
         "geometry":{"type":"LineString","coordinates":[[2700000,1200010,400],[2700100,1200010,400]]}},
        {"type":"Feature","properties":{"stroke":"#0000ff"},
         "geometry":{"type":"LineString","coordinates":[[2700000,1200020,400],[2700100,1200020,400]]}},
        {"type":"Feature","properties":{"marker-color":"#ffff00","marker-size":12},
         "geometry":{"type":"Point","coordinates":[2700050,1200030,400]}}]})");
    const QImage image = render({file, "--view", "top", "--projection", "parallel", "--background", "black"});
    const int length = countPixels(image, [](QRgb p) { return qBlue(p) > 40 && qRed(p) < 40; });
    EXPECT_GT(length, 1000);
    const int wide = countPixels(image, [](QRgb p) { return qRed(p) > 200 && qGreen(p) < 40; });
    EXPECT_NEAR(static_cast<double>(wide) / 1240.0, 9.0, 1.5);
    const int point = countPixels(image, [](QRgb p) { return qRed(p) > 200 && qGreen(p) > 200; });
    EXPECT_NEAR(point, 12 * 12, 30);
    // half of the dashed line is drawn, in dashes of 10 pixels
    int row = 0, dashed = 0;
    for (int y = 0; y < image.height(); ++y) {
        int count = 0;
        for (int x = 0; x < image.width(); ++x)
            count += qGreen(image.pixel(x, y)) > 40 && qRed(image.pixel(x, y)) < 40;
        if (count > dashed) {
            dashed = count;
            row = y;
        }
    }
    EXPECT_NEAR(dashed, 1240 / 2, 40);
    int changes = 0;
    for (int x = 1; x < image.width(); ++x)
        changes += (qGreen(image.pixel(x, row)) > 40) != (qGreen(image.pixel(x - 1, row)) > 40);
    EXPECT_NEAR(changes, 1240 / 10, 6);
}

// One point of each kind, all of them far from each other.
TEST_F(Render, PointsHaveTheSizeThatIsAskedForOrTheirOwn)
{
    const QStringList files = {
        write("points.ply", "ply\nformat ascii 1.0\nelement vertex 1\nproperty double x\nproperty double y\n"
                            "property double z\nproperty uchar red\nproperty uchar green\n"
                            "property uchar blue\nend_header\n2700000 1200000 400 255 0 0\n"),
        write("points.geojson", R"({"type":"FeatureCollection","features":[
            {"type":"Feature","properties":{"marker-color":"#00ff00"},
             "geometry":{"type":"Point","coordinates":[2700050,1200010,400]}},
            {"type":"Feature","properties":{"marker-color":"#0000ff","marker-size":12},
             "geometry":{"type":"Point","coordinates":[2700100,1200000,400]}}]})")};
    const QStringList look = {
        "--eye",    "2700050,1200005,900", "--target", "2700050,1200005,400", "--projection",
        "parallel", "--background",        "black"};
    // smoothing counts a pixel at the rim in part
    const auto expectSides = [](const QImage& image, int mesh, int feature, int ownSize) {
        double red = 0, green = 0, blue = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                red += qRed(image.pixel(x, y)) / 255.0;
                green += qGreen(image.pixel(x, y)) / 255.0;
                blue += qBlue(image.pixel(x, y)) / 255.0;
            }
        EXPECT_NEAR(std::sqrt(red), mesh, 0.5);
        EXPECT_NEAR(std::sqrt(green), feature, 0.5);
        EXPECT_NEAR(std::sqrt(blue), ownSize, 0.5);
    };
    expectSides(render(files + look), 2, 6, 12);
    expectSides(render(files + look + QStringList{"--point-size", "30"}), 30, 30, 12);
}

// Everything lies in one plane, and the ball stands out of it towards the eye.
TEST_F(Render, BallsOfControlPointsAreWholeInAFlatScene)
{
    const QString file = write("flat.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","properties":{},"geometry":{"type":"LineString","coordinates":[[0,0],[40,30]]}},
        {"type":"Feature","properties":{"control":true},"geometry":{"type":"Point","coordinates":[10,20]}}]})");
    for (const char* projection : {"central", "parallel"}) {
        const QImage image = render({file, "--view", "top", "--projection", projection, "--size", "300x200"});
        const int ball = countPixels(image, [](QRgb p) { return qRed(p) > qGreen(p) + 40; });
        EXPECT_NEAR(ball, M_PI * 9.0 * 9.0, 60.0) << projection; // a disc of 9 pixels, and its mark in it
    }
}

TEST_F(Render, ReplacesAnOldPicture)
{
    write("out.png", "old");
    EXPECT_FALSE(render({write("square.obj", square(0, 0, 0, "1 0 0")), "--size", "64x48"}).isNull());
}

TEST_F(Render, HundredThousandTrianglesTakeLessThanThreeSeconds)
{
    QByteArray obj;
    const int n = 224; // squares a side: 100,352 triangles
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i)
            obj += QByteArray("v ") + QByteArray::number(2.7e6 + i * 0.5, 'f', 3) + ' ' +
                   QByteArray::number(1.2e6 + j * 0.5, 'f', 3) + ' ' +
                   QByteArray::number(400.0 + 3.0 * std::sin(i / 9.0) * std::cos(j / 7.0), 'f', 3) + '\n';
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const int a = j * (n + 1) + i + 1;
            for (const auto& [b, c] : {std::pair(a + 1, a + n + 2), {a + n + 2, a + n + 1}})
                obj += "f " + QByteArray::number(a) + ' ' + QByteArray::number(b) + ' ' +
                       QByteArray::number(c) + '\n';
        }
    const QString file = write("hills.obj", obj);
    const ViewerRun run = runViewer({"render", file, "-o", path("out.png")});
    EXPECT_EQ(run.status, 0) << run.error.constData();
    EXPECT_LT(run.seconds, 3.0);
    RecordProperty("seconds", std::to_string(run.seconds));
    EXPECT_GT(countPixels(QImage(path("out.png")), [](QRgb p) { return p != qRgb(192, 192, 192); }), 300'000);
}
