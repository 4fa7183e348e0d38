#include "GlueDrawing.h"

#include <glm/gtc/matrix_transform.hpp>

// Edges in glue masks.
namespace {

/// An edge on the screen, by the formula of the projection, in doubles.
class EdgeReference
{
public:
    EdgeReference(const glm::dmat4& matrix, const glm::vec3& start, const glm::vec3& end)
        : m_start(start)
        , m_end(end)
        , m_clip0(matrix * glm::dvec4(start, 1.0))
        , m_clip1(matrix * glm::dvec4(end, 1.0))
    {
        const double near0 = m_clip0.z + m_clip0.w;
        const double near1 = m_clip1.z + m_clip1.w;
        m_isVisible = near0 > 0.0 || near1 > 0.0;
        if (near0 < 0.0) m_from = near0 / (near0 - near1);
        if (near1 < 0.0) m_to = near0 / (near0 - near1);
    }
    bool isVisible() const { return m_isVisible; }

    /// Where a driver may sample the line for a pixel with this centre, as shares of the edge: nearest to the
    /// centre, or in the same row or column, across the line's main direction. Beyond the ends it is the end.
    std::array<double, 2> sampledShares(const glm::dvec2& centre) const
    {
        const glm::dvec2 a = onScreen(m_from);
        const glm::dvec2 b = onScreen(m_to);
        const int axis = std::abs(b.x - a.x) > std::abs(b.y - a.y) ? 0 : 1;
        return {shareAt(glm::dot(centre - a, b - a) / glm::dot(b - a, b - a)),
                shareAt((centre[axis] - a[axis]) / (b[axis] - a[axis]))};
    }
    glm::dvec2 onScreen(double share) const
    {
        const glm::dvec4 clip = glm::mix(m_clip0, m_clip1, share);
        return glm::dvec2(32.0 + 32.0 * clip.x / clip.w, 32.0 - 32.0 * clip.y / clip.w);
    }
    glm::dvec3 at(double share) const { return glm::mix(m_start, m_end, share); }
    /// The share of the edge at which a point lies that is nearly on it.
    double shareOf(const glm::dvec3& point) const
    {
        return glm::dot(point - m_start, m_end - m_start) / glm::dot(m_end - m_start, m_end - m_start);
    }

private:
    /// The share of the edge at a share of its visible part on screen, where it is cut short by perspective.
    double shareAt(double s) const
    {
        const double along0 = (1.0 - s) / wAt(m_from);
        const double along1 = s / wAt(m_to);
        return glm::clamp(m_from + (m_to - m_from) * along1 / (along0 + along1), 0.0, 1.0);
    }
    double wAt(double share) const { return glm::mix(m_clip0.w, m_clip1.w, share); }

    glm::dvec3 m_start;
    glm::dvec3 m_end;
    glm::dvec4 m_clip0;
    glm::dvec4 m_clip1;
    double m_from = 0.0; ///< the part that lies before the near plane
    double m_to = 1.0;
    bool m_isVisible = false;
};

class GlueEdgesTest : public GlueDrawing
{
protected:
    struct EdgeVertex
    {
        Vertex vertex;
        glm::vec3 edge_end;
        float edge_share;
    };
    void useCapturedEdges(const QString& geometry)
    {
        std::vector<std::string> names = varyings();
        names.insert(names.end(), {"edge_end", "edge_share"});
        use(recipe("edges", {"GlueMask.vertex", geometry, "GlueMask.line2line.fragment"}), names);
    }
    void expectEdge(const EdgeVertex* edge, const glm::vec3& start, const glm::vec3& end, int layer)
    {
        for (int i = 0; i < 2; ++i) {
            const glm::vec3& place = i == 0 ? start : end;
            ASSERT_EQ(glm::vec2(edge[i].vertex.clip), glm::vec2(place));
            ASSERT_EQ(edge[i].vertex.clip.w, 1.0f);
            ASSERT_NEAR(edge[i].vertex.clip.z, place.z - 1e-6f * float(layer), 1e-4f);
            ASSERT_EQ(edge[i].vertex.layer, layer);
            ASSERT_TRUE(areSameBits(edge[i].vertex.coords, start));
            ASSERT_TRUE(areSameBits(edge[i].edge_end, end));
            ASSERT_EQ(edge[i].edge_share, float(i));
        }
    }

    /// Compares every pixel that the edges cover with the one that fits best.
    void compare(const std::vector<EdgeReference>& edges, double size, int layer = Edge)
    {
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                if (isUntouched(x, y)) continue;
                ++m_pixels;
                ASSERT_EQ(markAt(x, y), ~static_cast<std::uint32_t>(layer));
                comparePixel(x, y, edges, size);
            }
    }
    void comparePixel(int x, int y, const std::vector<EdgeReference>& edges, double size)
    {
        const glm::dvec3 coords(coordsAt(x, y));
        const glm::dvec2 centre(x + 0.5, y + 0.5);
        double least = 1e9;
        double aside = 0.0;
        double apart = 0.0;
        for (const EdgeReference& edge : edges) {
            const double share = edge.shareOf(coords);
            const glm::dvec2 place = edge.onScreen(share);
            for (const double sampled : edge.sampledShares(centre)) {
                const double along = glm::length(place - edge.onScreen(sampled));
                if (along >= least) continue;
                least = along;
                aside = glm::length(coords - edge.at(share)) / size;
                apart = glm::length(place - centre);
            }
        }
        m_along = std::max(m_along, least);
        m_aside = std::max(m_aside, aside);
        m_apart = std::max(m_apart, apart);
    }
    void report(const char* what, int cases) const
    {
        const double tolerance = 0.002;
        EXPECT_LE(m_along, tolerance);
        EXPECT_LE(m_aside, 2e-7);
        EXPECT_LE(m_apart, 0.75);
        EXPECT_GT(m_pixels, 10 * cases);
        std::printf(
            "%s: %d cases, %d pixels, off the edge by %.2g of the scene at most, tolerance 2e-07, along "
            "it by %.2g pixels, tolerance %g\n",
            what, cases, m_pixels, m_aside, m_along, tolerance);
    }

private:
    int m_pixels = 0;
    double m_aside = 0.0;
    double m_along = 0.0;
    double m_apart = 0.0;
};

TEST_F(GlueEdgesTest, SegmentStaysOneEdge)
{
    useCapturedEdges("GlueMask.line2line.geom");
    const std::vector<glm::vec3> points = randomPoints(1000, 100.0f);
    feed(points);
    const auto vertices = captureFedAs<EdgeVertex>(GL_LINES, GL_LINES);
    ASSERT_EQ(vertices.size(), points.size());
    for (std::size_t i = 0; i < points.size(); i += 2)
        expectEdge(&vertices[i], points[i], points[i + 1], Edge);
    std::printf("glue edges: 500 cases, no bit differs\n");
}

TEST_F(GlueEdgesTest, FaceBecomesItsThreeEdges)
{
    useCapturedEdges("GlueMask.face2line.geom");
    const std::vector<glm::vec3> points = randomPoints(900, 100.0f);
    feed(points);
    const auto vertices = captureFedAs<EdgeVertex>(GL_TRIANGLES, GL_LINES);
    ASSERT_EQ(vertices.size(), 2 * points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        const std::size_t next = i % 3 == 2 ? i - 2 : i + 1;
        expectEdge(&vertices[2 * i], points[i], points[next], FaceEdge);
    }
    std::printf("glue face edges: 900 cases, no bit differs\n");
}

TEST_F(GlueEdgesTest, PixelsHoldThePointOfTheEdgeThatIsThere)
{
    use("GlueLines");
    const glm::mat4 projection = glm::perspective(1.2f, 1.0f, 0.5f, 100.0f);
    set("projection", projection);
    const int cases = 200;
    for (int i = 0; i < cases; ++i) {
        const auto visiblePoint = [this] {
            const float depth = random(1.0f, 50.0f);
            return glm::vec3(random(-0.6f, 0.6f) * depth, random(-0.6f, 0.6f) * depth, -depth);
        };
        const glm::vec3 start = visiblePoint();
        const glm::vec3 end = visiblePoint();
        feed({start, end});
        drawFed(GL_LINES);
        compare({EdgeReference(projection, start, end)}, 50.0);
    }
    report("glue edges in sight", cases);
}

// With one end behind the camera.
TEST_F(GlueEdgesTest, EdgesComeThroughTheNearPlane)
{
    use("GlueLines");
    const glm::mat4 projection = glm::perspective(1.2f, 1.0f, 0.5f, 100.0f);
    set("projection", projection);
    const int cases = 200;
    for (int i = 0; i < cases; ++i) {
        const float depth = random(2.0f, 20.0f);
        const glm::vec3 front(random(-0.5f, 0.5f) * depth, random(-0.5f, 0.5f) * depth, -depth);
        const glm::vec3 behind(random(-1.0f, 1.0f), random(-1.0f, 1.0f), random(0.5f, 5.0f));
        const bool isFirst = i % 2 == 0;
        const glm::vec3 start = isFirst ? front : behind;
        const glm::vec3 end = isFirst ? behind : front;
        feed({start, end});
        drawFed(GL_LINES);
        compare({EdgeReference(projection, start, end)}, 20.0);
    }
    report("glue edges through the near plane", cases);
}

// The pixel's centre lies 0.4 pixels beyond the end: the coordinates are the end's, and not of a place
// further on.
TEST_F(GlueEdgesTest, NothingLiesBeyondTheEnds)
{
    use("GlueLines");
    const glm::vec3 start(centreOf(10, 30, Size) + glm::vec2(0.4f * Pixel, 0.0f), 0.1f);
    const glm::vec3 end(centreOf(50, 30, Size) + glm::vec2(0.4f * Pixel, 0.0f), 0.7f);
    int atEnds = 0;
    for (const bool isTurned : {false, true}) {
        feed({isTurned ? end : start, isTurned ? start : end});
        drawFed(GL_LINES);
        for (int x = 0; x < Size; ++x) {
            if (isUntouched(x, 30)) continue;
            const glm::vec3 coords = coordsAt(x, 30);
            EXPECT_GE(coords.x, start.x) << x;
            EXPECT_LE(coords.x, end.x) << x;
            EXPECT_GE(coords.z, 0.1f) << x;
            EXPECT_LE(coords.z, 0.7f) << x;
            if (x > 10) continue;
            EXPECT_TRUE(areSameBits(coords, start));
            ++atEnds;
        }
    }
    // which of the pixels at its ends a line covers depends on its direction
    EXPECT_GT(atEnds, 0);
}

// At the corners of a face two edges meet: either is right there.
TEST_F(GlueEdgesTest, PixelsOfFaceEdgesHoldThePlaceOnTheEdge)
{
    use("GlueFaceEdges");
    const auto corner = [](int x, int y, float z) { return glm::vec3(centreOf(x, y, Size), z); };
    const glm::vec3 corners[3] = {corner(5, 50, 0.1f), corner(55, 50, 0.3f), corner(5, 10, -0.6f)};
    feed({corners[0], corners[1], corners[2]});
    drawFed(GL_TRIANGLES);
    std::vector<EdgeReference> edges;
    for (int i = 0; i < 3; ++i)
        edges.emplace_back(glm::dmat4(1.0), corners[i], corners[(i + 1) % 3]);
    compare(edges, 1.0, FaceEdge);
    EXPECT_NEAR(touchedCount(), 50 + 40 + 50, 5);
    report("glue face edges on screen", 1);
}

TEST_F(GlueEdgesTest, FragmentsOfNodesDropEdges)
{
    const std::pair<const char*, unsigned> stages[] = {{"GlueMask.line2line.geom", GL_LINES},
                                                       {"GlueMask.face2line.geom", GL_TRIANGLES}};
    for (const auto& [geometry, mode] : stages) {
        use(recipe("edges", {"GlueMask.vertex", geometry, "GlueMask.fragment"}));
        feed({{-0.5f, -0.5f, 0}, {0.5f, -0.4f, 0}, {0.4f, 0.5f, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
        drawFed(mode);
        EXPECT_EQ(touchedCount(), 0) << geometry;
    }
}

} // namespace
