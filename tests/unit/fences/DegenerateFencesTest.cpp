// Polygons that are hardly any, by the thousand: no crash, and the documented answer.
#include "DegenerateRings.h"

#include <QtCore/QElapsedTimer>

namespace {

/// Parity by a division, of the polygon as the fence keeps it; the place is on no border by chance.
bool isInside(const std::vector<glm::vec2>& polygon, long double x, long double y)
{
    bool inside = false;
    for (std::size_t i = 0; i + 1 < polygon.size(); ++i) {
        const long double ax = polygon[i].x, ay = polygon[i].y, bx = polygon[i + 1].x, by = polygon[i + 1].y;
        if ((ay > y) != (by > y) && x < ax + (bx - ax) * ((y - ay) / (by - ay))) inside = !inside;
    }
    return inside;
}

template <typename Fence>
void expectSensible(const Fence& fence, const Ring& ring, int kind)
{
    EXPECT_EQ(fence.empty(), kind == degenerate_rings::WithNaN || kind == degenerate_rings::TwoPoints);
    EXPECT_EQ(fence.fence().size(), fence.empty() ? 0u : ring.size());
    EXPECT_EQ(fence.getNearFence().size(), fence.fence().size());
    EXPECT_EQ(fence.getFarFence().size(), fence.fence().size());
    EXPECT_EQ(fence.getNodes().size(), fence.empty() ? 0u : 2u);
    for (const glm::dvec3& point : fence.getRay())
        EXPECT_TRUE(std::isfinite(point.x + point.y + point.z));
}

TEST(DegenerateFences, AnswerAsIfTheyWereProper)
{
    Dice dice(1);
    int polygons = 0, empty = 0, points = 0, inside = 0, different = 0;
    for (; polygons < 1000; ++polygons) {
        const int kind = polygons % degenerate_rings::kinds;
        const Ring ring = degenerate_rings::make(dice, kind);
        Frustum3D swept = frustum({}, ring, 1.0, 4.0, 1.0);
        Prism3D straight = prism({}, ring, 3.0);
        expectSensible(swept, ring, kind);
        expectSensible(straight, ring, kind);
        empty += swept.empty();
        const double half = kind == degenerate_rings::Huge ? 1e30 : 1.0;
        for (int i = 0; i < 100; ++i) {
            const float x = float(dice.between(-half, half)), y = float(dice.between(-half, half));
            const bool expected = isInside(swept.fence(), x, y);
            different += swept.contains({x, y, 1.0}) != expected;
            const glm::dvec4 q = straight.matrix() * glm::dvec4(x, y, 0.0, 1.0);
            different += straight.contains({x, y, 0.0}) != isInside(straight.fence(), q.x, q.y);
            points += 2;
            inside += expected;
        }
        swept.movePlane({1.0, 2.0, 3.0}, polygons % 2 == 0);
        straight.movePlane({1.0, 2.0, 3.0}, polygons % 2 == 0);
        EXPECT_FALSE(swept.contains({degenerate_rings::nan, 0.0, 2.0}));
        EXPECT_FALSE(straight.contains({degenerate_rings::nan, 0.0, 2.0}));
    }
    EXPECT_EQ(different, 0);
    std::printf("%d polygons, %d of them none: %d points, %d inside, %d different\n", polygons, empty, points,
                inside, different);
}

TEST(DegenerateFences, OfCollinearPointsContainNothing)
{
    for (const glm::dvec2& way : {glm::dvec2(1.0, 0.0), glm::dvec2(0.0, 1.0), glm::dvec2(3.0, 2.0)}) {
        const Ring ring = closed({-way, way, 0.5 * way, -0.25 * way});
        const Frustum3D swept = frustum({}, ring, 1.0, 4.0, 1.0);
        const Prism3D straight = prism({}, ring, 3.0);
        EXPECT_FALSE(swept.empty());
        EXPECT_FALSE(straight.empty());
        for (int x = -16; x <= 16; ++x)
            for (int y = -16; y <= 16; ++y) {
                EXPECT_FALSE(swept.contains({x / 4.0, y / 4.0, 1.0}));
                EXPECT_FALSE(straight.contains({x / 4.0, y / 4.0, 0.0}));
            }
    }
}

TEST(DegenerateFences, OfTenThousandPointsAnswerInTheirTime)
{
    Ring ring;
    for (int i = 0; i < 10000; ++i) {
        const double a = i * 2.0 * 3.14159265358979 / 10000.0, r = i % 2 ? 1.0 : 0.9;
        ring.emplace_back(r * std::cos(a), r * std::sin(a));
    }
    const Frustum3D swept = frustum({}, closed(ring), 1.0, 4.0, 1.0);
    const Prism3D straight = prism({}, closed(ring), 3.0);
    ASSERT_EQ(swept.fence().size(), 10001u);
    ASSERT_EQ(straight.fence().size(), 10001u);
    QElapsedTimer timer;
    timer.start();
    Dice dice(2);
    int inside = 0;
    for (int i = 0; i < 500; ++i) {
        const double a = dice.between(0.0, 6.28), r = dice.oneIn(2) ? 0.89 : 1.01;
        EXPECT_EQ(swept.contains({r * std::cos(a), r * std::sin(a), 1.0}), r < 1.0);
        EXPECT_EQ(straight.contains({r * std::cos(a), r * std::sin(a), 1.0}), r < 1.0);
        inside += r < 1.0;
    }
    EXPECT_GT(inside, 100);
    std::printf("1000 questions to polygons of 10,000 points: %d ms\n", int(timer.elapsed()));
}

TEST(DegenerateFences, WithoutAngleOfViewContainNothing)
{
    const Frustum3D fence = frustum({}, square(1.0), 1.0, 4.0, 0.0);
    EXPECT_TRUE(fence.empty());
    EXPECT_FALSE(fence.contains({0.0, 0.0, 2.0}));
}

} // namespace
