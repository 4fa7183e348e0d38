#include <viewer/elements/PictureCache.h>

#include <viewer/printable.h>

#include <framework/ksp/Log.h>

#include <QtCore/QCache>
#include <QtGui/QImageReader>

namespace {

constexpr int longestSide = 4096; // pixels
constexpr int kept = 256 * 1024;  // KiB
constexpr int bytesOfKib = 1024;

QImage read(const QString& path)
{
    QImageReader reader(path);
    const QSize size = reader.size();
    if (size.width() > longestSide || size.height() > longestSide) {
        reader.setScaledSize(size.scaled(longestSide, longestSide, Qt::KeepAspectRatio));
        ksp::Log::info(QStringLiteral("%1: the texture of %2 x %3 pixels is scaled down to %4")
                           .arg(shownName(path))
                           .arg(size.width())
                           .arg(size.height())
                           .arg(longestSide));
    }
    QImage image = reader.read();
    if (image.isNull())
        ksp::Log::warning(QStringLiteral("%1: the texture cannot be read (%2), the plain colour is used")
                              .arg(shownName(path), reader.errorString()));
    return image;
}

} // namespace

QImage PictureCache::load(const QString& path)
{
    static QCache<QString, QImage> pictures(kept);
    if (const QImage* known = pictures.object(path)) return *known;
    const QImage image = read(path);
    pictures.insert(path, new QImage(image), 1 + static_cast<int>(image.sizeInBytes() / bytesOfKib));
    return image;
}
