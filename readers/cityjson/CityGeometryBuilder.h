#pragma once

#include <framework/model/CityGeometry.h>
#include <readers/cityjson/CityJsonGeometry.h>
#include <readers/common/MemoryBudget.h>

#include <array>
#include <map>
#include <optional>

namespace readers {

/// A texture of a CityJSON file.
struct CityJsonTexture
{
    QString image; ///< absolute path; empty: one without picture
    CityGeometry::Look::Wrapping wrapping = CityGeometry::Look::Repeat;
    QColor border;
};

/// What the geometries of a CityJSON file name by index.
struct CityJsonTables
{
    std::vector<glm::dvec3> vertices; ///< model coordinates
    std::vector<QColor> materials;    ///< invalid: one without colour
    std::vector<CityJsonTexture> textures;
    std::vector<glm::vec2> texCoords;
    std::string materialTheme; ///< the default one; may be empty
    std::string textureTheme;
};

/// Makes one CityGeometry of geometries of a CityJSON file, one after the other, and holds them to the
/// format's rules. Each vertex that they use is in it once.
class CityGeometryBuilder
{
public:
    /// The tables outlive the builder, and keep their sizes.
    CityGeometryBuilder(const CityJsonTables& tables, MemoryBudget& budget);

    /// Adds a geometry that is no instance. Throws ksp::CommonError; the builder is spent then.
    void add(const CityJsonGeometry& geometry);
    /// Adds a copy of a whole geometry, by a matrix. budget: what copies of all the file may take.
    void addInstance(const CityGeometry& geometry, const glm::dmat4& matrix, MemoryBudget& budget);
    /// What was added since the last time.
    CityGeometry take();

private:
    using Node = IndexTree::Node;
    /// What belongs to an entry of the boundaries.
    struct Values
    {
        Node semantics;
        Node material;
        Node texture;
    };
    struct Styles;

    void addSurfaces(Node boundaries, const Values& values, int depth, const Styles& styles);
    void addSurface(Node boundaries, const Values& values, const Styles& styles);
    void addLine(Node boundaries, Node semantics, const Styles& styles);
    void addPoints(Node boundaries, Node semantics, const Styles& styles);
    std::optional<std::uint32_t> addRing(Node boundaries, Node texture);
    void dropRepeatedCorner(std::size_t ringBegin);
    void endPiece(CityGeometry::Piece::Kind kind, std::uint32_t look);
    void addCorner(std::uint32_t vertex);
    std::uint32_t findLook(const CityGeometry::Look& look);
    std::uint32_t findLook(Node semantics, Node material, std::optional<std::uint32_t> texture,
                           const Styles& styles);

    const CityJsonTables& m_tables;
    MemoryBudget& m_budget;
    CityGeometry m_geometry;
    std::vector<std::uint32_t> m_local; // by vertex of the tables, its number in the geometry plus 1, or 0
    std::vector<std::uint32_t> m_used;  // vertices of the tables
    /// By semantic surface, material and texture of the geometry under way, -1 for none.
    std::map<std::array<std::int64_t, 3>, std::uint32_t> m_lookNumbers;
};

} // namespace readers
