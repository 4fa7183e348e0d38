#include "Shapes.h"

#include <glm/gtc/constants.hpp>

#include <cmath>

namespace {

glm::vec4 colorOf(float hue)
{
    const auto channel = [hue](float at) {
        return 0.5f + 0.5f * std::cos(glm::two_pi<float>() * (hue - at));
    };
    return {channel(0.0f), channel(1.0f / 3.0f), channel(2.0f / 3.0f), 1.0f};
}

void addTriangle(Shape& shape, const glm::vec3& a, const glm::vec3& b, const glm::vec3& c)
{
    const glm::vec3 normal = glm::normalize(glm::cross(b - a, c - a));
    for (const glm::vec3& corner : {a, b, c}) {
        shape.points.push_back(corner);
        shape.normals.push_back(normal);
        shape.colors.push_back(glm::vec4(0.5f * corner + 0.5f, 1.0f));
        shape.textureCoords.emplace_back(corner);
    }
}

} // namespace

Shape shapes::box(const glm::vec3& from, const glm::vec3& to)
{
    Shape shape;
    const glm::vec2 corners[6] = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}};
    for (int axis = 0; axis < 3; ++axis)
        for (const float side : {0.0f, 1.0f})
            for (const glm::vec2& corner : corners) {
                glm::vec3 share;
                share[axis] = side;
                share[(axis + 1) % 3] = axis == 1 ? corner.y : corner.x;
                share[(axis + 2) % 3] = axis == 1 ? corner.x : corner.y;
                glm::vec3 normal(0.0f);
                normal[axis] = 2.0f * side - 1.0f;
                shape.points.push_back(glm::mix(from, to, share));
                shape.normals.push_back(normal);
                shape.colors.push_back(glm::vec4(share, 1.0f));
                shape.textureCoords.emplace_back(corner.x, 1.0f - corner.y);
            }
    return shape;
}

Shape shapes::torus(float radius, float thickness)
{
    constexpr int around = 36;
    constexpr int across = 18;
    Shape shape;
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < across; ++j)
            for (const auto& [di, dj] : {std::pair(0, 0), {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}}) {
                const float u = static_cast<float>(i + di) / around;
                const float v = static_cast<float>(j + dj) / across;
                const float phi = glm::two_pi<float>() * u;
                const float psi = glm::two_pi<float>() * v;
                const glm::vec3 out(std::cos(phi), std::sin(phi), 0.0f);
                const glm::vec3 normal = std::cos(psi) * out + glm::vec3(0.0f, 0.0f, std::sin(psi));
                shape.points.push_back(radius * out + thickness * normal);
                shape.normals.push_back(normal);
                shape.colors.push_back(colorOf(u));
                shape.textureCoords.emplace_back(6.0f * u, 2.0f * v);
            }
    return shape;
}

Shape shapes::pyramid(float height)
{
    Shape shape;
    const glm::vec3 top(0.0f, 0.0f, height);
    const glm::vec3 corners[4] = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    for (int i = 0; i < 4; ++i)
        addTriangle(shape, corners[i], corners[(i + 1) % 4], top);
    return shape;
}

Shape shapes::together(const std::vector<Shape>& parts)
{
    const auto append = [](auto& to, const auto& from) { to.insert(to.end(), from.begin(), from.end()); };
    Shape sum;
    for (const Shape& part : parts) {
        append(sum.points, part.points);
        append(sum.normals, part.normals);
        append(sum.colors, part.colors);
        append(sum.textureCoords, part.textureCoords);
    }
    return sum;
}

Shape shapes::railSection(float size)
{
    const std::vector<glm::vec2> outline = {{-0.5f, 0.0f}, {0.5f, 0.0f},  {0.5f, 0.15f}, {0.1f, 0.3f},
                                            {0.1f, 0.7f},  {0.3f, 0.8f},  {0.3f, 1.0f},  {-0.3f, 1.0f},
                                            {-0.3f, 0.8f}, {-0.1f, 0.7f}, {-0.1f, 0.3f}, {-0.5f, 0.15f}};
    Shape section;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const glm::vec2 from = size * outline[i];
        const glm::vec2 to = size * outline[(i + 1) % outline.size()];
        const glm::vec2 along = glm::normalize(to - from);
        for (const glm::vec2& end : {from, to}) {
            section.points.emplace_back(end, 0.0f);
            section.normals.emplace_back(along.y, -along.x, 0.0f);
        }
    }
    return section;
}
