#include <benchmarks/scene/LineItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/scene/Scene3d.h>

LineItem::LineItem(LineElement* element)
    : Graphics3dItem(element)
    , m_element(element)
{
    setDrawsOpaque(true);
    setDrawsByPrimitives(true);
    setShowsItemColors(true);
    setPixelReach(element->width() / 2.0f + 1.0f);
}

LineItem::~LineItem() = default;

void LineItem::updateDataImpl()
{
    const glm::dmat4 matrix = scene()->modelToSceneTransform() * glm::dmat4(m_element->matrix());
    const std::vector<glm::vec3> vertices = m_element->vertices();
    m_bounds.reset();
    for (const glm::vec3& vertex : vertices)
        m_bounds.unite(glm::dvec3(matrix * glm::dvec4(vertex, 1.0)));
    m_line.setVertices(vertices);
    m_pen = LinePen(QPen(m_element->color(), static_cast<double>(m_element->width())));
    setSolid(m_element->color().alpha() != 0);
    setOpaque(m_element->color().alpha() == 255);
    setTransform(glm::mat4(matrix), false);
}

int LineItem::getDefaultDrawerType() const
{
    return m_element->width() > 1.0f ? DrawerType::WideLines : DrawerType::Mono;
}

bool LineItem::describeDrawing(ItemDrawing& drawing)
{
    m_line.describe(drawing, QPen(m_element->color(), static_cast<double>(m_element->width())));
    return true;
}

void LineItem::draw(const PaintContext& context)
{
    m_line.setPen(context, m_pen);
    m_line.draw(context, 1);
}
