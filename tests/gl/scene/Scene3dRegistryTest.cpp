#include "tests/support/ImageCheck.h"
#include "tests/support/LogTrap.h"
#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <framework/model/CFilterElement.h>

#include <QtGui/QOpenGLShaderProgram>
#include <QtTest/QSignalSpy>

namespace {

class Scene3dRegistryTest : public SceneTest
{
protected:
    TestDrawer* addTestDrawer(int visibilityType, int drawerType)
    {
        auto drawer = std::make_unique<TestDrawer>(scene.get());
        TestDrawer* raw = drawer.get();
        scene->addDrawer(visibilityType, drawerType, std::move(drawer));
        return raw;
    }
};

TEST_F(Scene3dRegistryTest, HasTheEightDefaultDrawers)
{
    const int first = 0x36FF1C00;
    for (int type = first; type < first + 8; ++type) {
        EXPECT_TRUE(scene->isHasDrawer(type, type));
        EXPECT_TRUE(scene->isHasDefaultDrawer(type));
        auto* drawer = dynamic_cast<SequentialItem3dDrawer*>(scene->getDefaultDrawer(type));
        ASSERT_NE(drawer, nullptr);
        EXPECT_TRUE(drawer->getDefaultProgram()->isLinked()) << type - first;
        EXPECT_EQ(drawer->getDefaultProgram()->parent(), scene.get());
    }
    EXPECT_FALSE(scene->isHasDrawer(DrawerType::Mono, DrawerType::Mesh));
    EXPECT_FALSE(scene->isHasDefaultDrawer(first + 8));
}

TEST_F(Scene3dRegistryTest, TheCaptionProgramHasAGeometryStage)
{
    auto& drawer = dynamic_cast<SequentialItem3dDrawer&>(*scene->getDefaultDrawer(DrawerType::Caption));
    int geometryStages = 0;
    for (const QOpenGLShader* shader : drawer.getDefaultProgram()->shaders())
        geometryStages += shader->shaderType() == QOpenGLShader::Geometry;
    EXPECT_EQ(geometryStages, 1);
    EXPECT_EQ(drawer.getDefaultProgram()->property("primitives").toInt(), 1);
}

TEST_F(Scene3dRegistryTest, AnUnknownKeyGivesTheMonoDrawer)
{
    EXPECT_EQ(scene->getDrawer(1, 2), scene->getDefaultDrawer(DrawerType::Mono));
    EXPECT_EQ(scene->getDefaultDrawer(5), scene->getDefaultDrawer(DrawerType::Mono));
}

TEST_F(Scene3dRegistryTest, AKeyThatIsThereKeepsItsDrawer)
{
    TestDrawer* first = addTestDrawer(1, 2);
    addTestDrawer(1, 2);
    EXPECT_EQ(scene->getDrawer(1, 2), first);
    scene->addDrawer(1, 2);
    EXPECT_EQ(scene->getDrawer(1, 2), first);
}

TEST_F(Scene3dRegistryTest, ANullDrawerIsIgnored)
{
    scene->addDrawer(1, 2, nullptr);
    EXPECT_FALSE(scene->isHasDrawer(1, 2));
    EXPECT_NE(scene->getDrawer(1, 2), nullptr);
}

TEST_F(Scene3dRegistryTest, AddingByTypeClonesTheDefaultDrawer)
{
    TestDrawer* own = addTestDrawer(9, 9);
    scene->addDrawer(1, 9);
    ASSERT_TRUE(scene->isHasDrawer(1, 9));
    EXPECT_NE(scene->getDrawer(1, 9), own);
    EXPECT_NE(dynamic_cast<TestDrawer*>(scene->getDrawer(1, 9)), nullptr);
}

TEST_F(Scene3dRegistryTest, AddingAnUnknownTypeClonesTheMonoDrawerAndKeepsIt)
{
    scene->addDrawer(1, 1234);
    auto* fallback = dynamic_cast<SequentialItem3dDrawer*>(scene->getDrawer(1, 1234));
    auto* mono = dynamic_cast<SequentialItem3dDrawer*>(scene->getDefaultDrawer(DrawerType::Mono));
    ASSERT_TRUE(fallback && mono);
    EXPECT_NE(fallback, mono);
    EXPECT_EQ(fallback->getDefaultProgram(), mono->getDefaultProgram());
}

TEST_F(Scene3dRegistryTest, LocalDrawersAreClonesOfTheirOwnKeptByType)
{
    Item3dDrawer* local = scene->getLocalDrawer(DrawerType::Mesh);
    EXPECT_NE(local, scene->getDefaultDrawer(DrawerType::Mesh));
    EXPECT_EQ(scene->getLocalDrawer(DrawerType::Mesh), local);
    EXPECT_NE(scene->getLocalDrawer(DrawerType::Mono), local);
}

TEST_F(Scene3dRegistryTest, DrawsInAscendingOrderOfVisibilityThenDrawerType)
{
    std::vector<std::pair<int, int>> order;
    class Noting : public TestDrawer
    {
    public:
        Noting(std::vector<std::pair<int, int>>* list, std::pair<int, int> drawerKey)
            : m_list(list)
            , m_key(drawerKey)
        {
        }
        void draw(const PaintContext&, Filter) override { m_list->push_back(m_key); }

    private:
        std::vector<std::pair<int, int>>* m_list;
        std::pair<int, int> m_key;
    };
    for (const std::pair<int, int>& key :
         std::vector<std::pair<int, int>>{{5, 1}, {-3, 9}, {5, -2}, {4, 100}, {-3, 2}})
        scene->addDrawer(key.first, key.second, std::make_unique<Noting>(&order, key));
    scene->drawElements(paintContext(4, 4), nullptr, {});
    EXPECT_EQ(order, (std::vector<std::pair<int, int>>{{-3, 2}, {-3, 9}, {4, 100}, {5, -2}, {5, 1}}));
}

TEST_F(Scene3dRegistryTest, TheVisibilityFilterSkipsTypesButTheAlwaysVisible)
{
    TestDrawer* shown = addTestDrawer(1, 1);
    TestDrawer* hidden = addTestDrawer(2, 1);
    TestDrawer* always = addTestDrawer(3, 1);
    CFilterElement filter;
    filter.setTypeAccepted(2, false);
    filter.setTypeAccepted(3, false);
    scene->addAlwaysVisibleDrawer(3);
    scene->drawElements(paintContext(4, 4), &filter, {});
    EXPECT_EQ(shown->draws, 1);
    EXPECT_EQ(hidden->draws, 0);
    EXPECT_EQ(always->draws, 1);
    scene->drawElements(paintContext(4, 4), nullptr, {});
    EXPECT_EQ(hidden->draws, 1);
}

TEST_F(Scene3dRegistryTest, WithoutAnItemFilterVisibleItemsPass)
{
    TestDrawer* drawer = addTestDrawer(1, 1);
    TestItem shown, hidden;
    shown.setDrawer(drawer);
    hidden.setDrawer(drawer);
    hidden.setVisible(false);
    scene->drawElements(paintContext(4, 4), nullptr, {});
    EXPECT_EQ(drawer->drawn, (std::vector<Drawable3dItem*>{&shown}));
    drawer->drawn.clear();
    scene->drawElements(paintContext(4, 4), nullptr, [&](Drawable3dItem* item) { return item == &hidden; });
    EXPECT_EQ(drawer->drawn, (std::vector<Drawable3dItem*>{&hidden}));
}

TEST_F(Scene3dRegistryTest, ElementsAndLocalItemsMakeAFrame)
{
    auto local = std::make_unique<TestItem>();
    TestItem* raw = local.get();
    scene->addLocalItem(std::move(local));
    EXPECT_EQ(raw->getDrawer(), scene->getLocalDrawer(DrawerType::Mono));
    EXPECT_EQ(raw->scene(), scene.get());
    scene->drawElements(paintContext(4, 4), nullptr, {});
    EXPECT_EQ(raw->draws, 0) << "drawElements draws the registry and nothing else";
    drawFrame(paintContext(4, 4));
    EXPECT_EQ(raw->draws, 1);
}

TEST_F(Scene3dRegistryTest, LocalItemsKeepADrawerThatTheyHave)
{
    TestDrawer* drawer = addTestDrawer(1, 1);
    auto local = std::make_unique<TestItem>();
    TestItem* raw = local.get();
    raw->setDrawer(drawer);
    scene->addLocalItem(std::move(local));
    EXPECT_EQ(raw->getDrawer(), drawer);
}

TEST_F(Scene3dRegistryTest, DeletingLocalItemsIgnoresWhatItDoesNotKnow)
{
    QSignalSpy views(scene.get(), &Scene3d::updateView);
    TestItem stranger;
    scene->deleteLocalItem(nullptr);
    scene->deleteLocalItem(&stranger);
    EXPECT_EQ(views.count(), 0);
    auto local = std::make_unique<TestItem>();
    TestItem* raw = local.get();
    scene->addLocalItem(std::move(local));
    EXPECT_EQ(views.count(), 1);
    scene->deleteLocalItem(raw);
    EXPECT_EQ(views.count(), 2);
    EXPECT_TRUE(scene->getLocalDrawer(DrawerType::Mono)->getItems().empty());
}

TEST_F(Scene3dRegistryTest, DrawingKeepsTheCallersContextCurrent)
{
    TestElement element; // its item makes the frame correct the transform, which updates items
    auto* item = new TestGraphicsItem(&element);
    scene->addElement(item);
    element.box = gmx::BoundingBox(glm::dvec3(5e5), glm::dvec3(5e5 + 10));
    const int updatesBefore = item->updates;
    QOffscreenSurface surface;
    surface.setFormat(scene->getContext().format());
    surface.create();
    QOpenGLContext other;
    other.setFormat(scene->getContext().format());
    other.setShareContext(&scene->getContext());
    ASSERT_TRUE(other.create());
    ASSERT_TRUE(other.makeCurrent(&surface));

    class Probe : public TestDrawer
    {
    public:
        void draw(const PaintContext&, Filter) override { current = QOpenGLContext::currentContext(); }
        QOpenGLContext* current = nullptr;
    };
    auto probe = std::make_unique<Probe>();
    Probe* raw = probe.get();
    scene->addDrawer(1, 1, std::move(probe));
    scene->setBoundsDirty();
    scene->drawElements(paintContext(4, 4), nullptr, {});
    EXPECT_GT(item->updates, updatesBefore);
    EXPECT_EQ(raw->current, &other);
    EXPECT_EQ(QOpenGLContext::currentContext(), &other);

    // Building the capture program makes the scene's context current for a while.
    unsigned int otherVao = 0;
    scene->getGLFunctions()->glGenVertexArrays(1, &otherVao);
    PaintContext capture = paintContext(4, 4);
    capture.vertexArray = otherVao;
    capture.drawMode = 4;
    capture.primitives = 1;
    TestItem captured;
    captured.setDrawer(scene->getDefaultDrawer(DrawerType::Mono));
    unsigned int buffer = 0;
    scene->getGLFunctions()->glGenBuffers(1, &buffer);
    scene->getGLFunctions()->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
    scene->drawElements(capture, nullptr, {});
    EXPECT_EQ(captured.draws, 1);
    EXPECT_EQ(QOpenGLContext::currentContext(), &other);
    scene->getGLFunctions()->glDeleteBuffers(1, &buffer);
    scene->getGLFunctions()->glDeleteVertexArrays(1, &otherVao);
    scene->makeCurrent();
}

TEST_F(Scene3dRegistryTest, MetaObjectHasTheSignalsInOrderAndTheSlot)
{
    const QMetaObject* meta = scene->metaObject();
    EXPECT_STREQ(meta->className(), "Scene3d");
    QStringList own;
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
        own.append(QString::fromLatin1(meta->method(i).methodSignature()));
    EXPECT_EQ(own, (QStringList{"updateView()", "elementRemoved(LONGID)", "asyncDataLoaded()",
                                "modelToSceneTransformChanged(glm::dmat4)", "sceneChanged()"}));
    EXPECT_EQ(meta->method(meta->methodOffset() + 1).parameterNames().value(0), "item_id");
    EXPECT_EQ(meta->method(meta->methodOffset() + 3).parameterNames().value(0), "additional_transform");
    EXPECT_EQ(scene->getType(), 0);
}

TEST_F(Scene3dRegistryTest, CommonStateLeavesTheForegroundItsDepths)
{
    EXPECT_TRUE(gl->glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(gl->glIsEnabled(GL_PROGRAM_POINT_SIZE));
    EXPECT_TRUE(gl->glIsEnabled(GL_BLEND));
    EXPECT_TRUE(gl->glIsEnabled(GL_POLYGON_OFFSET_FILL));
    const auto integer = [&](GLenum name) {
        GLint value = 0;
        gl->glGetIntegerv(name, &value);
        return static_cast<GLenum>(value);
    };
    EXPECT_EQ(integer(GL_BLEND_SRC_RGB), GLenum(GL_SRC_ALPHA));
    EXPECT_EQ(integer(GL_BLEND_DST_RGB), GLenum(GL_ONE_MINUS_SRC_ALPHA));
    EXPECT_EQ(integer(GL_DEPTH_FUNC), GLenum(GL_LEQUAL));
    float range[2] = {};
    gl->glGetFloatv(GL_DEPTH_RANGE, range);
    EXPECT_FLOAT_EQ(range[0], 0.001f);
    EXPECT_FLOAT_EQ(range[1], 1.0f);
    float offset[2] = {};
    gl->glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &offset[0]);
    gl->glGetFloatv(GL_POLYGON_OFFSET_UNITS, &offset[1]);
    EXPECT_EQ(offset[0], 1.0f);
    EXPECT_EQ(offset[1], 1.0f);
    gl->glBindVertexArray(scene->getDefaultVao()); // a name becomes an object when it is first bound
    EXPECT_TRUE(gl->glIsVertexArray(scene->getDefaultVao()));
    gl->glBindVertexArray(0);
    EXPECT_EQ(scene->getSurface()->surfaceType(), QSurface::OpenGLSurface);
    EXPECT_EQ(scene->getContext().shareContext(), QOpenGLContext::globalShareContext());
}

TEST_F(Scene3dRegistryTest, AnEmptySceneDrawsNothing)
{
    const QImage image = drawFrame(paintContext(8, 8));
    EXPECT_EQ(countPixels(image, QColor(0, 0, 0)), 64);
}

TEST_F(Scene3dRegistryTest, AProgramThatFailsIsLoggedAndTheFrameGoesOn)
{
    QOpenGLShaderProgram* broken =
        scene->createProgram({QStringLiteral("shader:Viewer3dModule/nowhere.vertex.glsl")}, {}, {});
    ASSERT_NE(broken, nullptr);
    EXPECT_FALSE(broken->isLinked());
    EXPECT_FALSE(LogTrap::take().isEmpty());
    debug->take();
    auto drawer = std::make_unique<SequentialItem3dDrawer>(scene.get(), broken);
    TestItem unseen, seen;
    unseen.setDrawer(drawer.get());
    scene->addDrawer(1, 1, std::move(drawer));
    scene->addDrawer(2, DrawerType::Mono);
    seen.setDrawer(scene->getDrawer(2, DrawerType::Mono));
    drawFrame(paintContext(4, 4));
    EXPECT_EQ(unseen.draws, 0);
    EXPECT_EQ(seen.draws, 1);
}

} // namespace
