#include <readers/common/PropertyReader.h>

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cmath>

namespace readers {

namespace {

constexpr std::size_t mostProperties = 65536; // of one object
constexpr std::size_t mostNames = 4096;       // that are kept once
constexpr int deepestValue = 16;              // lists and objects within each other, as a project stores them
constexpr int mostValues = 64;                // in a list or object
constexpr std::size_t valueSize = 64;         // bytes of one of those, about
constexpr std::size_t nameSize = 128; // bytes of a name that is kept once beside its characters, about

QString toQString(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

// JSON without the blanks between its words.
QByteArray withoutBlanks(const QByteArray& json)
{
    QByteArray result;
    result.reserve(json.size());
    bool quoted = false;
    for (int i = 0; i < json.size(); ++i) {
        const char c = json.at(i);
        if (!quoted && (c == ' ' || c == '\t' || c == '\n' || c == '\r')) continue;
        if (c == '"') quoted = !quoted;
        result += c;
        if (c == '\\') result += json.at(++i);
    }
    return result;
}

} // namespace

QVariant toVariant(double number)
{
    constexpr double most = 9223372036854775808.0; // 2^63
    if (std::abs(number) < most && number == std::floor(number)) return static_cast<qlonglong>(number);
    return number;
}

QString toText(const QVariant& value)
{
    const int type = value.userType();
    const bool isText =
        type == QMetaType::QString || type == QMetaType::LongLong || type == QMetaType::Double;
    return isText ? value.toString() : QString();
}

PropertyReader::PropertyReader(const QByteArray& text, MemoryBudget& budget)
    : m_text(text)
    , m_budget(budget)
{
}

void PropertyReader::begin()
{
    m_reading = true;
    m_properties.clear();
}

void PropertyReader::addName(std::string& name)
{
    if (m_depth > 0) return;
    const auto known = m_names.find(name);
    if (known != m_names.end()) {
        m_name = known->second;
        return;
    }
    m_budget.charge(MemoryBudget::ofText(name.size()));
    m_name = toQString(name);
    if (m_names.size() >= mostNames) return;
    m_budget.charge(nameSize + name.size());
    m_names.emplace(std::move(name), m_name);
}

void PropertyReader::addValue(const QVariant& value)
{
    if (m_depth > 0)
        ++m_count;
    else
        addProperty(value);
}

void PropertyReader::addText(const std::string& text)
{
    if (m_depth > 0) {
        ++m_count;
        return;
    }
    m_budget.charge(MemoryBudget::ofText(text.size()));
    addProperty(toQString(text));
}

void PropertyReader::addProperty(QVariant value)
{
    if (m_properties.size() == mostProperties)
        throw ksp::CommonError(
            QStringLiteral("has an object of more than %1 properties").arg(mostProperties));
    m_budget.charge(sizeof(List::value_type));
    m_properties.emplace_back(m_name, std::move(value));
}

void PropertyReader::beginNested(int offset)
{
    if (m_depth == 0) {
        m_begin = offset - 1;
        m_deepest = 0;
        m_count = 0;
    }
    ++m_count;
    m_deepest = std::max(m_deepest, ++m_depth);
}

void PropertyReader::endNested(int offset)
{
    if (m_depth == 0)
        m_reading = false;
    else if (--m_depth == 0)
        addProperty(toVariant(QByteArray::fromRawData(m_text.constData() + m_begin, offset - m_begin)));
}

// What is nested deeper than a project stores it, or holds much, is kept as text.
QVariant PropertyReader::toVariant(const QByteArray& nested)
{
    m_budget.charge(MemoryBudget::ofText(static_cast<std::size_t>(nested.size())));
    if (m_deepest <= deepestValue && m_count <= mostValues) {
        m_budget.charge(static_cast<std::size_t>(m_count) * valueSize);
        const QVariant value = QJsonDocument::fromJson(nested).toVariant();
        if (value.isValid()) return value;
    }
    return QString::fromUtf8(withoutBlanks(nested));
}

} // namespace readers
