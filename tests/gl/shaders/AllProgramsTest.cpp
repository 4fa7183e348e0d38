#include "ProgramFacts.h"

#include <QtCore/QDirIterator>

#include <cstdio>
#include <map>

// What holds of all programs: they link, stay within what every OpenGL 4.3 driver has, start with the values
// that are told of their uniforms, and have every uniform that the module sets. The numbers are those of the
// linked programs.
namespace {

using namespace program_facts;

class AllProgramsTest : public AllProgramsFixture
{
};

/// The largest number of each kind that was met, of how many that every driver has.
class Tightest
{
public:
    void check(const std::string& what, int number, int limit, const std::string& program)
    {
        EXPECT_LE(number, limit) << what << ", " << program;
        Entry& entry = m_entries[what];
        if (number > entry.number || entry.program.empty()) entry = {number, limit, program};
    }
    void print() const
    {
        for (const auto& [what, entry] : m_entries)
            std::printf("%-52s at most %4d of %4d: %s\n", what.c_str(), entry.number, entry.limit,
                        entry.program.c_str());
    }

private:
    struct Entry
    {
        int number = 0;
        int limit = 0;
        std::string program;
    };
    std::map<std::string, Entry> m_entries;
};

TEST_F(AllProgramsTest, Link)
{
    for (const Facts& program : programs())
        EXPECT_TRUE(program.isLinked) << program.recipe.name;
    std::printf("programs: %zu linked\n", programs().size());
    EXPECT_GE(programs().size(), 25u);
}

TEST_F(AllProgramsTest, TellWhatTheirGeometryStageTakes)
{
    const QMap<QString, int> expected = {{"caption.geom", 1},
                                         {"WideLines.geom", 2},
                                         {"SolidRegularLines.geom", 10},
                                         {"cylinder.geom", 1},
                                         {"sphereCube.geom", 4},
                                         {"EditNodes.geom", 2},
                                         {"EditNodes.points.geom", 1},
                                         {"PerGlyphCaption.geom", 1},
                                         {"Selection.face2points.geom", 4},
                                         {"GlueMask.points.geom", 1},
                                         {"GlueMask.line2points.geom", 2},
                                         {"GlueMask.face2points.geom", 4},
                                         {"GlueMask.line2line.geom", 2},
                                         {"GlueMask.face2line.geom", 4},
                                         {"GlueMask.face2face.geom", 4},
                                         {"Selection.line2points.geom", 2}};
    QStringList seen;
    for (const Facts& program : programs()) {
        QVariant primitives;
        for (auto stage = expected.begin(); stage != expected.end(); ++stage)
            if (program.recipe.files.contains(shaderPath(stage.key()))) {
                primitives = stage.value();
                seen.append(stage.key());
            }
        EXPECT_EQ(program.primitives, primitives) << program.recipe.name;
    }
    seen.removeDuplicates();
    EXPECT_EQ(seen.size(), expected.size());
}

TEST_F(AllProgramsTest, StayWithinWhatEveryDriverHas)
{
    // vertex, tessellation control and evaluation, geometry, fragment
    const int uniformLimits[] = {1024, 1024, 1024, 512, 1024};
    const int storageLimits[] = {0, 0, 0, 0, 8};
    Tightest tightest;
    std::vector<Facts> all = programs();
    all.push_back(gradient());
    for (const Facts& program : all) {
        const std::string& name = program.recipe.name;
        int allSamplers = 0;
        for (std::size_t stage = 0; stage < 5; ++stage) {
            int components = 0;
            int samplers = 0;
            for (const Uniform& uniform : program.uniforms) {
                if (!uniform.stages[stage]) continue;
                // a column, and each element of an array, takes a whole vector at worst
                if (isSampler(uniform.type))
                    samplers += uniform.size;
                else
                    components += 4 * shapeOf(uniform.type).first * uniform.size;
            }
            allSamplers += samplers;
            const std::string what = stageNames[stage];
            tightest.check(what + ", uniform components", components, uniformLimits[stage], name);
            tightest.check(what + ", samplers", samplers, 16, name);
            const bool isException =
                stage == Geometry && program.recipe.files.contains(shaderPath("SolidRegularLines.geom"));
            if (isException)
                EXPECT_LE(program.storageBlocks[stage], 1) << name;
            else
                tightest.check(what + ", storage blocks", program.storageBlocks[stage], storageLimits[stage],
                               name);
        }
        tightest.check("samplers of a program", allSamplers, 96, name);
        // drivers that do not tell who only reads a block are helped by counting the most that the sources
        // have: 3, with the fence's
        const int blocks = std::max(program.storageBlocks[Fragment], usesSelection(program) ? 3 : 0);
        tightest.check("outputs, images and storage blocks", program.outputs + blocks, 8, name);
        tightest.check("geometry, vertices", program.geometryVertices, 256, name);
        tightest.check("geometry, invocations", program.geometryInvocations, 32, name);
        tightest.check("tessellation control, vertices of a patch", program.patchVertices, 32, name);
    }
    tightest.print();
}

TEST_F(AllProgramsTest, EveryStageCompilesUnderEveryDefine)
{
    const std::vector<shader_sources::StageVariant> variants = shader_sources::stageVariants();
    const std::pair<const char*, QOpenGLShader::ShaderType> kinds[] = {
        {"vertex", QOpenGLShader::Vertex},
        {"fragment", QOpenGLShader::Fragment},
        {"geom", QOpenGLShader::Geometry},
        {"tesc", QOpenGLShader::TessellationControl},
        {"tese", QOpenGLShader::TessellationEvaluation}};
    std::size_t compiled = 0;
    for (const shader_sources::StageVariant& variant : variants)
        for (const auto& [word, type] : kinds) {
            if (!variant.name.contains(QLatin1String(word))) continue;
            QOpenGLShader shader(type);
            const bool isCompiled = shader.compileSourceCode(
                preprocessShader(shader_sources::pathOf(variant.name), variant.defines));
            EXPECT_TRUE(isCompiled) << variant.name.toStdString() << shader.log().toStdString();
            compiled += isCompiled;
            break;
        }
    EXPECT_EQ(compiled, variants.size());
    std::printf("stages: %zu compiled, each under every set of its defines\n", compiled);
}

const std::vector<double> identity4 = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
const std::vector<double> identity3 = {1, 0, 0, 0, 1, 0, 0, 0, 1};

TEST_F(AllProgramsTest, UniformsStartWithTheirValues)
{
    const std::map<QString, std::vector<double>> expected = {
        {"projection", identity4},
        {"view", identity4},
        {"model", identity4},
        {"normalMatrix", identity3},
        {"viewport", identity4},
        {"viewport_inverted", identity4},
        {"mvp_inv", identity4},
        {"pen_width", {1}},
        {"draw_mode", {0}},
        {"item_flags", {-1}},
        {"item_id", {0, 0}},
        {"item_index", {0}},
        {"selection_rect", {0, 0, 0, 0}},
        {"glue_mask", {4294967295.0}},
        {"offset", {0, 0}},
        {"fence_to_use", {0}},
        {"fence_gray_preview", {0}},
        {"sphere_fence_center", {0, 0, 0}},
        {"sphere_fence_radius", {0}},
        {"fence_from_scene", identity4},
        {"fence_inner_box", {1, 1, -1, -1}},
        {"fence_outer_box", {1, 1, -1, -1}},
        {"fence_ends", {0, 0}},
        {"fence_count", {0}},
        {"uTexLeft", {0}},
        {"uTexRight", {1}},
        {"uTexTop", {0}},
        {"uTexBottom", {1}},
        {"u_dashSize", {0}},
        {"u_gapSize", {0}},
        {"section_points_count", {0}},
        {"section_period", {0}},
        {"up_vector", {0, 0, 1}},
        {"reserved_up_vector", {0, 1, 0}},
        {"uTessLevelInner", {32}},
        {"uTessLevelOuter", {32}},
        {"uTextureK", {-1}},
        {"uTextureB", {1}},
        {"uWireMode", {0}},
        {"uLightDirection", {1, 1, 1}},
        {"uLightMode", {1}},
        {"uColorMode", {0}},
        {"filled_texture_back", {0}},
        {"uMaterialMode", {0}},
        {"uMaterialAmbient", {1, 1, 1}},
        {"uMaterialDiffuse", {1, 1, 1}},
        {"uMaterialSpecular", {1, 1, 1}},
        {"is_show_adding_markers", {1}},
        {"first_marker_idx", {0}},
        {"edl_shading_type", {2}},
        {"levelCount", {0}},
        {"levelStep", {0}},
        {"levelStepDiscreteMode", {0}},
    };
    std::vector<Facts> all = programs();
    all.push_back(gradient());
    std::size_t compared = 0;
    for (const auto& [name, values] : expected) {
        bool isThere = false;
        for (const Facts& program : all)
            for (const Uniform& uniform : program.uniforms) {
                if (uniform.name != name) continue;
                isThere = true;
                ++compared;
                EXPECT_EQ(uniform.values, values) << name.toStdString() << " of " << program.recipe.name;
            }
        EXPECT_TRUE(isThere) << name.toStdString();
    }
    std::printf("uniforms: %zu names, %zu first values compared\n", expected.size(), compared);
}

// A name that is misspelt on the program's side is skipped without a word; so they are read out of its
// sources.
TEST_F(AllProgramsTest, HaveEveryUniformThatTheModuleSets)
{
    // set for programs of other modules; none of this module's shows an item that is being worked on
    const QStringList ofOtherModules = {"interaction_color"};
    static const QRegularExpression named(QStringLiteral("\\buniformLocation\\(\"(\\w+)\"\\)"));
    static const QRegularExpression any(QStringLiteral("[.>]uniformLocation\\("));
    QStringList wanted;
    QDirIterator files(QStringLiteral(V3D_SOURCE_DIR "/Viewer3dModule"), {"*.cpp", "*.h"}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        int count = 0;
        for (auto matches = named.globalMatch(text); matches.hasNext(); ++count)
            wanted.append(matches.next().captured(1));
        EXPECT_EQ(count, text.count(any))
            << "a name that this test cannot read: " << file.fileName().toStdString();
    }
    wanted.removeDuplicates();
    std::vector<Facts> all = programs();
    all.push_back(gradient());
    QStringList there;
    for (const Facts& program : all)
        for (const Uniform& uniform : program.uniforms)
            there.append(uniform.name);
    for (const QString& name : wanted)
        EXPECT_NE(there.contains(name), ofOtherModules.contains(name)) << name.toStdString();
    std::printf("uniforms: %d names are set by the module\n", wanted.size());
    EXPECT_GE(wanted.size(), 25);
}

} // namespace
