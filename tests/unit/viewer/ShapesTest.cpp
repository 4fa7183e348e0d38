#include <viewer/OrientedBox.h>
#include <viewer/elements/CrossSection.h>
#include <viewer/elements/LinePaths.h>

#include <gtest/gtest.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <limits>

// Boxes around points, and what is swept along lines.

namespace {

using Corners = std::vector<glm::dvec3>;

/// The corners of a box of these half sizes, turned by an angle (radians) about a slanting axis.
Corners cornersOfBox(const glm::dvec3& half, double angle, const glm::dvec3& center)
{
    const glm::dmat4 turn = glm::rotate(glm::dmat4(1.0), angle, glm::dvec3(1, 2, 3));
    Corners corners;
    for (int i = 0; i < 8; ++i) {
        const glm::dvec3 sign(i & 1 ? 1 : -1, i & 2 ? 1 : -1, i & 4 ? 1 : -1);
        corners.push_back(center + glm::dvec3(turn * glm::dvec4(sign * half, 1.0)));
    }
    return corners;
}

std::vector<double> sortedSizes(const OrientedBox& box)
{
    std::vector<double> sizes(box.halfSizes.begin(), box.halfSizes.end());
    std::sort(sizes.begin(), sizes.end());
    return sizes;
}

void expectSizes(const OrientedBox& box, const std::vector<double>& expected, double tolerance = 1e-9)
{
    const std::vector<double> sizes = sortedSizes(box);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(sizes[i], expected[i], tolerance);
}

QVariant listOf(const std::vector<glm::dvec2>& points)
{
    QVariantList list;
    for (const glm::dvec2& point : points)
        list.append(QVariant(QVariantList{point.x, point.y}));
    return list;
}

} // namespace

TEST(OrientedBoxTest, FindsATurnedBoxAgain)
{
    const glm::dvec3 center(10, -20, 30);
    for (const double angle : {0.0, 0.3, 1.0, 2.0, 3.0}) {
        const auto box = OrientedBox::around(cornersOfBox({5, 2, 1}, angle, center));
        ASSERT_TRUE(box);
        EXPECT_LT(glm::distance(box->center, center), 1e-9);
        expectSizes(*box, {1, 2, 5});
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(glm::length(box->axes[i]), 1.0, 1e-12);
            EXPECT_NEAR(glm::dot(box->axes[i], box->axes[(i + 1) % 3]), 0.0, 1e-12);
        }
    }
}

TEST(OrientedBoxTest, KeepsItsDigitsFarFromTheOrigin)
{
    const glm::dvec3 center(2.7e6, 1.2e6, 400);
    const auto box = OrientedBox::around(cornersOfBox({5, 2, 1}, 0.7, center));
    ASSERT_TRUE(box);
    expectSizes(*box, {1, 2, 5}, 1e-6);
    EXPECT_LT(glm::distance(box->center, center), 1e-6);
}

TEST(OrientedBoxTest, CubeAlongTheAxesStaysSo)
{
    const auto box = OrientedBox::around(cornersOfBox({1, 1, 1}, 0.0, {}));
    ASSERT_TRUE(box);
    EXPECT_EQ(box->axes[0], glm::dvec3(1, 0, 0));
    expectSizes(*box, {1, 1, 1}, 0.0);
}

TEST(OrientedBoxTest, HoldsEveryPointOfFlatAndThinThings)
{
    const Corners flat = {{0, 0, 0}, {4, 4, 0}, {3, 5, 0}, {-1, 1, 0}}; // a rectangle turned by 45 degrees
    auto box = OrientedBox::around(flat);
    ASSERT_TRUE(box);
    expectSizes(*box, {0, std::sqrt(0.5), std::sqrt(8.0)});
    box = OrientedBox::around({{1, 1, 1}, {2, 3, 4}});
    ASSERT_TRUE(box);
    expectSizes(*box, {0, 0, std::sqrt(14.0) / 2});
    box = OrientedBox::around({{1, 2, 3}});
    ASSERT_TRUE(box);
    expectSizes(*box, {0, 0, 0}, 0.0);
    EXPECT_EQ(box->center, glm::dvec3(1, 2, 3));
}

TEST(OrientedBoxTest, LeavesOutWhatIsNoPoint)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(OrientedBox::around({}));
    EXPECT_FALSE(OrientedBox::around({{nan, 0, 0}}));
    const auto box = OrientedBox::around({{0, 0, 0}, {nan, 1, 1}, {2, 0, 0}});
    ASSERT_TRUE(box);
    EXPECT_EQ(box->center, glm::dvec3(1, 0, 0));
}

TEST(CrossSectionTest, CornersStaySharp)
{
    // an open wall: up on the left, along the top to the right, down; its inside is below the top
    const CrossSection section = CrossSection::of(listOf({{-1, 0}, {-1, 2}, {1, 2}, {1, 0}}));
    const std::vector<glm::vec2> points = {{-1, 0}, {-1, 2}, {-1, 2}, {1, 2}, {1, 2}, {1, 0}};
    const std::vector<glm::vec2> normals = {{-1, 0}, {-1, 0}, {0, 1}, {0, 1}, {1, 0}, {1, 0}};
    EXPECT_EQ(section.points, points);
    EXPECT_EQ(section.normals, normals);
    EXPECT_NEAR(section.reach(), std::sqrt(5.0), 1e-6);
}

TEST(CrossSectionTest, NormalsPointOutwardsHoweverItRuns)
{
    std::vector<glm::dvec2> square = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}, {-1, -1}};
    for (int turn = 0; turn < 2; ++turn) {
        const CrossSection section = CrossSection::of(listOf(square));
        ASSERT_EQ(section.points.size(), 8u);
        for (std::size_t i = 0; i < 8; ++i)
            EXPECT_EQ(glm::dot(section.points[i], section.normals[i]), 1.0f) << i;
        std::reverse(square.begin(), square.end());
    }
}

TEST(CrossSectionTest, ManyPointsShareNormals)
{
    std::vector<glm::dvec2> circle;
    for (int i = 0; i <= 20; ++i) {
        const double angle = 2.0 * 3.14159265358979323846 * (i % 20) / 20.0;
        circle.emplace_back(std::cos(angle), std::sin(angle));
    }
    const CrossSection section = CrossSection::of(listOf(circle));
    ASSERT_EQ(section.points.size(), 21u);
    for (std::size_t i = 0; i < 21; ++i)
        EXPECT_NEAR(double(glm::dot(section.points[i], section.normals[i])), 1.0, 1e-6) << i;
}

TEST(CrossSectionTest, MayBeTextAndNothingElse)
{
    EXPECT_EQ(CrossSection::of(QStringLiteral("[[0,0],[1,0.5]]")).points,
              (std::vector<glm::vec2>{{0, 0}, {1, 0.5}}));
    for (const QVariant& wrong :
         {QVariant(), QVariant("high"), QVariant(3.0), listOf({{0, 0}}), listOf({{0, 0}, {0, 0}}),
          listOf({{0, 0}, {1e7, 0}}), QVariant("[[0,0],[1,0,0]]"), QVariant("[[0,0],[\"a\",0]]"),
          listOf(std::vector<glm::dvec2>(2, glm::dvec2(NAN, 0)))})
        EXPECT_TRUE(CrossSection::of(wrong).isEmpty()) << qPrintable(wrong.toString());
    std::vector<glm::dvec2> many;
    for (int i = 0; i < 33; ++i)
        many.emplace_back(i, i % 2);
    EXPECT_TRUE(CrossSection::of(listOf(many)).isEmpty()) << "33 points";
}

TEST(LinePathsTest, MitresReachAsFarAsTheBendIsSharp)
{
    const auto mitreOf = [](std::vector<glm::dvec3> points) {
        FeatureElement feature;
        feature.setParts({{FeatureElement::Part::Line, false, std::move(points)}});
        return LinePaths::longestMitre(feature);
    };
    EXPECT_EQ(mitreOf({{0, 0, 0}, {5, 0, 0}}), 1.0);
    EXPECT_NEAR(mitreOf({{0, 0, 0}, {5, 0, 0}, {5, 3, 0}}), std::sqrt(2.0), 1e-12) << "a right angle";
    EXPECT_EQ(mitreOf({{0, 0, 0}, {5, 0, 0}, {0, 0.1, 0}}), 4.0) << "back almost the way it came";
}
