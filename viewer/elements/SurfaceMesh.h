#pragma once

#include <Viewer3dModule/drawables/MeshData.h>

#include <QtCore/QString>
#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

/// One flat region in space: an outer ring and rings of holes. The rings of one are closed by themselves.
struct FlatRegion
{
    std::vector<glm::dvec3> points;      ///< of all rings, relative to the mesh's origin
    std::vector<glm::vec2> texCoords;    ///< empty, or one a point
    std::vector<std::uint32_t> ringEnds; ///< into points: behind each ring's last point
};

/// Puts flat regions into a mesh: each with vertices and the normal of its own, so that edges stay sharp.
class SurfaceMesh
{
public:
    /// name: for the messages of regions that cannot be divided. The mesh is not owned; it has an origin, and
    /// texture coordinates if any of its regions has.
    SurfaceMesh(MeshData& mesh, const QString& name)
        : m_mesh(mesh)
        , m_name(name)
    {
    }

    /// Appends the region's vertices to the mesh and its triangles to indices. Returns false, having done
    /// nothing, when it has no area; one that cannot be divided tells so in the log.
    bool add(const FlatRegion& region, std::vector<std::uint32_t>& indices);

private:
    void addVertices(const std::vector<glm::dvec3>& points, const std::vector<glm::vec2>& texCoords,
                     const glm::dvec3& normal);

    MeshData& m_mesh;
    QString m_name;
};
