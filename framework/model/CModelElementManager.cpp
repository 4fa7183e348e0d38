#include <framework/model/CModelElementManager.h>

#include <framework/model/CProjectModel.h>

#include <algorithm>

// While one of these lives, changes wait to be told.
class CModelElementManager::Telling
{
public:
    explicit Telling(CModelElementManager* manager)
        : m_manager(manager)
    {
        ++manager->m_telling;
    }
    ~Telling()
    {
        if (m_manager) --m_manager->m_telling;
    }
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;

private:
    QPointer<CModelElementManager> m_manager; // who is told may destroy the model
};

CModelElementManager::CModelElementManager(int type, CProjectModel* model)
    : m_type(type)
    , m_model(model)
{
}

CModelElementManager::~CModelElementManager()
{
    removeAll();
}

std::vector<CModelElement*>
CModelElementManager::addItems(std::vector<std::unique_ptr<CModelElement>> elements,
                               ksp::StagedProgress progress)
{
    std::vector<CModelElement*> added;
    added.reserve(elements.size());
    for (auto& element : elements) {
        if (element) added.push_back(keep(std::move(element)));
    }
    if (added.empty()) return added;
    std::vector<LONGID> ids;
    ids.reserve(added.size());
    for (const CModelElement* element : added)
        ids.push_back(element->getId());

    const QPointer<CModelElementManager> self(this);
    tellAll({added, {}, m_extensions, std::move(progress)});
    if (!self) return {};
    std::size_t present = 0;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (getItem(ids[i]) == added[i]) added[present++] = added[i];
    }
    added.resize(present);
    return added;
}

CModelElement* CModelElementManager::addItem(std::unique_ptr<CModelElement> element)
{
    std::vector<std::unique_ptr<CModelElement>> elements;
    elements.push_back(std::move(element));
    const std::vector<CModelElement*> added = addItems(std::move(elements));
    return added.empty() ? nullptr : added.front();
}

// In order, because elements that came one after another lie beside one another, and so does what is known of
// them elsewhere: a million in any order take many times as long.
void CModelElementManager::removeItems(const std::vector<LONGID>& ids, ksp::StagedProgress progress)
{
    if (std::is_sorted(ids.begin(), ids.end())) return removeInOrder(ids, std::move(progress));
    std::vector<LONGID> sorted = ids;
    std::sort(sorted.begin(), sorted.end());
    removeInOrder(sorted, std::move(progress));
}

void CModelElementManager::removeInOrder(const std::vector<LONGID>& ids, ksp::StagedProgress progress)
{
    std::vector<std::unique_ptr<CModelElement>> removed;
    removed.reserve(ids.size());
    for (LONGID id : ids) {
        if (std::unique_ptr<CModelElement> element = release(id)) removed.push_back(std::move(element));
    }
    closeGaps();
    if (!removed.empty()) tellAll({{}, std::move(removed), m_extensions, std::move(progress)});
}

void CModelElementManager::removeAll()
{
    std::vector<LONGID> ids;
    ids.reserve(m_elements.size());
    for (const auto& element : m_elements) {
        if (element) ids.push_back(element->getId());
    }
    removeInOrder(ids, ksp::StagedProgress::dummy());
}

CModelElement* CModelElementManager::getItem(LONGID id) const
{
    CModelElement* element = m_model->getElement(id);
    return element && element->m_manager == this ? element : nullptr;
}

std::vector<CModelElement*> CModelElementManager::getItems() const
{
    std::vector<CModelElement*> items;
    items.reserve(m_elements.size() - m_gaps);
    for (const auto& element : m_elements) {
        if (element) items.push_back(element.get());
    }
    return items;
}

void CModelElementManager::registerExtension(CModelElementMngrExtension* extension)
{
    m_extensions.erase(std::remove(m_extensions.begin(), m_extensions.end(), nullptr), m_extensions.end());
    if (!extension || std::count(m_extensions.begin(), m_extensions.end(), extension) > 0) return;
    m_extensions.emplace_back(extension);
    const std::vector<CModelElement*> items = getItems();
    if (items.empty()) return;
    const QPointer<CModelElementManager> self(this);
    {
        const Telling telling(this);
        ElementAddingContext context;
        extension->afterAddItems(items, context);
    }
    if (self) tellPending();
}

CModelElementMngrExtension* CModelElementManager::getExtension(int type) const
{
    const auto found = std::find_if(m_extensions.begin(), m_extensions.end(), [type](const auto& extension) {
        return extension && extension->getType() == type;
    });
    return found == m_extensions.end() ? nullptr : found->data();
}

std::vector<CModelElementMngrExtension*> CModelElementManager::getExtensions() const
{
    std::vector<CModelElementMngrExtension*> live;
    for (const auto& extension : m_extensions) {
        if (extension) live.push_back(extension.data());
    }
    return live;
}

CModelElement* CModelElementManager::keep(std::unique_ptr<CModelElement> element)
{
    element->m_id = m_model->claimId(element.get(), element->m_id);
    element->m_manager = this;
    element->m_position = static_cast<std::uint32_t>(m_elements.size());
    m_elements.push_back(std::move(element));
    return m_elements.back().get();
}

std::unique_ptr<CModelElement> CModelElementManager::release(LONGID id)
{
    CModelElement* element = getItem(id);
    if (!element) return nullptr;
    m_model->releaseId(id);
    element->m_manager = nullptr;
    ++m_gaps;
    return std::move(m_elements[element->m_position]);
}

// Only when most of the list is gaps, so that the elements removed so far have paid for the pass.
void CModelElementManager::closeGaps()
{
    if (m_gaps <= m_elements.size() / 2) return;
    m_elements.erase(std::remove(m_elements.begin(), m_elements.end(), nullptr), m_elements.end());
    for (std::size_t i = 0; i < m_elements.size(); ++i)
        m_elements[i]->m_position = static_cast<std::uint32_t>(i);
    m_gaps = 0;
}

void CModelElementManager::tellAll(Change change)
{
    m_changes.push_back(std::move(change));
    tellPending();
}

void CModelElementManager::tellPending()
{
    const QPointer<CModelElementManager> self(this);
    while (self && m_telling == 0 && !m_changes.empty()) {
        const Telling telling(this);
        const Change change = std::move(m_changes.front());
        m_changes.pop_front();
        tell(change);
    }
}

void CModelElementManager::tell(const Change& change)
{
    std::vector<CModelElement*> elements = change.added;
    for (const auto& element : change.removed)
        elements.push_back(element.get());
    const bool adding = change.removed.empty();

    const QPointer<CModelElementManager> self(this);
    const double share = change.extensions.empty() ? 0.0 : 100.0 / double(change.extensions.size());
    ksp::StagedProgress progress = change.progress;
    for (const auto& extension : change.extensions) {
        if (!self) return;
        if (!extension) continue;
        if (adding) {
            ElementAddingContext context{progress.startStage(share)};
            extension->afterAddItems(elements, context);
        } else {
            ElementRemovingContext context{progress.startStage(share)};
            extension->afterRemoveItems(elements, context);
        }
    }
    if (!self) return;
    if (adding)
        Q_EMIT m_model->elementsAdded(elements);
    else
        Q_EMIT m_model->elementsRemoved(elements);
}
