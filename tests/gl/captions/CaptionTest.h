#pragma once

#include <tests/support/ImageCheck.h>
#include <tests/support/LogTrap.h>
#include <tests/support/SceneTest.h>

#include <Viewer3dModule/drawables/CaptionsDrawable3dItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>

#include <QtGui/QOpenGLShaderProgram>
#include <QtGui/QPainter>

/// Of captions.
inline const QColor green(30, 200, 90);

/// Captions in a view of 240 x 60 pixels, whose scene coordinates are normalised device coordinates.
class CaptionTest : public SceneTest
{
protected:
    static constexpr int Width = 240;
    static constexpr int Height = 60;

    void TearDown() override
    {
        if (scene) scene->makeCurrent();
        item.reset();
        SceneTest::TearDown();
    }
    /// An item on the scene's own caption drawer.
    CaptionsDrawable3dItem& makeItem(int drawerId = 0)
    {
        item = std::make_unique<CaptionsDrawable3dItem>(drawerId);
        item->setSceneDrawer(scene.get());
        return *item;
    }
    /// A program as that of the caption drawer, but one that nobody has drawn with.
    QOpenGLShaderProgram& captionProgram()
    {
        return *scene->createProgram({"shader:Viewer3dModule/common.vertex.glsl",
                                      "shader:Viewer3dModule/caption.geom.glsl",
                                      "shader:Viewer3dModule/texture.fragment.glsl"},
                                     {}, {});
    }
    /// The colours of a frame of captions over black.
    QImage shown() { return drawFrame(view()).convertToFormat(QImage::Format_RGBX8888); }
    PaintContext view() { return paintContext(Width, Height); }
    /// The point whose picture is the corner of four pixels, x to its left and y above it.
    static glm::vec3 corner(double x, double y, double z = 0.0)
    {
        return {x * 2.0 / Width - 1.0, 1.0 - y * 2.0 / Height, z};
    }
    static QFont font(double pointSize = 9.0, const char* family = "DejaVu Sans")
    {
        QFont result{QString::fromLatin1(family)};
        result.setPointSizeF(pointSize);
        return result;
    }
    /// Level 0 of a texture, top row first where it is a caption's.
    QImage textureImage(unsigned int texture)
    {
        GLint width = 0, height = 0;
        gl->glBindTexture(GL_TEXTURE_2D, texture);
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
        QImage image(width, height, QImage::Format_RGBA8888);
        if (!image.isNull()) gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
        gl->glBindTexture(GL_TEXTURE_2D, 0);
        return image;
    }
    /// A picture of opaque pixels that all differ.
    static QImage pattern(int width, int height, QImage::Format format = QImage::Format_RGBA8888)
    {
        QImage image(width, height, QImage::Format_RGBA8888);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                image.setPixelColor(x, y, QColor(7 * x % 256, 11 * y % 256, (3 * x + 5 * y) % 256));
        return image.convertToFormat(format);
    }
    /// A black picture of the view's size, to be painted on.
    static QImage black()
    {
        QImage image(Width, Height, QImage::Format_RGBX8888);
        image.fill(Qt::black);
        return image;
    }
    static int inked(const QImage& image)
    {
        return countPixels(image, [](QRgb p) { return (p & 0xFFFFFFu) != 0; });
    }

    std::unique_ptr<CaptionsDrawable3dItem> item;
};
