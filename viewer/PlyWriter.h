#pragma once

#include <framework/ksp/StagedProgress.h>

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>
#include <glm/glm.hpp>

#include <cstdint>
#include <vector>

/// Writes points, lines and triangles as a PLY file, piece by piece: memory does not grow with them.
///
/// The geometry comes in parts. The vertices of a part stand together: those of its points, then two a line,
/// then three a triangle. Triangles are the element "face", lines the element "edge" (vertex1, vertex2).
/// Readers take vertices that no face and no edge names for points, or for nothing: in a file that holds more
/// than points the element "point" (vertex_index) tells which are some. Elements without records are left
/// out.
///
/// Coordinates are doubles; as text they have the digits that tell each from its neighbours.
class PlyWriter
{
public:
    enum class Format { Binary, Ascii }; ///< binary: little endian
    struct Counts
    {
        std::uint64_t points = 0;
        std::uint64_t lines = 0;
        std::uint64_t triangles = 0;
        std::uint64_t vertices() const { return points + 2 * lines + 3 * triangles; }
    };

    /// Writes the head. The device is not owned. Throws ksp::CommonError, as all do, when it cannot be
    /// written, and when there are more vertices than a PLY file can number.
    PlyWriter(QIODevice& device, Format format, std::vector<Counts> parts);
    PlyWriter(const PlyWriter&) = delete;
    PlyWriter& operator=(const PlyWriter&) = delete;

    /// The next vertex, in the order of the parts.
    void addVertex(const glm::dvec3& position);
    /// Writes the records that name vertices; all vertices have been added. Throws ksp::Canceled, too.
    void finish(ksp::StagedProgress progress);

private:
    void writeHead();
    /// Of a file that holds nothing but points every vertex is one.
    bool namesPoints() const { return m_sum.points != m_sum.vertices(); }
    void writeFaces(const Counts& part, std::uint64_t first);
    void writeEdges(const Counts& part, std::uint64_t first);
    void writePoints(const Counts& part, std::uint64_t first);
    void writeIndex(std::uint64_t vertex) { writeNumber(static_cast<std::int32_t>(vertex)); }
    void endNaming();
    void writeNumber(std::int32_t number);
    void writeNumber(double number);
    void endRecord();
    void flush();

    QIODevice& m_device;
    Format m_format;
    std::vector<Counts> m_parts;
    Counts m_sum;
    QByteArray m_buffer;        // what is not written yet
    std::uint64_t m_naming = 0; // records written that name vertices, and how many there will be
    std::uint64_t m_namings = 0;
    ksp::StagedProgress m_progress;
};
