#include <tests/gl/markers/Feedback.h>
#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstdio>
#include <random>

namespace {

constexpr int Normal = -1;
constexpr int Highlighted = -2;
constexpr int Hidden = -3;
const glm::vec4 itemColor(0.2f, 0.4f, 0.6f, 1.0f);
const glm::vec4 selectionColor(1.0f, 0.0f, 0.8f, 1.0f);

struct Glyph
{
    glm::vec3 anchor{0.0f};
    float height = 0.0f;
    glm::vec2 place{0.0f};
    int item = 0;
    int flags = Normal;
    std::uint64_t id = 0;
};

class GlyphQuadsTest : public ShaderDrawing
{
protected:
    void prepare() override
    {
        use("GlyphCaption");
        setColors(itemColor, selectionColor);
    }

    void feed(const std::vector<Glyph>& glyphs)
    {
        std::vector<float> anchors;
        std::vector<float> heights;
        std::vector<float> places;
        std::vector<std::uint32_t> items;
        std::vector<std::uint32_t> flags;
        std::vector<std::uint32_t> ids;
        for (const Glyph& glyph : glyphs) {
            anchors.insert(anchors.end(), {glyph.anchor.x, glyph.anchor.y, glyph.anchor.z});
            heights.push_back(glyph.height);
            places.insert(places.end(), {glyph.place.x, glyph.place.y});
            items.push_back(static_cast<std::uint32_t>(glyph.item));
            flags.push_back(static_cast<std::uint32_t>(glyph.flags));
            ids.push_back(static_cast<std::uint32_t>(glyph.id & 0xFFFFFFFFu));
            ids.push_back(static_cast<std::uint32_t>(glyph.id >> 32));
        }
        attribute(0, 3, anchors);
        attribute(1, 1, heights);
        attribute(2, 2, places);
        instanceIntegers(3, 1, GL_INT, items);
        instanceIntegers(5, 1, GL_INT, flags);
        instanceIntegers(6, 2, GL_UNSIGNED_INT, ids);
        for (const unsigned location : {3u, 5u, 6u})
            gl->glVertexAttribDivisor(location, 0);
        m_count = static_cast<int>(glyphs.size());
    }

    void drawGlyphs(int mode = 0)
    {
        set("draw_mode", mode);
        draw(GL_POINTS, m_count);
    }

    /// The point of normalised device coordinates at a corner of pixels, counted from the top left.
    static glm::vec3 atPixel(double x, double y, double z = 0.0)
    {
        return glm::vec3(x / 32.0 - 1.0, 1.0 - y / 32.0, z);
    }

    void opaqueTexture(int width, int height)
    {
        texture(width, height, std::vector<std::uint32_t>(std::size_t(width) * std::size_t(height), ~0u));
    }

    /// Checks that exactly the pixels of this rectangle are drawn, the right and bottom ones excluded.
    void expectRectangle(int left, int top, int right, int bottom)
    {
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                ASSERT_EQ(!isUntouched(x, y), x >= left && x < right && y >= top && y < bottom)
                    << x << ", " << y;
    }

    int m_count = 0;
};

struct Corner
{
    glm::vec4 position;
    glm::vec2 texture;
};

struct Window
{
    float left = 0.0f;
    float right = 1.0f;
    float top = 0.0f;
    float bottom = 1.0f;
};

// Random glyphs with their places, sizes and windows, corner by corner.
class GlyphCornersTest : public GlyphQuadsTest
{
protected:
    static constexpr double Tolerance = 2e-3; // pixels, of coordinates up to some 500

    void prepare() override
    {
        use({"corners",
             {shaderPath("PerGlyphCaption.vertex"), shaderPath("PerGlyphCaption.geom"),
              shaderPath("texture.fragment")},
             {"RX_USE_INSTANCED_DRAW", "RX_USE_TEXTURE_AS_BITMAP"}},
            {"gl_Position", "texture_coords"});
        projection = glm::perspective(1.0f, 1.0f, 0.5f, 100.0f);
        view = glm::lookAt(glm::vec3(4, -9, 6), glm::vec3(0.5f, 0, 1), glm::vec3(0, 0, 1));
        model = glm::rotate(glm::translate(glm::mat4(1.0f), {0.3f, 0.2f, -0.4f}), 0.4f, {0, 0.6f, 0.8f});
        set("projection", projection);
        set("view", view);
        set("model", model);
    }
    float random(double from, double to)
    {
        return static_cast<float>(std::uniform_real_distribution<double>(from, to)(m_random));
    }
    Glyph randomGlyph()
    {
        Glyph glyph;
        glyph.anchor = {random(-2, 2), random(-2, 2), random(-2, 2)};
        const double kind = double(random(0, 3));
        glyph.height = kind < 1.0 ? 0.0f : kind < 1.3 ? random(-20, -1) : random(1, 40);
        glyph.place = {random(-30, 60), random(-20, 20)};
        return glyph;
    }
    /// Compares the two triangles of one glyph with its four corners.
    void compare(const Corner* corners, const Glyph& glyph, const glm::dvec2& size, const Window& window)
    {
        const glm::dvec4 clip = glm::dmat4(projection) * glm::dmat4(view) * glm::dmat4(model) *
                                glm::dvec4(glm::dvec3(glyph.anchor), 1.0);
        const double scale = glyph.height > 0.0f ? double(glyph.height) / size.y : 1.0;
        // on screen, from the top left: places are counted upwards, and images have their top row at t = 0
        glm::dvec2 anchor((clip.x / clip.w + 1.0) * 32.0, (1.0 - clip.y / clip.w) * 32.0);
        if (glyph.height <= 0.0f) {
            const glm::dvec2 shifted = anchor + (0.5 - 1.0 / 64.0);
            const glm::dvec2 corner = glm::floor(shifted);
            for (const double distance : {shifted.x - corner.x, shifted.y - corner.y})
                if (distance < Tolerance || distance > 1.0 - Tolerance) return; // to either one
            anchor = corner;
        }
        const double left = anchor.x + scale * double(glyph.place.x);
        const double bottom = anchor.y - scale * double(glyph.place.y);
        std::vector<glm::vec2> seen;
        for (int i = 0; i < 6; ++i) {
            const glm::dvec2 t(corners[i].texture);
            const glm::dvec2 expected(left + scale * size.x * (t.x - double(window.left)),
                                      bottom - scale * size.y * (double(window.bottom) - t.y));
            const glm::dvec4 p(corners[i].position);
            const glm::dvec2 pixel((p.x + 1.0) * 32.0, (1.0 - p.y) * 32.0);
            m_largest = std::max(m_largest, glm::length(pixel - expected));
            EXPECT_NEAR(p.z, clip.z / clip.w, 1e-5);
            EXPECT_NEAR(p.w, 1.0, 1e-6);
            if (std::find(seen.begin(), seen.end(), corners[i].texture) == seen.end())
                seen.push_back(corners[i].texture);
        }
        EXPECT_EQ(seen.size(), 4u);
        for (const glm::vec2& t : {glm::vec2(window.left, window.bottom),
                                   {window.right, window.bottom},
                                   {window.left, window.top},
                                   {window.right, window.top}})
            EXPECT_NE(std::find(seen.begin(), seen.end(), t), seen.end());
        ++m_cases;
    }

    glm::mat4 projection;
    glm::mat4 view;
    glm::mat4 model;
    std::mt19937 m_random{7};
    double m_largest = 0.0;
    int m_cases = 0;
};

TEST_F(GlyphCornersTest, LieWhereTheLabelIsLaidOut)
{
    for (int round = 0; round < 16; ++round) {
        const glm::ivec2 size(1 + round * 3 % 31, 1 + round * 7 % 23);
        opaqueTexture(size.x, size.y);
        Window window;
        if (round > 3) window = {random(0, 0.4), random(0.5, 1), random(0, 0.4), random(0.5, 1)};
        set("uTexLeft", window.left);
        set("uTexRight", window.right);
        set("uTexTop", window.top);
        set("uTexBottom", window.bottom);
        std::vector<Glyph> glyphs;
        for (int i = 0; i < 64; ++i)
            glyphs.push_back(randomGlyph());
        feed(glyphs);
        const auto corners = captureFeedback<Corner>(*gl, GL_TRIANGLES, GL_POINTS, 64, 6 * 64);
        ASSERT_EQ(corners.size(), 6u * 64u);
        for (std::size_t i = 0; i < glyphs.size(); ++i)
            compare(&corners[6 * i], glyphs[i], glm::dvec2(size), window);
    }
    EXPECT_LT(m_largest, Tolerance);
    std::printf("glyph corners: %d cases, largest difference %.2g pixels, tolerance %.2g\n", m_cases,
                m_largest, Tolerance);
}

TEST_F(GlyphCornersTest, AreNoneInTheCamerasOwnPlane)
{
    glm::mat4 flat(1.0f); // w becomes the anchor's z
    flat[2] = {0, 0, 1, 1};
    flat[3] = {0, 0, 0, 0};
    set("projection", flat);
    set("view", glm::mat4(1.0f));
    set("model", glm::mat4(1.0f));
    opaqueTexture(4, 4);
    Glyph in;
    Glyph before;
    before.anchor.z = 1.0f;
    feed({in, before, in});
    EXPECT_EQ(captureFeedback<Corner>(*gl, GL_TRIANGLES, GL_POINTS, 3, 18).size(), 6u);
}

TEST_F(GlyphQuadsTest, CoverTheirTexelsToThePixel)
{
    opaqueTexture(7, 5);
    Glyph glyph;
    glyph.anchor = atPixel(20, 40);
    feed({glyph});
    drawGlyphs();
    expectRectangle(20, 35, 27, 40);
}

TEST_F(GlyphQuadsTest, StandOnWholePixelsUnlessTheyAreScaled)
{
    opaqueTexture(6, 6);
    for (const double shift : {-0.47, 0.0, 0.4, 0.5}) {
        Glyph glyph;
        glyph.anchor = atPixel(20 + shift, 40 + shift);
        feed({glyph});
        drawGlyphs();
        expectRectangle(20, 34, 26, 40);
    }
    Glyph scaled;
    scaled.anchor = atPixel(20.6, 40.6);
    scaled.height = 6.0f;
    feed({scaled});
    drawGlyphs();
    expectRectangle(21, 35, 27, 41); // of these the centres are covered: from 20.6 to 26.6, and so on
}

TEST_F(GlyphQuadsTest, MoveByTheirPlaceInTheLabelUpwards)
{
    opaqueTexture(7, 5);
    Glyph glyph;
    glyph.anchor = atPixel(20, 40);
    glyph.place = {9, 12};
    feed({glyph});
    drawGlyphs();
    expectRectangle(29, 23, 36, 28);
}

TEST_F(GlyphQuadsTest, StandUprightAndUnmirrored)
{
    std::vector<std::uint32_t> texels;
    for (std::uint32_t i = 1; i <= 12; ++i)
        texels.push_back(i * 20u << 24);
    texture(4, 3, texels);
    Glyph glyph;
    glyph.anchor = atPixel(10, 33);
    feed({glyph});
    drawGlyphs();
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(pixel(10 + x, 30 + y), QColor(51, 102, 153, 20 * (4 * y + x + 1))) << x << ", " << y;
}

TEST_F(GlyphQuadsTest, OfALabelWithAHeightAreScaledWithIt)
{
    opaqueTexture(6, 4);
    Glyph glyph;
    glyph.anchor = atPixel(10, 40);
    glyph.place = {3, 2};
    glyph.height = 12.0f;
    feed({glyph});
    drawGlyphs();
    expectRectangle(19, 22, 37, 34);
}

TEST_F(GlyphQuadsTest, ShowTheWindowOfTheTexture)
{
    std::vector<std::uint32_t> texels;
    for (std::uint32_t i = 1; i <= 64; ++i)
        texels.push_back(i * 3u << 24);
    texture(8, 8, texels);
    set("uTexLeft", 0.25f);
    set("uTexRight", 0.75f);
    set("uTexTop", 0.125f);
    set("uTexBottom", 0.5f);
    Glyph glyph;
    glyph.anchor = atPixel(20, 40);
    feed({glyph});
    drawGlyphs();
    expectRectangle(20, 37, 24, 40);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(pixel(20 + x, 37 + y).alpha(), 3 * (8 * (y + 1) + x + 2 + 1)) << x << ", " << y;
}

TEST_F(GlyphQuadsTest, KeepTheirSizeAtAnyDistance)
{
    const glm::mat4 projection = glm::perspective(1.0f, 1.0f, 0.1f, 100.0f);
    set("projection", projection);
    opaqueTexture(6, 6);
    for (const float distance : {0.2f, 3.0f, 90.0f}) {
        Glyph glyph;
        glyph.anchor = {0, 0, -distance};
        feed({glyph});
        drawGlyphs();
        expectRectangle(32, 26, 38, 32);
    }
}

TEST_F(GlyphQuadsTest, BehindTheCameraAreNotDrawn)
{
    set("projection", glm::perspective(1.0f, 1.0f, 0.1f, 100.0f));
    opaqueTexture(6, 6);
    Glyph glyph;
    glyph.anchor = {0, 0, 1};
    feed({glyph});
    drawGlyphs();
    EXPECT_EQ(touchedCount(), 0);
}

// Three labels in one buffer: their items' flags, ids and indices come with each glyph.
class GlyphItemsTest : public GlyphQuadsTest
{
protected:
    static constexpr std::uint64_t Ids[3] = {0x89ABCDEFull, 0x1FFFFFFFFull, 0xFEDCBA9876543210ull};

    void prepare() override
    {
        GlyphQuadsTest::prepare();
        opaqueTexture(8, 8);
        set("selection_rect", glm::vec4(0, 0, 64, 64));
    }
    void feedItems(int flags0, int flags1, int flags2)
    {
        const int flags[3] = {flags0, flags1, flags2};
        std::vector<Glyph> glyphs;
        for (int i = 0; i < 6; ++i) {
            Glyph glyph;
            const int item = i % 3;
            glyph.anchor = atPixel(10 * i, 30 + 10 * item, 0.1 * item);
            glyph.item = 33 * item;
            glyph.flags = flags[item];
            glyph.id = Ids[item];
            glyphs.push_back(glyph);
        }
        feed(glyphs);
    }
    static int x(int glyph) { return 10 * glyph + 4; }
    static int y(int glyph) { return 30 + 10 * (glyph % 3) - 4; }
};

TEST_F(GlyphItemsTest, HaveTheirOwnFlagsEach)
{
    feedItems(Normal, Highlighted, Hidden);
    drawGlyphs();
    for (const int glyph : {0, 3})
        EXPECT_EQ(pixel(x(glyph), y(glyph)), QColor(51, 102, 153));
    for (const int glyph : {1, 4})
        EXPECT_EQ(pixel(x(glyph), y(glyph)), QColor(255, 0, 204));
    for (const int glyph : {2, 5})
        EXPECT_TRUE(isUntouched(x(glyph), y(glyph)));
}

TEST_F(GlyphItemsTest, HiddenLeavesNoTraceInAnyMode)
{
    feedItems(Hidden, Hidden, Hidden);
    for (int mode = 0; mode < 4; ++mode) {
        drawGlyphs(mode);
        EXPECT_EQ(touchedCount(), 0) << mode;
    }
    EXPECT_EQ(selectedWords(), std::vector<std::uint32_t>(SelectionWords, 0));
}

TEST_F(GlyphItemsTest, SelectionMaskHoldsDepthAndIds)
{
    feedItems(Normal, Highlighted, Normal);
    drawGlyphs(1);
    for (int glyph = 0; glyph < 6; ++glyph) {
        const std::uint64_t id = Ids[glyph % 3];
        EXPECT_EQ(word(x(glyph), y(glyph), 0), depthBits(x(glyph), y(glyph)));
        EXPECT_NEAR(double(depths[static_cast<std::size_t>(y(glyph) * Size + x(glyph))]),
                    0.5 + 0.05 * (glyph % 3), 1e-6);
        EXPECT_EQ(word(x(glyph), y(glyph), 1), static_cast<std::uint32_t>(id & 0xFFFFFFFFu));
        EXPECT_EQ(word(x(glyph), y(glyph), 2), static_cast<std::uint32_t>(id >> 32));
        EXPECT_EQ(word(x(glyph), y(glyph), 3), 0u);
    }
}

TEST_F(GlyphItemsTest, SelectionBufferHasTheBitOfEachItem)
{
    feedItems(Normal, Hidden, Highlighted);
    set("item_index", 5);
    drawGlyphs(3);
    EXPECT_EQ(touchedCount(), 0);
    std::vector<std::uint32_t> expected(SelectionWords, 0);
    expected[5 / 32] |= 1u << 5;
    expected[(66 + 5) / 32] |= 1u << ((66 + 5) % 32);
    EXPECT_EQ(selectedWords(), expected);
}

TEST_F(GlyphItemsTest, OnlyTheShapeOfAGlyphIsSelected)
{
    texture(8, 8, std::vector<std::uint32_t>(64, 100u << 24));
    feedItems(Normal, Normal, Normal);
    drawGlyphs(1);
    EXPECT_EQ(touchedCount(), 0);
    drawGlyphs(3);
    EXPECT_EQ(selectedWords(), std::vector<std::uint32_t>(SelectionWords, 0));
}

} // namespace
