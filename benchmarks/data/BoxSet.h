#pragma once

#include <QtGui/QColor>
#include <glm/glm.hpp>

#include <array>
#include <cstdint>
#include <vector>

/// Boxes of 12 triangles with a size, a matrix and a colour each, spread evenly over the view. The same
/// numbers at every call.
struct BoxSet
{
    static constexpr std::size_t VertexCount = 24, IndexCount = 36;
    struct Box
    {
        glm::mat4 matrix;   ///< a rotation and a translation: box to scene coordinates
        glm::vec3 halfSize; ///< scene units
        QColor color;       ///< opaque
    };

    explicit BoxSet(qint64 count);

    /// The corners of each face, in box coordinates.
    static std::array<glm::vec3, VertexCount> positionsOf(const Box& box);
    /// A unit vector for each of them; the same for every box.
    static std::array<glm::vec3, VertexCount> normals();
    static std::array<std::uint32_t, IndexCount> indices();

    std::vector<Box> boxes;
};
