#include <tests/support/GlTest.h>

#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/type_ptr.hpp>

namespace {

class UniformsTest : public GlTest
{
protected:
    /// Builds and binds a program with the one uniform "u" of this type; expression makes a float of it.
    void use(const QString& type, const QString& expression)
    {
        const QString source = QStringLiteral("#version 430 core\nuniform %1 u;\n"
                                              "void main() { gl_Position = vec4(float(%2)); }\n");
        ASSERT_TRUE(program.addShaderFromSourceCode(QOpenGLShader::Vertex, source.arg(type, expression)));
        ASSERT_TRUE(program.link() && program.bind());
        location = program.uniformLocation("u");
        ASSERT_GE(location, 0);
    }
    template <std::size_t Count>
    std::array<float, Count> floats()
    {
        std::array<float, Count> values{};
        gl->glGetUniformfv(program.programId(), location, values.data());
        return values;
    }
    void TearDown() override
    {
        program.removeAllShaders();
        GlTest::TearDown();
    }

    QOpenGLShaderProgram program;
    int location = -1;
};

TEST_F(UniformsTest, SetsSignedInteger)
{
    use("int", "u");
    uniforms::set(*gl, location, -3);
    int value = 0;
    gl->glGetUniformiv(program.programId(), location, &value);
    EXPECT_EQ(value, -3);
}

TEST_F(UniformsTest, SetsUnsignedInteger)
{
    use("uint", "u");
    uniforms::set(*gl, location, 0xFFFFFFFEu);
    unsigned value = 0;
    gl->glGetUniformuiv(program.programId(), location, &value);
    EXPECT_EQ(value, 0xFFFFFFFEu);
}

TEST_F(UniformsTest, SetsUnsignedPairWithoutLosingBits)
{
    use("uvec2", "u.x + u.y");
    uniforms::set(*gl, location, glm::uvec2(0x01000001u, 0x80000001u));
    unsigned values[2] = {0, 0};
    gl->glGetUniformuiv(program.programId(), location, values);
    EXPECT_EQ(values[0], 0x01000001u);
    EXPECT_EQ(values[1], 0x80000001u);
}

TEST_F(UniformsTest, SetsFloat)
{
    use("float", "u");
    uniforms::set(*gl, location, 1.25f);
    EXPECT_EQ(floats<1>()[0], 1.25f);
}

TEST_F(UniformsTest, SetsBool)
{
    use("bool", "u");
    uniforms::set(*gl, location, true);
    int value = 0;
    gl->glGetUniformiv(program.programId(), location, &value);
    EXPECT_EQ(value, 1);
}

TEST_F(UniformsTest, SetsVectors)
{
    use("vec4", "u.x + u.y + u.z + u.w");
    uniforms::set(*gl, location, glm::vec4(1, 2, 3, 4));
    EXPECT_EQ(floats<4>(), (std::array<float, 4>{1, 2, 3, 4}));
}

TEST_F(UniformsTest, SetsVectorOfTwo)
{
    use("vec2", "u.x + u.y");
    uniforms::set(*gl, location, glm::vec2(5, 6));
    EXPECT_EQ(floats<2>(), (std::array<float, 2>{5, 6}));
}

TEST_F(UniformsTest, SetsVectorOfThree)
{
    use("vec3", "u.x + u.y + u.z");
    uniforms::set(*gl, location, glm::vec3(7, 8, 9));
    EXPECT_EQ(floats<3>(), (std::array<float, 3>{7, 8, 9}));
}

TEST_F(UniformsTest, SetsColourNotPremultiplied)
{
    use("vec4", "u.x + u.y + u.z + u.w");
    uniforms::set(*gl, location, QColor(255, 51, 0, 102));
    const auto values = floats<4>();
    EXPECT_NEAR(values[0], 1.0, 1e-4);
    EXPECT_NEAR(values[1], 0.2, 1e-4);
    EXPECT_NEAR(values[2], 0.0, 1e-4);
    EXPECT_NEAR(values[3], 0.4, 1e-4);
}

TEST_F(UniformsTest, SetsMatricesColumnMajor)
{
    use("mat4", "u[0][0] + u[1][1] + u[2][2] + u[3][3]");
    glm::mat4 matrix;
    for (int i = 0; i < 16; ++i)
        glm::value_ptr(matrix)[i] = static_cast<float>(i);
    uniforms::set(*gl, location, matrix);
    const auto values = floats<16>();
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(values[i], static_cast<float>(i));
}

TEST_F(UniformsTest, SetsMatricesOfThree)
{
    use("mat3", "u[0][0] + u[1][1] + u[2][2]");
    glm::mat3 matrix;
    for (int i = 0; i < 9; ++i)
        glm::value_ptr(matrix)[i] = static_cast<float>(i);
    uniforms::set(*gl, location, matrix);
    const auto values = floats<9>();
    for (std::size_t i = 0; i < 9; ++i)
        EXPECT_EQ(values[i], static_cast<float>(i));
}

TEST_F(UniformsTest, MissingUniformIsSkipped)
{
    use("float", "u");
    uniforms::set(*gl, -1, 1.0f);
    uniforms::set(*gl, -1, glm::mat4(1.0f));
    EXPECT_EQ(floats<1>()[0], 0.0f);
}

class OpenGLFunctionsTest : public GlTest
{
};

TEST_F(OpenGLFunctionsTest, NoCurrentContextHasNoTable)
{
    context.doneCurrent();
    EXPECT_EQ(currentGLFunctions(), nullptr);
    makeCurrent();
    EXPECT_EQ(currentGLFunctions(), gl);
}

TEST_F(OpenGLFunctionsTest, EachContextHasATableOfItsOwn)
{
    auto other = std::make_unique<QOpenGLContext>();
    other->setFormat(context.format());
    ASSERT_TRUE(other->create());
    ASSERT_TRUE(other->makeCurrent(&surface));
    OpenGLFunctions* table = currentGLFunctions();
    EXPECT_NE(table, nullptr);
    EXPECT_NE(table, gl);
    makeCurrent();
    EXPECT_EQ(currentGLFunctions(), gl);
}

TEST_F(OpenGLFunctionsTest, ContextMadeAgainGetsANewTable)
{
    debug.reset(); // it belongs to the context that goes
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(context.create() && makeCurrent()); // destroys what was created before
        OpenGLFunctions* table = currentGLFunctions();
        ASSERT_NE(table, nullptr);
        unsigned name = 0;
        table->glGenBuffers(1, &name);
        EXPECT_NE(name, 0u);
        table->glDeleteBuffers(1, &name);
    }
    gl = currentGLFunctions();
    vao = 0;
}

} // namespace
