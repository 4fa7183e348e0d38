#pragma once

#include <readers/common/InputBuffer.h>
#include <readers/common/MeshAssembler.h>
#include <readers/common/reading.h>

#include <memory>

namespace readers {

/// Reads STL files, ascii and binary; each solid is a mesh of its own. Facets are flat: the normals in the
/// file are not used, they follow from the corners. Read here in doubles: an ascii file may hold large
/// coordinates with many digits.
class StlParser
{
public:
    StlParser(QIODevice& device, const QString& path, ksp::StagedProgress progress);
    std::vector<MeshData> parse();

private:
    bool isText();
    void readBinary();
    void readText();
    void readSolid(const QString& name);
    void readFacet(MeshAssembler& mesh);
    std::string_view next();
    void expect(const char* keyword);
    double readNumber();
    MeshAssembler& startMesh(const QString& name);
    void takeMesh();
    [[noreturn]] void fail(const QString& reason) const;

    QString m_path;
    InputBuffer m_input;
    PolygonTriangulator m_triangulator;
    std::unique_ptr<MeshAssembler> m_mesh; // under way
    std::vector<MeshData> m_meshes;
    std::vector<std::uint32_t> m_corners; // of the facet under way
    std::uint64_t m_facet = 0;            // its number in the file, from 1
    LeftOut m_leftOut;
};

} // namespace readers
