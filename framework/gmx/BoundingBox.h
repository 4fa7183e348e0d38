#pragma once

#include <framework/HostFramework_export.h>

#include <glm/glm.hpp>

#include <array>

namespace gmx {

/// Axis-aligned box in double precision.
///
/// A box is null (empty: nothing was united into it yet), valid (finite corners, min not above max on any
/// axis; zero extents are allowed) or neither (a corner is NaN or infinite, or min lies above max on some
/// axis but not as in the null box).
class HOSTFRAMEWORK_EXPORT BoundingBox
{
public:
    /// The null box.
    BoundingBox() { reset(); }
    /// The box with these corners, taken as they are.
    BoundingBox(const glm::dvec3& min, const glm::dvec3& max)
        : m_min(min)
        , m_max(max)
    {
    }

    /// Makes the box null.
    void reset();
    bool isNull() const;
    bool isValid() const;

    const glm::dvec3& getMin() const { return m_min; }
    const glm::dvec3& getMax() const { return m_max; }
    /// max - min; zero for the null box.
    glm::dvec3 getSize() const;
    /// The middle of the box; zero for the null box.
    glm::dvec3 getCenter() const;
    /// Length of the diagonal; zero for the null box.
    double getDiagonal() const;

    /// Grows the box to hold the point. A point with a NaN or infinite coordinate is left out.
    void unite(const glm::dvec3& point);
    /// Grows the box to hold the other; a null or invalid box is left out.
    void unite(const BoundingBox& other);

    /// True for points inside or on the border; a box that is not valid contains nothing.
    bool contains(const glm::dvec3& point) const;
    /// True when the boxes have a point in common, a border point too; false unless both are valid.
    bool intersects(const BoundingBox& other) const;

    /// The eight corners, x changing fastest, then y, then z.
    std::array<glm::dvec3, 8> getCorners() const;
    /// The box of the eight corners mapped by the matrix (x, y, z of m * (p, 1), no division by w); a null or
    /// invalid box stays as it is. A matrix that maps a corner to NaN or infinity gives an invalid box.
    BoundingBox transformed(const glm::dmat4& matrix) const;

    bool operator==(const BoundingBox& other) const { return m_min == other.m_min && m_max == other.m_max; }
    bool operator!=(const BoundingBox& other) const { return !(*this == other); }

private:
    glm::dvec3 m_min;
    glm::dvec3 m_max;
};

} // namespace gmx
