#include "tests/support/ImageCheck.h"
#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"
#include "tests/support/VertexItem.h"

#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <Viewer3dModule/drawers/ContextualItem3dDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>

#include <glm/gtc/matrix_transform.hpp>

namespace {

class SequentialItem3dDrawerTest : public SceneTest
{
protected:
    std::unique_ptr<VertexItem> item(GLenum mode, std::vector<glm::vec3> vertices,
                                     const QColor& color = Qt::white)
    {
        auto made = std::make_unique<VertexItem>(mode, std::move(vertices), color);
        made->setDrawer(&mono());
        return made;
    }
    SequentialItem3dDrawer& mono()
    {
        return dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::Mono));
    }
    /// What the mono drawer draws masks with.
    QOpenGLShaderProgram& programOfMasks()
    {
        ProgramVariant variant;
        variant.drawsMasks = true;
        return findProgramVariant(*mono().getDefaultProgram(), variant);
    }
    template <typename Value>
    Value uniform(QOpenGLShaderProgram* program, const char* name)
    {
        Value value{};
        if constexpr (std::is_same_v<Value, glm::uvec2>)
            gl->glGetUniformuiv(program->programId(), static_cast<GLuint>(program->uniformLocation(name)),
                                &value.x);
        else if constexpr (std::is_same_v<Value, unsigned>)
            gl->glGetUniformuiv(program->programId(), program->uniformLocation(name), &value);
        else if constexpr (std::is_same_v<Value, int>)
            gl->glGetUniformiv(program->programId(), program->uniformLocation(name), &value);
        else
            gl->glGetUniformfv(program->programId(), program->uniformLocation(name), &value[0][0]);
        return value;
    }
};

TEST_F(SequentialItem3dDrawerTest, DrawsItemsAtTheirPlacesInTheirColours)
{
    const auto left = item(GL_TRIANGLES, squareVertices(0, 0, 0.5f, 1), QColor(200, 10, 20));
    const auto right = item(GL_TRIANGLES, squareVertices(0, 0, 0.5f, 1), QColor(30, 220, 40));
    left->setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(-1, 0, 0)), false);
    const QImage image = drawFrame(paintContext(8, 8));
    EXPECT_EQ(image.pixelColor(0, 0), QColor(200, 10, 20));
    EXPECT_EQ(image.pixelColor(1, 3), QColor(200, 10, 20));
    EXPECT_EQ(image.pixelColor(2, 0), QColor(0, 0, 0));
    EXPECT_EQ(image.pixelColor(4, 0), QColor(30, 220, 40));
    EXPECT_EQ(image.pixelColor(4, 4), QColor(0, 0, 0));
    EXPECT_EQ(countPixels(image, QColor(200, 10, 20)), 8);
    EXPECT_EQ(countPixels(image, QColor(30, 220, 40)), 8);
}

TEST_F(SequentialItem3dDrawerTest, AnEmptyRegistryBindsNoProgram)
{
    gl->glUseProgram(0);
    mono().draw(paintContext(4, 4), {});
    GLint program = -1;
    gl->glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    EXPECT_EQ(program, 0);
}

TEST_F(SequentialItem3dDrawerTest, HiddenAndFilteredItemsAreNotDrawn)
{
    const auto hidden = item(GL_POINTS, {glm::vec3(0)});
    const auto filtered = item(GL_POINTS, {glm::vec3(0)});
    const auto drawn = item(GL_POINTS, {glm::vec3(0)});
    hidden->setVisible(false);
    mono().draw(paintContext(4, 4), [&](Drawable3dItem* other) { return other != filtered.get(); });
    EXPECT_EQ(hidden->draws, 0);
    EXPECT_EQ(filtered->draws, 0);
    EXPECT_EQ(drawn->draws, 1);
}

TEST_F(SequentialItem3dDrawerTest, HiddenAndFilteredItemsGetNoUniforms)
{
    const auto drawn = item(GL_POINTS, {glm::vec3(0)});
    const auto hidden = item(GL_POINTS, {glm::vec3(0)});
    const auto filtered = item(GL_POINTS, {glm::vec3(0)});
    hidden->setVisible(false);
    hidden->highlighted = true;
    filtered->highlighted = true;
    mono().draw(paintContext(4, 4), [&](Drawable3dItem* other) { return other != filtered.get(); });
    EXPECT_EQ(uniform<int>(mono().getDefaultProgram(), "item_flags"), -1);
}

TEST_F(SequentialItem3dDrawerTest, AnElementsItemIsKnownByItsIdentifierLowWordFirst)
{
    class Numbered : public TestGraphicsItem
    {
    public:
        using TestGraphicsItem::TestGraphicsItem;
        LONGID getId() const override { return 0x0123456789ABCDEF; }
    };
    TestElement element;
    auto* numbered = new Numbered(&element);
    scene->addElement(numbered);
    PaintContext context = paintContext(4, 4);
    context.drawMode = 1;
    numbered->getDrawer()->draw(context, {});
    EXPECT_EQ(uniform<glm::uvec2>(&programOfMasks(), "item_id"), glm::uvec2(0x89ABCDEF, 0x01234567));
}

TEST_F(SequentialItem3dDrawerTest, TheGlueMaskGoesToGlueMaskPassesOnly)
{
    const char* vertex =
        "#version 430 core\nuniform uint glue_mask = 7u; uniform mat4 viewport;"
        "uniform mat4 viewport_inverted;"
        "void main() { gl_Position = viewport * viewport_inverted * vec4(float(glue_mask)); }";
    const char* fragment = "#version 430 core\nout vec4 color; void main() { color = vec4(1); }";
    QOpenGLShaderProgram program;
    program.addShaderFromSourceCode(QOpenGLShader::Vertex, vertex);
    program.addShaderFromSourceCode(QOpenGLShader::Fragment, fragment);
    ASSERT_TRUE(program.link());
    const auto own = item(GL_POINTS, {glm::vec3(0)});
    own->glueMask = 0xF0000001u;
    PaintContext context = paintContext(40, 20);
    context.program = &program;
    mono().draw(context, {});
    EXPECT_EQ(uniform<unsigned>(&program, "glue_mask"), 7u);
    context.drawMode = 2;
    mono().draw(context, {});
    EXPECT_EQ(uniform<unsigned>(&program, "glue_mask"), 0xF0000001u);
    // The viewport matrix and its inverse reach every program that has them.
    const auto viewport = uniform<glm::mat4>(&program, "viewport");
    EXPECT_EQ(viewport * glm::vec4(1, -1, 0, 1), glm::vec4(40, 20, 0, 1));
    const glm::vec4 corner = uniform<glm::mat4>(&program, "viewport_inverted") * glm::vec4(40, 20, 0, 1);
    EXPECT_NEAR(corner.x, 1.0f, 1e-6f);
    EXPECT_NEAR(corner.y, -1.0f, 1e-6f);
}

TEST_F(SequentialItem3dDrawerTest, DashesPutTheProvokingVertexBack)
{
    auto& dashed = dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::DashedLines));
    class ConventionReader : public VertexItem
    {
    public:
        using VertexItem::VertexItem;
        GLint convention = 0;

    protected:
        void draw(const PaintContext&) override
        {
            getGLFunctions()->glGetIntegerv(GL_PROVOKING_VERTEX, &convention);
        }
    };
    ConventionReader own(GL_LINES, {glm::vec3(0), glm::vec3(1)});
    own.setDrawer(&dashed);
    dashed.draw(paintContext(4, 4), {});
    EXPECT_EQ(own.convention, GL_FIRST_VERTEX_CONVENTION);
    GLint after = 0;
    gl->glGetIntegerv(GL_PROVOKING_VERTEX, &after);
    EXPECT_EQ(after, GL_LAST_VERTEX_CONVENTION);
}

TEST_F(SequentialItem3dDrawerTest, ItemsReceiveTheDrawerAndItsProgram)
{
    const auto own = item(GL_POINTS, {glm::vec3(0)});
    PaintContext context = paintContext(4, 4);
    int mark = 0;
    context.extra1 = &mark;
    context.passFlags = 5;
    mono().draw(context, {});
    EXPECT_EQ(own->lastContext.drawer, &mono());
    EXPECT_EQ(own->lastContext.program, mono().getDefaultProgram());
    EXPECT_EQ(own->lastContext.extra1, &mark);
    EXPECT_EQ(own->lastContext.passFlags, 5);
    EXPECT_EQ(own->lastContext.primitives, 7);
    EXPECT_EQ(&*ContextualItem3dDrawer::fromContext(own->lastContext), &mono());
}

TEST_F(SequentialItem3dDrawerTest, AProgramOfTheContextIsUsedInstead)
{
    const auto own = item(GL_POINTS, {glm::vec3(0)});
    PaintContext context = paintContext(4, 4);
    auto& wide = dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::VertexColor));
    context.program = wide.getDefaultProgram();
    mono().draw(context, {});
    EXPECT_EQ(own->lastContext.program, wide.getDefaultProgram());
}

TEST_F(SequentialItem3dDrawerTest, TheProgramSaysWhichPrimitivesItTakes)
{
    auto& wide = dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::WideLines));
    VertexItem own(GL_LINES, {glm::vec3(0), glm::vec3(1)});
    own.setDrawer(&wide);
    wide.draw(paintContext(4, 4), {});
    EXPECT_EQ(own.lastContext.primitives, 2);
}

TEST_F(SequentialItem3dDrawerTest, SetsMatricesOfThePassAndTheItem)
{
    auto& mesh = dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::Mesh));
    VertexItem own(GL_POINTS, {glm::vec3(0)});
    own.setDrawer(&mesh);
    const glm::mat4 model =
        glm::rotate(glm::translate(glm::mat4(1.0f), glm::vec3(1, 2, 3)), 0.3f, glm::vec3(0, 1, 0)) *
        glm::scale(glm::mat4(1.0f), glm::vec3(2, 3, 4));
    own.setTransform(model, false);
    PaintContext context = paintContext(100, 50);
    context.view = glm::rotate(glm::mat4(1.0f), 0.7f, glm::vec3(1, 0, 0));
    context.projection = glm::ortho(-5.0f, 5.0f, -5.0f, 5.0f, -20.0f, 20.0f);

    // The values while the item draws: read them from inside.
    glm::mat4 seenModel(0.0f);
    glm::mat3 seenNormal(0.0f);
    class Reader : public VertexItem
    {
    public:
        using VertexItem::VertexItem;
        std::function<void(const PaintContext&)> read;

    protected:
        void draw(const PaintContext& paint) override { read(paint); }
    };
    Reader reader(GL_POINTS, {glm::vec3(0)});
    reader.setDrawer(&mesh);
    reader.setTransform(model, false);
    reader.read = [&](const PaintContext& paint) {
        seenModel = uniform<glm::mat4>(paint.program, "model");
        seenNormal = uniform<glm::mat3>(paint.program, "normalMatrix");
    };
    mesh.draw(context, {});
    EXPECT_EQ(seenModel, model);
    const glm::dmat3 expected =
        glm::transpose(glm::inverse(glm::dmat3(glm::dmat4(context.view) * glm::dmat4(model))));
    for (int column = 0; column < 3; ++column)
        for (int row = 0; row < 3; ++row)
            EXPECT_NEAR(seenNormal[column][row], expected[column][row], 1e-5);
    QOpenGLShaderProgram* program = mesh.getDefaultProgram();
    EXPECT_EQ(uniform<glm::mat4>(program, "view"), context.view);
    EXPECT_EQ(uniform<glm::mat4>(program, "projection"), context.projection);
    EXPECT_EQ(mesh.getTransform(), glm::mat4(1.0f)) << "the drawer's matrix is back after the pass";
}

TEST_F(SequentialItem3dDrawerTest, SetsIdAndHighlightOfEachItem)
{
    const auto own = item(GL_POINTS, {glm::vec3(0)});
    PaintContext context = paintContext(4, 4);
    context.drawMode = 1;
    QOpenGLShaderProgram* program = &programOfMasks();
    ASSERT_GE(program->uniformLocation("item_id"), 0);
    mono().draw(context, {});
    EXPECT_EQ(own->lastContext.program, program);
    EXPECT_EQ(uniform<int>(program, "item_flags"), -1);
    EXPECT_EQ(uniform<int>(program, "draw_mode"), 1);
    const auto address =
        static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(static_cast<Drawable3dItem*>(own.get())));
    EXPECT_EQ(uniform<glm::uvec2>(program, "item_id"), glm::uvec2(address & 0xFFFFFFFFu, address >> 32))
        << "an item without an element is known by its address";
    own->highlighted = true;
    mono().draw(context, {});
    EXPECT_EQ(uniform<int>(program, "item_flags"), -2);
}

TEST_F(SequentialItem3dDrawerTest, HighlightedItemsShowTheSelectionColour)
{
    const auto own = item(GL_TRIANGLES, squareVertices(-1, -1, 1, 1), QColor(10, 20, 30));
    own->highlighted = true;
    const QImage image = drawFrame(paintContext(4, 4));
    EXPECT_EQ(countPixels(image, QColor(Qt::yellow)), 16) << "yellow without registered view settings";
}

// --- geometry capture
// ------------------------------------------------------------------------------------------------

std::vector<glm::vec4> readBuffer(OpenGLFunctions& gl, unsigned buffer, std::size_t count)
{
    std::vector<glm::vec4> vertices(count);
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer);
    GLint size = 0;
    gl.glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
    EXPECT_EQ(static_cast<std::size_t>(size), count * sizeof(glm::vec4));
    gl.glGetBufferSubData(GL_ARRAY_BUFFER, 0, size, vertices.data());
    gl.glDeleteBuffers(1, &buffer);
    return vertices;
}

TEST_F(SequentialItem3dDrawerTest, CapturesTrianglesInSceneCoordinates)
{
    const std::vector<glm::vec3> vertices = squareVertices(-3, 1, 200, 5, 0.25f);
    const auto own = item(GL_TRIANGLES, vertices);
    const glm::mat4 model =
        glm::rotate(glm::translate(glm::mat4(1.0f), glm::vec3(100, -20, 3)), 0.4f, glm::vec3(1, 2, 3)) *
        glm::scale(glm::mat4(1.0f), glm::vec3(1.5f));
    own->setTransform(model, false);
    const auto [points, lines, triangles] = scene->generateItemGeometry(own.get());
    EXPECT_EQ(points, 0u);
    EXPECT_EQ(lines, 0u);
    ASSERT_NE(triangles, 0u);
    const std::vector<glm::vec4> captured = readBuffer(*gl, triangles, vertices.size());
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const glm::dvec4 expected = glm::dmat4(model) * glm::dvec4(vertices[i], 1.0);
        for (int axis = 0; axis < 4; ++axis)
            EXPECT_NEAR(captured[i][axis], expected[axis], 4e-5) << "three steps of a float at 300";
    }
    EXPECT_FALSE(gl->glIsEnabled(GL_RASTERIZER_DISCARD));
}

TEST_F(SequentialItem3dDrawerTest, CapturesPointsAndLines)
{
    const auto points = item(GL_POINTS, {glm::vec3(1, 2, 3), glm::vec3(4, 5, 6)});
    const auto lines = item(GL_LINES, {glm::vec3(1, 0, 0), glm::vec3(2, 0, 0)});
    const auto pointTuple = scene->generateItemGeometry(points.get());
    EXPECT_EQ(readBuffer(*gl, std::get<0>(pointTuple), 2),
              (std::vector<glm::vec4>{glm::vec4(1, 2, 3, 1), glm::vec4(4, 5, 6, 1)}));
    const auto lineTuple = scene->generateItemGeometry(lines.get());
    EXPECT_EQ(std::get<0>(lineTuple), 0u);
    EXPECT_EQ(readBuffer(*gl, std::get<1>(lineTuple), 2),
              (std::vector<glm::vec4>{glm::vec4(1, 0, 0, 1), glm::vec4(2, 0, 0, 1)}));
    EXPECT_EQ(points->draws, 1);
    EXPECT_EQ(lines->draws, 1) << "only the item that is asked for is drawn";
}

TEST_F(SequentialItem3dDrawerTest, WhatAnItemReportsButDoesNotDrawReadsAsZeros)
{
    class Boaster : public VertexItem
    {
    public:
        using VertexItem::VertexItem;
        GeometryInfo getGeometryInfo() override { return {4, 0, 0}; }
    };
    Boaster own(GL_POINTS, {glm::vec3(7, 8, 9)});
    own.setDrawer(&mono());
    const auto tuple = scene->generateItemGeometry(&own);
    EXPECT_EQ(readBuffer(*gl, std::get<0>(tuple), 4),
              (std::vector<glm::vec4>{glm::vec4(7, 8, 9, 1), glm::vec4(0), glm::vec4(0), glm::vec4(0)}));
}

TEST_F(SequentialItem3dDrawerTest, AHiddenItemCapturesZeros)
{
    const auto own = item(GL_POINTS, {glm::vec3(7, 8, 9)});
    own->setVisible(false);
    const auto tuple = scene->generateItemGeometry(own.get());
    EXPECT_EQ(readBuffer(*gl, std::get<0>(tuple), 1), (std::vector<glm::vec4>{glm::vec4(0)}));
    EXPECT_EQ(own->draws, 0);
}

TEST_F(SequentialItem3dDrawerTest, AnItemOfACompositeIsCapturedThroughItsStages)
{
    CompositeDrawer composite(scene.get());
    composite.addStage(1, DrawerType::Mono);
    VertexItem own(GL_POINTS, {glm::vec3(7, 8, 9)});
    VertexItem other(GL_POINTS, {glm::vec3(0)});
    own.setDrawer(&composite);
    other.setDrawer(&composite);
    const auto tuple = scene->generateItemGeometry(&own);
    EXPECT_EQ(readBuffer(*gl, std::get<0>(tuple), 1), (std::vector<glm::vec4>{glm::vec4(7, 8, 9, 1)}));
    EXPECT_EQ(other.draws, 0);
}

TEST_F(SequentialItem3dDrawerTest, TheCaptureProgramIsBuiltOnce)
{
    const auto programs = [&] { return scene->findChildren<QOpenGLShaderProgram*>().size(); };
    const auto own = item(GL_POINTS, {glm::vec3(0)});
    const auto capture = [&] {
        const unsigned buffer = std::get<0>(scene->generateItemGeometry(own.get()));
        gl->glDeleteBuffers(1, &buffer);
    };
    const auto before = programs();
    capture();
    EXPECT_EQ(programs(), before + 1);
    capture();
    EXPECT_EQ(programs(), before + 1);
}

TEST_F(SequentialItem3dDrawerTest, BuffersThatAnItemMakesAreTakenAtItsWord)
{
    class Maker : public VertexItem
    {
    public:
        using VertexItem::VertexItem;
        Geometry generateGeometry() override { return {0u, 4711u, 0u}; }
    };
    Maker own(GL_POINTS, {glm::vec3(0)});
    own.setDrawer(&mono());
    EXPECT_EQ(scene->generateItemGeometry(&own), std::make_tuple(0u, 4711u, 0u));
    EXPECT_EQ(own.draws, 0);
    EXPECT_EQ(scene->generateItemGeometry(nullptr), std::make_tuple(0u, 0u, 0u));
}

TEST_F(SequentialItem3dDrawerTest, CaptureUsesTheGeometryProgramWhateverTheContextCarries)
{
    const auto own = item(GL_POINTS, {glm::vec3(0)});
    QOpenGLShaderProgram* capture = scene->createProgram(
        {QStringLiteral("shader:Viewer3dModule/dummy.vertex.glsl")}, {}, {"gl_Position"});
    mono().setGeometryProgram(capture);
    unsigned buffer = 0;
    gl->glGenBuffers(1, &buffer);
    gl->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
    gl->glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, 16, nullptr, GL_DYNAMIC_DRAW);
    PaintContext context = paintContext(4, 4);
    context.drawMode = 4;
    context.primitives = 1;
    context.program = mono().getDefaultProgram();
    mono().draw(context, {});
    EXPECT_EQ(own->lastContext.program, capture);
    EXPECT_EQ(own->lastContext.primitives, 1);
    gl->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, 0);
    gl->glDeleteBuffers(1, &buffer);
}

TEST_F(SequentialItem3dDrawerTest, CaptureOfNoSingleKindEndsAFeedbackThatNothingBegan)
{
    const auto own = item(GL_POINTS, {glm::vec3(0)});
    PaintContext context = paintContext(4, 4);
    context.drawMode = 4;
    mono().draw(context, {});
    EXPECT_EQ(own->draws, 1);
    EXPECT_FALSE(gl->glIsEnabled(GL_RASTERIZER_DISCARD));
    EXPECT_EQ(gl->glGetError(), GLenum(GL_INVALID_OPERATION));
    EXPECT_EQ(debug->take().size(), 1);
}

// --- composite
// -------------------------------------------------------------------------------------------------------

TEST_F(SequentialItem3dDrawerTest, ACompositeRunsItsStagesOverOneRegistry)
{
    CompositeDrawer composite(scene.get());
    auto first = std::make_unique<TestDrawer>(scene.get());
    auto second = std::make_unique<TestDrawer>(scene.get());
    TestDrawer* one = first.get();
    TestDrawer* two = second.get();
    composite.addStage(1, std::move(first));
    composite.addStage(2, std::move(second));
    TestItem own;
    own.setDrawer(&composite);
    EXPECT_EQ(one->updates, (std::vector<int>{0})) << "an update of the composite reaches every stage";
    composite.draw(paintContext(4, 4), {});
    for (TestDrawer* stage : {one, two}) {
        EXPECT_EQ(stage->drawn, (std::vector<Drawable3dItem*>{&own}));
        EXPECT_EQ(stage->lastContext.drawer, &composite);
    }
    EXPECT_EQ(one->lastContext.stage, 1);
    EXPECT_EQ(two->lastContext.stage, 2);

    const std::unique_ptr<Item3dDrawer> clone = composite.clone();
    EXPECT_TRUE(clone->getItems().empty());
    TestItem other;
    other.setDrawer(clone.get());
    EXPECT_EQ(clone->getItems().size(), 1u);
    EXPECT_EQ(composite.getItems().size(), 1u);
}

TEST_F(SequentialItem3dDrawerTest, ACompositeStageByTypeIsACloneOfTheScenesDrawer)
{
    CompositeDrawer composite(scene.get());
    composite.addStage(3, DrawerType::Mono);
    VertexItem own(GL_TRIANGLES, squareVertices(-1, -1, 1, 1), Qt::red);
    own.setDrawer(&composite);
    composite.draw(paintContext(4, 4), {});
    EXPECT_EQ(own.lastContext.stage, 3);
    EXPECT_EQ(own.lastContext.program, mono().getDefaultProgram());
    EXPECT_TRUE(mono().getItems().empty());
}

} // namespace
