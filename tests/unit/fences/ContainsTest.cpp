// Every shape against the same question asked in extended precision, far from the origin too.
#include "FenceShapes.h"

#include <Viewer3dModule/fences/SphereFence.h>

#include <algorithm>
#include <limits>

namespace {

using Real = long double;
constexpr Real doubleRounding = std::numeric_limits<double>::epsilon();
constexpr Real floatRounding = std::numeric_limits<float>::epsilon();
constexpr int fences = 200;
constexpr int pointsOfAFence = 5000; // a million points of each shape

struct Point
{
    Real x, y, z;
};

Point mapped(const glm::dmat4& m, const glm::dvec3& p)
{
    const auto row = [&](glm::length_t i) {
        return Real(m[0][i]) * p.x + Real(m[1][i]) * p.y + Real(m[2][i]) * p.z + Real(m[3][i]);
    };
    return {row(0), row(1), row(2)};
}

/// Whether the place is in the polygon, and how far from its nearest edge.
struct Answer
{
    bool inside = false;
    Real distance = std::numeric_limits<Real>::infinity();
};

Answer ask(const std::vector<glm::vec2>& polygon, Real x, Real y)
{
    Answer answer;
    for (std::size_t i = 0; i + 1 < polygon.size(); ++i) {
        const Real ax = polygon[i].x, ay = polygon[i].y;
        const Real dx = polygon[i + 1].x - ax, dy = polygon[i + 1].y - ay;
        if ((ay > y) != (ay + dy > y) && x < ax + dx * ((y - ay) / dy)) answer.inside = !answer.inside;
        const Real length = dx * dx + dy * dy;
        const Real t =
            length > 0 ? std::clamp(((x - ax) * dx + (y - ay) * dy) / length, Real(0), Real(1)) : Real(0);
        const Real offX = x - ax - t * dx, offY = y - ay - t * dy;
        answer.distance = std::min(answer.distance, offX * offX + offY * offY);
    }
    answer.distance = std::sqrt(answer.distance);
    return answer;
}

/// A depth between the ends, a little outside of them, or very near to one of them.
double randomDepth(Dice& dice, double from, double to)
{
    const double length = to - from;
    if (!dice.oneIn(5)) return dice.between(from - 0.05 * length, to + 0.2 * length);
    return (dice.oneIn(2) ? from : to) + dice.between(-1.0, 1.0) * std::pow(10.0, -dice.between(2, 12));
}

/// A place about the polygon, or on one of its edges or very near to it.
glm::dvec2 randomPlace(Dice& dice, const std::vector<glm::vec2>& polygon, double half)
{
    if (!dice.oneIn(4)) return {dice.between(-half, half), dice.between(-half, half)};
    const std::size_t edge = std::size_t(dice.between(0, int(polygon.size()) - 2));
    const glm::dvec2 place =
        glm::mix(glm::dvec2(polygon[edge]), glm::dvec2(polygon[edge + 1]), dice.between(0.0, 1.0));
    const double way = std::pow(10.0, -dice.between(2, 12));
    return place + way * glm::dvec2(dice.between(-1.0, 1.0), dice.between(-1.0, 1.0));
}

/// Counts the answers; one that differs must be within rounding of the border.
class Tally
{
public:
    explicit Tally(const char* shape)
        : m_shape(shape)
    {
    }
    ~Tally()
    {
        std::printf("%s: %d points, %d inside, %d within rounding of the border, %d of these differ, "
                    "%d others differ\n",
                    m_shape, m_points, m_inside, m_close, m_closeAndDifferent, m_different);
        EXPECT_EQ(m_points, fences * pointsOfAFence);
        EXPECT_GT(m_inside, m_points / 10);
        EXPECT_LT(m_inside, m_points - m_points / 10);
        EXPECT_LT(m_close, m_points / 4);
        EXPECT_EQ(m_different, 0);
    }
    void add(bool answer, bool expected, bool isClose)
    {
        ++m_points;
        m_inside += expected;
        m_close += isClose;
        (isClose ? m_closeAndDifferent : m_different) += answer != expected;
    }

private:
    const char* m_shape;
    int m_points = 0, m_inside = 0, m_close = 0, m_closeAndDifferent = 0, m_different = 0;
};

TEST(Contains, OfSpheresIsThatOfExtendedPrecision)
{
    Tally tally("sphere");
    Dice dice(1);
    for (int i = 0; i < fences; ++i) {
        const glm::dvec3 center = dice.oneIn(2) ? farAway + dice.point(-100.0, 100.0) : dice.point(-1.0, 1.0);
        const double radius = std::pow(10.0, dice.between(-2, 4)) * dice.between(0.1, 1.0);
        SphereFence fence;
        fence.setFence(center, radius);
        for (int k = 0; k < pointsOfAFence; ++k) {
            const double way = dice.oneIn(3)
                                   ? 1.0 + dice.between(-1.0, 1.0) * std::pow(10.0, -dice.between(2, 17))
                                   : dice.between(0.0, 1.5);
            const glm::dvec3 point = center + way * radius * dice.direction();
            const Real x = Real(point.x) - center.x, y = Real(point.y) - center.y,
                       z = Real(point.z) - center.z;
            const Real distance = std::sqrt(x * x + y * y + z * z);
            const bool isClose = std::abs(distance - radius) <= 4 * doubleRounding * distance;
            tally.add(fence.contains(point), distance <= radius, isClose);
        }
    }
}

TEST(Contains, OfFrustumsIsThatOfExtendedPrecision)
{
    Tally tally("frustum");
    Dice dice(2);
    for (int i = 0; i < fences; ++i) {
        const bool isFar = dice.oneIn(2);
        const Frame frame = Frame::random(dice, isFar ? farAway : dice.point(-10.0, 10.0));
        const double t = dice.between(0.1, 1.5), zNear = dice.between(0.1, 10.0);
        const double depth = dice.between(1.0, 200.0);
        const bool endless = dice.oneIn(4);
        const Frustum3D fence = frustum(frame, randomRing(dice, dice.between(3, 12), 1.5), zNear,
                                        endless ? 0.0 : zNear + depth, t);
        ASSERT_FALSE(fence.empty());
        for (int k = 0; k < pointsOfAFence; ++k) {
            const double z = randomDepth(dice, zNear, zNear + depth);
            const glm::dvec2 xy = randomPlace(dice, fence.fence(), 1.6);
            const glm::dvec3 point = frame.toWorld(xy.x * z * t, xy.y * z * t, z);
            const Point q = mapped(fence.fromWorldMatrix(), point);
            const Real x = q.x / (q.z * t), y = q.y / (q.z * t);
            const Answer answer = ask(fence.fence(), x, y);
            const bool between = q.z >= zNear && (endless || q.z <= fence.zFar());
            const Real off = 8 * doubleRounding * (isFar ? 5.7e6 : 400.0); // of q, in length units
            const bool isClose = std::abs(q.z - zNear) <= off || std::abs(q.z - fence.zFar()) <= off ||
                                 answer.distance <= floatRounding * (std::abs(x) + std::abs(y)) +
                                                        off * (1 + std::abs(x) + std::abs(y)) / (q.z * t);
            tally.add(fence.contains(point), between && answer.inside, isClose);
        }
    }
}

TEST(Contains, OfPrismsIsThatOfExtendedPrecision)
{
    Tally tally("prism");
    Dice dice(3);
    for (int i = 0; i < fences; ++i) {
        const bool isFar = dice.oneIn(2);
        const Frame frame = Frame::random(dice, isFar ? farAway : dice.point(-10.0, 10.0));
        const double half = dice.between(1.0, 100.0), height = dice.between(1.0, 100.0);
        const bool endless = dice.oneIn(4);
        const Prism3D fence =
            prism(frame, randomRing(dice, dice.between(3, 12), half), endless ? -height : height);
        ASSERT_FALSE(fence.empty());
        const glm::dmat4 toWorld = glm::inverse(fence.matrix());
        for (int k = 0; k < pointsOfAFence; ++k) {
            const glm::dvec2 xy = randomPlace(dice, fence.fence(), 1.6 * half);
            const glm::dvec3 point(toWorld * glm::dvec4(xy, randomDepth(dice, 0.0, height), 1.0));
            const Point q = mapped(fence.matrix(), point);
            const Answer answer = ask(fence.fence(), q.x, q.y);
            const bool between = q.z >= 0 && (endless || q.z <= height);
            const Real off = 8 * doubleRounding * (isFar ? 5.7e6 : 400.0);
            const bool isClose = std::min({std::abs(q.z), std::abs(q.z - height), answer.distance}) <= off;
            tally.add(fence.contains(point), between && answer.inside, isClose);
        }
    }
}

} // namespace
