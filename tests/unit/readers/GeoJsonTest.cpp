#include "ReaderTest.h"

#include <framework/ksp/CommonError.h>
#include <readers/geojson/GeoJsonParser.h>
#include <readers/geojson/readGeoJson.h>

namespace {

using Part = FeatureElement::Part;
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
    std::vector<Part> partsOf(const QByteArray& geometry) const
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
    EXPECT_EQ(plane.at(0).kind, Part::Point);
    EXPECT_EQ(plane[0].points, (Points{{1, 2, 0}}));
    EXPECT_EQ(partsOf(geometry("Point", "[1,2,3,4]")).at(0).points, (Points{{1, 2, 3}}));
    EXPECT_EQ(partsOf(geometry("MultiPoint", "[[1,2],[3,4,5]]")).at(0).points,
              (Points{{1, 2, 0}, {3, 4, 5}}));
}

TEST_F(GeoJsonTest, Lines)
{
    const auto line = partsOf(geometry("LineString", "[[0,0],[1,0],[1,1]]"));
    EXPECT_EQ(line.at(0).kind, Part::Line);
    EXPECT_EQ(line[0].points, (Points{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
    const auto lines = partsOf(geometry("MultiLineString", "[[[0,0],[1,0]],[[5,5],[6,6]]]"));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1].points, (Points{{5, 5, 0}, {6, 6, 0}}));
}

TEST_F(GeoJsonTest, PolygonsAreRingsWithoutTheRepeatedPoint)
{
    const auto parts = partsOf(geometry("Polygon", "[[[0,0],[9,0],[9,9],[0,0]],[[5,1],[6,1],[6,2],[5,1]]]"));
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0].kind, Part::Ring);
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
    EXPECT_EQ(parts[1].kind, Part::Line);
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
