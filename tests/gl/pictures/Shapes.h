#pragma once

#include <glm/glm.hpp>

#include <cmath>
#include <random>
#include <vector>

/// Triangles, three corners each.
namespace shapes {

/// A sphere round the origin from quads between meridians and parallels.
inline std::vector<glm::vec3> sphere(double radius, int meridians, int parallels)
{
    constexpr double pi = 3.14159265358979323846;
    const auto at = [=](int column, int row) {
        const double longitude = 2.0 * pi * column / meridians, latitude = pi * (row * 1.0 / parallels - 0.5);
        return glm::vec3(radius * std::cos(latitude) * std::cos(longitude),
                         radius * std::cos(latitude) * std::sin(longitude), radius * std::sin(latitude));
    };
    std::vector<glm::vec3> corners;
    for (int row = 0; row < parallels; ++row)
        for (int column = 0; column < meridians; ++column) {
            const glm::vec3 a = at(column, row), b = at(column + 1, row), c = at(column + 1, row + 1),
                            d = at(column, row + 1);
            corners.insert(corners.end(), {a, b, c, a, c, d});
        }
    return corners;
}

/// A box round the origin by its half extents.
inline std::vector<glm::vec3> box(const glm::vec3& half)
{
    std::vector<glm::vec3> corners;
    for (int axis = 0; axis < 3; ++axis)
        for (const float side : {-1.0f, 1.0f}) {
            const int u = (axis + 1) % 3, v = (axis + 2) % 3;
            const auto at = [&](float s, float t) {
                glm::vec3 point(0.0f);
                point[axis] = side * half[axis];
                point[u] = s * half[u];
                point[v] = t * half[v];
                return point;
            };
            const glm::vec3 a = at(-1, -1), b = at(1, -1), c = at(1, 1), d = at(-1, 1);
            corners.insert(corners.end(), {a, b, c, a, c, d});
        }
    return corners;
}

/// Triangles whose corners lie in a cube round the origin, the same at every call.
inline std::vector<glm::vec3> randomTriangles(int count, float half)
{
    std::mt19937 numbers(20240229);
    const auto next = [&] { // std's distributions differ between libraries
        return half * (static_cast<float>(numbers()) / 2147483648.0f - 1.0f);
    };
    std::vector<glm::vec3> corners;
    for (int i = 0; i < 3 * count; ++i) {
        const float x = next(), y = next(), z = next();
        corners.emplace_back(x, y, z);
    }
    return corners;
}

} // namespace shapes
