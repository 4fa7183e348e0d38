// Outlines, handles, their line, and base and top that they move.
#include "FenceShapes.h"

#include <algorithm>
#include <limits>

namespace {

/// A prism of random place and direction about points whose mean is the frame's origin.
Prism3D randomPrism(const Frame& frame, double height)
{
    return prism(frame, square(3.0), height);
}

TEST(PrismPlanes, OutlinesAndHandlesFollowTheFormulas)
{
    Dice dice(1);
    double largest = 0.0;
    for (int i = 0; i < 500; ++i) {
        const bool isFar = i % 2 == 1;
        const Frame frame = Frame::random(dice, isFar ? farAway : dice.point(-10.0, 10.0));
        const double height = dice.between(-2.0, 50.0);
        const Prism3D fence = randomPrism(frame, height);
        const auto base = fence.getNearFence(), top = fence.getFarFence(), nodes = fence.getNodes();
        ASSERT_EQ(base.size(), 5u);
        ASSERT_EQ(top.size(), 5u);
        ASSERT_EQ(nodes.size(), 2u);
        const Ring ring = square(3.0);
        for (std::size_t k = 0; k < ring.size(); ++k) {
            largest = std::max(largest, glm::distance(base[k], frame.toWorld(ring[k].x, ring[k].y, 0.0)));
            largest = std::max(largest, glm::distance(top[k], frame.toWorld(ring[k].x, ring[k].y, height)));
        }
        largest = std::max(largest, glm::distance(nodes[0], frame.eye));
        largest = std::max(largest, glm::distance(nodes[1], frame.toWorld(0.0, 0.0, height)));
    }
    EXPECT_LT(largest, 1e-6); // floats of about 4
    std::printf("500 prisms: outlines and handles differ from the formulas by %.2g at most\n", largest);
}

TEST(PrismPlanes, RayIsFourRadiiLongerAtBothEnds)
{
    Dice dice(2);
    const double length = 4.0 * 3.0 * std::sqrt(2.0);
    for (const double height : {5.0, 0.0, -5.0}) {
        const Frame frame = Frame::random(dice, {1.0, 2.0, 3.0});
        const std::vector<glm::dvec3> ray = randomPrism(frame, height).getRay();
        const double sign = height < 0.0 ? -1.0 : 1.0; // towards the second handle
        ASSERT_EQ(ray.size(), 2u);
        expectNear(ray[0], frame.toWorld(0.0, 0.0, -sign * length), 2e-6);
        expectNear(ray[1], frame.toWorld(0.0, 0.0, height + sign * length), 2e-6);
    }
}

class MovedPrism : public testing::Test
{
protected:
    /// The prism from 0 to 10 along the look, with the handle moved to this height.
    void move(double to, bool nearPlane) { m_fence.movePlane(m_frame.toWorld(0.0, 0.0, to), nearPlane); }
    void expectPlanes(double base, double top) const
    {
        expectNear(m_fence.getNodes()[0], m_frame.toWorld(0.0, 0.0, base), 1e-6);
        expectNear(m_fence.getNodes()[1], m_frame.toWorld(0.0, 0.0, top), 1e-6);
        EXPECT_NEAR(m_fence.zFar(), top - base, 1e-6);
        EXPECT_EQ(m_fence.zNear(), 0.0);
    }
    Dice m_dice{3};
    Frame m_frame = Frame::random(m_dice, {1.0, 2.0, 3.0});
    Prism3D m_fence = randomPrism(m_frame, 10.0);
};

TEST_F(MovedPrism, TopMoves)
{
    move(14.0, false);
    expectPlanes(0.0, 14.0);
    move(2.0, false);
    expectPlanes(0.0, 2.0);
}

TEST_F(MovedPrism, BaseMovesAndTheTopStays)
{
    move(3.0, true);
    expectPlanes(3.0, 10.0);
    move(-4.0, true);
    expectPlanes(-4.0, 10.0);
    EXPECT_TRUE(m_fence.contains(m_frame.toWorld(1.0, 1.0, -3.9)));
    EXPECT_FALSE(m_fence.contains(m_frame.toWorld(1.0, 1.0, -4.1)));
    EXPECT_FALSE(m_fence.contains(m_frame.toWorld(1.0, 1.0, 10.1)));
}

TEST_F(MovedPrism, BasePastTheTopTradesPlaces)
{
    move(16.0, true);
    expectPlanes(10.0, 16.0);
}

TEST_F(MovedPrism, TopPastTheBaseTradesPlaces)
{
    move(-6.0, false);
    expectPlanes(-6.0, 0.0);
}

TEST_F(MovedPrism, ThePolygonGoesWithABaseMovedSideways)
{
    m_fence.movePlane(m_frame.toWorld(100.0, -50.0, 2.0), true);
    expectNear(m_fence.getNodes()[0], m_frame.toWorld(100.0, -50.0, 2.0), 1e-5);
    EXPECT_NEAR(m_fence.zFar(), std::hypot(100.0, 50.0, 8.0), 1e-5); // how far apart base and top are
    EXPECT_TRUE(m_fence.contains(m_frame.toWorld(101.0, -49.0, 3.0)));
    EXPECT_FALSE(m_fence.contains(m_frame.toWorld(1.0, 1.0, 3.0)));
}

TEST_F(MovedPrism, BaseWithoutTopMovesAlone)
{
    for (const double height : {0.0, -4.0})
        for (const double to : {3.0, -2.0}) {
            m_fence = randomPrism(m_frame, height);
            move(to, true);
            expectPlanes(to, to + height);
            EXPECT_TRUE(m_fence.contains(m_frame.toWorld(1.0, 1.0, 1e6)));
            EXPECT_FALSE(m_fence.contains(m_frame.toWorld(1.0, 1.0, to - 0.01)));
        }
}

TEST_F(MovedPrism, TopMovedOnAnEndlessPrismGivesItAnEnd)
{
    m_fence = randomPrism(m_frame, 0.0);
    move(4.0, false);
    expectPlanes(0.0, 4.0);
    m_fence = randomPrism(m_frame, 0.0);
    move(-4.0, false); // it passes the base
    expectPlanes(-4.0, 0.0);
}

TEST_F(MovedPrism, DirectionAndPolygonStay)
{
    const std::vector<glm::vec2> polygon = m_fence.fence();
    const glm::dmat3 turn(m_fence.matrix());
    move(16.0, true);
    EXPECT_EQ(m_fence.fence(), polygon);
    EXPECT_EQ(glm::dmat3(m_fence.matrix()), turn);
}

TEST_F(MovedPrism, NothingMovesToWhereNumbersAreNotFiniteOrWithoutPolygon)
{
    const glm::dmat4 matrix = m_fence.matrix();
    for (const double bad : {notANumber, std::numeric_limits<double>::infinity(), 1e308})
        for (const bool nearPlane : {true, false}) {
            m_fence.movePlane({bad, -bad, 0.0}, nearPlane);
            EXPECT_EQ(m_fence.matrix(), matrix);
            EXPECT_EQ(m_fence.zFar(), 10.0);
        }
    m_fence.reset();
    move(3.0, true);
    EXPECT_EQ(m_fence.matrix(), matrix);
    m_fence = randomPrism(m_frame, 0.0);
    m_fence.movePlane({notANumber, 0.0, 0.0}, true);
    EXPECT_EQ(m_fence.matrix(), matrix);
}

} // namespace
