#include <tests/support/ProgramList.h>

#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/ShaderPreprocessor.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>

#include <set>

namespace {

const QString sourceFolder = QStringLiteral(V3D_SOURCE_DIR "/Viewer3dModule/resources/Viewer3dModule");

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

QStringList shaderNames()
{
    return QDir(sourceFolder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

// The integer constants of a source with its includes.
QMap<QString, int> constantsOf(const QString& name)
{
    static const QRegularExpression constant(QStringLiteral("^const int (\\w+) = (-?\\d+);"),
                                             QRegularExpression::MultilineOption);
    QMap<QString, int> constants;
    auto matches = constant.globalMatch(preprocessShader(shaderPath(name), {}));
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        EXPECT_FALSE(constants.contains(match.captured(1))) << match.captured(1).toStdString();
        constants.insert(match.captured(1), match.captured(2).toInt());
    }
    return constants;
}

QString stageSuffix(const QString& file)
{
    if (file.contains(QLatin1String("vertex"))) return QStringLiteral("vert");
    if (file.contains(QLatin1String("fragment"))) return QStringLiteral("frag");
    for (const char* tessellation : {"tesc", "tese"})
        if (file.contains(QLatin1String(tessellation))) return QLatin1String(tessellation);
    return QStringLiteral("geom");
}

bool isStage(const QString& file)
{
    return contentOf(sourceFolder + QLatin1Char('/') + file).startsWith("#version");
}

// Every set of the RX_ defines that a source asks about.
std::vector<std::vector<std::string>> defineSets(const QString& file)
{
    static const QRegularExpression use(QStringLiteral("#ifn?def (RX_\\w+)"));
    std::set<std::string> names;
    auto matches = use.globalMatch(preprocessShader(QStringLiteral("shader:Viewer3dModule/") + file, {}));
    while (matches.hasNext())
        names.insert(matches.next().captured(1).toStdString());
    std::vector<std::vector<std::string>> sets{{}};
    for (const std::string& name : names)
        for (std::size_t i = 0, count = sets.size(); i < count; ++i) {
            sets.push_back(sets[i]);
            sets.back().push_back(name);
        }
    return sets;
}

// The Khronos compiler over sources that are written into a folder of its own.
class Validator
{
public:
    void add(const QString& file, const std::vector<std::string>& defines)
    {
        const QString path = m_folder.filePath(
            QStringLiteral("%1-%2.%3")
                .arg(m_files.size())
                .arg(QString(file).remove(QLatin1Char(':')).section('/', -1), stageSuffix(file)));
        QFile out(path);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(preprocessShader(file, defines).toUtf8());
        m_files.append(path);
    }
    /// Runs it with these options over all files; returns what it wrote and fails the test when it refuses.
    QString run(const QStringList& options)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral("glslangValidator"), options + m_files);
        if (!process.waitForStarted()) {
            ADD_FAILURE() << "glslangValidator is not there: install glslang-tools";
            return {};
        }
        process.waitForFinished(60000);
        const QString text = QString::fromUtf8(process.readAll());
        EXPECT_EQ(process.exitCode(), 0) << text.toStdString();
        return text;
    }

private:
    QTemporaryDir m_folder;
    QStringList m_files;
};

class ShaderSourcesTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { mapShaderPrefix(); }
};

TEST_F(ShaderSourcesTest, ResourcesHoldTheFolderByteForByte)
{
    const QStringList names = shaderNames();
    EXPECT_FALSE(names.isEmpty());
    EXPECT_EQ(QDir(QStringLiteral("shader:Viewer3dModule")).entryList(QDir::Files, QDir::Name), names);
    for (const QString& name : names)
        EXPECT_EQ(contentOf(QStringLiteral("shader:Viewer3dModule/") + name),
                  contentOf(sourceFolder + QLatin1Char('/') + name))
            << name.toStdString();
}

TEST_F(ShaderSourcesTest, OnlyStagesHaveAVersionLineAndItIsTheirFirst)
{
    for (const QString& name : shaderNames()) {
        const QByteArray content = contentOf(sourceFolder + QLatin1Char('/') + name);
        const bool included = content.count("void main()") == 0;
        EXPECT_EQ(content.count("#version"), included ? 0 : 1) << name.toStdString();
        EXPECT_EQ(content.startsWith("#version 430 core\n"), !included) << name.toStdString();
    }
}

TEST_F(ShaderSourcesTest, SourcesAreAscii)
{
    for (const QString& name : shaderNames())
        for (const char c : contentOf(sourceFolder + QLatin1Char('/') + name))
            ASSERT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << name.toStdString();
}

TEST_F(ShaderSourcesTest, DrawModesAgreeWithTheProgram)
{
    const QMap<QString, int> expected = {
        {"ordinal_draw", DrawMode::OrdinalDraw},     {"selection_mask_draw", DrawMode::SelectionMaskDraw},
        {"glue_mask_draw", DrawMode::GlueMaskDraw},  {"selection_buffer_draw", DrawMode::SelectionBufferDraw},
        {"item_normal_flag", ItemFlag::Normal},      {"item_highlited_flag", ItemFlag::Highlighted},
        {"item_invisible_flag", ItemFlag::Invisible}};
    EXPECT_EQ(constantsOf("DrawModes"), expected);
}

TEST_F(ShaderSourcesTest, NumbersOfTheProgramSideAreFixed)
{
    EXPECT_EQ(DrawMode::OrdinalDraw, 0);
    EXPECT_EQ(DrawMode::SelectionMaskDraw, 1);
    EXPECT_EQ(DrawMode::GlueMaskDraw, 2);
    EXPECT_EQ(DrawMode::SelectionBufferDraw, 3);
    EXPECT_EQ(DrawMode::GeometryCapture, 4);
    EXPECT_EQ(PrimitiveBit::Points, 1);
    EXPECT_EQ(PrimitiveBit::Lines, 2);
    EXPECT_EQ(PrimitiveBit::Triangles, 4);
    EXPECT_EQ(PrimitiveBit::Adjacency, 8);
    EXPECT_EQ(PrimitiveBit::All, 7);
    EXPECT_EQ(ItemFlag::Normal, -1);
    EXPECT_EQ(ItemFlag::Highlighted, -2);
    EXPECT_EQ(ItemFlag::Invisible, -3);
}

TEST_F(ShaderSourcesTest, GluePrioritiesAreFixed)
{
    const QMap<QString, int> expected = {
        {"empty_flag", 0},     {"raw_coords_flag", 1},  {"face_flag", 2}, {"face_edge_flag", 3},
        {"face_node_flag", 4}, {"cloud_point_flag", 5}, {"edge_flag", 6}, {"mid_node_flag", 7},
        {"node_flag", 8},      {"point_item_flag", 9}};
    EXPECT_EQ(constantsOf("GluePriority"), expected);
}

TEST_F(ShaderSourcesTest, InvocationsOfSolidLinesHoldTheLargestSection)
{
    const QMap<QString, int> constants = constantsOf("SolidRegularLines.geom");
    EXPECT_EQ(constants.value("max_section_points_count"), 32);
    const int edges = constants.value("edges_per_invocation");
    const QByteArray source = contentOf(sourceFolder + "/SolidRegularLines.geom.glsl");
    EXPECT_TRUE(source.contains(QByteArray("invocations=") + QByteArray::number((31 + edges - 1) / edges)));
    EXPECT_TRUE(source.contains(QByteArray("max_vertices=") + QByteArray::number(2 * (edges + 1))));
}

TEST_F(ShaderSourcesTest, StorageBlocksHaveTheirBindings)
{
    const QByteArray selection = contentOf(sourceFolder + "/SelectionMode.glsl");
    EXPECT_TRUE(selection.contains("layout(std430, binding = 8) buffer items_selection_buffer\n"));
    EXPECT_TRUE(selection.contains("layout(std430, binding = 9) readonly buffer mask_selection_buffer\n"));
    const QByteArray solid = contentOf(sourceFolder + "/SolidRegularLines.geom.glsl");
    EXPECT_TRUE(solid.contains("layout(std430, binding = 11) readonly buffer segments_buffer\n"));
}

TEST_F(ShaderSourcesTest, KhronosCompilerAcceptsEveryStageUnderEveryDefine)
{
    Validator validator;
    int count = 0;
    for (const QString& name : shaderNames()) {
        if (!isStage(name)) continue;
        for (const auto& defines : defineSets(name)) {
            validator.add(QStringLiteral("shader:Viewer3dModule/") + name, defines);
            ++count;
        }
    }
    EXPECT_GE(count, 80);
    validator.run({});
}

class DefaultProgramSourcesTest : public ::testing::TestWithParam<ProgramRecipe>
{
protected:
    static void SetUpTestSuite() { mapShaderPrefix(); }
};

TEST_P(DefaultProgramSourcesTest, KhronosCompilerLinksIt)
{
    Validator validator;
    for (const QString& file : GetParam().files)
        validator.add(file, GetParam().defines);
    validator.run({QStringLiteral("-l")});
}

INSTANTIATE_TEST_SUITE_P(Programs, DefaultProgramSourcesTest, ::testing::ValuesIn(defaultPrograms()),
                         [](const auto& program) { return program.param.name; });

} // namespace
