// A thousand random scenes and views: what a pass leaves in its target, and what it selects, is the same to
// the bit, whether it leaves out what lies out of sight or not.
#include "RandomScene.h"

#include "tests/support/sceneSeeds.h"

#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/scene/ViewCulling.h>

#include <QtGui/QPolygonF>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace {

constexpr std::size_t PlacedKinds = RandomScene::LineKind + 1;

class RandomCullingTest : public SelectionTest
{
protected:
    static constexpr QSize picture{48, 36};
    enum PassKind { Colors, Depths, SelectionMask, GlueMask, SelectedIds, PassKindCount };

    /// What a pass leaves.
    struct Drawn
    {
        bool operator==(const Drawn& other) const
        {
            return images == other.images && depths == other.depths && ids == other.ids;
        }
        std::vector<QImage> images;
        std::vector<float> depths;
        std::vector<LONGID> ids;
    };
    struct Pass
    {
        PassKind kind;
        PaintContext context;
        QPolygonF area;             ///< of a selection
        Scene3d::ItemFilter filter; ///< the caller's
    };

    void SetUp() override
    {
        SelectionTest::SetUp();
        fence = std::make_unique<FenceSetter>(*project);
        target = std::make_unique<RenderTarget>(*gl, picture, 4);
        RandomScene::addDrawers(*scene);
    }
    void TearDown() override
    {
        scene->makeCurrent();
        target.reset();
        SelectionTest::TearDown();
    }
    Pass anyPass(RandomScene& made)
    {
        Dice& dice = made.dice();
        constexpr PassKind kinds[] = {Colors,   Colors,   Colors,      Depths,     SelectionMask,
                                      GlueMask, GlueMask, SelectedIds, SelectedIds};
        constexpr int modes[] = {DrawMode::OrdinalDraw, DrawMode::OrdinalDraw, DrawMode::SelectionMaskDraw,
                                 DrawMode::GlueMaskDraw, DrawMode::SelectionBufferDraw};
        Pass pass{kinds[dice.between(0, 8)], paintContext(picture.width(), picture.height()), {}, {}};
        made.look(pass.context);
        pass.context.drawMode = modes[pass.kind];
        pass.context.depthOnly = pass.kind == Depths;
        pass.context.blends = pass.kind == Colors && dice.oneIn(2);
        if (dice.oneIn(8)) pass.context.primitives = dice.between(1, 7);
        const auto pixel = [&dice] { return QPointF(dice.between(-5, 53), dice.between(-5, 41)); };
        pass.area = QRectF(pixel(), pixel()).normalized();
        if (dice.oneIn(2)) pass.area = QPolygonF({pixel(), pixel(), pixel(), pixel(), pixel()});
        if (dice.oneIn(6))
            pass.filter = [](Drawable3dItem* item) { return item->isVisible() && !item->isHighlighted(); };
        return pass;
    }
    Drawn drawn(const Pass& pass, const Scene3d::ItemFilter& filter)
    {
        target->bind();
        target->clear(QColor(40, 80, 120, 255));
        IItem3dSelectionProvider* provider = scene->getItemSelectionProvider();
        if (pass.kind == SelectedIds) {
            provider->setSelectionPolygon(pass.area);
            provider->beginSelection(pass.context);
        }
        if (pass.kind != Colors) gl->glDisable(GL_BLEND);
        scene->drawFrame(pass.context, nullptr, filter);
        gl->glEnable(GL_BLEND);
        Drawn result;
        if (pass.kind == SelectedIds) result.ids = provider->selectedItems();
        std::sort(result.ids.begin(), result.ids.end());
        const int images = pass.kind == Colors ? 1 : pass.kind == Depths ? 0 : 4;
        for (int i = 0; i < images; ++i)
            result.images.push_back(target->image(i));
        result.depths = target->depth();
        return result;
    }
    Drawn drawn(const Pass& pass, bool isCulled)
    {
        ViewCulling culling(*scene);
        culling.setEnabled(isCulled);
        return drawn(pass, culling.filter(pass.context, pass.filter));
    }
    /// Of the items that are left out, those without which the pass leaves something else.
    std::string culprits(const RandomScene& made, const Pass& pass)
    {
        const auto seen = ViewCulling(*scene).filter(pass.context, [](Drawable3dItem*) { return true; });
        const auto without = [&](const Drawable3dItem* missing) {
            return drawn(pass, [&pass, missing](Drawable3dItem* item) {
                return (pass.filter ? pass.filter(item) : item->isVisible()) && item != missing;
            });
        };
        const Drawn all = without(nullptr);
        std::string text = all == without(nullptr) ? "" : " it changes by itself;";
        for (const auto& placed : made.items())
            if (!seen(placed->item) && !(without(placed->item) == all))
                text += " kind " + std::to_string(placed->kind);
        return text;
    }
    /// What another pass leaves with culling, which is what it leaves without.
    Drawn compare(RandomScene& made)
    {
        const Pass pass = anyPass(made);
        const glm::dmat4 transform = scene->modelToSceneTransform();
        for (const auto& placed : made.items())
            placed->item->draws = 0;
        const Drawn with = drawn(pass, true);
        for (const auto& placed : made.items())
            drawsWith[std::size_t(placed->kind)] += std::exchange(placed->item->draws, 0);
        const Drawn without = drawn(pass, false);
        for (const auto& placed : made.items())
            drawsWithout[std::size_t(placed->kind)] += placed->item->draws;
        EXPECT_TRUE(with == without) << "pass " << pass.kind << ", fence " << made.fenceKind() << ":"
                                     << culprits(made, pass);
        EXPECT_EQ(scene->modelToSceneTransform(), transform);
        ++passes[std::size_t(pass.kind)][std::size_t(made.fenceKind())];
        selected += without.ids.size();
        transformed += transform != glm::dmat4(1.0);
        cuts += made.isCut();
        empty += pass.kind != SelectedIds && std::all_of(without.depths.begin(), without.depths.end(),
                                                         [](float depth) { return depth >= 1.0f; });
        return with;
    }
    std::vector<Drawn> compareScene(RandomScene::Variety variety, unsigned seed)
    {
        SCOPED_TRACE("V3D_TEST_SCENE=" + std::to_string(seed) + " makes this scene alone");
        RandomScene made(*scene, *gl, *fence, variety, seed);
        std::vector<Drawn> frames{compare(made)};
        for (int more = made.dice().between(-1, 1); more > 0; --more) {
            for (int changes = made.dice().between(1, 4); changes > 0; --changes)
                made.change();
            frames.push_back(compare(made));
        }
        return frames;
    }
    void compareScenes(RandomScene::Variety variety, unsigned count);
    void printCounts() const;
    void expectVariety() const;

    std::unique_ptr<FenceSetter> fence;
    std::unique_ptr<RenderTarget> target;
    std::array<std::array<int, 4>, PassKindCount> passes{}; ///< by the kind of fence
    std::array<int, PlacedKinds> drawsWith{}, drawsWithout{};
    int transformed = 0, cuts = 0, empty = 0;
    std::size_t selected = 0;
};

void RandomCullingTest::compareScenes(RandomScene::Variety variety, unsigned count)
{
    const std::vector<unsigned> seeds = sceneSeeds(count);
    for (const unsigned seed : seeds) {
        compareScene(variety, seed);
        if (HasFailure()) return;
    }
    printCounts();
    if (seeds.size() == count) expectVariety();
}

void RandomCullingTest::printCounts() const
{
    const char* kinds[] = {"pictures", "depths", "selection masks", "glue masks", "selections"};
    for (std::size_t kind = 0; kind < PassKindCount; ++kind)
        std::printf("%s: %d without a fence, %d in frustums, %d in spheres, %d in prisms\n", kinds[kind],
                    passes[kind][0], passes[kind][1], passes[kind][2], passes[kind][3]);
    for (std::size_t kind = 0; kind < PlacedKinds; ++kind)
        std::printf("kind %zu is drawn %d times instead of %d\n", kind, drawsWith[kind], drawsWithout[kind]);
    std::printf(
        "%llu drawn together, %zu selected, %d passes cut by a fence, %d of a model elsewhere, %d empty\n",
        static_cast<unsigned long long>(RandomScene::drawnTogether(*scene)), selected, cuts, transformed,
        empty);
}

// Or there was little to compare.
void RandomCullingTest::expectVariety() const
{
    int frames = 0;
    for (std::size_t kind = 0; kind < PassKindCount; ++kind)
        for (std::size_t fenced = 0; fenced < 4; ++fenced) {
            frames += passes[kind][fenced];
            EXPECT_GT(passes[kind][fenced], 2) << "pass " << kind << ", fence " << fenced;
        }
    int with = 0, without = 0;
    for (std::size_t kind = 0; kind < PlacedKinds; ++kind) {
        with += drawsWith[kind];
        without += drawsWithout[kind];
        EXPECT_GT(drawsWith[kind], 50) << "kind " << kind;
        if (kind != KindsOfItems::Caption) {
            EXPECT_LT(drawsWith[kind], drawsWithout[kind] - 50) << "kind " << kind;
        }
    }
    EXPECT_EQ(drawsWith[KindsOfItems::Caption], drawsWithout[KindsOfItems::Caption]);
    EXPECT_LT(with, without * 70 / 100);
    EXPECT_GT(RandomScene::drawnTogether(*scene), 1000u);
    EXPECT_GT(selected, 200u);
    EXPECT_GT(cuts, frames / 5);
    EXPECT_GT(transformed, frames / 4);
    EXPECT_LT(empty, frames / 4);
}

TEST_F(RandomCullingTest, ChangesNothingInAThousandScenes)
{
    compareScenes(RandomScene::SomeInSweptFences, 1000);
}

TEST_F(RandomCullingTest, DISABLED_ChangesNothingInAnyFence)
{
    compareScenes(RandomScene::AllInAllFences, 5000);
}

// So that one can be looked at alone.
TEST_F(RandomCullingTest, ScenesDoNotDependOnThoseBeforeThem)
{
    constexpr unsigned count = 12;
    std::vector<std::vector<Drawn>> scenes;
    for (unsigned seed = 1; seed <= count; ++seed)
        scenes.push_back(compareScene(RandomScene::SomeInSweptFences, seed));
    for (unsigned seed = count; seed > 0; --seed)
        EXPECT_TRUE(compareScene(RandomScene::SomeInSweptFences, seed) == scenes[seed - 1]) << seed;
}

} // namespace
