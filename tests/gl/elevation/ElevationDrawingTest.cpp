#include <tests/support/LightReference.h>
#include <tests/support/ProgramVariants.h>
#include <tests/support/ShaderDrawing.h>

#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>

// Colours by height out of the programs that items are drawn with, against the levels in doubles. The view
// looks along +y: heights from -1 to 1 run from the lowest row to the highest.
namespace {

using Levels = std::vector<std::pair<double, QColor>>;

const Levels ramp = {{-1.0, QColor(20, 40, 200)}, {0.0, QColor(60, 220, 80)}, {0.5, QColor(250, 200, 10)}};

glm::dvec3 rgb(const QColor& color)
{
    return glm::dvec3(color.red(), color.green(), color.blue()) / 255.0;
}

/// Between the levels linear, beyond them the first and the last.
glm::dvec3 colorAt(const Levels& levels, double height)
{
    if (height <= levels.front().first) return rgb(levels.front().second);
    for (std::size_t i = 1; i < levels.size(); ++i) {
        const auto& [lower, below] = levels[i - 1];
        const auto& [upper, above] = levels[i];
        if (height <= upper) return glm::mix(rgb(below), rgb(above), (height - lower) / (upper - lower));
    }
    return rgb(levels.back().second);
}

/// Height in the scene that the middle of a row shows.
double heightOf(int row)
{
    return 1.0 - 2.0 * (row + 0.5) / 64.0;
}

class ElevationDrawingTest : public ShaderDrawing
{
protected:
    void useVariant(const char* name)
    {
        for (const ProgramRecipe& wanted : programVariants())
            if (wanted.name == name) use(wanted);
        glm::mat4 view(1.0f);
        view[1] = {0, 0, -1, 0}; // y is away from the eye
        view[2] = {0, 1, 0, 0};  // z is up
        set("view", view);
        setColors({1, 0, 1, 1}, {1, 1, 1, 1});
        Item3dDrawer::setColorLevels(program.get(), ramp, 0.0f, false);
    }
    /// A strip of four vertices from x = -0.5 to 0.5 and over all heights.
    void wall(float lowest = -1.0f, float highest = 1.0f)
    {
        attribute(0, 3, {-0.5f, 0, lowest, 0.5f, 0, lowest, -0.5f, 0, highest, 0.5f, 0, highest});
    }
    void expectColor(int x, int y, const glm::dvec3& color, double tolerance = 1.01)
    {
        EXPECT_NEAR(pixel(x, y).red(), 255.0 * color.r, tolerance) << x << ", " << y;
        EXPECT_NEAR(pixel(x, y).green(), 255.0 * color.g, tolerance) << x << ", " << y;
        EXPECT_NEAR(pixel(x, y).blue(), 255.0 * color.b, tolerance) << x << ", " << y;
    }
    void expectRamp(int x)
    {
        for (int y = 0; y < Size; ++y)
            expectColor(x, y, colorAt(ramp, heightOf(y)));
    }
};

TEST_F(ElevationDrawingTest, SurfacesOfOneColour)
{
    useVariant("MonoElevation");
    wall();
    draw(GL_TRIANGLE_STRIP, 4);
    expectRamp(20);
    expectRamp(44);
    EXPECT_TRUE(isUntouched(10, 32));
}

TEST_F(ElevationDrawingTest, HeightIsThatInTheScene)
{
    useVariant("MonoElevation");
    glm::mat4 model(1.0f);
    model[2][2] = 0.01f;
    model[3] = {0, 0, -3, 1};
    set("model", model);
    wall(200.0f, 400.0f); // -1 to 1
    draw(GL_TRIANGLE_STRIP, 4);
    expectRamp(32);
}

TEST_F(ElevationDrawingTest, InstancesHaveTheHeightOfTheirPlace)
{
    useVariant("MonoElevationInstances");
    wall(-0.25f, 0.25f);
    instanceFloats(4, 3, {0, 0, -0.5f, 0, 0, 0.5f});
    instanceIntegers(5, 1, GL_INT, {static_cast<std::uint32_t>(-1), static_cast<std::uint32_t>(-1)});
    instanceIntegers(6, 2, GL_UNSIGNED_INT, {1, 0, 2, 0});
    attribute(1, 4, {1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1});
    draw(GL_TRIANGLE_STRIP, 4, 2);
    for (const int y : {9, 16, 23, 41, 48, 55})
        expectColor(32, y, colorAt(ramp, heightOf(y)));
    EXPECT_TRUE(isUntouched(32, 32));
}

TEST_F(ElevationDrawingTest, PointIsOfOneHeight)
{
    useVariant("MonoElevation");
    set("pen_width", 9.0f);
    attribute(0, 3, {0, 0, 0.25f});
    draw(GL_POINTS, 1);
    EXPECT_GE(touchedCount(), 81);
    for (int y = 20; y < 28; ++y)
        expectColor(32, y, colorAt(ramp, 0.25));
}

TEST_F(ElevationDrawingTest, WideLine)
{
    useVariant("WideLinesElevation");
    set("pen_width", 8.0f);
    line({0, 0, -0.75f}, {0, 0, 0.75f}); // rows 8 to 56
    draw(GL_LINES, 2);
    for (int y = 9; y < 55; ++y)
        expectColor(32, y, colorAt(ramp, heightOf(y)));
}

TEST_F(ElevationDrawingTest, DashedLineInItsDashes)
{
    useVariant("DashedLinesElevation");
    set("u_resolution", glm::vec2(64, 64));
    set("u_dashSize", 6.0f);
    set("u_gapSize", 4.0f);
    gl->glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
    line({0.01f, 0, -1}, {0.01f, 0, 1});
    draw(GL_LINES, 2);
    gl->glProvokingVertex(GL_LAST_VERTEX_CONVENTION);
    int dashes = 0;
    for (int y = 0; y < Size; ++y) {
        if (isUntouched(32, y)) continue;
        ++dashes;
        expectColor(32, y, colorAt(ramp, heightOf(y)));
    }
    EXPECT_NEAR(dashes, 64 * 0.6, 3);
}

// Without light, in rows where the whole picture is of one height.
TEST_F(ElevationDrawingTest, SpheresAndCylinders)
{
    for (const char* name : {"SphereElevation", "CylinderElevation"}) {
        SCOPED_TRACE(name);
        useVariant(name);
        set("uLightMode", false);
        attribute(0, 3, {0, 0, 0});
        gl->glPatchParameteri(GL_PATCH_VERTICES, 1);
        const auto drawIt = [&] { draw(name[0] == 'S' ? GL_PATCHES : GL_POINTS, 1); };
        drawIt();
        for (const int y : {3, 20, 32, 45, 60})
            expectColor(32, y, colorAt(ramp, heightOf(y)));
        setColors({1, 0, 1, 0.75f}, {1, 1, 1, 1});
        gl->glDisable(GL_BLEND);
        drawIt();
        EXPECT_NEAR(pixel(32, 20).alpha(), 255 * 0.75, 1);
        set("item_flags", ItemFlag::Highlighted);
        drawIt();
        EXPECT_EQ(pixel(32, 20), QColor(Qt::white));
        set("item_flags", ItemFlag::Invisible);
        drawIt();
        EXPECT_EQ(touchedCount(), 0);
    }
}

TEST_F(ElevationDrawingTest, SweptLines)
{
    useVariant("SolidElevation");
    set("uLightMode", false);
    const std::vector<float> section = {-0.2f, 0, 0.2f, 0}, normals = {0, 1, 0, 1};
    gl->glUniform2fv(program->uniformLocation("section"), 2, section.data());
    gl->glUniform2fv(program->uniformLocation("section_normals"), 2, normals.data());
    set("section_points_count", 2);
    attribute(0, 3, {0, 0, -1, 0, 0, -1, 0, 0, 1, 0, 0, 1}); // both ends twice
    attribute(1, 4, {1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1});
    draw(GL_LINES_ADJACENCY, 4);
    expectRamp(32);
    EXPECT_TRUE(isUntouched(10, 32));
}

TEST_F(ElevationDrawingTest, HighlightWins)
{
    for (const char* name :
         {"MonoElevation", "WideLinesElevation", "DashedLinesElevation", "MeshElevation"}) {
        useVariant(name);
        set("item_flags", ItemFlag::Highlighted);
        const bool isLine = QString(name).contains("Lines");
        if (isLine)
            line({0.01f, 0, -1}, {0.01f, 0, 1});
        else
            wall();
        if (program->uniformLocation("uLightMode") >= 0) set("uLightMode", false);
        draw(isLine ? GL_LINES : GL_TRIANGLE_STRIP, isLine ? 2 : 4);
        EXPECT_EQ(pixel(32, 20), QColor(Qt::white)) << name;
        set("item_flags", ItemFlag::Invisible);
        draw(isLine ? GL_LINES : GL_TRIANGLE_STRIP, isLine ? 2 : 4);
        EXPECT_EQ(touchedCount(), 0) << name;
    }
}

TEST_F(ElevationDrawingTest, AlphaIsThatOfTheItemAndTheLevel)
{
    const Levels half = {{-1.0, QColor(20, 40, 200, 128)}, {1.0, QColor(20, 40, 200, 128)}};
    for (const char* name : {"MonoElevation", "DashedLinesElevation", "MeshElevation"}) {
        useVariant(name);
        Item3dDrawer::setColorLevels(program.get(), half, 0.0f, false);
        setColors({1, 0, 1, 0.75f}, {1, 1, 1, 1});
        if (program->uniformLocation("uLightMode") >= 0) set("uLightMode", false);
        const bool isLine = QString(name).contains("Lines");
        if (isLine)
            line({0.01f, 0, -1}, {0.01f, 0, 1});
        else
            wall();
        draw(isLine ? GL_LINES : GL_TRIANGLE_STRIP, isLine ? 2 : 4);
        EXPECT_NEAR(pixel(32, 20).alpha(), 128 * 0.75, 1) << name;
        expectColor(32, 20, rgb(QColor(20, 40, 200)));
    }
}

TEST_F(ElevationDrawingTest, AlphaOfVerticesStays)
{
    useVariant("MonoElevation");
    wall();
    attribute(1, 4, {1, 0, 0, 0.5f, 1, 0, 0, 0.5f, 1, 0, 0, 0.5f, 1, 0, 0, 0.5f});
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_NEAR(pixel(32, 20).alpha(), 127.5, 1);
    expectRamp(32);
}

TEST_F(ElevationDrawingTest, MeshKeepsTheShapeOfItsTexture)
{
    useVariant("MeshElevation");
    set("uLightMode", false);
    set("uColorMode", 2);
    set("uTexture0", 0);
    texture(2, 1, {0xff0000ffu, 0x000000ffu}); // left opaque, right transparent
    wall();
    attribute(3, 2, {0, 0, 1, 0, 0, 1, 1, 1});
    draw(GL_TRIANGLE_STRIP, 4);
    expectRamp(20);
    EXPECT_TRUE(isUntouched(44, 32));
    set("item_flags", ItemFlag::Highlighted);
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_FALSE(isUntouched(20, 32));
    EXPECT_TRUE(isUntouched(44, 32));
}

TEST_F(ElevationDrawingTest, MeshTakesTheAlphaOfItsVertexColours)
{
    useVariant("MeshElevation");
    set("uLightMode", false);
    set("uColorMode", 1);
    wall();
    attribute(1, 4, {1, 0, 0, 0.5f, 1, 0, 0, 0.5f, 1, 0, 0, 0.5f, 1, 0, 0, 0.5f});
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_NEAR(pixel(32, 20).alpha(), 127.5, 1);
    expectRamp(32);
}

TEST_F(ElevationDrawingTest, MeshIsLit)
{
    useVariant("MeshElevation");
    const glm::dvec3 normal(0.3, 0.2, 1.0), direction(0.2, 1.0, 0.7);
    set("uLightDirection", glm::vec3(direction));
    wall();
    const glm::vec3 n(normal);
    attribute(2, 3, {n.x, n.y, n.z, n.x, n.y, n.z, n.x, n.y, n.z, n.x, n.y, n.z});
    draw(GL_TRIANGLE_STRIP, 4);
    for (int y = 2; y < 62; y += 3) {
        // in eye coordinates; the height is y there
        const glm::dvec3 point((32 + 0.5) / 32.0 - 1.0, heightOf(y), 1e-9);
        const glm::dvec3 lit = lightAt(point, normal, direction).on(colorAt(ramp, heightOf(y)));
        expectColor(32, y, glm::min(lit, glm::dvec3(1.0)), 1.6);
    }
}

TEST_F(ElevationDrawingTest, MasksTellTheItemAsEver)
{
    useVariant("MonoElevation");
    set("draw_mode", DrawMode::SelectionMaskDraw);
    set("item_id", glm::uvec2(0x12345678u, 0x9abcdef0u));
    wall();
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_EQ(word(32, 32, 1), 0x12345678u);
    EXPECT_EQ(word(32, 32, 2), 0x9abcdef0u);
}

TEST_F(ElevationDrawingTest, WithoutLevelsNothingIsDrawn)
{
    useVariant("MonoElevation");
    Item3dDrawer::setColorLevels(program.get(), {}, 0.0f, false);
    wall();
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_EQ(touchedCount(), 0);
}

} // namespace
