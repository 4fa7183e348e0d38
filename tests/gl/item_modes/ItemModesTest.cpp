#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstdio>
#include <random>

// The protocol of items through every way that a program can be put together of the stages: with a geometry
// stage between or not, with the item in uniforms or in attributes of its instance, coloured by the item, its
// vertices or a texture. Every pixel of every output is compared with what the protocol says.
namespace {

enum Mode { Ordinal, SelectionMask, GlueMask, SelectionBuffer };

enum class Shape { Rectangle, Line, Solid, EmulatedSolid, Caption };
enum class Colors { Item, Vertices, Texture, Bitmap };
enum class Instances { None, Positions, Matrices };

struct Variant
{
    std::string name;
    QStringList stages;
    std::vector<std::string> defines;
    Shape shape;
    Colors colors;
    int colorMode = 0; ///< of mesh.fragment
    Instances instances = Instances::None;
};

const std::string color = "RX_USE_PER_VERTEX_COLOR";
const std::string normal = "RX_USE_PER_VERTEX_NORMAL";
const std::string texture = "RX_USE_PER_VERTEX_TEX_COORDS";
const std::string bitmap = "RX_USE_TEXTURE_AS_BITMAP";

std::vector<Variant> variants()
{
    const QStringList dashed = {"dashedLines.vertex", "dashedLines.fragment"};
    const QStringList mono = {"common.vertex", "mono.fragment"};
    const QStringList wide = {"common.vertex", "WideLines.geom", "mono.fragment"};
    const QStringList solid = {"dummy.vertex", "SolidRegularLines.geom", "mesh.fragment"};
    const QStringList solidMono = {"dummy.vertex", "SolidRegularLines.geom", "mono.fragment"};
    const QStringList solidTexture = {"dummy.vertex", "SolidRegularLines.geom", "texture.fragment"};
    const QStringList textured = {"common.vertex", "texture.fragment"};
    const QStringList caption = {"common.vertex", "caption.geom", "texture.fragment"};
    const QStringList captionMono = {"common.vertex", "caption.geom", "mono.fragment"};
    const QStringList mesh = {"common.vertex", "mesh.fragment"};
    const std::vector<std::string> all = {color, normal, texture};
    const std::string emulation = "RX_USE_ADJACENCY_EMULATION";

    std::vector<Variant> list = {
        {"Dashed", dashed, {}, Shape::Line, Colors::Item},
        {"Solid", solid, {normal}, Shape::Solid, Colors::Item},
        {"SolidVertexColor", solid, all, Shape::Solid, Colors::Vertices, 1},
        {"SolidTexture", solid, all, Shape::Solid, Colors::Texture, 2},
        {"SolidMono", solidMono, {}, Shape::Solid, Colors::Item},
        {"SolidMonoVertexColor", solidMono, {color}, Shape::Solid, Colors::Vertices},
        {"SolidPlainTexture", solidTexture, {texture}, Shape::Solid, Colors::Texture},
        {"EmulatedSolid", solid, {normal, emulation}, Shape::EmulatedSolid, Colors::Item},
        {"EmulatedSolidVertexColor",
         solid,
         {normal, color, emulation},
         Shape::EmulatedSolid,
         Colors::Vertices,
         1},
    };
    const std::vector<Variant> common = {
        {"Mono", mono, {}, Shape::Rectangle, Colors::Item},
        {"VertexColor", mono, {color}, Shape::Rectangle, Colors::Vertices},
        {"Texture", textured, {texture}, Shape::Rectangle, Colors::Texture},
        {"Bitmap", textured, {texture, bitmap}, Shape::Rectangle, Colors::Bitmap},
        {"Wide", wide, {}, Shape::Line, Colors::Item},
        {"WideVertexColor", wide, {color}, Shape::Line, Colors::Vertices},
        {"Caption", caption, {}, Shape::Caption, Colors::Texture},
        {"CaptionBitmap", caption, {bitmap}, Shape::Caption, Colors::Bitmap},
        {"CaptionMono", captionMono, {}, Shape::Caption, Colors::Item},
        {"CaptionVertexColor", captionMono, {color}, Shape::Caption, Colors::Vertices},
        {"Mesh", mesh, all, Shape::Rectangle, Colors::Item},
        {"MeshVertexColor", mesh, all, Shape::Rectangle, Colors::Vertices, 1},
        {"MeshTexture", mesh, all, Shape::Rectangle, Colors::Texture, 2},
        {"MeshWithoutAttributes", mesh, {}, Shape::Rectangle, Colors::Item, 2},
    };
    for (const Variant& variant : common)
        for (const Instances instances : {Instances::None, Instances::Positions, Instances::Matrices}) {
            Variant one = variant;
            one.instances = instances;
            if (instances != Instances::None) one.defines.emplace_back("RX_USE_INSTANCED_DRAW");
            if (instances == Instances::Positions) one.defines.emplace_back("RX_USE_INSTANCE_POSITION");
            if (instances == Instances::Positions) one.name += "AtPositions";
            if (instances == Instances::Matrices) one.name += "ByMatrices";
            list.push_back(one);
        }
    return list;
}

class ItemModesTest : public ShaderDrawing, public ::testing::WithParamInterface<Variant>
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
        set("selection_rect", glm::vec4(0.0f, 0.0f, 64.0f, 64.0f));
        setItem(-1, glm::uvec2(0u));
        setAlpha(0.8f);
        setDepth(0.3f);
    }
    bool is(Shape shape) const { return GetParam().shape == shape; }
    bool is(Colors colors) const { return GetParam().colors == colors; }
    bool isInstanced() const { return GetParam().instances != Instances::None; }
    bool isDashed() const { return GetParam().name == "Dashed"; }

    /// Of two instances the second is the item; the first, another one, lies out of view.
    void setItem(int flags, const glm::uvec2& id)
    {
        m_flags = flags;
        m_id = id;
        if (!isInstanced()) {
            set("item_flags", flags);
            set("item_id", id);
            return;
        }
        const bool byMatrices = GetParam().instances == Instances::Matrices;
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
        }
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
        const int instances = isInstanced() ? 2 : 1;
        switch (GetParam().shape) {
        case Shape::Rectangle:
            return draw(GL_TRIANGLE_STRIP, 4, instances);
        case Shape::Line:
            return draw(GL_LINES, 2, instances);
        case Shape::Solid:
        case Shape::EmulatedSolid:
            return draw(GL_LINES_ADJACENCY, 4, instances);
        case Shape::Caption:
            return draw(GL_POINTS, 1, instances);
        }
    }

    /// The colour after the flags.
    glm::dvec4 shown() const
    {
        if (m_flags == -3) return glm::dvec4(0.0);
        if (m_flags == -2) {
            // texture.fragment keeps the shape that the texture gives
            const bool isShaped = is(Colors::Bitmap) || (is(Colors::Texture) && GetParam().colorMode == 0);
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
        if (mode == GlueMask && GetParam().stages.contains("mono.fragment")) words[3] = ~9u;
        return true;
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
            return 32 * 32;
        case Shape::Line:
            return isDashed() ? 32 : 32 * 8 + 32; // a strip with a cap of 4 pixels' height at either end
        case Shape::Solid:
        case Shape::EmulatedSolid:
            return 32 * 16;
        case Shape::Caption:
            return 20 * 20;
        }
        return 0;
    }
    /// Selects with an index for the item and checks that this bit alone is set, or none.
    void expectBit(int index, bool isSet)
    {
        beginSelection();
        set("item_index", isInstanced() ? index - 1 : index);
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
        EXPECT_EQ(selectedWords()[0], alpha < 0.5f ? 0u : isInstanced() ? 1u << 4 : 1u << 3);
    }
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

INSTANTIATE_TEST_SUITE_P(Programs, ItemModesTest, ::testing::ValuesIn(variants()),
                         [](const auto& variant) { return variant.param.name; });

} // namespace
