#include "SurfaceDrawing.h"

#include <tests/support/ImageCheck.h>
#include <tests/support/LightReference.h>

#include <algorithm>
#include <cstdio>

// Spheres and cylinders pixel by pixel: where they are, in what light and with which texture.
namespace {

using namespace surface_reference;

class SurfacePictureTest : public SurfaceDrawing, public ::testing::WithParamInterface<std::string>
{
protected:
    void prepare() override
    {
        useSurface(GetParam());
        setColors(glm::vec4(m_color, 1.0f));
        look();
    }

    /// Two units in front of the eye, tilted towards it, without perspective.
    void look()
    {
        m_model = glm::rotate(glm::mat4(1.0f), 1.0f, glm::vec3(1.0f, 0.3f, -0.2f));
        m_model = glm::scale(m_model, glm::vec3(0.6f));
        m_view = glm::translate(glm::mat4(1.0f), glm::vec3(0.0625f, -0.125f, -2.0f));
        m_projection = glm::mat4(1.0f);
        m_projection[2][2] = -0.5f;
        m_projection[3][2] = -1.0f;
        m_normalMatrix = glm::transpose(glm::inverse(glm::mat3(m_view * m_model)));
        setMatrices();
    }

    /// The surface in eye coordinates, which are normalised device coordinates in x and y. Of a sphere, the
    /// capture says only how it is divided.
    std::vector<Triangle> reference()
    {
        std::vector<Triangle> triangles = isCylinder() ? cylinder() : sphere();
        for (Triangle& triangle : triangles) {
            if (GetParam() == "Sphere")
                triangle[0].normal = triangle[1].normal = triangle[2].normal = facetNormal(triangle);
            for (Point& point : triangle) {
                point.position =
                    glm::dvec3(glm::dmat4(m_view) * glm::dmat4(m_model) * glm::dvec4(point.position, 1.0));
                point.normal = glm::dmat3(m_normalMatrix) * point.normal;
            }
        }
        return triangles;
    }

    /// Calls check(x, y, what is seen) for the pixels where that can be told, and returns how many of them
    /// show the surface.
    template <typename Check>
    int forEachPixel(const std::vector<Triangle>& triangles, const Check& check) const
    {
        int covered = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                const Seen seen = seenAt(triangles, x, y, Size);
                if (!seen.isCertain) continue;
                covered += seen.point.has_value();
                check(x, y, seen.point);
            }
        return covered;
    }
    double differenceAt(int x, int y, const glm::dvec3& color) const
    {
        const QColor shown = pixel(x, y);
        const glm::dvec3 expected = glm::min(color, glm::dvec3(1.0)) * 255.0;
        const glm::dvec3 d = glm::abs(glm::dvec3(shown.red(), shown.green(), shown.blue()) - expected);
        return std::max(d.x, std::max(d.y, d.z));
    }
    void setShownLevels(float level)
    {
        if (!isCylinder()) setLevels(level, level);
    }
    void save(const char* what)
    {
        saveTestImage((GetParam() + what).c_str(), images[0].convertToFormat(QImage::Format_RGB32));
    }

    const glm::vec3 m_color{0.5f, 0.25f, 0.375f};

private:
    std::vector<Triangle> sphere()
    {
        showShares();
        const std::vector<Vertex> vertices = captureSurface();
        set("uTextureK", -1.0f);
        set("uTextureB", 1.0f);
        std::vector<Triangle> triangles(vertices.size() / 3);
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            const glm::dvec2 share(vertices[i].texture);
            const glm::dvec3 normal = onUnitSphere(share.x, share.y);
            triangles[i / 3][i % 3] = {normal, normal, {share.x, 1.0 - share.y}};
        }
        return triangles;
    }
};

TEST_P(SurfacePictureTest, CoversWhatItsTrianglesCoverInTheirLight)
{
    for (const float level : {5.0f, 16.0f}) {
        setShownLevels(level);
        const glm::dvec3 direction(-0.4, 0.7, 0.9);
        set("uLightDirection", glm::vec3(direction));
        const std::vector<Triangle> triangles = reference();
        drawSurface();
        save(level == 5.0f ? "-coarse" : "-fine");
        double largest = 0.0;
        double deepest = 0.0;
        const int covered = forEachPixel(triangles, [&](int x, int y, const std::optional<Point>& seen) {
            ASSERT_EQ(isUntouched(x, y), !seen) << x << ", " << y;
            if (!seen) return;
            const Light light = lightAt(seen->position, seen->normal, direction);
            largest = std::max(largest, differenceAt(x, y, light.on(glm::dvec3(m_color))));
            const double depth = 0.5 * ((-0.5 * seen->position.z - 1.0) + 1.0);
            const double shown = double(depths[std::size_t(y * Size + x)]);
            deepest = std::max(deepest, std::fabs(shown - depth));
        });
        std::printf(
            "%s in light: %d pixels, largest difference %.2f of 255 and %.2g in depth, tolerances 1 and "
            "1e-5\n",
            GetParam().c_str(), covered, largest, deepest);
        EXPECT_GT(covered, 500);
        EXPECT_LE(largest, 1.0);
        EXPECT_LE(deepest, 1e-5);
    }
}

TEST_P(SurfacePictureTest, LightOffShowsTheColourItself)
{
    set("uLightMode", false);
    drawSurface();
    EXPECT_EQ(countPixels(images[0], QColor(128, 64, 96)), touchedCount());
    EXPECT_GT(touchedCount(), 500);
}

// Each texel has a colour of its own.
TEST_P(SurfacePictureTest, TextureLiesWhereItsCoordinatesTell)
{
    constexpr int columns = 8;
    constexpr int rows = 4;
    std::vector<std::uint32_t> texels;
    for (std::uint32_t i = 0; i < columns * rows; ++i)
        texels.push_back(0xFF000000u | (40u + 6u * i) | ((i * 77u) % 256u) << 8 | (255u - 7u * i) << 16);
    texture(columns, rows, texels);
    set("uTexture0", 0);
    set("uColorMode", 2);
    set("uLightMode", false);
    setShownLevels(16.0f);
    const std::vector<Triangle> triangles = reference();
    drawSurface();
    save("-texture");
    int compared = 0;
    forEachPixel(triangles, [&](int x, int y, const std::optional<Point>& seen) {
        if (!seen) return;
        const double column = seen->texture.x * columns;
        const double row = seen->texture.y * rows;
        const auto isAtEdge = [](double at) { return std::fabs(at - std::round(at)) < 0.01; };
        if (isAtEdge(column) || isAtEdge(row)) return;
        const std::uint32_t texel = texels[std::size_t(row) * columns + std::size_t(column)];
        ASSERT_EQ(pixel(x, y), QColor(int(texel & 255), int(texel >> 8 & 255), int(texel >> 16 & 255)))
            << x << ", " << y;
        ++compared;
    });
    EXPECT_GT(compared, 400);
}

TEST_P(SurfacePictureTest, TextureIsLit)
{
    texture(1, 1, {0xFF336699u});
    set("uColorMode", 2);
    setShownLevels(8.0f);
    const std::vector<Triangle> triangles = reference();
    drawSurface();
    const glm::dvec3 texel(0x99 / 255.0, 0x66 / 255.0, 0x33 / 255.0);
    double largest = 0.0;
    const int covered = forEachPixel(triangles, [&](int x, int y, const std::optional<Point>& seen) {
        if (!seen) return;
        const Light light = lightAt(seen->position, seen->normal, glm::dvec3(1.0));
        largest = std::max(largest, differenceAt(x, y, light.on(texel)));
    });
    EXPECT_GT(covered, 500);
    EXPECT_LE(largest, 1.0);
}

TEST_P(SurfacePictureTest, OtherColourModesShowTheItemsColour)
{
    texture(1, 1, {0xFF336699u});
    set("uLightMode", false);
    for (const int mode : {0, 1, 3}) {
        set("uColorMode", mode);
        drawSurface();
        EXPECT_EQ(countPixels(images[0], QColor(128, 64, 96)), touchedCount()) << mode;
    }
}

TEST_P(SurfacePictureTest, WireModeShowsThePlainColourWithoutLight)
{
    texture(1, 1, {0xFF336699u});
    set("uColorMode", 2);
    setShownLevels(8.0f);
    drawSurface();
    const int filled = touchedCount();
    EXPECT_EQ(countPixels(images[0], QColor(128, 64, 96)), 0) << "wire mode is off unless told";
    set("uWireMode", true);
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    drawSurface();
    save("-wire");
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    EXPECT_EQ(countPixels(images[0], QColor(128, 64, 96)), touchedCount());
    EXPECT_GT(touchedCount(), 100);
    EXPECT_LT(touchedCount(), filled);
}

INSTANTIATE_TEST_SUITE_P(Programs, SurfacePictureTest,
                         ::testing::Values("Sphere", "SmoothSphere", "Cylinder"),
                         [](const auto& program) { return program.param; });

} // namespace
