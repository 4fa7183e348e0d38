#pragma once

#include <QtCore/QSize>
#include <QtGui/QImage>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions_4_3_Core>

#include <initializer_list>
#include <memory>
#include <utility>

class RenderTarget;

/// An OpenGL context without a window, shared with nobody, and a target of the kind that our frames are drawn
/// to: where the programs draw that ours is measured against. The depth test is on, less or equal, and
/// blending by the source's alpha, because the colour of an item may be translucent; a program whose colours
/// are not switches that off.
class PlainContext
{
public:
    using Functions = QOpenGLFunctions_4_3_Core;

    explicit PlainContext(const QSize& size);
    ~PlainContext();
    PlainContext(const PlainContext&) = delete;
    PlainContext& operator=(const PlainContext&) = delete;

    void makeCurrent();
    Functions& gl() { return *m_gl; }
    const QSize& size() const { return m_size; }

    /// Binds the target and clears it to black.
    void beginFrame();
    /// Waits for the end of drawing.
    void endFrame() { m_gl->glFinish(); }
    QImage picture();

    /// A linked program of these stages; throws std::runtime_error with the driver's words.
    GLuint program(std::initializer_list<std::pair<GLenum, const char*>> stages);
    /// A buffer with these bytes.
    GLuint buffer(GLenum target, const void* bytes, std::size_t size);
    template <class Values>
    GLuint buffer(GLenum target, const Values& values)
    {
        return buffer(target, values.data(), values.size() * sizeof(values[0]));
    }

private:
    QSize m_size;
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    Functions* m_gl = nullptr;
    std::unique_ptr<RenderTarget> m_target;
};
