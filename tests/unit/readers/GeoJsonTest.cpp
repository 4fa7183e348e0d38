#include "ReaderTest.h"

#include <framework/ksp/CommonError.h>
#include <readers/geojson/GeoJsonParser.h>
#include <readers/geojson/readGeoJson.h>

namespace {

using FeaturePart = FeatureElement::Part;
using Features = std::vector<std::unique_ptr<FeatureElement>>;
using Points = std::vector<glm::dvec3>;

class GeoJsonTest : public ReaderTest
{
protected:
    Features readFile(const QByteArray& json) const
    {
        return readers::readGeoJson(write("file.geojson", json), ksp::StagedProgress::dummy());
    }
    QString refusalOf(const QByteArray& json) const { return refusal("geojson", json); }
    std::vector<FeaturePart> partsOf(const QByteArray& geometry) const
    {
        const Features features = readFile(geometry);
        EXPECT_EQ(features.size(), 1u);
        return features.at(0)->getParts();
    }
};

QByteArray geometry(const char* type, const QByteArray& coordinates)
{
    return QByteArray("{\"type\":\"") + type + "\",\"coordinates\":" + coordinates + "}";
}

QByteArray feature(const QByteArray& shape, const QByteArray& rest = ",\"properties\":null")
{
    return "{\"type\":\"Feature\",\"geometry\":" + shape + rest + "}";
}

QByteArray collection(const QByteArray& features)
{
    return "{\"type\":\"FeatureCollection\",\"features\":[" + features + "]}";
}

const QByteArray point = geometry("Point", "[1,2]");

} // namespace

TEST_F(GeoJsonTest, PointsInTwoAndThreeDimensions)
{
    const auto plane = partsOf(point);
    EXPECT_EQ(plane.at(0).kind, FeaturePart::Point);
    EXPECT_EQ(plane[0].points, (Points{{1, 2, 0}}));
    EXPECT_EQ(partsOf(geometry("Point", "[1,2,3,4]")).at(0).points, (Points{{1, 2, 3}}));
    EXPECT_EQ(partsOf(geometry("MultiPoint", "[[1,2],[3,4,5]]")).at(0).points,
              (Points{{1, 2, 0}, {3, 4, 5}}));
}

TEST_F(GeoJsonTest, Lines)
{
    const auto line = partsOf(geometry("LineString", "[[0,0],[1,0],[1,1]]"));
    EXPECT_EQ(line.at(0).kind, FeaturePart::Line);
    EXPECT_EQ(line[0].points, (Points{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
    const auto lines = partsOf(geometry("MultiLineString", "[[[0,0],[1,0]],[[5,5],[6,6]]]"));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1].points, (Points{{5, 5, 0}, {6, 6, 0}}));
}

TEST_F(GeoJsonTest, PolygonsAreRingsWithoutTheRepeatedPoint)
{
    const auto parts = partsOf(geometry("Polygon", "[[[0,0],[9,0],[9,9],[0,0]],[[5,1],[6,1],[6,2],[5,1]]]"));
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0].kind, FeaturePart::Ring);
    EXPECT_FALSE(parts[0].hole);
    EXPECT_EQ(parts[0].points, (Points{{0, 0, 0}, {9, 0, 0}, {9, 9, 0}}));
    EXPECT_TRUE(parts[1].hole);
    const auto several =
        partsOf(geometry("MultiPolygon", "[[[[0,0],[1,0],[1,1],[0,0]]],[[[5,0],[6,0],[6,1],[5,0]]]]"));
    ASSERT_EQ(several.size(), 2u);
    EXPECT_FALSE(several[1].hole);
}

TEST_F(GeoJsonTest, CollectionOfGeometriesIsOneFeature)
{
    const auto parts = partsOf("{\"type\":\"GeometryCollection\",\"geometries\":[" + point + "," +
                               geometry("LineString", "[[0,0],[1,0]]") +
                               ",{\"type\":\"GeometryCollection\",\"geometries\":[" + point + "]}]}");
    ASSERT_EQ(parts.size(), 3u);
    EXPECT_EQ(parts[1].kind, FeaturePart::Line);
}

TEST_F(GeoJsonTest, MillimetresLastAtGeodeticCoordinates)
{
    const Features features =
        readFile(collection(feature(geometry("Point", "[2700000.123,1200000.456]")) + "," +
                            feature(geometry("Point", "[2700000.124,1200000.456]"))));
    EXPECT_EQ(features.at(0)->getParts()[0].points[0].x, 2700000.123);
    EXPECT_EQ(features.at(1)->getParts()[0].points[0].x, 2700000.124);
}

TEST_F(GeoJsonTest, FeaturesHaveNameIdAndProperties)
{
    const Features features = readFile(collection(
        feature(point, ",\"id\":7,\"properties\":{\"name\":\"Mill\",\"floors\":3,\"height\":7.5,\"old\":true,"
                       "\"owner\":null,\"tags\":[1,\"a\"]}") +
        "," + feature(point, ",\"id\":\"plot-9\"")));
    const FeatureElement& mill = *features.at(0);
    EXPECT_EQ(mill.getName(), "Mill");
    EXPECT_EQ(mill.getSourceId(), "7");
    EXPECT_EQ(mill.getProperty("floors").toInt(), 3);
    EXPECT_EQ(mill.getProperty("height").toDouble(), 7.5);
    EXPECT_EQ(mill.getProperty("old"), QVariant(true));
    EXPECT_TRUE(mill.getPropertyNames().contains("owner"));
    EXPECT_EQ(mill.getProperty("tags").toList().size(), 2);
    EXPECT_EQ(features.at(1)->getName(), "plot-9");
}

TEST_F(GeoJsonTest, FeaturesWithoutGeometryAreKept)
{
    const Features features =
        readFile(collection(feature("null", ",\"properties\":{\"name\":\"lost\"}") + "," + feature(point)));
    ASSERT_EQ(features.size(), 2u);
    EXPECT_EQ(features[0]->getName(), "lost");
    EXPECT_TRUE(features[0]->getBounds().isNull());
    EXPECT_EQ(refusalOf(collection(feature("null"))), "has nothing to draw");
    EXPECT_EQ(refusalOf(collection("")), "has nothing to draw");
    EXPECT_EQ(refusalOf(geometry("MultiPoint", "[]")), "has nothing to draw");
}

TEST_F(GeoJsonTest, ByteOrderMarkIsNoMistake)
{
    EXPECT_EQ(readFile("\xef\xbb\xbf" + point).size(), 1u);
}

TEST_F(GeoJsonTest, WrongShapesAreRefusedWithTheirFeature)
{
    EXPECT_EQ(refusalOf(collection(feature(point) + "," + feature(geometry("LineString", "[[0,0]]")))),
              "feature 2: a line of one position");
    EXPECT_EQ(refusalOf(geometry("Polygon", "[[[0,0],[1,0],[0,0]]]")),
              "feature 1: a ring of fewer than three different positions");
    EXPECT_EQ(refusalOf(geometry("Point", "[1]")), "feature 1: a position of fewer than two numbers");
    EXPECT_EQ(refusalOf(geometry("Point", "[1,\"2\"]")), "feature 1: a coordinate is no number");
    EXPECT_EQ(refusalOf(geometry("Point", "[1,1e16]")),
              "feature 1: a coordinate is not finite or beyond 1e15");
    EXPECT_EQ(refusalOf(geometry("Circle", "[1,2]")),
              "feature 1: \"Circle\" is not a type of GeoJSON geometry");
    EXPECT_EQ(refusalOf(geometry("LineString", "7")),
              "feature 1: its geometry lacks a list of coordinates or geometries");
    EXPECT_EQ(refusalOf(collection(point)), "feature 1: it is no feature");
    EXPECT_EQ(refusalOf("{\"type\":\"FeatureCollection\"}"), "has a collection without a list of features");
    EXPECT_EQ(refusalOf("[1,2]"), "is not GeoJSON");
}

TEST_F(GeoJsonTest, NumbersTooLargeForADoubleAreRefused)
{
    EXPECT_TRUE(refusalOf(geometry("Point", "[1,1e999]")).contains("JSON") ||
                refusalOf(geometry("Point", "[1,1e999]")).contains("not finite"));
}

TEST_F(GeoJsonTest, TextThatIsNoJsonIsRefusedWithItsPlace)
{
    EXPECT_TRUE(refusalOf("{\"type\":\"Point\",").startsWith("is not valid JSON at byte "));
    EXPECT_TRUE(refusalOf("nonsense").startsWith("is not valid JSON at byte "));
}

TEST_F(GeoJsonTest, DeepNestingIsRefused)
{
    QByteArray deep = point;
    for (int i = 0; i < 100; ++i)
        deep = "{\"type\":\"GeometryCollection\",\"geometries\":[" + deep + "]}";
    EXPECT_EQ(refusalOf(deep), "feature 1: its geometry is nested too deeply");
    EXPECT_TRUE(refusalOf(QByteArray(1'000'000, '[')).startsWith("is not valid JSON"));
}

TEST_F(GeoJsonTest, PropertiesNestedDeeperThanAProjectStoresAreText)
{
    QByteArray deep = "1";
    for (int i = 0; i < 40; ++i)
        deep = "[" + deep + "]";
    const Features features = readFile(feature(point, ",\"properties\":{\"deep\":" + deep + "}"));
    EXPECT_EQ(features.at(0)->getProperty("deep"), QVariant(QString::fromUtf8(deep)));
    CQtArchive archive;
    features[0]->serialize(archive); // throws for what nests too deeply
    EXPECT_FALSE(archive.data().isEmpty());
}

TEST_F(GeoJsonTest, MembersStandInAnyOrder)
{
    const Features features = readFile(
        R"({"features":[{"properties":{"name":"a"},"id":"x","geometry":{"coordinates":[[[0,0],[9,0],[9,9],[0,0]]],)"
        R"("type":"Polygon"},"type":"Feature"},{"geometry":{"geometries":[{"coordinates":[1,2],"type":"Point"}],)"
        R"("type":"GeometryCollection"},"type":"Feature"}],"type":"FeatureCollection"})");
    ASSERT_EQ(features.size(), 2u);
    EXPECT_EQ(features[0]->getName(), "a");
    EXPECT_EQ(features[0]->getSourceId(), "x");
    EXPECT_EQ(features[0]->getParts().at(0).points, (Points{{0, 0, 0}, {9, 0, 0}, {9, 9, 0}}));
    EXPECT_EQ(features[1]->getParts().at(0).points, (Points{{1, 2, 0}}));
    const Features single =
        readFile(R"({"properties":{"name":"b"},"geometry":)" + point + R"(,"type":"Feature"})");
    EXPECT_EQ(single.at(0)->getName(), "b");
}

TEST_F(GeoJsonTest, OfMembersGivenTwiceTheLastHolds)
{
    const Features features = readFile(
        R"({"type":"Feature","type":"FeatureCollection","features":[{"type":"Feature"}],"features":[)"
        R"({"type":"Point","type":"Feature","id":1,"id":2,"geometry":{"type":"LineString","coordinates":[[0,0],[1,1]],)"
        R"("type":"Point","coordinates":[3,4]},"geometry":{"type":"Point","coordinates":[9],"coordinates":[5,6]},)"
        R"("properties":{"old":1},"properties":{"a":1,"b":2,"a":3}}]})");
    ASSERT_EQ(features.size(), 1u);
    EXPECT_EQ(features[0]->getSourceId(), "2");
    ASSERT_EQ(features[0]->getParts().size(), 1u);
    EXPECT_EQ(features[0]->getParts()[0].points, (Points{{5, 6, 0}}));
    EXPECT_EQ(features[0]->getPropertyNames(), (QStringList{"a", "b"}));
    EXPECT_EQ(features[0]->getProperty("a"), QVariant(3LL));
}

TEST_F(GeoJsonTest, MembersOfNoMeaningArePassedOver)
{
    const QByteArray other =
        R"("bbox":[1,2,3,4],"crs":{"type":"name","properties":{"name":"EPSG:2056"}},"x":[[{"id":7}]])";
    const Features features =
        readFile(R"({"type":"FeatureCollection",)" + other +
                 R"(,"features":[{"type":"Feature","coordinates":7,"features":[1],"geometry":{)" + other +
                 R"(,"id":8,"properties":3,"type":"Point","coordinates":[1,2]},)" + other +
                 R"(,"properties":{"type":"Circle","geometry":{"id":1}}}]})");
    ASSERT_EQ(features.size(), 1u);
    EXPECT_EQ(features[0]->getSourceId(), "");
    EXPECT_EQ(features[0]->getParts().at(0).points, (Points{{1, 2, 0}}));
    EXPECT_EQ(features[0]->getProperty("type"), QVariant("Circle"));
}

TEST_F(GeoJsonTest, PropertiesKeepTheOrderOfTheFileAndTheirTypes)
{
    const Features features = readFile(feature(
        point, R"(,"properties":{"z":2.50,"a":3.0,"big":9007199254740993,"huge":1e300,"no":false,"nil":null,)"
               R"("text":"\u00e9\n","":1,"map":{"k":[1,{}]}})"));
    const FeatureElement& f = *features.at(0);
    EXPECT_EQ(f.getPropertyNames(), (QStringList{"z", "a", "big", "huge", "no", "nil", "text", "map"}));
    const auto isSame = [&f](const char* name, const QVariant& value) {
        return f.getProperty(name).userType() == value.userType() && f.getProperty(name) == value;
    };
    EXPECT_TRUE(isSame("z", 2.5));
    EXPECT_TRUE(isSame("a", 3LL));
    EXPECT_TRUE(isSame("big", 9007199254740993LL));
    EXPECT_TRUE(isSame("huge", 1e300));
    EXPECT_TRUE(isSame("no", false));
    EXPECT_TRUE(isSame("nil", QVariant::fromValue(nullptr)));
    EXPECT_TRUE(isSame("text", QString::fromUtf8("\xc3\xa9\n")));
    EXPECT_EQ(f.getProperty("map").toMap().value("k").toList().size(), 2);
}

TEST_F(GeoJsonTest, NamesAndIdsMayBeNumbers)
{
    const Features features =
        readFile(collection(feature(point, R"(,"id":12345678901,"properties":{"name":4.5})") + "," +
                            feature(point, R"(,"id":2.5,"properties":{"name":true})") + "," +
                            feature(point, R"(,"id":[3],"properties":7)")));
    EXPECT_EQ(features.at(0)->getSourceId(), "12345678901");
    EXPECT_EQ(features[0]->getName(), "4.5");
    EXPECT_EQ(features.at(1)->getName(), "2.5");
    EXPECT_EQ(features.at(2)->getSourceId(), "");
    EXPECT_TRUE(features[2]->getPropertyNames().isEmpty());
}

TEST_F(GeoJsonTest, LongListsOfAPropertyAreText)
{
    const auto listOf = [](int count) {
        return "[ " + QByteArray("1 ,\t").repeated(count - 1) + "\" \\\" ]\" ]";
    };
    const Features features = readFile(
        feature(point, ",\"properties\":{\"short\":" + listOf(63) + ",\"long\":" + listOf(64) + "}"));
    EXPECT_EQ(features.at(0)->getProperty("short").toList().size(), 63);
    EXPECT_EQ(features[0]->getProperty("long"),
              QVariant(QString("[" + QString("1,").repeated(63) + "\" \\\" ]\"]")));
}

TEST_F(GeoJsonTest, CoordinatesStayTheDoublesOfTheFile)
{
    const std::vector<FeaturePart> parts = partsOf(geometry(
        "LineString", "[[0.1,-0.30000000000000004],[2700000.1230000001,1e15],[-1e15,5e-324,1e-999]]"));
    EXPECT_EQ(parts.at(0).points,
              (Points{{0.1, -0.30000000000000004, 0}, {2700000.1230000001, 1e15, 0}, {-1e15, 5e-324, 0}}));
    EXPECT_EQ(refusalOf(geometry("Point", "[1,1000000000000000.2]")),
              "feature 1: a coordinate is not finite or beyond 1e15");
    EXPECT_TRUE(refusalOf(geometry("Point", "[1,NaN]")).startsWith("is not valid JSON"));
}

TEST_F(GeoJsonTest, ListsOfTheWrongDepthAreRefused)
{
    const QString noList = "feature 1: its geometry lacks a list of coordinates or geometries";
    const QString noNumber = "feature 1: a coordinate is no number";
    EXPECT_EQ(refusalOf(geometry("LineString", "[1,2]")), noList);
    EXPECT_EQ(refusalOf(geometry("Polygon", "[[0,0],[1,0],[1,1]]")), noList);
    EXPECT_EQ(refusalOf(geometry("Point", "[[1,2]]")), noNumber);
    EXPECT_EQ(refusalOf(geometry("MultiPoint", "[[[1,2]]]")), noNumber);
    EXPECT_EQ(refusalOf(geometry("MultiPolygon", "[[[[[1,2]]]]]")), noNumber);
    EXPECT_EQ(refusalOf(geometry("MultiPoint", "[[1,2],[[3,4]]]")), noNumber);
    EXPECT_EQ(refusalOf(geometry("MultiLineString", "[[[1,2],[3,4]],[5,6]]")), noList);
    EXPECT_EQ(refusalOf(geometry("MultiPoint", "[[1,2],3]")), noList);
    EXPECT_EQ(refusalOf(geometry("MultiPoint", "[[1,[2]]]")), noNumber);
    EXPECT_EQ(refusalOf(geometry("MultiPoint", "[[1,{\"a\":[1,2]}]]")), noNumber);
    EXPECT_EQ(refusalOf(geometry("MultiPoint", "[[1,null]]")), noNumber);
    EXPECT_EQ(refusalOf(geometry("Point", "null")), noList);
    EXPECT_EQ(refusalOf(geometry("Point", "{\"a\":1}")), noList);
    EXPECT_EQ(refusalOf("{\"type\":\"Point\"}"), noList);
    EXPECT_EQ(refusalOf("{\"type\":\"GeometryCollection\",\"geometries\":7}"), noList);
}

TEST_F(GeoJsonTest, WhatComesAfterTheThirdNumberIsPassedOver)
{
    EXPECT_EQ(partsOf(geometry("MultiPoint", "[[1,2,3,1e300,\"m\",[[4]],{}],[5,6]]")).at(0).points,
              (Points{{1, 2, 3}, {5, 6, 0}}));
}

TEST_F(GeoJsonTest, EmptyListsAreGeometriesWithNothingInThem)
{
    for (const char* type :
         {"Point", "MultiPoint", "LineString", "MultiLineString", "Polygon", "MultiPolygon"})
        EXPECT_EQ(refusalOf(geometry(type, "[]")), "has nothing to draw") << type;
    EXPECT_EQ(refusalOf(geometry("MultiLineString", "[[],[]]")), "has nothing to draw");
    EXPECT_EQ(partsOf(geometry("MultiLineString", "[[],[[0,0],[1,1]],[]]")).size(), 1u);
    EXPECT_EQ(refusalOf(geometry("MultiPolygon", "[[],[]]")), "has nothing to draw");
    EXPECT_EQ(refusalOf(geometry("Polygon", "[[]]")),
              "feature 1: a ring of fewer than three different positions");
    EXPECT_EQ(refusalOf(geometry("LineString", "[[]]")), "feature 1: a position of fewer than two numbers");
    EXPECT_EQ(refusalOf(geometry("MultiPoint", "[[1,2],[]]")),
              "feature 1: a position of fewer than two numbers");
}

TEST_F(GeoJsonTest, HolesBelongToTheirPolygon)
{
    const QByteArray ring = "[[0,0],[1,0],[1,1],[0,0]]";
    const auto parts = partsOf(geometry("MultiPolygon", "[[" + ring + "," + ring + "],[],[" + ring + "],[" +
                                                            ring + "," + ring + "," + ring + "]]"));
    std::vector<bool> holes;
    for (const FeaturePart& part : parts)
        holes.push_back(part.hole);
    EXPECT_EQ(holes, (std::vector<bool>{false, true, false, false, true, true}));
}

TEST_F(GeoJsonTest, WhatStandsAmongFeaturesAndGeometriesIsAnObject)
{
    for (const char* other : {"null", "7", "\"a\"", "[]", "{}"})
        EXPECT_EQ(refusalOf(collection(feature(point) + "," + other)), "feature 2: it is no feature")
            << other;
    EXPECT_EQ(refusalOf("{\"type\":\"GeometryCollection\",\"geometries\":[7]}"),
              "feature 1: one of its geometries is no object");
    EXPECT_EQ(refusalOf(feature("[]")), "feature 1: its geometry is no object");
    EXPECT_EQ(refusalOf(feature("7")), "feature 1: its geometry is no object");
}
