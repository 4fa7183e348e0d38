#pragma once

#include <Viewer3dModule/shaders/DrawMode.h>

#include <QtGui/QColor>

#include <cstddef>
#include <cstdint>
#include <vector>

/// What an item draws, told once so that a drawer can draw it together with others: stretches of one kind, of
/// its own vertices. Buffers are OpenGL names, not owned; they are read before the next draw of
/// the item.
struct ItemDrawing
{
    enum class Kind {
        Strips,   ///< of lines, each stretch one; a stretch of one vertex is a point where points are drawn
        Points,   ///< one vertex each
        Lines,    ///< two vertices each
        Triangles ///< three vertices each
    };
    /// Of indices where there are any, else of vertices; counted from the item's first one.
    struct Stretch
    {
        std::uint32_t first;
        std::uint32_t count;
        std::uint32_t look = 0; ///< among looks
    };
    /// What the item would set before the draw calls of a stretch.
    struct Look
    {
        QColor color;                             ///< uniform item_color
        float penWidth = 1.0f;                    ///< pixels, uniform pen_width
        std::int32_t colorMode = ColorMode::Item; ///< or Vertices
        bool isLit = true;                        ///< where the view's light is on
    };

    Kind kind = Kind::Strips;
    std::vector<Stretch> stretches; ///< in the order in which they are drawn; none: the item draws nothing
    std::vector<Look> looks;        ///< at least one where there are stretches

    unsigned int positions = 0; ///< three floats a vertex
    unsigned int normals = 0;   ///< three floats a vertex; 0: none
    unsigned int colors = 0;    ///< four bytes a vertex, 0 to 255 for 0 to 1; 0: none
    unsigned int indices = 0;   ///< 32 bits each, counted from the item's first vertex; 0: none
    std::size_t firstVertex = 0;
    std::size_t firstIndex = 0;    ///< the item's own, in the buffer of indices
    std::uint32_t vertexCount = 0; ///< of the item's own, from that one on, in every buffer of vertices
    std::uint32_t indexCount = 0;
};
