#include <readers/obj/ObjParser.h>

#include <framework/ksp/CommonError.h>
#include <framework/ksp/Log.h>
#include <readers/common/numbers.h>

#include <limits>

namespace readers {

namespace {

constexpr std::uint32_t opaqueWhite = 0xffffffffu;

} // namespace

ObjParser::ObjParser(QIODevice& device, const QString& path, ksp::StagedProgress progress)
    : m_device(device)
    , m_path(path)
    , m_progress(std::move(progress))
    , m_materials(path)
{
}

std::vector<MeshData> ObjParser::parse()
{
    constexpr double half = 50.0; // percent
    {
        InputBuffer input(m_device, m_progress.startStage(half));
        m_input = &input;
        readVertices();
    }
    if (m_positions.empty()) throw ksp::CommonError(QStringLiteral("has no vertices"));
    if (!m_device.seek(0)) throw ksp::CommonError(QStringLiteral("cannot be read twice"));
    InputBuffer input(m_device, m_progress.startStage(half));
    m_input = &input;
    readElements();
    return takeMeshes();
}

// A statement goes on in the next line where its line ends in a backslash.
bool ObjParser::readStatement(InputBuffer& input, std::string_view& keyword, std::string_view& rest)
{
    if (!input.readLine(rest)) return false;
    m_line = input.getLineNumber();
    if (!rest.empty() && rest.back() == '\\') {
        m_statement.clear();
        bool goesOn = true;
        while (goesOn) {
            goesOn = !rest.empty() && rest.back() == '\\';
            m_statement.append(rest.substr(0, rest.size() - (goesOn ? 1 : 0)));
            m_statement.push_back(' ');
            if (m_statement.size() > InputBuffer::longestLine)
                fail(QStringLiteral("a statement longer than 4 MiB"));
            goesOn = goesOn && input.readLine(rest);
        }
        rest = m_statement;
    }
    keyword = takeToken(rest);
    return true;
}

void ObjParser::fail(const QString& reason) const
{
    throw ksp::CommonError(QStringLiteral("line %1: %2").arg(m_line).arg(reason));
}

void ObjParser::readVertices()
{
    std::string_view keyword;
    std::string_view rest;
    double n[3];
    while (readStatement(*m_input, keyword, rest)) {
        if (keyword == "v") {
            readPosition(rest);
        } else if (keyword == "vt") {
            n[1] = 0.0;
            readNumbers(rest, n, 2, 1);
            m_texCoords.emplace_back(n[0], n[1]);
        } else if (keyword == "vn") {
            readNumbers(rest, n, 3, 3);
            m_normals.emplace_back(n[0], n[1], n[2]);
        } else if (keyword == "mtllib") {
            m_materials.addLibraries(rest);
        }
    }
    constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
    if (m_positions.size() > most || m_texCoords.size() > most || m_normals.size() > most)
        throw ksp::CommonError(QStringLiteral("has more than 2147483647 vertices"));
}

// Three coordinates, and then a weight, which has no meaning for what is drawn here, or a colour.
void ObjParser::readPosition(std::string_view rest)
{
    double n[6];
    const int count = readNumbers(rest, n, 6, 3);
    m_positions.emplace_back(n[0], n[1], n[2]);
    const glm::vec3 none(-1.0f);
    if (count < 6) {
        if (!m_colors.empty()) m_colors.push_back(none);
        return;
    }
    if (m_colors.empty()) m_colors.resize(m_positions.size() - 1, none);
    m_colors.emplace_back(n[3], n[4], n[5]);
    // some programs write bytes
    if (n[3] > 1.0 || n[4] > 1.0 || n[5] > 1.0) m_colorScale = 1.0 / 255.0;
}

int ObjParser::readNumbers(std::string_view rest, double* numbers, int most, int least) const
{
    int count = 0;
    while (count < most) {
        const std::string_view token = takeToken(rest);
        if (token.empty() || token[0] == '#') break;
        if (!toDouble(token, numbers[count])) fail(inQuotes(token) + QStringLiteral(" is not a number"));
        ++count;
    }
    if (count < least) fail(QStringLiteral("%1 numbers where %2 are needed").arg(count).arg(least));
    return count;
}

void ObjParser::readElements()
{
    std::string_view keyword;
    std::string_view rest;
    Counts counts;
    while (readStatement(*m_input, keyword, rest)) {
        if (keyword.empty() || keyword[0] == '#') continue;
        if (keyword[0] == 'v') {
            countVertex(keyword, counts);
        } else if (keyword == "f" || keyword == "l" || keyword == "p") {
            readElement(keyword, rest, counts);
        } else if (keyword == "o") {
            m_object = trimmed(rest);
            m_group.clear();
            m_part = nullptr;
        } else if (keyword == "g") {
            m_group = trimmed(rest);
            m_part = nullptr;
        } else if (keyword == "usemtl") {
            m_material = m_materials.find(rest);
            if (m_part) m_part->mesh.useMaterial(m_material);
        }
    }
}

void ObjParser::countVertex(std::string_view keyword, Counts& counts) const
{
    if (keyword == "v")
        ++counts.positions;
    else if (keyword == "vt")
        ++counts.texCoords;
    else if (keyword == "vn")
        ++counts.normals;
}

void ObjParser::readElement(std::string_view keyword, std::string_view rest, const Counts& counts)
{
    readCorners(rest, counts);
    MeshAssembler& mesh = getPart().mesh;
    if (keyword == "f") {
        if (m_corners.size() >= 3)
            mesh.addPolygon(m_corners);
        else
            ++m_leftOut.tooFew;
    } else if (keyword == "l") {
        if (m_corners.size() < 2) ++m_leftOut.tooFew;
        for (std::size_t i = 1; i < m_corners.size(); ++i)
            mesh.addLine(m_corners[i - 1], m_corners[i]);
    } else {
        for (std::uint32_t corner : m_corners)
            mesh.addPoint(corner);
    }
}

void ObjParser::readCorners(std::string_view rest, const Counts& counts)
{
    Part& part = getPart();
    m_corners.clear();
    for (;;) {
        const std::string_view token = takeToken(rest);
        if (token.empty() || token[0] == '#') return;
        m_corners.push_back(addCorner(part, readCorner(token, counts)));
    }
}

// position, position/texture, position//normal or position/texture/normal
CornerTable::Corner ObjParser::readCorner(std::string_view token, const Counts& counts) const
{
    CornerTable::Corner corner = {-1, -1, -1};
    const std::size_t first = std::min(token.find('/'), token.size());
    corner.position = readIndex(token.substr(0, first), counts.positions, m_positions.size());
    if (first == token.size()) return corner;
    token.remove_prefix(first + 1);
    const std::size_t second = std::min(token.find('/'), token.size());
    if (second > 0)
        corner.texCoord = readIndex(token.substr(0, second), counts.texCoords, m_texCoords.size());
    if (second + 1 < token.size())
        corner.normal = readIndex(token.substr(second + 1), counts.normals, m_normals.size());
    return corner;
}

// 1 is the first, -1 the last so far.
std::int32_t ObjParser::readIndex(std::string_view text, std::int64_t countSoFar,
                                  std::size_t countInAll) const
{
    std::int64_t index = 0;
    if (!toInteger(text, index)) fail(inQuotes(text) + QStringLiteral(" is not an index"));
    const std::int64_t number = index > 0 ? index - 1 : index < 0 ? index + countSoFar : -1;
    if (number < 0 || number >= static_cast<std::int64_t>(countInAll))
        fail(QStringLiteral("index %1 is out of range, there are %2").arg(index).arg(countInAll));
    return static_cast<std::int32_t>(number);
}

ObjParser::Part& ObjParser::getPart()
{
    if (m_part) return *m_part;
    const std::pair<std::string, std::string> key(m_object, m_group);
    const auto found = m_partsByName.find(key);
    if (found != m_partsByName.end()) {
        m_part = found->second;
    } else if (m_parts.size() >= mostMeshes) {
        m_part = m_parts.back().get();
        m_joinsParts = true;
    } else {
        const std::string name =
            m_object.empty() || m_group.empty() ? m_object + m_group : m_object + "/" + m_group;
        m_parts.push_back(std::make_unique<Part>(m_triangulator, QString::fromStdString(name)));
        m_part = m_parts.back().get();
        m_partsByName.emplace(key, m_part);
    }
    m_part->mesh.useMaterial(m_material);
    return *m_part;
}

std::uint32_t ObjParser::addCorner(Part& part, const CornerTable::Corner& corner) const
{
    const auto [vertex, isNew] = part.corners.insert(corner);
    if (!isNew) return vertex;
    const auto position = static_cast<std::size_t>(corner.position);
    part.mesh.addVertex(m_positions[position]);
    if (corner.texCoord >= 0)
        part.mesh.setTexCoord(vertex, m_texCoords[static_cast<std::size_t>(corner.texCoord)]);
    if (corner.normal >= 0) part.mesh.setNormal(vertex, m_normals[static_cast<std::size_t>(corner.normal)]);
    if (!m_colors.empty()) {
        const QColor own = m_material ? m_material->color : QColor();
        const std::uint32_t plain =
            own.isValid() ? packColor(own.redF(), own.greenF(), own.blueF(), 1.0) : opaqueWhite;
        const glm::dvec3 color = glm::dvec3(m_colors[position]) * m_colorScale;
        part.mesh.setColor(vertex, color.x < 0.0 ? plain : packColor(color.x, color.y, color.z, 1.0));
    }
    return vertex;
}

std::vector<MeshData> ObjParser::takeMeshes()
{
    if (m_parts.empty()) {
        Part& part = getPart();
        for (std::size_t i = 0; i < m_positions.size(); ++i)
            part.mesh.addPoint(addCorner(part, {static_cast<std::int32_t>(i), -1, -1}));
    }
    std::vector<glm::dvec3>().swap(m_positions);
    std::vector<glm::vec3>().swap(m_normals);
    std::vector<MeshData> meshes;
    for (std::unique_ptr<Part>& part : m_parts) {
        m_progress.throwIfCanceled();
        m_leftOut.notFinite += part->mesh.getLeftOutCount();
        if (!part->mesh.isEmpty()) {
            part->corners = CornerTable();
            meshes.push_back(part->mesh.take());
        }
        part.reset();
    }
    m_leftOut.fanned = m_triangulator.getFannedCount();
    if (meshes.empty()) m_leftOut.refuse();
    m_leftOut.log(m_path);
    if (m_joinsParts)
        ksp::Log::warning(
            QStringLiteral("%1: has more than %2 groups, the further ones are joined to the last")
                .arg(m_path)
                .arg(mostMeshes));
    return meshes;
}

} // namespace readers
