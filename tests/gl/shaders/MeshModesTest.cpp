#include <tests/support/LightReference.h>
#include <tests/support/ShaderDrawing.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

// The colour of surfaces: where it comes from, what fills transparent texels, material, light and flags, in
// all their combinations, with and without each attribute, against the formula in doubles.
namespace {

struct Modes
{
    int color = 0;
    int filledBack = 0;
    int material = 0;
    bool isLit = false;
    int flags = -1;
};

/// Which attributes the program has: bit 0 colours, 1 normals, 2 texture coordinates.
class MeshModesTest : public ShaderDrawing, public ::testing::WithParamInterface<int>
{
protected:
    static constexpr int Texels = 4;
    static constexpr double Z = -0.75;

    bool hasColors() const { return (GetParam() & 1) != 0; }
    bool hasNormals() const { return (GetParam() & 2) != 0; }
    bool hasTexture() const { return (GetParam() & 4) != 0; }

    void prepare() override
    {
        std::vector<std::string> defines;
        if (hasColors()) defines.emplace_back("RX_USE_PER_VERTEX_COLOR");
        if (hasNormals()) defines.emplace_back("RX_USE_PER_VERTEX_NORMAL");
        if (hasTexture()) defines.emplace_back("RX_USE_PER_VERTEX_TEX_COORDS");
        use(recipe("mesh", {"common.vertex", "mesh.fragment"}, defines));
        rectangle(-1, -1, 1, 1, static_cast<float>(Z));
        if (hasTexture()) setTexture();
    }
    void setTexture()
    {
        attribute(3, 2, {0, 1, 1, 1, 0, 0, 1, 0});
        m_texels.clear();
        const std::uint32_t alphas[] = {0u, 255u, 102u, 1u, 254u};
        for (std::uint32_t i = 0; i < Texels * Texels; ++i)
            m_texels.push_back((static_cast<std::uint32_t>(random()) & 0xFFFFFFu) | alphas[i % 5] << 24);
        texture(Texels, Texels, m_texels);
        set("uTexture0", 0);
    }
    /// Without light, or without attributes to choose from, a program has no use for some of the uniforms.
    template <typename T>
    void setIfThere(const char* name, const T& value)
    {
        uniforms::set(*gl, program->uniformLocation(name), value);
    }
    double number(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }
    glm::vec4 anyColor(double alpha) { return glm::vec4(number(0, 1), number(0, 1), number(0, 1), alpha); }
    glm::vec3 anyDirection() { return glm::vec3(number(-1, 1), number(-1, 1), number(-1, 1)); }

    /// New colours, directions and vertices.
    void setAnything()
    {
        m_item = anyColor(0.6);
        m_selection = anyColor(0.9);
        setColors(m_item, m_selection);
        for (auto* color : {&m_ambient, &m_diffuse, &m_specular})
            *color = glm::vec3(anyColor(1.0));
        setIfThere("uMaterialAmbient", m_ambient);
        setIfThere("uMaterialDiffuse", m_diffuse);
        setIfThere("uMaterialSpecular", m_specular);
        if (hasNormals()) {
            m_normal = anyDirection();
            m_light = anyDirection();
            set("uLightDirection", m_light);
            std::vector<float> normals;
            for (int i = 0; i < 4; ++i)
                normals.insert(normals.end(), {m_normal.x, m_normal.y, m_normal.z});
            attribute(2, 3, normals);
        }
        if (hasColors()) {
            m_left = anyColor(0.8);
            m_right = anyColor(0.3);
            std::vector<float> colors;
            for (const glm::vec4& c : {m_left, m_right, m_left, m_right})
                colors.insert(colors.end(), {c.r, c.g, c.b, c.a});
            attribute(1, 4, colors);
        }
    }
    void setModes(const Modes& modes)
    {
        setIfThere("uColorMode", modes.color);
        if (hasTexture()) set("filled_texture_back", modes.filledBack);
        set("uMaterialMode", modes.material);
        if (hasNormals()) set("uLightMode", modes.isLit);
        set("item_flags", modes.flags);
    }

    glm::dvec4 expectedAt(int x, int y, const Modes& modes) const
    {
        if (modes.flags == -3) return glm::dvec4(0.0);
        const double across = (x + 0.5) / Size;
        glm::dvec4 own(m_item);
        double shape = 1.0; // that a highlighted surface keeps
        if (modes.color == 1 && hasColors())
            own = (1.0 - across) * glm::dvec4(m_left) + across * glm::dvec4(m_right);
        if (modes.color == 2 && hasTexture()) {
            const std::uint32_t texel =
                m_texels[static_cast<std::size_t>(y * Texels / Size * Texels + x * Texels / Size)];
            glm::dvec4 shown;
            for (int k = 0; k < 4; ++k)
                shown[k] = (texel >> (8 * k) & 255u) / 255.0;
            if (modes.filledBack != 0) // laid over the item's colour
                shown = {glm::dvec3(m_item) + shown.a * (glm::dvec3(shown) - glm::dvec3(m_item)),
                         1.0 - (1.0 - shown.a) * (1.0 - double(m_item.a))};
            else
                shape = shown.a;
            own = shown;
        }
        if (modes.flags == -2) own = {glm::dvec3(m_selection), double(m_selection.a) * shape};
        glm::dvec3 ambient(1.0);
        glm::dvec3 diffuse(1.0);
        glm::dvec3 specular(1.0);
        if (modes.material == 1) {
            ambient = m_ambient;
            diffuse = m_diffuse;
            specular = m_specular;
        }
        glm::dvec3 factor = diffuse;
        if (modes.isLit && hasNormals()) {
            const glm::dvec3 point((x + 0.5) / 32.0 - 1.0, 1.0 - (y + 0.5) / 32.0, Z);
            const Light light = lightAt(point, m_normal, m_light);
            factor = light.ambient * ambient + light.diffuse * diffuse + light.specular * specular;
        }
        return {glm::dvec3(own) * factor, own.a};
    }
    void compare(const Modes& modes)
    {
        ++m_pictures;
        for (int y = 1; y < Size; y += 5)
            for (int x = 2; x < Size; x += 5) {
                const glm::dvec4 expected = expectedAt(x, y, modes);
                ++m_pixels;
                if (expected.a == 0.0) {
                    ASSERT_TRUE(isUntouched(x, y)) << x << ", " << y;
                    continue;
                }
                const std::uint32_t seen = word(x, y, 0);
                for (int k = 0; k < 4; ++k) {
                    const double difference = (seen >> (8 * k) & 255u) - 255.0 * std::min(expected[k], 1.0);
                    m_worst = std::max(m_worst, std::fabs(difference));
                    ASSERT_LE(std::fabs(difference), Tolerance)
                        << x << ", " << y << " channel " << k << ", colour mode " << modes.color
                        << ", filled " << modes.filledBack << ", material " << modes.material << ", lit "
                        << modes.isLit << ", flags " << modes.flags;
                }
            }
    }
    void report() const
    {
        std::printf(
            "mesh colours%s%s%s: %d pictures, %zu pixels, largest difference %.2g of 255, tolerance %.2g\n",
            hasColors() ? ", vertex colours" : "", hasNormals() ? ", normals" : "",
            hasTexture() ? ", texture" : "", m_pictures, m_pixels, m_worst, Tolerance);
    }

    static constexpr double Tolerance = 0.6; // of 255; half a step is lost by rounding
    std::mt19937 random{41};

private:
    glm::vec4 m_item{1.0f};
    glm::vec4 m_selection{1.0f};
    glm::vec4 m_left{1.0f};
    glm::vec4 m_right{1.0f};
    glm::vec3 m_ambient{1.0f};
    glm::vec3 m_diffuse{1.0f};
    glm::vec3 m_specular{1.0f};
    glm::vec3 m_normal{0.0f, 0.0f, 1.0f};
    glm::vec3 m_light{1.0f};
    std::vector<std::uint32_t> m_texels;
    int m_pictures = 0;
    std::size_t m_pixels = 0;
    double m_worst = 0.0;
};

TEST_P(MeshModesTest, EveryCombinationFollowsItsFormula)
{
    for (const int color : {0, 1, 2, 3, -1})
        for (const int filledBack : {0, 1})
            for (const int material : {0, 1, 2})
                for (const bool isLit : {false, true}) {
                    if (filledBack == 1 && color != 2) continue;
                    setAnything();
                    for (const int flags : {-1, -2, -3}) {
                        if (flags == -3 && material != 0) continue;
                        const Modes modes{color, filledBack, material, isLit, flags};
                        setModes(modes);
                        draw(GL_TRIANGLE_STRIP, 4);
                        compare(modes);
                        if (HasFatalFailure()) return;
                    }
                }
    report();
}

INSTANTIATE_TEST_SUITE_P(Attributes, MeshModesTest, ::testing::Range(0, 8));

} // namespace
