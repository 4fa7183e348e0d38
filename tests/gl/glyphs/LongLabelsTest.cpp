#include "GlyphsTest.h"

#include <Viewer3dModule/scene/SelectionOptions.h>

// Labels are selected by their letters, however far from their places these lie.
namespace {

class LongLabelsTest : public SceneTest
{
protected:
    static constexpr int Width = 300, Height = 20;

    void SetUp() override
    {
        SceneTest::SetUp();
        auto drawer = std::make_unique<LabelledItemDrawer>(scene.get());
        drawer->setColor(Qt::white);
        scene->addDrawer(LabelledItem::DrawerKind, std::move(drawer));
        QImage image(10, 10, QImage::Format_RGBA8888);
        image.fill(Qt::white);
        const auto texture = std::make_shared<IconTexture>(image);
        auto* item = new LabelledItem(7);
        item->anchor = {10.0f * 2.0f / Width - 1.0f, 0.0f, 0.0f};
        for (int x = 0; x < 250; x += 10)
            item->glyphs.emplace_back(glm::vec2(float(x), -5.0f), texture);
        scene->addElement(item);
    }
    std::vector<LONGID> select(const QRectF& area, SelectionMode mode, SelectionRule rule)
    {
        SelectionOptions options;
        options.mode = mode;
        options.rule = rule;
        return scene->selectItems(paintContext(Width, Height), area, options);
    }
};

TEST_F(LongLabelsTest, AreSelectedByLettersFarFromTheirAnchors)
{
    using Ids = std::vector<LONGID>;
    const QRectF end(230, 5, 20, 10), beyond(270, 5, 20, 10), all(5, 0, 290, 20);
    for (const SelectionMode mode : {SelectionMode::Through, SelectionMode::Visible}) {
        EXPECT_EQ(select(end, mode, SelectionRule::Touching), Ids{7});
        EXPECT_EQ(select(beyond, mode, SelectionRule::Touching), Ids{});
        EXPECT_EQ(select(end, mode, SelectionRule::Inside), Ids{});
        EXPECT_EQ(select(QRectF(0, 0, 60, 20), mode, SelectionRule::Inside), Ids{});
        EXPECT_EQ(select(all, mode, SelectionRule::Inside), Ids{7});
    }
}

} // namespace
