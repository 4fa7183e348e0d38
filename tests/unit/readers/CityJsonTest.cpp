#include "ReaderTest.h"

#include <framework/ksp/CommonError.h>
#include <readers/cityjson/readCityJson.h>
#include <tests/support/LogTrap.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

using Elements = readers::CityJsonParser::Elements;
using Piece = CityGeometry::Piece;

std::string refusalOf(const QString& path)
{
    try {
        readers::readCityJson(path, {}, ksp::StagedProgress::dummy());
    } catch (const ksp::CommonError& error) {
        EXPECT_FALSE(error.text().contains('\n'));
        return error.text().mid(path.size() + 2).toStdString();
    }
    return "was read";
}

class CityJsonTest : public ReaderTest
{
protected:
    Elements readFile(const QByteArray& json, std::optional<double> lod = {}) const
    {
        return readers::readCityJson(write("file.city.json", json), lod, ksp::StagedProgress::dummy());
    }
    std::string refusal(const QByteArray& json) const { return refusalOf(write("file.city.json", json)); }
    CityGeometry geometryOf(const QByteArray& geometries, std::optional<double> lod = {}) const;
};

// Four corners of a square at 0 to 1 m, then the same at a height of 1 m, in centimetres.
const QByteArray cube =
    "[[0,0,0],[100,0,0],[100,100,0],[0,100,0],[0,0,100],[100,0,100],[100,100,100],[0,100,100]]";

QByteArray city(const QByteArray& objects, const QByteArray& rest = {}, const QByteArray& vertices = cube)
{
    return R"({"type":"CityJSON","version":"2.0","transform":{"scale":[0.01,0.01,0.01],"translate":[2600000.5,1200000.25,400]},)"
           R"("CityObjects":{)" +
           objects + "},\"vertices\":" + vertices + rest + "}";
}

QByteArray object(const QByteArray& geometries, const QByteArray& rest = {})
{
    return R"("a":{"type":"Building","geometry":[)" + geometries + "]" + rest + "}";
}

QByteArray surfaces(const QByteArray& boundaries, const QByteArray& rest = {})
{
    return R"({"type":"MultiSurface","lod":"2","boundaries":)" + boundaries + rest + "}";
}

CityGeometry CityJsonTest::geometryOf(const QByteArray& geometries, std::optional<double> lod) const
{
    const Elements elements = readFile(city(object(geometries)), lod);
    EXPECT_EQ(elements.size(), 1u);
    EXPECT_TRUE(elements.at(0)->getGeometry().isSound());
    return elements.at(0)->getGeometry();
}

// The corners of one ring, in model coordinates.
std::vector<glm::dvec3> ringOf(const CityGeometry& geometry, std::size_t ring)
{
    std::vector<glm::dvec3> points;
    for (std::uint32_t i = geometry.cornerBegin(ring); i < geometry.ringEnds[ring]; ++i)
        points.push_back(geometry.vertices[geometry.corners[i]]);
    return points;
}

// The area within an outer ring less those of holes, from shoelace sums.
double areaOfRings(const std::vector<std::vector<glm::dvec3>>& rings)
{
    double area = 0.0;
    for (const auto& ring : rings) {
        glm::dvec3 sum(0.0);
        for (std::size_t i = 0; i < ring.size(); ++i)
            sum += glm::cross(ring[i] - ring[0], ring[(i + 1) % ring.size()] - ring[0]);
        area += (&ring == &rings.front() ? 0.5 : -0.5) * glm::length(sum);
    }
    return area;
}

struct Counts
{
    std::size_t objects = 0;
    std::size_t surfaces = 0;
    std::map<QString, double> areas; ///< by kind
};

Counts countsOf(const Elements& elements)
{
    Counts counts;
    counts.objects = elements.size();
    for (const auto& element : elements) {
        const CityGeometry& geometry = element->getGeometry();
        for (std::size_t i = 0; i < geometry.pieces.size(); ++i) {
            if (geometry.pieces[i].kind != Piece::Surface) continue;
            ++counts.surfaces;
            std::vector<std::vector<glm::dvec3>> rings;
            for (std::uint32_t ring = geometry.ringBegin(i); ring < geometry.pieces[i].ringEnd; ++ring)
                rings.push_back(ringOf(geometry, ring));
            counts.areas[geometry.looks[geometry.pieces[i].look].kind] += areaOfRings(rings);
        }
    }
    return counts;
}

// The same of a file whose geometries are all MultiSurface with semantics, by a reader of JSON that knows
// nothing of ours.
Counts countsOf(const QByteArray& json)
{
    const QJsonObject root = QJsonDocument::fromJson(json).object();
    const QJsonArray scale = root["transform"]["scale"].toArray(), vertices = root["vertices"].toArray();
    Counts counts;
    const QJsonObject objects = root["CityObjects"].toObject();
    for (const QJsonValue& object : objects) {
        ++counts.objects;
        for (const QJsonValue& geometry : object["geometry"].toArray()) {
            const QJsonObject semantics = geometry["semantics"].toObject();
            int number = 0;
            for (const QJsonValue& surface : geometry["boundaries"].toArray()) {
                std::vector<std::vector<glm::dvec3>> rings;
                for (const QJsonValue& ring : surface.toArray()) {
                    rings.emplace_back();
                    for (const QJsonValue& index : ring.toArray()) {
                        const QJsonArray v = vertices[index.toInt()].toArray();
                        rings.back().emplace_back(v[0].toDouble() * scale[0].toDouble(),
                                                  v[1].toDouble() * scale[1].toDouble(),
                                                  v[2].toDouble() * scale[2].toDouble());
                    }
                }
                const int kind = semantics["values"].toArray()[number++].toInt();
                counts.areas[semantics["surfaces"].toArray()[kind].toObject()["type"].toString()] +=
                    areaOfRings(rings);
                ++counts.surfaces;
            }
        }
    }
    return counts;
}

// A house of 10 m x 8 m, walls of 5 m, a gable roof to 8 m, and a second one beside it, 20 m to the east. The
// ground has a court of 2 m x 2 m.
QByteArray houses()
{
    QByteArray vertices, objects;
    for (int house = 0; house < 2; ++house) {
        const int first = 14 * house;
        const int corners[14][3] = {{0, 0, 0},     {1000, 0, 0},     {1000, 800, 0},   {0, 800, 0},
                                    {0, 0, 500},   {1000, 0, 500},   {1000, 800, 500}, {0, 800, 500},
                                    {0, 400, 800}, {1000, 400, 800}, {300, 300, 0},    {300, 500, 0},
                                    {500, 500, 0}, {500, 300, 0}};
        for (const auto& corner : corners)
            vertices += QByteArray(vertices.isEmpty() ? "[" : ",[") +
                        QByteArray::number(corner[0] + 2000 * house) + ',' + QByteArray::number(corner[1]) +
                        ',' + QByteArray::number(corner[2]) + ']';
        QByteArray boundaries = "[";
        const std::vector<std::vector<int>> faces[] = {{{0, 3, 2, 1}, {10, 13, 12, 11}},
                                                       {{0, 1, 5, 4}},
                                                       {{2, 3, 7, 6}},
                                                       {{1, 2, 6, 9, 5}},
                                                       {{3, 0, 4, 8, 7}},
                                                       {{4, 5, 9, 8}},
                                                       {{8, 9, 6, 7}}};
        for (const auto& face : faces) {
            boundaries += boundaries.size() > 1 ? ",[" : "[";
            for (std::size_t ring = 0; ring < face.size(); ++ring) {
                boundaries += ring > 0 ? ",[" : "[";
                for (std::size_t i = 0; i < face[ring].size(); ++i)
                    boundaries += (i > 0 ? "," : "") + QByteArray::number(face[ring][i] + first);
                boundaries += "]";
            }
            boundaries += "]";
        }
        objects += QByteArray(house > 0 ? "," : "") + "\"house" + QByteArray::number(house) +
                   R"(":{"type":"Building","geometry":[)" +
                   surfaces(boundaries + "]",
                            R"(,"semantics":{"surfaces":[{"type":"GroundSurface"},{"type":"WallSurface"},)"
                            R"({"type":"RoofSurface"}],"values":[0,1,1,1,1,2,2]})") +
                   "]}";
    }
    return city(objects, {}, '[' + vertices + ']');
}

void expectSame(const Counts& counts, const Counts& expected)
{
    EXPECT_EQ(counts.objects, expected.objects);
    EXPECT_EQ(counts.surfaces, expected.surfaces);
    ASSERT_EQ(counts.areas.size(), expected.areas.size());
    for (const auto& [kind, area] : expected.areas)
        EXPECT_NEAR(counts.areas.at(kind), area, 1e-6 * area) << qPrintable(kind);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

// Files of the field, where they lie beside the project; without them there are no such tests.
const QDir& realFiles()
{
    static const QDir folder(QStringLiteral(V3D_SOURCE_DIR "/../shared/data/cityjson"));
    return folder;
}

class RealFile : public ::testing::TestWithParam<QString>
{
};

class RealPrecision : public RealFile
{
};

class RealTown : public RealFile
{
};

std::vector<QString> listReal(const QStringList& patterns)
{
    const QStringList names = realFiles().entryList(patterns, QDir::Files);
    return {names.begin(), names.end()};
}

std::string testName(const ::testing::TestParamInfo<QString>& info)
{
    std::string name = info.param.toStdString();
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealFile);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealPrecision);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealTown);
INSTANTIATE_TEST_SUITE_P(Files, RealPrecision, ::testing::ValuesIn(listReal({"coordinates_precision*"})),
                         testName);
INSTANTIATE_TEST_SUITE_P(Files, RealTown, ::testing::ValuesIn(listReal({"rotterdam_subset.json"})), testName);
INSTANTIATE_TEST_SUITE_P(Files, RealFile, ::testing::ValuesIn(listReal({"*.json", "*.jsonl"})), testName);

} // namespace

TEST_F(CityJsonTest, CoordinatesAreScaledAndMovedInDoubles)
{
    const CityGeometry geometry = geometryOf(surfaces("[[[0,1,2,3]]]"));
    ASSERT_EQ(geometry.vertices.size(), 4u);
    EXPECT_NEAR(geometry.vertices[2].x, 2600001.5, 1e-9);
    EXPECT_NEAR(geometry.vertices[2].y, 1200001.25, 1e-9);
    EXPECT_NEAR(geometry.vertices[2].z, 400.0, 1e-9);
}

TEST_F(CityJsonTest, SurfacesHaveHolesAndEachVertexOnce)
{
    const CityGeometry geometry = geometryOf(surfaces("[[[0,1,2,3],[4,5,6]],[[0,1,5,4]]]"));
    ASSERT_EQ(geometry.pieces.size(), 2u);
    EXPECT_EQ(geometry.pieces[0].ringEnd, 2u);
    EXPECT_EQ(geometry.pieces[1].ringEnd, 3u);
    EXPECT_EQ(geometry.ringEnds, (std::vector<std::uint32_t>{4, 7, 11}));
    EXPECT_EQ(geometry.vertices.size(), 7u);
}

TEST_F(CityJsonTest, EveryTypeOfGeometry)
{
    const auto countOf = [this](const char* type, const QByteArray& boundaries) {
        return geometryOf("{\"type\":\"" + QByteArray(type) + "\",\"lod\":1,\"boundaries\":" + boundaries +
                          "}")
            .pieces;
    };
    EXPECT_EQ(countOf("MultiPoint", "[0,1,2]").at(0).kind, Piece::Points);
    EXPECT_EQ(countOf("MultiLineString", "[[0,1,2],[3,4]]").size(), 2u);
    EXPECT_EQ(countOf("MultiLineString", "[[0,1,2],[3,4]]")[1].kind, Piece::Line);
    EXPECT_EQ(countOf("CompositeSurface", "[[[0,1,2]],[[1,2,3]]]").size(), 2u);
    EXPECT_EQ(countOf("Solid", "[[[[0,1,2]],[[1,2,3]]],[[[4,5,6]]]]").size(), 3u) << "with an inner shell";
    EXPECT_EQ(countOf("MultiSolid", "[[[[[0,1,2]]]],[[[[1,2,3]],[[4,5,6]]]]]").size(), 3u);
    EXPECT_EQ(countOf("CompositeSolid", "[[[[[0,1,2]]]]]").size(), 1u);
}

TEST_F(CityJsonTest, SemanticsAtEveryDepth)
{
    const QByteArray kinds = R"("surfaces":[{"type":"RoofSurface","x":{"type":"no"}},{"type":"+Patio"}])";
    const auto kindsOf = [](const CityGeometry& geometry) {
        QStringList names;
        for (const Piece& piece : geometry.pieces)
            names.append(geometry.looks[piece.look].kind);
        return names;
    };
    EXPECT_EQ(kindsOf(geometryOf(surfaces("[[[0,1,2]],[[1,2,3]],[[2,3,4]]]",
                                          ",\"semantics\":{" + kinds + ",\"values\":[1,null,0]}"))),
              (QStringList{"+Patio", "", "RoofSurface"}));
    EXPECT_EQ(
        kindsOf(geometryOf(R"({"type":"MultiSolid","boundaries":[[[[[0,1,2]],[[1,2,3]]]],[[[[4,5,6]]]]],)"
                           R"("semantics":{"values":[[[0,1]],null],)" +
                           kinds + "}}")),
        (QStringList{"RoofSurface", "+Patio", ""}))
        << "null stands for all that is in it";
    EXPECT_EQ(
        kindsOf(geometryOf(R"({"type":"MultiPoint","boundaries":[0,1,2],"semantics":{"values":[0,0,1],)" +
                           kinds + "}}")),
        (QStringList{"RoofSurface", "+Patio"}));
}

TEST_F(CityJsonTest, MaterialsAndTexturesOfTheDefaultTheme)
{
    write("wall.png", "not looked into");
    const QByteArray appearance =
        R"(,"appearance":{"default-theme-texture":"day","default-theme-material":"b","materials":[{"name":"x"},)"
        R"({"name":"y","diffuseColor":[1.0,0.5,0],"transparency":0.25}],"textures":[{"type":"PNG","image":"gone.png","wrapMode":"clamp"},)"
        R"({"type":"PNG","image":"wall.png","wrapMode":"border","borderColor":[0,0.4,1,0.2]}],"vertices-texture":[[0,0],[1,0],[1,1],[0,0.5]]})";
    const Elements elements = readFile(city(
        object(surfaces(
            "[[[0,1,2,3]],[[4,5,6]]]",
            R"(,"material":{"a":{"value":0},"b":{"values":[1,null]}},)"
            R"("texture":{"day":{"values":[[[1,0,1,2,3]],[[null]]]},"night":{"value":[[[0,0,0,0,0]],[[null]]]}})")),
        appearance));
    EXPECT_EQ(LogTrap::take().size(), 1) << "gone.png";
    const CityGeometry& geometry = elements.at(0)->getGeometry();
    ASSERT_EQ(geometry.pieces.size(), 2u);
    const CityGeometry::Look& first = geometry.looks[geometry.pieces[0].look];
    EXPECT_EQ(first.color, QColor::fromRgbF(1.0, 0.5, 0.0, 0.75));
    EXPECT_EQ(first.image, folder.filePath("wall.png"));
    EXPECT_EQ(first.wrapping, CityGeometry::Look::Border);
    EXPECT_EQ(first.border, QColor::fromRgbF(0.0, 0.4, 1.0, 0.2));
    EXPECT_FALSE(geometry.looks[geometry.pieces[1].look].color.isValid());
    EXPECT_EQ(geometry.looks[geometry.pieces[1].look].image, "");
    ASSERT_EQ(geometry.texCoords.size(), 7u);
    EXPECT_EQ(geometry.texCoords[3], glm::vec2(0.0f, 0.5f));
    EXPECT_TRUE(geometry.isSound());
}

TEST_F(CityJsonTest, TexturesSayHowTheyGoOnBeyondTheirBorders)
{
    write("wall.png", "not looked into");
    const auto wrappingOf = [this](const char* rest) {
        const QByteArray texture = R"({"type":"PNG","image":"wall.png")" + QByteArray(rest) + "}";
        const Elements elements =
            readFile(city(object(surfaces("[[[0,1,2]]]", R"(,"texture":{"t":{"values":[[[0,0,0,0]]]}})")),
                          R"(,"appearance":{"vertices-texture":[[0,0]],"textures":[)" + texture + "]}"));
        return elements.at(0)->getGeometry().looks.at(0);
    };
    using Look = CityGeometry::Look;
    EXPECT_EQ(wrappingOf("").wrapping, Look::Repeat);
    EXPECT_EQ(wrappingOf(R"(,"wrapMode":"wrap")").wrapping, Look::Repeat);
    EXPECT_EQ(wrappingOf(R"(,"wrapMode":"mirror")").wrapping, Look::Mirror);
    EXPECT_EQ(wrappingOf(R"(,"wrapMode":"clamp")").wrapping, Look::Clamp);
    EXPECT_EQ(wrappingOf(R"(,"wrapMode":"none")").wrapping, Look::Border);
    EXPECT_FALSE(wrappingOf(R"(,"wrapMode":"none")").border.isValid());
    const Look border = wrappingOf(R"(,"borderColor":[1,0,0],"wrapMode":"border")");
    EXPECT_EQ(border.wrapping, Look::Border);
    EXPECT_EQ(border.border, QColor(Qt::red));
    EXPECT_FALSE(wrappingOf(R"(,"borderColor":[1,0])").border.isValid());
}

TEST_F(CityJsonTest, OfManyMissingTexturesSomeAreNamedAndTheRestCounted)
{
    QByteArray textures = R"({"type":"PNG","image":"0.png"})";
    for (int i = 1; i < 13; ++i)
        textures += R"(,{"type":"PNG","image":")" + QByteArray::number(i) + ".png\"}";
    readFile(city("", ",\"appearance\":{\"textures\":[" + textures + "]}"));
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 11);
    EXPECT_TRUE(lines[9].contains("\"9.png\" is missing"));
    EXPECT_TRUE(lines[10].endsWith(": 3 more textures are missing"));
}

TEST_F(CityJsonTest, InstancesAreMovedByMatrixAndVertex)
{
    // twice as large, turned a quarter to the left, 3 m up, at the vertex (1 m, 0, 0)
    const Elements elements =
        readFile(city(object(R"({"type":"GeometryInstance","template":0,"boundaries":[1],)"
                             R"("transformationMatrix":[0,-2,0,0, 2,0,0,0, 0,0,2,3, 0,0,0,1]})"),
                      R"(,"geometry-templates":{"templates":[)" + surfaces("[[[0,1,2]]]") +
                          R"(],"vertices-templates":[[0,0,0],[1.5,0,0],[0,1,0.25]]})"));
    const CityGeometry& geometry = elements.at(0)->getGeometry();
    ASSERT_EQ(geometry.vertices.size(), 3u);
    EXPECT_NEAR(glm::distance(geometry.vertices[0], glm::dvec3(2600001.5, 1200000.25, 403)), 0.0, 1e-9);
    EXPECT_NEAR(glm::distance(geometry.vertices[1], glm::dvec3(2600001.5, 1200003.25, 403)), 0.0, 1e-9);
    EXPECT_NEAR(glm::distance(geometry.vertices[2], glm::dvec3(2599999.5, 1200000.25, 403.5)), 0.0, 1e-9);
}

TEST_F(CityJsonTest, FinestLevelOfDetailUnlessACoarserOneIsWanted)
{
    const auto level = [](const char* lod, const char* boundaries) {
        return QByteArray(R"({"type":"MultiSurface","lod":)") + lod + ",\"boundaries\":" + boundaries + "}";
    };
    const QByteArray all = level("\"1.2\"", "[[[0,1,2]]]") + "," + level("\"2.2\"", "[[[0,1,2]],[[1,2,3]]]") +
                           "," + level("1", "[]") + "," + level("\"2.2\"", "[[[4,5,6]]]");
    EXPECT_EQ(geometryOf(all).pieces.size(), 3u) << "both of 2.2";
    EXPECT_EQ(geometryOf(all, 2.2).pieces.size(), 3u);
    EXPECT_EQ(geometryOf(all, 2.1).pieces.size(), 1u) << "1.2";
    EXPECT_EQ(geometryOf(all, 2.0).pieces.size(), 3u) << "2 holds for 2.2";
    EXPECT_EQ(geometryOf(all, 1.0).pieces.size(), 1u);
    EXPECT_EQ(geometryOf(all, 1.1).pieces.size(), 0u);
    EXPECT_EQ(geometryOf(all, 0.0).pieces.size(), 0u) << "still an object";
    EXPECT_EQ(LogTrap::take().size(), 1);
}

// Otherwise the picture is empty, and nobody knows why.
TEST_F(CityJsonTest, SaysSoWhenNothingIsAsCoarseAsWanted)
{
    const auto level = [](const char* lod) {
        return QByteArray(R"({"type":"MultiPoint","lod":")") + lod + R"(","boundaries":[0]})";
    };
    geometryOf(level("2.1") + "," + level("1.3"), 0.0);
    EXPECT_EQ(LogTrap::take(), QStringList{folder.filePath("file.city.json") +
                                           ": nothing is as coarse as level of detail 0, the coarsest "
                                           "geometry has 1.3"});
    geometryOf(level("2.1") + "," + level("1.3"), 1.0);
    readFile(city(object({})), 0.0); // has no geometry at all
    EXPECT_TRUE(LogTrap::take().isEmpty());
}

TEST_F(CityJsonTest, ObjectsHaveNamesParentsAndAttributes)
{
    const Elements elements = readFile(
        city(R"("b-1":{"type":"Building","children":["p"],"attributes":{"name":"Town Hall","year":1898,)"
             R"("height":12.5,"listed":true,"tags":["x"],"old":null}},)"
             R"("p":{"parents":["b-1"],"type":"BuildingPart"},"t":{"type":"+Antenna"})"));
    ASSERT_EQ(elements.size(), 3u);
    EXPECT_EQ(elements[0]->getName(), "Town Hall");
    EXPECT_EQ(elements[0]->getSourceId(), "b-1");
    EXPECT_EQ(elements[0]->getObjectType(), "Building");
    EXPECT_EQ(elements[0]->getPropertyNames(),
              (QStringList{"name", "year", "height", "listed", "tags", "old"}));
    EXPECT_EQ(elements[0]->getProperty("height").toDouble(), 12.5);
    EXPECT_EQ(elements[1]->getName(), "p");
    EXPECT_EQ(elements[1]->getParentIds(), QStringList{"b-1"});
    EXPECT_EQ(elements[2]->getObjectType(), "+Antenna");
}

TEST_F(CityJsonTest, SequencesHaveVerticesOfTheirOwn)
{
    const QByteArray header = R"({"type":"CityJSON","version":"1.1","CityObjects":{},"vertices":[],)"
                              R"("transform":{"scale":[0.5,1,1],"translate":[100,0,0]}})";
    const auto feature = [](const char* id, const char* x) {
        return QByteArray("\n{\"type\":\"CityJSONFeature\",\"id\":\"") + id + "\",\"CityObjects\":{\"" + id +
               R"(":{"type":"Building","geometry":[{"type":"MultiPoint","lod":"0","boundaries":[0]}]}},"vertices":[[)" +
               x + ",0,0]]}";
    };
    const Elements elements = readFile(header + feature("a", "2") + feature("b", "4") + "\n");
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_EQ(elements[0]->getGeometry().vertices.at(0), glm::dvec3(101, 0, 0));
    EXPECT_EQ(elements[1]->getGeometry().vertices.at(0), glm::dvec3(102, 0, 0));
    EXPECT_EQ(refusal(header + feature("a", "2") + header),
              "text 3: a second \"CityJSON\" where a \"CityJSONFeature\" is wanted");
    EXPECT_EQ(refusal(header + feature("a", "2").replace("\"id\":\"a\"", "\"id\":\"c\"")),
              "text 2: the feature's id \"c\" is not among its city objects");
}

TEST_F(CityJsonTest, HousesAreCountedAndMeasured)
{
    const Counts counts = countsOf(readFile(houses()));
    EXPECT_EQ(counts.objects, 2u);
    EXPECT_EQ(counts.surfaces, 14u);
    // by hand: 10 x 8 less 2 x 2; two walls of 10 x 5, two gables of 8 x 5 and 8 x 3 / 2; two slopes of 10 x
    // 5
    EXPECT_NEAR(counts.areas.at("GroundSurface"), 2 * 76.0, 1e-6);
    EXPECT_NEAR(counts.areas.at("WallSurface"), 2 * (2 * 50.0 + 2 * 52.0), 1e-6);
    EXPECT_NEAR(counts.areas.at("RoofSurface"), 2 * 100.0, 1e-6);
    expectSame(counts, countsOf(houses()));
}

TEST_F(CityJsonTest, BrokenRulesAreNamed)
{
    const QByteArray whole = city(object(surfaces("[[[0,1,2]]]")));
    const auto without = [&](const char* part, const char* other = "") {
        return QByteArray(whole).replace(part, other);
    };
    EXPECT_EQ(refusal(without(R"("type":"CityJSON",)")), "lacks \"type\": \"CityJSON\"");
    EXPECT_EQ(refusal(without("CityJSON", "Feature")), "its type is \"Feature\", not \"CityJSON\"");
    EXPECT_EQ(refusal(without(R"("version":"2.0",)")), "lacks \"version\"");
    EXPECT_EQ(refusal(without("2.0", "0.9")), "its version \"0.9\" is not among 1.0, 1.1 and 2.0");
    EXPECT_EQ(refusal(without("CityObjects", "Objects")), "lacks an object \"CityObjects\"");
    EXPECT_EQ(refusal(without("vertices", "points")), "lacks a list \"vertices\"");
    EXPECT_EQ(refusal(without("[0.01,0.01,0.01]", "[0.01,0.01]")), "\"scale\" is no list of 3 numbers");
    EXPECT_EQ(refusal(without("[100,0,0]", "[100,0]")), "vertex 1 is no list of 3 numbers");
    EXPECT_EQ(refusal(without("[100,0,0]", "[100,0,18446744073709551616]")), "vertex 1 lies beyond 1e15");
    EXPECT_EQ(refusal(without(R"("type":"Building",)")), "city object \"a\": lacks \"type\"");
    const std::string geometry = "city object \"a\": geometry 0: ";
    EXPECT_EQ(refusal(without("[0,1,2]", "[0,1,8]")),
              geometry + "vertex index 8 is out of range, there are 8");
    EXPECT_EQ(refusal(without("[0,1,2]", "[0,1,-1]")), "city object \"a\": -1 is no index");
    EXPECT_EQ(refusal(without("[0,1,2]", "[0,1,1.5]")),
              "city object \"a\": among its indices is something else");
    EXPECT_EQ(refusal(without("MultiSurface", "Solid")),
              geometry + "its boundaries are not nested as its type wants it");
    EXPECT_EQ(refusal(without("MultiSurface", "Sphere")), geometry + "\"Sphere\" is not a type of geometry");
    EXPECT_EQ(refusal(without("]]]}", R"(]]],"semantics":{"surfaces":[],"values":[0]}})")),
              geometry + "semantic surface index 0 is out of range, there are 0");
    EXPECT_EQ(refusal(without("]]]}", R"(]]],"semantics":{"surfaces":[],"values":[]}})")),
              geometry + "has fewer semantic values than boundaries");
    EXPECT_EQ(refusal(without("]]]}", R"(]]],"material":{"x":{"value":3}}})")),
              geometry + "material index 3 is out of range, there are 0");
    EXPECT_EQ(refusal(without("]]]}", R"(]]],"texture":{"x":{"values":[[[0,0,0,0]]]}}})")),
              geometry + "texture index 0 is out of range, there are 0");
    EXPECT_EQ(refusal(city(R"("a":{"type":"Building","parents":["b"]})")),
              "city object \"a\": its parent or child \"b\" is not in the file");
    EXPECT_EQ(refusal(city(R"("a":{"type":"Road"},"a":{"type":"Road"})")),
              "two city objects have the id \"a\"");
    EXPECT_EQ(refusal(city(object(
                  R"({"type":"GeometryInstance","template":0,"boundaries":[0],"transformationMatrix":[]})"))),
              geometry + "template index 0 is out of range, there are 0");
    EXPECT_EQ(refusal("[1]"), "is a list, not an object");
}

TEST_F(CityJsonTest, RulesHoldForLevelsThatAreNotWanted)
{
    EXPECT_NE(refusal(city(
                  object(surfaces("[[[0,1,2]]]") + R"(,{"type":"MultiPoint","lod":"1","boundaries":[9]})"))),
              "was read");
}

TEST_F(CityJsonTest, TemplatesCannotUnfoldWithoutEnd)
{
    QByteArray corners = "[[0";
    for (int i = 1; i < 100'000; ++i)
        corners += i % 100 == 0 ? "],[0" : ",0";
    const QByteArray instance =
        R"({"type":"GeometryInstance","template":0,"boundaries":[0],"transformationMatrix":[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]})";
    const QByteArray json =
        city(object((instance + ",").repeated(999) + instance),
             R"(,"geometry-templates":{"templates":[{"type":"MultiLineString","lod":"1","boundaries":)" +
                 corners + R"(]]}],"vertices-templates":[[0,0,0]]})");
    // 256 MiB of 24 bytes a vertex, 12 a corner, 4 a ring and 12 a piece hold 220 of the 1000
    EXPECT_EQ(268'435'456 / (24 + 100'000 * 12 + 1000 * (4 + 12)), 220);
    EXPECT_EQ(refusal(json),
              "city object \"a\": geometry 220: unfolds to far more than a file of its size should");
}

TEST_F(CityJsonTest, LooksIntoFilesForTheirType)
{
    const auto is = [this](const QByteArray& json) { return readers::isCityJson(write("any.json", json)); };
    EXPECT_TRUE(is(city("")));
    EXPECT_TRUE(is(R"({"vertices":[{"type":"x"}],"type":"CityJSONFeature"})"));
    EXPECT_TRUE(is(R"({"version":"2.0","CityObjects":{}})"))
        << "which lacks its type and is refused for that";
    EXPECT_FALSE(is(R"({"type":"FeatureCollection","features":[]})"));
    EXPECT_FALSE(is(R"({"a":{"type":"CityJSON"}})"));
    EXPECT_FALSE(is("[]"));
    EXPECT_FALSE(is("no JSON"));
    EXPECT_FALSE(readers::isCityJson(folder.filePath("none.json")));
}

TEST_P(RealFile, OpensOrIsRefusedAsItsNameSays)
{
    static const std::map<QString, std::string> reasons = {
        {"invalid_cityjsonfeature_root_id_unresolved.city.jsonl",
         "the feature's id \"missing-main-object\" is not among its city objects"},
        {"invalid_missing_type.json", "lacks \"type\": \"CityJSON\""},
        {"invalid_out_of_range_vertex_index.json",
         "city object \"invalid_out_of_range_vertex_index\": geometry 0: "
         "vertex index 99 is out of range, there are 3"},
        {"invalid_u64_f64_bounds.json", "vertex 0 lies beyond 1e15"},
    };
    const auto reason = reasons.find(GetParam());
    EXPECT_EQ(reason != reasons.end(), GetParam().startsWith("invalid"));
    EXPECT_EQ(refusalOf(realFiles().filePath(GetParam())),
              reason == reasons.end() ? "was read" : reason->second);
    LogTrap::take(); // pictures that are not there
}

TEST_P(RealPrecision, KeepsMillimetresOfEveryVertex)
{
    // as an object at each vertex, since these files have none; the numbers by hand, in long doubles
    const QByteArray json = contentOf(realFiles().filePath(GetParam()));
    const QJsonObject root = QJsonDocument::fromJson(json).object();
    const QJsonArray vertices = root["vertices"].toArray();
    QByteArray objects;
    for (int i = 0; i < vertices.size(); ++i)
        objects += QByteArray(i > 0 ? "," : "") + "\"" + QByteArray::number(i) +
                   R"(":{"type":"CityFurniture","geometry":[{"type":"MultiPoint","lod":"0","boundaries":[)" +
                   QByteArray::number(i) + "]}]}";
    const QTemporaryDir folder;
    QFile file(folder.filePath("points.city.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(json).replace("\"CityObjects\": {}", "\"CityObjects\": {" + objects + "}"));
    file.close();
    const Elements elements = readers::readCityJson(file.fileName(), {}, ksp::StagedProgress::dummy());
    ASSERT_EQ(elements.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        for (int axis = 0; axis < 3; ++axis) {
            const long double expected =
                static_cast<long double>(vertices[i].toArray()[axis].toDouble()) *
                    static_cast<long double>(root["transform"]["scale"].toArray()[axis].toDouble()) +
                static_cast<long double>(root["transform"]["translate"].toArray()[axis].toDouble());
            const double vertex = elements[static_cast<std::size_t>(i)]->getGeometry().vertices.at(0)[axis];
            EXPECT_LT(std::abs(static_cast<long double>(vertex) - expected), 1e-3L) << i << ' ' << axis;
        }
    }
}

TEST_P(RealTown, IsCountedAndMeasuredAsByAnother)
{
    const QString path = realFiles().filePath(GetParam());
    const Counts counts = countsOf(readers::readCityJson(path, {}, ksp::StagedProgress::dummy()));
    LogTrap::take(); // pictures that are not there
    EXPECT_EQ(counts.objects, 16u);
    expectSame(counts, countsOf(contentOf(path)));
}
