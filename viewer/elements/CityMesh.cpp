#include <viewer/elements/CityMesh.h>

#include <viewer/elements/CityColors.h>
#include <viewer/elements/PictureCache.h>
#include <viewer/elements/SurfaceMesh.h>
#include <viewer/printable.h>

#include <framework/ksp/Log.h>
#include <framework/model/CityObjectElement.h>

#include <algorithm>

namespace {

using Piece = CityGeometry::Piece;
using Part = MeshData::Part;

constexpr float pointSize = 6.0f; // pixels, as of other features

class Builder
{
public:
    Builder(const CityObjectElement& element, CityMesh::Pictures pictures)
        : m_element(element)
        , m_geometry(element.getGeometry())
        , m_surfaces(m_mesh, printable(element.getName()))
        , m_images(m_geometry.looks.size(), -1)
    {
        m_mesh.name = element.getName();
        m_mesh.origin = m_geometry.getBounds().getCenter();
        if (pictures == CityMesh::Pictures::With) loadPictures();
    }

    MeshData build()
    {
        std::vector<std::vector<std::uint32_t>> indices(3 * m_geometry.looks.size());
        for (std::size_t i = 0; i < m_geometry.pieces.size(); ++i) {
            const Piece& piece = m_geometry.pieces[i];
            addPiece(i, indices[3 * piece.look + piece.kind]);
        }
        if (!m_mesh.texCoords.empty()) m_mesh.texCoords.resize(m_mesh.positions.size(), glm::vec2(0.0f));
        // what lies behind something transparent shows only when it was there before
        addParts(indices, false);
        addParts(indices, true);
        if (m_withoutArea > 0)
            ksp::Log::info(QStringLiteral("%1: %2 surfaces without area are left out")
                               .arg(quoted(m_element.getName()))
                               .arg(m_withoutArea));
        return std::move(m_mesh);
    }

private:
    void loadPictures()
    {
        const std::vector<bool> leaves = findLeaving();
        for (std::size_t i = 0; i < m_images.size(); ++i) {
            const QString& path = m_geometry.looks[i].image;
            if (path.isEmpty() || m_geometry.texCoords.empty()) continue;
            const QImage image = PictureCache::load(path);
            if (image.isNull()) continue;
            m_images[i] = static_cast<int>(m_mesh.images.size());
            m_mesh.images.push_back(image);
            m_mesh.wraps.push_back(wrapOf(m_geometry.looks[i], leaves[i]));
        }
    }

    /// By look, whether any of its places in the picture lies beyond the borders.
    std::vector<bool> findLeaving() const
    {
        constexpr float rounding = 1e-3f;
        const auto isBeyond = [](float value) { return !(value >= -rounding && value <= 1.0f + rounding); };
        std::vector<bool> leaves(m_geometry.looks.size());
        for (std::size_t i = 0; i < m_geometry.pieces.size() && !m_geometry.texCoords.empty(); ++i)
            for (std::uint32_t ring = m_geometry.ringBegin(i); ring < m_geometry.pieces[i].ringEnd; ++ring)
                for (std::uint32_t corner = m_geometry.cornerBegin(ring); corner < m_geometry.ringEnds[ring];
                     ++corner)
                    if (isBeyond(m_geometry.texCoords[corner].x) || isBeyond(m_geometry.texCoords[corner].y))
                        leaves[m_geometry.pieces[i].look] = true;
        return leaves;
    }

    static ImageWrap wrapOf(const CityGeometry::Look& look, bool leaves)
    {
        using Look = CityGeometry::Look;
        ImageWrap wrap;
        if (look.wrapping == Look::Mirror) wrap.mode = ImageWrap::Mirror;
        if (look.wrapping == Look::Clamp) wrap.mode = ImageWrap::Clamp;
        if (look.wrapping != Look::Border) return wrap;
        // where nobody sees the border, none is to be mixed into the outermost texels
        wrap.mode = leaves ? ImageWrap::Border : ImageWrap::Clamp;
        if (look.border.isValid()) wrap.border = look.border;
        return wrap;
    }

    glm::dvec3 local(std::uint32_t corner) const
    {
        return m_geometry.vertices[m_geometry.corners[corner]] - m_mesh.origin;
    }

    void addPiece(std::size_t piece, std::vector<std::uint32_t>& indices)
    {
        if (m_geometry.pieces[piece].kind == Piece::Surface) {
            addSurface(piece, indices);
            return;
        }
        const bool isLine = m_geometry.pieces[piece].kind == Piece::Line;
        for (std::uint32_t ring = m_geometry.ringBegin(piece); ring < m_geometry.pieces[piece].ringEnd;
             ++ring) {
            const std::uint32_t begin = m_geometry.cornerBegin(ring);
            for (std::uint32_t corner = begin; corner < m_geometry.ringEnds[ring]; ++corner) {
                const auto vertex = static_cast<std::uint32_t>(m_mesh.positions.size());
                if (isLine && corner > begin) indices.insert(indices.end(), {vertex - 1, vertex});
                if (!isLine) indices.push_back(vertex);
                m_mesh.positions.emplace_back(local(corner));
                m_mesh.normals.emplace_back(0.0f, 0.0f, 1.0f);
            }
        }
    }

    void addSurface(std::size_t piece, std::vector<std::uint32_t>& indices)
    {
        m_region.points.clear();
        m_region.texCoords.clear();
        m_region.ringEnds.clear();
        const bool hasPicture = m_images[m_geometry.pieces[piece].look] >= 0;
        for (std::uint32_t ring = m_geometry.ringBegin(piece); ring < m_geometry.pieces[piece].ringEnd;
             ++ring) {
            for (std::uint32_t i = m_geometry.cornerBegin(ring); i < m_geometry.ringEnds[ring]; ++i) {
                m_region.points.push_back(local(i));
                if (hasPicture) m_region.texCoords.push_back(m_geometry.texCoords[i]);
            }
            m_region.ringEnds.push_back(static_cast<std::uint32_t>(m_region.points.size()));
        }
        if (!m_surfaces.add(m_region, indices)) ++m_withoutArea;
    }

    void addParts(const std::vector<std::vector<std::uint32_t>>& indices, bool transparent)
    {
        constexpr Part::Kind kinds[] = {Part::Points, Part::Lines, Part::Triangles};
        for (std::size_t i = 0; i < indices.size(); ++i) {
            const std::size_t look = i / 3;
            const QColor color = colorOf(m_geometry.looks[look]);
            if (indices[i].empty() || (color.alpha() < 255) != transparent) continue;
            Part part;
            part.kind = kinds[i % 3];
            part.firstIndex = static_cast<std::uint32_t>(m_mesh.indices.size());
            part.indexCount = static_cast<std::uint32_t>(indices[i].size());
            part.color = color;
            part.image = m_images[look];
            part.pointSize = pointSize;
            m_mesh.indices.insert(m_mesh.indices.end(), indices[i].begin(), indices[i].end());
            m_mesh.parts.push_back(part);
        }
    }

    QColor colorOf(const CityGeometry::Look& look) const
    {
        return look.color.isValid() ? look.color : CityColors::of(look.kind, m_element.getObjectType());
    }

    const CityObjectElement& m_element;
    const CityGeometry& m_geometry;
    MeshData m_mesh;
    SurfaceMesh m_surfaces;
    std::vector<int> m_images; // by look, its number in the mesh or -1
    FlatRegion m_region;
    std::size_t m_withoutArea = 0;
};

} // namespace

MeshData CityMesh::of(const CityObjectElement& element, Pictures pictures)
{
    return Builder(element, pictures).build();
}
