#include "FenceShapes.h"

#include <limits>

namespace {

TEST(Frustum3D, IsEmptyAndZeroAtFirst)
{
    const Frustum3D fence;
    EXPECT_EQ(fence.getType(), 1);
    EXPECT_TRUE(fence.empty());
    EXPECT_TRUE(fence.fence().empty());
    EXPECT_EQ(fence.eye(), glm::dvec3(0.0));
    EXPECT_EQ(fence.direction(), glm::dvec3(0.0));
    EXPECT_EQ(fence.fromWorldMatrix(), glm::dmat4(1.0));
    EXPECT_EQ(fence.zNear(), 0.0);
    EXPECT_EQ(fence.zFar(), 0.0);
    EXPECT_EQ(fence.tanHalfFovy(), 0.0);
    EXPECT_FALSE(fence.contains({0.0, 0.0, 1.0}));
    EXPECT_TRUE(fence.getNearFence().empty());
    EXPECT_TRUE(fence.getNodes().empty());
    EXPECT_TRUE(fence.getRay().empty());
}

TEST(Frustum3D, TakesItsPolygonFromWorldPointsAtAnyDepths)
{
    Dice dice(1);
    for (int i = 0; i < 200; ++i) {
        const Frame frame = Frame::random(dice, i % 2 ? farAway : dice.point(-10.0, 10.0));
        const double t = dice.between(0.1, 1.5);
        const Ring ring = randomRing(dice, dice.between(3, 9), 2.0);
        std::vector<glm::dvec3> points;
        for (const glm::dvec2& xy : ring) {
            const double depth = dice.between(1.0, 50.0);
            points.push_back(frame.toWorld(xy.x * depth * t, xy.y * depth * t, depth));
        }
        points.back() = points.front();
        Frustum3D fence;
        fence.setFence({1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, t, 2.0, 30.0, points, frame.fromWorld());
        ASSERT_EQ(fence.fence().size(), ring.size());
        for (std::size_t k = 0; k < ring.size(); ++k) {
            EXPECT_NEAR(fence.fence()[k].x, ring[k].x, 3e-7);
            EXPECT_NEAR(fence.fence()[k].y, ring[k].y, 3e-7);
        }
        EXPECT_EQ(fence.fence().front(), fence.fence().back());
        EXPECT_EQ(fence.eye(), glm::dvec3(1.0, 2.0, 3.0));
        EXPECT_EQ(fence.direction(), glm::dvec3(4.0, 5.0, 6.0));
        EXPECT_EQ(fence.fromWorldMatrix(), frame.fromWorld());
        EXPECT_EQ(fence.tanHalfFovy(), t);
        EXPECT_EQ(fence.zNear(), 2.0);
        EXPECT_EQ(fence.zFar(), 30.0);
    }
}

TEST(Frustum3D, ContainsItsEndPlanes)
{
    const Frustum3D fence = frustum({}, square(1.0), 1.0, 4.0, 0.5);
    EXPECT_TRUE(fence.contains({0.0, 0.0, 1.0}));
    EXPECT_TRUE(fence.contains({0.0, 0.0, 4.0}));
    EXPECT_FALSE(fence.contains({0.0, 0.0, std::nextafter(1.0, 0.0)}));
    EXPECT_FALSE(fence.contains({0.0, 0.0, std::nextafter(4.0, 5.0)}));
    EXPECT_FALSE(fence.contains({0.0, 0.0, -2.0}));
    // at depth 2 the square reaches from -1 to 1
    EXPECT_TRUE(fence.contains({-1.0, -1.0, 2.0}));
    EXPECT_TRUE(fence.contains({0.999, 0.999, 2.0}));
    EXPECT_FALSE(fence.contains({1.0, 0.0, 2.0}));
}

TEST(Frustum3D, DecidesOnTheScreenInFloats)
{
    const Frustum3D fence = frustum({}, square(1.0), 1.0, 4.0, 1.0);
    const double belowHalfAStep = 1.0 + 4e-8, aboveHalfAStep = 1.0 + 8e-8; // floats step by 1.2e-7 there
    EXPECT_TRUE(fence.contains({-belowHalfAStep, 0.0, 1.0}));
    EXPECT_FALSE(fence.contains({-aboveHalfAStep, 0.0, 1.0}));
}

TEST(Frustum3D, WithoutFarPlaneContainsAnyDepthBeyondTheNearOne)
{
    for (const double zFar : {0.0, 1.0, -5.0}) {
        const Frustum3D fence = frustum({}, square(1.0), 1.0, zFar, 1.0);
        for (const double depth : {1.0, 1.5, 100.0, 1e6, 1e15, 1e300}) {
            EXPECT_TRUE(fence.contains({0.0, 0.0, depth})) << depth;
            EXPECT_TRUE(fence.contains({-0.9 * depth, 0.9 * depth, depth})) << depth;
            EXPECT_FALSE(fence.contains({1.1 * depth, 0.0, depth})) << depth;
        }
        EXPECT_FALSE(fence.contains({0.0, 0.0, 0.9}));
    }
}

TEST(Frustum3D, ContainsNoPointThatIsNotFinite)
{
    const Frustum3D fence = frustum({}, square(1.0), 1.0, 0.0, 1.0);
    for (const double bad : {notANumber, infinity, -infinity}) {
        EXPECT_FALSE(fence.contains({bad, 0.0, 2.0}));
        EXPECT_FALSE(fence.contains({0.0, bad, 2.0}));
        EXPECT_FALSE(fence.contains({0.0, 0.0, bad}));
        EXPECT_FALSE(fence.contains({bad, bad, bad}));
    }
}

TEST(Frustum3D, OutlinesLieOnTheLinesOfSight)
{
    Dice dice(2);
    double largest = 0.0;
    for (int i = 0; i < 200; ++i) {
        const Frame frame = Frame::random(dice, dice.point(-10.0, 10.0));
        const double t = dice.between(0.1, 1.5), zNear = dice.between(0.1, 5.0),
                     zFar = dice.between(6.0, 99.0);
        const Frustum3D fence = frustum(frame, randomRing(dice, 6, 2.0), zNear, zFar, t);
        const auto nearFence = fence.getNearFence(), farFence = fence.getFarFence();
        ASSERT_EQ(nearFence.size(), fence.fence().size());
        ASSERT_EQ(farFence.size(), fence.fence().size());
        for (std::size_t k = 0; k < nearFence.size(); ++k) {
            const double x = fence.fence()[k].x, y = fence.fence()[k].y;
            const glm::dvec3 atNear = frame.toWorld(x * zNear * t, y * zNear * t, zNear);
            const glm::dvec3 atFar = frame.toWorld(x * zFar * t, y * zFar * t, zFar);
            largest =
                std::max({largest, glm::distance(atNear, nearFence[k]), glm::distance(atFar, farFence[k])});
        }
    }
    EXPECT_LT(largest, 1e-11);
    std::printf("200 frustums: outlines differ from the formula by %.2g at most\n", largest);
}

TEST(Frustum3D, ResetRemovesThePolygonOnly)
{
    Frustum3D fence = frustum({}, square(1.0), 1.0, 4.0, 0.5);
    fence.reset();
    EXPECT_TRUE(fence.empty());
    EXPECT_FALSE(fence.contains({0.0, 0.0, 2.0}));
    EXPECT_EQ(fence.zNear(), 1.0);
    EXPECT_EQ(fence.zFar(), 4.0);
    EXPECT_EQ(fence.tanHalfFovy(), 0.5);
}

TEST(Frustum3D, AnotherMatrixTakesThePolygonAlong)
{
    Frustum3D fence = frustum({}, square(1.0), 1.0, 4.0, 1.0);
    Dice dice(3);
    const Frame frame = Frame::random(dice, {5.0, 6.0, 7.0});
    fence.setFromWorldMatrix(frame.fromWorld());
    EXPECT_EQ(fence.fromWorldMatrix(), frame.fromWorld());
    EXPECT_TRUE(fence.contains(frame.toWorld(0.5, -0.5, 2.0)));
    EXPECT_FALSE(fence.contains(frame.toWorld(0.5, -0.5, 0.9)));
    expectNear(fence.getNearFence()[0], frame.toWorld(-1.0, -1.0, 1.0), 1e-12);
}

TEST(Frustum3D, WithoutInverseItContainsAndOutlinesWithoutHarm)
{
    Frustum3D fence = frustum({}, square(1.0), 1.0, 4.0, 1.0);
    for (const glm::dmat4& matrix : {glm::dmat4(0.0), glm::dmat4(notANumber)}) {
        fence.setFromWorldMatrix(matrix);
        EXPECT_FALSE(fence.contains({0.0, 0.0, 2.0}));
        EXPECT_EQ(fence.getNearFence().size(), 5u);
        EXPECT_EQ(fence.getRay().size(), 2u);
    }
}

TEST(Frustum3D, OfAnOpenOrShortRingIsEmpty)
{
    const Ring closedSquare = square(1.0);
    const Ring open(closedSquare.begin(), closedSquare.end() - 1);
    EXPECT_TRUE(frustum({}, open, 1.0, 4.0, 1.0).empty());
    EXPECT_TRUE(frustum({}, closed({{0.0, 0.0}, {1.0, 1.0}}), 1.0, 4.0, 1.0).empty());
    EXPECT_TRUE(frustum({}, {}, 1.0, 4.0, 1.0).empty());
    Ring nearlyClosed = closedSquare;
    nearlyClosed.back().x = std::nextafter(nearlyClosed.back().x, 0.0);
    EXPECT_TRUE(frustum({}, nearlyClosed, 1.0, 4.0, 1.0).empty());
    EXPECT_FALSE(frustum({}, closed({{0.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}), 1.0, 4.0, 1.0).empty());
}

TEST(Frustum3D, RefusedPolygonsEmptyItAndLeaveTheRest)
{
    const Frustum3D before = frustum({}, square(1.0), 1.0, 4.0, 0.5);
    const std::vector<glm::dvec3> ring = before.getNearFence();
    const auto set = [&](const glm::dvec3& eye, const glm::dvec3& direction, double t, double zNear,
                         double zFar, const std::vector<glm::dvec3>& points, const glm::dmat4& matrix) {
        Frustum3D fence = before;
        fence.setFence(eye, direction, t, zNear, zFar, points, matrix);
        const bool refused = fence.empty();
        EXPECT_EQ(refused, fence.zNear() == 1.0 && fence.zFar() == 4.0 && fence.tanHalfFovy() == 0.5);
        return refused;
    };
    const glm::dvec3 zero(0.0), z(0.0, 0.0, 1.0);
    const glm::dmat4 one(1.0);
    EXPECT_FALSE(set(zero, z, 0.25, 2.0, 3.0, ring, one));
    EXPECT_FALSE(set(zero, zero, 0.25, 2.0, 3.0, ring, one)); // the direction is only kept
    for (const double bad : {notANumber, infinity}) {
        EXPECT_TRUE(set({bad, 0.0, 0.0}, z, 0.25, 2.0, 3.0, ring, one));
        EXPECT_TRUE(set(zero, {0.0, bad, 0.0}, 0.25, 2.0, 3.0, ring, one));
        EXPECT_TRUE(set(zero, z, bad, 2.0, 3.0, ring, one));
        EXPECT_TRUE(set(zero, z, 0.25, bad, 3.0, ring, one));
        EXPECT_TRUE(set(zero, z, 0.25, 2.0, bad, ring, one));
        EXPECT_TRUE(set(zero, z, 0.25, 2.0, 3.0, ring, glm::dmat4(bad)));
        for (glm::length_t axis = 0; axis < 3; ++axis) {
            std::vector<glm::dvec3> points = ring;
            points[1][axis] = bad;
            EXPECT_TRUE(set(zero, z, 0.25, 2.0, 3.0, points, one)) << axis;
        }
    }
    EXPECT_TRUE(set(zero, z, 0.0, 2.0, 3.0, ring, one));
    EXPECT_TRUE(set(zero, z, -0.25, 2.0, 3.0, ring, one));
    EXPECT_TRUE(set(zero, z, 1e-320, 2.0, 3.0, ring, one)); // beyond what floats hold on the screen
    EXPECT_TRUE(set(zero, z, 0.25, -2.0, 3.0, ring, one));
    EXPECT_TRUE(set(zero, z, 0.25, 2.0, 3.0, ring, glm::dmat4(0.0)));
    glm::dmat4 flat(1.0); // the points lie before the eye, but there is no way back
    flat[0][0] = 0.0;
    EXPECT_TRUE(set(zero, z, 0.25, 2.0, 3.0, ring, flat));
    for (const double depth : {0.0, -1.0}) {
        std::vector<glm::dvec3> points = ring;
        points[2].z = depth;
        EXPECT_TRUE(set(zero, z, 0.25, 2.0, 3.0, points, one)) << depth;
    }
}

TEST(Frustum3D, MayBeSetFromItsOwnMatrix)
{
    Dice dice(4);
    const Frame frame = Frame::random(dice, {5.0, 6.0, 7.0});
    Frustum3D fence = frustum(frame, square(1.0), 1.0, 4.0, 1.0);
    const std::vector<glm::vec2> polygon = fence.fence();
    fence.setFence(fence.eye(), fence.direction(), 1.0, 1.0, 8.0, fence.getFarFence(),
                   fence.fromWorldMatrix());
    EXPECT_EQ(fence.zFar(), 8.0);
    EXPECT_EQ(fence.fromWorldMatrix(), frame.fromWorld());
    ASSERT_EQ(fence.fence().size(), polygon.size());
}

TEST(Frustum3D, AViewMatrixLooksAlongPlusZWithItsDepthTurned)
{
    // as a camera gives it: x to the right, y up, looking along -z
    Dice dice(5);
    const Frame frame = Frame::random(dice, {5.0, 6.0, 7.0});
    Frame view = frame;
    view.look = -frame.look;
    glm::dmat4 turned(1.0);
    turned[2][2] = -1.0;
    const glm::dmat4 fromWorld = turned * view.fromWorld();
    for (glm::length_t i = 0; i < 4; ++i)
        expectNear(glm::dvec3(fromWorld[i]), glm::dvec3(frame.fromWorld()[i]), 1e-15);
}

} // namespace
