#include <viewer/elements/BatchedDrawers.h>

#include <viewer/elements/ElementTypes.h>

#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <utility>

void batched_drawers::addTo(Scene3d& scene)
{
    for (const auto& [elementType, drawerType] : {std::pair(element_types::Mesh, DrawerType::Mesh),
                                                  std::pair(element_types::CityObject, DrawerType::Mesh),
                                                  std::pair(element_types::Feature, DrawerType::Mono),
                                                  std::pair(element_types::Feature, DrawerType::WideLines)}) {
        const auto* sequential =
            dynamic_cast<const SequentialItem3dDrawer*>(scene.getDefaultDrawer(drawerType));
        if (sequential)
            scene.addDrawer(elementType, drawerType,
                            std::make_unique<BatchedItem3dDrawer>(&scene, sequential->getProgramToShare()));
    }
}
