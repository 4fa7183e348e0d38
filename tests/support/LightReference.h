#pragma once

#include <glm/glm.hpp>

#include <algorithm>
#include <cmath>

/// The three terms of the light at a point, each to be multiplied by its colour, worked out in doubles.
struct Light
{
    double ambient = 0.3;
    double diffuse = 0.0;
    double specular = 0.0;

    /// The light on a colour that is the same for all terms.
    glm::dvec3 on(const glm::dvec3& color) const { return (ambient + diffuse + specular) * color; }
};

/// The light at a point of a surface, in eye coordinates. The direction leads towards the light.
inline Light lightAt(const glm::dvec3& point, const glm::dvec3& normal, const glm::dvec3& direction)
{
    Light light;
    const double length = std::sqrt(glm::dot(normal, normal));
    if (length == 0.0) return light;
    const glm::dvec3 n = normal / length;
    const glm::dvec3 l = direction / std::sqrt(glm::dot(direction, direction));
    const glm::dvec3 v = -point / std::sqrt(glm::dot(point, point));
    // the light's ray mirrored at the surface
    const glm::dvec3 mirrored = 2.0 * glm::dot(n, l) * n - l;
    light.diffuse = std::fabs(glm::dot(n, l));
    light.specular = 0.25 * std::pow(std::max(glm::dot(v, mirrored), 0.0), 32.0);
    return light;
}
