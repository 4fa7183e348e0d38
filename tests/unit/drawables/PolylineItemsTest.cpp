#include "tests/support/TestItems.h"

#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawables/Polyline3dForegroundItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Points = std::vector<glm::dvec3>;

const Points threePoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};

Polyline3dForegroundItem foreground(Points points, bool closed = false)
{
    Polyline3dForegroundItem item(DrawerType::WideLines, std::move(points));
    item.setClosed(closed);
    return item;
}

void expectCounts(const Drawable3dPrimitive::GeometryInfo& info, unsigned points, unsigned lines)
{
    EXPECT_EQ(info.pointCount, points);
    EXPECT_EQ(info.lineCount, lines);
    EXPECT_EQ(info.triangleCount, 0u);
}

} // namespace

TEST(Polyline3dForegroundItem, HasItsDefaults)
{
    const Polyline3dForegroundItem item(DrawerType::WideLines, threePoints);
    EXPECT_EQ(item.getPoints(), threePoints);
    EXPECT_FALSE(item.getColor().isValid());
    EXPECT_EQ(item.getLineWidth(), 1);
    EXPECT_EQ(item.getAdditionalTransform(), glm::dmat4(1.0));
    EXPECT_FALSE(item.isClosed());
    EXPECT_EQ(item.getDefaultDrawerType(), DrawerType::WideLines);
    EXPECT_TRUE(item.isVisible());
}

TEST(Polyline3dForegroundItem, EditsItsPoints)
{
    Polyline3dForegroundItem item(DrawerType::Mono, {});
    item.popPoint();
    EXPECT_TRUE(item.getPoints().empty());
    item.pushPoint({1, 2, 3});
    item.pushPoint({4, 5, 6});
    item.popPoint();
    EXPECT_EQ(item.getPoints(), (Points{{1, 2, 3}}));
    item.setPoints(threePoints);
    EXPECT_EQ(item.getPoints(), threePoints);
}

TEST(Polyline3dForegroundItem, IsTransparentByItsColoursAlpha)
{
    Polyline3dForegroundItem item(DrawerType::Mono, {});
    EXPECT_FALSE(item.hasTransparency()) << "an invalid colour is opaque";
    item.setColor(QColor(255, 0, 0, 254));
    EXPECT_TRUE(item.hasTransparency());
    item.setColor(QColor(255, 0, 0));
    EXPECT_FALSE(item.hasTransparency());
}

TEST(Polyline3dForegroundItem, CountsWhatItWillDraw)
{
    expectCounts(foreground({}).getGeometryInfo(), 0, 0);
    expectCounts(foreground({}, true).getGeometryInfo(), 0, 0);
    expectCounts(foreground({{1, 1, 1}}).getGeometryInfo(), 1, 0);
    expectCounts(foreground({{1, 1, 1}, {2, 2, 2}}, true).getGeometryInfo(), 0, 1);
    expectCounts(foreground(threePoints).getGeometryInfo(), 0, 2);
    expectCounts(foreground(threePoints, true).getGeometryInfo(), 0, 3);
}

TEST(PolyPolyline3dItem, HasItsDefaults)
{
    PolyPolyline3dItem item(17, DrawerType::DashedLines);
    EXPECT_EQ(item.getDefaultDrawerType(), DrawerType::DashedLines);
    EXPECT_EQ(item.getPen(), QPen());
    EXPECT_FALSE(item.isHighlighted());
    EXPECT_FALSE(item.hasTransparency());
    item.setDefaultDrawerType(DrawerType::WideLines);
    EXPECT_EQ(item.getDefaultDrawerType(), DrawerType::WideLines);
    item.setSceneDrawer(nullptr);
    EXPECT_EQ(item.getDrawer(), nullptr);
}

TEST(PolyPolyline3dItem, ShowsItsOwnersHighlight)
{
    struct Highlighted : Drawable3dItem
    {
        bool isHighlighted() const override { return value; }
        bool value = true;
    } owner;
    PolyPolyline3dItem item(0, DrawerType::Mono);
    item.setOwner(&owner);
    EXPECT_TRUE(item.isHighlighted());
    owner.value = false;
    EXPECT_FALSE(item.isHighlighted());
    owner.value = true;
    item.setOwner(nullptr);
    EXPECT_FALSE(item.isHighlighted());
}

TEST(PolyPolyline3dItem, CountsTheSegmentsOfItsPolylines)
{
    PolyPolyline3dItem item(0, DrawerType::Mono);
    expectCounts(item.getGeometryInfo(), 0, 0);
    item.setPoints(std::vector<glm::vec3>(6), {3, 1, 2});
    expectCounts(item.getGeometryInfo(), 0, 3);
    item.clear();
    expectCounts(item.getGeometryInfo(), 0, 0);
}

TEST(PolyPolyline3dItem, WithoutAContextNothingIsUploadedOrDrawn)
{
    PolyPolyline3dItem item(0, DrawerType::Mono);
    item.setPoints(std::vector<glm::vec3>(2), {2});
    EXPECT_TRUE(item.getData().first.empty());
    EXPECT_EQ(item.getData().second, std::vector<int>{2});
    item.drawElement(PaintContext());
}

TEST(Polyline3dPrimitive, WithoutAContextNothingChanges)
{
    Polyline3dPrimitive primitive;
    primitive.setVertices(std::vector<glm::vec3>(5));
    primitive.setVertex(0, glm::vec3(1.0f));
    primitive.draw(PaintContext(), 1);
    expectCounts(primitive.getGeometryInfo(), 0, 0);
    EXPECT_TRUE(primitive.getVertices().empty());
    EXPECT_TRUE(std::isnan(primitive.getVertex(0).x));
}
