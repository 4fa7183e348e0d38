// The rule by which both swept fences decide whether a place is in their polygon, against integers.
#include "FenceShapes.h"

#include <cstdint>

namespace {

constexpr int extent = 20;

struct Place
{
    std::int64_t x, y;
};
using Corners = std::vector<Place>;

/// Parity along the vertical through the place, which is first moved a little to the right and, by much less,
/// up, so that it is on no border: what the rule says of borders, put as a place beside them. The units are
/// 2^-20; corners are whole units of 2^20 and at most 2 * extent apart.
bool isInside(const Corners& corners, const Place& place)
{
    const std::int64_t one = 1 << 20;
    const std::int64_t x = place.x * one + (1 << 11), y = place.y * one + 1;
    bool inside = false;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        Place from = corners[i], to = corners[(i + 1) % corners.size()];
        if (from.x > to.x) std::swap(from, to);
        if (from.x * one > x || to.x * one < x) continue;
        const std::int64_t width = to.x - from.x;
        const std::int64_t crossing = from.y * one * width + (to.y - from.y) * (x - from.x * one);
        if (crossing > y * width) inside = !inside;
    }
    return inside;
}

Corners randomCorners(Dice& dice, int count, int half)
{
    Corners corners;
    for (int i = 0; i < count; ++i) {
        const int x = dice.between(-half, half);
        corners.push_back({x, dice.between(-half, half)});
    }
    return corners;
}

Ring ringOf(const Corners& corners)
{
    Ring ring;
    for (const Place& corner : corners)
        ring.emplace_back(double(corner.x), double(corner.y));
    return closed(ring);
}

/// Random polygons, of few places, so that many corners coincide and many edges run along the grid.
template <typename MakeFence, typename ToPoint>
void compareOnGrid(const char* shape, MakeFence makeFence, ToPoint toPoint)
{
    Dice dice(7);
    int points = 0, inside = 0, different = 0;
    for (int polygon = 0; polygon < 600; ++polygon) {
        // 4, 8 or 16 corners: their mean is a double without rounding
        const Corners corners = randomCorners(dice, 4 << dice.between(0, 2), dice.oneIn(2) ? extent : 4);
        const auto fence = makeFence(ringOf(corners));
        EXPECT_FALSE(fence.empty());
        for (int x = -extent - 1; x <= extent + 1; ++x)
            for (int y = -extent - 1; y <= extent + 1; ++y) {
                const bool expected = isInside(corners, {x, y});
                ++points;
                inside += expected;
                different += fence.contains(toPoint(x, y)) != expected;
            }
    }
    EXPECT_EQ(different, 0);
    std::printf("%s: %d grid points, %d inside, %d different from integers\n", shape, points, inside,
                different);
}

TEST(EvenOdd, OfAFrustumIsExactOnTheGrid)
{
    compareOnGrid(
        "frustum", [](const Ring& ring) { return frustum({}, ring, 1.0, 2.0, 1.0); },
        [](int x, int y) { return glm::dvec3(x, y, 1.0); });
}

TEST(EvenOdd, OfAPrismIsExactOnTheGrid)
{
    compareOnGrid(
        "prism", [](const Ring& ring) { return prism({}, ring, 1.0); },
        [](int x, int y) { return glm::dvec3(x, y, 0.0); });
}

TEST(EvenOdd, LeftAndLowerEdgesAreInsideRightAndUpperOnesAreNot)
{
    const Frustum3D fence = frustum({}, square(1.0), 1.0, 2.0, 1.0);
    for (const double t : {-0.5, 0.0, 0.5}) {
        EXPECT_TRUE(fence.contains({-1.0, t, 1.0}));
        EXPECT_TRUE(fence.contains({t, -1.0, 1.0}));
        EXPECT_FALSE(fence.contains({1.0, t, 1.0}));
        EXPECT_FALSE(fence.contains({t, 1.0, 1.0}));
    }
    EXPECT_TRUE(fence.contains({-1.0, -1.0, 1.0}));
    EXPECT_FALSE(fence.contains({1.0, -1.0, 1.0}));
    EXPECT_FALSE(fence.contains({1.0, 1.0, 1.0}));
    EXPECT_FALSE(fence.contains({-1.0, 1.0, 1.0}));
}

TEST(EvenOdd, ACornerAtThePlacesHeightCountsOnce)
{
    // a diamond: the ray from its middle meets the right corner, one from the left of it two corners
    const Prism3D fence = prism({}, closed({{0.0, -2.0}, {2.0, 0.0}, {0.0, 2.0}, {-2.0, 0.0}}), 1.0);
    EXPECT_TRUE(fence.contains({0.0, 0.0, 0.0}));
    EXPECT_TRUE(fence.contains({-2.0, 0.0, 0.0}));
    EXPECT_FALSE(fence.contains({-3.0, 0.0, 0.0}));
    EXPECT_FALSE(fence.contains({2.0, 0.0, 0.0}));
    EXPECT_FALSE(fence.contains({0.0, 2.0, 0.0}));
    EXPECT_FALSE(fence.contains({0.0, -2.0, 0.0})); // two edges begin above it, and it is left of neither
}

TEST(EvenOdd, WhatIsWoundRoundTwiceIsOutside)
{
    // a pentagram
    Ring ring;
    for (int i = 0; i < 5; ++i)
        ring.emplace_back(std::sin(i * 4.0 * 3.14159265358979 / 5.0),
                          std::cos(i * 4.0 * 3.14159265358979 / 5.0));
    const Prism3D fence = prism({}, closed(ring), 1.0);
    EXPECT_FALSE(fence.contains({0.0, 0.0, 0.0}));
    EXPECT_TRUE(fence.contains({0.0, 0.8, 0.0}));
    EXPECT_FALSE(fence.contains({0.0, -0.8, 0.0}));
}

TEST(EvenOdd, NeighboursShareAnEdgeWithoutGapOrOverlap)
{
    // a triangle fan about the origin, the shared edges run through in opposite ways
    Dice dice(3);
    const std::vector<glm::dvec2> rim = {{3.0, 0.25}, {0.7, 2.9}, {-2.1, 1.3}, {-1.9, -2.2}, {2.0, -2.4}};
    std::vector<Frustum3D> parts;
    for (std::size_t i = 0; i < rim.size(); ++i)
        parts.push_back(
            frustum({}, closed({glm::dvec2(0.0), rim[i], rim[(i + 1) % rim.size()]}), 1.0, 2.0, 1.0));
    int points = 0;
    for (int i = 0; i < 20000; ++i) {
        const glm::dvec2 end = rim[std::size_t(dice.between(0, 4))];
        const glm::dvec2 xy = end * (0.5 / std::sqrt(glm::dot(end, end)) * dice.between(0.0, 1.0));
        int holders = 0; // of a place on, or by rounding beside, an edge
        for (const Frustum3D& part : parts)
            holders += part.contains({xy, 1.0});
        points += holders == 1;
    }
    EXPECT_EQ(points, 20000);
}

} // namespace
