#include <Viewer3dModule/drawers/Item3dDrawerSaver.h>

Item3dDrawerSaver::Item3dDrawerSaver(ContextualItem3dDrawer drawer)
    : m_drawer(drawer)
{
    m_drawer.saveTransformState();
}

Item3dDrawerSaver::~Item3dDrawerSaver()
{
    m_drawer.restoreTransformState();
}
