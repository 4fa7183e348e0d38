#include <viewer/elements/FeatureDrawers.h>

#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/scene/Scene3d.h>

namespace {

void add(Scene3d& scene, int type, int lineDrawerType)
{
    scene.addDefaultDrawer(type, feature_drawers::make(scene, scene.getDefaultDrawer(lineDrawerType)->clone(),
                                                       scene.getDefaultDrawer(DrawerType::Mono)->clone()));
}

} // namespace

void feature_drawers::addTo(Scene3d& scene)
{
    add(scene, WideLinesAndPoints, DrawerType::WideLines);
    add(scene, DashedLinesAndPoints, DrawerType::DashedLines);
    for (const int lineType : {DrawerType::Mono, DrawerType::WideLines, DrawerType::DashedLines})
        scene.addDefaultDrawer(withAreas(lineType), make(scene, scene.getDefaultDrawer(lineType)->clone(),
                                                         scene.getDefaultDrawer(DrawerType::Mono)->clone(),
                                                         scene.getDefaultDrawer(DrawerType::Mesh)->clone()));
}

std::unique_ptr<Item3dDrawer> feature_drawers::make(Scene3d& scene, std::unique_ptr<Item3dDrawer> lines,
                                                    std::unique_ptr<Item3dDrawer> points,
                                                    std::unique_ptr<Item3dDrawer> areas)
{
    auto drawer = std::make_unique<CompositeDrawer>(&scene);
    if (areas) drawer->addStage(AreaStage, std::move(areas)); // what lies on them is drawn over them
    drawer->addStage(LineStage, std::move(lines));
    drawer->addStage(PointStage, std::move(points));
    return drawer;
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

int feature_drawers::withAreas(int lineDrawerType)
{
    switch (lineDrawerType) {
    case DrawerType::WideLines:
        return AreasAndWideLines;
    case DrawerType::DashedLines:
        return AreasAndDashedLines;
    default:
        return AreasAndPlainLines;
    }
}
