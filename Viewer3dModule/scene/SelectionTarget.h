#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtCore/QRect>

#include <cstdint>
#include <vector>

/// A frame buffer that keeps nothing, so that making it once is enough. Frame buffers belong to one context,
/// which is current whenever it is used, and when it is destroyed.
class EmptyFrameBuffer
{
public:
    EmptyFrameBuffer() = default;
    ~EmptyFrameBuffer();
    EmptyFrameBuffer(const EmptyFrameBuffer&) = delete;
    EmptyFrameBuffer& operator=(const EmptyFrameBuffer&) = delete;

    /// Binds it, of this size.
    void bind(OpenGLFunctions& gl, const QSize& size);

private:
    GLuint m_name = 0;
    QSize m_size;
};

/// A frame buffer for passes that select, and the OpenGL state that they need, for as long as it lives:
/// framebuffer bindings, viewport, scissor, blending, dithering, depth test and masks are then as they were
/// before. The context must stay current. Pixels are counted from the top left, y down.
class SelectionTarget
{
public:
    /// For passes that set bits: nothing is kept and nothing hidden, so that every fragment runs, whatever
    /// state the operations on fragments are in. Bound; all drawing is limited to the pixels.
    SelectionTarget(OpenGLFunctions& gl, EmptyFrameBuffer& frameBuffer, const QSize& size,
                    const QRect& pixels);
    /// For passes that draw the selection mask: keeps the 64-bit identifiers of what is seen. Likewise, and
    /// cleared within the pixels.
    SelectionTarget(OpenGLFunctions& gl, const QSize& size, const QRect& pixels);
    ~SelectionTarget();
    SelectionTarget(const SelectionTarget&) = delete;
    SelectionTarget& operator=(const SelectionTarget&) = delete;

    /// False when the driver cannot make it; there is nothing to draw to then.
    bool isComplete() const { return m_isComplete; }
    /// Limits all drawing to the pixels from here on.
    void limitTo(const QRect& pixels);
    /// The identifiers of the rectangle's pixels, row by row, the top one first; 0 where nothing was drawn.
    std::vector<std::uint64_t> ids(const QRect& pixels);

private:
    struct State
    {
        GLint drawTarget = 0;
        GLint readTarget = 0;
        GLint viewport[4] = {0, 0, 0, 0};
        GLint scissor[4] = {0, 0, 0, 0};
        GLboolean scissorTest = GL_FALSE;
        GLboolean blend = GL_FALSE;
        GLboolean dither = GL_TRUE;
        GLboolean depthTest = GL_FALSE;
        GLboolean depthMask = GL_TRUE;
        GLboolean colorMask[4] = {GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE};
        GLint depthFunction = GL_LEQUAL;
    };
    void savePlace();
    void restorePlace();
    void saveOperations();
    void restoreOperations();
    void begin(const QRect& pixels);
    void makeIds(const QSize& size);

    OpenGLFunctions& m_gl;
    State m_before;
    QSize m_size;
    bool m_isComplete = false;
    GLuint m_frameBuffer = 0;        // of one's own
    GLuint m_storage[3] = {0, 0, 0}; // low words, high words, depth
};
