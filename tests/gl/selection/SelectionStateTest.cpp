#include "SelectionTest.h"

#include "tests/support/LogTrap.h"

#include <Viewer3dModule/scene/longestTargetSide.h>

#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

namespace {

/// What a selection finds in the context and leaves there.
class SelectionStateTest : public SelectionTest
{
};

TEST_F(SelectionStateTest, LeavesTheCallersContextCurrent)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    QOffscreenSurface surface;
    surface.setFormat(scene->getContext().format());
    surface.create();
    QOpenGLContext other;
    other.setFormat(scene->getContext().format());
    other.setShareContext(QOpenGLContext::globalShareContext());
    ASSERT_TRUE(other.create());
    ASSERT_TRUE(other.makeCurrent(&surface));
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{1});
    EXPECT_EQ(QOpenGLContext::currentContext(), &other);
    other.doneCurrent();
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{1});
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
    scene->makeCurrent();
}

TEST_F(SelectionStateTest, LeavesTheStateAsItWas)
{
    addSquare(1, QRectF(-5, 10, 40, 5));
    RenderTarget target(*gl, QSize(20, 10));
    for (const bool on : {true, false}) {
        target.bind();
        gl->glViewport(1, 2, 3, 4);
        gl->glScissor(5, 6, 7, 8);
        for (const GLenum capability : {GL_SCISSOR_TEST, GL_BLEND, GL_DITHER, GL_DEPTH_TEST})
            on ? gl->glEnable(capability) : gl->glDisable(capability);
        gl->glDepthMask(on);
        gl->glDepthFunc(on ? GL_GREATER : GL_ALWAYS);
        gl->glColorMask(on, !on, on, !on);
        const auto state = [this] {
            std::vector<GLint> values;
            for (const GLenum name :
                 {GL_DRAW_FRAMEBUFFER_BINDING, GL_READ_FRAMEBUFFER_BINDING, GL_VIEWPORT, GL_SCISSOR_BOX,
                  GL_SCISSOR_TEST, GL_BLEND, GL_DITHER, GL_DEPTH_TEST, GL_DEPTH_WRITEMASK, GL_DEPTH_FUNC,
                  GL_COLOR_WRITEMASK, GL_RENDERBUFFER_BINDING, GL_SHADER_STORAGE_BUFFER_BINDING,
                  GL_VERTEX_ARRAY_BINDING}) {
                GLint value[4] = {0, 0, 0, 0};
                gl->glGetIntegerv(name, value);
                values.insert(values.end(), value, value + 4);
            }
            return values;
        };
        const std::vector<GLint> before = state();
        for (const SelectionMode mode : {Through, Visible})
            for (const SelectionRule rule : {Touching, Inside}) {
                select(QRectF(0, 0, 64, 48), mode, rule);
                EXPECT_EQ(state(), before);
            }
        gl->glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        gl->glDepthMask(GL_TRUE);
        gl->glDisable(GL_SCISSOR_TEST);
    }
    Scene3d::initializeGLCommon(gl);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48), Visible), Ids{1});
}

// Identifiers are written as bytes of colours, which a driver may spread over neighbouring pixels.
TEST_F(SelectionStateTest, DrawsWithoutBlendingAndDithering)
{
    DrawnItem* item = addSquare(1, QRectF(10, 10, 20, 20));
    int draws = 0;
    item->drawing = [this, &draws, draw = item->drawing](const PaintContext& context) {
        EXPECT_FALSE(gl->glIsEnabled(GL_BLEND));
        EXPECT_FALSE(gl->glIsEnabled(GL_DITHER));
        ++draws;
        draw(context);
    };
    gl->glEnable(GL_BLEND);
    gl->glEnable(GL_DITHER);
    EXPECT_EQ(select(QRectF(5, 5, 10, 10), Visible), Ids{1});
    EXPECT_GE(draws, 1);
}

// Whatever state a host left the scene's context in.
TEST_F(SelectionStateTest, DependsOnNoStateOfTheContext)
{
    addSquare(1, QRectF(10, 10, 5, 5), 0.5f);
    addSquare(2, QRectF(8, 8, 20, 20), -0.5f);
    gl->glDisable(GL_DEPTH_TEST);
    gl->glDepthFunc(GL_NEVER);
    gl->glDepthMask(GL_FALSE);
    gl->glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    gl->glEnable(GL_SCISSOR_TEST);
    gl->glScissor(0, 0, 1, 1);
    gl->glEnable(GL_BLEND);
    gl->glBlendFunc(GL_ZERO, GL_ZERO);
    for (const bool tests : {false, true}) {
        tests ? gl->glEnable(GL_DEPTH_TEST) : gl->glDisable(GL_DEPTH_TEST);
        EXPECT_EQ(select(QRectF(0, 0, 64, 48)), (Ids{1, 2}));
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), Visible), Ids{2});
    }
    gl->glDisable(GL_SCISSOR_TEST);
    gl->glDepthMask(GL_TRUE);
    gl->glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    Scene3d::initializeGLCommon(gl);
}

TEST_F(SelectionStateTest, SaysWhenAViewportIsTooLargeForTheDriver)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    const int side = longestTargetSide(*gl);
    EXPECT_TRUE(scene->selectItems(paintContext(side + 1, 4), QRectF(0, 0, 4, 4), {}).empty());
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.front().contains(QString::number(side))) << lines.front().toStdString();
}

TEST_F(SelectionStateTest, FindsNothingByABufferThatCannotBeMapped)
{
    addSquare(1, QRectF(10, 10, 5, 5));
    ASSERT_EQ(select(QRectF(0, 0, 64, 48)), Ids{1});
    GLint name = 0;
    gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, 9, &name);
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(name));
    ASSERT_NE(gl->glMapBuffer(GL_COPY_WRITE_BUFFER, GL_READ_ONLY), nullptr);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{});
    EXPECT_FALSE(debug->take().isEmpty());
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(name));
    gl->glUnmapBuffer(GL_COPY_WRITE_BUFFER);
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    EXPECT_EQ(select(QRectF(0, 0, 64, 48)), Ids{1});
}

TEST_F(SelectionStateTest, FindsNothingInAnEmptyScene)
{
    for (const SelectionMode mode : {Through, Visible})
        EXPECT_EQ(select(QRectF(0, 0, 64, 48), mode, Inside), Ids{});
}

TEST_F(SelectionStateTest, MakesTheProviderAtTheFirstRequest)
{
    EXPECT_FALSE(scene->isHasItemSelectionProvider());
    IItem3dSelectionProvider* provider = scene->getItemSelectionProvider();
    ASSERT_NE(provider, nullptr);
    EXPECT_TRUE(scene->isHasItemSelectionProvider());
    EXPECT_EQ(scene->getItemSelectionProvider(), provider);
}

} // namespace
