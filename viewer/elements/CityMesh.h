#pragma once

#include <Viewer3dModule/drawables/MeshData.h>

class CityObjectElement;

/// Makes the mesh of a city object: its surfaces as triangles with one normal each, its lines and points.
namespace CityMesh {

/// Whether the pictures that surfaces show are read as well.
enum class Pictures { Without, With };

/// The origin is the middle of the object, so that objects up to 16 km long keep the millimetre. Surfaces
/// without area are left out; the log counts them in one line.
MeshData of(const CityObjectElement& element, Pictures pictures);

} // namespace CityMesh
