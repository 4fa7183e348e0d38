#include <viewer/cli/FenceFile.h>

#include <viewer/cli/JsonFields.h>
#include <viewer/cli/readJsonFile.h>
#include <viewer/printable.h>

#include <framework/gmx/math_utils.h>
#include <framework/ksp/CommonError.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>

namespace {

constexpr qint64 mostBytes = 1 << 20;
constexpr double smallestSine = 1e-7;              // of the angle between directions that must differ
constexpr double narrowest = 0.01, widest = 179.0; // degrees of view

using Points = std::vector<glm::dvec3>;

void requireMembers(const JsonFields& fields, const QStringList& required, const QStringList& optional)
{
    fields.requireKnown(QStringList(QStringLiteral("type")) + required + optional);
    for (const QString& name : required)
        if (!fields.has(name)) fields.refuse(QStringLiteral("no %1").arg(fields.shown(name)));
}

double readPositive(const JsonFields& fields, const QString& name)
{
    const double number = fields.number(name);
    if (!(number > 0.0 && number <= 1e12))
        fields.refuse(
            QStringLiteral("%1: a number above 0, at most 1e12, is wanted").arg(fields.shown(name)));
    return number;
}

glm::dvec3 readDirection(const JsonFields& fields, const QString& name)
{
    const glm::dvec3 direction = fields.point(name);
    if (glm::length(direction) == 0.0)
        fields.refuse(QStringLiteral("%1 has no direction; 0,0,1 is upright").arg(fields.shown(name)));
    return glm::normalize(direction);
}

/// Whether the points, without the closing one, lie on a line when they are seen along the direction.
bool isFlat(const Points& points, const glm::dvec3& direction)
{
    const auto seen = [&](const glm::dvec3& point) {
        const glm::dvec3 from = point - points.front();
        return from - glm::dot(from, direction) * direction;
    };
    const auto nearer = [&](const glm::dvec3& a, const glm::dvec3& b) {
        return glm::length(seen(a)) < glm::length(seen(b));
    };
    const glm::dvec3 line = seen(*std::max_element(points.begin(), points.end(), nearer));
    const double length = glm::length(line);
    return std::all_of(points.begin(), points.end(), [&](const glm::dvec3& point) {
        return glm::length(glm::cross(line, seen(point))) <= smallestSine * length * length;
    });
}

/// A closed polygon of three points or more that is no line, seen along the direction.
Points readPolygon(const JsonFields& fields, const QString& name, int dimensions, const glm::dvec3& direction)
{
    Points points = fields.points(name, dimensions);
    if (points.size() > 1 && points.front() == points.back()) points.pop_back();
    if (points.size() < 3)
        fields.refuse(
            QStringLiteral("%1: a polygon of three or more points is wanted").arg(fields.shown(name)));
    if (isFlat(points, direction))
        fields.refuse(QStringLiteral("%1: the points lie on one line").arg(fields.shown(name)));
    points.push_back(points.front());
    return points;
}

FenceShape readSphere(const JsonFields& fields)
{
    requireMembers(fields, {"center", "radius"}, {});
    SphereFence sphere;
    sphere.setFence(fields.point("center"), readPositive(fields, "radius"));
    return sphere;
}

FenceShape readPrism(const JsonFields& fields)
{
    requireMembers(fields, {"points", "direction"}, {"height"});
    const glm::dvec3 direction = readDirection(fields, "direction");
    const double height = fields.has("height") ? readPositive(fields, "height") : 0.0;
    PrismFence fence;
    fence.prism().setFence(glm::dvec3(0.0), direction, 0.0, 0.0, height,
                           readPolygon(fields, "points", 3, direction));
    return fence;
}

double readFov(const JsonFields& fields)
{
    const double degrees = fields.number("fov");
    if (!(degrees >= narrowest && degrees <= widest))
        fields.refuse(QStringLiteral("%1: degrees are wanted, from %2 to %3")
                          .arg(fields.shown("fov"))
                          .arg(narrowest)
                          .arg(widest));
    return math_utils::toRadian(degrees);
}

/// World to fence frame: the eye space, turned to look along +z.
glm::dmat4 readFrame(const JsonFields& fields)
{
    const glm::dvec3 eye = fields.point("eye"), target = fields.point("target");
    const glm::dvec3 up = fields.has("up") ? readDirection(fields, "up") : glm::dvec3(0.0, 0.0, 1.0);
    if (eye == target)
        fields.refuse(QStringLiteral("%1 and %2 are the same point; they must differ")
                          .arg(fields.shown("eye"), fields.shown("target")));
    if (glm::length(glm::cross(glm::normalize(target - eye), up)) < smallestSine)
        fields.refuse(QStringLiteral("%1 lies along the line from %2 to %3; it must point elsewhere")
                          .arg(fields.shown("up"), fields.shown("eye"), fields.shown("target")));
    return glm::scale(glm::dmat4(1.0), glm::dvec3(1.0, 1.0, -1.0)) * glm::lookAt(eye, target, up);
}

FenceShape readFrustum(const JsonFields& fields)
{
    requireMembers(fields, {"eye", "target", "fov", "polygon", "near"}, {"up", "far"});
    const glm::dmat4 frame = readFrame(fields), toWorld = glm::inverse(frame);
    const glm::dvec3 eye = fields.point("eye"), target = fields.point("target");
    const double tangent = std::tan(readFov(fields) / 2.0);
    const double zNear = fields.number("near");
    if (zNear < 0.0) fields.refuse(QStringLiteral("%1: 0 or more is wanted").arg(fields.shown("near")));
    const double zFar = fields.has("far") ? readPositive(fields, "far") : 0.0;
    if (fields.has("far") && zFar <= zNear)
        fields.refuse(QStringLiteral("%1 must be more than %2; without it the fence has no end")
                          .arg(fields.shown("far"), fields.shown("near")));
    Points points = readPolygon(fields, "polygon", 2, glm::dvec3(0.0, 0.0, 1.0));
    const double depth = glm::distance(eye, target); // any one: lines of sight are what matters
    for (glm::dvec3& point : points)
        point = glm::dvec3(toWorld *
                           glm::dvec4(point.x * tangent * depth, point.y * tangent * depth, depth, 1.0));
    Frustum3D frustum;
    frustum.setFence(eye, glm::normalize(target - eye), tangent, zNear, zFar, points, frame);
    if (frustum.empty())
        fields.refuse(QStringLiteral("%1: its numbers are too large").arg(fields.shown("polygon")));
    return frustum;
}

} // namespace

FenceShape FenceFile::read(const QString& path)
{
    const QJsonDocument document = readJsonFile(path, QStringLiteral("a fence"), mostBytes);
    const JsonFields fields(document.object(), shownName(path));
    if (!document.isObject()) fields.refuse(QStringLiteral("a fence is wanted, {\"type\": ...}"));
    if (!fields.has("type"))
        fields.refuse(QStringLiteral("no %1; it is sphere, prism or frustum").arg(fields.shown("type")));
    switch (fields.word("type", {"sphere", "prism", "frustum"})) {
    case 0:
        return readSphere(fields);
    case 1:
        return readPrism(fields);
    default:
        return readFrustum(fields);
    }
}
