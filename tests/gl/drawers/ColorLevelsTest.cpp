#include "tests/support/SceneTest.h"

#include <Viewer3dModule/drawers/Item3dDrawer.h>

#include <QtGui/QOpenGLShaderProgram>

namespace {

const char* const vertexSource = "#version 430 core\nvoid main() { gl_Position = vec4(0); }";
// Reads all of them, so that none is optimised away.
const char* const fragmentSource =
    "#version 430 core\n"
    "uniform vec4 colorLevels[160]; uniform float elevLevels[160];"
    "uniform int levelCount; uniform float levelStep;"
    "uniform bool levelStepDiscreteMode; out vec4 color;"
    "void main() { int i = int(gl_FragCoord.x) % 160; color = colorLevels[i] * elevLevels[i]"
    " + vec4(levelCount, levelStep, float(levelStepDiscreteMode), 1); }";

class ColorLevelsTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        program.addShaderFromSourceCode(QOpenGLShader::Vertex, vertexSource);
        program.addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentSource);
        ASSERT_TRUE(program.link());
    }
    int location(const QString& name) { return program.uniformLocation(name); }
    int integer(const char* name)
    {
        GLint value = -1;
        gl->glGetUniformiv(program.programId(), location(name), &value);
        return value;
    }
    float number(const QString& name)
    {
        float value = -1.0f;
        gl->glGetUniformfv(program.programId(), location(name), &value);
        return value;
    }
    glm::vec4 color(int index)
    {
        glm::vec4 value(-1.0f);
        gl->glGetUniformfv(program.programId(), location(QStringLiteral("colorLevels[%1]").arg(index)),
                           &value.x);
        return value;
    }

    QOpenGLShaderProgram program;
};

TEST_F(ColorLevelsTest, FillsOneColourAndHeightALevelInTheOrderGiven)
{
    Item3dDrawer::setColorLevels(&program, {{30.0, QColor(255, 0, 0, 0)}, {10.5, QColor(0, 0, 255)}}, 2.5f,
                                 true);
    EXPECT_EQ(integer("levelCount"), 2);
    EXPECT_EQ(integer("levelStepDiscreteMode"), 1);
    EXPECT_EQ(number("levelStep"), 2.5f);
    EXPECT_EQ(color(0), glm::vec4(1, 0, 0, 0));
    EXPECT_EQ(color(1), glm::vec4(0, 0, 1, 1));
    EXPECT_EQ(number("elevLevels[0]"), 30.0f);
    EXPECT_EQ(number("elevLevels[1]"), 10.5f);
}

TEST_F(ColorLevelsTest, TakesAtMost256Levels)
{
    const std::vector<std::pair<double, QColor>> levels(300, {1.0, QColor(0, 255, 0)});
    Item3dDrawer::setColorLevels(&program, levels, 0.0f, false);
    EXPECT_EQ(integer("levelCount"), 256);
    Item3dDrawer::setColorLevels(&program, {}, 0.0f, false);
    EXPECT_EQ(integer("levelCount"), 0);
}

TEST_F(ColorLevelsTest, ARampGoesFromBlueToRedBetweenTheHeights)
{
    Item3dDrawer::setColorLevels(&program, 100.0f, 140.0f);
    EXPECT_EQ(integer("levelCount"), 5);
    EXPECT_EQ(integer("levelStepDiscreteMode"), 0);
    EXPECT_EQ(number("levelStep"), 10.0f);
    EXPECT_EQ(number("elevLevels[0]"), 100.0f);
    EXPECT_EQ(number("elevLevels[4]"), 140.0f);
    EXPECT_EQ(color(0), glm::vec4(0, 0, 1, 1));
    EXPECT_EQ(color(4), glm::vec4(1, 0, 0, 1));
    Item3dDrawer::setColorLevels(nullptr, 0.0f, 1.0f); // no program: nothing
}

} // namespace
