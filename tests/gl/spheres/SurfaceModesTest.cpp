#include "SurfaceDrawing.h"

#include <cmath>

// Spheres and cylinders in every mode of drawing. They cover the pixel (32, 31).
namespace {

constexpr int X = 32;
constexpr int Y = 31;
const glm::vec4 itemColor(0.2f, 0.4f, 0.6f, 0.8f);
const glm::vec4 selectionColor(1.0f, 0.0f, 0.8f, 1.0f);

class SurfaceModesTest : public SurfaceDrawing, public ::testing::WithParamInterface<std::string>
{
protected:
    void prepare() override
    {
        useSurface(GetParam());
        setColors(itemColor, selectionColor);
        set("uLightMode", false);
        set("model", glm::rotate(glm::scale(glm::mat4(1.0f), glm::vec3(0.4f)), 1.2f, glm::vec3(1, 0.2f, 0)));
    }
    void drawIn(Mode mode, int instances = 1)
    {
        set("draw_mode", static_cast<int>(mode));
        drawSurface(instances);
    }
    void select(int index, int instances = 1)
    {
        set("selection_rect", glm::vec4(0.0f, 0.0f, Size, Size));
        set("item_index", index);
        beginSelection();
        drawIn(SelectionBuffer, instances);
        EXPECT_EQ(touchedCount(), 0) << "a pass over the selection buffer leaves no picture";
    }
    static std::vector<std::uint32_t> only(int index)
    {
        std::vector<std::uint32_t> words(SelectionWords, 0);
        if (index >= 0) words[static_cast<std::size_t>(index / 32)] = 1u << (index % 32);
        return words;
    }
    void expectNoTraceInAnyMode()
    {
        for (const Mode mode : {Ordinal, SelectionMask, GlueMask}) {
            drawIn(mode);
            EXPECT_EQ(touchedCount(), 0) << mode;
        }
        select(5);
        EXPECT_EQ(selectedWords(), only(-1));
    }
    void showTexture(std::uint32_t texel)
    {
        texture(1, 1, {texel});
        set("uColorMode", 2);
    }
    static QColor color(const glm::vec4& c)
    {
        return QColor::fromRgbF(double(c.r), double(c.g), double(c.b), double(c.a));
    }
};

TEST_P(SurfaceModesTest, OrdinaryPassWritesTheColourAndZeros)
{
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), color(itemColor));
    for (int attachment = 1; attachment < 4; ++attachment)
        EXPECT_EQ(word(X, Y, attachment), 0u) << attachment;
    EXPECT_TRUE(isUntouched(1, 1));
}

TEST_P(SurfaceModesTest, HighlightedItemHasTheSelectionColour)
{
    set("item_flags", -2);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), color(selectionColor));
    showTexture(0xFF336699u);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), color(selectionColor));
    showTexture(0x66336699u);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), QColor(255, 0, 204, 0x66)) << "in the shape that the texture gives";
    set("uWireMode", true);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), color(selectionColor));
}

TEST_P(SurfaceModesTest, OtherFlagsAreOrdinary)
{
    for (const int flags : {-1, 0, 7}) {
        set("item_flags", flags);
        drawIn(Ordinal);
        EXPECT_EQ(pixel(X, Y), color(itemColor));
    }
}

TEST_P(SurfaceModesTest, HiddenItemLeavesNoTraceInAnyMode)
{
    set("item_flags", -3);
    expectNoTraceInAnyMode();
    set("uLightMode", true);
    expectNoTraceInAnyMode();
    showTexture(0xFFFFFFFFu);
    expectNoTraceInAnyMode();
    set("uWireMode", true);
    expectNoTraceInAnyMode();
}

TEST_P(SurfaceModesTest, TransparentItemLeavesNoTraceInAnyMode)
{
    setColors(glm::vec4(glm::vec3(itemColor), 0.0f), selectionColor);
    expectNoTraceInAnyMode();
    setColors(itemColor, selectionColor);
    showTexture(0x00FFFFFFu);
    expectNoTraceInAnyMode();
}

TEST_P(SurfaceModesTest, LightLeavesAlphaAlone)
{
    set("uLightMode", true);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y).alpha(), 204);
    showTexture(0x663300FFu);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y).alpha(), 0x66);
}

TEST_P(SurfaceModesTest, SelectionMaskHoldsDepthAndIdExactly)
{
    const glm::uvec2 ids[] = {{0u, 0u},
                              {1u, 0u},
                              {0x01000001u, 0u},
                              {0xFFFFFFFFu, 0x00000001u},
                              {0x89ABCDEFu, 0xFEDCBA98u},
                              {0xFFFFFFFFu, 0xFFFFFFFFu}};
    for (const glm::uvec2& id : ids) {
        set("item_id", id);
        drawIn(SelectionMask);
        int covered = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                if (isUntouched(x, y)) continue;
                ASSERT_EQ(word(x, y, 0), depthBits(x, y));
                ASSERT_EQ(word(x, y, 1), id.x);
                ASSERT_EQ(word(x, y, 2), id.y);
                ASSERT_EQ(word(x, y, 3), 0u);
                ++covered;
            }
        EXPECT_GT(covered, 300);
        EXPECT_FALSE(isUntouched(X, Y));
    }
}

TEST_P(SurfaceModesTest, LightChangesNothingInTheMasks)
{
    set("item_id", glm::uvec2(7u, 0x80000000u));
    for (const Mode mode : {SelectionMask, GlueMask}) {
        set("uLightMode", false);
        drawIn(mode);
        const std::vector<QImage> before = images;
        set("uLightMode", true);
        drawIn(mode);
        EXPECT_EQ(images, before);
    }
}

TEST_P(SurfaceModesTest, GlueMaskHoldsTheIdAndNothingElse)
{
    set("item_id", glm::uvec2(0x89ABCDEFu, 0xFEDCBA98u));
    for (const float alpha : {0.01f, 0.49f, 1.0f}) {
        setColors(glm::vec4(glm::vec3(itemColor), alpha), selectionColor);
        drawIn(GlueMask);
        EXPECT_EQ(word(X, Y, 0), 0u);
        EXPECT_EQ(word(X, Y, 1), 0x89ABCDEFu);
        EXPECT_EQ(word(X, Y, 2), 0xFEDCBA98u);
        EXPECT_EQ(word(X, Y, 3), 0u);
    }
}

TEST_P(SurfaceModesTest, SelectionTakesItemsOfAlphaOneHalfAndNoLess)
{
    setColors(glm::vec4(glm::vec3(itemColor), 0.5f), selectionColor);
    drawIn(SelectionMask);
    EXPECT_FALSE(isUntouched(X, Y));
    select(3);
    EXPECT_EQ(selectedWords(), only(3));

    setColors(glm::vec4(glm::vec3(itemColor), std::nextafter(0.5f, 0.0f)), selectionColor);
    drawIn(SelectionMask);
    EXPECT_EQ(touchedCount(), 0);
    select(3);
    EXPECT_EQ(selectedWords(), only(-1));
}

TEST_P(SurfaceModesTest, SelectionBufferSetsExactlyTheItemsBit)
{
    for (const int index : {0, 1, 31, 32, 33, 63, 64, 255}) {
        select(index);
        EXPECT_EQ(selectedWords(), only(index)) << index;
    }
}

// Several instances are drawn where a primitive is repeated; they all belong to the one item.
TEST_P(SurfaceModesTest, InstancesSetTheBitOfTheirItem)
{
    select(31, 3);
    EXPECT_EQ(selectedWords(), only(31));
}

INSTANTIATE_TEST_SUITE_P(Programs, SurfaceModesTest, ::testing::Values("Sphere", "SmoothSphere", "Cylinder"),
                         [](const auto& program) { return program.param; });

} // namespace
