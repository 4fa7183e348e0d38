#include <tests/support/ShaderDrawing.h>

#include <cmath>
#include <cstdio>
#include <random>

// Round points, in every program that draws them and in every mode.
namespace {

const glm::vec4 pointColor(0.2f, 0.4f, 0.6f, 0.8f);
const glm::vec4 chosenPointColor(1.0f, 0.0f, 0.8f, 1.0f);
const glm::vec4 vertexColor(0.6f, 0.2f, 1.0f, 0.8f);
constexpr double Depth = 0.3; // in normalised device coordinates

QColor toColor(const glm::vec4& color)
{
    return QColor::fromRgbF(double(color.r), double(color.g), double(color.b), double(color.a));
}

class RoundPointsTest : public ShaderDrawing, public ::testing::WithParamInterface<std::string>
{
protected:
    void prepare() override
    {
        if (hasVertexColors())
            use(recipe("ColouredPoints", {"common.vertex", "mono.point.fragment"},
                       {"RX_USE_PER_VERTEX_COLOR"}));
        else
            use(GetParam());
        setColors(pointColor, chosenPointColor);
        set("selection_rect", glm::vec4(0, 0, Size, Size));
        setItem(-1, 0);
        if (hasVertexColors()) setVertexAlpha(0.8f);
        place({32.5, 30.5}, 9.0);
    }

    bool isInstanced() const { return GetParam() == "InstancedPoints"; }
    bool hasVertexColors() const { return GetParam() == "ColouredPoints"; }
    glm::vec4 ownColor() const { return hasVertexColors() ? vertexColor : pointColor; }

    void setVertexAlpha(float alpha)
    {
        attribute(1, 4, {vertexColor.r, vertexColor.g, vertexColor.b, alpha});
    }
    void setAlpha(float alpha)
    {
        if (hasVertexColors())
            setVertexAlpha(alpha);
        else
            setColors(glm::vec4(glm::vec3(pointColor), alpha), chosenPointColor);
    }
    void setItem(int flags, std::uint64_t id)
    {
        const auto low = static_cast<std::uint32_t>(id & 0xFFFFFFFFu);
        const auto high = static_cast<std::uint32_t>(id >> 32);
        if (isInstanced()) {
            instanceFloats(4, 3, {0, 0, 0});
            instanceIntegers(5, 1, GL_INT, {static_cast<std::uint32_t>(flags)});
            instanceIntegers(6, 2, GL_UNSIGNED_INT, {low, high});
        } else {
            set("item_flags", flags);
            set("item_id", glm::uvec2(low, high));
        }
    }
    /// Puts the point at a place in pixels, counted from the top left.
    void place(const glm::dvec2& centre, double diameter)
    {
        attribute(0, 3, {float(centre.x / 32.0 - 1.0), float(1.0 - centre.y / 32.0), float(Depth)});
        set("pen_width", float(diameter));
    }
    void drawIn(Mode mode)
    {
        set("draw_mode", static_cast<int>(mode));
        draw(GL_POINTS, 1);
    }
    std::vector<bool> covered() const
    {
        std::vector<bool> pixels;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                pixels.push_back(!isUntouched(x, y));
        return pixels;
    }
    std::vector<std::uint32_t> only(int index) const
    {
        std::vector<std::uint32_t> words(SelectionWords, 0);
        if (index >= 0) words[static_cast<std::size_t>(index / 32)] = 1u << (index % 32);
        return words;
    }

    static constexpr int X = 32;
    static constexpr int Y = 30;
};

TEST_P(RoundPointsTest, OrdinaryPassWritesTheColourAndNothingElse)
{
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), toColor(ownColor()));
    for (int attachment = 1; attachment < 4; ++attachment)
        EXPECT_EQ(word(X, Y, attachment), 0u) << attachment;
}

TEST_P(RoundPointsTest, HighlightedPointHasTheSelectionColour)
{
    setItem(-2, 0);
    drawIn(Ordinal);
    EXPECT_EQ(pixel(X, Y), toColor(chosenPointColor));
}

TEST_P(RoundPointsTest, HiddenPointLeavesNoTraceInAnyMode)
{
    setItem(-3, 0);
    for (const Mode mode : {Ordinal, SelectionMask, GlueMask, SelectionBuffer}) {
        drawIn(mode);
        EXPECT_EQ(touchedCount(), 0) << mode;
    }
    EXPECT_EQ(selectedWords(), only(-1));
}

TEST_P(RoundPointsTest, SelectionMaskHoldsDepthAndIdExactly)
{
    for (const std::uint64_t id : {0x1ull, 0x01000001ull, 0x1FFFFFFFFull, 0xFEDCBA9889ABCDEFull}) {
        setItem(-1, id);
        drawIn(SelectionMask);
        EXPECT_EQ(word(X, Y, 0), depthBits(X, Y));
        EXPECT_NEAR(double(depths[Y * Size + X]), (1.0 + Depth) / 2.0, 1e-6);
        EXPECT_EQ(word(X, Y, 1), static_cast<std::uint32_t>(id & 0xFFFFFFFFu));
        EXPECT_EQ(word(X, Y, 2), static_cast<std::uint32_t>(id >> 32));
        EXPECT_EQ(word(X, Y, 3), 0u);
    }
}

TEST_P(RoundPointsTest, GlueMaskHoldsTheIdAndTheMarkOfSinglePoints)
{
    setItem(-1, 0xFEDCBA9889ABCDEFull);
    drawIn(GlueMask);
    EXPECT_EQ(word(X, Y, 0), 0u);
    EXPECT_EQ(word(X, Y, 1), 0x89ABCDEFu);
    EXPECT_EQ(word(X, Y, 2), 0xFEDCBA98u);
    EXPECT_EQ(word(X, Y, 3), ~9u);
}

TEST_P(RoundPointsTest, SelectionBufferSetsTheItemsBitAndDrawsNothing)
{
    for (const int index : {0, 1, 31, 32, 255}) {
        beginSelection();
        set("item_index", index);
        drawIn(SelectionBuffer);
        EXPECT_EQ(touchedCount(), 0);
        EXPECT_EQ(selectedWords(), only(index)) << index;
    }
}

TEST_P(RoundPointsTest, SelectionTakesHalfOpaquePointsAndNoLess)
{
    set("item_index", 7);
    setAlpha(0.49f);
    drawIn(SelectionMask);
    EXPECT_EQ(touchedCount(), 0);
    drawIn(SelectionBuffer);
    EXPECT_EQ(selectedWords(), only(-1));
    setAlpha(0.51f);
    drawIn(SelectionMask);
    EXPECT_GT(touchedCount(), 0);
    drawIn(SelectionBuffer);
    EXPECT_EQ(selectedWords(), only(7));
}

TEST_P(RoundPointsTest, AllModesCoverTheSamePixels)
{
    for (const double diameter : {1.0, 2.0, 5.0, 13.0}) {
        place({30.3, 31.8}, diameter);
        drawIn(Ordinal);
        const std::vector<bool> expected = covered();
        for (const Mode mode : {SelectionMask, GlueMask}) {
            drawIn(mode);
            EXPECT_EQ(covered(), expected) << mode << " at " << diameter;
        }
    }
}

// The pixels in the corners of the point's square are told from those of the disc.
TEST_P(RoundPointsTest, OnlyTheDiscIsSelected)
{
    place({32.0, 32.0}, 16.0);
    set("selection_rect", glm::vec4(24, 24, 26, 26)); // the lower left corner of the square
    set("item_index", 7);
    drawIn(SelectionBuffer);
    EXPECT_EQ(selectedWords(), only(-1));
    set("selection_rect", glm::vec4(24, 24, 27, 27)); // one more pixel, 5.5 to the left and below
    drawIn(SelectionBuffer);
    EXPECT_EQ(selectedWords(), only(7));
}

INSTANTIATE_TEST_SUITE_P(Programs, RoundPointsTest,
                         ::testing::Values("Points", "InstancedPoints", "ColouredPoints"),
                         [](const auto& program) { return program.param; });

class RoundPointShapeTest : public ShaderDrawing
{
protected:
    /// The driver may shift a point on its grid: pixels whose centres lie as close to the rim may be either.
    static constexpr double Grid = 1.0 / 64.0;

    void prepare() override
    {
        use("Points");
        setColors({1, 1, 1, 1});
    }
    void drawAt(const glm::dvec2& centre, double diameter)
    {
        attribute(0, 3, {float(centre.x / 32.0 - 1.0), float(1.0 - centre.y / 32.0), 0.0f});
        set("pen_width", float(diameter));
        draw(GL_POINTS, 1);
    }
    /// Checks every pixel by its distance inside the shape.
    template <typename Inside>
    void expectShape(Inside inside)
    {
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                const double depth = inside(glm::dvec2(x + 0.5, y + 0.5));
                if (std::abs(depth) < Grid) {
                    ++m_open;
                    continue;
                }
                ++m_cases;
                const bool isWrong = isUntouched(x, y) == (depth > 0);
                if (isWrong) m_largest = std::max(m_largest, std::abs(depth));
                ASSERT_FALSE(isWrong) << x << ", " << y << " is " << depth << " pixels inside";
            }
    }
    void expectDisc(const glm::dvec2& centre, double diameter)
    {
        drawAt(centre, diameter);
        expectShape([&](const glm::dvec2& p) { return diameter / 2.0 - glm::length(p - centre); });
    }
    void report(const char* what) const
    {
        std::printf("%s: %d pixels, %d more at the rim left open, largest difference %.2g, tolerance %.2g\n",
                    what, m_cases, m_open, m_largest, Grid);
    }

    std::mt19937 m_random{11};
    int m_cases = 0;
    int m_open = 0;
    double m_largest = 0.0;
};

TEST_F(RoundPointShapeTest, IsADiscOfThePensWidth)
{
    std::uniform_real_distribution<double> place(22.0, 42.0);
    for (const double diameter : {1.6, 2.0, 2.5, 3.0, 4.0, 5.0, 8.0, 13.7, 21.0, 40.0})
        for (int i = 0; i < 6; ++i)
            expectDisc({place(m_random), place(m_random)}, diameter);
    report("round points");
}

TEST_F(RoundPointShapeTest, IsADiscAtPixelCentresAndCornersToo)
{
    for (const double diameter : {1.0, 2.0, 3.0, 7.0, 10.0, 32.0}) {
        expectDisc({32.5, 31.5}, diameter);
        if (diameter > 1.0) expectDisc({32.0, 31.0}, diameter);
    }
    report("round points on the grid");
}

TEST_F(RoundPointShapeTest, IsCutOffByTheEdgeOfThePicture)
{
    for (const double diameter : {5.0, 24.0})
        for (const glm::dvec2& centre :
             {glm::dvec2(0.7, 30.2), {63.4, 30.2}, {30.1, 0.6}, {30.1, 63.3}, {0.6, 0.6}, {63.4, 63.4}})
            expectDisc(centre, diameter);
    report("round points at the edge");
}

// Discs as small would fall between the centres of pixels.
TEST_F(RoundPointShapeTest, OfSmallPointsIsASquareThatNeverVanishes)
{
    std::uniform_real_distribution<double> place(30.0, 34.0);
    for (const double size : {1.0, 1.2, 1.4, 1.49})
        for (int i = 0; i < 20; ++i) {
            const glm::dvec2 centre(place(m_random), place(m_random));
            drawAt(centre, size);
            EXPECT_GT(touchedCount(), 0);
            expectShape([&](const glm::dvec2& p) {
                const glm::dvec2 off = glm::abs(p - centre);
                return size / 2.0 - std::max(off.x, off.y);
            });
        }
    report("small points");
}

} // namespace
