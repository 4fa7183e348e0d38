#pragma once

#include <Viewer3dModule/drawables/GlBuffer.h>

#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

/// What an item has of its own in a draw call of many, as the vertex stage reads it: see common.vertex.glsl
/// and DrawModes.glsl.
struct ItemRecord
{
    glm::mat4 model = glm::mat4(1.0f); ///< item to scene coordinates
    glm::vec4 color = glm::vec4(0.0f);
    glm::uvec4 item = glm::uvec4(0u); ///< look(), the item's index in the registry, its id
    float penWidth = 1.0f;            ///< pixels

    /// @param flags      see ItemFlag
    /// @param colorMode  see ColorMode
    /// @param isLit      where the view's light is on
    static std::uint32_t look(std::int32_t flags, std::int32_t colorMode, bool isLit);
    /// The same look with other flags.
    static std::uint32_t withFlags(std::uint32_t look, std::int32_t flags);
};
static_assert(sizeof(ItemRecord) == 100, "packed, as attributes are read");

/// One value a record in a buffer. What changes is uploaded before the next draw: few values one by one, many
/// all together.
template <class T>
class RecordBuffer
{
public:
    /// New values are those that were there before, else arbitrary.
    void resize(std::size_t count);
    std::size_t size() const { return m_count; }
    const T& operator[](std::size_t index) const { return m_values[index]; }
    void set(std::size_t index, const T& value);
    void upload(OpenGLFunctions& gl);
    const GlBuffer& buffer() const { return m_buffer; }

private:
    std::size_t m_count = 0;
    std::vector<T> m_values; // as many as there is room for, as in the buffer
    std::vector<bool> m_isChanged;
    std::vector<std::size_t> m_changed;
    bool m_hasMoved = false; // all values have to go to a buffer of another size
    GlBuffer m_buffer;
};

/// The records of a drawer's items, one or more each, as instance attributes: a draw call that begins with
/// instance n has record n. Destroyed while a context of the share group is current.
class ItemRecords
{
public:
    void resize(std::size_t count);
    std::size_t size() const { return m_records.size(); }
    const ItemRecord& operator[](std::size_t index) const { return m_records[index]; }
    /// Nothing where the record has not changed.
    void set(std::size_t index, const ItemRecord& record);
    /// Brings all that changed to the graphics processor.
    /// @param normalMatrices  whether the program reads them; they are those of this view
    void upload(OpenGLFunctions& gl, bool normalMatrices, const glm::mat4& view);
    /// Feeds the attributes of the bound vertex array.
    void bind(OpenGLFunctions& gl, bool normalMatrices) const;
    /// Takes them off it.
    static void unbind(OpenGLFunctions& gl);

private:
    RecordBuffer<ItemRecord> m_records;
    RecordBuffer<glm::mat3> m_normalMatrices;
    std::vector<std::size_t> m_staleNormals; // records whose normal matrix is not found yet
    bool m_areAllStale = true;
    glm::mat4 m_view = glm::mat4(1.0f); // of the normal matrices
};
