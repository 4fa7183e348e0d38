#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <cstdint>

/// What an item's flags are in a pass, for drawers that keep them in a buffer: hidden where the item is not
/// visible or the filter (empty: none) rejects it, else as it is highlighted or not.
inline std::int32_t itemFlag(Drawable3dItem& item, const Item3dDrawer::Filter& filter)
{
    if (!item.isVisible() || (filter && !filter(&item))) return ItemFlag::Invisible;
    return item.isHighlighted() ? ItemFlag::Highlighted : ItemFlag::Normal;
}
