// Fences as the host sees them, in the frame of the scene.
#include "FenceShapes.h"

#include <framework/gmx/IFence3D.h>

namespace {

/// As the scene maps its model: about a centre, and so small that it lies within some hundred units.
glm::dmat4 modelToScene(const glm::dvec3& center, double scale)
{
    return {{scale, 0.0, 0.0, 0.0}, {0.0, scale, 0.0, 0.0}, {0.0, 0.0, scale, 0.0}, {-scale * center, 1.0}};
}

glm::dmat4 randomTransform(Dice& dice, const glm::dvec3& center)
{
    glm::dmat4 m = modelToScene(center, dice.between(0.1, 10.0));
    if (dice.oneIn(3)) m = Frame::random(dice, dice.point(-5.0, 5.0)).fromWorld() * m;
    if (dice.oneIn(3)) m[2] *= dice.between(1.0, 8.0); // heights exaggerated
    return m;
}

/// Points about the box: what is in the fence, asked in the scene, is in the fence of the model and in the
/// box.
template <typename Fence>
void compare(Dice& dice, const Fence& fence, const glm::dmat4& transform, int& points, int& inside)
{
    const std::shared_ptr<gmx::IFence3D> inScene = fence.getIFence3D(transform);
    const std::optional<gmx::BoundingBox> box = inScene->getBoundingBox();
    ASSERT_TRUE(box && box->isValid());
    const glm::dmat4 sceneToModel = glm::inverse(transform);
    for (int i = 0; i < 200; ++i) {
        glm::dvec3 point = box->getCenter() + 0.6 * box->getSize() * dice.point(-1.0, 1.0);
        if (dice.oneIn(2)) point = glm::clamp(point, box->getMin(), box->getMax()); // on its sides
        const bool answer = inScene->contains(point);
        EXPECT_EQ(answer, fence.contains(glm::dvec3(sceneToModel * glm::dvec4(point, 1.0))));
        EXPECT_TRUE(!answer || box->contains(point));
        ++points;
        inside += answer;
    }
}

TEST(IFence3D, AnswersInTheSceneAsTheFenceDoesInTheModel)
{
    Dice dice(1);
    int points = 0, inside = 0;
    for (int i = 0; i < 200; ++i) {
        const glm::dvec3 at = i % 2 ? farAway : dice.point(-5.0, 5.0);
        const Frame frame = Frame::random(dice, at);
        const glm::dmat4 transform = randomTransform(dice, at + dice.point(-5.0, 5.0));
        compare(dice, sphere(at, dice.between(0.5, 5.0)), transform, points, inside);
        compare(dice, frustum(frame, randomRing(dice, 6, 1.0), 1.0, 9.0, 0.7), transform, points, inside);
        compare(dice, prism(frame, randomRing(dice, 6, 5.0), 4.0), transform, points, inside);
    }
    EXPECT_GT(inside, points / 50);
    std::printf("600 fences, %d points, %d inside, all of these in the box\n", points, inside);
}

TEST(IFence3D, BoxHoldsOutermostPointsThatRoundingLetsIn)
{
    // corners and edges themselves, far from the axis, where screen coordinates round by most
    Dice dice(2);
    int points = 0, inside = 0, outOfBox = 0;
    for (int i = 0; i < 200; ++i) {
        const glm::dvec3 at = i % 2 ? farAway : dice.point(-5.0, 5.0);
        const Frame frame = Frame::random(dice, at);
        const glm::dmat4 transform = randomTransform(dice, at);
        const Frustum3D fence = frustum(frame, square(0.01, {3.0, 2.0}), 1.0, 900.0, 0.7);
        const auto inScene = fence.getIFence3D(transform);
        const gmx::BoundingBox box = inScene->getBoundingBox().value();
        const auto corners = fence.getFarFence();
        for (int k = 0; k < 500; ++k) {
            const std::size_t edge = std::size_t(dice.between(0, 3));
            const glm::dvec3 onEdge =
                glm::mix(corners[edge], corners[edge + 1], dice.between(0.0, 1.0)) + dice.point(-1e-4, 1e-4);
            const glm::dvec3 point(transform * glm::dvec4(onEdge, 1.0));
            const bool answer = inScene->contains(point);
            ++points;
            inside += answer;
            outOfBox += answer && !box.contains(point);
        }
    }
    EXPECT_GT(inside, points / 20);
    EXPECT_EQ(outOfBox, 0);
    std::printf("%d points about far outlines, %d inside, %d of these out of the box\n", points, inside,
                outOfBox);
}

TEST(IFence3D, BoxHoldsWhatRoundingToFloatsLetsIn)
{
    // sides of the box are sides of the frustum: its left in the near plane, its right in the far one
    const Frustum3D fence = frustum({}, square(0.01, {3.0, 2.0}), 1.0, 900.0, 0.7);
    const auto inScene = fence.getIFence3D(glm::dmat4(1.0));
    const gmx::BoundingBox box = inScene->getBoundingBox().value();
    Dice dice(3);
    int beyond = 0, outOfBox = 0;
    for (int i = 0; i < 2000; ++i) {
        const bool isLeft = i % 2 == 0;
        const double depth = isLeft ? 1.0 : 900.0, border = fence.fence()[isLeft ? 0 : 1].x;
        const double way = (isLeft ? -1.0 : 1.0) * dice.between(0.0, 3e-7);
        const glm::dvec3 point((border + way) * depth * 0.7, 2.0 * depth * 0.7, depth);
        if (!inScene->contains(point)) continue;
        ++beyond;
        outOfBox += !box.contains(point);
    }
    EXPECT_GT(beyond, 200);
    EXPECT_EQ(outOfBox, 0);
    std::printf("%d points beyond the border that rounding lets in, %d out of the box\n", beyond, outOfBox);
}

TEST(IFence3D, BoxHoldsWhatTheWayBackToTheModelLetsIn)
{
    // large numbers in the model, in the scene, and in both
    const glm::dvec3 middles[] = {farAway, -farAway, glm::dvec3(0.0)};
    const glm::dvec3 centers[] = {farAway, glm::dvec3(0.0), farAway};
    Dice dice(4);
    for (int k = 0; k < 3; ++k) {
        int inside = 0, outOfBox = 0;
        for (int i = 0; i < 20000; ++i) {
            const glm::dmat4 transform = modelToScene(middles[k], dice.between(0.2, 0.4));
            const glm::dvec3 center = centers[k] + dice.point(-1.0, 1.0);
            const double radius = dice.between(0.1, 5.0);
            const auto inScene = sphere(center, radius).getIFence3D(transform);
            const glm::dvec3 outermost = center + glm::dvec3(radius, 0.0, 0.0);
            glm::dvec3 point(transform * glm::dvec4(outermost, 1.0));
            const double step = 1e-16 * (std::abs(point.x) + std::abs(outermost.x));
            point.x += dice.between(0.0, 4.0) * step;
            const bool answer = inScene->contains(point);
            inside += answer;
            outOfBox += answer && !inScene->getBoundingBox()->contains(point);
        }
        EXPECT_GT(inside, 100);
        EXPECT_EQ(outOfBox, 0);
        std::printf("20000 points at the outermost of balls, %d inside, %d of these out of the box\n", inside,
                    outOfBox);
    }
}

TEST(IFence3D, BoxOfABallInAFlatSceneIsFlat)
{
    glm::dmat4 flat(1.0);
    flat[2][2] = 0.0;
    const auto box = sphere({1.0, 2.0, 3.0}, 0.5).getIFence3D(flat)->getBoundingBox();
    ASSERT_TRUE(box && box->isValid());
    expectNear(box->getMin(), {0.5, 1.5, 0.0}, 1e-12);
    expectNear(box->getMax(), {1.5, 2.5, 0.0}, 1e-12);
}

void expectBox(const gmx::IFence3D& fence, const glm::dvec3& min, const glm::dvec3& max, double tolerance)
{
    const std::optional<gmx::BoundingBox> box = fence.getBoundingBox();
    ASSERT_TRUE(box.has_value());
    expectNear(box->getMin(), min, tolerance);
    expectNear(box->getMax(), max, tolerance);
    EXPECT_TRUE(box->contains(min) && box->contains(max));
}

TEST(IFence3D, BoxesAreTight)
{
    const glm::dmat4 twice = modelToScene({1.0, 1.0, 1.0}, 2.0);
    expectBox(*sphere({1.0, 2.0, 3.0}, 0.5).getIFence3D(twice), {-1.0, 1.0, 3.0}, {1.0, 3.0, 5.0}, 1e-12);
    expectBox(*frustum({}, square(1.0), 1.0, 4.0, 0.5).getIFence3D(twice), {-6.0, -6.0, 0.0}, {2.0, 2.0, 6.0},
              1e-5);
    expectBox(*prism({}, square(1.0), 4.0).getIFence3D(twice), {-4.0, -4.0, -2.0}, {0.0, 0.0, 6.0}, 1e-12);
}

TEST(IFence3D, BoxOfABallInATurnedAndStretchedSceneIsThatOfItsEllipsoid)
{
    // x and y turned by 45 degrees, then x stretched threefold
    const double s = std::sqrt(0.5);
    const glm::dmat4 m({3.0 * s, s, 0.0, 0.0}, {-3.0 * s, s, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0},
                       {0.0, 0.0, 0.0, 1.0});
    expectBox(*sphere(glm::dvec3(0.0), 2.0).getIFence3D(m), {-6.0, -2.0, -2.0}, {6.0, 2.0, 2.0}, 1e-12);
}

TEST(IFence3D, AFenceWithoutEndHasNoBox)
{
    const glm::dmat4 one(1.0);
    EXPECT_FALSE(frustum({}, square(1.0), 1.0, 0.0, 1.0).getIFence3D(one)->getBoundingBox());
    EXPECT_FALSE(frustum({}, square(1.0), 1.0, 1.0, 1.0).getIFence3D(one)->getBoundingBox());
    EXPECT_FALSE(prism({}, square(1.0), 0.0).getIFence3D(one)->getBoundingBox());
    EXPECT_FALSE(prism({}, square(1.0), -2.0).getIFence3D(one)->getBoundingBox());
    EXPECT_FALSE(sphere(glm::dvec3(0.0), infinity).getIFence3D(one)->getBoundingBox());
    EXPECT_TRUE(frustum({}, square(1.0), 1.0, 0.0, 1.0).getIFence3D(one)->contains({0.0, 0.0, 1e9}));
}

TEST(IFence3D, WhatContainsNothingHasTheNullBox)
{
    const glm::dmat4 one(1.0);
    const std::shared_ptr<gmx::IFence3D> fences[] = {Frustum3D().getIFence3D(one), Prism3D().getIFence3D(one),
                                                     sphere({notANumber, 0.0, 0.0}, 1.0).getIFence3D(one),
                                                     sphere(glm::dvec3(0.0), -1.0).getIFence3D(one),
                                                     sphere(glm::dvec3(0.0), notANumber).getIFence3D(one)};
    for (const auto& fence : fences) {
        ASSERT_TRUE(fence);
        EXPECT_FALSE(fence->contains(glm::dvec3(0.0)));
        EXPECT_TRUE(fence->getBoundingBox().value().isNull());
    }
}

TEST(IFence3D, BoxOfAPointIsThePoint)
{
    const auto fence = sphere({1.0, 2.0, 3.0}, 0.0).getIFence3D(glm::dmat4(1.0));
    EXPECT_TRUE(fence->contains({1.0, 2.0, 3.0}));
    expectBox(*fence, {1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}, 1e-12);
}

TEST(IFence3D, KeepsTheFenceAsItWas)
{
    SphereFence ball = sphere(glm::dvec3(0.0), 1.0);
    Frustum3D swept = frustum({}, square(1.0), 1.0, 4.0, 1.0);
    const auto ofBall = ball.getIFence3D(glm::dmat4(1.0)), ofSwept = swept.getIFence3D(glm::dmat4(1.0));
    ball.setFence(glm::dvec3(100.0), 1.0);
    swept.reset();
    EXPECT_TRUE(ofBall->contains({0.5, 0.0, 0.0}));
    EXPECT_TRUE(ofSwept->contains({0.0, 0.0, 2.0}));
}

TEST(IFence3D, OfAMatrixWithoutInverseContainsNothing)
{
    for (const glm::dmat4& matrix :
         {glm::dmat4(0.0), glm::dmat4(notANumber), modelToScene(glm::dvec3(0.0), 0.0)}) {
        EXPECT_FALSE(sphere(glm::dvec3(0.0), 1.0).getIFence3D(matrix)->contains(glm::dvec3(0.0)));
        EXPECT_FALSE(frustum({}, square(1.0), 1.0, 4.0, 1.0).getIFence3D(matrix)->contains({0.0, 0.0, 2.0}));
        EXPECT_FALSE(prism({}, square(1.0), 4.0).getIFence3D(matrix)->contains(glm::dvec3(0.0)));
    }
    EXPECT_FALSE(sphere(glm::dvec3(0.0), 1.0).getIFence3D(glm::dmat4(notANumber))->getBoundingBox());
}

} // namespace
