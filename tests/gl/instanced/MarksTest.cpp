#include "InstancedTest.h"

#include <Viewer3dModule/scene/SelectionOptions.h>

#include <algorithm>
#include <cmath>

// Marks of five pixels at the first vertex of each item.
namespace {

constexpr LONGID largeId = (LONGID(0x7ABBCCDD) << 32) | 0x11223344;
const QColor markRed(255, 0, 0);
const QColor markHighlight(Qt::yellow); // of a host without settings

/// A host's marks, which issue the draw call themselves.
class MarksDrawnByTheHost : public InstancedViewerOrientedTextureDrawer
{
public:
    using InstancedViewerOrientedTextureDrawer::InstancedViewerOrientedTextureDrawer;

    void drawItems(const PaintContext&) override
    {
        if (OpenGLFunctions* gl = currentGLFunctions())
            gl->glDrawArraysInstanced(GL_POINTS, 0, 1, static_cast<GLsizei>(getItems().size()));
    }
};

class MarksTest : public InstancedTest
{
protected:
    /// Checks that exactly these pixels have a mark's square around them.
    static void expectMarks(const QImage& image, const std::vector<std::pair<QPoint, QColor>>& marks)
    {
        for (const auto& [at, color] : marks)
            for (int y = -2; y <= 2; ++y)
                for (int x = -2; x <= 2; ++x)
                    ASSERT_EQ(image.pixelColor(at + QPoint(x, y)), color) << at.x() << ", " << at.y();
        EXPECT_EQ(countPixels(image, [](QRgb p) { return (p & 0xFFFFFFu) != 0; }), 25 * int(marks.size()));
    }
    /// The four attachments of a pass for masks.
    std::vector<QImage> masks(Item3dDrawer& drawer)
    {
        PaintContext context = view();
        context.drawMode = DrawMode::SelectionMaskDraw;
        RenderTarget target(*gl, context.viewportRect.size(), 4);
        target.bind();
        target.clear(QColor(0, 0, 0));
        gl->glDisable(GL_BLEND);
        drawer.draw(context, {});
        gl->glEnable(GL_BLEND);
        std::vector<QImage> images;
        for (int attachment = 0; attachment < 4; ++attachment)
            images.push_back(target.image(attachment));
        return images;
    }
    /// An item of the scene's, on a drawer of marks of the scene's.
    MarkItem* addToScene(LONGID id, const glm::vec3& place)
    {
        if (!scene->isHasDrawer(MarkItem::DrawerKind, MarkItem::DrawerKind))
            scene->addDrawer(MarkItem::DrawerKind, std::make_unique<MarkDrawer>(scene.get()));
        auto* item = new MarkItem(id, place);
        scene->addElement(item);
        return item;
    }
    std::vector<LONGID> select(const QRectF& area)
    {
        std::vector<LONGID> found = scene->selectItems(view(), area, SelectionOptions());
        std::sort(found.begin(), found.end());
        return found;
    }
};

TEST_F(MarksTest, AreSquaresOfFivePixelsInTheirColour)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(40, 50, 0.5f)});
    EXPECT_EQ(drawer.getDefaultColor(), QColor(Qt::red));
    expectMarks(shown(drawer), {{{10, 20}, markRed}, {{40, 50}, markRed}});
    drawer.setDefaultColor(QColor(10, 200, 30));
    EXPECT_EQ(drawer.getDefaultColor(), QColor(10, 200, 30));
    expectMarks(shown(drawer), {{{10, 20}, QColor(10, 200, 30)}, {{40, 50}, QColor(10, 200, 30)}});
}

// Reading a vertex, of which a mark has none, costs the vertex stage a fifth of its time.
TEST_F(MarksTest, LieAtTheirItemsWhateverVertexAttributesHold)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    EXPECT_EQ(drawer.getProgram()->attributeLocation("point_coords"), -1);
    drawer.getProgram()->setAttributeValue(0, 0.5f, 0.5f, 0.0f, 1.0f);
    const QImage image = shown(drawer);
    drawer.getProgram()->setAttributeValue(0, 0.0f, 0.0f, 0.0f, 1.0f);
    expectMarks(image, {{QPoint(10, 20), markRed}});
}

TEST_F(MarksTest, AreDrawnInOneCallHoweverMany)
{
    MarkDrawer drawer(scene.get());
    Items items = itemsAt(drawer, {atPixel(10, 20)});
    GlCalls calls(*gl);
    for (const int count : {1, 2, 1000}) {
        while (int(items.size()) < count) {
            items.push_back(std::make_unique<MarkItem>(LONGID(items.size()) + 1, atPixel(10, 20)));
            items.back()->setDrawer(&drawer);
        }
        calls.reset();
        shown(drawer);
        ASSERT_EQ(calls.draws.size(), 1u);
        EXPECT_EQ(calls.draws[0].mode, GLenum(GL_POINTS));
        EXPECT_EQ(calls.draws[0].vertices, 1);
        EXPECT_EQ(calls.draws[0].instances, count);
    }
}

TEST_F(MarksTest, HiddenAndFilteredOnesLeaveNoTraceAndHighlightedOnesShow)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(20, 20), atPixel(30, 20), atPixel(40, 20)});
    items[0]->setVisible(false);
    items[1]->highlighted = true;
    const auto butTheThird = [&](Drawable3dItem* item) { return item != items[2].get(); };
    expectMarks(shown(drawer, view(), butTheThird), {{{20, 20}, markHighlight}, {{40, 20}, markRed}});
}

TEST_F(MarksTest, ItemsWithoutElementOrVertexAreNowhere)
{
    MarkDrawer drawer(scene.get());
    TestItem plain;
    plain.setDrawer(&drawer);
    TestElement element;
    struct Bare : TestGraphicsItem
    {
        using Drawable3dItem::setDrawer;
        using TestGraphicsItem::TestGraphicsItem;
    } bare(&element);
    bare.setDrawer(&drawer);
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    for (const std::size_t slot : {0u, 1u})
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(std::isnan(drawer.getItemParams()[slot][i]));
    expectMarks(shown(drawer), {{{10, 20}, markRed}});
    plain.setDrawer(nullptr);
    bare.setDrawer(nullptr);
}

TEST_F(MarksTest, AnIndexThatNoItemHasIsNowhere)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    EXPECT_EQ(drawer.getItemParams(0), atPixel(10, 20));
    for (const int index : {-1, 1, 1000})
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(std::isnan(drawer.getItemParams(index)[i])) << index;
}

// The record of what stands for no element is not that of the item whose slot it came into.
TEST_F(MarksTest, AnItemWithoutElementTakesASlotOverAndStaysNowhere)
{
    MarkDrawer drawer(scene.get());
    Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(20, 20)});
    TestItem plain;
    plain.setDrawer(&drawer);
    shown(drawer);
    items.erase(items.begin());
    EXPECT_EQ(drawer.getItems()[0], &plain);
    expectMarks(shown(drawer), {{{20, 20}, markRed}});
    plain.setDrawer(nullptr);
}

TEST_F(MarksTest, APassWithoutPointsDrawsNone)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    PaintContext context = view();
    GlCalls calls(*gl);
    context.primitives = PrimitiveBit::All & ~PrimitiveBit::Points;
    expectMarks(shown(drawer, context), {});
    EXPECT_TRUE(calls.draws.empty());
    context.primitives = PrimitiveBit::Points;
    expectMarks(shown(drawer, context), {{{10, 20}, markRed}});
}

TEST_F(MarksTest, MasksHoldWholeIdentifiers)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(40, 50)});
    items[0]->id = largeId;
    items[1]->id = 0x01000001; // beyond what a float counts
    drawer.updateItem(0);
    drawer.updateItem(1);
    const std::vector<QImage> images = masks(drawer);
    const auto word = [&](int attachment, int x, int y) {
        const QImage& image = images[std::size_t(attachment)];
        const uchar* bytes = image.constScanLine(y) + 4 * x;
        return unsigned(bytes[0]) | unsigned(bytes[1]) << 8 | unsigned(bytes[2]) << 16 |
               unsigned(bytes[3]) << 24;
    };
    EXPECT_EQ(word(1, 10, 20), 0x11223344u);
    EXPECT_EQ(word(2, 10, 20), 0x7ABBCCDDu);
    EXPECT_EQ(word(1, 40, 50), 0x01000001u);
    EXPECT_EQ(word(2, 40, 50), 0u);
    EXPECT_EQ(word(1, 0, 0), 0u);
}

// Passes for masks take a variant of the program, whose uniforms are its own.
TEST_F(MarksTest, AHostsMarksHaveTheirLookInMasksToo)
{
    const auto masksOf = [&](MarkDrawer&& drawer) {
        drawer.setDefaultColor(QColor(10, 200, 30));
        const Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(40, 50)});
        return masks(drawer);
    };
    const std::vector<QImage> expected = masksOf(MarkDrawer(scene.get()));
    EXPECT_EQ(countPixels(expected[1], [](QRgb p) { return (p & 0xFFFFFFu) != 0; }), 2 * 25);
    EXPECT_EQ(masksOf(MarksDrawnByTheHost(scene.get())), expected);
}

TEST_F(MarksTest, AreSelectedOneByOne)
{
    addToScene(1, atPixel(10, 20));
    addToScene(largeId, atPixel(20, 20));
    MarkItem* hidden = addToScene(3, atPixel(30, 20));
    addToScene(0x01000001, atPixel(40, 20))->highlighted = true;
    hidden->setVisible(false);
    EXPECT_EQ(select(QRectF(0, 0, Size, Size)), (std::vector<LONGID>{1, 0x01000001, largeId}));
    EXPECT_EQ(select(QRectF(15, 15, 10, 10)), (std::vector<LONGID>{largeId}));
    EXPECT_EQ(select(QRectF(12, 20, 1, 1)), (std::vector<LONGID>{1})) << "the last pixel of its square";
    EXPECT_TRUE(select(QRectF(13, 20, 1, 1)).empty());
    scene->removeElement(1);
    EXPECT_EQ(select(QRectF(0, 0, Size, Size)), (std::vector<LONGID>{0x01000001, largeId}));
}

TEST_F(MarksTest, FramesOfTheSceneDrawThem)
{
    addToScene(1, atPixel(10, 20));
    addToScene(2, atPixel(40, 50));
    GlCalls calls(*gl);
    expectMarks(drawFrame(view()), {{{10, 20}, markRed}, {{40, 50}, markRed}});
    EXPECT_EQ(calls.draws.size(), 1u);
}

TEST_F(MarksTest, ACloneIsOfTheSameKindWithoutItemsAndRed)
{
    MarkDrawer drawer(scene.get());
    drawer.setDefaultColor(Qt::green);
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    const std::unique_ptr<Item3dDrawer> clone = drawer.clone();
    auto* marks = dynamic_cast<MarkDrawer*>(clone.get());
    ASSERT_NE(marks, nullptr);
    EXPECT_TRUE(marks->getItems().empty());
    EXPECT_EQ(marks->getBuffersSize(), 0);
    EXPECT_EQ(marks->getDefaultColor(), QColor(Qt::red));
    EXPECT_EQ(marks->scene(), scene.get());
    const Items others = itemsAt(*marks, {atPixel(40, 50)});
    expectMarks(shown(*marks), {{{40, 50}, markRed}});
    EXPECT_EQ(shown(drawer).pixelColor(10, 20), QColor(0, 255, 0));
}

TEST_F(MarksTest, AHostWithoutTheFragmentStageReadsOfItOnce)
{
    mapShaderPrefix(); // without the folder of marks
    MarkDrawer drawer(scene.get());
    const QStringList messages = LogTrap::take();
    ASSERT_FALSE(messages.isEmpty());
    debug->take(); // the driver's own of the empty source
    EXPECT_TRUE(messages.join(' ').contains(QLatin1String("ExtraPoint.fragment.glsl")))
        << qPrintable(messages.join('\n'));
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    expectMarks(shown(drawer), {});
    expectMarks(shown(drawer), {});
    const std::unique_ptr<Item3dDrawer> clone = drawer.clone();
    const Items others = itemsAt(*clone, {atPixel(40, 50)});
    expectMarks(shown(*clone), {});
    EXPECT_EQ(LogTrap::take(), QStringList());
}

TEST_F(MarksTest, WithoutASceneThereAreNoMarks)
{
    MarkDrawer drawer(nullptr);
    EXPECT_EQ(drawer.getProgram(), nullptr);
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    expectMarks(shown(drawer), {});
}

} // namespace
