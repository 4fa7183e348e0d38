#include <framework/model/CFilterElement.h>

namespace {

// Puts the key into the set of the rejected ones or takes it out; tells whether that changed anything.
template <typename Key>
bool setRejected(std::set<Key>& rejected, Key key, bool reject)
{
    return reject ? rejected.insert(key).second : rejected.erase(key) > 0;
}

// Loading adds to the set.
template <typename Key>
void serializeSet(CQtArchive& archive, std::set<Key>& keys)
{
    if (!archive.isLoading()) {
        archive.writeUInt(static_cast<std::uint32_t>(keys.size()));
        for (Key key : keys)
            archive.value(key);
        return;
    }
    const std::uint32_t count = archive.readCount(sizeof(Key));
    for (std::uint32_t i = 0; i < count; ++i) {
        Key key = 0;
        archive.value(key);
        keys.insert(key);
    }
}

} // namespace

CFilterElement::CFilterElement(CModelElement* owner)
    : CModelElement(owner)
{
}

CFilterElement::~CFilterElement() = default;

int CFilterElement::getType() const
{
    return Type;
}

bool CFilterElement::isTypeAccepted(int type) const
{
    return m_rejectedTypes.count(type) == 0;
}

bool CFilterElement::isAccepted(const CModelElement& element) const
{
    return m_rejectedElements.count(element.getId()) == 0 && (!m_condition || m_condition(element));
}

void CFilterElement::setTypeAccepted(int type, bool accepted)
{
    if (setRejected(m_rejectedTypes, type, !accepted)) notifyObservers();
}

void CFilterElement::setElementAccepted(LONGID id, bool accepted)
{
    if (setRejected(m_rejectedElements, id, !accepted)) notifyObservers();
}

void CFilterElement::setCondition(std::function<bool(const CModelElement&)> condition)
{
    if (!condition && !m_condition) return;
    m_condition = std::move(condition);
    notifyObservers();
}

void CFilterElement::serialize(CQtArchive& archive)
{
    if (!archive.isLoading()) {
        serializeFields(archive);
        return;
    }
    CFilterElement loaded;
    loaded.serializeFields(archive);
    takeStored(loaded);
    m_rejectedTypes.swap(loaded.m_rejectedTypes);
    m_rejectedElements.swap(loaded.m_rejectedElements);
}

void CFilterElement::serializeFields(CQtArchive& archive)
{
    CModelElement::serialize(archive);
    archive.beginObject();
    serializeSet(archive, m_rejectedTypes);
    serializeSet(archive, m_rejectedElements);
    archive.endObject(1);
    archive.finish();
}
