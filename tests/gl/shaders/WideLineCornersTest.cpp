#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>
#include <random>

// The six corners that a wide line's geometry stage emits, taken before the rasteriser, against the formula
// in doubles: random segments of every kind under random projections, viewports and pen widths.
namespace {

using Point = glm::dvec2;

/// A corner as it is emitted, and how far along the segment its colour is taken.
struct WideCorner
{
    glm::dvec4 position;
    double share;
};

/// An end after the clipping at the near plane: normalised device coordinates and its share of the segment.
struct End
{
    glm::dvec3 ndc;
    double share;
};

bool isBehind(const glm::dvec4& clip)
{
    return clip.w < 0.0 || clip.z + clip.w < 0.0;
}

/// What is left of a segment in front of the near plane; nothing when that is nothing. The crossing is found
/// where z + w changes its sign along the segment in clip coordinates.
std::optional<std::pair<End, End>> visiblePart(glm::dvec4 a, glm::dvec4 b)
{
    if (a.w == 0.0) a = b;
    if (b.w == 0.0) b = a;
    if (a.w == 0.0 || (isBehind(a) && isBehind(b))) return std::nullopt;
    const double depthA = a.z + a.w;
    const double depthB = b.z + b.w;
    const auto at = [&](double share) {
        const glm::dvec4 clip = (1.0 - share) * a + share * b;
        return End{glm::dvec3(clip) / clip.w, share};
    };
    const double crossing = depthA / (depthA - depthB);
    return std::pair{at(isBehind(a) ? crossing : 0.0), at(isBehind(b) ? crossing : 1.0)};
}

class WideLineCornersTest : public ShaderDrawing
{
protected:
    static constexpr int Components = 8;

    void prepare() override
    {
        use({"wide lines",
             {shaderPath("common.vertex"), shaderPath("WideLines.geom"), shaderPath("mono.fragment")},
             {"RX_USE_PER_VERTEX_COLOR"}},
            {"gl_Position", "Item.vertex_color"});
    }
    void setView(const glm::mat4& matrix, int width, int height, float pen)
    {
        m_projection = matrix;
        m_size = {width, height};
        m_pen = double(pen);
        glm::mat4 viewport(1.0f);
        viewport[0][0] = static_cast<float>(width) / 2.0f;
        viewport[1][1] = static_cast<float>(-height) / 2.0f;
        viewport[3] = glm::vec4(float(width) / 2.0f, float(height) / 2.0f, 0.0f, 1.0f);
        set("viewport", viewport);
        set("viewport_inverted", glm::inverse(viewport));
        set("projection", matrix);
        set("pen_width", pen);
    }
    glm::dvec4 clip(const glm::vec3& p) const { return glm::dmat4(m_projection) * glm::dvec4(p, 1.0); }
    Point toPixels(const glm::dvec3& ndc) const
    {
        return {(ndc.x + 1.0) / 2.0 * m_size.x, (1.0 - ndc.y) / 2.0 * m_size.y};
    }

    /// The corners that the segment should give, in the order of the strip.
    std::vector<WideCorner> cornersOf(const glm::vec3& from, const glm::vec3& to) const
    {
        const auto visible = visiblePart(clip(from), clip(to));
        if (!visible) return {};
        const auto& [a, b] = *visible;
        const Point p0 = toPixels(a.ndc);
        const Point p1 = toPixels(b.ndc);
        const double length = std::hypot(p1.x - p0.x, p1.y - p0.y);
        const Point along = length < 1.0 ? Point(0.0, 1.0) : (p1 - p0) / length;
        const Point across(-along.y, along.x);
        const auto corner = [&](const End& end, const Point& p, const Point& shift) {
            const Point moved = p + m_pen / 2.0 * shift;
            return WideCorner{
                {2.0 * moved.x / m_size.x - 1.0, 1.0 - 2.0 * moved.y / m_size.y, end.ndc.z, 1.0}, end.share};
        };
        return {corner(a, p0, -along), corner(a, p0, across),  corner(a, p0, -across),
                corner(b, p1, across), corner(b, p1, -across), corner(b, p1, along)};
    }
    /// Whether the rounding of floats decides what becomes of the segment, or blows up: ends almost in the
    /// plane of the eye or in the near plane, and lengths about the pixel that makes a line upright.
    bool isDelicate(const glm::vec3& from, const glm::vec3& to) const
    {
        for (const glm::vec3& p : {from, to}) {
            const glm::dvec4 c = clip(p);
            if (c.w != 0.0 && std::fabs(c.w) < 0.02) return true;
            if (c.w != 0.0 && std::fabs(c.z + c.w) < 1e-3 * std::fabs(c.w)) return true;
        }
        const auto visible = visiblePart(clip(from), clip(to));
        if (!visible) return false;
        const Point shift = toPixels(visible->second.ndc) - toPixels(visible->first.ndc);
        return std::fabs(std::hypot(shift.x, shift.y) - 1.0) < 0.05 ||
               glm::length(Point(visible->first.ndc)) > 20.0 ||
               glm::length(Point(visible->second.ndc)) > 20.0;
    }

    /// Draws all segments and compares what comes out, in their order.
    void expectCorners(const std::vector<std::pair<glm::vec3, glm::vec3>>& segments)
    {
        std::vector<float> points;
        std::vector<float> colors;
        for (const auto& [from, to] : segments)
            for (const auto& [point, color] : {std::pair{from, 0.0f}, {to, 1.0f}}) {
                points.insert(points.end(), {point.x, point.y, point.z});
                colors.insert(colors.end(), {color, 1.0f - color, 0.25f, 1.0f});
            }
        attribute(0, 3, points);
        attribute(1, 4, colors);
        const std::vector<float> values = capture(GL_LINES, static_cast<int>(2 * segments.size()),
                                                  GL_TRIANGLES, Components, 12 * segments.size());
        std::size_t at = 0;
        for (const auto& [from, to] : segments) {
            const std::vector<WideCorner> corners = cornersOf(from, to);
            ++m_cases;
            for (std::size_t t = 0; t + 2 < corners.size(); ++t, at += 3 * Components) {
                ASSERT_LE(at + 3 * Components, values.size());
                // every second triangle of a strip has its first two corners swapped
                const std::size_t swap = t % 2;
                compare(&values[at], corners[t + swap], corners[t + 1 - swap], corners[t + 2]);
            }
        }
        ASSERT_EQ(at, values.size());
    }
    void report(const char* what, std::size_t least)
    {
        std::printf(
            "%s: %zu segments, largest differences %.2g pixels of tolerance %.2g, %.2g (depth) and %.2g "
            "(colour) of tolerance %.2g\n",
            what, m_cases, m_pixels, PixelTolerance, m_depth, m_share, Tolerance);
        EXPECT_GE(m_cases, least);
        EXPECT_LE(m_pixels, PixelTolerance);
        EXPECT_LE(m_depth, Tolerance);
        EXPECT_LE(m_share, Tolerance);
    }
    double number(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }

    static constexpr double PixelTolerance = 0.02; // in views of up to 4000 pixels
    static constexpr double Tolerance = 1e-4;
    std::mt19937 random{5};

private:
    /// Takes the triangle, which may begin with any of its corners, into the largest differences.
    void compare(const float* values, const WideCorner& a, const WideCorner& b, const WideCorner& c)
    {
        const WideCorner* corners[] = {&a, &b, &c};
        double least[3] = {1e30, 1e30, 1e30};
        for (std::size_t shift = 0; shift < 3; ++shift) {
            double pixels = 0.0;
            double depth = 0.0;
            double share = 0.0;
            for (std::size_t k = 0; k < 3; ++k) {
                const WideCorner& expected = *corners[(k + shift) % 3];
                const float* v = values + k * Components;
                const glm::dvec4 seen(v[0], v[1], v[2], v[3]);
                EXPECT_NEAR(seen.w, 1.0, 1e-6);
                const Point offset = (Point(seen) - Point(expected.position)) * Point(m_size) / 2.0;
                pixels = std::max(pixels, std::hypot(offset.x, offset.y));
                depth = std::max(depth, std::fabs(seen.z - expected.position.z));
                share = std::max({share, std::fabs(double(v[4]) - expected.share),
                                  std::fabs(double(v[5]) - (1.0 - expected.share)),
                                  std::fabs(double(v[6]) - 0.25)});
            }
            if (pixels + depth < least[0] + least[1]) {
                least[0] = pixels;
                least[1] = depth;
                least[2] = share;
            }
        }
        m_pixels = std::max(m_pixels, least[0]);
        m_depth = std::max(m_depth, least[1]);
        m_share = std::max(m_share, least[2]);
    }

    glm::mat4 m_projection{1.0f};
    glm::dvec2 m_size{64.0, 64.0};
    double m_pen = 1.0;
    std::size_t m_cases = 0;
    double m_pixels = 0.0;
    double m_depth = 0.0;
    double m_share = 0.0;
};

TEST_F(WideLineCornersTest, RandomSegmentsUnderCentralProjections)
{
    std::map<std::string, int> kinds;
    for (int view = 0; view < 40; ++view) {
        const float near = static_cast<float>(number(0.1, 2.0));
        const float w = near * static_cast<float>(number(0.3, 1.5));
        const float shift = view % 2 == 0 ? 0.0f : 0.3f * w;
        setView(
            glm::frustum(-w, w + shift, -w + shift, w, near, near * static_cast<float>(number(20.0, 500.0))),
            static_cast<int>(number(16, 4000)), static_cast<int>(number(16, 4000)),
            static_cast<float>(number(0.5, 40.0)));
        std::vector<std::pair<glm::vec3, glm::vec3>> segments;
        while (segments.size() < 250) {
            const auto point = [&] {
                const double z = number(-10.0, 5.0) * double(near);
                return glm::vec3(number(-6.0, 6.0), number(-6.0, 6.0), z);
            };
            glm::vec3 from = point();
            glm::vec3 to = point();
            if (segments.size() % 10 == 0) to = from;   // no length
            if (segments.size() % 10 == 1) to.z = 0.0f; // in the plane of the eye
            if (segments.size() % 10 == 2) from.z = 0.0f;
            if (segments.size() % 50 == 3) from.z = to.z = 0.0f;
            if (segments.size() % 10 == 4) to = from + 1e-4f * point(); // less than a pixel, often
            if (isDelicate(from, to)) continue;
            segments.emplace_back(from, to);
            const auto side = [&](const glm::vec3& p) {
                const glm::dvec4 c = clip(p);
                return c.w == 0.0 ? "eye" : c.w < 0.0 ? "behind" : isBehind(c) ? "before near" : "visible";
            };
            const std::string a = side(from);
            const std::string b = side(to);
            ++kinds[std::min(a, b) + " - " + std::max(a, b)];
        }
        expectCorners(segments);
    }
    for (const auto& [kind, count] : kinds)
        std::printf("  %s: %d\n", kind.c_str(), count);
    for (const char* kind :
         {"visible - visible", "behind - visible", "before near - visible", "eye - visible",
          "behind - behind", "eye - eye", "before near - behind", "behind - eye"})
        EXPECT_GE(kinds[kind], 20) << kind;
    report("wide lines, central projections", 10000);
}

TEST_F(WideLineCornersTest, RandomSegmentsUnderParallelProjections)
{
    for (int view = 0; view < 20; ++view) {
        const float w = static_cast<float>(number(0.5, 10.0));
        const float near = static_cast<float>(number(-5.0, 5.0));
        setView(glm::ortho(-w, 1.5f * w, -0.7f * w, w, near, near + static_cast<float>(number(5.0, 50.0))),
                static_cast<int>(number(16, 4000)), static_cast<int>(number(16, 4000)),
                static_cast<float>(number(0.5, 40.0)));
        std::vector<std::pair<glm::vec3, glm::vec3>> segments;
        while (segments.size() < 250) {
            const auto point = [&] {
                return glm::vec3(number(-15.0, 15.0), number(-15.0, 15.0), number(-20.0, 5.0) - double(near));
            };
            const glm::vec3 from = point();
            const glm::vec3 to = segments.size() % 10 == 0 ? from : point();
            if (!isDelicate(from, to)) segments.emplace_back(from, to);
        }
        expectCorners(segments);
    }
    report("wide lines, parallel projections", 5000);
}

// Central and parallel projections put all that is behind the eye before the near plane too; others need not.
TEST_F(WideLineCornersTest, NothingBehindTheEyeIsDrawnWhateverItsDepth)
{
    glm::mat4 matrix(1.0f);
    matrix[3] = glm::vec4(0.0f, 0.0f, 3.0f, -1.0f);
    setView(matrix, 64, 64, 4.0f);
    expectCorners({{{-0.5f, 0.2f, 0.0f}, {0.5f, -0.3f, 0.0f}}});
}

} // namespace
