#include <readers/cityjson/CityObjectsReader.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/JsonReader.h>
#include <readers/common/reading.h>

#include <limits>

namespace readers {

namespace {

QString toQString(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

double toLod(const QString& text)
{
    bool isNumber = false;
    const double lod = text.toDouble(&isNumber);
    return isNumber && lod >= 0.0 && lod <= 100.0 ? lod : -1.0;
}

} // namespace

CityObjectsReader::CityObjectsReader(const QByteArray& text, MemoryBudget& budget, GeometrySink geometrySink,
                                     ObjectSink objectSink)
    : m_text(text)
    , m_budget(budget)
    , m_geometrySink(std::move(geometrySink))
    , m_objectSink(std::move(objectSink))
    , m_properties(text, budget)
{
}

CityObjectsReader::~CityObjectsReader() = default;

void CityObjectsReader::read(ksp::StagedProgress progress)
{
    m_reader = std::make_unique<JsonReader>(m_text, std::move(progress));
    m_reader->read(*this);
    m_reader.reset();
}

void CityObjectsReader::fail(const QString& reason) const
{
    if (m_places.empty() || m_places.front() != Place::Objects) throw ksp::CommonError(reason);
    throw ksp::CommonError(
        QStringLiteral("city object %1: %2").arg(inQuotes(m_object.id.toUtf8().constData()), reason));
}

void CityObjectsReader::onKey(std::string& name)
{
    if (m_ignored > 0) return;
    if (m_properties.isReading()) {
        m_properties.addName(name);
        return;
    }
    if (isAt(Place::Objects)) {
        m_budget.charge(MemoryBudget::ofText(name.size()));
        m_object = CityJsonObject();
        m_object.id = toQString(name);
        m_geometryCount = 0;
    }
    m_key = std::move(name);
}

void CityObjectsReader::onNull()
{
    if (isOpen() && isAt(Place::Indices) && !m_properties.isReading())
        m_indices->addNull();
    else
        addScalar(QVariant::fromValue(nullptr));
}

void CityObjectsReader::onBoolean(bool value)
{
    addScalar(value);
}

void CityObjectsReader::onInteger(std::int64_t value)
{
    if (!isOpen() || m_properties.isReading() || isAt(Place::Matrix)) {
        if (isOpen() && isAt(Place::Matrix))
            onNumber(static_cast<double>(value));
        else
            addScalar(static_cast<qlonglong>(value));
        return;
    }
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max() - 1;
    const int index = value < 0 || value > largest ? -1 : static_cast<int>(value);
    if (isAt(Place::Indices)) {
        if (index < 0) fail(QStringLiteral("%1 is no index").arg(value));
        m_indices->addIndex(index);
    } else if (isAt(Place::Geometry) && m_key == "template") {
        m_geometry.templateIndex = index;
    } else if (isAt(Place::Geometry) && m_key == "lod") {
        m_geometry.lod = static_cast<double>(index);
    } else if (isAt(Place::Theme) && m_key == "value") {
        if (index < 0) fail(QStringLiteral("%1 is no index of a material").arg(value));
        m_theme->value = index;
    } else {
        addScalar(static_cast<qlonglong>(value));
    }
}

void CityObjectsReader::onNumber(double value)
{
    if (isOpen() && isAt(Place::Matrix)) {
        constexpr std::size_t longestMatrix = 17; // one more than it may have
        if (m_geometry.matrix.size() < longestMatrix) m_geometry.matrix.push_back(value);
    } else if (isOpen() && !m_properties.isReading() && isAt(Place::Geometry) && m_key == "lod") {
        m_geometry.lod = toLod(QString::number(value));
    } else {
        addScalar(toVariant(value));
    }
}

void CityObjectsReader::onString(std::string& text)
{
    if (!isOpen()) return;
    if (m_properties.isReading()) {
        m_properties.addText(text);
    } else if (isAt(Place::Object) && m_key == "type") {
        m_object.type = toQString(text);
        m_budget.charge(MemoryBudget::ofText(text.size()));
    } else if (isAt(Place::Relatives)) {
        m_budget.charge(MemoryBudget::ofText(text.size()));
        m_relatives->append(toQString(text));
    } else if (isAt(Place::Geometry) && m_key == "type") {
        m_geometry.type = std::move(text);
    } else if (isAt(Place::Geometry) && m_key == "lod") {
        m_geometry.lod = toLod(toQString(text));
    } else if (isAt(Place::Kind) && m_key == "type") {
        m_geometry.kinds.back() = toQString(text);
    } else {
        addOther();
    }
}

void CityObjectsReader::addScalar(const QVariant& value)
{
    if (!isOpen()) return;
    if (m_properties.isReading())
        m_properties.addValue(value);
    else
        addOther();
}

// Something that is neither a list nor an object, nor what is looked for there.
void CityObjectsReader::addOther()
{
    if (isAt(Place::Objects)) fail(QStringLiteral("it is no object"));
    if (isAt(Place::Geometries)) fail(QStringLiteral("one of its geometries is no object"));
    if (isAt(Place::Kinds)) fail(QStringLiteral("one of its semantic surfaces is no object"));
    if (isAt(Place::Indices)) fail(QStringLiteral("among its indices is something else"));
    if (isAt(Place::Matrix))
        fail(QStringLiteral("its transformation matrix has something else than numbers"));
    if (isAt(Place::Relatives)) fail(QStringLiteral("one of its parents or children is no text"));
}

void CityObjectsReader::enter(Place place)
{
    m_places.push_back(place);
}

void CityObjectsReader::enterIndices(IndexTree& tree)
{
    tree.clear();
    m_indices = &tree;
    tree.beginList();
    enter(Place::Indices);
}

void CityObjectsReader::onObject()
{
    if (m_ignored > 0) {
        ++m_ignored;
    } else if (m_properties.isReading()) {
        m_properties.beginNested(m_reader->getOffset());
    } else if (m_places.empty()) {
        enter(Place::Objects);
    } else if (isAt(Place::Objects)) {
        enter(Place::Object);
    } else if (isAt(Place::Object) && m_key == "attributes") {
        m_properties.begin();
    } else if (isAt(Place::Geometries)) {
        m_geometry = CityJsonGeometry();
        ++m_geometryCount;
        enter(Place::Geometry);
    } else if (isAt(Place::Geometry)) {
        enterGeometryMember(false);
    } else if (isAt(Place::Kinds)) {
        m_budget.charge(2 * sizeof(QString));
        m_geometry.kinds.emplace_back();
        enter(Place::Kind);
    } else if (isAt(Place::Themes)) {
        constexpr std::size_t mostThemes = 1000;
        if (m_themes->size() == mostThemes) fail(QStringLiteral("has more than %1 themes").arg(mostThemes));
        m_theme = &(*m_themes)[m_key];
        enter(Place::Theme);
    } else {
        addOther();
        ++m_ignored;
    }
}

void CityObjectsReader::onArray()
{
    if (m_ignored > 0) {
        ++m_ignored;
    } else if (m_properties.isReading()) {
        m_properties.beginNested(m_reader->getOffset());
    } else if (m_places.empty()) {
        enter(Place::Geometries);
    } else if (isAt(Place::Indices)) {
        m_indices->beginList();
        enter(Place::Indices);
    } else if (isAt(Place::Object) && (m_key == "parents" || m_key == "children")) {
        m_relatives = m_key == "parents" ? &m_object.parents : &m_object.children;
        m_relatives->clear();
        enter(Place::Relatives);
    } else if (isAt(Place::Object) && m_key == "geometry") {
        enter(Place::Geometries);
    } else if (isAt(Place::Geometry)) {
        enterGeometryMember(true);
    } else if (isAt(Place::Semantics) && m_key == "surfaces") {
        m_geometry.kinds.clear();
        enter(Place::Kinds);
    } else if (isAt(Place::Semantics) && m_key == "values") {
        enterIndices(m_geometry.semantics);
    } else if (isAt(Place::Theme) && m_key == "values") {
        enterIndices(m_theme->values);
    } else {
        addOther();
        ++m_ignored;
    }
}

void CityObjectsReader::enterGeometryMember(bool isList)
{
    if (isList && m_key == "boundaries") {
        enterIndices(m_geometry.boundaries);
    } else if (isList && m_key == "transformationMatrix") {
        m_geometry.matrix.clear();
        enter(Place::Matrix);
    } else if (!isList && m_key == "semantics") {
        enter(Place::Semantics);
    } else if (!isList && (m_key == "material" || m_key == "texture")) {
        m_themes = m_key == "material" ? &m_geometry.materials : &m_geometry.textures;
        m_themes->clear();
        enter(Place::Themes);
    } else {
        ++m_ignored;
    }
}

void CityObjectsReader::end()
{
    if (m_ignored > 0) {
        --m_ignored;
        return;
    }
    if (m_properties.isReading()) {
        m_properties.endNested(m_reader->getOffset());
        if (!m_properties.isReading()) m_object.properties = m_properties.takeProperties();
        return;
    }
    const Place place = m_places.back();
    if (place == Place::Indices) m_indices->endList();
    if (place == Place::Geometry) endGeometry();
    if (place == Place::Object) endObject();
    m_places.pop_back();
}

void CityObjectsReader::endGeometry()
{
    try {
        m_geometrySink(m_geometry);
    } catch (const ksp::CommonError& error) {
        fail(QStringLiteral("geometry %1: %2").arg(m_geometryCount - 1).arg(error.text()));
    }
    m_geometry = CityJsonGeometry();
}

void CityObjectsReader::endObject()
{
    if (m_object.type.isEmpty()) fail(QStringLiteral("lacks \"type\""));
    m_objectSink(m_object);
    m_object = CityJsonObject();
}

} // namespace readers
