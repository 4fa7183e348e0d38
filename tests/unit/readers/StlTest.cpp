#include "ReaderTest.h"

#include <tests/support/LogTrap.h>

namespace {

using Part = MeshData::Part;

class StlTest : public ReaderTest
{
protected:
    std::vector<MeshData> readStl(const QByteArray& bytes) const { return read("stl", bytes); }
    QString refusalOf(const QByteArray& bytes) const { return refusal("stl", bytes); }
};

const QByteArray facet = "facet normal 0 0 1\n outer loop\n  vertex 0 0 0\n  vertex 2 0 0\n  vertex 0 1 0\n"
                         " endloop\nendfacet\n";

QByteArray binary(quint32 count, const QByteArray& start = "made by a test")
{
    QByteArray bytes = start.leftJustified(80, ' ') + packed(count);
    for (quint32 i = 0; i < count; ++i)
        bytes += packed(0.0f, 0.0f, 1.0f, 0.0f, 0.0f, float(i), 2.0f, 0.0f, float(i), 0.0f, 1.0f, float(i),
                        quint16(0));
    return bytes;
}

} // namespace

TEST_F(StlTest, AsciiFacet)
{
    const auto meshes = readStl("solid my part\n" + facet + "endsolid my part\n");
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0].name, "my part");
    EXPECT_EQ(cornersOf(meshes[0]), (std::vector<glm::dvec3>{{0, 0, 0}, {2, 0, 0}, {0, 1, 0}}));
}

TEST_F(StlTest, MillimetresLastAtGeodeticCoordinates)
{
    const auto corners =
        cornersOf(readStl("solid\nfacet normal 0 0 0 outer loop vertex 2700000.123 0 0 "
                          "vertex 2700000.124 0 0 vertex 2700000.123 1 0 endloop endfacet\nendsolid")
                      .at(0));
    EXPECT_NEAR(corners[1].x - corners[0].x, 0.001, 1e-8);
}

TEST_F(StlTest, SolidsAreMeshesOfTheirOwnAndKeywordsOfAnyCase)
{
    const auto meshes =
        readStl("solid a\n" + facet + "endsolid a\n\nSOLID b\r\n" + facet.toUpper() + "ENDSOLID b");
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(meshes[1].name, "b");
}

TEST_F(StlTest, BinaryFacets)
{
    const auto meshes = readStl(binary(3));
    EXPECT_EQ(countOf(meshes.at(0), Part::Triangles), 3u);
    EXPECT_EQ(cornersOf(meshes[0]).at(7), glm::dvec3(2, 0, 2));
    EXPECT_NEAR(areaOf(meshes[0]).z, 3.0, 1e-12);
}

TEST_F(StlTest, BinaryFileThatBeginsWithSolid)
{
    EXPECT_EQ(countOf(readStl(binary(3, "solid by another program")).at(0), Part::Triangles), 3u);
}

TEST_F(StlTest, CountThatTheFileCannotHoldIsRefused)
{
    EXPECT_TRUE(refusalOf(QByteArray(80, ' ') + packed(quint32(0x80000000u)) + QByteArray(50, '\0'))
                    .contains("2147483648 triangles do not fit into 50 bytes"));
    QByteArray cut = binary(3);
    cut.chop(1);
    EXPECT_TRUE(refusalOf(cut).contains("3 triangles do not fit into 149 bytes"));
    EXPECT_EQ(refusalOf("short"), "is not an STL file");
}

TEST_F(StlTest, NoFacetsAreRefused)
{
    EXPECT_EQ(refusalOf("solid\nendsolid\n"), "has nothing to draw");
    EXPECT_EQ(refusalOf(binary(0)), "has nothing to draw");
}

TEST_F(StlTest, AsciiThatBreaksOffOrSaysSomethingElseIsRefused)
{
    EXPECT_EQ(refusalOf("solid\n" + facet), "facet 1: the file ends here");
    EXPECT_EQ(refusalOf("solid\nfacet normal 0 0 z\n"), "facet 1: \"z\" is not a number");
    EXPECT_EQ(refusalOf("solid\nfacet normal 0 0 1\nloop"), "facet 1: \"loop\" where \"outer\" should be");
    EXPECT_EQ(refusalOf("solid\n" + facet + "face"), "facet 1: \"face\" where a facet should begin");
}

TEST_F(StlTest, FacetsThatAreNotFiniteAreLeftOut)
{
    QByteArray bad = facet;
    bad.replace("vertex 2 0 0", "vertex nan 0 0");
    EXPECT_EQ(countOf(readStl("solid\n" + bad + facet + "endsolid\n").at(0), Part::Triangles), 1u);
    EXPECT_EQ(LogTrap::take().size(), 1);
    EXPECT_TRUE(refusalOf("solid\n" + bad + "endsolid\n").contains("finite"));
}
