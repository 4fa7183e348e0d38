#include <tests/support/ShaderDrawing.h>

#include <cmath>

// What the markers of nodes under edit look like, and what they leave in each mode.
namespace {

constexpr std::uint64_t Id = 0xFEDCBA9889ABCDEFull;
const glm::vec4 nodeColor(0.8f, 0.6f, 0.2f, 0.8f);
const QColor ownColor(204, 153, 51, 204);

// Two nodes and a marker between them, squares of 10 pixels about these columns, on row 32.
constexpr int Left = 10;
constexpr int Middle = 32;
constexpr int Right = 54;
constexpr int Row = 32;
constexpr int Pen = 10;

class NodeMarkerModesTest : public ShaderDrawing
{
protected:
    void prepare() override
    {
        use("EditNodes");
        setColors(nodeColor, {1.0f, 0.0f, 0.8f, 1.0f});
        set("pen_width", float(Pen));
        set("selection_rect", glm::vec4(0, 0, Size, Size));
        set("item_id", glm::uvec2(std::uint32_t(Id & 0xFFFFFFFFu), std::uint32_t(Id >> 32)));
        line({Left / 32.0f - 1.0f, 0, 0.3f}, {Right / 32.0f - 1.0f, 0, 0.3f});
    }
    void drawIn(Mode mode)
    {
        set("draw_mode", static_cast<int>(mode));
        draw(GL_LINES, 2);
    }
    /// Whether the pixel belongs to a square of this width about the column.
    static bool isWithin(int x, int y, int column, int width)
    {
        return std::abs(x + 0.5 - column) < width / 2.0 && std::abs(y + 0.5 - Row) < width / 2.0;
    }
    void expectSquares(const std::vector<int>& columns)
    {
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                bool isInside = false;
                for (const int column : columns)
                    isInside |= isWithin(x, y, column, Pen);
                ASSERT_EQ(!isUntouched(x, y), isInside) << x << ", " << y;
            }
    }
    std::vector<std::uint32_t> bits(const std::vector<int>& indices) const
    {
        std::vector<std::uint32_t> words(SelectionWords, 0);
        for (const int index : indices)
            words[static_cast<std::size_t>(index / 32)] |= 1u << (index % 32);
        return words;
    }
};

TEST_F(NodeMarkerModesTest, NodesAreSquaresOfTheItemsColour)
{
    drawIn(Ordinal);
    expectSquares({Left, Middle, Right});
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x)
            if (isWithin(x, y, Left, Pen) || isWithin(x, y, Right, Pen)) {
                ASSERT_EQ(pixel(x, y), ownColor) << x << ", " << y;
                for (int attachment = 1; attachment < 4; ++attachment)
                    ASSERT_EQ(word(x, y, attachment), 0u);
            }
}

TEST_F(NodeMarkerModesTest, MarkersForAddingHaveACoreOfHalfTheirWidth)
{
    // bright: the core is three quarters of the way to black
    const QColor core(51, 38, 13, 204);
    // half of the widths lies just within and just beyond the centres of pixels
    for (const auto& [pen, width] : {std::pair(9.6f, 4), std::pair(10.4f, 6)}) {
        set("pen_width", pen);
        drawIn(Ordinal);
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                if (isWithin(x, y, Middle, Pen)) {
                    ASSERT_EQ(pixel(x, y), isWithin(x, y, Middle, width) ? core : ownColor)
                        << x << ", " << y << " at " << pen;
                }
    }
}

TEST_F(NodeMarkerModesTest, CoresOfDarkMarkersAreBright)
{
    const auto core = [&](const glm::vec3& color) {
        setColors(glm::vec4(color, 1.0f));
        drawIn(Ordinal);
        return pixel(Middle, Row);
    };
    EXPECT_EQ(core({0, 0, 0}), QColor(191, 191, 191));
    EXPECT_EQ(core({1, 1, 1}), QColor(64, 64, 64));
    // how bright a colour looks is mostly its green
    EXPECT_EQ(core({0.8f, 0, 1}), QColor(242, 191, 255)); // 0.35
    EXPECT_EQ(core({1, 0.3407f, 0}).red(), 255);          // 0.499
    EXPECT_EQ(core({1, 0.3441f, 0}).red(), 64);           // 0.501
    EXPECT_EQ(core({0, 0.8f, 0.4f}), QColor(0, 51, 26));  // 0.52
    EXPECT_EQ(core({0, 0.8f, 0}), QColor(191, 242, 191)); // 0.47
    EXPECT_EQ(core({0.2f, 0.8f, 0}), QColor(13, 51, 0));  // 0.53
}

TEST_F(NodeMarkerModesTest, HighlightedMarkersHaveTheSelectionColour)
{
    set("item_flags", -2);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(Left, Row), QColor(255, 0, 204));
    EXPECT_EQ(pixel(Middle - 4, Row), QColor(255, 0, 204));
}

TEST_F(NodeMarkerModesTest, HiddenMarkersLeaveNoTraceInAnyMode)
{
    set("item_flags", -3);
    for (const Mode mode : {Ordinal, SelectionMask, GlueMask, SelectionBuffer}) {
        drawIn(mode);
        EXPECT_EQ(touchedCount(), 0) << mode;
    }
    EXPECT_EQ(selectedWords(), bits({}));
}

TEST_F(NodeMarkerModesTest, SelectionMaskHoldsTheItemAndTheMarker)
{
    for (const int first : {0, 7, 1 << 24}) {
        set("first_marker_idx", first);
        drawIn(SelectionMask);
        expectSquares({Left, Middle, Right});
        const std::pair<int, int> markers[3] = {{Left, first}, {Middle, first + 1}, {Right, first + 2}};
        for (const auto& [x, number] : markers) {
            EXPECT_EQ(word(x, Row, 0), depthBits(x, Row));
            EXPECT_NEAR(double(depths[static_cast<std::size_t>(Row * Size + x)]), 0.65, 1e-6);
            EXPECT_EQ(word(x, Row, 1), 0x89ABCDEFu);
            EXPECT_EQ(word(x, Row, 2), 0xFEDCBA98u);
            EXPECT_EQ(~word(x, Row, 3), static_cast<std::uint32_t>(number));
        }
    }
}

TEST_F(NodeMarkerModesTest, GlueMaskHasTheNodesOnly)
{
    drawIn(GlueMask);
    expectSquares({Left, Right});
    EXPECT_EQ(word(Left, Row, 0), 0u);
    EXPECT_EQ(word(Left, Row, 1), 0x89ABCDEFu);
    EXPECT_EQ(word(Left, Row, 2), 0xFEDCBA98u);
    EXPECT_EQ(word(Left, Row, 3), ~8u);
}

TEST_F(NodeMarkerModesTest, SelectionBufferHasABitForEachMarker)
{
    drawIn(SelectionBuffer);
    EXPECT_EQ(touchedCount(), 0);
    EXPECT_EQ(selectedWords(), bits({0, 1, 2}));

    beginSelection();
    set("item_index", 40);
    set("first_marker_idx", 22);
    set("selection_rect", glm::vec4(Middle, 0, Size, Size));
    drawIn(SelectionBuffer);
    EXPECT_EQ(selectedWords(), bits({63, 64}));
}

TEST_F(NodeMarkerModesTest, SelectionTakesHalfOpaqueMarkersAndNoLess)
{
    setColors({1, 1, 1, 0.49f});
    drawIn(SelectionMask);
    EXPECT_EQ(touchedCount(), 0);
    drawIn(SelectionBuffer);
    EXPECT_EQ(selectedWords(), bits({}));
    setColors({1, 1, 1, 0.51f});
    drawIn(SelectionMask);
    expectSquares({Left, Middle, Right});
}

TEST_F(NodeMarkerModesTest, NodesOfPointsLookAndAreSelectedAlike)
{
    use("EditNodePoints");
    setColors(nodeColor);
    set("pen_width", float(Pen));
    set("selection_rect", glm::vec4(0, 0, Size, Size));
    set("first_marker_idx", 3);
    line({Left / 32.0f - 1.0f, 0, 0}, {Right / 32.0f - 1.0f, 0, 0});
    set("draw_mode", int(Ordinal));
    draw(GL_POINTS, 2);
    expectSquares({Left, Right});
    EXPECT_EQ(pixel(Left, Row), ownColor);
    EXPECT_EQ(pixel(Right, Row), ownColor);
    set("draw_mode", int(SelectionMask));
    draw(GL_POINTS, 2);
    EXPECT_EQ(~word(Right, Row, 3), 5u);
    set("draw_mode", int(SelectionBuffer));
    draw(GL_POINTS, 2);
    EXPECT_EQ(selectedWords(), bits({3, 5}));
}

} // namespace
