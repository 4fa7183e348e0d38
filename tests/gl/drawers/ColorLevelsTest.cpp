#include "tests/support/SceneTest.h"

#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/shaders/ShaderPreprocessor.h>

#include <QtGui/QOpenGLShaderProgram>

#include <array>

namespace {

using Bytes = std::array<int, 4>; // red, green, blue, alpha

// The uniforms of the include that colours by height, in a program that uses nothing else.
class ColorLevelsTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        const QString include =
            preprocessShader(QStringLiteral(":/Viewer3dModule/gradient.fragment.glsl"), {});
        ASSERT_FALSE(include.isEmpty());
        program.addShaderFromSourceCode(QOpenGLShader::Vertex,
                                        "#version 430 core\nvoid main() { gl_Position = vec4(0); }");
        program.addShaderFromSourceCode(QOpenGLShader::Fragment,
                                        "#version 430 core\n" + include +
                                            "out vec4 c; void main() { c = elevColor(gl_FragCoord.x); }");
        ASSERT_TRUE(program.link());
    }
    int location(const char* name, int element)
    {
        return program.uniformLocation(QStringLiteral("%1[%2]").arg(name).arg(element));
    }
    int integer(const char* name)
    {
        GLint value = -1;
        gl->glGetUniformiv(program.programId(), program.uniformLocation(name), &value);
        return value;
    }
    float step()
    {
        float value = -1.0f;
        gl->glGetUniformfv(program.programId(), program.uniformLocation("levelStep"), &value);
        return value;
    }
    float height(int level)
    {
        std::array<float, 4> values{};
        gl->glGetUniformfv(program.programId(), location("elevLevels", level / 4), values.data());
        return values[static_cast<std::size_t>(level % 4)];
    }
    Bytes color(int level)
    {
        std::array<GLuint, 4> values{};
        gl->glGetUniformuiv(program.programId(), location("colorLevels", level / 4), values.data());
        Bytes bytes{};
        for (std::size_t i = 0; i < 4; ++i)
            bytes[i] = static_cast<int>(values[static_cast<std::size_t>(level % 4)] >> 8 * i & 255u);
        return bytes;
    }

    QOpenGLShaderProgram program;
};

TEST_F(ColorLevelsTest, FillsOneColourAndHeightALevelInTheOrderGiven)
{
    Item3dDrawer::setColorLevels(&program, {{30.0, QColor(255, 0, 0, 0)}, {10.5, QColor(1, 2, 3, 4)}}, 2.5f,
                                 true);
    EXPECT_EQ(integer("levelCount"), 2);
    EXPECT_EQ(integer("levelStepDiscreteMode"), 1);
    EXPECT_EQ(step(), 2.5f);
    EXPECT_EQ(color(0), (Bytes{255, 0, 0, 0}));
    EXPECT_EQ(color(1), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(height(0), 30.0f);
    EXPECT_EQ(height(1), 10.5f);
}

TEST_F(ColorLevelsTest, ColoursAreRoundedToEightBits)
{
    // times 255: 1.989, 126.99, 126.48
    Item3dDrawer::setColorLevels(&program, {{0.0, QColor::fromRgbF(0.0078, 0.498, 0.496, 1.0)}}, 0.0f, false);
    EXPECT_EQ(color(0), (Bytes{2, 127, 126, 255}));
    Item3dDrawer::setColorLevels(&program, {{0.0, QColor::fromHsv(120, 255, 51)}}, 0.0f, false);
    EXPECT_EQ(color(0), (Bytes{0, 51, 0, 255}));
}

TEST_F(ColorLevelsTest, EveryLevelHasItsPlace)
{
    std::vector<std::pair<double, QColor>> levels;
    for (int i = 0; i < 256; ++i)
        levels.emplace_back(0.5 * i, QColor(i, 255 - i, i / 2, 255 - i / 2));
    Item3dDrawer::setColorLevels(&program, levels, 0.0f, false);
    EXPECT_EQ(integer("levelCount"), 256);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(color(i), (Bytes{i, 255 - i, i / 2, 255 - i / 2})) << i;
        EXPECT_EQ(height(i), 0.5f * static_cast<float>(i));
    }
}

TEST_F(ColorLevelsTest, TakesAtMost256Levels)
{
    const std::vector<std::pair<double, QColor>> levels(300, {1.0, QColor(0, 255, 0)});
    Item3dDrawer::setColorLevels(&program, levels, 0.0f, false);
    EXPECT_EQ(integer("levelCount"), 256);
    Item3dDrawer::setColorLevels(&program, {}, 0.0f, false);
    EXPECT_EQ(integer("levelCount"), 0);
}

TEST_F(ColorLevelsTest, WritesNoMoreThanTheLevelsNeed)
{
    Item3dDrawer::setColorLevels(&program, std::vector<std::pair<double, QColor>>(12, {7.0, QColor(9, 9, 9)}),
                                 0.0f, false);
    Item3dDrawer::setColorLevels(&program, std::vector<std::pair<double, QColor>>(5, {3.0, QColor(5, 5, 5)}),
                                 0.0f, false);
    EXPECT_EQ(height(4), 3.0f);
    EXPECT_EQ(color(4), (Bytes{5, 5, 5, 255}));
    EXPECT_EQ(height(8), 7.0f);
    EXPECT_EQ(color(8), (Bytes{9, 9, 9, 255}));
}

TEST_F(ColorLevelsTest, ARampGoesFromBlueToRedBetweenTheHeights)
{
    Item3dDrawer::setColorLevels(&program, 100.0f, 140.0f);
    EXPECT_EQ(integer("levelCount"), 5);
    EXPECT_EQ(integer("levelStepDiscreteMode"), 0);
    EXPECT_EQ(step(), 10.0f);
    EXPECT_EQ(height(0), 100.0f);
    EXPECT_EQ(height(4), 140.0f);
    EXPECT_EQ(color(0), (Bytes{0, 0, 255, 255}));
    EXPECT_EQ(color(1), (Bytes{0, 255, 255, 255}));
    EXPECT_EQ(color(2), (Bytes{0, 255, 0, 255}));
    EXPECT_EQ(color(3), (Bytes{255, 255, 0, 255}));
    EXPECT_EQ(color(4), (Bytes{255, 0, 0, 255}));
}

TEST_F(ColorLevelsTest, WithoutProgramNothingHappens)
{
    Item3dDrawer::setColorLevels(nullptr, 0.0f, 1.0f);
}

} // namespace
