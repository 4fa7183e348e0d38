#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <memory>
#include <vector>

namespace gmx {
class IFence3D;
}
namespace ksp {
class CQtArchive;
}

/// A volume that limits what the 3D view shows. Fences live in model coordinates, here called the world, in
/// double precision and the project's length unit. They need no OpenGL context.
class VIEWER3DMODULE_EXPORT Fence3DObject
{
public:
    /// The kinds, with the numbers by which the shaders know them; 0 stands for no fence.
    enum Type { Frustum3D = 1, SphereFence = 2, PrismFence = 3 };

    virtual ~Fence3DObject();

    virtual Type getType() const = 0;
    /// Whether there is nothing to limit the view by. Views treat an empty fence as none.
    virtual bool empty() const = 0;
    /// Reads or writes the fence. Throws ksp::CFileException when the archive's bytes do not hold a fence of
    /// this kind; this one is unchanged then.
    virtual void serialize(ksp::CQtArchive& archive) = 0;
    /// Whether the world point lies in the fence; false for a point with a NaN.
    virtual bool contains(const glm::dvec3& point) const = 0;
    /// A copy of the fence as it is now, for points of another frame. modelToScene maps the world to that
    /// frame, without perspective (its last row is 0, 0, 0, 1); with the identity the points are the world's.
    /// Never null: that of an empty fence contains what the empty fence does, nothing. So does the one that a
    /// matrix without inverse gives.
    virtual std::shared_ptr<gmx::IFence3D> getIFence3D(const glm::dmat4& modelToScene) const = 0;
    /// Whether any part of a point, a segment or a triangle, given by its one, two or three corners in the
    /// world, lies in the fence; what only touches its border may count. False where a corner is not finite.
    virtual bool reaches(const std::vector<glm::dvec3>& corners) const = 0;

protected:
    Fence3DObject() = default;
    Fence3DObject(const Fence3DObject&) = default;
    Fence3DObject& operator=(const Fence3DObject&) = default;
};
