#include "GlueDrawing.h"

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

// Nodes and points in glue masks.
namespace {

class GlueNodesTest : public GlueDrawing
{
protected:
    /// Sets matrices that take whole numbers up to 100 to whole numbers in the scene, exactly, and have
    /// all of them in view from aside.
    void place()
    {
        m_model[0] = {0, 2, 0, 0};
        m_model[1] = {-3, 0, 0, 0};
        m_model[2] = {0, 0, 5, 0};
        m_model[3] = {100, -20, 3, 1};
        m_view = glm::lookAt(glm::vec3(1350, -1050, 750), glm::vec3(10, 20, 30), glm::vec3(0, 0, 1));
        m_projection = glm::perspective(1.0f, 1.5f, 1.0f, 5000.0f);
        set("model", m_model);
        set("view", m_view);
        set("projection", m_projection);
    }
    std::vector<glm::vec3> wholePoints(int count)
    {
        std::vector<glm::vec3> points = randomPoints(count, 100.0f);
        for (glm::vec3& point : points)
            point = glm::round(point);
        return points;
    }
    static glm::dvec3 inScene(const glm::dvec3& p) { return {100 - 3 * p.y, -20 + 2 * p.x, 3 + 5 * p.z}; }
    /// How far a vertex lies from where the formula puts this place of the scene, as a share of its w.
    double clipDifference(const Vertex& vertex, const glm::dvec3& place, int layer) const
    {
        glm::dvec4 expected = glm::dmat4(m_projection) * glm::dmat4(m_view) * glm::dvec4(place, 1.0);
        expected.z -= layer * 1e-6 * expected.w;
        return glm::length(glm::dvec4(vertex.clip) - expected) / expected.w;
    }
    void expectVertex(const Vertex& vertex, const glm::dvec3& place, int layer)
    {
        ++m_cases;
        m_largest = std::max(m_largest, clipDifference(vertex, place, layer));
        ASSERT_TRUE(areSameBits(vertex.coords, glm::vec3(place)));
        ASSERT_EQ(vertex.layer, layer);
        ASSERT_EQ(vertex.mask, 0xFFFFFFFFu);
    }
    void expectCloseAndReport(const char* what, int cases) const
    {
        const double tolerance = 1e-6;
        EXPECT_EQ(m_cases, cases);
        EXPECT_LE(m_largest, tolerance);
        std::printf("%s: %d cases, coordinates bit for bit, positions differ by %.2g at most, tolerance %g\n",
                    what, m_cases, m_largest, tolerance);
    }

private:
    glm::mat4 m_model{1.0f};
    glm::mat4 m_view{1.0f};
    glm::mat4 m_projection{1.0f};
    double m_largest = 0.0;
    int m_cases = 0;
};

TEST_F(GlueNodesTest, PixelsHoldCoordinatesBitForBit)
{
    std::vector<glm::vec3> points;
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x) {
            const glm::vec2 centre = centreOf(x, y, Size);
            points.push_back({centre.x + Pixel * random(-0.3f, 0.3f), centre.y + Pixel * random(-0.3f, 0.3f),
                              random(-0.99f, 0.99f)});
        }
    use("GluePoints");
    feed(points);
    drawFed(GL_POINTS);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const int x = static_cast<int>(i) % Size;
        const int y = static_cast<int>(i) / Size;
        ASSERT_TRUE(areSameBits(coordsAt(x, y), points[i])) << x << ' ' << y;
        ASSERT_EQ(markAt(x, y), ~9u) << x << ' ' << y;
    }
    std::printf("glue points: %zu pixels, no bit differs\n", points.size());
}

TEST_F(GlueNodesTest, PointsLieWhereTheModelPutsThem)
{
    useCaptured("GluePoints");
    place();
    const std::vector<glm::vec3> points = wholePoints(1000);
    feed(points);
    const std::vector<Vertex> vertices = captureFed(GL_POINTS, GL_POINTS);
    ASSERT_EQ(vertices.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        expectVertex(vertices[i], inScene(points[i]), PointItem);
    expectCloseAndReport("glue points", 1000);
}

TEST_F(GlueNodesTest, SegmentsBecomeTheirNodesAndMiddles)
{
    useCaptured("GlueLineNodes");
    place();
    const std::vector<glm::vec3> points = wholePoints(1000);
    feed(points);
    const std::vector<Vertex> vertices = captureFed(GL_LINES, GL_POINTS);
    ASSERT_EQ(vertices.size(), 1500u);
    for (std::size_t i = 0; i < 500; ++i) {
        const glm::dvec3 start = inScene(points[2 * i]);
        const glm::dvec3 end = inScene(points[2 * i + 1]);
        expectVertex(vertices[3 * i], start, Node);
        expectVertex(vertices[3 * i + 1], end, Node);
        expectVertex(vertices[3 * i + 2], 0.5 * (start + end), MidNode);
    }
    expectCloseAndReport("glue line nodes", 1500);
}

TEST_F(GlueNodesTest, FacesBecomeTheirCorners)
{
    useCaptured("GlueFaceNodes");
    place();
    const std::vector<glm::vec3> points = wholePoints(999);
    feed(points);
    const std::vector<Vertex> vertices = captureFed(GL_TRIANGLES, GL_POINTS);
    ASSERT_EQ(vertices.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        expectVertex(vertices[i], inScene(points[i]), FaceNode);
    expectCloseAndReport("glue face nodes", 999);
}

TEST_F(GlueNodesTest, MiddleIsRoundedOnce)
{
    useCaptured("GlueLineNodes");
    set("projection", glm::scale(glm::mat4(1.0f), glm::vec3(0.0009f))); // all of them in view
    const std::vector<glm::vec3> points = randomPoints(2000, 1000.0f);
    feed(points);
    const std::vector<Vertex> vertices = captureFed(GL_LINES, GL_POINTS);
    ASSERT_EQ(vertices.size(), 3000u);
    for (std::size_t i = 0; i < 1000; ++i) {
        const glm::dvec3 middle = 0.5 * (glm::dvec3(points[2 * i]) + glm::dvec3(points[2 * i + 1]));
        ASSERT_TRUE(areSameBits(vertices[3 * i + 2].coords, glm::vec3(middle))) << i;
    }
    std::printf("glue middles: 1000 cases, no bit differs\n");
}

// All pixels of a point bear the vertex, and not a place beside it.
TEST_F(GlueNodesTest, PointIsAsWideAsThePen)
{
    const glm::vec3 at(0.1234567f, -0.2345678f, 0.3456789f);
    const std::map<std::string, std::vector<glm::vec3>> shapes = {
        {"GluePoints", {at}},
        {"GlueLineNodes", {at, {3, 3, 0}}},
        {"GlueFaceNodes", {at, {3, 3, 0}, {3, 2, 0}}}};
    const unsigned modes[] = {GL_TRIANGLES, GL_LINES, GL_POINTS}; // in the order of the names
    const unsigned* mode = modes;
    for (const auto& [name, points] : shapes) {
        select(name);
        set("pen_width", 5.0f);
        feed(points);
        drawFed(*mode++);
        EXPECT_EQ(touchedCount(), 25) << name;
        int same = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                same += areSameBits(coordsAt(x, y), at);
        EXPECT_EQ(same, 25) << name;
    }
}

TEST_F(GlueNodesTest, NodesOutOfViewGoNoFurther)
{
    const glm::vec3 in(0.5f, -0.5f, 0.5f);
    const std::vector<glm::vec3> outside = {{1.01f, 0, 0},  {-1.01f, 0, 0}, {0, 1.01f, 0},
                                            {0, -1.01f, 0}, {0, 0, 1.01f},  {0, 0, -1.01f}};
    for (const glm::vec3& out : outside) {
        useCaptured("GlueFaceNodes");
        feed({out, in, 3.0f * out});
        const std::vector<Vertex> corners = captureFed(GL_TRIANGLES, GL_POINTS);
        ASSERT_EQ(corners.size(), 1u);
        EXPECT_EQ(corners[0].coords, in);
        useCaptured("GluePoints");
        feed({out, in});
        EXPECT_EQ(captureFed(GL_POINTS, GL_POINTS).size(), 1u);
        useCaptured("GlueLineNodes");
        feed({out, 3.0f * out, out, -out});
        const std::vector<Vertex> middles = captureFed(GL_LINES, GL_POINTS);
        ASSERT_EQ(middles.size(), 1u);
        EXPECT_EQ(middles[0].layer, MidNode);
        EXPECT_EQ(middles[0].coords, glm::vec3(0));
    }
}

TEST_F(GlueNodesTest, NodesWithoutAPlaceGoNoFurther)
{
    const glm::vec3 in(0.5f, -0.5f, 0.5f);
    for (const glm::vec3& none : {glm::vec3(NAN), {NAN, 0, 0}, {0, NAN, 0}, {0, 0, NAN}}) {
        useCaptured("GlueFaceNodes");
        feed({none, in, none});
        EXPECT_EQ(captureFed(GL_TRIANGLES, GL_POINTS).size(), 1u);
        useCaptured("GluePoints");
        feed({none, in});
        EXPECT_EQ(captureFed(GL_POINTS, GL_POINTS).size(), 1u);
        useCaptured("GlueLineNodes");
        feed({none, in});
        EXPECT_EQ(captureFed(GL_LINES, GL_POINTS).size(), 1u) << "no middle either";
    }
}

// Points in the camera's own plane have no place on the screen.
TEST_F(GlueNodesTest, NodesAtTheCameraGoNoFurther)
{
    useCaptured("GluePoints");
    feed({{0, 0, 0}});
    EXPECT_EQ(captureFed(GL_POINTS, GL_POINTS).size(), 1u);
    set("projection", glm::mat4(0.0f));
    EXPECT_EQ(captureFed(GL_POINTS, GL_POINTS).size(), 0u);
}

TEST_F(GlueNodesTest, PenIsOnePixelAtFirst)
{
    use("GluePoints");
    feed({{0.3f, 0.3f, 0.0f}});
    drawFed(GL_POINTS);
    EXPECT_EQ(touchedCount(), 1);
}

TEST_F(GlueNodesTest, MaskTellsWhatPointsAre)
{
    use("GluePoints");
    feed({{centreOf(20, 20, Size), 0.0f}});
    const auto layerUnder = [this](std::uint32_t mask) {
        set("glue_mask", mask);
        drawFed(GL_POINTS);
        return isUntouched(20, 20) ? -1 : layerAt(20, 20);
    };
    EXPECT_EQ(layerUnder(0xFFFFFFFFu), PointItem);
    EXPECT_EQ(layerUnder(0xFFFFFFDFu), PointItem); // items without nodes
    EXPECT_EQ(layerUnder(0x300u), PointItem);      // of one node
    EXPECT_EQ(layerUnder(0x1C0u), Node);           // of two
    EXPECT_EQ(layerUnder(0x1DEu), Node);           // of more
    EXPECT_EQ(layerUnder(bit(CloudPoint) | bit(Node)), Node);
    EXPECT_EQ(layerUnder(bit(CloudPoint) | bit(PointItem)), PointItem);
    EXPECT_EQ(layerUnder(bit(CloudPoint)), CloudPoint);
    EXPECT_EQ(layerUnder(~(bit(CloudPoint) | bit(Node) | bit(PointItem))), -1);
}

// A node behind the camera is out of sight; the other one and the middle are drawn where they lie.
TEST_F(GlueNodesTest, NodeBehindTheCameraIsNotDrawn)
{
    use("GlueLineNodes");
    set("projection", glm::perspective(1.57079633f, 1.0f, 1.0f, 100.0f));
    const glm::vec3 front(-8.0f, 2.0f, -20.0f);
    const glm::vec3 behind(4.0f, 2.0f, 4.0f); // its place on screen would be (-1, -0.5)
    feed({front, behind});
    drawFed(GL_LINES);
    EXPECT_EQ(touchedCount(), 2);
    // x / -z and y / -z: front at (-0.4, 0.1), the middle (-2, 2, -8) at (-0.25, 0.25)
    EXPECT_EQ(layerAt(19, 28), Node);
    EXPECT_TRUE(areSameBits(coordsAt(19, 28), front));
    // on the corner of four pixels: the driver chooses one
    int middles = 0;
    for (int y = 23; y <= 24; ++y)
        for (int x = 23; x <= 24; ++x)
            middles += layerAt(x, y) == MidNode && areSameBits(coordsAt(x, y), {-2, 2, -8});
    EXPECT_EQ(middles, 1);
}

} // namespace
