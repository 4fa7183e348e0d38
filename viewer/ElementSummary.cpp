#include <viewer/ElementSummary.h>

#include <viewer/elements/CityMesh.h>
#include <viewer/elements/FeatureAreas.h>
#include <viewer/elements/FeatureStyle.h>
#include <viewer/elements/MeshElement.h>

#include <framework/model/CityObjectElement.h>
#include <framework/model/FeatureElement.h>
#include <framework/model/OrthophotoElement.h>
#include <framework/model/StationElement.h>

namespace {

ElementSummary summarize(const IDrawableNode3d& node)
{
    const Drawable3dPrimitive::GeometryInfo info = node.getGeometryInfo();
    return {info.pointCount, info.lineCount, info.triangleCount, node.getBounds()};
}

ElementSummary summarize(const FeatureElement& feature)
{
    ElementSummary summary;
    summary.bounds = FeatureAreas::boundsOf(feature);
    const FeatureStyle style = FeatureStyle::of(feature);
    if (FeatureAreas::areDrawn(feature, style)) {
        const MeshData mesh = FeatureAreas::meshOf(feature, style, summary.bounds.getCenter());
        summary.triangles = mesh.indices.size() / 3;
    }
    for (const FeatureElement::Part& part : feature.getParts()) {
        const std::uint64_t count = part.points.size();
        if (part.kind == FeatureElement::Part::Point)
            summary.points += count;
        else if (count > 0)
            summary.lines += part.kind == FeatureElement::Part::Ring ? count : count - 1;
    }
    return summary;
}

ElementSummary summarize(const CityObjectElement& object)
{
    const MeshData mesh = CityMesh::of(object, CityMesh::Pictures::Without);
    ElementSummary summary;
    summary.bounds = object.getGeometry().getBounds();
    for (const MeshData::Part& part : mesh.parts) {
        if (part.kind == MeshData::Part::Points)
            summary.points += part.indexCount;
        else if (part.kind == MeshData::Part::Lines)
            summary.lines += part.indexCount / 2;
        else
            summary.triangles += part.indexCount / 3;
    }
    return summary;
}

} // namespace

ElementSummary ElementSummary::of(const CModelElement& element)
{
    const auto* mesh = dynamic_cast<const MeshElement*>(&element);
    if (mesh && mesh->getNode()) return summarize(*mesh->getNode());
    if (const auto* feature = dynamic_cast<const FeatureElement*>(&element)) return summarize(*feature);
    if (const auto* object = dynamic_cast<const CityObjectElement*>(&element)) return summarize(*object);
    if (const auto* photo = dynamic_cast<const OrthophotoElement*>(&element))
        return {0, 0, 2, photo->getBounds()};
    if (const auto* station = dynamic_cast<const StationElement*>(&element))
        return {0, 0, 0, gmx::BoundingBox(station->getCenter(), station->getCenter())};
    return {};
}

void ElementSummary::add(const ElementSummary& other)
{
    points += other.points;
    lines += other.lines;
    triangles += other.triangles;
    bounds.unite(other.bounds);
}
