#include <Viewer3dModule/fences/fence_outline.h>

#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/PrismFence.h>
#include <Viewer3dModule/fences/SphereFence.h>

#include <glm/gtc/matrix_transform.hpp>

#include <gtest/gtest.h>

#include <limits>

// The lines and the points that show a fence, and the dragging of the points.

namespace {

const glm::dvec3 base(2'700'000.0, 1'200'000.0, 400.0);

/// A square of side 2 about the base, swept upwards.
PrismFence makePrism(double height)
{
    const auto corner = [](double x, double y) { return base + glm::dvec3(x, y, 0.0); };
    PrismFence prism;
    prism.prism().setFence({}, {0.0, 0.0, 1.0}, 0.0, 0.0, height,
                           {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1), corner(-1, -1)});
    return prism;
}

/// Looks from the base along +x, with a square as high as the field of view of 90 degrees.
Frustum3D makeFrustum(double zNear, double zFar)
{
    const glm::dvec3 forward(1.0, 0.0, 0.0);
    const glm::dmat4 frame = glm::scale(glm::dmat4(1.0), glm::dvec3(1.0, 1.0, -1.0)) *
                             glm::lookAt(base, base + forward, glm::dvec3(0.0, 0.0, 1.0));
    const auto corner = [](double y, double z) { return base + glm::dvec3(1.0, y, z); };
    Frustum3D frustum;
    frustum.setFence(base, forward, 1.0, zNear, zFar,
                     {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1), corner(-1, -1)}, frame);
    return frustum;
}

SphereFence makeSphere(double radius)
{
    SphereFence sphere;
    sphere.setFence(base, radius);
    return sphere;
}

void expectOutlinePoint(const glm::dvec3& point, const glm::dvec3& expected)
{
    EXPECT_LT(glm::distance(point, expected), 1e-6)
        << point.x - base.x << " " << point.y - base.y << " " << point.z - base.z;
}

} // namespace

TEST(FenceOutline, SphereHasThreeGreatCircles)
{
    const auto strips = fence_outline::strips(makeSphere(3.0), 1.0);
    ASSERT_EQ(strips.size(), 3u);
    for (int axis = 0; axis < 3; ++axis) {
        const fence_outline::Strip& circle = strips[static_cast<std::size_t>(axis)];
        EXPECT_GT(circle.size(), 48u);
        EXPECT_EQ(circle.front(), circle.back());
        for (const glm::dvec3& point : circle) {
            EXPECT_NEAR(glm::distance(point, base), 3.0, 1e-6);
            EXPECT_NEAR(point[axis], base[axis], 1e-6); // in the plane across its axis
        }
    }
}

TEST(FenceOutline, SweptPolygonHasBothOutlinesAndEdges)
{
    for (const auto& strips :
         {fence_outline::strips(makePrism(5.0), 1.0), fence_outline::strips(makeFrustum(2.0, 6.0), 1.0)}) {
        ASSERT_EQ(strips.size(), 2u + 4u);
        EXPECT_EQ(strips[0].size(), 5u);
        EXPECT_EQ(strips[1].size(), 5u);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ(strips[2 + i], fence_outline::Strip({strips[0][i], strips[1][i]}));
    }
    const auto prism = fence_outline::strips(makePrism(5.0), 1.0);
    expectOutlinePoint(prism[0][2], base + glm::dvec3(1.0, 1.0, 0.0));
    expectOutlinePoint(prism[1][2], base + glm::dvec3(1.0, 1.0, 5.0));
    const auto frustum = fence_outline::strips(makeFrustum(2.0, 6.0), 1.0);
    expectOutlinePoint(frustum[0][2], base + glm::dvec3(2.0, 2.0, 2.0));
    expectOutlinePoint(frustum[1][2], base + glm::dvec3(6.0, 6.0, 6.0));
}

TEST(FenceOutline, FenceWithoutEndHasEdgesOfTheGivenLength)
{
    const auto prism = fence_outline::strips(makePrism(0.0), 50.0);
    ASSERT_EQ(prism.size(), 1u + 4u);
    expectOutlinePoint(prism[1][1], base + glm::dvec3(-1.0, -1.0, 50.0));
    const auto frustum = fence_outline::strips(makeFrustum(2.0, 0.0), 50.0);
    ASSERT_EQ(frustum.size(), 1u + 4u);
    expectOutlinePoint(frustum[1][1], base + glm::dvec3(52.0, -52.0, -52.0));
    EXPECT_EQ(fence_outline::nodes(makePrism(0.0)).size(), 1u);
    EXPECT_EQ(fence_outline::nodes(makeFrustum(2.0, 0.0)).size(), 1u);
}

TEST(FenceOutline, PolygonOfManyPointsHasFewEdges)
{
    std::vector<glm::dvec3> ring;
    for (int i = 0; i < 10'000; ++i)
        ring.push_back(base + glm::dvec3(std::cos(i * 2e-4 * 3.14159), std::sin(i * 2e-4 * 3.14159), 0.0));
    ring.push_back(ring.front());
    PrismFence fence;
    fence.prism().setFence({}, {0.0, 0.0, 1.0}, 0.0, 0.0, 1.0, ring);
    const auto strips = fence_outline::strips(fence, 1.0);
    EXPECT_EQ(strips[0].size(), 10'001u);
    EXPECT_LE(strips.size(), 2u + 48u);
    EXPECT_GE(strips.size(), 2u + 24u);
}

TEST(FenceOutline, NothingShowsAnEmptyFenceOrOneThatIsNotFinite)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    SphereFence empty, infinite;
    empty.setFence(glm::dvec3(nan), 1.0);
    infinite.setFence(base, std::numeric_limits<double>::infinity());
    const PrismFence prism;
    const Frustum3D frustum;
    for (const Fence3DObject* fence :
         std::initializer_list<const Fence3DObject*>{&empty, &infinite, &prism, &frustum}) {
        EXPECT_TRUE(fence_outline::strips(*fence, 1.0).empty());
        EXPECT_TRUE(fence_outline::nodes(*fence).empty());
        EXPECT_FALSE(fence_outline::lineOf(*fence, 0));
    }
}

// --- nodes

TEST(FenceNodes, LieInTheMiddleOfEndPlanesAndOnSpheres)
{
    const auto prism = fence_outline::nodes(makePrism(5.0));
    ASSERT_EQ(prism.size(), 2u);
    expectOutlinePoint(prism[0], base);
    expectOutlinePoint(prism[1], base + glm::dvec3(0.0, 0.0, 5.0));
    const auto sphere = fence_outline::nodes(makeSphere(3.0));
    ASSERT_EQ(sphere.size(), 2u);
    EXPECT_EQ(sphere[0], base);
    EXPECT_EQ(sphere[1], base + glm::dvec3(3.0, 0.0, 0.0));
}

TEST(FenceNodes, OfPlanesStayOnTheirLine)
{
    PrismFence prism = makePrism(5.0);
    const auto line = fence_outline::lineOf(prism, 1);
    ASSERT_TRUE(line);
    EXPECT_NEAR(glm::length(glm::cross(line->second - line->first, glm::dvec3(0.0, 0.0, 1.0))), 0.0, 1e-6);
    EXPECT_EQ(fence_outline::moveNode(prism, 1, base + glm::dvec3(30.0, -20.0, 8.0)), 1u);
    EXPECT_NEAR(prism.prism().zFar(), 8.0, 1e-6);
    expectOutlinePoint(fence_outline::nodes(prism)[0], base); // not moved sideways
    EXPECT_EQ(fence_outline::moveNode(prism, 0, base + glm::dvec3(7.0, 7.0, 3.0)), 0u);
    EXPECT_NEAR(prism.prism().zFar(), 5.0, 1e-6);
    expectOutlinePoint(fence_outline::nodes(prism)[0], base + glm::dvec3(0.0, 0.0, 3.0));

    Frustum3D frustum = makeFrustum(2.0, 6.0);
    EXPECT_EQ(fence_outline::moveNode(frustum, 1, base + glm::dvec3(9.0, 4.0, 4.0)), 1u);
    EXPECT_NEAR(frustum.zFar(), 9.0, 1e-6);
    EXPECT_NEAR(frustum.zNear(), 2.0, 1e-6);
}

TEST(FenceNodes, KeepTheMouseWhenPlanesPassEachOther)
{
    PrismFence prism = makePrism(5.0);
    EXPECT_EQ(fence_outline::moveNode(prism, 0, base + glm::dvec3(0.0, 0.0, 7.0)), 1u);
    expectOutlinePoint(fence_outline::nodes(prism)[1], base + glm::dvec3(0.0, 0.0, 7.0));
    expectOutlinePoint(fence_outline::nodes(prism)[0], base + glm::dvec3(0.0, 0.0, 5.0));
    Frustum3D frustum = makeFrustum(2.0, 6.0);
    EXPECT_EQ(fence_outline::moveNode(frustum, 1, base + glm::dvec3(1.0, 0.0, 0.0)), 0u);
    EXPECT_NEAR(frustum.zNear(), 1.0, 1e-6);
    EXPECT_NEAR(frustum.zFar(), 2.0, 1e-6);
}

TEST(FenceNodes, OfSpheresGoAnywhere)
{
    SphereFence sphere = makeSphere(3.0);
    EXPECT_FALSE(fence_outline::lineOf(sphere, 0));
    EXPECT_EQ(fence_outline::moveNode(sphere, 0, base + glm::dvec3(1.0, 2.0, 3.0)), 0u);
    EXPECT_EQ(sphere.getCenter(), base + glm::dvec3(1.0, 2.0, 3.0));
    EXPECT_EQ(sphere.getRadius(), 3.0);
    EXPECT_EQ(fence_outline::moveNode(sphere, 1, sphere.getCenter() + glm::dvec3(0.0, -4.0, 3.0)), 1u);
    EXPECT_EQ(sphere.getRadius(), 5.0);
}

TEST(FenceNodes, DoNotGoWhereNoFenceCanBe)
{
    SphereFence sphere = makeSphere(3.0);
    fence_outline::moveNode(sphere, 1, base); // of radius 0
    fence_outline::moveNode(sphere, 0, glm::dvec3(std::numeric_limits<double>::quiet_NaN()));
    fence_outline::moveNode(sphere, 2, base + glm::dvec3(9.0));
    EXPECT_EQ(sphere.getCenter(), base);
    EXPECT_EQ(sphere.getRadius(), 3.0);
}
