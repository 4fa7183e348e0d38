#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>

#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/KnownOfProgram.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>
#include <Viewer3dModule/shaders/ShaderPreprocessor.h>
#include <Viewer3dModule/shaders/StorageLimits.h>
#include <Viewer3dModule/shaders/activeSource.h>
#include <framework/ksp/Log.h>

#include <QtCore/QRegularExpression>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <optional>

namespace {

using Stage = QOpenGLShader::ShaderTypeBit;

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
    QByteArray text;
    QByteArray active; ///< of the text
};

std::vector<StageSource> stagesOf(const ProgramSources& sources, const QList<QByteArray>& texts)
{
    std::vector<StageSource> stages;
    for (int i = 0; i < sources.files.size(); ++i) {
        const QString& file = sources.files[i];
        const QByteArray text = withDefines(texts[i], sources.defines);
        stages.push_back({file, stageOf(file), text, activeSource(text)});
    }
    return stages;
}

// A file that needs no preprocessor goes to the compiler byte by byte.
bool addStage(QOpenGLShaderProgram& program, const StageSource& source, bool hasDefines, HandedText handed)
{
    if (!source.stage) return false;
    if (handed == HandedText::Active) return program.addShaderFromSourceCode(*source.stage, source.active);
    if (!hasDefines && !doesContainInclude(source.file))
        return program.addShaderFromSourceFile(*source.stage, source.file);
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

// Tells by the input layout of the geometry stage what it takes.
void setPrimitives(QOpenGLShaderProgram& program, const QByteArray& text)
{
    static const QRegularExpression layout(
        QStringLiteral("layout\\s*\\(\\s*(\\w+)(\\,\\s*\\w+=\\d+)*\\s*\\)\\s*in"));
    const QRegularExpressionMatch match = layout.match(QString::fromUtf8(text));
    if (match.hasMatch()) program.setProperty("primitives", primitivesOf(match.captured(1)));
}

// Whether the vertex stage asks for the number of a vertex in its buffer.
void setNumbersVertices(QOpenGLShaderProgram& program, const std::vector<StageSource>& stages)
{
    const bool numbers = std::any_of(stages.begin(), stages.end(), [](const StageSource& source) {
        return source.active.contains("gl_VertexID");
    });
    program.setProperty(numbersVerticesProperty, numbers);
}

bool addStages(QOpenGLShaderProgram& program, const std::vector<StageSource>& stages, bool hasDefines,
               HandedText handed, QStringList& errors)
{
    bool allCompiled = true;
    for (const StageSource& source : stages) {
        if (!addStage(program, source, hasDefines, handed)) {
            errors << source.file + QStringLiteral(": program compile error") << program.log();
            allCompiled = false;
        }
        if (source.stage != QOpenGLShader::Geometry || program.shaders().isEmpty()) continue;
        // that of the stage which was added last, comments and all, as it always was
        setPrimitives(program, handed == HandedText::Active ? source.text
                                                            : program.shaders().constLast()->sourceCode());
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
        if (source.stage)
            needed = storageOfBoth(needed, storageDeclaredActively(source.active, kindOf(*source.stage)));
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

QList<QByteArray> textsOf(const QStringList& files)
{
    QList<QByteArray> texts;
    for (const QString& file : files)
        texts.append(preprocessForDefines(file));
    return texts;
}

QStringList buildFromSources(QOpenGLShaderProgram& program, const std::vector<std::string>& varyings,
                             const QList<QByteArray>& texts, HandedText handed)
{
    const ProgramSources sources = sourcesOf(program);
    QStringList errors;
    const std::vector<StageSource> stages = stagesOf(sources, texts);
    if (!hasStorage(stages, errors)) return errors;
    // The stages that did compile might link without the missing one, and draw something else than was meant.
    if (!addStages(program, stages, !sources.defines.empty(), handed, errors)) return errors;
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
    logErrors(buildFromSources(*program, varyings, textsOf(files), HandedText::Whole));
    return program;
}
