#include "GlueDrawing.h"

#include <set>

// Which layer a pixel of the glue mask shows, and what the items' masks leave out.
namespace {

constexpr int X = 40;
constexpr int Y = 21;

/// What covers the pixel (X, Y) with a layer, at the same depth as all others.
struct Cover
{
    int layer;
    const char* program;
    unsigned mode;
    unsigned emitted; ///< what the geometry stage puts out
    std::vector<glm::vec3> points;
    std::uint32_t mask;
};

std::vector<Cover> covers()
{
    const glm::vec3 at(centreOf(X, Y, 64), 0.0f);
    const glm::vec3 right(0.5f, 0, 0);
    const glm::vec3 up(0, 0.5f, 0);
    const std::vector<glm::vec3> segment = {at - right, at + right};
    const std::vector<glm::vec3> around = {at - right - up, at + right - up, at + up};
    return {{PointItem, "GluePoints", GL_POINTS, GL_POINTS, {at}, bit(PointItem)},
            {Node, "GluePoints", GL_POINTS, GL_POINTS, {at}, bit(Node)},
            {Node, "GlueLineNodes", GL_LINES, GL_POINTS, {at - right, at}, ~0u},
            {MidNode, "GlueLineNodes", GL_LINES, GL_POINTS, segment, ~0u},
            {Edge, "GlueLines", GL_LINES, GL_LINES, segment, ~0u},
            {CloudPoint, "GluePoints", GL_POINTS, GL_POINTS, {at}, bit(CloudPoint)},
            {FaceNode, "GlueFaceNodes", GL_TRIANGLES, GL_POINTS, {at + up, at, at + right}, ~0u},
            {FaceEdge, "GlueFaceEdges", GL_TRIANGLES, GL_LINES, {at - right, at + right, at + up}, ~0u},
            {Face, "GlueFaces", GL_TRIANGLES, GL_TRIANGLES, around, ~0u},
            {RawCoords, "GlueFaces", GL_TRIANGLES, GL_TRIANGLES, around, bit(RawCoords)}};
}

class GluePriorityTest : public GlueDrawing
{
protected:
    void start(const Cover& cover)
    {
        select(cover.program);
        set("glue_mask", cover.mask);
        feed(cover.points);
    }
    std::uint32_t markOf(int layer) const
    {
        return layer == Face ? 0x3F800000u : ~static_cast<std::uint32_t>(layer);
    }
};

TEST_F(GluePriorityTest, HigherLayerWinsWhateverIsDrawnFirst)
{
    int cases = 0;
    const std::vector<Cover> all = covers();
    for (const Cover& first : all)
        for (const Cover& second : all) {
            start(first);
            drawFed(first.mode);
            ASSERT_EQ(markAt(X, Y), markOf(first.layer));
            start(second);
            drawOver(second.mode);
            ASSERT_EQ(markAt(X, Y), markOf(std::max(first.layer, second.layer)))
                << first.layer << " then " << second.layer;
            ++cases;
        }
    std::printf("glue priorities: %d pairs of layers in order\n", cases);
}

TEST_F(GluePriorityTest, TriangleShowsNodesOverEdgesOverItsFace)
{
    const auto corner = [](int x, int y) { return glm::vec3(centreOf(x, y, Size), 0.25f); };
    const std::vector<glm::vec3> triangle = {corner(5, 50), corner(55, 50), corner(5, 10)};
    select("GlueFaceNodes");
    set("pen_width", 3.0f);
    feed(triangle);
    drawFed(GL_TRIANGLES);
    for (const char* name : {"GlueFaceEdges", "GlueFaces"}) {
        select(name);
        drawOver(GL_TRIANGLES);
    }
    int nodes = 0;
    int edges = 0;
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x) {
            nodes += layerAt(x, y) == FaceNode;
            edges += layerAt(x, y) == FaceEdge;
        }
    EXPECT_EQ(nodes, 27);
    EXPECT_EQ(layerAt(6, 51), FaceNode);
    EXPECT_EQ(layerAt(30, 50), FaceEdge);
    EXPECT_EQ(layerAt(5, 30), FaceEdge);
    EXPECT_EQ(layerAt(30, 30), FaceEdge);
    // 47 pixels between the nodes below, 37 at the left, some 48 along the diagonal
    EXPECT_NEAR(edges, 47 + 37 + 48, 3);
    EXPECT_EQ(markAt(15, 40), 0x3F800000u);
    EXPECT_TRUE(isUntouched(40, 20));
}

// Every program under masks of a single bit, and of all bits but one.
TEST_F(GluePriorityTest, ClearedBitGivesNothing)
{
    std::map<std::string, std::set<int>> layers;
    for (const Cover& cover : covers())
        layers[cover.program].insert(cover.layer);
    int cases = 0;
    for (const Cover& cover : covers())
        for (int layer = 0; layer < 32; ++layer) {
            start(cover);
            set("glue_mask", bit(layer));
            drawFed(cover.mode);
            const bool isExpected = layers[cover.program].count(layer) != 0;
            ASSERT_EQ(touchedCount() > 0, isExpected) << cover.program << ' ' << layer;
            for (int y = 0; y < Size; ++y)
                for (int x = 0; x < Size; ++x)
                    ASSERT_TRUE(isUntouched(x, y) || markAt(x, y) == markOf(layer))
                        << cover.program << ' ' << layer;
            set("glue_mask", ~bit(layer));
            drawFed(cover.mode);
            for (int y = 0; y < Size; ++y)
                for (int x = 0; x < Size; ++x)
                    ASSERT_TRUE(isUntouched(x, y) || markAt(x, y) != markOf(layer))
                        << cover.program << ' ' << layer;
            const bool hasOther = layers[cover.program].size() > static_cast<std::size_t>(isExpected);
            ASSERT_EQ(touchedCount() > 0, hasOther) << cover.program << ' ' << layer;
            cases += 2;
        }
    std::printf("glue masks: %d masks\n", cases);
}

TEST_F(GluePriorityTest, EmptyMaskGivesNothing)
{
    for (const Cover& cover : covers()) {
        start(cover);
        set("glue_mask", 0u);
        drawFed(cover.mode);
        EXPECT_EQ(touchedCount(), 0) << cover.program;
    }
}

TEST_F(GluePriorityTest, MaskHasAllBitsAtFirst)
{
    for (const Cover& cover : covers()) {
        useCaptured(cover.program);
        feed(cover.points);
        for (const Vertex& vertex : captureFed(cover.mode, cover.emitted))
            EXPECT_EQ(vertex.mask, 0xFFFFFFFFu) << cover.program;
    }
}

// At z = 0 the offset stands alone, with all of its digits, after the division by w.
TEST_F(GluePriorityTest, LayersLieAMillionthApart)
{
    double largest = 0.0;
    int cases = 0;
    for (const Cover& cover : covers()) {
        start(cover);
        drawFed(cover.mode);
        const double depth = double(depths[Y * Size + X]);
        largest = std::max(largest, std::abs(0.5 - 0.5e-6 * cover.layer - depth));
        ++cases;
    }
    const double tolerance = 3e-8; // half a step of a depth near 0.5
    EXPECT_LE(largest, tolerance);
    std::printf("glue depths: %d cases, largest difference %.2g, tolerance %g\n", cases, largest, tolerance);
}

TEST_F(GluePriorityTest, OffsetIsMeasuredAfterTheDivisionByW)
{
    glm::mat4 projection(1.0f);
    projection[0] = {1, 0, 0, 1}; // w = x
    projection[2] = {0, 0, 0, 0};
    projection[3] = {0, 0, 0, 0};
    double largest = 0.0;
    int cases = 0;
    const std::pair<const char*, int> programs[] = {{"GluePoints", PointItem}, {"GlueFaceNodes", FaceNode}};
    for (const auto& [name, layer] : programs) {
        useCaptured(name);
        set("projection", projection);
        std::vector<glm::vec3> points;
        for (int i = 0; i < 999; ++i)
            points.push_back({random(0.01f, 1000.0f), 0.0f, random(-1000.0f, 1000.0f)});
        feed(points);
        const unsigned mode = layer == PointItem ? GL_POINTS : GL_TRIANGLES;
        for (const Vertex& vertex : captureFed(mode, GL_POINTS)) {
            const double offset = double(vertex.clip.z) / double(vertex.clip.w);
            largest = std::max(largest, std::abs(offset / (-1e-6 * layer) - 1.0));
            ++cases;
        }
    }
    EXPECT_EQ(cases, 2 * 999);
    const double tolerance = 3e-7;
    EXPECT_LE(largest, tolerance);
    std::printf("glue offsets: %d cases, largest relative difference %.2g, tolerance %g\n", cases, largest,
                tolerance);
}

} // namespace
