#include <tests/support/ProgramList.h>

#include <Viewer3dModule/shaders/ShaderPreprocessor.h>

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cstdio>

// Every OpenGL 4.3 driver lets one invocation of a geometry stage write 256 vertices and 1024 components, all
// outputs counted. Drivers that offer more accept sources that others refuse, so the numbers are read out of
// the sources.
namespace {

// Number of components of a type such as uvec2, mat4 or float.
int componentsOf(const QString& type)
{
    static const QRegularExpression vector(QStringLiteral("^[iub]?vec([234])$"));
    static const QRegularExpression matrix(QStringLiteral("^mat([234])$"));
    if (const auto match = vector.match(type); match.hasMatch()) return match.captured(1).toInt();
    if (const auto match = matrix.match(type); match.hasMatch())
        return match.captured(1).toInt() * match.captured(1).toInt();
    EXPECT_TRUE(type == "float" || type == "int" || type == "uint") << type.toStdString();
    return 1;
}

// The declarations "type name;" of a text, an array counted whole.
int declaredComponents(const QString& text)
{
    static const QRegularExpression declaration(
        QStringLiteral("([a-z]\\w*)\\s+(\\w+)\\s*(?:\\[\\s*(\\d+)\\s*\\])?\\s*;"));
    int sum = 0;
    auto matches = declaration.globalMatch(text);
    while (matches.hasNext()) {
        const auto match = matches.next();
        sum +=
            componentsOf(match.captured(1)) * (match.captured(3).isEmpty() ? 1 : match.captured(3).toInt());
    }
    return sum;
}

// Components of one vertex that a geometry stage writes; the source has been through the GLSL preprocessor.
int outputComponents(const QString& source)
{
    static const QRegularExpression block(QStringLiteral("\\bout\\s+\\w+\\s*\\{([^}]*)\\}"));
    static const QRegularExpression plain(QStringLiteral(
        "(?:^|\\n)(?:flat |noperspective |smooth )?out\\s+(\\w+\\s+\\w+\\s*(?:\\[\\s*\\d+\\s*\\])?\\s*;)"));
    int sum = 4; // gl_Position
    if (source.contains(QLatin1String("gl_PointSize"))) sum += 1;
    auto blocks = block.globalMatch(source);
    while (blocks.hasNext())
        sum += declaredComponents(blocks.next().captured(1));
    auto variables = plain.globalMatch(source);
    while (variables.hasNext())
        sum += declaredComponents(variables.next().captured(1));
    return sum;
}

int maxVertices(const QString& source)
{
    static const QRegularExpression layout(QStringLiteral("max_vertices\\s*=\\s*(\\d+)"));
    return layout.match(source).captured(1).toInt();
}

QString preprocessedByGlsl(const QString& file, const std::vector<std::string>& defines)
{
    QTemporaryDir folder;
    QFile out(folder.filePath("stage.geom"));
    EXPECT_TRUE(out.open(QIODevice::WriteOnly));
    out.write(preprocessShader(file, defines).toUtf8());
    out.close();
    QProcess process;
    process.start(QStringLiteral("glslangValidator"), {QStringLiteral("-E"), out.fileName()});
    EXPECT_TRUE(process.waitForFinished()) << "glslangValidator is not there: install glslang-tools";
    return QString::fromUtf8(process.readAllStandardOutput());
}

TEST(GeometryLimitsTest, CountingFindsAllOutputs)
{
    const QString source =
        QStringLiteral("layout(triangle_strip, max_vertices = 18) out;\n"
                       "in Item { flat vec4 color; } item_in[];\n"
                       "out Item { flat vec4 color; flat uvec2 id; flat int flags; } item;\n"
                       "out vec3 a;\nflat out int b;\nout float c[3];\nuniform vec4 no;\n"
                       "in vec4 neither[];\n");
    EXPECT_EQ(outputComponents(source), 4 + 7 + 3 + 1 + 3);
    EXPECT_EQ(outputComponents(source + "gl_PointSize = 1.0;"), 4 + 7 + 3 + 1 + 3 + 1);
    EXPECT_EQ(maxVertices(source), 18);
}

TEST(GeometryLimitsTest, EveryGeometryStageFitsEveryDriver)
{
    mapShaderPrefix();
    const QStringList names =
        QDir(QStringLiteral("shader:Viewer3dModule")).entryList({QStringLiteral("*.geom.glsl")}, QDir::Files);
    EXPECT_GE(names.size(), 3);
    for (const QString& name : names)
        for (const std::vector<std::string>& defines :
             {std::vector<std::string>{},
              {"RX_USE_PER_VERTEX_NORMAL"},
              {"RX_USE_INSTANCED_DRAW"},
              {"RX_USE_PER_VERTEX_NORMAL", "RX_USE_PER_VERTEX_COLOR", "RX_USE_PER_VERTEX_TEX_COORDS"}}) {
            const QString source =
                preprocessedByGlsl(QStringLiteral("shader:Viewer3dModule/") + name, defines);
            const int vertices = maxVertices(source);
            const int components = outputComponents(source);
            std::printf("%s: %d vertices of %d components: %d of 1024\n", qUtf8Printable(name), vertices,
                        components, vertices * components);
            EXPECT_GT(vertices, 0) << name.toStdString();
            EXPECT_LE(vertices, 256) << name.toStdString();
            EXPECT_GE(components, 12) << name.toStdString();
            EXPECT_LE(vertices * components, 1024) << name.toStdString();
        }
}

TEST(GeometryLimitsTest, InvocationsStayWithinThoseOfEveryDriver)
{
    mapShaderPrefix();
    static const QRegularExpression layout(QStringLiteral("invocations=(\\d+)"));
    for (const char* name : {"SolidRegularLines.geom", "cylinder.geom"}) {
        const int invocations = layout.match(preprocessShader(shaderPath(name), {})).captured(1).toInt();
        EXPECT_GT(invocations, 1) << name;
        EXPECT_LE(invocations, 32) << name;
    }
}

} // namespace
