#include <Viewer3dModule/drawables/IPolyline3dClipper.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Polyline = std::vector<glm::dvec3>;

std::vector<Polyline> clip(IPolyline3dClipper& clipper, const Polyline& polyline)
{
    std::vector<Polyline> pieces;
    clipper.clip(polyline, [&pieces](const Polyline& piece) { pieces.push_back(piece); });
    return pieces;
}

std::vector<Polyline> clip(const Polyline& polyline)
{
    return clip(*makePolyline3dClipper(), polyline);
}

// A box whose inside test no point passes by itself, so that every segment is intersected with it.
std::shared_ptr<IPolyline3dClipper> plainBox()
{
    auto clipper = makePolyline3dClipper();
    clipper->setBox({10, 10, 10}, {20, 20, 20});
    return clipper;
}

} // namespace

TEST(Polyline3dClipper, ASinglePointOrNoneGivesNothing)
{
    EXPECT_TRUE(clip({}).empty());
    EXPECT_TRUE(clip({{-0.5, 0, 0}}).empty());
}

TEST(Polyline3dClipper, ReleasesTheOutputAlsoWhenItIsNotCalled)
{
    auto alive = std::make_shared<int>(0);
    const std::weak_ptr<int> watch = alive;
    makePolyline3dClipper()->clip({{0, 0, 0}}, [kept = std::move(alive)](const Polyline&) { ++*kept; });
    EXPECT_TRUE(watch.expired());
}

TEST(Polyline3dClipper, ASegmentInsideComesOutWhole)
{
    const Polyline inside = {{-0.5, 0, 0}, {-0.2, 0.5, 0}};
    EXPECT_EQ(clip(inside), std::vector<Polyline>{inside});
}

// Between two points that count as inside nothing is cut, even where the bounds would.
TEST(Polyline3dClipper, APointBeyondTheUnitVectorCountsAsOutside)
{
    // Both ends count as inside although y is beyond the box: the order looks at x first.
    const Polyline kept = {{-0.5, 5, 0}, {-0.2, 6, 0}};
    EXPECT_EQ(clip(kept), std::vector<Polyline>{kept});
    // The end (0.5, 5, 0) counts as outside, so the segment is cut, and none of it is within the bounds.
    EXPECT_TRUE(clip({{-0.5, 5, 0}, {0.5, 5, 0}}).empty());
    // (0.5, 0, 0) counts as outside: the other end, beyond the box in y, does not come out whole either.
    EXPECT_EQ(clip({{-0.5, 2, 0}, {0.5, 0, 0}}), (std::vector<Polyline>{{{0, 1, 0}, {0.5, 0, 0}}}));
}

TEST(Polyline3dClipper, OrderOfTheDefaultMaximumSide)
{
    // Partner is inside by the test and out of the bounds, so the segment survives whole only if the point is
    // inside.
    const glm::dvec3 partner(-0.5, 5, 0);
    const auto isInside = [&partner](const glm::dvec3& point) {
        return clip({partner, point}) == std::vector<Polyline>{{partner, point}};
    };
    EXPECT_TRUE(isInside({-0.1, 100, 100}));
    EXPECT_TRUE(isInside({0, 0.999, 100}));
    EXPECT_TRUE(isInside({0, 1, 0}));
    EXPECT_TRUE(isInside({0, 1, -0.5}));
    EXPECT_FALSE(isInside({0, 1, 0.5}));
    EXPECT_FALSE(isInside({0, 1.5, 0}));
    EXPECT_FALSE(isInside({0.5, 0, 0}));
    EXPECT_FALSE(isInside({-1.5, 0, 0}));
    EXPECT_FALSE(isInside({-0.5, -1.5, 0}));
    EXPECT_FALSE(isInside({-0.5, 0, -1.5}));
    EXPECT_TRUE(isInside({-1, -1, -1}));
}

TEST(Polyline3dClipper, TheMaximumsWholePartsChooseTheUnitVectors)
{
    // Maxima 0.9, -0.9 and 2.9 stand for (1,0,0), (1,0,0) and (0,0,1): x below 0, or 0 with y below 0, passes
    // all.
    auto clipper = makePolyline3dClipper();
    clipper->setBox({-10, -10, -10}, {0.9, -0.9, 2.9});
    const Polyline inside = {{-3, 7, 7}, {-2, 8, 8}};
    EXPECT_EQ(clip(*clipper, inside), std::vector<Polyline>{inside});
    // (0.5, -5, 0) is below (1, 0, 0) but above (0, 0, 1); it is within the bounds, so the segment is cut at
    // y = -0.9.
    EXPECT_EQ(clip(*clipper, {{0.5, -5, 0}, {0.5, 3.2, 0}}),
              (std::vector<Polyline>{{{0.5, -5, 0}, {0.5, -0.9, 0}}}));
    // No maximum is an index: only what is not above (0, 0, 0) is inside.
    clipper->setBox({-10, -10, -10}, {7, 8, 9});
    const Polyline negative = {{-3, 50, 0}, {-2, 60, 0}};
    EXPECT_EQ(clip(*clipper, negative), std::vector<Polyline>{negative});
    EXPECT_TRUE(clip(*clipper, {{0, 50, 0}, {0, 60, 0}}).empty());
}

TEST(Polyline3dClipper, CutsASegmentThatCrossesTheBox)
{
    EXPECT_EQ(clip(*plainBox(), {{0, 15, 15}, {40, 15, 15}}),
              (std::vector<Polyline>{{{10, 15, 15}, {20, 15, 15}}}));
    EXPECT_EQ(clip(*plainBox(), {{15, 15, 40}, {15, 15, 0}}),
              (std::vector<Polyline>{{{15, 15, 20}, {15, 15, 10}}}))
        << "the ends come in the segment's direction";
}

TEST(Polyline3dClipper, CutsADiagonalAtTheFirstAndTheLastPlane)
{
    // From (5, 8, 12) along (20, 10, 4): x = 10 at t = 0.25, y = 10 at 0.2; x = 20 at 0.75, y = 20 at 1.2.
    const std::vector<Polyline> pieces = clip(*plainBox(), {{5, 8, 12}, {25, 18, 16}});
    ASSERT_EQ(pieces.size(), 1u);
    ASSERT_EQ(pieces[0].size(), 2u);
    EXPECT_LT(glm::distance(pieces[0][0], glm::dvec3(10, 10.5, 13)), 1e-12);
    EXPECT_LT(glm::distance(pieces[0][1], glm::dvec3(20, 15.5, 15)), 1e-12);
}

TEST(Polyline3dClipper, CutEndsLieExactlyOnTheBox)
{
    auto clipper = makePolyline3dClipper();
    clipper->setBox({0.1, 0.1, 0.1}, {0.7, 0.7, 0.7});
    const std::vector<Polyline> pieces = clip(*clipper, {{-0.3, 0.31, 0.37}, {1.9, 0.41, 0.47}});
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0].front().x, 0.1);
    EXPECT_EQ(pieces[0].back().x, 0.7);
}

TEST(Polyline3dClipper, WhatTouchesTheBoxInAPointGivesNothing)
{
    EXPECT_TRUE(clip(*plainBox(), {{5, 15, 15}, {10, 20, 15}, {5, 25, 15}}).empty()) << "an end on a face";
    EXPECT_TRUE(clip(*plainBox(), {{5, 15, 15}, {15, 5, 15}}).empty()) << "an edge";
    EXPECT_TRUE(clip(*plainBox(), {{10, 10, 10}, {10, 10, 10}}).empty()) << "a segment without length";
}

TEST(Polyline3dClipper, ASegmentWithinAFaceCounts)
{
    EXPECT_EQ(clip(*plainBox(), {{5, 15, 10}, {25, 15, 10}}),
              (std::vector<Polyline>{{{10, 15, 10}, {20, 15, 10}}}));
}

TEST(Polyline3dClipper, WhatMissesTheBoxGivesNothing)
{
    EXPECT_TRUE(clip(*plainBox(), {{0, 0, 0}, {5, 5, 5}}).empty());
    EXPECT_TRUE(clip(*plainBox(), {{0, 25, 15}, {40, 25, 15}}).empty()) << "parallel to the box";
    EXPECT_TRUE(clip(*plainBox(), {{5, 12, 15}, {12, 5, 15}}).empty()) << "past a corner";
}

TEST(Polyline3dClipper, ConnectedSegmentsAreOnePiece)
{
    EXPECT_EQ(clip(*plainBox(), {{0, 15, 15}, {12, 15, 15}, {12, 18, 15}, {40, 18, 15}}),
              (std::vector<Polyline>{{{10, 15, 15}, {12, 15, 15}, {12, 18, 15}, {20, 18, 15}}}));
}

TEST(Polyline3dClipper, LeavingAndComingBackGivesSeparatePieces)
{
    EXPECT_EQ(clip(*plainBox(), {{12, 15, 15}, {30, 15, 15}, {30, 18, 15}, {12, 18, 15}}),
              (std::vector<Polyline>{{{12, 15, 15}, {20, 15, 15}}, {{20, 18, 15}, {12, 18, 15}}}));
}

TEST(Polyline3dClipper, EndsWithinTheToleranceAreJoined)
{
    // Leaves at (20, 15, 15) and comes back 0.0008 or 0.002 further up.
    EXPECT_EQ(clip(*plainBox(), {{12, 15, 15}, {21, 15, 15}, {21, 15, 15.0008}, {12, 15, 15.0008}}),
              (std::vector<Polyline>{{{12, 15, 15}, {20, 15, 15}, {12, 15, 15.0008}}}));
    EXPECT_EQ(clip(*plainBox(), {{12, 15, 15}, {21, 15, 15}, {21, 15, 15.002}, {12, 15, 15.002}}).size(), 2u);
}

TEST(Polyline3dClipper, OutputThatCopiesKeepsEachPiece)
{
    std::vector<Polyline> copies;
    std::vector<const Polyline*> addresses;
    plainBox()->clip({{12, 15, 15}, {30, 15, 15}, {30, 18, 15}, {12, 18, 15}}, [&](const Polyline& piece) {
        copies.push_back(piece);
        addresses.push_back(&piece);
    });
    ASSERT_EQ(copies.size(), 2u);
    EXPECT_EQ(addresses[0], addresses[1]) << "the run is reused";
    EXPECT_NE(copies[0], copies[1]);
}

TEST(Polyline3dClipper, NumbersThatAreNoneGiveNothing)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(clip(*plainBox(), {{15, 15, 15}, {nan, 15, 15}}).empty());
    EXPECT_TRUE(clip(*plainBox(), {{15, 15, 15}, {15, infinity, 15}}).empty());
    EXPECT_TRUE(clip(*plainBox(), {{15, 15, nan}, {15, 16, nan}}).empty());
}

TEST(Polyline3dClipper, ABoxInsideOutGivesNothing)
{
    auto clipper = makePolyline3dClipper();
    clipper->setBox({20, 20, 20}, {10, 10, 10});
    EXPECT_TRUE(clip(*clipper, {{0, 15, 15}, {40, 15, 15}}).empty());
}
