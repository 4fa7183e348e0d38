#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/drawables/MeshData.h>

/// Gives every vertex of the mesh's triangles that has no normal (there are no normals, or its own is zero or
/// not finite) the mean of its faces' normals, weighted by their areas. Faces that differ by more than about
/// 45 degrees do not share a normal: each side of such a crease gets a vertex of its own, appended as a copy,
/// so that edges of buildings stay sharp and terrain stays smooth. Faces without an area count for nothing; a
/// vertex of such faces only keeps a zero normal. A mesh without triangles stays as it is. Indices stay in
/// their places and change at most to copies; all of triangle parts must be below positions.size(). Takes
/// time and memory in proportion to the mesh.
VIEWER3DMODULE_EXPORT void completeNormals(MeshData& data);
