#include <tests/support/ShaderSources.h>

#include <gtest/gtest.h>

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <map>
#include <utility>

// What every OpenGL 4.3 driver takes of the stages before the fragments: for one, an invocation of a geometry
// stage writes 256 vertices and 1024 components, all outputs counted. Drivers that offer more accept sources
// that others refuse, so the numbers are read out of the sources, under every set of their defines.
namespace {

using shader_sources::StageVariant;

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

// What a declaration takes, by its type; an array is counted whole, one without a size once.
using Measure = int (*)(const QString& type);

int locationsOf(const QString& type)
{
    return type.startsWith(QLatin1String("mat")) ? type.mid(3).toInt() : 1;
}

// The declarations "type name;" of a text.
int declared(const QString& text, Measure measure)
{
    static const QRegularExpression declaration(
        QStringLiteral("([a-z]\\w*)\\s+(\\w+)\\s*(?:\\[\\s*(\\d*)\\s*\\])?\\s*;"));
    int sum = 0;
    auto matches = declaration.globalMatch(text);
    while (matches.hasNext()) {
        const auto match = matches.next();
        sum += measure(match.captured(1)) * (match.captured(3).isEmpty() ? 1 : match.captured(3).toInt());
    }
    return sum;
}

// What a stage declares as "in" or "out", in blocks and alone; the source has been through the GLSL
// preprocessor.
int interfaceOf(const QString& source, const QString& direction, Measure measure)
{
    const QRegularExpression block(
        QStringLiteral("(?:^|\\n)\\s*(?:patch )?%1\\s+\\w+\\s*\\{([^}]*)\\}").arg(direction));
    const QRegularExpression plain(
        QStringLiteral(
            "(?:^|\\n)\\s*(?:layout\\s*\\([^)]*\\)\\s*)?(?:(?:flat|noperspective|smooth|patch|centroid) )*"
            "%1\\s+(\\w+\\s+\\w+\\s*(?:\\[\\s*\\d*\\s*\\])?\\s*;)")
            .arg(direction));
    int sum = 0;
    auto blocks = block.globalMatch(source);
    while (blocks.hasNext())
        sum += declared(blocks.next().captured(1), measure);
    auto variables = plain.globalMatch(source);
    while (variables.hasNext())
        sum += declared(variables.next().captured(1), measure);
    return sum;
}

// Components of one vertex that a stage writes, the built-in ones among them.
int outputComponents(const QString& source)
{
    return 4 + (source.contains(QLatin1String("gl_PointSize")) ? 1 : 0) +
           interfaceOf(source, QStringLiteral("out"), componentsOf);
}

// Components of one vertex that a stage reads, without the built-in ones.
int inputComponents(const QString& source)
{
    return interfaceOf(source, QStringLiteral("in"), componentsOf);
}

// A number that a layout line names, such as max_vertices; 1 when there is none.
int layoutNumber(const QString& source, const QString& name)
{
    const QRegularExpression number(QStringLiteral("layout\\s*\\([^)]*\\b%1\\s*=\\s*(\\d+)").arg(name));
    const auto match = number.match(source);
    return match.hasMatch() ? match.captured(1).toInt() : 1;
}

int storageBlocks(const QString& source)
{
    return source.count(QRegularExpression(QStringLiteral("\\bbuffer\\s+\\w+\\s*\\{")));
}

int images(const QString& source)
{
    return source.count(QRegularExpression(QStringLiteral("\\buniform\\b[^;]*\\b[iu]?image\\w+\\s")));
}

QString kindOf(const QString& name)
{
    const std::pair<const char*, const char*> kinds[] = {
        {"vertex", "vert"}, {"fragment", "frag"}, {"geom", "geom"}, {"tesc", "tesc"}, {"tese", "tese"}};
    for (const auto& [word, kind] : kinds)
        if (name.contains(QLatin1String(word))) return QLatin1String(kind);
    return {};
}

// The sources of these stages after the GLSL preprocessor, in order.
QStringList preprocessedByGlsl(const std::vector<StageVariant>& variants)
{
    QTemporaryDir folder;
    QStringList arguments{QStringLiteral("-E")};
    for (const StageVariant& variant : variants) {
        QFile out(folder.filePath(QStringLiteral("%1.%2").arg(arguments.size()).arg(kindOf(variant.name))));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(preprocessShader(shader_sources::pathOf(variant.name), variant.defines).toUtf8());
        arguments.append(out.fileName());
    }
    QProcess process;
    process.start(QStringLiteral("glslangValidator"), arguments);
    EXPECT_TRUE(process.waitForFinished()) << "glslangValidator is not there: install glslang-tools";
    return QString::fromUtf8(process.readAllStandardOutput())
        .split(QStringLiteral("#version 430 core"), Qt::SkipEmptyParts);
}

// The largest number of each kind that was met, of how many that every driver has.
class Tightest
{
public:
    void check(const QString& what, int number, int limit, const StageVariant& where)
    {
        EXPECT_LE(number, limit) << what.toStdString() << ", " << where.name.toStdString();
        Entry& entry = m_entries[what];
        if (number <= entry.number) return;
        QStringList defines;
        for (const std::string& define : where.defines)
            defines.append(QString::fromStdString(define));
        entry = {number, limit, where.name + " " + defines.join(' ')};
    }
    void print() const
    {
        for (const auto& [what, entry] : m_entries)
            std::printf("%-48s at most %4d of %4d: %s\n", qUtf8Printable(what), entry.number, entry.limit,
                        qUtf8Printable(entry.where));
    }

private:
    struct Entry
    {
        int number = 0;
        int limit = 0;
        QString where;
    };
    std::map<QString, Entry> m_entries;
};

class GeometryLimitsTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { mapShaderPrefix(); }

    /// Calls use(variant, source) for every stage of this kind ("geom" and so on) under each set of its
    /// defines.
    template <typename Use>
    static int forEachStage(const QString& kind, Use use)
    {
        const auto& [stages, sources] = stagesOf(kind);
        EXPECT_EQ(static_cast<std::size_t>(sources.size()), stages.size());
        for (int i = 0; i < sources.size() && i < static_cast<int>(stages.size()); ++i)
            use(stages[static_cast<std::size_t>(i)], sources[i]);
        return sources.size();
    }

private:
    /// The stages of a kind and their sources after the GLSL preprocessor, which takes a second for many.
    static const std::pair<std::vector<StageVariant>, QStringList>& stagesOf(const QString& kind)
    {
        static std::map<QString, std::pair<std::vector<StageVariant>, QStringList>> known;
        const auto [entry, isNew] = known.try_emplace(kind);
        auto& [stages, sources] = entry->second;
        if (!isNew) return entry->second;
        for (const StageVariant& variant : shader_sources::stageVariants())
            if (kindOf(variant.name) == kind) stages.push_back(variant);
        sources = preprocessedByGlsl(stages);
        return entry->second;
    }
};

TEST_F(GeometryLimitsTest, CountingFindsAllOutputs)
{
    const QString source =
        QStringLiteral("layout(points, invocations = 4)in;\nlayout(triangle_strip, max_vertices = 18)out;\n"
                       "in Item { flat vec4 color; } item_in[];\n"
                       "out Item { flat vec4 color; flat uvec2 id; flat int flags; } item;\n"
                       "out vec3 a;\nflat out int b;\nout float c[3];\nuniform vec4 no;\n"
                       "in vec4 neither[];\npatch out mat3 d;\n"
                       "layout(std430, binding = 8)readonly buffer data { int words[]; };\n"
                       "layout(r32ui)uniform uimage2D picture;\nuniform sampler2D no_image;\n");
    EXPECT_EQ(outputComponents(source), 4 + 7 + 3 + 1 + 3 + 9);
    EXPECT_EQ(outputComponents(source + "gl_PointSize = 1.0;"), 4 + 7 + 3 + 1 + 3 + 9 + 1);
    EXPECT_EQ(inputComponents(source), 4 + 4);
    EXPECT_EQ(layoutNumber(source, "max_vertices"), 18);
    EXPECT_EQ(layoutNumber(source, "invocations"), 4);
    EXPECT_EQ(layoutNumber(source, "vertices"), 1);
    EXPECT_EQ(storageBlocks(source), 1);
    EXPECT_EQ(images(source), 1);
    EXPECT_EQ(
        interfaceOf("layout(location = 4)in mat4 m;\nlayout(location=0) in vec3 p[4];\n", "in", locationsOf),
        8);
}

TEST_F(GeometryLimitsTest, EveryGeometryStageFitsEveryDriver)
{
    Tightest tightest;
    std::map<QString, int> components;
    const int count =
        forEachStage(QStringLiteral("geom"), [&](const StageVariant& stage, const QString& source) {
            const int vertices = layoutNumber(source, "max_vertices");
            const int outputs = outputComponents(source);
            EXPECT_TRUE(source.contains("max_vertices")) << stage.name.toStdString();
            EXPECT_GE(outputs, 5) << stage.name.toStdString();
            tightest.check("geometry, vertices", vertices, 256, stage);
            tightest.check("geometry, components of all vertices", vertices * outputs, 1024, stage);
            tightest.check("geometry, components of a vertex", outputs, 128, stage);
            tightest.check("geometry, components of an input vertex", inputComponents(source), 64, stage);
            tightest.check("geometry, invocations", layoutNumber(source, "invocations"), 32, stage);
            int& most = components[stage.name];
            most = std::max(most, vertices * outputs);
        });
    EXPECT_GE(count, 20);
    for (const auto& [name, most] : components)
        std::printf("%s: %d of 1024 components\n", qUtf8Printable(name), most);
    tightest.print();
}

TEST_F(GeometryLimitsTest, EveryVertexStageFitsEveryDriver)
{
    Tightest tightest;
    const int count =
        forEachStage(QStringLiteral("vert"), [&](const StageVariant& stage, const QString& source) {
            tightest.check("vertex, outputs", outputComponents(source), 64, stage);
            tightest.check("vertex, varyings", interfaceOf(source, "out", componentsOf), 60, stage);
            tightest.check("vertex, attributes", interfaceOf(source, "in", locationsOf), 16, stage);
        });
    EXPECT_GE(count, 60);
    tightest.print();
}

TEST_F(GeometryLimitsTest, TessellationStagesFitEveryDriver)
{
    Tightest tightest;
    forEachStage(QStringLiteral("tesc"), [&](const StageVariant& stage, const QString& source) {
        const int vertices = layoutNumber(source, "vertices");
        const int outputs = outputComponents(source);
        tightest.check("tessellation control, vertices of a patch", vertices, 32, stage);
        tightest.check("tessellation control, outputs of a vertex", outputs, 128, stage);
        tightest.check("tessellation control, all outputs", (vertices + 1) * outputs, 4096, stage);
        tightest.check("tessellation control, inputs", inputComponents(source), 128, stage);
    });
    forEachStage(QStringLiteral("tese"), [&](const StageVariant& stage, const QString& source) {
        tightest.check("tessellation evaluation, outputs", outputComponents(source), 128, stage);
        tightest.check("tessellation evaluation, inputs", inputComponents(source), 128, stage);
    });
    tightest.print();
}

// Storage is for fragment stages, with one exception that is checked when its program is built.
TEST_F(GeometryLimitsTest, NoStageBeforeTheFragmentsHasStorage)
{
    for (const char* kind : {"vert", "tesc", "tese", "geom"})
        forEachStage(QLatin1String(kind), [&](const StageVariant& stage, const QString& source) {
            const auto& defines = stage.defines;
            const bool isException =
                stage.name == "SolidRegularLines.geom.glsl" &&
                std::count(defines.begin(), defines.end(), "RX_USE_PER_VERTEX_TEX_COORDS") == 1;
            EXPECT_EQ(storageBlocks(source), isException ? 1 : 0) << stage.name.toStdString();
        });
}

TEST_F(GeometryLimitsTest, FragmentStagesFitEveryDriver)
{
    Tightest tightest;
    const int count =
        forEachStage(QStringLiteral("frag"), [&](const StageVariant& stage, const QString& source) {
            tightest.check("fragment, inputs", inputComponents(source), 60, stage);
            const int outputs = interfaceOf(source, "out", locationsOf);
            tightest.check("fragment, outputs", outputs, 8, stage);
            tightest.check("fragment, storage blocks", storageBlocks(source), 8, stage);
            tightest.check("fragment, outputs, images and storage blocks",
                           outputs + images(source) + storageBlocks(source), 8, stage);
        });
    EXPECT_GE(count, 20);
    tightest.print();
}

} // namespace
