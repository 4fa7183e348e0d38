#include <Viewer3dModule/scene/ItemReach.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/MultiGlyphItem3dDrawer.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <algorithm>
#include <limits>

namespace {

bool drawsOneByOne(const Item3dDrawer* drawer)
{
    if (dynamic_cast<const SequentialItem3dDrawer*>(drawer)) return true;
    const auto* composite = dynamic_cast<const CompositeDrawer*>(drawer);
    if (!composite) return false;
    const auto& stages = composite->getStages();
    return std::all_of(stages.begin(), stages.end(),
                       [](const auto& stage) { return drawsOneByOne(stage.second.get()); });
}

} // namespace

void ItemReach::look(const Item3dDrawer* drawer)
{
    if (drawer == m_drawer) return;
    m_drawer = drawer;
    m_drawsLabels = dynamic_cast<const MultiGlyphItem3dDrawer*>(drawer) != nullptr;
    m_drawsOneByOne = drawsOneByOne(drawer);
}

double ItemReach::of(const Drawable3dItem& item)
{
    look(item.getDrawer());
    const bool isText = m_drawsLabels || item.getDefaultDrawerType() == DrawerType::Caption;
    return isText ? std::numeric_limits<double>::infinity() : static_cast<double>(item.pixelReach());
}

bool ItemReach::isDrawnByItself(const Drawable3dItem& item)
{
    look(item.getDrawer());
    return m_drawsOneByOne;
}
