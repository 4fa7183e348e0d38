#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

// One draw call of several items: what a uniform tells of a single item comes an instance from attributes.
namespace {

constexpr std::uint32_t Normal = 0xFFFFFFFFu;      // -1
constexpr std::uint32_t Highlighted = 0xFFFFFFFEu; // -2
constexpr std::uint32_t Invisible = 0xFFFFFFFDu;   // -3

const QColor blue = QColor::fromRgb(51, 102, 204);
const QColor green = QColor::fromRgb(0, 255, 0);

class InstancedDrawingTest : public ShaderDrawing
{
protected:
    void use(std::vector<std::string> defines)
    {
        defines.insert(defines.begin(), "RX_USE_INSTANCED_DRAW");
        ShaderDrawing::use(
            {"instanced", {shaderPath("common.vertex"), shaderPath("mono.fragment")}, defines});
        setColors({0.2f, 0.4f, 0.8f, 1.0f});
    }
    void usePositions() { use({"RX_USE_INSTANCE_POSITION"}); }
    /// A square of 8 pixels whose lower left corner is in the middle of the view.
    void makeSquare() { rectangle(0.0f, 0.0f, 0.25f, 0.25f); }
    /// Checks that exactly the squares of 8 pixels with these upper left corners are drawn.
    void expectSquares(const std::vector<std::pair<QPoint, QColor>>& squares)
    {
        for (const auto& [corner, color] : squares)
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < 8; ++x)
                    ASSERT_EQ(pixel(corner.x() + x, corner.y() + y), color)
                        << corner.x() << ", " << corner.y();
        EXPECT_EQ(touchedCount(), 64 * static_cast<int>(squares.size()));
    }
};

TEST_F(InstancedDrawingTest, PositionsShiftEachInstance)
{
    usePositions();
    makeSquare();
    instanceFloats(4, 3, {0, 0, 0, -0.5f, 0.25f, 0, 0.5f, -0.75f, 0});
    instanceIntegers(5, 1, GL_INT, {Normal, Normal, Normal});
    draw(GL_TRIANGLE_STRIP, 4, 3);
    expectSquares({{{32, 24}, blue}, {{16, 16}, blue}, {{48, 48}, blue}});
}

TEST_F(InstancedDrawingTest, PositionsAreAddedAfterTheModelMatrix)
{
    usePositions();
    rectangle(0.0f, 0.0f, 0.125f, 0.125f);
    set("model", glm::scale(glm::mat4(1.0f), glm::vec3(2.0f)));
    instanceFloats(4, 3, {-0.5f, 0.25f, 0.25f});
    instanceIntegers(5, 1, GL_INT, {Normal});
    draw(GL_TRIANGLE_STRIP, 4, 1);
    expectSquares({{{16, 16}, blue}});
    EXPECT_EQ(depths[16 * Size + 16], 0.625f);
}

TEST_F(InstancedDrawingTest, MatricesApplyAfterTheModelMatrix)
{
    use({});
    rectangle(0.0f, 0.0f, 0.5f, 0.5f);
    set("model", glm::translate(glm::mat4(1.0f), glm::vec3(1.0f, -1.0f, 0.0f)));
    const glm::mat4 half = glm::scale(glm::mat4(1.0f), glm::vec3(0.5f));
    // x to y, y to -x: the square from (0.5, -0.5) becomes one from (0.25, 0.5)
    const glm::mat4 turned = glm::rotate(glm::mat4(1.0f), glm::radians(90.0f), glm::vec3(0, 0, 1)) * half;
    instanceMatrices(4, {half, turned});
    instanceIntegers(8, 1, GL_INT, {Normal, Normal});
    draw(GL_TRIANGLE_STRIP, 4, 2);
    expectSquares({{{48, 40}, blue}, {{40, 8}, blue}});
}

TEST_F(InstancedDrawingTest, EachInstanceHasItsFlags)
{
    usePositions();
    makeSquare();
    instanceFloats(4, 3, {0, 0, 0, -0.5f, 0.25f, 0, 0.5f, -0.75f, 0});
    instanceIntegers(5, 1, GL_INT, {Highlighted, Invisible, Normal});
    draw(GL_TRIANGLE_STRIP, 4, 3);
    expectSquares({{{32, 24}, green}, {{48, 48}, blue}});
}

TEST_F(InstancedDrawingTest, FlagsAndIdsFollowTheMatrices)
{
    use({});
    makeSquare();
    instanceMatrices(4, {glm::mat4(1.0f), glm::translate(glm::mat4(1.0f), glm::vec3(-0.5f, 0.25f, 0.0f))});
    instanceIntegers(8, 1, GL_INT, {Normal, Highlighted});
    instanceIntegers(9, 2, GL_UNSIGNED_INT, {0x01000001u, 0x80000003u, 0xFFFFFFFFu, 7u});
    draw(GL_TRIANGLE_STRIP, 4, 2);
    expectSquares({{{32, 24}, blue}, {{16, 16}, green}});
    set("draw_mode", 1);
    draw(GL_TRIANGLE_STRIP, 4, 2);
    EXPECT_EQ(word(35, 28, 1), 0x01000001u);
    EXPECT_EQ(word(35, 28, 2), 0x80000003u);
    EXPECT_EQ(word(20, 20, 1), 0xFFFFFFFFu);
    EXPECT_EQ(word(20, 20, 2), 7u);
}

TEST_F(InstancedDrawingTest, IdsFollowThePositions)
{
    usePositions();
    makeSquare();
    instanceFloats(4, 3, {0, 0, 0, -0.5f, 0.25f, 0});
    instanceIntegers(5, 1, GL_INT, {Normal, Normal});
    instanceIntegers(6, 2, GL_UNSIGNED_INT, {0x01000001u, 0x80000003u, 0xFFFFFFFFu, 7u});
    set("draw_mode", 1);
    draw(GL_TRIANGLE_STRIP, 4, 2);
    EXPECT_EQ(word(35, 28, 1), 0x01000001u);
    EXPECT_EQ(word(35, 28, 2), 0x80000003u);
    EXPECT_EQ(word(20, 20, 1), 0xFFFFFFFFu);
    EXPECT_EQ(word(20, 20, 2), 7u);
}

TEST_F(InstancedDrawingTest, EachInstanceSetsABitOfItsOwn)
{
    usePositions();
    makeSquare();
    instanceFloats(4, 3, {0, 0, 0, 5, 5, 0, -0.5f, 0.25f, 0, 0.5f, -0.75f, 0}); // the second is out of view
    instanceIntegers(5, 1, GL_INT, {Normal, Normal, Invisible, Normal});
    set("draw_mode", 3);
    set("selection_rect", glm::vec4(0, 0, Size, Size));
    set("item_index", 30);
    beginSelection();
    draw(GL_TRIANGLE_STRIP, 4, 4);
    const std::vector<std::uint32_t> words = selectedWords();
    EXPECT_EQ(words[0], 1u << 30);
    EXPECT_EQ(words[1], 1u << 1) << "index 33";
    EXPECT_EQ(touchedCount(), 0);
}

TEST_F(InstancedDrawingTest, InstancesWithoutAPointLieAtTheirPositions)
{
    use({"RX_USE_INSTANCE_POSITION", "RX_NO_USE_PER_VERTEX_COORDS"});
    set("pen_width", 8.0f);
    instanceFloats(4, 3, {0, 0, 0, -0.5f, 0.25f, 0});
    instanceIntegers(5, 1, GL_INT, {Normal, Highlighted});
    draw(GL_POINTS, 1, 2);
    expectSquares({{{28, 28}, blue}, {{12, 20}, green}});
}

// An instance that has no vertex to lie at comes with numbers that are none.
TEST_F(InstancedDrawingTest, InstancesWithoutAPlaceLeaveNoTrace)
{
    usePositions();
    set("pen_width", 8.0f);
    for (const glm::vec3& place : {glm::vec3(NAN), {NAN, 0, 0}, {0, NAN, 0}, {0, 0, NAN}}) {
        instanceFloats(4, 3, {place.x, place.y, place.z, -0.5f, 0.25f, 0});
        instanceIntegers(5, 1, GL_INT, {Normal, Normal});
        attribute(0, 3, {0.0f, 0.0f, 0.0f});
        draw(GL_POINTS, 1, 2);
        expectSquares({{{12, 20}, blue}});
        makeSquare();
        draw(GL_TRIANGLE_STRIP, 4, 2);
        expectSquares({{{16, 16}, blue}});
        draw(GL_LINES, 2, 1);
        EXPECT_EQ(touchedCount(), 0);
    }
}

TEST_F(InstancedDrawingTest, InstancesWithoutAPointLieWhereTheirMatrixTakesTheOrigin)
{
    use({"RX_NO_USE_PER_VERTEX_COORDS"});
    set("pen_width", 8.0f);
    set("model", glm::translate(glm::mat4(1.0f), glm::vec3(0.5f, 0.0f, 0.0f)));
    instanceMatrices(4, {glm::mat4(1.0f), glm::scale(glm::mat4(1.0f), glm::vec3(-1.0f))});
    instanceIntegers(8, 1, GL_INT, {Normal, Normal});
    draw(GL_POINTS, 1, 2);
    expectSquares({{{44, 28}, blue}, {{12, 28}, blue}});
}

} // namespace
