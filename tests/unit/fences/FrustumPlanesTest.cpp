// Handles, their line, and the end planes that they move.
#include "FenceShapes.h"

#include <algorithm>
#include <limits>

namespace {

/// About the axis, so that the handles are on it and distances along their line are depths.
Frustum3D centered(double zNear, double zFar)
{
    return frustum({}, square(1.0), zNear, zFar, 0.5);
}

void expectPlanes(const Frustum3D& fence, double zNear, double zFar)
{
    EXPECT_NEAR(fence.zNear(), zNear, 1e-12);
    EXPECT_NEAR(fence.zFar(), zFar, 1e-12);
}

TEST(FrustumPlanes, NodesAreThePolygonsCenterAtBothDepths)
{
    const Frustum3D fence = frustum({}, square(0.5, {1.0, -2.0}), 2.0, 10.0, 0.25);
    const std::vector<glm::dvec3> nodes = fence.getNodes();
    ASSERT_EQ(nodes.size(), 2u);
    expectNear(nodes[0], {0.5, -1.0, 2.0}, 1e-12);
    expectNear(nodes[1], {2.5, -5.0, 10.0}, 1e-12);
}

TEST(FrustumPlanes, RayIsFourRadiiLongerAtBothEnds)
{
    // the square's radius sqrt(2) / 2, halfway at depth 6
    const Frustum3D fence = frustum({}, square(0.5), 2.0, 10.0, 0.25);
    const double length = 4.0 * std::sqrt(0.5) * 6.0 * 0.25;
    const std::vector<glm::dvec3> ray = fence.getRay();
    ASSERT_EQ(ray.size(), 2u);
    expectNear(ray[0], {0.0, 0.0, 2.0 - length}, 1e-12);
    expectNear(ray[1], {0.0, 0.0, 10.0 + length}, 1e-12);
}

TEST(FrustumPlanes, RayWithoutFarPlaneIsMeasuredInTheNearOne)
{
    const double length = 4.0 * std::sqrt(0.5) * 2.0 * 0.25;
    const std::vector<glm::dvec3> ray = frustum({}, square(0.5), 2.0, 1.0, 0.25).getRay();
    expectNear(ray[0], {0.0, 0.0, 2.0 + length}, 1e-12); // from the handles, the far one in front
    expectNear(ray[1], {0.0, 0.0, 1.0 - length}, 1e-12);
}

TEST(FrustumPlanes, RayOfHandlesThatCoincideGoesAwayFromTheEye)
{
    const double length = 4.0 * std::sqrt(0.5) * 2.0 * 0.25;
    const std::vector<glm::dvec3> ray = frustum({}, square(0.5), 2.0, 2.0, 0.25).getRay();
    expectNear(ray[0], {0.0, 0.0, 2.0 - length}, 1e-12);
    expectNear(ray[1], {0.0, 0.0, 2.0 + length}, 1e-12);
}

TEST(FrustumPlanes, NodesAndRaysOfRandomFencesFollowTheFormulas)
{
    Dice dice(1);
    double largest = 0.0;
    for (int i = 0; i < 500; ++i) {
        const Frame frame = Frame::random(dice, dice.point(-10.0, 10.0));
        const double t = dice.between(0.1, 1.5), zNear = dice.between(0.1, 5.0),
                     zFar = dice.between(0.0, 9.0);
        const Frustum3D fence = frustum(frame, randomRing(dice, dice.between(3, 9), 2.0), zNear, zFar, t);
        glm::dvec2 center(0.0);
        const std::size_t corners = fence.fence().size() - 1;
        for (std::size_t k = 0; k < corners; ++k)
            center += glm::dvec2(fence.fence()[k]) / double(corners);
        double radius = 0.0;
        for (const glm::vec2& xy : fence.fence())
            radius = std::max(radius, std::hypot(xy.x - center.x, xy.y - center.y));
        const glm::dvec3 first = frame.toWorld(center.x * zNear * t, center.y * zNear * t, zNear);
        const glm::dvec3 second = frame.toWorld(center.x * zFar * t, center.y * zFar * t, zFar);
        const double middle = zFar > zNear ? (zNear + zFar) / 2.0 : zNear;
        const glm::dvec3 way = (second - first) / glm::length(second - first) * 4.0 * radius * middle * t;
        const auto nodes = fence.getNodes(), ray = fence.getRay();
        largest = std::max({largest, glm::distance(nodes[0], first), glm::distance(nodes[1], second),
                            glm::distance(ray[0], first - way), glm::distance(ray[1], second + way)});
    }
    EXPECT_LT(largest, 1e-9); // the direction is that of handles that may be near to each other
    std::printf("500 frustums: handles and rays differ from the formulas by %.2g at most\n", largest);
}

TEST(FrustumPlanes, MovesByTheSignedDistanceAlongTheLine)
{
    Frustum3D fence = centered(2.0, 10.0);
    fence.movePlane({0.0, 0.0, 3.5}, true);
    expectPlanes(fence, 3.5, 10.0);
    fence.movePlane({0.0, 0.0, 1.0}, true);
    expectPlanes(fence, 1.0, 10.0);
    fence.movePlane({0.0, 0.0, 20.0}, false);
    expectPlanes(fence, 1.0, 20.0);
    fence.movePlane({0.0, 0.0, 5.0}, false);
    expectPlanes(fence, 1.0, 5.0);
}

TEST(FrustumPlanes, SidewaysPartsOfTheMoveDoNotCount)
{
    Frustum3D fence = centered(2.0, 10.0);
    fence.movePlane({7.0, -3.0, 3.0}, true);
    fence.movePlane({-70.0, 30.0, 12.0}, false);
    expectPlanes(fence, 3.0, 12.0);
}

TEST(FrustumPlanes, TheHandleComesToTheFootOfThePerpendicular)
{
    Dice dice(2);
    double largest = 0.0;
    int moves = 0;
    for (int i = 0; i < 500; ++i) {
        const bool isFar = i % 2 == 1;
        const Frame frame = Frame::random(dice, isFar ? farAway : dice.point(-10.0, 10.0));
        Frustum3D fence =
            frustum(frame, square(0.3, {dice.between(-2.0, 2.0), dice.between(-2.0, 2.0)}), 20.0, 60.0, 0.7);
        const bool nearPlane = dice.oneIn(2);
        const glm::dvec3 line = glm::normalize(fence.getNodes()[1] - fence.getNodes()[0]);
        const glm::dvec3 point =
            fence.getNodes()[nearPlane ? 0 : 1] + dice.between(-10.0, 10.0) * line + dice.point(-3.0, 3.0);
        fence.movePlane(point, nearPlane);
        const glm::dvec3 node = fence.getNodes()[nearPlane ? 0 : 1];
        largest = std::max(largest, std::abs(glm::dot(point - node, line)));
        ++moves;
    }
    EXPECT_LT(largest, 2e-8);
    std::printf("%d moves: the handle is off the foot by %.2g at most, 2.7e6 away too\n", moves, largest);
}

TEST(FrustumPlanes, ANearPlanePastTheFarOneTradesPlaces)
{
    Frustum3D fence = centered(2.0, 10.0);
    fence.movePlane({0.0, 0.0, 14.0}, true);
    expectPlanes(fence, 10.0, 14.0);
}

TEST(FrustumPlanes, AFarPlanePastTheNearOneTradesPlaces)
{
    Frustum3D fence = centered(4.0, 10.0);
    fence.movePlane({0.0, 0.0, 1.0}, false);
    expectPlanes(fence, 1.0, 4.0);
}

TEST(FrustumPlanes, TheNearPlaneStaysAtATenthAtLeast)
{
    for (const double depth : {0.05, 0.0, -1.0, -1e9}) {
        Frustum3D fence = centered(2.0, 10.0);
        fence.movePlane({0.0, 0.0, depth}, true);
        expectPlanes(fence, 0.1, 10.0);
        fence = centered(2.0, 10.0);
        fence.movePlane({0.0, 0.0, depth}, false);
        expectPlanes(fence, 0.1, 2.0);
        EXPECT_EQ(fence.zNear(), 0.1);
    }
}

TEST(FrustumPlanes, RandomMovesNeverLeaveTheNearPlaneBelowATenth)
{
    Dice dice(3);
    Frustum3D fence = frustum(Frame::random(dice, {1.0, 2.0, 3.0}), square(1.0, {0.5, 0.0}), 2.0, 10.0, 0.5);
    for (int i = 0; i < 10000; ++i) {
        fence.movePlane(dice.point(-30.0, 30.0), dice.oneIn(2));
        ASSERT_GE(fence.zNear(), 0.1);
        ASSERT_TRUE(std::isfinite(fence.zFar()));
    }
}

TEST(FrustumPlanes, ANearPlaneWithoutFarOneMovesAlone)
{
    for (const double zFar : {0.0, 2.0, 1.5, -3.0})
        for (const double depth : {7.0, 1.6, 0.5, 0.01}) {
            Frustum3D fence = centered(2.0, zFar);
            fence.movePlane({0.0, 0.0, depth}, true);
            EXPECT_NEAR(fence.zNear(), std::max(depth, 0.1), 1e-12);
            EXPECT_LE(fence.zFar(), fence.zNear());
            EXPECT_TRUE(fence.contains({0.0, 0.0, 1e9})) << zFar << " " << depth;
            EXPECT_FALSE(fence.contains({0.0, 0.0, 0.99 * fence.zNear()}));
        }
}

TEST(FrustumPlanes, AFarPlaneBeyondTheNearOneGivesAnEndlessFenceAnEnd)
{
    Frustum3D fence = centered(2.0, 0.0);
    fence.movePlane({0.0, 0.0, 5.0}, false);
    expectPlanes(fence, 2.0, 5.0);
}

TEST(FrustumPlanes, AFarDepthMovedBelowTheNearOneTradesPlacesWithIt)
{
    Frustum3D fence = centered(2.0, 0.0);
    fence.movePlane({0.0, 0.0, 1.0}, false);
    expectPlanes(fence, 1.0, 2.0);
}

TEST(FrustumPlanes, NothingMovesByAStepThatIsNotFiniteOrWithoutPolygon)
{
    Frustum3D fence = centered(2.0, 10.0);
    for (const bool nearPlane : {true, false}) {
        fence.movePlane({notANumber, 0.0, 3.0}, nearPlane);
        fence.movePlane({0.0, 0.0, notANumber}, nearPlane);
        fence.movePlane({0.0, 0.0, std::numeric_limits<double>::infinity()}, nearPlane);
        EXPECT_EQ(fence.zNear(), 2.0);
        EXPECT_EQ(fence.zFar(), 10.0);
    }
    fence.reset();
    fence.movePlane({0.0, 0.0, 3.0}, true);
    EXPECT_EQ(fence.zNear(), 2.0);
}

} // namespace
