#include <tests/support/GlTest.h>
#include <tests/support/LogTrap.h>
#include <tests/support/ProgramList.h>
#include <tests/support/ProgramVariants.h>

#include <Viewer3dModule/shaders/ShaderPreprocessor.h>
#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>
#include <Viewer3dModule/shaders/StorageLimits.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

namespace {

const QByteArray plainVertex = "#version 430 core\nvoid main() { gl_Position = vec4(0.0); }\n";
const QByteArray plainFragment = "#version 430 core\nout vec4 c;\nvoid main() { c = vec4(1.0); }\n";

class ProgramBuildingTest : public GlTest
{
protected:
    void SetUp() override
    {
        GlTest::SetUp();
        mapShaderPrefix();
    }
    QString write(const QString& name, const QByteArray& content)
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }
    std::unique_ptr<QOpenGLShaderProgram> build(const QStringList& files,
                                                const std::vector<std::string>& defines = {},
                                                const std::vector<std::string>& varyings = {})
    {
        return std::unique_ptr<QOpenGLShaderProgram>(buildShaderProgram(nullptr, files, defines, varyings));
    }
    /// The property "primitives" of a program whose geometry stage has this input layout line.
    QVariant primitivesOf(const QByteArray& layout)
    {
        const QByteArray source = "#version 430 core\n#define KIND lines\n" + layout +
                                  "\nlayout(points, max_vertices=1) out;\n"
                                  "void main() { gl_Position = gl_in[0].gl_Position; EmitVertex(); }\n";
        const auto program = build({write("a.vertex.glsl", plainVertex), write("b.geom.glsl", source),
                                    write("c.fragment.glsl", plainFragment)});
        EXPECT_TRUE(program->isLinked()) << layout.constData();
        return program->property("primitives");
    }
    /// The highest binding of a linked program's storage blocks, -1 when it has none.
    int highestBinding(GLuint program)
    {
        GLint count = 0;
        gl->glGetProgramInterfaceiv(program, GL_SHADER_STORAGE_BLOCK, GL_ACTIVE_RESOURCES, &count);
        int highest = -1;
        for (GLint block = 0; block < count; ++block) {
            const GLenum property = GL_BUFFER_BINDING;
            GLint binding = 0;
            gl->glGetProgramResourceiv(program, GL_SHADER_STORAGE_BLOCK, static_cast<GLuint>(block), 1,
                                       &property, 1, nullptr, &binding);
            highest = std::max(highest, binding);
        }
        return highest;
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(ProgramBuildingTest, PrimitivesFollowTheInputLayout)
{
    EXPECT_EQ(primitivesOf("layout(points) in;"), QVariant(1));
    EXPECT_EQ(primitivesOf("layout(lines) in;"), QVariant(2));
    EXPECT_EQ(primitivesOf("layout(lines_adjacency) in;"), QVariant(10));
    EXPECT_EQ(primitivesOf("layout(triangles) in;"), QVariant(4));
    EXPECT_EQ(primitivesOf("layout(triangles_adjacency) in;"), QVariant(12));
}

TEST_F(ProgramBuildingTest, PrimitivesAreFoundBesideInvocations)
{
    EXPECT_EQ(primitivesOf("layout(triangles, invocations=2) in;"), QVariant(4));
    EXPECT_EQ(primitivesOf("layout ( lines_adjacency,invocations=3 ) in;"), QVariant(10));
}

TEST_F(ProgramBuildingTest, UnknownLayoutWordMeansAllKinds)
{
    EXPECT_EQ(primitivesOf("layout(KIND) in;"), QVariant(7));
}

TEST_F(ProgramBuildingTest, LayoutThatIsNotRecognisedSetsNoProperty)
{
    EXPECT_FALSE(primitivesOf("layout(lines, invocations = 2) in;").isValid());
}

TEST_F(ProgramBuildingTest, FirstLayoutCounts)
{
    EXPECT_EQ(primitivesOf("// layout(points) in\nlayout(lines) in;"), QVariant(1));
}

TEST_F(ProgramBuildingTest, ProgramWithoutGeometryStageHasNoPrimitives)
{
    const auto program =
        build({write("a.vertex.glsl", plainVertex), write("b.fragment.glsl", plainFragment)});
    EXPECT_TRUE(program->isLinked());
    EXPECT_FALSE(program->property("primitives").isValid());
}

TEST_F(ProgramBuildingTest, EarliestWordOfTheListDecidesTheStage)
{
    const auto program =
        build({write("geom.vertex.glsl", plainVertex), write("comp.geom.fragment.glsl", plainFragment)});
    ASSERT_TRUE(program->isLinked());
    EXPECT_EQ(program->shaders().at(0)->shaderType(), QOpenGLShader::Vertex);
    EXPECT_EQ(program->shaders().at(1)->shaderType(), QOpenGLShader::Fragment);
    EXPECT_FALSE(program->property("primitives").isValid());
}

TEST_F(ProgramBuildingTest, ComputeStageIsBuilt)
{
    const auto program =
        build({write("a.comp.glsl", "#version 430 core\nlayout(local_size_x=1) in;\nvoid main() {}\n")});
    EXPECT_TRUE(program->isLinked());
}

TEST_F(ProgramBuildingTest, SourceReachesTheCompilerByteForByte)
{
    const QByteArray rest =
        "\t// tabs\t and  blanks \r\n\r\n/* \xd1\x84 */ void main()  { gl_Position = vec4(0.0); } ";
    const auto program = build({write("a.vertex.glsl", "#version 430 core\n" + rest)});
    ASSERT_EQ(program->shaders().size(), 1);
    const QByteArray seen = program->shaders().at(0)->sourceCode();
    EXPECT_TRUE(seen.startsWith("#version 430 core\n"));
    EXPECT_TRUE(seen.endsWith(rest)) << seen.constData();
}

TEST_F(ProgramBuildingTest, DefinesAndIncludesReachTheCompiler)
{
    const QString included = write("inc.glsl", "float two() { return float(TWO); }\n");
    const QByteArray vertex = "#version 430 core\n//#include \"" + included.toUtf8() +
                              "\"\nvoid main() { gl_Position = vec4(two()); }\n";
    const auto program = build({write("a.vertex.glsl", vertex)}, {"TWO 2"});
    EXPECT_TRUE(program->isLinked());
    EXPECT_TRUE(LogTrap::take().isEmpty());
}

TEST_F(ProgramBuildingTest, CompileErrorIsLoggedAndTheProgramIsNotLinked)
{
    const QString vertex = write("a.vertex.glsl", plainVertex);
    const QString broken = write("b.fragment.glsl", "#version 430 core\nvoid main() { nonsense; }\n");
    const auto program = build({broken, vertex});
    EXPECT_FALSE(program->isLinked());
    EXPECT_EQ(program->shaders().size(), 1) << "the other stages are compiled all the same";
    debug->take(); // the driver's own words on it
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0], broken + ": program compile error");
    EXPECT_TRUE(lines[1].contains("nonsense")) << lines[1].toStdString();
}

TEST_F(ProgramBuildingTest, EachBrokenStageIsLogged)
{
    const QString first = write("a.vertex.glsl", "#version 430 core\nvoid main() { one; }\n");
    const QString second = write("b.fragment.glsl", "#version 430 core\nvoid main() { two; }\n");
    const auto program = build({first, second}, {"RX_ANY"});
    EXPECT_FALSE(program->isLinked());
    debug->take(); // the driver's own words on it
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], first + ": program compile error");
    EXPECT_EQ(lines[2], second + ": program compile error");
}

TEST_F(ProgramBuildingTest, NameWithoutStageWordIsACompileError)
{
    const QString file = write("a.glsl", plainVertex);
    const auto program = build({file});
    EXPECT_FALSE(program->isLinked());
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0], file + ": program compile error");
}

TEST_F(ProgramBuildingTest, MissingFileIsACompileError)
{
    const QString file = QStringLiteral("shader:Viewer3dModule/missing.vertex.glsl");
    const auto program = build({file});
    EXPECT_FALSE(program->isLinked());
    EXPECT_EQ(LogTrap::take().value(0), file + ": program compile error");
}

TEST_F(ProgramBuildingTest, LinkErrorIsLoggedAndTheProgramReturned)
{
    const QString vertex =
        write("a.vertex.glsl", "#version 430 core\nout vec2 v;\n"
                               "void main() { v = vec2(0.0); gl_Position = vec4(0.0); }\n");
    const QString fragment = write("b.fragment.glsl", "#version 430 core\nin vec3 v;\nout vec4 c;\n"
                                                      "void main() { c = vec4(v, 1.0); }\n");
    const auto program = build({vertex, fragment});
    ASSERT_NE(program, nullptr);
    EXPECT_FALSE(program->isLinked());
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0], vertex + " and others: link error");
    EXPECT_FALSE(lines[1].isEmpty());
}

TEST_F(ProgramBuildingTest, ParentOwnsTheProgram)
{
    QObject parent;
    const auto* program = buildShaderProgram(&parent, {write("a.vertex.glsl", plainVertex)}, {}, {});
    EXPECT_EQ(program->parent(), &parent);
}

TEST_F(ProgramBuildingTest, VaryingsAreCapturedInterleavedInListOrder)
{
    const QString vertex =
        write("a.vertex.glsl", "#version 430 core\nout vec2 one;\nout float two;\nvoid main()\n"
                               "{ one = vec2(1.0); two = 2.0; gl_Position = vec4(0.0); }\n");
    const auto program = build({vertex}, {}, {"two", "gl_Position", "one"});
    ASSERT_TRUE(program->isLinked());
    int mode = 0;
    gl->glGetProgramiv(program->programId(), GL_TRANSFORM_FEEDBACK_BUFFER_MODE, &mode);
    EXPECT_EQ(mode, GL_INTERLEAVED_ATTRIBS);
    QStringList names;
    for (unsigned i = 0; i < 3; ++i) {
        char name[32];
        int length = 0;
        int size = 0;
        GLenum type = 0;
        gl->glGetTransformFeedbackVarying(program->programId(), i, sizeof name, &length, &size, &type, name);
        names.append(QString::fromLatin1(name, length));
    }
    EXPECT_EQ(names, QStringList({"two", "gl_Position", "one"}));
}

TEST_F(ProgramBuildingTest, TooHighABindingIsOneLineThatNamesProgramAndLimit)
{
    const QString vertex = write("a.vertex.glsl", plainVertex);
    const QString fragment =
        write("b.fragment.glsl", "#version 430 core\nlayout(std430, binding = 999) buffer far { int a[]; };\n"
                                 "out vec4 c;\nvoid main() { c = vec4(a[0]); }\n");
    const auto program = build({vertex, fragment});
    ASSERT_NE(program, nullptr);
    EXPECT_FALSE(program->isLinked());
    EXPECT_TRUE(program->shaders().isEmpty()) << "the driver is not asked";
    const QString expected =
        QStringLiteral(
            "%1, %2: the driver's GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS is %3, the program needs 1000")
            .arg(vertex, fragment)
            .arg(storageOffered(*gl).bindings);
    EXPECT_EQ(LogTrap::take(), QStringList{expected});
}

TEST_F(ProgramBuildingTest, TooManyBlocksInAGeometryStageAreOneLine)
{
    const int blocks = storageOffered(*gl).geometryBlocks + 1;
    QByteArray source = "#version 430 core\nlayout(points) in;\nlayout(points, max_vertices = 1) out;\n";
    QByteArray sum = "0";
    for (int i = 0; i < blocks; ++i) {
        const QByteArray number = QByteArray::number(i);
        source += "layout(std430) buffer b" + number + " { int a" + number + "; };\n";
        sum += " + a" + number;
    }
    source += "void main() { gl_Position = vec4(float(" + sum + ")); EmitVertex(); }\n";
    const QString geometry = write("b.geom.glsl", source);
    const auto program =
        build({write("a.vertex.glsl", plainVertex), geometry, write("c.fragment.glsl", plainFragment)});
    EXPECT_FALSE(program->isLinked());
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains(geometry + ", ")) << lines[0].toStdString();
    EXPECT_TRUE(
        lines[0].endsWith(QStringLiteral("GL_MAX_GEOMETRY_SHADER_STORAGE_BLOCKS is %1, the program needs %2")
                              .arg(blocks - 1)
                              .arg(blocks)))
        << lines[0].toStdString();
}

TEST_F(ProgramBuildingTest, HighestBindingOfTheDriverIsTaken)
{
    const QByteArray last = QByteArray::number(storageOffered(*gl).bindings - 1);
    const auto program =
        build({write("a.vertex.glsl", plainVertex),
               write("b.fragment.glsl", "#version 430 core\nlayout(std430, binding = " + last +
                                            ") buffer far { int a[]; };\nout vec4 c;\n"
                                            "void main() { c = vec4(a[0]); }\n")});
    EXPECT_TRUE(program->isLinked());
}

// What is read out of the sources is what the driver finds in the program.
TEST_F(ProgramBuildingTest, StorageThatSourcesDeclareIsThatOfTheProgram)
{
    const std::pair<QString, GLenum> stages[] = {{QStringLiteral("vertex"), GL_VERTEX_SHADER},
                                                 {QStringLiteral("fragment"), GL_FRAGMENT_SHADER},
                                                 {QStringLiteral("geom"), GL_GEOMETRY_SHADER}};
    int programs = 0;
    for (const auto* list : {&defaultPrograms(), &furtherPrograms(), &programVariants()})
        for (const ProgramRecipe& recipe : *list) {
            StorageLimits declared;
            for (const QString& file : recipe.files)
                for (const auto& [word, stage] : stages)
                    if (file.contains(word + ".glsl"))
                        declared = storageOfBoth(
                            declared, storageDeclared(preprocessShader(file, recipe.defines), stage));
            const auto program = build(recipe.files, recipe.defines);
            EXPECT_EQ(highestBinding(program->programId()), declared.bindings - 1) << recipe.name;
            ++programs;
        }
    std::printf("storage: declared and active bindings agree in %d programs\n", programs);
}

TEST_F(ProgramBuildingTest, EveryDriverOffersSomeStorage)
{
    const StorageLimits offered = storageOffered(*gl);
    EXPECT_GE(offered.bindings, 8);
    EXPECT_GE(offered.fragmentBlocks, 8);
    EXPECT_GE(offered.geometryBlocks, 0);
}

} // namespace
