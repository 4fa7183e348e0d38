#include <Viewer3dModule/drawables/Polyline3dForegroundItem.h>

#include <Viewer3dModule/drawables/ItemLook.h>
#include <Viewer3dModule/drawers/PaintContext.h>

#include <utility>

Polyline3dForegroundItem::Polyline3dForegroundItem(int defaultDrawerType, std::vector<glm::dvec3> points)
    : m_points(std::move(points))
    , m_defaultDrawerType(defaultDrawerType)
{
    setDrawsByPrimitives(true);
}

void Polyline3dForegroundItem::setPoints(std::vector<glm::dvec3> points)
{
    m_points = std::move(points);
    m_dirty = true;
}

void Polyline3dForegroundItem::pushPoint(const glm::dvec3& point)
{
    m_points.push_back(point);
    m_dirty = true;
}

void Polyline3dForegroundItem::popPoint()
{
    if (m_points.empty()) return;
    m_points.pop_back();
    m_dirty = true;
}

void Polyline3dForegroundItem::setClosed(bool closed)
{
    m_closed = closed;
    m_dirty = true;
}

void Polyline3dForegroundItem::setAdditionalTransform(const glm::dmat4& transform)
{
    m_additionalTransform = transform;
    m_dirty = true;
}

bool Polyline3dForegroundItem::hasTransparency() const
{
    return m_color.alpha() < 255;
}

Drawable3dPrimitive::GeometryInfo Polyline3dForegroundItem::getGeometryInfo()
{
    GeometryInfo info;
    if (m_points.size() == 1)
        info.pointCount = 1;
    else if (m_points.size() > 1)
        info.lineCount = static_cast<std::uint32_t>(m_points.size() - (drawsBackToStart() ? 0 : 1));
    return info;
}

bool Polyline3dForegroundItem::drawsBackToStart() const
{
    return m_closed && m_points.size() > 2;
}

void Polyline3dForegroundItem::update(const PaintContext&)
{
    if (!getGLFunctions()) return;
    std::vector<glm::vec3> vertices;
    vertices.reserve(m_points.size() + 1);
    for (const glm::dvec3& point : m_points)
        vertices.emplace_back(m_additionalTransform * glm::dvec4(point, 1.0));
    if (drawsBackToStart()) vertices.push_back(vertices.front());
    m_primitive.setVertices(vertices);
    m_dirty = false;
}

void Polyline3dForegroundItem::draw(const PaintContext& context)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl) return;
    if (m_dirty) update(context);
    if (context.program) {
        ItemLook look(*gl, context);
        look.setPenWidth(static_cast<float>(m_lineWidth));
        look.setColor(m_color);
    }
    m_primitive.draw(context, 1);
}
