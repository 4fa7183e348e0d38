#pragma once

#include <QtGui/QColor>
#include <glm/glm.hpp>

#include <vector>

/// Polylines of 32 vertices, each with a matrix and a colour of its own, spread evenly over the view. The
/// same numbers at every call.
struct LineSet
{
    static constexpr int VerticesPerLine = 32;
    struct Line
    {
        glm::mat4 matrix; ///< a rotation and a translation: line to scene coordinates
        QColor color;     ///< opaque
    };

    explicit LineSet(qint64 count);

    /// The vertices of a line, around its origin.
    const glm::vec3* verticesOf(std::size_t line) const { return &vertices[line * VerticesPerLine]; }
    std::vector<glm::vec3> copyOf(std::size_t line) const
    {
        return {verticesOf(line), verticesOf(line) + VerticesPerLine};
    }

    std::vector<Line> lines;
    std::vector<glm::vec3> vertices; ///< line by line
};
