#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>

#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <utility>

PolyPolyline3dItem::PolyPolyline3dItem(int drawerId, int defaultDrawerType)
    : m_drawerId(drawerId)
    , m_defaultDrawerType(defaultDrawerType)
{
    setDrawsByPrimitives(true);
}

PolyPolyline3dItem::~PolyPolyline3dItem() = default;

bool PolyPolyline3dItem::isHighlighted() const
{
    return m_owner && m_owner->isHighlighted();
}

void PolyPolyline3dItem::setPen(const QPen& pen)
{
    m_pen = pen;
    m_linePen = LinePen(pen);
    drawingChanged();
}

void PolyPolyline3dItem::setSceneDrawer(Scene3d* scene)
{
    if (!scene) return;
    const int type = getDefaultDrawerType();
    if (m_drawerId != 0) scene->addDrawer(m_drawerId, type);
    setDrawer(scene->getDrawer(m_drawerId != 0 ? m_drawerId : type, type));
}

void PolyPolyline3dItem::setPoints(std::vector<glm::vec3> points, std::vector<int> counts)
{
    m_primitive.setVertices(points);
    m_counts = std::move(counts);
    drawingChanged();
}

std::pair<std::vector<glm::vec3>, std::vector<int>> PolyPolyline3dItem::getData()
{
    return {m_primitive.getVertices(), m_counts};
}

void PolyPolyline3dItem::clear()
{
    m_counts.clear();
    drawingChanged();
}

Drawable3dPrimitive::GeometryInfo PolyPolyline3dItem::getGeometryInfo()
{
    GeometryInfo info;
    for (const int count : m_counts)
        if (count > 1) info.lineCount += static_cast<std::uint32_t>(count - 1);
    return info;
}

void PolyPolyline3dItem::draw(const PaintContext& context)
{
    if ((context.primitives & PrimitiveBit::Lines) == 0) return;
    m_primitive.setPen(context, m_linePen);
    m_primitive.drawStrips(context, m_counts);
    m_primitive.resetPen(context);
}

bool PolyPolyline3dItem::describeDrawing(ItemDrawing& drawing)
{
    m_primitive.describeStrips(drawing, m_pen, m_counts);
    return true;
}
