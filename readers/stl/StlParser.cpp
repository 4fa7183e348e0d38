#include <readers/stl/StlParser.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/numbers.h>

#include <QtCore/QtEndian>

#include <algorithm>

namespace readers {

namespace {

constexpr std::size_t headSize = 84;  // 80 bytes of anything and the number of triangles
constexpr std::size_t facetSize = 50; // normal, three corners, two bytes more

bool isKeyword(std::string_view token, std::string_view keyword)
{
    return token.size() == keyword.size() &&
           std::equal(token.begin(), token.end(), keyword.begin(), [](char a, char b) {
               return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
           });
}

} // namespace

StlParser::StlParser(QIODevice& device, const QString& path, ksp::StagedProgress progress)
    : m_path(path)
    , m_input(device, std::move(progress))
{
}

std::vector<MeshData> StlParser::parse()
{
    if (isText())
        readText();
    else
        readBinary();
    m_leftOut.fanned = m_triangulator.getFannedCount();
    takeMesh();
    if (m_meshes.empty()) m_leftOut.refuse();
    m_leftOut.log(m_path);
    return std::move(m_meshes);
}

void StlParser::fail(const QString& reason) const
{
    throw ksp::CommonError(QStringLiteral("facet %1: %2").arg(m_facet).arg(reason));
}

// Some binary files begin with "solid" too: their size tells.
bool StlParser::isText()
{
    const std::string_view head = m_input.peek(headSize);
    std::string_view rest = head;
    if (!isKeyword(takeToken(rest), "solid")) return false;
    if (head.size() < headSize) return true;
    const auto count = qFromLittleEndian<quint32>(head.data() + headSize - 4);
    return m_input.getSize() != headSize + std::uint64_t(count) * facetSize;
}

MeshAssembler& StlParser::startMesh(const QString& name)
{
    if (m_meshes.size() + 1 < mostMeshes) takeMesh();
    if (!m_mesh) m_mesh = std::make_unique<MeshAssembler>(m_triangulator, name);
    return *m_mesh;
}

void StlParser::takeMesh()
{
    if (!m_mesh) return;
    m_leftOut.notFinite += m_mesh->getLeftOutCount();
    if (!m_mesh->isEmpty()) m_meshes.push_back(m_mesh->take());
    m_mesh.reset();
}

void StlParser::readBinary()
{
    const char* head = m_input.readBytes(headSize);
    if (!head) throw ksp::CommonError(QStringLiteral("is not an STL file"));
    const auto count = qFromLittleEndian<quint32>(head + headSize - 4);
    if (count > m_input.getRemaining() / facetSize)
        throw ksp::CommonError(
            QStringLiteral("is not an STL file or is too short: %1 triangles do not fit into %2 bytes")
                .arg(count)
                .arg(m_input.getRemaining()));
    MeshAssembler& mesh = startMesh({});
    mesh.reserveVertices(std::size_t(count) * 3);
    for (std::uint32_t i = 0; i < count; ++i) {
        float numbers[12];
        const char* bytes = m_input.readBytes(facetSize);
        m_facet = i + 1;
        if (!bytes) fail(QStringLiteral("the file ends here"));
        qFromLittleEndian<float>(bytes, 12, numbers);
        std::uint32_t corners[3];
        for (std::size_t k = 0; k < 3; ++k)
            corners[k] = mesh.addVertex({numbers[3 * k + 3], numbers[3 * k + 4], numbers[3 * k + 5]});
        mesh.addTriangle(corners[0], corners[1], corners[2]);
    }
}

void StlParser::readText()
{
    std::string_view line;
    while (m_input.readLine(line)) {
        const std::string_view keyword = takeToken(line);
        if (keyword.empty()) continue;
        if (!isKeyword(keyword, "solid"))
            fail(inQuotes(keyword) + QStringLiteral(" where a solid should begin"));
        const std::string_view name = trimmed(line);
        readSolid(QString::fromUtf8(name.data(), static_cast<int>(name.size())));
    }
}

void StlParser::readSolid(const QString& name)
{
    MeshAssembler& mesh = startMesh(name);
    for (;;) {
        const std::string_view keyword = next();
        if (isKeyword(keyword, "endsolid")) break;
        if (!isKeyword(keyword, "facet"))
            fail(inQuotes(keyword) + QStringLiteral(" where a facet should begin"));
        readFacet(mesh);
    }
    std::string_view restOfLine; // the name once more
    m_input.readLine(restOfLine);
}

void StlParser::readFacet(MeshAssembler& mesh)
{
    ++m_facet;
    expect("normal");
    for (int i = 0; i < 3; ++i)
        readNumber();
    expect("outer");
    expect("loop");
    m_corners.clear();
    for (;;) {
        const std::string_view keyword = next();
        if (isKeyword(keyword, "endloop")) break;
        if (!isKeyword(keyword, "vertex"))
            fail(inQuotes(keyword) + QStringLiteral(" where a vertex should be"));
        const double x = readNumber();
        const double y = readNumber();
        m_corners.push_back(mesh.addVertex({x, y, readNumber()}));
    }
    expect("endfacet");
    if (m_corners.size() < 3)
        ++m_leftOut.tooFew;
    else
        mesh.addPolygon(m_corners);
}

std::string_view StlParser::next()
{
    std::string_view token;
    if (!m_input.readToken(token)) fail(QStringLiteral("the file ends here"));
    return token;
}

void StlParser::expect(const char* keyword)
{
    const std::string_view token = next();
    if (!isKeyword(token, keyword))
        fail(inQuotes(token) + QStringLiteral(" where \"%1\" should be").arg(QLatin1String(keyword)));
}

double StlParser::readNumber()
{
    const std::string_view token = next();
    double value = 0.0;
    if (!toDouble(token, value)) fail(inQuotes(token) + QStringLiteral(" is not a number"));
    return value;
}

} // namespace readers
