#include <Viewer3dModule/drawers/SelectionMask.h>

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <set>
#include <utility>

namespace {

using Pixels = std::set<std::pair<int, int>>;

Pixels pixelsOf(const SelectionMask& mask)
{
    Pixels pixels;
    for (int y = 0; y < mask.viewport().height(); ++y)
        for (int x = 0; x < mask.viewport().width(); ++x)
            if (mask.contains(x, y)) pixels.emplace(x, y);
    return pixels;
}

Pixels block(int left, int top, int width, int height)
{
    Pixels pixels;
    for (int y = top; y < top + height; ++y)
        for (int x = left; x < left + width; ++x)
            pixels.emplace(x, y);
    return pixels;
}

QPolygonF rectangle(double left, double top, double width, double height)
{
    return QPolygonF({{left, top}, {left + width, top}, {left + width, top + height}, {left, top + height}});
}

const QSize size(40, 30);

TEST(SelectionMaskTest, RectangleOfWholePixelsHasExactlyThese)
{
    EXPECT_EQ(pixelsOf(SelectionMask(rectangle(3, 4, 5, 2), size)), block(3, 4, 5, 2));
    EXPECT_EQ(pixelsOf(SelectionMask(rectangle(0, 0, 40, 30), size)), block(0, 0, 40, 30));
    EXPECT_EQ(pixelsOf(SelectionMask(rectangle(39, 29, 1, 1), size)), block(39, 29, 1, 1));
}

TEST(SelectionMaskTest, PixelsCountByTheirCentres)
{
    EXPECT_EQ(pixelsOf(SelectionMask(rectangle(3.4, 4.4, 1.2, 1.2), size)), block(3, 4, 2, 2));
    EXPECT_EQ(SelectionMask(rectangle(3.6, 4, 0.8, 5), size).pixels(), QRect()) << "between two centres";
}

TEST(SelectionMaskTest, IsCutOffAtTheViewport)
{
    EXPECT_EQ(pixelsOf(SelectionMask(rectangle(-10, -10, 13, 12), size)), block(0, 0, 3, 2));
    EXPECT_EQ(pixelsOf(SelectionMask(rectangle(38, 28, 1e9, 1e9), size)), block(38, 28, 2, 2));
    EXPECT_EQ(SelectionMask(rectangle(40, 0, 5, 5), size).pixels(), QRect());
    EXPECT_EQ(SelectionMask(rectangle(-5, 0, 5, 5), size).pixels(), QRect());
}

// Every border of theirs is tried in 64 places between two pixels' centres, and far away.
TEST(SelectionMaskTest, SimplifiedRectanglesHaveTheSamePixels)
{
    std::mt19937 random(3);
    const auto border = [&random](int from, int to) {
        const double far[] = {-1e12, -1e6, -70000.0, 70000.0, 1e6, 1e12};
        if (random() % 16 == 0) return far[random() % 6];
        return std::uniform_int_distribution<int>(from * 64, to * 64)(random) / 64.0;
    };
    int simpler = 0;
    for (int i = 0; i < 2000; ++i) {
        const double left = border(-5, 40), top = border(-5, 30);
        const double right = border(-5, 45), bottom = border(-5, 35);
        QPolygonF corners({{left, top}, {right, top}, {right, bottom}, {left, bottom}});
        if (random() % 2 == 0) std::swap(corners[1], corners[3]);
        const QPolygonF polygon = SelectionMask::simplified(corners);
        simpler += polygon.size() == 2;
        const SelectionMask painted(corners, size), plain(polygon, size);
        EXPECT_EQ(plain.pixels(), painted.pixels());
        EXPECT_EQ(pixelsOf(plain), pixelsOf(painted)) << left << ' ' << top << ' ' << right << ' ' << bottom;
    }
    EXPECT_GT(simpler, 1500);
}

TEST(SelectionMaskTest, OnlyRectanglesAreSimplified)
{
    for (const QPolygonF& polygon :
         {QPolygonF({{1, 1}, {5, 1}, {5, 4}}), QPolygonF({{1, 1}, {5, 1}, {5, 4}, {1, 3}}),
          QPolygonF({{1, 1}, {5, 4}, {5, 1}, {1, 4}}), rectangle(1.5, 1, 3, 3), rectangle(1, 1, 3, 3.52),
          rectangle(std::numeric_limits<double>::quiet_NaN(), 1, 3, 3)})
        EXPECT_EQ(SelectionMask::simplified(polygon).size(), polygon.size());
    EXPECT_EQ(SelectionMask::simplified(rectangle(1, 2, 3, 4)), QPolygonF(QVector<QPointF>{{1, 2}, {4, 6}}));
}

TEST(SelectionMaskTest, OfTwoPointsIsTheirBoundingRectangle)
{
    const SelectionMask mask(QPolygonF(QVector<QPointF>{{12, 9}, {8, 5}}), size);
    EXPECT_FALSE(mask.hasBits());
    EXPECT_EQ(pixelsOf(mask), block(8, 5, 4, 4));
    EXPECT_TRUE(mask.containsAll(QRect(8, 5, 4, 4)));
    EXPECT_FALSE(mask.containsAll(QRect(8, 5, 5, 4)));
}

TEST(SelectionMaskTest, OfOnePointOrNoneHasNoPixelUnlessItIsACentre)
{
    EXPECT_TRUE(pixelsOf(SelectionMask(QPolygonF(QVector<QPointF>{{12, 9}}), size)).empty());
    EXPECT_EQ(pixelsOf(SelectionMask(QPolygonF(QVector<QPointF>{{12.5, 9.5}}), size)), block(12, 9, 1, 1));
    EXPECT_TRUE(pixelsOf(SelectionMask(QPolygonF(), size)).empty());
}

// A square and a square within it in one outline: the odd-even rule leaves the inner one out.
TEST(SelectionMaskTest, EnclosesByTheOddEvenRule)
{
    QPolygonF ring = rectangle(5, 5, 20, 20);
    ring << QPointF(5, 5);
    ring += rectangle(10, 10, 10, 10);
    ring << QPointF(10, 10);
    const SelectionMask mask(ring, size);
    EXPECT_TRUE(mask.contains(7, 12));
    EXPECT_FALSE(mask.contains(15, 15));
    EXPECT_TRUE(mask.contains(22, 12));
}

TEST(SelectionMaskTest, BitsAreOfTheLowestFirstAndSetInside)
{
    const SelectionMask mask(rectangle(1, 2, 3, 1), size);
    ASSERT_TRUE(mask.hasBits());
    EXPECT_EQ(mask.bits().format(), QImage::Format_MonoLSB);
    EXPECT_EQ(mask.bits().bytesPerLine(), 8);
    EXPECT_EQ(mask.bits().constScanLine(0)[0], 0);
    // Interior 1 to 3, and the outline, which runs on at 4.
    EXPECT_EQ(mask.bits().constScanLine(2)[0], 0b11110);
}

TEST(SelectionMaskTest, InvertedHasTheOtherPixels)
{
    for (const QPolygonF& polygon :
         {rectangle(3, 4, 5, 2), QPolygonF({{3, 3}, {30, 6}, {8, 28}}),
          QPolygonF(QVector<QPointF>{{3, 3}, {30, 6}}), QPolygonF(), rectangle(-1, -1, 60, 60)}) {
        const SelectionMask mask(polygon, size);
        const Pixels inside = pixelsOf(mask);
        Pixels others = block(0, 0, 40, 30);
        for (const auto& pixel : inside)
            others.erase(pixel);
        const SelectionMask inverted = mask.inverted();
        EXPECT_TRUE(inverted.hasBits());
        EXPECT_EQ(inverted.rect(), QRectF(0, 0, 40, 30));
        EXPECT_EQ(pixelsOf(inverted), others);
    }
}

TEST(SelectionMaskTest, TellsWhatRectanglesHold)
{
    const SelectionMask mask(QPolygonF({{2, 2}, {38, 2}, {38, 28}, {20, 14}, {2, 28}}), size);
    const Pixels inside = pixelsOf(mask);
    int all = 0, any = 0, neither = 0;
    for (int left = -4; left < 44; left += 3)
        for (int top = -4; top < 34; top += 3)
            for (const int side : {1, 2, 9, 17}) {
                const QRect rect(left, top, side, side);
                bool hasAll = true, hasAny = false;
                for (const auto& [x, y] : block(left, top, side, side)) {
                    if (x < 0 || y < 0 || x >= 40 || y >= 30) continue;
                    const bool in = inside.count({x, y}) != 0;
                    hasAll = hasAll && in;
                    hasAny = hasAny || in;
                }
                EXPECT_EQ(mask.containsAll(rect), hasAll) << left << ' ' << top << ' ' << side;
                EXPECT_EQ(mask.containsAny(rect), hasAny) << left << ' ' << top << ' ' << side;
                all += hasAll;
                any += hasAny && !hasAll;
                neither += !hasAny;
            }
    EXPECT_GT(all, 50);
    EXPECT_GT(any, 50);
    EXPECT_GT(neither, 50);
}

TEST(SelectionMaskTest, WithACoordinateThatIsNoNumberHasNothing)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double bad : {nan, infinity, -infinity, 1e13}) {
        const SelectionMask mask(QPolygonF({{2, 2}, {bad, 2}, {20, 20}}), size);
        EXPECT_EQ(mask.pixels(), QRect()) << bad;
        EXPECT_EQ(pixelsOf(mask.inverted()).size(), 40u * 30u);
    }
}

TEST(SelectionMaskTest, OfAnEmptyViewportHasNothing)
{
    const SelectionMask mask(rectangle(0, 0, 5, 5), QSize(0, 0));
    EXPECT_TRUE(mask.pixels().isEmpty());
    EXPECT_TRUE(mask.inverted().pixels().isEmpty());
    EXPECT_FALSE(mask.containsAny(QRect(0, 0, 5, 5)));
}

// Corners far away do not bend the edges that cross the viewport: below the diagonal y = x.
TEST(SelectionMaskTest, TakesCornersFarAway)
{
    const SelectionMask mask(QPolygonF({{-1e11, -1e11}, {1e11, 1e11}, {-1e11, 1e11}}), size);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            if (std::abs(x - y) > 1) {
                EXPECT_EQ(mask.contains(x, y), y > x) << x << ' ' << y;
            }
}

} // namespace
