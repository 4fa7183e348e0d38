#include "tests/support/LogTrap.h"

#include <framework/ksp/StagedProgress.h>
#include <framework/surf/CSurface.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Points = std::vector<glm::dvec3>;

/// Adds the points as a contour.
void addContour(surf::CSurface& surface, const Points& points)
{
    std::vector<std::uint32_t> numbers;
    for (const glm::dvec3& p : points)
        numbers.push_back(surface.addVertex(p.x, p.y, p.z));
    surface.addContour(numbers);
}

bool divide(surf::CSurface& surface)
{
    return surface.createTriangulation(false, -1, nullptr) && surface.update();
}

/// The line that dividing the points as one contour leaves in the log; nothing may come of it.
QString faultOf(const Points& points)
{
    surf::CSurface surface(QStringLiteral("plot 7"));
    addContour(surface, points);
    EXPECT_FALSE(divide(surface));
    EXPECT_TRUE(surface.getTriangles().empty());
    const QStringList lines = LogTrap::take();
    EXPECT_EQ(lines.size(), 1);
    return lines.join('\n');
}

double areaOf(const surf::CSurface& surface)
{
    glm::dvec3 sum(0.0);
    for (const surf::Triangle& t : surface.getTriangles())
        sum += glm::cross(surface.getPosition(t[1]) - surface.getPosition(t[0]),
                          surface.getPosition(t[2]) - surface.getPosition(t[0]));
    return 0.5 * glm::dot(sum, surface.getNormal());
}

const Points bow = {{0, 0, 5}, {4, 4, 5}, {4, 0, 5}, {0, 4, 5}};

} // namespace

TEST(CSurface, NumbersVerticesInTheOrderOfAdding)
{
    surf::CSurface surface;
    EXPECT_EQ(surface.addVertex(1, 2, 3), 0u);
    EXPECT_EQ(surface.addVertex(4, 5, 6), 1u);
    EXPECT_EQ(surface.getPosition(1), glm::dvec3(4, 5, 6));
    EXPECT_EQ(surface.getGivenCount(), 2u);
}

TEST(CSurface, TrianglesLeadBackToTheVerticesGiven)
{
    surf::CSurface surface;
    surface.addVertex(100, 100, 100); // in no contour
    addContour(surface, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    ASSERT_TRUE(divide(surface));
    ASSERT_EQ(surface.getTriangles().size(), 1u);
    surf::Triangle triangle = surface.getTriangles()[0];
    std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()), triangle.end());
    EXPECT_EQ(triangle, (surf::Triangle{1, 2, 3}));
    EXPECT_EQ(surface.getVertexCount(), 4u);
}

TEST(CSurface, HolesAndIslandsFollowTheOddEvenRule)
{
    surf::CSurface surface;
    for (const double half : {4.0, 3.0, 1.0}) // each turns the same way
        addContour(surface, {{-half, -half, 0}, {half, -half, 0}, {half, half, 0}, {-half, half, 0}});
    ASSERT_TRUE(divide(surface));
    EXPECT_DOUBLE_EQ(areaOf(surface), 64.0 - 36.0 + 4.0);
}

TEST(CSurface, OrderOfContoursDoesNotMatter)
{
    surf::CSurface surface;
    addContour(surface, {{1, 1, 0}, {2, 1, 0}, {2, 2, 0}, {1, 2, 0}});
    addContour(surface, {{0, 0, 0}, {0, 3, 0}, {3, 3, 0}, {3, 0, 0}});
    ASSERT_TRUE(divide(surface));
    EXPECT_DOUBLE_EQ(areaOf(surface), 8.0);
}

TEST(CSurface, ALastPointThatRepeatsTheFirstDoesNoHarm)
{
    surf::CSurface surface;
    addContour(surface, {{0, 0, 0}, {3, 0, 0}, {3, 3, 0}, {0, 3, 0}, {0, 0, 0}});
    ASSERT_TRUE(divide(surface));
    EXPECT_EQ(surface.getTriangles().size(), 2u);
}

TEST(CSurface, ACrossingIsAVertexOfItsOwn)
{
    surf::CSurface surface;
    addContour(surface, bow);
    ASSERT_TRUE(divide(surface));
    EXPECT_EQ(surface.getGivenCount(), 4u);
    ASSERT_EQ(surface.getVertexCount(), 5u);
    EXPECT_LT(glm::distance(surface.getPosition(4), glm::dvec3(2, 2, 5)), 1e-12);
    EXPECT_EQ(surface.getTriangles().size(), 2u);
    EXPECT_DOUBLE_EQ(std::abs(areaOf(surface)), 8.0);
}

TEST(CSurface, AttributesAtACrossingLieBetweenThoseOfTheEdges)
{
    surf::CSurface surface;
    addContour(surface,
               {{0, 0, 0}, {4, 4, 0}, {4, 0, 0}, {2, 2, 0}, {0, 4, 0}, {0, 2, 0}, {3, 2, 0}, {3, 5, 0}});
    ASSERT_TRUE(divide(surface));
    // texture coordinates that grow with x and y do so at crossings too
    std::vector<glm::vec2> coords;
    for (std::uint32_t i = 0; i < surface.getGivenCount(); ++i)
        coords.emplace_back(surface.getPosition(i).x / 4, surface.getPosition(i).y / 8);
    surf::appendCrossings(surface.getCrossings(), coords);
    ASSERT_EQ(coords.size(), surface.getVertexCount());
    ASSERT_GT(surface.getCrossings().size(), 0u);
    for (std::uint32_t i = 0; i < coords.size(); ++i) {
        EXPECT_NEAR(double(coords[i].x), surface.getPosition(i).x / 4, 1e-6);
        EXPECT_NEAR(double(coords[i].y), surface.getPosition(i).y / 8, 1e-6);
    }
}

TEST(CSurface, PointsThatTwoContoursShareAreNoCrossings)
{
    surf::CSurface surface;
    addContour(surface, {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}});
    addContour(surface, {{0, 0, 0}, {2, 1, 0}, {1, 2, 0}}); // at a corner
    addContour(surface, {{4, 2, 0}, {3, 3, 0}, {3, 1, 0}}); // on an edge
    ASSERT_TRUE(divide(surface));
    EXPECT_TRUE(surface.getCrossings().empty());
    EXPECT_DOUBLE_EQ(areaOf(surface), 16.0 - 1.5 - 1.0);
}

TEST(CSurface, UpdateFollowsMovedVertices)
{
    surf::CSurface surface;
    addContour(surface, bow);
    ASSERT_TRUE(divide(surface));
    surface.setVertex(0, {-4, -4, 5});
    ASSERT_TRUE(surface.update());
    // half of the weight was on the moved edge, and half of that on its moved end
    EXPECT_LT(glm::distance(surface.getPosition(4), glm::dvec3(1, 1, 5)), 1e-12);
}

TEST(CSurface, FlatTrianglesStayWhenAskedFor)
{
    const auto trianglesOf = [](bool keep) {
        surf::CSurface surface;
        addContour(surface, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {3, 3, 0}, {3, 6, 0}});
        EXPECT_TRUE(surface.createTriangulation(keep, -1, nullptr) && surface.update());
        EXPECT_DOUBLE_EQ(areaOf(surface), 9.0);
        return surface.getTriangles().size();
    };
    EXPECT_GE(trianglesOf(true), trianglesOf(false));
}

TEST(CSurface, NamesItselfInTheLineOfAFailure)
{
    EXPECT_EQ(faultOf({{0, 0, 0}, {1, 0, 0}}), "polygon \"plot 7\": it has no contour of three points");
}

TEST(CSurface, WithoutANameTheLineSaysPolygon)
{
    surf::CSurface surface;
    EXPECT_FALSE(divide(surface));
    EXPECT_EQ(LogTrap::take(), QStringList{"polygon: it has no contour of three points"});
}

TEST(CSurface, RefusesNumbersThatAreNotFinite)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(faultOf({{0, 0, 0}, {1, 0, 0}, {0, nan, 0}}),
              "polygon \"plot 7\": the coordinates of vertex 2 are not finite");
    EXPECT_EQ(faultOf({{0, 0, 0}, {1, 0, -INFINITY}, {0, 1, 0}}),
              "polygon \"plot 7\": the coordinates of vertex 1 are not finite");
}

TEST(CSurface, RefusesPointsOnALine)
{
    const QString line = "polygon \"plot 7\": all its points lie on a line";
    EXPECT_EQ(faultOf({{0, 0, 0}, {1, 2, 3}, {2, 4, 6}, {-1, -2, -3}}), line);
    // rounding moves these off their line
    EXPECT_EQ(faultOf({{2.7e6, 2.7e6, 0}, {2.7e6 + 0.1, 2.7e6 + 0.3, 0}, {2.7e6 + 0.7, 2.7e6 + 2.1, 0}}),
              line);
}

TEST(CSurface, RefusesPointsInOnePlace)
{
    EXPECT_EQ(faultOf(Points(5, {1, 2, 3})), "polygon \"plot 7\": its points are all one, or too far apart");
}

TEST(CSurface, RefusesCoordinatesWhoseDifferenceIsNoNumber)
{
    EXPECT_EQ(faultOf({{-1e308, 0, 0}, {1e308, 0, 0}, {0, 1e308, 0}}),
              "polygon \"plot 7\": its points are all one, or too far apart");
}

TEST(CSurface, RefusesAPathThereAndBack)
{
    EXPECT_EQ(faultOf({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 0, 0}}),
              "polygon \"plot 7\": it encloses no area");
}

TEST(CSurface, RefusesContoursThroughVerticesThatAreNotThere)
{
    surf::CSurface surface(QStringLiteral("plot 7"));
    surface.addContour({0, 1, 2});
    EXPECT_FALSE(divide(surface));
    EXPECT_EQ(LogTrap::take(), QStringList{"polygon \"plot 7\": it has no vertex 0"});
}

TEST(CSurface, VerySmallAndVeryLargeRegionsAreDivided)
{
    for (const double size : {1e-150, 1e-9, 1e9, 1e150}) {
        surf::CSurface surface;
        addContour(surface, {{0, 0, 0}, {2 * size, 0, 0}, {2 * size, size, 0}, {0, size, 0}});
        ASSERT_TRUE(divide(surface)) << size;
        EXPECT_EQ(surface.getTriangles().size(), 2u) << size;
    }
}

TEST(CSurface, RefusesMoreCrossingsThanAskedFor)
{
    surf::CSurface surface(QStringLiteral("plot 7"));
    addContour(surface, bow);
    EXPECT_FALSE(surface.createTriangulation(false, 0, nullptr));
    EXPECT_EQ(LogTrap::take(), QStringList{"polygon \"plot 7\": its edges cross more than 0 times"});
    EXPECT_TRUE(surface.createTriangulation(false, 1, nullptr) && surface.update());
}

// 20,000 edges at random would cross some 45 million times.
TEST(CSurface, RefusesWhatWouldTakeTooMuchMemoryAtOnce)
{
    std::mt19937 random(1);
    Points points(20000);
    for (glm::dvec3& p : points)
        p = {double(random()), double(random()), 0.0};
    EXPECT_EQ(faultOf(points), "polygon \"plot 7\": its edges cross more than 420000 times");
}

TEST(CSurface, StopsWhenCanceledAndSaysNothing)
{
    ksp::StagedProgress progress = ksp::StagedProgress::dummy();
    progress.cancel();
    surf::CSurface surface;
    addContour(surface, bow);
    EXPECT_FALSE(surface.createTriangulation(false, -1, &progress));
    EXPECT_FALSE(surface.update());
    EXPECT_TRUE(surface.getTriangles().empty());
    EXPECT_TRUE(divide(surface)); // and can be divided again
}
