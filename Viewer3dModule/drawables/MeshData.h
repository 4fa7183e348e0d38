#pragma once

#include <Viewer3dModule/drawables/ImageWrap.h>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QImage>
#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

/// Geometry as a reader hands it to MeshNode3d: arrays of vertices and indexed parts. Lengths in model units.
struct MeshData
{
    /// A run of indices drawn alike.
    struct Part
    {
        enum Kind { Points, Lines, Triangles };
        Kind kind = Triangles;
        std::uint32_t firstIndex = 0; ///< into indices
        std::uint32_t indexCount = 0; ///< a multiple of 1, 2 or 3 by kind
        QColor color;                 ///< plain colour; invalid: the node's default
        int image = -1;               ///< index into images, or -1
        float pointSize = 2.0f;       ///< pixels; of points
    };

    QString name;
    glm::dvec3 origin = glm::dvec3(0.0); ///< model coordinates that positions are relative to
    std::vector<glm::vec3> positions;    ///< model coordinates minus origin, subtracted in doubles
    std::vector<glm::vec3> normals;      ///< empty, or one a position
    std::vector<std::uint32_t>
        colors; ///< empty, or one a position: bytes red, green, blue, alpha in memory order
    std::vector<glm::vec2> texCoords;   ///< empty, or one a position; (0, 0) is the image's lower left corner
    std::vector<std::uint32_t> indices; ///< every one below positions.size()
    std::vector<Part> parts;
    std::vector<QImage> images;
    std::vector<ImageWrap> wraps; ///< of images, by number; those that have none repeat
};
