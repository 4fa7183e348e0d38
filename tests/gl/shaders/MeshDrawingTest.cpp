#include <tests/support/LightReference.h>
#include <tests/support/ShaderDrawing.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Vector = glm::dvec3;

class MeshDrawingTest : public ShaderDrawing
{
protected:
    const glm::vec4 m_color{0.5f, 0.25f, 0.125f, 1.0f};

    /// A quad over the whole view, at z in eye coordinates, which are normalised device coordinates.
    void prepare() override
    {
        use("Mesh");
        setColors(m_color);
        rectangle(-1, -1, 1, 1, Z);
        set("uTexture0", 0);
    }
    void setNormals(const Vector& n)
    {
        std::vector<float> values;
        for (int i = 0; i < 4; ++i)
            for (int k = 0; k < 3; ++k)
                values.push_back(float(n[k]));
        attribute(2, 3, values);
    }
    static Vector pointAt(int x, int y) { return {(x + 0.5) / 32.0 - 1.0, 1.0 - (y + 0.5) / 32.0, Z}; }
    void expectColor(int x, int y, const Vector& color, int limit = 1)
    {
        const QColor seen = pixel(x, y);
        EXPECT_NEAR(seen.red(), 255.0 * std::min(color.r, 1.0), limit) << x << ", " << y;
        EXPECT_NEAR(seen.green(), 255.0 * std::min(color.g, 1.0), limit) << x << ", " << y;
        EXPECT_NEAR(seen.blue(), 255.0 * std::min(color.b, 1.0), limit) << x << ", " << y;
    }
    void expectLight(const Vector& normal, const Vector& direction, const Vector& color)
    {
        draw(GL_TRIANGLE_STRIP, 4);
        for (int y = 0; y < Size; y += 3)
            for (int x = 0; x < Size; x += 3) {
                const Light light = lightAt(pointAt(x, y), normal, direction);
                expectColor(x, y, light.on(color));
            }
    }
    void drawUnlit()
    {
        set("uLightMode", false);
        draw(GL_TRIANGLE_STRIP, 4);
    }
    void setTexture(std::uint32_t left, std::uint32_t right)
    {
        texture(2, 1, {left, right});
        attribute(3, 2, {0, 0, 1, 0, 0, 1, 1, 1});
    }

    static constexpr double Z = -0.75;
};

TEST_F(MeshDrawingTest, LightFollowsItsFormula)
{
    const Vector directions[] = {{1, 1, 1}, {0, 0, 1}, {-3, 1, 0.5}, {0.1, -0.2, -2}};
    const Vector normals[] = {{0, 0, 1}, {0.3, -0.2, 0.9}, {0, 5, 5}, {-1, 0, 0}};
    for (const Vector& direction : directions)
        for (const Vector& normal : normals) {
            setNormals(normal);
            set("uLightDirection", glm::vec3(direction));
            expectLight(normal, direction, Vector(m_color));
        }
}

TEST_F(MeshDrawingTest, HighlightOfTheLightLiesWhereItIsMirrored)
{
    setNormals({0, 0, 1});
    set("uLightDirection", glm::vec3(0, 0, 1));
    draw(GL_TRIANGLE_STRIP, 4);
    // in the middle all terms are at their largest: 0.3 + 1 + 0.25
    expectColor(32, 32, 1.55 * Vector(m_color), 2);
    // towards the edge the specular term is gone
    expectColor(0, 32, 1.3 * Vector(m_color), 1);
}

TEST_F(MeshDrawingTest, LightComesFromTheUpperRightFrontUnlessTold)
{
    setNormals({0, 0, 1});
    expectLight({0, 0, 1}, {1, 1, 1}, Vector(m_color));
}

TEST_F(MeshDrawingTest, BackFacesAreLitAlike)
{
    const Vector direction(0.4, 0.2, 0.8);
    set("uLightDirection", glm::vec3(direction));
    setNormals({0.1, 0.2, -1});
    expectLight({0.1, 0.2, -1}, direction, Vector(m_color));
    EXPECT_GT(pixel(10, 50).red(), int(0.7 * 127));
}

TEST_F(MeshDrawingTest, LightIsSeenFromTheEye)
{
    glm::mat4 view(1.0f);
    view[3] = {0.5f, -0.25f, -2.0f, 1.0f};
    set("view", view);
    rectangle(-1.5f, -0.75f, 0.5f, 1.25f, float(Z) + 2.0f);
    setNormals({0, 0, 1});
    set("uLightDirection", glm::vec3(0.2f, 0.1f, 1));
    expectLight({0, 0, 1}, {0.2, 0.1, 1}, Vector(m_color));
}

TEST_F(MeshDrawingTest, NormalsGoThroughTheirMatrix)
{
    glm::mat3 matrix(0.0f); // x to y, y to z, z to x
    matrix[0][1] = matrix[1][2] = matrix[2][0] = 1.0f;
    set("normalMatrix", matrix);
    set("uLightDirection", glm::vec3(0.2f, 0.9f, 0.3f));
    setNormals({1, 0.5, 0});
    expectLight({0, 1, 0.5}, {0.2, 0.9, 0.3}, Vector(m_color));
}

TEST_F(MeshDrawingTest, SurfaceWithoutNormalsHasTheAmbientTermOnly)
{
    draw(GL_TRIANGLE_STRIP, 4);
    for (int i = 0; i < Size; i += 9)
        expectColor(i, i, 0.3 * Vector(m_color));
}

TEST_F(MeshDrawingTest, SurfaceInLightWithoutADirectionHasTheAmbientTermOnly)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    setNormals({0, 0, 1});
    for (const glm::vec3& direction : {glm::vec3(0.0f), glm::vec3(nan, 0.0f, 1.0f), glm::vec3(nan)}) {
        set("uLightDirection", direction);
        draw(GL_TRIANGLE_STRIP, 4);
        for (int i = 0; i < Size; i += 9)
            expectColor(i, i, 0.3 * Vector(m_color));
    }
}

TEST_F(MeshDrawingTest, SurfaceWithNormalsThatAreNoNumbersHasTheAmbientTermOnly)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Vector& normal : {Vector(nan, 0.0, 1.0), Vector(nan)}) {
        setNormals(normal);
        draw(GL_TRIANGLE_STRIP, 4);
        for (int i = 0; i < Size; i += 9)
            expectColor(i, i, 0.3 * Vector(m_color));
    }
}

// At the eye the direction to it is not known: there is no highlight, and the other terms stay.
TEST_F(MeshDrawingTest, SurfaceAtTheEyeIsLit)
{
    glm::mat4 view(0.0f);
    view[3][3] = 1.0f; // everything is at the eye
    rectangle(0, 0, 0, 0);
    setNormals({0, 0, 1});
    set("uLightDirection", glm::vec3(0, 0, 1));
    set("view", view);
    set("pen_width", 8.0f);
    draw(GL_POINTS, 1);
    EXPECT_EQ(touchedCount(), 64);
    expectColor(32, 32, 1.3 * Vector(m_color));
}

TEST_F(MeshDrawingTest, LightOffShowsTheColourItself)
{
    setNormals({0, 0, 1});
    drawUnlit();
    expectColor(32, 32, Vector(m_color));
}

TEST_F(MeshDrawingTest, PositionsAloneAreEnough)
{
    drawUnlit();
    EXPECT_EQ(touchedCount(), Size * Size);
    expectColor(5, 60, Vector(m_color));
}

TEST_F(MeshDrawingTest, AlphaIsNotLit)
{
    setColors({0.5f, 0.25f, 0.125f, 0.6f});
    setNormals({0, 0, 1});
    draw(GL_TRIANGLE_STRIP, 4);
    EXPECT_EQ(pixel(20, 20).alpha(), 153);
}

TEST_F(MeshDrawingTest, HighlightedSurfaceIsLitInTheSelectionColour)
{
    setColors(m_color, {0.1f, 0.5f, 0.2f, 1.0f});
    set("item_flags", -2);
    setNormals({0, 0, 1});
    expectLight({0, 0, 1}, {1, 1, 1}, {0.1, 0.5, 0.2});
}

TEST_F(MeshDrawingTest, VertexColoursReplaceTheItems)
{
    attribute(1, 4, {0, 0.4f, 1, 1, 1, 0.4f, 0, 1, 0, 0.4f, 1, 1, 1, 0.4f, 0, 1});
    set("uColorMode", 1);
    drawUnlit();
    for (int x = 0; x < Size; x += 7)
        expectColor(x, 10, {(x + 0.5) / Size, 0.4, 1.0 - (x + 0.5) / Size});
}

TEST_F(MeshDrawingTest, VertexColoursAreNotLookedAtUnlessTold)
{
    attribute(1, 4, std::vector<float>(16, 1.0f));
    setTexture(0xFFFFFFFF, 0xFFFFFFFF);
    drawUnlit();
    expectColor(20, 20, Vector(m_color));
}

TEST_F(MeshDrawingTest, TextureReplacesTheItemsColour)
{
    setTexture(0xFF0000FF, 0xFF00FF00);
    set("uColorMode", 2);
    drawUnlit();
    EXPECT_EQ(pixel(10, 30), QColor(255, 0, 0));
    EXPECT_EQ(pixel(50, 30), QColor(0, 255, 0));
}

TEST_F(MeshDrawingTest, TransparentTexelsLeaveNoTrace)
{
    setTexture(0x000000FF, 0xFF00FF00);
    set("uColorMode", 2);
    drawUnlit();
    EXPECT_TRUE(isUntouched(10, 30));
    EXPECT_EQ(touchedCount(), Size * Size / 2);
}

TEST_F(MeshDrawingTest, ItemsColourFillsTheTextureFromBehind)
{
    setTexture(0x00FFFFFF, 0x66FF0000); // clear white, blue of alpha 0.4
    set("uColorMode", 2);
    set("filled_texture_back", 1);
    drawUnlit();
    expectColor(10, 30, Vector(m_color));
    expectColor(50, 30, 0.6 * Vector(m_color) + 0.4 * Vector(0, 0, 1));
    EXPECT_EQ(pixel(50, 30).alpha(), 255);
}

TEST_F(MeshDrawingTest, LitTextureFollowsTheLight)
{
    setTexture(0xFF336699, 0xFF336699);
    set("uColorMode", 2);
    setNormals({0, 0, 1});
    expectLight({0, 0, 1}, {1, 1, 1}, {0x99 / 255.0, 0x66 / 255.0, 0x33 / 255.0});
}

TEST_F(MeshDrawingTest, MaterialColoursMultiplyTheirTerms)
{
    const Vector ambient(0.2, 0.5, 1.0);
    const Vector diffuse(0.6, 0.3, 0.1);
    const Vector specular(1.0, 0.0, 0.5);
    setNormals({0.1, 0.1, 1});
    set("uLightDirection", glm::vec3(0, 0, 1));
    set("uMaterialAmbient", glm::vec3(ambient));
    set("uMaterialDiffuse", glm::vec3(diffuse));
    set("uMaterialSpecular", glm::vec3(specular));
    expectLight({0.1, 0.1, 1}, {0, 0, 1}, Vector(m_color)); // not yet: the mode is off
    set("uMaterialMode", 1);
    draw(GL_TRIANGLE_STRIP, 4);
    for (int y = 0; y < Size; y += 3)
        for (int x = 0; x < Size; x += 3) {
            const Light light = lightAt(pointAt(x, y), {0.1, 0.1, 1}, {0, 0, 1});
            expectColor(x, y,
                        (light.ambient * ambient + light.diffuse * diffuse + light.specular * specular) *
                            Vector(m_color));
        }
}

TEST_F(MeshDrawingTest, MaterialsAreWhiteUnlessTold)
{
    setNormals({0, 0, 1});
    set("uMaterialMode", 1);
    expectLight({0, 0, 1}, {1, 1, 1}, Vector(m_color));
}

TEST_F(MeshDrawingTest, UnlitMaterialShowsItsDiffuseColour)
{
    set("uMaterialMode", 1);
    set("uMaterialDiffuse", glm::vec3(0.5f, 1.0f, 0.0f));
    drawUnlit();
    expectColor(20, 20, {0.25, 0.25, 0.0});
}

} // namespace
