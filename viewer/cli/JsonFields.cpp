#include <viewer/cli/JsonFields.h>

#include <viewer/TileGrid.h>
#include <viewer/cli/OptionValue.h>
#include <viewer/printable.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QJsonArray>

#include <algorithm>
#include <cmath>
#include <limits>

JsonFields::JsonFields(const QJsonObject& object, const QString& place)
    : m_object(object)
    , m_place(place)
{
}

void JsonFields::requireKnown(const QStringList& names) const
{
    for (const QString& key : m_object.keys())
        if (!names.contains(key))
            refuse(QStringLiteral("%1 is no key; there are %2").arg(quoted(key), names.join(", ")));
}

bool JsonFields::has(const QString& name) const
{
    return m_object.contains(name);
}

QString JsonFields::shown(const QString& name) const
{
    return quoted(name);
}

std::vector<double> JsonFields::numbers(const QString& name, const QJsonValue& list, int count,
                                        const QString& wanted) const
{
    const QJsonArray array = list.toArray();
    std::vector<double> numbers;
    for (const QJsonValue& value : array)
        if (value.isDouble() && std::isfinite(value.toDouble())) numbers.push_back(value.toDouble());
    if (array.size() != count || static_cast<int>(numbers.size()) != count)
        refuse(QStringLiteral("%1: %2 is wanted").arg(shown(name), wanted));
    return numbers;
}

glm::dvec3 JsonFields::point(const QString& name) const
{
    const std::vector<double> values = numbers(name, m_object[name], 3, QStringLiteral("[x, y, z]"));
    const glm::dvec3 point(values[0], values[1], values[2]);
    if (OptionValue::isTooFar(point))
        refuse(QStringLiteral("%1: coordinates go to 1e12 at most").arg(shown(name)));
    return point;
}

std::vector<glm::dvec3> JsonFields::points(const QString& name, int dimensions) const
{
    const QString wanted = dimensions == 3 ? QStringLiteral("a list of points [x, y, z]")
                                           : QStringLiteral("a list of points [x, y]");
    if (!m_object[name].isArray()) refuse(QStringLiteral("%1: %2 is wanted").arg(shown(name), wanted));
    std::vector<glm::dvec3> points;
    for (const QJsonValue& value : m_object[name].toArray()) {
        const std::vector<double> values = numbers(name, value, dimensions, wanted);
        points.emplace_back(values[0], values[1], dimensions == 3 ? values[2] : 0.0);
        if (OptionValue::isTooFar(points.back()))
            refuse(QStringLiteral("%1: coordinates go to 1e12 at most").arg(shown(name)));
    }
    return points;
}

QSize JsonFields::size(const QString& name) const
{
    const QString wanted = QStringLiteral("[width, height] in pixels");
    const std::vector<double> values = numbers(name, m_object[name], 2, wanted);
    constexpr double most = std::numeric_limits<int>::max();
    for (const double value : values)
        if (value != std::floor(value) || std::abs(value) > most)
            refuse(QStringLiteral("%1: %2 is wanted").arg(shown(name), wanted));
    const QSize size(static_cast<int>(values[0]), static_cast<int>(values[1]));
    const QString reason = TileGrid::refuse(size);
    if (!reason.isEmpty()) refuse(QStringLiteral("%1: %2").arg(shown(name), reason));
    return size;
}

double JsonFields::number(const QString& name) const
{
    const QJsonValue value = m_object[name];
    if (!value.isDouble() || !std::isfinite(value.toDouble()))
        refuse(QStringLiteral("%1: a number is wanted").arg(shown(name)));
    return value.toDouble();
}

int JsonFields::word(const QString& name, const QStringList& words) const
{
    const int number = m_object[name].isString() ? words.indexOf(m_object[name].toString()) : -1;
    if (number < 0) refuse(QStringLiteral("%1: one of %2 is wanted").arg(shown(name), words.join(", ")));
    return number;
}

QString JsonFields::text(const QString& name) const
{
    if (m_object[name].toString().isEmpty())
        refuse(QStringLiteral("%1: a text that is not empty is wanted").arg(shown(name)));
    return m_object[name].toString();
}

void JsonFields::refuse(const QString& text) const
{
    throw ksp::CommonError(QStringLiteral("%1: %2").arg(m_place, text));
}
