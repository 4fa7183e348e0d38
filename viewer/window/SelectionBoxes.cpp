#include <viewer/window/SelectionBoxes.h>

#include <viewer/OrientedBox.h>
#include <viewer/window/ElementSelection.h>

#include <Viewer3dModule/drawables/OrientedBox3dItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElement.h>
#include <framework/model/CProjectModel.h>

#include <utility>

namespace {

const QColor outline(255, 140, 0);
constexpr int outlineWidth = 2; // pixels

class SelectionBox : public OrientedBox3dItem
{
public:
    SelectionBox(const OrientedBox& box, Scene3d& scene)
        : OrientedBox3dItem(box.center, box.axes, box.halfSizes)
    {
        setColor(outline);
        setLineWidth(outlineWidth);
        setDrawer(scene.getLocalForegroundDrawer(getDefaultDrawerType()));
    }
};

/// Scene coordinates.
std::vector<glm::dvec3> pointsOf(Graphics3dItem& item)
{
    const glm::dmat4 toScene = item.getTransform();
    std::vector<glm::dvec3> points;
    for (const glm::vec3& vertex : item.getVertices())
        points.emplace_back(toScene * glm::dvec4(vertex, 1.0));
    return points;
}

} // namespace

SelectionBoxes::SelectionBoxes(const ElementSelection& selection, Scene3d& scene, QObject* parent)
    : QObject(parent)
    , m_selection(selection)
    , m_scene(scene)
{
    connect(&selection, &ElementSelection::changed, this, &SelectionBoxes::update);
    connect(&scene, &Scene3d::elementRemoved, this, &SelectionBoxes::remove);
    // not at once: a scene that recentres itself says so before it moves its local items
    connect(&scene, &Scene3d::updateView, this, &SelectionBoxes::updateChanged, Qt::QueuedConnection);
    connect(&scene, &QObject::destroyed, this, &SelectionBoxes::leaveElements);
}

SelectionBoxes::~SelectionBoxes() = default;

void SelectionBoxes::update()
{
    const CurrentContextGuard callers;
    m_scene.makeCurrent();
    const std::map<LONGID, const Drawable3dItem*> before = m_boxes;
    const bool isShown = m_selection.ids().size() <= Most;
    for (const auto& entry : before)
        if (!isShown || m_selection.ids().count(entry.first) == 0) remove(entry.first);
    if (isShown)
        for (const LONGID id : m_selection.ids())
            if (m_boxes.count(id) == 0) add(id);
    observe();
    m_scene.updateGraphicsViews();
}

void SelectionBoxes::leaveElements()
{
    for (ISubject* subject : getSubjects())
        subject->removeObserver(this);
}

// The elements with boxes, and all that these depend on.
void SelectionBoxes::observe()
{
    leaveElements();
    std::vector<CModelElement*> elements;
    for (const auto& entry : m_boxes)
        if (CModelElement* element = m_scene.getModel()->getElement(entry.first)) elements.push_back(element);
    std::set<const CModelElement*> seen(elements.begin(), elements.end());
    for (std::size_t i = 0; i < elements.size(); ++i) {
        for (ISubject* subject : elements[i]->getSubjects())
            if (auto* element = dynamic_cast<CModelElement*>(subject); element && seen.insert(element).second)
                elements.push_back(element);
        elements[i]->addObserver(this);
    }
}

void SelectionBoxes::updateData(ISubject* subject)
{
    auto* element = dynamic_cast<CModelElement*>(subject);
    if (!element) return;
    m_changed.insert(element->getId());
    for (const CModelElement* dependent : m_scene.getModel()->getAllChildDependencies(element))
        m_changed.insert(dependent->getId());
}

// Items know their vertices once their scene has said that there is something new to see.
void SelectionBoxes::updateChanged()
{
    if (m_changed.empty() || m_scene.isInGroupOperation()) return;
    const CurrentContextGuard callers;
    const std::set<LONGID> changed = std::exchange(m_changed, {});
    for (const LONGID id : changed) {
        if (m_boxes.count(id) == 0) continue;
        remove(id);
        add(id);
    }
    observe();
}

void SelectionBoxes::add(LONGID id)
{
    const auto found = m_scene.getItems().find(id);
    if (found == m_scene.getItems().end()) return;
    m_boxes[id] = nullptr;
    if (!found->second->isVisible()) return;
    const std::optional<OrientedBox> box = OrientedBox::around(pointsOf(*found->second));
    const bool hasSize =
        box && glm::length(glm::dvec3(box->halfSizes[0], box->halfSizes[1], box->halfSizes[2])) > 0.0;
    if (!hasSize) return; // a point is seen to be chosen by its colour
    auto item = std::make_unique<SelectionBox>(*box, m_scene);
    m_boxes[id] = item.get();
    m_scene.addLocalItem(std::move(item));
}

void SelectionBoxes::remove(LONGID id)
{
    const auto found = m_boxes.find(id);
    if (found == m_boxes.end()) return;
    const Drawable3dItem* box = found->second;
    m_boxes.erase(found);
    if (box) m_scene.deleteLocalItem(box);
}
