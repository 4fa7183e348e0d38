#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <gtest/gtest.h>

#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

// Views free what they have in a context when it goes, and ask for its functions to do so. The next context
// may lie at the same address; here it does, being the same object.
TEST(FunctionTableTest, IsThatOfTheContextThatIsThereNow)
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    ASSERT_TRUE(context.create() && context.makeCurrent(&surface));
    ASSERT_NE(currentGLFunctions(), nullptr);
    OpenGLFunctions* atTheEnd = nullptr;
    const auto connection = QObject::connect(&context, &QOpenGLContext::aboutToBeDestroyed, [&] {
        context.makeCurrent(&surface);
        atTheEnd = currentGLFunctions();
        EXPECT_EQ(atTheEnd, context.versionFunctions<OpenGLFunctions>());
    });
    ASSERT_TRUE(context.create() && context.makeCurrent(&surface)); // ends the former one
    EXPECT_NE(atTheEnd, nullptr);
    EXPECT_EQ(currentGLFunctions(), context.versionFunctions<OpenGLFunctions>());
    ASSERT_NE(currentGLFunctions(), nullptr);
    EXPECT_NE(currentGLFunctions()->glGetString(GL_VERSION), nullptr);
    QObject::disconnect(connection);
    context.doneCurrent();
}
