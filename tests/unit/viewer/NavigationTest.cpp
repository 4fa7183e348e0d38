#include <viewer/window/Navigation.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

const QSizeF viewSize(800.0, 600.0);
const gmx::BoundingBox space({-100, -100, -100}, {100, 100, 100});

/// The pixel, origin top left, at which a point is shown.
glm::dvec2 pixelOf(const Viewpoint& viewpoint, const glm::dvec3& point)
{
    const glm::dvec4 clip = viewpoint.projectionMatrix(space, viewSize, 1.0) *
                            viewpoint.camera().getViewMatrix() * glm::dvec4(point, 1.0);
    return {(clip.x / clip.w + 1.0) / 2.0 * viewSize.width(),
            (1.0 - clip.y / clip.w) / 2.0 * viewSize.height()};
}

void expectNear(const glm::dvec2& actual, const glm::dvec2& expected, double tolerance = 1e-6)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

class Navigation : public ::testing::TestWithParam<IProjection::Projection>
{
protected:
    Viewpoint viewpoint = Viewpoint::looking({20, -60, 30}, {0, 0, 0}, {0, 0, 1}, GetParam(), viewSize);
    const glm::dvec3 anchor{10, 5, -3};
};

} // namespace

TEST_P(Navigation, ZoomKeepsThePointUnderTheCursor)
{
    const glm::dvec2 before = pixelOf(viewpoint, anchor);
    navigation::zoom(viewpoint, anchor, before, 0.5, viewSize);
    expectNear(pixelOf(viewpoint, anchor), before);
    navigation::zoom(viewpoint, anchor, before, 3.0, viewSize);
    expectNear(pixelOf(viewpoint, anchor), before);
}

TEST_P(Navigation, ZoomByHalfShowsTheAnchorTwiceAsLarge)
{
    const glm::dvec3 beside = anchor + 0.001 * viewpoint.camera().getUpVector();
    const double before = glm::distance(pixelOf(viewpoint, anchor), pixelOf(viewpoint, beside));
    navigation::zoom(viewpoint, anchor, pixelOf(viewpoint, anchor), 0.5, viewSize);
    const double after = glm::distance(pixelOf(viewpoint, anchor), pixelOf(viewpoint, beside));
    EXPECT_NEAR(after / before, 2.0, 1e-6);
}

TEST_P(Navigation, ZoomInAndOutComesBack)
{
    const glm::dvec2 pixel = pixelOf(viewpoint, anchor);
    const glm::dvec3 eye = viewpoint.camera().getPosition();
    navigation::zoom(viewpoint, anchor, pixel, 0.25, viewSize);
    navigation::zoom(viewpoint, anchor, pixel, 4.0, viewSize);
    EXPECT_NEAR(glm::distance(viewpoint.camera().getPosition(), eye), 0.0, 1e-9);
}

TEST_P(Navigation, OrbitKeepsItsCentreOnTheScreen)
{
    const glm::dvec2 before = pixelOf(viewpoint, anchor);
    navigation::orbit(viewpoint, anchor, 0.4, 0.2);
    expectNear(pixelOf(viewpoint, anchor), before);
}

TEST_P(Navigation, OrbitLeavesTheVerticalUpright)
{
    navigation::orbit(viewpoint, anchor, 1.1, -0.3);
    EXPECT_EQ(viewpoint.camera().getUp(), glm::dvec3(0, 0, 1));
}

TEST_P(Navigation, OrbitFromTheTopViewKeepsItsCentre)
{
    viewpoint = Viewpoint::fitting(space, standardViewDirection(StandardView::Top), GetParam(), viewSize);
    const glm::dvec2 before = pixelOf(viewpoint, anchor);
    navigation::orbit(viewpoint, anchor, 0.3, 0.4);
    expectNear(pixelOf(viewpoint, anchor), before, 1e-3);
}

TEST_P(Navigation, PanLetsThePointFollowTheCursor)
{
    const glm::dvec2 before = pixelOf(viewpoint, anchor);
    navigation::pan(viewpoint, {35.0, -20.0}, viewpoint.depthOf(anchor), viewSize);
    expectNear(pixelOf(viewpoint, anchor), before + glm::dvec2(35.0, -20.0));
}

TEST_P(Navigation, ZoomAtTheEyeItselfChangesNothingForTheWorse)
{
    navigation::zoom(viewpoint, viewpoint.camera().getPosition(), {400, 300}, 0.5, viewSize);
    EXPECT_TRUE(std::isfinite(viewpoint.camera().getDirection().x));
}

// However far the wheel is turned, the way back in is no longer than the way out.
TEST_P(Navigation, ZoomOutEnds)
{
    for (int i = 0; i < 1000; ++i)
        navigation::zoom(viewpoint, anchor, {400, 300}, 2.0, viewSize);
    EXPECT_LE(glm::distance(viewpoint.camera().getPosition(), anchor), 1.1e6);
    EXPECT_LE(viewpoint.unitsPerPixel(viewpoint.depthOf(anchor), viewSize), 1.1e9);
    navigation::zoom(viewpoint, anchor, {400, 300}, 0.5, viewSize);
    EXPECT_LT(viewpoint.isParallel() ? viewpoint.projection().getZoom()
                                     : glm::distance(viewpoint.camera().getPosition(), anchor),
              viewpoint.isParallel() ? 0.6e9 : 0.6e6);
}

INSTANTIATE_TEST_SUITE_P(Both, Navigation, ::testing::Values(IProjection::Central, IProjection::Parallel));
