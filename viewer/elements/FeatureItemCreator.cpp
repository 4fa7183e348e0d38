#include <viewer/elements/FeatureItemCreator.h>

#include <viewer/elements/MarkDrawer.h>
#include <viewer/elements/PipeItem.h>
#include <viewer/elements/PointFeatureItem.h>
#include <viewer/elements/SweptLineItem.h>

#include <Viewer3dModule/scene/Scene3d.h>

FeatureItemCreator::FeatureItemCreator(Scene3d& scene, std::optional<float> pointSize)
    : m_scene(&scene)
    , m_pointSize(pointSize)
{
}

FeatureItemCreator::~FeatureItemCreator() = default;

// Programs that few models need are built when the first element comes that needs them.
Graphics3dItem* FeatureItemCreator::create(CModelElement* element)
{
    auto* feature = dynamic_cast<FeatureElement*>(element);
    if (!feature || !m_scene) return nullptr;
    if (PointFeatureItem::fits(*feature)) {
        const FeatureStyle plain = PointFeatureItem::plainStyle(m_pointSize);
        MarkDrawer::addTo(*m_scene, plain.pointColor, plain.pointSize);
        return new PointFeatureItem(feature, m_pointSize);
    }
    if (PipeItem::radiusOf(*feature) > 0.0) {
        PipeItem::addDrawerTo(*m_scene);
        return new PipeItem(feature, m_pointSize);
    }
    if (!SweptLineItem::sectionOf(*feature).isEmpty()) return new SweptLineItem(feature, m_pointSize);
    return new FeatureItem(feature, m_pointSize);
}
