#include "tests/support/GlObjects.h"
#include "tests/support/LogTrap.h"
#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"
#include "tests/support/VertexItem.h"

#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <framework/model/CProject.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>

// When the programs of the default drawers are built: compiling them takes most of a scene's start.

namespace {

/// Leaves a uniform of the pass's program at another value.
class LeavingItem : public VertexItem
{
public:
    explicit LeavingItem(bool promises)
        : VertexItem(GL_TRIANGLES, {{-1, -1, 0}, {3, -1, 0}, {-1, 3, 0}}, QColor(10, 200, 30))
    {
        setUntextured(promises);
        setShowsItemColors(promises);
        setSolid(promises);
    }
    float found = -1.0f; ///< the value when it was drawn last

protected:
    void draw(const PaintContext& context) override
    {
        OpenGLFunctions& functions = *currentGLFunctions();
        const int location = context.program->uniformLocation("pen_width");
        functions.glGetUniformfv(context.program->programId(), location, &found);
        functions.glUniform1f(location, 7.0f);
        VertexItem::draw(context);
    }
};

class DefaultProgramsTest : public SceneTest
{
protected:
    int programCount() const { return GlObjects::count(*gl).programs; }
    int stageCount() const { return GlObjects::count(*gl).shaders; }
    SequentialItem3dDrawer& drawer(int type) const
    {
        return dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(type));
    }
    /// Adds an item that draws over all of the picture. What promises a colour of its own is drawn by a
    /// variant of the program, anything else by the program itself.
    std::unique_ptr<LeavingItem> triangle(Item3dDrawer& drawnBy, bool promises = true)
    {
        auto item = std::make_unique<LeavingItem>(promises);
        item->setDrawer(&drawnBy);
        return item;
    }
    /// Another scene in place of the fixture's.
    void makeScene()
    {
        debug.reset();
        scene = std::make_unique<Scene3d>(project->getModel(), nullptr);
        debug = std::make_unique<GlDebug>(scene->getContext());
        gl = scene->getGLFunctions();
    }
    QColor middle(const QImage& image) const { return image.pixelColor(4, 4); }
};

TEST_F(DefaultProgramsTest, ANewSceneHasBuiltNone)
{
    const int programs = programCount(), stages = stageCount();
    Scene3d other(project->getModel(), nullptr);
    EXPECT_EQ(programCount(), programs);
    EXPECT_EQ(stageCount(), stages);
}

TEST_F(DefaultProgramsTest, AFrameBuildsOneForEachDrawerThatHasItems)
{
    const int programs = programCount(), stages = stageCount();
    drawFrame(paintContext(8, 8));
    EXPECT_EQ(programCount(), programs) << "there is nothing to draw";
    const auto item = triangle(drawer(DrawerType::Mono));
    EXPECT_EQ(middle(drawFrame(paintContext(8, 8))), QColor(10, 200, 30));
    EXPECT_EQ(programCount(), programs + 1);
    EXPECT_EQ(stageCount(), stages + 2);
    const auto other = triangle(drawer(DrawerType::VertexColor));
    drawFrame(paintContext(8, 8));
    drawFrame(paintContext(8, 8));
    EXPECT_EQ(programCount(), programs + 2);
    EXPECT_EQ(stageCount(), stages + 4);
}

TEST_F(DefaultProgramsTest, APassBuildsTheVariantThatItTakesAndNoMore)
{
    const auto item = triangle(drawer(DrawerType::Mono));
    for (const int mode : {1, 2, 3}) {
        const int programs = programCount();
        PaintContext context = paintContext(8, 8);
        context.drawMode = mode;
        scene->drawElements(context, nullptr, {});
        EXPECT_EQ(programCount(), programs + (mode == 2 ? 0 : 1)) << mode; // all masks are drawn by one
    }
}

TEST_F(DefaultProgramsTest, AskingForOneBuildsIt)
{
    const int programs = programCount();
    scene->doneCurrent();
    QOpenGLShaderProgram* program = drawer(DrawerType::Mesh).getDefaultProgram();
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr) << "the caller's is current afterwards";
    scene->makeCurrent();
    EXPECT_EQ(programCount(), programs + 1);
    EXPECT_TRUE(program->isLinked());
    EXPECT_EQ(program->shaders().size(), 2);
    EXPECT_GE(program->uniformLocation("model"), 0);
    EXPECT_EQ(drawer(DrawerType::Mesh).getDefaultProgram(), program);
    EXPECT_EQ(programCount(), programs + 1);
}

TEST_F(DefaultProgramsTest, DrawersThatShareOneBuildItOnce)
{
    scene->addDrawer(1, DrawerType::Mono);
    scene->addDrawer(
        2, DrawerType::Mono,
        std::make_unique<BatchedItem3dDrawer>(scene.get(), drawer(DrawerType::Mono).getProgramToShare()));
    const int programs = programCount();
    QOpenGLShaderProgram* program = drawer(DrawerType::Mono).getProgramToShare();
    for (const int type : {1, 2})
        EXPECT_EQ(dynamic_cast<SequentialItem3dDrawer&>(*scene->getDrawer(type, DrawerType::Mono))
                      .getProgramToShare(),
                  program);
    EXPECT_EQ(programCount(), programs);
    EXPECT_EQ(drawer(DrawerType::Mono).getDefaultProgram(), program);
    EXPECT_EQ(
        dynamic_cast<SequentialItem3dDrawer&>(*scene->getDrawer(1, DrawerType::Mono)).getDefaultProgram(),
        program);
    EXPECT_EQ(programCount(), programs + 1);
}

// A window that draws the first frame has them built with its own context, which goes with it.
TEST_F(DefaultProgramsTest, TheyOutliveTheContextThatBuiltThem)
{
    const auto item = triangle(drawer(DrawerType::Mono));
    scene->addDrawer(1, DrawerType::Mono);
    const auto other = triangle(*scene->getDrawer(1, DrawerType::Mono), false);
    const int programs = programCount();
    {
        QOffscreenSurface surface;
        surface.setFormat(scene->getContext().format());
        surface.create();
        QOpenGLContext window;
        window.setFormat(scene->getContext().format());
        window.setShareContext(&scene->getContext());
        ASSERT_TRUE(window.create());
        ASSERT_TRUE(window.makeCurrent(&surface));
        OpenGLFunctions& functions = *currentGLFunctions();
        Scene3d::initializeGLCommon(&functions);
        unsigned int vertexArray = 0;
        functions.glGenVertexArrays(1, &vertexArray);
        PaintContext context = paintContext(8, 8);
        context.vertexArray = vertexArray;
        RenderTarget target(functions, QSize(8, 8));
        target.bind();
        target.clear(QColor(0, 0, 0));
        scene->drawFrame(context, nullptr, {});
        EXPECT_EQ(QOpenGLContext::currentContext(), &window);
        EXPECT_EQ(middle(target.image()), QColor(10, 200, 30));
        functions.glDeleteVertexArrays(1, &vertexArray);
    }
    scene->makeCurrent();
    EXPECT_EQ(programCount(), programs + 2) << "one item's variant, the other's program";
    EXPECT_EQ(middle(drawFrame(paintContext(8, 8))), QColor(10, 200, 30));
    EXPECT_TRUE(drawer(DrawerType::Mono).getDefaultProgram()->isLinked());
    EXPECT_EQ(programCount(), programs + 2);
}

TEST_F(DefaultProgramsTest, LinkingOneBuildsIt)
{
    QOpenGLShaderProgram* program = drawer(DrawerType::Texture).getProgramToShare();
    scene->doneCurrent();
    EXPECT_FALSE(program->link()) << "there is nothing to build it with";
    scene->makeCurrent();
    EXPECT_FALSE(program->isLinked());
    EXPECT_TRUE(program->link());
    const int programs = programCount();
    EXPECT_TRUE(program->link()) << "again, as any program";
    EXPECT_GE(program->uniformLocation("projection"), 0);
    EXPECT_EQ(programCount(), programs);
}

TEST_F(DefaultProgramsTest, WhatAPassLeavesInAVariantDoesNotStay)
{
    const auto item = triangle(drawer(DrawerType::Mono));
    drawFrame(paintContext(8, 8));
    const float first = item->found;
    EXPECT_NE(first, 7.0f);
    drawFrame(paintContext(8, 8));
    EXPECT_EQ(item->found, first);
    EXPECT_NE(item->lastContext.program, drawer(DrawerType::Mono).getProgramToShare());
    // Once the program is there its values are those of its variants.
    QOpenGLShaderProgram* program = drawer(DrawerType::Mono).getDefaultProgram();
    ASSERT_TRUE(program->bind());
    program->setUniformValue("pen_width", 5.0f);
    drawFrame(paintContext(8, 8));
    drawFrame(paintContext(8, 8));
    EXPECT_EQ(item->found, 5.0f);
}

TEST_F(DefaultProgramsTest, TheFirstItemThatNeedsItBuildsTheProgramItself)
{
    const auto item = triangle(drawer(DrawerType::Mono));
    drawFrame(paintContext(8, 8));
    const int programs = programCount();
    const auto other = triangle(drawer(DrawerType::Mono), false);
    EXPECT_EQ(middle(drawFrame(paintContext(8, 8))), QColor(10, 200, 30));
    EXPECT_EQ(programCount(), programs + 1);
    EXPECT_EQ(other->lastContext.program, drawer(DrawerType::Mono).getDefaultProgram());
    EXPECT_TRUE(other->lastContext.program->isLinked());
}

/// Has one of the sources read otherwise, for scenes that are made meanwhile.
class ChangedSource
{
public:
    ChangedSource(const QString& name, const QByteArray& from, const QByteArray& to)
        : m_before(QDir::searchPaths(QStringLiteral("shader")))
    {
        QFile source(QStringLiteral("shader:Viewer3dModule/") + name);
        EXPECT_TRUE(source.open(QIODevice::ReadOnly));
        QByteArray text = source.readAll();
        EXPECT_TRUE(text.contains(from));
        text.replace(from, to);
        EXPECT_TRUE(QDir(m_folder.path()).mkdir(QStringLiteral("Viewer3dModule")));
        QFile changed(m_folder.filePath(QStringLiteral("Viewer3dModule/") + name));
        EXPECT_TRUE(changed.open(QIODevice::WriteOnly));
        changed.write(text);
        QDir::setSearchPaths(QStringLiteral("shader"), QStringList(m_folder.path()) + m_before);
    }
    ~ChangedSource() { QDir::setSearchPaths(QStringLiteral("shader"), m_before); }

private:
    QTemporaryDir m_folder;
    QStringList m_before;
};

TEST_F(DefaultProgramsTest, OneThatDoesNotCompileIsLoggedOnceWhenItIsFirstNeeded)
{
    const ChangedSource broken(QStringLiteral("mono.fragment.glsl"), "void main()", "void main() nonsense");
    makeScene();
    EXPECT_TRUE(LogTrap::take().isEmpty());
    const auto item = triangle(drawer(DrawerType::Mono));
    EXPECT_EQ(middle(drawFrame(paintContext(8, 8))), QColor(Qt::black));
    debug->take(); // the driver's own words on it
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 2) << lines.join('\n').toStdString();
    EXPECT_EQ(lines[0], "shader:Viewer3dModule/mono.fragment.glsl: program compile error");
    EXPECT_TRUE(lines[1].contains("syntax error")) << lines[1].toStdString();
    EXPECT_FALSE(drawer(DrawerType::Mono).getDefaultProgram()->isLinked());
    PaintContext masks = paintContext(8, 8);
    masks.drawMode = 1;
    drawFrame(paintContext(8, 8));
    drawFrame(masks);
    EXPECT_TRUE(LogTrap::take().isEmpty());
}

TEST_F(DefaultProgramsTest, WhereAVariantDoesNotCompileTheProgramDraws)
{
    const ChangedSource broken(QStringLiteral("mono.fragment.glsl"), "void main()",
                               "#ifndef RX_COLORS_ONLY\nnonsense\n#endif\nvoid main()");
    makeScene();
    const auto item = triangle(drawer(DrawerType::Mono));
    EXPECT_EQ(middle(drawFrame(paintContext(8, 8))), QColor(10, 200, 30));
    EXPECT_TRUE(LogTrap::take().isEmpty());
    PaintContext masks = paintContext(8, 8);
    masks.drawMode = 1;
    drawFrame(masks);
    drawFrame(masks);
    debug->take();
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 3) << lines.join('\n').toStdString();
    EXPECT_EQ(lines[0], "shader:Viewer3dModule/mono.fragment.glsl: program compile error");
    EXPECT_TRUE(lines[1].contains("syntax error")) << lines[1].toStdString();
    EXPECT_EQ(lines[2], "shader:Viewer3dModule/common.vertex.glsl and others: drawn without masks");
}

} // namespace
