#include "ReaderTest.h"

#include <tests/support/LogTrap.h>

#include <QtCore/QtEndian>

namespace {

using Part = MeshData::Part;

class PlyTest : public ReaderTest
{
protected:
    std::vector<MeshData> readPly(const QByteArray& bytes) const { return read("ply", bytes); }
    QString refusalOf(const QByteArray& bytes) const { return refusal("ply", bytes); }
};

QByteArray head(const char* format, const QByteArray& elements)
{
    return QByteArray("ply\nformat ") + format + " 1.0\ncomment made by a test\n" + elements + "end_header\n";
}

const QByteArray xyz = "property float x\nproperty float y\nproperty float z\n";
const QByteArray squareHead =
    "element vertex 4\n" + xyz + "element face 1\nproperty list uchar int vertex_indices\n";
const QByteArray squareText = "0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 3\n";

template <typename... Numbers>
QByteArray bigEndian(Numbers... numbers)
{
    QByteArray bytes;
    const auto append = [&bytes](auto number) {
        char raw[sizeof number];
        qToBigEndian(number, raw);
        bytes.append(raw, sizeof raw);
    };
    (append(numbers), ...);
    return bytes;
}

} // namespace

TEST_F(PlyTest, AsciiSquare)
{
    const auto meshes = readPly(head("ascii", squareHead) + squareText);
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(countOf(meshes[0], Part::Triangles), 2u);
    EXPECT_NEAR(areaOf(meshes[0]).z, 1.0, 1e-12);
}

TEST_F(PlyTest, AsciiWithCarriageReturnsAndNoLastLineEnd)
{
    QByteArray bytes = head("ascii", squareHead) + squareText;
    bytes.replace("\n", "\r\n");
    bytes.chop(2);
    EXPECT_NEAR(areaOf(readPly(bytes).at(0)).z, 1.0, 1e-12);
}

TEST_F(PlyTest, BinaryLittleEndian)
{
    const QByteArray data = packed(0.0f, 0.0f, 0.0f, 2.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 9.0f, 9.0f, 9.0f) +
                            packed(quint8(3), qint32(0), qint32(1), qint32(2));
    const auto meshes = readPly(head("binary_little_endian", squareHead) + data);
    EXPECT_EQ(cornersOf(meshes.at(0)), (std::vector<glm::dvec3>{{0, 0, 0}, {2, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(meshes[0].positions.size(), 3u); // the fourth is not used
}

TEST_F(PlyTest, BinaryBigEndianWithDoublesAndWideLists)
{
    const QByteArray data = bigEndian(2700000.123, 1200000.0, 0.0, 2700000.124, 1200000.0, 0.0, 2700000.123,
                                      1200000.5, 0.0, quint32(3), quint16(0), quint16(1), quint16(2));
    const auto meshes =
        readPly(head("binary_big_endian",
                     "element vertex 3\nproperty double x\nproperty float64 y\nproperty double z\n"
                     "element face 1\nproperty list uint ushort vertex_index\n") +
                data);
    const auto corners = cornersOf(meshes.at(0));
    EXPECT_NEAR(corners[1].x - corners[0].x, 0.001, 1e-8);
    EXPECT_NEAR(corners[2].y, 1200000.5, 1e-8);
}

TEST_F(PlyTest, EveryTypeOfNumber)
{
    const QByteArray data = packed(qint8(-1), quint8(200), qint16(-300), quint16(60000), qint32(-70000),
                                   quint32(3000000000u), 0.5f, 0.25);
    const auto meshes =
        readPly(head("binary_little_endian", "element vertex 1\nproperty int8 x\nproperty uint8 y\n"
                                             "property int16 a\nproperty uint16 b\nproperty int32 c\n"
                                             "property uint32 z\nproperty float32 d\n"
                                             "property float64 e\n") +
                data);
    EXPECT_EQ(cornersOf(meshes.at(0)), (std::vector<glm::dvec3>{{-1, 200, 3000000000.0}}));
}

TEST_F(PlyTest, PointsWithColoursOfEveryKind)
{
    const auto colorOf = [this](const QByteArray& type, const QByteArray& values) {
        const auto meshes =
            readPly(head("ascii", "element vertex 1\n" + xyz + "property " + type + " red\nproperty " + type +
                                      " green\nproperty " + type + " blue\n") +
                    "0 0 0 " + values);
        EXPECT_EQ(countOf(meshes.at(0), Part::Points), 1u);
        return meshes[0].colors.at(0);
    };
    EXPECT_EQ(colorOf("uchar", "255 128 0"), 0xff0080ffu);
    EXPECT_EQ(colorOf("ushort", "65535 32896 0"), 0xff0080ffu);
    EXPECT_EQ(colorOf("float", "1.0 0.50196 0"), 0xff0080ffu);
    EXPECT_EQ(colorOf("double", "1e9 0.50196 -5"), 0xff0080ffu);
    EXPECT_EQ(colorOf("int", "255 128 0"), 0xff0080ffu);
}

TEST_F(PlyTest, NormalsAndAlpha)
{
    const auto meshes =
        readPly(head("ascii", "element vertex 1\nproperty float nx\nproperty float ny\n"
                              "property float nz\n" +
                                  xyz +
                                  "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                                  "property uchar alpha\n") +
                "0 3 4 7 8 9 1 2 3 4\n");
    EXPECT_EQ(meshes.at(0).colors.at(0), 0x04030201u);
    EXPECT_FLOAT_EQ(meshes[0].normals.at(0).y, 0.6f);
    EXPECT_EQ(cornersOf(meshes[0]).at(0), glm::dvec3(7, 8, 9));
}

TEST_F(PlyTest, UnknownElementsAndPropertiesAreSkipped)
{
    const QByteArray elements = "element camera 2\nproperty float f\nproperty list uchar double d\nelement "
                                "vertex 3\nproperty float quality\n" +
                                xyz +
                                "property list short char tags\nelement face 1\nproperty uchar flags\n"
                                "property list uchar int vertex_indices\nproperty list uchar float "
                                "texcoord\nelement empty 4000000000\n";
    const auto meshes = readPly(head("ascii", elements) + "1 2 3.5 4.5\n2 0\n"
                                                          "9 0 0 0 1 7\n9 4 0 0 0\n9 0 4 0 2 1 2\n"
                                                          "5 3 0 1 2 6 0 0 1 0 1 1\n");
    EXPECT_NEAR(areaOf(meshes.at(0)).z, 8.0, 1e-12);
}

TEST_F(PlyTest, FacesMayComeBeforeVertices)
{
    const auto meshes = readPly(
        head("ascii", "element face 1\nproperty list uchar int vertex_indices\nelement vertex 4\n" + xyz) +
        "4 0 1 2 3\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n");
    EXPECT_NEAR(areaOf(meshes.at(0)).z, 1.0, 1e-12);
}

// Two strips: 0 1 2 3 (two triangles that both wind as the first) and 1 4 3.
TEST_F(PlyTest, TriangleStripsWithRestarts)
{
    const auto meshes =
        readPly(head("ascii", "element vertex 5\n" + xyz +
                                  "element tristrips 1\nproperty list int int vertex_indices\n") +
                "0 0 0\n1 0 0\n0 1 0\n1 1 0\n2 0 0\n8 0 1 2 3 -1 1 4 3\n");
    EXPECT_EQ(countOf(meshes.at(0), Part::Triangles), 3u);
    EXPECT_NEAR(areaOf(meshes[0]).z, 1.5, 1e-12);
}

TEST_F(PlyTest, EdgesAreLines)
{
    const auto meshes =
        readPly(head("ascii", "element vertex 3\n" + xyz +
                                  "element edge 2\nproperty int vertex1\nproperty int vertex2\n"
                                  "property uchar red\n") +
                "0 0 0\n1 0 0\n1 1 0\n0 1 255\n1 2 255\n");
    EXPECT_EQ(cornersOf(meshes.at(0)), (std::vector<glm::dvec3>{{0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
    EXPECT_EQ(meshes[0].parts[0].kind, Part::Lines);
}

TEST_F(PlyTest, PointsBesideLinesAndFacesAreNamed)
{
    const auto meshes =
        readPly(head("ascii", "element vertex 6\n" + xyz +
                                  "element face 1\nproperty list uchar int vertex_indices\n" +
                                  "element edge 1\nproperty int vertex1\nproperty int vertex2\n"
                                  "element point 2\nproperty uchar kind\nproperty int vertex_index\n") +
                "0 0 0\n1 0 0\n0 1 0\n5 5 5\n6 6 6\n7 7 7\n3 0 1 2\n0 3\n9 4\n9 3\n");
    ASSERT_EQ(meshes.at(0).parts.size(), 3u);
    EXPECT_EQ(countOf(meshes[0], Part::Triangles), 1u);
    EXPECT_EQ(countOf(meshes[0], Part::Lines), 1u);
    EXPECT_EQ(countOf(meshes[0], Part::Points), 2u); // and the vertex that nothing names is none
    for (std::size_t i = 0; i < 3; ++i) {
        if (meshes[0].parts[i].kind == Part::Points) {
            EXPECT_EQ(cornersOf(meshes[0], i), (std::vector<glm::dvec3>{{6, 6, 6}, {5, 5, 5}}));
        }
    }
}

TEST_F(PlyTest, PointThatIsNotThereIsRefused)
{
    const QByteArray elements = "element vertex 1\n" + xyz + "element point 1\nproperty int vertex_index\n";
    EXPECT_EQ(refusalOf(head("ascii", elements) + "1 2 3\n1\n"), "vertex 1 is named, there are 1");
}

// An element of this name that names no vertices is one that is not known.
TEST_F(PlyTest, PointElementOfAnotherMeaningIsSkipped)
{
    for (const QByteArray& property : {QByteArray("float size"), QByteArray("list uchar int vertex_index")}) {
        const auto meshes = readPly(
            head("ascii", "element vertex 2\n" + xyz + "element point 1\nproperty " + property + "\n") +
            "0 0 0\n1 1 1\n1 0\n");
        EXPECT_EQ(countOf(meshes.at(0), Part::Points), 2u);
    }
}

TEST_F(PlyTest, NoFacesInAFaceElementIsAPointSet)
{
    const auto meshes =
        readPly(head("ascii", "element vertex 1\n" + xyz +
                                  "element face 0\nproperty list uchar int vertex_indices\n") +
                "1 2 3\n");
    EXPECT_EQ(countOf(meshes.at(0), Part::Points), 1u);
}

TEST_F(PlyTest, CountsThatTheFileCannotHoldAreRefused)
{
    for (const char* format : {"ascii", "binary_little_endian", "binary_big_endian"}) {
        for (const char* count : {"2147483648", "4294967296", "9223372036854775807"}) {
            const QString reason =
                refusalOf(head(format, QByteArray("element vertex ") + count + "\n" + xyz) + "0 0 0\n");
            EXPECT_TRUE(reason.startsWith("is too short")) << reason.toStdString();
        }
    }
    EXPECT_TRUE(refusalOf(head("ascii", "element vertex 1\n" + xyz +
                                            "element face 2147483648\n"
                                            "property list uchar int vertex_indices\n") +
                          "0 0 0\n")
                    .startsWith("is too short"));
    EXPECT_EQ(refusalOf(head("ascii", "element vertex -1\n" + xyz)), "line 4: \"-1\" is not a count");
    EXPECT_TRUE(
        refusalOf(head("ascii", "element vertex 18446744073709551615\n" + xyz)).contains("is not a count"));
}

TEST_F(PlyTest, ListLongerThanTheFileIsRefused)
{
    const QByteArray elements =
        "element vertex 1\n" + xyz + "element face 1\nproperty list uint int vertex_indices\n";
    EXPECT_EQ(
        refusalOf(head("binary_little_endian", elements) + packed(0.0f, 0.0f, 0.0f, quint32(4000000000u), 0)),
        "element \"face\", record 1: 4e+09 items do not fit into the rest of the file");
    EXPECT_EQ(refusalOf(head("ascii", elements) + "0 0 0\n-3 0 0 0\n"),
              "element \"face\", record 1: -3 is not a number of items");
}

TEST_F(PlyTest, IndicesOutOfRangeAreRefused)
{
    EXPECT_EQ(refusalOf(head("ascii", squareHead) + "0 0 0\n1 0 0\n1 1 0\n0 1 0\n3 0 1 4\n"),
              "vertex 4 is named, there are 4");
    EXPECT_EQ(refusalOf(head("ascii", squareHead) + "0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 -1\n"),
              "vertex -1 is named, there are 4");
    EXPECT_TRUE(refusalOf(head("ascii", squareHead) + "0 0 0\n1 0 0\n1 1 0\n0 1 0\n3 0 1 1.5\n")
                    .contains("1.5 is not the number of a vertex"));
}

TEST_F(PlyTest, BadHeadsAreRefused)
{
    EXPECT_EQ(refusalOf("plyx\n"), "is not a PLY file");
    EXPECT_EQ(refusalOf("ply\nformat ascii 1.0\n"), "ends within its head");
    EXPECT_EQ(refusalOf("ply\nformat text 1.0\nend_header\n"), "line 2: \"text\" is not a format");
    EXPECT_EQ(refusalOf("ply\nelement vertex 1\nend_header\n"), "line 3: the head names no format");
    EXPECT_EQ(refusalOf("ply\nformat ascii 1.0\nproperty float x\nend_header\n"),
              "line 3: a property before any element");
    EXPECT_EQ(refusalOf("ply\nformat ascii 1.0\nelement vertex 1\nproperty quad x\nend_header\n"),
              "line 4: \"quad\" is not a type of property");
    EXPECT_EQ(refusalOf("ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nend_header\n1\n"),
              "has vertices without x, y and z");
    EXPECT_EQ(refusalOf("ply\nformat ascii 1.0\nend_header\n"), "has no vertices");
    EXPECT_EQ(refusalOf("ply\ncomment " + QByteArray(10'000'000, 'x') + "\n"), "line 2 is longer than 4 MiB");
    EXPECT_TRUE(
        refusalOf("ply\n" + QByteArray("comment\n").repeated(200'000)).contains("the head does not end"));
    QByteArray elements;
    for (int i = 0; i < 2000; ++i)
        elements += "element e" + QByteArray::number(i) + " 0\n";
    EXPECT_EQ(refusalOf(head("ascii", elements)), "line 1004: more than 1000 elements");
}

TEST_F(PlyTest, VerticesThatAreNotFinite)
{
    const QByteArray points = head("ascii", "element vertex 3\n" + xyz);
    const auto meshes = readPly(points + "nan 0 0\n1 2 3\n0 -inf 0\n");
    EXPECT_EQ(cornersOf(meshes.at(0)), (std::vector<glm::dvec3>{{1, 2, 3}}));
    EXPECT_EQ(LogTrap::take().size(), 1);
    EXPECT_EQ(refusalOf(points + "nan 0 0\n0 0 inf\n0 1e999 0\n"),
              "has nothing to draw whose coordinates are finite and below 1e15");
}

TEST_F(PlyTest, WordOfTenMegabytesIsRefused)
{
    EXPECT_EQ(refusalOf(head("ascii", "element vertex 1\n" + xyz) + QByteArray(10'000'000, '1') + " 0 0\n"),
              "holds a word longer than 4 MiB");
}
