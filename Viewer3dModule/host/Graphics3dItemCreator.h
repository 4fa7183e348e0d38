#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

class CModelElement;
class Graphics3dItem;

/// Makes the scene items of elements of one type.
class VIEWER3DMODULE_EXPORT Graphics3dItemCreator
{
public:
    virtual ~Graphics3dItemCreator();
    /// A new item, owned by the caller, or null when the element is not to be shown.
    virtual Graphics3dItem* create(CModelElement* element) = 0;
};
