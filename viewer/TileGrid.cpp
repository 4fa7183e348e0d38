#include <viewer/TileGrid.h>

#include <QtCore/QLocale>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>

namespace {

// With four samples of colour and depth a pixel the driver needs some 90 MB for a tile.
constexpr int tileWidth = 2048;
constexpr int tileHeight = 1280;
// OpenGL drops a point whose middle is outside the frustum, however far the point, of 255 pixels at most,
// reaches in. Lines, triangles and captions are clipped exactly.
constexpr int pointReach = 128;
constexpr qint64 bytesOfPixel = 4;
constexpr qint64 mostBandBytes = 256LL << 20;
constexpr qint64 mostPictureBytes = 16LL << 30;
constexpr int longestSide = 1'000'000;

int divideUp(int count, int step)
{
    return (count + step - 1) / step;
}

/// Beside the picture nothing is added: what lies there counts no more than in a picture of one tile.
QRect grown(const QRect& rect, int by, const QSize& picture)
{
    return rect.adjusted(-by, -by, by, by) & QRect(QPoint(0, 0), picture);
}

QString gibibytes(double bytes)
{
    return QLocale::c().toString(bytes / (1LL << 30), 'g', 3) + QStringLiteral(" GiB");
}

} // namespace

TileGrid::TileGrid(const QSize& size, int reach)
    : m_size(size)
    , m_tileSize(tileWidth, static_cast<int>(std::clamp<qint64>(mostBandBytes / (bytesOfPixel * size.width()),
                                                                1, tileHeight)))
    , m_reach(reach)
{
}

int TileGrid::bandCount() const
{
    return divideUp(m_size.height(), m_tileSize.height());
}

int TileGrid::tileCount() const
{
    return bandCount() * divideUp(m_size.width(), m_tileSize.width());
}

QRect TileGrid::bandRows(int band) const
{
    return QRect(0, band * m_tileSize.height(), m_size.width(), m_tileSize.height()) &
           QRect(QPoint(0, 0), m_size);
}

std::vector<Tile> TileGrid::tiles(int band) const
{
    const QRect rows = bandRows(band);
    std::vector<Tile> tiles;
    for (int left = 0; left < m_size.width(); left += m_tileSize.width())
        tiles.push_back(tile(QRect(left, rows.top(), m_tileSize.width(), rows.height()) & rows));
    return tiles;
}

QSize TileGrid::largest(QRect Tile::*kind) const
{
    QSize size;
    for (int band = 0; band < bandCount(); ++band)
        for (const Tile& tile : tiles(band))
            size = size.expandedTo((tile.*kind).size());
    return size;
}

Tile TileGrid::tile(const QRect& pixels) const
{
    const QRect target = grown(pixels, m_reach, m_size);
    return {pixels, target, grown(target, pointReach, m_size)};
}

Tile TileGrid::around(const QRect& pixels, const QSize& size)
{
    return {pixels, pixels, grown(pixels, pointReach, size)};
}

glm::dmat4 croppedProjection(const glm::dmat4& projection, const QSize& size, const QRect& part)
{
    if (part == QRect(QPoint(0, 0), size)) return projection;
    const glm::dvec3 scale(static_cast<double>(size.width()) / part.width(),
                           static_cast<double>(size.height()) / part.height(), 1.0);
    const glm::dvec3 middle((2.0 * part.left() + part.width()) / size.width() - 1.0,
                            1.0 - (2.0 * part.top() + part.height()) / size.height(), 0.0);
    return glm::scale(glm::dmat4(1.0), scale) * glm::translate(glm::dmat4(1.0), -middle) * projection;
}

QString TileGrid::refuse(const QSize& size)
{
    if (size.width() < 1 || size.height() < 1)
        return QStringLiteral("width and height must be at least 1 pixel");
    if (std::max(size.width(), size.height()) > longestSide)
        return QStringLiteral("at most %1 pixels a side, which is the most that readers of pictures take")
            .arg(longestSide);
    const double bytes = static_cast<double>(bytesOfPixel) * size.width() * size.height();
    if (bytes > static_cast<double>(mostPictureBytes))
        return QStringLiteral("such a picture takes %1 of memory wherever it is opened, 4 bytes a pixel; at "
                              "most %2 can be asked for")
            .arg(gibibytes(bytes), gibibytes(static_cast<double>(mostPictureBytes)));
    return {};
}
