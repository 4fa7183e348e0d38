#include "CallCounter.h"

#include "tests/gl/glyphs/GlyphsTest.h"
#include "tests/gl/instanced/InstancedTest.h"
#include "tests/support/NotingMeshItem.h"

#include <Viewer3dModule/drawables/CaptionsDrawable3dItem.h>
#include <Viewer3dModule/drawables/DrawableShaderCylinder.h>
#include <Viewer3dModule/drawables/IconTexture.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <glm/gtc/matrix_transform.hpp>

// What an item costs a frame in calls, questions to the driver, allocations and signals. The numbers are
// those that are reached, and nothing is to exceed them.

namespace {

struct FrameCost
{
    double calls, queries, allocations, signalCount; ///< an item
};

glm::mat4 placeOfItem(int index)
{
    const auto step = static_cast<float>(index) * 0.01f;
    return glm::translate(glm::mat4(1.0f), glm::vec3(step - 0.5f, 0.5f - step, 0.0f));
}

QColor colorOfItem(int index)
{
    return QColor::fromHsv(index * 7 % 360, 200, 200);
}

class BoxItem : public NotingMeshItem
{
public:
    BoxItem(MeshData data, bool promises)
        : NotingMeshItem(std::move(data))
    {
        if (!promises) return;
        setDrawsByPrimitives(node.drawsByPrimitives());
        setShowsItemColors(node.showsItemColors());
        setUntextured(node.isUntextured());
        setUnlit(node.isUnlit());
        setSolid(node.isSolid());
    }
};

MeshData boxMesh(int index)
{
    MeshData data;
    for (unsigned corner = 0; corner < 8; ++corner)
        data.positions.emplace_back(corner & 1u ? 0.3f : 0.0f, corner & 2u ? 0.3f : 0.0f,
                                    corner & 4u ? 0.3f : 0.0f);
    data.indices = {0, 1, 3, 0, 3, 2, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                    2, 3, 7, 2, 7, 6, 0, 2, 6, 0, 6, 4, 1, 3, 7, 1, 7, 5};
    MeshData::Part part;
    part.indexCount = 36;
    part.color = colorOfItem(index);
    data.parts.push_back(part);
    return data;
}

MeshData boxWithVertexColors(int index)
{
    MeshData data = boxMesh(index);
    for (std::uint32_t i = 0; i < 8; ++i)
        data.colors.push_back(0xFF000000u | (0x30u * i) | (0xFFu - 0x20u * i) << 8u | 0x80u << 16u);
    return data;
}

MeshData boxWithTexture(int index)
{
    MeshData data = boxMesh(index);
    for (const glm::vec3& position : data.positions)
        data.texCoords.emplace_back(position.x * 3.0f, position.y * 3.0f + position.z);
    QImage image(4, 4, QImage::Format_RGB32);
    for (int i = 0; i < 16; ++i)
        image.setPixelColor(i % 4, i / 4, QColor::fromHsv(i * 20, 255, 255));
    data.images = {image};
    data.parts[0].image = 0;
    return data;
}

MeshData pointsOf(MeshData data)
{
    data.indices = {0, 1, 2, 3, 4, 5, 6, 7};
    data.parts[0].indexCount = 8;
    data.parts[0].kind = MeshData::Part::Points;
    data.parts[0].pointSize = 3.0f;
    return data;
}

MeshData linesOf(MeshData data)
{
    data.parts[0].kind = MeshData::Part::Lines;
    return data;
}

MeshData translucent(MeshData data)
{
    data.parts[0].color.setAlpha(100);
    return data;
}

class ItemPathTest : public InstancedTest
{
protected:
    static constexpr int Few = 20, Many = 40;

    void SetUp() override
    {
        InstancedTest::SetUp();
        m_target = std::make_unique<RenderTarget>(*gl, QSize(32, 32));
        m_target->bind();
    }
    void TearDown() override
    {
        scene->makeCurrent();
        m_target.reset();
        InstancedTest::TearDown();
    }

    /// What each of the items after the first few adds to a frame.
    FrameCost costOf(Item3dDrawer& drawer, const std::function<std::unique_ptr<Drawable3dItem>(int)>& make)
    {
        std::vector<std::unique_ptr<Drawable3dItem>> items;
        const auto total = [&](int count) {
            while (static_cast<int>(items.size()) < count)
                items.push_back(make(static_cast<int>(items.size())));
            return frameOf(drawer);
        };
        const FrameCost few = total(Few), many = total(Many);
        constexpr double more = Many - Few;
        return {(many.calls - few.calls) / more, (many.queries - few.queries) / more,
                (many.allocations - few.allocations) / more, (many.signalCount - few.signalCount) / more};
    }
    std::unique_ptr<Drawable3dItem> line(int index, int drawerType, const QPen& pen = QPen())
    {
        auto item = std::make_unique<PolyPolyline3dItem>(0, drawerType);
        item->setPoints({{0, 0, 0}, {0.1f, 0, 0}, {0.1f, 0.1f, 0}}, {3});
        QPen own = pen;
        own.setColor(colorOfItem(index));
        item->setPen(own);
        item->setTransform(placeOfItem(index), false);
        item->setSceneDrawer(scene.get());
        return item;
    }
    std::unique_ptr<Drawable3dItem> box(int index, bool promises)
    {
        auto item = std::make_unique<BoxItem>(boxMesh(index), promises);
        item->setTransform(placeOfItem(index), false);
        item->setDrawer(scene->getDefaultDrawer(DrawerType::Mesh));
        return item;
    }

private:
    FrameCost frameOf(Item3dDrawer& drawer)
    {
        const PaintContext context = paintContext(32, 32);
        drawer.draw(context, {}); // uploads, and what else the first frame does
        drawer.draw(context, {});
        CallCounter counter(*gl);
        drawer.draw(context, {});
        return {double(counter.calls()), double(counter.queries()),
                double(counter.allocations() + counter.plainAllocations()), double(counter.signalCount())};
    }

    std::unique_ptr<RenderTarget> m_target;
};

TEST_F(ItemPathTest, AllocationsOfAllKindsAreCounted)
{
    const CallCounter counter(*gl);
    EXPECT_EQ(counter.allocations() + counter.plainAllocations(), 0);
    const auto number = std::make_unique<int>(1);
    EXPECT_EQ(counter.allocations(), 1);
    EXPECT_EQ(counter.plainAllocations(), 0);
    const QVector<int> numbers(10);
    EXPECT_EQ(counter.plainAllocations(), CallCounter::countsPlainAllocations() ? 1 : 0);
    EXPECT_EQ(*number + numbers[0], 1);
}

// The matrix, the colour, the identifier, the draw call.
TEST_F(ItemPathTest, ALineCostsFourCalls)
{
    for (const int type : {DrawerType::Mono, DrawerType::WideLines}) {
        const FrameCost cost =
            costOf(*scene->getDefaultDrawer(type), [&](int index) { return line(index, type); });
        EXPECT_LE(cost.calls, 4.0) << type;
        EXPECT_LE(cost.queries, 0.0) << type;
        EXPECT_LE(cost.allocations, 0.0) << type;
        EXPECT_LE(cost.signalCount, 0.0) << type;
    }
}

// Dashes are set and ended, and the size of the view is told with them.
TEST_F(ItemPathTest, ADashedLineCostsEightCalls)
{
    const int type = DrawerType::DashedLines;
    const FrameCost cost = costOf(*scene->getDefaultDrawer(type),
                                  [&](int index) { return line(index, type, QPen(Qt::DashLine)); });
    EXPECT_LE(cost.calls, 8.0);
    EXPECT_LE(cost.queries, 0.0);
    EXPECT_LE(cost.allocations, 0.0);
    EXPECT_LE(cost.signalCount, 0.0);
}

// Two matrices, the colour, the identifier, the texture unit, the draw call.
TEST_F(ItemPathTest, ABoxCostsSixCalls)
{
    const FrameCost cost =
        costOf(*scene->getDefaultDrawer(DrawerType::Mesh), [&](int index) { return box(index, true); });
    EXPECT_LE(cost.calls, 6.0);
    EXPECT_LE(cost.queries, 0.0);
    EXPECT_LE(cost.allocations, 0.0);
    EXPECT_LE(cost.signalCount, 0.0);
}

TEST_F(ItemPathTest, WithoutPromisesABoxSetsAllUpAndPutsItBack)
{
    const FrameCost cost =
        costOf(*scene->getDefaultDrawer(DrawerType::Mesh), [&](int index) { return box(index, false); });
    EXPECT_LE(cost.calls, 23.0);
    EXPECT_LE(cost.queries, 0.0);
    EXPECT_LE(cost.allocations, 0.0);
    EXPECT_LE(cost.signalCount, 0.0);
}

TEST_F(ItemPathTest, AMarkCostsNothing)
{
    MarkDrawer drawer(scene.get());
    const FrameCost cost = costOf(drawer, [&](int index) {
        auto item = std::make_unique<MarkItem>(index + 1, glm::vec3(placeOfItem(index)[3]));
        item->setDrawer(&drawer);
        return item;
    });
    EXPECT_LE(cost.calls, 0.0);
    EXPECT_LE(cost.queries, 0.0);
    EXPECT_LE(cost.allocations, 0.0);
    EXPECT_LE(cost.signalCount, 0.0);
}

// The error flag is a caption's to clear.
TEST_F(ItemPathTest, ACaptionAsksForErrorsOnly)
{
    QImage image(4, 6, QImage::Format_RGBA8888);
    image.fill(Qt::white);
    const FrameCost cost = costOf(*scene->getDefaultDrawer(DrawerType::Caption), [&](int index) {
        auto item = std::make_unique<CaptionsDrawable3dItem>(0);
        item->addCaption(glm::vec3(placeOfItem(index)[3]), image);
        item->setSceneDrawer(scene.get());
        return item;
    });
    EXPECT_LE(cost.calls, 20.0);
    EXPECT_LE(cost.queries, 1.0);
    EXPECT_LE(cost.allocations, 0.0);
    EXPECT_LE(cost.signalCount, 0.0);
}

TEST_F(ItemPathTest, AnIconAsksForNothing)
{
    class IconItem : public Drawable3dItem
    {
    public:
        using Drawable3dItem::setDrawer;
        explicit IconItem(const IconTexture& icon)
            : m_icon(icon)
        {
        }

    protected:
        void draw(const PaintContext& context) override { const_cast<IconTexture&>(m_icon).draw(context, 1); }

    private:
        const IconTexture& m_icon;
    };
    const IconTexture icon(QImage(4, 6, QImage::Format_RGBA8888));
    const FrameCost cost = costOf(*scene->getDefaultDrawer(DrawerType::Caption), [&](int index) {
        auto item = std::make_unique<IconItem>(icon);
        item->setTransform(placeOfItem(index), false);
        item->setDrawer(scene->getDefaultDrawer(DrawerType::Caption));
        return item;
    });
    EXPECT_LE(cost.calls, 16.0);
    EXPECT_LE(cost.queries, 0.0);
    EXPECT_LE(cost.allocations, 0.0);
}

TEST_F(ItemPathTest, ACylinderAsksForNothing)
{
    const DrawableShaderCylinder shape;
    class Pipe : public Drawable3dItem
    {
    public:
        using Drawable3dItem::setDrawer;
        DrawableShaderCylinder cylinder;

    protected:
        void draw(const PaintContext& context) override { cylinder.draw(context, 1); }
    };
    Item3dDrawer* drawer = shape.getDrawer(scene.get());
    const FrameCost cost = costOf(*drawer, [&](int index) {
        auto item = std::make_unique<Pipe>();
        item->setTransform(placeOfItem(index), false);
        item->setDrawer(drawer);
        return item;
    });
    EXPECT_LE(cost.calls, 17.0);
    EXPECT_LE(cost.queries, 0.0);
    EXPECT_LE(cost.allocations, 0.0);
}

// Letters of one kind are drawn together, whosoever they are.
TEST_F(ItemPathTest, ALabelCostsNothing)
{
    LabelledItemDrawer drawer(scene.get());
    std::vector<std::shared_ptr<IconTexture>> letters;
    for (int i = 0; i < 3; ++i)
        letters.push_back(std::make_shared<IconTexture>(QImage(4, 6, QImage::Format_RGBA8888)));
    const FrameCost cost = costOf(drawer, [&](int index) {
        auto item = std::make_unique<LabelledItem>(index + 1);
        item->anchor = glm::vec3(placeOfItem(index)[3]);
        for (const auto& letter : letters)
            item->glyphs.emplace_back(glm::vec2(5.0f * float(item->glyphs.size()), 0.0f), letter);
        item->setDrawer(&drawer);
        return item;
    });
    EXPECT_LE(cost.calls, 0.0);
    EXPECT_LE(cost.queries, 0.0);
    EXPECT_LE(cost.allocations, 0.0);
    EXPECT_LE(cost.signalCount, 0.0);
}

// Whatever simpler program a pass may take by its items' promises, and whatever is left bound between them.
TEST_F(ItemPathTest, PromisesChangeNoPixel)
{
    using Meshes = std::vector<MeshData>;
    const std::vector<Meshes> cases = {
        {boxMesh(0), boxMesh(9), boxMesh(20)},
        {boxMesh(0), boxWithVertexColors(9), boxMesh(20)},
        {boxWithVertexColors(0), boxWithTexture(9), boxMesh(20)},
        {pointsOf(boxMesh(0)), pointsOf(boxMesh(9)), pointsOf(boxMesh(20))},
        {pointsOf(boxWithVertexColors(0)), pointsOf(boxMesh(9)), pointsOf(boxWithVertexColors(20))},
        {pointsOf(boxWithVertexColors(0)), boxWithTexture(9), boxWithVertexColors(20)},
        {linesOf(boxWithVertexColors(0)), pointsOf(boxMesh(9)), linesOf(boxWithVertexColors(20))},
        {pointsOf(boxMesh(0)), translucent(boxMesh(9)), linesOf(boxMesh(20))},
        {pointsOf(translucent(boxMesh(0))), translucent(linesOf(boxMesh(9))), boxMesh(20)},
    };
    Item3dDrawer* drawer = scene->getDefaultDrawer(DrawerType::Mesh);
    PaintContext context = paintContext(48, 48);
    context.view = glm::rotate(glm::mat4(1.0f), 0.6f, glm::vec3(1, 2, 3));
    const auto draw = [&](const Meshes& meshes, bool promise, int mode) {
        std::vector<std::unique_ptr<BoxItem>> items;
        float x = -0.6f;
        for (const MeshData& mesh : meshes) {
            items.push_back(std::make_unique<BoxItem>(mesh, promise));
            items.back()->setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(x, 0.1f, 0.0f)), false);
            x += 0.4f;
            items.back()->setDrawer(drawer);
        }
        items.back()->highlighted = true;
        context.drawMode = mode;
        RenderTarget target(*gl, QSize(48, 48));
        target.bind();
        target.clear(Qt::black);
        drawer->draw(context, {});
        return target.image();
    };
    for (std::size_t i = 0; i < cases.size(); ++i)
        for (const int mode : {int(DrawMode::OrdinalDraw), int(DrawMode::SelectionMaskDraw)}) {
            const QImage plain = draw(cases[i], false, mode);
            EXPECT_EQ(draw(cases[i], true, mode), plain) << i << ", mode " << mode;
            EXPECT_LT(countPixels(plain, Qt::black), 48 * 48 - 20) << i << ", mode " << mode;
        }
}

// Between items that keep what they bind one that binds otherwise finds and leaves nothing bound.
TEST_F(ItemPathTest, OthersBetweenThemAreDrawnAlike)
{
    class Stranger : public PolyPolyline3dItem
    {
    public:
        using PolyPolyline3dItem::PolyPolyline3dItem;
        GLint bound = -1, enabled = -1;

    protected:
        using PolyPolyline3dItem::draw;
        void draw(const PaintContext& context) override
        {
            OpenGLFunctions& functions = *getGLFunctions();
            functions.glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &bound);
            PolyPolyline3dItem::draw(context);
            functions.glBindVertexArray(context.vertexArray);
            functions.glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
            functions.glBindVertexArray(0);
            uniforms::set(functions, context.program->uniformLocation("item_color"), QColor(Qt::red));
            uniforms::set(functions, context.program->uniformLocation("item_flags"), -2);
        }
    };
    const auto lineAt = [](PolyPolyline3dItem& item, float y) {
        item.setPoints({{-1, y, 0}, {1, y, 0}}, {2});
        item.setPen(QPen(Qt::green));
    };
    PolyPolyline3dItem first(0, DrawerType::Mono), last(0, DrawerType::Mono);
    Stranger between(0, DrawerType::Mono);
    EXPECT_TRUE(first.drawsByPrimitives());
    EXPECT_FALSE(between.drawsByPrimitives()) << "a promise is not inherited";
    float y = -0.5f;
    for (PolyPolyline3dItem* item : {&first, static_cast<PolyPolyline3dItem*>(&between), &last}) {
        lineAt(*item, y);
        y += 0.5f;
        item->setSceneDrawer(scene.get());
    }
    const QImage picture = drawFrame(paintContext(8, 8));
    int green = 0;
    for (int row = 0; row < 8; ++row)
        green += picture.pixelColor(4, row) == QColor(0, 255, 0);
    EXPECT_EQ(green, 3);
    EXPECT_EQ(between.bound, 0);
    EXPECT_EQ(between.enabled, 0);
    GLint bound = -1;
    gl->glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &bound);
    EXPECT_EQ(bound, 0);
}

} // namespace
