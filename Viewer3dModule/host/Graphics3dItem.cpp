#include <Viewer3dModule/host/Graphics3dItem.h>

#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <framework/model/CFilterElement.h>
#include <framework/model/CModelElement.h>
#include <framework/model/CProjectModel.h>

#include <limits>

Graphics3dItem::Graphics3dItem(CModelElement* element)
    : InteractiveGraphicsItem(element)
{
    setHostItem(*this);
}

Graphics3dItem::~Graphics3dItem() = default;

std::vector<glm::vec3> Graphics3dItem::getVertices()
{
    return {};
}

glm::vec3 Graphics3dItem::getVertex(int index)
{
    const std::vector<glm::vec3> vertices = getVertices();
    if (index < 0 || static_cast<std::size_t>(index) >= vertices.size())
        return glm::vec3(std::numeric_limits<float>::quiet_NaN());
    return vertices[static_cast<std::size_t>(index)];
}

bool Graphics3dItem::isHighlighted() const
{
    return InteractiveGraphicsItem::isHighlighted();
}

unsigned int Graphics3dItem::getGlueMask() const
{
    const int count = getNodePointsCount();
    constexpr auto bit = GlueLayer::bit;
    if (count <= 0) return ~bit(GlueLayer::CloudPoint);
    if (count == 1) return bit(GlueLayer::Node) | bit(GlueLayer::PointItem);
    const unsigned int edges = bit(GlueLayer::Edge) | bit(GlueLayer::MidNode) | bit(GlueLayer::Node);
    if (count == 2) return edges;
    return edges | bit(GlueLayer::RawCoords) | bit(GlueLayer::Face) | bit(GlueLayer::FaceEdge) |
           bit(GlueLayer::FaceNode);
}

void Graphics3dItem::updateDataImpl() {}

void Graphics3dItem::updateDataFinished() {}

void Graphics3dItem::draw(const PaintContext&) {}

std::vector<Drawable3dItem*> Graphics3dItem::getDrawableChildren()
{
    return {};
}

void Graphics3dItem::updateVisibility()
{
    const CModelElement* element = getModelElement();
    bool visible = element && element->isVisible();
    if (visible && scene())
        if (const CFilterElement* filter = scene()->getVisibilityFilter())
            visible = filter->isAccepted(*element);
    setVisible(visible);
    for (Drawable3dItem* child : getDrawableChildren())
        child->setVisible(visible);
}

void Graphics3dItem::updateDrawer()
{
    InteractiveGraphicsScene* interactive = getIScene();
    if (interactive && interactive->findGraphicsItem(getId())) bindToSceneDrawer(*this);
    if (Item3dDrawer* drawer = getDrawer()) drawer->updateItem(this);
    for (Drawable3dItem* child : getDrawableChildren()) {
        child->setVisible(Drawable3dItem::isVisible());
        if (scene()) bindToSceneDrawer(*child);
        if (Item3dDrawer* drawer = child->getDrawer()) drawer->updateItem(child);
    }
}

void Graphics3dItem::bindToSceneDrawer(Drawable3dItem& item)
{
    Scene3d* owner = scene();
    const int visibilityType = getVisibilityType();
    const int drawerType = item.getDefaultDrawerType();
    owner->addDrawer(visibilityType, drawerType);
    Item3dDrawer* drawer = owner->getDrawer(visibilityType, drawerType);
    if (drawer != item.getDrawer()) item.setDrawer(drawer);
}

void Graphics3dItem::updateData(ISubject*)
{
    Scene3d* owner = scene();
    if (!owner) return;
    std::vector<Graphics3dItem*> items = {this};
    CModelElement* element = getModelElement();
    CProjectModel* model = owner->getModel();
    if (element && model)
        for (CModelElement* dependent : model->getAllChildDependencies(element))
            if (auto* item = dynamic_cast<Graphics3dItem*>(owner->findGraphicsItem(dependent->getId())))
                items.push_back(item);
    owner->updateGraphicsItems(items);
}

void Graphics3dItem::update()
{
    if (Scene3d* owner = scene()) owner->updateGraphicsViews();
}

bool Graphics3dItem::isVisible() const
{
    return Drawable3dItem::isVisible();
}

InteractiveGraphicsScene* Graphics3dItem::getIScene() const
{
    return scene();
}

glm::dmat4 Graphics3dItem::getTransform() const
{
    return glm::dmat4(Drawable3dItem::getTransform());
}

glm::dmat4 Graphics3dItem::sceneToModelTransform() const
{
    const Scene3d* owner = scene();
    return owner ? owner->sceneToModelTransform() : glm::dmat4(1.0);
}

glm::dvec3 Graphics3dItem::getNodePoint(int index) const
{
    return glm::dvec3(const_cast<Graphics3dItem*>(this)->getVertex(index));
}

std::vector<glm::dvec3> Graphics3dItem::getNodePoints() const
{
    const std::vector<glm::vec3> vertices = const_cast<Graphics3dItem*>(this)->getVertices();
    return std::vector<glm::dvec3>(vertices.begin(), vertices.end());
}
