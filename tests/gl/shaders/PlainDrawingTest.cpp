#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

namespace {

const QColor blue = QColor::fromRgb(51, 102, 204, 255);
const glm::vec4 blueVector(0.2f, 0.4f, 0.8f, 1.0f);

class PlainDrawingTest : public ShaderDrawing
{
protected:
    /// Draws points through matrices that do not commute and looks for them where the formula says.
    void expectMatricesInOrder(const std::string& name)
    {
        use(name);
        setColors(blueVector);
        const glm::mat4 model = glm::translate(glm::mat4(1.0f), {3.0f, -1.0f, -2.0f}) *
                                glm::scale(glm::mat4(1.0f), {2.0f, 0.5f, 3.0f});
        const glm::mat4 view = glm::lookAt(glm::vec3(1, -8, 2), glm::vec3(2, 0, -1), glm::vec3(0, 0, 1));
        const glm::mat4 projection = glm::perspective(1.2f, 1.0f, 1.0f, 50.0f);
        set("model", model);
        set("view", view);
        set("projection", projection);
        for (const glm::dvec3& point :
             {glm::dvec3(0.2, 0.1, 0.3), glm::dvec3(-1.5, 4.0, -0.4), glm::dvec3(0, 0, 0)}) {
            attribute(0, 3, {float(point.x), float(point.y), float(point.z)});
            draw(GL_POINTS, 1);
            const glm::dvec4 world(3.0 + 2.0 * point.x, -1.0 + 0.5 * point.y, -2.0 + 3.0 * point.z, 1.0);
            const glm::dvec4 clip = glm::dmat4(projection) * (glm::dmat4(view) * world);
            const int x = static_cast<int>(std::floor((clip.x / clip.w + 1.0) * 32.0));
            const int y = static_cast<int>(std::floor((1.0 - clip.y / clip.w) * 32.0));
            ASSERT_TRUE(x >= 0 && x < Size && y >= 0 && y < Size);
            EXPECT_EQ(pixel(x, y), blue);
            EXPECT_NEAR(double(depths[static_cast<std::size_t>(y * Size + x)]), (clip.z / clip.w + 1.0) / 2.0,
                        1e-5);
            EXPECT_EQ(touchedCount(), 1);
        }
    }
};

TEST_F(PlainDrawingTest, SurfaceCoversItsPixelsAndNoOther)
{
    use("Mono");
    setColors(blueVector);
    rectangle(-0.5f, -0.25f, 0.5f, 0.75f);
    draw(GL_TRIANGLE_STRIP, 4);
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x)
            ASSERT_EQ(pixel(x, y) == blue, x >= 16 && x < 48 && y >= 8 && y < 40) << x << ", " << y;
    EXPECT_EQ(touchedCount(), 32 * 32);
}

TEST_F(PlainDrawingTest, MatricesApplyInTheirOrder)
{
    expectMatricesInOrder("Mono");
    expectMatricesInOrder("DashedLines");
}

TEST_F(PlainDrawingTest, PointIsAsWideAsThePen)
{
    use("Mono");
    setColors(blueVector);
    attribute(0, 3, {0, 0, 0});
    set("pen_width", 6.0f);
    draw(GL_POINTS, 1);
    EXPECT_EQ(touchedCount(), 36);
    EXPECT_EQ(pixel(29, 29), blue);
    EXPECT_EQ(pixel(34, 34), blue);
}

TEST_F(PlainDrawingTest, PointIsOnePixelUnlessTold)
{
    use("Mono");
    setColors(blueVector);
    attribute(0, 3, {0.015625f, 0.015625f, 0});
    draw(GL_POINTS, 1);
    EXPECT_EQ(touchedCount(), 1);
}

TEST_F(PlainDrawingTest, VertexColoursRunFromEdgeToEdge)
{
    use("VertexColor");
    setColors({1, 0, 0, 1});
    rectangle(-1, -1, 1, 1);
    attribute(1, 4, {0, 0.2f, 0, 1, 1, 0.2f, 0.5f, 1, 0, 0.2f, 0, 1, 1, 0.2f, 0.5f, 1});
    draw(GL_TRIANGLE_STRIP, 4);
    for (int x = 0; x < Size; ++x) {
        const double share = (x + 0.5) / Size;
        EXPECT_NEAR(pixel(x, 20).red(), 255.0 * share, 1.0) << x;
        EXPECT_EQ(pixel(x, 20).green(), 51) << x;
        EXPECT_NEAR(pixel(x, 20).blue(), 127.5 * share, 1.0) << x;
    }
}

TEST_F(PlainDrawingTest, VertexColoursOfThreeComponentsAreOpaque)
{
    use("VertexColor");
    setColors({1, 0, 0, 1});
    rectangle(-1, -1, 1, 1);
    attribute(1, 3, {0.2f, 0.4f, 0.8f, 0.2f, 0.4f, 0.8f, 0.2f, 0.4f, 0.8f, 0.2f, 0.4f, 0.8f});
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_EQ(pixel(32, 32), blue);
}

constexpr std::uint32_t Red = 0xFF0000FF;
constexpr std::uint32_t Green = 0xFF00FF00;
constexpr std::uint32_t White = 0xFFFFFFFF;
constexpr std::uint32_t Clear = 0x00FF0000;

class TextureDrawingTest : public ShaderDrawing
{
protected:
    /// A quad over the middle that shows red and green above, white and a transparent texel below.
    void drawTexture(const ProgramRecipe& recipe)
    {
        use(recipe);
        setColors(blueVector);
        set("uTexture", 0);
        rectangle(-0.5f, -0.5f, 0.5f, 0.5f);
        attribute(3, 2, {0, 1, 1, 1, 0, 0, 1, 0});
        texture(2, 2, {Red, Green, White, Clear});
    }
    static ProgramRecipe plain() { return defaultPrograms()[2]; }
    static ProgramRecipe bitmap()
    {
        ProgramRecipe recipe = plain();
        recipe.defines.emplace_back("RX_USE_TEXTURE_AS_BITMAP");
        return recipe;
    }
};

TEST_F(TextureDrawingTest, TexelsLieWhereTheCoordinatesSay)
{
    drawTexture(plain());
    draw(GL_TRIANGLE_STRIP, 4);
    for (int y = 16; y < 48; ++y)
        for (int x = 16; x < 48; ++x) {
            const bool left = x < 32;
            const bool upper = y < 32;
            if (!left && !upper) {
                ASSERT_TRUE(isUntouched(x, y)) << "a transparent texel leaves no trace";
            } else {
                const QColor expected =
                    upper ? (left ? QColor(255, 0, 0) : QColor(0, 255, 0)) : QColor(Qt::white);
                ASSERT_EQ(pixel(x, y), expected) << x << ", " << y;
            }
        }
    EXPECT_EQ(touchedCount(), 3 * 256);
}

TEST_F(TextureDrawingTest, HighlightedTextureKeepsItsShape)
{
    drawTexture(plain());
    set("item_flags", -2);
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_EQ(pixel(20, 20), QColor(0, 255, 0));
    EXPECT_EQ(pixel(20, 40), QColor(0, 255, 0));
    EXPECT_EQ(touchedCount(), 3 * 256);
}

TEST_F(TextureDrawingTest, BitmapShowsTheItemsColourThroughTheTexturesAlpha)
{
    drawTexture(bitmap());
    texture(2, 1, {0x80FFFFFF, Red});
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_EQ(pixel(40, 32), blue);
    EXPECT_EQ(pixel(20, 32), QColor(51, 102, 204, 128));
}

TEST_F(TextureDrawingTest, HighlightedBitmapShowsTheSelectionColour)
{
    drawTexture(bitmap());
    set("item_flags", -2);
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_EQ(pixel(20, 20), QColor(0, 255, 0));
    EXPECT_EQ(touchedCount(), 3 * 256);
}

class CaptionDrawingTest : public ShaderDrawing
{
protected:
    static constexpr int Width = 10;
    static constexpr int Height = 6;

    /// A point at pixel (32, 32), at depth z, with a texture of Width x Height whose pixel (x, y) is (x, y,
    /// 0).
    void prepare() override
    {
        use("Caption");
        setColors(blueVector);
        set("uTexture", 0);
        attribute(0, 3, {0, 0, 0.25f});
        std::vector<std::uint32_t> pixels;
        for (unsigned y = 0; y < Height; ++y)
            for (unsigned x = 0; x < Width; ++x)
                pixels.push_back(0xFF000000u | (10 * y) << 8 | (10 * x));
        texture(Width, Height, pixels);
    }
    /// Checks that the part of the texture from (u, v) on, `size` pixels, lies with its upper left corner at
    /// (left, top), and that nothing else is drawn.
    void expectAt(int left, int top, QSize size = {Width, Height}, int u = 0, int v = 0)
    {
        for (int y = 0; y < size.height(); ++y)
            for (int x = 0; x < size.width(); ++x)
                ASSERT_EQ(pixel(left + x, top + y), QColor(10 * (u + x), 10 * (v + y), 0)) << x << ", " << y;
        EXPECT_EQ(touchedCount(), size.width() * size.height());
    }
};

TEST_F(CaptionDrawingTest, TextureStandsUprightPixelForPixelOnItsPoint)
{
    draw(GL_POINTS, 1);
    expectAt(32, 32 - Height);
    EXPECT_EQ(depths[30 * Size + 34], 0.625f);
}

TEST_F(CaptionDrawingTest, OffsetGoesRightAndUp)
{
    set("offset", glm::vec2(3, 5));
    draw(GL_POINTS, 1);
    expectAt(35, 32 - Height - 5);
}

TEST_F(CaptionDrawingTest, HalfPixelOffsetOfCentredText)
{
    set("offset", glm::vec2(-0.5f * Width, 0));
    draw(GL_POINTS, 1);
    expectAt(32 - Width / 2, 32 - Height);
}

TEST_F(CaptionDrawingTest, WindowCutsTheTextureAndItsSize)
{
    set("uTexLeft", 0.5f);
    set("uTexBottom", 0.5f);
    draw(GL_POINTS, 1);
    expectAt(32, 32 - 3, {5, 3}, 5, 0);
    set("uTexLeft", 0.0f);
    set("uTexRight", 0.3f);
    set("uTexTop", 0.5f);
    set("uTexBottom", 1.0f);
    draw(GL_POINTS, 1);
    expectAt(32, 32 - 3, {3, 3}, 0, 3);
}

TEST_F(CaptionDrawingTest, SizeIsTheSameAtAnyDistance)
{
    set("projection", glm::perspective(1.0f, 1.0f, 1.0f, 100.0f));
    for (const float distance : {2.0f, 20.0f, 90.0f}) {
        attribute(0, 3, {0, 0, -distance});
        draw(GL_POINTS, 1);
        expectAt(32, 32 - Height);
    }
}

TEST_F(CaptionDrawingTest, PointBehindTheCameraShowsNothing)
{
    set("projection", glm::perspective(1.0f, 1.0f, 1.0f, 100.0f));
    for (const float z : {5.0f, 0.5f, 0.0f, -0.5f}) {
        attribute(0, 3, {0, 0, z});
        draw(GL_POINTS, 1);
        EXPECT_EQ(touchedCount(), 0) << z;
    }
}

} // namespace
