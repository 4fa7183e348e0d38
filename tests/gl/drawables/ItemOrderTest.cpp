#include "PureColors.h"

#include "tests/support/ImageCheck.h"
#include "tests/support/SceneTest.h"
#include "tests/support/VertexItem.h"

#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/ObjFile3DGraphicsItem.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawables/Polyline3dForegroundItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>

// Items of one drawer share its program, and with it the values of its uniforms: what one leaves must not
// change how the next one looks, whichever is drawn first.
namespace {

/// A mesh under any drawer type.
class AnyDrawersMesh : public Drawable3dItem
{
public:
    AnyDrawersMesh(int drawerType, MeshData data)
        : m_drawerType(drawerType)
        , m_node(std::move(data))
    {
    }
    int getDefaultDrawerType() const override { return m_drawerType; }

protected:
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override { m_node.draw(context, 1); }

private:
    int m_drawerType;
    MeshNode3d m_node;
};

/// An item under the meshes' drawer that counts on the uniforms' first values.
class PlainItem : public VertexItem
{
public:
    using VertexItem::VertexItem;
    int getDefaultDrawerType() const override { return DrawerType::Mesh; }
};

/// An item that looks like none of the module's: it sets uniforms of the program in use and draws nothing.
class UniformsItem : public Drawable3dItem
{
public:
    UniformsItem(int drawerType, std::vector<std::pair<const char*, int>> values)
        : m_drawerType(drawerType)
        , m_values(std::move(values))
    {
    }
    int getDefaultDrawerType() const override { return m_drawerType; }

protected:
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override
    {
        for (const auto& [name, value] : m_values)
            uniforms::set(*getGLFunctions(), context.program->uniformLocation(name), value);
    }

private:
    int m_drawerType;
    std::vector<std::pair<const char*, int>> m_values;
};

MeshData litSquare(const QColor& color)
{
    MeshData data;
    data.positions = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    data.normals.assign(4, glm::normalize(glm::vec3(1, 1, 1))); // towards the light: as bright as can be
    data.indices = {0, 1, 2, 0, 2, 3};
    MeshData::Part part;
    part.indexCount = 6;
    part.color = color;
    data.parts = {part};
    return data;
}

MeshData textured(const QColor& part, const QColor& texel)
{
    MeshData data = litSquare(part);
    data.texCoords = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(texel);
    data.images = {image};
    data.parts[0].image = 0;
    return data;
}

/// A reader that makes a square over the whole view, textured in green, of every file.
std::unique_ptr<IDrawableNode3d> readSquare(const QString&, ksp::StagedProgress)
{
    return std::make_unique<MeshNode3d>(textured(red, green));
}

/// A line over the whole width through the middle of a row of 8, or of 64.
MeshData lineMesh(float y, const QColor& color)
{
    MeshData data;
    data.positions = {{-1, y, 0}, {1, y, 0}};
    data.indices = {0, 1};
    MeshData::Part part;
    part.kind = MeshData::Part::Lines;
    part.indexCount = 2;
    part.color = color;
    data.parts = {part};
    return data;
}

MeshData point(float y, const QColor& color, float size)
{
    MeshData data;
    data.positions = {{0, y, 0}};
    data.indices = {0};
    MeshData::Part part;
    part.kind = MeshData::Part::Points;
    part.indexCount = 1;
    part.color = color;
    part.pointSize = size;
    data.parts = {part};
    return data;
}

class ItemOrderTest : public SceneTest, public ::testing::WithParamInterface<bool>
{
protected:
    using Item = std::unique_ptr<Drawable3dItem>;

    /// Registers the two, the second one first when the test's parameter tells.
    void add(Item one, Item other)
    {
        if (GetParam()) std::swap(one, other);
        scene->addLocalItem(std::move(one));
        scene->addLocalItem(std::move(other));
    }
    Item polylines(int drawerType, float y, const QPen& pen)
    {
        auto item = std::make_unique<PolyPolyline3dItem>(0, drawerType);
        item->setPoints({{-1, y, 0}, {1, y, 0}}, {2});
        item->setPen(pen);
        return item;
    }
    Item foreground(int drawerType, float y, const QColor& color, int width = 1)
    {
        auto item = std::make_unique<Polyline3dForegroundItem>(
            drawerType, std::vector<glm::dvec3>{{-1, y, 0}, {1, y, 0}});
        item->setColor(color);
        item->setLineWidth(width);
        return item;
    }
    Item mesh(int drawerType, MeshData data)
    {
        return std::make_unique<AnyDrawersMesh>(drawerType, std::move(data));
    }
    QImage frame(int width, int height) { return drawFrame(paintContext(width, height)); }
};

} // namespace

// Rows of 64 pixels: dashes and gaps of 10 pixels leave 34 of them red.
TEST_P(ItemOrderTest, DashesEndWithTheirItem)
{
    add(polylines(DrawerType::DashedLines, 0.5f, QPen(red, 1.0, Qt::DashLine)),
        foreground(DrawerType::DashedLines, -0.5f, green));
    for (int i = 0; i < 2; ++i) { // the second frame begins with what the first left
        const QImage image = frame(64, 2);
        EXPECT_EQ(countPixels(image, red), 34);
        EXPECT_EQ(countPixels(image, green), 64);
    }
}

TEST_P(ItemOrderTest, LinesOfMeshesAreNotDashed)
{
    add(polylines(DrawerType::DashedLines, 0.5f, QPen(red, 1.0, Qt::DashLine)),
        mesh(DrawerType::DashedLines, lineMesh(-0.5f, green)));
    for (int i = 0; i < 2; ++i) {
        const QImage image = frame(64, 2);
        EXPECT_EQ(countPixels(image, red), 34);
        EXPECT_EQ(countPixels(image, green), 64);
    }
}

TEST_P(ItemOrderTest, LinesOfMeshesHaveTheirOwnWidth)
{
    add(foreground(DrawerType::WideLines, 0.5f, red, 6),
        mesh(DrawerType::WideLines, lineMesh(-0.53125f, green))); // through the middle of row 24 of 32
    for (int i = 0; i < 2; ++i) {
        const QImage image = frame(32, 32);
        EXPECT_EQ(image.pixelColor(16, 24), green);
        EXPECT_EQ(image.pixelColor(16, 23), black);
        EXPECT_EQ(image.pixelColor(16, 25), black);
        EXPECT_EQ(image.pixelColor(16, 10), red);
    }
}

TEST_P(ItemOrderTest, PointsOfMeshesHaveTheirOwnSize)
{
    add(mesh(DrawerType::Mesh, point(0.5f, red, 6.0f)), mesh(DrawerType::Mesh, point(-0.5f, green, 2.0f)));
    for (int i = 0; i < 2; ++i) {
        const QImage image = frame(32, 32);
        EXPECT_EQ(countPixels(image, red), 36);
        EXPECT_EQ(countPixels(image, green), 4);
    }
}

TEST_P(ItemOrderTest, SizesOfPointsDoNotReachPolylines)
{
    add(mesh(DrawerType::WideLines, point(0.5f, red, 9.0f)),
        foreground(DrawerType::WideLines, -0.53125f, green));
    for (int i = 0; i < 2; ++i) {
        const QImage image = frame(32, 32);
        EXPECT_EQ(image.pixelColor(16, 24), green);
        EXPECT_EQ(image.pixelColor(16, 23), black);
        EXPECT_EQ(image.pixelColor(16, 25), black);
    }
}

TEST_P(ItemOrderTest, ModesOfMeshesEndWithTheirItem)
{
    MeshData colored = lineMesh(0.5f, black);
    colored.colors.assign(2, 0xFFFF0000u); // blue, or red on machines of the other byte order
    MeshData image = textured(black, green);
    image.positions = {{-1, -0.5f, 0}, {1, -0.5f, 0}, {1, 0, 0}, {-1, 0, 0}};
    add(mesh(DrawerType::Mesh, colored), mesh(DrawerType::Mesh, image));
    scene->addLocalItem(std::make_unique<PlainItem>(GL_TRIANGLES, squareVertices(-1, -1, 1, -0.75f), red));
    for (int i = 0; i < 2; ++i) {
        const QImage shown = frame(8, 8);
        EXPECT_EQ(shown.pixelColor(4, 5), green);
        // it has no normals: 0.3 of its colour, and none of a texture's or of vertices
        EXPECT_NEAR(shown.pixelColor(4, 7).red(), 0.3 * 255, 1);
        EXPECT_EQ(shown.pixelColor(4, 7).green() + shown.pixelColor(4, 7).blue(), 0);
        EXPECT_GT(shown.pixelColor(4, 1).blue() + shown.pixelColor(4, 2).blue(), 0);
    }
}

TEST_P(ItemOrderTest, MeshesDependOnNothingThatOthersSet)
{
    // a clear texel that shows through, over a texture unit of somebody else, in a material's colours
    add(std::make_unique<UniformsItem>(DrawerType::Mesh,
                                       std::vector<std::pair<const char*, int>>{{"filled_texture_back", 1},
                                                                                {"uTexture0", 5},
                                                                                {"uMaterialMode", 1}}),
        mesh(DrawerType::Mesh, textured(red, QColor(0, 255, 0, 0))));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(countPixels(frame(8, 8), black), 64);
}

TEST_P(ItemOrderTest, MeshesFindTheirTextureAndColourWhateverOthersSet)
{
    add(std::make_unique<UniformsItem>(
            DrawerType::Mesh,
            std::vector<std::pair<const char*, int>>{{"uTexture0", 5}, {"uMaterialMode", 1}}),
        mesh(DrawerType::Mesh, textured(red, green)));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(countPixels(frame(8, 8), green), 64);
}

INSTANTIATE_TEST_SUITE_P(Orders, ItemOrderTest, ::testing::Bool(),
                         [](const auto& order) { return order.param ? "Backwards" : "AsWritten"; });

class FileItemTest : public SceneTest
{
};

TEST_F(FileItemTest, AFileIsLitAndTexturedAsALocalItem)
{
    DrawableNode3dFactory::instance().registerNodeCreator({QStringLiteral("ordertest")}, readSquare, 0);
    auto item = std::make_unique<ObjFile3DGraphicsItem>(QStringLiteral("a.ordertest"));
    EXPECT_EQ(item->getDefaultDrawerType(), DrawerType::Mesh);
    scene->addLocalItem(std::move(item));
    EXPECT_EQ(countPixels(drawFrame(paintContext(8, 8)), green), 64);
}
