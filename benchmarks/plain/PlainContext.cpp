#include <benchmarks/plain/PlainContext.h>

#include <tests/support/RenderTarget.h>

#include <stdexcept>
#include <string>

PlainContext::PlainContext(const QSize& size)
    : m_size(size)
{
    const QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    m_surface.setFormat(format);
    m_surface.create();
    m_context.setFormat(format);
    if (!m_context.create()) throw std::runtime_error("no context for the plain programs");
    makeCurrent();
    m_gl = m_context.versionFunctions<Functions>();
    if (!m_gl || !m_gl->initializeOpenGLFunctions())
        throw std::runtime_error("there is no OpenGL 4.3 core profile here");
    m_target = std::make_unique<RenderTarget>(*m_gl, size);
    m_gl->glEnable(GL_DEPTH_TEST);
    m_gl->glDepthFunc(GL_LEQUAL);
    m_gl->glEnable(GL_PROGRAM_POINT_SIZE);
    m_gl->glEnable(GL_BLEND);
    m_gl->glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

// What else was made goes with the context.
PlainContext::~PlainContext()
{
    makeCurrent();
    m_target.reset();
    m_context.doneCurrent();
}

void PlainContext::makeCurrent()
{
    if (!m_context.makeCurrent(&m_surface))
        throw std::runtime_error("the plain context cannot be made current");
}

void PlainContext::beginFrame()
{
    m_target->bind();
    m_target->clear(Qt::black);
}

QImage PlainContext::picture()
{
    makeCurrent();
    return m_target->image();
}

GLuint PlainContext::program(std::initializer_list<std::pair<GLenum, const char*>> stages)
{
    const GLuint name = m_gl->glCreateProgram();
    for (const auto& [type, source] : stages) {
        const GLuint shader = m_gl->glCreateShader(type);
        m_gl->glShaderSource(shader, 1, &source, nullptr);
        m_gl->glCompileShader(shader);
        m_gl->glAttachShader(name, shader);
        m_gl->glDeleteShader(shader);
    }
    m_gl->glLinkProgram(name);
    GLint isLinked = 0;
    m_gl->glGetProgramiv(name, GL_LINK_STATUS, &isLinked);
    if (isLinked) return name;
    std::string text(4096, '\0');
    GLsizei length = 0;
    m_gl->glGetProgramInfoLog(name, static_cast<GLsizei>(text.size()), &length, text.data());
    throw std::runtime_error("a plain program does not link: " +
                             text.substr(0, static_cast<std::size_t>(length)));
}

GLuint PlainContext::buffer(GLenum target, const void* bytes, std::size_t size)
{
    GLuint name = 0;
    m_gl->glGenBuffers(1, &name);
    m_gl->glBindBuffer(target, name);
    m_gl->glBufferData(target, static_cast<GLsizeiptr>(size), bytes, GL_STATIC_DRAW);
    return name;
}
