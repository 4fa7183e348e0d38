#include <viewer/cli/requireDistinct.h>

#include <viewer/cli/UsageError.h>
#include <viewer/printable.h>

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

void requireDistinct(const QStringList& outputs)
{
    QSet<QString> places;
    for (const QString& name : outputs) {
        const QFileInfo file(name);
        const QString place = file.exists()      ? file.canonicalFilePath()
                              : file.isSymLink() ? file.symLinkTarget()
                                                 : file.absoluteFilePath();
        if (places.contains(place))
            throw UsageError(QStringLiteral("%1: another output is the same file; give each one of its own")
                                 .arg(shownName(name)));
        places.insert(place);
    }
}
