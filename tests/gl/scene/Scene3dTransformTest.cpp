#include "tests/support/LogTrap.h"
#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"

#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QCoreApplication>
#include <QtTest/QSignalSpy>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <random>

namespace {

const QString refused = QStringLiteral("Invalid world to scene transformation");

class Scene3dTransformTest : public SceneTest
{
protected:
    // An element's box in model coordinates; the item follows the scene's transform.
    TestGraphicsItem* add(const glm::dvec3& min, const glm::dvec3& max)
    {
        elements.push_back(std::make_unique<TestElement>());
        elements.back()->box = gmx::BoundingBox(min, max);
        auto* item = new TestGraphicsItemWithId(elements.back().get(), static_cast<LONGID>(elements.size()));
        scene->addElement(item);
        return item;
    }

    class TestGraphicsItemWithId : public TestGraphicsItem
    {
    public:
        TestGraphicsItemWithId(TestElement* element, LONGID itemId)
            : TestGraphicsItem(element)
            , m_itemId(itemId)
        {
        }
        LONGID getId() const override { return m_itemId; }

    private:
        LONGID m_itemId;
    };

    std::vector<std::unique_ptr<TestElement>> elements;
};

void expectBox(const gmx::BoundingBox& box, const glm::dvec3& min, const glm::dvec3& max, double tolerance)
{
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(box.getMin()[axis], min[axis], tolerance) << axis;
        EXPECT_NEAR(box.getMax()[axis], max[axis], tolerance) << axis;
    }
}

TEST_F(Scene3dTransformTest, StartsWithTheUnitBoxAndTheIdentity)
{
    Scene3d fresh(nullptr, nullptr);
    EXPECT_EQ(fresh.getMin(), glm::dvec3(0.0));
    EXPECT_EQ(fresh.getMax(), glm::dvec3(1.0));
    EXPECT_EQ(fresh.modelToSceneTransform(), glm::dmat4(1.0));
    EXPECT_EQ(fresh.sceneToModelTransform(), glm::dmat4(1.0));
}

TEST_F(Scene3dTransformTest, WithoutItemsTheBoundsAreTheUnitBoxAroundTheOrigin)
{
    scene->resetBounds();
    expectBox(scene->getBounds(), glm::dvec3(-0.5), glm::dvec3(0.5), 0.0);
    EXPECT_EQ(scene->getCenter(), glm::dvec3(0.0));
}

TEST_F(Scene3dTransformTest, ASceneNearTheOriginNeedsNoCorrection)
{
    QSignalSpy changed(scene.get(), &Scene3d::modelToSceneTransformChanged);
    add(glm::dvec3(0.0), glm::dvec3(10.0));
    scene->resetBounds();
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(scene->modelToSceneTransform(), glm::dmat4(1.0));
    expectBox(scene->getBounds(), glm::dvec3(0.0), glm::dvec3(10.0), 0.0);
}

TEST_F(Scene3dTransformTest, LargeCoordinatesAreCentredAndScaledToTheLimit)
{
    QSignalSpy changed(scene.get(), &Scene3d::modelToSceneTransformChanged);
    add(glm::dvec3(600000, 5000000, 100), glm::dvec3(600400, 5000200, 150));
    ASSERT_EQ(changed.count(), 1);
    // Largest extent 400, centre (600200, 5000100, 125): p -> (p - c) * 2.5.
    expectBox(scene->getBounds(), glm::dvec3(-500, -250, -62.5), glm::dvec3(500, 250, 62.5), 1e-6);
    const auto correction = changed[0][0].value<glm::dmat4>();
    glm::dmat4 expected(1.0);
    expected[0][0] = expected[1][1] = expected[2][2] = 2.5;
    expected[3] = glm::dvec4(-600200 * 2.5, -5000100 * 2.5, -125 * 2.5, 1.0);
    EXPECT_EQ(correction, expected);
    EXPECT_EQ(scene->modelToSceneTransform(), expected);
    const glm::dvec3 mapped = scene->mapFromModel(glm::dvec3(600400, 5000100, 125));
    EXPECT_NEAR(mapped.x, 500.0, 1e-6);
    EXPECT_NEAR(mapped.y, 0.0, 1e-6);
}

TEST_F(Scene3dTransformTest, ASmallObjectFarFromTheOriginIsRecentred)
{
    add(glm::dvec3(4.5, -0.5, -0.5), glm::dvec3(5.5, 0.5, 0.5));
    expectBox(scene->getBounds(), glm::dvec3(-500), glm::dvec3(500), 1e-9);
}

TEST_F(Scene3dTransformTest, ASinglePointFarAwayCountsAsOneUnit)
{
    add(glm::dvec3(700000, 0, 0), glm::dvec3(700000, 0, 0));
    EXPECT_DOUBLE_EQ(scene->modelToSceneTransform()[0][0], 1000.0);
    EXPECT_NEAR(scene->mapFromModel(glm::dvec3(700000, 0, 0)).x, 0.0, 1e-6);
}

TEST_F(Scene3dTransformTest, AReturnTripKeepsThePoint)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> extents(0.01, 2000.0), places(-6e6, 6e6), share(0.0, 1.0);
    for (int round = 0; round < 200; ++round) {
        const glm::dvec3 min(places(random), places(random), places(random));
        const glm::dvec3 size(extents(random), extents(random), extents(random));
        const double largest = std::max({size.x, size.y, size.z});
        glm::dmat4 matrix = glm::scale(glm::dmat4(1.0), glm::dvec3(1000.0 / largest));
        matrix = matrix * glm::translate(glm::dmat4(1.0), -(min + size * 0.5));
        scene->setModelToSceneTransform(matrix);
        for (int i = 0; i < 20; ++i) {
            const glm::dvec3 p = min + size * glm::dvec3(share(random), share(random), share(random));
            const glm::dvec3 back = scene->mapToModel(scene->mapFromModel(p));
            for (int axis = 0; axis < 3; ++axis) {
                const double step = std::nextafter(std::abs(p[axis]), 1e300) - std::abs(p[axis]);
                EXPECT_LE(std::abs(back[axis] - p[axis]), std::max(1e-9 * largest, 4 * step));
            }
        }
    }
}

TEST_F(Scene3dTransformTest, MatricesWithABadFirstElementAreRefused)
{
    const double tooSmall = std::nextafter(1.1754943508222875e-38, 0.0);
    const double tooLarge = std::nextafter(3.4028234663852886e38, 1e300);
    QSignalSpy views(scene.get(), &Scene3d::updateView);
    for (const double first : {0.0, -1.0, tooSmall, tooLarge, std::nan(""), HUGE_VAL}) {
        glm::dmat4 matrix(1.0);
        matrix[0][0] = first;
        matrix[3][0] = 5.0;
        scene->setModelToSceneTransform(matrix);
        EXPECT_EQ(LogTrap::take(), QStringList{refused}) << first;
        EXPECT_EQ(scene->modelToSceneTransform(), glm::dmat4(1.0));
    }
    EXPECT_EQ(views.count(), 0);
    for (const double first : {1.1754943508222875e-38, 3.4028234663852886e38}) {
        glm::dmat4 matrix(1.0);
        matrix[0][0] = first;
        scene->setModelToSceneTransform(matrix);
        EXPECT_EQ(scene->modelToSceneTransform(), matrix);
    }
    EXPECT_EQ(views.count(), 2);
}

TEST_F(Scene3dTransformTest, ANewTransformUpdatesAllItems)
{
    TestGraphicsItem* item = add(glm::dvec3(0.0), glm::dvec3(10.0));
    const int before = item->updates;
    scene->setModelToSceneTransform(glm::scale(glm::dmat4(1.0), glm::dvec3(2.0)));
    EXPECT_EQ(item->updates, before + 1);
    QCoreApplication::processEvents();
    expectBox(scene->getBounds(), glm::dvec3(0.0), glm::dvec3(20.0), 0.0);
}

TEST_F(Scene3dTransformTest, ACorrectionThatIsRefusedChangesNothingAtAll)
{
    auto local = std::make_unique<TestItem>();
    TestItem* raw = local.get();
    scene->addLocalItem(std::move(local));
    QSignalSpy changed(scene.get(), &Scene3d::modelToSceneTransformChanged);
    TestGraphicsItem* item = add(glm::dvec3(0.0), glm::dvec3(1.0));
    // A matrix that mirrors x is accepted by nobody; the scene cannot multiply a correction onto a tiny scale
    // either.
    glm::dmat4 tiny(1.0);
    tiny[0][0] = 1.2e-38;
    scene->setModelToSceneTransform(tiny);
    item->fixedBox = gmx::BoundingBox(glm::dvec3(-1e6), glm::dvec3(1e6)); // would be scaled by 1/2000
    const glm::dmat4 before = scene->modelToSceneTransform();
    scene->resetBounds();
    EXPECT_EQ(LogTrap::take(), QStringList{refused});
    EXPECT_EQ(scene->modelToSceneTransform(), before);
    EXPECT_EQ(raw->getTransform(), glm::mat4(1.0f));
    EXPECT_EQ(changed.count(), 0);
    expectBox(scene->getBounds(), glm::dvec3(-1e6), glm::dvec3(1e6), 0.0);
}

TEST_F(Scene3dTransformTest, LocalItemsMoveWithTheCorrection)
{
    auto local = std::make_unique<TestItem>();
    TestItem* raw = local.get();
    raw->setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(2000, 0, 0)), false);
    scene->addLocalItem(std::move(local));
    add(glm::dvec3(1000, -1000, 0), glm::dvec3(3000, 1000, 0));
    // Centre (2000, 0, 0), extent 2000: the local item's point goes to the origin.
    EXPECT_EQ(raw->getTransform() * glm::vec4(0, 0, 0, 1), glm::vec4(0, 0, 0, 1));
    EXPECT_EQ(raw->getTransform() * glm::vec4(1000, 0, 0, 1), glm::vec4(500, 0, 0, 1));
}

TEST_F(Scene3dTransformTest, ResetBoundsKeepsAtLeastOneUnitPerAxis)
{
    add(glm::dvec3(-5, 0, 0), glm::dvec3(5, 0.2, 0));
    scene->resetBounds();
    expectBox(scene->getBounds(), glm::dvec3(-5, -0.4, -0.5), glm::dvec3(5, 0.6, 0.5), 1e-12);
}

TEST_F(Scene3dTransformTest, HiddenItemsDoNotCount)
{
    add(glm::dvec3(0.0), glm::dvec3(10.0));
    TestGraphicsItem* hidden = add(glm::dvec3(0.0), glm::dvec3(20.0));
    hidden->setVisible(false);
    scene->resetBounds();
    expectBox(scene->getBounds(), glm::dvec3(0.0), glm::dvec3(10.0), 0.0);
}

TEST_F(Scene3dTransformTest, BoundsOfWhatReachesAPlane)
{
    add(glm::dvec3(0, 0, 0), glm::dvec3(1, 1, 1));
    add(glm::dvec3(0, 0, 4), glm::dvec3(1, 1, 5));
    TestGraphicsItem* hidden = add(glm::dvec3(0, 0, 0), glm::dvec3(9, 9, 9));
    hidden->setVisible(false);
    const auto planeAt = [](double z) { return glm::translate(glm::dmat4(1.0), glm::dvec3(0, 0, -z)); };
    EXPECT_TRUE(scene->getBoundingBoxByPlane(planeAt(3), 0.5).isNull());
    expectBox(scene->getBoundingBoxByPlane(planeAt(3), 1.0), glm::dvec3(0, 0, 4), glm::dvec3(1, 1, 5), 0.0);
    expectBox(scene->getBoundingBoxByPlane(planeAt(1), 0.0), glm::dvec3(0), glm::dvec3(1), 0.0);
    expectBox(scene->getBoundingBoxByPlane(planeAt(2.5), 2.0), glm::dvec3(0), glm::dvec3(1, 1, 5), 0.0);
}

TEST(Scene3dDepth, SplitsTheDepthRangeAtTheForeground)
{
    EXPECT_DOUBLE_EQ(Scene3d::depthValueToFrustumZ(0.0f), -1.0);
    EXPECT_NEAR(Scene3d::depthValueToFrustumZ(0.0005f), 0.0, 1e-7);
    EXPECT_NEAR(Scene3d::depthValueToFrustumZ(0.001f), -1.0, 1e-6);
    EXPECT_DOUBLE_EQ(Scene3d::depthValueToFrustumZ(1.0f), 1.0);
    EXPECT_NEAR(Scene3d::depthValueToFrustumZ(0.5005f), 0.0, 1e-7);
    EXPECT_EQ(Scene3d::maxCoordsLimit(), 1000.0);
    EXPECT_EQ(Scene3d::getForegroundItemsZRange(), 0.001);
}

} // namespace
