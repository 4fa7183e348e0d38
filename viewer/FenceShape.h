#pragma once

#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/PrismFence.h>
#include <Viewer3dModule/fences/SphereFence.h>

#include <variant>

class CProject;
class Fence3dItem;

/// A fence as a value, in model coordinates: none, or one of the three shapes.
using FenceShape = std::variant<std::monostate, Frustum3D, SphereFence, PrismFence>;

/// What the element holds now.
FenceShape shapeOf(const Fence3dItem& element);
/// Gives the element a copy of the shape and tells its observers.
void setShape(Fence3dItem& element, const FenceShape& shape);
/// The element of the project that holds its fence. Owned by the project, which replaces it when it is opened
/// or cleared. Throws ksp::CommonError for a project without, which one made by a Host is not.
Fence3dItem& fenceElement(const CProject& project);
