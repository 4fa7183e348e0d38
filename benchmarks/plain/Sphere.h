#pragma once

#include <glm/glm.hpp>

#include <algorithm>
#include <array>

/// A ball that holds an item, scene coordinates.
struct Sphere
{
    glm::vec3 center;
    float radius;
};

/// Around the box of the vertices; the matrix does not scale.
inline Sphere sphereOf(const glm::mat4& matrix, const glm::vec3* vertices, int count)
{
    glm::vec3 low = vertices[0], high = low;
    for (int i = 1; i < count; ++i) {
        low = glm::min(low, vertices[i]);
        high = glm::max(high, vertices[i]);
    }
    return {glm::vec3(matrix * glm::vec4(0.5f * (low + high), 1.0f)), 0.5f * glm::length(high - low)};
}

/// The planes through the eye and the sides of a rectangle of normalised device coordinates; what they
/// enclose lies on their positive side, at a distance of scene units.
inline std::array<glm::vec4, 4> sidePlanes(const glm::mat4& viewProjection, const glm::vec2& low,
                                           const glm::vec2& high)
{
    const glm::mat4 rows = glm::transpose(viewProjection);
    std::array<glm::vec4, 4> planes = {rows[0] - low.x * rows[3], high.x * rows[3] - rows[0],
                                       rows[1] - low.y * rows[3], high.y * rows[3] - rows[1]};
    for (glm::vec4& plane : planes)
        plane /= glm::length(glm::vec3(plane));
    return planes;
}

/// Of the sphere's centre from the plane that it lies farthest behind, or is nearest to.
inline float leastDistance(const Sphere& sphere, const std::array<glm::vec4, 4>& planes)
{
    float least = glm::dot(glm::vec3(planes[0]), sphere.center) + planes[0].w;
    for (std::size_t i = 1; i < planes.size(); ++i)
        least = std::min(least, glm::dot(glm::vec3(planes[i]), sphere.center) + planes[i].w);
    return least;
}
