#include "LineReference.h"
#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>

namespace {

using namespace line_reference;

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
    /// The pixels that the last picture shows.
    std::vector<Point> drawnCentres() const
    {
        std::vector<Point> centres;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                if (pixel(x, y) == orangeColor) centres.emplace_back(x + 0.5, y + 0.5);
        return centres;
    }
    /// Draws solid and then dashed, and compares each pixel of the line with the pattern along its segments,
    /// given in pixels. How far a pixel that is on the wrong side lies from the border of its dash is taken
    /// down; a line's pixels are up to half a pixel beside it. Pixels next to the segments' ends are left
    /// out.
    void comparePattern(const std::vector<Point>& path, float dash, float gap,
                        const std::function<void()>& drawLine)
    {
        setDashes(0.0f, 0.0f);
        drawLine();
        const std::vector<Point> line = drawnCentres();
        setDashes(dash, gap);
        drawLine();
        std::size_t dashed = drawnCentres().size();
        const double period = double(dash) + double(gap);
        for (const Point& p : line) {
            const bool isDrawn = pixel(int(p.x), int(p.y)) == orangeColor;
            dashed -= isDrawn;
            for (std::size_t i = 0; i + 1 < path.size(); ++i) {
                const double length = glm::length(path[i + 1] - path[i]);
                const Point along = (path[i + 1] - path[i]) / length;
                const double distance = glm::dot(p - path[i], along);
                if (distance < 1.0 || distance > length - 1.0) continue;
                const double place = std::fmod(distance, period);
                ++compared;
                if (isDrawn == (place <= double(dash))) continue;
                worst = std::max(worst, std::min({place, std::fabs(place - double(dash)), period - place}));
            }
        }
        EXPECT_EQ(dashed, 0u) << "a dash outside the line";
    }
    void report(const char* what, std::size_t lines)
    {
        std::printf(
            "%s: %zu lines, %zu pixels, dashes begin and end at most %.2g pixels off, tolerance %.2g\n", what,
            lines, compared, worst, Tolerance);
        EXPECT_GT(compared, 10 * lines);
        EXPECT_LE(worst, Tolerance);
    }
    double number(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }

    static constexpr double Tolerance = 0.51;
    std::size_t compared = 0;
    double worst = 0.0;
    std::mt19937 random{17};
};

TEST_F(DashedLineDrawingTest, RandomLinesFollowThePattern)
{
    for (int run = 0; run < 150; ++run) {
        Point from;
        Point to;
        do {
            from = {number(-30, 94), number(-30, 94)};
            to = {number(2, 62), number(2, 62)};
        } while (glm::length(to - from) < 25.0);
        comparePattern({from, to}, float(number(1.0, 15.0)), float(number(1.0, 15.0)), [&] {
            drawPixels({from, to});
        });
    }
    report("dashes, random lines", 150);
}

TEST_F(DashedLineDrawingTest, RandomStripsBeginAnewAtEachPoint)
{
    for (int run = 0; run < 60; ++run) {
        // the segments share no column, so that each pixel belongs to one
        std::vector<Point> path;
        for (const double column : {1.0, 15.0, 38.0, 63.0})
            path.emplace_back(column + number(-0.9, 0.9), number(2, 62));
        if (run % 2 == 1) std::reverse(path.begin(), path.end());
        const auto columns = [&](const Point& p, std::size_t i) {
            return p.x > std::min(path[i].x, path[i + 1].x) && p.x < std::max(path[i].x, path[i + 1].x);
        };
        const float dash = float(number(2.0, 8.0));
        const float gap = float(number(2.0, 8.0));
        for (std::size_t i = 0; i + 1 < path.size(); ++i) {
            drawPixels(path);
            const std::size_t before = compared;
            comparePattern({path[i], path[i + 1]}, dash, gap, [&] {
                drawPixels(path);
                // what belongs to the other segments is taken out of the picture
                for (int y = 0; y < Size; ++y)
                    for (int x = 0; x < Size; ++x)
                        if (!columns({x + 0.5, y + 0.5}, i)) images[0].setPixelColor(x, y, Qt::black);
            });
            EXPECT_GT(compared, before);
        }
    }
    report("dashes, strips of three segments", 180);
}

TEST_F(DashedLineDrawingTest, RandomLinesInSpaceFollowThePatternOnScreen)
{
    const glm::mat4 projection = glm::perspective(glm::radians(70.0f), 1.0f, 1.0f, 50.0f);
    set("projection", projection);
    std::size_t lines = 0;
    int behind = 0;
    int justBefore = 0;
    while (lines < 150) {
        const glm::dvec3 to = glm::vec3(number(-8, 8), number(-8, 8), number(-12, 4));
        glm::dvec3 from = glm::vec3(number(-8, 8), number(-8, 8), number(-12, 4));
        if (lines % 2 == 0) { // through a place of the near plane that is in view
            const glm::dvec3 place(number(-0.6, 0.6), number(-0.6, 0.6), -1.0);
            from = glm::vec3(place + (place - to) * number(0.05, 0.5));
        }
        if (lines % 6 == 1) // just in sight
            from = glm::vec3(number(-0.8, 0.8), number(-0.8, 0.8), number(-1.04, -1.01));
        if ((from.z > -1.1 && to.z > -1.1) || std::fabs(from.z + 1.0) < 0.005 || std::fabs(to.z + 1.0) < 0.1)
            continue;
        const auto onScreen = [&](const glm::dvec3& end, const glm::dvec3& other) {
            const glm::dvec3 cut =
                end.z <= -1.0 ? end : end + (other - end) * ((-1.0 - end.z) / (other.z - end.z));
            return toPixels(glm::dmat4(projection) * glm::dvec4(cut, 1.0));
        };
        const Point start = onScreen(from, to);
        const Point end = onScreen(to, from);
        const Point middle = (start + end) / 2.0;
        if (glm::length(end - start) < 30.0 || middle.x < 10.0 || middle.x > 54.0 || middle.y < 10.0 ||
            middle.y > 54.0)
            continue;
        ++lines;
        behind += from.z > -1.0;
        justBefore += from.z > -1.04 && from.z < -1.0;
        line(glm::vec3(from), glm::vec3(to));
        comparePattern({start, end}, float(number(2.0, 10.0)), float(number(2.0, 10.0)),
                       [this] { draw(GL_LINES, 2); });
    }
    EXPECT_GT(behind, 20) << "begin behind the near plane";
    EXPECT_GT(justBefore, 10) << "begin just before it";
    report("dashes, random lines in space", lines);
}

TEST_F(DashedLineDrawingTest, DistancesAreCountedInPixelsOfTheResolution)
{
    // a picture twice as wide and half as high as it is told
    set("u_resolution", glm::vec2(2 * Size, Size / 2));
    setDashes(10.0f, 6.0f);
    drawPixels({{0.0, 20.5}, {64.0, 20.5}});
    EXPECT_EQ(touchedCount(), 40);
    for (int x = 0; x < Size; ++x)
        EXPECT_EQ(pixel(x, 20) == orangeColor, x % 8 < 5) << x;
    drawPixels({{20.5, 0.0}, {20.5, 64.0}});
    for (int y = 0; y < Size; ++y)
        EXPECT_EQ(pixel(20, y) == orangeColor, y % 32 < 20) << y;
}

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
