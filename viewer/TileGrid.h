#pragma once

#include <QtCore/QRect>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <glm/glm.hpp>

#include <vector>

/// A part of a picture that is drawn in one pass. Rectangles are pixels of the picture, origin top left.
struct Tile
{
    QRect pixels; ///< what it gives to the picture
    QRect target; ///< what is drawn to: its pixels, and those beside them that a later pass looks at
    QRect
        frustum; ///< what its projection covers: the target, and as far beside it as a point reaches into it
};

/// How a picture of any size is drawn: in tiles of bounded size, in bands of rows from top to bottom, so that
/// neither the driver's limits nor memory for the whole picture matter. The grid depends on the size of the
/// picture alone: the same picture has the same tiles wherever it is drawn, and so the same bits. A picture
/// that is no larger than a tile is one.
class TileGrid
{
public:
    /// reach: how many pixels beside a pixel a later pass over the drawn one looks at.
    explicit TileGrid(const QSize& size, int reach = 0);

    const QSize& size() const { return m_size; }
    int bandCount() const;
    /// The rows of a band, over the whole width. Bands are numbered from the top.
    QRect bandRows(int band) const;
    /// The tiles of a band, from left to right.
    std::vector<Tile> tiles(int band) const;
    int tileCount() const;
    /// The largest rectangle that any of the tiles has of a kind, each way.
    QSize largest(QRect Tile::*kind) const;
    /// A tile that draws these pixels of a picture of this size alone; its frustum is empty where none of
    /// them is anywhere near.
    static Tile around(const QRect& pixels, const QSize& size);

    /// Whether a picture of this size, 4 bytes a pixel, can be asked for; otherwise why not, else an empty
    /// text.
    static QString refuse(const QSize& size);

private:
    Tile tile(const QRect& pixels) const;

    QSize m_size;
    QSize m_tileSize;
    int m_reach;
};

/// The projection that shows a part of a picture of this size as if it were all of it. In doubles: as floats
/// the large numbers of a small part would have lost what tells neighbouring pixels apart.
glm::dmat4 croppedProjection(const glm::dmat4& projection, const QSize& size, const QRect& part);
