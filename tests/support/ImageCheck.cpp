#include "ImageCheck.h"

#include <gtest/gtest.h>

#include <QtCore/QDir>

#include <algorithm>
#include <cstdlib>

namespace {

int largestDifference(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
}

} // namespace

void saveTestImage(const char* name, const QImage& image)
{
    const QDir folder(QStringLiteral(V3D_BINARY_DIR "/test-output"));
    folder.mkpath(QStringLiteral("."));
    image.save(folder.filePath(QString::fromUtf8(name) + QStringLiteral(".png")));
}

void checkImage(const char* name, const QImage& actual, const QImage& expected, ImageTolerance tolerance)
{
    ASSERT_EQ(actual.size(), expected.size()) << name;
    QImage difference(actual.size(), QImage::Format_RGB32);
    int different = 0;
    int largest = 0;
    QPoint where;
    for (int y = 0; y < actual.height(); ++y)
        for (int x = 0; x < actual.width(); ++x) {
            const int d = largestDifference(actual.pixel(x, y), expected.pixel(x, y));
            difference.setPixel(x, y, qRgb(d, d, d));
            different += d > tolerance.channelLimit;
            if (d > largest) {
                largest = d;
                where = QPoint(x, y);
            }
        }
    if (different <= tolerance.pixelsAllowed) return;
    const std::string base = name;
    saveTestImage((base + ".actual").c_str(), actual);
    saveTestImage((base + ".expected").c_str(), expected);
    saveTestImage((base + ".diff").c_str(), difference);
    ADD_FAILURE() << name << ": " << different << " of " << actual.width() * actual.height()
                  << " pixels differ by more than " << tolerance.channelLimit << "/255 ("
                  << tolerance.pixelsAllowed << " allowed), largest " << largest << " at (" << where.x()
                  << ", " << where.y() << "); see test-output/" << name << ".*.png in the build folder";
}

int countPixels(const QImage& image, const QColor& color, int limit)
{
    return countPixels(image, [&](QRgb pixel) { return largestDifference(pixel, color.rgba()) <= limit; });
}

int countPixels(const QImage& image, const std::function<bool(QRgb)>& condition)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += condition(image.pixel(x, y));
    return count;
}
