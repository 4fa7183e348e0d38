#pragma once

#include <Viewer3dModule/drawables/IDrawableNode3d.h>
#include <Viewer3dModule/drawables/MeshData.h>

/// A mesh, line set or point set of a file. Uploads at the first draw and then gives up the copy in memory.
/// Vertices of triangles that come without normals get them from their faces, see completeNormals. Parts
/// without indices are dropped, and so, with a line in the log, are parts whose indices are out of range.
///
/// The colour of a part is the first of these that there is: the texels of its image, where the mesh has
/// texture coordinates; the vertices' colours; the part's own colour; grey (200, 200, 200). A highlighted
/// item shows the selection colour instead. Triangles are lit where the view's light is on, lines and points
/// never; points have the size of their part, lines are 1 pixel wide.
class VIEWER3DMODULE_EXPORT MeshNode3d : public IDrawableNode3d
{
public:
    explicit MeshNode3d(MeshData data);
    /// Frees its OpenGL objects; a context of the share group must be current.
    ~MeshNode3d() override;

    /// Draws the parts of the kinds that the pass takes. A context of the share group must be current, and
    /// context.vertexArray one of its own; the first draw uploads. Leaves no texture bound and texture unit 0
    /// active.
    void draw(const PaintContext& context, int instances) override;
    /// Not of a mesh with texture coordinates, or with parts of several kinds. May upload, as draw does.
    bool describeDrawing(ItemDrawing& drawing) override;
    glm::dvec3 getOrigin() const override;
    gmx::BoundingBox getBounds() const override;
    Drawable3dPrimitive::GeometryInfo getGeometryInfo() const override;
    int getDrawerType() const override;
    QString getName() const override;
    /// As MeshData had them; copies that were made for normals are not among them. Leaves the buffer bound.
    std::vector<glm::vec3> getVertices() const override;
    int getVertexCount() const override;
    /// Of all points of the mesh, in place of the sizes of their parts. The drawer of the item that draws the
    /// node is told of the change by whoever makes it (Item3dDrawer::updateItem).
    void setPointSize(float pixels) override;
    /// As far as can be told without looking at every texel: not with images that have an alpha channel.
    bool isSolid() const override;
    bool isOpaque() const override;
    bool showsItemColors() const override;
    bool isUntextured() const override;
    bool isUnlit() const override;
    /// Of at least 10,000 triangles a part, on average.
    bool isLargeSurface() const override;
    bool drawsByPrimitives() const override { return true; }

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
