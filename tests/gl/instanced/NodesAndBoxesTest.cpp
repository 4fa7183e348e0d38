#include "ShapeTest.h"

#include <tests/support/TestItems.h>

#include <Viewer3dModule/drawables/Node3dItem.h>
#include <Viewer3dModule/drawables/OrientedBox3dItem.h>
#include <Viewer3dModule/enums/TypeIds.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <framework/app/Application.h>
#include <framework/app/CSettingsManager.h>
#include <framework/app/XmlSerializer.h>
#include <framework/app/XmlSettingsStorage.h>

#include <algorithm>
#include <cmath>
#include <set>

// Nodes, spheres of a size on the screen or in the model, and outlines of boxes.
namespace {

class Node3dItemTest : public ShapeTest
{
protected:
    /// A node in the middle of the view, 10 units from the eye.
    std::unique_ptr<Node3dItem> node(double pixelRadius, const glm::dvec3& place = glm::dvec3(0.0))
    {
        auto made = std::make_unique<Node3dItem>(scene.get(), 0);
        made->setModelPos(place);
        made->setPixelRadius(pixelRadius);
        return made;
    }
    /// The pixels that are not black: the middle of their rectangle and half of its mean side, in pixels.
    struct Disc
    {
        QPointF middle;
        double radius = 0.0;
    };
    static Disc discIn(const QImage& image)
    {
        QRect rect;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (isInked(image.pixel(x, y))) rect |= QRect(x, y, 1, 1);
        EXPECT_LE(std::abs(rect.width() - rect.height()), 2);
        return {QRectF(rect).center(), (rect.width() + rect.height()) / 4.0};
    }
    static QPointF pixelOf(const PaintContext& context, const glm::dvec3& place)
    {
        const glm::dvec4 clip =
            glm::dmat4(context.projection) * glm::dmat4(context.view) * glm::dvec4(place, 1.0);
        return {(clip.x / clip.w + 1.0) * Width / 2.0, (1.0 - clip.y / clip.w) * Height / 2.0};
    }
    static void expectDisc(const Disc& disc, const QPointF& middle, double radius)
    {
        EXPECT_NEAR(disc.middle.x(), middle.x(), 1.0);
        EXPECT_NEAR(disc.middle.y(), middle.y(), 1.0);
        EXPECT_NEAR(disc.radius, radius, 1.0);
    }
    /// Draws the node in a pass that has everything, as its drawer would.
    int drawsOf(Node3dItem& item, int drawMode)
    {
        PaintContext context = shapeView();
        context.drawMode = drawMode;
        context.drawer = item.getDrawer();
        context.program = dynamic_cast<SequentialItem3dDrawer&>(*context.drawer).getDefaultProgram();
        context.program->bind();
        RenderTarget target(*gl, context.viewportRect.size());
        target.bind();
        GlCalls calls(*gl);
        item.drawElement(context);
        context.program->release();
        return static_cast<int>(calls.draws.size());
    }
};

TEST_F(Node3dItemTest, HasItsRadiusInPixelsAtAnyDistance)
{
    for (const bool isParallel : {false, true})
        for (const double distance : {0.5, 2.0, 10.0, 100.0, 900.0})
            for (const double radius : {3.0, 15.0, 30.0}) {
                SCOPED_TRACE(testing::Message() << isParallel << ", " << distance << ", " << radius);
                const PaintContext context = shapeView(isParallel);
                const double across = isParallel ? 10.0 : distance;
                const glm::dvec3 place(0.04 * across, -0.06 * across, 10.0 - distance);
                const auto item = node(radius, place);
                // a parallel view looks through what is nearer than its near plane
                if (isParallel && distance < 2.0) continue;
                expectDisc(discIn(drawFrame(context)), pixelOf(context, place), radius);
            }
}

TEST_F(Node3dItemTest, AModelRadiusFollowsTheTransform)
{
    scene->setModelToSceneTransform(
        glm::scale(glm::translate(glm::dmat4(1.0), glm::dvec3(1.0, 0.5, 0.0)), glm::dvec3(0.25)));
    Node3dItem item(scene.get(), 0);
    item.setModelPos(glm::dvec3(2.0, -4.0, 0.0));
    item.setModelRadius(6.0); // 1.5 scene units, 30 pixels
    const PaintContext context = shapeView(true);
    expectDisc(discIn(drawFrame(context)), pixelOf(context, glm::dvec3(1.5, -0.5, 0.0)), 30.0);
}

TEST_F(Node3dItemTest, WithAModelRadiusAloneItIsOfWiresAndStaysSo)
{
    const auto item = node(30.0);
    const PaintContext context = shapeView(true);
    const int full = inked(drawFrame(context));
    EXPECT_NEAR(full, 3.14159 * 30.0 * 30.0, 100.0);
    item->setPixelRadius(0.0);
    item->setModelRadius(1.5);
    const QImage wires = drawFrame(context);
    saveTestImage("node of wires", wires);
    EXPECT_LT(inked(wires), full * 9 / 10);
    item->setPixelRadius(30.0);
    EXPECT_LT(inked(drawFrame(context)), full * 9 / 10) << "nothing switches it off again";
}

TEST_F(Node3dItemTest, IsDividedByItsRadiusOnTheScreen)
{
    const std::pair<double, unsigned> levels[] = {{20.0, 16}, {31.0, 16}, {32.0, 16}, {40.0, 16},
                                                  {63.0, 16}, {64.0, 32}, {65.0, 32}};
    for (const bool isParallel : {false, true})
        for (const auto& [radius, level] : levels) {
            const auto item = node(radius, glm::dvec3(0.3, 0.2, -0.7));
            EXPECT_EQ(trianglesOf(shapeView(isParallel)), 2 * level * level) << radius;
        }
    Node3dItem item(scene.get(), 0);
    item.setModelPos(glm::dvec3(0.0));
    for (const auto& [radius, level] : {std::pair(3.1, 16u), std::pair(3.3, 32u)}) { // 62 and 66 pixels
        item.setModelRadius(radius);
        EXPECT_EQ(trianglesOf(shapeView(true)), 2 * level * level) << radius;
    }
}

TEST_F(Node3dItemTest, IsDrawnInOrdinaryPassesOnly)
{
    const auto item = node(15.0);
    EXPECT_EQ(drawsOf(*item, DrawMode::OrdinalDraw), 1);
    for (const int mode : {DrawMode::SelectionMaskDraw, DrawMode::GlueMaskDraw, DrawMode::SelectionBufferDraw,
                           DrawMode::GeometryCapture})
        EXPECT_EQ(drawsOf(*item, mode), 0) << mode;
}

TEST_F(Node3dItemTest, IsNotDrawnBeforeItHasAPosition)
{
    Node3dItem item(scene.get(), 0);
    item.setPixelRadius(15.0);
    EXPECT_EQ(drawsOf(item, DrawMode::OrdinalDraw), 0);
    item.setModelPos(glm::dvec3(0.0));
    EXPECT_EQ(drawsOf(item, DrawMode::OrdinalDraw), 1);
}

TEST_F(Node3dItemTest, DrawsNothingWithoutItsScene)
{
    Node3dItem unbound(nullptr, 0);
    unbound.setModelPos(glm::dvec3(0.0));
    unbound.setPixelRadius(15.0);
    EXPECT_EQ(unbound.getDrawer(), nullptr);
    auto other = std::make_unique<Scene3d>(nullptr, nullptr);
    Node3dItem left(other.get(), 0);
    left.setModelPos(glm::dvec3(0.0));
    left.setPixelRadius(15.0);
    other.reset();
    ASSERT_TRUE(scene->makeCurrent());
    PaintContext context = shapeView();
    context.drawer = DrawableShaderSphere().getDrawer(scene.get());
    GlCalls calls(*gl);
    unbound.drawElement(context);
    left.drawElement(context);
    EXPECT_TRUE(calls.draws.empty());
}

TEST_F(Node3dItemTest, BehindTheCameraThereIsNone)
{
    for (const double z : {10.0, 10.0001, 12.0, 500.0}) {
        const auto item = node(15.0, glm::dvec3(0.1, 0.1, z));
        EXPECT_EQ(inked(drawFrame(shapeView())), 0) << z;
    }
}

TEST_F(Node3dItemTest, IsTranslucentInTheColourOfNodes)
{
    const auto item = node(30.0);
    EXPECT_TRUE(item->hasTransparency());
    const QColor middle = drawFrame(shapeView()).pixelColor(Width / 2, Height / 2);
    EXPECT_GT(middle.red(), 30);
    EXPECT_LE(middle.red(), 192) << "a half for the far side, and a half of the rest for the near one";
    EXPECT_EQ(middle.red(), middle.blue());
    EXPECT_EQ(middle.green(), 0);
    item->setColor(QColor(0, 255, 0));
    EXPECT_FALSE(item->hasTransparency());
    const QColor opaque = drawFrame(shapeView()).pixelColor(Width / 2, Height / 2);
    EXPECT_EQ(opaque.red(), 0);
    EXPECT_GT(opaque.green(), middle.red());
}

TEST_F(Node3dItemTest, HasTheColourOfTheSettings)
{
    Application application;
    auto storage = std::make_unique<XmlSettingsStorage>(QString());
    XmlSerializer::writeColor(storage->getCreateElement("node3DColor"), QColor(0, 0, 200));
    CSettingsManager* manager =
        application.addSettingsManager(Application::SettingsManagerId, std::move(storage));
    application.registerSettings(Application::SettingsManagerId, TypeIds::ViewSettings,
                                 new View3dSettings(manager->getStorage(), nullptr));
    manager->load();
    const auto item = node(30.0);
    EXPECT_TRUE(item->hasTransparency());
    drawFrame(shapeView());
    const auto color = uniformOf<glm::vec4>(item->getDrawer(), "item_color");
    EXPECT_LT(glm::distance(color, glm::vec4(0.0f, 0.0f, 200.0f / 255.0f, 0.5f)), 1e-4f);
}

TEST_F(Node3dItemTest, BelongsToTheDrawerOfSpheresOfItsType)
{
    const Node3dItem usual(scene.get(), 0), special(scene.get(), 1234);
    EXPECT_EQ(usual.getDefaultDrawerType(), 922689792);
    EXPECT_EQ(usual.getDrawer(), scene->getDrawer(DrawerType::ShaderSphere, DrawerType::ShaderSphere));
    EXPECT_EQ(special.getDrawer(), scene->getDrawer(1234, DrawerType::ShaderSphere));
    EXPECT_NE(usual.getDrawer(), special.getDrawer());
}

// The scene moves its local items when it recentres itself; a node has moved with the transform already.
TEST_F(Node3dItemTest, ALocalNodeMovesOnceWithTheScene)
{
    auto owned = node(15.0, glm::dvec3(5005.0, 5004.0, 5003.0));
    Node3dItem* item = owned.get();
    scene->addLocalItem(std::move(owned));
    TestElement element;
    auto* block = new TestGraphicsItem(&element);
    element.box = gmx::BoundingBox(glm::dvec3(5000.0), glm::dvec3(5010.0));
    scene->addElement(block);
    scene->resetBounds();
    ASSERT_NE(item->getTransform(), glm::mat4(1.0f)) << "it was corrected";
    const glm::dvec3 place = scene->mapFromModel(glm::dvec3(5005.0, 5004.0, 5003.0));
    ASSERT_LT(glm::length(place), 1000.0);
    PaintContext context = shapeView();
    context.view = glm::lookAt(glm::vec3(place) + glm::vec3(30.0f, 20.0f, 300.0f),
                               glm::vec3(place) + glm::vec3(10.0f, 5.0f, 0.0f), glm::vec3(0, 1, 0));
    expectDisc(discIn(drawFrame(context)), pixelOf(context, place), 15.0);
}

TEST_F(Node3dItemTest, LeavesNoObjectsBehind)
{
    node(15.0);
    const GlObjects before = GlObjects::count(*gl);
    for (int round = 0; round < 1000; ++round) {
        const auto item = node(15.0);
        if (round < 10) drawFrame(shapeView());
    }
    EXPECT_EQ(GlObjects::count(*gl), before);
}

// --- boxes
// -----------------------------------------------------------------------------------------------

class OrientedBox3dItemTest : public SceneTest
{
protected:
    using Axes = OrientedBox3dItem::Axes;
    using Extent = OrientedBox3dItem::Extent;
    static constexpr Extent usualExtent = {0.5, 0.25, 0.75};
    /// Three directions that are neither along the axes nor square to each other.
    static Axes skewed() { return {glm::dvec3(1, 2, 0), glm::dvec3(-1, 1, 3), glm::dvec3(0, 1, -1)}; }
    static glm::dvec3 corner(const glm::dvec3& center, const Axes& axes, const Extent& extent, int signs)
    {
        glm::dvec3 result = center;
        for (std::size_t i = 0; i < 3; ++i)
            result += ((signs >> i) & 1 ? 1.0 : -1.0) * extent[i] * axes[i];
        return result;
    }
    /// The corner, as bits of the positive axes, of each point of the outline; -1 for what is none.
    static std::vector<int> cornersOf(const OrientedBox3dItem& box, const glm::dvec3& center,
                                      const Axes& axes, const Extent& extent, double tolerance)
    {
        std::vector<int> corners;
        for (const glm::dvec3& point : box.getPoints()) {
            int found = -1;
            for (int signs = 0; signs < 8; ++signs)
                if (glm::distance(point, corner(center, axes, extent, signs)) <= tolerance) found = signs;
            corners.push_back(found);
        }
        return corners;
    }
};

TEST_F(OrientedBox3dItemTest, WalksAllTwelveEdgesFromTheCornerOfAllPositiveSigns)
{
    for (const glm::dvec3& center : {glm::dvec3(1.0, -2.0, 3.0), glm::dvec3(2.7e6, 5.1e6, 120.0)}) {
        const OrientedBox3dItem box(center, skewed(), usualExtent);
        const std::vector<int> corners = cornersOf(box, center, skewed(), usualExtent, 1e-8);
        ASSERT_EQ(corners.size(), 23u);
        EXPECT_EQ(corners.front(), 7);
        EXPECT_EQ(std::count(corners.begin(), corners.end(), -1), 0) << "in double precision";
        std::set<std::pair<int, int>> edges;
        for (std::size_t i = 1; i < corners.size(); ++i) {
            const int changed = corners[i - 1] ^ corners[i];
            EXPECT_TRUE(changed == 1 || changed == 2 || changed == 4) << "an edge, not a diagonal";
            edges.insert(std::minmax(corners[i - 1], corners[i]));
        }
        EXPECT_EQ(edges.size(), 12u);
    }
}

TEST_F(OrientedBox3dItemTest, WithoutExtentItIsItsCentre)
{
    const glm::dvec3 center(1.0, -2.0, 3.0);
    const OrientedBox3dItem box(center, skewed(), {0.0, 0.0, 0.0});
    EXPECT_EQ(box.getPoints(), std::vector<glm::dvec3>(23, center));
    EXPECT_EQ(box.getBoundingBox(), gmx::BoundingBox(center, center));
}

TEST_F(OrientedBox3dItemTest, EachPartCanBeReplaced)
{
    OrientedBox3dItem box(glm::dvec3(0.0), skewed(), usualExtent);
    const auto expectBox = [&](const glm::dvec3& center, const Axes& axes, const Extent& extent) {
        const std::vector<int> corners = cornersOf(box, center, axes, extent, 1e-12);
        EXPECT_EQ(corners.size(), 23u);
        EXPECT_EQ(std::count(corners.begin(), corners.end(), -1), 0);
    };
    const glm::dvec3 center(4.0, 5.0, 6.0);
    const Axes axes = {glm::dvec3(0, 1, 0), glm::dvec3(0, 0, 1), glm::dvec3(1, 0, 0)};
    const Extent extent = {1.0, 2.0, 3.0};
    box.setCenter(center);
    expectBox(center, skewed(), usualExtent);
    box.setAxis(axes);
    expectBox(center, axes, usualExtent);
    box.setExtent(extent);
    expectBox(center, axes, extent);
    EXPECT_EQ(box.getBoundingBox(), gmx::BoundingBox(glm::dvec3(1, 4, 4), glm::dvec3(7, 6, 8)));
    box.reset(glm::dvec3(0.0), skewed(), usualExtent);
    expectBox(glm::dvec3(0.0), skewed(), usualExtent);
}

TEST_F(OrientedBox3dItemTest, IsAnOpenOutlineOfWideLines)
{
    OrientedBox3dItem box;
    EXPECT_TRUE(box.getPoints().empty());
    EXPECT_TRUE(box.getBoundingBox().isNull());
    EXPECT_FALSE(box.isClosed());
    EXPECT_EQ(box.getDefaultDrawerType(), 922688515);
    box.setExtent({1.0, 1.0, 1.0});
    EXPECT_EQ(box.getPoints(), std::vector<glm::dvec3>(23, glm::dvec3(0.0))) << "no axes yet";
    EXPECT_EQ(box.getGeometryInfo().lineCount, 22u);
}

TEST_F(OrientedBox3dItemTest, DrawsItsEdges)
{
    // a cube of 32 pixels seen with the depth going to the upper right, by 8 pixels each way
    const Axes axes = {glm::dvec3(0.5, 0, 0), glm::dvec3(0, 0.5, 0), glm::dvec3(0.125, 0.125, 0.5)};
    auto owned = std::make_unique<OrientedBox3dItem>(glm::dvec3(0.0), axes, Extent{1.0, 1.0, 1.0});
    owned->setColor(Qt::white);
    OrientedBox3dItem* box = owned.get();
    scene->addLocalItem(std::move(owned));
    PaintContext context = paintContext(64, 64);
    const QImage image = drawFrame(context);
    saveTestImage("box", image.scaled(256, 256));
    const auto isDrawn = [&](const QImage& picture, int x, int y) { // within a pixel
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (picture.pixelColor(x + dx, y + dy).red() > 100) return true;
        return false;
    };
    for (int signs = 0; signs < 8; ++signs)
        for (int axis = 0; axis < 3; ++axis) {
            if ((signs >> axis) & 1) continue;
            const glm::dvec3 from = corner(glm::dvec3(0.0), axes, {1, 1, 1}, signs);
            const glm::dvec3 to = corner(glm::dvec3(0.0), axes, {1, 1, 1}, signs | (1 << axis));
            for (const double t : {0.1, 0.35, 0.5, 0.8}) {
                const glm::dvec3 point = from + t * (to - from);
                EXPECT_TRUE(isDrawn(image, int(32 + 32 * point.x), int(32 - 32 * point.y)))
                    << signs << ", " << axis << ", " << t;
            }
        }
    EXPECT_FALSE(isDrawn(image, 32, 32)) << "nothing but edges";
    box->setCenter(glm::dvec3(0.25, 0.0, 0.0));
    EXPECT_NE(drawFrame(context), image) << "a change is drawn";
}

TEST_F(OrientedBox3dItemTest, LeavesNoObjectsBehind)
{
    const PaintContext context = paintContext(8, 8);
    RenderTarget target(*gl, QSize(8, 8));
    target.bind();
    const auto round = [&] {
        auto box = std::make_unique<OrientedBox3dItem>(glm::dvec3(0.0), skewed(), usualExtent);
        const OrientedBox3dItem* item = box.get();
        scene->addLocalItem(std::move(box));
        scene->drawFrame(context, nullptr, {});
        scene->deleteLocalItem(item);
    };
    round();
    const GlObjects before = GlObjects::count(*gl);
    for (int i = 0; i < 1000; ++i)
        round();
    EXPECT_EQ(GlObjects::count(*gl), before);
}

} // namespace
