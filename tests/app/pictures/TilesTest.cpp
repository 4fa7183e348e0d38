#include "../viewer/ViewerProcess.h"

#include "../../support/GlDebug.h"
#include "../../support/ImageCheck.h"

#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/PicturePainter.h>
#include <viewer/copyPixels.h>
#include <viewer/makeTarget.h>

#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CProject.h>

#include <cmath>

// Pictures that are drawn in tiles.

namespace {

const QSize pictureSize(2176, 1360); // two by two tiles: seams before column 2048 and row 1280
const QPoint seam(2048, 1280);

/// Wide lines and dashed ones all over a square of 2400 m, one between four points at the height 0.
QByteArray starOfLines()
{
    QByteArray features;
    for (int i = 0; i < 24; ++i) {
        const double x = 1200.0 * std::cos(i * M_PI / 12.0), y = 1200.0 * std::sin(i * M_PI / 12.0);
        features += QStringLiteral(R"({"type":"Feature","properties":{"stroke":"#d02000",%1},"geometry":)"
                                   R"({"type":"LineString","coordinates":[[%2,%3,1],[%4,%5,1]]}},)")
                        .arg(i % 2 ? R"("stroke-width":9)" : R"("stroke-dasharray":"10 10")")
                        .arg(-x, 0, 'f', 3)
                        .arg(-y, 0, 'f', 3)
                        .arg(x, 0, 'f', 3)
                        .arg(y, 0, 'f', 3)
                        .toLatin1();
    }
    features.chop(1);
    return R"({"type":"FeatureCollection","features":[)" + features + "]}";
}

struct Differences
{
    int all = 0, large = 0; // pixels; large: by more than 24 levels
    int atSeams = 0;        // within 4 pixels of a seam
};

Differences compare(const QImage& a, const QImage& b)
{
    Differences result;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            const int by = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                     std::abs(qBlue(p) - qBlue(q))});
            result.all += by > 0;
            result.large += by > 24;
            result.atSeams += by > 0 && (std::abs(x - seam.x()) <= 4 || std::abs(y - seam.y()) <= 4);
        }
    return result;
}

} // namespace

class Tiles : public ViewerTest
{
protected:
    static void SetUpTestSuite() { s_host = std::make_unique<Host>(Host::Settings::InMemory); }
    static void TearDownTestSuite() { s_host.reset(); }

    void open(const QStringList& files, float pointSize = 2.0f)
    {
        s_host->setPointSize(pointSize);
        m_project = s_host->createProject();
        m_scene = s_host->createScene(*m_project);
        m_debug = std::make_unique<GlDebug>(*QOpenGLContext::currentContext());
        FileOpener(*s_host, *m_project, m_scene.get()).open(files, ksp::StagedProgress::dummy());
        m_scene->flushBounds();
        m_renderer = std::make_unique<FrameRenderer>(*m_scene);
    }
    void TearDown() override
    {
        m_renderer.reset();
        if (m_scene) m_scene->makeCurrent();
        m_debug.reset();
        m_scene.reset();
        m_project.reset();
    }
    Viewpoint view(StandardView standard, IProjection::Projection projection) const
    {
        return Viewpoint::fitting(m_renderer->visibleBounds(), standardViewDirection(standard), projection,
                                  pictureSize);
    }
    /// In one pass, by a driver that can.
    QImage whole(const Viewpoint& viewpoint)
    {
        const auto target = makeTarget(m_renderer->makeCurrent(), pictureSize, 4);
        m_renderer->drawFrame(viewpoint, pictureSize, m_scene->getDefaultVao(), Qt::white);
        return target->toImage().convertToFormat(QImage::Format_RGB32);
    }
    QImage tiled(const Viewpoint& viewpoint)
    {
        return PicturePainter(*m_renderer, viewpoint, pictureSize, Qt::white).drawAll();
    }
    /// What is drawn is the same but for roundings in the driver, which place edges anew to a 256th of a
    /// pixel and so touch few pixels, at seams no more than elsewhere.
    void expectNoSeams(const Viewpoint& viewpoint)
    {
        const QImage one = whole(viewpoint), tiles = tiled(viewpoint);
        const double pixels = pictureSize.width() * pictureSize.height();
        ASSERT_GT(countPixels(one, [](QRgb p) { return p != qRgb(255, 255, 255); }), pixels / 60);
        const Differences found = compare(one, tiles);
        RecordProperty("different", std::to_string(found.all));
        RecordProperty("atSeams", std::to_string(found.atSeams));
        RecordProperty("large", std::to_string(found.large));
        EXPECT_LT(found.all, pixels / 1000);
        EXPECT_LT(found.large, pixels / 20000);
        // Rows and columns at seams are about a hundredth of the picture.
        EXPECT_LT(found.atSeams, pixels / 1000 / 20);
        if (HasFailure()) checkImage("tiles", tiles, one);
    }

    static std::unique_ptr<Host> s_host;
    std::unique_ptr<CProject> m_project;
    std::unique_ptr<Scene3d> m_scene;
    std::unique_ptr<GlDebug> m_debug;
    std::unique_ptr<FrameRenderer> m_renderer;
};

std::unique_ptr<Host> Tiles::s_host;

TEST_F(Tiles, OfTheTownHaveNoSeams)
{
    open(sampleFiles());
    expectNoSeams(view(StandardView::Iso, IProjection::Central));
    expectNoSeams(view(StandardView::Top, IProjection::Parallel));
}

TEST_F(Tiles, OfTheTownFromInsideItHaveNoSeams)
{
    open(sampleFiles());
    expectNoSeams(Viewpoint::looking(m_scene->mapFromModel({612000, 5071000, 330}),
                                     m_scene->mapFromModel({612030, 5071030, 322}), {0, 0, 1},
                                     IProjection::Central, pictureSize));
}

// Pens, dashes and caps keep their pixels where lines cross from tile to tile.
TEST_F(Tiles, OfLinesHaveNoSeams)
{
    open({write("lines.geojson", starOfLines())});
    expectNoSeams(view(StandardView::Top, IProjection::Parallel));
    expectNoSeams(view(StandardView::Iso, IProjection::Central));
}

// Points are clipped by their middle: those of 255 pixels on both sides of a seam show that tiles look far
// enough beside themselves.
TEST_F(Tiles, OfLargePointsHaveNoSeams)
{
    QByteArray ply = "ply\nformat ascii 1.0\nelement vertex 144\nproperty double x\nproperty double y\n"
                     "property double z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\n"
                     "end_header\n";
    for (int i = 0; i < 144; ++i)
        ply += QStringLiteral("%1 %2 %3 %4 %5 80\n")
                   .arg(i % 12 * 200)
                   .arg(i / 12 * 125)
                   .arg(i * 7 % 13)
                   .arg(i * 37 % 256)
                   .arg(i * 91 % 256)
                   .toLatin1();
    open({write("points.ply", ply)}, 255.0f);
    expectNoSeams(view(StandardView::Top, IProjection::Parallel));
}

// The picture is its tiles: in whatever order, by whatever painter, each has its bits.
TEST_F(Tiles, HaveTheSameBitsInAnyOrder)
{
    open(sampleFiles());
    const Viewpoint viewpoint = view(StandardView::Iso, IProjection::Central);
    const QImage picture = tiled(viewpoint);
    QImage other(pictureSize, QImage::Format_RGB32);
    PicturePainter painter(*m_renderer, viewpoint, pictureSize, Qt::white);
    for (int band = painter.grid().bandCount() - 1; band >= 0; --band) {
        std::vector<Tile> tiles = painter.grid().tiles(band);
        std::reverse(tiles.begin(), tiles.end());
        for (const Tile& tile : tiles) {
            static_cast<void>(m_renderer->pointUnder(viewpoint, pictureSize, tile.pixels.center()));
            copyPixels(painter.drawTile(tile), other, tile.pixels.topLeft());
        }
    }
    checkImage("tiles_order", other, picture);
}

// A point is hit wherever it is seen, also far from its middle, and nothing beside it.
TEST_F(Tiles, PointUnderAPixelIsTheOneThatIsSeenThere)
{
    open({write("points.ply", "ply\nformat ascii 1.0\nelement vertex 2\nproperty double x\n"
                              "property double y\nproperty double z\nend_header\n0 0 3\n10 0 3\n")},
         61.0f);
    const QSize size(400, 300);
    const glm::dvec3 point = m_scene->mapFromModel({0, 0, 3});
    for (const auto projection : {IProjection::Parallel, IProjection::Central}) {
        const Viewpoint viewpoint =
            Viewpoint::looking(m_scene->mapFromModel({0, 0, 33}), point, {0, 1, 0}, projection, size);
        for (const auto& [x, y] : {std::pair(200, 150), {226, 150}, {175, 126}, {200, 176}}) {
            const auto found = m_renderer->pointUnder(viewpoint, size, QPoint(x, y));
            ASSERT_TRUE(found) << x << ' ' << y;
            EXPECT_NEAR(viewpoint.depthOf(*found), viewpoint.depthOf(point), 1e-3 * viewpoint.depthOf(point));
        }
        EXPECT_FALSE(m_renderer->pointUnder(viewpoint, size, QPoint(200, 190)));
        EXPECT_FALSE(m_renderer->pointUnder(viewpoint, size, QPoint(-1000, 5000)));
    }
}

// A picture that is one tile is what a single pass draws.
TEST_F(Tiles, OneIsTheWholePicture)
{
    open(sampleFiles());
    const QSize size(640, 360);
    const Viewpoint viewpoint = Viewpoint::fitting(
        m_renderer->visibleBounds(), standardViewDirection(StandardView::Iso), IProjection::Central, size);
    const QImage tiles = PicturePainter(*m_renderer, viewpoint, size, Qt::white).drawAll();
    const auto target = makeTarget(m_renderer->makeCurrent(), size, 4);
    m_renderer->drawFrame(viewpoint, size, m_scene->getDefaultVao(), Qt::white);
    checkImage("tiles_one", tiles, target->toImage().convertToFormat(QImage::Format_RGB32));
}

// Near views of a part, from all sides: what lies out of sight is left out and leaves no gap.
TEST_F(Tiles, PartsAreTheSameWithAllDrawn)
{
    open(sampleFiles(), 9.0f);
    const QSize size(120, 90);
    const gmx::BoundingBox box = m_renderer->visibleBounds();
    const auto target = makeTarget(m_renderer->makeCurrent(), size, 0);
    int covered = 0;
    for (int i = 0; i < 40; ++i) {
        const glm::dvec3 share(0.1 + 0.2 * (i % 5), 0.1 + 0.2 * (i / 5 % 4), 0.2);
        const glm::dvec3 at = box.getMin() + share * box.getSize();
        const double distance = box.getDiagonal() * (i % 3 == 0 ? 0.02 : 0.08);
        const glm::dvec3 eye = at + distance * glm::dvec3(std::cos(i), std::sin(i), 0.1 + 0.3 * (i % 4));
        const Viewpoint viewpoint = Viewpoint::looking(
            eye, at, {0, 0, 1}, i % 2 == 0 ? IProjection::Central : IProjection::Parallel, size);
        QImage pictures[2];
        for (const bool isCulled : {false, true}) {
            m_renderer->setCulling(isCulled);
            m_renderer->drawFrame(viewpoint, size, m_scene->getDefaultVao(), Qt::white);
            pictures[isCulled] = target->toImage().convertToFormat(QImage::Format_RGB32);
        }
        ASSERT_EQ(pictures[true], pictures[false]) << i;
        covered += countPixels(pictures[true], [](QRgb p) { return p != qRgb(255, 255, 255); });
    }
    EXPECT_GT(covered, 40 * 120 * 90 / 5);
}
