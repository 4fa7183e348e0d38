#include "tests/support/ImageCheck.h"
#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"
#include "tests/support/VertexItem.h"

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>

#include <glm/gtc/matrix_transform.hpp>

namespace {

class LightTest : public SceneTest
{
protected:
    void addSettings()
    {
        project->addProjectSettings(new COrdinaryItemCreator<Scene3dViewLightingSettings>, 4);
        settings = dynamic_cast<Scene3dViewLightingSettings*>(project->getProjectSettings(0x36FFCE00));
        ASSERT_NE(settings, nullptr);
    }
    SequentialItem3dDrawer& mesh()
    {
        return dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::Mesh));
    }
    glm::vec3 lightDirection()
    {
        glm::vec3 value(0.0f);
        QOpenGLShaderProgram* program = mesh().getDefaultProgram();
        gl->glGetUniformfv(program->programId(), program->uniformLocation("uLightDirection"), &value.x);
        return value;
    }
    int lightMode()
    {
        GLint value = -1;
        QOpenGLShaderProgram* program = mesh().getDefaultProgram();
        gl->glGetUniformiv(program->programId(), program->uniformLocation("uLightMode"), &value);
        return value;
    }
    void drawOnce(const std::string& view, const glm::mat4& viewMatrix = glm::mat4(1.0f))
    {
        VertexItem item(GL_POINTS, {glm::vec3(0)});
        item.setDrawer(&mesh());
        PaintContext context = paintContext(4, 4);
        context.viewName = view;
        context.view = viewMatrix;
        mesh().draw(context, {});
        EXPECT_EQ(item.draws, 1);
    }

    Scene3dViewLightingSettings* settings = nullptr;
};

void expectNear(const glm::vec3& actual, const glm::vec3& expected)
{
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(actual[axis], expected[axis], 1e-6f) << axis;
}

TEST_F(LightTest, WithoutSettingsTheProgramsOwnLightHolds)
{
    drawOnce("Main");
    expectNear(lightDirection(), glm::vec3(1, 1, 1));
    EXPECT_EQ(lightMode(), 1);
}

TEST_F(LightTest, TheViewsLightIsTurnedIntoEyeCoordinates)
{
    addSettings();
    drawOnce("Main");
    expectNear(lightDirection(), glm::vec3(0.5f, 0.5f, std::sqrt(0.5f)));
    // A quarter turn about x: y becomes z, z becomes -y.
    drawOnce("Main", glm::rotate(glm::mat4(1.0f), glm::half_pi<float>(), glm::vec3(1, 0, 0)));
    expectNear(lightDirection(), glm::vec3(0.5f, -std::sqrt(0.5f), 0.5f));
}

TEST_F(LightTest, TheScenesScaleLeavesTheLightAUnitVector)
{
    addSettings();
    scene->setModelToSceneTransform(glm::scale(glm::dmat4(1.0), glm::dvec3(250.0)));
    drawOnce("Main");
    expectNear(lightDirection(), glm::vec3(0.5f, 0.5f, std::sqrt(0.5f)));
}

TEST_F(LightTest, EachViewHasItsOwn)
{
    addSettings();
    settings->addView("Side", L"Side");
    settings->data("Side").azimuth = 0.0f;
    settings->data("Side").elevation = 0.0f;
    settings->data("Side").flag = false;
    drawOnce("Side");
    expectNear(lightDirection(), glm::vec3(0, 1, 0));
    EXPECT_EQ(lightMode(), 0);
    drawOnce("Main");
    EXPECT_EQ(lightMode(), 1);
}

class ModeReader : public VertexItem
{
public:
    using VertexItem::VertexItem;
    int mode = -1;

protected:
    void draw(const PaintContext& context) override
    {
        getGLFunctions()->glGetUniformiv(context.program->programId(),
                                         context.program->uniformLocation("uLightMode"), &mode);
    }
};

// Switches the light off for itself, as items without surfaces do.
class UnlitItem : public ModeReader
{
public:
    using ModeReader::ModeReader;

protected:
    void draw(const PaintContext& context) override
    {
        context.drawer->setShaderLightMode(false);
        ModeReader::draw(context);
    }
};

TEST_F(LightTest, AnItemThatSwitchesTheLightOffDoesSoForItselfOnly)
{
    for (const bool withSettings : {false, true}) {
        if (withSettings) addSettings();
        UnlitItem unlit(GL_POINTS, {glm::vec3(0)});
        ModeReader next(GL_POINTS, {glm::vec3(0)});
        unlit.setDrawer(&mesh());
        next.setDrawer(&mesh());
        mesh().draw(paintContext(4, 4), {});
        EXPECT_EQ(unlit.mode, 0);
        EXPECT_EQ(next.mode, 1);
    }
}

TEST_F(LightTest, AnItemCannotSwitchOnWhatTheViewHasSwitchedOff)
{
    addSettings();
    settings->data("").flag = false;
    class LitItem : public VertexItem
    {
    public:
        using VertexItem::VertexItem;

    protected:
        void draw(const PaintContext& context) override { context.drawer->setShaderLightMode(true); }
    };
    LitItem item(GL_POINTS, {glm::vec3(0)});
    item.setDrawer(&mesh());
    mesh().draw(paintContext(4, 4), {});
    EXPECT_EQ(lightMode(), 0);
}

TEST_F(LightTest, PenWidthGoesToTheProgram)
{
    class PenItem : public VertexItem
    {
    public:
        using VertexItem::VertexItem;

    protected:
        void draw(const PaintContext& context) override
        {
            context.drawer->setPenWidth(5.0f);
            VertexItem::draw(context);
        }
    };
    PenItem item(GL_POINTS, {glm::vec3(0)}, Qt::red);
    item.setDrawer(scene->getDefaultDrawer(DrawerType::Mono));
    const QImage image = drawFrame(paintContext(9, 9));
    EXPECT_EQ(countPixels(image, Qt::red), 25) << "a point of 5 x 5 pixels";
}

} // namespace
