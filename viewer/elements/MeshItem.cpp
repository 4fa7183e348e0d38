#include <viewer/elements/MeshItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>

MeshItem::MeshItem(MeshElement* element, std::optional<float> pointSize)
    : Graphics3dItem(element)
    , m_pointSize(pointSize)
{
    takeNode();
}

MeshItem::~MeshItem() = default;

void MeshItem::takeNode()
{
    auto* element = static_cast<MeshElement*>(getModelElement());
    if (!element || !element->getNode()) return;
    m_node = element->takeNode();
    m_node->promiseFor(*this);
    if (!m_pointSize) return;
    m_node->setPointSize(*m_pointSize);
    setPixelReach(std::max(pixelReach(), *m_pointSize / 2.0f + 1.0f));
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

bool MeshItem::describeDrawing(ItemDrawing& drawing)
{
    return m_node && m_node->describeDrawing(drawing);
}

Drawable3dPrimitive::GeometryInfo MeshItem::getGeometryInfo()
{
    return m_node ? m_node->getGeometryInfo() : GeometryInfo();
}

std::vector<glm::vec3> MeshItem::getVertices()
{
    if (!m_node) return {};
    const CurrentContextGuard callers;
    if (scene()) scene()->makeCurrent();
    return m_node->getVertices();
}

int MeshItem::getNodePointsCount() const
{
    return m_node ? m_node->getVertexCount() : 0;
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
