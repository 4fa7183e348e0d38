#include "tests/support/SceneTest.h"

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/Plane3dSegmentPrimitive.h>
#include <Viewer3dModule/drawables/Prism3dSurfacePrimitive.h>
#include <Viewer3dModule/drawables/Rect3dPrimitive.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
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
