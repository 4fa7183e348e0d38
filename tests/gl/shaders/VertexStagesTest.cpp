#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <utility>

// What the general vertex stage hands on, under its defines, and that of dashed lines: against products of
// matrices in doubles, and bit by bit where nothing is computed.
namespace {

enum class Instances { None, Positions, Matrices };

class VertexStagesTest : public ShaderDrawing
{
protected:
    static constexpr int Vertices = 50;
    static constexpr int Items = 20;

    double number(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }
    glm::vec3 anyPoint(double reach)
    {
        return glm::vec3(number(-reach, reach), number(-reach, reach), number(-reach, reach));
    }
    /// A matrix without any structure, but for its last row.
    glm::mat4 anyMatrix()
    {
        glm::mat4 matrix(1.0f);
        for (int column = 0; column < 4; ++column)
            for (int row = 0; row < 3; ++row)
                matrix[column][row] = static_cast<float>(number(-2.0, 2.0));
        return matrix;
    }
    void setMatrices()
    {
        m_model = anyMatrix();
        m_view = anyMatrix();
        m_projection = glm::perspective(float(number(0.5, 2.0)), float(number(0.5, 2.0)), 0.5f, 100.0f);
        set("model", m_model);
        set("view", m_view);
        set("projection", m_projection);
    }
    /// Takes the difference of these floats from what is expected, relative to its size where that is
    /// above 1.
    void compare(const float* seen, const double* expected, int count)
    {
        double size = 1.0;
        for (int k = 0; k < count; ++k)
            size = std::max(size, std::fabs(expected[k]));
        for (int k = 0; k < count; ++k)
            m_worst = std::max(m_worst, std::fabs(double(seen[k]) - expected[k]) / size);
        ++m_cases;
    }
    static std::int32_t bits(float value)
    {
        std::int32_t word = 0;
        std::memcpy(&word, &value, 4);
        return word;
    }
    void report(const char* what)
    {
        std::printf("%s: %zu vectors, largest difference %.2g of their size, tolerance %.2g\n", what, m_cases,
                    m_worst, Tolerance);
        EXPECT_LE(m_worst, Tolerance);
    }

    void expectCommonStage(Instances instances);

    static constexpr double Tolerance = 3e-6;
    glm::mat4 m_model{1.0f};
    glm::mat4 m_view{1.0f};
    glm::mat4 m_projection{1.0f};
    std::size_t m_cases = 0;
    double m_worst = 0.0;
    std::mt19937 random{77};
};

void VertexStagesTest::expectCommonStage(Instances instances)
{
    std::vector<std::string> defines = {"RX_USE_PER_VERTEX_COLOR", "RX_USE_PER_VERTEX_NORMAL",
                                        "RX_USE_PER_VERTEX_TEX_COORDS"};
    if (instances != Instances::None) defines.emplace_back("RX_USE_INSTANCED_DRAW");
    if (instances == Instances::Positions) defines.emplace_back("RX_USE_INSTANCE_POSITION");
    use({"common", {shaderPath("common.vertex")}, defines},
        {"gl_Position", "light_normal", "light_position", "texture_coords", "Item.color", "Item.id",
         "Item.flags", "Item.index", "Item.color_mode", "Item.is_lit", "Item.vertex_color", "gl_PointSize"});
    constexpr int Components = 4 + 3 + 3 + 2 + 4 + 2 + 4 + 4 + 1;
    const int items = instances == Instances::None ? 1 : Items;
    for (int run = 0; run < 10; ++run) {
        setMatrices();
        const glm::mat3 normalMatrix(anyMatrix());
        set("normalMatrix", normalMatrix);
        set("uLightDirection", glm::vec3(0, 0, 1)); // normals and places stay in eye coordinates then
        const glm::vec4 itemColor(anyPoint(1.0), 0.5f);
        const glm::vec4 selectionColor(anyPoint(1.0), 0.25f);
        setColors(itemColor, selectionColor);
        set("uColorMode", run);
        set("uLightMode", run % 2 == 0);
        const float pen = static_cast<float>(number(1.0, 20.0));
        set("pen_width", pen);

        std::vector<float> points;
        std::vector<float> colors;
        std::vector<float> normals;
        std::vector<float> coords;
        for (int i = 0; i < Vertices; ++i)
            for (int k = 0; k < 4; ++k) {
                colors.push_back(static_cast<float>(number(0, 1)));
                if (k < 3) points.push_back(static_cast<float>(number(-10, 10)));
                if (k < 3) normals.push_back(static_cast<float>(number(-1, 1)));
                if (k < 2) coords.push_back(static_cast<float>(number(-2, 2)));
            }
        attribute(0, 3, points);
        attribute(1, 4, colors);
        attribute(2, 3, normals);
        attribute(3, 2, coords);

        std::vector<std::uint32_t> flags;
        std::vector<std::uint32_t> ids;
        std::vector<float> positions;
        std::vector<glm::mat4> matrices;
        for (int i = 0; i < items; ++i) {
            flags.push_back(0xFFFFFFFFu - static_cast<std::uint32_t>((i + run) % 3)); // -1, -2, -3
            ids.push_back(static_cast<std::uint32_t>(random()));
            ids.push_back(static_cast<std::uint32_t>(random()));
            const glm::vec3 position = anyPoint(20.0);
            positions.insert(positions.end(), {position.x, position.y, position.z});
            matrices.push_back(anyMatrix());
        }
        const unsigned first = instances == Instances::Positions ? 5 : 8;
        if (instances == Instances::None) {
            set("item_flags", static_cast<int>(flags[0]));
            set("item_id", glm::uvec2(ids[0], ids[1]));
        } else {
            instanceIntegers(first, 1, GL_INT, flags);
            instanceIntegers(first + 1, 2, GL_UNSIGNED_INT, ids);
            if (instances == Instances::Positions) instanceFloats(4, 3, positions);
            if (instances == Instances::Matrices) instanceMatrices(4, matrices);
        }

        const std::vector<float> values = capture(GL_POINTS, Vertices, GL_POINTS, Components,
                                                  static_cast<std::size_t>(Vertices * items), items);
        ASSERT_EQ(values.size(), static_cast<std::size_t>(Vertices * items * Components));
        for (int i = 0; i < items; ++i)
            for (int v = 0; v < Vertices; ++v) {
                const float* seen = &values[static_cast<std::size_t>((i * Vertices + v) * Components)];
                const std::size_t at = static_cast<std::size_t>(v);
                const std::size_t item = static_cast<std::size_t>(i);
                glm::dvec4 world = glm::dmat4(m_model) *
                                   glm::dvec4(points[3 * at], points[3 * at + 1], points[3 * at + 2], 1.0);
                if (instances == Instances::Positions)
                    world += glm::dvec4(positions[3 * item], positions[3 * item + 1], positions[3 * item + 2],
                                        0.0);
                if (instances == Instances::Matrices) world = glm::dmat4(matrices[item]) * world;
                const glm::dvec4 eye = glm::dmat4(m_view) * world;
                const glm::dvec4 clip = glm::dmat4(m_projection) * eye;
                const glm::dvec3 normal =
                    glm::dmat3(normalMatrix) *
                    glm::dvec3(normals[3 * at], normals[3 * at + 1], normals[3 * at + 2]);
                compare(seen, &clip.x, 4);
                compare(seen + 4, &normal.x, 3);
                compare(seen + 7, &eye.x, 3);
                EXPECT_EQ(seen[10], coords[2 * at]);
                EXPECT_EQ(seen[11], coords[2 * at + 1]);
                const int itemFlags = static_cast<int>(flags[item]);
                const glm::vec4 color = itemFlags == -1   ? itemColor
                                        : itemFlags == -2 ? selectionColor
                                                          : glm::vec4(0.0f);
                for (int k = 0; k < 4; ++k) {
                    ASSERT_EQ(seen[12 + k], color[k]) << itemFlags;
                    ASSERT_EQ(seen[22 + k], colors[4 * at + std::size_t(k)]);
                }
                ASSERT_EQ(static_cast<std::uint32_t>(bits(seen[16])), ids[2 * item]);
                ASSERT_EQ(static_cast<std::uint32_t>(bits(seen[17])), ids[2 * item + 1]);
                ASSERT_EQ(bits(seen[18]), itemFlags);
                ASSERT_EQ(bits(seen[19]), i);
                ASSERT_EQ(bits(seen[20]), run);
                ASSERT_EQ(bits(seen[21]), run % 2 == 0 ? 1 : 0);
                ASSERT_EQ(seen[26], pen);
            }
    }
}

TEST_F(VertexStagesTest, SingleItems)
{
    expectCommonStage(Instances::None);
    report("common vertex stage");
}

TEST_F(VertexStagesTest, InstancesAtPositions)
{
    expectCommonStage(Instances::Positions);
    report("common vertex stage, instances at positions");
}

TEST_F(VertexStagesTest, InstancesByMatrices)
{
    expectCommonStage(Instances::Matrices);
    report("common vertex stage, instances by matrices");
}

TEST_F(VertexStagesTest, DashedLines)
{
    use({"dashed", {shaderPath("dashedLines.vertex")}, {}},
        {"gl_Position", "vertPos", "startPos", "dashes", "gl_PointSize"});
    constexpr int Components = 4 + 4 + 4 + 2 + 1;
    for (int run = 0; run < 10; ++run) {
        setMatrices();
        set("pen_width", 3.0f);
        set("u_dashSize", 5.5f);
        set("u_gapSize", 2.25f);
        std::vector<float> points;
        for (int i = 0; i < 3 * Vertices; ++i)
            points.push_back(static_cast<float>(number(-10, 10)));
        attribute(0, 3, points);
        const std::vector<float> values = capture(GL_POINTS, Vertices, GL_POINTS, Components, Vertices);
        ASSERT_EQ(values.size(), static_cast<std::size_t>(Vertices * Components));
        for (std::size_t v = 0; v < Vertices; ++v) {
            const float* seen = &values[v * Components];
            const glm::dvec4 clip =
                glm::dmat4(m_projection) *
                (glm::dmat4(m_view) * (glm::dmat4(m_model) *
                                       glm::dvec4(points[3 * v], points[3 * v + 1], points[3 * v + 2], 1.0)));
            for (int part = 0; part < 3; ++part)
                compare(seen + 4 * part, &clip.x, 4);
            ASSERT_EQ(seen[12], 5.5f);
            ASSERT_EQ(seen[13], 2.25f);
            ASSERT_EQ(seen[14], 3.0f);
        }
    }
    report("vertex stage of dashed lines");
}

// No vertex comes with a colour of its own there, and what stages hand on must not be left to chance.
TEST_F(VertexStagesTest, WithoutColoursVerticesHaveTheItems)
{
    const glm::vec4 itemColor(0.125f, 0.25f, 0.5f, 0.75f);
    for (const char* name : {"sphere.vertex", "dashedLines.vertex", "PerGlyphCaption.vertex"}) {
        use({name, {shaderPath(name)}, {"RX_USE_PER_VERTEX_COLOR"}}, {"Item.vertex_color"});
        set("item_color", itemColor);
        attribute(0, 3, {1.0f, 2.0f, 3.0f});
        const std::vector<float> values = capture(GL_POINTS, 1, GL_POINTS, 4, 1);
        EXPECT_EQ(values, (std::vector<float>{0.125f, 0.25f, 0.5f, 0.75f})) << name;
    }
}

TEST_F(VertexStagesTest, WithoutCoordinatesThePointIsTheOrigin)
{
    use({"origin", {shaderPath("common.vertex")}, {"RX_NO_USE_PER_VERTEX_COORDS"}}, {"gl_Position"});
    setMatrices();
    const std::vector<float> values = capture(GL_POINTS, 1, GL_POINTS, 4, 1);
    ASSERT_EQ(values.size(), 4u);
    const glm::dvec4 clip =
        glm::dmat4(m_projection) * (glm::dmat4(m_view) * (glm::dmat4(m_model) * glm::dvec4(0, 0, 0, 1)));
    compare(values.data(), &clip.x, 4);
    report("vertex stage without coordinates");
}

// Pictures of one item by different programs, as those of the glue mask, must cover the same pixels.
TEST_F(VertexStagesTest, AllPutAVertexAtTheSamePlaceToTheLastBit)
{
    const std::pair<const char*, std::vector<std::string>> stages[] = {
        {"common.vertex", {}},
        {"common.vertex",
         {"RX_USE_PER_VERTEX_COLOR", "RX_USE_PER_VERTEX_NORMAL", "RX_USE_PER_VERTEX_TEX_COORDS"}},
        {"common.vertex", {"RX_USE_PER_VERTEX_COLOR", "RX_USE_ELEVATION_COLOR"}},
        {"dashedLines.vertex", {}},
        {"GlueMask.vertex", {}},
        {"PerGlyphCaption.vertex", {}},
    };
    const std::vector<glm::mat4> models = {anyMatrix(), anyMatrix(), anyMatrix(), anyMatrix()};
    std::vector<float> points;
    for (int i = 0; i < 3 * Vertices; ++i)
        points.push_back(static_cast<float>(number(-10, 10)));
    m_view = anyMatrix();
    m_projection = glm::perspective(0.7f, 1.3f, 0.5f, 100.0f);

    std::vector<float> first;
    for (const auto& [name, defines] : stages) {
        use({name, {shaderPath(name)}, defines}, {"gl_Position"});
        set("view", m_view);
        set("projection", m_projection);
        attribute(0, 3, points);
        std::vector<float> values;
        for (const glm::mat4& model : models) {
            set("model", model);
            const std::vector<float> some = capture(GL_POINTS, Vertices, GL_POINTS, 4, Vertices);
            values.insert(values.end(), some.begin(), some.end());
        }
        if (first.empty()) first = values;
        ASSERT_EQ(values.size(), models.size() * Vertices * 4);
        EXPECT_EQ(std::memcmp(values.data(), first.data(), values.size() * sizeof(float)), 0) << name;
    }
}

} // namespace
