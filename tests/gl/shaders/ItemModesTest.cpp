#include <tests/support/ShaderDrawing.h>

#include <cmath>

// What holds for every program that draws items, in every mode. Each program draws a shape of its own that
// covers the pixel (32, 31), in the item's colour unless the program takes its colours from elsewhere.
namespace {

const glm::vec4 wholeView(0.0f, 0.0f, 64.0f, 64.0f);
constexpr int X = 32;
constexpr int Y = 31;
const glm::vec4 itemColor(0.2f, 0.4f, 0.6f, 0.8f);
const glm::vec4 selectionColor(1.0f, 0.0f, 0.8f, 1.0f);
const glm::vec4 otherColor(0.6f, 0.2f, 1.0f, 0.8f);

enum Mode { Ordinal, SelectionMask, GlueMask, SelectionBuffer };

QColor toColor(const glm::vec4& color)
{
    return QColor::fromRgbF(double(color.r), double(color.g), double(color.b), double(color.a));
}

class ItemModesTest : public ShaderDrawing, public ::testing::WithParamInterface<std::string>
{
protected:
    void prepare() override
    {
        use(GetParam());
        setColors(itemColor, selectionColor);
        makeShape();
    }

    bool is(const char* name) const { return GetParam() == name; }
    bool hasOwnColors() const { return is("VertexColor") || is("Texture") || is("Caption"); }

    void makeShape()
    {
        // all of the shape lies at this depth, which is no number that is exact in few bits
        const float z = 0.3f;
        if (is("WideLines") || is("DashedLines")) {
            line({-0.5f, 0.015625f, z}, {0.5f, 0.015625f, z});
            m_mode = GL_LINES;
            m_count = 2;
            if (is("WideLines")) set("pen_width", 8.0f);
        } else if (is("SolidRegularLines")) {
            makeSolid(z);
        } else if (is("Caption")) {
            attribute(0, 3, {-0.25f, -0.25f, z});
            m_mode = GL_POINTS;
            m_count = 1;
        } else {
            rectangle(-0.5f, -0.5f, 0.5f, 0.5f, z);
        }
        if (is("Texture") || is("Caption")) setTextureAlpha(otherColor.a);
        if (is("Texture")) attribute(3, 2, {0, 0, 1, 0, 0, 1, 1, 1});
        if (is("VertexColor")) setVertexAlpha(otherColor.a);
        if (is("Mesh") || is("SolidRegularLines")) set("uLightMode", false);
    }

    void makeSolid(float z)
    {
        attribute(0, 3, {-0.5f, 0, z, -0.5f, 0, z, 0.5f, 0, z, 0.5f, 0, z});
        const glm::vec2 section[2] = {{-0.25f, 0.0f}, {0.25f, 0.0f}};
        gl->glUniform2fv(program->uniformLocation("section"), 2, &section[0].x);
        set("section_points_count", 2);
        m_mode = GL_LINES_ADJACENCY;
        m_count = 4;
    }

    void setTextureAlpha(float alpha)
    {
        const auto byte = [](float value) { return static_cast<std::uint32_t>(value * 255.0f + 0.5f); };
        const std::uint32_t pixel =
            byte(otherColor.r) | byte(otherColor.g) << 8 | byte(otherColor.b) << 16 | byte(alpha) << 24;
        texture(20, 20, std::vector<std::uint32_t>(400, pixel));
    }

    void setVertexAlpha(float alpha)
    {
        const float r = otherColor.r;
        const float g = otherColor.g;
        const float b = otherColor.b;
        attribute(1, 4, {r, g, b, alpha, r, g, b, alpha, r, g, b, alpha, r, g, b, alpha});
    }

    /// Makes the shape's own alpha this, wherever it comes from.
    void setAlpha(float alpha)
    {
        if (is("Texture") || is("Caption"))
            setTextureAlpha(alpha);
        else if (is("VertexColor"))
            setVertexAlpha(alpha);
        else
            setColors(glm::vec4(glm::vec3(itemColor), alpha), selectionColor);
    }

    void drawIn(Mode mode)
    {
        set("draw_mode", static_cast<int>(mode));
        draw(m_mode, m_count);
    }

    void select(const glm::vec4& rect, int index)
    {
        set("selection_rect", rect);
        set("item_index", index);
        drawIn(SelectionBuffer);
        EXPECT_EQ(touchedCount(), 0) << "a pass over the selection buffer leaves no picture";
    }

    std::vector<std::uint32_t> only(int index) const
    {
        std::vector<std::uint32_t> words(SelectionWords, 0);
        if (index >= 0) words[static_cast<std::size_t>(index / 32)] = 1u << (index % 32);
        return words;
    }

private:
    unsigned m_mode = GL_TRIANGLE_STRIP;
    int m_count = 4;
};

TEST_P(ItemModesTest, OrdinaryPassWritesTheColour)
{
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), toColor(hasOwnColors() ? otherColor : itemColor));
}

TEST_P(ItemModesTest, OrdinaryPassWritesZeroIntoTheOtherOutputs)
{
    drawIn(Ordinal);
    for (int attachment = 1; attachment < 4; ++attachment)
        EXPECT_EQ(word(X, Y, attachment), 0u) << attachment;
    EXPECT_TRUE(isUntouched(2, 2));
}

TEST_P(ItemModesTest, ShapeLiesAtItsDepth)
{
    drawIn(Ordinal);
    EXPECT_NEAR(depths[Y * Size + X], 0.65, 1e-6);
}

TEST_P(ItemModesTest, HighlightedItemHasTheSelectionColour)
{
    set("item_flags", -2);
    drawIn(Ordinal);
    glm::vec4 expected = selectionColor;
    // a texture keeps the shape that its alpha gives it
    if (is("Texture") || is("Caption")) expected.a *= otherColor.a;
    EXPECT_EQ(pixel(X, Y), toColor(expected));
}

TEST_P(ItemModesTest, HiddenItemLeavesNoTraceInAnyMode)
{
    set("item_flags", -3);
    for (const Mode mode : {Ordinal, SelectionMask, GlueMask, SelectionBuffer}) {
        select(wholeView, 5);
        drawIn(mode);
        EXPECT_EQ(touchedCount(), 0) << mode;
    }
    EXPECT_EQ(selectedWords(), only(-1));
}

TEST_P(ItemModesTest, UnknownFlagsAreOrdinary)
{
    set("item_flags", 7);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), toColor(hasOwnColors() ? otherColor : itemColor));
}

TEST_P(ItemModesTest, TransparentItemLeavesNoTraceInAnyMode)
{
    setAlpha(0.0f);
    for (const Mode mode : {Ordinal, SelectionMask, GlueMask, SelectionBuffer}) {
        select(wholeView, 5);
        drawIn(mode);
        EXPECT_EQ(touchedCount(), 0) << mode;
    }
    EXPECT_EQ(selectedWords(), only(-1));
}

TEST_P(ItemModesTest, SelectionMaskHoldsDepthAndIdExactly)
{
    const glm::uvec2 ids[] = {
        {1u, 0u}, {0x01000001u, 0u}, {0xFFFFFFFFu, 0x00000001u}, {0x89ABCDEFu, 0xFEDCBA98u}};
    for (const glm::uvec2& id : ids) {
        set("item_id", id);
        drawIn(SelectionMask);
        EXPECT_EQ(word(X, Y, 0), depthBits(X, Y));
        EXPECT_EQ(word(X, Y, 1), id.x);
        EXPECT_EQ(word(X, Y, 2), id.y);
        EXPECT_EQ(word(X, Y, 3), 0u);
        EXPECT_NE(depthBits(X, Y), 0x3F800000u);
    }
}

TEST_P(ItemModesTest, SelectionMaskTakesHalfOpaqueItemsAndNoLess)
{
    setAlpha(0.49f);
    drawIn(SelectionMask);
    EXPECT_EQ(touchedCount(), 0);
    setAlpha(0.51f);
    drawIn(SelectionMask);
    EXPECT_FALSE(isUntouched(X, Y));
}

// A highlighted item has the alpha of the selection colour, which alone is exact in every program.
TEST_P(ItemModesTest, SelectionModesTakeItemsOfAlphaOneHalf)
{
    if (is("Texture") || is("Caption")) setTextureAlpha(1.0f);
    const auto highlightWith = [this](float alpha) {
        setColors(itemColor, glm::vec4(glm::vec3(selectionColor), alpha));
        set("item_flags", -2);
    };
    highlightWith(0.5f);
    drawIn(SelectionMask);
    EXPECT_FALSE(isUntouched(X, Y));
    select(wholeView, 3);
    EXPECT_EQ(selectedWords(), only(3));

    highlightWith(std::nextafter(0.5f, 0.0f));
    drawIn(SelectionMask);
    EXPECT_EQ(touchedCount(), 0);
    beginSelection();
    select(wholeView, 3);
    EXPECT_EQ(selectedWords(), only(-1));
}

TEST_P(ItemModesTest, GlueMaskTakesItemsThatSelectionIsNotTold)
{
    set("item_id", glm::uvec2(5u, 6u));
    for (const float alpha : {0.01f, 0.25f, 0.49f}) {
        setAlpha(alpha);
        drawIn(GlueMask);
        if (is("DashedLines"))
            EXPECT_EQ(touchedCount(), 0);
        else
            EXPECT_EQ(word(X, Y, 1), 5u) << alpha;
    }
}

TEST_P(ItemModesTest, GlueMaskHoldsTheIdAndForSinglePointsTheirMark)
{
    set("item_id", glm::uvec2(0x89ABCDEFu, 0xFEDCBA98u));
    drawIn(GlueMask);
    if (is("DashedLines")) {
        EXPECT_EQ(touchedCount(), 0) << "dashed lines take no part";
        return;
    }
    EXPECT_EQ(word(X, Y, 0), 0u);
    EXPECT_EQ(word(X, Y, 1), 0x89ABCDEFu);
    EXPECT_EQ(word(X, Y, 2), 0xFEDCBA98u);
    const bool isMono = is("Mono") || is("VertexColor") || is("WideLines");
    EXPECT_EQ(word(X, Y, 3), isMono ? ~9u : 0u);
}

TEST_P(ItemModesTest, SelectionBufferSetsExactlyTheItemsBit)
{
    for (const int index : {0, 1, 31, 32, 33, 63, 64, 255}) {
        beginSelection();
        select(wholeView, index);
        EXPECT_EQ(selectedWords(), only(index)) << index;
    }
}

TEST_P(ItemModesTest, SelectionBufferIgnoresIndicesBeyondItsEnd)
{
    select(wholeView, 32 * SelectionWords);
    select(wholeView, -1);
    EXPECT_EQ(selectedWords(), only(-1));
}

TEST_P(ItemModesTest, SelectionBufferTakesHalfOpaqueItemsAndNoLess)
{
    setAlpha(0.49f);
    select(wholeView, 3);
    EXPECT_EQ(selectedWords(), only(-1));
    setAlpha(0.51f);
    select(wholeView, 3);
    EXPECT_EQ(selectedWords(), only(3));
}

TEST_P(ItemModesTest, RectangleOutsideTheShapeSelectsNothing)
{
    select({0.0f, 0.0f, 11.0f, 64.0f}, 3);
    EXPECT_EQ(selectedWords(), only(-1));
}

INSTANTIATE_TEST_SUITE_P(Programs, ItemModesTest,
                         ::testing::Values("Mono", "VertexColor", "Texture", "WideLines", "DashedLines",
                                           "SolidRegularLines", "Caption", "Mesh"),
                         [](const auto& program) { return program.param; });

// The selected area itself: the one function that all programs share, through the plainest of them. One pixel
// is drawn, at column 20 and row 40 from the bottom (row 23 from the top).
class SelectedAreaTest : public ShaderDrawing
{
protected:
    static constexpr int Column = 20;
    static constexpr int Row = 40;

    void prepare() override
    {
        use("Mono");
        setColors({1, 1, 1, 1});
        attribute(0, 3, {(Column + 0.5f) / 32.0f - 1.0f, (Row + 0.5f) / 32.0f - 1.0f, 0.0f});
        set("draw_mode", int(SelectionBuffer));
        set("selection_rect", wholeView);
        set("item_index", 1);
    }
    bool isSelected(const std::vector<std::int32_t>& mask = {0})
    {
        beginSelection(mask);
        draw(GL_POINTS, 1);
        return selectedWords()[0] == 2u;
    }
    /// A mask of 64 x 64 pixels, all clear but the one at (x, y), y counted from the top.
    static std::vector<std::int32_t> maskOf(int x, int y)
    {
        std::vector<std::int32_t> mask(4 + 64 * 2, 0);
        mask[0] = 1;
        mask[1] = mask[2] = 64;
        mask[3] = 2;
        mask[static_cast<std::size_t>(4 + y * 2 + x / 32)] = static_cast<std::int32_t>(1u << (x % 32));
        return mask;
    }
};

TEST_F(SelectedAreaTest, RectangleIncludesItsBounds)
{
    const float x = Column + 0.5f;
    const float y = Row + 0.5f;
    const float step = 0.01f;
    set("selection_rect", glm::vec4(x, y, x, y));
    EXPECT_TRUE(isSelected());
    for (const glm::vec4& rect : {glm::vec4(x + step, y, x + 1, y), glm::vec4(x - 1, y, x - step, y),
                                  glm::vec4(x, y + step, x, y + 1), glm::vec4(x, y - 1, x, y - step)}) {
        set("selection_rect", rect);
        EXPECT_FALSE(isSelected());
    }
}

TEST_F(SelectedAreaTest, RectangleThatIsNotSetSelectsNothing)
{
    use("Mono");
    setColors({1, 1, 1, 1});
    set("draw_mode", int(SelectionBuffer));
    set("item_index", 1);
    EXPECT_FALSE(isSelected());
}

TEST_F(SelectedAreaTest, MaskOfFlagZeroSelectsAllInsideTheRectangle)
{
    EXPECT_TRUE(isSelected({0, 1, 1, 1, 0}));
}

TEST_F(SelectedAreaTest, MaskRowsRunTopDownAndBitsFromTheLowest)
{
    EXPECT_TRUE(isSelected(maskOf(Column, 63 - Row)));
    EXPECT_FALSE(isSelected(maskOf(Column, Row)));
    EXPECT_FALSE(isSelected(maskOf(Column + 1, 63 - Row)));
    EXPECT_FALSE(isSelected(maskOf(Column + 32, 63 - Row)));
    EXPECT_FALSE(isSelected(maskOf(31 - Column, 63 - Row)));
}

TEST_F(SelectedAreaTest, PixelsOutsideTheMaskAreNotSelected)
{
    // all bits set, but the mask is too narrow, or too low: then the pixel lies above its top row
    EXPECT_TRUE(isSelected({1, Column + 1, Row + 1, 1, -1}));
    EXPECT_FALSE(isSelected({1, Column, Row + 1, 1, -1}));
    EXPECT_FALSE(isSelected({1, Column + 1, Row, 1, -1}));
}

TEST_F(SelectedAreaTest, PixelsAboveTheMaskDoNotReadItsHeader)
{
    // the pixel in column 33 of the row above the mask: the word before its rows is the row length, 2
    attribute(0, 3, {33.5f / 32.0f - 1.0f, (Row + 0.5f) / 32.0f - 1.0f, 0.0f});
    EXPECT_FALSE(isSelected({1, 64, Row, 2, -1, -1}));
}

TEST_F(SelectedAreaTest, MaskDoesNotReplaceTheRectangle)
{
    set("selection_rect", glm::vec4(0, 0, 10, 10));
    EXPECT_FALSE(isSelected(maskOf(Column, 63 - Row)));
}

TEST_F(SelectedAreaTest, SeveralItemsSetTheirBitsOneBesideTheOther)
{
    beginSelection();
    for (const int index : {2, 40, 41}) {
        set("item_index", index);
        draw(GL_POINTS, 1);
    }
    EXPECT_EQ(selectedWords()[0], 1u << 2);
    EXPECT_EQ(selectedWords()[1], (1u << 8) | (1u << 9));
}

} // namespace
