#include <framework/app/XmlSerializer.h>

#include <cmath>

namespace {

const QString attribute = QStringLiteral("value");

/// The text without what XML cannot hold even as a reference: control characters, lone surrogates and the two
/// codes that are no characters. A file with one of them could not be read again.
QString withoutForbidden(const QString& text)
{
    QString kept;
    kept.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            kept += c;
            kept += text[++i];
        } else if (!c.isSurrogate() && c.unicode() < 0xFFFE &&
                   (c.unicode() >= 0x20 || c == QLatin1Char('\t') || c == QLatin1Char('\n') ||
                    c == QLatin1Char('\r'))) {
            kept += c;
        }
    }
    return kept;
}

void write(QDomElement& element, const QString& value)
{
    if (!element.isNull()) element.setAttribute(attribute, value);
}

} // namespace

QColor XmlSerializer::readColor(const QDomElement& element, const QColor& defaultValue)
{
    const QString value = element.attribute(attribute);
    return QColor::isValidColor(value) ? QColor(value) : defaultValue;
}

int XmlSerializer::readInt(const QDomElement& element, int defaultValue)
{
    bool read = false;
    const int value = element.attribute(attribute).toInt(&read);
    return read ? value : defaultValue;
}

double XmlSerializer::readDouble(const QDomElement& element, double defaultValue)
{
    bool read = false;
    const double value = element.attribute(attribute).toDouble(&read);
    return read && std::isfinite(value) ? value : defaultValue;
}

QString XmlSerializer::readString(const QDomElement& element, const QString& defaultValue)
{
    return element.attribute(attribute, defaultValue);
}

void XmlSerializer::writeColor(QDomElement element, const QColor& value)
{
    if (value.isValid())
        write(element, value.name(QColor::HexArgb));
    else
        element.removeAttribute(attribute);
}

void XmlSerializer::writeInt(QDomElement element, int value)
{
    write(element, QString::number(value));
}

void XmlSerializer::writeDouble(QDomElement element, double value)
{
    if (std::isfinite(value))
        write(element, QString::number(value, 'g', 17));
    else
        element.removeAttribute(attribute);
}

void XmlSerializer::writeString(QDomElement element, const QString& value)
{
    write(element, withoutForbidden(value));
}
