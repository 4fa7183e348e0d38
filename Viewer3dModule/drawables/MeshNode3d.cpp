#include <Viewer3dModule/drawables/MeshNode3d.h>

#include <Viewer3dModule/drawables/GlTexture.h>
#include <Viewer3dModule/drawables/ItemDrawing.h>
#include <Viewer3dModule/drawables/ItemLook.h>
#include <Viewer3dModule/drawables/MeshNormals.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawables/VertexPool.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <framework/ksp/Log.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

const QColor defaultColor(200, 200, 200);
constexpr float lineWidth = 1.0f; // pixels

// A program for large surfaces spares a triangle 5 to 10 ns, and takes 5 us more for another look.
constexpr std::size_t leastTrianglesOfLargePart = 10000;

struct Kind
{
    std::uint32_t verticesPerPrimitive;
    std::int32_t bit;
    GLenum mode;
};

Kind kindOf(MeshData::Part::Kind kind)
{
    switch (kind) {
    case MeshData::Part::Points:
        return {1, PrimitiveBit::Points, GL_POINTS};
    case MeshData::Part::Lines:
        return {2, PrimitiveBit::Lines, GL_LINES};
    default:
        return {3, PrimitiveBit::Triangles, GL_TRIANGLES};
    }
}

ItemDrawing::Kind tellingKind(MeshData::Part::Kind kind)
{
    switch (kind) {
    case MeshData::Part::Points:
        return ItemDrawing::Kind::Points;
    case MeshData::Part::Lines:
        return ItemDrawing::Kind::Lines;
    default:
        return ItemDrawing::Kind::Triangles;
    }
}

bool fits(const MeshData& data, const MeshData::Part& part)
{
    if (part.firstIndex > data.indices.size() || part.indexCount > data.indices.size() - part.firstIndex ||
        part.indexCount > static_cast<std::uint32_t>(std::numeric_limits<int>::max()))
        return false;
    const auto first = data.indices.begin() + part.firstIndex;
    return std::all_of(first, first + part.indexCount,
                       [&data](std::uint32_t index) { return index < data.positions.size(); });
}

// What reaches OpenGL never points outside its arrays, whatever made the data.
void dropWhatDoesNotFit(MeshData& data)
{
    const auto dropUnlessComplete = [&data](auto& values) {
        if (values.size() != data.positions.size()) values = {};
    };
    dropUnlessComplete(data.normals);
    dropUnlessComplete(data.colors);
    dropUnlessComplete(data.texCoords);
    const auto misfits = std::remove_if(data.parts.begin(), data.parts.end(),
                                        [&data](const MeshData::Part& part) { return !fits(data, part); });
    if (misfits != data.parts.end())
        ksp::Log::error(QStringLiteral("mesh \"%1\": %2 parts with indices out of range are left out")
                            .arg(data.name)
                            .arg(data.parts.end() - misfits));
    data.parts.erase(misfits, data.parts.end());
    for (MeshData::Part& part : data.parts)
        part.indexCount -= part.indexCount % kindOf(part.kind).verticesPerPrimitive;
    data.parts.erase(std::remove_if(data.parts.begin(), data.parts.end(),
                                    [](const MeshData::Part& part) { return part.indexCount == 0; }),
                     data.parts.end());
}

gmx::BoundingBox boundsOf(const MeshData& data)
{
    gmx::BoundingBox bounds;
    for (const glm::vec3& position : data.positions)
        bounds.unite(data.origin + glm::dvec3(position));
    return bounds;
}

bool hasClearBorder(const MeshData& data, std::size_t image)
{
    return image < data.wraps.size() && data.wraps[image].mode == ImageWrap::Border &&
           data.wraps[image].border.alpha() < 255;
}

bool hasClearImage(const MeshData& data, const MeshData::Part& part)
{
    const auto image = static_cast<std::size_t>(part.image);
    const bool hasImage = !data.texCoords.empty() && part.image >= 0 && image < data.images.size() &&
                          !data.images[image].isNull();
    return hasImage && (data.images[image].hasAlphaChannel() || hasClearBorder(data, image));
}

// The least alpha of all colours, whatever of them a program shows: an image that the driver does not take
// leaves the others to be seen. 0 where an image has any but 1.
double leastAlphaOf(const MeshData& data)
{
    double least = 1.0;
    for (const std::uint32_t& color : data.colors) // bytes red, green, blue, alpha in memory order
        least = std::min(least, reinterpret_cast<const unsigned char*>(&color)[3] / 255.0);
    for (const MeshData::Part& part : data.parts) {
        if (part.color.isValid()) least = std::min(least, double(part.color.alphaF()));
        if (hasClearImage(data, part)) least = 0.0;
    }
    return least;
}

Drawable3dPrimitive::GeometryInfo geometryInfoOf(const MeshData& data)
{
    Drawable3dPrimitive::GeometryInfo info;
    for (const MeshData::Part& part : data.parts) {
        const std::uint32_t count = part.indexCount / kindOf(part.kind).verticesPerPrimitive;
        if (part.kind == MeshData::Part::Points)
            info.pointCount += count;
        else if (part.kind == MeshData::Part::Lines)
            info.lineCount += count;
        else
            info.triangleCount += count;
    }
    return info;
}

// Whether the parts' indices only count vertices in their order, as those of points mostly do: then they are
// drawn without indices, and firstIndex of a part becomes its first vertex.
bool dropCountingIndices(MeshData& data)
{
    const bool onlyCount = std::all_of(data.parts.begin(), data.parts.end(), [&](const MeshData::Part& part) {
        for (std::uint32_t i = 1; i < part.indexCount; ++i)
            if (data.indices[part.firstIndex + i] != data.indices[part.firstIndex] + i) return false;
        return true;
    });
    if (!onlyCount) return false;
    for (MeshData::Part& part : data.parts)
        part.firstIndex = data.indices[part.firstIndex];
    data.indices = std::vector<std::uint32_t>();
    return true;
}

bool hasLargePartsOnly(const MeshData& data, const Drawable3dPrimitive::GeometryInfo& info)
{
    return !data.parts.empty() && info.pointCount == 0 && info.lineCount == 0 &&
           info.triangleCount / data.parts.size() >= leastTrianglesOfLargePart;
}

enum Stream { Positions, Normals, Colors, TexCoords };
constexpr vertex_pool::Layout indicesOnly = {sizeof(std::uint32_t)};

vertex_pool::Layout layoutOf(const MeshData& data)
{
    vertex_pool::Layout layout = {sizeof(glm::vec3)};
    if (!data.normals.empty()) layout[Normals] = sizeof(glm::vec3);
    if (!data.colors.empty()) layout[Colors] = sizeof(std::uint32_t);
    if (!data.texCoords.empty()) layout[TexCoords] = sizeof(glm::vec2);
    return layout;
}

// Uploads the values, if there are any, and frees their memory.
template <class T>
void moveTo(const vertex_pool::Slice& slice, std::size_t stream, OpenGLFunctions& gl, std::vector<T>& values)
{
    slice.write(gl, stream, 0, values.data(), values.size());
    values = std::vector<T>();
}

// The look of parts, each uniform set only where it changes: some drivers pay dearly for a change. At the end
// they are as every item leaves them.
class PartLook
{
public:
    PartLook(OpenGLFunctions& gl, const PaintContext& context)
        : m_drawer(context.drawer)
        , m_look(gl, context)
    {
        m_look.setPlainTexture();
        m_look.setMaterialMode(0);
        if (m_drawer) m_drawer->setShaderLightMode(true);
    }
    ~PartLook() { setColorMode(ColorMode::Item); }
    PartLook(const PartLook&) = delete;
    PartLook& operator=(const PartLook&) = delete;

    void setColorMode(std::int32_t mode)
    {
        if (mode != m_colorMode) m_look.setColorMode(mode);
        m_colorMode = mode;
    }
    void setColor(const QColor& color) { m_look.setColor(color); }
    void setPenWidth(float width) { m_look.setPenWidth(width); }
    void setLit(bool lit)
    {
        if (m_drawer && m_lit != lit) m_drawer->setShaderLightMode(lit);
        m_lit = lit;
    }

private:
    Item3dDrawer* m_drawer;
    ItemLook m_look;
    std::int32_t m_colorMode = ColorMode::Item;
    bool m_lit = true;
};

} // namespace

struct MeshNode3d::Private
{
    explicit Private(MeshData meshData);
    void upload(OpenGLFunctions& gl);
    int bindAttributes(VertexArrayBinding& binding, bool countsFromZero) const;
    void drawPart(const MeshData::Part& part, OpenGLFunctions& gl, PartLook& look, int instances,
                  int firstVertex) const;
    unsigned int textureOf(const MeshData::Part& part) const;
    bool canBeTold() const;
    ItemDrawing::Look lookOf(const MeshData::Part& part) const;

    // What a draw reads, together: many meshes are drawn one after the other, and each is somewhere else.
    vertex_pool::Slice vertices;
    vertex_pool::Slice indices;
    vertex_pool::Layout layout = {};
    bool isUploaded = false;
    bool isIndexed = true;
    bool isSolid = false;
    bool isOpaque = false;
    bool isLarge = false;
    std::vector<MeshData::Part> parts;

    std::vector<GlTexture> textures; // one an image, without a name where the image is null
    MeshData data;                   // its parts are above, its arrays and images empty after the upload
    std::size_t vertexCount = 0;     // without the copies for normals, which come after them
    std::size_t totalCount = 0;      // with them
    std::size_t indexCount = 0;
    gmx::BoundingBox bounds;
    Drawable3dPrimitive::GeometryInfo info;
};

MeshNode3d::Private::Private(MeshData meshData)
    : data(std::move(meshData))
{
    dropWhatDoesNotFit(data);
    bounds = boundsOf(data);
    vertexCount = data.positions.size();
    completeNormals(data);
    totalCount = data.positions.size();
    isIndexed = !dropCountingIndices(data);
    indexCount = data.indices.size();
    layout = layoutOf(data);
    info = geometryInfoOf(data);
    const double leastAlpha = leastAlphaOf(data);
    isSolid = leastAlpha > 0.0;
    isOpaque = leastAlpha >= 1.0;
    isLarge = hasLargePartsOnly(data, info);
    parts = std::move(data.parts);
}

void MeshNode3d::Private::upload(OpenGLFunctions& gl)
{
    isUploaded = true;
    vertices = vertex_pool::Slice(gl, layout, totalCount);
    indices = vertex_pool::Slice(gl, indicesOnly, indexCount);
    moveTo(vertices, Positions, gl, data.positions);
    moveTo(vertices, Normals, gl, data.normals);
    moveTo(vertices, Colors, gl, data.colors);
    moveTo(vertices, TexCoords, gl, data.texCoords);
    moveTo(indices, 0, gl, data.indices);
    for (std::size_t i = 0; i < data.images.size(); ++i) {
        textures.emplace_back().upload(gl, data.images[i]);
        if (i < data.wraps.size()) textures.back().setWrap(gl, data.wraps[i]);
        data.images[i] = QImage();
    }
    data.images.clear();
}

// Returns the number that the first vertex has in draw calls, see Polyline3dPrimitive::bind.
int MeshNode3d::Private::bindAttributes(VertexArrayBinding& binding, bool countsFromZero) const
{
    const auto offset = [&](Stream stream) {
        return countsFromZero ? std::size_t(vertices.first()) * layout[stream] : 0;
    };
    binding.setFloats(VertexAttribute::Coords, 3, vertices.buffer(Positions), offset(Positions));
    if (layout[Normals] != 0)
        binding.setFloats(VertexAttribute::Normal, 3, vertices.buffer(Normals), offset(Normals));
    if (layout[Colors] != 0)
        binding.setColors(VertexAttribute::Color, vertices.buffer(Colors), offset(Colors));
    if (layout[TexCoords] != 0)
        binding.setFloats(VertexAttribute::TexCoords, 2, vertices.buffer(TexCoords), offset(TexCoords));
    if (isIndexed) binding.setIndices(indices.buffer(0));
    binding.ready();
    return countsFromZero ? 0 : static_cast<int>(vertices.first());
}

// 0 for a part that shows none.
unsigned int MeshNode3d::Private::textureOf(const MeshData::Part& part) const
{
    if (layout[TexCoords] == 0 || part.image < 0 || static_cast<std::size_t>(part.image) >= textures.size())
        return 0;
    return textures[static_cast<std::size_t>(part.image)].name();
}

void MeshNode3d::Private::drawPart(const MeshData::Part& part, OpenGLFunctions& gl, PartLook& look,
                                   int instances, int firstVertex) const
{
    const unsigned int texture = textureOf(part);
    look.setColorMode(texture != 0          ? ColorMode::Texture
                      : layout[Colors] != 0 ? ColorMode::Vertices
                                            : ColorMode::Item);
    look.setColor(part.color.isValid() ? part.color : defaultColor);
    look.setLit(part.kind == MeshData::Part::Triangles);
    if (part.kind != MeshData::Part::Triangles)
        look.setPenWidth(part.kind == MeshData::Part::Points ? part.pointSize : lineWidth);
    if (texture != 0) gl.glBindTexture(GL_TEXTURE_2D, texture);
    const auto mode = kindOf(part.kind).mode;
    const auto count = static_cast<GLsizei>(part.indexCount);
    const std::uintptr_t firstIndex = std::uintptr_t(indices.first()) + part.firstIndex;
    if (isIndexed)
        gl.glDrawElementsInstancedBaseVertex(
            mode, count, GL_UNSIGNED_INT, reinterpret_cast<const void*>(firstIndex * sizeof(std::uint32_t)),
            instances, firstVertex);
    else
        gl.glDrawArraysInstanced(mode, firstVertex + static_cast<GLint>(part.firstIndex), count, instances);
    if (texture != 0) gl.glBindTexture(GL_TEXTURE_2D, 0);
}

MeshNode3d::MeshNode3d(MeshData data)
    : m_private(std::make_unique<Private>(std::move(data)))
{
}

MeshNode3d::~MeshNode3d() = default;

void MeshNode3d::draw(const PaintContext& context, int instances)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || m_private->parts.empty()) return;
    if (!m_private->isUploaded) m_private->upload(*gl);
    // A geometry stage that wants adjacency takes none of the kinds that a mesh has.
    const bool withAdjacency = (context.primitives & PrimitiveBit::Adjacency) != 0;
    VertexArrayBinding binding(*gl, context);
    const int firstVertex = m_private->bindAttributes(binding, Item3dDrawer::numbersVertices(context));
    PartLook look(*gl, context);
    gl->glActiveTexture(GL_TEXTURE0);
    for (const MeshData::Part& part : m_private->parts) {
        const std::int32_t bit = kindOf(part.kind).bit;
        if ((context.primitives & bit) != 0 && (bit == PrimitiveBit::Points || !withAdjacency))
            m_private->drawPart(part, *gl, look, instances, firstVertex);
    }
}

// Textures are left to draw.
bool MeshNode3d::Private::canBeTold() const
{
    const MeshData::Part::Kind kind = parts.front().kind;
    return layout[TexCoords] == 0 &&
           std::all_of(parts.begin(), parts.end(),
                       [kind](const MeshData::Part& part) { return part.kind == kind; });
}

ItemDrawing::Look MeshNode3d::Private::lookOf(const MeshData::Part& part) const
{
    ItemDrawing::Look look;
    look.color = part.color.isValid() ? part.color : defaultColor;
    look.colorMode = layout[Colors] != 0 ? ColorMode::Vertices : ColorMode::Item;
    look.isLit = part.kind == MeshData::Part::Triangles;
    look.penWidth = part.kind == MeshData::Part::Points ? part.pointSize : lineWidth;
    return look;
}

bool MeshNode3d::describeDrawing(ItemDrawing& drawing)
{
    OpenGLFunctions* gl = currentGLFunctions();
    Private& own = *m_private;
    if (!gl) return false;
    if (own.parts.empty()) return true;
    if (!own.isUploaded) own.upload(*gl);
    if (!own.canBeTold()) return false;
    drawing.kind = tellingKind(own.parts.front().kind);
    for (const MeshData::Part& part : own.parts) {
        const auto look = static_cast<std::uint32_t>(drawing.looks.size());
        drawing.looks.push_back(own.lookOf(part));
        drawing.stretches.push_back({part.firstIndex, part.indexCount, look});
    }
    drawing.positions = own.vertices.buffer(Positions);
    drawing.normals = own.vertices.buffer(Normals);
    drawing.colors = own.vertices.buffer(Colors);
    drawing.firstVertex = own.vertices.first();
    drawing.indices = own.isIndexed ? own.indices.buffer(0) : 0;
    drawing.firstIndex = own.indices.first();
    drawing.vertexCount = static_cast<std::uint32_t>(own.totalCount);
    drawing.indexCount = static_cast<std::uint32_t>(own.indexCount);
    return true;
}

glm::dvec3 MeshNode3d::getOrigin() const
{
    return m_private->data.origin;
}

gmx::BoundingBox MeshNode3d::getBounds() const
{
    return m_private->bounds;
}

Drawable3dPrimitive::GeometryInfo MeshNode3d::getGeometryInfo() const
{
    return m_private->info;
}

int MeshNode3d::getDrawerType() const
{
    return DrawerType::Mesh;
}

QString MeshNode3d::getName() const
{
    return m_private->data.name;
}

std::vector<glm::vec3> MeshNode3d::getVertices() const
{
    const std::vector<glm::vec3>& kept = m_private->data.positions;
    const auto count = static_cast<std::ptrdiff_t>(m_private->vertexCount);
    if (!m_private->isUploaded) return {kept.begin(), kept.begin() + count};
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || count == 0) return {};
    std::vector<glm::vec3> vertices(m_private->vertexCount);
    m_private->vertices.read(*gl, Positions, 0, vertices.data(), vertices.size());
    return vertices;
}

int MeshNode3d::getVertexCount() const
{
    return static_cast<int>(m_private->vertexCount);
}

void MeshNode3d::setPointSize(float pixels)
{
    for (MeshData::Part& part : m_private->parts)
        part.pointSize = pixels;
}

bool MeshNode3d::isSolid() const
{
    return m_private->isSolid;
}

bool MeshNode3d::isOpaque() const
{
    return m_private->isOpaque;
}

bool MeshNode3d::showsItemColors() const
{
    return m_private->layout[Colors] == 0 && m_private->layout[TexCoords] == 0;
}

bool MeshNode3d::isUntextured() const
{
    return m_private->layout[TexCoords] == 0;
}

bool MeshNode3d::isUnlit() const
{
    return m_private->info.triangleCount == 0;
}

bool MeshNode3d::isLargeSurface() const
{
    return m_private->isLarge;
}
