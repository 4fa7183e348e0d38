#include "GlueDrawing.h"

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

// Faces in glue masks.
namespace {

using Triangle = std::array<glm::vec3, 3>;
using Wide = glm::vec<3, long double>;

/// The plane a x + b y + c z + 1 = 0 through the corners: Cramer's rule for the three equations.
Wide planeThrough(const Triangle& corners)
{
    const Wide p0(corners[0]);
    const Wide p1(corners[1]);
    const Wide p2(corners[2]);
    const long double determinant = glm::dot(p0, glm::cross(p1, p2));
    return -(glm::cross(p0, p1) + glm::cross(p1, p2) + glm::cross(p2, p0)) / determinant;
}

class GlueFacesTest : public GlueDrawing
{
protected:
    void feedTriangles(const std::vector<Triangle>& triangles)
    {
        std::vector<glm::vec3> points;
        for (const Triangle& corners : triangles)
            points.insert(points.end(), corners.begin(), corners.end());
        feed(points);
    }
    /// Captures the planes of the faces and compares them.
    void compare(const char* what, const std::vector<Triangle>& triangles)
    {
        useCaptured("GlueFaces");
        feedTriangles(triangles);
        const std::vector<Vertex> vertices = captureFed(GL_TRIANGLES, GL_TRIANGLES);
        ASSERT_EQ(vertices.size(), 3 * triangles.size());
        double largest = 0.0;
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            const Wide expected = planeThrough(triangles[i / 3]);
            const long double difference = glm::length(Wide(vertices[i].coords) - expected);
            largest = std::max(largest, double(difference / glm::length(expected)));
            ASSERT_EQ(vertices[i].layer, Face);
            ASSERT_EQ(glm::vec2(vertices[i].clip), glm::vec2(triangles[i / 3][i % 3]));
        }
        const double tolerance = 1e-7; // a float's rounding in each coordinate
        EXPECT_LE(largest, tolerance);
        std::printf("%s: %zu cases, largest relative difference %.2g, tolerance %g\n", what, triangles.size(),
                    largest, tolerance);
    }
};

TEST_F(GlueFacesTest, PlanesOfRandomFaces)
{
    std::vector<Triangle> triangles;
    for (int i = 0; i < 10000; ++i)
        triangles.push_back({randomPoint(1000.0f), randomPoint(1000.0f), randomPoint(1000.0f)});
    compare("glue faces", triangles);
}

// Of a size of centimetres, a kilometre from the origin.
TEST_F(GlueFacesTest, PlanesOfSmallFacesFarAway)
{
    std::vector<Triangle> triangles;
    for (int i = 0; i < 10000; ++i) {
        const glm::vec3 place = randomPoint(1000.0f);
        triangles.push_back({place, place + randomPoint(0.05f), place + randomPoint(0.05f)});
    }
    compare("glue small faces", triangles);
}

TEST_F(GlueFacesTest, PlanesOfThinFaces)
{
    std::vector<Triangle> triangles;
    for (int i = 0; i < 10000; ++i) {
        const glm::vec3 from = randomPoint(1000.0f);
        const glm::vec3 to = randomPoint(1000.0f);
        triangles.push_back({from, to, glm::mix(from, to, random(0.1f, 0.9f)) + randomPoint(0.01f)});
    }
    compare("glue thin faces", triangles);
}

// Corners of some hundreds, planes that pass the origin at thousandths.
TEST_F(GlueFacesTest, PlanesNearTheOrigin)
{
    std::vector<Triangle> triangles;
    for (int i = 0; i < 10000; ++i) {
        const glm::vec3 a = randomPoint(500.0f);
        const glm::vec3 b = randomPoint(500.0f);
        triangles.push_back({a, b, -0.5f * (a + b) + randomPoint(0.01f)});
    }
    compare("glue faces near the origin", triangles);
}

TEST_F(GlueFacesTest, PlaneOfAKnownFace)
{
    useCaptured("GlueFaces");
    // on x = 4, y = -2 and z = 0.5
    feedTriangles({{glm::vec3(4, 0, 0), {4, 1, 0}, {4, 0, 1}},
                   {glm::vec3(0, -2, 0), {5, -2, 1}, {3, -2, 2}},
                   {glm::vec3(1, 1, 0.5f), {2, 1, 0.5f}, {1, 3, 0.5f}},
                   {glm::vec3(1, 3, 0.5f), {2, 1, 0.5f}, {1, 1, 0.5f}}});
    const std::vector<Vertex> vertices = captureFed(GL_TRIANGLES, GL_TRIANGLES);
    ASSERT_EQ(vertices.size(), 12u);
    EXPECT_EQ(vertices[0].coords, glm::vec3(-0.25f, 0, 0));
    EXPECT_EQ(vertices[3].coords, glm::vec3(0, 0.5f, 0));
    EXPECT_EQ(vertices[6].coords, glm::vec3(0, 0, -2));
    EXPECT_EQ(vertices[9].coords, glm::vec3(0, 0, -2)) << "the same from the other side";
}

TEST_F(GlueFacesTest, PlaneIsThatOfTheScene)
{
    useCaptured("GlueFaces");
    glm::mat4 model(1.0f);
    model[3] = {0, 0, 8, 1};
    set("model", model);
    set("view", glm::lookAt(glm::vec3(9, 7, 5), glm::vec3(0), glm::vec3(0, 0, 1)));
    set("projection", glm::perspective(1.0f, 1.5f, 1.0f, 50.0f));
    feedTriangles({{glm::vec3(0, 0, 0), {1, 0, 0}, {0, 1, 0}}});
    const std::vector<Vertex> vertices = captureFed(GL_TRIANGLES, GL_TRIANGLES);
    ASSERT_EQ(vertices.size(), 3u);
    EXPECT_EQ(vertices[0].coords, glm::vec3(0, 0, -0.125f));
}

// Such a plane is taken to pass at 1e-15: the direction is kept, and all numbers are finite.
TEST_F(GlueFacesTest, PlaneThroughTheOriginKeepsItsDirection)
{
    useCaptured("GlueFaces");
    feedTriangles({{glm::vec3(0, 0, 0), {1, 0, 0}, {0, 1, 0}},
                   {glm::vec3(5, 7, 0), {9, -7, 0}, {3, 2, 0}},
                   {glm::vec3(1, -1, 5), {2, -2, 1}, {3, -3, 2}}});
    const std::vector<Vertex> vertices = captureFed(GL_TRIANGLES, GL_TRIANGLES);
    ASSERT_EQ(vertices.size(), 9u);
    const glm::dvec3 expected[3] = {{0, 0, 1}, {0, 0, -1}, {std::sqrt(0.5), std::sqrt(0.5), 0}};
    for (std::size_t i = 0; i < 3; ++i) {
        const glm::vec3 plane = vertices[3 * i].coords;
        EXPECT_TRUE(std::isfinite(glm::dot(plane, plane)));
        EXPECT_NEAR(double(glm::length(plane)) / 1e15, 1.0, 1e-6);
        EXPECT_LE(glm::length(glm::cross(glm::normalize(glm::dvec3(plane)), expected[i])), 1e-7);
    }
}

TEST_F(GlueFacesTest, FaceWithoutAreaGivesNothing)
{
    useCaptured("GlueFaces");
    feedTriangles({{glm::vec3(1, 2, 3), {1, 2, 3}, {4, 5, 6}},
                   {glm::vec3(1, 1, 1), {2, 2, 2}, {3, 3, 3}},
                   {glm::vec3(1, 0, 1), {0, 1, 1}, {0, 0, 1}}});
    const std::vector<Vertex> vertices = captureFed(GL_TRIANGLES, GL_TRIANGLES);
    ASSERT_EQ(vertices.size(), 3u) << "the third only";
    EXPECT_EQ(vertices[0].coords, glm::vec3(0, 0, -1));
}

/// A slanted face in perspective, and how it is drawn.
class GlueFacePixelsTest : public GlueFacesTest
{
protected:
    const Triangle slanted = {glm::vec3(-1.5f, -2, -4), {6, -3, -12}, {1, 7, -20}};
    const glm::mat4 projection = glm::perspective(1.0f, 1.0f, 1.0f, 50.0f);

    void drawSlanted(std::uint32_t mask)
    {
        set("projection", projection);
        set("glue_mask", mask);
        feedTriangles({slanted});
        drawFed(GL_TRIANGLES);
    }
    /// Where the ray through the centre of the pixel meets the face.
    glm::dvec3 surfaceAt(int x, int y) const
    {
        const glm::dvec2 centre(centreOf(x, y, Size));
        const glm::dvec3 ray(centre.x / double(projection[0][0]), centre.y / double(projection[1][1]), -1.0);
        return ray * (-1.0 / glm::dot(glm::dvec3(planeThrough(slanted)), ray));
    }
};

TEST_F(GlueFacePixelsTest, PixelsHoldThePlane)
{
    const glm::dvec3 expected(planeThrough(slanted));
    for (const char* fragment : {"GlueMask.face2face.fragment", "GlueMask.fragment"}) {
        use(recipe("faces", {"GlueMask.vertex", "GlueMask.face2face.geom", fragment}));
        drawSlanted(~0u);
        EXPECT_GT(touchedCount(), 500);
        const glm::vec3 plane = coordsAt(32, 32);
        EXPECT_LE(glm::length(glm::dvec3(plane) - expected), 1e-7 * glm::length(expected));
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                if (isUntouched(x, y)) continue;
                ASSERT_TRUE(areSameBits(coordsAt(x, y), plane));
                ASSERT_EQ(markAt(x, y), 0x3F800000u);
            }
    }
}

TEST_F(GlueFacePixelsTest, WithoutFacesPixelsHoldTheSurface)
{
    use("GlueFaces");
    drawSlanted(bit(RawCoords));
    double largest = 0.0;
    int cases = 0;
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x) {
            if (isUntouched(x, y)) continue;
            ASSERT_EQ(layerAt(x, y), RawCoords);
            const glm::dvec3 expected = surfaceAt(x, y);
            largest =
                std::max(largest, glm::length(glm::dvec3(coordsAt(x, y)) - expected) / glm::length(expected));
            ++cases;
        }
    const double tolerance = 2e-5;
    EXPECT_GT(cases, 500);
    EXPECT_LE(largest, tolerance);
    std::printf("glue raw coordinates: %d pixels, largest relative difference %.2g, tolerance %g\n", cases,
                largest, tolerance);
}

// The ray through a pixel meets the plane that is read there where the surface is.
TEST_F(GlueFacePixelsTest, FacesWinOverRawCoordinates)
{
    use("GlueFaces");
    drawSlanted(bit(RawCoords) | bit(Face));
    EXPECT_EQ(markAt(32, 32), 0x3F800000u);
    const glm::dvec3 plane(coordsAt(32, 32));
    EXPECT_NEAR(glm::dot(plane, surfaceAt(20, 30)), -1.0, 1e-6);
}

} // namespace
