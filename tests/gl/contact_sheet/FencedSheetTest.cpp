#include "SheetScenes.h"

#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>
#include <Viewer3dModule/shaders/ShaderStorageBufferObject.h>

#include <cmath>

namespace {

/// What every program leaves out of what the sheet shows of it. Fences hold what lies to the left of a plane
/// along the line of sight, or nothing.
class FencedSheetTest : public SheetScenes, public ::testing::WithParamInterface<std::string>
{
protected:
    const Scene& scene() const { return sceneOf(GetParam()); }
    std::vector<Mode> modes() const
    {
        if (scene().kind == Kind::Glue) return {Mode::GlueMask};
        return {Mode::Ordinary, Mode::SelectionMask, Mode::GlueMask};
    }
    /// How far to the right of the camera's axis the plane lies: among the anchors of texts.
    static float border()
    {
        if (GetParam() == "GlyphCaption") return -0.95f;
        return GetParam() == "Caption" ? -0.7f : 0.0f;
    }
    void selectWith(const char* define)
    {
        furtherDefines = {define};
        select(GetParam());
    }
    void giveSphere(float radius)
    {
        selectWith("RX_USE_SPHERE_FENCE");
        set("fence_to_use", 2);
        set("sphere_fence_center", (border() - std::abs(radius)) * right());
        set("sphere_fence_radius", radius);
    }
    /// A polygon without edges nearby, swept to the left from the plane on without end.
    void givePrism(const glm::vec4& polygonBox)
    {
        selectWith("RX_USE_SWEPT_FENCE");
        set("fence_to_use", 3);
        set("fence_inner_box", polygonBox);
        set("fence_outer_box", polygonBox);
        glm::mat4 fromScene(1.0f);
        for (int i = 0; i < 3; ++i)
            fromScene[i][2] = -right()[i];
        fromScene[3][2] = border();
        set("fence_from_scene", fromScene);
        ASSERT_TRUE(m_record.fill(0)); // from depth 0 on
        ASSERT_TRUE(m_record.bind(program->programId()));
    }
    glm::vec3 right()
    {
        glm::mat4 view(1.0f);
        gl->glGetUniformfv(program->programId(), program->uniformLocation("view"), &view[0][0]);
        return {view[0][0], view[1][0], view[2][0]};
    }
    /// How far to the right of the plane what a pixel shows lies.
    static float placeOf(const Output& output, int x, int y)
    {
        const glm::vec4 ndc(2.0f * (float(x) + 0.5f) / CellSize - 1.0f,
                            1.0f - 2.0f * (float(y) + 0.5f) / CellSize, 2.0f * output.depth(x, y) - 1.0f,
                            1.0f);
        const glm::vec4 eye = glm::inverse(cameraProjection()) * ndc;
        return eye.x / eye.w - border();
    }
    /// Of the text that has its anchor inside all is left, of the other nothing. What has places of its own
    /// is left where these lie inside; marks, as large as they are, may go either way where they lie across.
    void expectCut(const Output& cut, const Output& whole, Mode mode) const
    {
        if (GetParam() == "Caption" || GetParam() == "GlyphCaption") {
            EXPECT_LT(cut.coveredCount(), whole.coveredCount());
            if (mode == Mode::Ordinary) return;
            EXPECT_EQ(cut.ids(), (std::set<std::uint64_t>{GetParam() == "Caption" ? 40u : 70u}));
            return;
        }
        constexpr float reach = 0.25f;
        int wrong = 0;
        for (int y = 0; y < CellSize; ++y)
            for (int x = 0; x < CellSize; ++x) {
                const bool isInside = whole.isCovered(x, y) && placeOf(whole, x, y) < -reach;
                wrong += isInside && !cut.isCovered(x, y);
                wrong += cut.isCovered(x, y) && placeOf(cut, x, y) > reach;
            }
        EXPECT_EQ(wrong, 0);
        EXPECT_GT(cut.coveredCount(), whole.coveredCount() / 10);
        EXPECT_LT(cut.coveredCount(), whole.coveredCount() * 9 / 10);
    }

private:
    ShaderStorageBufferObject m_record{10, "prism_fence_buffer", 112};
};

TEST_P(FencedSheetTest, WhatLiesOutsideIsInNoMode)
{
    if (scene().kind == Kind::EyeDome) return; // draws no items
    constexpr glm::vec4 everywhere(-1e30f, -1e30f, 1e30f, 1e30f), nowhere(1.0f, 1.0f, -1.0f, -1.0f);
    select(GetParam());
    std::vector<Output> wholes;
    for (const Mode mode : modes())
        wholes.push_back(drawScene(scene(), mode));

    giveSphere(1000.0f); // as good as the plane
    for (std::size_t i = 0; i < wholes.size(); ++i) {
        SCOPED_TRACE(i);
        if (wholes[i].coveredCount() == 0) continue; // dashed lines have nothing to snap to
        expectCut(drawScene(scene(), modes()[i]), wholes[i], modes()[i]);
    }
    givePrism(everywhere);
    expectCut(drawScene(scene(), modes()[0]), wholes[0], modes()[0]);

    givePrism(nowhere);
    for (const Mode mode : modes())
        EXPECT_EQ(drawScene(scene(), mode).coveredCount(), 0) << int(mode);
    if (scene().kind != Kind::Item) return;
    set("fence_gray_preview", 1);
    EXPECT_EQ(drawScene(scene(), Mode::Ordinary).coveredCount(), wholes[0].coveredCount());
    EXPECT_EQ(drawScene(scene(), Mode::SelectionMask).coveredCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(Programs, FencedSheetTest, ::testing::ValuesIn([] {
                             std::vector<std::string> names;
                             for (const auto* list : {&defaultPrograms(), &furtherPrograms()})
                                 for (const ProgramRecipe& program : *list)
                                     names.push_back(program.name);
                             return names;
                         }()),
                         [](const auto& program) { return program.param; });

} // namespace
