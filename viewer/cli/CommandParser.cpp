#include <viewer/cli/CommandParser.h>

#include <viewer/cli/UsageError.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

/// Levenshtein distance: letters to insert, remove or replace.
int typingMistakes(const QString& a, const QString& b)
{
    std::vector<int> row(static_cast<std::size_t>(b.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i + 1;
        for (int j = 0; j < b.size(); ++j) {
            int& cell = row[static_cast<std::size_t>(j) + 1];
            const int replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = cell;
            cell = std::min({replaced, cell + 1, row[static_cast<std::size_t>(j)] + 1});
        }
    }
    return row.back();
}

/// Whether an argument is the value of an option that may do without.
bool isValue(const QString& argument, const QString& suffix)
{
    if (argument.isEmpty() || argument.startsWith(QLatin1Char('-'))) return false;
    if (!suffix.isEmpty()) return argument.endsWith(suffix);
    return !argument.contains(QLatin1Char('.')) && !argument.contains(QLatin1Char('/'));
}

QString dashed(const QString& name)
{
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

} // namespace

QString nearestWord(const QString& word, const QStringList& candidates)
{
    QString best;
    // two letters changed places count as two mistakes; of a short word that would leave nothing
    int fewest = (word.size() <= 3 ? 1 : std::max(2, word.size() / 3)) + 1;
    for (const QString& candidate : candidates) {
        const int mistakes = candidate.startsWith(word) ? 1 : typingMistakes(word, candidate);
        if (mistakes < fewest && mistakes < candidate.size()) {
            fewest = mistakes;
            best = candidate;
        }
    }
    return best;
}

CommandParser::CommandParser(const QString& synopsis, const QString& description)
    : m_synopsis(synopsis)
    , m_description(description)
{
    add({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("show this help"));
}

void CommandParser::add(const QStringList& names, const QString& description, const QString& valueName)
{
    m_options.append(QCommandLineOption(names, description, valueName));
    m_parser.addOption(m_options.last());
}

void CommandParser::addWithOptionalValue(const QString& name, const QString& description,
                                         const QString& valueName, const QString& suffix)
{
    m_parser.addOption(QCommandLineOption(name, description));
    m_options.append(QCommandLineOption(name, description, QStringLiteral("[=%1]").arg(valueName)));
    m_optionalValues.append({dashed(name), suffix, {}});
}

QStringList CommandParser::takeOptionalValues(const QStringList& arguments)
{
    QStringList rest;
    for (int i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == QLatin1String("--")) return rest + arguments.mid(i);
        rest.append(arguments[i]);
        for (OptionalValue& option : m_optionalValues) {
            if (arguments[i].section(QLatin1Char('='), 0, 0) != option.name) continue;
            const bool isJoined = arguments[i] != option.name;
            QString value = isJoined ? arguments[i].section(QLatin1Char('='), 1) : QString();
            if (isJoined && value.isEmpty())
                throw UsageError((option.suffix.isEmpty() ? QStringLiteral("%1 wants a word")
                                                          : QStringLiteral("%1 wants the name of a file"))
                                     .arg(arguments[i]));
            const QString next = arguments.value(i + 1);
            if (!isJoined && isValue(next, option.suffix)) {
                value = next;
                ++i;
            }
            option.values.append(value);
            rest.last() = option.name;
        }
    }
    return rest;
}

void CommandParser::parse(const QStringList& arguments)
{
    if (m_parser.parse(QStringList(QStringLiteral("viewer3d")) + takeOptionalValues(arguments))) return;
    if (m_parser.unknownOptionNames().isEmpty()) {
        QString command = m_synopsis.section(QLatin1Char(' '), 0, 0);
        if (command.startsWith(QLatin1Char('['))) command.clear(); // the window has no word of its own
        throw UsageError(
            QStringLiteral("%1 See: viewer3d %2 --help").arg(m_parser.errorText(), command).simplified());
    }
    const QString wrong = m_parser.unknownOptionNames().first();
    const QString nearest = nearestOption(wrong);
    throw UsageError(QStringLiteral("unknown option %1; ").arg(dashed(wrong)) +
                     (nearest.isEmpty() ? QStringLiteral("usage: viewer3d %1").arg(m_synopsis)
                                        : QStringLiteral("did you mean %1?").arg(dashed(nearest))));
}

QString CommandParser::nearestOption(const QString& wrong) const
{
    QStringList names;
    for (const QCommandLineOption& option : m_options)
        names.append(option.names().last());
    return nearestWord(wrong, names);
}

QStringList CommandParser::valuesOf(const QString& name) const
{
    for (const OptionalValue& option : m_optionalValues)
        if (option.name == dashed(name)) return option.values;
    return m_parser.values(name);
}

QString CommandParser::value(const QString& name) const
{
    const QStringList values = valuesOf(name);
    if (values.size() > 1)
        throw UsageError(
            QStringLiteral("%1 is given %2 times; give it once").arg(dashed(name)).arg(values.size()));
    return values.value(0);
}

QString CommandParser::helpText() const
{
    QStringList left, right;
    int width = 0;
    for (const QCommandLineOption& option : m_options) {
        QStringList names;
        for (const QString& name : option.names())
            names.append(dashed(name));
        QString text = names.join(QStringLiteral(", "));
        if (option.valueName().startsWith(QLatin1Char('[')))
            text += option.valueName(); // which may be left out
        else if (!option.valueName().isEmpty())
            text += QLatin1Char(' ') + option.valueName();
        left.append(text);
        right.append(option.description());
        width = std::max(width, text.size());
    }
    QString help = QStringLiteral("Usage: viewer3d %1\n\n%2\n\nOptions:\n").arg(m_synopsis, m_description);
    for (int i = 0; i < left.size(); ++i)
        help += QStringLiteral("  %1  %2\n").arg(left[i].leftJustified(width), right[i]);
    return help;
}
