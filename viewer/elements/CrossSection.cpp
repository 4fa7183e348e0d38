#include <viewer/elements/CrossSection.h>

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cmath>

namespace {

using Points = std::vector<glm::dvec2>;

constexpr std::size_t most = 32;
constexpr double farthest = 1e6; // model units

Points read(const QVariant& property)
{
    const bool isText = property.userType() == QMetaType::QString;
    const QVariant value =
        isText ? QJsonDocument::fromJson(property.toString().toUtf8()).toVariant() : property;
    Points points;
    for (const QVariant& entry : value.toList()) {
        const QVariantList pair = entry.toList();
        bool isX = false, isY = false;
        const glm::dvec2 point(pair.value(0).toDouble(&isX), pair.value(1).toDouble(&isY));
        if (pair.size() != 2 || !isX || !isY || !(std::abs(point.x) <= farthest) ||
            !(std::abs(point.y) <= farthest))
            return {};
        if (points.empty() || points.back() != point) points.push_back(point);
    }
    return points;
}

/// Twice the area, positive where the outline runs against the clock.
double areaOf(const Points& points)
{
    double area = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const glm::dvec2& next = points[(i + 1) % points.size()];
        area += points[i].x * next.y - next.x * points[i].y;
    }
    return area;
}

/// The two points of each edge with its normal.
CrossSection sharp(const Points& outline, const std::vector<glm::vec2>& edges)
{
    CrossSection section;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        section.points.emplace_back(outline[i]);
        section.points.emplace_back(outline[i + 1]);
        section.normals.insert(section.normals.end(), 2, edges[i]);
    }
    return section;
}

/// Each point with the mean of its edges' normals.
CrossSection smooth(const Points& outline, const std::vector<glm::vec2>& edges)
{
    const bool isClosed = outline.front() == outline.back();
    CrossSection section;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const glm::vec2& before = i > 0 ? edges[i - 1] : isClosed ? edges.back() : edges.front();
        const glm::vec2& after = i < edges.size() ? edges[i] : isClosed ? edges.front() : edges.back();
        const glm::vec2 sum = before + after;
        section.points.emplace_back(outline[i]);
        section.normals.push_back(glm::length(sum) > 1e-3f ? glm::normalize(sum) : after);
    }
    return section;
}

} // namespace

CrossSection CrossSection::of(const QVariant& property)
{
    const Points outline = read(property);
    if (outline.size() < 2 || outline.size() > most) return {};
    const double side = areaOf(outline) < 0.0 ? -1.0 : 1.0;
    std::vector<glm::vec2> edges; // their normals
    for (std::size_t i = 1; i < outline.size(); ++i) {
        const glm::dvec2 along = outline[i] - outline[i - 1];
        edges.emplace_back(side * glm::normalize(glm::dvec2(along.y, -along.x)));
    }
    return 2 * edges.size() <= most ? sharp(outline, edges) : smooth(outline, edges);
}

double CrossSection::reach() const
{
    float reach = 0.0f;
    for (const glm::vec2& point : points)
        reach = std::max(reach, glm::length(point));
    return static_cast<double>(reach);
}
