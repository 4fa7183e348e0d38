#include "SurfaceDrawing.h"

#include <algorithm>
#include <cstdio>
#include <map>

// Spheres vertex by vertex, taken from the last stage before the fragments.
namespace {

using namespace surface_reference;

class SphereTest : public SurfaceDrawing
{
protected:
    /// The share of the way around and from pole to pole of each vertex, in the order of the capture.
    std::vector<glm::vec2> shares()
    {
        showShares();
        std::vector<glm::vec2> result;
        for (const Vertex& vertex : captureSurface())
            result.push_back(vertex.texture);
        return result;
    }
    std::size_t countTriangles(float outer, float inner)
    {
        setLevels(outer, inner);
        const std::size_t vertices = captureSurface().size();
        EXPECT_EQ(vertices % 3, 0u);
        return vertices / 3;
    }
    static Point at(const glm::vec2& share, const glm::dvec3& center)
    {
        const glm::dvec3 normal = onUnitSphere(double(share.x), double(share.y));
        return {center + normal, normal, glm::dvec2(share)};
    }
    static bool isPole(const glm::vec2& share) { return share.y == 0.0f || share.y == 1.0f; }
    /// Whether two corners lie in one point, which is so at the poles only.
    static bool isDegenerate(const glm::vec2* corners)
    {
        return std::count_if(corners, corners + 3, isPole) == 2;
    }
    /// Triangles of a square of cells whose rim is divided otherwise: two a cell inside, and around them a
    /// ring with one triangle for each edge on its two sides.
    static std::size_t expectedTriangles(std::size_t outer, std::size_t inner)
    {
        const std::size_t inside = inner - 2;
        return 2 * inside * inside + 4 * inside + 4 * outer;
    }
};

TEST_F(SphereTest, PositionsAndNormalsFollowTheFormula)
{
    const glm::vec3 center(0.5f, -2.0f, 1.25f);
    double largest = 0.0;
    int cases = 0;
    useSurface("SmoothSphere", center);
    place();
    showShares();
    for (const float level : {2.0f, 3.0f, 7.5f, 32.0f, 64.0f}) {
        setLevels(level, level);
        for (const Vertex& vertex : captureSurface()) {
            largest = std::max(largest, differenceFrom(at(vertex.texture, center), vertex));
            ++cases;
        }
    }
    std::printf("smooth sphere: %d vertices, largest difference %.2g, tolerance 1e-5\n", cases, largest);
    EXPECT_EQ(cases, 3 * 2 * (4 + 9 + 64 + 1024 + 4096));
    EXPECT_LT(largest, 1e-5);
}

// The normal of a facet is the one of its corners by the formula, so that it depends on nothing captured.
TEST_F(SphereTest, FacetsHaveOneNormalEachAndKeepTheirCorners)
{
    const glm::vec3 center(0.5f, -2.0f, 1.25f);
    double largest = 0.0;
    int cases = 0;
    int degenerate = 0;
    useSurface("Sphere", center);
    place();
    showShares();
    for (const float level : {2.0f, 3.0f, 7.5f, 32.0f, 64.0f}) {
        setLevels(level, level);
        const std::vector<Vertex> vertices = captureSurface();
        for (std::size_t i = 0; i < vertices.size(); i += 3) {
            Triangle facet;
            for (std::size_t k = 0; k < 3; ++k)
                facet[k] = at(vertices[i + k].texture, center);
            const glm::dvec3 normal = facetNormal(facet);
            degenerate += normal == glm::dvec3(0.0);
            for (std::size_t k = 0; k < 3; ++k) {
                facet[k].normal = normal;
                largest = std::max(largest, differenceFrom(facet[k], vertices[i + k]));
                ++cases;
            }
        }
    }
    std::printf("facets: %d vertices, largest difference %.2g, tolerance 1e-4\n", cases, largest);
    EXPECT_EQ(cases, 3 * 2 * (4 + 9 + 64 + 1024 + 4096));
    EXPECT_EQ(degenerate, 2 * (2 + 3 + 8 + 32 + 64)) << "one in each cell at a pole";
    // edges of length 0.05 with coordinates of 2.4: their direction is known to about 1e-5
    EXPECT_LT(largest, 1e-4);
}

TEST_F(SphereTest, TrianglesWithoutAreaHaveAZeroNormal)
{
    for (const glm::vec3& center : {glm::vec3(0.0f), glm::vec3(700.0f, -300.0f, 12.3f)}) {
        useSurface("Sphere", center);
        showShares();
        const std::vector<Vertex> vertices = captureSurface();
        for (std::size_t i = 0; i < vertices.size(); i += 3) {
            const glm::vec2 corners[3] = {vertices[i].texture, vertices[i + 1].texture,
                                          vertices[i + 2].texture};
            const float expected = isDegenerate(corners) ? 0.0f : 1.0f;
            for (std::size_t k = 0; k < 3; ++k)
                ASSERT_NEAR(glm::length(vertices[i + k].normal), expected, expected * 1e-5f);
        }
    }
}

TEST_F(SphereTest, FacetsPassPositionsAndTextureCoordinatesThrough)
{
    useSurface("SmoothSphere", glm::vec3(0.5f, -2.0f, 1.25f));
    place();
    const std::vector<Vertex> smooth = captureSurface();
    useSurface("Sphere", glm::vec3(0.5f, -2.0f, 1.25f));
    place();
    const std::vector<Vertex> flat = captureSurface();
    ASSERT_EQ(flat.size(), smooth.size());
    for (std::size_t i = 0; i < flat.size(); ++i) {
        ASSERT_EQ(flat[i].texture, smooth[i].texture);
        for (int k = 0; k < 4; ++k)
            ASSERT_NEAR(flat[i].clip[k], smooth[i].clip[k], 1e-6f);
        for (int k = 0; k < 3; ++k)
            ASSERT_NEAR(flat[i].eye[k], smooth[i].eye[k], 1e-6f);
    }
}

TEST_F(SphereTest, MatricesAreIdentitiesUnlessTold)
{
    for (const char* name : {"SmoothSphere", "Sphere"}) {
        useSurface(name);
        showShares();
        for (const Vertex& vertex : captureSurface()) {
            const glm::dvec3 point = at(vertex.texture, glm::dvec3(0.0)).position;
            ASSERT_LT(glm::distance(glm::dvec4(vertex.clip), glm::dvec4(point, 1.0)), 1e-6);
            ASSERT_LT(glm::distance(glm::dvec3(vertex.eye), point), 1e-6);
            const float length = glm::length(vertex.normal);
            ASSERT_TRUE(length == 0.0f || std::fabs(length - 1.0f) < 1e-5f);
        }
    }
}

TEST_F(SphereTest, NumberOfTrianglesFollowsTheLevels)
{
    // a level that is not above 1 is replaced by 32; between two whole numbers the higher one counts
    const std::pair<float, std::size_t> levels[] = {{1.0f, 32},  {0.0f, 32}, {-5.0f, 32}, {1.001f, 2},
                                                    {2.0f, 2},   {3.0f, 3},  {7.5f, 8},   {31.0f, 31},
                                                    {32.0f, 32}, {64.0f, 64}};
    for (const char* name : {"SmoothSphere", "Sphere"}) {
        useSurface(name);
        EXPECT_EQ(captureSurface().size() / 3, 2048u) << "unless told";
        for (const auto& [level, segments] : levels)
            EXPECT_EQ(countTriangles(level, level), 2 * segments * segments) << level;
        for (const auto& [outer, outerSegments] : levels)
            for (const auto& [inner, innerSegments] : levels)
                EXPECT_EQ(countTriangles(outer, inner), expectedTriangles(outerSegments, innerSegments))
                    << outer << ", " << inner;
    }
}

TEST_F(SphereTest, EachCellOfTheGridHasTwoClockwiseTriangles)
{
    useSurface("SmoothSphere");
    for (const int level : {2, 3, 8, 32, 64}) {
        setLevels(float(level), float(level));
        const std::vector<glm::vec2> corners = shares();
        std::map<std::pair<int, int>, int> cells;
        for (std::size_t i = 0; i < corners.size(); i += 3) {
            const glm::dvec2 a(corners[i]);
            const glm::dvec2 b(corners[i + 1]);
            const glm::dvec2 c(corners[i + 2]);
            const double area = 0.5 * ((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x));
            ASSERT_NEAR(area * level * level, -0.5, 1e-4);
            const glm::dvec2 middle = (a + b + c) / 3.0 * double(level);
            ++cells[{int(middle.x), int(middle.y)}];
        }
        EXPECT_EQ(cells.size(), std::size_t(level * level));
        for (const auto& [cell, triangles] : cells)
            ASSERT_EQ(triangles, 2) << cell.first << ", " << cell.second;
    }
}

TEST_F(SphereTest, TrianglesAreClockwiseSeenFromOutside)
{
    for (const char* name : {"SmoothSphere", "Sphere"}) {
        useSurface(name);
        const std::vector<Vertex> vertices = captureSurface();
        int facing = 0;
        for (std::size_t i = 0; i < vertices.size(); i += 3) {
            const glm::dvec3 a(vertices[i].clip);
            const glm::dvec3 b(vertices[i + 1].clip);
            const glm::dvec3 c(vertices[i + 2].clip);
            const double turn = glm::dot(glm::cross(b - a, c - a), a + b + c);
            ASSERT_LT(turn, 1e-9);
            facing += turn < -1e-6;
        }
        EXPECT_EQ(facing, 2048 - 64) << "all but those at the poles";
    }
}

TEST_F(SphereTest, SurfaceClosesWithoutAGap)
{
    useSurface("SmoothSphere");
    place();
    for (const float level : {3.0f, 8.0f, 32.0f, 64.0f}) {
        setLevels(level, level);
        showShares();
        std::map<float, std::vector<glm::vec4>> seam; // by the share from pole to pole
        std::vector<glm::vec4> poles[2];
        for (const Vertex& vertex : captureSurface()) {
            const glm::vec2& share = vertex.texture;
            if (share.x == 0.0f || share.x == 1.0f) seam[share.y].push_back(vertex.clip);
            if (isPole(share)) poles[share.y == 1.0f].push_back(vertex.clip);
        }
        EXPECT_EQ(seam.size(), std::size_t(level) + 1);
        for (const auto& [height, positions] : seam)
            for (const glm::vec4& position : positions)
                ASSERT_EQ(position, positions[0]) << height;
        for (const std::vector<glm::vec4>& pole : poles) {
            EXPECT_GE(pole.size(), std::size_t(level));
            for (const glm::vec4& position : pole)
                ASSERT_EQ(position, pole[0]);
        }
    }
}

TEST_F(SphereTest, TextureRunsFromTheUpperPoleToTheLowerUnlessTold)
{
    for (const char* name : {"SmoothSphere", "Sphere"}) {
        useSurface(name);
        double largest = 0.0;
        for (const Vertex& vertex : captureSurface()) {
            const glm::dvec3 point = onUnitSphere(double(vertex.texture.x), 1.0 - double(vertex.texture.y));
            largest = std::max(largest, glm::distance(glm::dvec3(vertex.clip), point));
        }
        EXPECT_LT(largest, 1e-6);
    }
}

TEST_F(SphereTest, VerticalTextureCoordinateIsLinearAndClamped)
{
    const glm::vec2 factors[] = {{-1.0f, 1.0f},  {1.0f, 0.0f},   {-2.0f, 1.5f}, {3.0f, -0.75f},
                                 {0.25f, 0.25f}, {-1.0f, -2.0f}, {0.5f, 3.0f}};
    double largest = 0.0;
    int cases = 0;
    int clamped = 0;
    for (const char* name : {"SmoothSphere", "Sphere"}) {
        useSurface(name);
        const std::vector<glm::vec2> share = shares();
        for (const glm::vec2& factor : factors) {
            set("uTextureK", factor.x);
            set("uTextureB", factor.y);
            const std::vector<Vertex> vertices = captureSurface();
            ASSERT_EQ(vertices.size(), share.size());
            for (std::size_t i = 0; i < vertices.size(); ++i) {
                const double linear = double(factor.x) * double(share[i].y) + double(factor.y);
                const double expected = std::clamp(linear, 0.0, 1.0);
                clamped += expected != linear;
                ASSERT_EQ(vertices[i].texture.x, share[i].x);
                largest = std::max(largest, std::fabs(double(vertices[i].texture.y) - expected));
                ++cases;
            }
        }
    }
    std::printf("texture of spheres: %d vertices, %d clamped, largest difference %.2g, tolerance 1e-6\n",
                cases, clamped, largest);
    EXPECT_GT(clamped, cases / 4);
    EXPECT_LT(largest, 1e-6);
}

} // namespace
