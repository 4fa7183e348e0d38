#include "SolidsTest.h"

#include <Viewer3dModule/host/CGraphics3dExtension.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <glm/gtc/matrix_transform.hpp>

SolidItem::SolidItem(SolidElement* element)
    : TestGraphicsItem(element)
    , m_triangles(GL_TRIANGLES, element->vertices, element->color)
    , m_origin(element->origin)
{
}

void SolidItem::updateDataImpl()
{
    TestGraphicsItem::updateDataImpl();
    setTransform(glm::mat4(glm::translate(scene()->modelToSceneTransform(), m_origin)), false);
}

void SolidItem::draw(const PaintContext& context)
{
    if (onDraw) onDraw();
    TestGraphicsItem::draw(context);
    lastContext = context;
    lastQtContext = QOpenGLContext::currentContext();
    m_triangles.drawElement(context);
    hadVertexArray = getGLFunctions()->glIsVertexArray(context.vertexArray) == GL_TRUE; // now bound once
}

namespace {

class Creator : public Graphics3dItemCreator
{
public:
    Graphics3dItem* create(CModelElement* element) override
    {
        return new SolidItem(static_cast<SolidElement*>(element));
    }
};

} // namespace

void SolidsTest::SetUp()
{
    SceneTest::SetUp();
    for (int type = First; type <= Last; ++type)
        CGraphics3dExtension::registerElementType(type, scene.get(), std::make_unique<Creator>());
}

SolidItem* SolidsTest::add(std::vector<glm::vec3> triangles, const QColor& color, int type,
                           const glm::dvec3& origin)
{
    auto element = std::make_unique<SolidElement>(type, std::move(triangles), color, origin);
    const CModelElement* added = project->getModel()->getCreateItemManager(type)->addItem(std::move(element));
    auto* item = dynamic_cast<SolidItem*>(scene->findGraphicsItem(added->getId()));
    scene->flushBounds();
    return item;
}

glm::dmat4 SolidsTest::viewToScene(Scene3d& scene, const glm::dvec3& eye, const glm::dvec3& target,
                                   const glm::dvec3& up)
{
    return glm::lookAt(scene.mapFromModel(eye), scene.mapFromModel(target), up);
}

double SolidsTest::sceneScale() const
{
    return scene->modelToSceneTransform()[0][0];
}

FullScreen::FullScreen(const std::string& fragment)
    : m_program(std::make_unique<QOpenGLShaderProgram>())
{
    m_program->addShaderFromSourceCode(QOpenGLShader::Vertex, R"(#version 430 core
void main()
{
    gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
})");
    m_program->addShaderFromSourceCode(QOpenGLShader::Fragment,
                                       QByteArray::fromStdString("#version 430 core\n" + fragment));
    EXPECT_TRUE(m_program->link()) << m_program->log().toStdString();
}

FullScreen::~FullScreen() = default;

void FullScreen::draw(unsigned int vertexArray)
{
    OpenGLFunctions& gl = *currentGLFunctions();
    m_program->bind();
    gl.glBindVertexArray(vertexArray);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    gl.glBindVertexArray(0);
    m_program->release();
}
