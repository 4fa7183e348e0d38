// A thousand random scenes and views: what a pass leaves in its target is the same to the bit, whether it
// leaves out what lies out of sight or not.
#include "tests/gl/fences/FencedScene.h"
#include "tests/gl/glyphs/GlyphsTest.h"
#include "tests/gl/instanced/InstancedTest.h"
#include "tests/gl/selection/KindsOfItems.h"

#include <Viewer3dModule/drawables/Node3dItem.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/scene/ViewCulling.h>

#include <QtGui/QPolygonF>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstdio>
#include <random>

namespace {

/// A line that many are drawn with at once.
class BatchedLine : public DrawnItem
{
public:
    static constexpr int DrawerKind = 4715; // of no drawer that scenes have by themselves
    using DrawnItem::DrawnItem;
    bool describeDrawing(ItemDrawing& drawn) override { return line && line->describeDrawing(drawn); }
    PolyPolyline3dItem* line = nullptr;
};

class RandomCullingTest : public SelectionTest
{
protected:
    static constexpr int OfEachKind = 3;
    static constexpr QSize picture{48, 36};

    void SetUp() override
    {
        SelectionTest::SetUp();
        QDir::addSearchPath(QStringLiteral("shader"),
                            QStringLiteral(V3D_SOURCE_DIR "/tests/gl/instanced/shaders"));
        fence = std::make_unique<FenceSetter>(*project);
        culling = std::make_unique<ViewCulling>(*scene);
        target = std::make_unique<RenderTarget>(*gl, picture, 4);
        kinds = std::make_unique<KindsOfItems>(*scene, *gl, elements, OfEachKind * KindsOfItems::KindCount);
        items = kinds->items();
        addBatches();
        addMarksLabelsAndNodes();
        for (int i = 0; i < 12; ++i)
            addLine();
        ASSERT_EQ(scene->modelToSceneTransform(), glm::dmat4(1.0)) << "boxes are in scene coordinates";
        PaintContext all = paintContext(picture.width(), picture.height());
        all.projection = glm::mat4(glm::ortho(-150.0, 150.0, -150.0, 150.0, -150.0, 150.0));
        drawFrame(all);
    }
    void TearDown() override
    {
        scene->makeCurrent();
        for (DrawnItem* line : lines)
            line->drawing = nullptr;
        parts.clear();
        target.reset();
        kinds.reset();
        SelectionTest::TearDown();
    }

    double real(double from, double to) { return std::uniform_real_distribution<double>(from, to)(m_random); }
    int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }
    glm::dvec3 anyPlace(double most) { return {real(-most, most), real(-most, most), real(-most, most)}; }

    // --- the scene

    void addBatches()
    {
        auto& wide = dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::WideLines));
        auto drawer = std::make_unique<BatchedItem3dDrawer>(scene.get(), wide.getDefaultProgram());
        drawer->setLeastRun(1);
        scene->addDefaultDrawer(BatchedLine::DrawerKind, std::move(drawer));
    }
    std::uint64_t drawnTogether() const
    {
        std::uint64_t count = 0;
        for (int i = 0; i < KindsOfItems::TypeCount; ++i) {
            const auto* drawer = scene->getDrawer(KindsOfItems::FirstType + i, BatchedLine::DrawerKind);
            if (const auto* batched = dynamic_cast<const BatchedItem3dDrawer*>(drawer))
                count += batched->drawnTogether();
        }
        return count;
    }
    void addMarksLabelsAndNodes()
    {
        scene->addDrawer(MarkItem::DrawerKind,
                         std::make_unique<InstancedViewerOrientedTextureDrawer>(scene.get()));
        scene->addDrawer(LabelledItem::DrawerKind, std::make_unique<LabelledItemDrawer>(scene.get()));
        for (int i = 0; i < 6; ++i)
            scene->addElement(new MarkItem(5000 + i, glm::vec3(anyPlace(100))));
        QImage square(4, 6, QImage::Format_RGBA8888);
        square.fill(Qt::white);
        const auto texture = std::make_shared<IconTexture>(square);
        for (int i = 0; i < 4; ++i) {
            auto* label = new LabelledItem(6000 + i);
            label->anchor = glm::vec3(anyPlace(100));
            for (int glyph = 0; glyph < 5; ++glyph)
                label->glyphs.emplace_back(glm::vec2(5.0f * float(glyph), 0.0f), texture);
            scene->addElement(label);
        }
        // Small ones: the spheres of the kinds are as fine as the last node that was drawn.
        for (const double radius : {6.0, 30.0}) {
            auto node = std::make_unique<Node3dItem>(scene.get(), DrawerType::ShaderSphere);
            node->setModelPos(anyPlace(60));
            node->setPixelRadius(radius);
            scene->addLocalItem(std::move(node));
        }
    }
    /// A line of a pen of up to 64 pixels, which tells its reach exactly.
    void addLine()
    {
        elements.push_back(std::make_unique<TestElement>(KindsOfItems::FirstType + whole(0, 2)));
        const int width = whole(0, 2) == 0 ? 64 : whole(1, 40);
        const int type = ++lastLine % 2 == 0 ? BatchedLine::DrawerKind : DrawerType::WideLines;
        auto* item = new BatchedLine(elements.back().get(), lastLine, type);
        item->setPixelReach(float(width) / 2.0f);
        auto line = std::make_unique<PolyPolyline3dItem>(0, DrawerType::WideLines);
        std::vector<glm::vec3> points;
        glm::dvec3 point = anyPlace(100);
        for (int i = whole(2, 5); i > 0; --i) {
            points.emplace_back(point);
            item->box.unite(glm::dvec3(points.back()));
            point += anyPlace(20);
        }
        const int count = static_cast<int>(points.size());
        line->setPen(QPen(QColor(whole(0, 255), whole(0, 255), whole(0, 255), 200), width));
        line->setPoints(std::move(points), {count});
        item->drawing = [part = line.get()](const PaintContext& context) { part->draw(context); };
        item->line = line.get();
        scene->addElement(item);
        parts.push_back(std::move(line));
        lines.push_back(item);
        items.push_back(item);
    }
    void removeLine()
    {
        const auto line = lines.begin() + whole(0, static_cast<int>(lines.size()) - 1);
        items.erase(std::find(items.begin(), items.end(), *line));
        scene->removeElement((*line)->getId());
        lines.erase(line);
    }
    DrawnItem& anyItem() { return *items[std::size_t(whole(0, static_cast<int>(items.size()) - 1))]; }
    /// Moves an item within 100 units around the origin.
    void move(DrawnItem& item)
    {
        const glm::dvec3 step = anyPlace(100) - item.box.getCenter();
        item.box = gmx::BoundingBox(item.box.getMin() + step, item.box.getMax() + step);
        item.setTransform(glm::mat4(glm::translate(glm::dmat4(1.0), step)), true);
    }
    void setFence()
    {
        fence->item().setInteractionMode(whole(0, 5) == 0);
        // one kind: what is left out of a frame does not depend on it, and each has programs of its own to
        // build
        if (whole(0, 1) == 0) return fence->reset();
        fence->set(anyPlace(50), real(40, 120));
    }
    void change()
    {
        DrawnItem& item = anyItem();
        switch (whole(0, 9)) {
        case 0:
            return item.setVisible(!static_cast<Drawable3dItem&>(item).isVisible());
        case 1:
            return item.getModelElement()->setHighlighted(whole(0, 1) == 0);
        case 2:
            if (lines.size() > 4) removeLine();
            return;
        case 3:
            if (lines.size() < 20) addLine();
            return;
        case 4: {
            std::vector<Graphics3dItem*> updated{&item, &anyItem()};
            return scene->updateGraphicsItems(updated);
        }
        case 5:
            return setFence();
        default:
            return move(item);
        }
    }

    // --- views and passes

    /// From within or from afar, in perspective or in parallel, also so that the near plane cuts items.
    PaintContext anyView()
    {
        PaintContext context = paintContext(picture.width(), picture.height());
        const double aspect = double(picture.width()) / picture.height();
        const glm::dvec3 eye = whole(0, 2) == 0 ? 3.0 * anyPlace(100) : anyPlace(100);
        context.view = glm::mat4(glm::lookAt(eye, anyPlace(80), glm::dvec3(0.1, 0.2, 1.0)));
        const double zoom = real(5, 100), near = whole(0, 3) == 0 ? real(10, 80) : 0.5;
        context.projection = glm::mat4(
            whole(0, 2) == 0 ? glm::ortho(-zoom * aspect, zoom * aspect, -zoom, zoom, real(-60, 60), 250.0)
                             : glm::perspective(real(0.1, 1.6), aspect, near, real(100, 500)));
        return context;
    }
    int drawsOfItems() const
    {
        int count = 0;
        for (const DrawnItem* item : items)
            count += item->draws;
        return count;
    }
    /// What a pass leaves in the attachments and the depths.
    std::pair<std::vector<QImage>, std::vector<float>> drawn(const PaintContext& context, bool isCulled)
    {
        target->bind();
        target->clear(QColor(40, 80, 120, 255));
        if (context.drawMode != DrawMode::OrdinalDraw) gl->glDisable(GL_BLEND);
        culling->setEnabled(isCulled);
        for (DrawnItem* item : items)
            item->draws = 0;
        scene->drawFrame(context, nullptr, culling->filter(context));
        gl->glEnable(GL_BLEND);
        (isCulled ? drawsWith : drawsWithout) += drawsOfItems();
        std::vector<QImage> images;
        for (int i = 0; i < (context.drawMode == DrawMode::OrdinalDraw ? 1 : 4); ++i)
            images.push_back(target->image(i));
        return {images, target->depth()};
    }
    /// Of the items that are left out, those without which the pass leaves something else.
    std::string culprits(const PaintContext& context)
    {
        culling->setEnabled(true);
        const auto seen = culling->filter(context, [](Drawable3dItem*) { return true; });
        const auto without = [&](const Drawable3dItem* missing) {
            target->bind();
            target->clear(QColor(40, 80, 120, 255));
            scene->drawFrame(context, nullptr, [missing](Drawable3dItem* item) {
                return item->isVisible() && item != missing;
            });
            return target->depth();
        };
        const std::vector<float> all = without(nullptr);
        std::string text = all == without(nullptr) ? "" : " it changes by itself;";
        for (DrawnItem* item : items) {
            if (seen(item) || without(item) == all) continue;
            const auto& made = kinds->items();
            const auto place =
                static_cast<std::size_t>(std::find(made.begin(), made.end(), item) - made.begin());
            text += place < made.size() ? " kind " + std::to_string(KindsOfItems::kindOf(place)) : " a line";
        }
        return text;
    }
    std::vector<LONGID> selected(const PaintContext& context, bool isCulled)
    {
        target->bind();
        culling->setEnabled(isCulled);
        IItem3dSelectionProvider* provider = scene->getItemSelectionProvider();
        provider->setSelectionPolygon(QPolygonF(QRectF(QPointF(5, 5), QSizeF(30, 20))));
        provider->beginSelection(context);
        scene->drawElements(context, nullptr, culling->filter(context));
        std::vector<LONGID> ids = provider->selectedItems();
        std::sort(ids.begin(), ids.end());
        return ids;
    }

    std::unique_ptr<FenceSetter> fence;
    std::unique_ptr<ViewCulling> culling;
    std::unique_ptr<RenderTarget> target;
    std::unique_ptr<KindsOfItems> kinds;
    std::vector<std::unique_ptr<TestElement>> elements;
    std::vector<std::unique_ptr<PolyPolyline3dItem>> parts;
    std::vector<DrawnItem*> items; // of the kinds, and the lines
    std::vector<DrawnItem*> lines;
    LONGID lastLine = 9000;
    long drawsWith = 0, drawsWithout = 0;

private:
    std::mt19937 m_random{4};
};

TEST_F(RandomCullingTest, ChangesNoPixelOfAThousandPictures)
{
    int empty = 0;
    for (int run = 0; run < 1000 && !HasFailure(); ++run) {
        for (int i = whole(0, 4); i > 0; --i)
            change();
        PaintContext context = anyView();
        scene->flushBounds();
        ASSERT_EQ(scene->modelToSceneTransform(), glm::dmat4(1.0));
        const int mode = whole(0, 4);
        if (mode == 4) {
            context.drawMode = DrawMode::SelectionBufferDraw;
            EXPECT_EQ(selected(context, true), selected(context, false)) << "run " << run;
            continue;
        }
        constexpr int modes[] = {DrawMode::OrdinalDraw, DrawMode::OrdinalDraw, DrawMode::SelectionMaskDraw,
                                 DrawMode::GlueMaskDraw};
        context.drawMode = modes[mode];
        context.depthOnly = mode == 0 && whole(0, 1) == 0;
        const auto with = drawn(context, true), without = drawn(context, false);
        if (!context.depthOnly) {
            EXPECT_TRUE(with.first == without.first)
                << "run " << run << ", mode " << context.drawMode << ":" << culprits(context);
        }
        EXPECT_TRUE(with.second == without.second)
            << "run " << run << ", mode " << context.drawMode << ":" << culprits(context);
        empty += std::all_of(without.second.begin(), without.second.end(),
                             [](float depth) { return depth >= 1.0f; });
    }
    std::printf("items were drawn %ld times instead of %ld, %llu more together; %d pictures are empty\n",
                drawsWith, drawsWithout, static_cast<unsigned long long>(drawnTogether()), empty);
    EXPECT_GT(drawnTogether(), 1000u);
    EXPECT_LT(drawsWith, drawsWithout * 65 / 100) << "or little is left out";
    EXPECT_LT(empty, 250) << "or there is little to compare";
}

} // namespace
