#pragma once

#include <glm/glm.hpp>

#include <array>
#include <cmath>
#include <optional>
#include <vector>

/// Spheres and cylinders worked out on the processor in doubles, and what is seen of a surface at each pixel,
/// for comparison with the shaders.
namespace surface_reference {

/// A point of a surface, in coordinates of the model or of the eye.
struct Point
{
    glm::dvec3 position{0.0};
    glm::dvec3 normal{0.0};
    glm::dvec2 texture{0.0};
};
using Triangle = std::array<Point, 3>;

constexpr double Pi = 3.14159265358979323846;

/// The point of the unit sphere at these shares of the way around it and from pole to pole.
inline glm::dvec3 onUnitSphere(double u, double v)
{
    const double latitude = Pi * (v - 0.5);
    const double longitude = 2.0 * Pi * u;
    return {std::cos(latitude) * std::cos(longitude), std::cos(latitude) * std::sin(longitude),
            std::sin(latitude)};
}

/// The triangles of one strip, every second one turned round, so that all face as the first one does.
inline std::vector<Triangle> trianglesOf(const std::vector<Point>& strip)
{
    std::vector<Triangle> triangles;
    for (std::size_t i = 0; i + 2 < strip.size(); ++i) {
        const bool turned = i % 2 == 1;
        triangles.push_back({strip[turned ? i + 1 : i], strip[turned ? i : i + 1], strip[i + 2]});
    }
    return triangles;
}

/// The unit cylinder around the z axis as a single strip over its 36 tiles, without a restart.
inline std::vector<Triangle> cylinder()
{
    std::vector<Point> strip;
    glm::dvec2 previous(0.0, 1.0);
    double previousU = 0.0;
    const auto add = [&strip](const glm::dvec2& rim, double z, double u, double v) {
        strip.push_back({{rim, z}, {rim, 0.0}, {u, v}});
    };
    for (int tile = 1; tile <= 36; ++tile) {
        const double u = tile / 36.0;
        const glm::dvec2 rim(std::sin(2.0 * Pi * u), std::cos(2.0 * Pi * u));
        add(previous, -1.0, previousU, 1.0);
        add(rim, -1.0, u, 1.0);
        add(previous, 1.0, previousU, 0.0);
        add(rim, 1.0, u, 0.0);
        previous = rim;
        previousU = u;
    }
    return trianglesOf(strip);
}

/// The normal of a triangle, of length 1; zero when it has no area to speak of.
inline glm::dvec3 facetNormal(const Triangle& t)
{
    const glm::dvec3 normal = glm::cross(t[1].position - t[0].position, t[2].position - t[0].position);
    const double length = glm::length(normal);
    return length > 1e-12 ? normal / length : glm::dvec3(0.0);
}

/// What is seen at a pixel: nothing, one point, or something that cannot be told because the pixel's centre
/// lies at an edge.
struct Seen
{
    bool isCertain = true;
    std::optional<Point> point;
};

/// Looks along -z at triangles whose x and y are normalised device coordinates, at one pixel of a square
/// picture (y down).
inline Seen seenAt(const std::vector<Triangle>& triangles, int x, int y, int size)
{
    constexpr double margin = 0.02; // of a triangle's height
    const glm::dvec2 at((x + 0.5) * 2.0 / size - 1.0, 1.0 - (y + 0.5) * 2.0 / size);
    const auto cross = [](const glm::dvec2& a, const glm::dvec2& b) { return a.x * b.y - a.y * b.x; };
    Seen seen;
    for (const Triangle& t : triangles) {
        const glm::dvec2 a = glm::dvec2(t[0].position);
        const glm::dvec2 ab = glm::dvec2(t[1].position) - a;
        const glm::dvec2 ac = glm::dvec2(t[2].position) - a;
        const double area = cross(ab, ac);
        if (std::fabs(area) < 1e-9) continue;
        const double second = cross(at - a, ac) / area;
        const double third = cross(ab, at - a) / area;
        const double first = 1.0 - second - third;
        const double least = std::min(first, std::min(second, third));
        if (least < -margin) continue;
        if (least < margin) seen.isCertain = false;
        Point p;
        p.position = first * t[0].position + second * t[1].position + third * t[2].position;
        p.normal = first * t[0].normal + second * t[1].normal + third * t[2].normal;
        p.texture = first * t[0].texture + second * t[1].texture + third * t[2].texture;
        if (!seen.point || p.position.z > seen.point->position.z) seen.point = p;
    }
    return seen;
}

} // namespace surface_reference
