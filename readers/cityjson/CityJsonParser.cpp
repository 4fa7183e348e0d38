#include <readers/cityjson/CityJsonParser.h>

#include <framework/ksp/CommonError.h>
#include <framework/ksp/Log.h>
#include <readers/cityjson/CityJsonAppearance.h>
#include <readers/cityjson/JsonPlaces.h>
#include <readers/cityjson/readNumbers.h>
#include <readers/cityjson/takeText.h>
#include <readers/common/reading.h>

#include <QtCore/QSet>

#include <algorithm>
#include <cmath>

namespace readers {

namespace {

constexpr std::size_t elementSize = sizeof(CityObjectElement) + 8 * sizeof(void*);
constexpr double largestCoordinate = 1e15;

glm::dmat4 fromRows(const std::vector<double>& rows)
{
    glm::dmat4 matrix(1.0);
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            matrix[column][row] = rows[static_cast<std::size_t>(4 * row + column)];
    return matrix;
}

bool isUsable(const glm::dvec3& point)
{
    const auto fits = [](double value) { return std::abs(value) <= largestCoordinate; }; // NaN fails
    return fits(point.x) && fits(point.y) && fits(point.z);
}

QString quoted(const QString& text)
{
    return inQuotes(text.toUtf8().constData());
}

} // namespace

CityJsonParser::CityJsonParser(const QString& path, std::optional<double> lod, ksp::StagedProgress progress)
    : m_path(path)
    , m_lod(lod)
    , m_progress(std::move(progress))
    , m_instanceBudget(MemoryBudget::of(256 * 1024 * 1024))
{
}

CityJsonParser::~CityJsonParser() = default;

CityJsonParser::Elements CityJsonParser::parse(const QByteArray& bytes)
{
    m_budget.emplace(static_cast<std::size_t>(bytes.size()));
    int number = 0;
    for (int begin = 0; begin < bytes.size() || number == 0; ++number) {
        m_progress.throwIfCanceled();
        const QByteArray text = takeText(bytes, begin);
        try {
            parseText(text, m_progress.startStage(100.0 * text.size() / bytes.size()));
        } catch (const ksp::CommonError& error) {
            if (number == 0 && begin == bytes.size()) throw; // it is the only one
            throw ksp::CommonError(QStringLiteral("text %1: %2").arg(number + 1).arg(error.text()));
        }
    }
    if (!m_isAnyWanted && m_coarsestLeft)
        ksp::Log::warning(
            QStringLiteral("%1: nothing is as coarse as level of detail %2, the coarsest geometry has %3")
                .arg(m_path)
                .arg(*m_lod)
                .arg(*m_coarsestLeft));
    return std::move(m_elements);
}

void CityJsonParser::parseText(const QByteArray& text, ksp::StagedProgress progress)
{
    const JsonPlaces places(text, progress.startStage(30.0));
    requireRules(places);
    if (places.stringOf("type") == "CityJSON") readHeader(places);
    readTables(places, progress.startStage(20.0));
    readObjects(places, progress.startStage(50.0));
}

void CityJsonParser::requireRules(const JsonPlaces& places) const
{
    if (!places.has("type")) throw ksp::CommonError(QStringLiteral("lacks \"type\": \"CityJSON\""));
    const std::string type = places.stringOf("type");
    const bool isFeature = type == "CityJSONFeature";
    if (!isFeature && type != "CityJSON")
        throw ksp::CommonError(QStringLiteral("its type is %1, not \"CityJSON\"").arg(inQuotes(type)));
    if (!isFeature && m_hasHeader)
        throw ksp::CommonError(QStringLiteral("a second \"CityJSON\" where a \"CityJSONFeature\" is wanted"));
    if (!isFeature) {
        const std::string version = places.stringOf("version");
        const std::string known = version.substr(0, 3);
        if (!places.has("version")) throw ksp::CommonError(QStringLiteral("lacks \"version\""));
        if (known != "1.0" && known != "1.1" && known != "2.0")
            throw ksp::CommonError(
                QStringLiteral("its version %1 is not among 1.0, 1.1 and 2.0").arg(inQuotes(version)));
    }
    if (isFeature && !places.has("id")) throw ksp::CommonError(QStringLiteral("lacks \"id\""));
    if (!places.textOf("CityObjects").startsWith('{'))
        throw ksp::CommonError(QStringLiteral("lacks an object \"CityObjects\""));
    if (!places.textOf("vertices").startsWith('['))
        throw ksp::CommonError(QStringLiteral("lacks a list \"vertices\""));
}

void CityJsonParser::readHeader(const JsonPlaces& places)
{
    m_hasHeader = true;
    readTransform(places);
}

// Of version 1.0, and of many files that say they are newer, coordinates may stand as they are.
void CityJsonParser::readTransform(const JsonPlaces& places)
{
    if (!places.has("transform")) return;
    readNumberRow(places.textOf("transform/scale"), QStringLiteral("\"scale\""), 3, &m_scale[0]);
    readNumberRow(places.textOf("transform/translate"), QStringLiteral("\"translate\""), 3,
                  &m_translation[0]);
}

// A feature has vertices of its own, and what it has of the rest takes the place of the header's.
void CityJsonParser::readTables(const JsonPlaces& places, ksp::StagedProgress progress)
{
    const QByteArray appearance = places.textOf("appearance");
    if (!appearance.isEmpty()) {
        m_tables = CityJsonTables();
        readAppearance(appearance, m_tables, *m_budget);
        findPictures(m_path, m_tables.textures);
        const QByteArray texCoords = places.textOf("appearance/vertices-texture");
        const auto add = [this](const double* row) {
            m_budget->charge(2 * sizeof(glm::vec2));
            const glm::vec2 texCoord(glm::dvec2(row[0], row[1]));
            const bool isFinite = std::isfinite(texCoord.x) && std::isfinite(texCoord.y);
            m_tables.texCoords.push_back(isFinite ? texCoord : glm::vec2(0.0f));
        };
        if (!texCoords.isEmpty())
            readNumberRows(texCoords, QStringLiteral("texture vertex"), 2, add, progress.startStage(30.0));
    }
    if (places.has("geometry-templates")) readTemplates(places);
    readVertices(places.textOf("vertices"), progress.startStage(100.0));
}

void CityJsonParser::readVertices(const QByteArray& text, ksp::StagedProgress progress)
{
    m_tables.vertices.clear();
    const auto add = [this](const double* row) {
        m_budget->charge(2 * sizeof(glm::dvec3));
        const glm::dvec3 vertex = m_scale * glm::dvec3(row[0], row[1], row[2]) + m_translation;
        if (!isUsable(vertex))
            throw ksp::CommonError(
                QStringLiteral("vertex %1 lies beyond 1e15").arg(m_tables.vertices.size()));
        m_tables.vertices.push_back(vertex);
    };
    readNumberRows(text, QStringLiteral("vertex"), 3, add, std::move(progress));
}

void CityJsonParser::readTemplates(const JsonPlaces& places)
{
    m_templates.clear();
    m_tables.vertices.clear();
    const QByteArray vertices = places.textOf("geometry-templates/vertices-templates");
    const QByteArray templates = places.textOf("geometry-templates/templates");
    const auto add = [this](const double* row) {
        m_budget->charge(2 * sizeof(glm::dvec3));
        m_tables.vertices.emplace_back(row[0], row[1], row[2]);
    };
    if (!vertices.isEmpty())
        readNumberRows(vertices, QStringLiteral("vertex of templates"), 3, add, ksp::StagedProgress::dummy());
    if (!templates.startsWith('[')) throw ksp::CommonError(QStringLiteral("lacks a list of \"templates\""));
    CityGeometryBuilder builder(m_tables, *m_budget);
    const auto addTemplate = [&](const CityJsonGeometry& geometry) {
        builder.add(geometry);
        m_budget->charge(sizeof(Template));
        m_templates.push_back({builder.take(), geometry.lod});
    };
    try {
        CityObjectsReader(templates, *m_budget, addTemplate, {}).read(ksp::StagedProgress::dummy());
    } catch (const ksp::CommonError& error) {
        throw ksp::CommonError(QStringLiteral("templates: ") + error.text());
    }
}

void CityJsonParser::readObjects(const JsonPlaces& places, ksp::StagedProgress progress)
{
    const std::size_t first = m_elements.size();
    CityGeometryBuilder builder(m_tables, *m_budget);
    m_hasGeometry = false;
    std::optional<CityGeometryBuilder> others; // holds those to the rules that are not wanted
    const auto addGeometry = [&](const CityJsonGeometry& geometry) {
        if (geometry.type == "GeometryInstance") {
            addInstance(geometry, builder);
        } else if (wants(geometry.lod, builder)) {
            builder.add(geometry);
        } else {
            if (!others) others.emplace(m_tables, *m_budget);
            others->add(geometry);
            others->take();
        }
    };
    const auto addObject = [&](CityJsonObject& object) {
        addElement(object, builder.take());
        m_hasGeometry = false;
    };
    CityObjectsReader(places.textOf("CityObjects"), *m_budget, addGeometry, addObject)
        .read(std::move(progress));
    requireRelatives(first);
    if (places.stringOf("type") != "CityJSONFeature") return;
    const QString id = QString::fromStdString(places.stringOf("id"));
    const auto hasId = [&](const auto& element) { return element->getSourceId() == id; };
    if (std::none_of(m_elements.begin() + static_cast<std::ptrdiff_t>(first), m_elements.end(), hasId))
        throw ksp::CommonError(
            QStringLiteral("the feature's id %1 is not among its city objects").arg(quoted(id)));
}

void CityJsonParser::addInstance(const CityJsonGeometry& geometry, CityGeometryBuilder& builder)
{
    constexpr std::size_t matrixSize = 16;
    const auto index = static_cast<std::size_t>(geometry.templateIndex);
    if (geometry.templateIndex < 0) throw ksp::CommonError(QStringLiteral("its template is no index"));
    if (index >= m_templates.size())
        throw ksp::CommonError(QStringLiteral("template index %1 is out of range, there are %2")
                                   .arg(index)
                                   .arg(m_templates.size()));
    if (geometry.matrix.size() != matrixSize)
        throw ksp::CommonError(QStringLiteral("its transformation matrix has not 16 numbers"));
    IndexTree::Entries corners(geometry.boundaries.root());
    const bool isList = geometry.boundaries.root().isList();
    const IndexTree::Node corner = isList && !corners.isAtEnd() ? corners.take() : IndexTree::Node();
    if (!isList || !corner.isIndex() || !corners.isAtEnd())
        throw ksp::CommonError(QStringLiteral("the boundaries of an instance are not one vertex"));
    if (corner.index() >= m_tables.vertices.size())
        throw ksp::CommonError(QStringLiteral("vertex index %1 is out of range, there are %2")
                                   .arg(corner.index())
                                   .arg(m_tables.vertices.size()));
    const Template& repeated = m_templates[index];
    if (!wants(repeated.lod, builder)) return;
    glm::dmat4 matrix(1.0);
    matrix[3] = glm::dvec4(m_tables.vertices[corner.index()], 1.0);
    matrix = matrix * fromRows(geometry.matrix);
    const auto fits = [&](const glm::dvec3& vertex) {
        return isUsable(glm::dvec3(matrix * glm::dvec4(vertex, 1.0)));
    };
    const std::vector<glm::dvec3>& vertices = repeated.geometry.vertices;
    if (!std::all_of(vertices.begin(), vertices.end(), fits))
        throw ksp::CommonError(QStringLiteral("a vertex of the instance lies beyond 1e15"));
    builder.addInstance(repeated.geometry, matrix, m_instanceBudget);
}

// Whether a geometry of this level of detail is added to those that the object has. A finer one replaces
// them.
bool CityJsonParser::wants(double lod, CityGeometryBuilder& builder)
{
    constexpr double nextLevel = 1.0;
    const bool isWhole = m_lod && std::floor(*m_lod) == *m_lod;
    if (m_lod && (isWhole ? lod >= *m_lod + nextLevel : lod > *m_lod)) {
        m_coarsestLeft = std::min(lod, m_coarsestLeft.value_or(lod));
        return false;
    }
    m_isAnyWanted = true;
    if (m_hasGeometry && lod < m_finest) return false;
    if (m_hasGeometry && lod > m_finest) builder.take();
    m_finest = lod;
    m_hasGeometry = true;
    return true;
}

void CityJsonParser::addElement(CityJsonObject& object, CityGeometry geometry)
{
    m_budget->charge(elementSize);
    for (const QStringList* relatives : {&object.parents, &object.children}) {
        for (const QString& relative : *relatives) {
            m_budget->charge(2 * sizeof(m_relatives.front()));
            m_relatives.emplace_back(m_elements.size(), relative);
        }
    }
    auto element = std::make_unique<CityObjectElement>();
    element->setSource(object.type, object.id, object.parents);
    QString name;
    for (const auto& [key, value] : object.properties) {
        if (key == QLatin1String("name")) name = toText(value);
    }
    element->setProperties(std::move(object.properties));
    element->setName(name.isEmpty() ? object.id : name);
    element->setGeometry(std::move(geometry));
    m_elements.push_back(std::move(element));
}

// Objects of one text only: in a sequence each feature is complete.
void CityJsonParser::requireRelatives(std::size_t first)
{
    QSet<QString> ids;
    for (std::size_t i = first; i < m_elements.size(); ++i) {
        const QString& id = m_elements[i]->getSourceId();
        if (ids.contains(id))
            throw ksp::CommonError(QStringLiteral("two city objects have the id %1").arg(quoted(id)));
        ids.insert(id);
    }
    for (const auto& [number, id] : m_relatives)
        if (!ids.contains(id))
            throw ksp::CommonError(QStringLiteral("city object %1: its parent or child %2 is not in the file")
                                       .arg(quoted(m_elements[number]->getSourceId()), quoted(id)));
    m_relatives.clear();
}

} // namespace readers
