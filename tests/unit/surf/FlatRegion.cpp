#include "FlatRegion.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

/// An edge from its lower to its upper end.
struct Edge
{
    glm::dvec2 low;
    glm::dvec2 high;

    double at(double y) const { return low.x + (high.x - low.x) * ((y - low.y) / (high.y - low.y)); }
};

double cross(const glm::dvec2& a, const glm::dvec2& b)
{
    return a.x * b.y - a.y * b.x;
}

/// Edges that are not level, by their lower ends.
std::vector<Edge> edgesOf(const std::vector<FlatRegion::Contour>& contours)
{
    std::vector<Edge> edges;
    for (const FlatRegion::Contour& contour : contours)
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const glm::dvec2& a = contour[i];
            const glm::dvec2& b = contour[(i + 1) % contour.size()];
            if (a.y < b.y) edges.push_back({a, b});
            if (b.y < a.y) edges.push_back({b, a});
        }
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.low.y < b.low.y; });
    return edges;
}

using Random = std::mt19937;

double uniform(Random& random, double low, double high)
{
    return low + (high - low) * (double(random()) / double(Random::max()));
}

int whole(Random& random, int low, int high)
{
    return low + int(random() % unsigned(high - low + 1));
}

/// A contour that goes once round the centre, between 0.8 of the radius and the radius.
FlatRegion::Contour ringOf(Random& random, double radius, int points)
{
    FlatRegion::Contour contour;
    for (int i = 0; i < points; ++i) {
        const double angle = 2.0 * M_PI * (i + uniform(random, 0.0, 0.9)) / points;
        const double r = radius * uniform(random, 0.8, 1.0);
        contour.push_back({r * std::cos(angle), r * std::sin(angle)});
    }
    if (random() % 2 == 0) std::reverse(contour.begin(), contour.end());
    return contour;
}

FlatRegion nested(Random& random)
{
    FlatRegion region{"nested", {}};
    double radius = 100.0;
    for (int depth = whole(random, 2, 5); depth > 0; --depth, radius *= 0.55)
        region.contours.push_back(ringOf(random, radius, whole(random, 12, 60)));
    std::shuffle(region.contours.begin(), region.contours.end(), random);
    return region;
}

FlatRegion touching(Random& random)
{
    const int columns = whole(random, 1, 5);
    const int rows = whole(random, 1, 5);
    const double right = 2 * columns;
    const double top = 2 * rows;
    FlatRegion region{"touching", {{{0, 0}, {right, 0}, {right, top}, {0, top}}}};
    for (int i = 0; i < columns; ++i)
        for (int j = 0; j < rows; ++j) {
            const double x = 2 * i + 1;
            const double y = 2 * j + 1;
            if (random() % 4 != 0)
                region.contours.push_back({{x - 1, y}, {x, y - 1}, {x + 1, y}, {x, y + 1}});
        }
    return region;
}

FlatRegion spiked(Random& random)
{
    FlatRegion region{"spiked", {{}}};
    const FlatRegion::Contour ring = ringOf(random, 10.0, whole(random, 8, 30));
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const glm::dvec2 p = ring[i];
        const glm::dvec2 next = ring[(i + 1) % ring.size()];
        FlatRegion::Contour& contour = region.contours[0];
        contour.push_back(p);
        if (random() % 4 == 0) contour.push_back(p);
        if (random() % 4 == 0) contour.insert(contour.end(), {p * uniform(random, 1.1, 2.0), p});
        if (random() % 4 == 0) contour.insert(contour.end(), {p * uniform(random, 0.1, 0.5), p});
        if (random() % 4 == 0) contour.push_back(glm::mix(p, next, 0.25));
        if (random() % 4 == 0) contour.push_back(glm::mix(p, next, 0.5));
    }
    region.contours[0].push_back(ring[0]);
    return region;
}

FlatRegion crossing(Random& random)
{
    FlatRegion region{"crossing", {{}}};
    for (int i = whole(random, 5, 24); i > 0; --i)
        region.contours[0].push_back({uniform(random, 0.0, 50.0), uniform(random, 0.0, 50.0)});
    return region;
}

FlatRegion onGrid(Random& random)
{
    FlatRegion region{"grid", {}};
    for (int contours = whole(random, 1, 3); contours > 0; --contours) {
        FlatRegion::Contour contour;
        for (int i = whole(random, 6, 20); i > 0; --i)
            contour.push_back({whole(random, 0, 7), whole(random, 0, 7)});
        region.contours.push_back(contour);
    }
    return region;
}

} // namespace

std::size_t FlatRegion::pointCount() const
{
    std::size_t count = 0;
    for (const Contour& contour : contours)
        count += contour.size();
    return count;
}

double FlatRegion::extent() const
{
    glm::dvec2 low = contours[0][0];
    glm::dvec2 high = low;
    for (const Contour& contour : contours)
        for (const glm::dvec2& p : contour) {
            low = glm::min(low, p);
            high = glm::max(high, p);
        }
    return std::max(high.x - low.x, high.y - low.y);
}

// In stripes between the heights of all ends and crossings: edges do not cross within a stripe, so that the
// widths half way up tell its area.
double FlatRegion::area() const
{
    const std::vector<Edge> edges = edgesOf(contours);
    std::vector<double> heights;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        const Edge& a = edges[i];
        heights.insert(heights.end(), {a.low.y, a.high.y});
        for (std::size_t j = i + 1; j < edges.size() && edges[j].low.y < a.high.y; ++j) {
            const Edge& b = edges[j];
            const double divisor = cross(a.high - a.low, b.high - b.low);
            if (divisor == 0.0) continue;
            const double alongA = cross(b.low - a.low, b.high - b.low) / divisor;
            const double alongB = cross(b.low - a.low, a.high - a.low) / divisor;
            if (alongA <= 0.0 || alongA >= 1.0 || alongB <= 0.0 || alongB >= 1.0) continue;
            heights.push_back(a.low.y + alongA * (a.high.y - a.low.y));
        }
    }
    std::sort(heights.begin(), heights.end());
    double sum = 0.0;
    std::vector<const Edge*> active;
    std::vector<double> widths;
    std::size_t next = 0;
    for (std::size_t i = 0; i + 1 < heights.size(); ++i) {
        if (heights[i] == heights[i + 1]) continue;
        const double middle = 0.5 * (heights[i] + heights[i + 1]);
        for (; next < edges.size() && edges[next].low.y < middle; ++next)
            active.push_back(&edges[next]);
        active.erase(std::remove_if(active.begin(), active.end(),
                                    [middle](const Edge* edge) { return edge->high.y <= middle; }),
                     active.end());
        widths.clear();
        for (const Edge* edge : active)
            widths.push_back(edge->at(middle));
        std::sort(widths.begin(), widths.end());
        for (std::size_t k = 0; k + 1 < widths.size(); k += 2)
            sum += (widths[k + 1] - widths[k]) * (heights[i + 1] - heights[i]);
    }
    return sum;
}

bool FlatRegion::contains(const glm::dvec2& point) const
{
    bool isInside = false;
    for (const Contour& contour : contours)
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const glm::dvec2& a = contour[i];
            const glm::dvec2& b = contour[(i + 1) % contour.size()];
            if ((a.y > point.y) == (b.y > point.y)) continue;
            if (a.x + (b.x - a.x) * ((point.y - a.y) / (b.y - a.y)) > point.x) isInside = !isInside;
        }
    return isInside;
}

FlatRegion randomRegion(unsigned number)
{
    Random random(number);
    FlatRegion (*const kinds[])(Random&) = {nested, touching, spiked, crossing, onGrid};
    FlatRegion region = kinds[number % 5](random);
    region.name += " " + std::to_string(number);
    return region;
}

std::vector<FlatRegion> regionsOfFolder(const std::string& folder)
{
    std::vector<FlatRegion> regions;
    for (const QFileInfo& info :
         QDir(QString::fromStdString(folder)).entryInfoList({"*.json"}, QDir::Files)) {
        QFile file(info.filePath());
        if (!file.open(QIODevice::ReadOnly)) continue;
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
        if (!document.isArray()) continue; // not contours but what somebody noted of them
        FlatRegion region{info.fileName().toStdString(), {}};
        for (const QJsonValue& contour : document.array()) {
            region.contours.emplace_back();
            for (const QJsonValue& point : contour.toArray())
                region.contours.back().push_back(
                    {point.toArray()[0].toDouble(), point.toArray()[1].toDouble()});
        }
        regions.push_back(region);
    }
    return regions;
}
