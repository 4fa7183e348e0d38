#pragma once

#include <glm/glm.hpp>

#include <cmath>
#include <vector>

/// A swept section worked out on the processor, in doubles and by cross products, for comparison with the
/// shader's.
namespace sweep_reference {

using Vector = glm::dvec3;

inline Vector unit(const Vector& v)
{
    return v / std::sqrt(glm::dot(v, v));
}

/// A section and the path that it follows.
struct Sweep
{
    std::vector<glm::dvec2> section;
    std::vector<glm::dvec2> normals;
    std::vector<Vector> path;
    Vector up{0, 0, 1};
    Vector reservedUp{0, 1, 0};
};

/// The section's corners at a point of the path, by cross products: x to the right of the mean direction, y
/// upwards, lengthened across the joint so that both segments keep their width.
inline std::vector<Vector> ringAt(const Sweep& sweep, std::size_t i)
{
    const std::vector<Vector>& p = sweep.path;
    const Vector in = unit(i > 0 ? p[i] - p[i - 1] : p[1] - p[0]);
    const Vector out = unit(i + 1 < p.size() ? p[i + 1] - p[i] : p[i] - p[i - 1]);
    const Vector tangent = unit(in + out);
    Vector right = glm::cross(tangent, sweep.up);
    if (glm::dot(right, right) < 1e-6) right = glm::cross(tangent, sweep.reservedUp);
    right = unit(right);
    const Vector up = glm::cross(right, tangent);
    const Vector change = out - in;
    std::vector<Vector> ring;
    for (const glm::dvec2& s : sweep.section) {
        Vector arm = s.x * right + s.y * up;
        const double bent = glm::dot(change, change);
        if (bent > 1e-12) {
            const Vector across = change / std::sqrt(bent);
            const double cosine = glm::dot(tangent, in);
            arm += across * glm::dot(arm, across) * (1.0 / cosine - 1.0);
        }
        ring.push_back(p[i] + arm);
    }
    return ring;
}

/// A closed section: points on a circle, the last of them the first.
inline std::vector<glm::dvec2> circle(int points, double radius)
{
    std::vector<glm::dvec2> section;
    for (int i = 0; i < points; ++i) {
        const double angle = 2.0 * std::acos(-1.0) * i / (points - 1);
        section.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
    }
    return section;
}

} // namespace sweep_reference
