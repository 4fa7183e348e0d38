#include <readers/cityjson/CityGeometryBuilder.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/reading.h>

#include <algorithm>

namespace readers {

namespace {

using Node = IndexTree::Node;
using Entries = IndexTree::Entries;
using Piece = CityGeometry::Piece;

/// Lists around the surfaces, lines or points of a type of geometry, the outermost one included.
int depthOf(const std::string& type)
{
    if (type == "MultiSolid" || type == "CompositeSolid") return 3;
    return type == "Solid" ? 2 : 1;
}

[[noreturn]] void failNesting(const std::string& what)
{
    throw ksp::CommonError(
        QStringLiteral("%1 are not nested as its type wants it").arg(QString::fromStdString(what)));
}

void requireIndex(std::uint32_t index, std::size_t count, const char* what)
{
    if (index >= count)
        throw ksp::CommonError(QStringLiteral("%1 index %2 is out of range, there are %3")
                                   .arg(QLatin1String(what))
                                   .arg(index)
                                   .arg(count));
}

/// Of the themes the default one where the geometry has it, otherwise its first.
const CityJsonGeometry::Theme* choose(const std::map<std::string, CityJsonGeometry::Theme>& themes,
                                      const std::string& preferred)
{
    const auto found = themes.find(preferred);
    if (found != themes.end()) return &found->second;
    return themes.empty() ? nullptr : &themes.begin()->second;
}

Node takeValue(Entries& values, const char* what)
{
    if (values.isAtEnd())
        throw ksp::CommonError(QStringLiteral("has fewer %1 than boundaries").arg(QLatin1String(what)));
    return values.take();
}

/// A list or nothing.
Entries listOf(Node values, const char* what)
{
    if (!values.isList() && !values.isNull()) failNesting(std::string("the values of its ") + what);
    return Entries(values);
}

} // namespace

/// How a geometry is coloured.
struct CityGeometryBuilder::Styles
{
    const std::vector<QString>& kinds;
    std::optional<std::uint32_t> material; ///< of all surfaces
};

CityGeometryBuilder::CityGeometryBuilder(const CityJsonTables& tables, MemoryBudget& budget)
    : m_tables(tables)
    , m_budget(budget)
    , m_local(tables.vertices.size(), 0)
{
}

void CityGeometryBuilder::add(const CityJsonGeometry& geometry)
{
    const Node boundaries = geometry.boundaries.root();
    if (!boundaries.isList()) throw ksp::CommonError(QStringLiteral("lacks \"boundaries\""));
    const CityJsonGeometry::Theme* material = choose(geometry.materials, m_tables.materialTheme);
    const CityJsonGeometry::Theme* texture = choose(geometry.textures, m_tables.textureTheme);
    Styles styles{geometry.kinds, {}};
    if (material && material->value >= 0) styles.material = static_cast<std::uint32_t>(material->value);
    const Values values{geometry.semantics.root(), material ? material->values.root() : Node(),
                        texture ? texture->values.root() : Node()};
    m_lookNumbers.clear();
    const std::string& type = geometry.type;
    if (type == "MultiPoint") {
        addPoints(boundaries, values.semantics, styles);
    } else if (type == "MultiLineString") {
        Entries kinds = listOf(values.semantics, "semantics");
        for (Entries lines(boundaries); !lines.isAtEnd();)
            addLine(lines.take(), takeValue(kinds, "semantic values"), styles);
    } else if (type == "MultiSurface" || type == "CompositeSurface" || type == "Solid" ||
               type == "MultiSolid" || type == "CompositeSolid") {
        addSurfaces(boundaries, values, depthOf(type), styles);
    } else {
        throw ksp::CommonError(QStringLiteral("%1 is not a type of geometry").arg(inQuotes(type)));
    }
}

void CityGeometryBuilder::addSurfaces(Node boundaries, const Values& values, int depth, const Styles& styles)
{
    if (!boundaries.isList()) failNesting("its boundaries");
    Entries kinds = listOf(values.semantics, "semantics");
    Entries materials = listOf(values.material, "material");
    Entries textures = listOf(values.texture, "texture");
    for (Entries entries(boundaries); !entries.isAtEnd();) {
        const Node entry = entries.take();
        const Values own{takeValue(kinds, "semantic values"), takeValue(materials, "material values"),
                         takeValue(textures, "texture values")};
        if (depth > 1)
            addSurfaces(entry, own, depth - 1, styles);
        else
            addSurface(entry, own, styles);
    }
}

void CityGeometryBuilder::addSurface(Node boundaries, const Values& values, const Styles& styles)
{
    if (!boundaries.isList()) failNesting("its boundaries");
    const std::size_t ringCount = m_geometry.ringEnds.size();
    Entries textures = listOf(values.texture, "texture");
    std::optional<std::uint32_t> texture;
    for (Entries rings(boundaries); !rings.isAtEnd();) {
        // [null] stands for all rings
        const Node value = textures.isAtEnd() ? Node() : textures.take();
        const std::optional<std::uint32_t> own = addRing(rings.take(), value);
        if (!texture) texture = own;
    }
    const std::uint32_t look = findLook(values.semantics, values.material, texture, styles);
    if (m_geometry.ringEnds.size() > ringCount) endPiece(Piece::Surface, look);
}

// Returns the texture.
std::optional<std::uint32_t> CityGeometryBuilder::addRing(Node boundaries, Node texture)
{
    if (!boundaries.isList()) failNesting("its boundaries");
    const std::size_t begin = m_geometry.corners.size();
    std::size_t count = 0;
    for (Entries corners(boundaries); !corners.isAtEnd(); ++count) {
        const Node corner = corners.take();
        if (!corner.isIndex()) failNesting("its boundaries");
        addCorner(corner.index());
    }
    Entries values = listOf(texture, "texture");
    Node first;
    if (texture.isList() && !values.isAtEnd()) first = values.take();
    std::optional<std::uint32_t> number;
    if (first.isIndex()) {
        number = first.index();
        requireIndex(*number, m_tables.textures.size(), "texture");
        m_budget.charge((m_geometry.corners.size() - begin) * sizeof(glm::vec2));
        m_geometry.texCoords.resize(begin, glm::vec2(0.0f));
        for (; !values.isAtEnd(); --count) {
            const Node value = values.take();
            if (!value.isIndex() || count == 0) break;
            requireIndex(value.index(), m_tables.texCoords.size(), "texture vertex");
            m_geometry.texCoords.push_back(m_tables.texCoords[value.index()]);
        }
        if (count != 0 || !values.isAtEnd())
            throw ksp::CommonError(
                QStringLiteral("a ring has not one texture vertex for each of its vertices"));
    } else if (!first.isNull()) {
        failNesting("the values of its texture");
    }
    if (!m_geometry.texCoords.empty())
        m_geometry.texCoords.resize(m_geometry.corners.size(), glm::vec2(0.0f));
    dropRepeatedCorner(begin);
    if (m_geometry.corners.size() == begin) return number;
    m_budget.charge(2 * sizeof(std::uint32_t));
    m_geometry.ringEnds.push_back(static_cast<std::uint32_t>(m_geometry.corners.size()));
    return number;
}

// Some files close their rings.
void CityGeometryBuilder::dropRepeatedCorner(std::size_t ringBegin)
{
    std::vector<std::uint32_t>& corners = m_geometry.corners;
    if (corners.size() < ringBegin + 2 || corners.back() != corners[ringBegin]) return;
    corners.pop_back();
    if (!m_geometry.texCoords.empty()) m_geometry.texCoords.pop_back();
}

void CityGeometryBuilder::addLine(Node boundaries, Node semantics, const Styles& styles)
{
    if (!boundaries.isList()) failNesting("its boundaries");
    std::size_t count = 0;
    for (Entries corners(boundaries); !corners.isAtEnd(); ++count) {
        const Node corner = corners.take();
        if (!corner.isIndex()) failNesting("its boundaries");
        addCorner(corner.index());
    }
    if (count == 1) throw ksp::CommonError(QStringLiteral("has a line of one vertex"));
    const std::uint32_t look = findLook(semantics, {}, {}, styles);
    if (count == 0) return;
    m_geometry.ringEnds.push_back(static_cast<std::uint32_t>(m_geometry.corners.size()));
    endPiece(Piece::Line, look);
}

void CityGeometryBuilder::addPoints(Node boundaries, Node semantics, const Styles& styles)
{
    Entries kinds = listOf(semantics, "semantics");
    std::optional<std::uint32_t> look; // of the piece under way
    const auto end = [&] {
        if (!look) return;
        m_geometry.ringEnds.push_back(static_cast<std::uint32_t>(m_geometry.corners.size()));
        endPiece(Piece::Points, *look);
    };
    for (Entries points(boundaries); !points.isAtEnd();) {
        const Node point = points.take();
        if (!point.isIndex()) failNesting("its boundaries");
        const std::uint32_t own = findLook(takeValue(kinds, "semantic values"), {}, {}, styles);
        if (look != own) end();
        look = own;
        addCorner(point.index());
    }
    end();
}

void CityGeometryBuilder::addCorner(std::uint32_t vertex)
{
    requireIndex(vertex, m_tables.vertices.size(), "vertex");
    std::uint32_t& local = m_local[vertex];
    if (local == 0) {
        m_budget.charge(sizeof(glm::dvec3));
        m_geometry.vertices.push_back(m_tables.vertices[vertex]);
        m_used.push_back(vertex);
        local = static_cast<std::uint32_t>(m_geometry.vertices.size());
    }
    m_budget.charge(sizeof(std::uint32_t));
    m_geometry.corners.push_back(local - 1);
}

void CityGeometryBuilder::endPiece(Piece::Kind kind, std::uint32_t look)
{
    m_budget.charge(sizeof(Piece));
    if (!m_geometry.texCoords.empty())
        m_geometry.texCoords.resize(m_geometry.corners.size(), glm::vec2(0.0f));
    m_geometry.pieces.push_back({kind, look, static_cast<std::uint32_t>(m_geometry.ringEnds.size())});
}

std::uint32_t CityGeometryBuilder::findLook(Node semantics, Node material,
                                            std::optional<std::uint32_t> texture, const Styles& styles)
{
    if (semantics.isList()) failNesting("the values of its semantics");
    if (material.isList()) failNesting("the values of its material");
    std::optional<std::uint32_t> color = styles.material;
    if (material.isIndex()) color = material.index();
    const std::array<std::int64_t, 3> key = {semantics.isIndex() ? std::int64_t(semantics.index()) : -1,
                                             color ? std::int64_t(*color) : -1,
                                             texture ? std::int64_t(*texture) : -1};
    const auto known = m_lookNumbers.find(key);
    if (known != m_lookNumbers.end()) return known->second;
    CityGeometry::Look look;
    if (semantics.isIndex()) {
        requireIndex(semantics.index(), styles.kinds.size(), "semantic surface");
        look.kind = styles.kinds[semantics.index()];
    }
    if (color) {
        requireIndex(*color, m_tables.materials.size(), "material");
        look.color = m_tables.materials[*color];
    }
    if (texture && !m_tables.textures[*texture].image.isEmpty()) {
        look.image = m_tables.textures[*texture].image;
        look.wrapping = m_tables.textures[*texture].wrapping;
        look.border = m_tables.textures[*texture].border;
    }
    const std::uint32_t number = findLook(look);
    m_lookNumbers.emplace(key, number);
    return number;
}

std::uint32_t CityGeometryBuilder::findLook(const CityGeometry::Look& look)
{
    std::vector<CityGeometry::Look>& looks = m_geometry.looks;
    constexpr std::size_t mostLooks = 1000; // of one object: each is searched for, and drawn by itself
    const auto found = std::find(looks.rbegin(), looks.rend(), look);
    if (found != looks.rend()) return static_cast<std::uint32_t>(looks.rend() - found - 1);
    if (looks.size() == mostLooks)
        throw ksp::CommonError(QStringLiteral("has surfaces of more than %1 looks").arg(mostLooks));
    m_budget.charge(2 * sizeof(CityGeometry::Look));
    looks.push_back(look);
    return static_cast<std::uint32_t>(looks.size() - 1);
}

void CityGeometryBuilder::addInstance(const CityGeometry& geometry, const glm::dmat4& matrix,
                                      MemoryBudget& budget)
{
    budget.charge(geometry.vertices.size() * sizeof(glm::dvec3) +
                  geometry.corners.size() * (sizeof(std::uint32_t) + sizeof(glm::vec2)) +
                  geometry.ringEnds.size() * sizeof(std::uint32_t) + geometry.pieces.size() * sizeof(Piece));
    const auto firstVertex = static_cast<std::uint32_t>(m_geometry.vertices.size());
    const std::size_t firstCorner = m_geometry.corners.size();
    const auto firstRing = static_cast<std::uint32_t>(m_geometry.ringEnds.size());
    for (const glm::dvec3& vertex : geometry.vertices)
        m_geometry.vertices.emplace_back(matrix * glm::dvec4(vertex, 1.0));
    for (const std::uint32_t corner : geometry.corners)
        m_geometry.corners.push_back(corner + firstVertex);
    if (!m_geometry.texCoords.empty() || !geometry.texCoords.empty()) {
        m_geometry.texCoords.resize(firstCorner, glm::vec2(0.0f));
        m_geometry.texCoords.insert(m_geometry.texCoords.end(), geometry.texCoords.begin(),
                                    geometry.texCoords.end());
        m_geometry.texCoords.resize(m_geometry.corners.size(), glm::vec2(0.0f));
    }
    for (const std::uint32_t end : geometry.ringEnds)
        m_geometry.ringEnds.push_back(end + static_cast<std::uint32_t>(firstCorner));
    for (Piece piece : geometry.pieces) {
        piece.look = findLook(geometry.looks[piece.look]);
        piece.ringEnd += firstRing;
        m_geometry.pieces.push_back(piece);
    }
}

CityGeometry CityGeometryBuilder::take()
{
    for (const std::uint32_t vertex : m_used)
        m_local[vertex] = 0;
    m_used.clear();
    CityGeometry taken;
    std::swap(taken, m_geometry);
    taken.vertices.shrink_to_fit();
    taken.corners.shrink_to_fit();
    taken.ringEnds.shrink_to_fit();
    taken.pieces.shrink_to_fit();
    return taken;
}

} // namespace readers
