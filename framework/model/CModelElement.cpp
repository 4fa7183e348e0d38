#include <framework/model/CModelElement.h>

#include <QtCore/QHash>

#include <algorithm>

namespace {

using PropertyList = std::vector<std::pair<QString, QVariant>>;

template <typename List>
auto findProperty(List& properties, const QString& name)
{
    return std::find_if(properties.begin(), properties.end(),
                        [&name](const auto& property) { return property.first == name; });
}

// QVariant takes 1 and "1" for equal.
bool isSame(const QVariant& a, const QVariant& b)
{
    return a.userType() == b.userType() && a == b;
}

PropertyList withoutDoubles(PropertyList properties)
{
    PropertyList result;
    QHash<QString, std::size_t> places;
    for (auto& property : properties) {
        if (property.first.isEmpty() || !property.second.isValid()) continue;
        const auto place = places.constFind(property.first);
        if (place != places.constEnd()) {
            result[*place].second = std::move(property.second);
            continue;
        }
        places.insert(property.first, result.size());
        result.push_back(std::move(property));
    }
    return result;
}

void storeProperties(CQtArchive& archive, PropertyList properties)
{
    archive.writeUInt(static_cast<std::uint32_t>(properties.size()));
    for (auto& property : properties) {
        archive.value(property.first);
        archive.value(property.second);
    }
}

PropertyList loadProperties(CQtArchive& archive)
{
    constexpr std::size_t smallestProperty = 8; // the length of the name and the kind of the value
    PropertyList properties(archive.readCount(smallestProperty));
    for (auto& property : properties) {
        archive.value(property.first);
        archive.value(property.second);
        if (!property.second.isValid()) // a null that somebody set on purpose, as JSON has it
            property.second = QVariant::fromValue(nullptr);
    }
    return withoutDoubles(std::move(properties));
}

} // namespace

CModelElement::CModelElement(CModelElement* owner)
    : m_owner(owner)
{
}

CModelElement::CModelElement(const CModelElement& other)
    : ISubject()
    , IObserver()
    , ksp::CGuardedObject()
    , ksp::IIdentifiable()
    , Property::IPropertyHolder()
    , m_name(other.m_name)
    , m_visible(other.m_visible)
    , m_highlighted(other.m_highlighted)
{
    takeProperties(other.properties());
}

CModelElement& CModelElement::operator=(const CModelElement& other)
{
    m_name = other.m_name;
    m_visible = other.m_visible;
    m_highlighted = other.m_highlighted;
    takeProperties(other.properties());
    return *this;
}

CModelElement::~CModelElement() = default;

const CModelElement::Properties& CModelElement::properties() const
{
    static const Properties none;
    return m_properties ? *m_properties : none;
}

void CModelElement::takeProperties(Properties properties)
{
    m_properties = properties.empty() ? nullptr : std::make_unique<Properties>(std::move(properties));
}

void CModelElement::setName(const QString& name)
{
    if (m_name == name) return;
    m_name = name;
    notifyObservers();
}

void CModelElement::setVisible(bool visible)
{
    if (m_visible == visible) return;
    m_visible = visible;
    notifyObservers();
}

void CModelElement::setHighlighted(bool highlighted)
{
    if (m_highlighted == highlighted) return;
    m_highlighted = highlighted;
    notifyObservers();
}

QStringList CModelElement::getPropertyNames() const
{
    QStringList names;
    names.reserve(static_cast<int>(properties().size()));
    for (const auto& property : properties())
        names.append(property.first);
    return names;
}

QVariant CModelElement::getProperty(const QString& name) const
{
    const auto found = findProperty(properties(), name);
    return found == properties().end() ? QVariant() : found->second;
}

bool CModelElement::setProperty(const QString& name, const QVariant& value)
{
    if (name.isEmpty()) return false;
    if (!m_properties) m_properties = std::make_unique<Properties>();
    const auto found = findProperty(*m_properties, name);
    const bool present = found != m_properties->end();
    const bool changes = present ? !isSame(found->second, value) : value.isValid();
    if (changes && !present)
        m_properties->emplace_back(name, value);
    else if (changes && value.isValid())
        found->second = value;
    else if (changes)
        m_properties->erase(found);
    if (m_properties->empty()) m_properties.reset();
    if (changes) notifyObservers();
    return true;
}

void CModelElement::setProperties(std::vector<std::pair<QString, QVariant>> properties)
{
    takeProperties(withoutDoubles(std::move(properties)));
    notifyObservers();
}

void CModelElement::serialize(CQtArchive& archive)
{
    QString name = m_name;
    bool visible = m_visible;
    PropertyList loaded;
    archive.beginObject();
    archive.value(name);
    archive.value(visible);
    if (archive.isLoading())
        loaded = loadProperties(archive);
    else
        storeProperties(archive, properties());
    archive.endObject(1);
    archive.finish();
    if (!archive.isLoading()) return;
    m_name = name;
    m_visible = visible;
    takeProperties(std::move(loaded));
}

void CModelElement::takeStored(CModelElement& loaded)
{
    m_name = loaded.m_name;
    m_visible = loaded.m_visible;
    m_properties.swap(loaded.m_properties);
}

void CModelElement::updateData(ISubject*) {}
