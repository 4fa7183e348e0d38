// Updates of the scene's items: order, groups and the notification that follows.

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElement.h>

#include <algorithm>
#include <utility>

// The items of an update that is running; updates that an update causes nest.
struct Scene3d::UpdateRun
{
    UpdateRun(UpdateRun*& current, std::vector<Graphics3dItem*>& updated)
        : items(updated)
        , outer(current)
        , m_current(current)
    {
        m_current = this;
    }
    ~UpdateRun() { m_current = outer; }
    UpdateRun(const UpdateRun&) = delete;
    UpdateRun& operator=(const UpdateRun&) = delete;

    std::vector<Graphics3dItem*>& items;
    UpdateRun* outer;

private:
    UpdateRun*& m_current;
};

void Scene3d::addPending(Graphics3dItem* item)
{
    if (!item || item->m_isPending) return;
    item->m_isPending = true;
    m_pending.push_back(item);
}

std::vector<Graphics3dItem*> Scene3d::takePending()
{
    // Addresses differ from run to run, and the order of updates is that in which drawers draw.
    std::vector<std::pair<LONGID, Graphics3dItem*>> byId;
    byId.reserve(m_pending.size());
    for (Graphics3dItem* item : m_pending) {
        const auto gone = m_pendingGone.empty() ? m_pendingGone.end() : m_pendingGone.find(item);
        if (gone != m_pendingGone.end() && gone->second-- > 0) continue; // it was another one's address then
        item->m_isPending = false;
        byId.emplace_back(item->getId(), item);
    }
    m_pending.clear();
    m_pendingGone.clear();
    if (!std::is_sorted(byId.begin(), byId.end())) std::sort(byId.begin(), byId.end());
    std::vector<Graphics3dItem*> items;
    items.reserve(byId.size());
    for (const auto& entry : byId)
        items.push_back(entry.second);
    return items;
}

void Scene3d::forgetUpdate(Graphics3dItem* item)
{
    if (item->m_isPending) ++m_pendingGone[item];
    item->m_isPending = false;
    for (UpdateRun* run = m_updateRun; run; run = run->outer)
        std::replace(run->items.begin(), run->items.end(), item, static_cast<Graphics3dItem*>(nullptr));
}

void Scene3d::updateGraphicsItems(std::vector<Graphics3dItem*>& items)
{
    if (items.empty()) return;
    if (isInGroupOperation()) {
        for (Graphics3dItem* item : items)
            addPending(item);
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
    items.erase(std::remove(items.begin(), items.end(), nullptr), items.end());
    sortItemsByUpdateOrder(items);
    makeCurrent();
    const UpdateRun run(m_updateRun, items);
    // By index: what an update removes from the scene reads null from then on.
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i]) items[i]->updateVisibility();
        if (items[i]) items[i]->updateDataImpl();
        if (items[i]) items[i]->updateDrawer();
        if (items[i]) items[i]->boundsChanged();
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i]) items[i]->updateDataFinished();
        if (items[i]) items[i]->boundsChanged();
    }
    m_boundsDirty = true;
    QMetaObject::invokeMethod(this, "sceneChanged", Qt::QueuedConnection);
}

void Scene3d::finishGroupOperation(ksp::StagedProgress)
{
    if (m_groupDepth == 0) return;
    --m_groupDepth;
    if (m_groupDepth != 0 || isInGroupOperation()) return;
    std::vector<Graphics3dItem*> items = takePending();
    if (!items.empty()) runUpdates(items);
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
        explicit Step(Graphics3dItem* stepItem)
            : item(stepItem)
        {
            if (const CModelElement* element = item->getModelElement()) subjects = element->getSubjects();
        }
        Graphics3dItem* item;
        std::vector<ISubject*> subjects;
        std::size_t nextSubject = 0;
    };

    void visit(Graphics3dItem* first)
    {
        if (!m_visited.insert(first).second) return;
        m_stack.emplace_back(first);
        while (!m_stack.empty()) {
            Graphics3dItem* dependency = nextDependency(m_stack.back());
            if (dependency) {
                m_stack.emplace_back(dependency);
            } else {
                m_result.push_back(m_stack.back().item);
                m_stack.pop_back();
            }
        }
    }

    Graphics3dItem* nextDependency(Step& step)
    {
        while (step.nextSubject < step.subjects.size()) {
            const auto* subject = dynamic_cast<const CModelElement*>(step.subjects[step.nextSubject++]);
            const auto found = m_byElement.find(subject);
            if (found != m_byElement.end() && m_visited.insert(found->second).second) return found->second;
        }
        return nullptr;
    }

    std::unordered_map<const CModelElement*, Graphics3dItem*> m_byElement;
    std::unordered_set<Graphics3dItem*> m_visited;
    std::vector<Step> m_stack;
    std::vector<Graphics3dItem*> m_result;
};

bool observesAnything(const Graphics3dItem* item)
{
    const CModelElement* element = item->getModelElement();
    return element && !element->getSubjects().empty();
}

bool hasRepeats(std::vector<Graphics3dItem*> items)
{
    if (!std::is_sorted(items.begin(), items.end())) std::sort(items.begin(), items.end());
    return std::adjacent_find(items.begin(), items.end()) != items.end();
}

} // namespace

// Most items stand for elements that observe nothing and stay in their order.
void Scene3d::sortItemsByUpdateOrder(std::vector<Graphics3dItem*>& items)
{
    if (std::any_of(items.begin(), items.end(), observesAnything) || hasRepeats(items))
        items = UpdateOrder(items).sorted(items);
}
