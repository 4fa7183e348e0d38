#include <Viewer3dModule/fences/Prism3D.h>

#include <Viewer3dModule/fences/PrismFence3DImpl.h>
#include <Viewer3dModule/fences/fence_overlap.h>
#include <Viewer3dModule/fences/fence_polygon.h>

#include <framework/ksp/CFileException.h>
#include <framework/ksp/CQtArchive.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double rayLengthInRadii = 4.0;
/// By how much the length of a unit vector may differ from 1.
constexpr double unitTolerance = 1e-9;

template <typename Point>
Point meanWithoutLast(const std::vector<Point>& points)
{
    Point sum(0.0);
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        sum += points[i];
    return sum / static_cast<double>(points.size() - 1);
}

} // namespace

void Prism3D::setFence(const glm::dvec3& /*eye*/, const glm::dvec3& direction, double /*tanHalfFovy*/,
                       double zNear, double zFar, std::vector<glm::dvec3> points)
{
    m_fence.clear();
    if (!fence_polygon::isClosed(points)) return;
    Prism3D prism;
    prism.m_origin = meanWithoutLast(points);
    prism.m_direction = glm::normalize(direction);
    prism.m_height = zFar - zNear;
    prism.updateMatrix();
    prism.m_fence.reserve(points.size());
    for (const glm::dvec3& point : points)
        prism.m_fence.emplace_back(prism.m_matrix * glm::dvec4(point, 1.0));
    if (prism.isWhole()) *this = std::move(prism);
}

void Prism3D::reset()
{
    m_fence.clear();
}

glm::dmat4 Prism3D::lookAt(const glm::dvec3& origin, const glm::dvec3& direction)
{
    const double azimuth = std::atan2(direction.y, direction.x);
    const double inclination = std::atan2(std::hypot(direction.x, direction.y), direction.z);
    const glm::dmat4 one(1.0);
    return glm::rotate(one, -inclination, glm::dvec3(0.0, 1.0, 0.0)) *
           glm::rotate(one, -azimuth, glm::dvec3(0.0, 0.0, 1.0)) * glm::translate(one, -origin);
}

void Prism3D::updateMatrix()
{
    m_matrix = lookAt(m_origin, m_direction);
}

/// Whether the fields are such as setFence leaves them.
bool Prism3D::isWhole() const
{
    using fence_polygon::isFinite;
    const bool isFiniteAll = isFinite(m_origin) && isFinite(m_direction) && std::isfinite(m_height);
    const bool isUnit = std::abs(glm::length(m_direction) - 1.0) <= unitTolerance;
    return isFiniteAll && fence_polygon::isAllowed(m_fence) && (m_fence.empty() || isUnit);
}

void Prism3D::serialize(ksp::CQtArchive& archive)
{
    Prism3D prism = *this; // what is read is taken over as a whole or not at all
    archive.beginObject();
    archive.block(&prism.m_origin, sizeof prism.m_origin);
    archive.block(&prism.m_direction, sizeof prism.m_direction);
    archive.value(prism.m_height);
    fence_polygon::serialize(archive, prism.m_fence);
    archive.endObject(1);
    archive.finish();
    if (!archive.isLoading()) return;
    if (!prism.isWhole())
        throw ksp::CFileException(ksp::CFileException::Damaged,
                                  QStringLiteral("a prism fence has numbers that none can have"));
    prism.updateMatrix();
    *this = std::move(prism);
}

bool Prism3D::contains(const glm::dvec3& point) const
{
    if (m_fence.size() < 4) return false;
    glm::dvec4 q = m_matrix * glm::dvec4(point, 1.0);
    q /= q.w;
    if (q.z < 0.0 || (m_height > 0.0 && q.z > m_height)) return false;
    return fence_polygon::contains(m_fence, glm::dvec2(q));
}

bool Prism3D::reaches(const std::vector<glm::dvec3>& corners) const
{
    std::vector<glm::dvec3> inPrism;
    for (const glm::dvec3& corner : corners)
        inPrism.emplace_back(m_matrix * glm::dvec4(corner, 1.0));
    return fence_overlap::reaches({m_fence, 0.0, m_height, false}, std::move(inPrism));
}

std::shared_ptr<gmx::IFence3D> Prism3D::getIFence3D(const glm::dmat4& modelToScene) const
{
    return std::make_shared<PrismFence3DImpl>(*this, modelToScene);
}

std::vector<glm::dvec3> Prism3D::getFence(double height) const
{
    const glm::dmat4 toWorld = glm::inverse(m_matrix);
    std::vector<glm::dvec3> points;
    points.reserve(m_fence.size());
    for (const glm::vec2& xy : m_fence)
        points.emplace_back(toWorld * glm::dvec4(xy, height, 1.0));
    return points;
}

std::vector<glm::dvec3> Prism3D::getNearFence() const
{
    return getFence(0.0);
}

std::vector<glm::dvec3> Prism3D::getFarFence() const
{
    return getFence(m_height);
}

std::vector<glm::dvec3> Prism3D::getNodes() const
{
    if (m_fence.size() < 4) return {};
    const glm::dmat4 toWorld = glm::inverse(m_matrix);
    const glm::dvec2 center = getFenceCenter2D(m_fence);
    return {toWorld * glm::dvec4(center, 0.0, 1.0), toWorld * glm::dvec4(center, m_height, 1.0)};
}

std::vector<glm::dvec3> Prism3D::getRay() const
{
    std::vector<glm::dvec3> ray = getNodes();
    if (ray.empty()) return ray;
    const glm::dvec3 direction = m_height < 0.0 ? -m_direction : m_direction;
    const double length = rayLengthInRadii * getFenceRadius2D(m_fence);
    ray[0] -= length * direction;
    ray[1] += length * direction;
    return ray;
}

void Prism3D::movePlane(const glm::dvec3& point, bool nearPlane)
{
    const std::vector<glm::dvec3> nodes = getNodes();
    if (nodes.empty()) return;
    glm::dvec3 base = m_origin;
    glm::dvec3 top = m_origin + m_height * m_direction;
    (nearPlane ? base : top) += point - nodes[nearPlane ? 0 : 1];
    double height = m_height;
    if (m_height > 0.0 || !nearPlane) {
        if (glm::dot(top - base, m_direction) < 0.0) std::swap(base, top);
        height = glm::length(top - base);
    }
    if (!fence_polygon::isFinite(base) || !std::isfinite(height)) return;
    m_origin = base;
    m_height = height;
    updateMatrix();
}

glm::dvec2 Prism3D::getFenceCenter2D(const std::vector<glm::vec2>& fence)
{
    if (fence.size() < 4) return glm::dvec2(0.0);
    return meanWithoutLast(std::vector<glm::dvec2>(fence.begin(), fence.end()));
}

double Prism3D::getFenceRadius2D(const std::vector<glm::vec2>& fence)
{
    if (fence.size() < 4) return 0.0;
    const glm::dvec2 center = getFenceCenter2D(fence);
    double radius = 0.0;
    for (const glm::vec2& point : fence)
        radius = std::max(radius, glm::distance(glm::dvec2(point), center));
    return radius;
}
