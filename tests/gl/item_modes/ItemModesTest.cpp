#include "ItemVariants.h"

#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstdio>
#include <random>

// The protocol of items through every way that a program can be put together of the stages: with a geometry
// stage between or not, with the item in uniforms or in attributes of its instance, coloured by the item, its
// vertices or a texture. Every pixel of every output is compared with what the protocol says.
namespace {

class ItemModesTest : public ShaderDrawing, public ::testing::WithParamInterface<ItemVariant>
{
protected:
    const glm::vec4 itemColor{0.2f, 0.4f, 0.6f, 0.8f};
    const glm::vec4 selectionColor{1.0f, 0.0f, 0.8f, 0.9f};
    const glm::vec4 ownColor{0.6f, 0.2f, 1.0f, 0.8f}; ///< of vertices and texels

    void prepare() override
    {
        use(recipe("variant", GetParam().stages, GetParam().defines));
        if (program->uniformLocation("uLightMode") >= 0) set("uLightMode", false);
        if (program->uniformLocation("uColorMode") >= 0) set("uColorMode", GetParam().colorMode);
        if (GetParam().name == "SphereWires") set("uWireMode", true);
        if (isMarker()) set("first_marker_idx", 1);
        if (is(Shape::EditedLine)) set("is_show_adding_markers", false);
        set("selection_rect", glm::vec4(0.0f, 0.0f, 64.0f, 64.0f));
        setItem(-1, glm::uvec2(0u));
        setAlpha(0.8f);
        setDepth(0.3f);
    }
    bool is(Shape shape) const { return GetParam().shape == shape; }
    bool is(Colors colors) const { return GetParam().colors == colors; }
    bool is(Instances instances) const { return GetParam().instances == instances; }
    bool isDashed() const { return GetParam().name == "Dashed"; }
    bool isMarker() const { return is(Shape::EditedLine) || is(Shape::EditedPoint); }
    int instances() const { return is(Instances::Positions) || is(Instances::Matrices) ? 2 : 1; }
    /// What the program adds to the index of the first item.
    int offset() const { return is(Instances::None) && !isMarker() ? 0 : 1; }

    /// Of two instances the second is the item; the first, another one, lies out of view.
    void setItem(int flags, const glm::uvec2& id)
    {
        m_flags = flags;
        m_id = id;
        if (is(Instances::None)) {
            set("item_flags", flags);
            set("item_id", id);
            return;
        }
        if (is(Instances::Glyphs)) {
            instanceIntegers(3, 1, GL_INT, {1u});
            instanceIntegers(5, 1, GL_INT, {static_cast<std::uint32_t>(flags)});
            instanceIntegers(6, 2, GL_UNSIGNED_INT, {id.x, id.y});
            return;
        }
        const bool byMatrices = is(Instances::Matrices);
        const unsigned location = byMatrices ? 8 : 5;
        if (byMatrices)
            instanceMatrices(4,
                             {glm::translate(glm::mat4(1.0f), glm::vec3(5.0f, 0.0f, 0.0f)), glm::mat4(1.0f)});
        else
            instanceFloats(4, 3, {5, 0, 0, 0, 0, 0});
        instanceIntegers(location, 1, GL_INT, {0xFFFFFFFEu, static_cast<std::uint32_t>(flags)});
        instanceIntegers(location + 1, 2, GL_UNSIGNED_INT, {0x11111111u, 0x22222222u, id.x, id.y});
    }

    /// The alpha of the item before its flags, wherever it comes from.
    void setAlpha(float alpha)
    {
        m_alpha = is(Colors::Item) ? alpha : std::round(alpha * 255.0f) / 255.0f;
        setColors(is(Colors::Item)     ? glm::vec4(glm::vec3(itemColor), alpha)
                  : is(Colors::Bitmap) ? glm::vec4(glm::vec3(itemColor), 1.0f)
                                       : itemColor,
                  selectionColor);
        if (is(Shape::Caption) || is(Colors::Texture))
            setTexture(is(Colors::Item) || is(Colors::Vertices) ? 1.0f : m_alpha);
        if (is(Colors::Bitmap)) setTexture(m_alpha);
        if (is(Colors::Vertices)) setVertexColors(m_alpha);
    }
    void setTexture(float alpha)
    {
        const auto byte = [](float value) { return static_cast<std::uint32_t>(value * 255.0f + 0.5f); };
        ShaderDrawing::texture(20, 20,
                               std::vector<std::uint32_t>(400, byte(ownColor.r) | byte(ownColor.g) << 8 |
                                                                   byte(ownColor.b) << 16 |
                                                                   byte(alpha) << 24));
    }
    void setVertexColors(float alpha)
    {
        std::vector<float> values;
        for (int i = 0; i < 4; ++i)
            values.insert(values.end(), {ownColor.r, ownColor.g, ownColor.b, alpha});
        if (!is(Shape::EmulatedSolid)) return attribute(1, 4, values);
        for (unsigned corner = 0; corner < 4; ++corner)
            instanceFloats(4 + corner, 4, values);
    }
    /// Makes the shape, all of it at this depth.
    void setDepth(float z)
    {
        m_depth = (double(z) + 1.0) / 2.0;
        switch (GetParam().shape) {
        case Shape::Rectangle:
            rectangle(-0.5f, -0.5f, 0.5f, 0.5f, z);
            if (!is(Colors::Item)) attribute(3, 2, {0, 0, 1, 0, 0, 1, 1, 1});
            break;
        case Shape::Line:
            line({-0.5f, 0.015625f, z}, {0.5f, 0.015625f, z});
            if (!isDashed()) set("pen_width", 8.0f);
            break;
        case Shape::Solid:
        case Shape::EmulatedSolid:
            makeSolid(z);
            break;
        case Shape::Caption:
            attribute(0, 3, {-0.25f, -0.25f, z});
            break;
        case Shape::Glyph:
            attribute(0, 3, {-0.25f, -0.25f, z});
            attribute(1, 1, {0.0f});
            attribute(2, 2, {0.0f, 0.0f});
            break;
        case Shape::Sphere:
        case Shape::Cylinder:
            makeSurface(z);
            break;
        default: // points, the first of which is in view, in the middle of a pixel
            attribute(0, 3, {0.015625f, 0.015625f, z, 3.0f, 0.0f, z, 0.0f, 3.0f, z});
            set("pen_width", 9.0f);
            break;
        }
    }
    /// The surface as a square, flat and seen from its side: the cylinder from aside, the sphere, with four
    /// meridians, from above.
    void makeSurface(float z)
    {
        const bool isSphere = is(Shape::Sphere);
        const float size = isSphere ? std::sqrt(0.5f) : 0.5f;
        const float quarter = glm::radians(90.0f);
        glm::mat4 model = glm::translate(glm::mat4(1.0f), glm::vec3(0.0f, 0.0f, z));
        model = glm::scale(model, glm::vec3(size, size, 0.0f));
        model = isSphere ? glm::rotate(model, 0.5f * quarter, glm::vec3(0.0f, 0.0f, 1.0f))
                         : glm::rotate(model, quarter, glm::vec3(1.0f, 0.0f, 0.0f));
        attribute(0, 3, {0.0f, 0.0f, 0.0f});
        set("model", model);
        if (!isSphere) return;
        gl->glPatchParameteri(GL_PATCH_VERTICES, 1);
        set("uTessLevelInner", 4.0f);
        set("uTessLevelOuter", 4.0f);
    }
    void makeSolid(float z)
    {
        const glm::vec2 section[2] = {{-0.25f, 0.0f}, {0.25f, 0.0f}};
        gl->glUniform2fv(program->uniformLocation("section"), 2, &section[0].x);
        set("section_points_count", 2);
        const std::vector<float> points = {-0.5f, 0, z, -0.5f, 0, z, 0.5f, 0, z, 0.5f, 0, z};
        if (is(Shape::Solid)) return attribute(0, 3, points);
        for (unsigned corner = 0; corner < 4; ++corner)
            instanceFloats(corner, 3, {points.begin() + 3 * corner, points.begin() + 3 * corner + 3});
    }

    void drawIn(Mode mode)
    {
        set("draw_mode", static_cast<int>(mode));
        switch (GetParam().shape) {
        case Shape::Rectangle:
            return draw(GL_TRIANGLE_STRIP, 4, instances());
        case Shape::Line:
        case Shape::LineNodes:
        case Shape::EditedLine:
            return draw(GL_LINES, 2, instances());
        case Shape::FaceNodes:
            return draw(GL_TRIANGLES, 3, instances());
        case Shape::Solid:
        case Shape::EmulatedSolid:
            return draw(GL_LINES_ADJACENCY, 4, instances());
        case Shape::Sphere:
            return draw(GL_PATCHES, 1, instances());
        default:
            return draw(GL_POINTS, 1, instances());
        }
    }

    /// The colour after the flags.
    glm::dvec4 shown() const
    {
        if (m_flags == -3) return glm::dvec4(0.0);
        if (m_flags == -2) {
            // the shape that a texture gives is kept
            const bool isShaped = is(Colors::Bitmap) || is(Colors::Texture);
            return {glm::dvec3(selectionColor),
                    double(selectionColor.a) * (isShaped ? double(m_alpha) : 1.0)};
        }
        const bool isOwn = is(Colors::Vertices) || is(Colors::Texture);
        return {glm::dvec3(isOwn ? ownColor : itemColor), double(m_alpha)};
    }
    /// What the outputs should hold where the item is drawn; nothing where it leaves no trace.
    bool expected(Mode mode, std::uint32_t depth, std::array<std::uint32_t, 4>& words) const
    {
        const glm::dvec4 seen = shown();
        words = {0, 0, 0, 0};
        if (seen.a == 0.0 || mode == SelectionBuffer) return false;
        if (mode == Ordinal) {
            for (int k = 0; k < 4; ++k)
                words[0] |= static_cast<std::uint32_t>(std::lround(seen[k] * 255.0)) << (8 * k);
            return true;
        }
        if (mode == SelectionMask && seen.a < 0.5) return false;
        if (mode == GlueMask && isDashed()) return false;
        words[1] = m_id.x;
        words[2] = m_id.y;
        if (mode == SelectionMask) words[0] = depth;
        if (mode == SelectionMask && isMarker()) words[3] = ~1u;
        if (mode == GlueMask) words[3] = glueMark();
        return true;
    }
    /// What the glue mask says besides the id: nodes and single points have a mark.
    std::uint32_t glueMark() const
    {
        if (isMarker()) return ~8u;
        const QString& last = GetParam().stages.back();
        return last == "mono.fragment" || last == "mono.point.fragment" ? ~9u : 0u;
    }
    /// Draws and compares every pixel.
    void expectProtocol(Mode mode)
    {
        drawIn(mode);
        int touched = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                std::array<std::uint32_t, 4> words{};
                const std::uint32_t depth = depthBits(x, y);
                const bool isDrawn = depth != 0x3F800000u;
                touched += isDrawn;
                if (!isDrawn) continue;
                ASSERT_NEAR(double(depths[std::size_t(y * Size + x)]), m_depth, 1e-6);
                ASSERT_TRUE(expected(mode, depth, words)) << "mode " << mode << ", flags " << m_flags;
                for (int i = 0; i < 4; ++i) {
                    if (mode == Ordinal && i == 0) {
                        for (int k = 0; k < 4; ++k) {
                            const int seen = int(word(x, y, 0) >> (8 * k) & 255u);
                            ASSERT_LE(std::abs(seen - int(words[0] >> (8 * k) & 255u)), 1) << "colour " << k;
                        }
                        continue;
                    }
                    ASSERT_EQ(word(x, y, i), words[std::size_t(i)]) << "mode " << mode << ", output " << i;
                    ++comparedWords;
                }
            }
        std::array<std::uint32_t, 4> unused{};
        ASSERT_EQ(touched, expected(mode, 0, unused) ? covered() : 0)
            << "mode " << mode << ", flags " << m_flags;
        ASSERT_EQ(touchedCount(), touched);
        ++pictures;
    }
    /// Pixels of the shape.
    int covered() const
    {
        switch (GetParam().shape) {
        case Shape::Rectangle:
        case Shape::Sphere:
        case Shape::Cylinder:
            return 32 * 32;
        case Shape::Line:
            return isDashed() ? 32 : 32 * 8 + 32; // a strip with a cap of 4 pixels' height at either end
        case Shape::Solid:
        case Shape::EmulatedSolid:
            return 32 * 16;
        case Shape::Caption:
        case Shape::Glyph:
            return 20 * 20;
        case Shape::EditedLine:
        case Shape::EditedPoint:
            return 9 * 9;
        default:
            return 69; // pixels whose centres lie in the disc of 9 pixels about one of them
        }
    }
    /// Selects with an index for the item and checks that this bit alone is set, or none.
    void expectBit(int index, bool isSet)
    {
        beginSelection();
        set("item_index", index - offset());
        expectProtocol(SelectionBuffer);
        std::vector<std::uint32_t> words(SelectionWords, 0u);
        if (isSet && index >= 0 && index < 32 * SelectionWords)
            words[static_cast<std::size_t>(index / 32)] = 1u << (index % 32);
        ASSERT_EQ(selectedWords(), words) << index;
    }

    int pictures = 0;
    std::size_t comparedWords = 0;

private:
    int m_flags = -1;
    glm::uvec2 m_id{0u};
    float m_alpha = 1.0f;
    double m_depth = 0.0;
};

TEST_P(ItemModesTest, EveryModeFollowsFlagsAndAlpha)
{
    const glm::uvec2 id(0x89ABCDEFu, 0xFEDCBA98u);
    const std::pair<int, float> cases[] = {{-1, 0.8f}, {-1, 0.0f}, {-1, 0.49f}, {-1, 0.51f},
                                           {0, 0.8f},  {-2, 0.8f}, {-2, 0.0f},  {-3, 0.8f}};
    for (const auto& [flags, alpha] : cases) {
        setItem(flags, id);
        setAlpha(alpha);
        for (const Mode mode : {Ordinal, SelectionMask, GlueMask})
            expectProtocol(mode);
        expectBit(37, shown().a >= 0.5);
        if (HasFatalFailure()) FAIL() << "flags " << flags << ", alpha " << alpha;
    }
    std::printf("%s: %d pictures, %zu words compared\n", GetParam().name.c_str(), pictures, comparedWords);
}

TEST_P(ItemModesTest, IdsAndDepthsAreExactToTheLastBit)
{
    std::mt19937 random(8);
    std::uniform_real_distribution<float> depth(-1.0f, 1.0f);
    std::vector<glm::uvec2> ids = {{1u, 0u},          {0x01000001u, 0u}, {0xFFFFFFFFu, 0u},         {0u, 1u},
                                   {1u, 0x80000000u}, {~0u, ~0u},        {0xFFFFFFFFu, 0x7FFFFFFFu}};
    for (int i = 0; i < 3; ++i)
        ids.emplace_back(static_cast<std::uint32_t>(random()), static_cast<std::uint32_t>(random()));
    for (const glm::uvec2& id : ids) {
        setItem(-1, id);
        setDepth(depth(random));
        expectProtocol(SelectionMask);
        expectProtocol(GlueMask);
        if (HasFatalFailure()) FAIL() << "id " << id.y << ", " << id.x;
    }
}

// A highlighted item has the alpha of the selection colour, which alone is exact in every program.
TEST_P(ItemModesTest, SelectionTakesAnAlphaOfOneHalfAndNoLess)
{
    setItem(-2, glm::uvec2(1u, 2u));
    setAlpha(1.0f);
    for (const float alpha : {0.5f, std::nextafter(0.5f, 0.0f)}) {
        set("selection_color", glm::vec4(glm::vec3(selectionColor), alpha));
        drawIn(SelectionMask);
        EXPECT_EQ(touchedCount(), alpha < 0.5f ? 0 : covered());
        beginSelection();
        set("item_index", 3);
        drawIn(SelectionBuffer);
        EXPECT_EQ(selectedWords()[0], alpha < 0.5f ? 0u : 1u << (3 + offset()));
    }
}

// What has no place, because of a matrix or a coordinate that is no number, is in no picture.
TEST_P(ItemModesTest, WhatHasNoPlaceLeavesNoTrace)
{
    set("model", glm::mat4(glm::vec4(NAN), glm::vec4(NAN), glm::vec4(NAN), glm::vec4(NAN)));
    for (const Mode mode : {Ordinal, SelectionMask, GlueMask}) {
        drawIn(mode);
        EXPECT_EQ(touchedCount(), 0) << mode;
    }
    beginSelection();
    drawIn(SelectionBuffer);
    EXPECT_EQ(selectedWords(), std::vector<std::uint32_t>(SelectionWords, 0u));
}

TEST_P(ItemModesTest, EachIndexSetsItsBit)
{
    set("selection_rect", glm::vec4(0.0f, 0.0f, 11.0f, 64.0f));
    expectBit(5, false); // the rectangle misses the shape
    set("selection_rect", glm::vec4(0.0f, 0.0f, 64.0f, 64.0f));
    for (const int index : {0, 1, 31, 32, 33, 63, 64, 255, 256, -1}) {
        expectBit(index, true);
        if (HasFatalFailure()) FAIL() << index;
    }
}

INSTANTIATE_TEST_SUITE_P(Programs, ItemModesTest, ::testing::ValuesIn(itemVariants()),
                         [](const auto& variant) { return variant.param.name; });

} // namespace
