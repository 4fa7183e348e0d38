#pragma once

#include <Viewer3dModule/drawables/MeshData.h>
#include <framework/model/FeatureElement.h>

struct FeatureStyle;

/// The areas of a feature: its rings as filled polygons, or raised as prisms with a roof.
namespace FeatureAreas {

/// The height of prisms, in model units: the property "height", otherwise 3 for each of "building:levels";
/// numbers, or text that is one. 0 where there is none above 0, and in features without rings.
double heightOf(const FeatureElement& feature);
/// The geometry with the rings of raised polygons where the roofs are: at the height above the lowest point
/// of the polygon, but no lower than its highest.
std::vector<FeatureElement::Part> raised(const FeatureElement& feature);
/// Box of the geometry, roofs included; model coordinates.
gmx::BoundingBox boundsOf(const FeatureElement& feature);
/// Whether anything is filled in this style.
bool areDrawn(const FeatureElement& feature, const FeatureStyle& style);
/// Floors without walls, or walls and roofs. The colours are those of the style. A polygon without area is
/// left out, with a line in the log.
MeshData meshOf(const FeatureElement& feature, const FeatureStyle& style, const glm::dvec3& origin);

} // namespace FeatureAreas
