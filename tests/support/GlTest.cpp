#include "GlTest.h"

void GlTest::SetUp()
{
    QOpenGLContext* share = QOpenGLContext::globalShareContext();
    ASSERT_NE(share, nullptr) << "no OpenGL: is there an X server, and QT_QPA_PLATFORM=xcb?";
    surface.setFormat(share->format());
    surface.create();
    context.setFormat(share->format());
    context.setShareContext(share);
    ASSERT_TRUE(context.create());
    ASSERT_TRUE(makeCurrent());
    ASSERT_EQ(context.format().profile(), QSurfaceFormat::CoreProfile);
    ASSERT_GE(context.format().version(), qMakePair(4, 3));
    debug = std::make_unique<GlDebug>(context);
    gl = currentGLFunctions();
    ASSERT_NE(gl, nullptr);
    gl->glGenVertexArrays(1, &vao);
}

void GlTest::TearDown()
{
    if (!gl) return;
    makeCurrent();
    gl->glDeleteVertexArrays(1, &vao);
    debug.reset();
    context.doneCurrent();
}
