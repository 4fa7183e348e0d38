#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

class QSize;

/// Replaces depth-buffer values by distances from the eye along the camera's axis (-Z / W of a pixel mapped
/// back through the inverse of the projection; see Scene3d::depthValueToFrustumZ for the layout of depths);
/// where the depth is exactly 1, nothing was drawn and NaN is stored. Computed in doubles. Needs no context.
/// @param values      width * height depths, rows from the bottom up
/// @param projection  eye to clip coordinates; any matrix that has an inverse
VIEWER3DMODULE_EXPORT void depthsToDistances(float* values, const QSize& size, const glm::dmat4& projection);
