#include <readers/colmap/ColmapLines.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/numbers.h>
#include <readers/common/reading.h>

#include <cmath>

namespace readers {

ColmapLines::ColmapLines(QIODevice& device, ksp::StagedProgress progress)
    : m_buffer(device, std::move(progress))
{
}

bool ColmapLines::next()
{
    while (nextBelow())
        if (!isAtEnd() && m_rest.front() != '#') return true;
    return false;
}

bool ColmapLines::nextBelow()
{
    return m_buffer.readLine(m_rest);
}

bool ColmapLines::isAtEnd()
{
    m_rest = trimmed(m_rest);
    return m_rest.empty();
}

std::string_view ColmapLines::takeWord(const char* what)
{
    const std::string_view word = takeToken(m_rest);
    if (word.empty()) fail(QStringLiteral("%1 is missing").arg(QLatin1String(what)));
    return word;
}

double ColmapLines::takeNumber(const char* what)
{
    constexpr double largest = 1e15;
    const std::string_view word = takeWord(what);
    double value = 0.0;
    if (!toDouble(word, value) || !(std::abs(value) <= largest))
        fail(QStringLiteral("%1 is no number of at most 1e15: %2").arg(QLatin1String(what), inQuotes(word)));
    return value;
}

std::int64_t ColmapLines::takeInteger(const char* what, std::int64_t least, std::int64_t most)
{
    const std::string_view word = takeWord(what);
    std::int64_t value = 0;
    if (!toInteger(word, value) || value < least || value > most)
        fail(QStringLiteral("%1 is no whole number from %2 to %3: %4")
                 .arg(QLatin1String(what))
                 .arg(least)
                 .arg(most)
                 .arg(inQuotes(word)));
    return value;
}

std::string_view ColmapLines::takeRest()
{
    const std::string_view rest = trimmed(m_rest);
    m_rest = {};
    return rest;
}

void ColmapLines::requireEnd()
{
    if (!isAtEnd())
        fail(QStringLiteral("there is something behind the last number: %1")
                 .arg(inQuotes(m_rest.substr(0, 20))));
}

void ColmapLines::fail(const QString& reason) const
{
    throw ksp::CommonError(QStringLiteral("line %1: %2").arg(m_buffer.getLineNumber()).arg(reason));
}

} // namespace readers
