#include "CameraChecks.h"

#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <string>

namespace {

using glm::dvec3;
using reference::Vector;

/// One operation of the camera and what it does, written out; both get an amount and a point.
struct Motion
{
    std::string name;
    std::function<void(CCamera&, double, const dvec3&)> camera;
    std::function<void(reference::Camera&, double, const Vector&)> expected;
};

void PrintTo(const Motion& motion, std::ostream* out)
{
    *out << motion.name;
}

const Motion moveStraight{"moveStraight", [](CCamera& c, double s, const dvec3&) { c.moveStraight(s); },
                          [](reference::Camera& r, double s, const Vector&) {
                              r.move(reference::times(s, reference::unit(r.direction())));
                          }};
const Motion zoom{"zoomCamera", [](CCamera& c, double s, const dvec3&) { c.zoomCamera(s); },
                  moveStraight.expected};
const Motion zoomToTarget{"zoomCameraToTarget",
                          [](CCamera& c, double s, const dvec3& p) { c.zoomCamera(s, p); },
                          [](reference::Camera& r, double s, const Vector& p) {
                              r.move(reference::times(s, reference::unit(reference::minus(p, r.position))));
                          }};
const Motion moveAside{
    "moveAside", [](CCamera& c, double s, const dvec3&) { c.moveAside(s); },
    [](reference::Camera& r, double s, const Vector&) { r.move(reference::times(-s, r.left())); }};
const Motion moveUp{
    "moveUp", [](CCamera& c, double s, const dvec3&) { c.moveUp(s); },
    [](reference::Camera& r, double s, const Vector&) { r.move(reference::times(s, r.upright())); }};
const Motion rotateX{"rotateCameraX", [](CCamera& c, double a, const dvec3&) { c.rotateCameraX(a); },
                     [](reference::Camera& r, double a, const Vector&) { r.rotate(a, r.direction()); }};
const Motion rotateY{"rotateCameraY", [](CCamera& c, double a, const dvec3&) { c.rotateCameraY(a); },
                     [](reference::Camera& r, double a, const Vector&) { r.rotate(a, r.left()); }};
const Motion rotateZ{"rotateCameraZ", [](CCamera& c, double a, const dvec3&) { c.rotateCameraZ(a); },
                     [](reference::Camera& r, double a, const Vector&) { r.rotate(a, r.upright()); }};
const Motion rotatePosition{"rotatePosition", [](CCamera& c, double a, const dvec3&) { c.rotatePosition(a); },
                            [](reference::Camera& r, double a, const Vector&) {
                                r.rotate(a, {0.0, 0.0, 1.0});
                            }};
const Motion orbitX{"rotateOrbitCameraX",
                    [](CCamera& c, double a, const dvec3& p) { c.rotateOrbitCameraX(a, p); },
                    [](reference::Camera& r, double a, const Vector& p) { r.orbit(a, r.direction(), p); }};
const Motion orbitY{"rotateOrbitCameraY",
                    [](CCamera& c, double a, const dvec3& p) { c.rotateOrbitCameraY(a, p); },
                    [](reference::Camera& r, double a, const Vector& p) { r.orbit(a, r.left(), p); }};
const Motion orbitZ{"rotateOrbitCameraZ",
                    [](CCamera& c, double a, const dvec3& p) { c.rotateOrbitCameraZ(a, p); },
                    [](reference::Camera& r, double a, const Vector& p) { r.orbit(a, r.upright(), p); }};
const Motion strafe{"strafeCamera", [](CCamera& c, double a, const dvec3&) { c.strafeCamera(a); },
                    [](reference::Camera& r, double a, const Vector&) {
                        if (r.allowsPitch(a)) r.rotate(a, r.pitchAxis());
                    }};

class CCameraMotion : public ::testing::TestWithParam<Motion>
{
};

TEST_P(CCameraMotion, FollowsItsFormula)
{
    reference::RandomCameras cameras;
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        CCamera camera = cameras.next();
        const double amount = cameras.number(-3.0, 3.0);
        const Vector point = cameras.point(100.0);
        reference::Camera expected = reference::of(camera);
        GetParam().expected(expected, amount, point);
        GetParam().camera(camera, amount, reference::toGlm(point));
        expectNear(camera, expected);
    }
}

TEST_P(CCameraMotion, LeavesScaleAndSpeedsAlone)
{
    CCamera camera;
    camera.setDefaultCamera();
    camera.setScale({2.0, 3.0, 4.0});
    camera.multCamSpeed(7.0);
    camera.multRotateSpeed(2.0);
    GetParam().camera(camera, 0.5, dvec3(1.0, 2.0, 3.0));
    EXPECT_EQ(camera.getScale(), dvec3(2.0, 3.0, 4.0));
    EXPECT_EQ(camera.getCamSpeed(), 7.0);
    EXPECT_EQ(camera.getRotateSpeed(), 0.1);
}

INSTANTIATE_TEST_SUITE_P(All, CCameraMotion,
                         ::testing::Values(moveStraight, zoom, zoomToTarget, moveAside, moveUp, rotateX,
                                           rotateY, rotateZ, rotatePosition, orbitX, orbitY, orbitZ, strafe),
                         [](const auto& instance) { return instance.param.name; });

class CCameraOrbit : public ::testing::TestWithParam<Motion>
{
};

TEST_P(CCameraOrbit, CenterWithANaNLeavesTheCameraUnchanged)
{
    reference::RandomCameras cameras;
    const CCamera before = cameras.next();
    for (int component = 0; component < 3; ++component) {
        SCOPED_TRACE(component);
        CCamera camera = before;
        dvec3 center(1.0, 2.0, 3.0);
        center[component] = std::numeric_limits<double>::quiet_NaN();
        GetParam().camera(camera, 0.5, center);
        expectSame(camera, before);
    }
}

TEST_P(CCameraOrbit, KeepsTheDistanceToTheCenter)
{
    reference::RandomCameras cameras;
    for (int i = 0; i < 50; ++i) {
        CCamera camera = cameras.next();
        const dvec3 center = reference::toGlm(cameras.point(100.0));
        const double distance = glm::distance(camera.getPosition(), center);
        GetParam().camera(camera, cameras.number(-3.0, 3.0), center);
        EXPECT_NEAR(glm::distance(camera.getPosition(), center), distance, cameraTolerance);
    }
}

INSTANTIATE_TEST_SUITE_P(All, CCameraOrbit, ::testing::Values(orbitX, orbitY, orbitZ),
                         [](const auto& instance) { return instance.param.name; });

TEST(CCameraMoves, MoveAsideGoesToTheLeft)
{
    CCamera camera;
    camera.setDefaultCamera();
    camera.moveAside(1.0);
    expectNear(camera.getPosition(), {-1.0, 0.0, 1.5}, 1e-15);
    expectNear(camera.getView(), {-1.0, 8.0, 1.5}, 1e-15);
}

TEST(CCameraMoves, ZoomToATargetKeepsTheDirection)
{
    CCamera camera;
    camera.setPositionCamera({0.0, 0.0, 0.0}, {0.0, 10.0, 0.0}, {0.0, 0.0, 1.0});
    camera.zoomCamera(5.0, {3.0, 0.0, 4.0}); // 5 units away
    expectNear(camera.getPosition(), {3.0, 0.0, 4.0}, 1e-14);
    expectNear(camera.getView(), {3.0, 10.0, 4.0}, 1e-14);
}

TEST(CCameraMoves, RollTurnsTheUpVectorByTheRightHandRule)
{
    CCamera camera;
    camera.setPositionCamera({0.0, 0.0, 0.0}, {0.0, 2.0, 0.0}, {0.0, 0.0, 5.0});
    camera.rotateCameraX(1.5707963267948966); // z goes to x about y
    expectNear(camera.getView(), {0.0, 2.0, 0.0}, 1e-15);
    expectNear(camera.getUp(), {1.0, 0.0, 0.0}, 1e-15);
}

TEST(CCameraMoves, TurnAboutTheVerticalIsCounterclockwiseFromAbove)
{
    CCamera camera;
    camera.setPositionCamera({1.0, 1.0, 1.0}, {1.0, 3.0, 1.0}, {0.0, 0.0, 1.0});
    camera.rotatePosition(1.5707963267948966);
    expectNear(camera.getPosition(), {1.0, 1.0, 1.0}, 0.0);
    expectNear(camera.getView(), {-1.0, 1.0, 1.0}, 1e-15);
}

} // namespace
