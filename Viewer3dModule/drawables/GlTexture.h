#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/drawables/ImageWrap.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtGui/QImage>

/// A two-dimensional OpenGL texture that deletes itself; moves, never copies. It has no name until an upload,
/// so it can be a member before there is a context, and it remembers no context: it is destroyed while any
/// context of its share group is current, which need not be the one of the upload (without one the texture is
/// left to its contexts).
class VIEWER3DMODULE_EXPORT GlTexture
{
public:
    GlTexture() = default;
    GlTexture(GlTexture&& other) noexcept;
    GlTexture& operator=(GlTexture&& other) noexcept;
    GlTexture(const GlTexture&) = delete;
    GlTexture& operator=(const GlTexture&) = delete;
    ~GlTexture();

    /// 0 until the first upload or generate.
    unsigned int name() const { return m_name; }
    /// Gives the texture a name, but no contents: for who uploads in a way of his own.
    void generate(OpenGLFunctions& gl);
    /// The most pixels that a side of a texture may have in the driver of the current context.
    static int longestSide(OpenGLFunctions& gl);

    /// The image, scaled down with its proportions kept where the driver of the current context does not take
    /// its size.
    static QImage fitting(OpenGLFunctions& gl, const QImage& image);

    /// Replaces the contents by the image, its lowest row first as OpenGL counts, with all smaller levels; it
    /// repeats beyond its borders. An image larger than the driver takes is scaled down, keeping its
    /// proportions. A null image changes nothing. Leaves no texture bound to the active unit.
    void upload(OpenGLFunctions& gl, const QImage& image);
    /// Sets how what is beyond the borders looks, until the next upload. Nothing without contents.
    void setWrap(OpenGLFunctions& gl, const ImageWrap& wrap);
    /// Replaces the contents by the image, its top row first, as pictures that face the viewer take it, with
    /// all smaller levels; beyond its borders the border goes on. The driver must take its size, see
    /// fitting; a null image leaves no contents. Leaves no texture bound to the active unit.
    void uploadTopDown(OpenGLFunctions& gl, const QImage& image);

private:
    unsigned int m_name = 0;
};
