#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cmath>
#include <random>
#include <set>

// Faces and lines that are selected by their nodes: with round points, as they are drawn, and with square
// ones where the pixels of wide points are counted.
namespace {

struct Kind
{
    const char* program; ///< in ProgramList.h
    const char* geometry;
    unsigned mode;
    int corners;
};

const Kind faceKind = {"SelectFaceNodes", "Selection.face2points.geom", GL_TRIANGLES, 3};
const Kind lineKind = {"SelectLineNodes", "Selection.line2points.geom", GL_LINES, 2};

class NodeSelectionTest : public ShaderDrawing, public ::testing::WithParamInterface<Kind>
{
protected:
    void useSquarePoints(const std::vector<std::string>& defines = {})
    {
        use(recipe("square points", {"common.vertex", GetParam().geometry, "mono.fragment"}, defines));
        setColors({1.0f, 0.0f, 0.0f, 1.0f});
    }
    /// The corners of one shape, in the middles of three pixels or two of them.
    void feedShape(float z = 0.25f)
    {
        std::vector<float> values;
        for (const auto& [x, y] : m_pixels)
            values.insert(values.end(), {inView(x), -inView(y), z});
        values.resize(3 * static_cast<std::size_t>(GetParam().corners));
        attribute(0, 3, values);
    }
    void drawShape(int instances = 1) { draw(GetParam().mode, GetParam().corners, instances); }
    static float inView(int pixel) { return (float(pixel) + 0.5f) / 32.0f - 1.0f; }
    std::vector<std::pair<int, int>> corners() const { return {m_pixels, m_pixels + GetParam().corners}; }

private:
    static constexpr std::pair<int, int> m_pixels[3] = {{10, 12}, {50, 20}, {30, 55}};
};

INSTANTIATE_TEST_SUITE_P(Kinds, NodeSelectionTest, ::testing::Values(faceKind, lineKind),
                         [](const auto& kind) { return std::string(kind.param.program); });

TEST_P(NodeSelectionTest, MaskShowsTheNodesAndNothingBetween)
{
    use(GetParam().program);
    setColors({1.0f, 0.0f, 0.0f, 1.0f});
    set("draw_mode", SelectionMask);
    feedShape(0.3f);
    for (const glm::uvec2 id : {glm::uvec2(7, 0), {0xFFFFFFFF, 1}, {3, 0x80000001}}) {
        set("item_id", id);
        drawShape();
        EXPECT_EQ(touchedCount(), GetParam().corners);
        for (const auto& [x, y] : corners()) {
            EXPECT_EQ(word(x, y, 0), depthBits(x, y));
            EXPECT_EQ(word(x, y, 1), id.x);
            EXPECT_EQ(word(x, y, 2), id.y);
            EXPECT_NEAR(depths[static_cast<std::size_t>(y * Size + x)], 0.65f, 1e-6f);
        }
    }
}

TEST_P(NodeSelectionTest, NodesAreAsWideAsThePen)
{
    useSquarePoints();
    set("pen_width", 5.0f);
    feedShape();
    drawShape();
    EXPECT_EQ(touchedCount(), 25 * GetParam().corners);
    for (const auto& [x, y] : corners()) {
        EXPECT_EQ(pixel(x - 2, y - 2), QColor(255, 0, 0));
        EXPECT_EQ(pixel(x + 2, y + 2), QColor(255, 0, 0));
    }
}

TEST_P(NodeSelectionTest, SelectionBufferGetsTheItemsBitWhenANodeIsInside)
{
    use(GetParam().program);
    setColors({1.0f, 0.0f, 0.0f, 1.0f});
    set("draw_mode", SelectionBuffer);
    set("item_index", 37);
    feedShape();
    for (const auto& [x, y] : corners()) {
        beginSelection();
        set("selection_rect", glm::vec4(x, Size - 1 - y, x + 1, Size - y));
        drawShape();
        EXPECT_EQ(touchedCount(), 0);
        EXPECT_EQ(selectedWords()[1], 1u << 5) << x << ' ' << y;
    }
    beginSelection();
    set("selection_rect", glm::vec4(13.0f, 13.0f, 45.0f, 48.0f)); // between the nodes
    drawShape();
    EXPECT_EQ(selectedWords(), std::vector<std::uint32_t>(SelectionWords, 0));
}

TEST_P(NodeSelectionTest, FlagsReachTheFragments)
{
    useSquarePoints();
    setColors({1.0f, 0.0f, 0.0f, 1.0f}, {0.0f, 1.0f, 0.0f, 1.0f});
    feedShape();
    set("item_flags", -2);
    drawShape();
    for (const auto& [x, y] : corners())
        EXPECT_EQ(pixel(x, y), QColor(0, 255, 0));
    set("item_flags", -3);
    drawShape();
    EXPECT_EQ(touchedCount(), 0);
}

TEST_P(NodeSelectionTest, EachNodeHasItsOwnColour)
{
    useSquarePoints({"RX_USE_PER_VERTEX_COLOR"});
    feedShape();
    std::vector<float> colors = {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1};
    colors.resize(4 * static_cast<std::size_t>(GetParam().corners));
    attribute(1, 4, colors);
    drawShape();
    const QColor expected[] = {QColor(255, 0, 0), QColor(0, 255, 0), QColor(0, 0, 255)};
    const QColor* color = expected;
    for (const auto& [x, y] : corners())
        EXPECT_EQ(pixel(x, y), *color++);
}

TEST_P(NodeSelectionTest, InstancesKeepTheirIdsAndIndices)
{
    useSquarePoints({"RX_USE_INSTANCED_DRAW", "RX_USE_INSTANCE_POSITION"});
    set("draw_mode", SelectionMask);
    feedShape();
    instanceFloats(4, 3, {0, 0, 0, 0.125f, 0, 0}); // four pixels
    instanceIntegers(5, 1, GL_INT, {0xFFFFFFFF, 0xFFFFFFFF});
    instanceIntegers(6, 2, GL_UNSIGNED_INT, {11, 12, 21, 22});
    drawShape(2);
    EXPECT_EQ(touchedCount(), 2 * GetParam().corners);
    for (const auto& [x, y] : corners()) {
        EXPECT_EQ(word(x, y, 1), 11u);
        EXPECT_EQ(word(x, y, 2), 12u);
        EXPECT_EQ(word(x + 4, y, 1), 21u);
        EXPECT_EQ(word(x + 4, y, 2), 22u);
    }
    set("draw_mode", SelectionBuffer);
    set("selection_rect", glm::vec4(0, 0, 64, 64));
    set("item_index", 4);
    drawShape(2);
    EXPECT_EQ(selectedWords()[0], 1u << 4 | 1u << 5);
}

// Against the pixels of the corners, counted: some out of view, some behind the camera.
TEST_P(NodeSelectionTest, RandomShapesShowTheirVisibleCorners)
{
    useSquarePoints();
    const glm::mat4 projection = glm::perspective(1.57079633f, 1.0f, 1.0f, 100.0f);
    set("projection", projection);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> share(-1.3f, 1.3f);
    std::uniform_real_distribution<float> depth(-20.0f, 110.0f);
    int shapes = 0;
    int nodes = 0;
    int hidden = 0;
    for (; shapes < 300; ++shapes) {
        std::set<std::pair<int, int>> expected;
        std::vector<float> values;
        for (int i = 0; i < GetParam().corners; ++i) {
            const float z = depth(random);
            // in the middle of a pixel
            const auto onPixel = [&] { return (std::floor(share(random) * 32.0f) + 0.5f) / 32.0f; };
            const float x = onPixel();
            const float y = onPixel();
            values.insert(values.end(), {x * z, y * z, -z});
            const bool isSeen = z > 1.0f && z < 100.0f && std::abs(x) < 1.0f && std::abs(y) < 1.0f;
            hidden += !isSeen;
            if (isSeen) expected.insert({int(32.0f + 32.0f * x), int(32.0f - 32.0f * y)});
        }
        attribute(0, 3, values);
        drawShape();
        nodes += static_cast<int>(expected.size());
        ASSERT_EQ(touchedCount(), static_cast<int>(expected.size())) << shapes;
        for (const auto& [x, y] : expected)
            ASSERT_FALSE(isUntouched(x, y)) << shapes;
    }
    EXPECT_GT(nodes, 100);
    EXPECT_GT(hidden, 100);
    std::printf("%s: %d shapes, %d nodes seen, %d not\n", GetParam().program, shapes, nodes, hidden);
}

const std::vector<glm::vec3> outOfView = {{1.01f, 0, 0}, {-1.01f, 0, 0}, {0, 1.01f, 0},  {0, -1.01f, 0},
                                          {0, 0, 1.01f}, {0, 0, -1.01f}, {3, 2, 0},      {NAN, 0, 0},
                                          {0, NAN, 0},   {0, 0, NAN},    {NAN, NAN, NAN}};

// Also when a point of their width would reach into the view.
TEST_P(NodeSelectionTest, WideNodesOutOfViewAreNotDrawn)
{
    useSquarePoints();
    set("pen_width", 9.0f);
    for (const glm::vec3& out : outOfView) {
        attribute(0, 3, {out.x, out.y, out.z, 0, 0, 0, out.x, out.y, out.z});
        drawShape();
        EXPECT_EQ(touchedCount(), 81) << out.x << ' ' << out.y << ' ' << out.z;
    }
}

TEST_P(NodeSelectionTest, NodesOutOfViewGoNoFurther)
{
    use(recipe("captured", {"common.vertex", GetParam().geometry, "mono.fragment"}), {"gl_Position"});
    for (const glm::vec3& out : outOfView) {
        attribute(0, 3, {out.x, out.y, out.z, 1, -1, 1, out.x, out.y, out.z});
        const std::vector<float> expected = {1, -1, 1, 1}; // the limit itself is in view
        EXPECT_EQ(capture(GetParam().mode, GetParam().corners, GL_POINTS, 4, 3), expected);
    }
}

// The corners of separate faces count on from face to face; an inner node of a strip of lines has one id.
TEST_P(NodeSelectionTest, PrimitiveIdsNumberTheNodes)
{
    QTemporaryDir folder;
    QFile file(folder.filePath("id.fragment.glsl"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#version 430 core\nlayout(location = 0) out vec4 id;\n"
               "void main() { id = unpackUnorm4x8(uint(gl_PrimitiveID)); }\n");
    file.close();
    use(ProgramRecipe{
        "ids", {shaderPath("common.vertex"), shaderPath(GetParam().geometry), file.fileName()}, {}});
    const bool isLine = GetParam().corners == 2;
    const int nodes = 6;
    std::vector<float> values;
    for (int i = 0; i < nodes; ++i)
        values.insert(values.end(), {inView(8 + 8 * i), -inView(10 + 3 * (i % 2)), 0.0f});
    attribute(0, 3, values);
    draw(isLine ? GL_LINE_STRIP : GL_TRIANGLES, nodes);
    for (int i = 0; i < nodes; ++i)
        EXPECT_EQ(word(8 + 8 * i, 10 + 3 * (i % 2), 0), static_cast<unsigned>(i));
}

} // namespace
