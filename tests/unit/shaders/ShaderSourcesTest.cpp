#include <tests/support/ProgramVariants.h>
#include <tests/support/ShaderSources.h>

#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>

#include <cstdio>

namespace {

const QString sourceFolder = QStringLiteral(V3D_SOURCE_DIR "/Viewer3dModule/resources/Viewer3dModule");

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

// The files of the folder, which the resources are made of.
QStringList filesOfTheFolder()
{
    return QDir(sourceFolder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

// The numbers that a source with its includes names as constants.
QMap<QString, double> constantsOf(const QString& name)
{
    static const QRegularExpression constant(
        QStringLiteral("^const (?:int|uint|float) (\\w+) = (-?[\\d.]+(?:e-?\\d+)?)u?;"),
        QRegularExpression::MultilineOption);
    QMap<QString, double> constants;
    auto matches = constant.globalMatch(preprocessShader(shaderPath(name), {}));
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        EXPECT_FALSE(constants.contains(match.captured(1))) << match.captured(1).toStdString();
        constants.insert(match.captured(1), match.captured(2).toDouble());
    }
    return constants;
}

// How glslangValidator wants a file of this stage to be called; the words in the order of the program
// builder.
QString stageSuffix(const QString& file)
{
    const std::pair<const char*, const char*> suffixes[] = {{"vertex", "vert"}, {"fragment", "frag"},
                                                            {"geom", "geom"},   {"tesc", "tesc"},
                                                            {"tese", "tese"},   {"comp", "comp"}};
    for (const auto& [word, suffix] : suffixes)
        if (file.contains(QLatin1String(word))) return QLatin1String(suffix);
    ADD_FAILURE() << "no stage: " << file.toStdString();
    return {};
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

TEST_F(ShaderSourcesTest, FolderHoldsTheseFilesAndNoOther)
{
    const QStringList stages = {"DrawModes",
                                "GluePriority",
                                "SelectionMode",
                                "EmitGlueVertex",
                                "Quaternion",
                                "HashTable",
                                "OrderedContainer",
                                "PlanTexture",
                                "Jet",
                                "light.fragment",
                                "gradient.fragment",
                                "common.vertex",
                                "dummy.vertex",
                                "dashedLines.vertex",
                                "dashedLines.fragment",
                                "sphere.vertex",
                                "GlueMask.vertex",
                                "PerGlyphCaption.vertex",
                                "PerGlyphCaption.geom",
                                "caption.geom",
                                "WideLines.geom",
                                "SolidRegularLines.geom",
                                "cylinder.geom",
                                "EditNodes.geom",
                                "EditNodes.points.geom",
                                "EditNodes.fragment",
                                "Selection.face2points.geom",
                                "Selection.line2points.geom",
                                "GlueMask.points.geom",
                                "GlueMask.line2points.geom",
                                "GlueMask.face2points.geom",
                                "GlueMask.line2line.geom",
                                "GlueMask.face2line.geom",
                                "GlueMask.face2face.geom",
                                "GlueMask.fragment",
                                "GlueMask.line2line.fragment",
                                "GlueMask.face2face.fragment",
                                "sphereCube.tesc",
                                "sphereCube.tese",
                                "sphereCube.geom",
                                "sphereCube.fragment",
                                "mono.fragment",
                                "mono.point.fragment",
                                "texture.fragment",
                                "mesh.fragment",
                                "edl.fragment"};
    QStringList expected;
    for (const QString& stage : stages)
        expected.append(stage + ".glsl");
    expected.sort();
    EXPECT_EQ(expected.size(), 46);
    QStringList found = filesOfTheFolder();
    found.sort();
    EXPECT_EQ(found, expected);
}

TEST_F(ShaderSourcesTest, ResourcesHoldTheFolderByteForByte)
{
    const QStringList names = filesOfTheFolder();
    EXPECT_FALSE(names.isEmpty());
    EXPECT_EQ(QDir(QStringLiteral("shader:Viewer3dModule")).entryList(QDir::Files, QDir::Name), names);
    for (const QString& name : names)
        EXPECT_EQ(contentOf(QStringLiteral("shader:Viewer3dModule/") + name),
                  contentOf(sourceFolder + QLatin1Char('/') + name))
            << name.toStdString();
}

TEST_F(ShaderSourcesTest, OnlyStagesHaveAVersionLineAndItIsTheirFirst)
{
    for (const QString& name : filesOfTheFolder()) {
        const QByteArray content = contentOf(sourceFolder + QLatin1Char('/') + name);
        const bool included = content.count("void main()") == 0;
        EXPECT_EQ(content.count("#version"), included ? 0 : 1) << name.toStdString();
        EXPECT_EQ(content.startsWith("#version 430 core\n"), !included) << name.toStdString();
    }
}

TEST_F(ShaderSourcesTest, SourcesAreAscii)
{
    for (const QString& name : filesOfTheFolder())
        for (const char c : contentOf(sourceFolder + QLatin1Char('/') + name))
            ASSERT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << name.toStdString();
}

TEST_F(ShaderSourcesTest, DrawModesAgreeWithTheProgram)
{
    const QMap<QString, double> expected = {{"ordinal_draw", DrawMode::OrdinalDraw},
                                            {"selection_mask_draw", DrawMode::SelectionMaskDraw},
                                            {"glue_mask_draw", DrawMode::GlueMaskDraw},
                                            {"selection_buffer_draw", DrawMode::SelectionBufferDraw},
                                            {"item_normal_flag", ItemFlag::Normal},
                                            {"item_highlited_flag", ItemFlag::Highlighted},
                                            {"item_invisible_flag", ItemFlag::Invisible},
                                            {"item_color_mode", ColorMode::Item},
                                            {"vertex_color_mode", ColorMode::Vertices},
                                            {"texture_color_mode", ColorMode::Texture}};
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
    EXPECT_EQ(ColorMode::Item, 0);
    EXPECT_EQ(ColorMode::Vertices, 1);
    EXPECT_EQ(ColorMode::Texture, 2);
    EXPECT_EQ(maxColorLevels, 256);
}

TEST_F(ShaderSourcesTest, GluePrioritiesAreFixed)
{
    const QMap<QString, double> expected = {
        {"empty_flag", 0},     {"raw_coords_flag", 1},  {"face_flag", 2}, {"face_edge_flag", 3},
        {"face_node_flag", 4}, {"cloud_point_flag", 5}, {"edge_flag", 6}, {"mid_node_flag", 7},
        {"node_flag", 8},      {"point_item_flag", 9}};
    EXPECT_EQ(constantsOf("GluePriority"), expected);
    const QMap<QString, double> ofTheProgram = {
        {"empty_flag", GlueLayer::Empty},        {"raw_coords_flag", GlueLayer::RawCoords},
        {"face_flag", GlueLayer::Face},          {"face_edge_flag", GlueLayer::FaceEdge},
        {"face_node_flag", GlueLayer::FaceNode}, {"cloud_point_flag", GlueLayer::CloudPoint},
        {"edge_flag", GlueLayer::Edge},          {"mid_node_flag", GlueLayer::MidNode},
        {"node_flag", GlueLayer::Node},          {"point_item_flag", GlueLayer::PointItem}};
    EXPECT_EQ(ofTheProgram, expected);
    EXPECT_EQ(GlueLayer::bit(GlueLayer::Empty), 1u);
    EXPECT_EQ(GlueLayer::bit(31), 0x80000000u);
}

TEST_F(ShaderSourcesTest, InvocationsOfSolidLinesHoldTheLargestSection)
{
    const QMap<QString, double> constants = constantsOf("SolidRegularLines.geom");
    EXPECT_EQ(constants.value("max_section_points_count"), 32);
    const int edges = static_cast<int>(constants.value("edges_per_invocation"));
    const QByteArray source = contentOf(sourceFolder + "/SolidRegularLines.geom.glsl");
    EXPECT_TRUE(source.contains(QByteArray("invocations=") + QByteArray::number((31 + edges - 1) / edges)));
    EXPECT_TRUE(source.contains(QByteArray("max_vertices=") + QByteArray::number(2 * (edges + 1))));
}

TEST_F(ShaderSourcesTest, OffsetOfGlueLayersIsFixed)
{
    EXPECT_EQ(constantsOf("EmitGlueVertex").value("offset"), 0.000001);
}

TEST_F(ShaderSourcesTest, EyeDomeLightingHasItsNumbers)
{
    const QMap<QString, double> constants = constantsOf("edl.fragment");
    EXPECT_EQ(constants.value("not_used_edl_shading", -1), 0);
    EXPECT_EQ(constants.value("positive_edl_shading"), 1);
    EXPECT_EQ(constants.value("negative_edl_shading"), 2);
    EXPECT_EQ(constants.value("dome_radius"), 5);
    EXPECT_EQ(constants.value("foreground_level"), 0.001);
    EXPECT_EQ(constants.value("foreground_level"), Scene3d::getForegroundItemsZRange());
}

TEST_F(ShaderSourcesTest, SurfacesOfCylindersAreCutIntoTheirTiles)
{
    const QMap<QString, double> constants = constantsOf("cylinder.geom");
    EXPECT_EQ(constants.value("nTiles"), 36);
    const int tiles = static_cast<int>(constants.value("tiles_per_invocation"));
    const QByteArray source = contentOf(sourceFolder + "/cylinder.geom.glsl");
    EXPECT_TRUE(source.contains("invocations=" + QByteArray::number(36 / tiles)));
    EXPECT_EQ(36 % tiles, 0);
}

TEST_F(ShaderSourcesTest, ColourLevelsAreAsManyAsTheProgramSideHas)
{
    EXPECT_EQ(constantsOf("gradient.fragment").value("max_color_levels"), maxColorLevels);
}

TEST_F(ShaderSourcesTest, PlanTexturesGoEightLevelsDeep)
{
    EXPECT_EQ(constantsOf("PlanTexture").value("max_plan_depth"), 8);
}

// A compiler may compute what is written alike in two sources in two ways, unless both forbid it.
TEST_F(ShaderSourcesTest, VertexStagesThatReachTheScreenPromiseTheSamePositions)
{
    int promising = 0;
    for (const QString& name : filesOfTheFolder()) {
        const QByteArray source = contentOf(sourceFolder + QLatin1Char('/') + name);
        if (!name.contains(QLatin1String(".vertex.")) || !source.contains("projection")) continue;
        EXPECT_TRUE(source.contains("\ninvariant gl_Position;")) << name.toStdString();
        ++promising;
    }
    EXPECT_EQ(promising, 4) << "common, dashed lines, glue masks, glyphs";
}

TEST_F(ShaderSourcesTest, StorageBlocksHaveTheirBindings)
{
    const auto expect = [](const QString& name, const QByteArray& block) {
        EXPECT_TRUE(
            contentOf(sourceFolder + QLatin1Char('/') + name).contains("layout(std430, binding = " + block))
            << block.constData();
    };
    expect("SelectionMode.glsl", "8) buffer items_selection_buffer\n");
    expect("SelectionMode.glsl", "9) readonly buffer mask_selection_buffer\n");
    expect("SolidRegularLines.geom.glsl", "11) readonly buffer segments_buffer\n");
    expect("PlanTexture.glsl", "7) readonly buffer texture_plan_tree\n");
    expect("HashTable.glsl", "1) readonly buffer TABLE_NAME##_bucket");
    expect("HashTable.glsl", "2) readonly buffer TABLE_NAME##_keys");
    expect("HashTable.glsl", "3) readonly buffer TABLE_NAME##_val");
    expect("OrderedContainer.glsl", "1) readonly buffer CONTAINER_NAME##_keys");
    expect("OrderedContainer.glsl", "2) readonly buffer CONTAINER_NAME##_val");
}

TEST_F(ShaderSourcesTest, KhronosCompilerAcceptsEveryStageUnderEveryDefine)
{
    Validator validator;
    const std::vector<shader_sources::StageVariant> variants = shader_sources::stageVariants();
    for (const shader_sources::StageVariant& variant : variants)
        validator.add(shader_sources::pathOf(variant.name), variant.defines);
    EXPECT_GE(variants.size(), 130u);
    std::printf("glslangValidator: %zu stages with their defines\n", variants.size());
    validator.run({});
}

TEST_F(ShaderSourcesTest, EveryStageIsPartOfSomeProgram)
{
    QStringList used;
    for (const auto* programs : {&defaultPrograms(), &furtherPrograms()})
        for (const ProgramRecipe& program : *programs)
            used += program.files;
    for (const QString& name : shader_sources::names())
        EXPECT_EQ(shader_sources::isStage(name), used.contains(shader_sources::pathOf(name)))
            << name.toStdString();
}

class ProgramSourcesTest : public ::testing::TestWithParam<ProgramRecipe>
{
protected:
    static void SetUpTestSuite() { mapShaderPrefix(); }
};

TEST_P(ProgramSourcesTest, KhronosCompilerLinksIt)
{
    Validator validator;
    for (const QString& file : GetParam().files)
        validator.add(file, GetParam().defines);
    validator.run({QStringLiteral("-l")});
}

const auto nameOfProgram = [](const auto& program) { return program.param.name; };

INSTANTIATE_TEST_SUITE_P(Programs, ProgramSourcesTest, ::testing::ValuesIn(defaultPrograms()), nameOfProgram);
INSTANTIATE_TEST_SUITE_P(Variants, ProgramSourcesTest, ::testing::ValuesIn(programVariants()), nameOfProgram);
INSTANTIATE_TEST_SUITE_P(FurtherPrograms, ProgramSourcesTest, ::testing::ValuesIn(furtherPrograms()),
                         nameOfProgram);

} // namespace
