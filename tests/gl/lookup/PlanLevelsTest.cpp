#include "PlanDrawing.h"

#include <array>
#include <cstdio>
#include <string>

namespace {

// One pixel is one texel of a tile's picture along x or y or both, two of its quarters', four of theirs: the
// levels 0, 1 and 2 of the textures. Jumps from picture to picture must not show as pixels of another level.
class LevelsOfDetail : public PlanDrawing, public ::testing::WithParamInterface<glm::ivec2>
{
protected:
    static constexpr int Edge = 64; // texels of a picture
    static constexpr int LayerCount = 14;

    void SetUp() override
    {
        PlanDrawing::SetUp();
        // from the pixel, not from a buffer: pixels beside the triangle, which only serve derivatives, may
        // read none
        use("//#include \"shader:Viewer3dModule/PlanTexture.glsl\"\n"
            "layout(std430, binding = 0) writeonly buffer case_results { uint results[]; };\n"
            "uniform vec2 pixels_of_a_tile;\n"
            "void evaluate(int i)\n"
            "{ results[i] = packUnorm4x8(planTextureColor(vec3(gl_FragCoord.xy / pixels_of_a_tile, 0.0))); "
            "}\n");
        gl->glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_NEAREST);
        for (int mip = 0, edge = Edge; edge > 0; ++mip, edge /= 2) {
            const std::vector<std::uint32_t> filled(static_cast<std::size_t>(edge * edge * LayerCount),
                                                    0xFF000000u | static_cast<std::uint32_t>(mip));
            gl->glTexImage3D(GL_TEXTURE_2D_ARRAY, mip, GL_RGBA8, edge, edge, LayerCount, 0, GL_RGBA,
                             GL_UNSIGNED_BYTE, filled.data());
        }
    }
    /// Two rows and columns of tiles, of which two are divided, and a quarter of one of these.
    static Plan dividedPlan()
    {
        Plan plan;
        plan.rows = plan.columns = 2;
        plan.tiles.resize(4);
        for (Picture& tile : plan.tiles)
            tile.layer = 1;
        plan.tiles[0].split(2, 3, 4, 5);
        plan.tiles[3].split(6, 7, 8, 9);
        plan.tiles[3].quarters[2]->split(10, 11, 12, 13);
        return plan;
    }
};

TEST_P(LevelsOfDetail, AreTheSameAtTheBordersOfPictures)
{
    feed(dividedPlan());
    const glm::ivec2 tile = Edge * GetParam(); // pixels
    set("pixels_of_a_tile", glm::vec2(tile));
    const auto found = evaluateAll<std::uint32_t>(static_cast<std::size_t>(2 * tile.y * RowLength));
    std::array<std::size_t, 4> counts{}; // pixels at the levels 0, 1 and 2, and others
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < found.size(); ++i) {
        const int x = static_cast<int>(i) % RowLength;
        const int y = static_cast<int>(i) / RowLength;
        if (x >= 2 * tile.x) continue;
        const bool isFirst = x < tile.x && y < tile.y, isLast = x >= tile.x && y >= tile.y;
        const bool isDeepest = isLast && x < tile.x + tile.x / 2 && y >= tile.y + tile.y / 2;
        const std::size_t expected = isDeepest ? 2 : (isFirst || isLast ? 1 : 0);
        ++counts[std::min<std::size_t>(found[i] & 255u, 3)];
        wrong += found[i] != (0xFF000000u | expected);
    }
    std::printf("plan texture: %zu pixels at level 0, %zu at 1, %zu at 2, %zu at others, %zu differ\n",
                counts[0], counts[1], counts[2], counts[3], wrong);
    EXPECT_EQ(wrong, 0u);
}

INSTANTIATE_TEST_SUITE_P(Stretched, LevelsOfDetail,
                         ::testing::Values(glm::ivec2(1, 1), glm::ivec2(1, 4), glm::ivec2(4, 1)),
                         [](const auto& stretch) {
                             return "By" + std::to_string(stretch.param.x) + "And" +
                                    std::to_string(stretch.param.y);
                         });

} // namespace
