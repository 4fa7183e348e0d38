#include "CameraChecks.h"

#include <type_traits>

namespace {

using glm::dvec3;

CCamera defaultCamera()
{
    CCamera camera;
    camera.setDefaultCamera();
    return camera;
}

TEST(CCamera, StartsWithZeroVectorsAndTheStatedFactors)
{
    const CCamera camera;
    EXPECT_EQ(camera.getPosition(), dvec3(0.0));
    EXPECT_EQ(camera.getView(), dvec3(0.0));
    EXPECT_EQ(camera.getUp(), dvec3(0.0));
    EXPECT_EQ(camera.getCenter(), dvec3(0.0));
    EXPECT_EQ(camera.getScale(), dvec3(1.0));
    EXPECT_EQ(camera.getCamSpeed(), 1.0);
    EXPECT_EQ(camera.getRotateSpeed(), 0.05);
}

TEST(CCamera, TakesItsCenterFromTheConstructor)
{
    const CCamera camera(1.0, -2.0, 3.5);
    EXPECT_EQ(camera.getCenter(), dvec3(1.0, -2.0, 3.5));
    EXPECT_EQ(camera.getPosition(), dvec3(0.0));
}

TEST(CCamera, HasNoDirectionBeforeItIsSet)
{
    const dvec3 direction = CCamera().getDirection();
    EXPECT_TRUE(std::isnan(direction.x) && std::isnan(direction.y) && std::isnan(direction.z));
}

TEST(CCamera, IsAPlainValue)
{
    EXPECT_FALSE(std::is_polymorphic_v<CCamera>);
    EXPECT_TRUE(std::is_copy_constructible_v<CCamera> && std::is_copy_assignable_v<CCamera>);
    EXPECT_TRUE(std::is_move_constructible_v<CCamera> && std::is_move_assignable_v<CCamera>);
    EXPECT_EQ(sizeof(CCamera), 19 * sizeof(double));
}

TEST(CCamera, SetsAndGivesItsValues)
{
    CCamera camera;
    camera.setCenter({1.0, 2.0, 3.0});
    camera.setScale({4.0, 5.0, 6.0});
    camera.setPositionCamera({7.0, 8.0, 9.0}, {10.0, 11.0, 12.0}, {0.0, 3.0, 4.0});
    EXPECT_EQ(camera.getCenter(), dvec3(1.0, 2.0, 3.0));
    EXPECT_EQ(camera.getScale(), dvec3(4.0, 5.0, 6.0));
    EXPECT_EQ(camera.getPosition(), dvec3(7.0, 8.0, 9.0));
    EXPECT_EQ(camera.getView(), dvec3(10.0, 11.0, 12.0));
    EXPECT_EQ(camera.getUp(), dvec3(0.0, 3.0, 4.0)); // not normalised
}

TEST(CCamera, SwapsItsOwnPoints)
{
    CCamera camera = defaultCamera();
    camera.setPositionCamera(camera.getView(), camera.getPosition(), camera.getUp());
    EXPECT_EQ(camera.getPosition(), dvec3(0.0, 8.0, 1.5));
    EXPECT_EQ(camera.getView(), dvec3(0.0, 0.0, 1.5));
}

TEST(CCamera, MultipliesItsSpeeds)
{
    CCamera camera;
    camera.multCamSpeed(3.0);
    camera.multCamSpeed(-2.0);
    camera.multRotateSpeed(4.0);
    EXPECT_EQ(camera.getCamSpeed(), -6.0);
    EXPECT_EQ(camera.getRotateSpeed(), 0.2);
}

TEST(CCamera, SpeedThatBecameZeroStaysZero)
{
    CCamera camera;
    camera.multCamSpeed(0.0);
    camera.multCamSpeed(1e300);
    camera.setDefaultCamera();
    EXPECT_EQ(camera.getCamSpeed(), 0.0);
    camera = CCamera();
    EXPECT_EQ(camera.getCamSpeed(), 1.0);
}

TEST(CCamera, DefaultCameraIsExact)
{
    const CCamera camera = defaultCamera();
    EXPECT_EQ(camera.getPosition(), dvec3(0.0, 0.0, 1.5));
    EXPECT_EQ(camera.getView(), dvec3(0.0, 8.0, 1.5));
    EXPECT_EQ(camera.getUp(), dvec3(0.0, 1e-9, 1.0));
}

TEST(CCamera, DefaultCameraKeepsScaleCenterAndSpeeds)
{
    CCamera camera(1.0, 2.0, 3.0);
    camera.setScale({2.0, 3.0, 4.0});
    camera.multCamSpeed(5.0);
    camera.multRotateSpeed(2.0);
    camera.setDefaultCamera();
    EXPECT_EQ(camera.getCenter(), dvec3(1.0, 2.0, 3.0));
    EXPECT_EQ(camera.getScale(), dvec3(2.0, 3.0, 4.0));
    EXPECT_EQ(camera.getCamSpeed(), 5.0);
    EXPECT_EQ(camera.getRotateSpeed(), 0.1);
}

TEST(CCamera, DefaultCameraLooksAlongY)
{
    EXPECT_EQ(defaultCamera().getDirection(), dvec3(0.0, 1.0, 0.0));
    EXPECT_EQ(defaultCamera().getStraightVector(), dvec3(0.0, 1.0, 0.0));
}

TEST(CCamera, LeftVectorOfTheDefaultCameraPointsToTheRight)
{
    expectNear(defaultCamera().getLeftVector(), {1.0, 0.0, 0.0}, 1e-15);
    expectNear(defaultCamera().getUpVector(), {0.0, 0.0, 1.0}, 1e-15);
}

TEST(CCamera, DerivedVectorsFollowTheirFormulas)
{
    reference::RandomCameras cameras;
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        const CCamera camera = cameras.next();
        const reference::Camera expected = reference::of(camera);
        expectNear(camera.getDirection(), reference::unit(expected.direction()), 1e-13);
        expectNear(camera.getStraightVector(), reference::unit(expected.direction()), 1e-13);
        expectNear(camera.getLeftVector(), expected.left(), 1e-12);
        expectNear(camera.getUpVector(), expected.upright(), 1e-12);
    }
}

/// Look-at rows s, u, -f with their translations, the third column stretched.
void expectViewMatrix(const CCamera& camera, double stretch)
{
    const reference::Camera c = reference::of(camera);
    const reference::Vector f = reference::unit(c.direction());
    const reference::Vector s = reference::unit(reference::cross(f, c.up));
    const reference::Vector u = reference::cross(s, f);
    const std::array<reference::Vector, 3> rows{s, u, reference::times(-1.0, f)};
    const glm::dmat4 m = camera.getViewMatrix();
    for (int row = 0; row < 3; ++row) {
        const reference::Vector& r = rows[static_cast<std::size_t>(row)];
        EXPECT_NEAR(m[0][row], r[0], 1e-12);
        EXPECT_NEAR(m[1][row], r[1], 1e-12);
        EXPECT_NEAR(m[2][row], r[2] * stretch, 1e-12);
        EXPECT_NEAR(m[3][row], -reference::dot(r, c.position), cameraTolerance);
    }
    for (int column = 0; column < 4; ++column)
        EXPECT_EQ(m[column][3], column == 3 ? 1.0 : 0.0);
}

TEST(CCamera, ViewMatrixIsTheLookAtMatrix)
{
    reference::RandomCameras cameras;
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        expectViewMatrix(cameras.next(), 1.0);
    }
}

TEST(CCamera, OnlyTheScaleAlongZEntersTheViewMatrix)
{
    reference::RandomCameras cameras;
    for (int i = 0; i < 20; ++i) {
        SCOPED_TRACE(i);
        CCamera camera = cameras.next();
        camera.setScale({5.0, 7.0, 2.0});
        expectViewMatrix(camera, 2.0);
    }
}

TEST(CCamera, ViewMatrixOfTheDefaultCamera)
{
    // Eye 1.5 above the origin, looking along y: x stays, z becomes up, y becomes -z.
    const glm::dvec4 p = defaultCamera().getViewMatrix() * glm::dvec4(3.0, 10.0, 2.0, 1.0);
    expectNear(dvec3(p), {3.0, 0.5, -10.0}, 1e-7);
}

} // namespace
