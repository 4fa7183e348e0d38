#include "CaseDrawing.h"

#include <Viewer3dModule/shaders/ShaderPreprocessor.h>
#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QSet>

#include <algorithm>

namespace {

// One triangle over everything.
const char* const vertexStage = "#version 430 core\n"
                                "void main()\n"
                                "{\n"
                                "    vec2 corner = vec2(gl_VertexID & 1, gl_VertexID >> 1);\n"
                                "    gl_Position = vec4(4.0 * corner - 1.0, 0.0, 1.0);\n"
                                "}\n";

const char* const fragmentMain =
    "\nuniform int first_case;\n"
    "uniform int case_end;\n"
    "void main()\n"
    "{\n"
    "    int index = first_case + int(gl_FragCoord.y) * 512 + int(gl_FragCoord.x);\n"
    "    if (index < case_end) evaluate(index);\n"
    "}\n";

constexpr int maxRows = 1024;

void checkWithKhronosCompiler(const QString& file)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("glslangValidator"), {file});
    ASSERT_TRUE(process.waitForStarted()) << "glslangValidator is not there: install glslang-tools";
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0) << process.readAll().toStdString();
}

} // namespace

void CaseDrawing::SetUp()
{
    GlTest::SetUp();
    ASSERT_NE(gl, nullptr);
    mapShaderPrefix();
    gl->glBindVertexArray(vao);
    gl->glGenBuffers(Bindings, m_buffers);
    gl->glGenFramebuffers(1, &m_framebuffer);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl->glFramebufferParameteri(GL_FRAMEBUFFER, GL_FRAMEBUFFER_DEFAULT_WIDTH, RowLength);
    gl->glFramebufferParameteri(GL_FRAMEBUFFER, GL_FRAMEBUFFER_DEFAULT_HEIGHT, maxRows);
    ASSERT_EQ(gl->glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
}

void CaseDrawing::TearDown()
{
    if (!gl) return;
    makeCurrent();
    program.reset();
    gl->glDeleteFramebuffers(1, &m_framebuffer);
    gl->glDeleteBuffers(Bindings, m_buffers);
    GlTest::TearDown();
}

QString CaseDrawing::write(const QString& name, const QByteArray& content)
{
    QFile file(m_folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return file.fileName();
}

void CaseDrawing::use(const QByteArray& source, const std::vector<std::string>& defines)
{
    const QString vertex = write("cases.vertex.glsl", vertexStage);
    const QString fragment = write("cases.fragment.glsl", "#version 430 core\n" + source + fragmentMain);
    const QByteArray complete = preprocessShader(fragment, defines).toUtf8();
    static QSet<QByteArray> checked;
    if (!checked.contains(complete)) checkWithKhronosCompiler(write("complete.frag", complete));
    checked.insert(complete);

    program.reset(buildShaderProgram(nullptr, {vertex, fragment}, defines, {}));
    ASSERT_TRUE(program->isLinked());
    ASSERT_TRUE(program->bind());
    m_firstCase = program->uniformLocation("first_case");
    m_caseEnd = program->uniformLocation("case_end");
}

void CaseDrawing::upload(unsigned binding, const void* bytes, std::size_t size)
{
    gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, binding, m_buffers[binding]);
    gl->glBufferData(GL_SHADER_STORAGE_BUFFER, static_cast<GLsizeiptr>(size), bytes, GL_STATIC_DRAW);
}

void CaseDrawing::download(unsigned binding, void* bytes, std::size_t size)
{
    gl->glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
    gl->glBindBuffer(GL_SHADER_STORAGE_BUFFER, m_buffers[binding]);
    gl->glGetBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, static_cast<GLsizeiptr>(size), bytes);
}

int CaseDrawing::integerOf(const char* name)
{
    const int location = program->uniformLocation(name);
    EXPECT_GE(location, 0) << "no uniform " << name;
    int value = -1;
    if (location >= 0) gl->glGetUniformiv(program->programId(), location, &value);
    return value;
}

int CaseDrawing::blockBinding(const char* name)
{
    const GLuint block = gl->glGetProgramResourceIndex(program->programId(), GL_SHADER_STORAGE_BLOCK, name);
    int binding = -1;
    const GLenum property = GL_BUFFER_BINDING;
    if (block != GL_INVALID_INDEX)
        gl->glGetProgramResourceiv(program->programId(), GL_SHADER_STORAGE_BLOCK, block, 1, &property, 1,
                                   nullptr, &binding);
    return binding;
}

void CaseDrawing::evaluate(int first, int count)
{
    const int rows = (count + RowLength - 1) / RowLength;
    ASSERT_LE(rows, maxRows);
    uniforms::set(*gl, m_firstCase, first);
    uniforms::set(*gl, m_caseEnd, first + count);
    gl->glViewport(0, 0, std::min(count, RowLength), rows);
    gl->glDrawArrays(GL_TRIANGLES, 0, 3);
}
