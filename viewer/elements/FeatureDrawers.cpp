#include <viewer/elements/FeatureDrawers.h>

#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/scene/Scene3d.h>

namespace {

void add(Scene3d& scene, int type, int lineDrawerType)
{
    auto drawer = std::make_unique<CompositeDrawer>(&scene);
    drawer->addStage(feature_drawers::LineStage, lineDrawerType);
    drawer->addStage(feature_drawers::PointStage, DrawerType::Mono);
    scene.addDefaultDrawer(type, std::move(drawer));
}

} // namespace

void feature_drawers::addTo(Scene3d& scene)
{
    add(scene, WideLinesAndPoints, DrawerType::WideLines);
    add(scene, DashedLinesAndPoints, DrawerType::DashedLines);
}

int feature_drawers::withPoints(int lineDrawerType)
{
    switch (lineDrawerType) {
    case DrawerType::WideLines:
        return WideLinesAndPoints;
    case DrawerType::DashedLines:
        return DashedLinesAndPoints;
    default:
        return lineDrawerType; // which draws points as well
    }
}
