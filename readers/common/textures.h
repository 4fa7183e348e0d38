#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QStringList>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

namespace readers {

/// Loads the pictures that a file names, each once. A picture that is missing, damaged or larger than 16384
/// pixels a side gives one warning in the log, ten a file at most, and a null image.
class TextureLoader
{
public:
    /// path: the file that names the pictures, for messages.
    explicit TextureLoader(const QString& path)
        : m_path(path)
    {
    }

    /// name: as the file gives it, with / or \ and relative to one of the folders, which are tried in order;
    /// where it is not found there, its last part alone is tried in them.
    QImage load(const QString& name, const QStringList& folders);
    /// A picture inside the file.
    QImage decode(const QByteArray& bytes, const QString& name);

private:
    QString find(const QString& name, const QStringList& folders) const;
    QImage read(QImageReader& reader, const QString& name);
    void warn(const QString& name, const QString& trouble);

    QString m_path;
    QHash<QString, QImage> m_images;
    int m_warnings = 0;
};

} // namespace readers
