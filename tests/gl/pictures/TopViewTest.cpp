#include "SolidsTest.h"

#include "tests/support/ImageCheck.h"
#include "tests/support/LogTrap.h"

#include <framework/model/CFilterElement.h>

#include <QtCore/QRectF>
#include <QtGui/QImage>

namespace {

const QRgb red = qRgba(255, 0, 0, 255);
const QRgb blue = qRgba(0, 0, 255, 255);

/// Pictures from above. Pixels are counted from the top left.
class TopViewTest : public SolidsTest
{
protected:
    QImage picture(const std::vector<Graphics3dItem*>& items, const QRectF& region = {},
                   const QRect& size = {})
    {
        return scene->createItemsImage(items, region, size, nullptr);
    }
};

TEST_F(TopViewTest, SmallRegionsAreEnlargedTo800Pixels)
{
    const QImage image = picture({add(squareVertices(-5, -2.5f, 5, 2.5f), Qt::red)});
    ASSERT_EQ(image.size(), QSize(800, 400));
    EXPECT_EQ(countPixels(image, QColor(Qt::red)), 800 * 400);
}

TEST_F(TopViewTest, LargeRegionsHaveAPixelAUnit)
{
    const QImage image = picture({add(squareVertices(-1000, -500, 1000, 500), Qt::red)});
    ASSERT_EQ(image.size(), QSize(2000, 1000));
    EXPECT_EQ(countPixels(image, QColor(Qt::red)), 2000 * 1000);
}

TEST_F(TopViewTest, SidesAreRoundedToWholePixels)
{
    // 800 / 3 = 266.67 pixels a unit
    EXPECT_EQ(picture({add(squareVertices(-1.5f, -0.5f, 1.5f, 0.5f))}).size(), QSize(800, 267));
}

TEST_F(TopViewTest, TallRegionsAreEnlargedByTheirHeight)
{
    EXPECT_EQ(picture({add(squareVertices(-1, -4, 1, 4))}).size(), QSize(200, 800));
}

// Four units a pixel: x to the right, y up.
TEST_F(TopViewTest, YIsUpInThePicture)
{
    SolidItem* ground = add(squareVertices(-40, -40, 40, 40), Qt::blue);
    SolidItem* corner = add(squareVertices(20, 20, 40, 40, 1.0f), Qt::red);
    const QImage image = picture({ground, corner}, QRectF(), QRect(0, 0, 20, 20));
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x)
            ASSERT_EQ(image.pixel(x, y), x >= 15 && y < 5 ? red : blue) << x << ' ' << y;
}

TEST_F(TopViewTest, WhatIsHigherHidesWhatIsLower)
{
    SolidItem* high = add(squareVertices(-5, -5, 5, 5, 3.0f), Qt::red, First);
    SolidItem* low = add(squareVertices(-5, -5, 5, 5, -3.0f), Qt::blue, Last);
    EXPECT_EQ(countPixels(picture({high, low}), QColor(Qt::red)), 800 * 800);
}

// The top and the bottom of the box are within the near and far planes, however small the region is.
TEST_F(TopViewTest, AllHeightsAreSeen)
{
    for (const float height : {0.1f, 3.3f, 77.7f, 123.456f, 333.3f, 499.9f}) {
        SolidItem* roof = add(squareVertices(-5, 0, 5, 5, height), Qt::red);
        SolidItem* floor = add(squareVertices(-5, -5, 5, 0, -height), Qt::blue);
        for (const double half : {5.0, 0.1, 0.001}) {
            const QRectF region(-half, -half, 2.0 * half, 2.0 * half);
            const QImage image = picture({roof, floor}, region, QRect(0, 0, 8, 8));
            EXPECT_EQ(countPixels(image, QColor(Qt::red)), 32) << height << ' ' << half;
            EXPECT_EQ(countPixels(image, QColor(Qt::blue)), 32) << height << ' ' << half;
        }
    }
}

// A region of another shape than the picture shows whole: 10 x 5 units at 40 pixels a unit in 400 x 400.
TEST_F(TopViewTest, AllOfTheRegionIsSeen)
{
    const QImage image =
        picture({add(squareVertices(-5, -2.5f, 5, 2.5f), Qt::red)}, QRectF(), QRect(0, 0, 400, 400));
    ASSERT_EQ(image.size(), QSize(400, 400));
    for (int y : {0, 99, 100, 299, 300, 399})
        EXPECT_EQ(image.pixel(200, y), y >= 100 && y < 300 ? red : 0u) << y;
    EXPECT_EQ(countPixels(image, QColor(Qt::red)), 400 * 200);
}

// The rectangle's y counts in model coordinates: its top is the least.
TEST_F(TopViewTest, TheRegionIsInModelCoordinates)
{
    SolidItem* left = add(squareVertices(-10, -10, 2, 10), Qt::red);
    SolidItem* right = add(squareVertices(2, -10, 10, 10), Qt::blue);
    const QImage image = picture({left, right}, QRectF(0, 1, 4, 2));
    ASSERT_EQ(image.size(), QSize(800, 400));
    EXPECT_EQ(countPixels(image, QColor(Qt::red)), 400 * 400);
    EXPECT_EQ(image.pixel(399, 0), red);
    EXPECT_EQ(image.pixel(400, 0), blue);
}

TEST_F(TopViewTest, ARegionMayReachBeyondTheItems)
{
    SolidItem* item = add(squareVertices(-1, -1, 1, 1), Qt::red);
    const QImage image = picture({item}, QRectF(-4, -4, 8, 8), QRect(0, 0, 8, 8));
    EXPECT_EQ(countPixels(image, QColor(Qt::red)), 4);
    EXPECT_EQ(image.pixel(3, 3), red);
    EXPECT_EQ(image.pixel(4, 4), red);
    EXPECT_EQ(image.pixel(0, 0), 0u);
}

// The scene draws this at 1000 / 400 of its size around another origin; the frame is in model units still.
TEST_F(TopViewTest, FramesInModelUnitsAtGeodeticCoordinates)
{
    const glm::dvec3 origin(2.7e6, 1.2e6, 431.0);
    SolidItem* ground = add(squareVertices(-200, -100, 200, 100), Qt::blue, First, origin);
    ASSERT_NEAR(sceneScale(), 2.5, 1e-6);
    SolidItem* marker =
        add(squareVertices(-0.5f, -0.5f, 0.5f, 0.5f), Qt::red, First, origin + glm::dvec3(150.5, 20.5, 2.0));
    EXPECT_EQ(picture({ground}).size(), QSize(800, 400));
    // 0.1 unit a pixel; the marker covers 150 to 151 east and 20 to 21 north of the origin.
    const QImage image =
        picture({ground, marker}, QRectF(2.7e6 + 148.0, 1.2e6 + 18.0, 5.0, 5.0), QRect(0, 0, 50, 50));
    EXPECT_EQ(countPixels(image, QColor(Qt::red)), 100);
    EXPECT_EQ(image.pixel(20, 20), red);
    EXPECT_EQ(image.pixel(29, 29), red);
    EXPECT_EQ(image.pixel(19, 20), blue);
    EXPECT_EQ(image.pixel(30, 29), blue);
}

TEST_F(TopViewTest, HighlightedItemsShowOverHigherOnes)
{
    SolidItem* high = add(squareVertices(-5, -5, 5, 5, 3.0f), Qt::blue, Last);
    SolidItem* low = add(squareVertices(-5, -5, 5, 0, -3.0f), Qt::red, First);
    low->getModelElement()->setHighlighted(true);
    EXPECT_EQ(countPixels(picture({high, low}), QColor(Qt::yellow)), 800 * 400);
}

TEST_F(TopViewTest, APointHasOnePixel)
{
    const glm::vec3 point(3, 4, 5);
    EXPECT_EQ(picture({add({point, point, point})}).size(), QSize(1, 1));
}

TEST_F(TopViewTest, AnUprightWallHasOnePixelAcross)
{
    const QImage image = picture({add({glm::vec3(0, -4, -1), glm::vec3(0, 4, -1), glm::vec3(0, 4, 1)})});
    EXPECT_EQ(image.size(), QSize(1, 800));
}

TEST_F(TopViewTest, APlumbLineHasOnePixel)
{
    EXPECT_EQ(picture({add({glm::vec3(0, 0, -1), glm::vec3(0, 0, 1), glm::vec3(0, 0, 1)})}).size(),
              QSize(1, 1));
}

// The near and the far plane hold the ends of a line that looks straight at the eye, and a point.
TEST_F(TopViewTest, UprightThingsLieBetweenTheNearAndTheFarPlane)
{
    for (const float half : {0.0f, 1.0f}) {
        SolidItem* item = add({glm::vec3(0, 0, -half), glm::vec3(0, 0, half), glm::vec3(0, 0, half)});
        picture({item});
        for (const float z : {-half, half}) {
            const PaintContext& pass = item->lastContext;
            const glm::vec4 clip = pass.projection * pass.view * glm::vec4(0, 0, z, 1);
            EXPECT_LT(std::abs(clip.z), 0.9999f * clip.w) << half << ' ' << z;
        }
    }
}

TEST_F(TopViewTest, OfNoItemsIsTransparent)
{
    add(squareVertices(-5, -5, 5, 5), Qt::red);
    EXPECT_EQ(picture({}).size(), QSize(1, 1));
    EXPECT_EQ(picture({nullptr}).pixel(0, 0), 0u);
    const QImage image = picture({}, QRectF(-1, -1, 2, 2), QRect(0, 0, 6, 6));
    ASSERT_EQ(image.size(), QSize(6, 6));
    EXPECT_EQ(countPixels(image, [](QRgb pixel) { return pixel == 0u; }), 36);
}

TEST_F(TopViewTest, BeyondTheDriversLimitIsRefusedInTheLog)
{
    SolidItem* item = add(squareVertices(-5, -5, 5, 5));
    EXPECT_TRUE(picture({item}, QRectF(-50000, -50000, 100000, 100000)).isNull());
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains("100000 x 100000")) << lines[0].toStdString();
    EXPECT_TRUE(picture({item}, QRectF(-1e300, -1e300, 2e300, 2e300)).isNull());
    EXPECT_EQ(LogTrap::take().size(), 1);
}

TEST_F(TopViewTest, ItemsFindTheFilterInTheContext)
{
    SolidItem* item = add(squareVertices(-5, -5, 5, 5), Qt::red);
    CFilterElement filter;
    filter.setTypeAccepted(First, false);
    const IElementFilter* handed = &filter;
    const QImage image = scene->createItemsImage({item}, QRectF(), QRect(0, 0, 4, 4), handed);
    EXPECT_EQ(item->lastContext.extra2, const_cast<IElementFilter*>(handed));
    EXPECT_EQ(countPixels(image, QColor(Qt::red)), 16);
    picture({item});
    EXPECT_EQ(item->lastContext.extra2, nullptr);
}

// The pass of the picture: the frame in eye space, near plane to far plane, is the box of the items.
TEST_F(TopViewTest, TheCameraStandsHalfADiagonalAboveTheMiddle)
{
    SolidItem* item = add({glm::vec3(-3, -2, -6), glm::vec3(3, -2, 6), glm::vec3(3, 2, 6)});
    picture({item});
    // Diagonal of 6 x 4 x 12: 14.
    const glm::vec4 middle = item->lastContext.view * glm::vec4(0, 0, 0, 1);
    EXPECT_NEAR(middle.x, 0.0f, 1e-5f);
    EXPECT_NEAR(middle.y, 0.0f, 1e-5f);
    EXPECT_NEAR(middle.z, -7.0f, 1e-5f);
    const glm::vec4 corner = item->lastContext.projection * item->lastContext.view * glm::vec4(3, 2, 6, 1);
    EXPECT_NEAR(corner.x, 1.0f, 1e-3f);
    EXPECT_NEAR(corner.y, 1.0f, 2e-3f); // 4 of 6 units are 533.3 of 800 pixels
}

} // namespace
