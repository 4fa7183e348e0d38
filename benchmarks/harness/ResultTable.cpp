#include <benchmarks/harness/ResultTable.h>

#include <QtCore/QLocale>

#include <algorithm>
#include <cmath>

namespace {

const QString beginMark = QStringLiteral("<!-- results: begin -->");
const QString endMark = QStringLiteral("<!-- results: end -->");
const QString none = QStringLiteral("–");
constexpr double tolerance = 1.1;

QString sizeText(qint64 size)
{
    return QLocale(QLocale::English).toString(size);
}

QString nameOf(const Result& result)
{
    return QStringLiteral("%1/%2").arg(result.key).arg(result.size);
}

/// Three digits that count.
QString numberText(double value)
{
    if (value <= 0.0) return none;
    const int digits = std::max(0, 2 - static_cast<int>(std::floor(std::log10(value))));
    return QString::number(value, 'f', digits);
}

QString ratioText(double value)
{
    return value > 0.0 ? QString::number(value, 'f', 2) : none;
}

QString goalText(const Result& result)
{
    if (result.goal <= 0.0) return none;
    return result.kind == Result::Paired ? ratioText(result.goal)
                                         : numberText(result.goal) + ' ' + result.unit;
}

QString verdict(const Result& result)
{
    if (!result.problem.isEmpty()) return result.problem;
    if (!result.remark.isEmpty()) return result.remark;
    if (result.goal <= 0.0) return none;
    return result.isMet() ? QStringLiteral("met") : QStringLiteral("missed");
}

QStringList cells(const Result& result)
{
    const bool isPaired = result.kind == Result::Paired;
    const QString unit = isPaired || result.unit.isEmpty() ? QString() : ' ' + result.unit;
    const QString spread =
        isPaired ? ratioText(result.processor.low) + " to " + ratioText(result.processor.high) : none;
    return {result.key,
            result.work,
            sizeText(result.size),
            numberText(result.processor.ours) + unit,
            numberText(result.processor.plain),
            ratioText(result.processor.ratio),
            spread,
            numberText(result.wall.ours),
            numberText(result.wall.plain),
            ratioText(result.wall.ratio),
            goalText(result),
            verdict(result)};
}

QString row(const QStringList& texts)
{
    return "| " + texts.join(QStringLiteral(" | ")) + " |\n";
}

QString goalTable(const std::vector<Result>& results)
{
    QString text = row({"", "Work", "Size", "ours, ms", "plain, ms", "ratio", "quartiles", "ours, wall ms",
                        "plain, wall ms", "wall ratio", "goal", ""});
    text += "|---|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|---|\n";
    for (const Result& result : results)
        if (result.kind != Result::Growth) text += row(cells(result));
    return text;
}

struct Growth
{
    QString work;
    std::map<qint64, const Result*> bySize;
};

/// The power of the number of items that the whole time grows by from one size to another: 1 is linear.
QString powerText(const Result& from, const Result& to)
{
    const double itemTimes = to.processor.ours / from.processor.ours;
    const double sizes = static_cast<double>(to.size) / static_cast<double>(from.size);
    return ratioText(1.0 + std::log(itemTimes) / std::log(sizes));
}

/// From the smallest size to the largest, and from the last but one.
QStringList powerTexts(const Growth& growth)
{
    if (growth.bySize.size() < 2) return {none, none};
    const auto last = std::prev(growth.bySize.end()), before = std::prev(last);
    return {powerText(*growth.bySize.begin()->second, *last->second),
            powerText(*before->second, *last->second)};
}

QString growthTable(const std::vector<Result>& results)
{
    std::vector<QString> order;
    std::map<QString, Growth> all;
    std::map<qint64, int> sizes;
    for (const Result& result : results) {
        if (result.kind != Result::Growth) continue;
        if (all.count(result.key) == 0) order.push_back(result.key);
        all[result.key].work = result.work;
        all[result.key].bySize[result.size] = &result;
        ++sizes[result.size];
    }
    if (all.empty()) return {};
    QStringList head = {QString(), QStringLiteral("µs an item, of")}, rule = {"---", "---"};
    for (const auto& entry : sizes) {
        head << sizeText(entry.first);
        rule << "--:";
    }
    head << QStringLiteral("power") << QStringLiteral("of the last step");
    rule << "--:";
    rule << "--:";
    QString text = '\n' + row(head) + row(rule).remove(' ');
    for (const QString& key : order) {
        const Growth& growth = all[key];
        QStringList texts = {key, growth.work};
        for (const auto& entry : sizes) {
            const auto found = growth.bySize.find(entry.first);
            if (found == growth.bySize.end())
                texts << none;
            else
                texts << (found->second->processor.ours > 0.0 ? numberText(found->second->processor.ours)
                                                              : verdict(*found->second));
        }
        text += row(texts << powerTexts(growth));
    }
    return text;
}

} // namespace

QString ResultTable::line(const Result& result)
{
    const QString name = nameOf(result).leftJustified(16);
    if (result.kind != Result::Paired) {
        const QString value = numberText(result.processor.ours) + ' ' + result.unit;
        return name + value.rightJustified(12) + "  " + verdict(result) + "  " + result.work;
    }
    return QStringLiteral("%1 ours %2 ms, plain %3 ms, ratio %4 (%5 to %6, %7 pairs), wall %8; goal %9: %10")
        .arg(name, numberText(result.processor.ours), numberText(result.processor.plain),
             ratioText(result.processor.ratio), ratioText(result.processor.low),
             ratioText(result.processor.high))
        .arg(result.pairs)
        .arg(ratioText(result.wall.ratio), goalText(result), verdict(result));
}

QString ResultTable::toMarkdown(const std::vector<Result>& results, const Machine& machine)
{
    return QStringLiteral("Driver: %1. Processor: %2. Measured on %3, commit %4.\n\n")
               .arg(machine.driver, machine.processor, machine.date, machine.commit) +
           goalTable(results) + growthTable(results);
}

ResultTable::Figures ResultTable::figuresOf(const QString& document)
{
    Figures figures;
    for (const QString& line : document.section(beginMark, 1).section(endMark, 0, 0).split('\n')) {
        QStringList texts = line.split('|');
        if (texts.size() != 14) continue; // 12 cells, nothing before the first and after the last
        for (QString& text : texts)
            text = text.trimmed();
        bool isSize = false, isFigure = false;
        const qint64 size = QString(texts[3]).remove(',').toLongLong(&isSize);
        const QString figure = texts[6] == none ? texts[4].section(' ', 0, 0) : texts[6];
        const double value = figure.toDouble(&isFigure);
        if (isSize && isFigure) figures[{texts[1], size}] = value;
    }
    return figures;
}

QString ResultTable::replaceTables(const QString& document, const QString& tables)
{
    const int begin = document.indexOf(beginMark);
    const int end = document.indexOf(endMark, begin < 0 ? 0 : begin);
    if (begin < 0 || end < 0) return {};
    return document.left(begin) + beginMark + "\n\n" + tables + '\n' + document.mid(end);
}

bool ResultTable::isCompared(const Result& result)
{
    return result.kind == Result::Paired || (result.kind == Result::Single && result.unit == "B");
}

bool ResultTable::isAbove(const Result& result, const Figures& recorded)
{
    const auto entry = recorded.find({result.key, result.size});
    return isCompared(result) && entry != recorded.end() && result.figure() > tolerance * entry->second;
}

QStringList ResultTable::unrecorded(const std::vector<Result>& results, const Figures& recorded)
{
    QStringList names;
    for (const Result& result : results)
        if (isCompared(result) && recorded.count({result.key, result.size}) == 0) names << nameOf(result);
    return names;
}

bool ResultTable::isAnyCompared(const std::vector<Result>& results, const Figures& recorded)
{
    return std::any_of(results.begin(), results.end(), [&recorded](const Result& result) {
        return isCompared(result) && recorded.count({result.key, result.size}) != 0;
    });
}

QStringList ResultTable::findings(const std::vector<Result>& results, const Figures& recorded)
{
    QStringList lines;
    for (const Result& result : results) {
        const QString name = nameOf(result);
        if (!result.problem.isEmpty())
            lines << name + ": " + result.problem;
        else if (isAbove(result, recorded))
            lines << QStringLiteral("%1: %2, more than a tenth above the recorded %3")
                         .arg(name)
                         .arg(result.figure(), 0, 'f', 2)
                         .arg(recorded.at({result.key, result.size}), 0, 'f', 2);
    }
    return lines;
}
