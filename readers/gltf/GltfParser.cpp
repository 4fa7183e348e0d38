#include <readers/gltf/GltfParser.h>

#include <framework/ksp/CommonError.h>

#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/quaternion.hpp>

#include <cmath>
#include <numeric>

namespace readers {

namespace {

constexpr double readingWeight = 20.0; // percent of the progress that finding the document's members is

enum Mode { Points, Lines, LineLoop, LineStrip, Triangles, TriangleStrip, TriangleFan };

// Entries of vertices and indices that a document may unfold to by using meshes many times: a small one can
// name one mesh in very many nodes.
constexpr std::uint64_t freeEntries = 8'000'000;
constexpr std::uint64_t entriesPerByte = 2;
constexpr std::uint64_t entriesPerPrimitive = 64; // the time that finding it takes, in the same measure

glm::dvec4 readVector(const QJsonObject& object, const char* name, const glm::dvec4& defaultValue, int size)
{
    const QJsonValue value = object.value(QLatin1String(name));
    if (value.isUndefined()) return defaultValue;
    const QJsonArray numbers = value.toArray();
    if (numbers.size() != size)
        throw ksp::CommonError(
            QStringLiteral("a node's %1 has not %2 numbers").arg(QLatin1String(name)).arg(size));
    glm::dvec4 vector(0.0);
    for (int i = 0; i < size; ++i)
        vector[i] = numbers.at(i).toDouble();
    return vector;
}

glm::dmat4 readTransform(const QJsonObject& node)
{
    glm::dmat4 matrix(1.0);
    const QJsonValue value = node.value(QLatin1String("matrix"));
    if (value.isArray()) {
        const QJsonArray numbers = value.toArray();
        if (numbers.size() != 16)
            throw ksp::CommonError(QStringLiteral("a node's matrix has not 16 numbers"));
        for (int i = 0; i < 16; ++i)
            matrix[i / 4][i % 4] = numbers.at(i).toDouble();
        return matrix;
    }
    const glm::dvec4 translation = readVector(node, "translation", glm::dvec4(0.0), 3);
    const glm::dvec4 scale = readVector(node, "scale", glm::dvec4(1.0), 3);
    const glm::dvec4 r = readVector(node, "rotation", {0.0, 0.0, 0.0, 1.0}, 4);
    const double length = glm::length(r);
    matrix = glm::mat4_cast(length > 0.0 ? glm::dquat(r.w, r.x, r.y, r.z) / length
                                         : glm::dquat(1.0, 0.0, 0.0, 0.0));
    for (int i = 0; i < 3; ++i)
        matrix[i] *= scale[i];
    matrix[3] = glm::dvec4(glm::dvec3(translation), 1.0);
    return matrix;
}

bool isFinite(const glm::dmat4& matrix)
{
    for (int i = 0; i < 16; ++i) {
        if (!std::isfinite(matrix[i / 4][i % 4])) return false;
    }
    return true;
}

} // namespace

GltfParser::GltfParser(QIODevice& device, const QString& path, ksp::StagedProgress progress)
    : m_path(path)
    , m_progress(std::move(progress))
    , m_document(device, path, m_progress.startStage(readingWeight))
    , m_materials(m_document, path)
    , m_entriesLeft(freeEntries + entriesPerByte * m_document.getSize())
{
}

std::vector<MeshData> GltfParser::parse()
{
    m_visited.resize(static_cast<std::size_t>(m_document.getCountOf("nodes")));
    std::vector<Walk> walks(1);
    walks[0].nodes = getRootNodes();
    while (!walks.empty()) {
        Walk& walk = walks.back();
        if (walk.next == walk.nodes.size()) {
            walks.pop_back();
            continue;
        }
        Walk children = addNode(walk.nodes.at(walk.next++), walk.transform);
        if (!children.nodes.isEmpty()) walks.push_back(std::move(children));
    }
    takeMesh();
    m_leftOut.fanned = m_triangulator.getFannedCount();
    if (m_meshes.empty()) m_leftOut.refuse();
    m_leftOut.log(m_path);
    return std::move(m_meshes);
}

// Those of the scene that the document names, or its first; without scenes the nodes that are nobody's child.
QJsonArray GltfParser::getRootNodes()
{
    if (m_document.getCountOf("scenes") > 0) {
        const QJsonValue scene = m_document.getScene();
        return m_document.getMember("scenes", scene.isUndefined() ? QJsonValue(0) : scene)
            .value(QLatin1String("nodes"))
            .toArray();
    }
    const int count = m_document.getCountOf("nodes");
    std::vector<bool> isChild(static_cast<std::size_t>(count), false);
    for (int i = 0; i < count; ++i) {
        const QJsonArray list = m_document.getMember("nodes", i).value(QLatin1String("children")).toArray();
        for (const QJsonValue& child : list) {
            const int number = child.toInt(-1);
            if (number >= 0 && number < count) isChild[static_cast<std::size_t>(number)] = true;
        }
    }
    QJsonArray roots;
    for (int i = 0; i < count; ++i) {
        if (!isChild[static_cast<std::size_t>(i)]) roots.append(i);
    }
    return roots;
}

// Adds what the node itself draws; gives its children.
GltfParser::Walk GltfParser::addNode(const QJsonValue& index, const glm::dmat4& parent)
{
    const QJsonObject node = m_document.getMember("nodes", index);
    const auto number = static_cast<std::size_t>(index.toInt());
    if (m_visited[number])
        throw ksp::CommonError(QStringLiteral("node %1 stands in two places or within itself").arg(number));
    m_visited[number] = true;
    m_progress.throwIfCanceled();
    m_progress.setDone(static_cast<double>(++m_visitCount), static_cast<double>(m_visited.size()));

    Walk children;
    children.nodes = node.value(QLatin1String("children")).toArray();
    children.transform = parent * readTransform(node);
    if (!isFinite(children.transform))
        throw ksp::CommonError(QStringLiteral("the transform of node %1 is not finite").arg(number));
    const QJsonValue meshIndex = node.value(QLatin1String("mesh"));
    if (!meshIndex.isUndefined()) {
        const QJsonObject mesh = m_document.getMember("meshes", meshIndex);
        const QString name = node.value(QLatin1String("name")).toString();
        addMesh(mesh, name.isEmpty() ? mesh.value(QLatin1String("name")).toString() : name,
                children.transform);
    }
    return children;
}

void GltfParser::addMesh(const QJsonObject& mesh, const QString& name, const glm::dmat4& transform)
{
    if (m_meshes.size() + 1 < mostMeshes) takeMesh();
    if (!m_mesh) m_mesh = std::make_unique<MeshAssembler>(m_triangulator, name);
    const QJsonArray primitives = mesh.value(QLatin1String("primitives")).toArray();
    bool colored = false;
    for (const QJsonValue& primitive : primitives) {
        const QJsonObject attributes = primitive.toObject().value(QLatin1String("attributes")).toObject();
        colored = colored || attributes.contains(QLatin1String("COLOR_0"));
    }
    for (const QJsonValue& primitive : primitives)
        addPrimitive(primitive.toObject(), transform, colored);
}

void GltfParser::takeMesh()
{
    if (!m_mesh) return;
    m_leftOut.notFinite += m_mesh->getLeftOutCount();
    if (!m_mesh->isEmpty()) m_meshes.push_back(m_mesh->take());
    m_mesh.reset();
}

void GltfParser::charge(std::uint64_t entries)
{
    if (entries > m_entriesLeft)
        throw ksp::CommonError(QStringLiteral("unfolds to far more vertices than a file of its size should"));
    m_entriesLeft -= entries;
}

// colored: the mesh has colours of vertices, so that those of this primitive need theirs.
void GltfParser::addPrimitive(const QJsonObject& primitive, const glm::dmat4& transform, bool colored)
{
    const QJsonObject attributes = primitive.value(QLatin1String("attributes")).toObject();
    if (!attributes.contains(QLatin1String("POSITION"))) return; // nothing is drawn without
    const int mode = primitive.value(QLatin1String("mode")).toInt(Triangles);
    if (mode < Points || mode > TriangleFan)
        throw ksp::CommonError(QStringLiteral("a primitive has the unknown mode %1").arg(mode));
    charge(entriesPerPrimitive);
    const GltfMaterials::Entry& look = m_materials.get(primitive.value(QLatin1String("material")));
    const auto first = static_cast<std::uint32_t>(m_mesh->getVertexCount());
    addVertices(attributes, look, transform, colored);
    const auto count = static_cast<std::uint32_t>(m_mesh->getVertexCount()) - first;
    m_mesh->useMaterial(&look.material);
    addPrimitives(readIndices(primitive, first, count), mode, glm::determinant(glm::dmat3(transform)) < 0.0);
}

void GltfParser::addVertices(const QJsonObject& attributes, const GltfMaterials::Entry& look,
                             const glm::dmat4& transform, bool colored)
{
    const auto read = [&](const QString& name, int components, std::size_t count) {
        std::vector<double> numbers;
        const QJsonValue accessor = attributes.value(name);
        if (accessor.isUndefined()) return numbers;
        if (m_document.getCount(accessor) != count)
            throw ksp::CommonError(QStringLiteral("the attribute %1 has not one entry a vertex").arg(name));
        return m_document.readAccessor(accessor, components);
    };
    const QJsonValue positionAccessor = attributes.value(QLatin1String("POSITION"));
    charge(m_document.getCount(positionAccessor));
    const std::vector<double> positions = m_document.readAccessor(positionAccessor, 3);
    const std::size_t count = positions.size() / 3;
    const auto first = static_cast<std::uint32_t>(m_mesh->getVertexCount());
    for (std::size_t i = 0; i < count; ++i)
        m_mesh->addVertex(transform *
                          glm::dvec4(positions[3 * i], positions[3 * i + 1], positions[3 * i + 2], 1.0));

    const std::vector<double> normals = read(QStringLiteral("NORMAL"), 3, count);
    const glm::dmat3 turn = glm::inverseTranspose(glm::dmat3(transform));
    for (std::size_t i = 0; i * 3 < normals.size(); ++i)
        m_mesh->setNormal(first + static_cast<std::uint32_t>(i),
                          turn * glm::dvec3(normals[3 * i], normals[3 * i + 1], normals[3 * i + 2]));

    // the picture's first row is at 0 in the file
    const std::vector<double> texCoords =
        look.material.image.isNull() ? std::vector<double>()
                                     : read(QStringLiteral("TEXCOORD_%1").arg(look.texCoordSet), 2, count);
    for (std::size_t i = 0; i * 2 < texCoords.size(); ++i)
        m_mesh->setTexCoord(first + static_cast<std::uint32_t>(i),
                            {texCoords[2 * i], 1.0 - texCoords[2 * i + 1]});
    if (colored) addColors(attributes.value(QLatin1String("COLOR_0")), look.factor, first, count);
}

void GltfParser::addColors(const QJsonValue& accessor, const glm::dvec4& factor, std::uint32_t first,
                           std::size_t count)
{
    std::vector<double> colors;
    std::size_t width = 4;
    if (!accessor.isUndefined()) {
        const QJsonObject object = m_document.getMember("accessors", accessor);
        width = object.value(QLatin1String("type")).toString() == QLatin1String("VEC3") ? 3 : 4;
        if (m_document.getCount(accessor) != count)
            throw ksp::CommonError(QStringLiteral("the attribute COLOR_0 has not one entry a vertex"));
        colors = m_document.readAccessor(accessor, static_cast<int>(width));
    }
    for (std::size_t i = 0; i < count; ++i) {
        glm::dvec4 color = factor;
        for (std::size_t k = 0; k < width && !colors.empty(); ++k)
            color[static_cast<int>(k)] *= colors[i * width + k];
        m_mesh->setColor(first + static_cast<std::uint32_t>(i), packLinearColor(color));
    }
}

// The vertices in the order in which the primitive joins them, as numbers in the mesh under way.
std::vector<std::uint32_t> GltfParser::readIndices(const QJsonObject& primitive, std::uint32_t first,
                                                   std::uint32_t count)
{
    const QJsonValue accessor = primitive.value(QLatin1String("indices"));
    std::vector<std::uint32_t> vertices;
    if (accessor.isUndefined()) {
        charge(count);
        vertices.resize(count);
        std::iota(vertices.begin(), vertices.end(), first);
        return vertices;
    }
    charge(m_document.getCount(accessor));
    const std::vector<double> indices = m_document.readAccessor(accessor, 1);
    vertices.reserve(indices.size());
    for (double index : indices) {
        if (!(index >= 0.0 && index < count) || index != std::floor(index))
            throw ksp::CommonError(QStringLiteral("vertex %1 is named, there are %2").arg(index).arg(count));
        vertices.push_back(first + static_cast<std::uint32_t>(index));
    }
    return vertices;
}

// mirrored: the transform turns triangles over, so that they must wind the other way to face as they did.
void GltfParser::addPrimitives(const std::vector<std::uint32_t>& v, int mode, bool mirrored)
{
    const std::size_t count = v.size();
    const auto addTriangle = [&](std::size_t a, std::size_t b, std::size_t c) {
        m_mesh->addTriangle(v[a], mirrored ? v[c] : v[b], mirrored ? v[b] : v[c]);
    };
    switch (mode) {
    case Points:
        for (std::uint32_t vertex : v)
            m_mesh->addPoint(vertex);
        break;
    case Lines:
        for (std::size_t i = 0; i + 1 < count; i += 2)
            m_mesh->addLine(v[i], v[i + 1]);
        break;
    case LineLoop:
    case LineStrip:
        for (std::size_t i = 0; i + 1 < count; ++i)
            m_mesh->addLine(v[i], v[i + 1]);
        if (mode == LineLoop && count > 2) m_mesh->addLine(v[count - 1], v[0]);
        break;
    case Triangles:
        for (std::size_t i = 0; i + 2 < count; i += 3)
            addTriangle(i, i + 1, i + 2);
        break;
    case TriangleStrip: // every second one winds the other way
        for (std::size_t i = 0; i + 2 < count; ++i)
            addTriangle(i, i % 2 == 0 ? i + 1 : i + 2, i % 2 == 0 ? i + 2 : i + 1);
        break;
    default:
        for (std::size_t i = 1; i + 1 < count; ++i)
            addTriangle(0, i, i + 1);
    }
}

} // namespace readers
