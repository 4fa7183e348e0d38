#pragma once

#include <readers/common/MemoryBudget.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace readers {

/// A number as a property: one without decimals is a whole number, however it is written.
QVariant toVariant(double number);
/// Text for a value that is text or a number, empty for others.
QString toText(const QVariant& value);

/// The properties of one object of a JSON file after the other, from what stands between the braces of each.
class PropertyReader
{
public:
    using List = std::vector<std::pair<QString, QVariant>>;

    /// text: the whole file.
    PropertyReader(const QByteArray& text, MemoryBudget& budget);

    void begin();
    /// Whether the closing brace is still to come.
    bool isReading() const { return m_reading; }
    void addName(std::string& name);
    void addValue(const QVariant& value);
    void addText(const std::string& text);
    /// A list or object begins or ends; offset: bytes of the file up to and with its bracket. The end that
    /// was not begun is that of the properties.
    void beginNested(int offset);
    void endNested(int offset);

    /// Those read last; a name that the file gives twice is in it twice.
    List takeProperties() { return std::move(m_properties); }

private:
    void addProperty(QVariant value);
    QVariant toVariant(const QByteArray& nested);

    QByteArray m_text;
    MemoryBudget& m_budget;
    std::unordered_map<std::string, QString> m_names; // features have the same ones, which are kept once
    List m_properties;
    QString m_name; // of the value to come
    bool m_reading = false;
    int m_begin = 0; // of the list or object under way, and what it holds
    int m_depth = 0;
    int m_deepest = 0;
    int m_count = 0;
};

} // namespace readers
