#include <Viewer3dModule/drawables/VertexPool.h>

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/SliceAllocator.h>

#include <QtGui/QOpenGLContext>

#include <algorithm>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace vertex_pool {

namespace {

// Vertices: pages begin small and double; what does not fit well into the largest has a page to itself.
constexpr std::uint32_t smallestPage = 2048;
constexpr std::uint32_t largestPage = 1u << 18;

class Pool;

} // namespace

struct Page
{
    Pool* pool;
    std::uint32_t capacity;
    std::uint32_t used = 0;
    SliceAllocator places;
    std::array<GlBuffer, std::tuple_size<Layout>::value> streams;
};

namespace {

class Pool
{
public:
    Pool(const QOpenGLContextGroup* group, const Layout& layout)
        : m_group(group)
        , m_layout(layout)
    {
    }

    const Layout& layout() const { return m_layout; }
    std::size_t bufferCount() const
    {
        const auto streams =
            m_layout.size() -
            static_cast<std::size_t>(std::count(m_layout.begin(), m_layout.end(), std::uint8_t(0)));
        return m_pages.size() * streams;
    }

    std::pair<Page*, SliceAllocator::Slice> take(OpenGLFunctions& gl, std::uint32_t count)
    {
        if (count <= largestPage / 4) {
            // What was taken or given back last is the likeliest to have room.
            for (auto page = m_pages.rbegin(); page != m_pages.rend(); ++page) {
                const SliceAllocator::Slice slice = takeFrom(**page, count);
                if (slice.count != 0) return {page->get(), slice};
            }
        }
        Page& page = addPage(gl, count);
        return {&page, takeFrom(page, count)};
    }

    void giveBack(Page& page, SliceAllocator::Slice slice)
    {
        page.places.giveBack(slice);
        page.used -= slice.count;
        if (page.used == 0) removeEmpty(page);
    }

    /// The group has gone, and the buffers with it.
    void abandon()
    {
        m_group = nullptr;
        for (const auto& page : m_pages)
            for (GlBuffer& stream : page->streams)
                stream.forget();
        const auto isEmpty = [](const std::unique_ptr<Page>& page) { return page->used == 0; };
        m_pages.erase(std::remove_if(m_pages.begin(), m_pages.end(), isEmpty), m_pages.end());
        if (m_pages.empty()) delete this;
    }

private:
    static SliceAllocator::Slice takeFrom(Page& page, std::uint32_t count)
    {
        if (page.capacity - page.used < count) return {};
        const SliceAllocator::Slice slice = page.places.take(count);
        if (slice.first + slice.count > page.capacity) {
            page.places.giveBack(slice);
            return {};
        }
        page.used += count;
        return slice;
    }

    Page& addPage(OpenGLFunctions& gl, std::uint32_t count)
    {
        const std::uint32_t usual = m_pages.empty()
                                        ? smallestPage
                                        : std::clamp(m_pages.back()->capacity * 2, smallestPage, largestPage);
        const bool isAlone = count > largestPage / 4;
        auto page = std::make_unique<Page>();
        page->pool = this;
        page->capacity = isAlone ? count : std::max(usual, count);
        for (std::size_t i = 0; i < m_layout.size(); ++i)
            if (m_layout[i] != 0)
                page->streams[i].reserve(gl, std::size_t(page->capacity) * m_layout[i], GL_DYNAMIC_DRAW);
        const auto place = isAlone ? m_pages.begin() : m_pages.end();
        return **m_pages.insert(place, std::move(page));
    }

    void removeEmpty(const Page& page)
    {
        if (m_group && QOpenGLContextGroup::currentContextGroup() != m_group) return;
        const auto entry = std::find_if(m_pages.begin(), m_pages.end(),
                                        [&page](const auto& other) { return other.get() == &page; });
        m_pages.erase(entry);
        if (!m_group && m_pages.empty()) delete this;
    }

    const QOpenGLContextGroup* m_group; // null when it has gone
    Layout m_layout;
    std::vector<std::unique_ptr<Page>> m_pages; // those of one slice first
};

/// The pools of the groups that there are on this thread.
using Pools = std::map<std::pair<const QOpenGLContextGroup*, Layout>, Pool*>;

Pools& pools()
{
    static thread_local Pools all;
    return all;
}

void abandonPools(const QOpenGLContextGroup* group)
{
    Pools& all = pools();
    for (auto entry = all.begin(); entry != all.end();) {
        if (entry->first.first != group) {
            ++entry;
            continue;
        }
        entry->second->abandon();
        entry = all.erase(entry);
    }
}

Pool& currentPool(const Layout& layout)
{
    QOpenGLContextGroup* group = QOpenGLContextGroup::currentContextGroup();
    Pool*& pool = pools()[{group, layout}];
    if (!pool) {
        pool = new Pool(group, layout);
        QObject::connect(group, &QObject::destroyed, group, [group] { abandonPools(group); });
    }
    return *pool;
}

} // namespace

Slice::Slice(OpenGLFunctions& gl, const Layout& layout, std::size_t count)
{
    if (count == 0) return;
    const auto [page, slice] = currentPool(layout).take(gl, static_cast<std::uint32_t>(count));
    m_page = page;
    m_first = slice.first;
    m_count = slice.count;
}

Slice::Slice(Slice&& other) noexcept
    : m_page(std::exchange(other.m_page, nullptr))
    , m_first(std::exchange(other.m_first, 0))
    , m_count(std::exchange(other.m_count, 0))
{
}

Slice& Slice::operator=(Slice&& other) noexcept
{
    std::swap(m_page, other.m_page);
    std::swap(m_first, other.m_first);
    std::swap(m_count, other.m_count);
    return *this;
}

Slice::~Slice()
{
    if (m_page) m_page->pool->giveBack(*m_page, {m_first, m_count});
}

unsigned int Slice::buffer(std::size_t stream) const
{
    return m_page ? m_page->streams[stream].name() : 0;
}

void Slice::write(OpenGLFunctions& gl, std::size_t stream, std::size_t from, const void* values,
                  std::size_t vertices) const
{
    if (vertices == 0) return;
    const std::size_t stride = m_page->pool->layout()[stream];
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer(stream));
    gl.glBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>((m_first + from) * stride),
                       static_cast<GLsizeiptr>(vertices * stride), values);
}

void Slice::read(OpenGLFunctions& gl, std::size_t stream, std::size_t from, void* values,
                 std::size_t vertices) const
{
    if (vertices == 0) return;
    const std::size_t stride = m_page->pool->layout()[stream];
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer(stream));
    gl.glGetBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>((m_first + from) * stride),
                          static_cast<GLsizeiptr>(vertices * stride), values);
}

std::size_t bufferCount()
{
    std::size_t count = 0;
    const QOpenGLContextGroup* group = QOpenGLContextGroup::currentContextGroup();
    for (const auto& [key, pool] : pools())
        if (key.first == group) count += pool->bufferCount();
    return count;
}

} // namespace vertex_pool
