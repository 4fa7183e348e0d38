#include "SceneDepthMapGeneratorTest.h"

#include "tests/support/GlObjects.h"
#include "tests/support/LogTrap.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTranslator>
#include <QtGui/QOffscreenSurface>

#include <optional>

// Qt's own, which it does not declare for others; tests put other share contexts in its place.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext* context);

namespace {

/// A context that shares with nobody, current on a surface of its own.
struct OtherContext
{
    explicit OtherContext(const QSurfaceFormat& format)
    {
        surface.setFormat(format);
        surface.create();
        context.setFormat(format);
        context.create();
        context.makeCurrent(&surface);
    }
    QOffscreenSurface surface;
    QOpenGLContext context;
};

/// Puts another share context in the place of Qt's for as long as it lives.
class ShareContext
{
public:
    explicit ShareContext(QOpenGLContext* context)
        : m_before(QOpenGLContext::globalShareContext())
    {
        qt_gl_set_global_share_context(context);
    }
    ~ShareContext() { qt_gl_set_global_share_context(m_before); }
    ShareContext(const ShareContext&) = delete;
    ShareContext& operator=(const ShareContext&) = delete;

private:
    QOpenGLContext* m_before;
};

using DepthMapContextsTest = SceneDepthMapGeneratorTest;

// The other context's frame buffer and vertex array bear the names that the generator's have in its own.
TEST_F(DepthMapContextsTest, IsMadeUsedAndDestroyedWhileAnotherContextIsCurrent)
{
    SolidItem* wall = addWall(10);
    OtherContext other(scene->getContext().format());
    OpenGLFunctions* functions = currentGLFunctions();
    GLuint framebuffers[8], vertexArrays[8], textures[64];
    functions->glGenFramebuffers(8, framebuffers);
    functions->glGenVertexArrays(8, vertexArrays);
    functions->glGenTextures(64, textures);
    for (int i = 0; i < 8; ++i) {
        functions->glBindFramebuffer(GL_FRAMEBUFFER, framebuffers[i]);
        functions->glBindVertexArray(vertexArrays[i]);
    }
    for (GLuint texture : textures)
        functions->glBindTexture(GL_TEXTURE_2D, texture);
    {
        SceneDepthMapGenerator generator(Size);
        EXPECT_EQ(QOpenGLContext::currentContext(), &other.context);
        expectDistance(generator.generate({wall}, glm::dmat4(1.0), central(Size)), 10.0f);
        EXPECT_EQ(QOpenGLContext::currentContext(), &other.context);
    }
    EXPECT_EQ(QOpenGLContext::currentContext(), &other.context);
    EXPECT_EQ(other.context.surface(), &other.surface);
    for (int i = 0; i < 8; ++i) {
        EXPECT_TRUE(functions->glIsFramebuffer(framebuffers[i])) << i;
        EXPECT_TRUE(functions->glIsVertexArray(vertexArrays[i])) << i;
    }
    for (GLuint texture : textures)
        EXPECT_TRUE(functions->glIsTexture(texture));
    GLint bound = 0;
    functions->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    EXPECT_EQ(static_cast<GLuint>(bound), framebuffers[7]);
}

TEST_F(DepthMapContextsTest, NeedsNoCurrentContextAndLeavesNone)
{
    SolidItem* wall = addWall(10);
    scene->doneCurrent();
    std::optional<SceneDepthMapGenerator> generator(Size);
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
    expectDistance(generator->generate({wall}, glm::dmat4(1.0), central(Size)), 10.0f);
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
    generator.reset();
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
}

// A dirty scene recentres itself within the pass, in its own context.
TEST_F(DepthMapContextsTest, AScenesUpdateDuringThePassDoesNoHarm)
{
    SolidItem* wall = addWall(10);
    scene->setBoundsDirty();
    SceneDepthMapGenerator generator(Size);
    expectDistance(generator.generate({wall}, glm::dmat4(1.0), central(Size)), 10.0f);
    EXPECT_EQ(QOpenGLContext::currentContext(), &scene->getContext());
}

TEST_F(DepthMapContextsTest, APictureMayBeMadeBetweenMaps)
{
    SolidItem* wall = addWall(10);
    SceneDepthMapGenerator generator(Size);
    expectDistance(generator.generate({wall}, glm::dmat4(1.0), central(Size)), 10.0f);
    PaintContext context = paintContext(8, 8);
    context.projection = glm::mat4(central(QSize(8, 8)));
    const QImage picture = scene->createItemsImage({wall}, context);
    ASSERT_EQ(picture.size(), QSize(8, 8));
    EXPECT_EQ(picture.pixel(4, 4), qRgba(255, 255, 255, 255));
    expectDistance(generator.generate({wall}, glm::dmat4(1.0), central(Size)), 10.0f);
}

TEST_F(DepthMapContextsTest, TakesItsObjectsAlong)
{
    SolidItem* wall = addWall(10);
    map({wall});
    scene->makeCurrent();
    const GlObjects before = GlObjects::count(*gl);
    {
        SceneDepthMapGenerator generator(Size);
        scene->makeCurrent();
        EXPECT_EQ(GlObjects::count(*gl).textures, before.textures + 2);
    }
    EXPECT_EQ(GlObjects::count(*gl), before);
    errorOf(QSize(100000, 100000));
    LogTrap::take();
    EXPECT_EQ(GlObjects::count(*gl), before);
}

// --- errors

TEST_F(DepthMapContextsTest, WithoutASharedContextThereIsNone)
{
    const ShareContext none(nullptr);
    EXPECT_EQ(errorOf(Size), QString::fromUtf8("Не удалось создать контекст opengl"));
    EXPECT_EQ(QOpenGLContext::currentContext(), &scene->getContext());
}

TEST_F(DepthMapContextsTest, WithoutTheFunctionsOfACoreProfileThereIsNone)
{
    QSurfaceFormat format = scene->getContext().format();
    format.setRenderableType(QSurfaceFormat::OpenGLES);
    format.setVersion(3, 0);
    OtherContext other(format);
    if (!other.context.isOpenGLES()) GTEST_SKIP() << "this driver offers no OpenGL ES";
    const ShareContext embedded(&other.context);
    EXPECT_EQ(errorOf(Size),
              QString::fromUtf8("Не удалось построить карту глубин средствами графического адаптера"));
    EXPECT_EQ(QOpenGLContext::currentContext(), &other.context);
}

struct Translator : QTranslator
{
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        const bool isKnown =
            qstrcmp(context, "SceneDepthMapGenerator") == 0 &&
            QString::fromUtf8(text) == QString::fromUtf8("Не удалось создать контекст opengl");
        return isKnown ? QStringLiteral("There is no OpenGL context") : QString();
    }
    bool isEmpty() const override { return false; }
};

TEST_F(DepthMapContextsTest, ErrorsAreTranslated)
{
    const ShareContext none(nullptr);
    Translator translator;
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(errorOf(Size), QStringLiteral("There is no OpenGL context"));
    QCoreApplication::removeTranslator(&translator);
}

} // namespace
