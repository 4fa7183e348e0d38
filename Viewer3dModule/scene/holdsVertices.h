#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

class Drawable3dItem;
class PictureVolume;
class Scene3d;

/// Whether the item gives its vertices (Scene3d::generateItemGeometry), and all of them lie in the volume;
/// then all that they span does. The scene's context is current.
bool holdsVertices(OpenGLFunctions& gl, const PictureVolume& volume, Scene3d& scene, Drawable3dItem& item);
