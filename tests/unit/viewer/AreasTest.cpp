#include <viewer/ElementSummary.h>
#include <viewer/elements/CityColors.h>
#include <viewer/elements/CityMesh.h>
#include <viewer/elements/FeatureAreas.h>
#include <viewer/elements/FeatureStyle.h>

#include <framework/ksp/CFileException.h>
#include <framework/model/CityObjectElement.h>

#include <gtest/gtest.h>
#include <tests/support/LogTrap.h>

// What is filled: areas of features, and city objects.

namespace {

using Part = FeatureElement::Part;
using Piece = CityGeometry::Piece;

const glm::dvec3 corner(2600000.125, 1200000.25, 400.5);

Part ring(bool hole, std::vector<glm::dvec3> points)
{
    for (glm::dvec3& point : points)
        point += corner;
    return {Part::Ring, hole, std::move(points)};
}

// 20 m x 10 m with a court of 5 m x 5 m, the one clockwise and the other too.
std::vector<Part> court()
{
    return {ring(false, {{0, 0, 0}, {0, 10, 0}, {20, 10, 0}, {20, 0, 0}}),
            ring(true, {{5, 2, 0}, {5, 7, 0}, {10, 7, 0}, {10, 2, 0}})};
}

// Area of the triangles of a part; normals: how far they are from the normals of the triangles, at most.
double areaOf(const MeshData& mesh, const MeshData::Part& part, double* normals = nullptr)
{
    double area = 0.0;
    for (std::uint32_t i = part.firstIndex; i + 2 < part.firstIndex + part.indexCount; i += 3) {
        const auto at = [&](std::uint32_t k) { return glm::dvec3(mesh.positions[mesh.indices[i + k]]); };
        const glm::dvec3 cross = glm::cross(at(1) - at(0), at(2) - at(0));
        area += 0.5 * glm::length(cross);
        for (std::uint32_t k = 0; normals && k < 3; ++k)
            *normals = std::max(*normals, glm::distance(glm::normalize(cross),
                                                        glm::dvec3(mesh.normals[mesh.indices[i + k]])));
    }
    return area;
}

MeshData meshOf(const FeatureElement& feature)
{
    return FeatureAreas::meshOf(feature, FeatureStyle::of(feature), corner);
}

// A floor of 4 m x 3 m with a hole of 1 m x 1 m, a wall of 4 m x 2 m, a line and two points.
CityGeometry shed()
{
    CityGeometry geometry;
    for (const glm::dvec3& p : {glm::dvec3(0, 0, 0),
                                {4, 0, 0},
                                {4, 3, 0},
                                {0, 3, 0},
                                {1, 1, 0},
                                {1, 2, 0},
                                {2, 2, 0},
                                {2, 1, 0},
                                {4, 0, 2},
                                {0, 0, 2}})
        geometry.vertices.push_back(corner + p);
    geometry.corners = {3, 2, 1, 0, 4, 5, 6, 7, 0, 1, 8, 9, 0, 1, 8, 2, 3};
    geometry.ringEnds = {4, 8, 12, 15, 17};
    geometry.looks = {{"GroundSurface", {}, {}},
                      {"", QColor(1, 2, 3, 128), {}},
                      {"", {}, {}, CityGeometry::Look::Border, QColor(4, 5, 6, 7)}};
    geometry.pieces = {
        {Piece::Surface, 0, 2}, {Piece::Surface, 1, 3}, {Piece::Line, 2, 4}, {Piece::Points, 2, 5}};
    return geometry;
}

} // namespace

TEST(FeatureAreas, HeightsAreNumbersOrTextThatIsOne)
{
    FeatureElement feature;
    const auto heightWith = [&](const char* name, const QVariant& value) {
        feature.setProperties({{QLatin1String(name), value}});
        return FeatureAreas::heightOf(feature);
    };
    EXPECT_EQ(heightWith("height", 12.5), 0.0) << "without a ring";
    feature.setParts(court());
    EXPECT_EQ(heightWith("height", 12.5), 12.5);
    EXPECT_EQ(heightWith("height", " 7 "), 7.0);
    EXPECT_EQ(heightWith("height", "tall"), 0.0);
    EXPECT_EQ(heightWith("height", -3), 0.0);
    EXPECT_EQ(heightWith("height", true), 0.0);
    EXPECT_EQ(heightWith("height", "nan"), 0.0);
    EXPECT_EQ(heightWith("building:levels", 4), 12.0);
    feature.setProperties({{"building:levels", 4}, {"height", 10}});
    EXPECT_EQ(FeatureAreas::heightOf(feature), 10.0);
}

TEST(FeatureAreas, FlatOnesHaveHoles)
{
    FeatureElement feature;
    feature.setParts(court());
    const MeshData mesh = meshOf(feature);
    ASSERT_EQ(mesh.parts.size(), 1u);
    EXPECT_NEAR(areaOf(mesh, mesh.parts[0]), 20.0 * 10.0 - 25.0, 1e-4);
    EXPECT_EQ(ElementSummary::of(feature).triangles, mesh.indices.size() / 3);
}

TEST(FeatureAreas, WithoutAreaOneLeavesALine)
{
    for (const glm::dvec3& third : {glm::dvec3(2, 2, 0), {1, 1, 0}, {0, 0, 0}}) {
        FeatureElement feature;
        feature.setName("plot 7");
        feature.setParts({ring(false, {{0, 0, 0}, {1, 1, 0}, third})});
        for (const char* height : {"0", "9"}) {
            feature.setProperties({{"height", height}});
            EXPECT_TRUE(meshOf(feature).indices.empty()) << height;
            EXPECT_EQ(LogTrap::take(), QStringList{"polygon \"plot 7\": it encloses no area"});
        }
    }
}

TEST(FeatureAreas, RaisedOnesHaveWallsThatLookOutwardsAndARoof)
{
    FeatureElement feature;
    feature.setParts(court());
    feature.setProperties({{"height", 6}});
    const MeshData mesh = meshOf(feature);
    ASSERT_EQ(mesh.parts.size(), 2u);
    double normals = 0.0;
    EXPECT_NEAR(areaOf(mesh, mesh.parts[0], &normals), 6.0 * (60.0 + 20.0), 1e-3) << "walls";
    EXPECT_LT(normals, 1e-6);
    EXPECT_NEAR(areaOf(mesh, mesh.parts[1]), 175.0, 1e-4) << "roof";
    // outwards: from the middle of the outer walls, into the court from its walls
    for (std::uint32_t i = 0; i < mesh.parts[0].indexCount; ++i) {
        const std::uint32_t vertex = mesh.indices[i];
        const glm::vec3 p = mesh.positions[vertex];
        const bool isOuter = p.x == 0.0f || p.x == 20.0f || p.y == 0.0f || p.y == 10.0f;
        const glm::vec3 away = isOuter ? p - glm::vec3(10, 5, p.z) : glm::vec3(7.5f, 4.5f, p.z) - p;
        EXPECT_GT(glm::dot(mesh.normals[vertex], away), 0.0f);
    }
    EXPECT_EQ(ElementSummary::of(feature).bounds.getMax().z, corner.z + 6.0);
}

TEST(FeatureAreas, RoofsAreFlatAndAboveSlopingGround)
{
    FeatureElement feature;
    feature.setParts({ring(false, {{0, 0, 0}, {10, 0, 4}, {10, 10, 4}, {0, 10, 0}})});
    feature.setProperties({{"height", 9}});
    const std::vector<Part> high = FeatureAreas::raised(feature);
    for (const glm::dvec3& point : high.at(0).points)
        EXPECT_EQ(point.z, corner.z + 9.0);
    feature.setProperties({{"height", 3}});
    const std::vector<Part> low = FeatureAreas::raised(feature);
    for (const glm::dvec3& point : low.at(0).points)
        EXPECT_EQ(point.z, corner.z + 4.0) << "no lower than the ground";
}

TEST(FeatureAreas, ColoursAreThoseThatFilesGive)
{
    FeatureElement feature;
    feature.setParts(court());
    const auto styleWith = [&](std::vector<std::pair<QString, QVariant>> properties) {
        feature.setProperties(std::move(properties));
        return FeatureStyle::of(feature);
    };
    EXPECT_EQ(styleWith({{"stroke", "#ff0000"}}).fill.name(), "#ff0000");
    EXPECT_NEAR(styleWith({}).fill.alphaF(), 0.3, 0.01);
    EXPECT_EQ(styleWith({{"fill", "#00ff00"}}).fill.name(), "#00ff00");
    EXPECT_NEAR(styleWith({{"fill", "#00ff00"}}).fill.alphaF(), 0.6, 0.01);
    EXPECT_NEAR(styleWith({{"fill", "#00ff00"}, {"fill-opacity", 0.25}}).fill.alphaF(), 0.25, 0.01);
    EXPECT_EQ(styleWith({{"fill", "#00ff00"}, {"height", 3}}).wall, QColor("#00ff00"));
    EXPECT_EQ(styleWith({{"height", 3}}).fill, CityColors::of("RoofSurface", {}));
    EXPECT_FALSE(FeatureAreas::areDrawn(feature, styleWith({{"fill-opacity", 0}})));
    EXPECT_TRUE(FeatureAreas::areDrawn(feature, styleWith({})));
}

TEST(CityMesh, HasTrianglesLinesAndPointsByTheirLooks)
{
    CityObjectElement object;
    object.setSource("Building", "b", {});
    object.setGeometry(shed());
    const MeshData mesh = CityMesh::of(object, CityMesh::Pictures::With);
    ASSERT_EQ(mesh.parts.size(), 4u);
    double normals = 0.0;
    EXPECT_EQ(mesh.parts[0].color, CityColors::of("GroundSurface", "Building"));
    EXPECT_NEAR(areaOf(mesh, mesh.parts[0], &normals), 11.0, 1e-5);
    EXPECT_EQ(mesh.parts[1].kind, MeshData::Part::Points);
    EXPECT_EQ(mesh.parts[1].indexCount, 2u);
    EXPECT_EQ(mesh.parts[1].color, CityColors::of({}, "Building"));
    EXPECT_EQ(mesh.parts[2].kind, MeshData::Part::Lines);
    EXPECT_EQ(mesh.parts[2].indexCount, 4u);
    EXPECT_EQ(mesh.parts[3].color, QColor(1, 2, 3, 128)) << "transparent ones last";
    EXPECT_NEAR(areaOf(mesh, mesh.parts[3], &normals), 8.0, 1e-5);
    EXPECT_LT(normals, 1e-6);
    const ElementSummary summary = ElementSummary::of(object);
    EXPECT_EQ(summary.points, 2u);
    EXPECT_EQ(summary.lines, 2u);
    EXPECT_EQ(summary.triangles, (mesh.parts[0].indexCount + mesh.parts[3].indexCount) / 3);
}

// The filter would mix it into the outermost pixels.
TEST(CityMesh, ABorderThatNobodySeesIsNone)
{
    const QTemporaryDir folder;
    QImage picture(2, 2, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(folder.filePath("wall.png")));
    CityGeometry geometry = shed();
    geometry.looks[0].image = folder.filePath("wall.png");
    geometry.looks[1] = {"", {}, folder.filePath("wall.png"), CityGeometry::Look::Border, Qt::green};
    geometry.texCoords.assign(geometry.corners.size(), glm::vec2(1.0f));
    const auto wrapWith = [&](CityGeometry::Look::Wrapping wrapping, float u) {
        geometry.looks[0].wrapping = wrapping;
        geometry.texCoords[6].x = u; // of the hole of the piece with the first look
        CityObjectElement object;
        object.setGeometry(geometry);
        const MeshData mesh = CityMesh::of(object, CityMesh::Pictures::With);
        EXPECT_EQ(mesh.wraps.size(), mesh.images.size());
        EXPECT_EQ(mesh.wraps.at(1).mode, ImageWrap::Clamp);
        return mesh.wraps.at(0);
    };
    using Look = CityGeometry::Look;
    EXPECT_EQ(wrapWith(Look::Border, 0.0f).mode, ImageWrap::Clamp);
    EXPECT_EQ(wrapWith(Look::Border, 1.2f).mode, ImageWrap::Border);
    EXPECT_EQ(wrapWith(Look::Border, -0.2f).border.alpha(), 0) << "without a colour there is nothing";
    EXPECT_EQ(wrapWith(Look::Repeat, 1.2f).mode, ImageWrap::Repeat);
    EXPECT_EQ(wrapWith(Look::Mirror, 1.2f).mode, ImageWrap::Mirror);
    EXPECT_EQ(wrapWith(Look::Clamp, 1.2f).mode, ImageWrap::Clamp);
}

TEST(CityMesh, KeepsMillimetresAtLargeCoordinates)
{
    CityGeometry geometry;
    const glm::dvec3 far(6378137.0, -6378137.0, 6378137.0);
    for (const glm::dvec3& p : {glm::dvec3(0, 0, 0), {0.001, 0, 0}, {100.003, 50.001, 8.007}})
        geometry.vertices.push_back(far + p);
    geometry.corners = {0, 1, 2};
    geometry.ringEnds = {3};
    geometry.looks.resize(1);
    geometry.pieces = {{Piece::Surface, 0, 1}};
    CityObjectElement object;
    object.setGeometry(geometry);
    const MeshData mesh = CityMesh::of(object, CityMesh::Pictures::With);
    ASSERT_EQ(mesh.positions.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_LT(glm::distance(mesh.origin + glm::dvec3(mesh.positions[i]), geometry.vertices[i]), 1e-4);
}

TEST(CityObjectElement, ComesBackFromArchivesWhole)
{
    CityObjectElement object;
    object.setName("Shed");
    object.setSource("BuildingPart", "p-1", {"b-1", "g"});
    object.setProperty("year", 1898);
    object.setGeometry(shed());
    CQtArchive storing;
    object.serialize(storing);
    CQtArchive loading(storing.data());
    CityObjectElement loaded;
    loaded.serialize(loading);
    EXPECT_EQ(loaded.getObjectType(), "BuildingPart");
    EXPECT_EQ(loaded.getSourceId(), "p-1");
    EXPECT_EQ(loaded.getParentIds(), (QStringList{"b-1", "g"}));
    EXPECT_EQ(loaded.getProperty("year").toInt(), 1898);
    const CityGeometry expected = shed();
    EXPECT_EQ(loaded.getGeometry().vertices, expected.vertices);
    EXPECT_EQ(loaded.getGeometry().corners, expected.corners);
    EXPECT_EQ(loaded.getGeometry().ringEnds, expected.ringEnds);
    EXPECT_EQ(loaded.getGeometry().looks, expected.looks);
    ASSERT_EQ(loaded.getGeometry().pieces.size(), 4u);
    EXPECT_EQ(loaded.getGeometry().pieces[3].kind, Piece::Points);
}

// Before pictures could end at their borders.
TEST(CityObjectElement, OldArchivesHaveNoWrappings)
{
    CityObjectElement object, loaded;
    CQtArchive storing;
    object.CModelElement::serialize(storing);
    storing.beginObject();
    QString type = "Building", id = "b", kind = "RoofSurface", color = "#ff010203", image = "/wall.png";
    storing.value(type);
    storing.value(id);
    for (int i = 0; i < 6; ++i) // parents, vertices, corners, texture coordinates, rings, pieces
        storing.writeUInt(0);
    storing.writeUInt(1);
    storing.value(kind);
    storing.value(color);
    storing.value(image);
    storing.endObject(1);
    storing.finish();
    CQtArchive loading(storing.data());
    loaded.serialize(loading);
    EXPECT_EQ(loaded.getSourceId(), "b");
    EXPECT_EQ(loaded.getGeometry().looks,
              (std::vector<CityGeometry::Look>{{"RoofSurface", QColor(1, 2, 3), "/wall.png"}}));
}

TEST(CityObjectElement, RefusesWrappingsThatNobodyKnows)
{
    CityGeometry damaged = shed();
    damaged.looks[0].wrapping = static_cast<CityGeometry::Look::Wrapping>(4);
    EXPECT_FALSE(damaged.isSound());
}

TEST(CityObjectElement, RefusesIndicesOutOfRange)
{
    CityGeometry damaged = shed();
    damaged.corners[5] = 10;
    EXPECT_TRUE(shed().isSound());
    EXPECT_FALSE(damaged.isSound());
    CityObjectElement object, loaded;
    object.setGeometry(damaged);
    CQtArchive storing;
    object.serialize(storing);
    CQtArchive loading(storing.data());
    loaded.setName("kept");
    EXPECT_THROW(loaded.serialize(loading), ksp::CFileException);
    EXPECT_EQ(loaded.getName(), "kept");
}
