#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <functional>
#include <memory>
#include <vector>

/// Cuts polylines against a box. Box and polylines are in the same coordinates, whichever the caller chooses.
///
/// A segment whose two ends count as inside is taken whole; any other is cut exactly at the sides of the box.
/// A point counts as inside when none of its coordinates is below the box's minimum and when, for each
/// coordinate of the maximum, the point as a whole does not come after a certain corner in the order of x,
/// then y, then z: the unit point of the axis whose number that coordinate is, cut to an integer ((1, 0, 0)
/// for 0, (0, 1, 0) for 1, (0, 0, 1) for 2), else (0, 0, 0). So with the first box (0.5, 0, 0) is outside and
/// (-0.5, 7, 0) inside. Callers depend on these answers.
class VIEWER3DMODULE_EXPORT IPolyline3dClipper
{
public:
    virtual ~IPolyline3dClipper() = default;
    /// The box; at first the cube of normalised device coordinates, -1 to 1.
    virtual void setBox(const glm::dvec3& min, const glm::dvec3& max) = 0;
    /// Hands every connected inside piece of at least two points to output, in the polyline's direction.
    /// Pieces whose ends are no more than 0.001 apart go on as one. The vector is the clipper's and is used
    /// again for the next piece: output must copy what it keeps.
    virtual void clip(const std::vector<glm::dvec3>& polyline,
                      std::function<void(const std::vector<glm::dvec3>&)> output) = 0;
};

/// A clipper with the first box.
VIEWER3DMODULE_EXPORT std::shared_ptr<IPolyline3dClipper> makePolyline3dClipper();
