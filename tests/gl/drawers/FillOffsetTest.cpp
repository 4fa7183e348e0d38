#include "tests/gl/instanced/InstancedTest.h"

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>

// Polygon offset may be off while lines are drawn, which do not have it, and is on for all else.

namespace {

/// Notes whether fills are offset when it has drawn.
class OffsetLine : public PolyPolyline3dItem
{
public:
    OffsetLine(int type, bool promises, std::vector<bool>& log)
        : PolyPolyline3dItem(0, type)
        , m_log(log)
    {
        setDrawsByPrimitives(promises);
    }
    using PolyPolyline3dItem::setDrawer;

protected:
    void draw(const PaintContext& context) override
    {
        PolyPolyline3dItem::draw(context);
        m_log.push_back(currentGLFunctions()->glIsEnabled(GL_POLYGON_OFFSET_FILL) == GL_TRUE);
    }

private:
    std::vector<bool>& m_log;
};

class OffsetMesh : public Drawable3dItem
{
public:
    explicit OffsetMesh(std::vector<bool>& log)
        : m_node(oneTriangle())
        , m_log(log)
    {
        setDrawsByPrimitives(true);
    }
    using Drawable3dItem::setDrawer;

protected:
    void draw(const PaintContext& context) override
    {
        m_node.draw(context, 1);
        m_log.push_back(currentGLFunctions()->glIsEnabled(GL_POLYGON_OFFSET_FILL) == GL_TRUE);
    }

private:
    static MeshData oneTriangle()
    {
        MeshData data;
        data.positions = {{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}};
        data.indices = {0, 1, 2};
        MeshData::Part part;
        part.indexCount = 3;
        data.parts.push_back(part);
        return data;
    }

    MeshNode3d m_node;
    std::vector<bool>& m_log;
};

class FillOffsetTest : public InstancedTest
{
protected:
    void TearDown() override
    {
        scene->makeCurrent();
        m_items.clear();
        InstancedTest::TearDown();
    }
    void addOffsetLine(int type, bool promises = true)
    {
        auto item = std::make_unique<OffsetLine>(type, promises, m_log);
        item->setPoints({{-1, 0, 0}, {1, 0, 0}}, {2});
        item->setDrawer(scene->getDefaultDrawer(type));
        m_items.push_back(std::move(item));
    }
    void addOffsetMesh(int type)
    {
        auto item = std::make_unique<OffsetMesh>(m_log);
        item->setDrawer(scene->getDefaultDrawer(type));
        m_items.push_back(std::move(item));
    }
    /// What the items found, in the order in which they were drawn.
    std::vector<bool> found(bool offsetsFills, int mode = 0, int primitives = 7)
    {
        m_log.clear();
        PaintContext context = paintContext(8, 8);
        context.offsetsFills = offsetsFills;
        context.drawMode = mode;
        context.primitives = primitives;
        scene->drawElements(context, nullptr, {});
        EXPECT_TRUE(gl->glIsEnabled(GL_POLYGON_OFFSET_FILL)) << "is on after the pass";
        return m_log;
    }

    std::vector<bool> m_log;
    std::vector<std::unique_ptr<Drawable3dItem>> m_items;
};

using Found = std::vector<bool>;

TEST_F(FillOffsetTest, LinesAreDrawnWithoutWhereThePassSaysThatItIsOn)
{
    addOffsetLine(DrawerType::Mono);
    addOffsetLine(DrawerType::Mono);
    EXPECT_EQ(found(true), (Found{false, false}));
    EXPECT_EQ(found(false), (Found{true, true}));
}

TEST_F(FillOffsetTest, OtherItemsHaveIt)
{
    addOffsetLine(DrawerType::Mono);
    addOffsetLine(DrawerType::Mono, false);
    addOffsetLine(DrawerType::Mono);
    EXPECT_EQ(found(true), (Found{false, true, false}));
}

TEST_F(FillOffsetTest, FillsOfTheSamePassHaveIt)
{
    addOffsetMesh(DrawerType::Mono);
    addOffsetLine(DrawerType::Mono);
    addOffsetMesh(DrawerType::Mono);
    addOffsetLine(DrawerType::Mono);
    EXPECT_EQ(found(true), (Found{true, false, true, false}));
}

TEST_F(FillOffsetTest, LinesThatAProgramWidensHaveIt)
{
    addOffsetLine(DrawerType::WideLines);
    EXPECT_EQ(found(true), Found{true});
}

TEST_F(FillOffsetTest, LinesThatAPassDrawsAsTrianglesHaveIt)
{
    addOffsetLine(DrawerType::Mono);
    EXPECT_EQ(found(true, 0, PrimitiveBit::Triangles), Found{true});
}

TEST_F(FillOffsetTest, AllPassesMayGoWithout)
{
    addOffsetLine(DrawerType::Mono);
    for (const int mode : {1, 2})
        EXPECT_EQ(found(true, mode), Found{false}) << mode;
}

} // namespace
