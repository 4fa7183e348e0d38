#include "tests/support/GlObjects.h"
#include "tests/support/GlTest.h"
#include "tests/support/TestItems.h"
#include "tests/support/VertexItem.h"

#include <Viewer3dModule/drawers/DrawerType.h>

#include <QtCore/QDir>

namespace {

class Scene3dLifetimeTest : public GlTest
{
protected:
    void SetUp() override
    {
        GlTest::SetUp();
        QDir::setSearchPaths(QStringLiteral("shader"), {QStringLiteral(":/")});
    }

    static std::unique_ptr<VertexItem> triangleItem()
    {
        return std::make_unique<VertexItem>(GL_TRIANGLES, squareVertices(-1, -1, 1, 1));
    }

    // A scene with a local item that has drawn itself, captured geometry once, and is dropped.
    void buildAndDropScene()
    {
        Scene3d scene(nullptr, nullptr);
        auto local = triangleItem();
        VertexItem* raw = local.get();
        scene.addLocalItem(std::move(local));
        const auto buffers = scene.generateItemGeometry(raw);
        const unsigned triangles = std::get<2>(buffers);
        EXPECT_NE(triangles, 0u);
        scene.getGLFunctions()->glDeleteBuffers(1, &triangles);
        makeCurrent();
    }
};

TEST_F(Scene3dLifetimeTest, TenScenesLeaveNoObjects)
{
    buildAndDropScene();
    const GlObjects before = GlObjects::count(*gl);
    for (int i = 0; i < 10; ++i)
        buildAndDropScene();
    EXPECT_EQ(GlObjects::count(*gl), before);
}

TEST_F(Scene3dLifetimeTest, DroppingASceneKeepsTheCallersContextCurrent)
{
    auto scene = std::make_unique<Scene3d>(nullptr, nullptr);
    EXPECT_EQ(QOpenGLContext::currentContext(), &scene->getContext())
        << "current when the constructor returns";
    ASSERT_TRUE(makeCurrent());
    scene.reset();
    EXPECT_EQ(QOpenGLContext::currentContext(), &context);
}

TEST_F(Scene3dLifetimeTest, DroppingASceneWithNothingCurrentLeavesNothingCurrent)
{
    auto scene = std::make_unique<Scene3d>(nullptr, nullptr);
    scene->doneCurrent();
    scene.reset();
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
}

TEST_F(Scene3dLifetimeTest, LocalItemsAreDestroyedWhileTheContextIsCurrent)
{
    class Probe : public VertexItem
    {
    public:
        explicit Probe(QOpenGLContext** seenAtEnd)
            : VertexItem(GL_POINTS, {glm::vec3(0)})
            , m_seen(seenAtEnd)
        {
        }
        ~Probe() override { *m_seen = QOpenGLContext::currentContext(); }

    private:
        QOpenGLContext** m_seen;
    };
    QOpenGLContext* seen = nullptr;
    auto scene = std::make_unique<Scene3d>(nullptr, nullptr);
    QOpenGLContext* own = &scene->getContext();
    scene->addLocalItem(std::make_unique<Probe>(&seen));
    makeCurrent();
    scene.reset();
    EXPECT_EQ(seen, own);
}

TEST_F(Scene3dLifetimeTest, ItemsOutliveTheirScene)
{
    auto scene = std::make_unique<Scene3d>(nullptr, nullptr);
    TestItem item;
    item.setDrawer(scene->getDefaultDrawer(DrawerType::Mono));
    EXPECT_EQ(item.scene(), scene.get());
    scene.reset();
    EXPECT_EQ(item.scene(), nullptr);
    EXPECT_EQ(item.getDrawer(), nullptr);
    makeCurrent();
}

TEST_F(Scene3dLifetimeTest, ContextIsMadeAndReleased)
{
    Scene3d scene(nullptr, nullptr);
    scene.doneCurrent();
    EXPECT_EQ(scene.getGLFunctions(), nullptr);
    EXPECT_TRUE(scene.makeCurrent());
    EXPECT_NE(scene.getGLFunctions(), nullptr);
    EXPECT_EQ(QOpenGLContext::currentContext()->surface(), scene.getSurface());
    makeCurrent();
}

} // namespace
