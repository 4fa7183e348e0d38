#include <viewer/elements/CityObjectItem.h>

#include <viewer/elements/CityMesh.h>
#include <viewer/elements/ElementLabel.h>
#include <viewer/elements/LabelDrawer.h>
#include <viewer/elements/labelText.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CityObjectElement.h>

#include <glm/gtc/matrix_transform.hpp>

CityObjectItem::CityObjectItem(CityObjectElement* element, std::optional<float> pointSize)
    : Graphics3dItem(element)
    , m_pointSize(pointSize)
{
    constexpr float ownPointSize = 6.0f; // pixels
    setPixelReach(pointSize.value_or(ownPointSize) / 2.0f + 1.0f);
}

CityObjectItem::~CityObjectItem() = default;

void CityObjectItem::updateData(ISubject* subject)
{
    m_isChanged = true;
    Graphics3dItem::updateData(subject);
}

void CityObjectItem::updateDataImpl()
{
    const auto* element = static_cast<CityObjectElement*>(getModelElement());
    if (!element || !scene()) return;
    if (m_isChanged) {
        m_node = std::make_unique<MeshNode3d>(CityMesh::of(*element, CityMesh::Pictures::With));
        m_node->promiseFor(*this);
        if (m_pointSize) m_node->setPointSize(*m_pointSize);
        renewLabel(*element);
    }
    m_isChanged = false;
    setTransform(glm::mat4(glm::translate(scene()->modelToSceneTransform(), m_node->getOrigin())), false);
    if (m_label) m_label->setTransform(Drawable3dItem::getTransform(), false);
}

void CityObjectItem::updateVisibility()
{
    Graphics3dItem::updateVisibility();
    if (m_label) m_label->setVisible(Drawable3dItem::isVisible());
}

void CityObjectItem::renewLabel(const CityObjectElement& element)
{
    m_label.reset();
    LabelDrawer* labels = LabelDrawer::find(*scene());
    const QString text = labels ? labelText(element, element.getSourceId(), labels->property()) : QString();
    const gmx::BoundingBox box = element.getGeometry().getBounds();
    if (text.isEmpty() || !box.isValid()) return;
    // the item's own origin is the middle of the box
    const glm::dvec3 top(0.0, 0.0, box.getMax().z - box.getCenter().z);
    m_label = std::make_unique<ElementLabel>(
        *this, *labels, text, [top] { return top; }, std::nullopt);
    m_label->setVisible(Drawable3dItem::isVisible());
}

int CityObjectItem::getDefaultDrawerType() const
{
    return DrawerType::Mesh;
}

bool CityObjectItem::describeDrawing(ItemDrawing& drawing)
{
    return m_node && m_node->describeDrawing(drawing);
}

Drawable3dPrimitive::GeometryInfo CityObjectItem::getGeometryInfo()
{
    return m_node ? m_node->getGeometryInfo() : GeometryInfo();
}

std::vector<glm::vec3> CityObjectItem::getVertices()
{
    if (!m_node) return {};
    const CurrentContextGuard callers;
    if (scene()) scene()->makeCurrent();
    return m_node->getVertices();
}

int CityObjectItem::getNodePointsCount() const
{
    return m_node ? m_node->getVertexCount() : 0;
}

gmx::BoundingBox CityObjectItem::sceneBoundingBox() const
{
    return m_node && scene() ? m_node->getBounds().transformed(scene()->modelToSceneTransform())
                             : gmx::BoundingBox();
}

void CityObjectItem::draw(const PaintContext& context)
{
    if (m_node && context.drawer) m_node->draw(context, 1);
}
