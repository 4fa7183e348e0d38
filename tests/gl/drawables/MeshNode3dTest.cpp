#include "NodeItem.h"
#include "PureColors.h"

#include "tests/support/GlObjects.h"
#include "tests/support/ImageCheck.h"
#include "tests/support/SceneTest.h"

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/GroupNode3d.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstring>
#include <set>

namespace {

using Kind = MeshData::Part;

/// Adds a part with these indices.
void addPart(MeshData& data, MeshData::Part::Kind kind, const std::vector<std::uint32_t>& indices,
             const QColor& color = {})
{
    MeshData::Part part;
    part.kind = kind;
    part.firstIndex = static_cast<std::uint32_t>(data.indices.size());
    part.indexCount = static_cast<std::uint32_t>(indices.size());
    part.color = color;
    data.indices.insert(data.indices.end(), indices.begin(), indices.end());
    data.parts.push_back(part);
}

/// The square from -1 to 1 at z = 0, corners 0 to 3 from the lower left against the clock.
MeshData square(const QColor& color = {})
{
    MeshData data;
    data.positions = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    addPart(data, Kind::Triangles, {0, 1, 2, 0, 2, 3}, color);
    return data;
}

/// Colours as MeshData holds them: bytes red, green, blue, alpha in memory order.
std::uint32_t bytes(unsigned r, unsigned g, unsigned b, unsigned a = 255)
{
    const unsigned char memory[4] = {static_cast<unsigned char>(r), static_cast<unsigned char>(g),
                                     static_cast<unsigned char>(b), static_cast<unsigned char>(a)};
    std::uint32_t value = 0;
    std::memcpy(&value, memory, sizeof value);
    return value;
}

/// The colour that a surface across the view shows in the light that holds without settings: from (1, 1, 1),
/// 0.3 of it ambient; the highlight is too narrow to be seen at right angles to the view.
QColor lit(const QColor& color)
{
    const double factor = 0.3 + 1.0 / std::sqrt(3.0);
    return QColor::fromRgbF(std::min(1.0, color.redF() * factor), std::min(1.0, color.greenF() * factor),
                            std::min(1.0, color.blueF() * factor));
}

class MeshNode3dTest : public SceneTest
{
protected:
    NodeItem& add(std::unique_ptr<IDrawableNode3d> node)
    {
        auto made = std::make_unique<NodeItem>(std::move(node));
        NodeItem& item = *made;
        scene->addLocalItem(std::move(made));
        return item;
    }
    NodeItem& add(MeshData data) { return add(std::make_unique<MeshNode3d>(std::move(data))); }
    QImage frame(int size = 8) { return drawFrame(paintContext(size, size)); }
    QImage frameOf(int primitives)
    {
        PaintContext context = paintContext(8, 8);
        context.primitives = primitives;
        return drawFrame(context);
    }
    std::vector<glm::vec4> readAndDelete(unsigned buffer)
    {
        GLint size = 0;
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
        gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
        std::vector<glm::vec4> vertices(static_cast<std::size_t>(size) / sizeof(glm::vec4));
        gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, size, vertices.data());
        gl->glDeleteBuffers(1, &buffer);
        return vertices;
    }
};

void expectColor(const QColor& actual, const QColor& expected, int limit = 1)
{
    EXPECT_LE(std::abs(actual.red() - expected.red()), limit) << qPrintable(actual.name());
    EXPECT_LE(std::abs(actual.green() - expected.green()), limit) << qPrintable(actual.name());
    EXPECT_LE(std::abs(actual.blue() - expected.blue()), limit) << qPrintable(actual.name());
}

/// An image whose quarters are red, green (above), blue and white (below).
QImage quarters(int size)
{
    QImage image(size, size, QImage::Format_RGB32);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const bool left = x < size / 2;
            const QColor color = y < size / 2 ? (left ? red : green) : (left ? blue : QColor(Qt::white));
            image.setPixelColor(x, y, color);
        }
    return image;
}

MeshData textured(const QImage& image)
{
    MeshData data = square(QColor(10, 20, 30));
    data.texCoords = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    data.images = {image};
    data.parts[0].image = 0;
    return data;
}

} // namespace

TEST_F(MeshNode3dTest, TrianglesAreLitInThePartsColour)
{
    add(square(QColor(200, 100, 50)));
    const QImage image = frame();
    expectColor(image.pixelColor(0, 0), lit(QColor(200, 100, 50)));
    expectColor(image.pixelColor(7, 7), lit(QColor(200, 100, 50)));
}

TEST_F(MeshNode3dTest, APartWithoutAColourIsGrey)
{
    add(square());
    expectColor(frame().pixelColor(4, 4), lit(QColor(200, 200, 200)));
}

TEST_F(MeshNode3dTest, GivenNormalsCount)
{
    MeshData data = square(red);
    data.normals.assign(4, glm::normalize(glm::vec3(1, 1, 1)));
    add(std::move(data));
    // The light falls straight on it: 0.3 + 1, and full is full.
    expectColor(frame().pixelColor(4, 4), red);
}

TEST_F(MeshNode3dTest, LinesAndPointsAreNotLit)
{
    MeshData data;
    data.positions = {{-1, 0.375f, 0}, {1, 0.375f, 0}, {0, -0.5f, 0}};
    addPart(data, Kind::Lines, {0, 1}, QColor(40, 80, 120));
    addPart(data, Kind::Points, {2}, QColor(90, 60, 30));
    add(std::move(data));
    const QImage image = frame();
    EXPECT_EQ(countPixels(image, QColor(40, 80, 120)), 8);
    EXPECT_EQ(image.pixelColor(5, 2), QColor(40, 80, 120));
    EXPECT_EQ(countPixels(image, QColor(90, 60, 30)), 4) << "a point is 2 by 2 pixels";
    EXPECT_EQ(image.pixelColor(3, 5), QColor(90, 60, 30));
    EXPECT_EQ(image.pixelColor(4, 6), QColor(90, 60, 30));
}

TEST_F(MeshNode3dTest, PointsHaveTheSizeOfTheirPart)
{
    MeshData data;
    data.positions = {{0, 0, 0}};
    addPart(data, Kind::Points, {0}, red);
    data.parts[0].pointSize = 4.0f;
    add(std::move(data));
    EXPECT_EQ(countPixels(frame(), red), 16);
}

TEST_F(MeshNode3dTest, TrianglesAfterLinesAreLitAgain)
{
    MeshData data;
    data.positions = {{-1, -1, 0}, {1, -1, 0}, {1, 0, 0}, {-1, 0, 0}, {-1, 0.375f, 0}, {1, 0.375f, 0}};
    addPart(data, Kind::Lines, {4, 5}, red);
    addPart(data, Kind::Triangles, {0, 1, 2, 0, 2, 3}, red);
    addPart(data, Kind::Lines, {4, 5}, red);
    add(std::move(data));
    const QImage image = frame();
    EXPECT_EQ(image.pixelColor(3, 2), red);
    expectColor(image.pixelColor(3, 6), lit(red));
}

TEST_F(MeshNode3dTest, VerticesHaveTheirColours)
{
    MeshData data = square(red);
    data.colors = {bytes(30, 60, 90), bytes(30, 60, 90), bytes(30, 60, 90), bytes(30, 60, 90)};
    add(std::move(data));
    expectColor(frame().pixelColor(2, 5), lit(QColor(30, 60, 90)));
}

TEST_F(MeshNode3dTest, VertexColoursAreInterpolatedAndBlended)
{
    MeshData data;
    data.positions = {{-1, 0, 0}, {1, 0, 0}, {0, 0.5f, 0}};
    data.colors = {bytes(0, 0, 0), bytes(255, 0, 0), bytes(0, 200, 0, 128)};
    addPart(data, Kind::Lines, {0, 1});
    addPart(data, Kind::Points, {2});
    add(std::move(data));
    const QImage image = frame(64);
    const int row = image.pixelColor(63, 31).red() > 0 ? 31 : 32;
    EXPECT_NEAR(image.pixelColor(16, row).red(), 255.0 * 16.5 / 64, 3);
    EXPECT_NEAR(image.pixelColor(48, row).red(), 255.0 * 48.5 / 64, 3);
    expectColor(image.pixelColor(32, 16), QColor(0, 100, 0), 2);
}

TEST_F(MeshNode3dTest, TextureCoordinatesBeginAtTheImagesLowerLeft)
{
    add(textured(quarters(64)));
    const QImage image = frame(64);
    expectColor(image.pixelColor(16, 16), lit(red));
    expectColor(image.pixelColor(48, 16), lit(green));
    expectColor(image.pixelColor(16, 48), lit(blue));
    expectColor(image.pixelColor(48, 48), lit(Qt::white));
}

TEST_F(MeshNode3dTest, TexturesHaveSmallerLevels)
{
    add(textured(quarters(256)));
    // 256 texels over 2 pixels a side: one quarter of the image a pixel.
    const QImage image = frame(2);
    expectColor(image.pixelColor(0, 0), lit(red), 3);
    expectColor(image.pixelColor(1, 1), lit(Qt::white), 3);
}

TEST_F(MeshNode3dTest, TextureCoordinatesRepeat)
{
    MeshData data = textured(quarters(64));
    data.texCoords = {{-1, 3}, {0, 3}, {0, 4}, {-1, 4}};
    add(std::move(data));
    expectColor(frame(64).pixelColor(16, 48), lit(blue));
}

TEST_F(MeshNode3dTest, TransparentTexelsShowWhatIsBehind)
{
    QImage half(4, 4, QImage::Format_ARGB32);
    half.fill(QColor(0, 255, 0, 0));
    add(textured(half));
    EXPECT_EQ(countPixels(frame(), black), 64);
}

TEST_F(MeshNode3dTest, AnImageThatIsMissingLeavesThePartsColour)
{
    MeshData noImage = textured(QImage());
    add(std::move(noImage));
    expectColor(frame().pixelColor(4, 4), lit(QColor(10, 20, 30)));
}

TEST_F(MeshNode3dTest, AnImageNumberOutOfRangeLeavesThePartsColour)
{
    MeshData data = textured(quarters(8));
    data.parts[0].image = 1;
    add(std::move(data));
    expectColor(frame().pixelColor(4, 4), lit(QColor(10, 20, 30)));
}

TEST_F(MeshNode3dTest, PartsHaveImagesOfTheirOwn)
{
    QImage plainRed(4, 4, QImage::Format_RGB32), plainBlue(4, 4, QImage::Format_RGB32);
    plainRed.fill(red);
    plainBlue.fill(blue);
    MeshData data = textured(plainRed);
    data.images.push_back(plainBlue);
    data.indices.clear();
    data.parts.clear();
    addPart(data, Kind::Triangles, {0, 1, 2});
    data.parts.back().image = 0;
    addPart(data, Kind::Triangles, {0, 2, 3});
    data.parts.back().image = 1;
    add(std::move(data));
    const QImage image = frame();
    expectColor(image.pixelColor(6, 6), lit(red));
    expectColor(image.pixelColor(1, 1), lit(blue));
}

TEST_F(MeshNode3dTest, HighlightedItShowsTheSelectionColour)
{
    add(square(red)).highlighted = true;
    expectColor(frame().pixelColor(4, 4), lit(Qt::yellow));
}

TEST_F(MeshNode3dTest, DrawsTheKindsThatThePassTakes)
{
    MeshData data;
    data.positions = {{-1, -1, 0},     {1, -1, 0},     {1, -0.5f, 0}, {-1, -0.5f, 0},
                      {-1, 0.375f, 0}, {1, 0.375f, 0}, {0, 0, 0}};
    addPart(data, Kind::Triangles, {0, 1, 2, 0, 2, 3}, red);
    addPart(data, Kind::Lines, {4, 5}, green);
    addPart(data, Kind::Points, {6}, blue);
    add(std::move(data));
    const auto counts = [this](int primitives) {
        const QImage image = frameOf(primitives);
        return std::vector<int>{countPixels(image, lit(red), 1), countPixels(image, green),
                                countPixels(image, blue)};
    };
    EXPECT_EQ(counts(7), (std::vector<int>{16, 8, 4}));
    EXPECT_EQ(counts(1), (std::vector<int>{0, 0, 4}));
    EXPECT_EQ(counts(2), (std::vector<int>{0, 8, 0}));
    EXPECT_EQ(counts(4), (std::vector<int>{16, 0, 0}));
    EXPECT_EQ(counts(10), (std::vector<int>{0, 0, 0})) << "lines of a mesh have no neighbours";
    EXPECT_EQ(counts(12), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(counts(0), (std::vector<int>{0, 0, 0}));
}

TEST_F(MeshNode3dTest, TheScenesCaptureHoldsItsPrimitives)
{
    MeshData data;
    data.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}};
    addPart(data, Kind::Lines, {0, 3});
    addPart(data, Kind::Triangles, {2, 1, 0});
    addPart(data, Kind::Points, {3});
    addPart(data, Kind::Lines, {1, 2});
    NodeItem& item = add(std::move(data));
    item.setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(0, 0, 100)), false);
    const auto [points, lines, triangles] = scene->generateItemGeometry(&item);
    EXPECT_EQ(readAndDelete(points), (std::vector<glm::vec4>{{5, 5, 105, 1}}));
    EXPECT_EQ(readAndDelete(lines),
              (std::vector<glm::vec4>{{0, 0, 100, 1}, {5, 5, 105, 1}, {1, 0, 100, 1}, {0, 1, 100, 1}}));
    EXPECT_EQ(readAndDelete(triangles),
              (std::vector<glm::vec4>{{0, 1, 100, 1}, {1, 0, 100, 1}, {0, 0, 100, 1}}));
}

/// What is there besides when the drawer of meshes has built its program.
GlObjects withProgram(GlObjects objects)
{
    objects.programs += 1;
    objects.shaders += 2;
    return objects;
}

TEST_F(MeshNode3dTest, APartWithoutIndicesUploadsAndDrawsNothing)
{
    frame();
    const GlObjects before = GlObjects::count(*gl);
    MeshData data;
    data.positions = {{0, 0, 0}, {1, 0, 0}};
    addPart(data, Kind::Triangles, {}, red);
    addPart(data, Kind::Triangles, {0, 1}, red); // no whole triangle
    addPart(data, Kind::Lines, {0}, red);
    add(std::move(data));
    EXPECT_EQ(countPixels(frame(), black), 64);
    EXPECT_EQ(GlObjects::count(*gl), withProgram(before));
}

// A scene of coloured cubes would be a scene of balls if faces across an edge shared their normals.
TEST_F(MeshNode3dTest, EachFaceOfACubeHasOneColour)
{
    MeshData data;
    for (int i = 0; i < 8; ++i)
        data.positions.emplace_back(i & 1 ? 0.4f : -0.4f, i & 2 ? 0.4f : -0.4f, i & 4 ? 0.4f : -0.4f);
    addPart(data, Kind::Triangles, {0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                                    2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5},
            QColor(100, 100, 100));
    NodeItem& item = add(std::move(data));
    // Two sides are seen, left and right of the middle, at 60 and 30 degrees: z is depth, from -1 in front.
    item.setTransform(glm::rotate(glm::mat4(1.0f), glm::radians(-30.0f), glm::vec3(0, 1, 0)), false);
    const QImage image = frame(64);
    std::set<QRgb> colors;
    for (int y = 30; y < 34; ++y)
        for (int x = 0; x < 64; ++x)
            if (image.pixelColor(x, y) != black) colors.insert(image.pixel(x, y));
    EXPECT_EQ(colors.size(), 2u);
}

TEST_F(MeshNode3dTest, UploadsAtTheFirstDrawAndOnce)
{
    frame();
    const GlObjects before = GlObjects::count(*gl);
    add(textured(quarters(8)));
    EXPECT_EQ(GlObjects::count(*gl), before);
    const QImage first = frame();
    GlObjects uploaded = withProgram(before);
    uploaded.buffers += 4; // positions, normals, texture coordinates, indices
    uploaded.textures += 1;
    EXPECT_EQ(GlObjects::count(*gl), uploaded);
    checkImage("mesh_second_draw", frame(), first);
    EXPECT_EQ(GlObjects::count(*gl), uploaded);
}

TEST_F(MeshNode3dTest, BoundsAndCountsStayAfterTheUpload)
{
    NodeItem& item = add(square());
    frame();
    EXPECT_EQ(item.node->getBounds().getMax(), glm::dvec3(1, 1, 0));
    EXPECT_EQ(item.node->getGeometryInfo().triangleCount, 2u);
}

TEST_F(MeshNode3dTest, AHundredNodesLeaveNoObjects)
{
    frame();
    const GlObjects before = GlObjects::count(*gl);
    for (int i = 0; i < 100; ++i) {
        const NodeItem& item = add(textured(quarters(8)));
        frame(1);
        scene->deleteLocalItem(&item);
    }
    EXPECT_EQ(GlObjects::count(*gl), withProgram(before));
}

TEST_F(MeshNode3dTest, LeavesTheVertexArrayAndTheTextureUnitAsTheyWere)
{
    MeshData data = textured(quarters(8));
    data.colors.assign(4, bytes(1, 2, 3));
    add(std::move(data));
    frame();
    GLint value = -1;
    gl->glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &value);
    EXPECT_EQ(value, 0);
    gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &value);
    EXPECT_EQ(value, 0);
    gl->glBindVertexArray(scene->getDefaultVao());
    for (unsigned location = 0; location < 4; ++location) {
        gl->glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &value);
        EXPECT_EQ(value, 0) << location;
    }
    gl->glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &value);
    EXPECT_EQ(value, 0);
    gl->glBindVertexArray(0);
}

TEST_F(MeshNode3dTest, LeavesTheColourModeToTheItemsColour)
{
    NodeItem& item = add(textured(quarters(8)));
    frame();
    auto* drawer = dynamic_cast<SequentialItem3dDrawer*>(item.getDrawer());
    ASSERT_NE(drawer, nullptr);
    const QOpenGLShaderProgram* program = drawer->getDefaultProgram();
    GLint mode = -1;
    gl->glGetUniformiv(program->programId(), program->uniformLocation("uColorMode"), &mode);
    EXPECT_EQ(mode, 0);
}

TEST_F(MeshNode3dTest, AGroupDrawsItsChildrenAtTheirPlaces)
{
    // The same small square twice; the second child's origin lies 1 unit to the right of the group's.
    std::vector<std::unique_ptr<IDrawableNode3d>> children;
    for (const double shift : {0.0, 1.0}) {
        MeshData data;
        data.origin = {2.7e6 + shift, 1.2e6, 400};
        data.positions = {{-1, -1, 0}, {-0.5f, -1, 0}, {-0.5f, 1, 0}, {-1, 1, 0}};
        addPart(data, Kind::Triangles, {0, 1, 2, 0, 2, 3}, shift == 0.0 ? red : green);
        children.push_back(std::make_unique<MeshNode3d>(std::move(data)));
    }
    add(std::make_unique<GroupNode3d>(std::move(children)));
    const QImage image = frame();
    expectColor(image.pixelColor(0, 4), lit(red));
    expectColor(image.pixelColor(1, 4), lit(red));
    EXPECT_EQ(image.pixelColor(2, 4), black);
    expectColor(image.pixelColor(4, 4), lit(green));
    expectColor(image.pixelColor(5, 4), lit(green));
    EXPECT_EQ(image.pixelColor(6, 4), black);
}

// The group lies a million units off, and one child is as far on the other way: floats know 0.0625 there.
TEST_F(MeshNode3dTest, AGroupComposesItsChildrensPlacesInDoubles)
{
    std::vector<std::unique_ptr<IDrawableNode3d>> children;
    for (const double shift : {0.0, 1e6 + 0.3}) {
        MeshData data;
        data.origin = {shift, 0, 0};
        data.positions = {{0, 0, 0}};
        addPart(data, Kind::Points, {0});
        children.push_back(std::make_unique<MeshNode3d>(std::move(data)));
    }
    NodeItem& item = add(std::make_unique<GroupNode3d>(std::move(children)));
    item.setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(-1e6f, 0, 0)), false);
    const auto [points, lines, triangles] = scene->generateItemGeometry(&item);
    const std::vector<glm::vec4> vertices = readAndDelete(points);
    ASSERT_EQ(vertices.size(), 2u);
    EXPECT_EQ(vertices[0].x, -1e6f);
    EXPECT_NEAR(vertices[1].x, 0.3, 1e-6);
}

// A node that is drawn by a program that knows nothing of its attributes shows its parts' colours.
TEST_F(MeshNode3dTest, TheMonoDrawerDrawsItPlain)
{
    class MonoItem : public NodeItem
    {
    public:
        using NodeItem::NodeItem;
        int getDefaultDrawerType() const override { return Drawable3dItem::getDefaultDrawerType(); }
    };
    scene->addLocalItem(std::make_unique<MonoItem>(std::make_unique<MeshNode3d>(textured(quarters(8)))));
    EXPECT_EQ(countPixels(frame(), QColor(10, 20, 30)), 64);
}

// Indices that only count are not kept; what is drawn are the same vertices, also from the middle on.
TEST_F(MeshNode3dTest, VerticesThatFollowOneAnotherAreDrawnWithoutIndices)
{
    add(square()); // has the first places of the shared buffers
    MeshData data;
    data.positions = {{9, 0, 0}, {1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    addPart(data, Kind::Points, {2, 3});
    addPart(data, Kind::Lines, {1, 2});
    NodeItem& item = add(data);
    const auto [points, lines, triangles] = scene->generateItemGeometry(&item);
    EXPECT_EQ(readAndDelete(points), (std::vector<glm::vec4>{{4, 5, 6, 1}, {7, 8, 9, 1}}));
    EXPECT_EQ(readAndDelete(lines), (std::vector<glm::vec4>{{1, 2, 3, 1}, {4, 5, 6, 1}}));
    EXPECT_EQ(triangles, 0u);

    data = square(red);
    data.positions = {data.positions[0], data.positions[1], data.positions[2],
                      data.positions[0], data.positions[2], data.positions[3]};
    for (std::uint32_t i = 0; i < 6; ++i)
        data.indices[i] = i;
    add(std::move(data));
    expectColor(frame().pixelColor(1, 6), lit(red));
    expectColor(frame().pixelColor(6, 1), lit(red));
}
