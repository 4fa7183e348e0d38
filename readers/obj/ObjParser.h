#pragma once

#include <readers/common/InputBuffer.h>
#include <readers/common/reading.h>
#include <readers/obj/CornerTable.h>
#include <readers/obj/ObjMaterials.h>

#include <map>
#include <memory>
#include <string>

namespace readers {

/// Reads OBJ files: faces, lines and points with their texture coordinates, normals and vertex colours, the
/// plain colours and diffuse textures of their materials; each object and group is a mesh of its own.
/// Free-form curves and surfaces are not drawn. A file that has vertices alone is a set of points.
///
/// The file is read twice, first its vertices and then its elements, so that elements need not be kept and
/// may come before the vertices they name. Vertices are in doubles up to the mesh's own origin.
class ObjParser
{
public:
    ObjParser(QIODevice& device, const QString& path, ksp::StagedProgress progress);

    /// The meshes, in the order in which their first elements come. Throws ksp::CommonError (with the line)
    /// for what cannot be read and for indices of vertices that are not there.
    std::vector<MeshData> parse();

private:
    struct Part
    {
        Part(PolygonTriangulator& triangulator, const QString& name)
            : mesh(triangulator, name)
        {
        }
        MeshAssembler mesh;
        CornerTable corners;
    };
    struct Counts
    {
        std::int64_t positions = 0;
        std::int64_t texCoords = 0;
        std::int64_t normals = 0;
    };

    bool readStatement(InputBuffer& input, std::string_view& keyword, std::string_view& rest);
    [[noreturn]] void fail(const QString& reason) const;
    void readVertices();
    void readPosition(std::string_view rest);
    int readNumbers(std::string_view rest, double* numbers, int most, int least) const;
    void readElements();
    void countVertex(std::string_view keyword, Counts& counts) const;
    void readElement(std::string_view keyword, std::string_view rest, const Counts& counts);
    void readCorners(std::string_view rest, const Counts& counts);
    CornerTable::Corner readCorner(std::string_view token, const Counts& counts) const;
    std::int32_t readIndex(std::string_view text, std::int64_t countSoFar, std::size_t countInAll) const;
    Part& getPart();
    std::uint32_t addCorner(Part& part, const CornerTable::Corner& corner) const;
    std::vector<MeshData> takeMeshes();

    QIODevice& m_device;
    QString m_path;
    ksp::StagedProgress m_progress;
    InputBuffer* m_input = nullptr; // of the reading under way
    std::uint64_t m_line = 0;       // where the statement under way begins
    std::string m_statement;        // joined from several lines

    std::vector<glm::dvec3> m_positions;
    std::vector<glm::vec3> m_colors; // empty, or one a position; negative: none
    std::vector<glm::vec2> m_texCoords;
    std::vector<glm::vec3> m_normals;
    double m_colorScale = 1.0; // of the numbers in m_colors, to 1

    ObjMaterials m_materials;
    PolygonTriangulator m_triangulator;
    LeftOut m_leftOut;
    std::string m_object;
    std::string m_group;
    const Material* m_material = nullptr;
    Part* m_part = nullptr; // of the object and group under way; null: to be found
    std::map<std::pair<std::string, std::string>, Part*> m_partsByName;
    std::vector<std::unique_ptr<Part>> m_parts;
    bool m_joinsParts = false;
    std::vector<std::uint32_t> m_corners; // of the element under way
};

} // namespace readers
