#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <gtest/gtest.h>

#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

#include <cstdio>

// Which driver the tests run on. V3D_RENDERER names the one that is wanted, by a part of its name: a driver
// that cannot be started is often replaced by another one without a word.
TEST(DriverTest, IsTheOneThatIsAskedFor)
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    ASSERT_TRUE(context.create() && context.makeCurrent(&surface)) << "the driver gives no context";
    OpenGLFunctions* gl = currentGLFunctions();
    ASSERT_NE(gl, nullptr) << "the driver gives no core profile of OpenGL 4.3";
    const QByteArray renderer(reinterpret_cast<const char*>(gl->glGetString(GL_RENDERER)));
    std::printf("renderer: %s, OpenGL %s\n", renderer.constData(),
                reinterpret_cast<const char*>(gl->glGetString(GL_VERSION)));
    const QByteArray wanted = qgetenv("V3D_RENDERER");
    EXPECT_TRUE(renderer.contains(wanted)) << "wanted: " << wanted.constData();
    context.doneCurrent();
}
