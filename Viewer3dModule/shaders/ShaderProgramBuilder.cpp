#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>

#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>
#include <Viewer3dModule/shaders/ShaderPreprocessor.h>
#include <Viewer3dModule/shaders/StorageLimits.h>
#include <framework/ksp/Log.h>

#include <QtCore/QRegularExpression>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
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

/// A file of a program with its includes and defines in place.
struct StageSource
{
    QString file;
    std::optional<Stage> stage;
    QString text;
    bool isAsStored; ///< the file goes to the compiler byte by byte
};

std::vector<StageSource> stagesOf(const ProgramSources& sources, const QStringList& texts)
{
    std::vector<StageSource> stages;
    for (int i = 0; i < sources.files.size(); ++i) {
        const QString& file = sources.files[i];
        stages.push_back({file, stageOf(file), withDefines(texts[i], sources.defines),
                          sources.defines.empty() && !doesContainInclude(file)});
    }
    return stages;
}

bool addStage(QOpenGLShaderProgram& program, const StageSource& source)
{
    if (!source.stage) return false;
    if (source.isAsStored) return program.addShaderFromSourceFile(*source.stage, source.file);
    return program.addShaderFromSourceCode(*source.stage, source.text);
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
void setNumbersVertices(QOpenGLShaderProgram& program, const std::vector<StageSource>& stages)
{
    const bool numbers = std::any_of(stages.begin(), stages.end(), [](const StageSource& source) {
        return source.text.contains(QLatin1String("gl_VertexID"));
    });
    program.setProperty(numbersVerticesProperty, numbers);
}

bool addStages(QOpenGLShaderProgram& program, const std::vector<StageSource>& stages, QStringList& errors)
{
    bool allCompiled = true;
    for (const StageSource& source : stages) {
        if (!addStage(program, source)) {
            errors << source.file + QStringLiteral(": program compile error") << program.log();
            allCompiled = false;
        }
        if (source.stage == QOpenGLShader::Geometry) setPrimitives(program);
    }
    return allCompiled;
}

void link(QOpenGLShaderProgram& program, const QStringList& files, QStringList& errors)
{
    if (program.link()) return;
    errors << files.value(0) + QStringLiteral(" and others: link error") << program.log();
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
bool hasStorage(const std::vector<StageSource>& stages, QStringList& errors)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return true;
    StorageLimits needed;
    QStringList files;
    for (const StageSource& source : stages) {
        files.append(source.file);
        if (source.stage) needed = storageOfBoth(needed, storageDeclared(source.text, kindOf(*source.stage)));
    }
    if (needed.bindings == 0 && needed.fragmentBlocks == 0 && needed.geometryBlocks == 0) return true;
    const QString missing = missingStorage(needed, storageOffered(*gl));
    if (!missing.isEmpty()) errors << QStringLiteral("%1: %2").arg(files.join(QStringLiteral(", ")), missing);
    return missing.isEmpty();
}

// What the program is built from.
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

void setSources(QOpenGLShaderProgram& program, const ProgramSources& sources)
{
    program.setProperty(filesProperty, sources.files);
    QStringList defines;
    for (const std::string& define : sources.defines)
        defines.append(QString::fromStdString(define));
    program.setProperty(definesProperty, defines);
}

QStringList textsOf(const QStringList& files)
{
    QStringList texts;
    for (const QString& file : files)
        texts.append(preprocessForDefines(file));
    return texts;
}

QStringList buildFromSources(QOpenGLShaderProgram& program, const std::vector<std::string>& varyings,
                             const QStringList& texts)
{
    const ProgramSources sources = sourcesOf(program);
    QStringList errors;
    const std::vector<StageSource> stages = stagesOf(sources, texts);
    if (!hasStorage(stages, errors)) return errors;
    // The stages that did compile might link without the missing one, and draw something else than was meant.
    if (!addStages(program, stages, errors)) return errors;
    setNumbersVertices(program, stages);
    declareVaryings(program, varyings);
    link(program, sources.files, errors);
    return errors;
}

void logErrors(const QStringList& errors)
{
    for (const QString& error : errors)
        ksp::Log::error(error);
}

QOpenGLShaderProgram* buildShaderProgram(QObject* parent, const QStringList& files,
                                         const std::vector<std::string>& defines,
                                         const std::vector<std::string>& varyings)
{
    auto* program = new QOpenGLShaderProgram(parent);
    setSources(*program, {files, defines});
    logErrors(buildFromSources(*program, varyings, textsOf(files)));
    return program;
}
