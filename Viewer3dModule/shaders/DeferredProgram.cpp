#include <Viewer3dModule/shaders/DeferredProgram.h>

#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>

#include <QtGui/QOpenGLContext>

DeferredProgram::DeferredProgram(QObject* parent, const QStringList& files,
                                 const std::vector<std::string>& defines)
    : QOpenGLShaderProgram(parent)
{
    setSources(*this, {files, defines});
}

DeferredProgram::~DeferredProgram() = default;

bool DeferredProgram::link()
{
    if (!m_isWaiting) return QOpenGLShaderProgram::link();
    if (!QOpenGLContext::currentContext()) return false;
    m_isWaiting = false; // building links
    logErrors(buildFromSources(*this, {}, textsOf(sourcesOf(*this).files), HandedText::Whole));
    return isLinked();
}

bool DeferredProgram::isWaiting(const QOpenGLShaderProgram* program)
{
    const auto* deferred = dynamic_cast<const DeferredProgram*>(program);
    return deferred && deferred->m_isWaiting;
}

void DeferredProgram::build(QOpenGLShaderProgram* program)
{
    if (isWaiting(program)) program->link();
}
