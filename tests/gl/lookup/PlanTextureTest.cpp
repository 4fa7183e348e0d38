#include "PlanDrawing.h"

#include <cmath>
#include <cstdio>

namespace {

const char* const planSource =
    "//#include \"shader:Viewer3dModule/PlanTexture.glsl\"\n"
    "layout(std430, binding = 4) readonly buffer case_coords { vec4 coords[]; };\n"
    "layout(std430, binding = 0) writeonly buffer case_results { uint results[]; };\n"
    "void evaluate(int index) { results[index] = packUnorm4x8(planTextureColor(coords[index].xyz)); }\n";

constexpr int LayerSize = 4;    // texels along an edge
constexpr int MaxLayers = 2048; // as every driver has
constexpr int MaxDepth = 8;

// What a texel of the test's texture holds: its layer and its place; alpha is full.
std::uint32_t texelOf(int layer, int column, int row)
{
    return static_cast<std::uint32_t>(layer & 255) | static_cast<std::uint32_t>(layer >> 8) << 8 |
           static_cast<std::uint32_t>(16 * row + column) << 16 | 0xFF000000u;
}

// The reference: the finest picture at (x, y) of a tile, by going down the tree of pictures.
std::uint32_t expectedTexel(const Picture& picture, double x, double y, int depth = 0)
{
    const int column = x < 0.5 ? 0 : 1;
    const int row = y < 0.5 ? 0 : 1;
    const Picture* quarter = picture.quarters[static_cast<std::size_t>(2 * row + column)].get();
    if (depth < MaxDepth && quarter && quarter->layer > 0)
        return expectedTexel(*quarter, 2.0 * x - column, 2.0 * y - row, depth + 1);
    return texelOf(picture.layer, static_cast<int>(x * LayerSize), static_cast<int>(y * LayerSize));
}

std::uint32_t expectedTexel(const Plan& plan, double x, double y)
{
    const double column = std::floor(x), row = std::floor(y);
    if (column < 0.0 || row < 0.0 || column >= plan.columns || row >= plan.rows) return 0u;
    const int tile = static_cast<int>(row) * plan.columns + static_cast<int>(column);
    return expectedTexel(plan.tiles[static_cast<std::size_t>(tile)], x - column, y - row);
}

class PlanTextureTest : public PlanDrawing
{
protected:
    void SetUp() override
    {
        PlanDrawing::SetUp();
        use(planSource);
    }
    void makeLayers(int count)
    {
        std::vector<std::uint32_t> texels;
        for (int layer = 0; layer < count; ++layer)
            for (int row = 0; row < LayerSize; ++row)
                for (int column = 0; column < LayerSize; ++column)
                    texels.push_back(texelOf(layer, column, row));
        gl->glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl->glTexImage3D(GL_TEXTURE_2D_ARRAY, 0, GL_RGBA8, LayerSize, LayerSize, count, 0, GL_RGBA,
                         GL_UNSIGNED_BYTE, texels.data());
    }
    std::vector<std::uint32_t> texels(const std::vector<glm::vec4>& coords)
    {
        storage(4, coords);
        return evaluateAll<std::uint32_t>(coords.size());
    }
    /// The layers of the texels at these plan coordinates, -1 where the plan is not.
    std::vector<int> layers(const std::vector<glm::vec2>& coords)
    {
        std::vector<glm::vec4> padded;
        for (const glm::vec2& c : coords)
            padded.emplace_back(c, 0.0f, 0.0f);
        std::vector<int> found;
        for (const std::uint32_t texel : texels(padded))
            found.push_back(texel == 0u ? -1 : static_cast<int>(texel & 0xFFFFu));
        return found;
    }
    int integer(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); }
    bool chance(double probability) { return std::bernoulli_distribution(probability)(random); }
};

class RandomPlans : public PlanTextureTest
{
protected:
    Plan plan()
    {
        Plan plan;
        plan.rows = integer(1, 6);
        plan.columns = integer(1, 6);
        plan.tiles.resize(static_cast<std::size_t>(plan.rows * plan.columns));
        m_layersLeft = MaxLayers - 1;
        for (Picture& tile : plan.tiles)
            tile.layer = chance(0.1) ? 0 : m_layersLeft--;
        for (Picture& tile : plan.tiles)
            grow(tile, 0);
        return plan;
    }
    /// Each row of the matrix maps plan coordinates that are whole to multiples of 1 / 4096 and a half of it:
    /// exact in floats, and never on the border of a texel.
    glm::mat4 matrix()
    {
        glm::mat4 m(1.0f);
        for (int column = 0; column < 4; ++column)
            for (int row = 0; row < 4; ++row)
                m[column][row] = static_cast<float>(integer(-3, 3));
        for (int row = 0; row < 2; ++row) {
            m[0][row] = static_cast<float>(integer(-2, 2)) / 4096.0f;
            m[1][row] = static_cast<float>(integer(-2, 2)) / 4096.0f;
            m[2][row] = static_cast<float>(integer(-2, 2)) / 4096.0f;
            m[3][row] = static_cast<float>(integer(0, 2 * 4096)) / 4096.0f + 0.5f / 4096.0f;
        }
        m[0][0] += 4.0f / 4096.0f;
        m[1][1] += 4.0f / 4096.0f;
        return m;
    }

private:
    void grow(Picture& picture, int depth)
    {
        // a branch goes on below the deepest level that is looked at, and below pictures that are missing
        if (depth > MaxDepth + 1 || m_layersLeft < 4 || !chance(depth == 0 ? 0.9 : 0.45)) return;
        int quarters[4];
        for (int& layer : quarters)
            layer = chance(0.15) ? -integer(0, 1) : m_layersLeft--;
        picture.split(quarters[0], quarters[1], quarters[2], quarters[3]);
        for (const auto& quarter : picture.quarters)
            grow(*quarter, depth + 1);
    }

    int m_layersLeft = 0;
};

TEST_F(RandomPlans, ShowTheFinestPicture)
{
    makeLayers(MaxLayers);
    constexpr std::size_t planCount = 20, coordCount = 8192;
    std::size_t wrong = 0, outside = 0;
    for (std::size_t i = 0; i < planCount; ++i) {
        const Plan tested = plan();
        const glm::mat4 toTiles = matrix();
        feed(tested, toTiles);
        std::vector<glm::vec4> coords;
        for (std::size_t k = 0; k < coordCount; ++k)
            coords.emplace_back(integer(-2000, 4000), integer(-2000, 4000), integer(-1000, 1000), 0);
        const auto found = texels(coords);
        for (std::size_t k = 0; k < coordCount; ++k) {
            const glm::dvec4 t = glm::dmat4(toTiles) * glm::dvec4(glm::dvec3(coords[k]), 1.0);
            const std::uint32_t expected = expectedTexel(tested, t.x, t.y);
            wrong += found[k] != expected;
            outside += expected == 0u;
        }
    }
    std::printf("plan texture: %zu plans, %zu cases, %zu of them outside, %zu differ\n", planCount,
                planCount * coordCount, outside, wrong);
    EXPECT_EQ(wrong, 0u);
    EXPECT_GT(outside, planCount * coordCount / 10);
    EXPECT_LT(outside, planCount * coordCount * 9 / 10);
}

Plan oneTile(int layer)
{
    Plan plan;
    plan.rows = plan.columns = 1;
    plan.tiles.resize(1);
    plan.tiles[0].layer = layer;
    return plan;
}

TEST_F(PlanTextureTest, QuartersGoByColumnsThenRows)
{
    makeLayers(8);
    Plan plan = oneTile(5);
    plan.tiles[0].split(1, 2, 3, 4);
    feed(plan);
    EXPECT_EQ(layers({{0.0f, 0.0f}, {0.4f, 0.4f}, {0.6f, 0.4f}, {0.4f, 0.6f}, {0.6f, 0.6f}, {0.5f, 0.5f}}),
              (std::vector<int>{1, 1, 2, 3, 4, 4}));
}

TEST_F(PlanTextureTest, TilesGoByColumnsThenRows)
{
    makeLayers(8);
    Plan plan;
    plan.rows = 2;
    plan.columns = 3;
    plan.tiles.resize(6);
    for (int i = 0; i < 6; ++i)
        plan.tiles[static_cast<std::size_t>(i)].layer = i + 1;
    feed(plan);
    EXPECT_EQ(layers({{0.5f, 0.5f}, {1.5f, 0.5f}, {2.5f, 0.5f}, {0.5f, 1.5f}, {1.5f, 1.5f}, {2.5f, 1.5f}}),
              (std::vector<int>{1, 2, 3, 4, 5, 6}));
}

TEST_F(PlanTextureTest, OutsideOfTheTilesThereIsNothing)
{
    makeLayers(8);
    feed(oneTile(3));
    const float below = -1e-6f, within = 1.0f - 1e-6f, nan = std::nanf(""), far = 1e30f;
    EXPECT_EQ(layers({{0.0f, 0.0f}, {within, within}}), (std::vector<int>{3, 3}));
    EXPECT_EQ(layers({{below, 0.5f}, {0.5f, below}, {1.0f, 0.5f}, {0.5f, 1.0f}, {-7.0f, -7.0f}}),
              std::vector<int>(5, -1));
    EXPECT_EQ(layers({{far, 0.5f}, {0.5f, far}, {-far, 0.5f}, {0.5f, -far}, {nan, 0.5f}, {0.5f, nan}}),
              std::vector<int>(6, -1));
}

TEST_F(PlanTextureTest, WithoutTilesThereIsNothing)
{
    makeLayers(8);
    storage(7, std::vector<int>{0, 0, 1});
    EXPECT_EQ(layers({{0.0f, 0.0f}, {0.5f, 0.5f}}), (std::vector<int>{-1, -1})) << "nothing set at all";
    EXPECT_EQ(integerOf("uTexturePlanRows"), 0);
    EXPECT_EQ(integerOf("uTexturePlanCols"), 0);
    set("uTexturePlanRows", 1);
    EXPECT_EQ(layers({{0.0f, 0.0f}}), std::vector<int>{-1});
    set("uTexturePlanCols", 1);
    EXPECT_EQ(layers({{0.9f, 0.9f}, {1.1f, 0.9f}}), (std::vector<int>{1, -1})) << "one unit a tile at first";
}

TEST_F(PlanTextureTest, GoesDownEightLevelsAtMost)
{
    makeLayers(16);
    for (int levels = 7; levels <= 10; ++levels) {
        Plan plan = oneTile(1);
        Picture* deepest = &plan.tiles[0];
        for (int i = 1; i <= levels; ++i) {
            deepest->split(i + 1, 0, 0, 0);
            deepest = deepest->quarters[0].get();
        }
        feed(plan);
        EXPECT_EQ(layers({{1e-5f, 1e-5f}}), std::vector<int>{std::min(levels, 8) + 1});
    }
}

TEST_F(PlanTextureTest, LinksThatLeadNowhereEndTheWay)
{
    makeLayers(8);
    feed(oneTile(3));
    const std::vector<glm::vec2> quarters = {{0.2f, 0.2f}, {0.7f, 0.2f}, {0.2f, 0.7f}, {0.7f, 0.7f}};
    storage(7, std::vector<int>{3, 0, 5, 0, 6, 1, 0, -1, 2}); // two children only
    EXPECT_EQ(layers(quarters), (std::vector<int>{1, 2, 5, 5}));
    storage(7, std::vector<int>{3, 0, 5, 0, 1000000, 1}); // the second child lies beyond the buffer
    EXPECT_EQ(layers(quarters), (std::vector<int>{1, 5, 5, 5}));
    storage(7, std::vector<int>{-3, 0, 5, 0, 0, 1});
    EXPECT_EQ(layers(quarters), std::vector<int>(4, 5));
}

TEST_F(PlanTextureTest, ThePlanLiesAtItsBinding)
{
    EXPECT_EQ(blockBinding("texture_plan_tree"), 7);
}

} // namespace
