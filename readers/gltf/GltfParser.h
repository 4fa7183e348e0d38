#pragma once

#include <readers/common/MeshAssembler.h>
#include <readers/common/reading.h>
#include <readers/gltf/GltfDocument.h>
#include <readers/gltf/GltfMaterials.h>

#include <memory>

namespace readers {

/// Reads glTF 2.0 files, text and binary: the meshes of the scene's nodes with normals, texture coordinates,
/// colours of vertices, base colours and their textures, in every mode of primitives. Each node with a mesh
/// becomes a mesh of its own. Nodes' transforms are composed and applied in doubles, since they are where
/// large coordinates come from; the axes stay the file's. Skins, morph targets and animations are not
/// applied.
class GltfParser
{
public:
    GltfParser(QIODevice& device, const QString& path, ksp::StagedProgress progress);
    std::vector<MeshData> parse();

private:
    /// Nodes that are being walked through, in a transform that they share.
    struct Walk
    {
        QJsonArray nodes;
        int next = 0;
        glm::dmat4 transform = glm::dmat4(1.0);
    };

    QJsonArray getRootNodes();
    Walk addNode(const QJsonValue& index, const glm::dmat4& parent);
    void addMesh(const QJsonObject& mesh, const QString& name, const glm::dmat4& transform);
    void addPrimitive(const QJsonObject& primitive, const glm::dmat4& transform, bool colored);
    void addVertices(const QJsonObject& attributes, const GltfMaterials::Entry& look,
                     const glm::dmat4& transform, bool colored);
    void addColors(const QJsonValue& accessor, const glm::dvec4& factor, std::uint32_t first,
                   std::size_t count);
    std::vector<std::uint32_t> readIndices(const QJsonObject& primitive, std::uint32_t first,
                                           std::uint32_t count);
    void addPrimitives(const std::vector<std::uint32_t>& vertices, int mode, bool mirrored);
    void charge(std::uint64_t entries);
    void takeMesh();

    QString m_path;
    ksp::StagedProgress m_progress;
    GltfDocument m_document;
    GltfMaterials m_materials;
    PolygonTriangulator m_triangulator;
    std::unique_ptr<MeshAssembler> m_mesh; // under way
    std::vector<MeshData> m_meshes;
    std::vector<bool> m_visited; // nodes
    std::size_t m_visitCount = 0;
    std::uint64_t m_entriesLeft;
    LeftOut m_leftOut;
};

} // namespace readers
