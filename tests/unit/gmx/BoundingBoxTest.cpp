#include <framework/gmx/BoundingBox.h>
#include <framework/gmx/math_utils.h>

#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using glm::dvec3;
using gmx::BoundingBox;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
const double notANumber = std::nan("");
const BoundingBox unit(dvec3(0), dvec3(1));

} // namespace

TEST(BoundingBox, newBoxIsNull)
{
    const BoundingBox box;
    EXPECT_TRUE(box.isNull());
    EXPECT_FALSE(box.isValid());
    EXPECT_EQ(box.getSize(), dvec3(0));
    EXPECT_EQ(box.getCenter(), dvec3(0));
    EXPECT_EQ(box.getDiagonal(), 0.0);
    EXPECT_FALSE(box.contains(dvec3(0)));
}

TEST(BoundingBox, resetMakesNull)
{
    BoundingBox box = unit;
    box.reset();
    EXPECT_TRUE(box.isNull());
    EXPECT_EQ(box, BoundingBox());
}

TEST(BoundingBox, zeroExtentIsValidAndNotNull)
{
    const BoundingBox box(dvec3(7), dvec3(7));
    EXPECT_TRUE(box.isValid());
    EXPECT_FALSE(box.isNull());
    EXPECT_EQ(box.getDiagonal(), 0.0);
    EXPECT_TRUE(box.contains(dvec3(7)));
}

TEST(BoundingBox, cornersThatAreNoNumbersOrSwappedAreNeitherNullNorValid)
{
    for (const BoundingBox& box :
         {BoundingBox(dvec3(notANumber, 0, 0), dvec3(1)), BoundingBox(dvec3(0), dvec3(1, infinite, 1)),
          BoundingBox(dvec3(-infinite), dvec3(infinite)), BoundingBox(dvec3(0, 0, 2), dvec3(1))}) {
        EXPECT_FALSE(box.isNull());
        EXPECT_FALSE(box.isValid());
        EXPECT_FALSE(box.contains(dvec3(0.5)));
        EXPECT_FALSE(box.intersects(unit));
        EXPECT_FALSE(unit.intersects(box));
    }
}

TEST(BoundingBox, sizeCentreAndDiagonal)
{
    const BoundingBox box(dvec3(1, 2, 3), dvec3(3, 5, 9));
    EXPECT_EQ(box.getSize(), dvec3(2, 3, 6));
    EXPECT_EQ(box.getCenter(), dvec3(2, 3.5, 6));
    EXPECT_DOUBLE_EQ(box.getDiagonal(), 7.0); // sqrt(4 + 9 + 36)
}

TEST(BoundingBox, hugeBoxHasAFiniteCentre)
{
    const double big = 1.5e308;
    EXPECT_EQ(BoundingBox(dvec3(big / 2), dvec3(big)).getCenter(), dvec3(big * 0.75));
}

TEST(BoundingBox, hugeBoxHasAFiniteDiagonal)
{
    // the squares of the sides are beyond the doubles
    EXPECT_DOUBLE_EQ(BoundingBox(dvec3(0), dvec3(2e200, 3e200, 6e200)).getDiagonal(), 7e200);
    EXPECT_DOUBLE_EQ(BoundingBox(dvec3(0), dvec3(1e200, 0, 0)).getDiagonal(), 1e200);
}

TEST(BoundingBox, unitesPoints)
{
    BoundingBox box;
    box.unite(dvec3(1, 5, -2));
    EXPECT_EQ(box, BoundingBox(dvec3(1, 5, -2), dvec3(1, 5, -2)));
    box.unite(dvec3(-1, 6, -2));
    EXPECT_EQ(box, BoundingBox(dvec3(-1, 5, -2), dvec3(1, 6, -2)));
}

TEST(BoundingBox, leavesOutPointsThatAreNoNumbers)
{
    BoundingBox box;
    box.unite(dvec3(notANumber, 0, 0));
    box.unite(dvec3(0, infinite, 0));
    box.unite(dvec3(0, 0, -infinite));
    EXPECT_TRUE(box.isNull());
    box = unit;
    box.unite(dvec3(5, 5, notANumber));
    EXPECT_EQ(box, unit);
}

TEST(BoundingBox, unitesBoxesAndLeavesOutNullAndInvalidOnes)
{
    BoundingBox box;
    box.unite(BoundingBox());
    EXPECT_TRUE(box.isNull());
    box.unite(unit);
    EXPECT_EQ(box, unit);
    box.unite(BoundingBox());
    box.unite(BoundingBox(dvec3(notANumber), dvec3(9)));
    box.unite(BoundingBox(dvec3(9), dvec3(8)));
    EXPECT_EQ(box, unit);
    box.unite(BoundingBox(dvec3(2, -1, 0), dvec3(3, 0, 0)));
    EXPECT_EQ(box, BoundingBox(dvec3(0, -1, 0), dvec3(3, 1, 1)));
}

TEST(BoundingBox, containsItsBorder)
{
    EXPECT_TRUE(unit.contains(dvec3(0, 1, 0.5)));
    EXPECT_FALSE(unit.contains(dvec3(0, 1.0000001, 0.5)));
    EXPECT_FALSE(unit.contains(dvec3(0.5, notANumber, 0.5)));
}

TEST(BoundingBox, boxesThatTouchIntersect)
{
    EXPECT_TRUE(unit.intersects(BoundingBox(dvec3(1), dvec3(2))));
    EXPECT_TRUE(unit.intersects(BoundingBox(dvec3(0.2), dvec3(0.3))));
    EXPECT_FALSE(unit.intersects(BoundingBox(dvec3(0, 0, 1.1), dvec3(1, 1, 2))));
    EXPECT_FALSE(unit.intersects(BoundingBox()));
}

TEST(BoundingBox, cornersChangeInXFirst)
{
    const auto corners = BoundingBox(dvec3(1, 2, 3), dvec3(4, 5, 6)).getCorners();
    const std::array<dvec3, 8> expected{dvec3(1, 2, 3), dvec3(4, 2, 3), dvec3(1, 5, 3), dvec3(4, 5, 3),
                                        dvec3(1, 2, 6), dvec3(4, 2, 6), dvec3(1, 5, 6), dvec3(4, 5, 6)};
    EXPECT_EQ(corners, expected);
}

TEST(BoundingBox, transformedHoldsTheMappedCorners)
{
    // a quarter turn about z maps (x, y) to (-y, x); then moved by (10, 20, 30)
    glm::dmat4 matrix(0.0);
    matrix[0] = {0, 1, 0, 0};
    matrix[1] = {-1, 0, 0, 0};
    matrix[2] = {0, 0, 1, 0};
    matrix[3] = {10, 20, 30, 1};
    const BoundingBox box(dvec3(1, 2, 3), dvec3(4, 6, 8));
    EXPECT_EQ(box.transformed(matrix), BoundingBox(dvec3(4, 21, 33), dvec3(8, 24, 38)));
}

TEST(BoundingBox, transformedDoesNotDivideByW)
{
    glm::dmat4 matrix(1.0);
    matrix[3][3] = 2.0;
    EXPECT_EQ(unit.transformed(matrix), unit);
}

TEST(BoundingBox, transformedKeepsNullAndInvalidBoxes)
{
    const glm::dmat4 matrix = glm::translate(glm::dmat4(1.0), dvec3(5));
    EXPECT_TRUE(BoundingBox().transformed(matrix).isNull());
    const BoundingBox swapped(dvec3(2), dvec3(1));
    EXPECT_EQ(swapped.transformed(matrix), swapped);
}

TEST(BoundingBox, matrixThatGivesNoNumbersGivesAnInvalidBox)
{
    glm::dmat4 matrix(1.0);
    matrix[3][1] = infinite;
    const BoundingBox box = unit.transformed(matrix);
    EXPECT_FALSE(box.isNull());
    EXPECT_FALSE(box.isValid());
}

TEST(BoundingBox, geodeticCoordinatesKeepTheirMillimetres)
{
    BoundingBox box;
    box.unite(dvec3(2.7e6, 1.2e6, 400));
    box.unite(dvec3(2.7e6 + 0.001, 1.2e6, 400));
    EXPECT_NEAR(box.getSize().x, 0.001, 1e-9);
}

TEST(MathUtils, degreesAndRadians)
{
    EXPECT_DOUBLE_EQ(math_utils::toRadian(180.0), std::acos(-1.0));
    EXPECT_DOUBLE_EQ(math_utils::toRadian(45.0), std::atan(1.0));
    EXPECT_DOUBLE_EQ(math_utils::toDegree(math_utils::toRadian(33.0)), 33.0);
}
