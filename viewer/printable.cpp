#include <viewer/printable.h>

namespace {

bool isVisible(const QChar& character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format: // turns the direction of writing, among others
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

QString escape(const QChar& character)
{
    if (character == QLatin1Char('\n')) return QStringLiteral("\\n");
    if (character == QLatin1Char('\r')) return QStringLiteral("\\r");
    if (character == QLatin1Char('\t')) return QStringLiteral("\\t");
    const ushort code = character.unicode();
    return code < 0x100 ? QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'))
                        : QStringLiteral("\\u%1").arg(code, 4, 16, QLatin1Char('0'));
}

} // namespace

QString printable(const QString& text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar& character : text)
        result += isVisible(character) ? QString(character) : escape(character);
    return result;
}

QString quoted(const QString& text)
{
    QString inner = text;
    inner.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + printable(inner) + QLatin1Char('"');
}

QString shownName(const QString& path)
{
    return path.trimmed().isEmpty() ? quoted(path) : path;
}
