#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

/// A sampler for textures that are shown one texel a pixel, without a wish for what lies between: each
/// pixel has the texel that its centre lies in, of the picture itself and none of its smaller ones. For a
/// driver that samples by program this is several times cheaper than what textures ask for by themselves.
///
/// Made when it is first bound, for the share group of the context that is current then. Destroyed while a
/// context of the group is current; without one the sampler is left to it.
class GlSampler
{
public:
    GlSampler() = default;
    GlSampler(const GlSampler&) = delete;
    GlSampler& operator=(const GlSampler&) = delete;
    ~GlSampler();

    /// Has the textures of this unit sampled so until another sampler, or none (0), is bound there.
    void bind(OpenGLFunctions& gl, unsigned int unit);

private:
    unsigned int m_name = 0;
};
