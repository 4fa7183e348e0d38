#include "LineReference.h"
#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace {

using namespace line_reference;

class WideLineDrawingTest : public ShaderDrawing
{
protected:
    void prepare() override
    {
        use("WideLines");
        setColors(orange);
    }
    /// Checks that exactly the pixels with their centre in one of the convex polygons are drawn; those within
    /// the sub-pixel grid of an edge may be either.
    void expectPolygons(const std::vector<std::vector<Point>>& polygons)
    {
        int inside = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                double depth = -1e9;
                for (const std::vector<Point>& polygon : polygons)
                    depth = std::max(depth, depthInside(polygon, Point(x + 0.5, y + 0.5)));
                inside += depth > Grid;
                if (std::abs(depth) > Grid) {
                    ++compared;
                    differing += (pixel(x, y) == orangeColor) != (depth > 0);
                    EXPECT_EQ(pixel(x, y) == orangeColor, depth > 0) << x << ", " << y << " depth " << depth;
                }
            }
        EXPECT_GT(inside, 0);
    }
    void expectPolygon(const std::vector<Point>& polygon) { expectPolygons({polygon}); }
    void drawPixels(const Point& from, const Point& to)
    {
        const auto ndc = [](const Point& p) { return glm::vec3(p.x / 32.0 - 1.0, 1.0 - p.y / 32.0, 0.0); };
        line(ndc(from), ndc(to));
        draw(GL_LINES, 2);
    }
    static bool isInView(const Point& p) { return p.x > 0.0 && p.x < Size && p.y > 0.0 && p.y < Size; }
    double number(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }

    static constexpr double Grid = 1.0 / 64.0; ///< of sub-pixels, to which corners are rounded, as a pixel
    std::size_t compared = 0;                  ///< pixels
    std::size_t differing = 0;
    std::mt19937 random{3};
};

TEST_F(WideLineDrawingTest, HexagonOfThePensWidthInEveryDirection)
{
    for (const double width : {1.0, 3.0, 8.0, 15.0}) {
        set("pen_width", float(width));
        for (int i = 0; i < 24; ++i) {
            const double angle = 2.0 * pi * i / 24.0 + 0.01;
            const Point centre(31.7, 32.4);
            const Point arm(18.0 * std::cos(angle), 18.0 * std::sin(angle));
            drawPixels(centre - arm, centre + arm);
            expectPolygon(hexagon(centre - arm, centre + arm, width));
        }
    }
}

TEST_F(WideLineDrawingTest, RandomSegmentsCoverTheirHexagons)
{
    for (int run = 0; run < 200; ++run) {
        const double width = number(1.5, 30.0);
        set("pen_width", float(width));
        Point from;
        Point to;
        do {
            from = {number(-20, 84), number(-20, 84)};
            to = {number(-20, 84), number(-20, 84)};
        } while (glm::length(to - from) < 2.0 || !isInView((from + to) / 2.0));
        drawPixels(from, to);
        expectPolygon(hexagon(from, to, width));
    }
    std::printf(
        "wide lines on screen: 200 segments, %zu pixels, %zu differ; those within %.3g of an edge left out\n",
        compared, differing, Grid);
}

TEST_F(WideLineDrawingTest, HorizontalLineOfEightPixelsIsEightPixelsHigh)
{
    set("pen_width", 8.0f);
    drawPixels({10, 32}, {54, 32});
    int rows = 0;
    for (int y = 0; y < Size; ++y)
        rows += pixel(32, y) == orangeColor;
    EXPECT_EQ(rows, 8);
    EXPECT_EQ(pixel(32, 28), orangeColor);
    EXPECT_EQ(pixel(32, 35), orangeColor);
}

TEST_F(WideLineDrawingTest, LineWithoutLengthIsAnUprightStub)
{
    set("pen_width", 12.0f);
    drawPixels({30.2, 33.1}, {30.2, 33.1});
    expectPolygon(hexagon({30.2, 33.1}, {30.2, 33.1}, 12.0));
}

TEST_F(WideLineDrawingTest, LineShorterThanAPixelIsUprightTooWithItsTipsAtItsEnds)
{
    set("pen_width", 40.0f);
    const Point p0(30.2, 33.1);
    const Point p1(30.8, 32.4);
    drawPixels(p0, p1);
    const Point side(20, 0);
    const Point tip(0, 20);
    expectPolygons({{p0 - tip, p0 - side, p0 + side},
                    {p0 - side, p0 + side, p1 - side},
                    {p0 + side, p0 - side, p1 + side},
                    {p0 - side, p1 - side, p1 + side},
                    {p1 - side, p1 + side, p1 + tip}});

    const Point further(31.1, 32.2); // 1.27 pixels away
    drawPixels(p0, further);
    expectPolygon(hexagon(p0, further, 40.0));
}

TEST_F(WideLineDrawingTest, LineLeavesTheViewWithoutItsEnds)
{
    set("pen_width", 6.0f);
    drawPixels({-500, -300}, {400, 350});
    expectPolygon(hexagon({-500, -300}, {400, 350}, 6.0));
}

TEST_F(WideLineDrawingTest, EndsKeepTheirDepth)
{
    set("pen_width", 6.0f);
    line({-0.5f, 0.015625f, -0.4f}, {0.5f, 0.015625f, 0.8f});
    draw(GL_LINES, 2);
    for (int x = 20; x < 44; ++x) {
        const double share = (x + 0.5 - 16.0) / 32.0;
        EXPECT_NEAR(double(depths[static_cast<std::size_t>(31 * Size + x)]), (1.0 - 0.4 + 1.2 * share) / 2.0,
                    1e-4);
    }
}

class WideLineBehindCameraTest : public WideLineDrawingTest
{
protected:
    static constexpr double Near = 1.0;

    void prepare() override
    {
        WideLineDrawingTest::prepare();
        projection = glm::perspective(glm::radians(70.0f), 1.0f, float(Near), 50.0f);
        set("projection", projection);
        set("pen_width", 5.0f);
    }
    /// Draws a segment given in eye coordinates and checks it against the hexagon of its part before the near
    /// plane, which is cut off in eye coordinates.
    void expectVisiblePart(const glm::dvec3& from, const glm::dvec3& to)
    {
        line(glm::vec3(from), glm::vec3(to));
        draw(GL_LINES, 2);
        const auto cut = [](const glm::dvec3& end, const glm::dvec3& other) {
            if (end.z <= -Near) return end;
            return end + (other - end) * ((-Near - end.z) / (other.z - end.z));
        };
        const glm::dmat4 matrix(projection);
        expectPolygon(hexagon(toPixels(matrix * glm::dvec4(cut(from, to), 1.0)),
                              toPixels(matrix * glm::dvec4(cut(to, from), 1.0)), 5.0));
    }

    glm::mat4 projection;
};

TEST_F(WideLineBehindCameraTest, EndBehindTheCameraIsCutAtTheNearPlane)
{
    expectVisiblePart({1, 1, -20}, {-0.5, -0.4, 3});
    expectVisiblePart({-0.5, -0.4, 3}, {1, 1, -20});
    expectVisiblePart({-6, 4, -10}, {1, -1, 5});
}

TEST_F(WideLineBehindCameraTest, EndBetweenCameraAndNearPlaneIsCut)
{
    expectVisiblePart({2, 1, -10}, {-0.2, 0.1, -0.3});
    expectVisiblePart({-0.2, 0.1, -0.3}, {2, 1, -10});
    expectVisiblePart({-0.2, 0.1, -0.8}, {2, 1, -10});
}

TEST_F(WideLineBehindCameraTest, RandomSegmentsCoverTheirHexagons)
{
    const glm::dmat4 matrix(projection);
    int cut = 0;
    for (int run = 0; run < 200;) {
        const glm::dvec3 from = glm::vec3(number(-6, 6), number(-6, 6), number(-12, -1.1));
        const glm::dvec3 to = glm::vec3(number(-3, 3), number(-3, 3), number(-5, 4));
        const glm::dvec3 end = to.z > -Near ? to + (from - to) * ((-Near - to.z) / (from.z - to.z)) : to;
        const Point a = toPixels(matrix * glm::dvec4(from, 1.0));
        const Point b = toPixels(matrix * glm::dvec4(end, 1.0));
        if (!isInView((a + b) / 2.0) || glm::length(b - a) < 2.0 || std::fabs(to.z) < 0.1) continue;
        expectVisiblePart(from, to);
        cut += to.z > -Near;
        ++run;
    }
    std::printf(
        "wide lines in space: 200 segments, %d of them cut, %zu pixels, %zu differ; those within %.3g of an "
        "edge left out\n",
        cut, compared, differing, Grid);
    EXPECT_GT(cut, 50);
}

TEST_F(WideLineBehindCameraTest, LineInViewIsWhole)
{
    expectVisiblePart({-3, 2, -8}, {4, -1, -12});
}

TEST_F(WideLineBehindCameraTest, LineBehindTheCameraIsNotDrawn)
{
    line({-1, 0, 1}, {1, 0, 4});
    draw(GL_LINES, 2);
    EXPECT_EQ(touchedCount(), 0);
    line({-1, 0, -0.5f}, {1, 0, 4});
    draw(GL_LINES, 2);
    EXPECT_EQ(touchedCount(), 0);
}

TEST_F(WideLineBehindCameraTest, EndInThePlaneOfTheEyeIsReplacedByTheOther)
{
    line({1, 1, -10}, {2, 1, 0});
    draw(GL_LINES, 2);
    const Point end = toPixels(glm::dmat4(projection) * glm::dvec4(1, 1, -10, 1));
    expectPolygon(hexagon(end, end, 5.0));
    line({2, 1, 0}, {1, 1, -10});
    draw(GL_LINES, 2);
    expectPolygon(hexagon(end, end, 5.0));
    line({1, 1, 0}, {2, 1, 0});
    draw(GL_LINES, 2);
    EXPECT_EQ(touchedCount(), 0);
}

} // namespace
