#include <Viewer3dModule/drawables/IDrawableNode3d.h>

#include <Viewer3dModule/drawers/DrawerType.h>

int IDrawableNode3d::getDrawerType() const
{
    return DrawerType::Mesh;
}
