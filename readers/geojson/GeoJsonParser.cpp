#include <readers/geojson/GeoJsonParser.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/JsonReader.h>
#include <readers/common/reading.h>

#include <algorithm>
#include <iterator>

namespace readers {

namespace {

constexpr std::size_t deepestGeometry = 32; // collections within collections
constexpr std::size_t featureSize = sizeof(FeatureElement) + 8 * sizeof(void*);

std::optional<Coordinates::Type> toType(const std::string& name)
{
    using Type = Coordinates::Type;
    static const std::pair<const char*, Type> types[] = {
        {"Point", Type::Point},           {"MultiPoint", Type::MultiPoint},
        {"LineString", Type::LineString}, {"MultiLineString", Type::MultiLineString},
        {"Polygon", Type::Polygon},       {"MultiPolygon", Type::MultiPolygon},
    };
    for (const auto& [known, type] : types) {
        if (name == known) return type;
    }
    return std::nullopt;
}

} // namespace

GeoJsonParser::GeoJsonParser(ksp::StagedProgress progress)
    : m_progress(std::move(progress))
{
}

GeoJsonParser::~GeoJsonParser() = default;

std::vector<std::unique_ptr<FeatureElement>> GeoJsonParser::parse(const QByteArray& bytes)
{
    m_reader = std::make_unique<JsonReader>(bytes, m_progress);
    m_budget.emplace(static_cast<std::size_t>(bytes.size()));
    m_properties.emplace(bytes, *m_budget);
    m_reader->read(*this);
    if (!m_isObject) throw ksp::CommonError(QStringLiteral("is not GeoJSON"));
    const bool draws = std::any_of(m_features.begin(), m_features.end(),
                                   [](const auto& feature) { return !feature->getParts().empty(); });
    if (!draws) throw ksp::CommonError(QStringLiteral("has nothing to draw"));
    return std::move(m_features);
}

void GeoJsonParser::fail(const QString& reason) const
{
    throw ksp::CommonError(QStringLiteral("feature %1: %2").arg(m_features.size() + 1).arg(reason));
}

// Among features and geometries stands something that is no object.
void GeoJsonParser::failInList() const
{
    fail(m_objects.back().member == Member::Features ? QStringLiteral("it is no feature")
                                                     : QStringLiteral("one of its geometries is no object"));
}

bool GeoJsonParser::isInCoordinates() const
{
    const Object& object = m_objects.back();
    return object.member == Member::Coordinates && object.coordinates && !object.coordinates->isComplete();
}

// Members of no meaning where they stand are others.
GeoJsonParser::Member GeoJsonParser::toMember(const std::string& name, Role role)
{
    if (name == "type") return Member::Type;
    if (role == Role::Root && name == "features") return Member::Features;
    if (role != Role::Geometry) {
        if (name == "geometry") return Member::Geometry;
        if (name == "properties") return Member::Properties;
        if (name == "id") return Member::Id;
    }
    if (role != Role::Feature) {
        if (name == "coordinates") return Member::Coordinates;
        if (name == "geometries") return Member::Geometries;
    }
    return Member::Other;
}

// The member is given again.
void GeoJsonParser::forget(Member member)
{
    Object& object = m_objects.back();
    switch (member) {
    case Member::Type:
        object.type.clear();
        break;
    case Member::Features:
        object.hasFeatures = false;
        m_features.clear();
        break;
    case Member::Geometry:
        object.geometry.clear();
        break;
    case Member::Properties:
        object.properties.clear();
        break;
    case Member::Id:
        object.id.clear();
        break;
    case Member::Coordinates:
        object.coordinates.reset();
        break;
    case Member::Geometries:
        object.hasGeometries = false;
        object.geometries.clear();
        break;
    case Member::Other:
        break;
    }
}

void GeoJsonParser::onKey(std::string& name)
{
    if (m_ignored > 0) return;
    if (m_properties->isReading()) {
        m_properties->addName(name);
        return;
    }
    Object& object = m_objects.back();
    object.member = toMember(name, object.role);
    forget(object.member);
}

void GeoJsonParser::onNull()
{
    addScalar(QVariant::fromValue(nullptr));
}

void GeoJsonParser::onBoolean(bool value)
{
    addScalar(value);
}

void GeoJsonParser::onInteger(std::int64_t value)
{
    if (m_ignored == 0 && !m_objects.empty() && isInCoordinates())
        m_objects.back().coordinates->addNumber(static_cast<double>(value));
    else
        addScalar(static_cast<qlonglong>(value));
}

void GeoJsonParser::onNumber(double value)
{
    if (m_ignored == 0 && !m_objects.empty() && isInCoordinates())
        m_objects.back().coordinates->addNumber(value);
    else
        addScalar(toVariant(value));
}

void GeoJsonParser::onString(std::string& text)
{
    if (m_ignored > 0 || m_objects.empty()) return;
    if (m_properties->isReading())
        m_properties->addText(text);
    else if (m_objects.back().member == Member::Type)
        m_objects.back().type = std::move(text);
    else if (m_objects.back().member == Member::Id)
        addToMember(QString::fromStdString(text));
    else
        addScalar(QString());
}

void GeoJsonParser::addScalar(const QVariant& value)
{
    if (m_ignored > 0 || m_objects.empty()) return;
    if (m_properties->isReading())
        m_properties->addValue(value);
    else if (isInCoordinates())
        m_objects.back().coordinates->addOther();
    else
        addToMember(value);
}

void GeoJsonParser::addToMember(const QVariant& value)
{
    Object& object = m_objects.back();
    if (object.inList) failInList();
    if (object.member == Member::Id) {
        object.id = toText(value);
        m_budget->charge(MemoryBudget::ofText(static_cast<std::size_t>(object.id.size())));
    }
    const bool isNull = value.userType() == QMetaType::Nullptr;
    if (object.member == Member::Geometry && !isNull) fail(QStringLiteral("its geometry is no object"));
}

void GeoJsonParser::onArray()
{
    if (m_ignored > 0 || m_objects.empty()) {
        ++m_ignored;
    } else if (m_properties->isReading()) {
        m_properties->beginNested(m_reader->getOffset());
    } else if (isInCoordinates()) {
        m_objects.back().coordinates->beginList();
    } else {
        Object& object = m_objects.back();
        switch (object.member) {
        case Member::Features:
        case Member::Geometries:
            if (object.inList) failInList();
            object.inList = true;
            (object.member == Member::Features ? object.hasFeatures : object.hasGeometries) = true;
            break;
        case Member::Coordinates:
            object.coordinates.emplace().beginList();
            break;
        case Member::Geometry:
            fail(QStringLiteral("its geometry is no object"));
        default:
            ++m_ignored;
        }
    }
}

void GeoJsonParser::onArrayEnd()
{
    if (m_ignored > 0)
        --m_ignored;
    else if (m_properties->isReading())
        m_properties->endNested(m_reader->getOffset());
    else if (isInCoordinates())
        m_budget->charge(m_objects.back().coordinates->endList());
    else
        m_objects.back().inList = false;
}

void GeoJsonParser::onObject()
{
    if (m_ignored > 0) {
        ++m_ignored;
    } else if (m_objects.empty()) {
        m_isObject = true;
        beginObject(Role::Root);
    } else if (m_properties->isReading()) {
        m_properties->beginNested(m_reader->getOffset());
    } else if (isInCoordinates()) {
        m_objects.back().coordinates->addOther();
        ++m_ignored;
    } else {
        const Object& object = m_objects.back();
        if (object.member == Member::Properties)
            m_properties->begin();
        else if (object.member == Member::Geometry || (object.member == Member::Geometries && object.inList))
            beginObject(Role::Geometry);
        else if (object.member == Member::Features && object.inList)
            beginObject(Role::Feature);
        else
            ++m_ignored;
    }
}

void GeoJsonParser::beginObject(Role role)
{
    const auto geometries = std::count_if(m_objects.begin(), m_objects.end(), [](const Object& object) {
        return object.member == Member::Geometries;
    });
    if (static_cast<std::size_t>(geometries) > deepestGeometry)
        fail(QStringLiteral("its geometry is nested too deeply"));
    m_objects.emplace_back();
    m_objects.back().role = role;
}

void GeoJsonParser::onObjectEnd()
{
    if (m_ignored > 0) {
        --m_ignored;
        return;
    }
    if (m_properties->isReading()) {
        m_properties->endNested(m_reader->getOffset());
        if (!m_properties->isReading()) m_objects.back().properties = m_properties->takeProperties();
        return;
    }
    Object object = std::move(m_objects.back());
    m_objects.pop_back();
    if (object.role == Role::Geometry)
        endGeometry(object);
    else if (object.role == Role::Feature)
        endFeature(object);
    else
        endRoot(object);
}

void GeoJsonParser::endGeometry(Object& geometry)
{
    Object& owner = m_objects.back();
    Parts& parts = owner.member == Member::Geometry ? owner.geometry : owner.geometries;
    Parts more = takeParts(geometry);
    if (parts.empty())
        parts = std::move(more);
    else
        std::move(more.begin(), more.end(), std::back_inserter(parts));
}

void GeoJsonParser::endFeature(Object& feature)
{
    if (feature.type != "Feature") fail(QStringLiteral("it is no feature"));
    addFeature(feature);
}

void GeoJsonParser::endRoot(Object& root)
{
    if (root.type == "FeatureCollection") {
        if (!root.hasFeatures)
            throw ksp::CommonError(QStringLiteral("has a collection without a list of features"));
        return;
    }
    m_features.clear();
    if (root.type != "Feature") { // a bare geometry
        root.geometry = takeParts(root);
        root.properties.clear();
        root.id.clear();
    }
    addFeature(root);
}

void GeoJsonParser::addFeature(Object& feature)
{
    m_budget->charge(featureSize);
    auto element = std::make_unique<FeatureElement>();
    element->setParts(std::move(feature.geometry));
    QString name;
    for (const auto& [key, value] : feature.properties) {
        if (key == QLatin1String("name")) name = toText(value);
    }
    element->setProperties(std::move(feature.properties));
    element->setSourceId(feature.id);
    element->setName(name.isEmpty() ? feature.id : name);
    m_features.push_back(std::move(element));
}

GeoJsonParser::Parts GeoJsonParser::takeParts(Object& geometry)
{
    if (geometry.type == "GeometryCollection") {
        if (!geometry.hasGeometries) fail(QLatin1String(Coordinates::noList));
        return std::move(geometry.geometries);
    }
    const std::optional<Coordinates::Type> type = toType(geometry.type);
    if (!type) fail(QStringLiteral("%1 is not a type of GeoJSON geometry").arg(inQuotes(geometry.type)));
    if (!geometry.coordinates) fail(QLatin1String(Coordinates::noList));
    Parts parts;
    if (const char* mistake = geometry.coordinates->makeParts(*type, parts)) fail(QLatin1String(mistake));
    return parts;
}

} // namespace readers
