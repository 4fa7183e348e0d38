#include <viewer/OrthoFrame.h>
#include <viewer/WorldFile.h>

#include <gtest/gtest.h>

namespace {

const gmx::BoundingBox town({611840.2, 5070880.1, 305.0}, {612159.9, 5071119.7, 391.0});

QList<double> numbersOf(const QByteArray& lines)
{
    QList<double> numbers;
    for (const QByteArray& line : lines.split('\n'))
        if (!line.isEmpty()) numbers.append(line.toDouble());
    return numbers;
}

} // namespace

TEST(OrthoFrame, HoldsTheBoxOnMultiplesOfThePixel)
{
    const OrthoFrame frame = OrthoFrame::of(town, 0.5, {});
    EXPECT_EQ(frame.left, 611840.0);
    EXPECT_EQ(frame.top, 5071120.0);
    EXPECT_EQ(frame.size, QSize(640, 480)); // to 612160 and 5070880
}

// What stands on the border, such as a point, is not cut off.
TEST(OrthoFrame, AddsAPixelWhereTheBoxEndsOnOne)
{
    const OrthoFrame frame = OrthoFrame::of(gmx::BoundingBox({10, 20, 0}, {14, 26, 1}), 2.0, {});
    EXPECT_EQ(frame.left, 8.0);
    EXPECT_EQ(frame.top, 28.0);
    EXPECT_EQ(frame.size, QSize(4, 5));
}

TEST(OrthoFrame, BoxWithoutExtentsHasAtLeastOnePixel)
{
    const OrthoFrame frame = OrthoFrame::of(gmx::BoundingBox({3.3, 4.4, 5}, {3.3, 4.4, 5}), 1.0, {});
    EXPECT_EQ(frame.size, QSize(1, 1));
    EXPECT_EQ(frame.left, 3.0);
    EXPECT_EQ(frame.top, 5.0);
}

TEST(OrthoFrame, SizeIsKeptAboutTheMiddle)
{
    const OrthoFrame frame =
        OrthoFrame::of(gmx::BoundingBox({100, 200, 0}, {110, 220, 1}), 0.5, QSize(40, 8));
    EXPECT_EQ(frame.size, QSize(40, 8));
    EXPECT_EQ(frame.left, 105.0 - 10.0);
    EXPECT_EQ(frame.top, 210.0 + 2.0);
}

TEST(OrthoFrame, SideBeyondAllBoundsStaysANumber)
{
    const OrthoFrame frame = OrthoFrame::of(town, 1e-9, {});
    EXPECT_EQ(frame.size.width(), std::numeric_limits<int>::max());
}

TEST(OrthoFrame, ViewpointShowsTheRectangle)
{
    const OrthoFrame frame = OrthoFrame::of(town, 0.25, {});
    const Viewpoint viewpoint = frame.viewpoint(town);
    const glm::dmat4 view =
        viewpoint.projectionMatrix(town, frame.size, 1.0) * viewpoint.camera().getViewMatrix();
    for (const double z : {305.0, 391.0}) { // straight down: heights lie upon each other
        const glm::dvec4 corner = view * glm::dvec4(frame.left, frame.top, z, 1.0);
        EXPECT_NEAR(corner.x, -1.0, 1e-9);
        EXPECT_NEAR(corner.y, 1.0, 1e-9);
        EXPECT_LT(std::abs(corner.z), 1.0);
        const glm::dvec4 other = view * glm::dvec4(frame.left + frame.size.width() * 0.25,
                                                   frame.top - frame.size.height() * 0.25, z, 1.0);
        EXPECT_NEAR(other.x, 1.0, 1e-9);
        EXPECT_NEAR(other.y, -1.0, 1e-9);
    }
}

TEST(WorldFile, HasItsNameFromThePicture)
{
    EXPECT_EQ(WorldFile::pathFor("a/plan.png"), "a/plan.pgw");
    EXPECT_EQ(WorldFile::pathFor("plan.x.PNG"), "plan.x.PGW");
    EXPECT_EQ(WorldFile::pathFor("a.b/plan.tif"), "a.b/plan.tfw");
    EXPECT_EQ(WorldFile::pathFor("plan.tiff"), "plan.tfw");
}

TEST(WorldFile, HasSixLinesThatReadBackExactly)
{
    EXPECT_EQ(WorldFile::content(0.5, 2700000.0, 1200000.0), "0.5\n0\n0\n-0.5\n2700000.25\n1199999.75\n");
    const double pixel = 1.0 / 3.0, left = 2.7e6 + 0.1, top = 1.2e6 + 0.7;
    EXPECT_EQ(numbersOf(WorldFile::content(pixel, left, top)),
              QList<double>({pixel, 0.0, 0.0, -pixel, left + pixel / 2.0, top - pixel / 2.0}));
    EXPECT_FALSE(WorldFile::content(1e-7, 1e12, -1e12).contains('e')); // which some readers do not know
}
