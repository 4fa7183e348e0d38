#include <viewer/elements/PointFeatureItem.h>

#include <viewer/elements/MarkDrawer.h>

#include <Viewer3dModule/drawables/Node3dItem.h>
#include <Viewer3dModule/drawers/PaintContext.h>

#include <cmath>

namespace {

constexpr double nodeRadius = 9.0; // pixels

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
        : Node3dItem(scene, 0)
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
    const bool isChecked = element.getProperty(QStringLiteral("check")).toBool();
    const bool isControl = isChecked || element.getProperty(QStringLiteral("control")).toBool();
    if (!isControl || !fits(element)) return;
    m_node = std::make_unique<Ball>(scene());
    m_node->setModelPos(element.getParts().front().points.front());
    if (isChecked)
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
