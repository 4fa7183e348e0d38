#include <viewer/DepthPreview.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr float nothing = std::numeric_limits<float>::quiet_NaN();

QImage previewOf(const QSize& size, const std::vector<float>& values)
{
    DepthPreview preview(size);
    for (int row = 0; row < size.height(); ++row)
        preview.add(values.data() + row * size.width(), 1);
    return preview.image();
}

} // namespace

TEST(DepthPreview, NearIsWhiteFarIsDarkAndHalfwayIsBetween)
{
    const QImage image = previewOf(QSize(3, 1), {10.0f, 20.0f, 30.0f});
    EXPECT_EQ(image.pixel(0, 0), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(1, 0), qRgb(148, 148, 148)); // halfway from 255 to 40, rounded
    EXPECT_EQ(image.pixel(2, 0), qRgb(40, 40, 40));
}

TEST(DepthPreview, NothingIsTransparent)
{
    const QImage image = previewOf(QSize(2, 2), {nothing, 5.0f, 7.0f, nothing});
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
    EXPECT_EQ(image.pixel(1, 0), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(0, 1), qRgb(40, 40, 40));
    EXPECT_EQ(qAlpha(image.pixel(1, 1)), 0);
}

TEST(DepthPreview, OneDistanceIsWhite)
{
    EXPECT_EQ(previewOf(QSize(2, 1), {5.0f, 5.0f}).pixel(1, 0), qRgb(255, 255, 255));
}

TEST(DepthPreview, MapOfNothingIsTransparentThroughout)
{
    const QImage image = previewOf(QSize(2, 1), {nothing, nothing});
    EXPECT_EQ(image.size(), QSize(2, 1));
    EXPECT_EQ(image.pixel(0, 0), qRgba(0, 0, 0, 0));
    EXPECT_EQ(image.pixel(1, 0), qRgba(0, 0, 0, 0));
}

TEST(DepthPreview, NegativeDistancesAreNearest)
{
    const QImage image = previewOf(QSize(2, 1), {5.0f, -5.0f});
    EXPECT_EQ(image.pixel(0, 0), qRgb(40, 40, 40));
    EXPECT_EQ(image.pixel(1, 0), qRgb(255, 255, 255));
}

// 5000 pixels become 1667, of three pixels each, the last one of two.
TEST(DepthPreview, LargeMapsAreReducedToTheNearestOfTheirSquares)
{
    const QSize size(5000, 4);
    std::vector<float> values(5000 * 4, 3.0f);
    values[5000 + 4] = 1.0f;        // the second square of the first row of squares
    values[3 * 5000 + 4999] = 2.0f; // the last square of the second row
    values[0] = nothing;
    const QImage image = previewOf(size, values);
    EXPECT_EQ(image.size(), QSize(1667, 2));
    EXPECT_EQ(image.pixel(0, 0), qRgb(40, 40, 40));
    EXPECT_EQ(image.pixel(1, 0), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(1666, 1), qRgb(148, 148, 148));
    EXPECT_EQ(image.pixel(1666, 0), qRgb(40, 40, 40));
}
