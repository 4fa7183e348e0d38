#include <readers/common/textures.h>

#include <framework/ksp/Log.h>
#include <readers/common/reading.h>

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace readers {

namespace {

constexpr int largestSide = 16384; // pixels

} // namespace

QImage TextureLoader::load(const QString& name, const QStringList& folders)
{
    const auto known = m_images.constFind(name);
    if (known != m_images.constEnd()) return *known;
    QImage image;
    const QString file = find(name, folders);
    if (file.isEmpty()) {
        warn(name, QStringLiteral("is missing"));
    } else {
        QImageReader reader(file);
        image = read(reader, name);
    }
    m_images.insert(name, image);
    return image;
}

QImage TextureLoader::decode(const QByteArray& bytes, const QString& name)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    return read(reader, name);
}

QString TextureLoader::find(const QString& name, const QStringList& folders) const
{
    const QString wanted = QString(name).replace(QLatin1Char('\\'), QLatin1Char('/'));
    for (const QString& candidate : {wanted, wanted.mid(wanted.lastIndexOf(QLatin1Char('/')) + 1)}) {
        for (const QString& folder : folders) {
            const QFileInfo info(QDir(folder), candidate);
            if (!candidate.isEmpty() && info.isFile()) return info.filePath();
        }
    }
    return {};
}

QImage TextureLoader::read(QImageReader& reader, const QString& name)
{
    const QSize size = reader.size();
    QString reason;
    if (size.width() > largestSide || size.height() > largestSide) {
        reason = QStringLiteral("it is larger than %1 pixels").arg(largestSide);
    } else {
        QImage image = reader.read();
        if (!image.isNull()) return image;
        reason = reader.errorString();
    }
    warn(name, QStringLiteral("cannot be read (%1)").arg(reason));
    return {};
}

void TextureLoader::warn(const QString& name, const QString& trouble)
{
    constexpr int most = 10;
    if (++m_warnings > most) return;
    ksp::Log::warning(QStringLiteral("%1: the texture %2 %3, the plain colour is used")
                          .arg(m_path, inQuotes(name.toUtf8().constData()), trouble));
}

} // namespace readers
