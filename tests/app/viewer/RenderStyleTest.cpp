#include "ViewerProcess.h"

#include "../../support/ImageCheck.h"

#include <viewer/ElevationColors.h>
#include <viewer/ElevationLegend.h>
#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/PicturePainter.h>
#include <viewer/makeTarget.h>

#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CProject.h>

#include <cmath>

// Eye-dome lighting and colours by height in pictures.

namespace {

/// A rectangle of two triangles, grey 200 where nothing else is said.
QByteArray rectangle(double left, double bottom, double right, double top, double height)
{
    QByteArray obj;
    for (const auto& [x, y] : {std::pair(left, bottom), {right, bottom}, {right, top}, {left, top}})
        obj += QByteArray("v ") + QByteArray::number(2.7e6 + x, 'f', 4) + ' ' +
               QByteArray::number(1.2e6 + y, 'f', 4) + ' ' + QByteArray::number(height, 'f', 4) + '\n';
    return obj + "f -4 -3 -2\nf -4 -2 -1\n";
}

} // namespace

class RenderStyle : public ViewerTest
{
protected:
    QImage render(const QStringList& arguments)
    {
        const ViewerRun run =
            runViewer(QStringList{"render"} + arguments + QStringList{"-o", path("out.png")});
        EXPECT_EQ(run.status, 0) << run.error.constData();
        EXPECT_EQ(run.error, "");
        return QImage(path("out.png"));
    }
    /// 600 x 400 pixels of a hundredth of a metre, from above, the middle at (2.7e6, 1.2e6).
    QStringList fromAbove(double target = 0.0) const
    {
        const double distance = 2.0 / std::tan(M_PI / 8.0);
        return {"--size",       "600x400",
                "--projection", "parallel",
                "--background", "black",
                "--eye",        QStringLiteral("2700000,1200000,%1").arg(target + distance, 0, 'f', 12),
                "--target",     QStringLiteral("2700000,1200000,%1").arg(target)};
    }
    QString refusal(const QStringList& arguments)
    {
        const ViewerRun run =
            runViewer(QStringList{"render"} + arguments + QStringList{"-o", path("none.png")});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errorLines().size(), 1) << run.error.constData();
        EXPECT_FALSE(QFile::exists(path("none.png")));
        return run.errorLines().value(0);
    }
};

// A square a metre above the ground, 100 x 100 pixels. Of the 97 pixels within 5.5 of one, 43 lie in the next
// columns to one side, 32 in those from the second on, and so forth.
TEST_F(RenderStyle, EyeDomeDarkensAStepByTheCount)
{
    const QStringList file = {
        write("step.obj", rectangle(-5, -5, 5, 5, 0.0) + rectangle(-0.5, -0.5, 0.5, 0.5, 1.0))};
    const QImage plain = render(file + fromAbove());
    const QImage negative = render(file + fromAbove() + QStringList{"--edl", "negative"});
    const QImage positive = render(file + fromAbove() + QStringList{"--edl", "positive"});
    const int beyond[] = {43, 32, 21, 12, 5, 0, 0};
    for (int k = 0; k < 7; ++k) {
        const double share = (97.0 - beyond[k]) / 97.0;
        const auto expect = [&](const QImage& image, int x, int y, double factor) {
            EXPECT_NEAR(qRed(image.pixel(x, y)), qRed(plain.pixel(x, y)) * factor, 0.51) << x << ", " << y;
        };
        // the square's last column is 349, and its first row 150
        expect(negative, 350 + k, 200, share);
        expect(negative, 300, 149 - k, share);
        expect(negative, 349 - k, 200, 1.0);
        expect(positive, 349 - k, 200, share);
        expect(positive, 300, 150 + k, share);
        expect(positive, 350 + k, 200, 1.0);
    }
    EXPECT_EQ(negative.pixel(300, 200), plain.pixel(300, 200));
    EXPECT_EQ(negative.pixel(100, 100), plain.pixel(100, 100));
}

TEST_F(RenderStyle, EyeDomeOffIsThePlainPicture)
{
    const QImage plain = render(sampleFiles() + QStringList{"--size", "320x200"});
    EXPECT_EQ(render(sampleFiles() + QStringList{"--size", "320x200", "--edl", "off"}), plain);
    EXPECT_NE(render(sampleFiles() + QStringList{"--size", "320x200", "--edl", "negative"}), plain);
}

TEST_F(RenderStyle, EyeDomeKeepsATransparentBackground)
{
    const QString file = write("square.obj", rectangle(-0.5, -0.5, 0.5, 0.5, 1.0));
    QStringList camera = fromAbove();
    camera[5] = "transparent";
    const QImage image = render(QStringList{file} + camera + QStringList{"--edl", "negative"});
    EXPECT_EQ(qAlpha(image.pixel(352, 200)), 0);
    EXPECT_EQ(qAlpha(image.pixel(300, 200)), 255);
}

// Two tiles side by side, and two bands, of squares above the ground, against the same picture in one pass;
// without eye dome shading tiles have tests of their own. What lies on the border of two pixels may fall to
// the other one in another pass, here and there, and then the pixels about it count otherwise.
TEST_F(RenderStyle, EyeDomeHasNoSeams)
{
    QByteArray obj = rectangle(-20, -20, 20, 20, 0.0);
    for (int i = -40; i <= 40; ++i)
        for (int j = -40; j <= 40; ++j)
            if (std::abs(i) < 4 || std::abs(j) < 4)
                obj += rectangle(0.283 * i, 0.283 * j, 0.283 * i + 0.137, 0.283 * j + 0.137, 1.0);
    Host host(Host::Settings::InMemory);
    const std::unique_ptr<CProject> project = host.createProject();
    const std::unique_ptr<Scene3d> scene = host.createScene(*project);
    FileOpener(host, *project, scene.get()).open({write("squares.obj", obj)}, ksp::StagedProgress::dummy());
    scene->flushBounds();
    FrameRenderer renderer(*scene);
    renderer.setEyeDomeShading(EyeDomeShading::Negative);
    for (const QSize& size : {QSize(2200, 160), QSize(160, 1400)}) {
        // pixels of a hundredth of a metre
        const double distance = size.height() / 200.0 / std::tan(M_PI / 8.0);
        const Viewpoint viewpoint = Viewpoint::looking(scene->mapFromModel({2.7e6, 1.2e6, distance}),
                                                       scene->mapFromModel({2.7e6, 1.2e6, 0.0}), {0, 1, 0},
                                                       IProjection::Parallel, size);
        PicturePainter painter(renderer, viewpoint, size, Qt::white);
        ASSERT_EQ(painter.grid().tileCount(), 2);
        const QImage tiled = painter.drawAll();
        const auto target = makeTarget(renderer.makeCurrent(), size, 4);
        renderer.drawFrame(viewpoint, size, scene->getDefaultVao(), Qt::white);
        const QImage whole = target->toImage().convertToFormat(QImage::Format_RGB32);
        target->release();
        const auto count = [](const QRect& rect, const auto& isCounted) {
            int found = 0;
            for (int y = rect.top(); y <= rect.bottom(); ++y)
                for (int x = rect.left(); x <= rect.right(); ++x)
                    found += isCounted(x, y);
            return found;
        };
        const QRect first = painter.grid().tiles(0).front().pixels;
        const QRect seam = size.width() > size.height() ? QRect(first.right() - 6, 0, 14, size.height())
                                                        : QRect(0, first.bottom() - 6, size.width(), 14);
        const int area = seam.width() * seam.height(), pixels = size.width() * size.height();
        const auto differs = [&](int x, int y) { return tiled.pixel(x, y) != whole.pixel(x, y); };
        int bright = 0;
        for (int x = seam.left(); x <= seam.right(); ++x)
            bright = std::max(bright, qRed(whole.pixel(x, seam.top())));
        const auto isShaded = [&](int x, int y) { return qRed(whole.pixel(x, y)) < bright - 20; };
        const int inAll = count(QRect(QPoint(0, 0), size), differs), atSeam = count(seam, differs);
        std::printf("2 tiles with eye dome: %d of %d pixels differ from one pass, %d of %d at the seam\n",
                    inAll, pixels, atSeam, area);
        EXPECT_GT(count(seam, isShaded), area / 5);
        EXPECT_LT(count(seam, isShaded), area * 4 / 5);
        EXPECT_LT(inAll, pixels / 1000);
        EXPECT_LT(atSeam, area / 500);
    }
}

// --- colours by height

// Rows of points, each at a height of its own: 2.7e6 m from the origin, exact to the bits of the picture.
TEST_F(RenderStyle, PointsHaveTheColoursOfTheirHeights)
{
    QByteArray ply =
        "ply\nformat ascii 1.0\nelement vertex 9\nproperty double x\nproperty double y\nproperty double z\n"
        "end_header\n";
    for (int i = 0; i < 9; ++i)
        ply += QByteArray::number(2.7e6 - 2.0 + 0.5 * i, 'f', 2) + " 1200000 " +
               QByteArray::number(100.0 + 2.5 * i, 'f', 2) + '\n';
    const QString file = write("points.ply", ply);
    const QString table = write("levels.txt", "100 #102030\n105 #f0e010 # sand\n117.5 #20c0ff\n120 white\n");
    const QStringList camera = fromAbove(120.0) + QStringList{"--point-size", "15"};
    // of the built-in table, too
    for (const QString& levels : {table, QString()})
        for (const bool isDiscrete : {false, true}) {
            const ElevationColors colors = levels.isEmpty() ? ElevationColors::over(100.0, 120.0, isDiscrete)
                                                            : ElevationColors::read(levels, isDiscrete);
            QStringList style = {levels.isEmpty() ? "--elevation" : "--elevation=" + levels};
            if (isDiscrete) style.append("--discrete");
            const QImage image = render(QStringList{file} + camera + style);
            int found = 0;
            for (int i = 0; i < 9; ++i) {
                const QColor expected = colors.at(100.0 + 2.5 * i);
                found += countPixels(image, expected, 1) > 100;
            }
            EXPECT_EQ(found, 9) << levels.toStdString() << isDiscrete;
        }
}

TEST_F(RenderStyle, LegendShowsTheLevels)
{
    const QString table = write("levels.txt", "300 #204080\n320 #30c050\n350 #f0d020\n391 #c02020\n");
    const QStringList files = sampleFiles();
    const QStringList style = {"--elevation", table, "--size", "800x500"};
    const QImage without = render(files + style), with = render(files + style + QStringList{"--legend"});
    const ElevationColors colors = ElevationColors::read(table, false);
    const ElevationLegend legend(colors, QSize(800, 500));
    QImage expected = without;
    legend.drawOn(expected, QPoint(0, 0));
    EXPECT_EQ(with.convertToFormat(QImage::Format_RGB32), expected.convertToFormat(QImage::Format_RGB32));
    const QRect bar = legend.bar();
    EXPECT_TRUE(QRect(0, 0, 800, 500).contains(bar));
    for (const auto& [height, color] : colors.levels()) {
        const double share = (height - 300.0) / 91.0;
        const int row =
            std::min(bar.bottom(), bar.bottom() + 1 - static_cast<int>(std::lround(share * bar.height())));
        EXPECT_LT(std::abs(with.pixelColor(bar.center().x(), row).red() - color.red()), 12) << height;
    }
}

// The legend lies in the last band, on two tiles of it.
TEST_F(RenderStyle, LegendOfATiledPictureIsWhole)
{
    const QString file = write("square.obj", rectangle(-0.5, -0.5, 0.5, 0.5, 1.0));
    const QImage image =
        render({file, "--size", "2100x1400", "--background", "#808080", "--elevation", "--legend"});
    const ElevationLegend legend(ElevationColors::over(1.0, 1.0, false), QSize(2100, 1400));
    ASSERT_LT(legend.rect().left(), 2048);
    ASSERT_GT(legend.rect().right(), 2048);
    QImage expected(legend.rect().size(), QImage::Format_RGB32);
    expected.fill(QColor("#808080"));
    legend.drawOn(expected, legend.rect().topLeft());
    EXPECT_EQ(image.copy(legend.rect()).convertToFormat(QImage::Format_RGB32), expected);
}

TEST_F(RenderStyle, EyeDomeLeavesTheLegendAlone)
{
    const QStringList style = {"--size", "640x400", "--elevation", "--legend"};
    const QImage plain = render(sampleFiles() + style);
    const QImage shaded = render(sampleFiles() + style + QStringList{"--edl", "negative"});
    const QRect bar = ElevationLegend(ElevationColors::over(305.0, 391.0, false), QSize(640, 400)).bar();
    EXPECT_EQ(shaded.copy(bar), plain.copy(bar));
    EXPECT_NE(shaded, plain);
}

TEST_F(RenderStyle, BadTableIsRefusedBeforeAnythingIsRead)
{
    const QString table = write("levels.txt", "# heights\n1 red\n2 blu\n");
    EXPECT_EQ(refusal({path("missing.obj"), "--elevation", table}),
              "viewer3d: " + table + ": line 3: \"blu\" is no colour; a name or #rrggbb is wanted");
    EXPECT_EQ(refusal({path("missing.obj"), "--elevation", path("none.txt")}),
              "viewer3d: " + path("none.txt") + ": cannot be read: No such file or directory");
    EXPECT_EQ(refusal({path("missing.obj"), "--elevation=" + path(".")}),
              "viewer3d: " + path(".") + ": cannot be read: file to open is a directory");
}
