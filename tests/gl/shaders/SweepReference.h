#pragma once

#include <glm/glm.hpp>

#include <algorithm>
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

/// The section's place at a point of the path, by cross products: x to the right of the mean direction, y
/// upwards.
struct Place
{
    Vector origin;
    Vector right;
    Vector up;
    Vector across{0.0};   ///< in the plane of the turn, across the mean direction
    double stretch = 1.0; ///< along that direction, so that both segments keep their width
};

/// The direction from one point to another; none where they are the same.
inline Vector direction(const Vector& from, const Vector& to)
{
    return from == to ? Vector(0.0) : unit(to - from);
}

inline Place placeAt(const Sweep& sweep, std::size_t i)
{
    const std::vector<Vector>& p = sweep.path;
    Vector in = i > 0 ? direction(p[i - 1], p[i]) : Vector(0.0);
    Vector out = i + 1 < p.size() ? direction(p[i], p[i + 1]) : Vector(0.0);
    if (in == Vector(0.0)) in = out;
    if (out == Vector(0.0)) out = in;
    const double cosine = std::sqrt(std::max(0.0, (1.0 + glm::dot(in, out)) / 2.0)); // of half the turn
    const bool isBack = cosine < 0.5e-3;
    const Vector tangent = isBack ? in : unit(in + out);
    Place place;
    place.origin = p[i];
    Vector right = glm::cross(tangent, sweep.up);
    if (glm::dot(right, right) < 1e-6 * glm::dot(sweep.up, sweep.up))
        right = glm::cross(tangent, sweep.reservedUp);
    place.right = unit(right);
    place.up = glm::cross(place.right, tangent);
    const Vector change = out - in;
    if (!isBack && glm::dot(change, change) > 1e-12) {
        place.across = unit(change);
        place.stretch = 1.0 / cosine;
    }
    return place;
}

/// A vector of the section's plane at this place, stretched across the joint.
inline Vector placed(const Place& place, const glm::dvec2& v, double stretch)
{
    const Vector arm = v.x * place.right + v.y * place.up;
    return arm + place.across * glm::dot(arm, place.across) * (stretch - 1.0);
}

/// The section's corners at a point of the path. They are not stretched more than four times.
inline std::vector<Vector> ringAt(const Sweep& sweep, std::size_t i)
{
    const Place place = placeAt(sweep, i);
    std::vector<Vector> ring;
    for (const glm::dvec2& s : sweep.section)
        ring.push_back(place.origin + placed(place, s, std::min(place.stretch, 4.0)));
    return ring;
}

/// The normals of a segment's sides at one of its ends: across the segment, as the section has them.
inline std::vector<Vector> normalsAt(const Sweep& sweep, std::size_t i, const Vector& along)
{
    const Place place = placeAt(sweep, i);
    std::vector<Vector> normals;
    for (const glm::dvec2& n : sweep.normals) {
        const Vector arm = placed(place, n, place.stretch);
        normals.push_back(arm - along * glm::dot(arm, along));
    }
    return normals;
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
