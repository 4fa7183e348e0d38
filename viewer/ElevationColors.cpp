#include <viewer/ElevationColors.h>

#include <viewer/printable.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QFile>
#include <QtCore/QLocale>

#include <algorithm>
#include <cmath>

namespace {

constexpr qint64 longestLine = 1000; // bytes

const QColor builtIn[] = {QColor(44, 72, 168),  QColor(46, 150, 204), QColor(72, 180, 120),
                          QColor(170, 208, 84), QColor(250, 220, 80), QColor(242, 146, 54),
                          QColor(204, 48, 44)};
constexpr int builtInCount = sizeof builtIn / sizeof builtIn[0];

/// A height and a colour; nothing in a line without.
using Words = QStringList;

Words wordsOf(const QString& line)
{
    Words words = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    // the second word may begin with # and be a colour
    for (int i = 0; i < words.size(); ++i)
        if (words[i].startsWith(QLatin1Char('#')) && i != 1) words = words.mid(0, i);
    return words;
}

std::pair<double, QColor> levelOf(const Words& words)
{
    if (words.size() != 2)
        throw ksp::CommonError(QStringLiteral("a height and a colour are wanted, for example 350.5 #40a060"));
    bool isNumber = false;
    const double height = QLocale::c().toDouble(words[0], &isNumber);
    if (!isNumber || !std::isfinite(height))
        throw ksp::CommonError(quoted(words[0]) + QStringLiteral(" is no height"));
    const QColor color(words[1]);
    if (!color.isValid())
        throw ksp::CommonError(quoted(words[1]) +
                               QStringLiteral(" is no colour; a name or #rrggbb is wanted"));
    return {height, color};
}

void add(ElevationColors::Levels& levels, const std::pair<double, QColor>& level, std::size_t most)
{
    if (!levels.empty() && level.first <= levels.back().first)
        throw ksp::CommonError(
            QStringLiteral("the heights must ascend, and %1 is not above %2")
                .arg(QString::number(level.first, 'g', QLocale::FloatingPointShortest),
                     QString::number(levels.back().first, 'g', QLocale::FloatingPointShortest)));
    if (levels.size() == most)
        throw ksp::CommonError(QStringLiteral("there are more than %1 levels").arg(most));
    levels.push_back(level);
}

int between(int lower, int upper, double share)
{
    return qRound(lower + share * (upper - lower));
}

} // namespace

ElevationColors::ElevationColors(Levels levels, bool isDiscrete)
    : m_levels(std::move(levels))
    , m_isDiscrete(isDiscrete)
{
}

ElevationColors ElevationColors::over(double lowest, double highest, bool isDiscrete)
{
    if (!(highest > lowest)) {
        lowest -= 0.5;
        highest += 0.5;
    }
    const double step = (highest - lowest) / (isDiscrete ? builtInCount : builtInCount - 1);
    Levels levels;
    for (int i = 0; i < builtInCount; ++i)
        levels.emplace_back(lowest + i * step, builtIn[i]);
    return ElevationColors(std::move(levels), isDiscrete);
}

ElevationColors ElevationColors::read(const QString& path, bool isDiscrete)
{
    const auto fail = [&path](const QString& reason) {
        return ksp::CommonError(shownName(path) + QStringLiteral(": ") + reason);
    };
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) throw fail(QStringLiteral("cannot be read: ") + file.errorString());
    try {
        return read(file, isDiscrete);
    } catch (const ksp::CommonError& error) {
        throw fail(error.text());
    }
}

ElevationColors ElevationColors::read(QIODevice& device, bool isDiscrete)
{
    Levels levels;
    for (int number = 1; !device.atEnd(); ++number) {
        try {
            QByteArray line = device.readLine(longestLine + 2);
            if (number == 1 && line.startsWith("\xEF\xBB\xBF"))
                line.remove(0, 3); // which some editors put there
            if (line.size() > longestLine) throw ksp::CommonError(QStringLiteral("the line is too long"));
            const Words words = wordsOf(QString::fromUtf8(line));
            if (!words.isEmpty()) add(levels, levelOf(words), isDiscrete ? mostDiscreteLevels : mostLevels);
        } catch (const ksp::CommonError& error) {
            throw ksp::CommonError(QStringLiteral("line %1: %2").arg(number).arg(error.text()));
        }
    }
    if (levels.empty()) throw ksp::CommonError(QStringLiteral("there are no levels in it"));
    return ElevationColors(std::move(levels), isDiscrete);
}

QColor ElevationColors::at(double height) const
{
    const auto above = std::upper_bound(m_levels.begin(), m_levels.end(), height,
                                        [](double value, const auto& level) { return value < level.first; });
    if (above == m_levels.begin()) return m_levels.front().second;
    const auto& [lowerHeight, lower] = *(above - 1);
    if (above == m_levels.end() || m_isDiscrete) return lower;
    const auto& [upperHeight, upper] = *above;
    const double share = (height - lowerHeight) / (upperHeight - lowerHeight);
    return QColor(between(lower.red(), upper.red(), share), between(lower.green(), upper.green(), share),
                  between(lower.blue(), upper.blue(), share), between(lower.alpha(), upper.alpha(), share));
}
