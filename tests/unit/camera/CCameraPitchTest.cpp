#include "CameraChecks.h"

#include <limits>

namespace {

using glm::dvec3;
using reference::Vector;

constexpr double rightAngle = 1.5707963267948966;

CCamera cameraLooking(const dvec3& direction)
{
    CCamera camera;
    camera.setPositionCamera({3.0, 4.0, 5.0}, dvec3(3.0, 4.0, 5.0) + direction, {0.0, 0.0, 3.0});
    return camera;
}

TEST(CCameraPitch, QuarterTurnFromALevelViewIsRefused)
{
    const CCamera before = cameraLooking({0.0, 2.0, 0.0});
    CCamera camera = before;
    camera.strafeCamera(rightAngle);
    expectSame(camera, before);
    camera.strafeCamera(-rightAngle);
    expectSame(camera, before);
}

TEST(CCameraPitch, StepOntoTheLimitIsRefusedAndOneJustBelowIsTaken)
{
    const CCamera before = cameraLooking({0.0, 2.0, 0.0});
    CCamera camera = before;
    camera.strafeCamera(reference::pitchLimit);
    expectSame(camera, before);
    camera.strafeCamera(reference::pitchLimit - 1e-9);
    expectNear(camera.getView(), {3.0, 4.0 + 2.0 * std::cos(reference::pitchLimit - 1e-9), 7.0}, 1e-12);
}

TEST(CCameraPitch, StepBackFromBeyondTheLimitIsTaken)
{
    CCamera camera = cameraLooking({0.0, 0.0, 2.0}); // straight up
    camera.strafeCamera(-0.1);
    expectNear(camera.getView(), {3.0, 4.0 + 2.0 * std::sin(0.1), 5.0 + 2.0 * std::cos(0.1)}, 1e-14);

    camera = cameraLooking({0.0, 0.0, -2.0}); // straight down
    camera.strafeCamera(0.1);
    expectNear(camera.getView(), {3.0, 4.0 + 2.0 * std::sin(0.1), 5.0 - 2.0 * std::cos(0.1)}, 1e-14);
}

TEST(CCameraPitch, StepBackThatStaysBeyondTheLimitIsTaken)
{
    CCamera camera = cameraLooking({0.0, 0.0, 2.0});
    camera.strafeCamera(-5e-8); // the limit lies 1.2e-7 below the vertical
    EXPECT_NEAR(camera.getView().y - 4.0, 2.0 * 5e-8, 1e-14);
}

TEST(CCameraPitch, StepFurtherBeyondTheLimitIsRefused)
{
    const CCamera before = cameraLooking({0.0, 0.0, 2.0});
    CCamera camera = before;
    camera.strafeCamera(0.1);
    expectSame(camera, before);
    camera.strafeCamera(0.0); // does not bring it nearer either
    expectSame(camera, before);
}

TEST(CCameraPitch, PositiveStepRaisesTheDirection)
{
    reference::RandomCameras cameras;
    for (int i = 0; i < 100; ++i) {
        CCamera camera = cameras.next();
        const double elevation = reference::of(camera).elevation();
        if (std::abs(elevation) > 1.0) continue;
        camera.strafeCamera(0.3);
        EXPECT_NEAR(reference::of(camera).elevation(), elevation + 0.3, 1e-12);
    }
}

TEST(CCameraPitch, DirectionOfNoLengthIsLeftAlone)
{
    CCamera camera;
    camera.setPositionCamera({1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}, {0.0, 0.0, 1.0});
    const CCamera before = camera;
    camera.strafeCamera(0.1);
    expectSame(camera, before);
}

TEST(CCameraPitch, HorizontalAxisFallsBackToX)
{
    // The horizontal part overflows to infinity, so that its axis has no length.
    CCamera camera;
    const double large = 1e200;
    camera.setPositionCamera({0.0, 0.0, 0.0}, {large, 0.0, 0.0}, {0.0, 0.0, 1.0});
    camera.strafeCamera(0.5);
    expectNear(camera.getUp(), {0.0, -std::sin(0.5), std::cos(0.5)}, 1e-14);
}

/// The orbit about the centre, for directions that are not vertical.
reference::Camera orbited(reference::Camera camera, double yaw, double pitch)
{
    Vector position = reference::minus(camera.position, camera.center);
    Vector view = reference::minus(camera.view, camera.center);
    if (camera.allowsPitch(pitch)) {
        const Vector axis = camera.pitchAxis();
        position = reference::turned(position, pitch, axis);
        view = reference::turned(view, pitch, axis);
    }
    const Vector vertical{0.0, 0.0, 1.0};
    camera.position = reference::plus(reference::turned(position, yaw, vertical), camera.center);
    camera.view = reference::plus(reference::turned(view, yaw, vertical), camera.center);
    return camera;
}

TEST(CCameraRotateAroundCenter, FollowsItsFormula)
{
    reference::RandomCameras cameras;
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        CCamera camera = cameras.next();
        const double yaw = cameras.number(-3.0, 3.0);
        const double pitch = cameras.number(-3.0, 3.0);
        const reference::Camera before = reference::of(camera);
        if (!before.allowsPitch(pitch)) ++refused;
        camera.rotateAroundCenter(yaw, pitch);
        expectNear(camera, orbited(before, yaw, pitch));
    }
    EXPECT_GT(refused, 50);
    EXPECT_LT(refused, 250);
}

TEST(CCameraRotateAroundCenter, NeverChangesTheUpVector)
{
    reference::RandomCameras cameras;
    for (int i = 0; i < 50; ++i) {
        CCamera camera = cameras.next();
        const dvec3 up = camera.getUp();
        camera.rotateAroundCenter(cameras.number(-3.0, 3.0), cameras.number(-1.0, 1.0));
        EXPECT_EQ(camera.getUp(), up);
    }
}

TEST(CCameraRotateAroundCenter, RefusedPitchStillTurnsByTheYaw)
{
    CCamera camera(0.0, 0.0, 0.0);
    camera.setPositionCamera({0.0, -10.0, 2.0}, {0.0, 0.0, 2.0}, {0.0, 0.0, 1.0});
    camera.rotateAroundCenter(rightAngle, rightAngle);
    expectNear(camera.getPosition(), {10.0, 0.0, 2.0}, 1e-14);
    expectNear(camera.getView(), {0.0, 0.0, 2.0}, 1e-14);
}

TEST(CCameraRotateAroundCenter, VerticalDirectionComesOntoTheVerticalThroughTheCenter)
{
    CCamera camera(1.0, 2.0, 3.0);
    camera.setPositionCamera({30.0, 40.0, 5.0}, {30.0, 40.0, 9.0}, {0.0, 1.0, 0.0});
    camera.rotateAroundCenter(0.0, 0.0);
    expectNear(camera.getPosition(), {1.0, 2.0, 5.0}, 1e-15);
    expectNear(camera.getView(), {1.0, 2.01, 9.0}, 1e-15);
    EXPECT_NEAR(camera.getView().y - camera.getCenter().y, 0.01, 1e-15);
}

TEST(CCameraRotateAroundCenter, VerticalDirectionTurnsByTheYawAfterwards)
{
    CCamera camera(0.0, 0.0, 0.0);
    camera.setPositionCamera({3.0, 4.0, 9.0}, {3.0, 4.0, 5.0}, {0.0, 1.0, 0.0});
    camera.rotateAroundCenter(rightAngle, 0.0);
    expectNear(camera.getPosition(), {0.0, 0.0, 9.0}, 1e-15);
    expectNear(camera.getView(), {-0.01, 0.0, 5.0}, 1e-15);
}

TEST(CCameraRotateAroundCenter, VerticalDirectionIsPitchedBeforeItComesOntoTheVertical)
{
    CCamera camera(0.0, 0.0, 0.0);
    camera.setPositionCamera({0.0, 2.0, 9.0}, {0.0, 2.0, 5.0}, {0.0, 1.0, 0.0});
    camera.rotateAroundCenter(0.0, 0.1); // about x: z' = y sin a + z cos a
    expectNear(camera.getPosition(), {0.0, 0.0, 2.0 * std::sin(0.1) + 9.0 * std::cos(0.1)}, 1e-14);
    expectNear(camera.getView(), {0.0, 0.01, 2.0 * std::sin(0.1) + 5.0 * std::cos(0.1)}, 1e-14);
}

TEST(CCameraRotateAroundCenter, DirectionCountsAsVerticalBelowTheSinglePrecisionEpsilon)
{
    const double epsilon = 1.1920928955078125e-7;
    CCamera camera(0.0, 0.0, 0.0);
    camera.setPositionCamera({0.0, 0.0, 0.0}, {epsilon / 2.0, epsilon / 2.0, 1.0}, {0.0, 1.0, 0.0});
    camera.rotateAroundCenter(0.0, 0.0); // |x| + |y| is the epsilon: not below it
    EXPECT_EQ(camera.getView(), dvec3(epsilon / 2.0, epsilon / 2.0, 1.0));
    camera.setPositionCamera({0.0, 0.0, 0.0}, {epsilon / 2.0, epsilon / 4.0, 1.0}, {0.0, 1.0, 0.0});
    camera.rotateAroundCenter(0.0, 0.0);
    EXPECT_EQ(camera.getView(), dvec3(0.0, 0.01, 1.0));
}

} // namespace
