#include <viewer/elements/FeatureItem.h>

#include <viewer/ElementSummary.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <glm/gtc/matrix_transform.hpp>

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
        for (const FeatureElement::Part& part : element.getParts()) {
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

} // namespace

FeatureItem::FeatureItem(FeatureElement* element)
    : Graphics3dItem(element)
    , m_style(FeatureStyle::of(*element))
    , m_lines(0, DrawerType::Mono)
{
    m_lines.setOwner(this);
    for (const FeatureElement::Part& part : element->getParts())
        m_hasLines = m_hasLines || part.kind != FeatureElement::Part::Point;
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
    if (m_points) m_points->setTransform(Drawable3dItem::getTransform(), false);
}

void FeatureItem::rebuild(const FeatureElement& element)
{
    m_style = FeatureStyle::of(element);
    m_bounds = element.getBounds();
    m_origin = m_bounds.getCenter();
    FeatureGeometry geometry(element, m_origin);

    m_hasLines = !geometry.counts.empty();
    const ElementSummary counts = ElementSummary::of(element);
    m_info = {};
    m_info.pointCount = static_cast<std::uint32_t>(counts.points);
    m_info.lineCount = static_cast<std::uint32_t>(counts.lines);

    m_lines.setPen(m_style.pen);
    m_lines.setPoints(std::move(geometry.lines), std::move(geometry.counts));
    m_points.reset();
    if (!geometry.points.empty())
        m_points = std::make_unique<FeaturePoints>(*this, std::move(geometry.points), m_style.pointColor,
                                                   m_style.pointSize);
}

void FeatureItem::updateVisibility()
{
    Graphics3dItem::updateVisibility();
    if (m_points) m_points->setVisible(Drawable3dItem::isVisible());
}

int FeatureItem::getDefaultDrawerType() const
{
    if (m_hasLines || !m_points) return m_style.lineDrawerType();
    return m_points->getDefaultDrawerType();
}

Drawable3dPrimitive::GeometryInfo FeatureItem::getGeometryInfo()
{
    GeometryInfo info = m_info;
    if (!drawsPointsItself()) info.pointCount = 0;
    return info;
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

std::vector<Drawable3dItem*> FeatureItem::getDrawableChildren()
{
    if (m_points && !drawsPointsItself()) return {m_points.get()};
    return {};
}

void FeatureItem::draw(const PaintContext& context)
{
    if (m_hasLines)
        m_lines.draw(context);
    else if (m_points)
        m_points->draw(context);
}
