#pragma once

#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/Prism3D.h>
#include <Viewer3dModule/fences/SphereFence.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Random numbers that are the same in every run.
class Dice
{
public:
    explicit Dice(unsigned seed)
        : m_engine(seed)
    {
    }
    double between(double from, double to)
    {
        return std::uniform_real_distribution<double>(from, to)(m_engine);
    }
    int between(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_engine); }
    bool oneIn(int count) { return between(1, count) == 1; }
    glm::dvec3 point(double from, double to)
    {
        const double x = between(from, to), y = between(from, to);
        return {x, y, between(from, to)};
    }
    /// Of unit length, all directions alike.
    glm::dvec3 direction()
    {
        const double z = between(-1.0, 1.0), a = between(-3.14159265358979, 3.14159265358979);
        const double r = std::sqrt(1.0 - z * z);
        return {r * std::cos(a), r * std::sin(a), z};
    }

private:
    std::mt19937 m_engine;
};

/// A right-angled frame in the world: where it stands and its axes.
struct Frame
{
    glm::dvec3 eye{0.0};
    glm::dvec3 right{1.0, 0.0, 0.0};
    glm::dvec3 up{0.0, 1.0, 0.0};
    glm::dvec3 look{0.0, 0.0, 1.0};

    static Frame random(Dice& dice, const glm::dvec3& eye)
    {
        Frame frame;
        frame.eye = eye;
        frame.look = dice.direction();
        do
            frame.right = glm::cross(frame.look, dice.direction());
        while (glm::length(frame.right) < 0.1);
        frame.right = glm::normalize(frame.right);
        frame.up = glm::cross(frame.look, frame.right);
        return frame;
    }
    glm::dvec3 toWorld(double x, double y, double z) const { return eye + x * right + y * up + z * look; }
    glm::dmat4 fromWorld() const
    {
        const glm::dvec3 t(-glm::dot(right, eye), -glm::dot(up, eye), -glm::dot(look, eye));
        return {{right.x, up.x, look.x, 0.0},
                {right.y, up.y, look.y, 0.0},
                {right.z, up.z, look.z, 0.0},
                {t, 1.0}};
    }
};

using Ring = std::vector<glm::dvec2>;

inline Ring closed(Ring ring)
{
    ring.push_back(ring.front());
    return ring;
}

/// A closed square about a point, counter-clockwise from its lower left.
inline Ring square(double half, const glm::dvec2& at = glm::dvec2(0.0))
{
    return closed({at + glm::dvec2(-half, -half), at + glm::dvec2(half, -half), at + glm::dvec2(half, half),
                   at + glm::dvec2(-half, half)});
}

/// A closed polygon of random points: concave and self-crossing as a rule.
inline Ring randomRing(Dice& dice, int corners, double half)
{
    Ring ring;
    for (int i = 0; i < corners; ++i) {
        const double x = dice.between(-half, half);
        ring.emplace_back(x, dice.between(-half, half));
    }
    return closed(ring);
}

/// The frustum of a polygon on the screen, handed over as world points at the depth.
inline Frustum3D frustum(const Frame& frame, const Ring& ring, double zNear, double zFar, double tanHalfFovy,
                         double depth = 1.0)
{
    std::vector<glm::dvec3> points;
    for (const glm::dvec2& xy : ring)
        points.push_back(frame.toWorld(xy.x * depth * tanHalfFovy, xy.y * depth * tanHalfFovy, depth));
    Frustum3D fence;
    fence.setFence(frame.eye, frame.look, tanHalfFovy, zNear, zFar, points, frame.fromWorld());
    return fence;
}

/// The prism over a polygon in the frame's plane, along its look.
inline Prism3D prism(const Frame& frame, const Ring& ring, double height)
{
    std::vector<glm::dvec3> points;
    for (const glm::dvec2& xy : ring)
        points.push_back(frame.toWorld(xy.x, xy.y, 0.0));
    Prism3D fence;
    fence.setFence(frame.eye, frame.look, 0.0, 0.0, height, points);
    return fence;
}

inline void expectNear(const glm::dvec3& actual, const glm::dvec3& expected, double tolerance)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

/// Where measurements are given in geodetic coordinates, such numbers are usual.
const glm::dvec3 farAway(2.7e6, 5.4e5, 4.9e6);

inline SphereFence sphere(const glm::dvec3& center, double radius)
{
    SphereFence fence;
    fence.setFence(center, radius);
    return fence;
}
