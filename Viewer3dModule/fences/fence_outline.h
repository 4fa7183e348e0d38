#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <optional>
#include <vector>

class Fence3DObject;

/// What shows a fence to the user and lets him take hold of it, for the fences of all kinds. World
/// coordinates, as the fences themselves. Nothing of an empty fence, and of one whose numbers are not finite.
namespace fence_outline {

using Strip = std::vector<glm::dvec3>;

/// Lines along the fence's borders: of a polygon swept into depth the near and the far outline and edges
/// between them, of a sphere the three circles about its centre along the axes. A fence without end has edges
/// of a given length, above 0, and no far outline. Of a polygon of very many points some have an edge.
VIEWER3DMODULE_EXPORT std::vector<Strip> strips(const Fence3DObject& fence, double endlessLength);

/// The points to take hold of: the handles of the near and of the far plane, the latter only where there is
/// one; of a sphere its centre and the point of it that lies in the direction of +x.
VIEWER3DMODULE_EXPORT std::vector<glm::dvec3> nodes(const Fence3DObject& fence);

/// The line that a node stays on when it is moved, by two different points; none for a sphere's, which go
/// anywhere.
VIEWER3DMODULE_EXPORT std::optional<std::pair<glm::dvec3, glm::dvec3>> lineOf(const Fence3DObject& fence,
                                                                              std::size_t node);

/// Moves a node to the point, or as near to it as its line comes: an end plane (movePlane), a sphere's centre
/// with the sphere, or the sphere's surface. Returns the node's number afterwards: planes that pass each
/// other trade places. Nothing moves for a point that is not finite, a node that is not there and a sphere
/// that would have the radius 0.
VIEWER3DMODULE_EXPORT std::size_t moveNode(Fence3DObject& fence, std::size_t node, const glm::dvec3& point);

} // namespace fence_outline
