#include <Viewer3dModule/fences/SphereFence.h>

#include <Viewer3dModule/fences/SphereFence3DImpl.h>
#include <Viewer3dModule/fences/fence_overlap.h>

#include <framework/ksp/CQtArchive.h>

#include <algorithm>
#include <cmath>

namespace {

/// The vector's length. Scaled by a power of two, so that squares neither overflow nor vanish: a tiny vector
/// is no zero vector, and where squares are harmless the result is that of the plain formula, bit by bit.
double lengthOf(const glm::dvec3& v)
{
    const glm::dvec3 size = glm::abs(v);
    const double sum = size.x + size.y + size.z;
    if (!(sum > 0.0)) return sum; // 0 or NaN
    const int exponent = std::ilogb(std::max({size.x, size.y, size.z}));
    const glm::dvec3 scaled(std::scalbn(v.x, -exponent), std::scalbn(v.y, -exponent),
                            std::scalbn(v.z, -exponent));
    return std::scalbn(glm::length(scaled), exponent);
}

} // namespace

void SphereFence::setFence(const glm::dvec3& center, double radius)
{
    m_center = center;
    m_radius = radius;
}

bool SphereFence::empty() const
{
    return glm::any(glm::isnan(m_center));
}

void SphereFence::serialize(ksp::CQtArchive& archive)
{
    glm::dvec3 center = m_center; // what is read is taken over as a whole or not at all
    double radius = m_radius;
    archive.beginObject();
    archive.block(&center, sizeof center);
    archive.value(radius);
    archive.endObject(1);
    archive.finish();
    setFence(center, radius);
}

bool SphereFence::contains(const glm::dvec3& point) const
{
    return m_radius >= lengthOf(m_center - point);
}

bool SphereFence::reaches(const std::vector<glm::dvec3>& corners) const
{
    std::vector<glm::dvec3> aboutCenter;
    for (const glm::dvec3& corner : corners)
        aboutCenter.push_back(corner - m_center);
    return fence_overlap::reachesSphere(m_radius, aboutCenter);
}

std::shared_ptr<gmx::IFence3D> SphereFence::getIFence3D(const glm::dmat4& modelToScene) const
{
    return std::make_shared<SphereFence3DImpl>(*this, modelToScene);
}
