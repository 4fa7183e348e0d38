#include <readers/ply/PlyParser.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/MeshAssembler.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace readers {

namespace {

// The list of vertices of a face or strip; -1 when the element has none.
int findCorners(const PlyHeader::Element& element)
{
    const int plural = element.find("vertex_indices");
    const int list = plural >= 0 ? plural : element.find("vertex_index");
    return list >= 0 && element.properties[static_cast<std::size_t>(list)].isList ? list : -1;
}

// The numbers of the properties, which are no lists; empty when one is not there.
std::vector<std::size_t> findAll(const PlyHeader::Element& element, std::initializer_list<const char*> names)
{
    std::vector<std::size_t> found;
    for (const char* name : names) {
        const int number = element.find(name);
        if (number < 0 || element.properties[static_cast<std::size_t>(number)].isList) return {};
        found.push_back(static_cast<std::size_t>(number));
    }
    return found;
}

std::uint32_t checked(std::int32_t index, const MeshAssembler& mesh)
{
    const std::size_t count = mesh.getVertexCount();
    if (index < 0 || static_cast<std::size_t>(index) >= count)
        throw ksp::CommonError(QStringLiteral("vertex %1 is named, there are %2").arg(index).arg(count));
    return static_cast<std::uint32_t>(index);
}

// Whole numbers are bytes, but for the type of 16 bits, which is used for nothing smaller.
double colorScale(PlyHeader::Type type)
{
    switch (type) {
    case PlyHeader::Float32:
    case PlyHeader::Float64:
        return 1.0;
    case PlyHeader::UInt16:
        return 1.0 / 65535.0;
    default:
        return 1.0 / 255.0;
    }
}

} // namespace

PlyParser::PlyParser(QIODevice& device, const QString& path, ksp::StagedProgress progress)
    : m_path(path)
    , m_input(device, std::move(progress))
    , m_header(PlyHeader::read(m_input))
    , m_values(m_input, m_header.format)
{
}

std::vector<MeshData> PlyParser::parse()
{
    PolygonTriangulator triangulator;
    MeshAssembler mesh(triangulator, {});
    for (const PlyHeader::Element& element : m_header.elements)
        readElement(element, mesh);
    if (mesh.getVertexCount() == 0) throw ksp::CommonError(QStringLiteral("has no vertices"));
    addPrimitives(mesh);
    m_leftOut.notFinite = mesh.getLeftOutCount();
    m_leftOut.fanned = triangulator.getFannedCount();
    if (mesh.isEmpty()) m_leftOut.refuse();
    m_leftOut.log(m_path);
    std::vector<MeshData> meshes;
    meshes.push_back(mesh.take());
    return meshes;
}

void PlyParser::readElement(const PlyHeader::Element& element, MeshAssembler& mesh)
{
    m_values.setPlace(&element, 0);
    if (element.name == "vertex")
        readVertices(element, mesh);
    else if (element.name == "face" && findCorners(element) >= 0)
        readCornerLists(element, &PlyParser::keepFace);
    else if (element.name == "tristrips" && findCorners(element) >= 0)
        readCornerLists(element, &PlyParser::keepStrips);
    else if (const auto ends = findAll(element, {"vertex1", "vertex2"});
             element.name == "edge" && !ends.empty())
        readIndices(element, ends, m_edges);
    else if (const auto vertex = findAll(element, {"vertex_index"});
             element.name == "point" && !vertex.empty())
        readIndices(element, vertex, m_points);
    else
        skipRecords(element);
}

std::vector<PlyParser::Target> PlyParser::getTargets(const PlyHeader::Element& element)
{
    struct Name
    {
        const char* name;
        Slot slot;
    };
    static constexpr Name names[] = {{"x", X},
                                     {"y", Y},
                                     {"z", Z},
                                     {"nx", NormalX},
                                     {"ny", NormalY},
                                     {"nz", NormalZ},
                                     {"red", Red},
                                     {"green", Green},
                                     {"blue", Blue},
                                     {"alpha", Alpha},
                                     {"r", Red},
                                     {"g", Green},
                                     {"b", Blue},
                                     {"diffuse_red", Red},
                                     {"diffuse_green", Green},
                                     {"diffuse_blue", Blue},
                                     {"diffuse_alpha", Alpha}};
    std::vector<Target> targets(element.properties.size());
    std::array<bool, SlotCount> taken = {};
    for (const Name& entry : names) {
        const int found = element.find(entry.name);
        if (found < 0 || taken[entry.slot]) continue;
        const PlyHeader::Property& property = element.properties[static_cast<std::size_t>(found)];
        if (property.isList) continue;
        taken[entry.slot] = true;
        targets[static_cast<std::size_t>(found)] = {entry.slot,
                                                    entry.slot >= Red ? colorScale(property.type) : 1.0};
    }
    return targets;
}

void PlyParser::readVertices(const PlyHeader::Element& element, MeshAssembler& mesh)
{
    if (element.count > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max()))
        throw ksp::CommonError(QStringLiteral("has more than 2147483647 vertices"));
    const std::vector<Target> targets = getTargets(element);
    std::array<bool, SlotCount> has = {};
    for (const Target& target : targets) {
        if (target.slot >= 0) has[static_cast<std::size_t>(target.slot)] = true;
    }
    if (!has[X] || !has[Y] || !has[Z])
        throw ksp::CommonError(QStringLiteral("has vertices without x, y and z"));
    const bool hasNormal = has[NormalX] && has[NormalY] && has[NormalZ];
    const bool hasColor = has[Red] && has[Green] && has[Blue];
    mesh.reserveVertices(static_cast<std::size_t>(element.count));
    Vertex v = {};
    v[Alpha] = 1.0;
    for (std::uint64_t record = 0; record < element.count; ++record) {
        m_values.setPlace(&element, record);
        for (std::size_t i = 0; i < targets.size(); ++i) {
            const PlyHeader::Property& property = element.properties[i];
            if (targets[i].slot < 0)
                m_values.skip(property);
            else
                v[static_cast<std::size_t>(targets[i].slot)] =
                    m_values.read(property.type) * targets[i].scale;
        }
        const std::uint32_t vertex = mesh.addVertex({v[X], v[Y], v[Z]});
        if (hasNormal) mesh.setNormal(vertex, {v[NormalX], v[NormalY], v[NormalZ]});
        if (hasColor) mesh.setColor(vertex, packColor(v[Red], v[Green], v[Blue], v[Alpha]));
    }
}

void PlyParser::readCornerLists(const PlyHeader::Element& element, void (PlyParser::*keep)())
{
    const auto list = static_cast<std::size_t>(findCorners(element));
    for (std::uint64_t record = 0; record < element.count; ++record) {
        m_values.setPlace(&element, record);
        for (std::size_t i = 0; i < element.properties.size(); ++i) {
            if (i == list)
                readCorners(element.properties[i]);
            else
                m_values.skip(element.properties[i]);
        }
        m_hasPrimitives = true;
        (this->*keep)();
    }
}

void PlyParser::keepFace()
{
    if (m_corners.size() < 3) {
        ++m_leftOut.tooFew;
    } else if (m_corners.size() == 3) {
        m_triangles.insert(m_triangles.end(), m_corners.begin(), m_corners.end());
    } else {
        m_polygons.push_back(static_cast<std::int32_t>(m_corners.size()));
        m_polygons.insert(m_polygons.end(), m_corners.begin(), m_corners.end());
    }
}

void PlyParser::keepStrips()
{
    m_strips.insert(m_strips.end(), m_corners.begin(), m_corners.end());
    m_strips.push_back(-1);
}

// Appends the properties of each record, in their order.
void PlyParser::readIndices(const PlyHeader::Element& element, const std::vector<std::size_t>& properties,
                            std::vector<std::int32_t>& indices)
{
    std::vector<std::int32_t> named(properties.size());
    for (std::uint64_t record = 0; record < element.count; ++record) {
        m_values.setPlace(&element, record);
        for (std::size_t i = 0; i < element.properties.size(); ++i) {
            const auto place = std::find(properties.begin(), properties.end(), i);
            if (place == properties.end())
                m_values.skip(element.properties[i]);
            else
                named[static_cast<std::size_t>(place - properties.begin())] =
                    readIndex(element.properties[i].type);
        }
        m_hasPrimitives = true;
        indices.insert(indices.end(), named.begin(), named.end());
    }
}

void PlyParser::skipRecords(const PlyHeader::Element& element)
{
    if (element.properties.empty()) return;
    for (std::uint64_t record = 0; record < element.count; ++record) {
        m_values.setPlace(&element, record);
        for (const PlyHeader::Property& property : element.properties)
            m_values.skip(property);
    }
}

void PlyParser::readCorners(const PlyHeader::Property& list)
{
    m_corners.clear();
    const std::uint64_t count = m_values.readCount(list);
    for (std::uint64_t i = 0; i < count; ++i)
        m_corners.push_back(readIndex(list.type));
}

std::int32_t PlyParser::readIndex(PlyHeader::Type type)
{
    const double value = m_values.read(type);
    constexpr double most = std::numeric_limits<std::int32_t>::max();
    if (!(value >= -1.0 && value <= most) || value != std::floor(value))
        m_values.fail(QStringLiteral("%1 is not the number of a vertex").arg(value));
    return static_cast<std::int32_t>(value);
}

void PlyParser::addPrimitives(MeshAssembler& mesh)
{
    for (std::size_t i = 0; i < m_triangles.size(); i += 3)
        mesh.addTriangle(checked(m_triangles[i], mesh), checked(m_triangles[i + 1], mesh),
                         checked(m_triangles[i + 2], mesh));
    std::vector<std::int32_t>().swap(m_triangles);
    addPolygons(mesh);
    addStrips(mesh);
    for (std::size_t i = 0; i < m_edges.size(); i += 2)
        mesh.addLine(checked(m_edges[i], mesh), checked(m_edges[i + 1], mesh));
    for (const std::int32_t vertex : m_points)
        mesh.addPoint(checked(vertex, mesh));
    if (!m_hasPrimitives) mesh.addPointsOfAllVertices();
}

void PlyParser::addPolygons(MeshAssembler& mesh)
{
    std::vector<std::uint32_t> corners;
    for (std::size_t i = 0; i < m_polygons.size();) {
        const auto count = static_cast<std::size_t>(m_polygons[i]);
        corners.clear();
        for (std::size_t k = 1; k <= count; ++k)
            corners.push_back(checked(m_polygons[i + k], mesh));
        mesh.addPolygon(corners);
        i += count + 1;
    }
    std::vector<std::int32_t>().swap(m_polygons);
}

// Every second triangle of a strip winds the other way; those with a corner twice only join strips.
void PlyParser::addStrips(MeshAssembler& mesh) const
{
    std::size_t begin = 0;
    for (std::size_t end = 0; end < m_strips.size(); ++end) {
        if (m_strips[end] != -1) {
            checked(m_strips[end], mesh);
            continue;
        }
        for (std::size_t i = begin; i + 2 < end; ++i) {
            const bool odd = (i - begin) % 2 != 0;
            const auto a = static_cast<std::uint32_t>(m_strips[odd ? i + 1 : i]);
            const auto b = static_cast<std::uint32_t>(m_strips[odd ? i : i + 1]);
            const auto c = static_cast<std::uint32_t>(m_strips[i + 2]);
            if (a != b && b != c && a != c) mesh.addTriangle(a, b, c);
        }
        begin = end + 1;
    }
}

} // namespace readers
