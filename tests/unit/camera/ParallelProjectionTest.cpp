#include "RecordingArchive.h"

#include <Viewer3dModule/camera/ParallelProjection.h>

#include <framework/ksp/CFileException.h>
#include <framework/ksp/CQtArchive.h>

#include <QtCore/QSizeF>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr double largestFloat = 3.4028234663852886e38;
constexpr double smallestFloat = 1.1754943508222875e-38;

ParallelProjection parallelOf(double ratio)
{
    ParallelProjection projection;
    projection.setProjectionRatio(ratio);
    return projection;
}

double zoomed(double ratio, double delta)
{
    ParallelProjection projection = parallelOf(ratio);
    projection.zoom(delta);
    return projection.getZoom();
}

double zoomedIn(double ratio)
{
    ParallelProjection projection = parallelOf(ratio);
    projection.zoomIn();
    return projection.getZoom();
}

double zoomedOut(double ratio)
{
    ParallelProjection projection = parallelOf(ratio);
    projection.zoomOut();
    return projection.getZoom();
}

TEST(ParallelProjection, StartsAtOneUnitAPixel)
{
    const ParallelProjection projection;
    EXPECT_EQ(projection.getType(), IProjection::Parallel);
    EXPECT_EQ(int(IProjection::Projection::Parallel), 0);
    EXPECT_EQ(projection.getZoom(), 1.0);
}

TEST(ParallelProjection, ZoomIsTheRatio)
{
    ParallelProjection projection;
    projection.setZoom(3.5);
    EXPECT_EQ(projection.getZoom(), 3.5);
    projection.setProjectionRatio(0.01);
    EXPECT_EQ(projection.getZoom(), 0.01);
}

TEST(ParallelProjection, ZoomsOutByTenthsAndThenDoubles)
{
    ParallelProjection projection = parallelOf(1.95);
    projection.zoomOut();
    EXPECT_DOUBLE_EQ(projection.getZoom(), 2.05);
    projection.zoomOut();
    EXPECT_DOUBLE_EQ(projection.getZoom(), 4.1);
}

TEST(ParallelProjection, ZoomsInByTenthsAndThenHalves)
{
    ParallelProjection projection = parallelOf(0.25);
    projection.zoomIn();
    EXPECT_DOUBLE_EQ(projection.getZoom(), 0.15);
    projection.zoomIn();
    EXPECT_DOUBLE_EQ(projection.getZoom(), 0.075);
}

TEST(ParallelProjection, EndsOfTheBandLieOutside)
{
    EXPECT_EQ(zoomedIn(0.2), 0.1);
    EXPECT_EQ(zoomedOut(0.2), 0.4);
    EXPECT_EQ(zoomedIn(2.0), 1.0);
    EXPECT_EQ(zoomedOut(2.0), 4.0);
    EXPECT_EQ(zoomed(0.2, 0.5), 0.4);
    EXPECT_EQ(zoomed(2.0, -0.5), 1.0);
    const double justInside = std::nextafter(2.0, 0.0);
    EXPECT_EQ(zoomedIn(justInside), justInside - 0.1);
}

TEST(ParallelProjection, ZoomAddsInTheBandAndTakesTheSignOutside)
{
    EXPECT_EQ(zoomed(1.0, 0.25), 1.25);
    EXPECT_EQ(zoomed(1.0, -0.25), 0.75);
    EXPECT_EQ(zoomed(1.0, 100.0), 101.0);
    EXPECT_EQ(zoomed(5.0, 0.001), 10.0);
    EXPECT_EQ(zoomed(5.0, -100.0), 2.5);
    EXPECT_EQ(zoomed(5.0, 0.0), 2.5); // not positive
    EXPECT_EQ(zoomed(0.1, 7.0), 0.2);
}

TEST(ParallelProjection, StaysWithinTheRangeOfSinglePrecision)
{
    EXPECT_EQ(zoomedOut(largestFloat), 2.0 * largestFloat);
    EXPECT_EQ(zoomedOut(2.0 * largestFloat), 2.0 * largestFloat);
    EXPECT_EQ(zoomed(largestFloat, 1.0), 2.0 * largestFloat);
    EXPECT_EQ(zoomed(2.0 * largestFloat, 1.0), 2.0 * largestFloat);
    EXPECT_EQ(zoomed(2.0 * largestFloat, -1.0), 2.0 * largestFloat);
    EXPECT_EQ(zoomedIn(2.0 * largestFloat), largestFloat);
    EXPECT_EQ(zoomedIn(smallestFloat), 0.5 * smallestFloat);
    EXPECT_EQ(zoomedIn(0.5 * smallestFloat), 0.5 * smallestFloat);
    EXPECT_EQ(zoomedOut(0.5 * smallestFloat), smallestFloat);
}

void expectMatrix(const glm::dmat4& m, const double (&expected)[4][4])
{
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 4; ++row)
            EXPECT_DOUBLE_EQ(m[column][row], expected[column][row]);
    }
}

TEST(ParallelProjection, MatrixFollowsItsFormula)
{
    const double zFar = 400.0;
    const double zNear = 3.0;
    // 1280 x 720 pixels of 0.5 units: the box is 640 x 360 units, its halves 320 and 180.
    const double expected[4][4] = {{1.0 / 320.0, 0.0, 0.0, 0.0},
                                   {0.0, 1.0 / 180.0, 0.0, 0.0},
                                   {0.0, 0.0, -2.0 / 397.0, 0.0},
                                   {0.0, 0.0, -403.0 / 397.0, 1.0}};
    expectMatrix(parallelOf(0.5).calcProjectionMatrix(QSizeF(1280.0, 720.0), zFar, zNear), expected);
}

TEST(ParallelProjection, NearPlaneMayLieInTheEye)
{
    const glm::dmat4 m = ParallelProjection().calcProjectionMatrix(QSizeF(100.0, 100.0), 1000.0, 0.0);
    EXPECT_DOUBLE_EQ(m[2][2], -2.0 / 1000.0);
    EXPECT_DOUBLE_EQ(m[3][2], -1.0);
}

TEST(ParallelProjection, StoresTheRatioOnly)
{
    RecordingArchive archive;
    parallelOf(0.75).serialize(archive);
    EXPECT_EQ(archive.steps, (std::vector<std::string>{"begin", "double", "end 1", "finish"}));
    EXPECT_EQ(archive.doubles, (std::vector<double>{0.75}));
}

TEST(ParallelProjection, ComesBackFromAnArchiveAndNotFromATruncatedOne)
{
    CQtArchive storing;
    parallelOf(0.75).serialize(storing);
    const QByteArray bytes = storing.data();

    ParallelProjection other = parallelOf(8.0);
    for (int size = 0; size < bytes.size(); ++size) {
        EXPECT_THROW(
            {
                CQtArchive archive(bytes.left(size));
                other.serialize(archive);
            },
            ksp::CFileException);
        EXPECT_EQ(other.getZoom(), 8.0);
    }
    CQtArchive archive(bytes);
    other.serialize(archive);
    EXPECT_EQ(other.getZoom(), 0.75);
}

TEST(ParallelProjection, ClonesCopiesAndMoves)
{
    const ParallelProjection projection = parallelOf(3.0);
    const std::unique_ptr<IProjection> clone = projection.clone();
    EXPECT_EQ(clone->getType(), IProjection::Parallel);
    clone->zoomOut();
    EXPECT_EQ(clone->getZoom(), 6.0);
    EXPECT_EQ(projection.getZoom(), 3.0);

    ParallelProjection copy;
    copy = projection;
    const ParallelProjection moved(std::move(copy));
    EXPECT_EQ(moved.getZoom(), 3.0);
}

} // namespace
