#include <readers/off/OffParser.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/numbers.h>

namespace readers {

namespace {

bool takePrefix(std::string_view& word, std::string_view prefix)
{
    if (word.substr(0, prefix.size()) != prefix) return false;
    word.remove_prefix(prefix.size());
    return true;
}

} // namespace

OffParser::OffParser(QIODevice& device, const QString& path, ksp::StagedProgress progress)
    : m_path(path)
    , m_input(device, std::move(progress))
{
}

void OffParser::fail(const QString& reason) const
{
    throw ksp::CommonError(QStringLiteral("line %1: %2").arg(m_input.getLineNumber()).arg(reason));
}

std::vector<MeshData> OffParser::parse()
{
    readHead();
    PolygonTriangulator triangulator;
    MeshAssembler mesh(triangulator, {});
    mesh.reserveVertices(static_cast<std::size_t>(m_vertexCount));
    for (std::uint64_t i = 0; i < m_vertexCount; ++i)
        readVertex(mesh);
    for (std::uint64_t i = 0; i < m_faceCount; ++i)
        readFace(mesh);
    if (m_faceCount == 0) mesh.addPointsOfAllVertices();
    m_leftOut.notFinite = mesh.getLeftOutCount();
    m_leftOut.fanned = triangulator.getFannedCount();
    if (mesh.isEmpty()) m_leftOut.refuse();
    m_leftOut.log(m_path);
    std::vector<MeshData> meshes;
    meshes.push_back(mesh.take());
    return meshes;
}

// The keyword, in the same or the next line the numbers of vertices, faces and edges.
void OffParser::readHead()
{
    if (!findLine()) throw ksp::CommonError(QStringLiteral("is not an OFF file"));
    const std::string_view keyword = takeToken(m_line);
    std::string_view word = keyword;
    m_hasTexCoords = takePrefix(word, "ST");
    m_hasColors = takePrefix(word, "C");
    m_hasNormals = takePrefix(word, "N");
    if (word == "4OFF" || word == "nOFF" || word == "4nOFF")
        throw ksp::CommonError(QStringLiteral("has vertices of more than three coordinates"));
    if (word != "OFF") throw ksp::CommonError(QStringLiteral("is not an OFF file"));
    std::string_view rest = m_line;
    const std::string_view second = takeToken(rest);
    if (second == "BINARY")
        throw ksp::CommonError(QStringLiteral("is a binary OFF file, which cannot be read"));
    if (second.empty() && !findLine()) fail(QStringLiteral("the file ends here"));
    m_vertexCount = readCount();
    m_faceCount = readCount();
    constexpr std::uint64_t smallestVertex = 6; // "0 0 0" and the line's end
    constexpr std::uint64_t smallestFace = 2;
    const std::uint64_t left = m_input.getRemaining() + 1;
    if (m_vertexCount > left / smallestVertex ||
        m_faceCount > (left - m_vertexCount * smallestVertex) / smallestFace)
        fail(QStringLiteral("%1 vertices and %2 faces do not fit into the rest of the file")
                 .arg(m_vertexCount)
                 .arg(m_faceCount));
}

// Moves on to the next line that says something.
bool OffParser::findLine()
{
    while (m_input.readLine(m_line)) {
        m_line = trimmed(m_line.substr(0, m_line.find('#')));
        if (!m_line.empty()) return true;
    }
    return false;
}

double OffParser::readNumber()
{
    const std::string_view token = takeToken(m_line);
    double value = 0.0;
    if (token.empty()) fail(QStringLiteral("a number is missing"));
    if (!toDouble(token, value)) fail(inQuotes(token) + QStringLiteral(" is not a number"));
    return value;
}

std::uint64_t OffParser::readCount()
{
    const std::string_view token = takeToken(m_line);
    std::int64_t value = 0;
    if (!toInteger(token, value) || value < 0) fail(inQuotes(token) + QStringLiteral(" is not a count"));
    return static_cast<std::uint64_t>(value);
}

void OffParser::readVertex(MeshAssembler& mesh)
{
    if (!findLine()) fail(QStringLiteral("the file ends before its %1 vertices").arg(m_vertexCount));
    glm::dvec3 p;
    for (int i = 0; i < 3; ++i)
        p[i] = readNumber();
    const std::uint32_t vertex = mesh.addVertex(p);
    if (m_hasNormals) {
        glm::vec3 normal;
        for (int i = 0; i < 3; ++i)
            normal[i] = static_cast<float>(readNumber());
        mesh.setNormal(vertex, normal);
    }
    if (m_hasColors) mesh.setColor(vertex, readColor());
}

// Three or four numbers: whole ones are bytes, others go to 1.
std::uint32_t OffParser::readColor()
{
    const std::string_view text = m_line;
    std::string_view rest = text;
    int count = m_hasTexCoords ? -2 : 0; // which follow
    while (!takeToken(rest).empty())
        ++count;
    double color[4] = {1.0, 1.0, 1.0, 1.0};
    for (int i = 0; i < (count == 4 ? 4 : 3); ++i)
        color[i] = readNumber();
    const std::string_view read = text.substr(0, text.size() - m_line.size());
    const double scale = read.find_first_of(".eE") == std::string_view::npos ? 1.0 / 255.0 : 1.0;
    const double alpha = count == 4 ? color[3] * scale : 1.0;
    return packColor(color[0] * scale, color[1] * scale, color[2] * scale, alpha);
}

void OffParser::readFace(MeshAssembler& mesh)
{
    if (!findLine()) fail(QStringLiteral("the file ends before its %1 faces").arg(m_faceCount));
    const std::uint64_t count = readCount();
    m_corners.clear();
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t index = readCount();
        if (index >= m_vertexCount)
            fail(QStringLiteral("vertex %1 is named, there are %2").arg(index).arg(m_vertexCount));
        m_corners.push_back(static_cast<std::uint32_t>(index));
    }
    if (m_corners.size() < 3)
        ++m_leftOut.tooFew;
    else
        mesh.addPolygon(m_corners);
}

} // namespace readers
