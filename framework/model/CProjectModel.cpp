#include <framework/model/CProjectModel.h>

#include <framework/ksp/Log.h>
#include <framework/ksp/runGuarded.h>
#include <framework/model/CModelElement.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/ElementTable.h>

#include <algorithm>
#include <unordered_set>

struct CProjectModel::Private
{
    std::map<int, std::unique_ptr<ModelElementCreator>> creators;
    std::map<int, std::unique_ptr<CModelElementManager>> managers;
    std::vector<std::pair<int, std::unique_ptr<ModelInitializer>>> initializers;
    std::size_t initializersRun = 0;
    bool initialized = false;
    ElementTable elements;
    LONGID nextId = 1;
};

CProjectModel::CProjectModel(CProject* project)
    : m_project(project)
    , m_private(std::make_unique<Private>())
{
}

CProjectModel::~CProjectModel()
{
    clear();
    m_private->initializers.clear();
    m_private->managers.clear();
}

CModelElementManager* CProjectModel::getItemManager(int type) const
{
    const auto found = m_private->managers.find(type);
    return found == m_private->managers.end() ? nullptr : found->second.get();
}

CModelElementManager* CProjectModel::getCreateItemManager(int type)
{
    std::unique_ptr<CModelElementManager>& manager = m_private->managers[type];
    if (!manager) manager = std::make_unique<CModelElementManager>(type, this);
    return manager.get();
}

std::vector<CModelElementManager*> CProjectModel::getItemManagers() const
{
    std::vector<CModelElementManager*> managers;
    for (const auto& entry : m_private->managers)
        managers.push_back(entry.second.get());
    return managers;
}

CModelElement* CProjectModel::getElement(LONGID id) const
{
    return m_private->elements.find(id);
}

int CProjectModel::getElementsCount() const
{
    int count = 0;
    for (const auto& entry : m_private->managers)
        count += entry.second->getItemsCount();
    return count;
}

void CProjectModel::clear()
{
    for (CModelElementManager* manager : getItemManagers())
        manager->removeAll();
}

std::vector<CModelElement*> CProjectModel::getAllChildDependencies(CModelElement* element) const
{
    std::vector<CModelElement*> found;
    if (!element) return found;
    std::unordered_set<const CModelElement*> visited{element};
    for (std::size_t next = 0; element; element = next < found.size() ? found[next++] : nullptr) {
        for (IObserver* observer : element->getObservers()) {
            auto* dependent = dynamic_cast<CModelElement*>(observer);
            if (dependent && visited.insert(dependent).second) found.push_back(dependent);
        }
    }
    return found;
}

void CProjectModel::addInitializer(int id, std::unique_ptr<ModelInitializer> initializer)
{
    if (!initializer || getInitializer(id)) return;
    m_private->initializers.emplace_back(id, std::move(initializer));
    if (m_private->initialized) initialize();
}

ModelInitializer* CProjectModel::getInitializer(int id) const
{
    const auto& all = m_private->initializers;
    const auto found =
        std::find_if(all.begin(), all.end(), [id](const auto& entry) { return entry.first == id; });
    return found == all.end() ? nullptr : found->second.get();
}

void CProjectModel::initialize()
{
    m_private->initialized = true;
    while (m_private->initializersRun < m_private->initializers.size()) {
        const auto& entry = m_private->initializers[m_private->initializersRun++];
        const int id = entry.first;
        ModelInitializer* initializer = entry.second.get(); // the list may grow meanwhile
        const QString error = ksp::runGuarded([initializer] { initializer->initialize(); });
        if (!error.isEmpty())
            ksp::Log::error(QStringLiteral("Model initializer 0x%1 (%2) failed: %3")
                                .arg(static_cast<unsigned>(id), 8, 16, QLatin1Char('0'))
                                .arg(QLatin1String(initializer->metaObject()->className()), error));
    }
}

void CProjectModel::registerCreator(std::unique_ptr<ModelElementCreator> creator)
{
    if (!creator) return;
    const int type = creator->getType();
    m_private->creators[type] = std::move(creator);
}

const ModelElementCreator* CProjectModel::getCreator(int type) const
{
    const auto found = m_private->creators.find(type);
    return found == m_private->creators.end() ? nullptr : found->second.get();
}

// The identifier under which the element is known from now on: the wanted one when it is a valid one that
// nobody has, a fresh one otherwise.
LONGID CProjectModel::claimId(CModelElement* element, LONGID wanted)
{
    if (wanted <= 0 || wanted > largestId() || !m_private->elements.add(wanted, *element)) {
        wanted = m_private->nextId;
        m_private->elements.add(wanted, *element);
    }
    m_private->nextId = std::max(m_private->nextId, wanted + 1);
    return wanted;
}

void CProjectModel::releaseId(LONGID id)
{
    m_private->elements.remove(id);
}

LONGID CProjectModel::getNextId() const
{
    return m_private->nextId;
}

void CProjectModel::skipIdsBelow(LONGID next)
{
    m_private->nextId = std::max(m_private->nextId, next);
}
