#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>

// Eye-dome lighting of small scenes, against the same count in doubles from the positions of the pixels.
namespace {

enum Shading { None, Positive, Negative };

/// A picture with its depth, bottom row first, as textures have it.
struct Picture
{
    int width = 64;
    int height = 64;
    std::vector<float> depths;
    std::vector<std::uint32_t> colors;

    std::size_t at(int x, int y) const { return static_cast<std::size_t>(y * width + x); }
};

/// The share of a pixel's neighbours that leave it lit; open when single precision may count otherwise.
struct LitShare
{
    double value = 1.0;
    bool isOpen = false;
};

class EyeDomeReference
{
public:
    EyeDomeReference(const Picture& picture, const glm::mat4& toScene, Shading shading)
        : m_picture(picture)
        , m_toScene(toScene)
        , m_shading(shading)
    {
    }

    LitShare at(int x, int y) const
    {
        const double z = frustumZ(x, y);
        const glm::dvec3 centre = scenePoint(x, y, z);
        const double radius = 5.5 * glm::length(scenePoint(x, y + 1, z) - centre);
        LitShare share;
        int count = 0;
        int lit = 0;
        for (int j = std::max(y - 5, 0); j < std::min(y + 6, m_picture.height); ++j)
            for (int i = std::max(x - 5, 0); i < std::min(x + 6, m_picture.width); ++i) {
                const glm::dvec2 beside = scenePoint(i, j, z) - centre;
                share.isOpen |= isClose(glm::length(beside), radius);
                if (glm::length(beside) > radius) continue;
                ++count;
                lit += !isShading(i, j, z, centre, radius, share);
            }
        share.value = double(lit) / count;
        return share;
    }

private:
    double frustumZ(int x, int y) const
    {
        const double depth = double(m_picture.depths[m_picture.at(x, y)]);
        const double z = depth < 0.001 ? depth / 0.001 : (depth - 0.001) / 0.999;
        return 2.0 * z - 1.0;
    }
    glm::dvec3 scenePoint(int x, int y, double z) const
    {
        const glm::dvec4 p = m_toScene * glm::dvec4((2.0 * x + 1.0) / m_picture.width - 1.0,
                                                    (2.0 * y + 1.0) / m_picture.height - 1.0, z, 1.0);
        return glm::dvec3(p) / p.w;
    }
    bool isShading(int x, int y, double z, const glm::dvec3& centre, double radius, LitShare& share) const
    {
        const double other = frustumZ(x, y);
        if (m_shading == Positive ? z >= other : z <= other) return false;
        const double distance = glm::length(scenePoint(x, y, other) - centre);
        share.isOpen |= isClose(distance, radius) || (std::abs(z - other) < 1e-6 && distance > 0.99 * radius);
        return distance > radius;
    }
    static bool isClose(double a, double b) { return std::abs(a - b) < 1e-3 * b; }

    const Picture& m_picture;
    glm::dmat4 m_toScene;
    Shading m_shading;
};

class EyeDomeTest : public ShaderDrawing
{
protected:
    void prepare() override
    {
        for (unsigned& name : m_textures)
            name = newTexture();
        use("EyeDome");
        set("rgb_texture", 0);
        set("depth_texture", 1);
        m_perspective = glm::perspective(1.0f, 1.0f, 1.0f, 100.0f);
    }
    /// A texture that the fixture deletes.
    unsigned newTexture()
    {
        texture(1, 1, {0});
        int name = 0;
        gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
        return static_cast<unsigned>(name);
    }

    void load(int unit, GLint internal, GLenum format, GLenum type, const Picture& picture, const void* bytes)
    {
        gl->glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        gl->glBindTexture(GL_TEXTURE_2D, m_textures[unit]);
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, internal, picture.width, picture.height, 0, format, type, bytes);
    }
    /// Draws the pass over a picture into the lower left corner of the target.
    void shade(const Picture& picture, const glm::mat4& toScene, int shading)
    {
        set("edl_shading_type", shading);
        shadeAsItIs(picture, toScene);
    }
    void shadeAsItIs(const Picture& picture, const glm::mat4& toScene)
    {
        load(0, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, picture, picture.colors.data());
        load(1, GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT, GL_FLOAT, picture, picture.depths.data());
        gl->glActiveTexture(GL_TEXTURE0);
        set("mvp_inv", toScene);
        rectangle(-1.0f, -1.0f, 2.0f * float(picture.width) / Size - 1.0f,
                  2.0f * float(picture.height) / Size - 1.0f);
        attribute(3, 2, {0, 0, 1, 0, 0, 1, 1, 1});
        gl->glDepthFunc(GL_ALWAYS);
        draw(GL_TRIANGLE_STRIP, 4);
    }
    QColor shown(int x, int y) const { return pixel(x, Size - 1 - y); }

    /// A picture of one colour whose depth in the frustum is a function of the place in pixels.
    static Picture pictureOf(int width, int height, const std::function<double(int, int)>& frustumZ)
    {
        Picture picture;
        picture.width = width;
        picture.height = height;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                picture.depths.push_back(float(0.001 + 0.999 * (frustumZ(x, y) + 1.0) / 2.0));
        picture.colors.assign(picture.depths.size(), ~0u);
        return picture;
    }
    /// Hills and steps in front of a background, seen from a camera of this projection that looks along -z.
    Picture town(int width, int height, const glm::mat4& projection)
    {
        std::uniform_real_distribution<double> noise(-0.02, 0.02);
        std::uniform_int_distribution<int> place(0, 63);
        const int left = place(m_random) / 2;
        const int bottom = place(m_random) / 2;
        return pictureOf(width, height, [&](int x, int y) {
            double eyeZ = -20.0 - 4.0 * std::sin(0.2 * x) - 3.0 * std::cos(0.13 * y) + noise(m_random);
            if (x > left && x < left + 20 && y > bottom && y < bottom + 18) eyeZ += 5.0;
            if ((x / 7 + y / 5) % 6 == 0) eyeZ -= 2.5;
            if (x + y > 110) return 1.0;
            const glm::dvec4 clip = glm::dmat4(projection) * glm::dvec4(0, 0, eyeZ, 1);
            return clip.z / clip.w;
        });
    }
    /// Puts a part of the picture into the foreground, at another distance than the rest.
    static void addForeground(Picture& picture, const glm::mat4& projection)
    {
        for (int y = picture.height / 3; y < picture.height / 2; ++y)
            for (int x = picture.width / 4; x < picture.width / 2; ++x) {
                const glm::dvec4 clip = glm::dmat4(projection) * glm::dvec4(0, 0, -18.0 - 0.4 * x, 1);
                picture.depths[picture.at(x, y)] = float(0.001 * (clip.z / clip.w + 1.0) / 2.0);
            }
    }

    /// Shades a white picture and compares every pixel with the count.
    void compare(const Picture& picture, const glm::mat4& toScene, Shading shading)
    {
        shade(picture, toScene, shading);
        const EyeDomeReference reference(picture, toScene, shading);
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) {
                const LitShare share = reference.at(x, y);
                if (share.isOpen) {
                    ++m_open;
                    continue;
                }
                ++m_cases;
                m_shaded += share.value < 1.0;
                m_largest = std::max(m_largest, std::abs(shown(x, y).redF() - share.value));
                ASSERT_NEAR(shown(x, y).redF(), share.value, Tolerance) << x << ", " << y;
            }
    }
    void report(const char* what)
    {
        std::printf("%s: %d pixels, %d of them darkened, %d more left open, largest difference %.3g, "
                    "tolerance %.3g\n",
                    what, m_cases, m_shaded, m_open, m_largest, Tolerance);
        EXPECT_GT(m_shaded, m_cases / 20);
        EXPECT_LT(m_open, m_cases / 5);
    }

    static constexpr double Tolerance = 0.501 / 255.0; // half a step of 8 bits; one neighbour is 1 / 97
    glm::mat4 m_perspective;
    std::mt19937 m_random{3};

private:
    unsigned m_textures[2] = {0, 0};
    int m_cases = 0;
    int m_shaded = 0;
    int m_open = 0;
    double m_largest = 0.0;
};

TEST_F(EyeDomeTest, BothSignsFromTheCamerasFrame)
{
    const glm::mat4 toEye = glm::inverse(m_perspective);
    for (const Shading shading : {Positive, Negative})
        for (int i = 0; i < 3; ++i)
            compare(town(64, 64, m_perspective), toEye, shading);
    report("eye dome in perspective");
}

TEST_F(EyeDomeTest, ForegroundHasItsOwnDepthRange)
{
    const glm::mat4 toEye = glm::inverse(m_perspective);
    for (const Shading shading : {Positive, Negative}) {
        Picture picture = town(64, 64, m_perspective);
        addForeground(picture, m_perspective);
        compare(picture, toEye, shading);
    }
    report("eye dome with a foreground");
}

TEST_F(EyeDomeTest, SceneFrameOfATiltedCamera)
{
    const glm::mat4 view = glm::lookAt(glm::vec3(3, -20, 30), glm::vec3(0, 0, 0), glm::vec3(0, 0, 1));
    const glm::mat4 toScene(glm::inverse(glm::dmat4(m_perspective) * glm::dmat4(view)));
    for (const Shading shading : {Positive, Negative})
        compare(town(64, 64, m_perspective), toScene, shading);
    report("eye dome in the scene's frame");
}

TEST_F(EyeDomeTest, ParallelProjection)
{
    const glm::mat4 projection = glm::ortho(-12.0f, 12.0f, -12.0f, 12.0f, 1.0f, 60.0f);
    for (const Shading shading : {Positive, Negative})
        compare(town(64, 64, projection), glm::inverse(projection), shading);
    report("eye dome in parallel projection");
}

TEST_F(EyeDomeTest, PicturesOfAnySize)
{
    for (const auto& [width, height] : {std::pair(1, 1), {3, 2}, {64, 1}, {1, 50}, {37, 23}, {50, 64}}) {
        const float aspect = float(width) / float(height);
        const glm::mat4 projection = glm::perspective(1.0f, aspect, 1.0f, 100.0f);
        for (const Shading shading : {Positive, Negative})
            compare(town(width, height, projection), glm::inverse(projection), shading);
    }
    // pixels that are no squares: the radius is that of their height
    for (const auto& [width, height] : {std::pair(64, 48), {48, 64}})
        compare(town(width, height, m_perspective), glm::inverse(m_perspective), Negative);
    report("eye dome at any size");
}

// 900 units from the origin, where numbers of single precision are 6e-5 apart and a pixel is 1e-5 wide.
TEST_F(EyeDomeTest, NearViewFarFromTheOrigin)
{
    const float reach = 32e-5f;
    const glm::mat4 projection = glm::ortho(-reach, reach, -reach, reach, 1e-4f, 4e-3f);
    const glm::dmat4 view = glm::translate(glm::dmat4(1.0), {-900.0, 700.0, -800.0});
    const glm::mat4 toScene(glm::inverse(glm::dmat4(projection) * view));
    const auto steps = [](int x, int y) { return 0.2 * std::sin(0.3 * x) + ((x / 9 + y / 8) % 3) * 0.2; };
    for (const Shading shading : {Positive, Negative})
        compare(pictureOf(64, 64, steps), toScene, shading);
    report("eye dome far from the origin");
}

TEST_F(EyeDomeTest, PlaneAcrossTheViewIsNotDarkened)
{
    const Picture picture = pictureOf(64, 64, [](int, int) { return 0.25; });
    for (const Shading shading : {Positive, Negative}) {
        shade(picture, glm::inverse(m_perspective), shading);
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x)
                ASSERT_EQ(shown(x, y), QColor(Qt::white)) << x << ", " << y;
    }
}

TEST_F(EyeDomeTest, StepIsDarkOnItsFarSideUnlessPositive)
{
    const Picture picture = pictureOf(64, 64, [](int x, int) { return x < 32 ? -0.5 : 0.5; });
    const glm::mat4 toScene(1.0f);
    shade(picture, toScene, Negative);
    EXPECT_EQ(shown(31, 32), QColor(Qt::white));
    // 43 of the 97 pixels within 5.5 lie in the next columns
    EXPECT_EQ(shown(32, 32).red(), qRound(255.0 * (97 - 43) / 97.0));
    EXPECT_EQ(shown(37, 32), QColor(Qt::white));
    shade(picture, toScene, Positive);
    EXPECT_EQ(shown(32, 32), QColor(Qt::white));
    EXPECT_EQ(shown(31, 32).red(), qRound(255.0 * (97 - 43) / 97.0));
}

TEST_F(EyeDomeTest, DarkensByNearerNeighboursUnlessTold)
{
    const Picture picture = pictureOf(64, 64, [](int x, int) { return x < 32 ? -0.5 : 0.5; });
    shadeAsItIs(picture, glm::mat4(1.0f));
    EXPECT_EQ(shown(31, 32), QColor(Qt::white));
    EXPECT_LT(shown(32, 32).red(), 200);
}

TEST_F(EyeDomeTest, KeepsAlphaAndScalesTheColour)
{
    Picture picture = pictureOf(64, 64, [](int x, int) { return x < 32 ? -0.5 : 0.5; });
    std::fill(picture.colors.begin(), picture.colors.end(),
              0x64326EC8u); // alpha 100, blue 50, green 110, red 200
    shade(picture, glm::mat4(1.0f), Negative);
    EXPECT_EQ(shown(10, 10), QColor(200, 110, 50, 100));
    const double share = (97 - 43) / 97.0;
    EXPECT_EQ(shown(32, 32), QColor(qRound(200 * share), qRound(110 * share), qRound(50 * share), 100));
}

TEST_F(EyeDomeTest, CopiesTheDepthToTheBit)
{
    Picture picture = town(64, 64, m_perspective);
    addForeground(picture, m_perspective);
    for (const Shading shading : {None, Positive, Negative}) {
        shade(picture, glm::inverse(m_perspective), shading);
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x) {
                std::uint32_t bits = 0;
                std::memcpy(&bits, &picture.depths[picture.at(x, y)], 4);
                ASSERT_EQ(depthBits(x, Size - 1 - y), bits) << x << ", " << y;
            }
    }
}

TEST_F(EyeDomeTest, CopiesTheColourWhenItIsNotUsed)
{
    Picture picture = town(64, 64, m_perspective);
    for (std::uint32_t& color : picture.colors)
        color = static_cast<std::uint32_t>(m_random());
    shade(picture, glm::inverse(m_perspective), None);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            ASSERT_EQ(word(x, Size - 1 - y, 0), picture.colors[picture.at(x, y)]) << x << ", " << y;
}

// A picture in tiles, each drawn with five pixels more about it.
TEST_F(EyeDomeTest, TilesShowNoSeams)
{
    const Picture whole = town(64, 64, m_perspective);
    const glm::dmat4 toEye = glm::inverse(glm::dmat4(m_perspective));
    shade(whole, glm::mat4(toEye), Negative);
    const QImage expected = images[0];
    int differing = 0;
    for (const auto& [left, bottom] : {std::pair(0, 0), {32, 0}, {0, 32}, {32, 32}, {16, 24}}) {
        const int x0 = std::max(left - 5, 0);
        const int y0 = std::max(bottom - 5, 0);
        Picture tile;
        tile.width = std::min(left + 37, 64) - x0;
        tile.height = std::min(bottom + 37, 64) - y0;
        for (int y = 0; y < tile.height; ++y)
            for (int x = 0; x < tile.width; ++x) {
                tile.depths.push_back(whole.depths[whole.at(x0 + x, y0 + y)]);
                tile.colors.push_back(~0u);
            }
        // the tile's coordinates to those of the whole
        const glm::dvec3 scale(tile.width / 64.0, tile.height / 64.0, 1.0);
        const glm::dvec3 shift(scale.x - 1.0 + x0 / 32.0, scale.y - 1.0 + y0 / 32.0, 0.0);
        const glm::dmat4 toWhole = glm::scale(glm::translate(glm::dmat4(1.0), shift), scale);
        shade(tile, glm::mat4(toEye * toWhole), Negative);
        for (int y = bottom; y < bottom + 32; ++y)
            for (int x = left; x < left + 32; ++x)
                differing += shown(x - x0, y - y0) != expected.pixelColor(x, 63 - y);
    }
    EXPECT_EQ(differing, 0);
}

} // namespace
