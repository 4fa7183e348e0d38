#include "ReaderTest.h"

#include <tests/support/LogTrap.h>

namespace {

using Part = MeshData::Part;

class OffTest : public ReaderTest
{
protected:
    std::vector<MeshData> readOff(const QByteArray& bytes) const { return read("off", bytes); }
    QString refusalOf(const QByteArray& bytes) const { return refusal("off", bytes); }
};

const QByteArray vertices = "0 0 0\n1 0 0\n1 1 0\n0 1 0\n";

} // namespace

TEST_F(OffTest, SquareWithCommentsAndColours)
{
    const auto meshes = readOff("OFF # a square\n\n4 1 0\n" + vertices + "# faces\n4 0 1 2 3 255 0 0\n");
    EXPECT_EQ(countOf(meshes.at(0), Part::Triangles), 2u);
    EXPECT_NEAR(areaOf(meshes[0]).z, 1.0, 1e-12);
}

TEST_F(OffTest, CountsInTheFirstLine)
{
    EXPECT_NEAR(areaOf(readOff("OFF 4 1 0\n" + vertices + "4 3 2 1 0").at(0)).z, -1.0, 1e-12);
}

TEST_F(OffTest, MillimetresLastAtGeodeticCoordinates)
{
    const auto corners =
        cornersOf(readOff("OFF\n3 1 0\n2700000.123 0 0\n2700000.124 0 0\n2700000.123 1 0\n3 0 1 2\n").at(0));
    EXPECT_NEAR(corners[1].x - corners[0].x, 0.001, 1e-8);
}

TEST_F(OffTest, VerticesAloneAreAPointSet)
{
    EXPECT_EQ(countOf(readOff("OFF\n4 0 0\n" + vertices).at(0), Part::Points), 4u);
}

TEST_F(OffTest, ColoursOfVertices)
{
    EXPECT_EQ(readOff("COFF\n1 0 0\n0 0 0 255 128 0 64\n").at(0).colors.at(0), 0x400080ffu);
    EXPECT_EQ(readOff("COFF\n1 0 0\n0 0 0 1.0 0.50196 0\n").at(0).colors.at(0), 0xff0080ffu);
    const auto meshes = readOff("STCNOFF\n1 0 0\n0 0 0 0 0 1 255 128 0 0.5 0.5\n");
    EXPECT_EQ(meshes.at(0).colors.at(0), 0xff0080ffu);
    EXPECT_EQ(meshes[0].normals.at(0), glm::vec3(0, 0, 1));
}

TEST_F(OffTest, CountsThatTheFileCannotHoldAreRefused)
{
    for (const char* counts :
         {"2147483648 0 0", "0 2147483648 0", "9223372036854775807 9223372036854775807 0"})
        EXPECT_TRUE(
            refusalOf(QByteArray("OFF\n") + counts + "\n" + vertices).contains("do not fit into the rest"));
    EXPECT_EQ(refusalOf("OFF\n-1 0 0\n"), "line 2: \"-1\" is not a count");
}

TEST_F(OffTest, OtherKindsAreRefusedByName)
{
    EXPECT_EQ(refusalOf("OFF BINARY\n"), "is a binary OFF file, which cannot be read");
    EXPECT_EQ(refusalOf("4OFF\n"), "has vertices of more than three coordinates");
    EXPECT_EQ(refusalOf("off\n"), "is not an OFF file");
}

TEST_F(OffTest, BadFacesAreRefused)
{
    EXPECT_EQ(refusalOf("OFF\n4 1 0\n" + vertices + "3 0 1 4\n"), "line 7: vertex 4 is named, there are 4");
    EXPECT_EQ(refusalOf("OFF\n4 1 0\n" + vertices + "4000000000 0 1 4\n"),
              "line 7: vertex 4 is named, there are 4");
    EXPECT_EQ(refusalOf("OFF\n4 1 0\n" + vertices + "4 0 1 2\n"), "line 7: \"\" is not a count");
    EXPECT_EQ(refusalOf("OFF\n4 2 0\n" + vertices + "3 0 1 2\n"), "line 7: the file ends before its 2 faces");
}

TEST_F(OffTest, FacesThatAreNotFiniteAreLeftOut)
{
    EXPECT_EQ(countOf(readOff("OFF\n4 2 0\n0 0 0\n1 0 0\n1 1 0\nnan 1 0\n3 0 1 2\n3 0 2 3\n").at(0),
                      Part::Triangles),
              1u);
    EXPECT_EQ(LogTrap::take().size(), 1);
}
