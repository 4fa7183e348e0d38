#include "ShapeTest.h"

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/IconTexture.h>
#include <Viewer3dModule/drawables/TextureFactory.h>
#include <Viewer3dModule/drawables/vertex_attributes.h>

#include <QtCore/QTemporaryDir>
#include <QtGui/QIcon>
#include <QtGui/QImageReader>
#include <QtGui/QPainter>

// Pictures that face the viewer at a point, and the textures that drawers share.
namespace {

/// An item that draws a picture at a point, by the scene's drawer of captions.
class IconItem : public Drawable3dItem
{
public:
    IconItem(Scene3d* scene, IconTexture& picture, const glm::vec3& where)
        : place(where)
        , m_icon(picture)
    {
        setDrawer(scene->getLocalDrawer(DrawerType::Caption));
    }
    using Drawable3dItem::draw;

    glm::vec3 place;
    int primitives = PrimitiveBit::All;

protected:
    void draw(const PaintContext& context) override
    {
        PaintContext pass = context;
        pass.primitives = primitives; // not those of the drawer, whose program takes points only
        OpenGLFunctions& gl = *currentGLFunctions();
        m_point.upload(gl, std::vector<glm::vec3>{place}, GL_STATIC_DRAW);
        gl.glBindVertexArray(context.vertexArray);
        vertex_attributes::setFloats(gl, 0, m_point, {3, 0, 0, 0});
        m_icon.draw(pass, 1);
    }

private:
    IconTexture& m_icon;
    GlBuffer m_point;
};

class IconTextureTest : public SceneTest
{
protected:
    static constexpr int Size = 32;

    /// The point at these pixels from the top left, which need not be whole.
    static glm::vec3 at(double x, double y) { return {x * 2.0 / Size - 1.0, 1.0 - y * 2.0 / Size, 0.0}; }
    /// A picture of opaque pixels that all differ.
    static QImage pattern(int width, int height, QImage::Format format = QImage::Format_RGBA8888)
    {
        QImage image(width, height, QImage::Format_RGBA8888);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                image.setPixelColor(x, y, QColor(50 + 7 * x, 40 + 11 * y, (3 * x + 5 * y) % 256));
        return image.convertToFormat(format);
    }
    QImage shown(IconTexture& icon, const glm::vec3& place)
    {
        IconItem item(scene.get(), icon, place);
        return drawFrame(paintContext(Size, Size)).convertToFormat(QImage::Format_RGB32);
    }
    /// The view with the picture in it, its top left corner at this pixel.
    static QImage expected(const QImage& picture, const QPoint& corner)
    {
        QImage image(Size, Size, QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter(&image).drawImage(corner, picture);
        return image;
    }
    QImage contentsOf(unsigned int texture)
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
    QString fileOf(const char* name, const QByteArray& bytes = {})
    {
        const QString path = m_folder.filePath(QString::fromLatin1(name));
        if (!bytes.isEmpty()) {
            QFile file(path);
            EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        }
        return path;
    }
    static void expectNone(const IconTexture& icon)
    {
        EXPECT_EQ(icon.getTextureId(), 0u);
        EXPECT_FALSE(icon.size().isValid());
        EXPECT_EQ(icon.getOffset(), glm::vec2(0.0f));
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(IconTextureTest, IsAnchoredInItsMiddleAtFirst)
{
    const IconTexture icon(pattern(10, 7));
    EXPECT_EQ(icon.size(), QSize(10, 7));
    EXPECT_EQ(icon.getOffset(), glm::vec2(5.0f, 3.5f));
    EXPECT_NE(icon.getTextureId(), 0u);
}

TEST_F(IconTextureTest, LiesWithItsAnchorOnThePoint)
{
    IconTexture icon(pattern(10, 7));
    const glm::vec2 middle = icon.getOffset();
    // the middle of a pixel, as 3.5 pixels lie below the anchor
    EXPECT_EQ(shown(icon, at(15.0, 16.5)), expected(pattern(10, 7), QPoint(10, 13)));
    icon.setOffset(glm::vec2(0.0f, 0.0f));
    EXPECT_EQ(shown(icon, at(12.0, 20.0)), expected(pattern(10, 7), QPoint(12, 13))) << "lower left corner";
    icon.setOffset(glm::vec2(10.0f, 7.0f));
    EXPECT_EQ(shown(icon, at(12.0, 20.0)), expected(pattern(10, 7), QPoint(2, 20))) << "upper right corner";
    icon.setOffset(glm::vec2(2.5f, 0.5f));
    EXPECT_EQ(shown(icon, at(12.5, 20.5)), expected(pattern(10, 7), QPoint(10, 14)));
    EXPECT_EQ(icon.getOffset(), glm::vec2(2.5f, 0.5f));
    icon.setOffset(middle);
    EXPECT_EQ(shown(icon, at(15.0, 16.5)), expected(pattern(10, 7), QPoint(10, 13)));
}

TEST_F(IconTextureTest, TheProgramGetsTheNegativeAnchor)
{
    IconTexture icon(pattern(4, 4));
    icon.setOffset(glm::vec2(3.0f, -1.5f));
    shown(icon, at(16, 16));
    auto& drawer = dynamic_cast<SequentialItem3dDrawer&>(*scene->getLocalDrawer(DrawerType::Caption));
    QOpenGLShaderProgram& program = *drawer.getDefaultProgram();
    glm::vec2 offset(0.0f);
    gl->glGetUniformfv(program.programId(), program.uniformLocation("offset"), &offset.x);
    EXPECT_EQ(offset, glm::vec2(-3.0f, 1.5f));
}

TEST_F(IconTextureTest, KeepsItsSizeAtAnyDistance)
{
    IconTexture icon(pattern(10, 8));
    IconItem item(scene.get(), icon, glm::vec3(0.0f));
    PaintContext context = paintContext(Size, Size);
    context.projection = glm::perspective(1.0f, 1.0f, 0.1f, 1000.0f);
    for (const float distance : {0.5f, 10.0f, 900.0f}) {
        item.place.z = -distance;
        EXPECT_EQ(drawFrame(context).convertToFormat(QImage::Format_RGB32),
                  expected(pattern(10, 8), QPoint(11, 12)));
    }
}

TEST_F(IconTextureTest, APassWithoutPointsDrawsNone)
{
    IconTexture icon(pattern(10, 8));
    IconItem item(scene.get(), icon, at(16, 16));
    const PaintContext context = paintContext(Size, Size);
    GlCalls calls(*gl);
    item.primitives = PrimitiveBit::Lines | PrimitiveBit::Triangles;
    EXPECT_EQ(countPixels(drawFrame(context), Qt::black), Size * Size);
    EXPECT_TRUE(calls.draws.empty());
    item.primitives = PrimitiveBit::Points;
    EXPECT_EQ(countPixels(drawFrame(context), Qt::black), Size * Size - 80);
    EXPECT_EQ(calls.draws.size(), 1u);
}

TEST_F(IconTextureTest, LeavesNothingBound)
{
    IconTexture icon(pattern(10, 8));
    shown(icon, at(16, 16));
    GLint array = -1, buffer = -1, texture = -1, enabled = -1;
    gl->glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &array);
    gl->glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &buffer);
    gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    EXPECT_EQ(array, 0);
    EXPECT_EQ(buffer, 0);
    EXPECT_EQ(texture, 0);
    gl->glBindVertexArray(scene->getDefaultVao());
    gl->glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
    gl->glBindVertexArray(0);
    EXPECT_EQ(enabled, 0);
}

TEST_F(IconTextureTest, HoldsTheImageWhateverItsFormat)
{
    QImage translucent(3, 5, QImage::Format_ARGB32);
    translucent.fill(QColor(200, 100, 50, 130));
    translucent.setPixelColor(1, 2, QColor(0, 0, 0, 0));
    for (const QImage& image : {pattern(3, 5), pattern(3, 5, QImage::Format_RGB888),
                                pattern(7, 2, QImage::Format_RGB32), translucent}) {
        const IconTexture icon(image);
        EXPECT_EQ(contentsOf(icon.getTextureId()), image.convertToFormat(QImage::Format_RGBA8888));
    }
}

TEST_F(IconTextureTest, ItsTextureIsSmoothAndHasAllLevels)
{
    const IconTexture icon(pattern(16, 4));
    const auto parameter = [&](GLenum what) {
        GLint value = 0;
        gl->glGetTexParameteriv(GL_TEXTURE_2D, what, &value);
        return value;
    };
    gl->glBindTexture(GL_TEXTURE_2D, icon.getTextureId());
    EXPECT_EQ(parameter(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameter(GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameter(GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(parameter(GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    for (const int level : {1, 2, 3, 4}) {
        GLint width = 0;
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH, &width);
        EXPECT_EQ(width, 16 >> level);
    }
    gl->glBindTexture(GL_TEXTURE_2D, 0);
}

TEST_F(IconTextureTest, FilesAreScaledWithTheirProportionsKept)
{
    const QString file = fileOf("wide.png");
    ASSERT_TRUE(pattern(20, 10).save(file));
    expectNone(IconTexture(file, QSize())); // not a size
    const IconTexture own(file, QSize(0, 0));
    EXPECT_EQ(own.size(), QSize(20, 10)) << "a null size is none";
    EXPECT_EQ(contentsOf(own.getTextureId()), pattern(20, 10));
    const std::pair<QSize, QSize> sizes[] = {
        {{10, 10}, {10, 5}}, {{40, 10}, {20, 10}}, {{40, 40}, {40, 20}}, {{6, 100}, {6, 3}}};
    for (const auto& [wanted, size] : sizes) {
        const IconTexture icon(file, wanted);
        EXPECT_EQ(icon.size(), size);
        EXPECT_EQ(icon.getOffset(), glm::vec2(size.width(), size.height()) * 0.5f);
        EXPECT_EQ(contentsOf(icon.getTextureId()).size(), size);
    }
}

TEST_F(IconTextureTest, IconsAreScaledWithTheirProportionsKept)
{
    QPixmap pixmap(40, 20);
    pixmap.fill(QColor(10, 200, 30));
    QPixmap pressed(40, 20);
    pressed.fill(Qt::red);
    QIcon source(pixmap);
    source.addPixmap(pressed, QIcon::Active, QIcon::On);
    const IconTexture icon(source, QSize(16, 16));
    EXPECT_EQ(icon.size(), QSize(16, 8));
    EXPECT_EQ(contentsOf(icon.getTextureId()).pixelColor(8, 4), QColor(10, 200, 30));
}

// QIcon and QImage read what Qt has plug-ins for; that for SVG is a package of its own.
TEST_F(IconTextureTest, AVectorFileGivesAPictureWhereQtReadsIt)
{
    const QString file = fileOf("disc.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='20' height='10'>"
                                            "<rect width='20' height='10' fill='#00ff00'/></svg>");
    const bool isRead = QImageReader::supportedImageFormats().contains("svg");
    const IconTexture icon(file, QSize(10, 10));
    if (isRead)
        EXPECT_EQ(icon.size(), QSize(10, 5));
    else
        expectNone(icon);
}

TEST_F(IconTextureTest, WhatCannotBeReadGivesNoneAndNoMessage)
{
    const GlObjects before = GlObjects::count(*gl);
    IconTexture drawn(fileOf("missing.png"), QSize(10, 10));
    const IconTexture& missing = drawn;
    const IconTexture missingOwn(fileOf("missing.png"), QSize(0, 0));
    const IconTexture broken(fileOf("broken.png", "no picture"), QSize(10, 10));
    const IconTexture none{QImage()};
    const IconTexture noIcon(QIcon(), QSize(10, 10));
    for (const IconTexture* icon : {&missing, &missingOwn, &broken, &none, &noIcon})
        expectNone(*icon);
    EXPECT_EQ(GlObjects::count(*gl), before);
    EXPECT_EQ(countPixels(shown(drawn, at(16, 16)), Qt::black), Size * Size);
}

TEST_F(IconTextureTest, MovingLeavesNoneBehind)
{
    IconTexture icon(pattern(10, 7));
    icon.setOffset(glm::vec2(1.0f, 2.0f));
    const unsigned int texture = icon.getTextureId();
    const GlObjects before = GlObjects::count(*gl);
    {
        const IconTexture moved(std::move(icon));
        EXPECT_EQ(moved.getTextureId(), texture);
        EXPECT_EQ(moved.size(), QSize(10, 7));
        EXPECT_EQ(moved.getOffset(), glm::vec2(1.0f, 2.0f));
        expectNone(icon);
    }
    EXPECT_EQ(GlObjects::count(*gl).textures, before.textures - 1);
}

TEST_F(IconTextureTest, WithoutAContextItHasASizeOnly)
{
    scene->doneCurrent();
    IconTexture icon(pattern(10, 7));
    icon.draw(paintContext(Size, Size), 1);
    scene->makeCurrent();
    EXPECT_EQ(icon.getTextureId(), 0u);
    EXPECT_EQ(icon.size(), QSize(10, 7));
    EXPECT_EQ(icon.getOffset(), glm::vec2(5.0f, 3.5f));
}

TEST_F(IconTextureTest, WhatTheDriverDoesNotTakeIsScaledDown)
{
    GLint longest = 0;
    gl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &longest);
    const IconTexture icon(QImage(2 * longest, 8, QImage::Format_RGBA8888));
    EXPECT_EQ(icon.size(), QSize(longest, 4));
    EXPECT_NE(icon.getTextureId(), 0u);
}

TEST_F(IconTextureTest, FreesItsTexture)
{
    const GlObjects before = GlObjects::count(*gl);
    for (int round = 0; round < 1000; ++round) {
        const IconTexture icon(pattern(4, 4));
        ASSERT_NE(icon.getTextureId(), 0u);
    }
    EXPECT_EQ(GlObjects::count(*gl), before);
}

TEST_F(IconTextureTest, SharedTexturesAreFoundByTheirKeysAndFreedByTheLastHolder)
{
    TextureFactory& factory = TextureFactory::instance();
    EXPECT_EQ(&factory, &TextureFactory::instance());
    const std::size_t sizeBefore = factory.getSize();
    const GlObjects before = GlObjects::count(*gl);
    EXPECT_EQ(factory.find("no such key"), nullptr);
    auto held = std::make_shared<IconTexture>(pattern(4, 4));
    factory.insert("held", held);
    factory.insert("not held", std::make_shared<IconTexture>(pattern(4, 4)));
    EXPECT_EQ(factory.find("held"), held);
    EXPECT_NE(factory.find("not held"), nullptr);
    EXPECT_NE(factory.find("not held"), held);
    EXPECT_EQ(GlObjects::count(*gl).textures, before.textures + 2);
    factory.removeUnused();
    EXPECT_EQ(factory.find("not held"), nullptr);
    EXPECT_EQ(factory.find("held"), held);
    EXPECT_EQ(GlObjects::count(*gl).textures, before.textures + 1);
    held.reset();
    EXPECT_NE(factory.find("held"), nullptr) << "kept for the next one";
    factory.removeUnused();
    EXPECT_EQ(factory.getSize(), sizeBefore);
    EXPECT_EQ(GlObjects::count(*gl), before);
}

} // namespace
