#pragma once

#include <framework/gmx/BoundingBox.h>

#include <glm/glm.hpp>

#include <optional>
#include <vector>

/// The box, in the scene, of these points of the model: of the corners or outermost points of a fence. Larger
/// by what a test for being inside may be off, which takes a scene point to the model in doubles. Null
/// without points, no value when one is mapped to something that is not finite.
std::optional<gmx::BoundingBox> fenceBox(const std::vector<glm::dvec3>& points,
                                         const glm::dmat4& modelToScene);
