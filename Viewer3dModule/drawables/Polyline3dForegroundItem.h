#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/Polyline3dPrimitive.h>

#include <QtGui/QColor>

/// One polyline that is being edited: points in scene coordinates in doubles, a colour, a width, a closing
/// flag. The points are uploaded at the first draw after a change, in the context of the pass; getVertices
/// and getVertex give what was uploaded last.
class VIEWER3DMODULE_EXPORT Polyline3dForegroundItem : public Drawable3dItem
{
public:
    /// No context needs to be current here, but one of the share group when the item is destroyed.
    Polyline3dForegroundItem(int defaultDrawerType, std::vector<glm::dvec3> points);

    const std::vector<glm::dvec3>& getPoints() const { return m_points; }
    void setPoints(std::vector<glm::dvec3> points);
    void pushPoint(const glm::dvec3& point);
    /// Removes the last point, if there is one.
    void popPoint();
    bool isClosed() const { return m_closed; }
    void setClosed(bool closed);
    const glm::dmat4& getAdditionalTransform() const { return m_additionalTransform; }
    /// Applied to every point, in doubles, before the upload.
    void setAdditionalTransform(const glm::dmat4& transform);

    QColor getColor() const { return m_color; }
    void setColor(const QColor& color) { m_color = color; }
    /// Pixels.
    int getLineWidth() const { return m_lineWidth; }
    void setLineWidth(int width) { m_lineWidth = width; }

    bool hasTransparency() const override;
    int getDefaultDrawerType() const override { return m_defaultDrawerType; }
    GeometryInfo getGeometryInfo() override;

protected:
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override;
    /// Uploads the points.
    virtual void update(const PaintContext& context);

private:
    int getVertexCount() const override { return m_primitive.getVertexCount(); }
    unsigned int getVBO() const override { return m_primitive.getVBO(); }
    bool drawsBackToStart() const;

    std::vector<glm::dvec3> m_points;
    QColor m_color;
    int m_lineWidth = 1;
    glm::dmat4 m_additionalTransform = glm::dmat4(1.0);
    Polyline3dPrimitive m_primitive;
    bool m_dirty = true;
    bool m_closed = false;
    int m_defaultDrawerType;
};
