#include <Viewer3dModule/drawers/FontGlyphTextureFactory.h>

#include <Viewer3dModule/drawables/IconTexture.h>
#include <Viewer3dModule/drawables/TextureFactory.h>

#include <QtGui/QGlyphRun>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtGui/QRawFont>
#include <QtGui/QTextLayout>

#include <cmath>

namespace {

/// The pixels that a glyph's ink touches when its origin lies at a corner of a pixel.
QRect inkOf(const QRawFont& font, quint32 glyph)
{
    return font.boundingRect(glyph).toAlignedRect();
}

/// What is seen of glyphs: pixels beyond their ink that they are widened by, and transparent ones beyond
/// that.
struct Look
{
    int rim = 0;
    int margin = 0;
};

QImage paint(const QRawFont& font, quint32 glyph, const QRect& window, int rim)
{
    QGlyphRun one;
    one.setRawFont(font);
    one.setGlyphIndexes({glyph});
    one.setPositions({QPointF(0.0, 0.0)});
    QImage image(window.size(), QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.translate(-window.topLeft());
    // The pen is what glyphs are filled with; without one, Qt paints only those that it keeps no pictures of,
    // the large ones.
    painter.setPen(Qt::white);
    painter.setBrush(Qt::white);
    for (int dy = -rim; dy <= rim; ++dy)
        for (int dx = -rim; dx <= rim; ++dx)
            painter.drawGlyphRun(QPointF(dx, dy), one);
    return image;
}

// Family and style do not tell a font of which only the slant or weight is made up, and the texts of fonts do
// not tell all that glyphs are shaped by.
QString keyOf(const QRawFont& font, const QFont& asked, const Look& look)
{
    return QStringList{font.familyName(),
                       font.styleName(),
                       QString::number(font.pixelSize()),
                       asked.toString(),
                       QString::number(asked.stretch()),
                       QString::number(asked.hintingPreference()),
                       QString::number(asked.styleStrategy()),
                       QString::number(look.rim),
                       QString::number(look.margin),
                       QString()}
        .join(QLatin1Char('/'));
}

QPointF toPixel(const QPointF& point)
{
    return QPointF(std::round(point.x()), std::round(point.y()));
}

using Glyphs = std::vector<FontGlyphTextureFactory::Glyph>;

std::shared_ptr<IconTexture> textureOf(const QRawFont& font, quint32 glyph, const QRect& window, int rim,
                                       const QString& key)
{
    TextureFactory& textures = TextureFactory::instance();
    std::shared_ptr<IconTexture> texture = textures.find(key);
    if (texture) return texture;
    texture = std::make_shared<IconTexture>(paint(font, glyph, window, rim));
    // One without a context to upload in is not for others.
    if (texture->getTextureId() != 0) textures.insert(key, texture);
    return texture;
}

void append(Glyphs& glyphs, const QGlyphRun& run, const QString& key, const Look& look)
{
    const QRawFont font = run.rawFont();
    const QVector<quint32> indices = run.glyphIndexes();
    const QVector<QPointF> positions = run.positions();
    const int border = look.rim + look.margin;
    for (int i = 0; i < indices.size() && i < positions.size(); ++i) {
        const QRect ink = inkOf(font, indices[i]);
        if (ink.isEmpty()) continue;
        const QRect window = ink.adjusted(-border, -border, border, border);
        const QPointF lowerLeft(window.left(), window.top() + window.height());
        glyphs.emplace_back(toPixel(positions[i]) + lowerLeft,
                            textureOf(font, indices[i], window, look.rim, key + QString::number(indices[i])));
    }
}

Glyphs glyphsOf(const QString& text, const QFont& font, const Look& look)
{
    QTextLayout layout(text, font);
    QTextOption fromTheLeft(Qt::AlignLeft | Qt::AlignAbsolute); // right-to-left texts as well
    fromTheLeft.setTextDirection(Qt::LayoutDirectionAuto);
    fromTheLeft.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(fromTheLeft);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid()) {
        line.setNumColumns(text.size()); // all on one line
        line.setPosition(QPointF(0.0, -line.ascent()));
    }
    layout.endLayout();
    Glyphs glyphs;
    for (const QGlyphRun& run : layout.glyphRuns())
        append(glyphs, run, keyOf(run.rawFont(), font, look), look);
    return glyphs;
}

} // namespace

Glyphs FontGlyphTextureFactory::get(const QGlyphRun& run, const QString& key, int margin)
{
    Glyphs glyphs;
    append(glyphs, run, key, {0, margin});
    return glyphs;
}

Glyphs FontGlyphTextureFactory::get(const QString& text, const QFont& font, int margin)
{
    return glyphsOf(text, font, {0, margin});
}

Glyphs FontGlyphTextureFactory::getRims(const QString& text, const QFont& font, int margin, int rim)
{
    return glyphsOf(text, font, {rim, margin});
}
