#include <benchmarks/harness/comparePictures.h>

#include <QtCore/QDir>

#include <cstdlib>

namespace {

bool isNear(QRgb a, QRgb b)
{
    constexpr int most = 2;
    return std::abs(qRed(a) - qRed(b)) <= most && std::abs(qGreen(a) - qGreen(b)) <= most &&
           std::abs(qBlue(a) - qBlue(b)) <= most;
}

} // namespace

QString comparePictures(const QImage& ours, const QImage& plain, double allowed)
{
    const QString folder = QString::fromLocal8Bit(qgetenv("V3D_BENCHMARK_PICTURES"));
    if (!folder.isEmpty()) {
        ours.save(QDir(folder).filePath(QStringLiteral("ours.png")));
        plain.save(QDir(folder).filePath(QStringLiteral("plain.png")));
    }
    if (ours.size() != plain.size()) return QStringLiteral("the pictures are of different sizes");
    const QRgb background = qRgb(0, 0, 0);
    int covered = 0, different = 0;
    for (int y = 0; y < ours.height(); ++y)
        for (int x = 0; x < ours.width(); ++x) {
            const QRgb a = ours.pixel(x, y), b = plain.pixel(x, y);
            covered += (a | 0xFF000000u) != background;
            different += !isNear(a, b);
        }
    if (covered < ours.width() * ours.height() / 1000) return QStringLiteral("the picture is empty");
    if (different <= allowed * covered) return {};
    return QStringLiteral("the pictures differ in %1 of %2 covered pixels").arg(different).arg(covered);
}

int pixelsOf(const QImage& picture, const QColor& color)
{
    int count = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            count += isNear(picture.pixel(x, y), color.rgb());
    return count;
}

QString compareColored(const QImage& ours, const QImage& plain, const QColor& color)
{
    const int here = pixelsOf(ours, color), there = pixelsOf(plain, color);
    if (here > 0 && std::abs(here - there) <= 2 + there / 10) return {};
    return QStringLiteral("of %1 our picture shows %2 pixels, the plain one %3")
        .arg(color.name())
        .arg(here)
        .arg(there);
}
