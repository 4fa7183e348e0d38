#include <viewer/ElementSummary.h>

#include <viewer/elements/MeshElement.h>

#include <framework/model/FeatureElement.h>

namespace {

ElementSummary summarize(const IDrawableNode3d& node)
{
    const Drawable3dPrimitive::GeometryInfo info = node.getGeometryInfo();
    return {info.pointCount, info.lineCount, info.triangleCount, node.getBounds()};
}

ElementSummary summarize(const FeatureElement& feature)
{
    ElementSummary summary;
    summary.bounds = feature.getBounds();
    for (const FeatureElement::Part& part : feature.getParts()) {
        const std::uint64_t count = part.points.size();
        if (part.kind == FeatureElement::Part::Point)
            summary.points += count;
        else if (count > 0)
            summary.lines += part.kind == FeatureElement::Part::Ring ? count : count - 1;
    }
    return summary;
}

} // namespace

ElementSummary ElementSummary::of(const CModelElement& element)
{
    const auto* mesh = dynamic_cast<const MeshElement*>(&element);
    if (mesh && mesh->getNode()) return summarize(*mesh->getNode());
    if (const auto* feature = dynamic_cast<const FeatureElement*>(&element)) return summarize(*feature);
    return {};
}

void ElementSummary::add(const ElementSummary& other)
{
    points += other.points;
    lines += other.lines;
    triangles += other.triangles;
    bounds.unite(other.bounds);
}
