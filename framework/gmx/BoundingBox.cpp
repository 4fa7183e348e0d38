#include <framework/gmx/BoundingBox.h>

#include <cmath>
#include <limits>

namespace gmx {
namespace {

constexpr double largest = std::numeric_limits<double>::max();

bool isFinite(const glm::dvec3& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

bool isNotAbove(const glm::dvec3& a, const glm::dvec3& b)
{
    return a.x <= b.x && a.y <= b.y && a.z <= b.z;
}

} // namespace

void BoundingBox::reset()
{
    m_min = glm::dvec3(largest);
    m_max = glm::dvec3(-largest);
}

bool BoundingBox::isNull() const
{
    return *this == BoundingBox();
}

bool BoundingBox::isValid() const
{
    return isFinite(m_min) && isFinite(m_max) && isNotAbove(m_min, m_max);
}

glm::dvec3 BoundingBox::getSize() const
{
    return isNull() ? glm::dvec3(0.0) : m_max - m_min;
}

glm::dvec3 BoundingBox::getCenter() const
{
    return isNull() ? glm::dvec3(0.0) : m_min * 0.5 + m_max * 0.5; // the sum of the corners could overflow
}

double BoundingBox::getDiagonal() const
{
    const glm::dvec3 size = getSize();
    return std::hypot(size.x, size.y, size.z);
}

void BoundingBox::unite(const glm::dvec3& point)
{
    if (!isFinite(point)) return;
    m_min = glm::min(m_min, point);
    m_max = glm::max(m_max, point);
}

void BoundingBox::unite(const BoundingBox& other)
{
    if (!other.isValid()) return;
    unite(other.m_min);
    unite(other.m_max);
}

bool BoundingBox::contains(const glm::dvec3& point) const
{
    return isValid() && isNotAbove(m_min, point) && isNotAbove(point, m_max);
}

bool BoundingBox::intersects(const BoundingBox& other) const
{
    return isValid() && other.isValid() && isNotAbove(m_min, other.m_max) && isNotAbove(other.m_min, m_max);
}

std::array<glm::dvec3, 8> BoundingBox::getCorners() const
{
    std::array<glm::dvec3, 8> corners;
    for (unsigned i = 0; i < 8; ++i)
        corners[i] = {(i & 1u) ? m_max.x : m_min.x, (i & 2u) ? m_max.y : m_min.y,
                      (i & 4u) ? m_max.z : m_min.z};
    return corners;
}

BoundingBox BoundingBox::transformed(const glm::dmat4& matrix) const
{
    if (!isValid()) return *this;
    BoundingBox box;
    for (const glm::dvec3& corner : getCorners()) {
        const glm::dvec3 mapped(matrix * glm::dvec4(corner, 1.0));
        if (!isFinite(mapped)) {
            const glm::dvec3 unknown(std::numeric_limits<double>::quiet_NaN());
            return {unknown, unknown};
        }
        box.unite(mapped);
    }
    return box;
}

} // namespace gmx
