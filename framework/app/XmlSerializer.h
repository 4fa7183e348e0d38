#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtXml/QDomElement>

/// Values in XML elements, in the attribute "value": colours as #AARRGGBB, numbers in the C locale, booleans
/// as 0 and 1. A reader gives the default when the element is null, has no value or one that it cannot read.
class HOSTFRAMEWORK_EXPORT XmlSerializer
{
public:
    static QColor readColor(const QDomElement& element, const QColor& defaultValue);
    static int readInt(const QDomElement& element, int defaultValue);
    static double readDouble(const QDomElement& element, double defaultValue);
    static QString readString(const QDomElement& element, const QString& defaultValue);
    static void writeColor(QDomElement element, const QColor& value);
    static void writeInt(QDomElement element, int value);
    static void writeDouble(QDomElement element, double value);
    static void writeString(QDomElement element, const QString& value);
};
