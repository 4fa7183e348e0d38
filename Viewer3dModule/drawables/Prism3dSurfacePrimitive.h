#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <Viewer3dModule/drawables/SurfaceBuffers.h>

#include <QtGui/QColor>

/// The walls of a vertical prism over a base polyline, from z = 0 to its height; neither floor nor roof. A
/// base whose last point repeats its first one is closed, any other stays open. Normals are horizontal: to
/// the right of the base's direction, so outwards where it runs counter-clockwise. Whoever owns the primitive
/// binds the program and calls setColor before draw.
class VIEWER3DMODULE_EXPORT Prism3dSurfacePrimitive : public Drawable3dPrimitive
{
public:
    Prism3dSurfacePrimitive() = default;
    /// Deletes the buffers; a context of the share group must be current. The texture is not owned.
    ~Prism3dSurfacePrimitive() override = default;
    Prism3dSurfacePrimitive(const Prism3dSurfacePrimitive&) = delete;
    Prism3dSurfacePrimitive& operator=(const Prism3dSurfacePrimitive&) = delete;

    /// Replaces the walls: six vertices, two triangles, between each point of the base and the next. Nothing
    /// changes for fewer than two points, and without a context of the share group, in the other setters too.
    /// @param base    their z is not used
    /// @param height  z of the upper edge
    void setVertices(const std::vector<glm::vec3>& base, float height);
    void setVertices(const std::vector<glm::vec2>& base, float height);
    /// Moves one vertex of the walls; an index that is not there is ignored.
    void setVertex(int index, const glm::vec3& vertex);
    /// Sets the texture that is bound to unit 0 while drawing, and the coordinates in it; ignored unless
    /// there is one for each vertex of the walls. It is not used any more when their number changes.
    /// @param texture  name of a two-dimensional texture, not owned; 0 for none
    void setTexture(unsigned int texture, const std::vector<glm::vec2>& coords);
    /// Sets the colour in the context's program, which must be in use.
    void setColor(const PaintContext& context, const QColor& color);

    /// Draws nothing where points only are asked for, a line through all vertices of the walls where lines
    /// only are, else the walls; they are left out where the program takes points or lines only.
    void draw(const PaintContext& context, int instances) override;
    /// The triangles.
    GeometryInfo getGeometryInfo() override;

    /// Of the walls' vertices.
    int getVertexCount() const override { return m_buffers.vertexCount(); }
    unsigned int getVBO() const override { return m_buffers.name(); }

private:
    void updateIndices(const std::vector<glm::vec3>& base, float height);

    SurfaceBuffers m_buffers;
};
