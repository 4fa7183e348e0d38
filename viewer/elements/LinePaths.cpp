#include <viewer/elements/LinePaths.h>

#include <algorithm>
#include <cmath>

bool LinePaths::areAll(const FeatureElement& element)
{
    const auto& parts = element.getParts();
    return !parts.empty() && std::all_of(parts.begin(), parts.end(), [](const FeatureElement::Part& part) {
        return part.kind == FeatureElement::Part::Line;
    });
}

double LinePaths::scaleOf(const glm::dmat4& modelToScene)
{
    return glm::length(glm::dvec3(modelToScene[0]));
}

gmx::BoundingBox LinePaths::grown(const gmx::BoundingBox& box, double distance)
{
    if (!box.isValid()) return box;
    return {box.getMin() - glm::dvec3(distance), box.getMax() + glm::dvec3(distance)};
}

double LinePaths::longestMitre(const FeatureElement& element)
{
    constexpr double most = 4.0; // which the program cuts longer ones to
    double longest = 1.0;
    for (const FeatureElement::Part& part : element.getParts())
        for (std::size_t i = 1; i + 1 < part.points.size(); ++i) {
            const glm::dvec3 in = part.points[i] - part.points[i - 1];
            const glm::dvec3 out = part.points[i + 1] - part.points[i];
            const double lengths = glm::length(in) * glm::length(out);
            if (!(lengths > 0.0)) return most;
            const double cosine = std::clamp(glm::dot(in, out) / lengths, -1.0, 1.0);
            const double half = std::sqrt((1.0 + cosine) / 2.0); // the cosine of half the angle
            longest = std::max(longest, half * most > 1.0 ? 1.0 / half : most);
        }
    return longest;
}
