#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/scene/ViewCulling.h>
#include <Viewer3dModule/scene/depthsToDistances.h>
#include <Viewer3dModule/scene/longestTargetSide.h>
#include <framework/ksp/CTranslater.h>
#include <framework/ksp/CommonError.h>
#include <framework/ksp/Log.h>

#include <QtGui/QImage>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

#include <unordered_set>
#include <utility>

namespace {

const char* const noContext =
    QT_TRANSLATE_NOOP("SceneDepthMapGenerator", "Не удалось создать контекст opengl");
const char* const notCurrent =
    QT_TRANSLATE_NOOP("SceneDepthMapGenerator", "Не удалось переключить контекст opengl");
const char* const notDrawable = QT_TRANSLATE_NOOP(
    "SceneDepthMapGenerator", "Не удалось построить карту глубин средствами графического адаптера");

[[noreturn]] void fail(const char* text)
{
    throw ksp::CommonError(CTranslater::GetInstance().translate("SceneDepthMapGenerator", text));
}

/// A texture of the size without contents.
GLuint makeTexture(OpenGLFunctions& gl, const QSize& size, GLenum format, GLenum type)
{
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(GL_TEXTURE_2D, texture);
    gl.glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(format), size.width(), size.height(), 0, format,
                    type, nullptr);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

} // namespace

struct SceneDepthMapGenerator::Private
{
    explicit Private(const QSize& mapSize)
        : size(mapSize)
    {
    }
    /// Deletes in the generator's context: in another one the names of its frame buffer and vertex array are
    /// other objects.
    ~Private();
    void create();
    void createTarget(OpenGLFunctions& gl);
    void draw(OpenGLFunctions& gl, Scene3d& scene, const PaintContext& context, Scene3d::ItemFilter filter);
    void readDepths(OpenGLFunctions& gl, QImage& image) const;

    const QSize size;
    QOffscreenSurface surface;
    QOpenGLContext context;
    GLuint framebuffer = 0;
    GLuint colorTexture = 0;
    GLuint depthTexture = 0;
    GLuint vertexArray = 0;
};

SceneDepthMapGenerator::Private::~Private()
{
    if (!context.isValid()) return;
    const CurrentContextGuard callers;
    OpenGLFunctions* gl = context.makeCurrent(&surface) ? currentGLFunctions() : nullptr;
    if (!gl) return;
    gl->glDeleteTextures(1, &colorTexture);
    gl->glDeleteTextures(1, &depthTexture);
    gl->glDeleteFramebuffers(1, &framebuffer);
    gl->glDeleteVertexArrays(1, &vertexArray);
    context.doneCurrent();
}

void SceneDepthMapGenerator::Private::create()
{
    QOpenGLContext* share = QOpenGLContext::globalShareContext();
    if (!share) fail(noContext); // one that shares with nobody would find no program and no buffer
    surface.setFormat(share->format());
    surface.create();
    context.setFormat(share->format());
    context.setShareContext(share);
    if (!context.create()) fail(noContext);
    const CurrentContextGuard callers;
    if (!context.makeCurrent(&surface)) fail(notCurrent);
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) fail(notDrawable);
    Scene3d::initializeGLCommon(gl);
    gl->glGenVertexArrays(1, &vertexArray);
    if (!size.isEmpty()) createTarget(*gl);
}

void SceneDepthMapGenerator::Private::createTarget(OpenGLFunctions& gl)
{
    const int side = longestTargetSide(gl);
    if (size.width() > side || size.height() > side) {
        ksp::Log::error(
            QStringLiteral("There is no depth map of %1 x %2 pixels: this driver draws at most %3 x %3")
                .arg(size.width())
                .arg(size.height())
                .arg(side));
        fail(notDrawable);
    }
    colorTexture = makeTexture(gl, size, GL_RGB, GL_UNSIGNED_BYTE);
    depthTexture = makeTexture(gl, size, GL_DEPTH_COMPONENT, GL_FLOAT);
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, colorTexture, 0);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, depthTexture, 0);
    gl.glDrawBuffer(GL_NONE); // nobody looks at colours, and drivers are faster without
    const bool isComplete = gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    if (!isComplete) fail(notDrawable);
}

void SceneDepthMapGenerator::Private::draw(OpenGLFunctions& gl, Scene3d& scene, const PaintContext& pass,
                                           Scene3d::ItemFilter filter)
{
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glViewport(0, 0, size.width(), size.height());
    gl.glClearDepth(1.0);
    gl.glClear(GL_DEPTH_BUFFER_BIT);
    gl.glEnable(GL_DEPTH_TEST);
    // The offset, which lets edges win over their faces, would move the faces of a map away from the eye.
    gl.glDisable(GL_POLYGON_OFFSET_FILL);
    scene.drawElements(pass, nullptr, ViewCulling(scene).filter(pass, std::move(filter)));
    gl.glEnable(GL_POLYGON_OFFSET_FILL);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

void SceneDepthMapGenerator::Private::readDepths(OpenGLFunctions& gl, QImage& image) const
{
    gl.glBindTexture(GL_TEXTURE_2D, depthTexture);
    gl.glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, image.bits());
    gl.glBindTexture(GL_TEXTURE_2D, 0);
}

SceneDepthMapGenerator::SceneDepthMapGenerator(const QSize& size)
    : m_private(std::make_unique<Private>(size))
{
    m_private->create();
}

SceneDepthMapGenerator::~SceneDepthMapGenerator() = default;

QImage SceneDepthMapGenerator::generate(const std::vector<Drawable3dItem*>& items,
                                        const glm::dmat4& modelView, const glm::dmat4& projection)
{
    Scene3d* scene = nullptr;
    std::unordered_set<const Drawable3dItem*> chosen;
    for (const Drawable3dItem* item : items) {
        if (!item || !item->scene()) continue;
        if (!scene) scene = item->scene();
        chosen.insert(item);
    }
    if (chosen.empty() || m_private->size.isEmpty()) return {};
    const CurrentContextGuard callers;
    OpenGLFunctions* gl =
        m_private->context.makeCurrent(&m_private->surface) ? currentGLFunctions() : nullptr;
    QImage image(m_private->size, QImage::Format_ARGB32_Premultiplied);
    if (!gl || image.isNull()) return {};

    PaintContext pass;
    pass.setViewport(QRect(QPoint(0, 0), m_private->size));
    pass.view = glm::mat4(modelView);
    pass.projection = glm::mat4(projection);
    pass.vertexArray = m_private->vertexArray;
    pass.scene = scene;
    pass.depthOnly = true;
    m_private->draw(*gl, *scene, pass,
                    [&chosen](Drawable3dItem* item) { return item && chosen.count(item) != 0; });
    m_private->readDepths(*gl, image);
    depthsToDistances(reinterpret_cast<float*>(image.bits()), m_private->size, projection);
    return std::move(image).mirrored();
}
