#include <Viewer3dModule/drawables/GlSampler.h>

GlSampler::~GlSampler()
{
    if (m_name == 0) return;
    if (OpenGLFunctions* gl = currentGLFunctions()) gl->glDeleteSamplers(1, &m_name);
}

void GlSampler::bind(OpenGLFunctions& gl, unsigned int unit)
{
    if (m_name == 0) {
        gl.glGenSamplers(1, &m_name);
        gl.glSamplerParameteri(m_name, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl.glSamplerParameteri(m_name, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        gl.glSamplerParameteri(m_name, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        gl.glSamplerParameteri(m_name, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
    gl.glBindSampler(unit, m_name);
}
