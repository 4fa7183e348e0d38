#include <Viewer3dModule/drawables/captionImages.h>

#include <framework/graphics/CGraphicsTextItem.h>
#include <framework/ksp/Log.h>

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <algorithm>

namespace {

/// Cuts what is too long and tells of it once, when all is done.
class Cutter
{
public:
    Cutter(const QString& text, int longestSide)
        : m_text(text)
        , m_longestSide(longestSide)
    {
    }
    ~Cutter()
    {
        if (!m_isCut) return;
        ksp::Log::warning(
            QStringLiteral("The caption \"%1...\" of %2 characters is cut: captions have at most "
                           "%3 characters, %4 pixels a side and %5 pixels")
                .arg(m_text.left(20).simplified())
                .arg(m_text.size())
                .arg(caption_images::longestText)
                .arg(m_longestSide)
                .arg(caption_images::mostPixels));
    }
    Cutter(const Cutter&) = delete;
    Cutter& operator=(const Cutter&) = delete;

    QString text()
    {
        if (m_text.size() <= caption_images::longestText) return m_text;
        m_isCut = true;
        QString begin = m_text.left(caption_images::longestText);
        if (begin.at(begin.size() - 1).isHighSurrogate()) begin.chop(1);
        return begin;
    }
    /// The size of the picture; a side is 0 also for what is no number.
    QSize size(double width, double height)
    {
        const int columns = side(width, m_longestSide);
        const int most = std::min(m_longestSide, caption_images::mostPixels / std::max(columns, 1));
        return {columns, side(height, most)};
    }

private:
    int side(double length, int most)
    {
        if (!(length > 0.0)) return 0;
        if (length < most + 1.0) return static_cast<int>(length);
        m_isCut = true;
        return most;
    }

    const QString& m_text;
    int m_longestSide;
    bool m_isCut = false;
};

// Bytes in the order red, green, blue, alpha.
void colorTransparentPixels(QImage& image, const QColor& color)
{
    const uchar rgb[3] = {static_cast<uchar>(color.red()), static_cast<uchar>(color.green()),
                          static_cast<uchar>(color.blue())};
    for (int y = 0; y < image.height(); ++y) {
        uchar* pixel = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x, pixel += 4)
            if (pixel[3] == 0) std::copy(rgb, rgb + 3, pixel);
    }
}

/// A picture of this size with what paint paints; a null one without pixels, and without memory for them.
template <typename Paint>
QImage painted(const QSize& size, const QColor& color, const Paint& paint)
{
    QImage image(size, QImage::Format_RGBA8888);
    if (image.isNull()) return image;
    image.fill(255u); // red 255, alpha 0
    QPainter painter(&image);
    paint(painter);
    painter.end();
    colorTransparentPixels(image, color);
    return image;
}

} // namespace

QImage caption_images::ofLine(const QString& text, const QFont& font, const QColor& color, double height,
                              int longestSide)
{
    Cutter cutter(text, longestSide);
    const QString shown = cutter.text();
    const QFontMetricsF metrics(font);
    const double scale = height / metrics.height();
    const QSize size = cutter.size(metrics.horizontalAdvance(shown) * scale, height);
    return painted(size, color, [&](QPainter& painter) {
        painter.scale(scale, scale);
        painter.setPen(color);
        painter.setFont(font);
        painter.setLayoutDirection(Qt::LayoutDirectionAuto); // which left stays left in
        // The rectangle, of pixels of the picture, is narrower than the text where the font is reduced.
        painter.drawText(QRect(QPoint(0, 0), size), Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip, shown);
    });
}

QImage caption_images::ofText(const QString& text, const QFont& font, const QColor& color, double lineHeight,
                              int longestSide)
{
    Cutter cutter(text, longestSide);
    const double scale = lineHeight / QFontMetricsF(font).height();
    CGraphicsTextItem item(cutter.text());
    item.getTextItem()->setBrush(QBrush(color));
    const QRectF rect = item.boundingRect();
    return painted(cutter.size(rect.width() * scale, rect.height() * scale), color, [&](QPainter& painter) {
        painter.scale(scale, scale);
        painter.translate(-rect.left(), -rect.top());
        painter.setRenderHint(QPainter::TextAntialiasing);
        item.paint(&painter, rect);
    });
}
