#include <Viewer3dModule/fences/Frustum3D.h>

#include <Viewer3dModule/fences/Prism3D.h>
#include <Viewer3dModule/fences/PrismFence3DImpl.h>
#include <Viewer3dModule/fences/fence_overlap.h>
#include <Viewer3dModule/fences/fence_polygon.h>

#include <framework/ksp/CFileException.h>
#include <framework/ksp/CQtArchive.h>

#include <algorithm>
#include <utility>

namespace {

constexpr double smallestNear = 0.1;
constexpr double rayLengthInRadii = 4.0;

} // namespace

void Frustum3D::setFence(const glm::dvec3& eye, const glm::dvec3& direction, double tanHalfFovy, double zNear,
                         double zFar, std::vector<glm::dvec3> points, const glm::dmat4& fromWorld)
{
    Frustum3D frustum;
    frustum.m_eye = eye;
    frustum.m_direction = direction;
    frustum.setFromWorldMatrix(fromWorld);
    frustum.m_zNear = zNear;
    frustum.m_zFar = zFar;
    frustum.m_tanHalfFovy = tanHalfFovy;
    m_fence.clear();
    if (frustum.project(points) && frustum.isWhole()) *this = std::move(frustum);
}

void Frustum3D::setFromWorldMatrix(const glm::dmat4& fromWorld)
{
    m_fromWorld = fromWorld;
    m_toWorld = glm::inverse(m_fromWorld);
}

void Frustum3D::reset()
{
    m_fence.clear();
}

/// Sets the polygon from world points; false when they are none that a fence can have, or the frame is none.
bool Frustum3D::project(const std::vector<glm::dvec3>& points)
{
    if (!fence_polygon::isClosed(points)) return false;
    for (glm::length_t i = 0; i < 4; ++i)
        if (!fence_polygon::isFinite(m_toWorld[i])) return false;
    m_fence.reserve(points.size());
    for (const glm::dvec3& point : points) {
        const glm::dvec4 q = m_fromWorld * glm::dvec4(point, 1.0);
        if (!(q.z > 0.0)) return false;
        m_fence.emplace_back(glm::dvec2(q) / (q.z * m_tanHalfFovy));
    }
    return true;
}

/// Whether the fields are such as setFence leaves them; the frame is not looked at.
bool Frustum3D::isWhole() const
{
    using fence_polygon::isFinite;
    const bool isFiniteAll =
        isFinite(m_eye) && isFinite(m_direction) && isFinite(glm::dvec3(m_zNear, m_zFar, m_tanHalfFovy));
    const bool canHavePolygon = m_tanHalfFovy > 0.0 && m_zNear >= 0.0;
    return isFiniteAll && fence_polygon::isAllowed(m_fence) && (m_fence.empty() || canHavePolygon);
}

void Frustum3D::serialize(ksp::CQtArchive& archive)
{
    Frustum3D frustum = *this; // what is read is taken over as a whole or not at all
    archive.beginObject();
    archive.block(&frustum.m_eye, sizeof frustum.m_eye);
    archive.block(&frustum.m_direction, sizeof frustum.m_direction);
    archive.block(&frustum.m_fromWorld, sizeof frustum.m_fromWorld);
    archive.value(frustum.m_zNear);
    archive.value(frustum.m_zFar);
    archive.value(frustum.m_tanHalfFovy);
    fence_polygon::serialize(archive, frustum.m_fence);
    archive.endObject(1);
    archive.finish();
    if (!archive.isLoading()) return;
    if (!frustum.isWhole())
        throw ksp::CFileException(ksp::CFileException::Damaged,
                                  QStringLiteral("a frustum fence has numbers that none can have"));
    frustum.setFromWorldMatrix(frustum.m_fromWorld);
    *this = std::move(frustum);
}

bool Frustum3D::contains(const glm::dvec3& point) const
{
    const glm::dvec4 q = m_fromWorld * glm::dvec4(point, 1.0);
    if (q.z < m_zNear || (hasFarPlane() && q.z > m_zFar)) return false;
    const glm::vec2 onScreen(glm::dvec2(q) / (q.z * m_tanHalfFovy));
    return fence_polygon::contains(m_fence, onScreen);
}

bool Frustum3D::reaches(const std::vector<glm::dvec3>& corners) const
{
    std::vector<glm::dvec3> inFence;
    for (const glm::dvec3& corner : corners) {
        const glm::dvec3 q(m_fromWorld * glm::dvec4(corner, 1.0));
        inFence.emplace_back(q.x / m_tanHalfFovy, q.y / m_tanHalfFovy, q.z);
    }
    return fence_overlap::reaches({m_fence, m_zNear, m_zFar, true}, std::move(inFence));
}

std::shared_ptr<gmx::IFence3D> Frustum3D::getIFence3D(const glm::dmat4& modelToScene) const
{
    return std::make_shared<PrismFence3DImpl>(*this, modelToScene);
}

glm::dvec3 Frustum3D::unProject(const glm::dvec2& xy, double depth) const
{
    return m_toWorld * glm::dvec4(xy * depth * m_tanHalfFovy, depth, 1.0);
}

std::vector<glm::dvec3> Frustum3D::getFence(double depth) const
{
    std::vector<glm::dvec3> points;
    points.reserve(m_fence.size());
    for (const glm::vec2& xy : m_fence)
        points.push_back(unProject(xy, depth));
    return points;
}

std::vector<glm::dvec3> Frustum3D::getNearFence() const
{
    return getFence(m_zNear);
}

std::vector<glm::dvec3> Frustum3D::getFarFence() const
{
    return getFence(m_zFar);
}

std::vector<glm::dvec3> Frustum3D::getNodes() const
{
    if (m_fence.size() < 4) return {};
    const glm::dvec2 center = Prism3D::getFenceCenter2D(m_fence);
    return {unProject(center, m_zNear), unProject(center, m_zFar)};
}

/// The line of the handles in the fence frame: the point at depth 1, and so the way from the eye to it. Taken
/// from the polygon's centre and not from the handles, which coincide where far equals near.
glm::dvec3 Frustum3D::nodeLine() const
{
    return {Prism3D::getFenceCenter2D(m_fence) * m_tanHalfFovy, 1.0};
}

std::vector<glm::dvec3> Frustum3D::getRay() const
{
    std::vector<glm::dvec3> ray = getNodes();
    if (ray.empty()) return ray;
    const glm::dvec3 away = glm::normalize(glm::dvec3(m_toWorld * glm::dvec4(nodeLine(), 0.0)));
    const glm::dvec3 direction = m_zFar < m_zNear ? -away : away;
    const double depth = hasFarPlane() ? m_zNear + (m_zFar - m_zNear) * 0.5 : m_zNear;
    const double length = rayLengthInRadii * Prism3D::getFenceRadius2D(m_fence) * depth * m_tanHalfFovy;
    ray[0] -= length * direction;
    ray[1] += length * direction;
    return ray;
}

void Frustum3D::movePlane(const glm::dvec3& point, bool nearPlane)
{
    if (getNodes().empty()) return;
    const bool endless = !hasFarPlane();
    const glm::dvec3 line = nodeLine();
    const glm::dvec3 q = m_fromWorld * glm::dvec4(point, 1.0);
    double& depth = nearPlane ? m_zNear : m_zFar;
    // line has depth 1, so a part of it is a step in depth
    const double moved = depth + glm::dot(q - depth * line, line) / glm::dot(line, line);
    if (!std::isfinite(moved)) return;
    depth = moved;
    if (endless && nearPlane)
        m_zFar = std::min(m_zFar, m_zNear);
    else if (m_zNear > m_zFar)
        std::swap(m_zNear, m_zFar);
    m_zNear = std::max(m_zNear, smallestNear);
}
