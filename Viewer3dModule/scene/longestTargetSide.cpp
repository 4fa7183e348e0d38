#include <Viewer3dModule/scene/longestTargetSide.h>

#include <algorithm>

int longestTargetSide(OpenGLFunctions& gl)
{
    GLint texture = 0, renderbuffer = 0, viewport[2] = {0, 0};
    gl.glGetIntegerv(GL_MAX_TEXTURE_SIZE, &texture);
    gl.glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &renderbuffer);
    gl.glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({texture, renderbuffer, viewport[0], viewport[1]});
}
