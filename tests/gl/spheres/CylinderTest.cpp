#include "SurfaceDrawing.h"

#include <algorithm>
#include <cstdio>

// The cylinder triangle by triangle, as the geometry stage puts it out.
namespace {

using namespace surface_reference;

class CylinderTest : public SurfaceDrawing
{
protected:
    void prepare() override { useSurface("Cylinder"); }

    /// The largest difference from the triangles of the single strip, in its order; each triangle may begin
    /// with any of its corners.
    double differenceFromStrip(const std::vector<Vertex>& vertices) const
    {
        const std::vector<Triangle> expected = cylinder();
        EXPECT_EQ(vertices.size(), 3 * expected.size());
        if (vertices.size() != 3 * expected.size()) return INFINITY;
        double largest = 0.0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            double least = INFINITY;
            for (std::size_t first = 0; first < 3; ++first) {
                double difference = 0.0;
                for (std::size_t k = 0; k < 3; ++k) {
                    const Vertex& vertex = vertices[3 * i + (k + first) % 3];
                    const glm::dvec2 texture = glm::dvec2(vertex.texture) - expected[i][k].texture;
                    difference = std::max({difference, differenceFrom(expected[i][k], vertex),
                                           std::fabs(texture.x), std::fabs(texture.y)});
                }
                least = std::min(least, difference);
            }
            largest = std::max(largest, least);
        }
        return largest;
    }
};

TEST_F(CylinderTest, TrianglesAreThoseOfOneStripInItsOrder)
{
    const double difference = differenceFromStrip(captureSurface());
    std::printf("cylinder: 142 triangles, largest difference %.2g, tolerance 2e-6\n", difference);
    EXPECT_LT(difference, 2e-6);
    EXPECT_EQ(captureSurface().size(), 3u * 142);
}

TEST_F(CylinderTest, MatricesPlaceIt)
{
    place();
    const double difference = differenceFromStrip(captureSurface());
    std::printf("placed cylinder: 142 triangles, largest difference %.2g, tolerance 1e-5\n", difference);
    EXPECT_LT(difference, 1e-5);
}

TEST_F(CylinderTest, ViewPositionIsDividedByItsW)
{
    place();
    m_model[3] = {1.0f, -0.5f, 1.5f, 2.0f};
    m_view[0][3] = 0.125f;
    setMatrices();
    EXPECT_LT(differenceFromStrip(captureSurface()), 1e-5);
}

TEST_F(CylinderTest, PointDoesNotMoveIt)
{
    feed({5.0f, -6.0f, 7.0f});
    EXPECT_LT(differenceFromStrip(captureSurface()), 2e-6);
}

TEST_F(CylinderTest, EachInstanceIsAWholeCylinder)
{
    place();
    const std::vector<Vertex> vertices = captureSurface(3);
    ASSERT_EQ(vertices.size(), 3u * 3 * 142);
    for (std::ptrdiff_t i = 0; i < 3; ++i)
        EXPECT_LT(differenceFromStrip({vertices.begin() + 426 * i, vertices.begin() + 426 * (i + 1)}), 1e-5);
}

TEST_F(CylinderTest, TilesAreClockwiseSeenFromOutside)
{
    const std::vector<Vertex> vertices = captureSurface();
    int clockwise = 0;
    for (std::size_t i = 0; i < vertices.size(); i += 3) {
        const glm::dvec3 a(vertices[i].clip);
        const glm::dvec3 b(vertices[i + 1].clip);
        const glm::dvec3 c(vertices[i + 2].clip);
        const double turn = glm::dot(glm::cross(b - a, c - a), glm::dvec3(glm::dvec2(a + b + c), 0.0));
        ASSERT_GT(std::fabs(turn), 1e-3);
        clockwise += turn < 0.0;
    }
    // the strip leads from tile to tile by triangles that cover half a tile again, the other way round
    EXPECT_EQ(clockwise, 72);
}

TEST_F(CylinderTest, SurfaceClosesWithoutAGap)
{
    place();
    const std::vector<Vertex> vertices = captureSurface();
    std::vector<glm::vec4> seam[2];
    for (const Vertex& vertex : vertices)
        if (vertex.texture.x == 0.0f || vertex.texture.x == 1.0f)
            seam[vertex.texture.y == 1.0f].push_back(vertex.clip);
    for (const std::vector<glm::vec4>& end : seam) {
        ASSERT_FALSE(end.empty());
        for (const glm::vec4& position : end)
            EXPECT_EQ(position, end[0]);
    }
}

} // namespace
