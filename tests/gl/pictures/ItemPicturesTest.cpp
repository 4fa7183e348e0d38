#include "SolidsTest.h"

#include "tests/support/GlObjects.h"
#include "tests/support/ImageCheck.h"
#include "tests/support/LogTrap.h"

#include <Viewer3dModule/host/View3dSettings.h>
#include <framework/model/CModelElement.h>

#include <QtGui/QImage>
#include <QtGui/QOffscreenSurface>

namespace {

const std::string threeColors = R"(
layout(location = 0) out vec4 first;
layout(location = 1) out vec4 second;
layout(location = 2) out vec4 third;
void main() { first = vec4(1, 0, 0, 1); second = vec4(0, 1, 0, 1); third = vec4(0, 0, 1, 1); }
)";
const std::string firstOnly =
    "layout(location = 0) out vec4 first; void main() { first = vec4(1, 0, 0, 1); }";

class ItemPicturesTest : public SolidsTest
{
protected:
    /// Number of pixels that are exactly of this value.
    static int count(const QImage& image, QRgb value)
    {
        return countPixels(image, [value](QRgb pixel) { return pixel == value; });
    }
    static void expectFilled(const QImage& image, QRgb value)
    {
        EXPECT_EQ(count(image, value), image.width() * image.height());
    }
    std::vector<GLint> integers(GLenum name, std::size_t size)
    {
        std::vector<GLint> values(size);
        gl->glGetIntegerv(name, values.data());
        return values;
    }
};

TEST_F(ItemPicturesTest, ShowTheChosenItemsTopRowFirst)
{
    SolidItem* top = add(squareVertices(-1, 0, 1, 1), Qt::red);
    add(squareVertices(-1, -1, 1, 0), Qt::blue);
    const QImage image = scene->createItemsImage({top}, paintContext(16, 8));
    ASSERT_EQ(image.size(), QSize(16, 8));
    EXPECT_EQ(image.format(), QImage::Format_ARGB32);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x)
            ASSERT_EQ(image.pixel(x, y), y < 4 ? qRgba(255, 0, 0, 255) : 0u) << x << ' ' << y;
}

// Blending by source alpha: colour 1 * 128/255, alpha 128/255 * 128/255.
TEST_F(ItemPicturesTest, KeepTheAlphaOfWhatIsDrawn)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1), QColor(255, 0, 0, 128));
    expectFilled(scene->createItemsImage({item}, paintContext(4, 4)), qRgba(128, 0, 0, 64));
}

TEST_F(ItemPicturesTest, PassNullPointersOver)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1), Qt::red);
    expectFilled(scene->createItemsImage({nullptr, item, nullptr, item}, paintContext(4, 4)),
                 qRgba(255, 0, 0, 255));
    EXPECT_EQ(item->draws, 1);
}

TEST_F(ItemPicturesTest, OfNoItemsAreTransparent)
{
    add(squareVertices(-1, -1, 1, 1), Qt::red);
    const QImage image = scene->createItemsImage(std::vector<Graphics3dItem*>(), paintContext(4, 4));
    ASSERT_EQ(image.size(), QSize(4, 4));
    expectFilled(image, 0u);
}

TEST_F(ItemPicturesTest, LeaveInvisibleItemsOut)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1), Qt::red);
    item->getModelElement()->setVisible(false);
    expectFilled(scene->createItemsImage({item}, paintContext(4, 4)), 0u);
}

// The highlighted square is farther away and its drawer comes first.
TEST_F(ItemPicturesTest, ShowHighlightedItemsOverOthers)
{
    SolidItem* behind = add(squareVertices(-0.5f, -1, 0.5f, 1, 0.5f), Qt::red, First);
    SolidItem* front = add(squareVertices(-1, -1, 1, 1, -0.5f), Qt::blue, Last);
    const PaintContext context = paintContext(16, 16);
    const QImage plain = scene->createItemsImage({behind, front}, context);
    expectFilled(plain, qRgba(0, 0, 255, 255));

    behind->getModelElement()->setHighlighted(true);
    const QImage image = scene->createItemsImage({front, behind}, context);
    const QColor chosen = View3dSettings::getInstance() ? View3dSettings::getInstance()->getSelectedColor()
                                                        : QColor(Qt::yellow);
    EXPECT_EQ(countPixels(image, chosen), 8 * 16);
    EXPECT_EQ(count(image, qRgba(0, 0, 255, 255)), 8 * 16);
}

// Of one drawer too: the item that comes later in it, at the same depth, is not highlighted.
TEST_F(ItemPicturesTest, DrawHighlightedItemsLast)
{
    SolidItem* chosen = add(squareVertices(-1, -1, 1, 1), Qt::red);
    SolidItem* other = add(squareVertices(-1, -1, 1, 1), Qt::blue);
    chosen->getModelElement()->setHighlighted(true);
    std::vector<SolidItem*> order;
    for (SolidItem* item : {chosen, other})
        item->onDraw = [&order, item] { order.push_back(item); };
    scene->createItemsImage({chosen, other}, paintContext(4, 4));
    EXPECT_EQ(order, (std::vector<SolidItem*>{other, chosen}));
}

TEST_F(ItemPicturesTest, UseTheVertexArrayOfTheScenesContext)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1), Qt::red);
    PaintContext context = paintContext(4, 4);
    context.vertexArray = 4711; // of a view, say
    expectFilled(scene->createItemsImage({item}, context), qRgba(255, 0, 0, 255));
    EXPECT_TRUE(item->hadVertexArray);
}

TEST_F(ItemPicturesTest, HandTheContextOfThePassToItems)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1));
    PaintContext context = paintContext(4, 4);
    int something = 0;
    context.extra1 = &something;
    context.passFlags = 5;
    context.viewName = "north";
    scene->createItemsImage({item}, context);
    EXPECT_EQ(item->lastContext.extra1, &something);
    EXPECT_EQ(item->lastContext.passFlags, 5);
    EXPECT_EQ(item->lastContext.viewName, "north");
    EXPECT_EQ(item->lastContext.scene, scene.get());
}

TEST_F(ItemPicturesTest, ComeInTheOrderOfAttachments)
{
    FullScreen program(threeColors);
    const std::vector<QImage> images =
        scene->createItemsImages([&] { program.draw(scene->getDefaultVao()); }, paintContext(8, 4), 3);
    ASSERT_EQ(images.size(), 3u);
    for (const QImage& image : images)
        EXPECT_EQ(image.size(), QSize(8, 4));
    expectFilled(images[0], qRgba(255, 0, 0, 255));
    expectFilled(images[1], qRgba(0, 255, 0, 255));
    expectFilled(images[2], qRgba(0, 0, 255, 255));
}

// The attachments are filled first, because some drivers hand memory out again as it was. The
// drawing names the one draw buffer that its program writes: what a program leaves out is undefined
// elsewhere, and this machine's driver then writes what it finds.
TEST_F(ItemPicturesTest, AreTransparentBlackWhereNothingIsWritten)
{
    FullScreen all(threeColors);
    FullScreen first(firstOnly);
    const PaintContext context = paintContext(32, 32);
    for (int i = 0; i < 3; ++i)
        scene->createItemsImages([&] { all.draw(scene->getDefaultVao()); }, context, 3);
    const auto drawFirst = [&] {
        const GLenum buffer = GL_COLOR_ATTACHMENT0;
        gl->glDrawBuffers(1, &buffer);
        first.draw(scene->getDefaultVao());
    };
    const std::vector<QImage> images = scene->createItemsImages(drawFirst, context, 3);
    ASSERT_EQ(images.size(), 3u);
    expectFilled(images[0], qRgba(255, 0, 0, 255));
    expectFilled(images[1], 0u);
    expectFilled(images[2], 0u);
}

TEST_F(ItemPicturesTest, OfTheDefaultDrawersLeaveFurtherAttachmentsTransparent)
{
    add(squareVertices(-1, -1, 1, 1), Qt::red);
    const PaintContext context = paintContext(8, 8);
    const std::vector<QImage> images =
        scene->createItemsImages([&] { scene->drawElements(context, nullptr, {}); }, context, 3);
    ASSERT_EQ(images.size(), 3u);
    expectFilled(images[0], qRgba(255, 0, 0, 255));
    expectFilled(images[1], 0u);
    expectFilled(images[2], 0u);
}

TEST_F(ItemPicturesTest, GiveTheFirstAttachmentWhereOneIsAsked)
{
    FullScreen program(threeColors);
    const QImage image =
        scene->createItemsImage([&] { program.draw(scene->getDefaultVao()); }, paintContext(8, 4));
    ASSERT_EQ(image.size(), QSize(8, 4));
    expectFilled(image, qRgba(255, 0, 0, 255));
}

TEST_F(ItemPicturesTest, CallDrawOnceWithTheTargetReady)
{
    PaintContext context = paintContext(8, 4);
    context.setViewport(QRect(30, 40, 8, 4)); // where the rectangle lies does not matter
    gl->glClearDepth(0.25);
    int calls = 0;
    scene->createItemsImages(
        [&] {
            ++calls;
            EXPECT_EQ(QOpenGLContext::currentContext(), &scene->getContext());
            EXPECT_EQ(gl->glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
            EXPECT_EQ(integers(GL_VIEWPORT, 4), (std::vector<GLint>{0, 0, 8, 4}));
            EXPECT_EQ(integers(GL_DRAW_BUFFER0, 1)[0], GL_COLOR_ATTACHMENT0);
            EXPECT_EQ(integers(GL_DRAW_BUFFER1, 1)[0], GL_COLOR_ATTACHMENT1);
            float depth = 0.0f;
            gl->glReadPixels(3, 2, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
            EXPECT_EQ(depth, 1.0f);
        },
        context, 2);
    EXPECT_EQ(calls, 1);
    gl->glClearDepth(1.0);
}

TEST_F(ItemPicturesTest, WithoutADrawingAreTransparent)
{
    const std::vector<QImage> images =
        scene->createItemsImages(std::function<void()>(), paintContext(3, 2), 2);
    ASSERT_EQ(images.size(), 2u);
    expectFilled(images[0], 0u);
    expectFilled(images[1], 0u);
}

TEST_F(ItemPicturesTest, ReadTheirOwnTargetWhateverDrawLeavesBound)
{
    const QImage image = scene->createItemsImage(
        [&] {
            gl->glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
            gl->glClear(GL_COLOR_BUFFER_BIT);
            RenderTarget other(*gl, QSize(4, 4));
            other.bind();
        },
        paintContext(4, 4));
    expectFilled(image, qRgba(255, 0, 0, 255));
}

TEST_F(ItemPicturesTest, LeaveTheStateOfTheContextAsItWas)
{
    RenderTarget other(*gl, QSize(4, 4));
    other.bind();
    gl->glViewport(1, 2, 3, 4);
    gl->glClearColor(0.25f, 0.5f, 0.75f, 1.0f);
    gl->glClearDepth(0.5);
    const GLint bound = integers(GL_DRAW_FRAMEBUFFER_BINDING, 1)[0];
    SolidItem* item = add(squareVertices(-1, -1, 1, 1));
    scene->createItemsImage({item}, paintContext(8, 8));
    scene->createItemsImages([] {}, paintContext(8, 8), 3);

    EXPECT_EQ(integers(GL_DRAW_FRAMEBUFFER_BINDING, 1)[0], bound);
    EXPECT_EQ(integers(GL_READ_FRAMEBUFFER_BINDING, 1)[0], bound);
    EXPECT_EQ(integers(GL_VIEWPORT, 4), (std::vector<GLint>{1, 2, 3, 4}));
    GLfloat color[4] = {}, depth = 0.0f;
    gl->glGetFloatv(GL_COLOR_CLEAR_VALUE, color);
    gl->glGetFloatv(GL_DEPTH_CLEAR_VALUE, &depth);
    EXPECT_EQ(std::vector<GLfloat>(color, color + 4), (std::vector<GLfloat>{0.25f, 0.5f, 0.75f, 1.0f}));
    EXPECT_EQ(depth, 0.5f);
    EXPECT_TRUE(gl->glIsEnabled(GL_POLYGON_OFFSET_FILL));
    EXPECT_TRUE(gl->glIsEnabled(GL_DEPTH_TEST));
    gl->glClearDepth(1.0);
}

TEST_F(ItemPicturesTest, MayBeMadeWhileAnotherIsDrawn)
{
    QImage inner;
    const QImage outer = scene->createItemsImage(
        [&] {
            inner = scene->createItemsImage(
                [&] {
                    gl->glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
                    gl->glClear(GL_COLOR_BUFFER_BIT);
                },
                paintContext(2, 2));
            gl->glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
            gl->glClear(GL_COLOR_BUFFER_BIT);
        },
        paintContext(4, 4));
    ASSERT_EQ(inner.size(), QSize(2, 2));
    expectFilled(inner, qRgba(0, 255, 0, 255));
    ASSERT_EQ(outer.size(), QSize(4, 4));
    expectFilled(outer, qRgba(255, 0, 0, 255));
}

TEST_F(ItemPicturesTest, LeaveTheCallersContextCurrent)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1), Qt::red);
    QOffscreenSurface surface;
    surface.setFormat(scene->getContext().format());
    surface.create();
    QOpenGLContext context;
    context.setFormat(scene->getContext().format());
    ASSERT_TRUE(context.create());
    ASSERT_TRUE(context.makeCurrent(&surface));
    expectFilled(scene->createItemsImage({item}, paintContext(4, 4)), qRgba(255, 0, 0, 255));
    EXPECT_EQ(scene->createItemsImage({item}, QRectF(), QRect(), nullptr).size(), QSize(800, 800));
    EXPECT_EQ(QOpenGLContext::currentContext(), &context);
    context.doneCurrent();
    scene->createItemsImage({item}, paintContext(4, 4));
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
    scene->makeCurrent();
}

TEST_F(ItemPicturesTest, OfOnePixelHaveOne)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1), Qt::red);
    const QImage image = scene->createItemsImage({item}, paintContext(1, 1));
    ASSERT_EQ(image.size(), QSize(1, 1));
    EXPECT_EQ(image.pixel(0, 0), qRgba(255, 0, 0, 255));
}

TEST_F(ItemPicturesTest, OfAnEmptyRectangleAreNull)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1));
    int calls = 0;
    for (const QSize& size : {QSize(0, 0), QSize(0, 5), QSize(5, 0), QSize(-3, 5), QSize(5, -3)}) {
        PaintContext context = paintContext(1, 1);
        context.viewportRect = QRect(QPoint(0, 0), size);
        EXPECT_TRUE(scene->createItemsImage({item}, context).isNull());
        EXPECT_TRUE(scene->createItemsImage([&] { ++calls; }, context).isNull());
        EXPECT_TRUE(scene->createItemsImages([&] { ++calls; }, context, 2).empty());
    }
    EXPECT_EQ(calls, 0);
}

TEST_F(ItemPicturesTest, OfNoAttachmentAreNone)
{
    EXPECT_TRUE(scene->createItemsImages([] {}, paintContext(4, 4), 0).empty());
    EXPECT_TRUE(scene->createItemsImages([] {}, paintContext(4, 4), -1).empty());
}

TEST_F(ItemPicturesTest, BeyondTheDriversLimitsAreRefusedInTheLog)
{
    EXPECT_TRUE(scene->createItemsImage([] {}, paintContext(100000, 4)).isNull());
    QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains("100000 x 4")) << lines[0].toStdString();
    EXPECT_TRUE(scene->createItemsImages([] {}, paintContext(4, 100000), 1).empty());
    EXPECT_EQ(LogTrap::take().size(), 1);
    EXPECT_TRUE(scene->createItemsImages([] {}, paintContext(4, 4), 1000).empty());
    lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].startsWith("1000 pictures")) << lines[0].toStdString();
}

TEST_F(ItemPicturesTest, CanHaveAllAttachmentsThatTheDriverOffers)
{
    const int most = std::min(integers(GL_MAX_COLOR_ATTACHMENTS, 1)[0], integers(GL_MAX_DRAW_BUFFERS, 1)[0]);
    EXPECT_EQ(scene->createItemsImages([] {}, paintContext(4, 4), most).size(),
              static_cast<std::size_t>(most));
}

TEST_F(ItemPicturesTest, AreNullWithoutAContext)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1));
    auto* surface = static_cast<QOffscreenSurface*>(scene->getSurface());
    scene->doneCurrent();
    surface->destroy();
    ASSERT_FALSE(scene->makeCurrent());
    int calls = 0;
    EXPECT_TRUE(scene->createItemsImage({item}, paintContext(4, 4)).isNull());
    EXPECT_TRUE(scene->createItemsImage([&] { ++calls; }, paintContext(4, 4)).isNull());
    EXPECT_TRUE(scene->createItemsImage({item}, QRectF(), QRect(), nullptr).isNull());
    EXPECT_EQ(calls, 0);
    surface->create();
    EXPECT_TRUE(scene->makeCurrent());
}

TEST_F(ItemPicturesTest, LeaveNoObjectBehind)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1));
    const auto make = [&] {
        scene->createItemsImage({item}, paintContext(16, 16));
        scene->createItemsImages([] {}, paintContext(9, 5), 3);
        scene->createItemsImage({item}, QRectF(), QRect(0, 0, 20, 10), nullptr);
    };
    make();
    const GlObjects before = GlObjects::count(*gl);
    const auto framebuffers = [&] {
        int number = 0;
        for (GLuint name = 1; name < 1000; ++name)
            number += gl->glIsFramebuffer(name) + gl->glIsRenderbuffer(name);
        return number;
    };
    const int framebuffersBefore = framebuffers();
    for (int i = 0; i < 50; ++i)
        make();
    EXPECT_EQ(GlObjects::count(*gl), before);
    EXPECT_EQ(framebuffers(), framebuffersBefore);
}

} // namespace
