#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <functional>
#include <memory>
#include <vector>

/// Cuts polylines against a box.
class VIEWER3DMODULE_EXPORT IPolyline3dClipper
{
public:
    virtual ~IPolyline3dClipper() = default;
    /// The box; at first the cube of normalised device coordinates, -1 to 1.
    virtual void setBox(const glm::dvec3& min, const glm::dvec3& max) = 0;
    /// Hands every connected inside piece of at least two points to output, which must copy what it keeps.
    virtual void clip(const std::vector<glm::dvec3>& polyline,
                      std::function<void(const std::vector<glm::dvec3>&)> output) = 0;
};

VIEWER3DMODULE_EXPORT std::shared_ptr<IPolyline3dClipper> makePolyline3dClipper();
