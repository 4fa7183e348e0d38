#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/Polyline3dPrimitive.h>

/// Many polylines in one buffer, drawn with one pen.
class VIEWER3DMODULE_EXPORT PolyPolyline3dItem : public Drawable3dItem
{
public:
    /// drawerId is the visibility type of the scene drawer that setSceneDrawer binds to; 0: the default
    /// drawer of the type.
    PolyPolyline3dItem(int drawerId, int defaultDrawerType);
    /// Frees the buffer; a context of the share group must be current.
    ~PolyPolyline3dItem() override;

    void setDefaultDrawerType(int type) { m_defaultDrawerType = type; }
    int getDefaultDrawerType() const override { return m_defaultDrawerType; }
    const QPen& getPen() const { return m_pen; }
    void setPen(const QPen& pen);
    /// The item whose highlight this one shows; not owned, may be null.
    void setOwner(const Drawable3dItem* owner) { m_owner = owner; }
    bool isHighlighted() const override;

    /// Binds the item to the scene's drawer; nothing for null.
    void setSceneDrawer(Scene3d* scene);
    /// Uploads the vertices (item coordinates) of all polylines; counts are the numbers of vertices of each,
    /// in order, whose sum is the number of points. A context of the share group must be current: without one
    /// the buffer stays as it was and only the counts are taken.
    void setPoints(std::vector<glm::vec3> points, std::vector<int> counts);
    /// The vertices, read back in a context of the share group (none without one), and the counts.
    std::pair<std::vector<glm::vec3>, std::vector<int>> getData();
    /// Draws nothing until the next setPoints; the buffer stays.
    void clear();
    std::vector<glm::vec3> getVertices() override { return m_primitive.getVertices(); }
    glm::vec3 getVertex(int index) override { return m_primitive.getVertex(index); }
    GeometryInfo getGeometryInfo() override;

    /// Draws the polylines; public for elements' items that draw one as a part of theirs.
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override;
    bool describeDrawing(ItemDrawing& drawing) override;

private:
    int getVertexCount() const override { return m_primitive.getVertexCount(); }
    unsigned int getVBO() const override { return m_primitive.getVBO(); }

    Polyline3dPrimitive m_primitive{Polyline3dPrimitive::Storage::Shared};
    std::vector<int> m_counts;
    int m_drawerId;
    int m_defaultDrawerType;
    const Drawable3dItem* m_owner = nullptr;
    QPen m_pen;
    LinePen m_linePen{m_pen};
};
