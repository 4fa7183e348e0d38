#pragma once

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/SliceAllocator.h>

#include <vector>

class VertexArrayBinding;
struct ItemDrawing;

/// Copies of many items' vertices and indices in one set of buffers, so that one draw call can have them all.
/// Items whose vertices have the same attributes go into one arena. They are copied on the graphics
/// processor; what an item gives back is used again. Destroyed while a context of the share group is current.
class VertexArena
{
public:
    /// Attributes of vertices, besides positions.
    struct Layout
    {
        bool hasNormals = false;
        bool hasColors = false;

        static Layout of(const ItemDrawing& drawing);
        static constexpr int Count = 4; ///< of different ones
        int index() const { return (hasNormals ? 1 : 0) + (hasColors ? 2 : 0); }
    };
    /// Where an item's are.
    struct Place
    {
        SliceAllocator::Slice vertices;
        SliceAllocator::Slice indices;
    };

    explicit VertexArena(Layout layout);

    /// Copies what the item has, into its old place where that is as large.
    void fill(OpenGLFunctions& gl, Place& place, const ItemDrawing& drawing);
    /// Gives an item's place back.
    void clear(Place& place);
    /// Feeds the attributes, and the indices, which count from their item's first vertex.
    void bind(VertexArrayBinding& binding) const;

private:
    struct Stream
    {
        GlBuffer buffer;
        std::size_t capacity = 0; ///< bytes
        void copy(OpenGLFunctions& gl, std::size_t bytesPerValue, unsigned int source,
                  std::size_t sourceFirst, SliceAllocator::Slice slice);

    private:
        void grow(OpenGLFunctions& gl, std::size_t size);
    };

    Layout m_layout;
    SliceAllocator m_vertices;
    SliceAllocator m_indices;
    Stream m_positions;
    Stream m_normals;
    Stream m_colors;
    Stream m_indexValues;
};
