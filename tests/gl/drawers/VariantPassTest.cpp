#include "tests/gl/instanced/InstancedTest.h"
#include "tests/support/GlObjects.h"

#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/scene/SelectionOptions.h>

#include <QtGui/QPolygonF>

#include <algorithm>

// What passes do with variants of programs: which they build, and what they find in them of what a host has
// set in the program.

namespace {

/// Notes what a uniform of the pass's program is when it is drawn.
class UniformReader : public PolyPolyline3dItem
{
public:
    UniformReader(const char* name, bool promises)
        : PolyPolyline3dItem(0, DrawerType::Mono)
        , m_name(name)
    {
        setDrawsByPrimitives(promises);
    }
    using PolyPolyline3dItem::setDrawer;

    glm::vec4 found = glm::vec4(-1.0f);
    const QOpenGLShaderProgram* foundIn = nullptr;

protected:
    void draw(const PaintContext& context) override
    {
        const int location = context.program->uniformLocation(m_name);
        currentGLFunctions()->glGetUniformfv(context.program->programId(), location, &found.x);
        foundIn = context.program;
        PolyPolyline3dItem::draw(context);
    }

private:
    const char* m_name;
};

class VariantPassTest : public InstancedTest
{
protected:
    void TearDown() override
    {
        scene->makeCurrent();
        m_items.clear();
        m_drawer.reset();
        InstancedTest::TearDown();
    }
    /// An item of a drawer over the program.
    UniformReader& readerOf(Item3dDrawer& drawer, const char* name, bool promises)
    {
        auto item = std::make_unique<UniformReader>(name, promises);
        item->setPoints({{-1, 0, 0}, {1, 0, 0}}, {2});
        item->setDrawer(&drawer);
        m_items.push_back(std::move(item));
        return *m_items.back();
    }
    /// A drawer whose program a host has made, as scenes make theirs.
    SequentialItem3dDrawer& hostDrawer(const std::vector<std::string>& defines)
    {
        m_program =
            scene->createProgram({shaderPath("common.vertex"), shaderPath("mono.fragment")}, defines, {});
        m_drawer = std::make_unique<SequentialItem3dDrawer>(scene.get(), m_program);
        return *m_drawer;
    }
    void drawPass(Item3dDrawer& drawer, int mode)
    {
        PaintContext context = paintContext(8, 8);
        context.drawMode = mode;
        drawer.draw(context, {});
    }
    int programCount() const { return GlObjects::count(*gl).programs; }

    QOpenGLShaderProgram* m_program = nullptr;
    std::unique_ptr<SequentialItem3dDrawer> m_drawer;
    std::vector<std::unique_ptr<UniformReader>> m_items;
};

TEST_F(VariantPassTest, WhatIsTheHostsOwnArrives)
{
    SequentialItem3dDrawer& drawer =
        hostDrawer({"RX_COLORS_ONLY", "RX_USE_PER_VERTEX_COLOR", "RX_USE_ELEVATION_COLOR"});
    const UniformReader& reader = readerOf(drawer, "levelStep", true);
    for (const float step : {0.25f, 4.0f}) {
        ASSERT_TRUE(m_program->bind());
        m_program->setUniformValue("levelStep", step);
        for (const int mode : {DrawMode::SelectionMaskDraw, DrawMode::GlueMaskDraw}) {
            drawPass(drawer, mode);
            EXPECT_NE(reader.foundIn, m_program);
            EXPECT_EQ(reader.found.x, step) << mode;
        }
    }
}

TEST_F(VariantPassTest, AnItemThatSetsNothingFindsWhatTheHostHasSet)
{
    SequentialItem3dDrawer& drawer = hostDrawer({"RX_COLORS_ONLY"});
    const UniformReader& promising = readerOf(drawer, "pen_width", true);
    const UniformReader& other = readerOf(drawer, "pen_width", false);
    for (const float width : {3.0f, 5.0f}) {
        ASSERT_TRUE(m_program->bind());
        m_program->setUniformValue("pen_width", width);
        drawPass(drawer, DrawMode::SelectionMaskDraw);
        EXPECT_NE(other.foundIn, m_program);
        EXPECT_EQ(other.found.x, width);
        EXPECT_EQ(promising.found.x, 1.0f) << "sets it itself and may count on its first value";
    }
}

TEST_F(VariantPassTest, WhatPassesSetWinsOverTheHost)
{
    SequentialItem3dDrawer& drawer = hostDrawer({"RX_COLORS_ONLY"});
    const UniformReader& reader = readerOf(drawer, "selection_color", true);
    for (const int mode : {DrawMode::OrdinalDraw, DrawMode::SelectionMaskDraw}) {
        ASSERT_TRUE(m_program->bind());
        m_program->setUniformValue("selection_color", QColor(1, 2, 3, 4));
        drawPass(drawer, mode);
        EXPECT_EQ(reader.found, glm::vec4(1, 1, 0, 1)) << mode; // yellow: the settings' first value
    }
}

TEST_F(VariantPassTest, AFirstSelectionBuildsTheOneProgramThatItTakes)
{
    Item3dDrawer* drawer = scene->getDefaultDrawer(DrawerType::Mono);
    MarkItem item(1, glm::vec3(0.0f));
    item.setDrawsOpaque(true);
    item.setDrawer(drawer);
    int programs = programCount();
    const PaintContext view = paintContext(32, 32);
    scene->selectItems(view, QPolygonF(QRectF(-1, -1, 34, 34)), {});
    EXPECT_EQ(programCount(), programs + 1);
    programs = programCount();
    scene->selectItems(view, QPolygonF(QRectF(-1, -1, 34, 34)), {});
    EXPECT_EQ(programCount(), programs);
}

TEST_F(VariantPassTest, APassOfMasksThatReadsRecordsBuildsTheOneProgramThatItTakes)
{
    auto& lines = dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::Mono));
    BatchedItem3dDrawer drawer(scene.get(), lines.getProgramToShare());
    drawer.setLeastRun(1);
    class Line : public PolyPolyline3dItem
    {
    public:
        using PolyPolyline3dItem::PolyPolyline3dItem;
        using PolyPolyline3dItem::setDrawer;
    };
    Line line(0, DrawerType::Mono);
    line.setPoints({{-1, 0, 0}, {1, 0, 0}}, {2});
    line.setDrawer(&drawer);
    const int programs = programCount();
    drawPass(drawer, DrawMode::SelectionMaskDraw);
    EXPECT_EQ(drawer.drawnTogether(), 1u);
    EXPECT_EQ(programCount(), programs + 1);
}

} // namespace
