#include <readers/geojson/GeoJsonParser.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/reading.h>

#include <QtCore/QJsonDocument>

#include <cmath>

namespace readers {

namespace {

constexpr int deepestGeometry = 32; // collections within collections
constexpr int deepestProperty = 16; // lists and objects within each other
constexpr double largestCoordinate = 1e15;

QString quotedText(const QString& text)
{
    return inQuotes(text.toUtf8().constData());
}

int getDepth(const QJsonValue& value, int limit)
{
    int depth = 0;
    if (limit == 0) return 0;
    if (value.isArray()) {
        const QJsonArray items = value.toArray();
        for (const QJsonValue& item : items)
            depth = std::max(depth, getDepth(item, limit - 1));
        return depth + 1;
    }
    if (value.isObject()) {
        const QJsonObject items = value.toObject();
        for (const QJsonValue& item : items)
            depth = std::max(depth, getDepth(item, limit - 1));
        return depth + 1;
    }
    return 0;
}

// What is nested deeper than a project stores it is kept as text.
QVariant toProperty(const QJsonValue& value)
{
    if (getDepth(value, deepestProperty + 1) <= deepestProperty) return value.toVariant();
    const QJsonDocument document =
        value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact));
}

QString toText(const QJsonValue& value)
{
    return value.isString() || value.isDouble() ? value.toVariant().toString() : QString();
}

} // namespace

GeoJsonParser::GeoJsonParser(ksp::StagedProgress progress)
    : m_progress(std::move(progress))
{
}

std::vector<std::unique_ptr<FeatureElement>> GeoJsonParser::parse(const QByteArray& bytes)
{
    m_progress.throwIfCanceled();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        throw ksp::CommonError(
            QStringLiteral("is not valid JSON at byte %1: %2").arg(error.offset).arg(error.errorString()));
    if (!document.isObject()) throw ksp::CommonError(QStringLiteral("is not GeoJSON"));
    const QJsonObject root = document.object();
    const QString type = root.value(QLatin1String("type")).toString();
    if (type == QLatin1String("FeatureCollection")) {
        const QJsonValue list = root.value(QLatin1String("features"));
        if (!list.isArray())
            throw ksp::CommonError(QStringLiteral("has a collection without a list of features"));
        const QJsonArray features = list.toArray();
        for (const QJsonValue& feature : features) {
            m_progress.throwIfCanceled();
            m_progress.setDone(static_cast<double>(m_features.size()), features.size());
            if (feature.toObject().value(QLatin1String("type")) != QLatin1String("Feature"))
                fail(QStringLiteral("it is no feature"));
            addFeature(feature.toObject());
        }
    } else if (type == QLatin1String("Feature")) {
        addFeature(root);
    } else {
        addFeature({{QLatin1String("geometry"), root}});
    }
    m_progress.setPercentage(100.0);
    if (!m_hasParts) throw ksp::CommonError(QStringLiteral("has nothing to draw"));
    return std::move(m_features);
}

void GeoJsonParser::fail(const QString& reason) const
{
    throw ksp::CommonError(QStringLiteral("feature %1: %2").arg(m_features.size() + 1).arg(reason));
}

void GeoJsonParser::addFeature(const QJsonObject& feature)
{
    auto element = std::make_unique<FeatureElement>();
    const QJsonValue geometry = feature.value(QLatin1String("geometry"));
    Parts parts;
    if (geometry.isObject())
        addGeometry(geometry.toObject(), parts, 0);
    else if (!geometry.isNull() && !geometry.isUndefined())
        fail(QStringLiteral("its geometry is no object"));
    m_hasParts = m_hasParts || !parts.empty();
    element->setParts(std::move(parts));

    const QJsonObject properties = feature.value(QLatin1String("properties")).toObject();
    std::vector<std::pair<QString, QVariant>> list;
    for (auto property = properties.begin(); property != properties.end(); ++property)
        list.emplace_back(property.key(), toProperty(property.value()));
    element->setProperties(std::move(list));
    element->setSourceId(toText(feature.value(QLatin1String("id"))));
    const QString name = toText(properties.value(QLatin1String("name")));
    element->setName(name.isEmpty() ? element->getSourceId() : name);
    m_features.push_back(std::move(element));
}

void GeoJsonParser::addGeometry(const QJsonObject& geometry, Parts& parts, int depth) const
{
    if (depth > deepestGeometry) fail(QStringLiteral("its geometry is nested too deeply"));
    const QString type = geometry.value(QLatin1String("type")).toString();
    const QJsonValue coordinates = geometry.value(QLatin1String("coordinates"));
    if (type == QLatin1String("GeometryCollection")) {
        const QJsonArray members = toArray(geometry.value(QLatin1String("geometries")));
        for (const QJsonValue& member : members)
            addGeometry(member.toObject(), parts, depth + 1);
    } else if (type == QLatin1String("Point")) {
        if (!toArray(coordinates).isEmpty()) addPoints(QJsonArray{coordinates}, parts);
    } else if (type == QLatin1String("MultiPoint")) {
        addPoints(coordinates, parts);
    } else if (type == QLatin1String("LineString")) {
        addLine(coordinates, parts);
    } else if (type == QLatin1String("MultiLineString")) {
        const QJsonArray lines = toArray(coordinates);
        for (const QJsonValue& line : lines)
            addLine(line, parts);
    } else if (type == QLatin1String("Polygon")) {
        addPolygon(coordinates, parts);
    } else if (type == QLatin1String("MultiPolygon")) {
        const QJsonArray polygons = toArray(coordinates);
        for (const QJsonValue& polygon : polygons)
            addPolygon(polygon, parts);
    } else {
        fail(QStringLiteral("%1 is not a type of GeoJSON geometry").arg(quotedText(type)));
    }
}

// An empty list of coordinates is a geometry without anything in it, and no mistake.
void GeoJsonParser::addPoints(const QJsonValue& positions, Parts& parts) const
{
    FeatureElement::Part part;
    part.kind = FeatureElement::Part::Point;
    part.points = readPositions(positions);
    if (!part.points.empty()) parts.push_back(std::move(part));
}

void GeoJsonParser::addLine(const QJsonValue& positions, Parts& parts) const
{
    FeatureElement::Part part;
    part.kind = FeatureElement::Part::Line;
    part.points = readPositions(positions);
    if (part.points.empty()) return;
    if (part.points.size() < 2) fail(QStringLiteral("a line of one position"));
    parts.push_back(std::move(part));
}

void GeoJsonParser::addPolygon(const QJsonValue& rings, Parts& parts) const
{
    bool hole = false;
    const QJsonArray list = toArray(rings);
    for (const QJsonValue& ring : list) {
        FeatureElement::Part part;
        part.kind = FeatureElement::Part::Ring;
        part.hole = hole;
        part.points = readPositions(ring);
        if (part.points.size() > 1 && part.points.front() == part.points.back()) part.points.pop_back();
        if (part.points.size() < 3) fail(QStringLiteral("a ring of fewer than three different positions"));
        parts.push_back(std::move(part));
        hole = true;
    }
}

std::vector<glm::dvec3> GeoJsonParser::readPositions(const QJsonValue& positions) const
{
    std::vector<glm::dvec3> points;
    const QJsonArray list = toArray(positions);
    points.reserve(static_cast<std::size_t>(list.size()));
    for (const QJsonValue& position : list)
        points.push_back(readPosition(position));
    return points;
}

glm::dvec3 GeoJsonParser::readPosition(const QJsonValue& position) const
{
    const QJsonArray numbers = toArray(position);
    if (numbers.size() < 2) fail(QStringLiteral("a position of fewer than two numbers"));
    glm::dvec3 point(0.0);
    for (int i = 0; i < std::min(numbers.size(), 3); ++i) {
        if (!numbers[i].isDouble()) fail(QStringLiteral("a coordinate is no number"));
        point[i] = numbers[i].toDouble();
        if (!(std::abs(point[i]) <= largestCoordinate))
            fail(QStringLiteral("a coordinate is not finite or beyond 1e15"));
    }
    return point;
}

QJsonArray GeoJsonParser::toArray(const QJsonValue& value) const
{
    if (!value.isArray()) fail(QStringLiteral("its geometry lacks a list of coordinates or geometries"));
    return value.toArray();
}

} // namespace readers
