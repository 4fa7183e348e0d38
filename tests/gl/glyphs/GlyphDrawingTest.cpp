#include "GlyphsTest.h"

#include <Viewer3dModule/scene/SelectionOptions.h>

// What labels of glyphs look like, and in which passes they take part.
namespace {

class GlyphDrawingTest : public GlyphsTest
{
protected:
    void SetUp() override
    {
        GlyphsTest::SetUp();
        drawer->setColor(QColor(0, 255, 0));
    }
    /// The pixels that a glyph of 4 x 6 covers whose lower left corner lies there.
    static QRect covered(int x, int y) { return QRect(x, y - 6, 4, 6); }
    void expectOnly(const QImage& image, const std::vector<std::pair<QRect, QColor>>& glyphs)
    {
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                QColor expected(0, 0, 0);
                for (const auto& [rect, color] : glyphs)
                    if (rect.contains(x, y)) expected = color;
                ASSERT_EQ(image.pixelColor(x, y).rgb(), expected.rgb()) << x << ", " << y;
            }
    }
    static std::uint32_t word(const QImage& image, int x, int y)
    {
        const uchar* pixel = image.constScanLine(y) + 4 * x;
        return std::uint32_t(pixel[0]) | std::uint32_t(pixel[1]) << 8 | std::uint32_t(pixel[2]) << 16 |
               std::uint32_t(pixel[3]) << 24;
    }

    const QColor green{0, 255, 0};
    const QColor highlight{255, 255, 0}; // of a host without settings
};

TEST_F(GlyphDrawingTest, LabelsStandAtTheirAnchorsInTheColourOfTheDrawer)
{
    add(1, label(2), atCorner(10, 20));
    add(2, label(1), atCorner(40, 50));
    expectOnly(shown(), {{covered(10, 20), green}, {covered(16, 20), green}, {covered(40, 50), green}});
}

TEST_F(GlyphDrawingTest, HighlightedOnesHaveTheSelectionColourAndHiddenOnesNone)
{
    add(1, label(2), atCorner(10, 20)).highlighted = true;
    add(2, label(2), atCorner(10, 40)).setVisible(false);
    add(3, label(2), atCorner(40, 60));
    expectOnly(shown(), {{covered(10, 20), highlight},
                         {covered(16, 20), highlight},
                         {covered(40, 60), green},
                         {covered(46, 60), green}});
}

TEST_F(GlyphDrawingTest, TheFilterDecidesForItsPassOnly)
{
    add(1, label(1), atCorner(10, 20));
    add(2, label(1), atCorner(40, 50));
    const auto onlySecond = [this](Drawable3dItem* item) { return item == items[1].get(); };
    expectOnly(shown(view(), onlySecond), {{covered(40, 50), green}});
    expectOnly(shown(), {{covered(10, 20), green}, {covered(40, 50), green}});
}

TEST_F(GlyphDrawingTest, EditedLabelsAreShownAsTheyAre)
{
    LabelledItem& item = add(1, label(3), atCorner(10, 20));
    add(2, label(1), atCorner(10, 50));
    shown();
    relabel(item, label(1));
    expectOnly(shown(), {{covered(10, 20), green}, {covered(10, 50), green}});
    item.anchor = atCorner(30, 20);
    relabel(item, label(5));
    expectOnly(shown(), {{covered(30, 20), green},
                         {covered(36, 20), green},
                         {covered(42, 20), green},
                         {covered(48, 20), green},
                         {covered(54, 20), green},
                         {covered(10, 50), green}});
    items.erase(items.begin());
    expectOnly(shown(), {{covered(10, 50), green}});
}

TEST_F(GlyphDrawingTest, ALabelWithAHeightIsScaledToIt)
{
    LabelledItem& item = add(1, label(2), atCorner(10, 40));
    item.height = 12.0f; // twice the images
    drawer->updateItem(&item);
    expectOnly(shown(), {{QRect(10, 28, 8, 12), green}, {QRect(22, 28, 8, 12), green}});
}

// Of a transparent and a white half: what lies between is mixed as the texture asks for, and only there.
TEST_F(GlyphDrawingTest, TexelsAreMixedWhereTheyAreNoPixels)
{
    QImage image(4, 6, QImage::Format_RGBA8888);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 4; ++x)
            image.setPixelColor(x, y, x < 2 ? Qt::transparent : Qt::white);
    const MultiGlyphItem3dDrawer::GlyphList halves = {
        {glm::vec2(0.0f), std::make_shared<IconTexture>(image)}};
    LabelledItem& item = add(1, halves, atCorner(10, 40));
    const auto mixed = [this] {
        const QImage picture = shown();
        int count = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                const int shade = picture.pixelColor(x, y).green();
                count += shade > 0 && shade < 255;
            }
        return count;
    };
    EXPECT_EQ(mixed(), 0);
    item.height = 12.0f;
    drawer->updateItem(&item);
    EXPECT_EQ(mixed(), 24) << "two columns of twelve";
    item.height = 0.0f;
    item.glyphs[0].first.x = 0.5f;
    drawer->updateItem(&item);
    EXPECT_EQ(mixed(), 6) << "one, half-way between two texels";
    item.glyphs[0].first.x = -3.0f;
    drawer->updateItem(&item);
    EXPECT_EQ(mixed(), 0);
    expectOnly(shown(), {{QRect(9, 34, 2, 6), green}});
}

TEST_F(GlyphDrawingTest, DrawsWithItsOwnProgramWhateverThePassNames)
{
    add(1, label(1), atCorner(10, 20));
    PaintContext context = view();
    context.program = scene->createProgram({QStringLiteral("shader:Viewer3dModule/common.vertex.glsl"),
                                            QStringLiteral("shader:Viewer3dModule/mono.fragment.glsl")},
                                           {}, {});
    ASSERT_NE(context.program, drawer->getProgram());
    expectOnly(shown(context), {{covered(10, 20), green}});
}

TEST_F(GlyphDrawingTest, LeavesNothingBound)
{
    add(1, label(2), atCorner(10, 20));
    shown();
    for (const GLenum what :
         {GL_CURRENT_PROGRAM, GL_VERTEX_ARRAY_BINDING, GL_TEXTURE_BINDING_2D, GL_SAMPLER_BINDING}) {
        GLint value = -1;
        gl->glGetIntegerv(what, &value);
        EXPECT_EQ(value, 0) << what;
    }
}

TEST_F(GlyphDrawingTest, GlueMasksCapturesAndPassesWithoutPointsHaveNone)
{
    add(1, label(2), atCorner(10, 20));
    PaintContext glue = view(), capture = view(), lines = view();
    glue.drawMode = DrawMode::GlueMaskDraw;
    capture.drawMode = DrawMode::GeometryCapture;
    lines.primitives = PrimitiveBit::Lines | PrimitiveBit::Triangles;
    for (const PaintContext& context : {glue, capture, lines}) {
        EXPECT_EQ(drawsOf(context), std::vector<int>{}) << context.drawMode;
        EXPECT_EQ(uploadsOf(context), std::vector<std::size_t>{});
    }
    EXPECT_EQ(drawsOf(view()).size(), 2u);
}

TEST_F(GlyphDrawingTest, CountsAndCaptureTellOfNoGeometry)
{
    LabelledItem& item = add(1, label(2), atCorner(10, 20));
    const Drawable3dPrimitive::GeometryInfo info = item.getGeometryInfo();
    EXPECT_EQ(info.pointCount + info.lineCount + info.triangleCount, 0u);
    const auto [points, lines, triangles] = scene->generateItemGeometry(&item);
    EXPECT_EQ(points, 0u);
    EXPECT_EQ(lines, 0u);
    EXPECT_EQ(triangles, 0u);
}

TEST_F(GlyphDrawingTest, SelectionMasksHoldWideIdentifiersAtEveryGlyph)
{
    const LONGID wide = (LONGID(0x01234567) << 32) | LONGID(0x89ABCDEF);
    add(5, label(1), atCorner(40, 50));
    add(wide, label(3), atCorner(10, 20));
    PaintContext context = view();
    context.drawMode = DrawMode::SelectionMaskDraw;
    RenderTarget target(*gl, {Size, Size}, 4);
    target.bind();
    target.clear(QColor(0, 0, 0, 0));
    gl->glDisable(GL_BLEND); // bytes, not colours
    drawer->draw(context, {});
    gl->glEnable(GL_BLEND);
    const QImage low = target.image(1), high = target.image(2);
    for (int glyph = 0; glyph < 3; ++glyph) {
        EXPECT_EQ(word(low, 12 + 6 * glyph, 17), 0x89ABCDEFu);
        EXPECT_EQ(word(high, 12 + 6 * glyph, 17), 0x01234567u);
    }
    EXPECT_EQ(word(low, 42, 47), 5u);
    EXPECT_EQ(word(high, 42, 47), 0u);
    EXPECT_EQ(word(low, 15, 17), 0u) << "between two glyphs";
}

/// Labels of a scene's items.
class GlyphSelectionTest : public GlyphDrawingTest
{
protected:
    void SetUp() override
    {
        GlyphDrawingTest::SetUp();
        constexpr int kind = LabelledItem::DrawerKind;
        const auto find = [&] { return dynamic_cast<LabelledItemDrawer*>(scene->getDrawer(kind, kind)); };
        if (!find()) scene->addDrawer(kind, kind, std::make_unique<LabelledItemDrawer>(scene.get()));
        inScene = find();
    }
    void TearDown() override
    {
        items.clear();
        GlyphDrawingTest::TearDown();
    }
    LabelledItem& addToScene(LONGID id, std::size_t glyphs, const glm::vec3& anchor)
    {
        items.push_back(std::make_unique<LabelledItem>(id));
        items.back()->glyphs = label(glyphs);
        items.back()->anchor = anchor;
        items.back()->setPixelReach(6.0f * float(glyphs));
        items.back()->setDrawer(inScene);
        return *items.back();
    }
    std::vector<LONGID> selected(const QRectF& rect, SelectionMode mode)
    {
        SelectionOptions options;
        options.mode = mode;
        std::vector<LONGID> ids = scene->selectItems(view(), rect, options);
        std::sort(ids.begin(), ids.end());
        return ids;
    }

    LabelledItemDrawer* inScene = nullptr;
};

using LongIds = std::vector<LONGID>;

TEST_F(GlyphSelectionTest, ALabelIsSelectedByAnyOfItsGlyphs)
{
    const LONGID wide = (LONGID(3) << 32) | 77;
    addToScene(9, 1, atCorner(40, 60));
    addToScene(wide, 4, atCorner(10, 20));
    addToScene(11, 4, atCorner(10, 40));
    for (const SelectionMode mode : {SelectionMode::Through, SelectionMode::Visible}) {
        for (int glyph = 0; glyph < 4; ++glyph)
            EXPECT_EQ(selected(QRectF(11 + 6 * glyph, 15, 2, 2), mode), LongIds{wide}) << glyph;
        EXPECT_EQ(selected(QRectF(14.1, 15, 1.8, 2), mode), LongIds{}) << "between two glyphs";
        EXPECT_EQ(selected(QRectF(28, 10, 5, 30), mode), (LongIds{11, wide}));
        EXPECT_EQ(selected(QRectF(0, 0, 64, 64), mode), (LongIds{9, 11, wide}));
    }
}

TEST_F(GlyphSelectionTest, HiddenLabelsAreNotSelectedAndHighlightedOnesAre)
{
    addToScene(1, 2, atCorner(10, 20)).setVisible(false);
    addToScene(2, 2, atCorner(10, 40)).highlighted = true;
    for (const SelectionMode mode : {SelectionMode::Through, SelectionMode::Visible})
        EXPECT_EQ(selected(QRectF(0, 0, 64, 64), mode), LongIds{2});
}

TEST_F(GlyphSelectionTest, FramesShowTheLabelsOfTheScene)
{
    inScene->setColor(green);
    addToScene(1, 2, atCorner(10, 20));
    expectOnly(drawFrame(view()), {{covered(10, 20), green}, {covered(16, 20), green}});
}

} // namespace
