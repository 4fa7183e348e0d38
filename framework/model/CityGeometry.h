#pragma once

#include <framework/HostFramework_export.h>
#include <framework/gmx/BoundingBox.h>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

/// The geometry of a city object: points, lines and surfaces with holes over one list of vertices.
///
/// Pieces, rings and corners stand one after the other in flat lists: a piece has the rings from where the
/// piece before it ends, a ring the corners from where the ring before it ends.
struct HOSTFRAMEWORK_EXPORT CityGeometry
{
    /// What pieces look like. The first of image, colour and kind that there is tells how they are drawn.
    struct Look
    {
        /// How the picture goes on beyond its borders.
        enum Wrapping : std::uint32_t { Repeat, Mirror, Clamp, Border };

        QString kind;  ///< what the surface is, "RoofSurface" for example; may be empty
        QColor color;  ///< of its material, with its opacity; invalid without
        QString image; ///< absolute path of the picture that its texture coordinates are for; may be empty
        Wrapping wrapping = Repeat;
        QColor border{}; ///< what is beyond the borders with Border; invalid: nothing is
        bool operator==(const Look& other) const
        {
            return kind == other.kind && color == other.color && image == other.image &&
                   wrapping == other.wrapping && border == other.border;
        }
    };
    struct Piece
    {
        enum Kind : std::uint32_t {
            Points, ///< one ring, each of its corners a point by itself
            Line,   ///< one ring of two or more corners, joined in order
            Surface ///< the outer ring, then those of holes; last corners are joined to the first, which are
                    ///< not repeated
        };
        Kind kind = Surface;
        std::uint32_t look = 0;    ///< into looks
        std::uint32_t ringEnd = 0; ///< into ringEnds: behind the piece's last ring
    };

    std::vector<glm::dvec3> vertices;   ///< model coordinates
    std::vector<std::uint32_t> corners; ///< of all rings, into vertices
    std::vector<glm::vec2> texCoords;   ///< empty, or one a corner; (0, 0) is the picture's lower left corner
    std::vector<std::uint32_t> ringEnds; ///< into corners: behind the ring's last corner
    std::vector<Piece> pieces;
    std::vector<Look> looks;

    std::uint32_t ringBegin(std::size_t piece) const { return piece == 0 ? 0 : pieces[piece - 1].ringEnd; }
    std::uint32_t cornerBegin(std::size_t ring) const { return ring == 0 ? 0 : ringEnds[ring - 1]; }

    /// Box of all vertices, in model coordinates; null when there are none.
    gmx::BoundingBox getBounds() const;
    /// Whether all indices and ends lie where they may.
    bool isSound() const;
};
