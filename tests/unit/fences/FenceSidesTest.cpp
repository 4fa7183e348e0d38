// Boxes on the sides of fences, against points of the boxes held against the fences.
#include "FenceShapes.h"

#include <Viewer3dModule/fences/FenceSides.h>
#include <Viewer3dModule/fences/PrismFence.h>

#include <cstdio>

namespace {

/// What was found of boxes about a fence.
struct SideCounts
{
    int inside = 0, outside = 0, across = 0;
    int wrong = 0;  ///< a point of the box lies on the other side
    int missed = 0; ///< boxes across all of whose points lie on one side
};

FenceBox innerBoxOf(const Fence3DObject& fence)
{
    const auto swept = sweptFence(fence);
    return swept ? fenceInnerBox(*swept->polygon) : FenceBox();
}

FenceBox outerBoxOf(const Fence3DObject& fence)
{
    const auto swept = sweptFence(fence);
    return swept ? fenceOuterBox(*swept->polygon) : FenceBox();
}

/// Boxes in a scene that is the model moved and scaled, as a model's scene is.
void countSides(SideCounts& counts, const Fence3DObject& fence, Dice& dice, int boxes)
{
    const double scale = dice.between(0.5, 2.0);
    const glm::dvec3 offset = dice.point(-10.0, 10.0);
    glm::dmat4 sceneToModel(scale);
    sceneToModel[3] = glm::dvec4(offset, 1.0);
    const FenceSides sides(fence, innerBoxOf(fence), outerBoxOf(fence), sceneToModel);
    for (int i = 0; i < boxes; ++i) {
        const glm::dvec3 center = (dice.point(-6.0, 6.0) - offset) / scale;
        const glm::dvec3 half = dice.point(0.0, dice.oneIn(3) ? 2.0 : 0.3);
        const gmx::BoundingBox box(center - half, center + half);
        int held = 0;
        constexpr int points = 60;
        const auto corners = box.getCorners();
        for (int k = 0; k < points; ++k) {
            const glm::dvec3 point = k < 8 ? corners[std::size_t(k)] : center + half * dice.point(-1.0, 1.0);
            held += fence.contains(glm::dvec3(sceneToModel * glm::dvec4(point, 1.0)));
        }
        switch (sides.sideOf(box)) {
        case FenceSide::Inside:
            ++counts.inside;
            counts.wrong += held != points;
            break;
        case FenceSide::Outside:
            ++counts.outside;
            counts.wrong += held != 0;
            break;
        case FenceSide::Across:
            ++counts.across;
            counts.missed += held == 0 || held == points;
        }
    }
}

void expectSharp(const char* what, const SideCounts& counts)
{
    std::printf("%s: %d inside, %d outside, %d across, of these %d without need\n", what, counts.inside,
                counts.outside, counts.across, counts.missed);
    EXPECT_EQ(counts.wrong, 0) << what;
    EXPECT_GT(counts.inside, 1000) << what;
    EXPECT_GT(counts.outside, 5000) << what;
    EXPECT_LT(counts.missed, (counts.inside + counts.outside) / 8) << what;
}

TEST(FenceSides, OfSpheres)
{
    Dice dice(11);
    SideCounts counts;
    for (int i = 0; i < 100; ++i) {
        SphereFence fence;
        fence.setFence(dice.point(-2.0, 2.0), dice.between(1.0, 6.0));
        countSides(counts, fence, dice, 200);
    }
    expectSharp("spheres", counts);
    SphereFence nothing;
    nothing.setFence(glm::dvec3(0.0), -1.0);
    const FenceSides sides(nothing, {}, {}, glm::dmat4(1.0));
    EXPECT_EQ(sides.sideOf(gmx::BoundingBox(glm::dvec3(-0.1), glm::dvec3(0.1))), FenceSide::Outside);
}

/// A star of any shape about the middle, closed.
Ring randomStar(Dice& dice, double radius)
{
    Ring ring;
    const int corners = dice.between(3, 40);
    for (int i = 0; i < corners; ++i) {
        const double angle = 6.283185307179586 * i / corners, r = radius * dice.between(0.5, 1.0);
        ring.emplace_back(r * std::cos(angle), r * std::sin(angle));
    }
    ring.push_back(ring.front());
    return ring;
}

TEST(FenceSides, OfPrisms)
{
    Dice dice(12);
    SideCounts counts;
    for (int i = 0; i < 100; ++i) {
        PrismFence fence;
        const Frame frame = Frame::random(dice, dice.point(-2.0, 2.0));
        fence.prism() = prism(frame, randomStar(dice, 6.0), dice.oneIn(4) ? 0.0 : dice.between(2.0, 9.0));
        countSides(counts, fence, dice, 200);
    }
    expectSharp("prisms", counts);
}

TEST(FenceSides, OfFrustums)
{
    Dice dice(13);
    SideCounts counts;
    for (int i = 0; i < 100; ++i) {
        const Frame frame = Frame::random(dice, dice.point(-4.0, 4.0));
        const Frustum3D fence =
            frustum(frame, randomStar(dice, 1.2), dice.between(0.0, 2.0),
                    dice.oneIn(4) ? 0.0 : dice.between(4.0, 12.0), dice.between(0.5, 1.5));
        countSides(counts, fence, dice, 200);
    }
    expectSharp("frustums", counts);
}

TEST(FenceSides, WhatHasNoBoxIsAcross)
{
    SphereFence fence;
    fence.setFence(glm::dvec3(0.0), 1.0);
    const FenceSides sides(fence, {}, {}, glm::dmat4(1.0));
    EXPECT_EQ(sides.sideOf(gmx::BoundingBox()), FenceSide::Across);
    EXPECT_EQ(sides.sideOf(gmx::BoundingBox(glm::dvec3(notANumber), glm::dvec3(0.0))), FenceSide::Across);
    EXPECT_EQ(sides.sideOf(gmx::BoundingBox(glm::dvec3(0.0), glm::dvec3(0.0))), FenceSide::Inside);
}

} // namespace
