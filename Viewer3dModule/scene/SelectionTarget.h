#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtCore/QRect>

#include <cstdint>
#include <vector>

/// A frame buffer for passes that select, and the OpenGL state that they need, for as long as it lives:
/// framebuffer bindings, viewport, scissor, blending, dithering, depth test and masks are then as they were
/// before. The context must stay current. Pixels are counted from the top left, y down.
class SelectionTarget
{
public:
    enum Kind {
        Bits, ///< nothing is kept and nothing hidden: every fragment runs
        Ids   ///< keeps the 64-bit identifier of what is seen, in passes that draw the selection mask
    };
    /// Bound, cleared within the pixels, to which all drawing is limited.
    SelectionTarget(OpenGLFunctions& gl, Kind kind, const QSize& size, const QRect& pixels);
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
    void save();
    void restore();
    void makeIds(const QSize& size);

    OpenGLFunctions& m_gl;
    State m_before;
    QSize m_size;
    bool m_isComplete = false;
    GLuint m_frameBuffer = 0;
    GLuint m_storage[3] = {0, 0, 0}; // low words, high words, depth
};
