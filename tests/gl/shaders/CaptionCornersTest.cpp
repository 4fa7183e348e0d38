#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <random>

// The quad that a caption's geometry stage makes of a point, against the formula in doubles: its corners
// before the rasteriser, and its texels pixel by pixel.
namespace {

struct Window
{
    double left = 0.0;
    double right = 1.0;
    double top = 0.0;
    double bottom = 1.0;
};

struct CaptionCorner
{
    glm::dvec2 pixel; ///< from the top left, y down
    glm::dvec2 texture;
};

class CaptionCornersTest : public ShaderDrawing
{
protected:
    static constexpr int Components = 6;

    void useStages(const std::vector<std::string>& defines)
    {
        use({"caption",
             {shaderPath("common.vertex"), shaderPath("caption.geom"), shaderPath("texture.fragment")},
             defines},
            {"gl_Position", "texture_coords"});
    }
    void setTexture(int width, int height)
    {
        m_texture = {width, height};
        texture(width, height, std::vector<std::uint32_t>(static_cast<std::size_t>(width * height), ~0u));
    }
    void setViewport(int width, int height)
    {
        m_size = {width, height};
        glm::mat4 viewport(1.0f);
        viewport[0][0] = static_cast<float>(width) / 2.0f;
        viewport[1][1] = static_cast<float>(-height) / 2.0f;
        viewport[3] = glm::vec4(float(width) / 2.0f, float(height) / 2.0f, 0.0f, 1.0f);
        set("viewport", viewport);
        set("viewport_inverted", glm::inverse(viewport));
    }
    void setWindow(const Window& window)
    {
        m_window = window;
        set("uTexLeft", float(window.left));
        set("uTexRight", float(window.right));
        set("uTexTop", float(window.top));
        set("uTexBottom", float(window.bottom));
    }
    void setOffset(const glm::vec2& offset)
    {
        m_offset = offset;
        set("offset", offset);
    }
    void setProjection(const glm::mat4& projection)
    {
        m_projection = projection;
        set("projection", projection);
    }
    /// The corners in the order of the strip: lower left, lower right, upper left, upper right.
    std::array<CaptionCorner, 4> cornersAt(const glm::dvec4& clip) const
    {
        const glm::dvec2 p((clip.x / clip.w + 1.0) / 2.0 * m_size.x + m_offset.x,
                           (1.0 - clip.y / clip.w) / 2.0 * m_size.y - m_offset.y);
        const double width = m_texture.x * (m_window.right - m_window.left);
        const double height = m_texture.y * (m_window.bottom - m_window.top); // upwards: y counts down
        return {CaptionCorner{p, {m_window.left, m_window.bottom}},
                CaptionCorner{p + glm::dvec2(width, 0.0), {m_window.right, m_window.bottom}},
                CaptionCorner{p - glm::dvec2(0.0, height), {m_window.left, m_window.top}},
                CaptionCorner{p + glm::dvec2(width, -height), {m_window.right, m_window.top}}};
    }
    /// Compares the two triangles of a quad, which may begin with any of their corners.
    void compare(const float* values, const glm::dvec4& clip)
    {
        const std::array<CaptionCorner, 4> corners = cornersAt(clip);
        const std::size_t triangles[2][3] = {{0, 1, 2}, {2, 1, 3}};
        for (std::size_t t = 0; t < 2; ++t) {
            double least = 1e30;
            double texture = 0.0;
            for (std::size_t shift = 0; shift < 3; ++shift) {
                double pixels = 0.0;
                double coords = 0.0;
                for (std::size_t k = 0; k < 3; ++k) {
                    const float* v = values + (3 * t + k) * Components;
                    const CaptionCorner& expected = corners[triangles[t][(k + shift) % 3]];
                    EXPECT_NEAR(double(v[3]), 1.0, 1e-6);
                    EXPECT_NEAR(double(v[2]), clip.z / clip.w, 1e-4 + 1e-5 * std::fabs(clip.z / clip.w));
                    const glm::dvec2 pixel((double(v[0]) + 1.0) / 2.0 * m_size.x,
                                           (1.0 - double(v[1])) / 2.0 * m_size.y);
                    pixels = std::max(pixels, glm::length(pixel - expected.pixel));
                    coords = std::max(coords, glm::length(glm::dvec2(v[4], v[5]) - expected.texture));
                }
                if (pixels < least) {
                    least = pixels;
                    texture = coords;
                }
            }
            worstPixels = std::max(worstPixels, least);
            worstTexture = std::max(worstTexture, texture);
        }
        ++cases;
    }
    void report(const char* what)
    {
        std::printf("%s: %zu captions, largest differences %.2g pixels of tolerance %.2g, %.2g (texture) of "
                    "tolerance "
                    "%.2g\n",
                    what, cases, worstPixels, PixelTolerance, worstTexture, TextureTolerance);
        EXPECT_LE(worstPixels, PixelTolerance);
        EXPECT_LE(worstTexture, TextureTolerance);
    }
    double number(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }
    int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); }
    void setAnything()
    {
        setTexture(whole(1, 300), whole(1, 100));
        setViewport(whole(16, 4000), whole(16, 4000));
        setWindow({number(-0.5, 0.5), number(0.5, 1.5), number(-0.5, 0.5), number(0.5, 1.5)});
        setOffset(glm::vec2(number(-100, 100), number(-100, 100)));
        const double near = number(0.1, 2.0);
        setProjection(whole(0, 3) > 0 ? glm::perspective(float(number(0.3, 2.0)), float(number(0.5, 2.0)),
                                                         float(near), 100.0f)
                                      : glm::ortho(-3.0f, 5.0f, -2.0f, 4.0f, 0.1f, 50.0f));
    }

    static constexpr double PixelTolerance = 0.02; // in views of up to 4000 pixels
    static constexpr double TextureTolerance = 1e-6;
    glm::mat4 m_projection{1.0f};
    glm::dvec2 m_size{64.0, 64.0};
    glm::dvec2 m_texture{1.0, 1.0};
    glm::dvec2 m_offset{0.0, 0.0};
    Window m_window;
    std::size_t cases = 0;
    double worstPixels = 0.0;
    double worstTexture = 0.0;
    std::mt19937 random{31};
};

TEST_F(CaptionCornersTest, RandomPointsBecomeQuadsOfTheirTexture)
{
    useStages({});
    for (int run = 0; run < 40; ++run) {
        setAnything();
        std::vector<float> points;
        std::vector<glm::dvec4> clips;
        while (points.size() < 3 * 200) {
            glm::vec3 p(number(-20, 20), number(-20, 20), number(-30, 3));
            if (points.size() % 30 == 0)
                p.z = 0.0f; // in the plane of the eye: nothing, under a central projection
            const glm::dvec4 clip = glm::dmat4(m_projection) * glm::dvec4(p, 1.0);
            const bool isFar =
                std::fabs(clip.x) > 4.0 * std::fabs(clip.w) || std::fabs(clip.y) > 4.0 * std::fabs(clip.w);
            if (clip.w != 0.0 && (std::fabs(clip.w) < 0.01 || isFar)) continue;
            points.insert(points.end(), {p.x, p.y, p.z});
            if (clip.w != 0.0) clips.push_back(clip);
        }
        attribute(0, 3, points);
        const int count = static_cast<int>(points.size() / 3);
        const std::vector<float> values =
            capture(GL_POINTS, count, GL_TRIANGLES, Components, static_cast<std::size_t>(6 * count));
        ASSERT_EQ(values.size(), clips.size() * 6 * Components)
            << "a point in the plane of the eye gives nothing";
        for (std::size_t i = 0; i < clips.size(); ++i)
            compare(&values[i * 6 * Components], clips[i]);
    }
    report("captions");
}

TEST_F(CaptionCornersTest, RandomInstancesBecomeQuadsOfTheirTexture)
{
    useStages({"RX_USE_INSTANCED_DRAW", "RX_USE_INSTANCE_POSITION", "RX_NO_USE_PER_VERTEX_COORDS"});
    for (int run = 0; run < 10; ++run) {
        setAnything();
        std::vector<float> positions;
        std::vector<glm::dvec4> clips;
        while (clips.size() < 100) {
            const glm::vec3 p(number(-2, 2), number(-2, 2), number(-30, -3));
            clips.push_back(glm::dmat4(m_projection) * glm::dvec4(p, 1.0));
            positions.insert(positions.end(), {p.x, p.y, p.z});
        }
        instanceFloats(4, 3, positions);
        instanceIntegers(5, 1, GL_INT, std::vector<std::uint32_t>(100, ~0u));
        instanceIntegers(6, 2, GL_UNSIGNED_INT, std::vector<std::uint32_t>(200, 1u));
        const std::vector<float> values = capture(GL_POINTS, 1, GL_TRIANGLES, Components, 600, 100);
        ASSERT_EQ(values.size(), clips.size() * 6 * Components);
        for (std::size_t i = 0; i < clips.size(); ++i)
            compare(&values[i * 6 * Components], clips[i]);
    }
    report("captions of instances");
}

TEST_F(CaptionCornersTest, PixelsShowTheTexelsOfTheWindow)
{
    use("Caption");
    setColors({1, 1, 1, 1});
    constexpr double Band = 0.02; // pixels beside an edge that rounding decides upon
    std::size_t compared = 0;
    for (int run = 0; run < 100; ++run) {
        m_texture = {whole(1, 30), whole(1, 20)};
        const int width = static_cast<int>(m_texture.x);
        const int height = static_cast<int>(m_texture.y);
        std::vector<std::uint32_t> texels;
        for (int i = 0; i < width * height; ++i)
            texels.push_back(0xFF000000u | static_cast<std::uint32_t>(random()));
        texture(width, height, texels);
        // the window goes by whole texels, so that one is a pixel
        const int left = whole(0, width - 1);
        const int top = whole(0, height - 1);
        setWindow({left / m_texture.x, whole(left + 1, width) / m_texture.x, top / m_texture.y,
                   whole(top + 1, height) / m_texture.y});
        setOffset(glm::vec2(number(-20, 20), number(-20, 20)));
        const glm::vec3 point(number(-1, 1), number(-1, 1), number(-1, 1));
        attribute(0, 3, {point.x, point.y, point.z});
        draw(GL_POINTS, 1);
        const std::array<CaptionCorner, 4> corners = cornersAt(glm::dvec4(point, 1.0));
        const glm::dvec2 upperLeft = corners[2].pixel;
        const glm::dvec2 lowerRight = corners[1].pixel;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                const glm::dvec2 inside = glm::dvec2(x + 0.5, y + 0.5) - upperLeft;
                const auto isClose = [](double v) { return std::fabs(v - std::round(v)) < Band; };
                if (isClose(inside.x) || isClose(inside.y)) continue;
                ++compared;
                if (inside.x < 0.0 || inside.y < 0.0 || x + 0.5 > lowerRight.x || y + 0.5 > lowerRight.y) {
                    ASSERT_TRUE(isUntouched(x, y)) << x << ", " << y;
                    continue;
                }
                const int column = left + static_cast<int>(inside.x);
                const int row = top + static_cast<int>(inside.y);
                ASSERT_EQ(word(x, y, 0), texels[static_cast<std::size_t>(row * width + column)])
                    << x << ", " << y;
            }
    }
    std::printf(
        "captions on screen: 100 captions, %zu pixels compared; those within %.2g of an edge left out\n",
        compared, Band);
}

} // namespace
