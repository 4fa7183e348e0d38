#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <optional>

namespace {

const double pi = std::acos(-1.0);
const glm::vec4 orange(1.0f, 0.6f, 0.0f, 1.0f);
const QColor orangeColor(255, 153, 0);

using Point = glm::dvec2;

Point toPixels(const glm::dvec4& clip)
{
    return {(clip.x / clip.w + 1.0) * 32.0, (1.0 - clip.y / clip.w) * 32.0};
}

/// The six corners of a wide line's hexagon, in order round it, from its ends in pixels.
std::vector<Point> hexagon(const Point& from, const Point& to, double width)
{
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const Point along = length < 1.0 ? Point(0, 1) : (to - from) / length;
    const Point across(along.y, -along.x);
    const double half = width / 2.0;
    return {from - half * along, from + half * across, to + half * across,
            to + half * along,   to - half * across,   from - half * across};
}

/// The distance of a point from the nearest edge of a convex polygon, positive inside.
double depthInside(const std::vector<Point>& polygon, const Point& p)
{
    double area = 0.0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point& a = polygon[i];
        const Point& b = polygon[(i + 1) % polygon.size()];
        area += a.x * b.y - b.x * a.y;
    }
    double least = 1e9;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point& a = polygon[i];
        const Point edge = polygon[(i + 1) % polygon.size()] - a;
        const double length = std::hypot(edge.x, edge.y);
        if (length < 1e-9) continue;
        const double distance = (edge.x * (p.y - a.y) - edge.y * (p.x - a.x)) / length;
        least = std::min(least, area > 0 ? distance : -distance);
    }
    return least;
}

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
        const double grid = 1.0 / 64.0;
        int inside = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                double depth = -1e9;
                for (const std::vector<Point>& polygon : polygons)
                    depth = std::max(depth, depthInside(polygon, Point(x + 0.5, y + 0.5)));
                inside += depth > grid;
                if (std::abs(depth) > grid) {
                    ASSERT_EQ(pixel(x, y) == orangeColor, depth > 0) << x << ", " << y << " depth " << depth;
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

class DashedLineDrawingTest : public ShaderDrawing
{
protected:
    void prepare() override
    {
        use("DashedLines");
        setColors(orange);
        set("u_resolution", glm::vec2(Size, Size));
        gl->glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
    }
    void setDashes(float dash, float gap)
    {
        set("u_dashSize", dash);
        set("u_gapSize", gap);
    }
    /// Draws a strip of points given in pixels.
    void drawPixels(const std::vector<Point>& points)
    {
        std::vector<float> values;
        for (const Point& p : points)
            for (const double value : {p.x / 32.0 - 1.0, 1.0 - p.y / 32.0, 0.0})
                values.push_back(float(value));
        attribute(0, 3, values);
        draw(GL_LINE_STRIP, static_cast<int>(points.size()));
    }
    /// Checks every column (or row, for a steep line) against the pattern from the line's start; pixels whose
    /// centre is within half a pixel of an end of a dash may be either. Returns the number of dashes that
    /// begin.
    int expectDashes(const Point& from, const Point& to, double dash, double gap)
    {
        const double length = std::hypot(to.x - from.x, to.y - from.y);
        const bool steep = std::abs(to.y - from.y) > std::abs(to.x - from.x);
        const double share = (steep ? to.y - from.y : to.x - from.x) / length;
        int dashes = 0;
        bool before = false;
        for (double step = 1.0; step < std::abs(share) * length - 1.0; step += 1.0) {
            // the pixel at this step along the major axis, and its distance from the start
            const double major = (steep ? from.y : from.x) + (share > 0 ? step : -step);
            const double centre = std::floor(major) + 0.5;
            const double distance = (centre - (steep ? from.y : from.x)) / share;
            const Point on = from + (to - from) * (distance / length);
            if (on.x < 2.0 || on.x > Size - 2.0 || on.y < 2.0 || on.y > Size - 2.0) continue;
            bool drawn = false;
            for (int shift = -1; shift <= 1; ++shift) {
                const int x = static_cast<int>(std::floor(on.x)) + (steep ? shift : 0);
                const int y = static_cast<int>(std::floor(on.y)) + (steep ? 0 : shift);
                drawn = drawn || pixel(x, y) == orangeColor;
            }
            const double place = std::fmod(distance, dash + gap);
            const double toBorder =
                std::min({std::abs(place), std::abs(place - dash), std::abs(dash + gap - place)});
            if (toBorder > 0.5) {
                EXPECT_EQ(drawn, place < dash) << "at " << distance << " of " << length;
            }
            dashes += drawn && !before;
            before = drawn;
        }
        return dashes;
    }
};

TEST_F(DashedLineDrawingTest, HorizontalRunsHaveTheirLengths)
{
    setDashes(10.0f, 6.0f);
    drawPixels({{0.0, 20.5}, {64.0, 20.5}});
    QString runs;
    for (int x = 0; x < Size; ++x)
        runs += QLatin1Char(pixel(x, 20) == orangeColor ? '#' : '.');
    EXPECT_EQ(runs.toStdString(), "##########......##########......##########......##########......");
}

TEST_F(DashedLineDrawingTest, DashesStartAtTheFirstVertex)
{
    setDashes(10.0f, 6.0f);
    drawPixels({{64.0, 20.5}, {0.0, 20.5}});
    QString runs;
    for (int x = Size - 1; x >= 0; --x)
        runs += QLatin1Char(pixel(x, 20) == orangeColor ? '#' : '.');
    EXPECT_EQ(runs.toStdString(), "##########......##########......##########......##########......");
}

TEST_F(DashedLineDrawingTest, LengthsAreTheSameInEveryDirection)
{
    setDashes(7.0f, 5.0f);
    for (int i = 0; i < 16; ++i) {
        const double angle = 2.0 * pi * i / 16.0;
        const Point from(32.5, 32.5);
        const Point to = from + 30.0 * Point(std::cos(angle), std::sin(angle));
        drawPixels({from, to});
        EXPECT_EQ(expectDashes(from, to, 7.0, 5.0), 3) << i;
    }
}

TEST_F(DashedLineDrawingTest, DiagonalRunsAreShorterInColumns)
{
    setDashes(10.0f, 10.0f);
    drawPixels({{0.5, 0.5}, {63.5, 63.5}});
    EXPECT_EQ(expectDashes({0.5, 0.5}, {63.5, 63.5}, 10.0, 10.0),
              5); // 89.1 pixels: starts at 0, 20, 40, 60, 80
}

TEST_F(DashedLineDrawingTest, EachSegmentBeginsAnew)
{
    setDashes(10.0f, 6.0f);
    drawPixels({{0.0, 20.5}, {23.0, 20.5}, {64.0, 20.5}});
    QString runs;
    for (int x = 0; x < Size; ++x)
        runs += QLatin1Char(pixel(x, 20) == orangeColor ? '#' : '.');
    EXPECT_EQ(runs.toStdString(), "##########......#######" // 23 pixels
                                  "##########......##########......#########");
}

TEST_F(DashedLineDrawingTest, DashesBelowOnePixelAreASolidLine)
{
    for (const float dash : {0.0f, 0.99f}) {
        setDashes(dash, 10.0f);
        drawPixels({{0.0, 20.5}, {64.0, 20.5}});
        EXPECT_EQ(touchedCount(), 64) << dash;
    }
    setDashes(1.0f, 3.0f);
    drawPixels({{0.0, 20.5}, {64.0, 20.5}});
    EXPECT_EQ(touchedCount(), 16);
}

TEST_F(DashedLineDrawingTest, LinesAreSolidUnlessTold)
{
    drawPixels({{0.0, 20.5}, {64.0, 20.5}});
    EXPECT_EQ(touchedCount(), 64);
}

TEST_F(DashedLineDrawingTest, GapsAreSelectedToo)
{
    setDashes(10.0f, 6.0f);
    set("draw_mode", 1);
    drawPixels({{0.0, 20.5}, {64.0, 20.5}});
    EXPECT_EQ(touchedCount(), 64);
}

TEST_F(DashedLineDrawingTest, DashesAreEvenOnScreenWhereTheLineRunsIntoTheDistance)
{
    const glm::mat4 projection = glm::perspective(glm::radians(70.0f), 1.0f, 1.0f, 50.0f);
    set("projection", projection);
    setDashes(8.0f, 4.0f);
    const glm::vec3 from(-1.2f, -0.9f, -1.5f);
    const glm::vec3 to(12.0f, 10.0f, -22.0f);
    line(from, to);
    draw(GL_LINES, 2);
    const Point start = toPixels(glm::dmat4(projection) * glm::dvec4(from, 1.0));
    const Point end = toPixels(glm::dmat4(projection) * glm::dvec4(to, 1.0));
    EXPECT_GE(expectDashes(start, end, 8.0, 4.0), 3);
}

TEST_F(DashedLineDrawingTest, DashesAreEvenWhereTheEndLiesBehindTheCamera)
{
    const glm::mat4 projection = glm::perspective(glm::radians(70.0f), 1.0f, 1.0f, 50.0f);
    set("projection", projection);
    setDashes(8.0f, 4.0f);
    const glm::dvec3 from(-7.0, -6.0, -12.0);
    const glm::dvec3 to(4.0, 4.0, 3.0);
    line(glm::vec3(from), glm::vec3(to));
    draw(GL_LINES, 2);
    const glm::dvec3 cut = from + (to - from) * ((-1.0 - from.z) / (to.z - from.z));
    const Point start = toPixels(glm::dmat4(projection) * glm::dvec4(from, 1.0));
    const Point end = toPixels(glm::dmat4(projection) * glm::dvec4(cut, 1.0));
    EXPECT_GE(expectDashes(start, end, 8.0, 4.0), 4);
}

TEST_F(DashedLineDrawingTest, DashesBeginAtTheNearPlaneWhereTheStartLiesBehindIt)
{
    const glm::mat4 projection = glm::perspective(glm::radians(70.0f), 1.0f, 1.0f, 50.0f);
    set("projection", projection);
    setDashes(8.0f, 4.0f);
    const glm::dvec3 to(-7.0, -6.0, -12.0);
    const Point end = toPixels(glm::dmat4(projection) * glm::dvec4(to, 1.0));
    // behind the camera, in the plane of the eye, and between the eye and the near plane
    for (const glm::dvec3& from :
         {glm::dvec3(2.5, 2.0, 3.0), glm::dvec3(1.0, 1.0, 0.0), glm::dvec3(0.3, 0.2, -0.4)}) {
        const glm::dvec3 cut = from + (to - from) * ((-1.0 - from.z) / (to.z - from.z));
        line(glm::vec3(from), glm::vec3(to));
        draw(GL_LINES, 2);
        const Point start = toPixels(glm::dmat4(projection) * glm::dvec4(cut, 1.0));
        EXPECT_GE(expectDashes(start, end, 8.0, 4.0), 2) << from.z;
    }
}

TEST_F(DashedLineDrawingTest, SegmentBehindTheCameraShowsNothing)
{
    set("projection", glm::perspective(glm::radians(70.0f), 1.0f, 1.0f, 50.0f));
    setDashes(8.0f, 4.0f);
    line({-1, 0, 1}, {1, 0, 4});
    draw(GL_LINES, 2);
    EXPECT_EQ(touchedCount(), 0);
}

// What lies in one place is at one depth, whichever program drew it, to the last bit.
TEST_F(DashedLineDrawingTest, DepthsAreThoseOfPlainLines)
{
    const glm::mat4 model =
        glm::rotate(glm::scale(glm::mat4(1.0f), glm::vec3(0.3f)), 0.7f, glm::vec3(1, 2, 3));
    const glm::mat4 view =
        glm::lookAt(glm::vec3(1.1f, -2.3f, 0.7f), glm::vec3(0.1f, 0, 0), glm::vec3(0, 0, 1));
    const glm::mat4 projection = glm::perspective(0.9f, 1.0f, 0.1f, 37.0f);
    std::vector<float> first;
    for (const char* name : {"Mono", "DashedLines"}) {
        use(name);
        setColors(orange);
        set("model", model);
        set("view", view);
        set("projection", projection);
        attribute(0, 3, {-1.3f, -0.7f, 0.9f, 1.1f, 0.9f, -0.3f, 0.2f, -1.7f, 0.6f, -0.4f, 1.9f, -1.1f});
        draw(GL_LINES, 4);
        EXPECT_GT(touchedCount(), 20);
        if (first.empty())
            first = depths;
        else
            EXPECT_EQ(depths, first);
    }
}

} // namespace
