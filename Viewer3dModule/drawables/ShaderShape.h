#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

class GlBuffer;
class Item3dDrawer;
class QStringList;
class Scene3d;
struct PaintContext;

/// What shapes share that the graphics processor makes of one point.
namespace shader_shape {

/// The scene's drawer under the key; made at the first request, with a program of these sources.
Item3dDrawer* getDrawer(Scene3d* scene, int visibilityType, int drawerType, const QStringList& files);

/// Feeds attribute 0 with the point at the origin for as long as it lives. Makes the buffer when it is empty.
/// No vertex array and no buffer is bound afterwards.
class PointBinding
{
public:
    PointBinding(OpenGLFunctions& gl, const PaintContext& context, GlBuffer& buffer);
    ~PointBinding();
    PointBinding(const PointBinding&) = delete;
    PointBinding& operator=(const PointBinding&) = delete;

private:
    OpenGLFunctions& m_gl;
};

} // namespace shader_shape
