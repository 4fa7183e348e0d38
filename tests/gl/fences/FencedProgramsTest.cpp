// Programs alone, with a sphere for a fence: where stages that build their own surfaces say that these lie.
#include "tests/support/ShaderDrawing.h"

#include <QtGui/QVector2D>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <set>

namespace {

class FencedProgramsTest : public ShaderDrawing
{
protected:
    void useFenced(const char* name)
    {
        for (const auto* list : {&defaultPrograms(), &furtherPrograms()})
            for (ProgramRecipe recipe : *list)
                if (recipe.name == name) {
                    recipe.defines.emplace_back("RX_USE_SPHERE_FENCE");
                    use(recipe);
                }
        set("fence_to_use", 2);
        setSphere(glm::vec3(0.0f), 0.5f);
    }
    void setSphere(const glm::vec3& center, float radius)
    {
        set("sphere_fence_center", center);
        set("sphere_fence_radius", radius);
    }
    static float toDevice(int pixel) { return (float(pixel) + 0.5f) / 32.0f - 1.0f; }
    std::set<std::pair<int, int>> touched() const
    {
        std::set<std::pair<int, int>> pixels;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                if (!isUntouched(x, y)) pixels.insert({x, y});
        return pixels;
    }
    int touchedIn(int left, int right) const
    {
        int count = 0;
        for (const auto& [x, y] : touched())
            count += x >= left && x < right;
        return count;
    }
};

// A line that runs into the picture: the middle of what shows is not the middle of the line.
const glm::vec3 nearEnd(-0.9f, 0.0f, -1.0f), farEnd(3.6f, 0.0f, -4.0f);
const glm::mat4 perspective = glm::perspective(float(M_PI) / 2.0f, 1.0f, 0.5f, 10.0f);

int columnOf(const glm::vec3& point)
{
    const glm::vec4 clip = perspective * glm::vec4(point, 1.0f);
    return int(std::floor((clip.x / clip.w + 1.0f) * 32.0f));
}

TEST_F(FencedProgramsTest, WideLinesAreCutByTheirAxis)
{
    useFenced("WideLines");
    setColors(glm::vec4(1.0f));
    set("projection", perspective);
    set("pen_width", 12.0f);
    line(nearEnd, farEnd);
    const glm::vec3 middle = 0.5f * (nearEnd + farEnd);
    ASSERT_NE(columnOf(middle), 32);
    setSphere(nearEnd, glm::distance(nearEnd, middle));
    draw(GL_LINES, 2);
    EXPECT_GT(touchedCount(), 100);
    EXPECT_EQ(touchedIn(columnOf(middle) + 2, Size), 0);
    for (int row = 28; row < 36; ++row)
        for (int x = columnOf(nearEnd) + 6; x < columnOf(middle) - 1; ++x)
            ASSERT_FALSE(isUntouched(x, row)) << x << ", " << row;
    // from the other end, which lies behind the camera
    const glm::vec3 behind = nearEnd - 0.8f * (farEnd - nearEnd);
    line(behind, farEnd);
    setSphere(farEnd, glm::distance(farEnd, middle));
    draw(GL_LINES, 2);
    EXPECT_GT(touchedCount(), 100);
    EXPECT_EQ(touchedIn(0, columnOf(middle) - 2), 0);
    for (int x = columnOf(middle) + 1; x < columnOf(farEnd) - 1; ++x)
        ASSERT_FALSE(isUntouched(x, 32)) << x;
}

TEST_F(FencedProgramsTest, MarkersObeyByTheirNodes)
{
    useFenced("EditNodes");
    setColors(glm::vec4(1.0f));
    set("projection", perspective);
    set("pen_width", 6.0f);
    line(nearEnd, farEnd);
    // the marker between nodes stands in the middle of what shows: there the line is nearer than its middle
    const float x0 = nearEnd.x / -nearEnd.z, x1 = farEnd.x / -farEnd.z, x = 0.5f * (x0 + x1);
    // (nearEnd + s * way).x = -x * (nearEnd + s * way).z
    const glm::vec3 way = farEnd - nearEnd;
    const float s = -(nearEnd.x + x * nearEnd.z) / (way.x + x * way.z);
    const glm::vec3 places[] = {nearEnd, nearEnd + s * way, farEnd};
    ASSERT_GT(std::abs(s - 0.5f), 0.2f);
    for (const glm::vec3& place : places) {
        setSphere(place, 0.1f);
        draw(GL_LINES, 2);
        EXPECT_EQ(touchedCount(), 36);
        EXPECT_EQ(touchedIn(columnOf(place) - 4, columnOf(place) + 4), 36);
    }
    // cut off by the near plane, the line shows from there on
    const glm::vec3 behind = nearEnd - 0.8f * way;
    line(behind, farEnd);
    // the marker between its nodes stands in the middle of what shows from the near plane on
    const glm::vec3 crossing = behind + ((-0.5f - behind.z) / (farEnd.z - behind.z)) * (farEnd - behind);
    const float left = std::max(crossing.x / 0.5f, -1.0f), middle = 0.5f * (left + x1);
    const float share =
        -(behind.x + middle * behind.z) / (farEnd.x - behind.x + middle * (farEnd.z - behind.z));
    setSphere(glm::mix(behind, farEnd, share), 0.05f);
    draw(GL_LINES, 2);
    EXPECT_EQ(touchedCount(), 36);
    EXPECT_EQ(touchedIn(int((middle + 1.0f) * 32.0f) - 4, int((middle + 1.0f) * 32.0f) + 4), 36);
    setSphere(farEnd, 0.1f);
    draw(GL_LINES, 2);
    EXPECT_EQ(touchedCount(), 36);
}

TEST_F(FencedProgramsTest, NodesOfPointsObeyByThemselves)
{
    useFenced("EditNodePoints");
    setColors(glm::vec4(1.0f));
    set("pen_width", 6.0f);
    attribute(0, 3, {0.0f, 0.0f, 0.0f, 0.75f, 0.0f, 0.0f});
    draw(GL_POINTS, 2);
    EXPECT_EQ(touchedCount(), 36);
    EXPECT_EQ(touchedIn(0, 40), 36);
}

TEST_F(FencedProgramsTest, CornersOfFacesAndLinesObeyByThemselves)
{
    for (const char* name : {"SelectFaceNodes", "SelectLineNodes"}) {
        SCOPED_TRACE(name);
        useFenced(name);
        setColors(glm::vec4(1.0f));
        attribute(0, 3, {0.03f, 0.03f, 0.0f, 0.75f, 0.0f, 0.0f, 0.03f, 0.8f, 0.0f});
        const bool isFace = name[6] == 'F';
        draw(isFace ? GL_TRIANGLES : GL_LINES, isFace ? 3 : 2);
        EXPECT_EQ(touchedCount(), 1);
    }
}

TEST_F(FencedProgramsTest, CaptionsObeyByTheirAnchor)
{
    useFenced("Caption");
    setColors(glm::vec4(1.0f));
    texture(8, 8, std::vector<std::uint32_t>(64, ~0u));
    attribute(0, 3, {0.0f, 0.45f, 0.0f, 0.45f, -0.45f, 0.0f}); // the first reaches out, the second in
    draw(GL_POINTS, 2);
    EXPECT_EQ(touchedCount(), 64);
    setSphere({0.45f, -0.45f, 0.0f}, 0.01f);
    draw(GL_POINTS, 2);
    EXPECT_EQ(touchedCount(), 64);
}

TEST_F(FencedProgramsTest, GlyphsObeyByTheAnchorOfTheirLabel)
{
    useFenced("GlyphCaption");
    setColors(glm::vec4(1.0f));
    texture(4, 4, std::vector<std::uint32_t>(16, ~0u));
    attribute(0, 3, {0.0f, 0.0f, 0.0f, 0.75f, 0.0f, 0.0f});
    attribute(1, 1, {0.0f, 0.0f});
    attribute(2, 2, {25.0f, 0.0f, -20.0f, 10.0f}); // each glyph stands where the other label's anchor is
    instanceIntegers(3, 1, GL_INT, {0, 1});
    instanceIntegers(5, 1, GL_INT, {~0u, ~0u});
    instanceIntegers(6, 2, GL_UNSIGNED_INT, {1, 0, 2, 0});
    for (const unsigned location : {3u, 5u, 6u})
        gl->glVertexAttribDivisor(location, 0);
    draw(GL_POINTS, 2);
    EXPECT_EQ(touchedCount(), 16);
    EXPECT_EQ(touchedIn(48, Size), 16);
}

TEST_F(FencedProgramsTest, InstancesObeyWhereTheyStand)
{
    useFenced("InstancedPoints");
    setColors(glm::vec4(1.0f));
    set("pen_width", 4.0f);
    attribute(0, 3, {0.0f, 0.0f, 0.0f});
    instanceFloats(4, 3, {0.75f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f});
    instanceIntegers(5, 1, GL_INT, {~0u, ~0u});
    instanceIntegers(6, 2, GL_UNSIGNED_INT, {1, 0, 2, 0});
    draw(GL_POINTS, 1, 2);
    EXPECT_GT(touchedCount(), 0);
    EXPECT_EQ(touchedIn(40, Size), 0);
}

struct GlueCase
{
    const char* program;
    unsigned mode;
    int count;
    bool isAnchored;
};

// Nodes obey by their places; of edges and faces, the pixels.
TEST_F(FencedProgramsTest, GlueMasksAreCutAsTheItemsAre)
{
    const GlueCase cases[] = {
        {"GluePoints", GL_POINTS, 3, true},        {"GlueLineNodes", GL_LINES, 2, true},
        {"GlueFaceNodes", GL_TRIANGLES, 3, true},  {"GlueLines", GL_LINES, 2, false},
        {"GlueFaceEdges", GL_TRIANGLES, 3, false}, {"GlueFaces", GL_TRIANGLES, 3, false}};
    for (const GlueCase& each : cases) {
        SCOPED_TRACE(each.program);
        useFenced(each.program);
        set("pen_width", each.isAnchored ? 5.0f : 1.0f);
        attribute(0, 3, {0.02f, 0.01f, 0.3f, 0.9f, 0.1f, 0.3f, -0.2f, 0.85f, 0.3f});
        set("fence_to_use", 0);
        draw(each.mode, each.count);
        const auto whole = touched();
        set("fence_to_use", 2);
        setSphere({0.0f, 0.0f, 0.3f}, 0.6f);
        draw(each.mode, each.count);
        const auto cut = touched();
        EXPECT_GT(cut.size(), 0u);
        EXPECT_LT(cut.size(), whole.size());
        for (const auto& pixel : whole) {
            const float x = toDevice(pixel.first), y = -toDevice(pixel.second);
            if (each.isAnchored) {
                // the nodes in the fence: the first one, and of the line its middle
                const bool isHeld = std::hypot(x - 0.02f, y - 0.01f) < 0.15f ||
                                    (each.mode == GL_LINES && std::hypot(x - 0.46f, y - 0.055f) < 0.15f);
                ASSERT_EQ(cut.count(pixel), std::size_t(isHeld)) << pixel.first << ", " << pixel.second;
            } else if (std::abs(std::hypot(x, y) - 0.6f) > 0.04f) {
                ASSERT_EQ(cut.count(pixel), std::size_t(std::hypot(x, y) < 0.6f))
                    << pixel.first << ", " << pixel.second;
            }
        }
    }
}

// Spheres and cylinders are made by later stages, and so are solids along lines.
TEST_F(FencedProgramsTest, BuiltSurfacesAreCutWhereTheyLie)
{
    for (const char* name : {"Sphere", "SmoothSphere", "Cylinder"}) {
        SCOPED_TRACE(name);
        useFenced(name);
        setColors(glm::vec4(1.0f));
        set("model", glm::scale(glm::mat4(1.0f), glm::vec3(0.8f, 0.8f, 0.5f)));
        attribute(0, 3, {0.0f, 0.0f, 0.0f});
        const bool isCylinder = name[0] == 'C';
        gl->glPatchParameteri(GL_PATCH_VERTICES, 1);
        const auto drawAll = [&] { draw(isCylinder ? GL_POINTS : GL_PATCHES, 1); };
        set("view", isCylinder ? glm::rotate(glm::mat4(1.0f), float(M_PI) / 2.0f, glm::vec3(1, 0, 0))
                               : glm::mat4(1.0f));
        set("fence_to_use", 0);
        drawAll();
        const auto whole = touched();
        EXPECT_GT(whole.size(), 500u);
        set("fence_to_use", 2);
        // far to the left, so that its border is nearly the plane x = 0
        setSphere({-100.0f, 0.0f, 0.0f}, 100.0f);
        drawAll();
        const auto cut = touched();
        for (const auto& [x, y] : whole)
            if (x != 31 && x != 32) {
                ASSERT_EQ(cut.count({x, y}), std::size_t(x < 32)) << x << ", " << y;
            }
    }
}

TEST_F(FencedProgramsTest, SolidsAlongLinesAreCutWhereTheirSectionsLie)
{
    useFenced("SolidRegularLines");
    setColors(glm::vec4(1.0f));
    const QVector2D section[] = {{-0.5f, 0.0f}, {0.5f, 0.0f}}, normals[] = {{0.0f, 1.0f}, {0.0f, 1.0f}};
    program->setUniformValueArray("section", section, 2);
    program->setUniformValueArray("section_normals", normals, 2);
    set("section_points_count", 2);
    attribute(0, 3, {-0.8f, 0.0f, 0.0f, -0.8f, 0.0f, 0.0f, 0.8f, 0.0f, 0.0f, 0.8f, 0.0f, 0.0f});
    setSphere({0.0f, 100.2f, 0.0f}, 100.0f); // its border is nearly y = 0.2
    draw(GL_LINES_ADJACENCY, 4);
    const int border = int((1.0f - 0.2f) * 32.0f);
    for (int y = 0; y < Size; ++y)
        if (std::abs(y - border) > 1) {
            EXPECT_EQ(isUntouched(32, y), y < 16 || y > border) << y;
        }
}

} // namespace
