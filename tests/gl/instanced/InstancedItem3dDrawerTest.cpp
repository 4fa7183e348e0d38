#include "InstancedTest.h"

#include <cmath>

// The books of drawers of instances, and what of them goes to OpenGL and when.
namespace {

/// What OpenGL knows of a vertex attribute.
struct AttributeState
{
    GLint enabled = 0, components = 0, stride = 0, type = 0, integer = 0, divisor = 0, buffer = 0;
    std::size_t offset = 0;

    static AttributeState of(OpenGLFunctions& gl, unsigned int location)
    {
        AttributeState a;
        gl.glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &a.enabled);
        gl.glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_SIZE, &a.components);
        gl.glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_STRIDE, &a.stride);
        gl.glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_TYPE, &a.type);
        gl.glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_INTEGER, &a.integer);
        gl.glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_DIVISOR, &a.divisor);
        gl.glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING, &a.buffer);
        void* pointer = nullptr;
        gl.glGetVertexAttribPointerv(location, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
        a.offset = reinterpret_cast<std::size_t>(pointer);
        return a;
    }
    void expect(int wantedComponents, GLenum wantedType, bool isInteger, int wantedStride,
                std::size_t wantedOffset) const
    {
        EXPECT_EQ(enabled, 1);
        EXPECT_EQ(components, wantedComponents);
        EXPECT_EQ(GLenum(type), wantedType);
        EXPECT_EQ(integer, isInteger ? 1 : 0);
        EXPECT_EQ(stride, wantedStride);
        EXPECT_EQ(offset, wantedOffset);
        EXPECT_EQ(divisor, 1);
    }
};

constexpr unsigned int attributeLocations = 16;

/// Draws a point an instance and notes which attributes it is given.
template <class T>
class NotingDrawer : public InstancedItem3dDrawer<T>
{
public:
    using InstancedItem3dDrawer<T>::InstancedItem3dDrawer;
    using InstancedItem3dDrawer<T>::getItemParams;
    using Item3dDrawer::removeItem;

    T getItemParams(int index) override
    {
        Drawable3dItem& item = *this->getItems()[static_cast<std::size_t>(index)];
        if constexpr (std::is_same_v<T, glm::vec3>) {
            return item.getVertex(0);
        } else {
            // the last of the four overlapping columns, which is where the origin goes, begins at float 3
            const glm::vec3 place = item.getVertex(0);
            T record(0.0f);
            record[0][3] = place.x;
            record[1][0] = place.y;
            record[1][1] = place.z;
            record[1][2] = 1.0f;
            return record;
        }
    }
    void drawItems(const PaintContext& context) override
    {
        OpenGLFunctions& gl = *currentGLFunctions();
        lastContext = context;
        attributes.clear();
        for (unsigned int location = 0; location < attributeLocations; ++location)
            attributes.push_back(AttributeState::of(gl, location));
        gl.glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &vertexArray);
        gl.glDrawArraysInstanced(GL_POINTS, 0, 1, static_cast<GLsizei>(this->getItems().size()));
    }
    std::unique_ptr<Item3dDrawer> clone() const override { return nullptr; }

    std::vector<AttributeState> attributes;
    PaintContext lastContext;
    GLint vertexArray = 0;
};

class InstancedItem3dDrawerTest : public InstancedTest
{
protected:
    template <class T>
    std::unique_ptr<NotingDrawer<T>> makeDrawer(int firstAttribute = 4)
    {
        std::vector<std::string> defines = {"RX_USE_INSTANCED_DRAW"};
        if (std::is_same_v<T, glm::vec3>) defines.push_back("RX_USE_INSTANCE_POSITION");
        QOpenGLShaderProgram* program = scene->createProgram(
            {shaderPath("common.vertex"), "shader:TerrainKit/ExtraPoint.fragment.glsl"}, defines, {});
        program->bind();
        uniforms::set(*gl, program->uniformLocation("item_color"), glm::vec4(0, 0, 1, 1));
        program->release();
        return std::make_unique<NotingDrawer<T>>(scene.get(), program, firstAttribute);
    }
    /// Draws into a target of its own.
    void drawPass(Item3dDrawer& drawer, const Item3dDrawer::Filter& filter = {})
    {
        shown(drawer, view(), filter);
    }
    static std::vector<std::size_t> bytesOf(const GlCalls& calls)
    {
        std::vector<std::size_t> bytes;
        for (const GlCalls::Upload& upload : calls.uploads)
            bytes.push_back(upload.bytes);
        return bytes;
    }
    /// The bytes of everything and of the flags alone, of so many items.
    static std::vector<std::size_t> everything(std::size_t n) { return {12 * n, 8 * n, 4 * n}; }
    static std::vector<std::size_t> flagsOnly(std::size_t n) { return {4 * n}; }
};

const std::vector<glm::vec3> threePlaces = {{0.25f, 0.5f, 0.75f}, {-0.5f, 0.0f, 0.0f}, {0.0f, -0.5f, 0.5f}};

TEST_F(InstancedItem3dDrawerTest, PositionsAreThreeFloatsAndThenFlagsAndIdentifiers)
{
    const auto drawer = makeDrawer<glm::vec3>();
    const Items items = itemsAt(*drawer, threePlaces);
    items[1]->highlighted = true;
    items[2]->id = (LONGID(0x12345678) << 32) | 0x9ABCDEF0;
    drawer->updateItem(2);
    drawPass(*drawer);
    const std::vector<AttributeState>& a = drawer->attributes;
    a[4].expect(3, GL_FLOAT, false, 12, 0);
    a[5].expect(1, GL_INT, true, 0, 0);
    a[6].expect(2, GL_UNSIGNED_INT, true, 0, 0);
    for (const unsigned int other : {0u, 1u, 2u, 3u, 7u, 8u, 9u})
        EXPECT_EQ(a[other].enabled, 0) << other;
    EXPECT_EQ(contentsOf<glm::vec3>(unsigned(a[4].buffer)), threePlaces);
    EXPECT_EQ(contentsOf<int>(unsigned(a[5].buffer)), (std::vector<int>{-1, -2, -1}));
    EXPECT_EQ(contentsOf<unsigned>(unsigned(a[6].buffer)),
              (std::vector<unsigned>{1, 0, 2, 0, 0x9ABCDEF0u, 0x12345678u}));
}

TEST_F(InstancedItem3dDrawerTest, MatricesOverlapAndFlagsAndIdentifiersFollowTheFourLocations)
{
    const auto drawer = makeDrawer<glm::mat4>();
    const Items items = itemsAt(*drawer, {atPixel(10, 20), atPixel(40, 50)});
    items[1]->highlighted = true;
    const QImage image = shown(*drawer);
    const std::vector<AttributeState>& a = drawer->attributes;
    for (unsigned int column = 0; column < 4; ++column)
        a[4 + column].expect(4, GL_FLOAT, false, 64, 4 * column);
    a[8].expect(1, GL_INT, true, 0, 0);
    a[9].expect(2, GL_UNSIGNED_INT, true, 0, 0);
    EXPECT_EQ(a[10].enabled, 0);
    EXPECT_EQ(contentsOf<glm::mat4>(unsigned(a[4].buffer)), drawer->getItemParams());
    EXPECT_EQ(image.pixelColor(10, 20), QColor(0, 0, 255));
    EXPECT_EQ(image.pixelColor(40, 50), QColor(Qt::yellow)) << "the flags are read as flags";
    EXPECT_EQ(countPixels(image, [](QRgb p) { return (p & 0xFFFFFFu) != 0; }), 2);
}

TEST_F(InstancedItem3dDrawerTest, LocationsCountFromTheFirstOne)
{
    const auto drawer = makeDrawer<glm::vec3>(9);
    const Items items = itemsAt(*drawer, threePlaces);
    drawPass(*drawer);
    drawer->attributes[9].expect(3, GL_FLOAT, false, 12, 0);
    drawer->attributes[10].expect(1, GL_INT, true, 0, 0);
    drawer->attributes[11].expect(2, GL_UNSIGNED_INT, true, 0, 0);
    EXPECT_EQ(drawer->attributes[4].enabled, 0);
}

TEST_F(InstancedItem3dDrawerTest, DetachesAllAttributesAfterwards)
{
    const auto positions = makeDrawer<glm::vec3>();
    const auto matrices = makeDrawer<glm::mat4>();
    const Items some = itemsAt(*positions, threePlaces), others = itemsAt(*matrices, threePlaces);
    drawPass(*positions);
    drawPass(*matrices);
    EXPECT_EQ(matrices->vertexArray, GLint(scene->getDefaultVao()));
    EXPECT_EQ(integer(GL_VERTEX_ARRAY_BINDING), 0);
    gl->glBindVertexArray(scene->getDefaultVao());
    for (unsigned int location = 0; location < attributeLocations; ++location) {
        EXPECT_EQ(AttributeState::of(*gl, location).enabled, 0) << location;
        EXPECT_EQ(AttributeState::of(*gl, location).divisor, 0) << location;
    }
    gl->glBindVertexArray(0);
}

TEST_F(InstancedItem3dDrawerTest, BindsWithAnyDivisor)
{
    const auto drawer = makeDrawer<glm::mat4>();
    const Items items = itemsAt(*drawer, threePlaces);
    drawPass(*drawer);
    drawer->bind(scene->getDefaultVao(), 3);
    EXPECT_EQ(integer(GL_VERTEX_ARRAY_BINDING), 0);
    gl->glBindVertexArray(scene->getDefaultVao());
    for (unsigned int location = 4; location < 10; ++location)
        EXPECT_EQ(AttributeState::of(*gl, location).divisor, 3) << location;
    drawer->unbind(scene->getDefaultVao());
}

TEST_F(InstancedItem3dDrawerTest, UploadsWhatChangedAndNoMore)
{
    const auto drawer = makeDrawer<glm::vec3>();
    Items items = itemsAt(*drawer, threePlaces);
    EXPECT_EQ(drawer->getBuffersSize(), 3);
    GlCalls calls(*gl);
    const auto expectUploads = [&](const char* after, const std::vector<std::size_t>& bytes,
                                   const Item3dDrawer::Filter& filter = {}) {
        calls.reset();
        drawPass(*drawer, filter);
        EXPECT_EQ(bytesOf(calls), bytes) << after;
        EXPECT_EQ(calls.draws.size(), 1u) << after;
        drawPass(*drawer, filter);
        EXPECT_EQ(calls.uploads.size(), bytes.size()) << after << ", a second time";
    };
    expectUploads("the first pass", everything(3));
    items[0]->setVisible(false);
    expectUploads("hiding", flagsOnly(3));
    items[0]->setVisible(true);
    items[1]->highlighted = true;
    expectUploads("showing and highlighting", flagsOnly(3));
    expectUploads("a filter that takes all", {}, [](Drawable3dItem*) { return true; });
    expectUploads("a filter", flagsOnly(3), [&](Drawable3dItem* item) { return item != items[2].get(); });
    expectUploads("no filter", flagsOnly(3));
    items[1]->place.x = 0.125f;
    drawer->updateItem(items[1].get());
    expectUploads("moving", everything(3));
    drawer->updateItem(7);
    expectUploads("an update of no item", everything(3));
    items.push_back(std::make_unique<MarkItem>(4, glm::vec3(0.0f)));
    items.back()->setDrawer(drawer.get());
    items[0]->setVisible(false);
    expectUploads("adding and hiding", everything(4));
    items.erase(items.begin());
    expectUploads("removing", everything(3));
}

TEST_F(InstancedItem3dDrawerTest, FlagsThatAreSetUploadWhereTheyDiffer)
{
    const auto drawer = makeDrawer<glm::vec3>();
    const Items items = itemsAt(*drawer, threePlaces);
    drawPass(*drawer);
    GlCalls calls(*gl);
    for (int index = 0; index < 3; ++index)
        drawer->setItemFlag(index, ItemFlag::Normal);
    for (const int index : {-1, 3, 1000})
        drawer->setItemFlag(index, ItemFlag::Invisible);
    drawPass(*drawer);
    EXPECT_TRUE(calls.uploads.empty());
    drawer->setItemFlag(1, ItemFlag::Invisible);
    drawPass(*drawer);
    EXPECT_EQ(bytesOf(calls), flagsOnly(3));
    EXPECT_EQ(contentsOf<int>(unsigned(drawer->attributes[5].buffer)), (std::vector<int>{-1, -1, -1}))
        << "a pass finds them anew";
}

TEST_F(InstancedItem3dDrawerTest, AHiddenItemKeepsItsRecord)
{
    const auto drawer = makeDrawer<glm::vec3>();
    const Items items = itemsAt(*drawer, threePlaces);
    items[1]->setVisible(false);
    items[1]->highlighted = true;
    drawPass(*drawer, [&](Drawable3dItem* item) { return item != items[2].get(); });
    EXPECT_EQ(contentsOf<glm::vec3>(unsigned(drawer->attributes[4].buffer)), threePlaces);
    EXPECT_EQ(contentsOf<int>(unsigned(drawer->attributes[5].buffer)), (std::vector<int>{-1, -3, -3}));
}

TEST_F(InstancedItem3dDrawerTest, RemovingMovesTheLastItemIntoTheSlot)
{
    const auto drawer = makeDrawer<glm::vec3>();
    Items items = itemsAt(*drawer, threePlaces);
    drawPass(*drawer);
    items.erase(items.begin());
    EXPECT_EQ(drawer->getItemParams(), (std::vector<glm::vec3>{threePlaces[2], threePlaces[1]}));
    EXPECT_EQ(drawer->getBuffersSize(), 2);
    drawPass(*drawer);
    EXPECT_EQ(contentsOf<unsigned>(unsigned(drawer->attributes[6].buffer)),
              (std::vector<unsigned>{3, 0, 2, 0}));
    items.clear();
    EXPECT_EQ(drawer->getBuffersSize(), 0);
}

TEST_F(InstancedItem3dDrawerTest, AnItemWithoutElementHasNoIdentifierAndNoFlagOfItsOwn)
{
    const auto drawer = makeDrawer<glm::vec3>();
    TestItem plain;
    plain.setDrawer(drawer.get());
    plain.setVisible(false);
    const Items items = itemsAt(*drawer, {threePlaces[0]});
    drawPass(*drawer);
    EXPECT_EQ(contentsOf<int>(unsigned(drawer->attributes[5].buffer)), (std::vector<int>{0, -1}));
    EXPECT_EQ(contentsOf<unsigned>(unsigned(drawer->attributes[6].buffer)),
              (std::vector<unsigned>{0, 0, 1, 0}));
    plain.setDrawer(nullptr);
}

TEST_F(InstancedItem3dDrawerTest, AnEmptyRegistryTouchesNothing)
{
    const auto drawer = makeDrawer<glm::vec3>();
    MarkDrawer marks(scene.get());
    GlCalls calls(*gl);
    gl->glUseProgram(0);
    for (Item3dDrawer* empty : {static_cast<Item3dDrawer*>(drawer.get()), static_cast<Item3dDrawer*>(&marks)})
        empty->draw(view(), {});
    EXPECT_TRUE(calls.uploads.empty());
    EXPECT_TRUE(calls.draws.empty());
    EXPECT_EQ(integer(GL_CURRENT_PROGRAM), 0);
}

TEST_F(InstancedItem3dDrawerTest, DrawsWithTheProgramOfThePassAndReleasesItsOwn)
{
    const auto drawer = makeDrawer<glm::vec3>();
    const auto other = makeDrawer<glm::vec3>();
    const Items items = itemsAt(*drawer, {atPixel(10, 20)});
    other->getProgram()->bind();
    uniforms::set(*gl, other->getProgram()->uniformLocation("item_color"), glm::vec4(0, 1, 0, 1));
    PaintContext context = view();
    context.program = other->getProgram();
    const QImage image = shown(*drawer, context);
    EXPECT_EQ(image.pixelColor(10, 20), QColor(0, 255, 0));
    EXPECT_EQ(drawer->lastContext.program, other->getProgram());
    EXPECT_EQ(drawer->lastContext.drawer, drawer.get());
    EXPECT_EQ(integer(GL_CURRENT_PROGRAM), 0);
    EXPECT_EQ(shown(*drawer).pixelColor(10, 20), QColor(0, 0, 255));
    EXPECT_EQ(drawer->lastContext.program, drawer->getProgram());
}

TEST_F(InstancedItem3dDrawerTest, WithoutAProgramNothingIsUploadedOrDrawn)
{
    NotingDrawer<glm::vec3> drawer(scene.get(), nullptr, 4);
    const Items items = itemsAt(drawer, threePlaces);
    GlCalls calls(*gl);
    drawer.draw(view(), {});
    EXPECT_TRUE(calls.uploads.empty());
    EXPECT_TRUE(calls.draws.empty());
    EXPECT_EQ(drawer.getProgram(), nullptr);
}

TEST_F(InstancedItem3dDrawerTest, WhatChangesWithoutAContextIsUploadedLater)
{
    const auto drawer = makeDrawer<glm::vec3>();
    Items items = itemsAt(*drawer, threePlaces);
    drawPass(*drawer);
    scene->doneCurrent();
    items[0]->place = glm::vec3(0.5f);
    drawer->updateItem(0);
    items[1]->setVisible(false);
    drawer->draw(view(), {});
    drawer->bind(1, 1);
    drawer->unbind(1);
    scene->makeCurrent();
    GlCalls calls(*gl);
    drawPass(*drawer);
    EXPECT_EQ(bytesOf(calls), everything(3));
    EXPECT_EQ(contentsOf<int>(unsigned(drawer->attributes[5].buffer)), (std::vector<int>{-1, -3, -1}));
}

TEST_F(InstancedItem3dDrawerTest, GeometryCaptureLeavesInstancesOut)
{
    const auto drawer = makeDrawer<glm::vec3>();
    const Items items = itemsAt(*drawer, threePlaces);
    const Drawable3dPrimitive::GeometryInfo info = items[0]->getGeometryInfo();
    EXPECT_EQ(info.pointCount + info.lineCount + info.triangleCount, 0u);
    GlCalls calls(*gl);
    EXPECT_EQ(scene->generateItemGeometry(items[0].get()), Drawable3dPrimitive::Geometry(0u, 0u, 0u));
    PaintContext context = view();
    context.drawMode = DrawMode::GeometryCapture;
    drawer->draw(context, {});
    EXPECT_TRUE(calls.draws.empty());
    EXPECT_TRUE(calls.uploads.empty());
}

TEST_F(InstancedItem3dDrawerTest, FreesItsBuffers)
{
    const GlObjects before = GlObjects::count(*gl);
    QOpenGLShaderProgram* program = makeDrawer<glm::vec3>()->getProgram();
    PaintContext context = view();
    for (int round = 0; round < 1000; ++round) {
        NotingDrawer<glm::vec3> drawer(scene.get(), program, 4);
        const Items items = itemsAt(drawer, {glm::vec3(0.0f)});
        drawer.draw(context, {});
        if (round > 0) continue;
        EXPECT_EQ(GlObjects::count(*gl).buffers, before.buffers + 3);
    }
    EXPECT_EQ(GlObjects::count(*gl).buffers, before.buffers);
}

} // namespace
