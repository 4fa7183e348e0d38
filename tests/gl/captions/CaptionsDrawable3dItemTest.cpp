#include "CaptionTest.h"

#include <tests/support/GlObjects.h>
#include <tests/support/TestItems.h>

#include <Viewer3dModule/scene/SelectionOptions.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <QtCore/QElapsedTimer>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>

using CaptionsDrawable3dItemTest = CaptionTest;

namespace {

const QColor selected(255, 255, 0); // of scenes without settings

QImage filled(int width, int height, const QColor& color)
{
    QImage image(width, height, QImage::Format_RGBA8888);
    image.fill(color);
    return image;
}

/// An element's item that is nothing but captions.
class CaptionItem : public TestGraphicsItem
{
public:
    explicit CaptionItem(TestElement* element)
        : TestGraphicsItem(element)
        , captions(0)
    {
        drawerType = DrawerType::Caption;
        captions.setOwner(this);
    }
    LONGID getId() const override { return LONGID(5) << 33 | 9; }
    using TestGraphicsItem::draw;
    void draw(const PaintContext& context) override { captions.draw(context); }

    CaptionsDrawable3dItem captions;
};

} // namespace

TEST_F(CaptionsDrawable3dItemTest, BindsToTheDrawerOfItsType)
{
    CaptionsDrawable3dItem& captions = makeItem();
    EXPECT_EQ(captions.getDefaultDrawerType(), 922688518);
    EXPECT_EQ(captions.getDrawer(), scene->getDefaultDrawer(DrawerType::Caption));
    EXPECT_EQ(captions.scene(), scene.get());
    EXPECT_FALSE(scene->isHasDrawer(77, DrawerType::Caption));

    CaptionsDrawable3dItem own(77);
    own.setSceneDrawer(nullptr);
    EXPECT_EQ(own.getDrawer(), nullptr);
    own.setSceneDrawer(scene.get());
    EXPECT_TRUE(scene->isHasDrawer(77, DrawerType::Caption));
    EXPECT_EQ(own.getDrawer(), scene->getDrawer(77, DrawerType::Caption));
    EXPECT_NE(own.getDrawer(), captions.getDrawer());
}

TEST_F(CaptionsDrawable3dItemTest, KeepsCaptionsInTheirOrder)
{
    CaptionsDrawable3dItem& captions = makeItem();
    captions.addCaption(corner(10, 40), filled(30, 20, Qt::red));
    captions.addCaption(corner(20, 40), filled(30, 20, Qt::blue));
    captions.addCaption(corner(10, 20), "A", font(), green, 10.0, Qt::AlignHCenter);
    ASSERT_EQ(captions.captions().size(), 3u);
    EXPECT_EQ(captions.captions()[0]->imageSize(), QSize(30, 20));
    EXPECT_EQ(captions.captions()[2]->getData().text, "A");
    EXPECT_EQ(captions.captions()[1]->getVertex(0), corner(20, 40));
    const QImage picture = shown();
    EXPECT_EQ(countPixels(picture, Qt::blue), 600) << "over what was added before";
    EXPECT_EQ(countPixels(picture, Qt::red), 200);
}

TEST_F(CaptionsDrawable3dItemTest, ClearDestroysAll)
{
    const GlObjects before = GlObjects::count(*gl);
    CaptionsDrawable3dItem& captions = makeItem();
    captions.clear();
    EXPECT_TRUE(captions.captions().empty());
    captions.addCaption({}, filled(3, 3, green));
    captions.addCaption({}, "A", font(), green, 10.0, Qt::AlignLeft);
    captions.clear();
    EXPECT_TRUE(captions.captions().empty());
    EXPECT_EQ(GlObjects::count(*gl), before);
    EXPECT_EQ(inked(shown()), 0);
}

TEST_F(CaptionsDrawable3dItemTest, EachCaptionHasItsOffset)
{
    CaptionsDrawable3dItem& captions = makeItem();
    captions.addCaption(corner(100, 40), filled(20, 10, Qt::red));
    captions.captions()[0]->setOffset({-20.0f, 5.0f});
    captions.addCaption(corner(100, 40), filled(20, 10, Qt::blue));
    QImage expected = black();
    QPainter painter(&expected);
    painter.fillRect(80, 25, 20, 10, Qt::red);
    painter.fillRect(100, 30, 20, 10, Qt::blue);
    painter.end();
    checkImage("caption_offsets", shown(), expected);
}

// Wherever between pixels its corner lies: covered is what has its middle within.
TEST_F(CaptionsDrawable3dItemTest, CoversItsPixelsAtAnyPlaceAndDistance)
{
    constexpr int wide = 31, high = 17;
    makeItem().addCaption({}, filled(wide, high, green));
    PaintContext context = view();
    context.projection = glm::perspective(0.8f, float(Width) / Height, 0.1f, 5000.0f);
    std::mt19937 random(6);
    const auto uniform = [&random](double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random);
    };
    for (int i = 0; i < 100; ++i) {
        const int x = int(uniform(0, Width - wide)), y = int(uniform(high, Height));
        const double distance = std::exp(uniform(std::log(0.2), std::log(4000.0)));
        const glm::dvec3 ndc(corner(x + uniform(-0.4, 0.4), y + uniform(-0.4, 0.4)));
        item->captions()[0]->setPosition({ndc.x * distance / double(context.projection[0][0]),
                                          ndc.y * distance / double(context.projection[1][1]), -distance});
        QImage expected = black();
        QPainter(&expected).fillRect(x, y - high, wide, high, green);
        checkImage("caption_place", drawFrame(context).convertToFormat(expected.format()), expected, {1, 0});
        if (HasFailure()) FAIL() << x << ' ' << y << " at " << distance;
    }
}

TEST_F(CaptionsDrawable3dItemTest, ShowsTheWholePictureWhateverWindowWasSetBefore)
{
    makeItem().addCaption(corner(10, 40), pattern(30, 20));
    const QImage expected = shown();
    QOpenGLShaderProgram* program = &captionProgram();
    program->bind();
    program->setUniformValue("uTexTop", 0.5f);
    program->setUniformValue("uTexBottom", 0.7f);
    program->setUniformValue("uTexture", 3);
    program->setUniformValue("offset", 7.0f, 7.0f);
    PaintContext context = view();
    context.program = program;
    checkImage("caption_window", drawFrame(context), expected);
}

TEST_F(CaptionsDrawable3dItemTest, HasNoPartInGlueMasksAndInPassesWithoutPoints)
{
    makeItem().addCaption(corner(10, 40), filled(30, 20, green));
    QOpenGLShaderProgram& program = captionProgram();
    const auto drawn = [&, this](int drawMode, int primitives) {
        PaintContext context = view();
        context.drawMode = drawMode;
        RenderTarget target(*gl, {Width, Height}, 4);
        target.bind();
        target.clear(Qt::black);
        // the program of the drawer takes points only, and would say so to the pass
        context.primitives = primitives;
        context.drawer = item->getDrawer();
        program.bind();
        program.setUniformValue("draw_mode", drawMode);
        QMatrix4x4 viewport;
        std::memcpy(viewport.data(), &context.viewport[0][0], sizeof context.viewport);
        program.setUniformValue("viewport", viewport);
        program.setUniformValue("viewport_inverted", viewport.inverted());
        context.program = &program;
        item->draw(context);
        return inked(target.image()) > 0;
    };
    EXPECT_TRUE(drawn(DrawMode::OrdinalDraw, PrimitiveBit::All));
    EXPECT_TRUE(drawn(DrawMode::OrdinalDraw, PrimitiveBit::Points));
    EXPECT_TRUE(drawn(DrawMode::SelectionMaskDraw, PrimitiveBit::All));
    EXPECT_FALSE(drawn(DrawMode::GlueMaskDraw, PrimitiveBit::All));
    EXPECT_FALSE(drawn(DrawMode::OrdinalDraw, PrimitiveBit::Lines));
    EXPECT_FALSE(drawn(DrawMode::OrdinalDraw, PrimitiveBit::Triangles | PrimitiveBit::Lines));
}

TEST_F(CaptionsDrawable3dItemTest, HiddenItShowsNothingAndHighlightedItIsInTheSelectionColour)
{
    TestElement element;
    auto owner = std::make_unique<TestGraphicsItem>(&element);
    CaptionsDrawable3dItem& captions = makeItem();
    captions.setOwner(owner.get());
    captions.addCaption(corner(10, 40), "Depot", font(), green, 10.0, Qt::AlignLeft);
    const int before = inked(shown());
    EXPECT_GT(before, 100);
    element.setHighlighted(true);
    const QImage highlighted = shown();
    EXPECT_EQ(inked(highlighted), before) << "in the shape of the letters";
    EXPECT_GT(countPixels(highlighted, selected, 8), 10);
    EXPECT_EQ(countPixels(highlighted, [](QRgb p) { return qBlue(p) > 0; }), 0);
    captions.setVisible(false);
    EXPECT_EQ(inked(shown()), 0);
}

// A caption reaches far beyond its point: what lies under its letters belongs to its element.
TEST_F(CaptionsDrawable3dItemTest, AnElementsCaptionIsSelectedAndHasItsIdInMasks)
{
    TestElement element;
    auto* own = new CaptionItem(&element);
    own->fixedBox = gmx::BoundingBox(glm::dvec3(corner(10, 40)), glm::dvec3(corner(10, 40)));
    own->captions.addCaption(corner(10, 40), filled(150, 20, green));
    EXPECT_GE(own->captions.pixelReach(), 150.0f);
    scene->addElement(own);
    scene->makeCurrent();
    const LONGID id = own->getId();
    for (const SelectionMode mode : {SelectionMode::Through, SelectionMode::Visible}) {
        SelectionOptions options;
        options.mode = mode;
        EXPECT_EQ(scene->selectItems(view(), QRectF(140, 25, 10, 10), options), std::vector<LONGID>{id});
        EXPECT_TRUE(scene->selectItems(view(), QRectF(165, 25, 10, 10), options).empty());
        EXPECT_TRUE(scene->selectItems(view(), QRectF(5, 42, 10, 10), options).empty()) << "below its point";
        options.rule = SelectionRule::Inside;
        EXPECT_TRUE(scene->selectItems(view(), QRectF(5, 15, 100, 30), options).empty());
        EXPECT_EQ(scene->selectItems(view(), QRectF(5, 15, 160, 30), options), std::vector<LONGID>{id});
    }
    scene->makeCurrent();
    RenderTarget target(*gl, {Width, Height}, 4);
    target.bind();
    target.clear(Qt::transparent);
    gl->glDisable(GL_BLEND); // identifiers are no colours
    PaintContext mask = view();
    mask.drawMode = DrawMode::SelectionMaskDraw;
    scene->drawFrame(mask, nullptr, {});
    gl->glEnable(GL_BLEND);
    const QImage low = target.image(1), high = target.image(2);
    const auto word = [](const QImage& image, int x, int y) {
        std::uint32_t value = 0;
        std::memcpy(&value, image.constScanLine(y) + 4 * x, sizeof value);
        return value;
    };
    EXPECT_EQ(word(low, 100, 30), 9u);
    EXPECT_EQ(word(high, 100, 30), 10u);
    EXPECT_EQ(word(low, 170, 30), 0u);
    scene->removeElement(id);
}

TEST_F(CaptionsDrawable3dItemTest, TenThousandComeAndGo)
{
    CaptionsDrawable3dItem& captions = makeItem();
    captions.addCaption({}, filled(1, 1, green));
    shown(); // from the first frame on there is a program
    captions.clear();
    const GlObjects before = GlObjects::count(*gl);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 10000; ++i)
        captions.addCaption(corner(i % Width, i / Width + 10), QString::number(i), font(), green, 2.0,
                            Qt::AlignHCenter);
    std::printf("10,000 captions: %lld ms to make", timer.restart());
    EXPECT_GT(inked(shown()), Width * Height / 2);
    std::printf(", %lld ms to draw\n", timer.elapsed());
    captions.clear();
    EXPECT_EQ(GlObjects::count(*gl), before);
}
