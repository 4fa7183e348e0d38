#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

// The vertices' colours through the geometry stages.
namespace {

const std::string color = "RX_USE_PER_VERTEX_COLOR";
const std::string normal = "RX_USE_PER_VERTEX_NORMAL";
const std::string emulation = "RX_USE_ADJACENCY_EMULATION";

const QStringList wide = {"common.vertex", "WideLines.geom", "mono.fragment"};
const QStringList monoCaption = {"common.vertex", "caption.geom", "mono.fragment"};
const QStringList solid = {"dummy.vertex", "SolidRegularLines.geom", "mesh.fragment"};

class VertexColorDrawingTest : public ShaderDrawing
{
protected:
    /// The colours of the ends: red changes from end to end, green stays.
    void endColors() { attribute(1, 4, {0, 0.6f, 0, 1, 1, 0.6f, 0, 1}); }
    void expectRed(int x, int y, double share, double tolerance = 2.0)
    {
        EXPECT_NEAR(pixel(x, y).red(), 255.0 * share, tolerance) << x << ", " << y;
        EXPECT_NEAR(pixel(x, y).green(), 153, 1) << x << ", " << y;
    }
};

TEST_F(VertexColorDrawingTest, WideLinesRunFromColourToColour)
{
    use(recipe("", wide, {color}));
    setColors({0, 0, 1, 1});
    set("pen_width", 8.0f);
    line({-0.75f, 0, 0}, {0.75f, 0, 0}); // pixels 8 to 56
    endColors();
    draw(GL_LINES, 2);
    for (int x = 9; x < 55; x += 5)
        for (const int y : {29, 32, 34})
            expectRed(x, y, (x + 0.5 - 8.0) / 48.0);
}

TEST_F(VertexColorDrawingTest, WideLineThatIsCutHasTheColourOfTheCut)
{
    use(recipe("", wide, {color}));
    setColors({0, 0, 1, 1});
    set("pen_width", 8.0f);
    set("projection", glm::perspective(glm::radians(90.0f), 1.0f, 1.0f, 50.0f));
    endColors();
    // The segment goes through the near plane at (0.5, 0, -1), a quarter of its way: there the colour has
    // gone a quarter of its way too, in either direction.
    const glm::vec3 visible(-0.5f, 0.0f, -2.0f);
    const glm::vec3 hidden(3.5f, 0.0f, 2.0f);
    const double from = 32.0 - 8.0;
    const double cut = 32.0 + 16.0;
    line(visible, hidden);
    draw(GL_LINES, 2);
    for (int x = 25; x < 47; x += 3)
        expectRed(x, 32, 0.25 * (x + 0.5 - from) / (cut - from));
    line(hidden, visible);
    draw(GL_LINES, 2);
    for (int x = 25; x < 47; x += 3)
        expectRed(x, 32, 1.0 - 0.25 * (x + 0.5 - from) / (cut - from));
}

TEST_F(VertexColorDrawingTest, HighlightedWideLineHasTheSelectionColour)
{
    use(recipe("", wide, {color}));
    setColors({0, 0, 1, 1});
    set("pen_width", 8.0f);
    set("item_flags", -2);
    line({-0.75f, 0, 0}, {0.75f, 0, 0});
    endColors();
    draw(GL_LINES, 2);
    EXPECT_EQ(pixel(20, 32), QColor(0, 255, 0));
}

TEST_F(VertexColorDrawingTest, SolidLinesRunFromColourToColour)
{
    use(recipe("", solid, {normal, color}));
    setColors({0, 0, 1, 1});
    set("uLightMode", false);
    set("uColorMode", 1);
    attribute(0, 3, {-0.75f, 0, 0, -0.75f, 0, 0, 0.75f, 0, 0, 0.75f, 0, 0});
    attribute(1, 4, {1, 1, 1, 1, 0, 0.6f, 0, 1, 1, 0.6f, 0, 1, 1, 1, 1, 1});
    const glm::vec2 section[2] = {{-0.25f, 0.0f}, {0.25f, 0.0f}};
    gl->glUniform2fv(program->uniformLocation("section"), 2, &section[0].x);
    set("section_points_count", 2);
    draw(GL_LINES_ADJACENCY, 4);
    for (int x = 9; x < 55; x += 5)
        for (const int y : {26, 32, 37})
            expectRed(x, y, (x + 0.5 - 8.0) / 48.0);
}

// Attributes 4 to 7 take the colours of a segment's four points as 0 to 3 take the points.
TEST_F(VertexColorDrawingTest, SolidLinesTakeColoursOutOfAPlainList)
{
    use(recipe("", solid, {normal, color, emulation}));
    setColors({0, 0, 1, 1});
    set("uLightMode", false);
    set("uColorMode", 1);
    const std::vector<float> points = {-0.75f, 0, 0, -0.75f, 0, 0, 0, 0, 0, 0.75f, 0, 0, 0.75f, 0, 0};
    const std::vector<float> colors = {9, 9, 9, 9,    0, 0.6f, 0, 1, 0.5f, 0.6f,
                                       0, 1, 1, 0.6f, 0, 1,    9, 9, 9,    9};
    for (unsigned corner = 0; corner < 4; ++corner) {
        instanceFloats(corner, 3, std::vector<float>(points.begin() + 3 * corner, points.end()));
        instanceFloats(4 + corner, 4, std::vector<float>(colors.begin() + 4 * corner, colors.end()));
    }
    const glm::vec2 section[2] = {{-0.25f, 0.0f}, {0.25f, 0.0f}};
    gl->glUniform2fv(program->uniformLocation("section"), 2, &section[0].x);
    set("section_points_count", 2);
    draw(GL_LINES_ADJACENCY, 4, 2);
    for (int x = 9; x < 55; x += 5)
        expectRed(x, 32, (x + 0.5 - 8.0) / 48.0);
}

TEST_F(VertexColorDrawingTest, CaptionsHaveTheColourOfTheirPoint)
{
    use(recipe("", monoCaption, {color}));
    setColors({0, 0, 1, 1});
    texture(4, 4, std::vector<std::uint32_t>(16, 0xFFFFFFFF));
    attribute(0, 3, {0, 0, 0});
    attribute(1, 4, {0.4f, 0.6f, 0, 1});
    draw(GL_POINTS, 1);
    EXPECT_EQ(touchedCount(), 16);
    expectRed(33, 30, 0.4);
}

} // namespace
