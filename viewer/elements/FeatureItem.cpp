#include <viewer/elements/FeatureItem.h>

#include <viewer/elements/FeatureAreas.h>
#include <viewer/elements/FeatureDrawers.h>
#include <viewer/elements/LabelDrawer.h>
#include <viewer/elements/labelPlace.h>
#include <viewer/elements/labelText.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <numeric>

namespace {

/// Collects the vertices of a feature: the lines one after the other, a ring's first point repeated, and the
/// points.
struct FeatureGeometry
{
    std::vector<glm::vec3> lines;
    std::vector<int> counts;
    std::vector<glm::vec3> points;

    FeatureGeometry(const FeatureElement& element, const glm::dvec3& origin)
    {
        for (const FeatureElement::Part& part : FeatureAreas::raised(element)) {
            std::vector<glm::vec3>& target = part.kind == FeatureElement::Part::Point ? points : lines;
            for (const glm::dvec3& point : part.points)
                target.emplace_back(point - origin);
            if (part.kind == FeatureElement::Part::Point || part.points.empty()) continue;
            const bool isRing = part.kind == FeatureElement::Part::Ring;
            if (isRing) lines.emplace_back(part.points.front() - origin);
            counts.push_back(static_cast<int>(part.points.size()) + (isRing ? 1 : 0));
        }
    }
};

/// Of points and lines.
Drawable3dPrimitive::GeometryInfo geometryInfoOf(const FeatureElement& element)
{
    Drawable3dPrimitive::GeometryInfo info;
    for (const FeatureElement::Part& part : element.getParts()) {
        const auto count = static_cast<std::uint32_t>(part.points.size());
        if (part.kind == FeatureElement::Part::Point)
            info.pointCount += count;
        else if (count > 0)
            info.lineCount += part.kind == FeatureElement::Part::Ring ? count : count - 1;
    }
    return info;
}

MeshData pointSet(std::vector<glm::vec3> points, const FeatureStyle& style)
{
    MeshData data;
    MeshData::Part part;
    part.kind = MeshData::Part::Points;
    part.indexCount = static_cast<std::uint32_t>(points.size());
    part.color = style.pointColor;
    part.pointSize = style.pointSize;
    data.indices.resize(points.size());
    std::iota(data.indices.begin(), data.indices.end(), 0u);
    data.positions = std::move(points);
    data.parts.push_back(part);
    return data;
}

} // namespace

FeatureItem::FeatureItem(FeatureElement* element, std::optional<float> pointSize)
    : Graphics3dItem(element)
    , m_pointSize(pointSize)
    , m_style(FeatureStyle::of(*element, pointSize))
    , m_lines(0, DrawerType::Mono)
    , m_info(geometryInfoOf(*element)) // which the drawer type depends on
{
    setDrawsByPrimitives(true);
}

FeatureItem::~FeatureItem() = default;

void FeatureItem::updateData(ISubject* subject)
{
    m_isChanged = true;
    Graphics3dItem::updateData(subject);
}

void FeatureItem::updateDataImpl()
{
    const auto* element = static_cast<FeatureElement*>(getModelElement());
    if (!element || !scene()) return;
    if (m_isChanged) rebuild(*element);
    m_isChanged = false;
    setTransform(glm::mat4(glm::translate(scene()->modelToSceneTransform(), m_origin)), false);
    if (m_label) m_label->setTransform(Drawable3dItem::getTransform(), false);
    if (m_name) m_name->setPlace(scene()->mapFromModel(labelPlace(element->getParts())));
}

void FeatureItem::updateVisibility()
{
    Graphics3dItem::updateVisibility();
    if (m_label) m_label->setVisible(Drawable3dItem::isVisible());
    if (m_name) m_name->setVisible(Drawable3dItem::isVisible());
}

void FeatureItem::rebuild(const FeatureElement& element)
{
    m_style = FeatureStyle::of(element, m_pointSize);
    m_info = geometryInfoOf(element);
    setPixelReach(std::max(static_cast<float>(m_style.pen.widthF()), m_style.pointSize) / 2.0f + 1.0f);
    const bool hasAreas = FeatureAreas::areDrawn(element, m_style);
    const int leastAlpha = std::min(
        {m_style.pen.color().alpha(), m_style.pointColor.alpha(), hasAreas ? m_style.fill.alpha() : 255});
    setSolid(leastAlpha > 0);
    setOpaque(leastAlpha == 255);
    // A selection may then decide by the box; lines below a pixel's width may leave gaps.
    setDrawsOpaque(leastAlpha >= 128 && m_style.pen.widthF() >= 1.0);
    m_bounds = FeatureAreas::boundsOf(element);
    m_origin = m_bounds.getCenter();
    rebuildAreas(element);
    FeatureGeometry geometry(element, m_origin);
    m_vertexCount = static_cast<int>(geometry.lines.size() + geometry.points.size());

    m_lines.setPen(m_style.pen);
    m_lines.setPoints(std::move(geometry.lines), std::move(geometry.counts));
    m_points.reset();
    renewLabel(element);
}

void FeatureItem::renewLabel(const FeatureElement& element)
{
    m_label.reset();
    LabelDrawer* labels = LabelDrawer::find(*scene());
    const QString text = labels ? labelText(element, element.getSourceId(), labels->property()) : QString();
    const bool isLabelled = !text.isEmpty() && m_bounds.isValid();
    const auto& parts = element.getParts();
    const bool isPoints = std::all_of(parts.begin(), parts.end(), [](const FeatureElement::Part& part) {
        return part.kind == FeatureElement::Part::Point;
    });
    if (!isLabelled || !isPoints) m_name.reset();
    if (isLabelled && isPoints) writeName(*labels, text);
    if (isLabelled && !isPoints) {
        const auto findPlace = [this] {
            const auto* own = static_cast<FeatureElement*>(getModelElement());
            return own ? labelPlace(FeatureAreas::raised(*own)) - m_origin : glm::dvec3(0.0);
        };
        m_label = std::make_unique<ElementLabel>(*this, *labels, text, findPlace, std::nullopt);
        m_label->setVisible(Drawable3dItem::isVisible());
    }
}

// Of points there may be many, so their names are drawn glyph by glyph, and kept where they stay.
void FeatureItem::writeName(LabelDrawer& labels, const QString& text)
{
    const float aboveMarker = markReach() + 2.0f;
    if (m_name) {
        m_name->setText(text, aboveMarker);
        return;
    }
    m_name = std::make_unique<NameItem>(getModelElement(), labels.names(), text, aboveMarker);
    m_name->setVisible(Drawable3dItem::isVisible());
}

void FeatureItem::rebuildAreas(const FeatureElement& element)
{
    m_areas.reset();
    if (!FeatureAreas::areDrawn(element, m_style)) return;
    m_areas = std::make_unique<MeshNode3d>(FeatureAreas::meshOf(element, m_style, m_origin));
    m_info.triangleCount = m_areas->getGeometryInfo().triangleCount;
}

int FeatureItem::getDefaultDrawerType() const
{
    if (m_info.lineCount == 0) return DrawerType::Mono;
    const int type = m_style.lineDrawerType();
    const auto* element = static_cast<const FeatureElement*>(getModelElement());
    if (element && FeatureAreas::areDrawn(*element, m_style)) return feature_drawers::withAreas(type);
    return m_info.pointCount == 0 ? type : feature_drawers::withPoints(type);
}

// Subclasses that draw something else have other drawers.
bool FeatureItem::describeDrawing(ItemDrawing& drawing)
{
    const int type = getDefaultDrawerType();
    const bool hasLineDrawer = type == DrawerType::Mono || type == DrawerType::WideLines;
    return hasLineDrawer && !m_areas && m_info.pointCount == 0 && m_lines.describeDrawing(drawing);
}

std::vector<glm::vec3> FeatureItem::getVertices()
{
    const auto* element = static_cast<FeatureElement*>(getModelElement());
    if (!element) return {};
    FeatureGeometry geometry(*element, m_origin);
    geometry.lines.insert(geometry.lines.end(), geometry.points.begin(), geometry.points.end());
    return std::move(geometry.lines);
}

gmx::BoundingBox FeatureItem::sceneBoundingBox() const
{
    return scene() ? m_bounds.transformed(scene()->modelToSceneTransform()) : gmx::BoundingBox();
}

void FeatureItem::draw(const PaintContext& context)
{
    using namespace feature_drawers;
    const bool isWhole =
        context.stage != AreaStage && context.stage != LineStage && context.stage != PointStage;
    // by the polygon offset of pictures a little behind where they are, so that outlines and points stand out
    if (m_areas && (isWhole || context.stage == AreaStage)) m_areas->draw(context, 1);
    if (isWhole || context.stage == LineStage) m_lines.draw(context);
    if (isWhole || context.stage == PointStage) drawPoints(context);
}

// Most points are marks, of which there may be very many, and never draw themselves.
void FeatureItem::drawPoints(const PaintContext& context)
{
    const auto* element = static_cast<const FeatureElement*>(getModelElement());
    if (m_info.pointCount == 0 || !element) return;
    if (!m_points)
        m_points =
            std::make_unique<MeshNode3d>(pointSet(FeatureGeometry(*element, m_origin).points, m_style));
    m_points->draw(context, 1);
}
