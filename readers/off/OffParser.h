#pragma once

#include <readers/common/InputBuffer.h>
#include <readers/common/MeshAssembler.h>
#include <readers/common/reading.h>

namespace readers {

/// Reads ascii OFF files: vertices with colours, normals and texture coordinates (COFF, NOFF, STOFF) and
/// polygons. The colours of faces are not drawn; a file of vertices alone is a set of points. Read here in
/// doubles: coordinates may be large and have many digits. Vertices of four or n coordinates and the binary
/// kind are refused.
class OffParser
{
public:
    OffParser(QIODevice& device, const QString& path, ksp::StagedProgress progress);
    std::vector<MeshData> parse();

private:
    void readHead();
    void readVertex(MeshAssembler& mesh);
    std::uint32_t readColor();
    void readFace(MeshAssembler& mesh);
    bool findLine();
    double readNumber();
    std::uint64_t readCount();
    [[noreturn]] void fail(const QString& reason) const;

    QString m_path;
    InputBuffer m_input;
    std::string_view m_line; // what is left of the line under way
    bool m_hasTexCoords = false;
    bool m_hasColors = false;
    bool m_hasNormals = false;
    std::uint64_t m_vertexCount = 0;
    std::uint64_t m_faceCount = 0;
    std::vector<std::uint32_t> m_corners; // of the face under way
    LeftOut m_leftOut;
};

} // namespace readers
