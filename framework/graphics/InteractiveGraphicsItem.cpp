#include <framework/graphics/InteractiveGraphicsItem.h>

#include <framework/model/CModelElement.h>

InteractiveGraphicsItem::InteractiveGraphicsItem(CModelElement* element)
    : m_element(element)
    , m_id(element ? element->getId() : 0)
{
}

InteractiveGraphicsItem::~InteractiveGraphicsItem() = default;

CModelElement* InteractiveGraphicsItem::getModelElement() const
{
    return m_element.get();
}

int InteractiveGraphicsItem::type() const
{
    const CModelElement* element = getModelElement();
    return element ? element->getType() : 0;
}

int InteractiveGraphicsItem::getVisibilityType() const
{
    return type();
}

bool InteractiveGraphicsItem::isPointCanBeDeleted(int) const
{
    return false;
}

void InteractiveGraphicsItem::edit() {}

int InteractiveGraphicsItem::getSelectionPriority() const
{
    return 0;
}

void InteractiveGraphicsItem::choose(bool chosen)
{
    if (CModelElement* element = getModelElement()) element->setHighlighted(chosen);
}

bool InteractiveGraphicsItem::isHighlighted() const
{
    const CModelElement* element = getModelElement();
    return element && element->isHighlighted();
}

int InteractiveGraphicsItem::getHighliteType() const
{
    return 0;
}

int InteractiveGraphicsItem::getNodePointsCount() const
{
    return static_cast<int>(getNodePoints().size());
}

std::vector<std::vector<glm::dvec3>> InteractiveGraphicsItem::getGroupedNodePoints() const
{
    return {getNodePoints()};
}

bool InteractiveGraphicsItem::setNodePoints(const std::vector<glm::dvec3>&)
{
    return false;
}

bool InteractiveGraphicsItem::setNodePoint(int, const glm::dvec3&)
{
    return false;
}

bool InteractiveGraphicsItem::addNodePoint(int, const glm::dvec3&)
{
    return false;
}
