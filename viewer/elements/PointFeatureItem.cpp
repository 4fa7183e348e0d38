#include <viewer/elements/PointFeatureItem.h>

#include <viewer/elements/MarkDrawer.h>

#include <Viewer3dModule/drawables/Node3dItem.h>
#include <Viewer3dModule/drawers/PaintContext.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double nodeRadius = 9.0; // pixels
// Of drawers: balls are drawn after all elements, which show through them.
constexpr int afterElements = 0x36FFDF00;

double accuracyOf(const FeatureElement& element)
{
    bool isNumber = false;
    const double accuracy = element.getProperty(QStringLiteral("accuracy")).toDouble(&isNumber);
    return isNumber && std::isfinite(accuracy) && accuracy > 0.0 ? accuracy : 1.0;
}

} // namespace

/// A ball that depth maps do not see: nothing stands there.
class PointFeatureItem::Ball : public Node3dItem
{
public:
    explicit Ball(Scene3d* scene)
        : Node3dItem(scene, afterElements)
    {
    }

protected:
    using Node3dItem::draw;
    void draw(const PaintContext& context) override
    {
        if (!context.depthOnly) Node3dItem::draw(context);
    }
};

PointFeatureItem::PointFeatureItem(FeatureElement* element, std::optional<float> pointSize)
    : FeatureItem(element, pointSize)
    , m_pointSize(pointSize)
    , m_isPlain(isPlain(*element))
{
}

PointFeatureItem::~PointFeatureItem() = default;

bool PointFeatureItem::fits(const FeatureElement& element)
{
    const auto& parts = element.getParts();
    return parts.size() == 1 && parts.front().kind == FeatureElement::Part::Point &&
           parts.front().points.size() == 1;
}

FeatureStyle PointFeatureItem::plainStyle(std::optional<float> pointSize)
{
    return FeatureStyle::of(FeatureElement(), pointSize);
}

bool PointFeatureItem::isPlain(const FeatureElement& element) const
{
    const FeatureStyle plain = plainStyle(m_pointSize);
    const FeatureStyle own = FeatureStyle::of(element, m_pointSize);
    return fits(element) && own.pointColor == plain.pointColor && own.pointSize == plain.pointSize;
}

PointFeatureItem::Kind PointFeatureItem::kindOf(const FeatureElement& element)
{
    if (!fits(element)) return Kind::Plain;
    if (element.getProperty(QStringLiteral("check")).toBool()) return Kind::Checked;
    return element.getProperty(QStringLiteral("control")).toBool() ? Kind::Control : Kind::Plain;
}

// A ball in model units may have any size on the screen, its point is marked as others are.
float PointFeatureItem::markReach() const
{
    const auto* element = static_cast<const FeatureElement*>(getModelElement());
    const bool hasBall = element && kindOf(*element) == Kind::Control;
    return std::max(FeatureItem::markReach(), hasBall ? static_cast<float>(nodeRadius) : 0.0f);
}

void PointFeatureItem::updateDataImpl()
{
    FeatureItem::updateDataImpl();
    const auto* element = static_cast<FeatureElement*>(getModelElement());
    if (!element || !scene()) return;
    m_isPlain = isPlain(*element);
    renewNode(*element);
}

void PointFeatureItem::renewNode(const FeatureElement& element)
{
    m_node.reset();
    const Kind kind = kindOf(element);
    if (kind == Kind::Plain) return;
    m_node = std::make_unique<Ball>(scene());
    m_node->setModelPos(element.getParts().front().points.front());
    if (kind == Kind::Checked)
        m_node->setModelRadius(accuracyOf(element));
    else
        m_node->setPixelRadius(nodeRadius);
    m_node->setVisible(Drawable3dItem::isVisible());
}

void PointFeatureItem::updateVisibility()
{
    FeatureItem::updateVisibility();
    if (m_node) m_node->setVisible(Drawable3dItem::isVisible());
}

int PointFeatureItem::getDefaultDrawerType() const
{
    return m_isPlain ? MarkDrawer::Type : FeatureItem::getDefaultDrawerType();
}
