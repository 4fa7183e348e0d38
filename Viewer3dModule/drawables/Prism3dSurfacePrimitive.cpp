#include <Viewer3dModule/drawables/Prism3dSurfacePrimitive.h>

#include <Viewer3dModule/drawables/VertexArrayBinding.h>

#include <limits>

namespace {

// Unit vector; zero where the length is zero or lost in rounding.
glm::vec2 directionOf(const glm::vec2& v)
{
    const float length = glm::length(v);
    return length < std::numeric_limits<float>::epsilon() ? glm::vec2(0.0f) : v / length;
}

// The direction of walls without length: along the whole base or, where that is closed, along its last
// segment.
glm::vec2 fallbackDirection(const std::vector<glm::vec3>& base)
{
    const glm::vec2 whole = directionOf(glm::vec2(base.back()) - glm::vec2(base.front()));
    if (whole != glm::vec2(0.0f)) return whole;
    const glm::vec2 last = directionOf(glm::vec2(base.back()) - glm::vec2(base[base.size() - 2]));
    return last != glm::vec2(0.0f) ? last : glm::vec2(1.0f, 0.0f);
}

} // namespace

void Prism3dSurfacePrimitive::setVertices(const std::vector<glm::vec3>& base, float height)
{
    updateIndices(base, height);
}

void Prism3dSurfacePrimitive::setVertices(const std::vector<glm::vec2>& base, float height)
{
    std::vector<glm::vec3> widened;
    widened.reserve(base.size());
    for (const glm::vec2& point : base)
        widened.emplace_back(point, 0.0f);
    updateIndices(widened, height);
}

void Prism3dSurfacePrimitive::updateIndices(const std::vector<glm::vec3>& base, float height)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || base.size() < 2) return;
    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    positions.reserve(base.size() * 6);
    normals.reserve(base.size() * 6);
    const glm::vec2 fallback = fallbackDirection(base);
    for (std::size_t i = 0; i + 1 < base.size(); ++i) {
        const glm::vec2 a(base[i]);
        const glm::vec2 b(base[i + 1]);
        for (const glm::vec3& corner : {glm::vec3(b, 0.0f), glm::vec3(a, 0.0f), glm::vec3(a, height),
                                        glm::vec3(a, height), glm::vec3(b, height), glm::vec3(b, 0.0f)})
            positions.push_back(corner);
        const glm::vec2 along = directionOf(b - a);
        const glm::vec2 direction = along != glm::vec2(0.0f) ? along : fallback;
        normals.insert(normals.end(), 6, glm::vec3(direction.y, -direction.x, 0.0f));
    }
    m_buffers.upload(*gl, positions, normals, static_cast<int>(positions.size()));
}

void Prism3dSurfacePrimitive::setVertex(int index, const glm::vec3& vertex)
{
    m_buffers.setVertex(index, vertex);
}

void Prism3dSurfacePrimitive::setTexture(unsigned int texture, const std::vector<glm::vec2>& coords)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || coords.size() != static_cast<std::size_t>(getVertexCount())) return;
    m_buffers.setTexture(*gl, texture, coords);
}

void Prism3dSurfacePrimitive::setColor(const PaintContext& context, const QColor& color)
{
    SurfaceBuffers::setColor(context, color);
}

void Prism3dSurfacePrimitive::draw(const PaintContext& context, int instances)
{
    const auto drawAs = [&](unsigned int mode) {
        return [this, mode, instances](VertexArrayBinding& binding) {
            binding.gl().glDrawArraysInstanced(mode, 0, getVertexCount(), instances);
        };
    };
    m_buffers.draw(context, drawAs(GL_LINE_STRIP), drawAs(GL_TRIANGLES));
}

Drawable3dPrimitive::GeometryInfo Prism3dSurfacePrimitive::getGeometryInfo()
{
    GeometryInfo info;
    info.triangleCount = static_cast<std::uint32_t>(getVertexCount()) / 3;
    return info;
}
