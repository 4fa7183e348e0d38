#include <framework/model/CFilterElement.h>

namespace {

// Puts the key into the set of the rejected ones or takes it out; tells whether that changed anything.
template <typename Key>
bool setRejected(std::set<Key>& rejected, Key key, bool reject)
{
    return reject ? rejected.insert(key).second : rejected.erase(key) > 0;
}

template <typename Key>
void serializeSet(CQtArchive& archive, std::set<Key>& keys)
{
    if (!archive.isLoading()) {
        archive.writeUInt(static_cast<std::uint32_t>(keys.size()));
        for (Key key : keys)
            archive.value(key);
        return;
    }
    std::set<Key> loaded;
    const std::uint32_t count = archive.readCount(sizeof(Key));
    for (std::uint32_t i = 0; i < count; ++i) {
        Key key = 0;
        archive.value(key);
        loaded.insert(key);
    }
    keys.swap(loaded);
}

} // namespace

CFilterElement::CFilterElement(CModelElement* owner)
    : CModelElement(owner)
{
}

CFilterElement::~CFilterElement() = default;

int CFilterElement::getType() const
{
    return 0x36FF9100;
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
    CModelElement::serialize(archive);
    archive.beginObject();
    serializeSet(archive, m_rejectedTypes);
    serializeSet(archive, m_rejectedElements);
    archive.endObject(1);
    archive.finish();
}
