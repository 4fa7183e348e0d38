#include "SceneTest.h"

#include "ProgramList.h"

#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

SceneTest::SceneTest() = default;
SceneTest::~SceneTest() = default;

void SceneTest::SetUp()
{
    mapShaderPrefix();
    ASSERT_NE(QOpenGLContext::globalShareContext(), nullptr)
        << "no OpenGL: is there an X server, and QT_QPA_PLATFORM=xcb?";
    project = std::make_unique<CProject>();
    scene = std::make_unique<Scene3d>(project->getModel(), nullptr);
    ASSERT_TRUE(scene->makeCurrent());
    debug = std::make_unique<GlDebug>(scene->getContext());
    gl = scene->getGLFunctions();
    ASSERT_NE(gl, nullptr);
}

void SceneTest::TearDown()
{
    if (!debug) return;
    if (scene) {
        scene->makeCurrent();
        EXPECT_EQ(gl->glGetError(), 0u) << "pending OpenGL error";
    }
    scene.reset(); // listened to as well
    debug.reset();
    project.reset();
}

PaintContext SceneTest::paintContext(int width, int height)
{
    PaintContext context;
    context.setViewport(QRect(0, 0, width, height));
    context.vertexArray = scene->getDefaultVao();
    context.scene = scene.get();
    return context;
}

QImage SceneTest::drawFrame(const PaintContext& context)
{
    scene->makeCurrent();
    RenderTarget target(*gl, context.viewportRect.size());
    target.bind();
    target.clear(QColor(0, 0, 0));
    scene->drawFrame(context, nullptr, {});
    return target.image();
}
