#pragma once

#include <QtCore/QtGlobal>
#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

/// A wavy ground that fills the view, with a normal a vertex.
struct GroundMesh
{
    /// triangles: a multiple of 2,000
    explicit GroundMesh(qint64 triangles);

    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    std::vector<std::uint32_t> indices; ///< three a triangle
};
