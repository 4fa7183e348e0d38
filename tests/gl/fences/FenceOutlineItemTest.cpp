#include "FencedScene.h"

#include "tests/support/ImageCheck.h"
#include "tests/support/TestItems.h"

#include <Viewer3dModule/host/CGraphics3dExtension.h>
#include <Viewer3dModule/host/Fence3dDisplay.h>
#include <Viewer3dModule/host/Fence3dOutlineItem.h>
#include <Viewer3dModule/scene/SelectionOptions.h>

#include <framework/model/CModelElementManager.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QRectF>
#include <glm/gtc/matrix_transform.hpp>

// The outline of a project's fence and its node points, shown in the scene.

namespace {

bool isLine(QRgb pixel)
{
    return qRed(pixel) > 200 && qAbs(qGreen(pixel) - 130) < 40;
}

bool isNode(QRgb pixel)
{
    return qRed(pixel) > 150 && qGreen(pixel) < 60;
}

class FenceOutlineItem : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        m_fence.emplace(*project);
        m_display.emplace(*scene);
    }
    void TearDown() override
    {
        m_display.reset();
        SceneTest::TearDown();
    }
    QImage draw(double scale = 1.0)
    {
        PaintContext context = paintContext(200, 200);
        context.view = glm::mat4(glm::scale(glm::dmat4(1.0), glm::dvec3(scale, scale, scale)));
        return drawFrame(context);
    }

    std::optional<FenceSetter> m_fence;
    std::optional<Fence3dDisplay> m_display;
};

} // namespace

TEST_F(FenceOutlineItem, IsNotThereWithoutFence)
{
    ASSERT_TRUE(m_display->item());
    EXPECT_EQ(countPixels(draw(), [](QRgb pixel) { return pixel != qRgb(0, 0, 0); }), 0);
    EXPECT_EQ(m_display->item()->getNodePointsCount(), 0);
}

TEST_F(FenceOutlineItem, ShowsTheCirclesAndThePointsOfASphere)
{
    m_fence->set(glm::dvec3(0.0), 0.5);
    const QImage image = draw();
    saveTestImage("fence_outline_sphere", image);
    for (int i = 0; i < 16; ++i) { // the circle across the line of sight, half the picture wide
        const double angle = (i + 0.5) * 2.0 * 3.14159265 / 16.0;
        const auto pixel = [&](double radius) {
            return image.pixel(static_cast<int>(100.0 + radius * std::cos(angle)),
                               static_cast<int>(100.0 - radius * std::sin(angle)));
        };
        EXPECT_TRUE(isLine(pixel(50.0)) || isLine(pixel(49.5)) || isLine(pixel(50.5))) << i;
        EXPECT_FALSE(isLine(pixel(40.0))) << i;
    }
    EXPECT_TRUE(isNode(image.pixel(100, 100)));
    EXPECT_TRUE(isNode(image.pixel(150, 100)));
    EXPECT_NEAR(countPixels(image, isNode), 2 * 11 * 11, 60);
}

TEST_F(FenceOutlineItem, FollowsTheFenceItsNodesAndTheTransform)
{
    m_fence->set(glm::dvec3(0.0), 0.5);
    Fence3dOutlineItem* item = m_display->item();
    ASSERT_EQ(item->getNodePointsCount(), 2);
    EXPECT_TRUE(item->setNodePoint(1, glm::dvec3(0.0, 0.25, 0.0)));
    EXPECT_EQ(static_cast<const SphereFence&>(m_fence->fence()).getRadius(), 0.25);
    EXPECT_EQ(item->getNodePoint(1), glm::dvec3(0.25, 0.0, 0.0));
    EXPECT_TRUE(isNode(draw().pixel(125, 100)));
    EXPECT_FALSE(item->setNodePoint(2, glm::dvec3(0.0)));
    EXPECT_FALSE(item->setNodePoint(-1, glm::dvec3(0.0)));

    scene->setModelToSceneTransform(glm::scale(glm::dmat4(1.0), glm::dvec3(2.0)));
    EXPECT_EQ(item->getNodePoint(1), glm::dvec3(0.5, 0.0, 0.0));
    EXPECT_TRUE(isNode(draw().pixel(150, 100)));
    EXPECT_TRUE(item->setNodePoint(1, glm::dvec3(0.8, 0.0, 0.0)));
    EXPECT_EQ(static_cast<const SphereFence&>(m_fence->fence()).getRadius(), 0.4);

    m_fence->reset();
    EXPECT_EQ(countPixels(draw(), [](QRgb pixel) { return pixel != qRgb(0, 0, 0); }), 0);
}

// A fence that is cut would not show where it is.
TEST_F(FenceOutlineItem, IsNotCutByTheFenceNorByNearAndFar)
{
    m_fence->set(glm::dvec3(0.0), 0.5);
    const int lines = countPixels(draw(), isLine);
    EXPECT_GT(lines, 500);
    // beyond near and far the points stay, and of the lines those that lie across the line of sight
    const QImage beyond = [this] {
        PaintContext context = paintContext(200, 200);
        context.view = glm::mat4(glm::translate(glm::dmat4(1.0), glm::dvec3(0.0, 0.0, 5.0)));
        return drawFrame(context);
    }();
    EXPECT_NEAR(countPixels(beyond, isNode), 2 * 11 * 11, 60);
    EXPECT_GT(countPixels(beyond, isLine), 500);
}

TEST_F(FenceOutlineItem, IsNeverSelectedAndHidesNothingFromASelection)
{
    m_fence->set(glm::dvec3(0.0), 0.5);
    SelectionOptions options;
    for (const SelectionMode mode : {SelectionMode::Through, SelectionMode::Visible}) {
        options.mode = mode;
        EXPECT_TRUE(scene->selectItems(paintContext(200, 200), QRectF(0, 0, 200, 200), options).empty());
    }
    EXPECT_EQ(scene->generateItemGeometry(m_display->item()), std::make_tuple(0u, 0u, 0u));
}

TEST_F(FenceOutlineItem, FollowsTheProjectThatIsOpened)
{
    m_fence->set(glm::dvec3(0.0), 0.5);
    project->clear();
    ASSERT_TRUE(m_display->item());
    EXPECT_EQ(m_display->item()->getNodePointsCount(), 0);
    Fence3dItem* element = Fence3dItem::find(project->getModel());
    std::static_pointer_cast<SphereFence>(element->getCreateFence(Fence3DObject::SphereFence))
        ->setFence(glm::dvec3(0.0), 0.25);
    element->notifyObservers();
    EXPECT_EQ(m_display->item()->getNodePointsCount(), 2);
    EXPECT_TRUE(isNode(draw().pixel(125, 100)));
}

TEST_F(FenceOutlineItem, MayOutliveItsSceneAndItsElement)
{
    m_fence->set(glm::dvec3(0.0), 0.5);
    Fence3dDisplay other(*scene);
    scene.reset();
    EXPECT_EQ(other.item(), nullptr);
    EXPECT_EQ(m_display->item(), nullptr);
    debug.reset();
    CProject empty;
    Scene3d bare(empty.getModel(), nullptr);
    EXPECT_EQ(Fence3dDisplay(bare).item(), nullptr);
}

TEST_F(FenceOutlineItem, IsInItsPlaceAfterTheSceneHasRecentredItself)
{
    const glm::dvec3 at(2.7e6, 1.2e6, 400.0);
    m_fence->set(at, 100.0);
    CModelElementManager* manager = project->getModel()->getCreateItemManager(TestElement::Type);
    CGraphics3dExtension::registerElementType<TestElement, TestGraphicsItem>(TestElement::Type, scene.get());
    auto element = std::make_unique<TestElement>();
    element->box = gmx::BoundingBox(at - 500.0, at + 500.0);
    manager->addItem(std::move(element));
    scene->resetBounds();
    ASSERT_LE(std::abs(scene->mapFromModel(at).x), 1000.0);

    const double half = glm::length(glm::dvec3(scene->modelToSceneTransform()[0])) * 200.0; // scene units
    PaintContext context = paintContext(200, 200);
    const glm::dvec3 middle = scene->mapFromModel(at);
    context.view = glm::mat4(glm::translate(glm::scale(glm::dmat4(1.0), glm::dvec3(1.0 / half)), -middle));
    const QImage image = drawFrame(context);
    for (const QPoint pixel : {QPoint(100, 50), QPoint(50, 100), QPoint(100, 150)})
        EXPECT_TRUE(isLine(image.pixel(pixel)) || isLine(image.pixel(pixel - QPoint(1, 1))))
            << pixel.x() << "," << pixel.y();
    EXPECT_TRUE(isNode(image.pixel(150, 100)));
}
