#include <Viewer3dModule/drawables/IDrawableNode3d.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>

int IDrawableNode3d::getDrawerType() const
{
    return DrawerType::Mesh;
}

void IDrawableNode3d::promiseFor(Drawable3dItem& item) const
{
    item.setSolid(isSolid());
    item.setOpaque(isOpaque());
    item.setDrawsByPrimitives(drawsByPrimitives());
    item.setShowsItemColors(showsItemColors());
    item.setUntextured(isUntextured());
    item.setUnlit(isUnlit());
    item.setLargeSurface(isLargeSurface());
}
