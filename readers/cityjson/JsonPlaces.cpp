#include <readers/cityjson/JsonPlaces.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/JsonReader.h>

namespace readers {

namespace {

constexpr int rootDepth = 1;
constexpr int memberDepth = 2;

// Those whose members are of interest.
bool isOpened(const std::string& name)
{
    return name == "transform" || name == "appearance" || name == "geometry-templates";
}

bool isKept(const std::string& name)
{
    return isOpened(name) || name == "type" || name == "version" || name == "id" || name == "CityObjects" ||
           name == "vertices";
}

} // namespace

JsonPlaces::JsonPlaces(const QByteArray& text, ksp::StagedProgress progress)
    : m_text(text)
{
    JsonReader reader(text, std::move(progress));
    m_offset = [&reader] { return reader.getOffset(); };
    reader.read(*this);
    m_offset = {};
}

QByteArray JsonPlaces::textOf(const std::string& name) const
{
    const auto found = m_members.find(name);
    if (found == m_members.end()) return {};
    return QByteArray::fromRawData(m_text.constData() + found->second.begin,
                                   found->second.end - found->second.begin);
}

std::string JsonPlaces::stringOf(const std::string& name) const
{
    const auto found = m_members.find(name);
    return found == m_members.end() ? std::string() : found->second.text;
}

void JsonPlaces::onKey(std::string& name)
{
    constexpr std::size_t mostMembers = 64;
    if (m_depth == rootDepth) {
        m_names[0] = isKept(name) ? name : std::string();
        m_members.erase(name);
    } else if (m_depth == memberDepth) {
        const bool kept = isOpened(m_names[0]) && m_members.size() < mostMembers;
        m_names[1] = kept ? m_names[0] + '/' + name : std::string();
    }
}

void JsonPlaces::addScalar(std::string text)
{
    if (m_depth != rootDepth && m_depth != memberDepth) return;
    const std::string& name = m_names[m_depth - 1];
    if (!name.empty()) m_members[name] = {0, 0, std::move(text)};
}

void JsonPlaces::onArray()
{
    if (m_depth == 0) throw ksp::CommonError(QStringLiteral("is a list, not an object"));
    begin();
}

void JsonPlaces::begin()
{
    if (m_depth == rootDepth || m_depth == memberDepth) m_begins[m_depth - 1] = m_offset() - 1;
    if (m_depth == rootDepth) m_names[1].clear();
    ++m_depth;
}

void JsonPlaces::end()
{
    --m_depth;
    if (m_depth != rootDepth && m_depth != memberDepth) return;
    const std::string& name = m_names[m_depth - 1];
    if (!name.empty()) m_members[name] = {m_begins[m_depth - 1], m_offset(), {}};
}

} // namespace readers
