#include <viewer/elements/MeshItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <glm/gtc/matrix_transform.hpp>

MeshItem::MeshItem(MeshElement* element)
    : Graphics3dItem(element)
{
    takeNode();
}

MeshItem::~MeshItem() = default;

void MeshItem::takeNode()
{
    auto* element = static_cast<MeshElement*>(getModelElement());
    if (element && element->getNode()) m_node = element->takeNode();
}

void MeshItem::updateDataImpl()
{
    takeNode();
    if (m_node && scene())
        setTransform(glm::mat4(glm::translate(scene()->modelToSceneTransform(), m_node->getOrigin())), false);
}

int MeshItem::getDefaultDrawerType() const
{
    return m_node ? m_node->getDrawerType() : DrawerType::Mesh;
}

Drawable3dPrimitive::GeometryInfo MeshItem::getGeometryInfo()
{
    return m_node ? m_node->getGeometryInfo() : GeometryInfo();
}

gmx::BoundingBox MeshItem::sceneBoundingBox() const
{
    if (!m_node || !scene()) return {};
    return m_node->getBounds().transformed(scene()->modelToSceneTransform());
}

void MeshItem::draw(const PaintContext& context)
{
    if (!m_node || !context.drawer) return;
    m_node->draw(context, 1);
}
