#include <tests/gl/markers/Feedback.h>
#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

// Where the markers of nodes under edit are, and their numbers, as they leave the geometry stage.
namespace {

using Point = glm::dvec3;

struct Marker
{
    glm::vec4 position;
    float size;
    int primitive;
    int number;
};

class NodeMarkersTest : public ShaderDrawing
{
protected:
    void prepare() override { useStage("EditNodes.geom"); }
    void useStage(const char* stage)
    {
        use({stage, {shaderPath("common.vertex"), shaderPath(stage), shaderPath("EditNodes.fragment")}, {}},
            {"gl_Position", "gl_PointSize", "gl_PrimitiveID", "marker_idx"});
    }
    void feed(const std::vector<glm::vec3>& points)
    {
        std::vector<float> values;
        for (const glm::vec3& p : points)
            values.insert(values.end(), {p.x, p.y, p.z});
        attribute(0, 3, values);
        m_count = static_cast<int>(points.size());
    }
    std::vector<Marker> markers(unsigned mode = GL_LINES)
    {
        return captureFeedback<Marker>(*gl, GL_POINTS, mode, m_count, 3 * static_cast<std::size_t>(m_count));
    }
    std::vector<Marker> markersOf(const glm::vec3& from, const glm::vec3& to)
    {
        feed({from, to});
        return markers();
    }
    static std::vector<int> numbers(const std::vector<Marker>& markers)
    {
        std::vector<int> result;
        for (const Marker& marker : markers)
            result.push_back(marker.number);
        return result;
    }
    bool isMarkerBetween(const glm::vec3& from, const glm::vec3& to)
    {
        const std::vector<Marker> all = markersOf(from, to);
        return !all.empty() && all.back().number == 1;
    }
    /// The marker between the nodes; fails where there is none.
    glm::vec4 middleOf(const glm::vec3& from, const glm::vec3& to)
    {
        if (isMarkerBetween(from, to)) return markers().back().position;
        ADD_FAILURE() << "no marker between the nodes";
        return glm::vec4(NAN);
    }

    int m_count = 0;
};

TEST_F(NodeMarkersTest, StandOnTheNodesAndBetweenThem)
{
    set("pen_width", 3.0f);
    const std::vector<Marker> all = markersOf({-0.5f, 0.25f, 0.5f}, {0.75f, -0.5f, -0.25f});
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].position, glm::vec4(-0.5f, 0.25f, 0.5f, 1));
    EXPECT_EQ(all[1].position, glm::vec4(0.75f, -0.5f, -0.25f, 1));
    EXPECT_EQ(all[2].position, glm::vec4(0.125f, -0.125f, 0.125f, 1));
    const int expected[3] = {0, 2, 1};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(all[i].size, 3.0f);
        EXPECT_EQ(all[i].primitive, expected[i]);
        EXPECT_EQ(all[i].number, expected[i]);
    }
}

// OpenGL draws no point whose centre is out of view, but there are drivers that draw it elsewhere when it is
// wide.
TEST_F(NodeMarkersTest, OutOfViewGoNoFurther)
{
    const glm::vec3 in(0.5f, -0.5f, 0.5f);
    const std::vector<glm::vec3> outside = {{1.01f, 0, 0}, {-1.01f, 0, 0}, {0, 1.01f, 0}, {0, -1.01f, 0},
                                            {0, 0, 1.01f}, {0, 0, -1.01f}, {NAN, 0, 0},   {0, NAN, 0},
                                            {0, 0, NAN},   {NAN, NAN, NAN}};
    set("is_show_adding_markers", false);
    for (const glm::vec3& out : outside) {
        EXPECT_EQ(numbers(markersOf(out, in)), std::vector<int>{2});
        EXPECT_EQ(numbers(markersOf(in, out)), std::vector<int>{0});
    }
    useStage("EditNodes.points.geom");
    for (const glm::vec3& out : outside) {
        feed({out, in, {1, -1, 1}}); // the limit itself is in view
        EXPECT_EQ(numbers(markers(GL_POINTS)), (std::vector<int>{2, 4}));
    }
}

TEST_F(NodeMarkersTest, NextToNodesWithoutAPlaceAreNone)
{
    EXPECT_EQ(numbers(markersOf({NAN, 0, 0}, {0.5f, 0, 0})), std::vector<int>{2});
    EXPECT_EQ(numbers(markersOf({0.5f, 0, 0}, glm::vec3(NAN))), std::vector<int>{0});
}

TEST_F(NodeMarkersTest, AreNumberedAlongAStrip)
{
    feed({{-0.9f, 0, 0}, {-0.3f, 0.4f, 0}, {0.3f, -0.4f, 0}, {0.9f, 0, 0}});
    EXPECT_EQ(numbers(markers(GL_LINE_STRIP)), (std::vector<int>{0, 2, 1, 2, 4, 3, 4, 6, 5}));
}

TEST_F(NodeMarkersTest, OfFurtherPartsAreNumberedOn)
{
    set("first_marker_idx", 1001);
    feed({{-0.9f, 0, 0}, {-0.3f, 0.4f, 0}, {0.3f, -0.4f, 0}});
    const std::vector<Marker> all = markers(GL_LINE_STRIP);
    EXPECT_EQ(numbers(all), (std::vector<int>{1001, 1003, 1002, 1003, 1005, 1004}));
    EXPECT_EQ(all[2].primitive, 1) << "which kind of marker it is does not depend on the first number";
}

TEST_F(NodeMarkersTest, AreOnlyOnTheNodesWhenNoneShallBeAdded)
{
    set("is_show_adding_markers", false);
    feed({{-0.9f, 0, 0}, {-0.3f, 0.4f, 0}, {0.3f, -0.4f, 0}});
    EXPECT_EQ(numbers(markers(GL_LINE_STRIP)), (std::vector<int>{0, 2, 2, 4}));
}

TEST_F(NodeMarkersTest, LeaveRoomOfFourPenWidthsBetweenNodes)
{
    set("pen_width", 4.0f);
    EXPECT_EQ(markersOf({-0.25f, 0, 0}, {0.25f, 0, 0}).size(), 3u); // 16 pixels
    EXPECT_EQ(markersOf({-0.25f, 0, 0}, {0.2499f, 0, 0}).size(), 2u);
    EXPECT_EQ(markersOf({0, -0.25f, 0}, {0, 0.25f, 0}).size(), 3u);
    EXPECT_EQ(markersOf({0, -0.25f, 0}, {0, 0.2499f, 0}).size(), 2u);
    EXPECT_EQ(markersOf({0, 0, -0.9f}, {0.4999f, 0, 0.9f}).size(), 2u) << "depth does not count";
}

TEST_F(NodeMarkersTest, NeedNoRoomWhereBothNodesAreOutside)
{
    set("pen_width", 30.0f); // 120 pixels, more than the view has
    EXPECT_FALSE(isMarkerBetween({-1.01f, 0, 0}, {0.9f, 0, 0}));
    EXPECT_FALSE(isMarkerBetween({-0.9f, 0, 0}, {1.01f, 0, 0}));
    EXPECT_TRUE(isMarkerBetween({-1.01f, 0, 0}, {1.01f, 0, 0}));
    EXPECT_TRUE(isMarkerBetween({0, 1.01f, 0}, {0, -1.01f, 0}));
    EXPECT_FALSE(isMarkerBetween({0, 0, -1.01f}, {0, 0.5f, 1.01f}))
        << "an end behind the near plane is replaced by the crossing, not clipped";
    EXPECT_TRUE(isMarkerBetween({1.01f, 0.5f, 0}, {0, -0.5f, 1.01f}));
}

TEST_F(NodeMarkersTest, CountNodesOnTheSidesAsInside)
{
    set("pen_width", 30.0f);
    EXPECT_FALSE(isMarkerBetween({-1, 0, 0}, {1, 0, 0}));
    EXPECT_FALSE(isMarkerBetween({1, 0, 0}, {-1.01f, 0, 0}));
    EXPECT_FALSE(isMarkerBetween({0, 0.5f, 1}, {0, -1.01f, 0}));
}

TEST_F(NodeMarkersTest, AreNoneWhereBothNodesAreBeyondOneSide)
{
    for (int axis = 0; axis < 3; ++axis)
        for (const float side : {-1.0f, 1.0f}) {
            glm::vec3 from(0.1f);
            glm::vec3 to(-0.2f);
            from[axis] = 1.001f * side;
            to[axis] = 3.0f * side;
            EXPECT_EQ(markersOf(from, to).size(), 0u) << axis << ", " << side;
            EXPECT_EQ(markersOf(to, from).size(), 0u) << axis << ", " << side;
            from[axis] = side;
            EXPECT_EQ(numbers(markersOf(from, to)), std::vector<int>{0}) << axis << ", " << side;
            EXPECT_EQ(numbers(markersOf(to, from)), std::vector<int>{2}) << axis << ", " << side;
            from[axis] = -1.1f * side;
            EXPECT_EQ(numbers(markersOf(from, to)), std::vector<int>{1}) << axis << ", " << side;
        }
}

TEST_F(NodeMarkersTest, StandInTheMiddleOfWhatShows)
{
    const float step = 1e-6f;
    const auto expectNear = [&](const glm::vec4& p, const glm::vec3& expected) {
        EXPECT_NEAR(p.x, expected.x, step);
        EXPECT_NEAR(p.y, expected.y, step);
        EXPECT_NEAR(p.z, expected.z, step);
        EXPECT_EQ(p.w, 1.0f);
    };
    expectNear(middleOf({0, 0, 0}, {2, 0, 0}), {0.5f, 0, 0});
    expectNear(middleOf({-2, 0.5f, 0}, {0, 0.5f, 0}), {-0.5f, 0.5f, 0});
    expectNear(middleOf({0.5f, 0, 0}, {0.5f, 3, 0}), {0.5f, 0.5f, 0});
    expectNear(middleOf({0.5f, 1, 0}, {0.5f, -4, 0}), {0.5f, 0, 0});
    expectNear(middleOf({0, 0, 0}, {0.8f, 0, 2}), {0.2f, 0, 0.5f});
    expectNear(middleOf({0, 0, 0}, {0.8f, 0, -2}), {0.2f, 0, -0.5f});
    expectNear(middleOf({-3, -3, 0}, {3, 3, 0}), {0, 0, 0});
    expectNear(middleOf({0, -1.5f, 0}, {1.5f, 0, 0}), {0.75f, -0.75f, 0});
}

TEST_F(NodeMarkersTest, AreNotMovedAlongASideThatTheSegmentFollows)
{
    const float step = 1.0f / 8388608.0f; // the spacing of numbers above 1
    // rises by 8 spacings, less than a millionth: as good as parallel
    EXPECT_EQ(middleOf({1.0f - 4 * step, -0.5f, 0}, {1.0f + 4 * step, 0.5f, 0}).y, 0.0f);
    // by 16 spacings, more than it: cut in its middle
    EXPECT_NEAR(middleOf({1.0f - 8 * step, -0.5f, 0}, {1.0f + 8 * step, 0.5f, 0}).y, -0.25f, 1e-6f);
}

TEST_F(NodeMarkersTest, OfNodesInTheCamerasOwnPlaneHaveNoneBetween)
{
    glm::mat4 flat(1.0f); // w becomes z + 0.5, and z stays
    flat[2] = {0, 0, 1, 1};
    flat[3] = {0, 0, 0, 0.5f};
    set("projection", flat);
    EXPECT_TRUE(isMarkerBetween({0, 0, 0.25f}, {0.5f, 0, 0.125f}));
    EXPECT_FALSE(isMarkerBetween({0.25f, 0.5f, -0.5f}, {0.5f, 0, 0.125f}));
    EXPECT_FALSE(isMarkerBetween({0.5f, 0, 0.125f}, {0.25f, 0.5f, -0.5f}));
    EXPECT_TRUE(isMarkerBetween({0.25f, 0.5f, -0.49f}, {0.5f, 0, 0.125f}));
}

TEST_F(NodeMarkersTest, OfSinglePointsAreNumberedAlike)
{
    useStage("EditNodes.points.geom");
    feed({{0.5f, 0.25f, -0.5f}, {0, 0, 0}, {-0.5f, 0, 0.125f}});
    EXPECT_EQ(numbers(markers(GL_POINTS)), (std::vector<int>{0, 2, 4}));
    set("pen_width", 7.0f);
    set("first_marker_idx", 20);
    const std::vector<Marker> all = markers(GL_POINTS);
    EXPECT_EQ(numbers(all), (std::vector<int>{20, 22, 24}));
    EXPECT_EQ(all[0].position, glm::vec4(0.5f, 0.25f, -0.5f, 1));
    EXPECT_EQ(all[2].position, glm::vec4(-0.5f, 0, 0.125f, 1));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(all[i].size, 7.0f);
        EXPECT_EQ(all[i].primitive, static_cast<int>(2 * i));
    }
}

// Random segments in eye coordinates, against their visible part found by parameters along the segment.
class RandomNodeMarkersTest : public NodeMarkersTest
{
protected:
    static constexpr double Near = 0.5;
    static constexpr double Far = 10.0;
    static constexpr double Pen = 4.0;
    static constexpr double Tolerance = 3e-4; // of normalised device coordinates: 0.01 pixels

    enum class Between { None, There, Invisible };
    struct Expected
    {
        bool isOpen = false;             ///< too close to a decision for single precision
        bool isSeen[2] = {false, false}; ///< the nodes
        glm::dvec4 clip[2];
        Between between = Between::None;
        Point middle{0.0};
    };
    struct Counts
    {
        int beyond = 0;
        int close = 0;
        int there = 0;
        int crossing = 0; ///< both ends outside, and shorter than the room that others need
        int behind = 0;
        int behindAndClose = 0; ///< behind the near plane, the other end clipped, and no room
        int invisible = 0;
        int open = 0;
    };

    Expected expect(const Point& from, const Point& to)
    {
        Expected result;
        result.clip[0] = glm::dmat4(m_projection) * glm::dvec4(from, 1.0);
        result.clip[1] = glm::dmat4(m_projection) * glm::dvec4(to, 1.0);
        bool isSeen[2] = {true, true};
        for (int side = 0; side < 6; ++side) {
            double beyond[2];
            for (int end = 0; end < 2; ++end) {
                const glm::dvec4& c = result.clip[end];
                beyond[end] = (side % 2 ? c[side / 2] : -c[side / 2]) - c.w;
                result.isOpen |= std::abs(beyond[end]) < 1e-4 || std::abs(c.w) < 1e-4;
                isSeen[end] &= beyond[end] <= 0;
            }
            if (beyond[0] > 0 && beyond[1] > 0) {
                ++m_counts.beyond;
                return result;
            }
        }
        std::copy_n(isSeen, 2, result.isSeen);
        expectBetween(cutAtNear(from, to), cutAtNear(to, from), result);
        return result;
    }
    static Point cutAtNear(const Point& end, const Point& other)
    {
        if (end.z <= -Near) return end;
        return end + (other - end) * ((-Near - end.z) / (other.z - end.z));
    }
    Point toNdc(const Point& eye) const
    {
        const glm::dvec4 clip = glm::dmat4(m_projection) * glm::dvec4(eye, 1.0);
        Point ndc = Point(clip) / clip.w;
        if (eye.z == -Near || std::abs(ndc.z + 1.0) < 1e-6) ndc.z = -1.0;
        return ndc;
    }
    void expectBetween(const Point& from, const Point& to, Expected& result)
    {
        const Point a = toNdc(from);
        const Point b = toNdc(to);
        double first = 0.0;
        double last = 1.0;
        for (int side = 0; side < 6; ++side) {
            const double sign = side % 2 ? 1.0 : -1.0;
            const double atA = sign * a[side / 2] - 1.0;
            const double atB = sign * b[side / 2] - 1.0;
            if (atA > 0 && atB > 0) last = -1.0;
            if (atA > 0 && atB <= 0) first = std::max(first, atA / (atA - atB));
            if (atA <= 0 && atB > 0) last = std::min(last, atA / (atA - atB));
        }
        result.isOpen |= std::abs(last - first) < 1e-3;
        if (first > last) {
            result.between = Between::Invisible;
            ++m_counts.invisible;
            return;
        }
        const double pixels = 32.0 * (last - first) * glm::length(glm::dvec2(b - a));
        const bool areBothOutside = first > 0.0 && last < 1.0;
        const bool isClose = pixels < 4.0 * Pen;
        if (!areBothOutside && std::abs(pixels - 4.0 * Pen) < 1e-2) result.isOpen = true;
        const bool isNone = isClose && !areBothOutside;
        const bool isBehind = result.clip[0].z < -result.clip[0].w || result.clip[1].z < -result.clip[1].w;
        (isNone ? m_counts.close : m_counts.there) += 1;
        m_counts.crossing += areBothOutside && isClose;
        m_counts.behind += isBehind && !isNone;
        m_counts.behindAndClose += isBehind && isNone && (first > 0.0 || last < 1.0);
        result.between = isNone ? Between::None : Between::There;
        result.middle = a + (b - a) * (0.5 * (first + last));
    }

    /// Checks the markers of one segment, beginning at `at`; returns where those of the next begin.
    std::size_t check(const Expected& expected, const std::vector<Marker>& all, std::size_t at, int segment)
    {
        for (std::size_t end = 0; end < 2; ++end) {
            if (!expected.isSeen[end]) continue;
            if (at >= all.size()) {
                ADD_FAILURE() << "markers missing at segment " << segment;
                return at;
            }
            const Marker& marker = all[at++];
            EXPECT_EQ(marker.primitive, 2 * segment + 2 * static_cast<int>(end));
            m_largest = std::max(m_largest, glm::length(glm::dvec4(marker.position) - expected.clip[end]) /
                                                glm::length(expected.clip[end]));
        }
        const bool isThere = at < all.size() && all[at].primitive == 2 * segment + 1;
        EXPECT_EQ(isThere, expected.between == Between::There) << segment;
        if (isThere && expected.between == Between::There)
            m_largest = std::max(
                m_largest, glm::length(glm::dvec4(all[at].position) - glm::dvec4(expected.middle, 1.0)));
        return isThere ? at + 1 : at;
    }

    void checkRandomSegments(const char* what, const glm::mat4& projection, double reach)
    {
        m_projection = projection;
        set("projection", projection);
        set("pen_width", float(Pen));
        std::uniform_real_distribution<float> across(float(-reach), float(reach));
        std::uniform_real_distribution<float> along(-12.0f, 2.0f);
        const auto randomPoint = [&] {
            return glm::vec3(across(m_random), across(m_random), along(m_random));
        };
        std::vector<glm::vec3> points;
        std::vector<Expected> expected;
        while (expected.size() < 20000) {
            const glm::vec3 from = randomPoint();
            const bool isShort = expected.size() % 3 == 0;
            const glm::vec3 to = isShort ? from + 0.2f * randomPoint() : randomPoint();
            const Counts before = m_counts;
            const Expected wanted = expect(Point(from), Point(to));
            if (wanted.isOpen) {
                m_counts = before;
                ++m_counts.open;
                continue;
            }
            expected.push_back(wanted);
            points.insert(points.end(), {from, to});
        }
        feed(points);
        const std::vector<Marker> all = markers();
        std::size_t at = 0;
        for (std::size_t i = 0; i < expected.size() && !HasFailure(); ++i)
            at = check(expected[i], all, at, static_cast<int>(i));
        EXPECT_EQ(at, all.size());
        EXPECT_LT(m_largest, Tolerance);
        std::printf(
            "%s: %d cases (%d beyond one side, %d without room, %d with a marker between, of these %d "
            "short but crossing and %d through the near plane, %d out of sight; %d more left open), "
            "largest difference %.2g, tolerance %.2g\n",
            what, int(expected.size()), m_counts.beyond, m_counts.close, m_counts.there, m_counts.crossing,
            m_counts.behind, m_counts.invisible, m_counts.open, m_largest, Tolerance);
        for (const int count : {m_counts.beyond, m_counts.close, m_counts.there, m_counts.crossing,
                                m_counts.behind, m_counts.behindAndClose, m_counts.invisible})
            EXPECT_GT(count, 20);
        EXPECT_LT(m_counts.open, 1000);
    }

    glm::mat4 m_projection{1.0f};
    std::mt19937 m_random{5};
    Counts m_counts;
    double m_largest = 0.0;
};

TEST_F(RandomNodeMarkersTest, InPerspective)
{
    checkRandomSegments("node markers in perspective", glm::perspective(1.2f, 1.0f, float(Near), float(Far)),
                        8.0);
}

TEST_F(RandomNodeMarkersTest, InParallelProjection)
{
    checkRandomSegments("node markers in parallel projection",
                        glm::ortho(-4.0f, 4.0f, -4.0f, 4.0f, float(Near), float(Far)), 7.0);
}

} // namespace
