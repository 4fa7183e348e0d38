#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <Viewer3dModule/drawables/SurfaceBuffers.h>
#include <framework/surf/CSurface.h>

#include <QtCore/QString>
#include <QtGui/QColor>

/// A flat region within one or more contours, filled; or its contours as lines.
///
/// The region is what lies within an odd number of contours, in any plane. It is divided into triangles when
/// the vertices are set. Where contours cross one another, vertices are made; they come after those that were
/// given, and get texture coordinates between those of the edges' ends. Whoever owns the primitive binds the
/// program and calls setColor before draw.
class VIEWER3DMODULE_EXPORT Plane3dSegmentPrimitive : public Drawable3dPrimitive
{
public:
    Plane3dSegmentPrimitive() = default;
    /// Deletes the buffers; a context of the share group must be current. The texture is not owned.
    ~Plane3dSegmentPrimitive() override = default;
    Plane3dSegmentPrimitive(const Plane3dSegmentPrimitive&) = delete;
    Plane3dSegmentPrimitive& operator=(const Plane3dSegmentPrimitive&) = delete;

    /// What messages about the region call it; by default they tell the number of its points.
    void setName(const QString& name) { m_name = name; }
    /// Replaces the region. A context of the share group must be current, in the other setters too: without
    /// one nothing changes. A region that cannot be divided draws nothing, and one line in the log says why.
    /// @param points         of all contours, one contour after the other
    /// @param contourCounts  of points of each contour, none where negative; points beyond their sum are
    ///                       in no contour
    void setVertices(const std::vector<glm::vec3>& points, const std::vector<int>& contourCounts);
    /// The same at z = 0.
    void setVertices(const std::vector<glm::vec2>& points, const std::vector<int>& contourCounts);
    /// Moves one vertex; the triangles stay. An index that is not there is ignored.
    void setVertex(int index, const glm::vec3& vertex);
    /// Sets the texture that is bound to unit 0 while drawing, and the coordinates in it; ignored unless
    /// there is one for each point. It is not used any more when the number of points changes.
    /// @param texture  name of a two-dimensional texture, not owned; 0 for none
    void setTexture(unsigned int texture, const std::vector<glm::vec2>& coords);
    /// Sets the colour in the context's program, which must be in use.
    void setColor(const PaintContext& context, const QColor& color);

    /// Draws nothing where points only are asked for, the contours where lines only are, else the surface
    /// (also where lines and triangles are); a surface is left out where the program takes points or lines
    /// only.
    void draw(const PaintContext& context, int instances) override;
    /// The triangles.
    GeometryInfo getGeometryInfo() override;

    /// Of the points given.
    int getVertexCount() const override { return m_buffers.vertexCount(); }
    unsigned int getVBO() const override { return m_buffers.name(); }

private:
    void updateIndices(const std::vector<glm::vec3>& points, const std::vector<int>& contourCounts);
    bool triangulate(surf::CSurface& surface, const std::vector<glm::vec3>& points,
                     const std::vector<int>& counts) const;
    QString nameOf(std::size_t pointCount) const;
    void uploadTexCoords(OpenGLFunctions& gl);

    QString m_name;
    SurfaceBuffers m_buffers;
    GlBuffer m_indices;
    int m_indexCount = 0;
    std::vector<int> m_contourCounts;
    std::vector<surf::Crossing> m_crossings;
    unsigned int m_texture = 0;
    std::vector<glm::vec2> m_texCoords; // of the points given
};
