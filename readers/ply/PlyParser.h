#pragma once

#include <readers/common/reading.h>
#include <readers/ply/PlyValues.h>

#include <array>

namespace readers {

class MeshAssembler;

/// Reads PLY files, ascii and binary in both byte orders: vertices with normals and colours, faces,
/// triangle strips, edges and, where an element "point" names them, points; what it does not know is skipped.
/// A file without any of these is a set of points. Values are read one after the other, none is kept that is
/// not drawn.
class PlyParser
{
public:
    PlyParser(QIODevice& device, const QString& path, ksp::StagedProgress progress);
    /// One mesh. Throws ksp::CommonError, also for indices of vertices that are not there.
    std::vector<MeshData> parse();

private:
    /// What a property of a vertex is.
    enum Slot { X, Y, Z, NormalX, NormalY, NormalZ, Red, Green, Blue, Alpha, SlotCount };
    /// Where a value goes, and what it is multiplied by.
    struct Target
    {
        int slot = -1; ///< -1: nowhere
        double scale = 1.0;
    };
    using Vertex = std::array<double, SlotCount>;

    static std::vector<Target> getTargets(const PlyHeader::Element& element);
    void readElement(const PlyHeader::Element& element, MeshAssembler& mesh);
    void readVertices(const PlyHeader::Element& element, MeshAssembler& mesh);
    void readCornerLists(const PlyHeader::Element& element, void (PlyParser::*keep)());
    void readIndices(const PlyHeader::Element& element, const std::vector<std::size_t>& properties,
                     std::vector<std::int32_t>& indices);
    void skipRecords(const PlyHeader::Element& element);
    void readCorners(const PlyHeader::Property& list);
    void keepFace();
    void keepStrips();
    std::int32_t readIndex(PlyHeader::Type type);

    void addPrimitives(MeshAssembler& mesh);
    void addPolygons(MeshAssembler& mesh);
    void addStrips(MeshAssembler& mesh) const;

    QString m_path;
    InputBuffer m_input;
    PlyHeader m_header;
    PlyValues m_values;
    // Elements come in any order: what names vertices waits until all are known.
    std::vector<std::int32_t> m_triangles;
    std::vector<std::int32_t> m_polygons; // the number of corners, then they
    std::vector<std::int32_t> m_strips;   // -1 ends one
    std::vector<std::int32_t> m_edges;
    std::vector<std::int32_t> m_points;
    std::vector<std::int32_t> m_corners; // of the record under way
    bool m_hasPrimitives = false;        // that name vertices, even ones that were left out
    LeftOut m_leftOut;
};

} // namespace readers
