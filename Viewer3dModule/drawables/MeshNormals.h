#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/drawables/MeshData.h>

/// Gives every vertex of the mesh's triangles that has no normal (there are no normals, or its own is zero or
/// not finite) the mean of its faces' normals, weighted by their areas. Faces without an area count for
/// nothing; a vertex of such faces only keeps a zero normal. A mesh without triangles stays as it is. All
/// indices of triangle parts must be below positions.size().
VIEWER3DMODULE_EXPORT void completeNormals(MeshData& data);
