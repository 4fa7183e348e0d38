#include <Viewer3dModule/drawables/Plane3dSegmentPrimitive.h>

#include <Viewer3dModule/drawables/VertexArrayBinding.h>
#include <framework/ksp/Log.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace {

// Half the spacing of single precision at the coordinate that is farthest from zero.
double precisionOf(const std::vector<glm::vec3>& points)
{
    double farthest = 0.0;
    for (const glm::vec3& p : points)
        farthest =
            std::max(farthest, double(std::max(std::abs(p.x), std::max(std::abs(p.y), std::abs(p.z)))));
    return 0.5 * farthest * double(std::numeric_limits<float>::epsilon());
}

std::vector<std::uint32_t> indicesOf(const std::vector<surf::Triangle>& triangles)
{
    std::vector<std::uint32_t> indices;
    indices.reserve(triangles.size() * 3);
    for (const surf::Triangle& triangle : triangles)
        indices.insert(indices.end(), triangle.begin(), triangle.end());
    return indices;
}

} // namespace

void Plane3dSegmentPrimitive::setVertices(const std::vector<glm::vec3>& points,
                                          const std::vector<int>& contourCounts)
{
    updateIndices(points, contourCounts);
}

void Plane3dSegmentPrimitive::setVertices(const std::vector<glm::vec2>& points,
                                          const std::vector<int>& contourCounts)
{
    std::vector<glm::vec3> widened;
    widened.reserve(points.size());
    for (const glm::vec2& point : points)
        widened.emplace_back(point, 0.0f);
    updateIndices(widened, contourCounts);
}

// Without points there is nothing to divide and nothing to complain of.
bool Plane3dSegmentPrimitive::triangulate(surf::CSurface& surface, const std::vector<glm::vec3>& points,
                                          const std::vector<int>& counts) const
{
    const auto wanted =
        std::accumulate(counts.begin(), counts.end(), std::size_t(0),
                        [](std::size_t sum, int count) { return sum + static_cast<std::size_t>(count); });
    if (wanted > points.size()) {
        ksp::Log::error(QStringLiteral("polygon \"%1\": its contours have %2 points, but there are %3")
                            .arg(nameOf(points.size()))
                            .arg(wanted)
                            .arg(points.size()));
        return false;
    }
    if (points.empty()) return false;
    surface.setPrecision(precisionOf(points));
    for (const glm::vec3& point : points)
        surface.addVertex(double(point.x), double(point.y), double(point.z));
    std::uint32_t first = 0;
    for (const int count : counts) {
        std::vector<std::uint32_t> contour(static_cast<std::size_t>(count));
        std::iota(contour.begin(), contour.end(), first);
        surface.addContour(contour);
        first += static_cast<std::uint32_t>(count);
    }
    return surface.createTriangulation(false, -1, nullptr) && surface.update();
}

QString Plane3dSegmentPrimitive::nameOf(std::size_t pointCount) const
{
    return m_name.isEmpty() ? QStringLiteral("plane segment of %1 points").arg(pointCount) : m_name;
}

void Plane3dSegmentPrimitive::updateIndices(const std::vector<glm::vec3>& points,
                                            const std::vector<int>& contourCounts)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return;
    std::vector<int> counts = contourCounts;
    for (int& count : counts)
        count = std::max(count, 0);
    surf::CSurface surface(nameOf(points.size()));
    const bool isDivided = triangulate(surface, points, counts);
    m_contourCounts = isDivided ? std::move(counts) : std::vector<int>();
    m_crossings = surface.getCrossings();

    std::vector<glm::vec3> positions = points;
    for (std::size_t i = points.size(); i < surface.getVertexCount(); ++i)
        positions.emplace_back(surface.getPosition(static_cast<std::uint32_t>(i)));
    const std::vector<glm::vec3> normals(positions.size(), glm::vec3(surface.getNormal()));
    const std::vector<std::uint32_t> indices = indicesOf(surface.getTriangles());
    m_buffers.upload(*gl, positions, normals, static_cast<int>(points.size()));
    m_indices.upload(*gl, indices, GL_STATIC_DRAW);
    m_indexCount = static_cast<int>(indices.size());
    uploadTexCoords(*gl);
}

void Plane3dSegmentPrimitive::setVertex(int index, const glm::vec3& vertex)
{
    m_buffers.setVertex(index, vertex);
}

void Plane3dSegmentPrimitive::setTexture(unsigned int texture, const std::vector<glm::vec2>& coords)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || coords.size() != static_cast<std::size_t>(getVertexCount())) return;
    m_texture = texture;
    m_texCoords = coords;
    uploadTexCoords(*gl);
}

// New vertices may have other crossings, which want texture coordinates too.
void Plane3dSegmentPrimitive::uploadTexCoords(OpenGLFunctions& gl)
{
    if (m_texCoords.size() != static_cast<std::size_t>(getVertexCount())) m_texCoords.clear();
    if (m_texCoords.empty()) return;
    std::vector<glm::vec2> coords = m_texCoords;
    surf::appendCrossings(m_crossings, coords);
    m_buffers.setTexture(gl, m_texture, coords);
}

void Plane3dSegmentPrimitive::setColor(const PaintContext& context, const QColor& color)
{
    SurfaceBuffers::setColor(context, color);
}

void Plane3dSegmentPrimitive::draw(const PaintContext& context, int instances)
{
    const auto drawContours = [&](VertexArrayBinding& binding) {
        int first = 0;
        for (const int count : m_contourCounts) {
            binding.gl().glDrawArraysInstanced(GL_LINE_LOOP, first, count, instances);
            first += count;
        }
    };
    const auto drawTriangles = [&](VertexArrayBinding& binding) {
        binding.setIndices(m_indices);
        binding.gl().glDrawElementsInstanced(GL_TRIANGLES, m_indexCount, GL_UNSIGNED_INT, nullptr, instances);
    };
    if (m_indexCount != 0) m_buffers.draw(context, drawContours, drawTriangles);
}

Drawable3dPrimitive::GeometryInfo Plane3dSegmentPrimitive::getGeometryInfo()
{
    GeometryInfo info;
    info.triangleCount = static_cast<std::uint32_t>(m_indexCount) / 3;
    return info;
}
