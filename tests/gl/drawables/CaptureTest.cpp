#include "CaptureTest.h"

namespace {

constexpr int capacity = 1024;        // captured vertices
constexpr unsigned nameBound = 20000; // all the tests of a program together use fewer

const char* const plainVertex = R"(#version 430 core
layout(location = 0) in vec3 point;
void main() { gl_Position = vec4(point + vec3(1000.0 * gl_InstanceID, 0.0, 0.0), 1.0); }
)";

} // namespace

void CaptureTest::SetUp()
{
    GlTest::SetUp();
    plain = link(plainVertex, nullptr, "gl_Position");
}

void CaptureTest::TearDown()
{
    makeCurrent();
    plain.reset();
    GlTest::TearDown();
}

std::unique_ptr<QOpenGLShaderProgram> CaptureTest::link(const char* vertex, const char* geometry,
                                                        const char* output)
{
    auto program = std::make_unique<QOpenGLShaderProgram>();
    EXPECT_TRUE(program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertex));
    if (geometry) {
        EXPECT_TRUE(program->addShaderFromSourceCode(QOpenGLShader::Geometry, geometry));
    }
    gl->glTransformFeedbackVaryings(program->programId(), 1, &output, GL_INTERLEAVED_ATTRIBS);
    EXPECT_TRUE(program->link());
    return program;
}

std::vector<glm::vec4> CaptureTest::capture(QOpenGLShaderProgram& program, GLenum mode,
                                            const std::function<void()>& draw)
{
    unsigned buffer = 0;
    unsigned query = 0;
    gl->glGenBuffers(1, &buffer);
    gl->glGenQueries(1, &query);
    gl->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
    gl->glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, capacity * sizeof(glm::vec4), nullptr, GL_STATIC_READ);

    program.bind();
    gl->glEnable(GL_RASTERIZER_DISCARD);
    gl->glBeginQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN, query);
    gl->glBeginTransformFeedback(mode);
    draw();
    gl->glEndTransformFeedback();
    gl->glEndQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN);
    gl->glDisable(GL_RASTERIZER_DISCARD);
    program.release();

    unsigned primitives = 0;
    gl->glGetQueryObjectuiv(query, GL_QUERY_RESULT, &primitives);
    const unsigned verticesEach = mode == GL_POINTS ? 1 : mode == GL_LINES ? 2 : 3;
    std::vector<glm::vec4> captured(primitives * verticesEach);
    if (!captured.empty())
        gl->glGetBufferSubData(GL_TRANSFORM_FEEDBACK_BUFFER, 0,
                               static_cast<GLsizeiptr>(captured.size() * sizeof(glm::vec4)), captured.data());
    gl->glDeleteQueries(1, &query);
    gl->glDeleteBuffers(1, &buffer);
    return captured;
}

std::vector<glm::vec3> CaptureTest::capture(GLenum mode, const std::function<void()>& draw)
{
    const std::vector<glm::vec4> captured = capture(*plain, mode, draw);
    return std::vector<glm::vec3>(captured.begin(), captured.end());
}

PaintContext CaptureTest::pass(int primitives)
{
    PaintContext paint;
    paint.vertexArray = vao;
    paint.primitives = primitives;
    paint.setViewport(QRect(0, 0, 320, 200));
    return paint;
}

std::set<unsigned> CaptureTest::buffers()
{
    std::set<unsigned> names;
    for (unsigned name = 1; name < nameBound; ++name)
        if (gl->glIsBuffer(name)) names.insert(name);
    return names;
}

glm::vec4 CaptureTest::uniform(const QOpenGLShaderProgram& program, const char* name)
{
    glm::vec4 value(0.0f);
    const int location = program.uniformLocation(name);
    EXPECT_GE(location, 0) << name;
    gl->glGetUniformfv(program.programId(), location, &value.x);
    return value;
}

void CaptureTest::expectCleanVertexArray()
{
    GLint bound = -1;
    gl->glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &bound);
    EXPECT_EQ(bound, 0);
    gl->glBindVertexArray(vao);
    for (unsigned location = 0; location < 16; ++location) {
        GLint enabled = -1;
        gl->glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        EXPECT_EQ(enabled, 0) << location;
    }
    GLint indices = -1;
    gl->glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &indices);
    EXPECT_EQ(indices, 0);
    gl->glBindVertexArray(0);
}
