#include <framework/surf/CSurface.h>

#include <framework/ksp/Log.h>
#include <framework/surf/Tessellator.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace surf {

namespace {

bool isFinite(const glm::dvec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

double largestOf(const glm::dvec3& v)
{
    const glm::dvec3 size = glm::abs(v);
    return std::max(size.x, std::max(size.y, size.z));
}

// Whether a triangle is higher than a length over its longest side.
bool hasArea(const glm::dvec3& a, const glm::dvec3& b, const glm::dvec3& c, double length)
{
    const glm::dvec3 ab = b - a;
    const glm::dvec3 bc = c - b;
    const glm::dvec3 ca = a - c;
    const double longest = std::max(glm::dot(ab, ab), std::max(glm::dot(bc, bc), glm::dot(ca, ca)));
    const glm::dvec3 area = glm::cross(ab, bc);
    return glm::dot(area, area) > longest * length * length;
}

} // namespace

CSurface::CSurface(const QString& name)
    : m_name(name)
{
}

std::uint32_t CSurface::addVertex(double x, double y, double z)
{
    dropDivision();
    m_positions.emplace_back(x, y, z);
    return static_cast<std::uint32_t>(m_givenCount++);
}

void CSurface::setVertex(std::uint32_t vertex, const glm::dvec3& position)
{
    if (vertex < m_givenCount) m_positions[vertex] = position;
}

void CSurface::addContour(const std::vector<std::uint32_t>& vertices)
{
    if (vertices.size() < 3) return;
    m_corners.insert(m_corners.end(), vertices.begin(), vertices.end());
    m_contourEnds.push_back(m_corners.size());
}

void CSurface::setPrecision(double precision)
{
    m_givenPrecision = precision;
}

void CSurface::dropDivision()
{
    m_isDivided = false;
    m_positions.resize(m_givenCount);
    m_crossings.clear();
    m_division.clear();
    m_triangles.clear();
}

bool CSurface::fail(const QString& reason)
{
    dropDivision();
    ksp::Log::error(
        (m_name.isEmpty() ? QStringLiteral("polygon: ") : QStringLiteral("polygon \"%1\": ").arg(m_name)) +
        reason);
    return false;
}

// Empty when the contours can be worked on.
QString CSurface::findFault() const
{
    if (m_corners.empty()) return QStringLiteral("it has no contour of three points");
    for (const std::uint32_t corner : m_corners) {
        if (corner >= m_givenCount) return QStringLiteral("it has no vertex %1").arg(corner);
        if (!isFinite(m_positions[corner]))
            return QStringLiteral("the coordinates of vertex %1 are not finite").arg(corner);
    }
    return {};
}

// Sets origin, scale and tolerance; false where the extent is zero or beyond the range of numbers.
bool CSurface::findFrame()
{
    m_origin = m_positions[m_corners.front()];
    double extent = 0.0;
    double farthest = 0.0;
    for (const std::uint32_t corner : m_corners) {
        extent = std::max(extent, largestOf(m_positions[corner] - m_origin));
        farthest = std::max(farthest, largestOf(m_positions[corner]));
    }
    if (!(extent > 0.0) || !std::isfinite(extent)) return false;
    m_scale = std::ldexp(1.0, -std::ilogb(extent)); // a power of two: scaling rounds nothing
    const double rounding = 4.0 * std::numeric_limits<double>::epsilon() * farthest;
    m_tolerance = 4.0 * std::max(rounding, m_givenPrecision) * m_scale;
    return std::isfinite(m_scale);
}

std::vector<glm::dvec3> CSurface::localPositions() const
{
    std::vector<glm::dvec3> points;
    points.reserve(m_givenCount);
    for (std::size_t i = 0; i < m_givenCount; ++i)
        points.push_back((m_positions[i] - m_origin) * m_scale);
    return points;
}

// The first contour's area vector. Where that contour is too thin for its direction to be certain, or its
// parts cancel one another, the direction is that of a large triangle, and the area vector tells the side
// only. False when all corners lie on a line.
bool CSurface::findNormal(const std::vector<glm::dvec3>& points)
{
    glm::dvec3 area(0.0);
    for (std::size_t i = 0; i < m_contourEnds.front(); ++i) {
        const std::size_t next = i + 1 < m_contourEnds.front() ? i + 1 : 0;
        area += glm::cross(points[m_corners[i]], points[m_corners[next]]);
    }
    glm::dvec3 span(0.0); // from the origin, which is a corner, to the farthest one
    for (const std::uint32_t corner : m_corners)
        if (glm::dot(points[corner], points[corner]) > glm::dot(span, span)) span = points[corner];
    glm::dvec3 triangle(0.0);
    for (const std::uint32_t corner : m_corners) {
        const glm::dvec3 wide = glm::cross(span, points[corner]);
        if (glm::dot(wide, wide) > glm::dot(triangle, triangle)) triangle = wide;
    }
    if (!(glm::length(triangle) > 0.5 * m_tolerance * glm::length(span))) return false;
    const bool isCertain = glm::length(area) > 1e-3 * glm::length(triangle);
    m_normal = isCertain ? area : glm::dot(area, triangle) < 0.0 ? -triangle : triangle;
    m_normal = glm::normalize(m_normal);
    return true;
}

bool CSurface::createTriangulation(bool keepFlatTriangles, std::int64_t maximumCrossings,
                                   const ksp::StagedProgress* progress)
{
    dropDivision();
    m_keepsFlatTriangles = keepFlatTriangles;
    const QString fault = findFault();
    if (!fault.isEmpty()) return fail(fault);
    if (!findFrame()) return fail(QStringLiteral("its points are all one, or too far apart"));
    std::vector<glm::dvec3> points = localPositions();
    if (!findNormal(points)) return fail(QStringLiteral("all its points lie on a line"));
    Tessellation result =
        tessellate(points, {m_corners, m_contourEnds, m_tolerance, m_normal}, maximumCrossings, progress);
    if (!result.failure.isNull()) return fail(result.failure);
    if (result.isCanceled) return false;
    m_division = std::move(result.triangles);
    m_crossings = std::move(result.crossings);
    m_isDivided = true;
    return true;
}

bool CSurface::update()
{
    m_positions.resize(m_givenCount);
    m_triangles.clear();
    if (!m_isDivided) return false;
    std::vector<glm::dvec3> points = localPositions();
    appendCrossings(m_crossings, points);
    m_positions.reserve(points.size());
    for (std::size_t i = m_givenCount; i < points.size(); ++i)
        m_positions.push_back(m_origin + points[i] / m_scale);
    for (const Triangle& triangle : m_division)
        if (m_keepsFlatTriangles ||
            hasArea(points[triangle[0]], points[triangle[1]], points[triangle[2]], m_tolerance))
            m_triangles.push_back(triangle);
    return !m_triangles.empty() || fail(QStringLiteral("it encloses no area"));
}

} // namespace surf
