#include <Viewer3dModule/drawables/MeshNode3d.h>

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/MeshNormals.h>
#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/Uniforms.h>
#include <framework/ksp/Log.h>

#include <QtGui/QOpenGLTexture>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

const QColor defaultColor(200, 200, 200);

// Where a fragment's colour comes from: the shaders' "uColorMode".
enum ColorMode { ItemColor = 0, VertexColors = 1, TextureColor = 2 };

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
}

gmx::BoundingBox boundsOf(const MeshData& data)
{
    gmx::BoundingBox bounds;
    for (const glm::vec3& position : data.positions)
        bounds.unite(data.origin + glm::dvec3(position));
    return bounds;
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

// Uploads the values, if there are any, and frees their memory.
template <class T>
void moveTo(GlBuffer& buffer, OpenGLFunctions& gl, std::vector<T>& values)
{
    if (!values.empty()) buffer.upload(gl, values, GL_STATIC_DRAW);
    values = std::vector<T>();
}

// Null for a null image.
std::unique_ptr<QOpenGLTexture> makeTexture(const QImage& image, int maxSize)
{
    if (image.isNull()) return nullptr;
    const bool fits = image.width() <= maxSize && image.height() <= maxSize;
    const QImage scaled =
        fits ? image : image.scaled(maxSize, maxSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    // OpenGL's first row is the lowest one.
    auto texture = std::make_unique<QOpenGLTexture>(scaled.mirrored(), QOpenGLTexture::GenerateMipMaps);
    texture->setMinMagFilters(QOpenGLTexture::LinearMipMapLinear, QOpenGLTexture::Linear);
    texture->setWrapMode(QOpenGLTexture::Repeat);
    return texture;
}

} // namespace

struct MeshNode3d::Private
{
    explicit Private(MeshData meshData);
    void upload(OpenGLFunctions& gl);
    void bindAttributes(VertexArrayBinding& binding) const;
    void drawPart(const MeshData::Part& part, const PaintContext& context, OpenGLFunctions& gl,
                  const ItemUniforms& locations, int instances) const;
    const QOpenGLTexture* textureOf(const MeshData::Part& part) const;

    MeshData data; // its arrays and images are empty after the upload
    gmx::BoundingBox bounds;
    Drawable3dPrimitive::GeometryInfo info;

    bool isUploaded = false;
    GlBuffer positions;
    GlBuffer normals;
    GlBuffer colors;
    GlBuffer texCoords;
    GlBuffer indices;
    std::vector<std::unique_ptr<QOpenGLTexture>> textures; // one an image, null where the image is
};

MeshNode3d::Private::Private(MeshData meshData)
    : data(std::move(meshData))
{
    dropWhatDoesNotFit(data);
    completeNormals(data);
    bounds = boundsOf(data);
    info = geometryInfoOf(data);
}

void MeshNode3d::Private::upload(OpenGLFunctions& gl)
{
    isUploaded = true;
    moveTo(positions, gl, data.positions);
    moveTo(normals, gl, data.normals);
    moveTo(colors, gl, data.colors);
    moveTo(texCoords, gl, data.texCoords);
    moveTo(indices, gl, data.indices);
    if (data.images.empty()) return;
    GLint maxSize = 0;
    gl.glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
    for (QImage& image : data.images) {
        textures.push_back(makeTexture(image, maxSize));
        image = QImage();
    }
    data.images.clear();
}

void MeshNode3d::Private::bindAttributes(VertexArrayBinding& binding) const
{
    binding.setFloats(VertexAttribute::Coords, 3, positions);
    if (normals.name() != 0) binding.setFloats(VertexAttribute::Normal, 3, normals);
    if (colors.name() != 0) binding.setColors(VertexAttribute::Color, colors);
    if (texCoords.name() != 0) binding.setFloats(VertexAttribute::TexCoords, 2, texCoords);
    binding.setIndices(indices);
}

const QOpenGLTexture* MeshNode3d::Private::textureOf(const MeshData::Part& part) const
{
    if (texCoords.name() == 0 || part.image < 0 || static_cast<std::size_t>(part.image) >= textures.size())
        return nullptr;
    return textures[static_cast<std::size_t>(part.image)].get();
}

void MeshNode3d::Private::drawPart(const MeshData::Part& part, const PaintContext& context,
                                   OpenGLFunctions& gl, const ItemUniforms& locations, int instances) const
{
    const QOpenGLTexture* texture = textureOf(part);
    const ColorMode colorMode = texture ? TextureColor : colors.name() != 0 ? VertexColors : ItemColor;
    uniforms::set(gl, locations.colorMode, static_cast<int>(colorMode));
    uniforms::set(gl, locations.itemColor, part.color.isValid() ? part.color : defaultColor);
    if (part.kind == MeshData::Part::Points) uniforms::set(gl, locations.penWidth, part.pointSize);
    if (context.drawer) context.drawer->setShaderLightMode(part.kind == MeshData::Part::Triangles);
    if (texture) gl.glBindTexture(GL_TEXTURE_2D, texture->textureId());
    gl.glDrawElementsInstanced(
        kindOf(part.kind).mode, static_cast<GLsizei>(part.indexCount), GL_UNSIGNED_INT,
        reinterpret_cast<const void*>(static_cast<std::uintptr_t>(part.firstIndex) * sizeof(std::uint32_t)),
        instances);
    if (texture) gl.glBindTexture(GL_TEXTURE_2D, 0);
}

MeshNode3d::MeshNode3d(MeshData data)
    : m_private(std::make_unique<Private>(std::move(data)))
{
}

MeshNode3d::~MeshNode3d() = default;

void MeshNode3d::draw(const PaintContext& context, int instances)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || m_private->data.parts.empty()) return;
    if (!m_private->isUploaded) m_private->upload(*gl);
    // A geometry stage that wants adjacency takes none of the kinds that a mesh has.
    const bool withAdjacency = (context.primitives & PrimitiveBit::Adjacency) != 0;
    VertexArrayBinding binding(*gl, context.vertexArray);
    m_private->bindAttributes(binding);
    const ItemUniforms locations = Item3dDrawer::itemUniforms(context);
    gl->glActiveTexture(GL_TEXTURE0);
    for (const MeshData::Part& part : m_private->data.parts) {
        const std::int32_t bit = kindOf(part.kind).bit;
        if ((context.primitives & bit) != 0 && (bit == PrimitiveBit::Points || !withAdjacency))
            m_private->drawPart(part, context, *gl, locations, instances);
    }
    uniforms::set(*gl, locations.colorMode, static_cast<int>(ItemColor)); // what other items count on
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
