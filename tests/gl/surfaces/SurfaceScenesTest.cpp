#include "tests/gl/fences/FencedScene.h"
#include "tests/support/ImageCheck.h"
#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/Plane3dSegmentPrimitive.h>
#include <Viewer3dModule/drawables/Prism3dSurfacePrimitive.h>
#include <Viewer3dModule/drawables/Rect3dPrimitive.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/scene/SelectionOptions.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <glm/gtc/matrix_transform.hpp>

namespace {

/// Owns a primitive, as the items of hosts do.
template <class Primitive>
class SurfaceItem : public Drawable3dItem
{
public:
    explicit SurfaceItem(const QColor& shown)
        : color(shown)
    {
    }
    GeometryInfo getGeometryInfo() override { return primitive.getGeometryInfo(); }
    int getDefaultDrawerType() const override { return DrawerType::Mesh; }

    QColor color;
    Primitive primitive;

protected:
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override
    {
        if (OpenGLFunctions* gl = getGLFunctions()) {
            uniforms::set(*gl, Item3dDrawer::itemUniforms(context).itemColor, color);
            if (context.drawer) context.drawer->setShaderLightMode(false);
        }
        primitive.draw(context, 1);
    }
};

using PlaneItem = SurfaceItem<Plane3dSegmentPrimitive>;
using PrismItem = SurfaceItem<Prism3dSurfacePrimitive>;
using RectItem = SurfaceItem<Rect3dPrimitive>;

/// An element's item: a floor in the lower left quarter of the view, a square in the upper right one.
class FloorsItem : public TestGraphicsItem
{
public:
    explicit FloorsItem(TestElement* element)
        : TestGraphicsItem(element)
    {
        drawerType = DrawerType::Mesh;
        fixedBox = gmx::BoundingBox(glm::dvec3(-1.0, -1.0, 0.0), glm::dvec3(1.0, 1.0, 0.0));
    }
    LONGID getId() const override { return LONGID(3) << 33 | 4; }
    GeometryInfo getGeometryInfo() override { return {0, 0, 4}; }
    using TestGraphicsItem::draw;
    void draw(const PaintContext& context) override
    {
        context.drawer->setShaderLightMode(false);
        floor.setColor(context, Qt::red);
        floor.draw(context, 1);
        floor.setColor(context, Qt::blue);
        square.draw(context, 1);
    }

    Plane3dSegmentPrimitive floor;
    Rect3dPrimitive square;
};

class SurfaceScenesTest : public SceneTest
{
protected:
    template <class Item>
    Item& add(const QColor& color)
    {
        auto made = std::make_unique<Item>(color);
        Item& item = *made;
        scene->addLocalItem(std::move(made));
        return item;
    }
};

int countOf(const QImage& image, const QColor& color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == color;
    return count;
}

} // namespace

// Seen from above: three strips of 100 by 100 cells, a surface in each; walls seen from above have no width,
// so the view of these leans.
TEST_F(SurfaceScenesTest, TenThousandOfEachInOneScene)
{
    const float side = 2.0f / 300.0f;
    for (int i = 0; i < 10000; ++i) {
        const float y = -1.0f + 0.02f * static_cast<float>(i / 100);
        const float x = -1.0f + side * static_cast<float>(i % 100);
        add<PlaneItem>(Qt::red).primitive.setVertices(
            std::vector<glm::vec2>{{x, y}, {x + side, y}, {x + side, y + 0.02f}, {x, y + 0.02f}}, {4});
        const float left = x + 2.0f / 3.0f;
        PrismItem& prism = add<PrismItem>(Qt::green);
        prism.primitive.setVertices(std::vector<glm::vec2>{{0.0f, 0.0f}, {side, 0.0f}}, 0.02f);
        const glm::mat4 place = glm::translate(glm::mat4(1.0f), {left, y, 0.0f});
        prism.setTransform(glm::rotate(place, glm::radians(-90.0f), {1.0f, 0.0f, 0.0f}), false);
        RectItem& rect = add<RectItem>(Qt::blue);
        rect.setTransform(glm::scale(glm::translate(glm::mat4(1.0f), {x + 4.0f / 3.0f, y, 0.0f}),
                                     glm::vec3(side, 0.02f, 1.0f)),
                          false);
    }
    const QImage picture = drawFrame(paintContext(300, 100));
    EXPECT_EQ(countOf(picture, Qt::red), 10000);
    EXPECT_EQ(countOf(picture, Qt::green), 10000);
    EXPECT_EQ(countOf(picture, Qt::blue), 10000);
}

// Capture takes what is filled: all of it, and nothing for lines.
TEST_F(SurfaceScenesTest, CaptureTakesTheTriangles)
{
    PlaneItem& item = add<PlaneItem>(Qt::red);
    item.primitive.setVertices(std::vector<glm::vec2>{{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {4});
    const auto [points, segments, triangles] = scene->generateItemGeometry(&item);
    EXPECT_EQ(points, 0u);
    EXPECT_EQ(segments, 0u);
    ASSERT_NE(triangles, 0u);
    std::vector<glm::vec4> captured(6);
    gl->glBindBuffer(GL_ARRAY_BUFFER, triangles);
    gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, GLsizeiptr(captured.size() * sizeof(glm::vec4)),
                           captured.data());
    gl->glDeleteBuffers(1, &triangles);
    float area = 0.0f;
    for (std::size_t i = 0; i < captured.size(); i += 3)
        area +=
            0.5f *
            glm::cross(glm::vec3(captured[i + 1] - captured[i]), glm::vec3(captured[i + 2] - captured[i])).z;
    EXPECT_FLOAT_EQ(area, 1.0f);
}

// With the programs that these passes take: of masks, selection, fences.
TEST_F(SurfaceScenesTest, SurfacesObeyEveryPass)
{
    TestElement element;
    FenceSetter fence(*project);
    auto* item = new FloorsItem(&element);
    item->floor.setVertices(std::vector<glm::vec2>{{-1, -1}, {0, -1}, {0, 0}, {-1, 0}}, {4});
    scene->addElement(item);
    scene->makeCurrent();
    const PaintContext context = paintContext(100, 100);
    const auto expectShown = [&](double floor, double square, double tolerance) {
        const QImage picture = drawFrame(context);
        EXPECT_NEAR(countOf(picture, Qt::red), floor, tolerance);
        EXPECT_NEAR(countOf(picture, Qt::blue), square, tolerance);
    };
    expectShown(50 * 50, 50 * 50, 0);

    for (const SelectionMode mode : {SelectionMode::Through, SelectionMode::Visible}) {
        SelectionOptions options;
        options.mode = mode;
        const std::vector<LONGID> found = {item->getId()};
        EXPECT_EQ(scene->selectItems(context, QRectF(5, 60, 4, 4), options), found) << "the floor";
        EXPECT_EQ(scene->selectItems(context, QRectF(60, 5, 4, 4), options), found) << "the square";
        EXPECT_TRUE(scene->selectItems(context, QRectF(60, 60, 30, 30), options).empty());
    }
    scene->makeCurrent();
    RenderTarget mask(*gl, {100, 100}, 4);
    mask.bind();
    mask.clear(Qt::transparent);
    gl->glDisable(GL_BLEND); // identifiers are no colours
    PaintContext masking = context;
    masking.drawMode = DrawMode::SelectionMaskDraw;
    scene->drawFrame(masking, nullptr, {});
    gl->glEnable(GL_BLEND);
    EXPECT_EQ(countPixels(mask.image(1), [](QRgb p) { return p != 0; }), 2 * 50 * 50);

    element.setHighlighted(true);
    const QColor chosen(255, 255, 0); // of scenes without settings
    EXPECT_EQ(countOf(drawFrame(context), chosen), 2 * 50 * 50);
    element.setHighlighted(false);

    fence.set(glm::dvec3(0.0), 0.5);
    const double quarter = 3.14159265 * 25.0 * 25.0 / 4.0;
    expectShown(quarter, quarter, 15);
    fence.reset();
    expectShown(50 * 50, 50 * 50, 0);
    scene->removeElement(item->getId());
}

// A glance at the whole: a courtyard house with its walls and a roof, and the lines of its plan.
TEST_F(SurfaceScenesTest, AHouseWithACourtyard)
{
    const std::vector<glm::vec2> plan = {{-0.8f, -0.8f}, {0.8f, -0.8f}, {0.8f, 0.8f}, {-0.8f, 0.8f},
                                         {-0.4f, -0.4f}, {0.4f, -0.4f}, {0.4f, 0.4f}, {-0.4f, 0.4f}};
    add<PlaneItem>(Qt::red).primitive.setVertices(plan, {4, 4});
    PaintContext context = paintContext(100, 100);
    const QImage filled = drawFrame(context);
    EXPECT_EQ(countOf(filled, Qt::red), 80 * 80 - 40 * 40);
    EXPECT_EQ(filled.pixelColor(50, 50), QColor(0, 0, 0));
    context.primitives = 2;
    const QImage outlined = drawFrame(context);
    EXPECT_EQ(outlined.pixelColor(15, 50), QColor(0, 0, 0));
    EXPECT_NEAR(countOf(outlined, Qt::red), 4 * 80 + 4 * 40, 8);
    context.primitives = 1;
    EXPECT_EQ(countOf(drawFrame(context), Qt::red), 0);
}
