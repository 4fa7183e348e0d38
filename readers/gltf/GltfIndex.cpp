#include <readers/gltf/GltfIndex.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/JsonReader.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <iterator>

namespace readers {

namespace {

constexpr int rootDepth = 1;
constexpr int listDepth = 2;
constexpr int memberDepth = 3;

// What an object made of the text takes, about, in bytes beside the characters.
constexpr std::size_t scalarSize = 32;
constexpr std::size_t bracketsSize = 128;

bool isAmong(const std::string& name, std::initializer_list<const char*> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isList(const std::string& name)
{
    return isAmong(name, {"accessors", "bufferViews", "buffers", "images", "materials", "meshes", "nodes",
                          "scenes", "textures"});
}

bool isValue(const std::string& name)
{
    return isAmong(name, {"asset", "extensionsRequired"});
}

} // namespace

void GltfIndex::read(const QByteArray& json, std::size_t fileSize, ksp::StagedProgress progress)
{
    m_json = json;
    m_fileSize = fileSize;
    JsonReader reader(json, std::move(progress));
    m_offset = [&reader] { return reader.getOffset(); };
    reader.read(*this);
    m_offset = {};
    if (!m_isObject) throw ksp::CommonError(QStringLiteral("is not a glTF file"));
}

int GltfIndex::getCountOf(const char* list) const
{
    const auto found = m_lists.find(list);
    return found == m_lists.end() ? 0 : static_cast<int>(found->second.members.size());
}

QJsonObject GltfIndex::getMember(const char* list, int index)
{
    constexpr int largest = 1 << 16; // bytes of text; a member may hold all data of the document
    List& members = m_lists.find(list)->second;
    if (index == members.lastIndex) return members.last;
    const QByteArray text = at(members.members[static_cast<std::size_t>(index)]);
    const QJsonObject member = QJsonDocument::fromJson(text).object();
    if (text.size() > largest) return member;
    members.lastIndex = index;
    members.last = member;
    return member;
}

QJsonValue GltfIndex::getValue(const char* name) const
{
    const auto found = m_places.find(name);
    if (found == m_places.end()) return name == std::string_view("scene") ? m_scene : QJsonValue::Undefined;
    const QJsonDocument document = QJsonDocument::fromJson(at(found->second));
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

QByteArray GltfIndex::at(const Place& place) const
{
    return QByteArray::fromRawData(m_json.constData() + place.begin, place.end - place.begin);
}

void GltfIndex::onKey(std::string& name)
{
    charge(scalarSize + name.size());
    if (m_depth != rootDepth || !m_isObject) return;
    m_name = std::move(name); // given again, it is another
    m_lists.erase(m_name);
    m_places.erase(m_name);
    if (m_name == "scene") m_scene = QJsonValue::Undefined;
}

void GltfIndex::onString(std::string& text)
{
    charge(text.size());
    addScalar({});
}

void GltfIndex::addScalar(const QJsonValue& value)
{
    if (m_list && m_depth == listDepth) failMember();
    charge(scalarSize);
    if (m_isObject && m_depth == rootDepth && m_name == "scene") m_scene = value;
}

void GltfIndex::onObject()
{
    if (m_depth == 0) m_isObject = true;
    begin();
}

void GltfIndex::onArray()
{
    if (m_list && m_depth == listDepth) failMember();
    begin();
    if (m_depth == listDepth && m_isObject && isList(m_name)) m_list = &m_lists[m_name];
}

void GltfIndex::begin()
{
    ++m_depth;
    if (m_depth == listDepth) m_isKept = m_isObject && isValue(m_name);
    if ((m_depth == listDepth && m_isKept) || (m_depth == memberDepth && m_list)) {
        m_place.begin = m_offset() - 1;
        m_budget = MemoryBudget(m_fileSize); // one at a time is made into an object
    }
    charge(bracketsSize);
}

void GltfIndex::end()
{
    constexpr std::size_t freeMembers = 100'000;
    constexpr std::size_t bytesPerMember =
        64; // with all that it is about, in files that are not made to harm
    m_place.end = m_offset();
    if (m_depth == memberDepth && m_list) {
        if (m_list->members.size() >= freeMembers + m_fileSize / bytesPerMember)
            throw ksp::CommonError(QStringLiteral("has far more \"%1\" than a file of its size should")
                                       .arg(QString::fromStdString(m_name)));
        m_list->members.push_back(m_place);
    }
    if (m_depth == listDepth) {
        if (m_isKept) m_places[m_name] = m_place;
        m_isKept = false;
        m_list = nullptr;
    }
    --m_depth;
}

void GltfIndex::charge(std::size_t bytes)
{
    if (m_isKept || (m_list && m_depth >= memberDepth)) m_budget.charge(bytes);
}

void GltfIndex::failMember() const
{
    throw ksp::CommonError(
        QStringLiteral("a member of \"%1\" is no object").arg(QString::fromStdString(m_name)));
}

} // namespace readers
