#pragma once

#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"
#include "tests/support/VertexItem.h"

#include <Viewer3dModule/drawers/DrawerType.h>

#include <QtCore/QSize>
#include <QtGui/QColor>

#include <string>
#include <vector>

/// Triangles of one colour, relative to an origin in model coordinates.
class SolidElement : public TestElement
{
public:
    SolidElement(int elementType, std::vector<glm::vec3> corners, const QColor& solidColor,
                 const glm::dvec3& solidOrigin)
        : TestElement(elementType)
        , vertices(std::move(corners))
        , color(solidColor)
        , origin(solidOrigin)
    {
        box.reset();
        for (const glm::vec3& vertex : vertices)
            box.unite(origin + glm::dvec3(vertex));
    }

    std::vector<glm::vec3> vertices;
    QColor color;
    glm::dvec3 origin;
};

/// The item of a SolidElement. It notes which context and vertex array it was drawn with.
class SolidItem : public TestGraphicsItem
{
public:
    explicit SolidItem(SolidElement* element);

    void updateDataImpl() override;
    /// Whether the last draw's vertex array was one of the context that was current.
    bool hadVertexArray = false;
    QOpenGLContext* lastQtContext = nullptr;
    PaintContext lastContext;
    std::function<void()> onDraw; ///< called before each draw

protected:
    using TestGraphicsItem::draw;
    void draw(const PaintContext& context) override;

private:
    VertexItem m_triangles;
    glm::dvec3 m_origin;
};

/// A test with solids: elements of the project whose items draw them. Their order of drawing is that of their
/// visibility types, First to Last.
class SolidsTest : public SceneTest
{
protected:
    static constexpr int First = TestElement::Type;
    static constexpr int Last = First + 3;

    void SetUp() override;

    SolidItem* add(std::vector<glm::vec3> triangles, const QColor& color = Qt::white, int type = First,
                   const glm::dvec3& origin = glm::dvec3(0.0));
    /// Scene to eye coordinates of a camera that is given in model coordinates.
    static glm::dmat4 viewToScene(Scene3d& scene, const glm::dvec3& eye, const glm::dvec3& target,
                                  const glm::dvec3& up);
    /// Scene units a model unit.
    double sceneScale() const;
};

/// A program of a full-screen triangle with the given fragment stage (after the #version line).
class FullScreen
{
public:
    explicit FullScreen(const std::string& fragment);
    ~FullScreen();
    FullScreen(const FullScreen&) = delete;
    FullScreen& operator=(const FullScreen&) = delete;
    /// Draws with the vertex array, which is of the context that is current.
    void draw(unsigned int vertexArray);

private:
    std::unique_ptr<QOpenGLShaderProgram> m_program;
};
