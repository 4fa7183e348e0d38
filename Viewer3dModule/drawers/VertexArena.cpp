#include <Viewer3dModule/drawers/VertexArena.h>

#include <Viewer3dModule/drawables/ItemDrawing.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>

#include <glm/glm.hpp>

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t leastCapacity = 1 << 16; // bytes

void takePlaces(SliceAllocator& allocator, SliceAllocator::Slice& slice, std::uint32_t count)
{
    if (slice.count == count) return;
    allocator.giveBack(slice);
    slice = allocator.take(count);
}

} // namespace

VertexArena::Layout VertexArena::Layout::of(const ItemDrawing& drawing)
{
    Layout layout;
    layout.hasNormals = drawing.normals != 0;
    layout.hasColors = drawing.colors != 0;
    return layout;
}

VertexArena::VertexArena(Layout layout)
    : m_layout(layout)
{
}

void VertexArena::fill(OpenGLFunctions& gl, Place& place, const ItemDrawing& drawing)
{
    takePlaces(m_vertices, place.vertices, drawing.vertexCount);
    takePlaces(m_indices, place.indices, drawing.indexCount);
    m_positions.copy(gl, sizeof(glm::vec3), drawing.positions, drawing.firstVertex, place.vertices);
    if (m_layout.hasNormals)
        m_normals.copy(gl, sizeof(glm::vec3), drawing.normals, drawing.firstVertex, place.vertices);
    if (m_layout.hasColors)
        m_colors.copy(gl, sizeof(std::uint32_t), drawing.colors, drawing.firstVertex, place.vertices);
    m_indexValues.copy(gl, sizeof(std::uint32_t), drawing.indices, drawing.firstIndex, place.indices);
}

void VertexArena::clear(Place& place)
{
    m_vertices.giveBack(std::exchange(place.vertices, {}));
    m_indices.giveBack(std::exchange(place.indices, {}));
}

void VertexArena::bind(VertexArrayBinding& binding) const
{
    binding.setFloats(VertexAttribute::Coords, 3, m_positions.buffer);
    if (m_layout.hasNormals) binding.setFloats(VertexAttribute::Normal, 3, m_normals.buffer);
    if (m_layout.hasColors) binding.setColors(VertexAttribute::Color, m_colors.buffer);
    if (m_indexValues.buffer.name() != 0) binding.setIndices(m_indexValues.buffer);
}

void VertexArena::Stream::copy(OpenGLFunctions& gl, std::size_t bytesPerValue, unsigned int source,
                               std::size_t sourceFirst, SliceAllocator::Slice slice)
{
    if (slice.count == 0) return;
    const std::size_t offset = slice.first * bytesPerValue;
    const std::size_t size = slice.count * bytesPerValue;
    if (offset + size > capacity) grow(gl, offset + size);
    buffer.copyFrom(gl, source, sourceFirst * bytesPerValue, offset, size);
}

// Doubles, so that many items that come one by one are not copied each time.
void VertexArena::Stream::grow(OpenGLFunctions& gl, std::size_t size)
{
    GlBuffer larger;
    const std::size_t newCapacity = std::max({size, 2 * capacity, leastCapacity});
    larger.reserve(gl, newCapacity, GL_STATIC_DRAW);
    if (capacity != 0) larger.copyFrom(gl, buffer.name(), 0, 0, capacity);
    std::swap(buffer, larger);
    capacity = newCapacity;
}
