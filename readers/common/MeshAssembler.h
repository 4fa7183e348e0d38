#pragma once

#include <Viewer3dModule/drawables/MeshData.h>
#include <readers/common/PolygonTriangulator.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace readers {

/// The plain look of a run of primitives.
struct Material
{
    QColor color; ///< invalid: the node's default
    QImage image; ///< null: none
};

/// Puts one MeshData together from vertices in doubles and primitives that name them.
///
/// The first usable vertex, rounded to a float's digits, becomes the origin. A vertex is usable when its
/// coordinates are finite and not beyond 1e15; primitives with another are left out and counted. Vertices
/// that no primitive uses are dropped.
class MeshAssembler
{
public:
    /// The triangulator is shared by the meshes of one file and outlives them.
    MeshAssembler(PolygonTriangulator& triangulator, const QString& name);

    void reserveVertices(std::size_t count) { m_data.positions.reserve(count); }
    /// Returns the vertex's index. Throws ksp::CommonError when there would be 2^32 of them.
    std::uint32_t addVertex(const glm::dvec3& position);
    std::size_t getVertexCount() const { return m_data.positions.size(); }
    /// Of a vertex that was added; where one vertex has an attribute, the others have zero, or opaque white.
    void setNormal(std::uint32_t vertex, const glm::vec3& normal);
    void setTexCoord(std::uint32_t vertex, const glm::vec2& texCoord);
    void setColor(std::uint32_t vertex, std::uint32_t rgba);

    /// What the primitives that follow look like; null: nothing particular. The material outlives the
    /// assembler.
    void useMaterial(const Material* material);
    /// The indices are below getVertexCount().
    void addPoint(std::uint32_t a);
    void addLine(std::uint32_t a, std::uint32_t b);
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c);
    /// Three corners or more; with more than 100,000 it becomes a fan, which the triangulator counts.
    void addPolygon(const std::vector<std::uint32_t>& corners);
    void addPointsOfAllVertices();

    bool isEmpty() const;
    /// Primitives left out for a vertex that is not usable.
    std::size_t getLeftOutCount() const { return m_leftOutCount; }

    /// The mesh; the assembler is spent.
    MeshData take();

private:
    struct Run
    {
        MeshData::Part::Kind kind;
        const Material* material;
        std::vector<std::uint32_t> indices;
    };
    bool isUsable(std::uint32_t vertex) const;
    std::vector<std::uint32_t>& getIndices(MeshData::Part::Kind kind);
    void joinRuns();
    void dropUnusedVertices();

    MeshData m_data;
    bool m_hasOrigin = false;
    std::vector<Run> m_runs;
    std::map<std::pair<MeshData::Part::Kind, const Material*>, std::size_t> m_runNumbers;
    const Material* m_material = nullptr;
    std::size_t m_current[3]; // by kind, the run of the material in use
    std::size_t m_leftOutCount = 0;
    PolygonTriangulator& m_triangulator;
    std::vector<glm::dvec3> m_polygon;
    std::vector<std::uint32_t> m_triangles;
};

/// The bytes red, green, blue and alpha in memory order; the numbers are clamped to 0 to 1.
std::uint32_t packColor(double red, double green, double blue, double alpha);
QColor toQColor(double red, double green, double blue, double alpha);

} // namespace readers
