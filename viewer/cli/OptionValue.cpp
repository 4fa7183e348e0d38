#include <viewer/cli/OptionValue.h>

#include <viewer/TileGrid.h>
#include <viewer/cli/UsageError.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double largestCoordinate = 1e12; // model units: in millimetres far beyond the moon

} // namespace

std::vector<double> OptionValue::numbers(const QString& text)
{
    std::vector<double> numbers;
    for (const QString& part : text.split(QLatin1Char(','))) {
        bool isNumber = false;
        numbers.push_back(part.trimmed().toDouble(&isNumber));
        if (!isNumber || !std::isfinite(numbers.back())) return {};
    }
    return numbers;
}

glm::dvec3 OptionValue::point(const QString& option, const QString& text)
{
    const std::vector<double> parts = numbers(text);
    if (parts.size() != 3)
        throw UsageError(QStringLiteral("--%1 %2: three numbers are wanted, for example 612000,5071000,350")
                             .arg(option, text));
    const glm::dvec3 point(parts[0], parts[1], parts[2]);
    if (isTooFar(point))
        throw UsageError(QStringLiteral("--%1 %2: coordinates go to 1e12 at most").arg(option, text));
    return point;
}

QSize OptionValue::size(const QString& option, const QString& text)
{
    const QStringList parts = text.toLower().split(QLatin1Char('x'));
    bool isWidth = false, isHeight = false;
    const QSize size(parts.value(0).toInt(&isWidth), parts.value(1).toInt(&isHeight));
    if (parts.size() != 2 || !isWidth || !isHeight)
        throw UsageError(QStringLiteral("--%1 %2: WIDTHxHEIGHT in pixels is wanted, for example 1280x720")
                             .arg(option, text));
    const QString refused = TileGrid::refuse(size);
    if (!refused.isEmpty()) throw UsageError(QStringLiteral("--%1 %2: %3").arg(option, text, refused));
    return size;
}

double OptionValue::number(const QString& option, const QString& text)
{
    bool isNumber = false;
    const double number = text.trimmed().toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number))
        throw UsageError(QStringLiteral("--%1 %2: a number is wanted").arg(option, text));
    return number;
}

int OptionValue::word(const QString& option, const QString& text, const QStringList& words)
{
    const int number = words.indexOf(text.toLower());
    if (number < 0)
        throw UsageError(QStringLiteral("--%1 %2: one of %3 is wanted")
                             .arg(option, text, words.join(QStringLiteral(", "))));
    return number;
}

QColor OptionValue::color(const QString& option, const QString& text)
{
    const QColor color(text);
    if (!color.isValid())
        throw UsageError(QStringLiteral("--%1 %2: no such colour; a name such as lightgray, #rrggbb or "
                                        "transparent is wanted")
                             .arg(option, text));
    return color;
}

bool OptionValue::isTooFar(const glm::dvec3& point)
{
    return std::max({std::abs(point.x), std::abs(point.y), std::abs(point.z)}) > largestCoordinate;
}
