#include <Viewer3dModule/drawers/ItemRecords.h>

#include <Viewer3dModule/drawables/vertex_attributes.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>

#include <cstddef>
#include <cstring>

namespace {

// Locations in the vertex stage.
constexpr unsigned int modelLocation = 4; // a column each
constexpr unsigned int colorLocation = 8;
constexpr unsigned int itemLocation = 9;
constexpr unsigned int penWidthLocation = 10;
constexpr unsigned int normalMatrixLocation = 11; // a column each
constexpr unsigned int endLocation = 14;

template <class T>
bool isSame(const T& one, const T& other)
{
    return std::memcmp(&one, &other, sizeof(T)) == 0;
}

vertex_attributes::Layout layoutOf(int components, std::size_t stride, std::size_t offset)
{
    return {components, static_cast<int>(stride), offset, 1};
}

} // namespace

std::uint32_t ItemRecord::look(std::int32_t flags, std::int32_t colorMode, bool isLit)
{
    return static_cast<std::uint32_t>(-flags) | static_cast<std::uint32_t>(colorMode) << 2 |
           (isLit ? 1u << 4 : 0u);
}

std::uint32_t ItemRecord::withFlags(std::uint32_t look, std::int32_t flags)
{
    return (look & ~3u) | static_cast<std::uint32_t>(-flags);
}

// --- a value a record
// -----------------------------------------------------------------------------------------------------------

template <class T>
void RecordBuffer<T>::resize(std::size_t count)
{
    m_count = count;
    if (count <= m_values.size()) return;
    std::size_t room = m_values.empty() ? 64 : m_values.size();
    while (room < count)
        room *= 2;
    m_values.resize(room);
    m_isChanged.resize(room);
    m_hasMoved = true;
}

template <class T>
void RecordBuffer<T>::set(std::size_t index, const T& value)
{
    m_values[index] = value;
    if (m_isChanged[index]) return;
    m_isChanged[index] = true;
    m_changed.push_back(index);
}

template <class T>
void RecordBuffer<T>::upload(OpenGLFunctions& gl)
{
    constexpr std::size_t few = 16; // a call costs as much as so many values
    const bool isWhole = m_hasMoved || m_changed.size() * few > size();
    if (isWhole && (m_hasMoved || !m_changed.empty())) m_buffer.upload(gl, m_values, GL_DYNAMIC_DRAW);
    for (const std::size_t index : m_changed) {
        if (!isWhole) m_buffer.replace(gl, index, m_values[index]);
        m_isChanged[index] = false;
    }
    m_changed.clear();
    m_hasMoved = false;
}

// --- all of a record
// -----------------------------------------------------------------------------------------------------------

void ItemRecords::resize(std::size_t count)
{
    m_records.resize(count);
}

void ItemRecords::set(std::size_t index, const ItemRecord& record)
{
    if (isSame(m_records[index], record)) return;
    if (!m_areAllStale && !isSame(m_records[index].model, record.model)) {
        m_staleNormals.push_back(index);
        if (m_staleNormals.size() > m_records.size()) m_areAllStale = true;
    }
    m_records.set(index, record);
}

// Normal matrices belong to a view: what is drawn is the same to the last bit only when they come from the
// same product as those of items that are drawn one by one.
void ItemRecords::upload(OpenGLFunctions& gl, bool normalMatrices, const glm::mat4& view)
{
    m_records.upload(gl);
    if (!normalMatrices) return;
    if (!isSame(view, m_view)) m_areAllStale = true;
    m_view = view;
    const std::size_t firstNew = m_areAllStale ? 0 : m_normalMatrices.size();
    m_normalMatrices.resize(size());
    const auto find = [this](std::size_t index) {
        m_normalMatrices.set(index, Item3dDrawer::normalMatrix(m_view * m_records[index].model));
    };
    for (std::size_t index = firstNew; index < size(); ++index)
        find(index);
    for (const std::size_t index : m_staleNormals)
        if (index < firstNew && index < size()) find(index);
    m_staleNormals.clear();
    m_areAllStale = false;
    m_normalMatrices.upload(gl);
}

void ItemRecords::bind(OpenGLFunctions& gl, bool normalMatrices) const
{
    constexpr std::size_t stride = sizeof(ItemRecord);
    const GlBuffer& records = m_records.buffer();
    for (unsigned int column = 0; column < 4; ++column)
        vertex_attributes::setFloats(gl, modelLocation + column, records,
                                     layoutOf(4, stride, column * sizeof(glm::vec4)));
    vertex_attributes::setFloats(gl, colorLocation, records,
                                 layoutOf(4, stride, offsetof(ItemRecord, color)));
    vertex_attributes::setUnsignedIntegers(gl, itemLocation, records,
                                           layoutOf(4, stride, offsetof(ItemRecord, item)));
    vertex_attributes::setFloats(gl, penWidthLocation, records,
                                 layoutOf(1, stride, offsetof(ItemRecord, penWidth)));
    if (!normalMatrices) return;
    for (unsigned int column = 0; column < 3; ++column)
        vertex_attributes::setFloats(gl, normalMatrixLocation + column, m_normalMatrices.buffer(),
                                     layoutOf(3, sizeof(glm::mat3), column * sizeof(glm::vec3)));
}

void ItemRecords::unbind(OpenGLFunctions& gl)
{
    for (unsigned int location = modelLocation; location < endLocation; ++location)
        vertex_attributes::disable(gl, location);
}
