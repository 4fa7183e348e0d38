#include "tests/support/ImageCheck.h"
#include "tests/support/NotingMeshItem.h"
#include "tests/support/RenderTarget.h"
#include "tests/support/SceneTest.h"

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <memory>

// Where the caller says that blending is on, passes of opaque items go without, and nobody sees a difference.
namespace {

MeshData facingSquare(float left, const QColor& color)
{
    MeshData data;
    data.positions = {{left, -0.8f, 0}, {left + 1, -0.8f, 0}, {left + 1, 0.8f, 0}, {left, 0.8f, 0}};
    data.indices = {0, 1, 2, 0, 2, 3};
    MeshData::Part part;
    part.indexCount = 6;
    part.color = color;
    data.parts.push_back(part);
    return data;
}

class SquareItem : public NotingMeshItem
{
public:
    explicit SquareItem(MeshData data)
        : NotingMeshItem(std::move(data))
    {
        node.promiseFor(*this);
    }
    bool wasBlended = false;

protected:
    void draw(const PaintContext& context) override
    {
        wasBlended = getGLFunctions()->glIsEnabled(GL_BLEND) == GL_TRUE;
        NotingMeshItem::draw(context);
    }
};

class OpaquePassTest : public SceneTest
{
protected:
    struct Drawn
    {
        QImage picture;
        bool isBlended = false;
    };

    /// Squares side by side, or over each other, over grey.
    Drawn drawn(const std::vector<MeshData>& meshes, bool blends, int mode = 0)
    {
        Item3dDrawer* drawer = scene->getDefaultDrawer(DrawerType::Mesh);
        scene->makeCurrent();
        std::vector<std::unique_ptr<SquareItem>> items;
        for (const MeshData& mesh : meshes) {
            items.push_back(std::make_unique<SquareItem>(mesh));
            items.back()->setDrawer(drawer);
        }
        PaintContext context = paintContext(16, 16);
        context.blends = blends;
        context.drawMode = mode;
        RenderTarget target(*gl, QSize(16, 16));
        target.bind();
        target.clear(Qt::gray);
        drawer->draw(context, {});
        EXPECT_TRUE(gl->glIsEnabled(GL_BLEND)) << "as it was before";
        return {target.image(), items.front()->wasBlended};
    }
    static QColor translucent()
    {
        QColor color(Qt::red);
        color.setAlpha(254);
        return color;
    }
};

TEST_F(OpaquePassTest, OpaqueItemsAreNotMixed)
{
    const std::vector<MeshData> squares = {facingSquare(-1, Qt::red), facingSquare(-0.5f, Qt::green)};
    const Drawn mixed = drawn(squares, false);
    const Drawn fast = drawn(squares, true);
    EXPECT_TRUE(mixed.isBlended);
    EXPECT_FALSE(fast.isBlended);
    EXPECT_EQ(fast.picture, mixed.picture);
    EXPECT_LT(countPixels(fast.picture, QColor(Qt::gray)), 16 * 16 / 2);
}

TEST_F(OpaquePassTest, OneThatIsNotOpaqueHasAllMixed)
{
    for (const MeshData& other : {facingSquare(-0.5f, translucent()), facingSquare(-0.5f, Qt::transparent)}) {
        const Drawn seen = drawn({facingSquare(-1, Qt::red), other}, true);
        EXPECT_TRUE(seen.isBlended);
    }
    MeshData colored = facingSquare(-0.5f, Qt::red);
    colored.colors = {0xFF0000FFu, 0xFF0000FFu, 0xFE0000FFu, 0xFF0000FFu};
    EXPECT_TRUE(drawn({colored}, true).isBlended);
    colored.colors[2] = 0xFF0000FFu;
    EXPECT_FALSE(drawn({colored}, true).isBlended);
}

TEST_F(OpaquePassTest, OtherPassesLeaveBlendingAlone)
{
    EXPECT_TRUE(drawn({facingSquare(-1, Qt::red)}, true, 1).isBlended);
}

TEST(OpaqueItemTest, AnOpaqueItemIsSolid)
{
    SquareItem item(facingSquare(-1, Qt::red));
    EXPECT_TRUE(item.isOpaque());
    EXPECT_TRUE(item.isSolid());
    item.setOpaque(false);
    EXPECT_FALSE(item.isOpaque());
    EXPECT_TRUE(item.isSolid());
    item.setOpaque(true);
    item.setSolid(true);
    EXPECT_TRUE(item.isOpaque());
    item.setSolid(false);
    EXPECT_FALSE(item.isOpaque());
    EXPECT_FALSE(item.isSolid());
}

} // namespace
