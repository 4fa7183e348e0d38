#include <readers/common/PolygonTriangulator.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

namespace {

using Points = std::vector<glm::dvec3>;

struct Result
{
    std::size_t count = 0;
    double area = 0.0;         ///< of all triangles along the normal
    double absoluteArea = 0.0; ///< the same without signs: larger where triangles overlap or turn over
};

Result triangulate(const Points& points, const glm::dvec3& normal, std::size_t expectedFanned = 0)
{
    readers::PolygonTriangulator triangulator;
    std::vector<std::uint32_t> triangles;
    triangulator.triangulate(points, triangles);
    EXPECT_EQ(triangulator.getFannedCount(), expectedFanned);
    Result result;
    result.count = triangles.size() / 3;
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const glm::dvec3 a = points.at(triangles[i]);
        const double area =
            0.5 *
            glm::dot(glm::cross(points.at(triangles[i + 1]) - a, points.at(triangles[i + 2]) - a), normal);
        result.area += area;
        result.absoluteArea += std::abs(area);
    }
    return result;
}

const glm::dvec3 up(0.0, 0.0, 1.0);

} // namespace

TEST(PolygonTriangulator, TriangleStays)
{
    const Result result = triangulate({{0, 0, 0}, {2, 0, 0}, {0, 1, 0}}, up);
    EXPECT_EQ(result.count, 1u);
    EXPECT_DOUBLE_EQ(result.area, 1.0);
}

TEST(PolygonTriangulator, FewerThanThreePointsGiveNothing)
{
    EXPECT_EQ(triangulate({{0, 0, 0}, {2, 0, 0}}, up).count, 0u);
}

TEST(PolygonTriangulator, ConvexPolygonBecomesAFan)
{
    readers::PolygonTriangulator triangulator;
    std::vector<std::uint32_t> triangles;
    triangulator.triangulate({{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}, triangles);
    EXPECT_EQ(triangles, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));
}

// The fan from the first corner would cover what lies outside.
TEST(PolygonTriangulator, ArrowheadIsDividedAtItsNotch)
{
    const Result result = triangulate({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {3, 1, 0}}, up);
    EXPECT_EQ(result.count, 2u);
    EXPECT_DOUBLE_EQ(result.area, 4.0);
    EXPECT_DOUBLE_EQ(result.absoluteArea, 4.0);
}

TEST(PolygonTriangulator, CombWithSixNotches)
{
    Points comb = {{0, -1, 0}, {12, -1, 0}};
    for (int i = 12; i >= 0; --i)
        comb.push_back({double(i), i % 2 == 0 ? 3.0 : 0.0, 0});
    // the base of 12 x 1, and above it 12 triangles of 3 high and 1 wide
    const Result result = triangulate(comb, up);
    EXPECT_EQ(result.count, comb.size() - 2);
    EXPECT_NEAR(result.area, 30.0, 1e-12);
    EXPECT_NEAR(result.absoluteArea, 30.0, 1e-12);
}

TEST(PolygonTriangulator, WindsAsThePolygonInEveryPlane)
{
    const Points plane = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {3, 1, 0}};
    for (int axis = 0; axis < 3; ++axis) {
        for (const bool reversed : {false, true}) {
            Points turned;
            for (const glm::dvec3& p : plane) {
                glm::dvec3 q(0.0);
                q[(axis + 1) % 3] = p.x;
                q[(axis + 2) % 3] = p.y;
                turned.push_back(q);
            }
            if (reversed) std::reverse(turned.begin(), turned.end());
            glm::dvec3 normal(0.0);
            normal[axis] = reversed ? -1.0 : 1.0;
            const Result result = triangulate(turned, normal);
            EXPECT_DOUBLE_EQ(result.area, 4.0) << axis << reversed;
            EXPECT_DOUBLE_EQ(result.absoluteArea, 4.0) << axis << reversed;
        }
    }
}

// A hole joined to the outside by a cut: two corners stand twice.
TEST(PolygonTriangulator, KeyholePolygon)
{
    const Points points = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0, 0, 0},
                           {1, 1, 0}, {1, 3, 0}, {3, 3, 0}, {3, 1, 0}, {1, 1, 0}};
    const Result result = triangulate(points, up);
    EXPECT_EQ(result.count, points.size() - 2);
    EXPECT_NEAR(result.area, 12.0, 1e-12);
    EXPECT_NEAR(result.absoluteArea, 12.0, 1e-12);
}

TEST(PolygonTriangulator, StarThatTurnsTwiceIsNotTakenForConvex)
{
    Points star;
    for (int i = 0; i < 5; ++i) {
        const double angle = i * 2 * 2 * 3.14159265358979323846 / 5;
        star.push_back({std::cos(angle), std::sin(angle), 0});
    }
    EXPECT_EQ(triangulate(star, up).count, 3u);
}

TEST(PolygonTriangulator, AllCornersInOnePlaceOrOnALine)
{
    EXPECT_EQ(triangulate(Points(6, {1, 2, 3}), up).count, 4u);
    EXPECT_EQ(triangulate({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {1, 0, 0}}, up).count, 2u);
}

TEST(PolygonTriangulator, FarFromTheOrigin)
{
    Points points = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {3, 1, 0}};
    for (glm::dvec3& p : points)
        p += glm::dvec3(2.7e6, 1.2e6, 400.0);
    EXPECT_NEAR(triangulate(points, up).area, 4.0, 1e-9);
}

TEST(PolygonTriangulator, HugeWindingPolygonIsFannedInTime)
{
    Points comb;
    constexpr int count = 200000;
    for (int i = 0; i < count; ++i)
        comb.push_back({double(i % 1000), double((i * 7919) % 1013), 0});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(triangulate(comb, up, 1).count, count - 2u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}
