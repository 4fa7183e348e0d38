// Whether any part of a primitive lies in a fence, and the boxes that save asking every edge.
#include "FenceShapes.h"

#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/fences/fence_inner_box.h>

#include <algorithm>
#include <limits>

namespace {

/// Whether one of many places of the hull lies in the fence.
template <typename Fence>
bool reachesSample(const Fence& fence, const std::vector<glm::dvec3>& corners, int steps)
{
    for (int a = 0; a <= steps; ++a)
        for (int b = 0; a + b <= steps; ++b) {
            glm::dvec3 at = corners[0];
            if (corners.size() > 1) at += double(a) / steps * (corners[1] - corners[0]);
            if (corners.size() > 2) at += double(b) / steps * (corners[2] - corners[0]);
            if (fence.contains(at)) return true;
        }
    return false;
}

/// Random primitives about a fence: what samples find must be found, and what has samples far from it only
/// must not.
template <typename Fence, typename Larger>
void expectOverlap(Dice& dice, const Fence& fence, const Larger& larger, double reach, int& found,
                   int& missed)
{
    for (int k = 0; k < 60; ++k) {
        std::vector<glm::dvec3> corners;
        const glm::dvec3 about = dice.point(-reach, reach);
        for (int i = dice.between(1, 3); i > 0; --i)
            corners.push_back(about + dice.point(-reach, reach));
        const bool answer = fence.reaches(corners);
        EXPECT_TRUE(answer || !reachesSample(fence, corners, 24));
        EXPECT_TRUE(!answer || reachesSample(larger, corners, 24));
        ++(answer ? found : missed);
    }
}

TEST(FenceOverlap, OfRandomPrimitivesIsThatOfTheirPlaces)
{
    Dice dice(3);
    int found = 0, missed = 0;
    for (int i = 0; i < 60; ++i) {
        const Frame frame = Frame::random(dice, dice.point(-2.0, 2.0));
        SphereFence sphere, largerSphere;
        const double radius = dice.between(0.5, 4.0);
        sphere.setFence(frame.eye, radius);
        largerSphere.setFence(frame.eye, radius + 1.2);
        expectOverlap(dice, sphere, largerSphere, 5.0, found, missed);

        // a box about the polygon, widened, holds what the fence reaches
        Frame lower = frame;
        lower.eye -= 1.2 * frame.look;
        const Ring ring = randomRing(dice, 5, 3.0);
        const double height = dice.oneIn(3) ? 0.0 : 4.0;
        expectOverlap(dice, prism(frame, ring, height),
                      prism(lower, square(9.0), height == 0.0 ? 0.0 : height + 2.4), 5.0, found, missed);
        Frame back = frame;
        back.eye -= 4.0 * frame.look;
        expectOverlap(dice, frustum(back, ring, 2.0, 7.0, 0.5), frustum(back, square(9.0), 0.8, 8.2, 0.5),
                      5.0, found, missed);
    }
    std::printf("%d primitives reach their fence, %d do not\n", found, missed);
    EXPECT_GT(std::min(found, missed), 1000);
}

TEST(FenceOverlap, NeedsNoCornerInside)
{
    Frame frame;
    const Prism3D box = prism(frame, square(1.0), 2.0);
    EXPECT_TRUE(box.reaches({{-9, -9, 1}, {9, -9, 1}, {0, 9, 1}})); // around it
    EXPECT_TRUE(box.reaches({{-9, 0, 1}, {9, 0, 1}}));              // through it
    EXPECT_TRUE(box.reaches({{0, 0, -9}, {0, 0, 9}}));              // along it
    EXPECT_TRUE(box.reaches({{0, 0, 1}}));
    EXPECT_FALSE(box.reaches({{-9, 0, 2.1}, {9, 0, 2.1}}));
    EXPECT_FALSE(box.reaches({{-9, 1.1, 1}, {9, 1.1, 1}}));
    EXPECT_FALSE(box.reaches({{1.1, 0, 1}}));
    EXPECT_FALSE(box.reaches({{-9, 0, 3}, {9, 0, 3}, {0, 9, 3}}));
    // one end before the base, one behind the top, and outside of the polygon between them
    EXPECT_FALSE(box.reaches({{-4, 0, -1}, {-1.5, 0, 3}}));
    SphereFence sphere;
    sphere.setFence({0, 0, 0}, 1.0);
    EXPECT_TRUE(sphere.reaches({{-9, -9, 0.9}, {9, -9, 0.9}, {0, 9, 0.9}}));
    EXPECT_FALSE(sphere.reaches({{-9, -9, 1.1}, {9, -9, 1.1}, {0, 9, 1.1}}));
    EXPECT_TRUE(sphere.reaches({{-9, 0.9, 0}, {9, 0.9, 0}}));
    EXPECT_FALSE(sphere.reaches({{-9, 1.1, 0}, {9, 1.1, 0}}));
    EXPECT_FALSE(sphere.reaches({{2, 0.9, 0}, {9, 0.9, 0}}));
}

TEST(FenceOverlap, OfAFrustumStartsBeforeTheEye)
{
    Frame frame;
    const Frustum3D open = frustum(frame, square(1.0), 0.0, 0.0, 1.0);
    EXPECT_TRUE(open.reaches({{0, 0, -5}, {0, 0, 5}}));
    EXPECT_FALSE(open.reaches({{0, 0, -5}, {0, 0, -1}}));
    EXPECT_FALSE(open.reaches({{3, 0, -5}, {3, 0, 1}}));
    EXPECT_TRUE(open.reaches({{3, 0, -5}, {3, 0, 4}}));
}

TEST(FenceOverlap, EmptyFencesAndOddCornersReachNothing)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(Prism3D().reaches({{0, 0, 0}}));
    EXPECT_FALSE(Frustum3D().reaches({{0, 0, 0}}));
    SphereFence sphere;
    sphere.setFence({0, 0, 0}, -1.0);
    EXPECT_FALSE(sphere.reaches({{0, 0, 0}}));
    sphere.setFence({nan, 0, 0}, 1.0);
    EXPECT_FALSE(sphere.reaches({{0, 0, 0}}));
    sphere.setFence({0, 0, 0}, 1.0);
    EXPECT_FALSE(sphere.reaches({{0, 0, 0}, {nan, 0, 0}}));
    Frame frame;
    EXPECT_FALSE(prism(frame, square(1.0), 1.0).reaches({{nan, 0, 0}}));
}

bool isEmptyBox(const FenceBox& box)
{
    return !(box.low.x < box.high.x && box.low.y < box.high.y);
}

std::vector<glm::vec2> polygonOf(const Ring& ring)
{
    return {ring.begin(), ring.end()};
}

TEST(FenceInnerBox, LiesInThePolygonAsAWhole)
{
    Dice dice(8);
    Frame frame;
    int boxes = 0;
    for (int i = 0; i < 300; ++i) {
        const double half = std::pow(10.0, dice.between(-3, 3));
        const Ring ring = randomRing(dice, dice.between(3, 20), half);
        const FenceBox box = fenceInnerBox(polygonOf(ring));
        if (isEmptyBox(box)) continue;
        ++boxes;
        const Prism3D polygon = prism(frame, ring, 0.0);
        for (int a = 0; a <= 20; ++a)
            for (int b = 0; b <= 20; ++b) {
                const glm::dvec2 at =
                    glm::mix(glm::dvec2(box.low), glm::dvec2(box.high), glm::dvec2(a / 20.0, b / 20.0));
                ASSERT_TRUE(polygon.contains({at.x, at.y, 0.0})) << i;
            }
    }
    std::printf("%d of 300 polygons hold a box\n", boxes);
    EXPECT_GT(boxes, 200);
}

TEST(FenceInnerBox, IsLarge)
{
    const FenceBox ofSquare = fenceInnerBox(polygonOf(square(2.0, {1.0, -3.0})));
    EXPECT_NEAR(ofSquare.low.x, -1.0f, 0.3f);
    EXPECT_NEAR(ofSquare.high.x, 3.0f, 0.3f);
    EXPECT_NEAR(ofSquare.low.y, -5.0f, 0.3f);
    EXPECT_NEAR(ofSquare.high.y, -1.0f, 0.3f);
    const FenceBox outer = fenceOuterBox(polygonOf(square(2.0, {1.0, -3.0})));
    EXPECT_EQ(outer.low, glm::vec2(-1.0f, -5.0f));
    EXPECT_EQ(outer.high, glm::vec2(3.0f, -1.0f));
}

TEST(FenceInnerBox, OfNoAreaIsEmpty)
{
    EXPECT_TRUE(isEmptyBox(fenceInnerBox({})));
    EXPECT_TRUE(isEmptyBox(fenceOuterBox({})));
    EXPECT_TRUE(isEmptyBox(fenceInnerBox({{0, 0}, {1, 1}, {2, 2}, {0, 0}})));
    EXPECT_TRUE(isEmptyBox(fenceInnerBox({{1, 0}, {1, 1}, {1, 2}, {1, 0}})));
    EXPECT_TRUE(isEmptyBox(fenceInnerBox({{1, 1}, {1, 1}, {1, 1}, {1, 1}})));
    const float huge = std::numeric_limits<float>::max();
    EXPECT_TRUE(isEmptyBox(fenceInnerBox({{-huge, -huge}, {huge, -huge}, {huge, huge}, {-huge, -huge}})));
}

} // namespace
