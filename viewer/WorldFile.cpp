#include <viewer/WorldFile.h>

#include <QtCore/QFileInfo>
#include <QtCore/QLocale>

QString WorldFile::pathFor(const QString& picture)
{
    // the first letter of the extension, the last one, and w
    const QString extension = QFileInfo(picture).suffix();
    const QString shown = extension.toLower() == QLatin1String("tiff") ? extension.left(3) : extension;
    return picture.left(picture.size() - extension.size()) + shown.left(1) + shown.right(1) +
           (shown.right(1).isUpper() ? QLatin1Char('W') : QLatin1Char('w'));
}

QByteArray WorldFile::content(double pixel, double left, double top)
{
    QByteArray lines;
    for (const double number : {pixel, 0.0, 0.0, -pixel, left + pixel / 2.0, top - pixel / 2.0})
        lines += QByteArray::number(number, 'f', QLocale::FloatingPointShortest) + '\n';
    return lines;
}
