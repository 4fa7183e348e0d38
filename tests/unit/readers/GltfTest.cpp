#include "ReaderTest.h"

#include <tests/support/LogTrap.h>

#include <QtCore/QBuffer>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtGui/QImage>

#include <limits>

namespace {

using Part = MeshData::Part;

// A unit square in four vertices, normals, texture coordinates, colours as bytes, and the indices of two
// triangles.
const QByteArray squareBytes =
    packed(0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f) + // 0
    packed(0.f, 0.f, 1.f, 0.f, 0.f, 1.f, 0.f, 0.f, 1.f, 0.f, 0.f, 1.f) +             // 48
    packed(0.0f, 0.0f, 1.0f, 0.0f, 1.0f, 0.25f, 0.0f, 1.0f) +                        // 96
    packed(0xff0000ffu, 0xff00ff00u, 0xffff0000u, 0xffffffffu) +                     // 128
    packed(quint16(0), quint16(1), quint16(2), quint16(0), quint16(2), quint16(3));  // 144

class GltfTest : public ReaderTest
{
protected:
    std::vector<MeshData> readGltf(const QByteArray& json) const { return read("gltf", json); }
    QString refusalOf(const QByteArray& json) const { return refusal("gltf", json); }
};

// Inserts the square's views and accessors: 0 positions, 1 normals, 2 texture coordinates, 3 colours, 4
// indices.
QByteArray document(const QByteArray& rest, const QByteArray& buffer = {})
{
    const QByteArray address = "data:application/octet-stream;base64," + squareBytes.toBase64();
    return "{\"asset\":{\"version\":\"2.0\"},\"buffers\":[" +
           (buffer.isEmpty() ? "{\"byteLength\":156,\"uri\":\"" + address + "\"}" : buffer) +
           "],\"bufferViews\":[{\"buffer\":0,\"byteLength\":48},{\"buffer\":0,\"byteOffset\":48,"
           "\"byteLength\":48},"
           "{\"buffer\":0,\"byteOffset\":96,\"byteLength\":32},{\"buffer\":0,\"byteOffset\":128,"
           "\"byteLength\":16},"
           "{\"buffer\":0,\"byteOffset\":144,\"byteLength\":12}],\"accessors\":["
           "{\"bufferView\":0,\"componentType\":5126,\"count\":4,\"type\":\"VEC3\"},"
           "{\"bufferView\":1,\"componentType\":5126,\"count\":4,\"type\":\"VEC3\"},"
           "{\"bufferView\":2,\"componentType\":5126,\"count\":4,\"type\":\"VEC2\"},"
           "{\"bufferView\":3,\"componentType\":5121,\"normalized\":true,\"count\":4,\"type\":\"VEC4\"},"
           "{\"bufferView\":4,\"componentType\":5123,\"count\":6,\"type\":\"SCALAR\"}]," +
           rest + "}";
}

QByteArray oneMesh(const QByteArray& primitive, const QByteArray& node = {})
{
    return "\"scenes\":[{\"nodes\":[0]}],\"nodes\":[{\"mesh\":0" + node +
           "}],\"meshes\":[{\"name\":\"square\",\"primitives\":[" + primitive + "]}]";
}

const QByteArray plainSquare = "{\"attributes\":{\"POSITION\":0},\"indices\":4}";

QByteArray container(const QByteArray& json, const QByteArray& bytes)
{
    const QByteArray text = json + QByteArray((4 - json.size() % 4) % 4, ' ');
    QByteArray body = packed(quint32(text.size()), quint32(0x4e4f534a)) + text;
    if (!bytes.isEmpty()) body += packed(quint32(bytes.size()), quint32(0x004e4942)) + bytes;
    return "glTF" + packed(quint32(2), quint32(12 + body.size())) + body;
}

} // namespace

TEST_F(GltfTest, SquareInText)
{
    const auto meshes = readGltf(document(oneMesh(plainSquare)));
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0].name, "square");
    EXPECT_EQ(countOf(meshes[0], Part::Triangles), 2u);
    EXPECT_NEAR(areaOf(meshes[0]).z, 1.0, 1e-12);
}

TEST_F(GltfTest, SquareInABinaryContainer)
{
    const auto meshes =
        read("glb", container(document(oneMesh(plainSquare), "{\"byteLength\":156}"), squareBytes));
    EXPECT_NEAR(areaOf(meshes.at(0)).z, 1.0, 1e-12);
}

TEST_F(GltfTest, BufferInAFileBeside)
{
    write("square data.bin", squareBytes);
    const QByteArray buffer = "{\"byteLength\":156,\"uri\":\"square%20data.bin\"}";
    EXPECT_NEAR(areaOf(readGltf(document(oneMesh(plainSquare), buffer)).at(0)).z, 1.0, 1e-12);
    EXPECT_EQ(refusalOf(document(oneMesh(plainSquare), "{\"byteLength\":156,\"uri\":\"gone.bin\"}")),
              "the file \"gone.bin\" beside it is missing");
    EXPECT_EQ(refusalOf(document(oneMesh(plainSquare), "{\"byteLength\":200,\"uri\":\"square%20data.bin\"}")),
              "a buffer is too short: 200 bytes announced, 156 there");
}

TEST_F(GltfTest, TransformsAreComposedInDoubles)
{
    // a quarter turn about z, twice as large, at geodetic coordinates; within it 1 mm along its x
    const auto meshes =
        readGltf(document("\"scenes\":[{\"nodes\":[1]}],\"scene\":0,\"nodes\":[{\"mesh\":0,\"name\":"
                          "\"inner\",\"translation\":[0.001,0,0]},"
                          "{\"children\":[0],\"translation\":[2700000.123,1200000.456,400],\"rotation\":[0,0,"
                          "0.7071067811865476,"
                          "0.7071067811865476],\"scale\":[2,2,2]}],\"meshes\":[{\"primitives\":[" +
                          plainSquare + "]}]"));
    EXPECT_EQ(meshes.at(0).name, "inner");
    const auto corners = cornersOf(meshes[0]);
    EXPECT_NEAR(corners[0].x, 2700000.123, 1e-8);
    EXPECT_NEAR(corners[0].y, 1200000.458, 1e-8);
    EXPECT_NEAR(corners[1].x, 2700000.123, 1e-6);
    EXPECT_NEAR(corners[1].y, 1200002.458, 1e-6);
    EXPECT_NEAR(areaOf(meshes[0]).z, 4.0, 1e-6);
}

TEST_F(GltfTest, MatrixOfANodeIsColumnByColumn)
{
    const auto meshes =
        readGltf(document(oneMesh(plainSquare, ",\"matrix\":[1,0,0,0, 0,3,0,0, 0,0,1,0, 10,20,30,1]")));
    EXPECT_EQ(cornersOf(meshes.at(0))[2], glm::dvec3(11, 23, 30));
}

TEST_F(GltfTest, MirroredTrianglesKeepFacingOutwards)
{
    const auto meshes = readGltf(document(
        oneMesh("{\"attributes\":{\"POSITION\":0,\"NORMAL\":1},\"indices\":4}", ",\"scale\":[-1,1,1]")));
    EXPECT_NEAR(areaOf(meshes.at(0)).z, 1.0, 1e-12);
    EXPECT_EQ(meshes[0].normals.at(0), glm::vec3(0, 0, 1));
}

TEST_F(GltfTest, EveryModeOfPrimitives)
{
    struct Case
    {
        int mode;
        Part::Kind kind;
        std::size_t count;
    };
    for (const Case& c :
         {Case{0, Part::Points, 4}, Case{1, Part::Lines, 2}, Case{2, Part::Lines, 4}, Case{3, Part::Lines, 3},
          Case{4, Part::Triangles, 1}, Case{5, Part::Triangles, 2}, Case{6, Part::Triangles, 2}}) {
        const auto meshes = readGltf(document(
            oneMesh("{\"attributes\":{\"POSITION\":0},\"mode\":" + QByteArray::number(c.mode) + "}")));
        EXPECT_EQ(meshes.at(0).parts.size(), 1u) << c.mode;
        EXPECT_EQ(countOf(meshes[0], c.kind), c.count) << c.mode;
    }
    EXPECT_EQ(refusalOf(document(oneMesh("{\"attributes\":{\"POSITION\":0},\"mode\":7}"))),
              "a primitive has the unknown mode 7");
}

TEST_F(GltfTest, TrianglesOfAStripWindAlike)
{
    // 0 (0,0), 1 (1,0), 2 (1,1), 3 (0,1) as a strip: 0 1 2 to the left, 1 3 2 to the right of its edge
    const auto meshes = readGltf(document(oneMesh("{\"attributes\":{\"POSITION\":0},\"mode\":5}")));
    const auto c = cornersOf(meshes.at(0));
    EXPECT_EQ(c, (std::vector<glm::dvec3>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}));
}

TEST_F(GltfTest, BaseColourIsShownInTheScreensCurve)
{
    const auto meshes =
        readGltf(document(oneMesh("{\"attributes\":{\"POSITION\":0},\"indices\":4,\"material\":0}") +
                          ",\"materials\":[{\"alphaMode\":\"BLEND\",\"pbrMetallicRoughness\":{"
                          "\"baseColorFactor\":[1,0.5,0,0.5]}}]"));
    // 0.5 of the light is 1.055 * 0.5^(1/2.4) - 0.055 = 0.7354 on the screen
    EXPECT_EQ(meshes.at(0).parts[0].color.rgba(), qRgba(255, 188, 0, 128));
}

TEST_F(GltfTest, ColoursOfVerticesAreTimesTheBaseColour)
{
    const auto meshes = readGltf(
        document(oneMesh("{\"attributes\":{\"POSITION\":0,\"COLOR_0\":3},\"indices\":4,\"material\":0},"
                         "{\"attributes\":{\"POSITION\":0},\"material\":0}") +
                 ",\"materials\":[{\"pbrMetallicRoughness\":{\"baseColorFactor\":[1,0,1,1]}}]"));
    const MeshData& mesh = meshes.at(0);
    ASSERT_EQ(mesh.colors.size(), 7u); // the second primitive draws one triangle
    EXPECT_EQ(mesh.colors[0], 0xff0000ffu);
    EXPECT_EQ(mesh.colors[1], 0xff000000u);
    EXPECT_EQ(mesh.colors[2], 0xffff0000u);
    EXPECT_EQ(mesh.colors[4], 0xffff00ffu);
}

TEST_F(GltfTest, EmbeddedTextureAndItsCoordinates)
{
    QImage image(1, 1, QImage::Format_RGB32);
    image.fill(QColor(10, 20, 30));
    QBuffer png;
    png.open(QIODevice::WriteOnly);
    ASSERT_TRUE(image.save(&png, "PNG"));
    const QByteArray look = "\"materials\":[{\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}}}],"
                            "\"textures\":[{\"source\":0}],\"images\":[{\"mimeType\":\"image/png\",\"uri\":"
                            "\"data:image/png;base64," +
                            png.data().toBase64() + "\"}]";
    const auto meshes = readGltf(
        document(oneMesh("{\"attributes\":{\"POSITION\":0,\"TEXCOORD_0\":2},\"indices\":4,\"material\":0}") +
                 "," + look));
    ASSERT_EQ(meshes.at(0).images.size(), 1u);
    EXPECT_EQ(meshes[0].images[0].pixelColor(0, 0), QColor(10, 20, 30));
    EXPECT_EQ(meshes[0].parts[0].image, 0);
    EXPECT_EQ(meshes[0].texCoords.at(2),
              glm::vec2(1.0f, 0.75f)); // the picture's first row is the upper one here
}

TEST_F(GltfTest, MissingTextureIsOneWarning)
{
    const QByteArray look =
        ",\"materials\":[{\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}}}],"
        "\"textures\":[{\"source\":0}],\"images\":[{\"uri\":\"gone.png\"}]";
    EXPECT_EQ(readGltf(document(oneMesh("{\"attributes\":{\"POSITION\":0},\"material\":0}") + look)).size(),
              1u);
    EXPECT_EQ(LogTrap::take().size(), 1);
}

TEST_F(GltfTest, SparseAccessorChangesEntries)
{
    // entry 2 of the positions becomes the numbers of normal 0: (0, 0, 1)
    QByteArray text = document(oneMesh(plainSquare));
    text.replace(
        "{\"bufferView\":0,\"componentType\":5126,\"count\":4,\"type\":\"VEC3\"}",
        "{\"bufferView\":0,\"componentType\":5126,\"count\":4,\"type\":\"VEC3\",\"sparse\":{\"count\":1,"
        "\"indices\":{\"bufferView\":4,\"byteOffset\":4,\"componentType\":5123},\"values\":{\"bufferView\":1}"
        "}}");
    EXPECT_EQ(cornersOf(readGltf(text).at(0)).at(2), glm::dvec3(0, 0, 1));
}

TEST_F(GltfTest, WithoutScenesTheNodesThatAreNobodysChildAreDrawn)
{
    const auto meshes =
        readGltf(document("\"nodes\":[{\"mesh\":0},{\"mesh\":0,\"children\":[0]}],\"meshes\":[{"
                          "\"primitives\":[" +
                          plainSquare + "]}]"));
    EXPECT_EQ(meshes.size(), 2u);
}

TEST_F(GltfTest, CirclesOfNodesAreRefused)
{
    const QByteArray meshes = "\"meshes\":[{\"primitives\":[" + plainSquare + "]}]";
    EXPECT_EQ(
        refusalOf(document("\"scenes\":[{\"nodes\":[0]}],\"nodes\":[{\"children\":[1]},{\"children\":[0]}]," +
                           meshes)),
        "node 0 stands in two places or within itself");
    EXPECT_EQ(refusalOf(document("\"nodes\":[{\"children\":[0]}]," + meshes)), "has nothing to draw");
}

TEST_F(GltfTest, DeepNodesAreRead)
{
    QByteArray nodes = "{\"mesh\":0}";
    constexpr int depth = 20000;
    for (int i = 1; i < depth; ++i)
        nodes += ",{\"children\":[" + QByteArray::number(i - 1) + "]}";
    EXPECT_EQ(
        readGltf(document("\"scenes\":[{\"nodes\":[" + QByteArray::number(depth - 1) + "]}],\"nodes\":[" +
                          nodes + "],\"meshes\":[{\"primitives\":[" + plainSquare + "]}]"))
            .size(),
        1u);
}

TEST_F(GltfTest, WhatPointsOutsideIsRefused)
{
    const QByteArray good = document(oneMesh(plainSquare));
    const auto changed = [&good](const char* from, const char* to) {
        QByteArray text = good;
        EXPECT_TRUE(text.contains(from));
        return text.replace(from, to);
    };
    EXPECT_EQ(refusalOf(changed("\"indices\":4", "\"indices\":9")),
              "member 9 of \"accessors\" is named, there are 5");
    EXPECT_EQ(refusalOf(changed("\"indices\":4", "\"indices\":-1")), "accessors is not a whole number");
    EXPECT_EQ(refusalOf(changed("\"indices\":4", "\"indices\":0")),
              "accessor 0 has not the 1 components that its use needs");
    EXPECT_TRUE(refusalOf(changed("\"count\":6", "\"count\":7"))
                    .contains("an accessor of 7 entries ends beyond its view"));
    EXPECT_TRUE(refusalOf(changed("{\"bufferView\":4,\"componentType\":5123,\"count\":6",
                                  "{\"componentType\":5123,\"count\":7000000"))
                    .contains("has 7000000 entries but no data"));
    EXPECT_TRUE(refusalOf(changed("\"count\":6", "\"count\":4294967296")).contains("unfolds to far more"));
    EXPECT_TRUE(
        refusalOf(changed("\"byteOffset\":144", "\"byteOffset\":1e300")).contains("is not a whole number"));
    EXPECT_TRUE(refusalOf(changed("\"byteOffset\":144", "\"byteOffset\":145")).contains("ends beyond it"));
    EXPECT_TRUE(
        refusalOf(changed("\"byteLength\":156", "\"byteLength\":157")).contains("a buffer is too short"));
    EXPECT_TRUE(refusalOf(changed("\"componentType\":5123", "\"componentType\":5124"))
                    .contains("unknown component type"));
    EXPECT_TRUE(
        refusalOf(changed("\"byteOffset\":144", "\"byteOffset\":96")).contains("is named, there are 4"));
}

TEST_F(GltfTest, UnfoldingBeyondMeasureIsRefused)
{
    // one mesh in 9000 nodes of a text of 200 kB: 5.4e7 indices would be drawn
    QByteArray nodes;
    for (int i = 0; i < 9000; ++i)
        nodes += i == 0 ? "{\"mesh\":0}" : ",{\"mesh\":0}";
    QByteArray primitives;
    for (int i = 0; i < 1000; ++i)
        primitives += (i == 0 ? "" : ",") + plainSquare;
    EXPECT_TRUE(
        refusalOf(document("\"nodes\":[" + nodes + "],\"meshes\":[{\"primitives\":[" + primitives + "]}]"))
            .contains("unfolds to far more"));
}

TEST_F(GltfTest, OtherVersionsAndNeededExtensionsAreRefusedByName)
{
    EXPECT_EQ(refusalOf("{\"asset\":{\"version\":\"1.0\"}}"), "is of version \"1.0\", only 2.0 can be read");
    EXPECT_EQ(refusalOf("{}"), "is not a glTF file");
    EXPECT_EQ(refusalOf("[]"), "is not a glTF file");
    EXPECT_EQ(
        refusalOf(
            "{\"asset\":{\"version\":\"2.0\"},\"extensionsRequired\":[\"KHR_draco_mesh_compression\"]}"),
        "needs the extension \"KHR_draco_mesh_compression\", which cannot be read");
    EXPECT_EQ(refusalOf("{\"asset\":{\"version\":\"2.0\"}}"), "has nothing to draw");
    EXPECT_EQ(refusalOf("glTF" + packed(quint32(1), quint32(12))), "is of version 1, only 2.0 can be read");
}

TEST_F(GltfTest, ContainersWhoseLengthsLieAreRefused)
{
    const QByteArray good = container(document(oneMesh(plainSquare), "{\"byteLength\":156}"), squareBytes);
    QByteArray bytes = good;
    bytes.replace(8, 4, packed(quint32(0x80000000u)));
    EXPECT_TRUE(refusal("glb", bytes).startsWith("is too short"));
    bytes = good;
    bytes.replace(12, 4, packed(quint32(0xfffffff0u)));
    EXPECT_EQ(refusal("glb", bytes), "has a chunk that ends beyond the file");
    EXPECT_EQ(refusal("glb", "glTF" + packed(quint32(2), quint32(12))), "has no chunk of text");
}

TEST_F(GltfTest, VerticesThatAreNotFiniteAreLeftOut)
{
    QByteArray bytes = squareBytes;
    bytes.replace(36, 4, packed(std::numeric_limits<float>::infinity())); // x of vertex 3
    const QByteArray json = document(oneMesh(plainSquare), "{\"byteLength\":156}");
    EXPECT_EQ(countOf(read("glb", container(json, bytes)).at(0), Part::Triangles), 1u);
    EXPECT_EQ(LogTrap::take().size(), 1);
    bytes.replace(0, 4, packed(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_TRUE(refusal("glb", container(json, bytes)).contains("finite"));
    EXPECT_EQ(refusalOf(document(oneMesh(plainSquare, ",\"translation\":[1e308,0,0],\"scale\":[1e308,1,1]"))),
              "has nothing to draw whose coordinates are finite and below 1e15");
}

TEST_F(GltfTest, ListsGivenTwiceAreTheLast)
{
    EXPECT_EQ(refusalOf(document(oneMesh(plainSquare) + ",\"nodes\":[{}]")), "has nothing to draw");
    EXPECT_EQ(readGltf(document("\"nodes\":[{},{},{}]," + oneMesh(plainSquare))).size(), 1u);
    EXPECT_EQ(refusalOf(document(oneMesh(plainSquare) + ",\"nodes\":7")),
              "member 0 of \"nodes\" is named, there are 0");
}

TEST_F(GltfTest, SceneIsTheOneThatTheDocumentNames)
{
    const QByteArray scenes = R"("scenes":[{"nodes":[0]},{"nodes":[0,1]}],"nodes":[{"mesh":0},{"mesh":0}],)"
                              R"("meshes":[{"primitives":[)" +
                              plainSquare + "]}]";
    EXPECT_EQ(readGltf(document(scenes)).size(), 1u);
    EXPECT_EQ(readGltf(document("\"scene\":1," + scenes)).size(), 2u);
    EXPECT_EQ(readGltf(document(scenes + ",\"scene\":1.0")).size(), 2u);
    EXPECT_EQ(refusalOf(document("\"scene\":2," + scenes)), "member 2 of \"scenes\" is named, there are 2");
    EXPECT_EQ(refusalOf(document("\"scene\":\"1\"," + scenes)), "scenes is not a whole number");
}

TEST_F(GltfTest, WhatStandsInListsOfMembersIsAnObject)
{
    for (const char* other : {"null", "7", "\"a\"", "[]"})
        EXPECT_EQ(refusalOf(document(oneMesh(plainSquare) + ",\"images\":[{}," + other + "]")),
                  "a member of \"images\" is no object")
            << other;
}

TEST_F(GltfTest, ForeignMembersArePassedOver)
{
    EXPECT_EQ(readGltf(document(R"("animations":[7,[{"nodes":[{}]}]],"extras":{"nodes":[7]},)" +
                                oneMesh(plainSquare, R"(,"extras":{"mesh":9,"nodes":[1]})")))
                  .size(),
              1u);
}

TEST_F(GltfTest, MillionsOfMembersAreRefused)
{
    EXPECT_EQ(refusalOf("{\"nodes\":[" + QByteArray("{},").repeated(200'000) + "{}]}"),
              "has far more \"nodes\" than a file of its size should");
    EXPECT_EQ(refusalOf("{\"nodes\":[" + QByteArray("{},").repeated(99'999) + "{}]}"), "is not a glTF file");
}
