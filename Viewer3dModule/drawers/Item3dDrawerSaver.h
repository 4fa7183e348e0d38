#pragma once

#include <Viewer3dModule/drawers/ContextualItem3dDrawer.h>

/// Saves the drawer's model matrix and puts it back at the end of the scope.
class VIEWER3DMODULE_EXPORT Item3dDrawerSaver
{
public:
    explicit Item3dDrawerSaver(ContextualItem3dDrawer drawer);
    ~Item3dDrawerSaver();
    Item3dDrawerSaver(const Item3dDrawerSaver&) = delete;
    Item3dDrawerSaver& operator=(const Item3dDrawerSaver&) = delete;

private:
    ContextualItem3dDrawer m_drawer;
};
