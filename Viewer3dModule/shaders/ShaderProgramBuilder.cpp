#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>

#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>
#include <Viewer3dModule/shaders/ShaderPreprocessor.h>
#include <Viewer3dModule/shaders/StorageLimits.h>
#include <framework/ksp/Log.h>
#include <framework/ksp/log_format.h>

#include <QtCore/QRegularExpression>
#include <QtGui/QOpenGLShaderProgram>

#include <optional>

namespace {

using Stage = QOpenGLShader::ShaderTypeBit;

const char* const numbersVerticesProperty = "numbers_vertices";

// The order counts: a path may hold several of the words.
std::optional<Stage> stageOf(const QString& file)
{
    static const struct
    {
        const char* word;
        Stage stage;
    } words[] = {
        {"vertex", QOpenGLShader::Vertex},
        {"fragment", QOpenGLShader::Fragment},
        {"geom", QOpenGLShader::Geometry},
        {"tesc", QOpenGLShader::TessellationControl},
        {"tese", QOpenGLShader::TessellationEvaluation},
        {"comp", QOpenGLShader::Compute},
    };
    for (const auto& entry : words)
        if (file.contains(QLatin1String(entry.word))) return entry.stage;
    return std::nullopt;
}

bool addStage(QOpenGLShaderProgram& program, const QString& file, const std::vector<std::string>& defines)
{
    const std::optional<Stage> stage = stageOf(file);
    if (!stage) return false;
    if (defines.empty() && !doesContainInclude(file)) return program.addShaderFromSourceFile(*stage, file);
    return program.addShaderFromSourceCode(*stage, preprocessShader(file, defines));
}

int primitivesOf(const QString& layoutWord)
{
    if (layoutWord == QLatin1String("points")) return PrimitiveBit::Points;
    if (layoutWord == QLatin1String("lines")) return PrimitiveBit::Lines;
    if (layoutWord == QLatin1String("lines_adjacency")) return PrimitiveBit::Lines | PrimitiveBit::Adjacency;
    if (layoutWord == QLatin1String("triangles")) return PrimitiveBit::Triangles;
    if (layoutWord == QLatin1String("triangles_adjacency"))
        return PrimitiveBit::Triangles | PrimitiveBit::Adjacency;
    return PrimitiveBit::All;
}

// Tells by the input layout of the geometry stage, which was added last, what it takes.
void setPrimitives(QOpenGLShaderProgram& program)
{
    if (program.shaders().isEmpty()) return;
    static const QRegularExpression layout(
        QStringLiteral("layout\\s*\\(\\s*(\\w+)(\\,\\s*\\w+=\\d+)*\\s*\\)\\s*in"));
    const QString source = QString::fromUtf8(program.shaders().constLast()->sourceCode());
    const QRegularExpressionMatch match = layout.match(source);
    if (match.hasMatch()) program.setProperty("primitives", primitivesOf(match.captured(1)));
}

// Whether the vertex stage asks for the number of a vertex in its buffer.
void setNumbersVertices(QOpenGLShaderProgram& program)
{
    bool numbers = false;
    for (const QOpenGLShader* shader : program.shaders())
        numbers = numbers || shader->sourceCode().contains("gl_VertexID");
    program.setProperty(numbersVerticesProperty, numbers);
}

bool addStages(QOpenGLShaderProgram& program, const QStringList& files,
               const std::vector<std::string>& defines)
{
    bool allCompiled = true;
    for (const QString& file : files) {
        if (!addStage(program, file, defines)) {
            ksp::log_format(ksp::Log::Error, "%s: program compile error", qUtf8Printable(file));
            ksp::Log::error(program.log());
            allCompiled = false;
        }
        if (stageOf(file) == QOpenGLShader::Geometry) setPrimitives(program);
    }
    return allCompiled;
}

bool link(QOpenGLShaderProgram& program, const QStringList& files)
{
    if (program.link()) return true;
    ksp::log_format(ksp::Log::Error, "%s and others: link error", qUtf8Printable(files.value(0)));
    ksp::Log::error(program.log());
    return false;
}

void declareVaryings(const QOpenGLShaderProgram& program, const std::vector<std::string>& varyings)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (varyings.empty() || !gl) return;
    std::vector<const char*> names;
    for (const std::string& varying : varyings)
        names.push_back(varying.c_str());
    gl->glTransformFeedbackVaryings(program.programId(), static_cast<GLsizei>(names.size()), names.data(),
                                    GL_INTERLEAVED_ATTRIBS);
}

unsigned int kindOf(Stage stage)
{
    if (stage == QOpenGLShader::Fragment) return GL_FRAGMENT_SHADER;
    return stage == QOpenGLShader::Geometry ? GL_GEOMETRY_SHADER : 0;
}

// Drivers that lack storage refuse it at different places, in words that name no program, so it is asked for
// first.
bool hasStorage(const QStringList& files, const std::vector<std::string>& defines)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return true;
    StorageLimits needed;
    for (const QString& file : files)
        if (const std::optional<Stage> stage = stageOf(file))
            needed = storageOfBoth(needed, storageDeclared(preprocessShader(file, defines), kindOf(*stage)));
    const QString missing = missingStorage(needed, storageOffered(*gl));
    if (!missing.isEmpty())
        ksp::Log::error(QStringLiteral("%1: %2").arg(files.join(QStringLiteral(", ")), missing));
    return missing.isEmpty();
}

// What the program was built from.
const char* const filesProperty = "shader_files";
const char* const definesProperty = "shader_defines";

} // namespace

ProgramSources sourcesOf(const QOpenGLShaderProgram& program)
{
    ProgramSources sources;
    sources.files = program.property(filesProperty).toStringList();
    for (const QString& define : program.property(definesProperty).toStringList())
        sources.defines.push_back(define.toStdString());
    return sources;
}

QOpenGLShaderProgram* buildShaderProgram(QObject* parent, const QStringList& files,
                                         const std::vector<std::string>& defines,
                                         const std::vector<std::string>& varyings)
{
    auto* program = new QOpenGLShaderProgram(parent);
    program->setProperty(filesProperty, files);
    QStringList defineList;
    for (const std::string& define : defines)
        defineList.append(QString::fromStdString(define));
    program->setProperty(definesProperty, defineList);
    if (!hasStorage(files, defines)) return program;
    // The stages that did compile might link without the missing one, and draw something else than was meant.
    if (!addStages(*program, files, defines)) return program;
    setNumbersVertices(*program);
    declareVaryings(*program, varyings);
    link(*program, files);
    return program;
}
