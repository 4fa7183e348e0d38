#pragma once

#include <Viewer3dModule/drawables/IDrawableNode3d.h>
#include <Viewer3dModule/drawables/MeshData.h>

/// A mesh, line set or point set of a file. Uploads at the first draw and then gives up the copy in memory;
/// vertices without normals get those of their faces' area-weighted mean when the mesh has triangles.
class VIEWER3DMODULE_EXPORT MeshNode3d : public IDrawableNode3d
{
public:
    explicit MeshNode3d(MeshData data);
    /// Frees its OpenGL objects; a context of the share group must be current.
    ~MeshNode3d() override;

    void draw(const PaintContext& context, int instances) override;
    glm::dvec3 getOrigin() const override;
    gmx::BoundingBox getBounds() const override;
    Drawable3dPrimitive::GeometryInfo getGeometryInfo() const override;
    int getDrawerType() const override;
    QString getName() const override;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
