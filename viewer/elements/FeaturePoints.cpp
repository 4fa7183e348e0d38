#include <viewer/elements/FeaturePoints.h>

#include <Viewer3dModule/drawers/PaintContext.h>

#include <numeric>

namespace {

MeshData pointSet(std::vector<glm::vec3> points, const QColor& color, float size)
{
    MeshData data;
    MeshData::Part part;
    part.kind = MeshData::Part::Points;
    part.indexCount = static_cast<std::uint32_t>(points.size());
    part.color = color;
    part.pointSize = size;
    data.indices.resize(points.size());
    std::iota(data.indices.begin(), data.indices.end(), 0u);
    data.positions = std::move(points);
    data.parts.push_back(part);
    return data;
}

} // namespace

FeaturePoints::FeaturePoints(const Drawable3dItem& owner, std::vector<glm::vec3> points, const QColor& color,
                             float size)
    : m_owner(owner)
    , m_node(pointSet(std::move(points), color, size))
{
}

FeaturePoints::~FeaturePoints() = default;

void FeaturePoints::draw(const PaintContext& context)
{
    if (!context.drawer) return;
    m_node.draw(context, 1);
}
