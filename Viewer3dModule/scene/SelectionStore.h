#pragma once

#include <Viewer3dModule/scene/ItemTable.h>
#include <Viewer3dModule/scene/SelectionTarget.h>

/// What selections of one scene keep for the next ones. Destroyed while the scene's context is current.
struct SelectionStore
{
    EmptyFrameBuffer frameBuffer;
    ItemTable items; ///< of the drawers that are handed what to draw
};
