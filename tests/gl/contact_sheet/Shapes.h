#pragma once

#include <glm/glm.hpp>

#include <vector>

/// Corners of separate triangles, or points.
struct Shape
{
    std::vector<glm::vec3> points;
    std::vector<glm::vec3> normals;
    std::vector<glm::vec4> colors;
    std::vector<glm::vec2> textureCoords;

    int count() const { return static_cast<int>(points.size()); }
};

/// Shapes that the contact sheet shows, about the origin unless told.
namespace shapes {

/// A box; each side shows the whole texture, the colours are those of the place in the box.
Shape box(const glm::vec3& from, const glm::vec3& to);
/// A ring around the z axis, coloured around it.
Shape torus(float radius, float thickness);
/// The sides of a pyramid on the square from -1 to 1, its top at z = height.
Shape pyramid(float height);
/// All of them in one, in the first one's order.
Shape together(const std::vector<Shape>& parts);
/// The outline of a rail's section, about `size` wide: each side's two ends with their normal.
Shape railSection(float size);

} // namespace shapes
