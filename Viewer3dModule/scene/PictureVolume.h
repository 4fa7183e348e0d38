#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <framework/gmx/BoundingBox.h>

#include <QtCore/QRect>
#include <glm/glm.hpp>

#include <array>
#include <cmath>
#include <cstddef>

/// The part of the scene that some pixels of a picture show, between the near and the far plane. Boxes and
/// points are in scene units, pixels are counted from the picture's top left corner, y down. All answers
/// allow for the rounding of single precision.
class VIEWER3DMODULE_EXPORT PictureVolume
{
public:
    /// @param viewProjection  scene to clip coordinates
    /// @param picture         size in pixels
    /// @param pixels          the part of it
    PictureVolume(const glm::dmat4& viewProjection, const QSize& picture, const QRect& pixels);

    /// False only when nothing of the box, nor of what is drawn up to `reach` pixels around it, can be seen
    /// in the pixels. A box that is null or invalid tells nothing, and neither does an infinite reach: true.
    bool reaches(const gmx::BoundingBox& box, double reach) const;
    class Border;
    /// What of a box can be seen in the pixels: nothing, also not of what is drawn up to `reach` pixels
    /// around it; all of it and of every box in it; or there is no telling.
    enum class Part { None, Some, All };
    /// The planes around the volume, a bit each.
    using Planes = unsigned int;
    static constexpr Planes allPlanes = 0x3F;
    /// @param half    of the box's size
    /// @param reach   pixels, finite, not below 0
    /// @param planes  those to look at; afterwards those that there is no telling of, for boxes in this one
    Part partOf(const glm::dvec3& center, const glm::dvec3& half, double reach, Planes& planes) const;
    /// The same planes so many pixels further out: for boxes of which it counts only whether their part is
    /// another than none.
    Border border(double reach, Planes planes) const;
    /// Whether the whole box is seen in the pixels; false for one that is null or invalid.
    bool holds(const gmx::BoundingBox& box) const;
    /// The pixels that the box may cover, with `reach` pixels around it, in the picture or beyond it; an
    /// empty rectangle where that cannot be said, because the box reaches behind the eye or is not valid.
    QRect pixelsOf(const gmx::BoundingBox& box, double reach) const;

private:
    // A point p lies on the seen side where dot(side, (p, 1)) >= 0; `reach` pixels further out, where
    // dot(side + reach * outwards, (p, 1)) >= 0.
    struct Plane
    {
        glm::dvec4 side;
        glm::dvec4 outwards;
    };

    std::array<glm::dvec3, 4> m_toPixels; // columns: from (x, y, z, 1) to pixels times w, and w
    std::array<Plane, 6> m_planes;
};

/// Some planes around a volume. A plane's value at a point is below 0 where the point is not seen.
class PictureVolume::Border
{
public:
    /// @param half  of the box's size
    bool leavesOut(const glm::dvec3& center, const glm::dvec3& half) const
    {
        for (std::size_t i = 0; i < m_count; ++i) {
            const double spread = spreadOf(m_planes[i], half);
            const double highest = valueAt(m_planes[i], center) + spread;
            if (highest < 0.0 && highest < -toleranceOf(m_planes[i], center, spread)) return true;
        }
        return false;
    }

private:
    friend class PictureVolume;

    static double valueAt(const glm::dvec4& plane, const glm::dvec3& point)
    {
        return plane.x * point.x + plane.y * point.y + plane.z * point.z + plane.w;
    }
    /// How far its values over a box are from the one at the centre, at most.
    static double spreadOf(const glm::dvec4& plane, const glm::dvec3& half)
    {
        return std::abs(plane.x) * half.x + std::abs(plane.y) * half.y + std::abs(plane.z) * half.z;
    }
    /// How far they may be off. Of the size of the terms that cancel out, because what is drawn is worked out
    /// in single precision.
    static double toleranceOf(const glm::dvec4& plane, const glm::dvec3& center, double spread)
    {
        return 1e-5 * (std::abs(plane.x * center.x) + std::abs(plane.y * center.y) +
                       std::abs(plane.z * center.z) + spread + std::abs(plane.w));
    }

    std::array<glm::dvec4, 6> m_planes;
    std::size_t m_count = 0;
};
