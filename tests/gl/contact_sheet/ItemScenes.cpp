#include "SheetScenes.h"

#include <glm/gtc/constants.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

// The scenes of the programs that draw items. Ids differ in both of their words.

namespace {

constexpr int Highlighted = -2;
constexpr int Hidden = -3;
constexpr std::uint64_t High = 0x100000000u;

const glm::vec4 blue(0.35f, 0.6f, 0.95f, 1.0f);
const glm::vec4 green(0.45f, 0.8f, 0.4f, 1.0f);
const glm::vec4 sand(0.9f, 0.8f, 0.55f, 1.0f);
const glm::vec4 gray(0.6f, 0.6f, 0.6f, 1.0f);

glm::mat4 at(float x, float y, float z, float size = 1.0f)
{
    return glm::scale(glm::translate(glm::mat4(1.0f), {x, y, z}), glm::vec3(size));
}

// A winding line on the ground from left to right.
std::vector<glm::vec3> windingPath(float y, int count)
{
    std::vector<glm::vec3> path;
    for (int i = 0; i < count; ++i) {
        const float x = -1.2f + 2.4f * static_cast<float>(i) / static_cast<float>(count - 1);
        path.emplace_back(x, y + 0.35f * std::sin(3.0f * x), 0.0f);
    }
    return path;
}

} // namespace

// A box, a highlighted one, and a grid of lines; a fourth item is hidden.
void SheetScenes::drawMono()
{
    std::vector<glm::vec3> grid;
    for (int i = -4; i <= 4; ++i) {
        const float t = 0.3f * static_cast<float>(i);
        grid.insert(grid.end(), {{t, -1.2f, 0.0f}, {t, 1.2f, 0.0f}, {-1.2f, t, 0.0f}, {1.2f, t, 0.0f}});
    }
    item(gray, 1);
    feed(grid);
    drawFed(GL_LINES);
    item(blue, 2);
    feed(shapes::box({-0.9f, -0.6f, 0.0f}, {-0.2f, 0.2f, 0.9f}));
    drawFed(GL_TRIANGLES);
    item(green, High + 3, Highlighted);
    feed(shapes::box({0.2f, 0.0f, 0.0f}, {0.8f, 0.7f, 0.5f}));
    drawFed(GL_TRIANGLES);
    item(green, 4, Hidden);
    feed(shapes::box({0.2f, -1.0f, 0.0f}, {1.0f, -0.5f, 0.9f}));
    drawFed(GL_TRIANGLES);
}

void SheetScenes::drawVertexColor()
{
    item(blue, 8);
    feed(shapes::torus(0.85f, 0.3f));
    drawFed(GL_TRIANGLES);
    item(blue, 2 * High + 6, Highlighted);
    feed(shapes::box({-0.25f, -0.25f, -0.3f}, {0.25f, 0.25f, 0.2f}));
    drawFed(GL_TRIANGLES);
}

// A texture with holes, and another that is highlighted: it keeps its shape.
void SheetScenes::drawTexture()
{
    loadTexture(checks(true));
    const std::vector<glm::vec2> corners = {{0, 1}, {1, 1}, {0, 0}, {1, 0}};
    item(blue, 7);
    feed(Shape{{{-1.1f, 0.7f, -0.3f}, {0.9f, 0.7f, -0.3f}, {-1.1f, 0.7f, 1.1f}, {0.9f, 0.7f, 1.1f}},
               {},
               {},
               corners});
    drawFed(GL_TRIANGLE_STRIP);
    item(blue, 3 * High + 7, Highlighted);
    feed(Shape{{{-0.9f, -1.1f, -0.3f}, {0.9f, -1.1f, -0.3f}, {-0.9f, 0.2f, -0.3f}, {0.9f, 0.2f, -0.3f}},
               {},
               {},
               corners});
    drawFed(GL_TRIANGLE_STRIP);
}

void SheetScenes::drawWideLines()
{
    for (int i = 0; i < 12; ++i) {
        const float angle = glm::two_pi<float>() * static_cast<float>(i) / 12.0f;
        const glm::vec3 out(std::cos(angle), std::sin(angle), 0.0f);
        item(i % 3 == 0   ? sand
             : i % 3 == 1 ? blue
                          : green,
             static_cast<unsigned>(i) * High + 10, i == 7 ? Highlighted : -1);
        give("pen_width", 1.0f + static_cast<float>(i));
        feed({0.35f * out, 1.2f * out});
        drawFed(GL_LINES);
    }
}

// Long dashes, short ones, and a solid line.
void SheetScenes::drawDashedLines()
{
    const glm::vec2 dashes[] = {{12.0f, 6.0f}, {4.0f, 3.0f}, {0.0f, 5.0f}};
    const glm::vec4 colors[] = {sand, blue, green};
    for (int i = 0; i < 3; ++i) {
        item(colors[i], static_cast<unsigned>(i) + 20);
        give("u_dashSize", dashes[i].x);
        give("u_gapSize", dashes[i].y);
        std::vector<glm::vec3> turns;
        for (int k = 0; k < 3; ++k) {
            const float reach = 1.3f - 0.36f * static_cast<float>(k) - 0.12f * static_cast<float>(i);
            turns.insert(
                turns.end(),
                {{-reach, -reach, 0}, {reach, -reach, 0}, {reach, reach, 0}, {-reach, reach - 0.36f, 0}});
        }
        feed(turns);
        drawFed(GL_LINE_STRIP);
    }
}

// Two rails along winding paths.
void SheetScenes::drawSolidLines()
{
    const Shape section = shapes::railSection(0.3f);
    std::vector<glm::vec2> points(section.points.begin(), section.points.end());
    std::vector<glm::vec2> normals(section.normals.begin(), section.normals.end());
    const auto give2 = [this](const char* name, const std::vector<glm::vec2>& values) {
        gl->glUniform2fv(program->uniformLocation(name), static_cast<GLsizei>(values.size()), &values[0].x);
    };
    give2("section", points);
    give2("section_normals", normals);
    give("section_points_count", section.count());
    for (const auto& [y, count, id] : {std::tuple(-0.5f, 25, 30u), {0.5f, 6, 31u}}) {
        std::vector<glm::vec3> path = windingPath(y, count);
        path.insert(path.begin(), path.front());
        path.push_back(path.back());
        item(id == 30u ? sand : blue, id * High + id);
        feed(path);
        drawFed(GL_LINE_STRIP_ADJACENCY);
    }
}

void SheetScenes::drawCaptions()
{
    give("tex", 0);
    item(sand, 40);
    loadTexture(textImage("Depot", 20, Qt::white, QColor(40, 100, 170)));
    feed({{-1.3f, 0.3f, 0.4f}});
    drawFed(GL_POINTS);
    item(sand, High + 41, Highlighted);
    loadTexture(textImage("P 12", 20, Qt::white, QColor(40, 100, 170)));
    feed({{0.1f, -0.9f, 0.2f}});
    drawFed(GL_POINTS);
    item(sand, 42);
    loadTexture(textImage("h = 4.5 m", 16, QColor(150, 230, 120), Qt::transparent));
    give("offset", glm::vec2(6.0f, 10.0f));
    feed({{-0.5f, -0.2f, -0.2f}});
    drawFed(GL_POINTS);
    give("offset", glm::vec2(0.0f));
}

// Colours of vertices, a texture, and the item's own colour, in the light.
void SheetScenes::drawMeshes()
{
    loadTexture(checks());
    item(green, 50);
    give("uColorMode", 1);
    place(at(0.1f, 0.55f, 0.1f, 0.75f));
    feed(shapes::torus(0.8f, 0.35f));
    drawFed(GL_TRIANGLES);
    item(green, 51 * High);
    give("uColorMode", 2);
    place(at(-0.5f, -0.65f, -0.1f, 0.9f));
    feed(shapes::box({-0.4f, -0.4f, -0.4f}, {0.4f, 0.4f, 0.4f}));
    drawFed(GL_TRIANGLES);
    item(green, 52 * High + 52);
    give("uColorMode", 0);
    place(at(0.75f, -0.6f, -0.3f, 0.45f));
    feed(shapes::pyramid(1.4f));
    drawFed(GL_TRIANGLES);
}

// One plain, one with a texture, one as wires.
void SheetScenes::drawSpheresOf(unsigned primitive, const std::vector<glm::mat4>& places)
{
    loadTexture(checks());
    feed({glm::vec3(0.0f)});
    for (std::size_t i = 0; i < places.size(); ++i) {
        item(i == 0 ? sand : green, (60 + i) * High + 1);
        give("uColorMode", i == 1 ? 2 : 0);
        give("uWireMode", i == 2);
        const float level = i == 2 ? 8.0f : 16.0f;
        give("uTessLevelOuter", level);
        give("uTessLevelInner", level);
        gl->glPolygonMode(GL_FRONT_AND_BACK, i == 2 ? GL_LINE : GL_FILL);
        place(places[i]);
        drawFed(primitive);
    }
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void SheetScenes::drawSpheres()
{
    drawSpheresOf(GL_PATCHES, {at(-0.55f, -0.5f, 0.0f, 0.55f), at(0.4f, 0.4f, 0.2f, 0.75f),
                               at(0.75f, -0.8f, -0.1f, 0.4f)});
}

void SheetScenes::drawCylinders()
{
    const auto standing = [](const glm::mat4& place, float angle, const glm::vec3& scale) {
        return glm::scale(glm::rotate(place, angle, {1.0f, 0.4f, 0.0f}), scale);
    };
    drawSpheresOf(GL_POINTS, {standing(at(-0.7f, -0.4f, 0.0f), 0.0f, {0.35f, 0.35f, 0.6f}),
                              standing(at(0.4f, 0.5f, 0.2f), -1.1f, {0.45f, 0.45f, 0.8f}),
                              standing(at(0.6f, -0.7f, -0.1f), -0.6f, {0.3f, 0.3f, 0.4f})});
}

// Two labels letter by letter: one as laid out, one scaled to a height.
void SheetScenes::drawGlyphs()
{
    struct Label
    {
        QString text;
        glm::vec3 anchor;
        float height;
        std::uint32_t flags;
        std::uint32_t id;
    };
    const Label labels[] = {{"Gate 7", {-1.4f, 0.2f, 0.5f}, 0.0f, ~0u, 70},
                            {"Pier", {-0.5f, -0.7f, 0.0f}, 30.0f, ~0u - 1u, 71}};
    give("tex", 0);
    give("item_color", sand);
    for (std::uint32_t k = 0; k < 2; ++k) {
        float x = 0.0f;
        for (const QChar letter : labels[k].text) {
            const QImage image = textImage(letter, 20, Qt::white, Qt::transparent);
            loadTexture(image, true);
            feed({labels[k].anchor});
            attribute(1, 1, {labels[k].height});
            attribute(2, 2, {x, 0.0f});
            instanceIntegers(3, 1, GL_INT, {k});
            instanceIntegers(5, 1, GL_INT, {labels[k].flags});
            instanceIntegers(6, 2, GL_UNSIGNED_INT, {labels[k].id, k});
            drawFed(GL_POINTS);
            x += static_cast<float>(image.width());
        }
    }
}

// A spiral whose points grow.
void SheetScenes::drawPoints()
{
    for (int i = 0; i < 20; ++i) {
        const float share = static_cast<float>(i) / 19.0f;
        const float angle = 14.0f * std::sqrt(share);
        item(i % 2 ? blue : sand, static_cast<unsigned>(i) * High + 80, i == 17 ? Highlighted : -1);
        give("pen_width", 2.0f + 18.0f * share);
        const float radius = 0.2f + 1.1f * share;
        feed({{radius * std::cos(angle), radius * std::sin(angle), 0.5f * share}});
        drawFed(GL_POINTS);
    }
}

// One cluster of points in nine places: the fifth is highlighted, the seventh hidden.
void SheetScenes::drawInstances()
{
    item(blue, 0);
    give("pen_width", 7.0f);
    feed({{-0.12f, 0, 0}, {0.12f, 0, 0}, {0, -0.12f, 0}, {0, 0.12f, 0}, {0, 0, 0.25f}});
    std::vector<float> places;
    std::vector<std::uint32_t> flags;
    std::vector<std::uint32_t> ids;
    for (std::uint32_t i = 0; i < 9; ++i) {
        places.insert(places.end(), {0.8f * (static_cast<float>(i % 3) - 1.0f),
                                     0.8f * (static_cast<float>(i / 3) - 1.0f), 0.0f});
        flags.push_back(static_cast<std::uint32_t>(i == 4 ? Highlighted : i == 6 ? Hidden : -1));
        ids.insert(ids.end(), {90, i});
    }
    instanceFloats(4, 3, places);
    instanceIntegers(5, 1, GL_INT, flags);
    instanceIntegers(6, 2, GL_UNSIGNED_INT, ids);
    drawFed(GL_POINTS, 9);
}

// Two polylines; one runs out of the picture, and its last segments are too short for markers in between.
void SheetScenes::drawEditNodes()
{
    give("pen_width", 9.0f);
    item(sand, 100);
    give("first_marker_idx", 0);
    feed({{-2.9f, 0.9f, 0.0f},
          {-0.5f, 0.9f, 0.0f},
          {0.6f, 1.1f, 0.0f},
          {0.9f, 0.8f, 0.0f},
          {1.0f, 0.5f, 0.0f}});
    drawFed(GL_LINE_STRIP);
    item(blue, High + 101);
    give("first_marker_idx", 9);
    feed({{-0.9f, -0.2f, 0.0f}, {-0.5f, -1.1f, 0.0f}, {0.9f, -0.6f, 0.3f}});
    drawFed(GL_LINE_STRIP);
}

void SheetScenes::drawEditPoints()
{
    give("pen_width", 9.0f);
    item(sand, 102);
    give("first_marker_idx", 0);
    feed(windingPath(0.5f, 7));
    drawFed(GL_POINTS);
    item(blue, High + 103, Highlighted);
    give("first_marker_idx", 14);
    feed(windingPath(-0.5f, 5));
    drawFed(GL_POINTS);
}

void SheetScenes::drawFaceNodes()
{
    give("pen_width", 10.0f);
    item(sand, 110);
    feed(shapes::pyramid(1.3f));
    drawFed(GL_TRIANGLES);
    item(blue, High + 111);
    feed(shapes::box({-0.4f, -0.4f, -0.2f}, {0.4f, 0.4f, 0.3f}));
    drawFed(GL_TRIANGLES);
}

void SheetScenes::drawLineNodes()
{
    give("pen_width", 10.0f);
    item(sand, 112);
    feed(windingPath(0.5f, 9));
    drawFed(GL_LINE_STRIP);
    item(blue, High + 113, Highlighted);
    feed(windingPath(-0.4f, 6));
    drawFed(GL_LINE_STRIP);
}
