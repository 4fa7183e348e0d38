#include "ReaderTest.h"

#include <readers/common/MeshAssembler.h>

#include <tests/support/LogTrap.h>

#include <QtGui/QImage>

namespace {

using Part = MeshData::Part;

class ObjTest : public ReaderTest
{
protected:
    std::vector<MeshData> readObj(const QByteArray& bytes) const { return read("obj", bytes); }
    QString refusalOf(const QByteArray& bytes) const { return refusal("obj", bytes); }
};

const QByteArray square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

} // namespace

TEST_F(ObjTest, TriangleHasItsCorners)
{
    const auto meshes = readObj("v 1 2 3\nv 4 5 6\nv 7 8 10\nf 1 2 3\n");
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(cornersOf(meshes[0]), (std::vector<glm::dvec3>{{1, 2, 3}, {4, 5, 6}, {7, 8, 10}}));
    EXPECT_EQ(meshes[0].parts.size(), 1u);
    EXPECT_FALSE(meshes[0].parts[0].color.isValid());
    EXPECT_TRUE(meshes[0].normals.empty());
}

TEST_F(ObjTest, MillimetresLastAtGeodeticCoordinates)
{
    const auto meshes = readObj("v 2700000.123 1200000.456 400.789\nv 2700000.124 1200000.456 400.789\n"
                                "v 2700000.123 1200000.457 400.789\nf 1 2 3\n");
    const auto corners = cornersOf(meshes.at(0));
    EXPECT_NEAR(corners[1].x - corners[0].x, 0.001, 1e-8);
    EXPECT_NEAR(corners[2].y - corners[0].y, 0.001, 1e-8);
    EXPECT_NEAR(corners[0].x, 2700000.123, 1e-8);
    EXPECT_NEAR(corners[0].y, 1200000.456, 1e-8);
    EXPECT_NEAR(corners[0].z, 400.789, 1e-8);
}

TEST_F(ObjTest, ShortNumbersComeBackExactly)
{
    const auto large =
        cornersOf(readObj("v 0.1 -2.9916 7000000.3\nv -3 4 7000001\nv 0 -0.5 7000256\nf 1 2 3\n").at(0));
    EXPECT_EQ(large[1], glm::dvec3(-3, 4, 7000001));
    EXPECT_EQ(large[2], glm::dvec3(0, -0.5, 7000256));
    const auto small = cornersOf(readObj("v 0.1 -2.9916 0\nv -3 4 0.5\nv 0 -0.25 1\nf 1 2 3\n").at(0));
    EXPECT_EQ(small[1], glm::dvec3(-3, 4, 0.5));
    EXPECT_EQ(small[2], glm::dvec3(0, -0.25, 1));
}

TEST_F(ObjTest, LinesAndPointsAreRead)
{
    const auto meshes = readObj(square + "l 1 2 3\np 1 4\nf 1 2 3 4\n");
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(countOf(meshes[0], Part::Lines), 2u);
    EXPECT_EQ(countOf(meshes[0], Part::Points), 2u);
    EXPECT_EQ(countOf(meshes[0], Part::Triangles), 2u);
    EXPECT_EQ(cornersOf(meshes[0], 0), (std::vector<glm::dvec3>{{0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
}

TEST_F(ObjTest, VerticesAloneAreAPointSet)
{
    const auto meshes = readObj("vn 0 0 1\n" + square);
    EXPECT_EQ(countOf(meshes.at(0), Part::Points), 4u);
}

TEST_F(ObjTest, NegativeIndicesCountFromTheLastVertexSoFar)
{
    const auto meshes = readObj("v 9 9 9\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1\nv 5 5 5\n");
    EXPECT_EQ(cornersOf(meshes.at(0)), (std::vector<glm::dvec3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
}

TEST_F(ObjTest, ElementsMayComeBeforeTheirVertices)
{
    EXPECT_EQ(countOf(readObj("f 1 2 3 4\n" + square).at(0), Part::Triangles), 2u);
}

TEST_F(ObjTest, LineEndsOfAllKindsAndNoneAtTheEnd)
{
    const QByteArray text = square + "f 1 2 3";
    EXPECT_EQ(countOf(readObj(text).at(0), Part::Triangles), 1u);
    EXPECT_EQ(countOf(readObj(QByteArray(text).replace("\n", "\r\n")).at(0), Part::Triangles), 1u);
    EXPECT_EQ(countOf(readObj(QByteArray(text).replace("\n", "\r")).at(0), Part::Triangles), 1u);
}

TEST_F(ObjTest, StatementGoesOnAfterABackslash)
{
    EXPECT_NEAR(areaOf(readObj(square + "f 1 2 \\\n3 \\\r\n4\nl 1 2\n").at(0)).z, 1.0, 1e-12);
}

TEST_F(ObjTest, TabsBlanksAndCommentsWithinStatements)
{
    EXPECT_NEAR(
        areaOf(readObj("# a file\n\tv\t0 0   0 # first\nv 2 0 0\nv 0 2 0\n\n  f 1\t2 3 # all\n").at(0)).z,
        2.0, 1e-12);
}

TEST_F(ObjTest, ConcavePolygonIsDividedWithinItself)
{
    const auto meshes = readObj("v 0 0 0\nv 4 0 0\nv 4 4 0\nv 3 1 0\nf 1 2 3 4\n");
    EXPECT_NEAR(areaOf(meshes.at(0)).z, 4.0, 1e-6);
    const auto c = cornersOf(meshes[0]);
    for (std::size_t i = 0; i < c.size(); i += 3)
        EXPECT_GT(glm::cross(c[i + 1] - c[i], c[i + 2] - c[i]).z, 0.0);
}

TEST_F(ObjTest, PolygonOfThreeHundredCornersKeepsThemAll)
{
    QByteArray text;
    QByteArray face = "f";
    for (int i = 0; i < 300; ++i) {
        text += "v " + QByteArray::number(i) + " " + QByteArray::number(i * i) + " 0\n";
        face += " " + QByteArray::number(i + 1);
    }
    const auto meshes = readObj(text + face + "\nf 1 2 3\n");
    EXPECT_EQ(countOf(meshes.at(0), Part::Triangles), 299u);
    // between the chord from (0, 0) to (299, 299^2) and the parabola's 299 pieces: (n^3 - n) / 6; and one
    // piece more
    EXPECT_NEAR(areaOf(meshes[0]).z, (299.0 * 299.0 * 299.0 - 299.0) / 6.0 + 1.0, 1.0);
}

TEST_F(ObjTest, ObjectsAndGroupsAreMeshesOfTheirOwn)
{
    const auto meshes = readObj(square + "o house\ng walls\nf 1 2 3\ng roof\nf 1 3 4\no tree\nf 1 2 4\n"
                                         "o house\ng walls\nl 1 2\n");
    ASSERT_EQ(meshes.size(), 3u);
    EXPECT_EQ(meshes[0].name, "house/walls");
    EXPECT_EQ(countOf(meshes[0], Part::Lines), 1u);
    EXPECT_EQ(countOf(meshes[0], Part::Triangles), 1u);
    EXPECT_EQ(meshes[1].name, "house/roof");
    EXPECT_EQ(meshes[2].name, "tree");
}

TEST_F(ObjTest, LinesBeforeTheNextGroupAreKept)
{
    const auto meshes = readObj(square + "g a\nl 1 2\ng b\nl 2 3\nusemtl none\nl 3 4\n");
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(countOf(meshes[0], Part::Lines), 1u);
    EXPECT_EQ(countOf(meshes[1], Part::Lines), 2u);
}

TEST_F(ObjTest, VertexColoursFromZeroToOne)
{
    const auto meshes = readObj("v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_EQ(meshes.at(0).colors, (std::vector<std::uint32_t>{0xff0000ffu, 0xff00ff00u, 0xffffffffu}));
}

TEST_F(ObjTest, VertexColoursAsBytes)
{
    const auto meshes = readObj("v 0 0 0 255 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 128\nf 1 2 3\n");
    EXPECT_EQ(meshes.at(0).colors, (std::vector<std::uint32_t>{0xff0000ffu, 0xff000100u, 0xff800000u}));
}

TEST_F(ObjTest, WeightOfAVertexIsNoColour)
{
    EXPECT_TRUE(readObj("v 0 0 0 1\nv 1 0 0 1\nv 0 1 0 1\nf 1 2 3\n").at(0).colors.empty());
}

TEST_F(ObjTest, NormalsAndTextureCoordinatesSplitVertices)
{
    const auto meshes = readObj(square + "vt 0 0\nvt 0.5 1\nvn 0 0 2\nvn 1 0 0\n"
                                         "f 1/1/1 2/2/1 3//1\nf 1/1/1 3/2/2 4\n");
    const MeshData& mesh = meshes.at(0);
    EXPECT_EQ(mesh.positions.size(), 5u);
    EXPECT_EQ(mesh.normals[0], glm::vec3(0, 0, 1));
    EXPECT_EQ(mesh.normals[3], glm::vec3(1, 0, 0));
    EXPECT_EQ(mesh.normals[4], glm::vec3(0, 0, 0)); // for the mesh node to fill in
    EXPECT_EQ(mesh.texCoords[1], glm::vec2(0.5, 1));
}

TEST_F(ObjTest, MaterialsGivePlainColours)
{
    write("my plot.mtl", "newmtl red wall\nKd 1 0 0\nd 0.5\n\nnewmtl blue\nKd 0 0 1\n");
    const auto meshes = readObj("mtllib my plot.mtl\n" + square +
                                "usemtl red wall\nf 1 2 3\nusemtl blue\nf 1 3 4\nusemtl red wall\nf 1 2 4\n");
    ASSERT_EQ(meshes.at(0).parts.size(), 2u);
    EXPECT_EQ(meshes[0].parts[0].color.rgba(), qRgba(255, 0, 0, 128));
    EXPECT_EQ(meshes[0].parts[0].indexCount, 6u);
    EXPECT_EQ(meshes[0].parts[1].color.rgba(), qRgba(0, 0, 255, 255));
}

TEST_F(ObjTest, DiffuseTextureIsLoadedOnceAndWhite)
{
    QImage image(2, 1, QImage::Format_RGB32);
    image.setPixel(0, 0, qRgb(10, 20, 30));
    image.setPixel(1, 0, qRgb(40, 50, 60));
    ASSERT_TRUE(image.save(folder.filePath("wall.png")));
    write("a.mtl", "newmtl wall\nKd 0 0 0\nmap_Kd -s 1 1 1 textures\\wall.png\n");
    const auto meshes =
        readObj("mtllib a.mtl\n" + square + "vt 0 0\nvt 1 0\nvt 1 1\nusemtl wall\nf 1/1 2/2 3/3\n");
    ASSERT_EQ(meshes.at(0).images.size(), 1u);
    EXPECT_EQ(meshes[0].images[0].pixel(1, 0), qRgb(40, 50, 60));
    EXPECT_EQ(meshes[0].parts[0].image, 0);
    EXPECT_EQ(meshes[0].parts[0].color, QColor(255, 255, 255));
}

TEST_F(ObjTest, MissingTextureIsOneWarningAndThePlainColour)
{
    write("a.mtl", "newmtl a\nKd 0 1 0\nmap_Kd gone.png\nnewmtl b\nKd 1 0 0\nmap_Kd gone.png\n");
    const auto meshes =
        readObj("mtllib a.mtl\n" + square + "usemtl a\nf 1 2 3\nusemtl b\nf 1 3 4\nusemtl a\nf 1 2 4\n");
    EXPECT_EQ(LogTrap::take(),
              QStringList{folder.filePath("file.obj") +
                          ": the texture \"gone.png\" is missing, the plain colour is used"});
    EXPECT_TRUE(meshes.at(0).images.empty());
    EXPECT_EQ(meshes[0].parts[0].color, QColor(0, 255, 0));
}

TEST_F(ObjTest, DamagedTextureIsOneWarning)
{
    write("bad.png", "no picture");
    write("a.mtl", "newmtl a\nKd 0 1 0\nmap_Kd bad.png\n");
    EXPECT_EQ(readObj("mtllib a.mtl\n" + square + "usemtl a\nf 1 2 3\n").at(0).parts[0].image, -1);
    EXPECT_EQ(LogTrap::take().size(), 1);
}

TEST_F(ObjTest, MissingLibraryIsOneWarning)
{
    readObj("mtllib gone.mtl\n" + square + "usemtl a\nf 1 2 3\n");
    EXPECT_EQ(LogTrap::take().size(), 1);
}

TEST_F(ObjTest, IndicesOutOfRangeAreRefused)
{
    EXPECT_EQ(refusalOf(square + "f 1 2 5\n"), "line 5: index 5 is out of range, there are 4");
    EXPECT_EQ(refusalOf(square + "f 0 1 2\n"), "line 5: index 0 is out of range, there are 4");
    EXPECT_EQ(refusalOf(square + "f -5 1 2\n"), "line 5: index -5 is out of range, there are 4");
    EXPECT_EQ(refusalOf(square + "f 1 2 2147483648\n"),
              "line 5: index 2147483648 is out of range, there are 4");
    EXPECT_EQ(refusalOf(square + "f 1 2 99999999999999999999\n"),
              "line 5: \"99999999999999999999\" is not an index");
    EXPECT_EQ(refusalOf(square + "f 1/1 2 3\n"), "line 5: index 1 is out of range, there are 0");
    EXPECT_EQ(refusalOf(square + "f 1//1 2 3\n"), "line 5: index 1 is out of range, there are 0");
}

TEST_F(ObjTest, WhatIsNoNumberIsRefusedWithItsLine)
{
    EXPECT_EQ(refusalOf("v 0 0 0\nv 1 x 0\n"), "line 2: \"x\" is not a number");
    EXPECT_EQ(refusalOf("v 0 0 0\nv 1 1\n"), "line 2: 2 numbers where 3 are needed");
}

TEST_F(ObjTest, ElementsAtCoordinatesThatAreNotFiniteAreLeftOut)
{
    const auto meshes = readObj(square + "v nan 0 0\nv 0 inf 0\nv 0 0 1e999\nv 1e16 0 0\n"
                                         "f 1 2 5\nf 1 2 6\nl 1 7\np 8\nf 1 2 3\n");
    EXPECT_EQ(countOf(meshes.at(0), Part::Triangles), 1u);
    EXPECT_EQ(meshes[0].positions.size(), 3u);
    EXPECT_EQ(LogTrap::take(), QStringList{folder.filePath("file.obj") +
                                           ": 4 faces, lines or points were left out: their coordinates "
                                           "are not finite or beyond 1e15"});
    EXPECT_EQ(refusalOf("v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"),
              "has nothing to draw whose coordinates are finite and below 1e15");
}

TEST_F(ObjTest, FacesOfTwoCornersAreLeftOut)
{
    EXPECT_EQ(countOf(readObj(square + "f 1 2\nf 1 2 3\n").at(0), Part::Triangles), 1u);
    EXPECT_EQ(LogTrap::take().size(), 1);
    EXPECT_EQ(refusalOf(square + "f 1 2\n"), "has nothing to draw but faces and lines with too few corners");
}

TEST_F(ObjTest, NothingToDrawIsRefused)
{
    EXPECT_EQ(refusalOf("# only a comment\n"), "has no vertices");
}

TEST_F(ObjTest, LinesOfTenMegabytesAreRefused)
{
    const QByteArray rest = "\n" + square + "f 1 2 3\n";
    EXPECT_EQ(refusalOf("#" + QByteArray(10'000'000, 'x') + rest), "line 1 is longer than 4 MiB");
    EXPECT_EQ(refusalOf(square + "f" + QByteArray(" 1 2 3 4").repeated(1'250'000) + rest),
              "line 5 is longer than 4 MiB");
    EXPECT_EQ(refusalOf("v " + QByteArray(10'000'000, '1') + rest), "line 1 is longer than 4 MiB");
    EXPECT_EQ(refusalOf(square + "f" + QByteArray(" 1 2 3 4\\\n").repeated(1'000'000) + rest),
              "line 5: a statement longer than 4 MiB");
}

TEST_F(ObjTest, PolygonOfVeryManyCornersBecomesAFan)
{
    const auto meshes = readObj(square + "f" + QByteArray(" 1 2 3 4").repeated(50'000) + "\n");
    EXPECT_EQ(countOf(meshes.at(0), Part::Triangles), 199'998u);
    EXPECT_EQ(LogTrap::take(),
              QStringList{folder.filePath("file.obj") +
                          ": 1 polygons are too large to be divided properly, their triangles may "
                          "cover too much"});
}

TEST_F(ObjTest, VeryManyGroupsAreJoined)
{
    QByteArray text = square;
    for (int i = 0; i < 12000; ++i)
        text += "g " + QByteArray::number(i) + "\nf 1 2 3\n";
    const auto meshes = readObj(text);
    EXPECT_EQ(meshes.size(), readers::mostMeshes);
    EXPECT_EQ(countOf(meshes.back(), Part::Triangles), 2001u);
    EXPECT_EQ(LogTrap::take().size(), 1);
}
