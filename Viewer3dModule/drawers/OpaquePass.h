#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

/// Nothing is mixed into the first draw buffer for as long as it lives. Blending is on when it is made, see
/// PaintContext::blends.
class OpaquePass
{
public:
    /// @param wanted  whether anything is done at all
    OpaquePass(OpenGLFunctions* gl, bool wanted)
        : m_gl(wanted ? gl : nullptr)
    {
        if (m_gl) m_gl->glDisablei(GL_BLEND, 0);
    }
    ~OpaquePass()
    {
        if (m_gl) m_gl->glEnablei(GL_BLEND, 0);
    }
    OpaquePass(const OpaquePass&) = delete;
    OpaquePass& operator=(const OpaquePass&) = delete;

private:
    OpenGLFunctions* m_gl;
};
