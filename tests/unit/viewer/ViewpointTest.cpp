#include <viewer/Viewpoint.h>

#include <gtest/gtest.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

namespace {

const QSizeF wide(1600.0, 900.0);

/// Normalised device coordinates of a point.
glm::dvec3 project(const Viewpoint& viewpoint, const glm::dmat4& projection, const glm::dvec3& point)
{
    const glm::dvec4 clip = projection * viewpoint.camera().getViewMatrix() * glm::dvec4(point, 1.0);
    return glm::dvec3(clip) / clip.w;
}

struct Extent
{
    glm::dvec3 low{1e9}, high{-1e9};
};

Extent extentOf(const Viewpoint& viewpoint, const gmx::BoundingBox& box, const QSizeF& size)
{
    const glm::dmat4 projection = viewpoint.projectionMatrix(box, size, 1.0);
    Extent extent;
    for (const glm::dvec3& corner : box.getCorners()) {
        const glm::dvec3 place = project(viewpoint, projection, corner);
        extent.low = glm::min(extent.low, place);
        extent.high = glm::max(extent.high, place);
    }
    return extent;
}

} // namespace

class FittingView : public ::testing::TestWithParam<std::tuple<int, int>>
{
};

// Everything is inside, and along one axis hardly anything is left free.
TEST_P(FittingView, HoldsTheWholeBoxAndNoMore)
{
    const auto view = static_cast<StandardView>(std::get<0>(GetParam()));
    const auto type = static_cast<IProjection::Projection>(std::get<1>(GetParam()));
    for (const gmx::BoundingBox& box :
         {gmx::BoundingBox({-500, -300, -20}, {500, 300, 60}), gmx::BoundingBox({10, 20, 30}, {11, 21, 31}),
          gmx::BoundingBox({0, 0, 0}, {1e-3, 2e-3, 1e-3}), gmx::BoundingBox({-1, -1, 0}, {1, 1, 0})}) {
        const Viewpoint viewpoint = Viewpoint::fitting(box, standardViewDirection(view), type, wide);
        const Extent extent = extentOf(viewpoint, box, wide);
        const bool isEdgeOn = box.getSize().z == 0.0 && view >= StandardView::Front;
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_GE(extent.low[axis], -1.0001) << axis;
            EXPECT_LE(extent.high[axis], 1.0001) << axis;
        }
        const double filled = std::max(extent.high.x - extent.low.x, extent.high.y - extent.low.y) / 2.0;
        EXPECT_GT(filled, isEdgeOn ? 0.5 : 0.9);
        EXPECT_GT(viewpoint.depthOf(box.getCenter()), 0.0);
    }
}

INSTANTIATE_TEST_SUITE_P(Viewpoint, FittingView,
                         ::testing::Combine(::testing::Range(0, 7), ::testing::Range(0, 2)));

TEST(Viewpoint, FrontLooksNorthWithTheEastToTheRight)
{
    const gmx::BoundingBox box({-1, -1, -1}, {1, 1, 1});
    const Viewpoint viewpoint =
        Viewpoint::fitting(box, standardViewDirection(StandardView::Front), IProjection::Parallel, wide);
    const glm::dmat4 projection = viewpoint.projectionMatrix(box, wide, 1.0);
    EXPECT_GT(project(viewpoint, projection, {1, 0, 0}).x, 0.1);
    EXPECT_GT(project(viewpoint, projection, {0, 0, 1}).y, 0.1);
    EXPECT_LT(project(viewpoint, projection, {0, -1, 0}).z, project(viewpoint, projection, {0, 1, 0}).z);
}

// Seen from there, this is to the right and this is near.
TEST(Viewpoint, BackLeftAndRightLookFromWhereTheySay)
{
    const gmx::BoundingBox box({-1, -1, -1}, {1, 1, 1});
    for (const auto& [view, right, nearest] :
         {std::tuple(StandardView::Back, glm::dvec3(-1, 0, 0), glm::dvec3(0, 1, 0)),
          {StandardView::Left, glm::dvec3(0, -1, 0), glm::dvec3(-1, 0, 0)},
          {StandardView::Right, glm::dvec3(0, 1, 0), glm::dvec3(1, 0, 0)}}) {
        const Viewpoint viewpoint =
            Viewpoint::fitting(box, standardViewDirection(view), IProjection::Parallel, wide);
        const glm::dmat4 projection = viewpoint.projectionMatrix(box, wide, 1.0);
        EXPECT_GT(project(viewpoint, projection, right).x, 0.1) << static_cast<int>(view);
        EXPECT_GT(project(viewpoint, projection, {0, 0, 1}).y, 0.1);
        EXPECT_LT(project(viewpoint, projection, nearest).z, project(viewpoint, projection, -nearest).z);
    }
}

TEST(Viewpoint, TopHasTheNorthUp)
{
    const gmx::BoundingBox box({-1, -1, -1}, {1, 1, 1});
    const Viewpoint viewpoint =
        Viewpoint::fitting(box, standardViewDirection(StandardView::Top), IProjection::Parallel, wide);
    const glm::dmat4 projection = viewpoint.projectionMatrix(box, wide, 1.0);
    EXPECT_GT(project(viewpoint, projection, {0, 1, 0}).y, 0.1);
    EXPECT_GT(project(viewpoint, projection, {1, 0, 0}).x, 0.1);
    EXPECT_LT(project(viewpoint, projection, {0, 0, 1}).z, project(viewpoint, projection, {0, 0, -1}).z);
}

// At 45 degrees of view a picture is 2 * d * tan(22.5 degrees) high at the distance d.
TEST(Viewpoint, PixelOfACentralViewGrowsWithTheDepth)
{
    const Viewpoint viewpoint =
        Viewpoint::looking({0, 0, 0}, {0, 10, 0}, {0, 0, 1}, IProjection::Central, QSizeF(100, 100));
    EXPECT_NEAR(viewpoint.unitsPerPixel(10.0, QSizeF(100, 100)), 2.0 * 10.0 * std::tan(M_PI / 8.0) / 100.0,
                1e-12);
    EXPECT_NEAR(viewpoint.unitsPerPixel(20.0, QSizeF(100, 100)), 4.0 * 10.0 * std::tan(M_PI / 8.0) / 100.0,
                1e-12);
}

// At f of view a picture is 2 * d * tan(f / 2) high at the distance d.
TEST(Viewpoint, FieldOfViewIsTheOneAskedFor)
{
    for (const double fov : {0.01, 0.5, 1.2, 1.55, 1.7, 2.96}) {
        const Viewpoint looking =
            Viewpoint::looking({0, 0, 0}, {0, 10, 0}, {0, 0, 1}, IProjection::Central, wide, fov);
        EXPECT_NEAR(looking.unitsPerPixel(10.0, wide), 20.0 * std::tan(fov / 2.0) / wide.height(), 1e-12);
        const gmx::BoundingBox box({-5, -3, -2}, {5, 3, 6});
        // a view so wide that it holds all from the nearest corner on is not to be filled
        const StandardView view = fov < 1.6 ? StandardView::Iso : StandardView::Front;
        const Viewpoint fitting =
            Viewpoint::fitting(box, standardViewDirection(view), IProjection::Central, wide, fov);
        const Extent extent = extentOf(fitting, box, wide);
        EXPECT_LE(std::max({extent.high.x, extent.high.y, -extent.low.x, -extent.low.y}), 1.0001) << fov;
        EXPECT_GT(std::max(extent.high.x - extent.low.x, extent.high.y - extent.low.y), 1.8) << fov;
    }
}

TEST(Viewpoint, PointAtAPixelIsShownAtThePixel)
{
    for (const auto type : {IProjection::Central, IProjection::Parallel}) {
        const Viewpoint viewpoint = Viewpoint::looking({5, -7, 3}, {1, 2, 0}, {0, 0, 1}, type, wide);
        const glm::dvec3 point = viewpoint.pointAt({400.0, 600.0}, 8.0, wide);
        const glm::dmat4 projection =
            viewpoint.projectionMatrix(gmx::BoundingBox({-9, -9, -9}, {9, 9, 9}), wide, 1.0);
        const glm::dvec3 place = project(viewpoint, projection, point);
        EXPECT_NEAR((place.x + 1.0) / 2.0 * wide.width(), 400.0, 1e-9);
        EXPECT_NEAR((1.0 - place.y) / 2.0 * wide.height(), 600.0, 1e-9);
        EXPECT_NEAR(viewpoint.depthOf(point), 8.0, 1e-12);
    }
}

TEST(Viewpoint, ChangingTheProjectionKeepsTheSizeOfWhatIsLookedAt)
{
    const glm::dvec3 target(4, 8, 1);
    Viewpoint viewpoint = Viewpoint::looking({0, 0, 5}, target, {0, 0, 1}, IProjection::Central, wide);
    const double unit = viewpoint.unitsPerPixel(viewpoint.depthOf(target), wide);
    viewpoint.setProjectionType(IProjection::Parallel, wide);
    EXPECT_NEAR(viewpoint.unitsPerPixel(0.0, wide), unit, 1e-12);
    viewpoint.setProjectionType(IProjection::Central, wide);
    EXPECT_NEAR(viewpoint.unitsPerPixel(viewpoint.depthOf(target), wide), unit, 1e-12);
}

TEST(Viewpoint, TransformKeepsThePicture)
{
    const glm::dmat4 matrix = glm::scale(glm::dmat4(1.0), glm::dvec3(5.0)) *
                              glm::translate(glm::dmat4(1.0), glm::dvec3(-2.7e6, -1.2e6, -400.0));
    const glm::dvec3 origin(2.7e6, 1.2e6, 400.0);
    for (const auto type : {IProjection::Central, IProjection::Parallel}) {
        const Viewpoint before =
            Viewpoint::looking(origin + glm::dvec3(30, -40, 20), origin, {0, 0, 1}, type, wide);
        const Viewpoint after = before.transformed(matrix);
        EXPECT_EQ(after.camera().getPosition(), glm::dvec3(150, -200, 100));
        EXPECT_NEAR(glm::distance(after.camera().getView(), glm::dvec3(0)), 0.0, 1e-9);
        EXPECT_NEAR(after.unitsPerPixel(5.0, wide), 5.0 * before.unitsPerPixel(1.0, wide), 1e-9);
        EXPECT_NEAR(glm::length(after.camera().getUp()), 1.0, 1e-12);
    }
}

TEST(Viewpoint, NearPlaneStaysBeforeAnEyeTenMillimetresAway)
{
    const gmx::BoundingBox box({-500, -500, -500}, {500, 500, 500});
    const Viewpoint viewpoint =
        Viewpoint::looking({0, 0, 0}, {0, 0.01, 0}, {0, 0, 1}, IProjection::Central, wide);
    const glm::dmat4 projection = viewpoint.projectionMatrix(box, wide, 1.0);
    EXPECT_GT(project(viewpoint, projection, {0, 0.01, 0}).z, -1.0);
    EXPECT_LT(project(viewpoint, projection, {0, 499, 0}).z, 1.0);
}

TEST(Viewpoint, EyeOutsideTheBoxGetsTheWholeDepthForIt)
{
    const gmx::BoundingBox box({-1, 999, -1}, {1, 1001, 1});
    const Viewpoint viewpoint =
        Viewpoint::looking({0, 0, 0}, {0, 1000, 0}, {0, 0, 1}, IProjection::Central, wide);
    const glm::dmat4 projection = viewpoint.projectionMatrix(box, wide, 1.0);
    EXPECT_LT(project(viewpoint, projection, {0, 999, 0}).z, -0.9);
    EXPECT_GT(project(viewpoint, projection, {0, 1001, 0}).z, 0.9);
}

TEST(Viewpoint, CopiesHaveProjectionsOfTheirOwn)
{
    const Viewpoint original =
        Viewpoint::looking({0, 0, 5}, {0, 8, 0}, {0, 0, 1}, IProjection::Parallel, wide);
    Viewpoint copy(original);
    copy.projection().setZoom(17.0);
    EXPECT_NE(original.projection().getZoom(), 17.0);
}
