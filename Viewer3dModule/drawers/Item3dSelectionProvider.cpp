#include <Viewer3dModule/drawers/Item3dSelectionProvider.h>

#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/ShaderStorageBufferObject.h>
#include <Viewer3dModule/shaders/Uniforms.h>
#include <framework/ksp/Log.h>

#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t headerWords = 4;
constexpr std::size_t firstClearedWords = 4096;

std::size_t wordsFor(std::size_t bits)
{
    return (bits + 31) / 32;
}

} // namespace

Item3dSelectionProvider::Item3dSelectionProvider(std::int32_t itemsBufferSize)
    : m_itemsBufferSize(itemsBufferSize)
    , m_ids(1, 0)
    , m_itemsBuffer(std::make_unique<ShaderStorageBufferObject>(8, "items_selection_buffer",
                                                                static_cast<std::uint64_t>(itemsBufferSize)))
    , m_maskBuffer(std::make_unique<ShaderStorageBufferObject>(9, "mask_selection_buffer", 1024))
{
}

Item3dSelectionProvider::~Item3dSelectionProvider() = default;

void Item3dSelectionProvider::setSelectionPolygon(const QPolygonF& polygon)
{
    m_polygon = polygon;
}

std::size_t Item3dSelectionProvider::capacity() const
{
    return static_cast<std::size_t>(m_itemsBufferSize) * 8;
}

// --- a pass
// -----------------------------------------------------------------------------------------------------------

void Item3dSelectionProvider::beginSelection(const PaintContext& context)
{
    m_ids.assign(1, 0);
    m_itemIndexLocation = -1;
    m_clearedWords = 0;
    m_ready = false;
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !makeItemsBuffer(*gl)) return;
    // The bits of the last pass were set by shaders.
    gl->glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
    const SelectionMask area(m_polygon, context.viewportRect.size());
    m_ready = clearUpTo(1) && writeMask(m_inverted ? area.inverted() : area);
}

bool Item3dSelectionProvider::makeItemsBuffer(OpenGLFunctions& gl)
{
    if (m_itemsBuffer->getSSBO() != 0) return true;
    GLint64 most = 0;
    gl.glGetInteger64v(GL_MAX_SHADER_STORAGE_BLOCK_SIZE, &most);
    if (most < m_itemsBufferSize) {
        const auto offered = static_cast<std::int32_t>(most - most % 4);
        ksp::Log::warning(
            QStringLiteral("Selection: the driver gives a storage block %1 bytes instead of %2, so at "
                           "most %3 items take part at once")
                .arg(offered)
                .arg(m_itemsBufferSize)
                .arg(std::int64_t(offered) * 8 - 1));
        m_itemsBufferSize = offered;
        m_itemsBuffer->resize(static_cast<std::uint64_t>(offered));
    }
    return m_itemsBuffer->init();
}

// The mask is painted before it comes here: a painter reads what it paints on, and a mapping for writing
// gives nothing to read.
bool Item3dSelectionProvider::writeMask(const SelectionMask& mask)
{
    m_rect = mask.rect();
    const QSize size = mask.viewport();
    const int words = (size.width() + 31) / 32;
    const std::int32_t header[headerWords] = {mask.hasBits() ? 1 : 0, size.width(), size.height(), words};
    const auto bits = static_cast<std::size_t>(mask.bits().sizeInBytes());
    const std::size_t bytes =
        static_cast<std::size_t>(words) * 4 * static_cast<std::size_t>(std::max(size.height(), 0));
    if (!m_maskBuffer->resize(bytes + sizeof(header))) return false;
    auto* memory = static_cast<unsigned char*>(m_maskBuffer->map(false));
    if (!memory) return false;
    std::memcpy(memory, header, sizeof(header));
    if (bits != 0) std::memcpy(memory + sizeof(header), mask.bits().constBits(), std::min(bits, bytes));
    m_maskBuffer->unmap();
    return true;
}

bool Item3dSelectionProvider::bindProgram(const PaintContext& context)
{
    m_itemIndexLocation = -1;
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !context.program) return false;
    const PassUniforms locations = PassUniforms::of(*context.program);
    const int index = locations.itemIndex, rect = locations.selectionRect;
    if (index < 0 || rect < 0) return false;
    // The origin of the frame buffer's pixels is the lower left corner.
    const double height = context.viewportRect.height();
    uniforms::set(*gl, rect,
                  glm::vec4(glm::dvec4(m_rect.left(), height - m_rect.bottom(), m_rect.right(),
                                       height - m_rect.top())));
    if (!m_ready || !m_itemsBuffer->bind(*context.program) || !m_maskBuffer->bind(*context.program))
        return false;
    m_itemIndexLocation = index;
    return true;
}

void Item3dSelectionProvider::addItemId(LONGID id)
{
    if (m_itemIndexLocation < 0) return;
    const std::size_t index = m_ids.size();
    m_ids.push_back(id);
    useIndices(index, 1);
}

void Item3dSelectionProvider::addItemIds(const std::vector<LONGID>& ids)
{
    if (m_itemIndexLocation < 0) return;
    const std::size_t first = m_ids.size();
    m_ids.insert(m_ids.end(), ids.begin(), ids.end());
    useIndices(first, ids.size());
}

void Item3dSelectionProvider::useIndices(std::size_t first, std::size_t count)
{
    const std::size_t words = std::min(wordsFor(first + count), wordsFor(capacity()));
    if (words > m_clearedWords) clearUpTo(words);
    if (OpenGLFunctions* gl = currentGLFunctions())
        uniforms::set(*gl, m_itemIndexLocation, static_cast<int>(first));
}

// The result is as if the whole buffer had been cleared: no word is used before it has been. What is cleared
// doubles, so that a pass of many items stops the driver a few times only.
bool Item3dSelectionProvider::clearUpTo(std::size_t words)
{
    const std::size_t most = wordsFor(capacity());
    std::size_t target = std::max(m_clearedWords * 2, firstClearedWords);
    while (target < words)
        target *= 2;
    target = std::min(target, most);
    if (!m_itemsBuffer->fill(0u, m_clearedWords * 4, (target - m_clearedWords) * 4)) return false;
    m_clearedWords = target;
    return true;
}

std::vector<LONGID> Item3dSelectionProvider::selectedItems()
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !m_ready) return {};
    const std::size_t count = std::min(m_ids.size(), capacity());
    if (count < m_ids.size())
        ksp::Log::error(
            QStringLiteral("Selection: %1 of %2 items took no part, because the driver's buffer has "
                           "bits for %3 only; select fewer at once")
                .arg(m_ids.size() - count)
                .arg(m_ids.size() - 1)
                .arg(count - 1));
    gl->glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
    const auto* words =
        static_cast<const std::uint32_t*>(m_itemsBuffer->map(true, 0, std::uint64_t(wordsFor(count)) * 4));
    if (!words) return {};
    std::vector<LONGID> selected;
    for (std::size_t index = 0; index < count; ++index) {
        const std::uint32_t word = words[index / 32];
        if (word == 0)
            index |= 31;
        else if (m_ids[index] != 0 && ((word >> (index % 32)) & 1u) != 0)
            selected.push_back(m_ids[index]);
    }
    m_itemsBuffer->unmap();
    return selected;
}
