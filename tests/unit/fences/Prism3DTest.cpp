#include "FenceShapes.h"

#include <algorithm>
#include <limits>

namespace {

std::vector<glm::vec2> floats(const Ring& ring)
{
    return {ring.begin(), ring.end()};
}

TEST(Prism3D, IsEmptyAndZeroAtFirst)
{
    const Prism3D fence;
    EXPECT_TRUE(fence.empty());
    EXPECT_EQ(fence.matrix(), glm::dmat4(1.0));
    EXPECT_EQ(fence.zNear(), 0.0);
    EXPECT_EQ(fence.zFar(), 0.0);
    EXPECT_EQ(fence.tanHalfFovy(), 0.0);
    EXPECT_FALSE(fence.contains({0.0, 0.0, 0.0}));
    EXPECT_TRUE(fence.getNodes().empty());
    EXPECT_TRUE(fence.getRay().empty());
    EXPECT_TRUE(fence.getFarFence().empty());
}

TEST(Prism3D, LookAtCarriesTheDirectionOntoZ)
{
    std::vector<glm::dvec3> directions;
    for (glm::length_t axis = 0; axis < 3; ++axis)
        for (const double sign : {1.0, -1.0}) {
            directions.emplace_back(0.0);
            directions.back()[axis] = sign;
        }
    Dice dice(1);
    for (int i = 0; i < 2000; ++i)
        directions.push_back(dice.direction() * dice.between(0.01, 100.0));
    double largest = 0.0;
    for (const glm::dvec3& direction : directions) {
        const glm::dvec3 origin = dice.point(-50.0, 50.0);
        const glm::dmat4 m = Prism3D::lookAt(origin, direction);
        const glm::dvec3 mapped(m * glm::dvec4(direction, 0.0));
        const double length = glm::length(direction);
        largest = std::max(largest, glm::distance(mapped, glm::dvec3(0.0, 0.0, length)) / length);
        expectNear(glm::dvec3(m * glm::dvec4(origin, 1.0)), glm::dvec3(0.0), 1e-13);
        // rigid: the axes keep their length and right angles, and their sense
        const glm::dmat3 turn(m);
        const glm::dmat3 product = glm::transpose(turn) * turn;
        for (glm::length_t i = 0; i < 3; ++i)
            for (glm::length_t k = 0; k < 3; ++k)
                EXPECT_NEAR(product[i][k], i == k ? 1.0 : 0.0, 1e-15);
        EXPECT_NEAR(glm::determinant(turn), 1.0, 1e-15);
    }
    EXPECT_LT(largest, 1e-15);
    std::printf("%zu directions: off +z by %.2g of their length at most\n", directions.size(), largest);
}

TEST(Prism3D, LookAtTurnsAboutZThenAboutY)
{
    // azimuth a and inclination b by hand: R_y(-b) * R_z(-a)
    Dice dice(2);
    for (int i = 0; i < 200; ++i) {
        const double a = dice.between(-3.1, 3.1), b = dice.between(0.05, 3.1);
        const glm::dvec3 origin = dice.point(-5.0, 5.0);
        const glm::dmat4 m =
            Prism3D::lookAt(origin, {std::sin(b) * std::cos(a), std::sin(b) * std::sin(a), std::cos(b)});
        const glm::dvec3 p = dice.point(-5.0, 5.0), q = p - origin;
        const double x = std::cos(a) * q.x + std::sin(a) * q.y, y = -std::sin(a) * q.x + std::cos(a) * q.y;
        expectNear(glm::dvec3(m * glm::dvec4(p, 1.0)),
                   {std::cos(b) * x - std::sin(b) * q.z, y, std::sin(b) * x + std::cos(b) * q.z}, 1e-13);
    }
}

TEST(Prism3D, LookAtAlongAxesIsATurnByQuarters)
{
    const glm::dvec3 p(1.0, 2.0, 3.0), zero(0.0);
    const auto mapped = [&](const glm::dvec3& direction) {
        return glm::dvec3(Prism3D::lookAt(zero, direction) * glm::dvec4(p, 1.0));
    };
    expectNear(mapped({0.0, 0.0, 1.0}), p, 0.0);
    expectNear(mapped(zero), p, 0.0);
    expectNear(mapped({0.0, 0.0, -1.0}), {-1.0, 2.0, -3.0}, 1e-15);
    expectNear(mapped({1.0, 0.0, 0.0}), {-3.0, 2.0, 1.0}, 1e-15);
    expectNear(mapped({0.0, 1.0, 0.0}), {-3.0, -1.0, 2.0}, 1e-15);
}

TEST(Prism3D, CenterAndRadiusOfASquareAreItsMiddleAndHalfItsDiagonal)
{
    const std::vector<glm::vec2> fence = floats(square(2.0, {5.0, -3.0}));
    EXPECT_EQ(Prism3D::getFenceCenter2D(fence), glm::dvec2(5.0, -3.0));
    EXPECT_DOUBLE_EQ(Prism3D::getFenceRadius2D(fence), 2.0 * std::sqrt(2.0));
}

TEST(Prism3D, CenterAndRadiusOfFewPointsAreZero)
{
    for (std::size_t count = 0; count < 4; ++count) {
        const std::vector<glm::vec2> fence(count, glm::vec2(3.0f, 4.0f));
        EXPECT_EQ(Prism3D::getFenceCenter2D(fence), glm::dvec2(0.0));
        EXPECT_EQ(Prism3D::getFenceRadius2D(fence), 0.0);
    }
}

TEST(Prism3D, TheRadiusCountsTheLastPointTheCenterDoesNot)
{
    const std::vector<glm::vec2> fence = {{1.0f, 0.0f}, {-1.0f, 0.0f}, {0.0f, 0.0f}, {0.0f, 9.0f}};
    EXPECT_EQ(Prism3D::getFenceCenter2D(fence), glm::dvec2(0.0));
    EXPECT_EQ(Prism3D::getFenceRadius2D(fence), 9.0);
}

TEST(Prism3D, IsSetFromWorldPoints)
{
    Dice dice(3);
    double largest = 0.0;
    for (int i = 0; i < 200; ++i) {
        const bool isFar = i % 2 == 1;
        const Frame frame = Frame::random(dice, isFar ? farAway : dice.point(-10.0, 10.0));
        const Ring ring = randomRing(dice, dice.between(3, 9), 20.0);
        std::vector<glm::dvec3> points;
        glm::dvec3 mean(0.0);
        for (const glm::dvec2& xy : ring)
            points.push_back(frame.toWorld(xy.x, xy.y, dice.between(-5.0, 5.0)));
        points.back() = points.front();
        for (std::size_t k = 0; k + 1 < points.size(); ++k)
            mean += points[k] / double(points.size() - 1);
        Prism3D fence;
        fence.setFence({notANumber, notANumber, notANumber}, 7.0 * frame.look, notANumber, 3.0, 10.0, points);
        ASSERT_FALSE(fence.empty());
        EXPECT_EQ(fence.zFar(), 7.0);
        const glm::dmat4 expected = Prism3D::lookAt(mean, frame.look);
        for (std::size_t k = 0; k < points.size(); ++k) {
            const glm::dvec3 q(expected * glm::dvec4(points[k], 1.0));
            largest = std::max(largest, glm::distance(glm::dvec2(q), glm::dvec2(fence.fence()[k])));
        }
        EXPECT_EQ(fence.fence().front(), fence.fence().back());
    }
    EXPECT_LT(largest, 4e-6); // floats of up to 40
    std::printf("200 prisms: polygons differ from the formula by %.2g at most, 2.7e6 away too\n", largest);
}

TEST(Prism3D, ContainsBaseAndTop)
{
    const Prism3D fence = prism({}, square(1.0), 2.0);
    EXPECT_TRUE(fence.contains({0.0, 0.0, 0.0}));
    EXPECT_TRUE(fence.contains({0.0, 0.0, 2.0}));
    EXPECT_FALSE(fence.contains({0.0, 0.0, -1e-300}));
    EXPECT_FALSE(fence.contains({0.0, 0.0, std::nextafter(2.0, 3.0)}));
    EXPECT_TRUE(fence.contains({-1.0, -1.0, 1.0}));
    EXPECT_FALSE(fence.contains({1.0, 0.0, 1.0}));
    EXPECT_FALSE(fence.contains({0.0, 1.0, 1.0}));
}

TEST(Prism3D, DecidesInThePolygonsPlaneInDoubles)
{
    const Prism3D fence = prism({}, square(1.0), 2.0);
    EXPECT_TRUE(fence.contains({std::nextafter(1.0, 0.0), 0.0, 1.0}));
    EXPECT_FALSE(fence.contains({std::nextafter(-1.0, -2.0), 0.0, 1.0}));
}

TEST(Prism3D, OfHeightZeroOrLessHasNoTop)
{
    for (const double height : {0.0, -3.0}) {
        const Prism3D fence = prism({}, square(1.0), height);
        EXPECT_TRUE(fence.contains({0.0, 0.0, 0.0}));
        EXPECT_TRUE(fence.contains({0.5, 0.5, 1e12}));
        EXPECT_FALSE(fence.contains({0.0, 0.0, -1.0}));
        EXPECT_FALSE(fence.contains({1.5, 0.0, 1.0}));
    }
}

TEST(Prism3D, ContainsNoPointThatIsNotFinite)
{
    const Prism3D fence = prism({}, square(1.0), 0.0);
    for (const double bad : {notANumber, -infinity}) {
        EXPECT_FALSE(fence.contains({bad, 0.0, 1.0}));
        EXPECT_FALSE(fence.contains({0.0, bad, 1.0}));
        EXPECT_FALSE(fence.contains({0.0, 0.0, bad}));
    }
}

TEST(Prism3D, OfAnOpenOrShortRingIsEmpty)
{
    const Ring closedSquare = square(1.0);
    const Prism3D open = prism({}, Ring(closedSquare.begin(), closedSquare.end() - 1), 2.0);
    EXPECT_TRUE(open.empty());
    EXPECT_FALSE(open.contains({0.0, 0.0, 1.0}));
    const Prism3D short3 = prism({}, closed({{0.0, 0.0}, {1.0, 1.0}}), 2.0);
    EXPECT_TRUE(short3.empty());
    EXPECT_FALSE(short3.contains({0.0, 0.0, 0.0}));
    EXPECT_TRUE(prism({}, {}, 2.0).empty());
    EXPECT_FALSE(prism({}, closed({{0.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}), 2.0).empty());
}

TEST(Prism3D, RefusedPolygonsEmptyItAndLeaveTheRest)
{
    const Prism3D before = prism({}, square(1.0), 2.0);
    const std::vector<glm::dvec3> ring = before.getNearFence();
    const auto set = [&](const glm::dvec3& direction, double zNear, double zFar,
                         const std::vector<glm::dvec3>& points) {
        Prism3D fence = before;
        fence.setFence(glm::dvec3(0.0), direction, 1.0, zNear, zFar, points);
        const bool refused = fence.empty();
        EXPECT_EQ(refused, fence.zFar() == 2.0 && fence.matrix() == before.matrix());
        EXPECT_EQ(fence.contains({0.0, 0.0, 1.0}), !refused);
        return refused;
    };
    const glm::dvec3 z(0.0, 0.0, 1.0);
    EXPECT_FALSE(set(z, 0.0, 3.0, ring));
    EXPECT_FALSE(set(z * 1e-100, 0.0, 3.0, ring));
    EXPECT_TRUE(set(glm::dvec3(0.0), 0.0, 3.0, ring));
    EXPECT_TRUE(set(z * 1e-200, 0.0, 3.0, ring)); // its square is 0, or infinite
    EXPECT_TRUE(set(z * 1e200, 0.0, 3.0, ring));
    for (const double bad : {notANumber, infinity}) {
        EXPECT_TRUE(set({bad, 0.0, 1.0}, 0.0, 3.0, ring));
        EXPECT_TRUE(set(z, bad, 3.0, ring));
        EXPECT_TRUE(set(z, 0.0, bad, ring));
        for (glm::length_t axis = 0; axis < 3; ++axis) {
            std::vector<glm::dvec3> points = ring;
            points[1][axis] = bad;
            EXPECT_TRUE(set(z, 0.0, 3.0, points)) << axis;
        }
    }
}

TEST(Prism3D, ResetRemovesThePolygonOnly)
{
    Prism3D fence = prism({}, square(1.0), 2.0);
    fence.reset();
    EXPECT_TRUE(fence.empty());
    EXPECT_EQ(fence.zFar(), 2.0);
    EXPECT_FALSE(fence.contains({0.0, 0.0, 1.0}));
}

} // namespace
