#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtCore/QSize>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include <vector>

/// A frame buffer of 8-bit RGBA colour attachments and a 32-bit float depth attachment. Its context must be
/// current in every operation.
class RenderTarget
{
public:
    RenderTarget(OpenGLFunctions& gl, const QSize& size, int colorCount = 1);
    ~RenderTarget();
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    /// Binds it with all colour attachments as draw buffers and sets the viewport.
    void bind();
    /// Clears attachment 0 to the colour, the others to zero and the depth to 1. Bind first.
    void clear(const QColor& color);
    /// A colour attachment, top row first, format RGBA8888.
    QImage image(int attachment = 0);
    /// The depth buffer, row by row, top row first.
    std::vector<float> depth();

private:
    OpenGLFunctions& m_gl;
    QSize m_size;
    unsigned int m_framebuffer = 0;
    std::vector<unsigned int> m_textures; // colours, then depth
};
