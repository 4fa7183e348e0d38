#include "CallCounter.h"

#include "tests/gl/fences/FencedScene.h"
#include "tests/gl/glyphs/GlyphsTest.h"
#include "tests/gl/instanced/InstancedTest.h"

#include <Viewer3dModule/drawables/DrawableShaderSphere.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/scene/ViewCulling.h>

#include <QtGui/QPolygonF>

#include <algorithm>
#include <limits>

// What a pass costs besides its items: questions to the driver, allocations and signals, once the programs
// are there and nothing changes. The numbers are those that are reached.

namespace {

class MeshInPass : public Drawable3dItem
{
public:
    explicit MeshInPass(MeshData data)
        : m_node(std::move(data))
    {
        setDrawsByPrimitives(m_node.drawsByPrimitives());
        setShowsItemColors(m_node.showsItemColors());
        setUntextured(m_node.isUntextured());
        setUnlit(m_node.isUnlit());
        setSolid(m_node.isSolid());
    }
    using Drawable3dItem::setDrawer;
    bool describeDrawing(ItemDrawing& drawing) override { return m_node.describeDrawing(drawing); }

protected:
    void draw(const PaintContext& context) override { m_node.draw(context, 1); }

private:
    MeshNode3d m_node;
};

class PassCostTest : public InstancedTest
{
protected:
    void SetUp() override
    {
        InstancedTest::SetUp();
        m_target = std::make_unique<RenderTarget>(*gl, QSize(32, 32), 4);
        m_fence = std::make_unique<FenceSetter>(*project);
    }
    void TearDown() override
    {
        scene->makeCurrent();
        m_items.clear();
        m_target.reset();
        InstancedTest::TearDown();
    }
    /// @param promises  to set all that its look depends on itself
    void addLine(Item3dDrawer& drawer, int type, bool promises = true)
    {
        class Line : public PolyPolyline3dItem
        {
        public:
            Line(int drawerType, bool byPrimitives)
                : PolyPolyline3dItem(0, drawerType)
            {
                setDrawsByPrimitives(byPrimitives);
            }
            using PolyPolyline3dItem::setDrawer;
        };
        auto item = std::make_unique<Line>(type, promises);
        item->setPoints({{-1, 0, 0}, {1, 0, 0}}, {2});
        item->setDrawer(&drawer);
        m_items.push_back(std::move(item));
    }
    void addMesh(Item3dDrawer& drawer)
    {
        MeshData data;
        data.positions = {{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}};
        data.indices = {0, 1, 2};
        MeshData::Part part;
        part.indexCount = 3;
        part.color = Qt::red;
        data.parts.push_back(part);
        auto item = std::make_unique<MeshInPass>(std::move(data));
        item->setDrawer(&drawer);
        m_items.push_back(std::move(item));
    }
    void setFence(int kind)
    {
        m_fence->reset();
        if (kind == 1) m_fence->set(glm::dvec3(0.0), 0.7);
        if (kind == 2) m_fence->set(prism(Frame{{0, 0, -2}}, square(0.5), 0.0));
    }
    PaintContext pass(int mode)
    {
        PaintContext context = paintContext(32, 32);
        context.drawMode = mode;
        m_target->bind();
        if (mode == DrawMode::SelectionBufferDraw) {
            scene->getItemSelectionProvider()->setSelectionPolygon(QPolygonF(QRectF(3, 2, 16, 13)));
            scene->getItemSelectionProvider()->beginSelection(context);
        }
        return context;
    }
    /// Questions to the driver at most, in a pass of colours without a fence and in any other.
    /// @param ofDriver  allocations that the driver makes itself
    void check(const char* name, Item3dDrawer& drawer, int ofColors, int ofAny, int ofDriver = 0)
    {
        int most = 0, calls = 0;
        for (int kind = 0; kind < 3; ++kind) {
            setFence(kind);
            for (const int mode : {DrawMode::OrdinalDraw, DrawMode::SelectionMaskDraw, DrawMode::GlueMaskDraw,
                                   DrawMode::SelectionBufferDraw}) {
                const PaintContext context = pass(mode);
                drawer.draw(context, {}); // builds programs, uploads
                drawer.draw(context, {});
                CallCounter counter(*gl);
                drawer.draw(context, {});
                const bool isPlain = kind == 0 && mode == DrawMode::OrdinalDraw;
                EXPECT_TRUE(!isPlain || counter.calls() > 20) << name << " draws nothing";
                EXPECT_LE(counter.queries(), isPlain ? ofColors : ofAny)
                    << name << ", fence " << kind << ", mode " << mode;
                EXPECT_LE(counter.allocations(), (kind == 2 ? 5 : 2) + ofDriver)
                    << name << ", fence " << kind;
                EXPECT_EQ(counter.signalCount(), 0) << name;
                most = std::max(most, counter.queries());
                calls = std::max(calls, counter.calls());
            }
        }
        EXPECT_GT(calls, most) << "nothing is counted";
        EXPECT_EQ(most, ofAny) << name << " asks for less: say so here";
    }

    std::unique_ptr<RenderTarget> m_target;
    std::unique_ptr<FenceSetter> m_fence;
    std::vector<std::unique_ptr<Drawable3dItem>> m_items;
};

TEST_F(PassCostTest, OfLines)
{
    const auto checkType = [this](const char* name, int type, int ofColors, int ofAny) {
        Item3dDrawer* drawer = scene->getDefaultDrawer(type);
        addLine(*drawer, type);
        check(name, *drawer, ofColors, ofAny);
    };
    checkType("lines", DrawerType::Mono, 0, 0);
    checkType("wide lines", DrawerType::WideLines, 0, 0);
    checkType("dashed lines", DrawerType::DashedLines, 0, 0);
}

// Such an item may count on what a host has set in the program: item_color, pen_width, uColorMode,
// uLightMode; the lengths of dashes and gaps, and the resolution.
TEST_F(PassCostTest, OfLinesThatPromiseNothing)
{
    const auto checkType = [this](const char* name, int type, int ofAny) {
        Item3dDrawer* drawer = scene->getDefaultDrawer(type);
        addLine(*drawer, type, false);
        check(name, *drawer, 0, ofAny);
    };
    checkType("lines", DrawerType::Mono, 4);
    checkType("wide lines", DrawerType::WideLines, 4);
    checkType("dashed lines", DrawerType::DashedLines, 7);
}

TEST_F(PassCostTest, OfMeshes)
{
    Item3dDrawer* drawer = scene->getDefaultDrawer(DrawerType::Mesh);
    addMesh(*drawer);
    check("mesh", *drawer, 0, 0);
}

TEST_F(PassCostTest, OfMarks)
{
    MarkDrawer drawer(scene.get());
    MarkItem item(1, glm::vec3(0.0f));
    item.setDrawer(&drawer);
    check("marks", drawer, 0, 0);
}

TEST_F(PassCostTest, OfLabels)
{
    LabelledItemDrawer drawer(scene.get());
    LabelledItem item(2);
    item.glyphs.emplace_back(glm::vec2(0.0f),
                             std::make_shared<IconTexture>(QImage(4, 6, QImage::Format_RGBA8888)));
    item.setDrawer(&drawer);
    check("labels", drawer, 0, 0);
}

// A sphere is drawn by the polygon mode, which is put back. What else its look is made of the item does not
// promise to set: item_color, uColorMode, uTexture0, uWireMode, and the light where the project has no
// settings.
TEST_F(PassCostTest, OfSpheres)
{
    class Sphere : public Drawable3dItem
    {
    public:
        explicit Sphere(Scene3d* scene) { setDrawer(m_shape.getDrawer(scene)); }

    protected:
        void draw(const PaintContext& context) override { m_shape.draw(context, 1); }

    private:
        DrawableShaderSphere m_shape;
    };
    Sphere item(scene.get());
    check("spheres", *item.getDrawer(), 1, 7, 2);
}

TEST_F(PassCostTest, OfBatches)
{
    auto& lines = dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::Mono));
    BatchedItem3dDrawer drawer(scene.get(), lines.getDefaultProgram());
    drawer.setLeastRun(1);
    addLine(drawer, DrawerType::Mono);
    check("batches", drawer, 0, 0);
    m_items.clear();
}

// Of a program that a host made, which it may link again, uniforms are looked up in each pass: once, also
// where a fence is handed over.
TEST_F(PassCostTest, AFenceAsksNothingOfAHostsProgram)
{
    QOpenGLShaderProgram program;
    program.addShaderFromSourceCode(QOpenGLShader::Vertex, R"(#version 430 core
layout(location = 0) in vec3 point_coords;
uniform int fence_to_use;
uniform vec3 sphere_fence_center;
uniform float sphere_fence_radius;
void main()
{
    gl_Position = vec4(point_coords, 1.0);
    if (fence_to_use == 2 && distance(point_coords, sphere_fence_center) > sphere_fence_radius) gl_Position.w = -1.0;
})");
    program.addShaderFromSourceCode(QOpenGLShader::Fragment,
                                    "#version 430 core\nout vec4 color;\nvoid main() { color = vec4(1.0); }");
    ASSERT_TRUE(program.link());
    Item3dDrawer& drawer = *scene->getDefaultDrawer(DrawerType::Mono);
    addLine(drawer, DrawerType::Mono);
    const auto questions = [&](int fence) {
        setFence(fence);
        PaintContext context = pass(DrawMode::OrdinalDraw);
        context.program = &program;
        drawer.draw(context, {});
        CallCounter counter(*gl);
        drawer.draw(context, {});
        const int queries = counter.queries();
        GLint kind = -1;
        gl->glGetUniformiv(program.programId(), program.uniformLocation("fence_to_use"), &kind);
        EXPECT_EQ(kind, fence == 0 ? 0 : int(Fence3DObject::SphereFence));
        return queries;
    };
    const int withoutFence = questions(0);
    EXPECT_GT(withoutFence, 9) << "nothing is counted";
    EXPECT_EQ(questions(1), withoutFence);
}

// Marks are drawn all together, and never left out.
TEST_F(PassCostTest, ViewsOfMarksAloneLookForNothingToLeaveOut)
{
    scene->addDrawer(MarkItem::DrawerKind, std::make_unique<MarkDrawer>(scene.get()));
    scene->addElement(new MarkItem(1, glm::vec3(0.0f)));
    const ViewCulling culling(*scene);
    const PaintContext context = paintContext(32, 32);
    const auto allocations = [&] {
        culling.filter(context); // takes boxes of what has changed
        CallCounter counter(*gl);
        culling.filter(context);
        return counter.allocations();
    };
    EXPECT_EQ(allocations(), 0);
    TestElement element;
    auto* item = new TestGraphicsItem(&element);
    item->fixedBox = gmx::BoundingBox(glm::dvec3(5.0), glm::dvec3(6.0));
    item->setPixelReach(0.0f);
    scene->addElement(item);
    EXPECT_FALSE(culling.filter(context)(item));
    EXPECT_GT(allocations(), 0);
    item->setVisible(false);
    EXPECT_EQ(allocations(), 0) << "what is hidden need not be left out";
    item->setVisible(true);
    EXPECT_FALSE(culling.filter(context)(item));
    item->setPixelReach(std::numeric_limits<float>::infinity());
    EXPECT_EQ(allocations(), 0) << "what has no limits is never left out";
    item->setPixelReach(0.0f);
    EXPECT_FALSE(culling.filter(context)(item));
    scene->removeElement(item->getId());
    EXPECT_EQ(allocations(), 0);
    scene->clear();
}

} // namespace
