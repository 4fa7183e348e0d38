#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <framework/gmx/BoundingBox.h>

#include <QtCore/QRect>
#include <glm/glm.hpp>

#include <array>

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
    /// What of a box can be seen in the pixels: nothing, also not of what is drawn up to `reach` pixels
    /// around it; all of it and of every box in it; or there is no telling.
    enum class Part { None, Some, All };
    /// The planes around the volume, a bit each.
    using Planes = unsigned int;
    static constexpr Planes allPlanes = 0x3F;
    /// @param half    of the box's size
    /// @param reach   pixels, finite
    /// @param planes  those to look at; afterwards those that there is no telling of, for boxes in this one
    Part partOf(const glm::dvec3& center, const glm::dvec3& half, double reach, Planes& planes) const;
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
        glm::dvec3 spread; // of its values over a box, for each unit of half of its size
    };

    glm::dmat4 m_viewProjection;
    glm::dvec2 m_size;
    std::array<Plane, 6> m_planes;
};
