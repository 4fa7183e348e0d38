#include <viewer/elements/SurfaceMesh.h>

#include <framework/surf/CSurface.h>

#include <algorithm>

namespace {

// By Newell's sum, relative to the ring's first point: twice the area as a vector.
glm::dvec3 areaVector(const std::vector<glm::dvec3>& points, std::size_t end)
{
    glm::dvec3 sum(0.0);
    for (std::size_t i = 1; i + 1 < end; ++i)
        sum += glm::cross(points[i] - points[0], points[i + 1] - points[0]);
    return sum;
}

bool isConvexQuad(const std::vector<glm::dvec3>& points, const glm::dvec3& normal)
{
    for (std::size_t i = 0; i < 4; ++i) {
        const glm::dvec3& corner = points[(i + 1) % 4];
        const glm::dvec3 turn = glm::cross(corner - points[i], points[(i + 2) % 4] - corner);
        if (!(glm::dot(turn, normal) > 0.0)) return false;
    }
    return true;
}

// Whether all points lie on a line, within rounding. The area does not tell: that of a ring that crosses
// itself may cancel out.
bool isLine(const std::vector<glm::dvec3>& points)
{
    constexpr double smallestRatio = 1e-12; // of width to length
    const auto fromFirst = [&](const glm::dvec3& point) {
        return glm::dot(point - points[0], point - points[0]);
    };
    const auto isNearer = [&](const glm::dvec3& a, const glm::dvec3& b) {
        return fromFirst(a) < fromFirst(b);
    };
    const glm::dvec3 line = *std::max_element(points.begin(), points.end(), isNearer) - points[0];
    const auto liesBeside = [&](const glm::dvec3& point) {
        return glm::length(glm::cross(line, point - points[0])) > smallestRatio * glm::dot(line, line);
    };
    return std::none_of(points.begin(), points.end(), liesBeside);
}

} // namespace

bool SurfaceMesh::add(const FlatRegion& region, std::vector<std::uint32_t>& indices)
{
    const std::size_t outer = region.ringEnds.empty() ? 0 : region.ringEnds.front();
    if (outer < 3 || isLine(region.points)) return false;
    const glm::dvec3 area = areaVector(region.points, outer);
    const double length = glm::length(area);
    const bool isSimple = region.ringEnds.size() == 1 && outer <= 4;
    const auto first = static_cast<std::uint32_t>(m_mesh.positions.size());
    if (isSimple && length > 0.0 && (outer == 3 || isConvexQuad(region.points, area))) {
        addVertices(region.points, region.texCoords, area / length);
        for (std::uint32_t i = 1; i + 1 < outer; ++i)
            indices.insert(indices.end(), {first, first + i, first + i + 1});
        return true;
    }
    surf::CSurface surface(m_name);
    std::vector<std::uint32_t> contour;
    std::size_t next = 0;
    for (const std::uint32_t end : region.ringEnds) {
        contour.clear();
        for (; next < end; ++next)
            contour.push_back(
                surface.addVertex(region.points[next].x, region.points[next].y, region.points[next].z));
        surface.addContour(contour);
    }
    if (!surface.createTriangulation(false, -1, nullptr) || !surface.update()) return true;
    std::vector<glm::dvec3> points;
    for (std::uint32_t i = 0; i < surface.getVertexCount(); ++i)
        points.push_back(surface.getPosition(i));
    std::vector<glm::vec2> texCoords = region.texCoords;
    if (!texCoords.empty()) surf::appendCrossings(surface.getCrossings(), texCoords);
    addVertices(points, texCoords, surface.getNormal());
    for (const surf::Triangle& triangle : surface.getTriangles())
        for (const std::uint32_t corner : triangle)
            indices.push_back(first + corner);
    return true;
}

void SurfaceMesh::addVertices(const std::vector<glm::dvec3>& points, const std::vector<glm::vec2>& texCoords,
                              const glm::dvec3& normal)
{
    for (const glm::dvec3& point : points)
        m_mesh.positions.emplace_back(point);
    m_mesh.normals.resize(m_mesh.positions.size(), glm::vec3(normal));
    if (texCoords.empty()) return;
    m_mesh.texCoords.resize(m_mesh.positions.size() - points.size(), glm::vec2(0.0f));
    m_mesh.texCoords.insert(m_mesh.texCoords.end(), texCoords.begin(), texCoords.end());
}
