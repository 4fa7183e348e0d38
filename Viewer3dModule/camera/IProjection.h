#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <memory>

class QSizeF;
namespace ksp {
class IArchive;
}

/// How eye space (right-handed, looking along -z) becomes clip space (z in [-1, 1]), with a zoom of its own.
/// Plain values; they need no OpenGL context.
class VIEWER3DMODULE_EXPORT IProjection
{
public:
    enum Projection { Parallel = 0, Central = 1 };

    virtual ~IProjection();

    virtual Projection getType() const = 0;
    /// The matrix for a viewport in pixels and the distances, in scene units, of the far and the near plane
    /// from the eye: far comes before near. Nothing is guarded: an empty viewport gives infinities or NaN.
    virtual glm::dmat4 calcProjectionMatrix(const QSizeF& viewport, double zFar, double zNear) const = 0;
    /// Zooms by a step in the projection's own unit; a positive one shows more of the scene.
    virtual void zoom(double delta) = 0;
    /// Shows less of the scene, by one step.
    virtual void zoomIn() = 0;
    /// Shows more of the scene, by one step.
    virtual void zoomOut() = 0;
    /// The zoom as one number, whose meaning is the projection's own; not limited.
    virtual void setZoom(double zoom) = 0;
    virtual double getZoom() const = 0;
    /// Reads or writes the zoom state. Throws ksp::CFileException when the archive's bytes do not hold one;
    /// the projection is unchanged then.
    virtual void serialize(ksp::IArchive& archive) = 0;
    /// A copy, whole.
    virtual std::unique_ptr<IProjection> clone() const = 0;

protected:
    /// Reads or writes a zoom state that is one number, which is unchanged when reading throws.
    static void serializeNumber(ksp::IArchive& archive, double& number);

    IProjection() = default;
    IProjection(const IProjection&) = default;
    IProjection& operator=(const IProjection&) = default;
};
