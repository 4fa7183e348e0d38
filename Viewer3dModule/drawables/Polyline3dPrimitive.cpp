#include <Viewer3dModule/drawables/Polyline3dPrimitive.h>

#include <Viewer3dModule/drawables/ItemDrawing.h>
#include <Viewer3dModule/drawables/ItemLook.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr vertex_pool::Layout positionsOnly = {sizeof(glm::vec3)};
constexpr float dashLength = 10.0f; // pixels, of dashes and gaps

// Segments at the ends of a strip, as four vertices with adjacency each: the only one of a strip of two
// vertices, the first one and the last one of longer strips. An end that has no neighbour is its own.
const std::vector<std::uint32_t> endIndices = {0, 0, 1, 1, 0, 0, 1, 2, 0, 1, 2, 2};
enum EndSegment { OnlySegment, FirstSegment, LastSegment };

const void* offsetOf(EndSegment segment)
{
    return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(segment) * 4 * sizeof(std::uint32_t));
}

} // namespace

LinePen::LinePen(const QPen& pen)
    : color(uniforms::vectorOf(pen.color()))
    , width(static_cast<float>(pen.widthF()))
    , isDashed(pen.style() != Qt::SolidLine)
{
}

Polyline3dPrimitive::Polyline3dPrimitive(Storage storage)
    : m_storage(storage)
{
}

Polyline3dPrimitive::Polyline3dPrimitive(Polyline3dPrimitive&& other) noexcept
    : m_buffers(std::move(other.m_buffers))
    , m_slice(std::move(other.m_slice))
    , m_vertexCount(std::exchange(other.m_vertexCount, 0))
    , m_storage(other.m_storage)
{
}

Polyline3dPrimitive& Polyline3dPrimitive::operator=(Polyline3dPrimitive&& other) noexcept
{
    Polyline3dPrimitive taken(std::move(other));
    std::swap(m_buffers, taken.m_buffers);
    std::swap(m_slice, taken.m_slice);
    m_vertexCount = taken.m_vertexCount;
    m_storage = taken.m_storage;
    return *this;
}

Polyline3dPrimitive::~Polyline3dPrimitive() = default;

Polyline3dPrimitive::Buffers& Polyline3dPrimitive::buffers()
{
    if (!m_buffers) m_buffers = std::make_unique<Buffers>();
    return *m_buffers;
}

void Polyline3dPrimitive::setVertices(const std::vector<glm::vec3>& vertices)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return;
    if (m_storage == Storage::Own) {
        buffers().vertices.upload(*gl, vertices, GL_DYNAMIC_DRAW);
    } else {
        if (m_slice.count() != vertices.size())
            m_slice = vertex_pool::Slice(*gl, positionsOnly, vertices.size());
        m_slice.write(*gl, 0, 0, vertices.data(), vertices.size());
    }
    m_vertexCount = static_cast<int>(vertices.size());
}

void Polyline3dPrimitive::setVertex(int index, const glm::vec3& vertex)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || index < 0 || index >= m_vertexCount) return;
    const auto place = static_cast<std::size_t>(index);
    if (m_storage == Storage::Own)
        buffers().vertices.replace(*gl, place, vertex);
    else
        m_slice.write(*gl, 0, place, &vertex, 1);
}

std::vector<glm::vec3> Polyline3dPrimitive::getVertices()
{
    if (m_storage == Storage::Own) return Drawable3dPrimitive::getVertices();
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return {};
    std::vector<glm::vec3> vertices(m_slice.count());
    m_slice.read(*gl, 0, 0, vertices.data(), vertices.size());
    return vertices;
}

glm::vec3 Polyline3dPrimitive::getVertex(int index)
{
    if (m_storage == Storage::Own) return Drawable3dPrimitive::getVertex(index);
    glm::vec3 vertex(std::numeric_limits<float>::quiet_NaN());
    OpenGLFunctions* gl = getGLFunctions();
    if (gl && index >= 0 && index < m_vertexCount)
        m_slice.read(*gl, 0, static_cast<std::size_t>(index), &vertex, 1);
    return vertex;
}

unsigned int Polyline3dPrimitive::buffer() const
{
    return m_storage == Storage::Own ? getVBO() : m_slice.buffer(0);
}

// The number that the first vertex has in draw calls. Slices of one buffer are told apart by it alone, so
// that the attribute stays as it is from one to the next; but not for programs that ask for the number.
int Polyline3dPrimitive::bind(VertexArrayBinding& binding, const PaintContext& context) const
{
    const std::size_t first = m_slice.first();
    const bool countsFromZero = first == 0 || Item3dDrawer::numbersVertices(context);
    binding.setFloats(VertexAttribute::Coords, 3, buffer(), countsFromZero ? first * sizeof(glm::vec3) : 0);
    const bool isTriangles = (context.primitives & PrimitiveBit::Lines) == 0; // see drawStrip
    binding.ready(isTriangles);
    return countsFromZero ? 0 : static_cast<int>(first);
}

void Polyline3dPrimitive::setPen(const PaintContext& context, const QPen& pen)
{
    setPen(context, LinePen(pen));
}

void Polyline3dPrimitive::setPen(const PaintContext& context, const LinePen& pen)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || !context.program) return;
    ItemLook look(*gl, context);
    look.setColor(pen.color);
    look.setPenWidth(pen.width);
    if (look.locations().dashSize < 0) return;
    look.setDashSize(pen.isDashed ? dashLength : 0.0f);
    if (!pen.isDashed) return;
    uniforms::set(*gl, look.locations().gapSize, dashLength);
    uniforms::set(*gl, look.locations().resolution,
                  glm::vec2(context.viewportRect.width(), context.viewportRect.height()));
}

void Polyline3dPrimitive::resetPen(const PaintContext& context)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (gl && context.program) ItemLook(*gl, context).setDashSize(0.0f);
}

void Polyline3dPrimitive::draw(const PaintContext& context, int instances)
{
    drawRange(context, 0, m_vertexCount, instances);
}

Polyline3dPrimitive::Range Polyline3dPrimitive::clamped(std::int64_t first, std::int64_t count) const
{
    const std::int64_t begin = std::max<std::int64_t>(first, 0);
    const std::int64_t end = std::min<std::int64_t>(first + count, m_vertexCount);
    if (end <= begin) return {0, 0};
    return {static_cast<int>(begin), static_cast<int>(end - begin)};
}

void Polyline3dPrimitive::drawRange(const PaintContext& context, int first, int count, int instances)
{
    OpenGLFunctions* gl = getGLFunctions();
    const Range range = clamped(first, count);
    if (!gl || range.count == 0) return;
    VertexArrayBinding binding(*gl, context);
    const int base = bind(binding, context);
    drawStrip(binding, context.primitives, {base + range.start, range.count}, instances);
}

void Polyline3dPrimitive::drawStrips(const PaintContext& context, const std::vector<int>& counts)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || m_vertexCount == 0 || counts.empty()) return;
    VertexArrayBinding binding(*gl, context);
    const int base = bind(binding, context);
    std::int64_t first = 0;
    for (const int count : counts) {
        const Range range = clamped(first, count);
        drawStrip(binding, context.primitives, {base + range.start, range.count}, 1);
        first += count;
    }
}

void Polyline3dPrimitive::drawStrip(VertexArrayBinding& binding, std::int32_t primitives, Range range,
                                    int instances)
{
    if (range.count == 0) return;
    const auto drawAs = [&](GLenum mode) {
        binding.gl().glDrawArraysInstanced(mode, range.start, range.count, instances);
    };
    const bool withAdjacency = (primitives & PrimitiveBit::Adjacency) != 0;
    if (range.count == 1 && (primitives & PrimitiveBit::Points) != 0)
        drawAs(GL_POINTS);
    else if ((primitives & PrimitiveBit::Lines) != 0 && withAdjacency)
        drawWithAdjacency(binding, range, instances);
    else if ((primitives & PrimitiveBit::Lines) != 0)
        drawAs(GL_LINE_STRIP);
    else if ((primitives & PrimitiveBit::Triangles) != 0 && !withAdjacency)
        drawAs(GL_TRIANGLE_STRIP);
}

// To a strip with adjacency its first and its last segment are neighbours only; these two are drawn by
// indices.
void Polyline3dPrimitive::drawWithAdjacency(VertexArrayBinding& binding, Range range, int instances)
{
    if (range.count < 2) return;
    OpenGLFunctions& gl = binding.gl();
    GlBuffer& indices = buffers().endIndices;
    if (indices.name() == 0) indices.upload(gl, endIndices, GL_STATIC_DRAW);
    binding.setIndices(indices);
    const auto drawEnd = [&gl, instances](EndSegment segment, int vertex) {
        gl.glDrawElementsInstancedBaseVertex(GL_LINES_ADJACENCY, 4, GL_UNSIGNED_INT, offsetOf(segment),
                                             instances, vertex);
    };
    if (range.count == 2) {
        drawEnd(OnlySegment, range.start);
        return;
    }
    drawEnd(FirstSegment, range.start);
    if (range.count > 3)
        gl.glDrawArraysInstanced(GL_LINE_STRIP_ADJACENCY, range.start, range.count, instances);
    drawEnd(LastSegment, range.start + range.count - 3);
}

void Polyline3dPrimitive::describe(ItemDrawing& drawing, const QPen& pen) const
{
    describeStrips(drawing, pen, {m_vertexCount});
}

void Polyline3dPrimitive::describeStrips(ItemDrawing& drawing, const QPen& pen,
                                         const std::vector<int>& counts) const
{
    drawing.kind = ItemDrawing::Kind::Strips;
    drawing.positions = buffer();
    drawing.firstVertex = m_slice.first();
    drawing.vertexCount = static_cast<std::uint32_t>(m_vertexCount);
    ItemDrawing::Look look;
    look.color = pen.color();
    look.penWidth = static_cast<float>(pen.widthF());
    drawing.looks.push_back(look);
    std::int64_t first = 0;
    for (const int count : counts) {
        const Range range = clamped(first, count);
        first += count;
        if (range.count != 0)
            drawing.stretches.push_back(
                {static_cast<std::uint32_t>(range.start), static_cast<std::uint32_t>(range.count)});
    }
}

Drawable3dPrimitive::GeometryInfo Polyline3dPrimitive::getGeometryInfo()
{
    GeometryInfo info;
    if (m_vertexCount == 1)
        info.pointCount = 1;
    else if (m_vertexCount > 1)
        info.lineCount = static_cast<std::uint32_t>(m_vertexCount - 1);
    return info;
}
