#include "FenceShapes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(SphereFence, IsAPointAtTheOriginAtFirst)
{
    const SphereFence fence;
    EXPECT_EQ(fence.getCenter(), glm::dvec3(0.0));
    EXPECT_EQ(fence.getRadius(), 0.0);
    EXPECT_FALSE(fence.empty());
    EXPECT_EQ(fence.getType(), 2);
}

TEST(SphereFence, KeepsWhatItIsGiven)
{
    const SphereFence fence = sphere({1.0, 2.0, 3.0}, -4.0);
    EXPECT_EQ(fence.getCenter(), glm::dvec3(1.0, 2.0, 3.0));
    EXPECT_EQ(fence.getRadius(), -4.0);
}

TEST(SphereFence, IsEmptyWithANaNInItsCenter)
{
    EXPECT_TRUE(sphere({notANumber, 0.0, 0.0}, 1.0).empty());
    EXPECT_TRUE(sphere({0.0, notANumber, 0.0}, 1.0).empty());
    EXPECT_TRUE(sphere({0.0, 0.0, notANumber}, 1.0).empty());
    EXPECT_FALSE(sphere({infinity, 0.0, 0.0}, notANumber).empty());
    EXPECT_FALSE(sphere({0.0, notANumber, 0.0}, 1.0).contains({0.0, 0.0, 0.0}));
}

TEST(SphereFence, OfRadiusZeroContainsExactlyItsCenter)
{
    for (const glm::dvec3& center : {glm::dvec3(0.0), glm::dvec3(2.7e6, -5.4e5, 0.1)}) {
        const SphereFence fence = sphere(center, 0.0);
        EXPECT_FALSE(fence.empty());
        EXPECT_TRUE(fence.contains(center));
        for (glm::length_t axis = 0; axis < 3; ++axis)
            for (const double way : {-infinity, infinity}) {
                glm::dvec3 next = center;
                next[axis] = std::nextafter(next[axis], way); // beside 0, by the smallest double there is
                EXPECT_FALSE(fence.contains(next)) << axis << " " << way;
            }
    }
}

TEST(SphereFence, ContainsThePointsOnIt)
{
    // x * x + y * y + z * z = r * r in integers, and times powers of two
    const double quadruples[][4] = {{0, 3, 4, 5}, {1, 2, 2, 3}, {2, 3, 6, 7}, {1, 4, 8, 9}, {6, 10, 15, 19}};
    int points = 0;
    for (const auto& q : quadruples)
        for (const double scale : {1.0, 1.0 / 1024.0, 65536.0, std::ldexp(1.0, 900), std::ldexp(1.0, -900)})
            for (int signs = 0; signs < 8; ++signs) {
                const glm::dvec3 way(signs & 1 ? -q[0] : q[0], signs & 2 ? -q[1] : q[1],
                                     signs & 4 ? -q[2] : q[2]);
                const glm::dvec3 center = scale == 1.0 ? glm::dvec3(2.7e6, 5.4e5, -4.9e6) : glm::dvec3(0.0);
                const double radius = q[3] * scale;
                ++points;
                EXPECT_TRUE(sphere(center, radius).contains(center + scale * way));
                EXPECT_FALSE(sphere(center, std::nextafter(radius, 0.0)).contains(center + scale * way));
            }
    std::printf("%d points on spheres, each in the sphere and out of the next smaller one\n", points);
}

TEST(SphereFence, OfARadiusThatIsNegativeOrNaNContainsNothing)
{
    EXPECT_FALSE(sphere({1.0, 2.0, 3.0}, -1.0).contains({1.0, 2.0, 3.0}));
    EXPECT_FALSE(sphere({1.0, 2.0, 3.0}, notANumber).contains({1.0, 2.0, 3.0}));
}

TEST(SphereFence, ContainsNoPointWithANaN)
{
    const SphereFence fence = sphere(glm::dvec3(0.0), 1e300);
    EXPECT_TRUE(fence.contains({1e299, -1e299, 1e299}));
    EXPECT_FALSE(fence.contains({notANumber, 0.0, 0.0}));
    EXPECT_FALSE(fence.contains({0.0, notANumber, 0.0}));
    EXPECT_FALSE(fence.contains({0.0, 1.0, notANumber}));
    EXPECT_FALSE(fence.contains({infinity, 0.0, 0.0}));
    EXPECT_FALSE(fence.contains({infinity, -infinity, 0.0}));
}

} // namespace
