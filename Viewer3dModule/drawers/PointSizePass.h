#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

/// For as long as it lives points, if any come of triangles (GL_POINT), have OpenGL's own size: programs for
/// large surfaces say none. Programs say it before and afterwards, see Scene3d::initializeGLCommon.
class PointSizePass
{
public:
    /// @param wanted  whether anything is done at all
    PointSizePass(OpenGLFunctions* gl, bool wanted)
        : m_gl(wanted ? gl : nullptr)
    {
        if (m_gl) m_gl->glDisable(GL_PROGRAM_POINT_SIZE);
    }
    ~PointSizePass()
    {
        if (m_gl) m_gl->glEnable(GL_PROGRAM_POINT_SIZE);
    }
    PointSizePass(const PointSizePass&) = delete;
    PointSizePass& operator=(const PointSizePass&) = delete;

private:
    OpenGLFunctions* m_gl;
};
