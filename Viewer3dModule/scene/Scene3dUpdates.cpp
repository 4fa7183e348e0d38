// Updates of the scene's items: order, groups and the notification that follows.

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElement.h>

void Scene3d::updateGraphicsItems(std::vector<Graphics3dItem*>& items)
{
    if (items.empty()) return;
    if (isInGroupOperation()) {
        m_pending.insert(items.begin(), items.end());
        return;
    }
    runUpdates(items);
}

void Scene3d::updateGraphicsItems()
{
    std::vector<Graphics3dItem*> items;
    items.reserve(m_items.size());
    for (const auto& entry : m_items)
        items.push_back(entry.second);
    updateGraphicsItems(items);
}

void Scene3d::runUpdates(std::vector<Graphics3dItem*>& items)
{
    sortItemsByUpdateOrder(items);
    makeCurrent();
    for (Graphics3dItem* item : items) {
        item->updateVisibility();
        item->updateDataImpl();
        item->updateDrawer();
    }
    for (Graphics3dItem* item : items)
        item->updateDataFinished();
    m_boundsDirty = true;
    QMetaObject::invokeMethod(this, "sceneChanged", Qt::QueuedConnection);
}

void Scene3d::finishGroupOperation(ksp::StagedProgress)
{
    if (m_groupDepth == 0) return;
    --m_groupDepth;
    if (m_groupDepth != 0 || m_pending.empty()) return;
    std::vector<Graphics3dItem*> items(m_pending.begin(), m_pending.end());
    m_pending.clear();
    if (isInGroupOperation()) {
        m_pending.insert(items.begin(), items.end());
        return;
    }
    runUpdates(items);
}

void Scene3d::sceneChanged()
{
    flushBounds();
    Q_EMIT updateView();
}

namespace {

// Depth-first walk over the elements that elements observe; each item of the vector comes out once, after
// those that it depends on. Kept on a stack of its own, because chains of elements can be long.
class UpdateOrder
{
public:
    explicit UpdateOrder(const std::vector<Graphics3dItem*>& items)
    {
        for (Graphics3dItem* item : items)
            if (const CModelElement* element = item->getModelElement()) m_byElement.emplace(element, item);
    }

    std::vector<Graphics3dItem*> sorted(const std::vector<Graphics3dItem*>& items)
    {
        for (Graphics3dItem* item : items)
            visit(item);
        return std::move(m_result);
    }

private:
    struct Step
    {
        Graphics3dItem* item;
        std::size_t nextSubject;
    };

    void visit(Graphics3dItem* first)
    {
        if (!m_visited.insert(first).second) return;
        m_stack.push_back({first, 0});
        while (!m_stack.empty()) {
            Graphics3dItem* dependency = nextDependency(m_stack.back());
            if (dependency) {
                m_stack.push_back({dependency, 0});
            } else {
                m_result.push_back(m_stack.back().item);
                m_stack.pop_back();
            }
        }
    }

    Graphics3dItem* nextDependency(Step& step)
    {
        const CModelElement* element = step.item->getModelElement();
        if (!element) return nullptr;
        const std::vector<ISubject*>& subjects = element->getSubjects();
        while (step.nextSubject < subjects.size()) {
            const auto found = m_byElement.find(dynamic_cast<CModelElement*>(subjects[step.nextSubject++]));
            if (found != m_byElement.end() && m_visited.insert(found->second).second) return found->second;
        }
        return nullptr;
    }

    std::unordered_map<const CModelElement*, Graphics3dItem*> m_byElement;
    std::unordered_set<Graphics3dItem*> m_visited;
    std::vector<Step> m_stack;
    std::vector<Graphics3dItem*> m_result;
};

} // namespace

void Scene3d::sortItemsByUpdateOrder(std::vector<Graphics3dItem*>& items)
{
    items = UpdateOrder(items).sorted(items);
}
