#include <viewer/elements/ElementLabel.h>
#include <viewer/elements/labelPlace.h>

#include <gtest/gtest.h>

#include <glm/gtc/matrix_transform.hpp>

namespace {

using Part = FeatureElement::Part;
using Points = std::vector<glm::dvec3>;

Part labelPart(Part::Kind kind, Points points, bool hole = false)
{
    Part result;
    result.kind = kind;
    result.points = std::move(points);
    result.hole = hole;
    return result;
}

Points rectangle(double left, double bottom, double right, double top)
{
    return {{left, bottom, 0}, {right, bottom, 0}, {right, top, 0}, {left, top, 0}};
}

void expectNear(const glm::dvec3& a, const glm::dvec3& b, double tolerance = 1e-9)
{
    EXPECT_LE(glm::distance(a, b), tolerance) << a.x << ", " << a.y << ", " << a.z;
}

} // namespace

TEST(LabelPlace, OfPointsIsTheFirst)
{
    expectNear(labelPlace({labelPart(Part::Point, {{1, 2, 3}, {9, 9, 9}})}), {1, 2, 3});
    expectNear(labelPlace({}), {0, 0, 0});
    expectNear(labelPlace({labelPart(Part::Ring, {}), labelPart(Part::Line, {})}), {0, 0, 0});
}

TEST(LabelPlace, OfLinesIsHalfWayAlongTheLongest)
{
    const Part shortOne = labelPart(Part::Line, {{0, 0, 0}, {1, 0, 0}});
    const Part longOne = labelPart(Part::Line, {{0, 0, 0}, {2, 0, 0}, {2, 0, 0}, {2, 6, 0}});
    expectNear(labelPlace({shortOne, longOne}), {2, 2, 0});
    expectNear(labelPlace({labelPart(Part::Point, {{7, 7, 7}}), shortOne}), {0.5, 0, 0});
    expectNear(labelPlace({labelPart(Part::Line, {{4, 4, 4}, {4, 4, 4}})}), {4, 4, 4});
}

TEST(LabelPlace, OfAreasLiesInTheLargestAwayFromItsOutline)
{
    // a U, whose middle lies outside
    const Points horseshoe = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {8, 10, 0},
                              {8, 2, 0}, {2, 2, 0},  {2, 10, 0},  {0, 10, 0}};
    const Part ring = labelPart(Part::Ring, horseshoe);
    const glm::dvec3 place = labelPlace({labelPart(Part::Ring, rectangle(100, 100, 101, 101)),
                                         labelPart(Part::Line, {{0, 0, 0}, {99, 0, 0}}), ring});
    const bool isInside = place.y < 2 ? place.x > 0 && place.x < 10
                                      : (place.x > 0 && place.x < 2) || (place.x > 8 && place.x < 10);
    EXPECT_TRUE(isInside) << place.x << ", " << place.y;
    const glm::dvec3 middle = labelPlace({labelPart(Part::Ring, rectangle(0, 0, 4, 2))});
    EXPECT_NEAR(middle.x, 2.0, 1e-9);
    EXPECT_NEAR(middle.y, 1.0, 0.1);
}

TEST(LabelPlace, IsNotInAHole)
{
    const glm::dvec3 place = labelPlace({labelPart(Part::Ring, rectangle(0, 0, 10, 10)),
                                         labelPart(Part::Ring, rectangle(1, 1, 8, 9), true),
                                         labelPart(Part::Ring, rectangle(50, 50, 51, 51)),
                                         labelPart(Part::Ring, rectangle(8, 0, 10, 10), true)});
    EXPECT_GT(place.x, 8.0) << "only the holes that follow it are its own";
    EXPECT_LT(place.x, 10.0);
    EXPECT_NEAR(place.x, 9.0, 1e-9);
}

// Also for walls and roofs, at any coordinates.
TEST(LabelPlace, LiesInThePlaneOfTheArea)
{
    for (const double angle : {0.0, 0.6, 1.5707963267948966, 2.5})
        for (const glm::dvec3& axis : {glm::dvec3(1, 0, 0), glm::dvec3(0, 1, 0), glm::dvec3(0.6, 0.0, 0.8)})
            for (const double far : {0.0, 2.7e6}) {
                const glm::dmat4 turn = glm::rotate(glm::dmat4(1.0), angle, axis);
                const glm::dvec3 shift(far, far / 2.0, 10.0);
                Points points = rectangle(-3, -1, 3, 1);
                for (glm::dvec3& point : points)
                    point = glm::dvec3(turn * glm::dvec4(point, 1.0)) + shift;
                const glm::dvec3 local =
                    glm::dvec3(glm::inverse(turn) *
                               glm::dvec4(labelPlace({labelPart(Part::Ring, points)}) - shift, 1.0));
                EXPECT_NEAR(local.z, 0.0, 1e-6);
                EXPECT_LT(std::abs(local.x), 2.1);
                EXPECT_LT(std::abs(local.y), 0.3);
            }
}

TEST(LabelPlace, OfWhatHasNoAreaIsStillOnIt)
{
    expectNear(labelPlace({labelPart(Part::Ring, {{5, 5, 5}, {5, 5, 5}, {5, 5, 5}})}), {5, 5, 5});
    const glm::dvec3 place = labelPlace({labelPart(Part::Ring, {{0, 0, 1}, {4, 0, 1}, {8, 0, 1}})});
    expectNear(place, {4, 0, 1});
}

TEST(LabelText, IsOneLineOfAtMostSixtyCharacters)
{
    EXPECT_EQ(ElementLabel::shownText(" Main\n Street\t1 "), "Main Street 1");
    EXPECT_EQ(ElementLabel::shownText(" \n"), "");
    EXPECT_EQ(ElementLabel::shownText(QString(60, 'x')), QString(60, 'x'));
    EXPECT_EQ(ElementLabel::shownText(QString(61, 'x')), QString(59, 'x') + QChar(0x2026));
    const QString houses = QString::fromUtf8("🏠").repeated(40);
    EXPECT_EQ(ElementLabel::shownText('x' + houses), 'x' + houses.left(58) + QChar(0x2026));
    EXPECT_EQ(ElementLabel::shownText(houses), houses.left(58) + QChar(0x2026)) << "none is split";
    EXPECT_EQ(ElementLabel::shownText(QString(1 << 20, 'x')).size(), 60);
}
