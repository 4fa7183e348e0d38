#pragma once

#include <framework/surf/CSurface.h>

namespace surf {

/// Contours in a plane, for tessellate().
struct FlatContours
{
    /// Corners of all contours, one contour after the other, as numbers of points.
    std::vector<std::uint32_t> corners;
    /// Where each contour ends in corners.
    std::vector<std::size_t> ends;
    /// How far apart things are that touch.
    double tolerance;
    /// Normal of the plane, any length.
    glm::dvec3 normal;
};

/// What tessellate() found.
struct Tessellation
{
    std::vector<Triangle> triangles;
    std::vector<Crossing> crossings;
    QString failure; ///< why there are no triangles; null otherwise and when the work was canceled
    bool isCanceled = false;
};

/// Divides the region that is within an odd number of the contours into triangles.
/// @param points            finite positions near the origin; those of crossings are appended
/// @param maximumCrossings  -1: 100,000 and 16 a corner, by an estimate beforehand
/// @param progress          may be null
Tessellation tessellate(std::vector<glm::dvec3>& points, FlatContours contours, std::int64_t maximumCrossings,
                        const ksp::StagedProgress* progress);

} // namespace surf
