#include "ReaderTest.h"

#include <framework/ksp/Canceled.h>
#include <framework/ksp/CommonError.h>
#include <readers/geojson/readGeoJson.h>

#include <tests/support/LogTrap.h>

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <limits>
#include <random>

namespace {

struct HostileFile
{
    const char* name;
    const char* extension;
    QByteArray bytes;
};

std::ostream& operator<<(std::ostream& stream, const HostileFile& sample)
{
    return stream << sample.name;
}

const QByteArray plyHead = "element vertex 4\nproperty float x\nproperty double y\nproperty float z\n"
                           "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                           "element face 2\nproperty list uchar int vertex_indices\n"
                           "element edge 1\nproperty int vertex1\nproperty int vertex2\nend_header\n";

QByteArray binaryPly()
{
    QByteArray bytes = "ply\nformat binary_little_endian 1.0\n" + plyHead;
    for (int i = 0; i < 4; ++i)
        bytes += packed(float(i % 2), double(i / 2), 0.5f, quint8(i), quint8(10), quint8(20));
    return bytes + packed(quint8(3), 0, 1, 2, quint8(4), 0, 1, 3, 2, 0, 3);
}

QByteArray glb()
{
    QByteArray json =
        "{\"asset\":{\"version\":\"2.0\"},\"buffers\":[{\"byteLength\":72}],\"bufferViews\":[{\"buffer\":0,"
        "\"byteLength\":48,\"byteStride\":12},{\"buffer\":0,\"byteOffset\":48,\"byteLength\":24}],"
        "\"accessors\":[{\"bufferView\":0,\"componentType\":5126,\"count\":4,\"type\":\"VEC3\"},"
        "{\"bufferView\":1,\"componentType\":5125,\"count\":6,\"type\":\"SCALAR\"}],\"meshes\":[{"
        "\"primitives\":[{\"attributes\":{\"POSITION\":0},\"indices\":1,\"material\":0},"
        "{\"attributes\":{\"POSITION\":0},\"mode\":5}]}],\"materials\":[{\"pbrMetallicRoughness\":{"
        "\"baseColorFactor\":[1,0.5,0,1]}}],\"nodes\":[{\"mesh\":0,\"translation\":[1,2,3],"
        "\"rotation\":[0,0,0,1]},{\"children\":[0],\"scale\":[2,2,2]}],\"scenes\":[{\"nodes\":[1]}]}";
    json += QByteArray((4 - json.size() % 4) % 4, ' ');
    const QByteArray data =
        packed(0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0, 1, 2, 0, 2, 3);
    const QByteArray body = packed(quint32(json.size()), quint32(0x4e4f534a)) + json +
                            packed(quint32(data.size()), quint32(0x004e4942)) + data;
    return "glTF" + packed(quint32(2), quint32(12 + body.size())) + body;
}

QByteArray binaryStl()
{
    return QByteArray(80, ' ') + packed(quint32(2), 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f,
                                        0.f, quint16(0), 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 2.f, 0.f, 0.f, 0.f,
                                        2.f, 0.f, quint16(0));
}

std::vector<HostileFile> samples()
{
    return {
        {"obj", "obj",
         "mtllib none.mtl\no a\nv 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 1 1 0 0 0 1\nv .2 0.1 -0\nvt 0 1\nvn 0 0 1\n"
         "usemtl m\nf 1/1/1 2//1 3\ng b c\nf -4 -3 -2 -1\nl 1 2 3\np 1 4\nf 1 2 \\\n3\n"},
        {"ascii_ply", "ply",
         "ply\nformat ascii 1.0\ncomment a\n" + plyHead +
             "0 0 0 1 2 3\n1 0 0 4 5 6\n1 1 0.5 7 8 9\n0 1 0 255 0 0\n3 0 1 2\n4 0 1 2 3\n0 3\n"},
        {"binary_ply", "ply", binaryPly()},
        {"strips_ply", "ply",
         "ply\nformat binary_big_endian 1.0\nelement vertex 3\nproperty short x\nproperty short y\nproperty "
         "short z\n"
         "element tristrips 1\nproperty list int int vertex_indices\nend_header\n" +
             QByteArray::fromHex("000000000000000100000000000000010000"
                                 "00000006"
                                 "000000000000000100000002"
                                 "ffffffff"
                                 "0000000000000002")},
        {"ascii_stl", "stl",
         "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1e-3 "
         "0\nendloop\nendfacet\n"
         "endsolid a\nsolid b\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 "
         "0\nendloop\n"
         "endfacet\nendsolid b\n"},
        {"binary_stl", "stl", binaryStl()},
        {"off", "off",
         "COFF\n# a\n4 2 0\n0 0 0 255 0 0\n1 0 0 0 255 0\n1 1 0 1 1 1\n0 1 0 9 9 9\n4 0 1 2 3\n3 0 1 2 7\n"},
        {"glb", "glb", glb()},
        {"geojson", "geojson",
         "{\"type\":\"FeatureCollection\",\"features\":[{\"type\":\"Feature\",\"id\":1,\"geometry\":{"
         "\"type\":"
         "\"Polygon\",\"coordinates\":[[[0,0],[1,0],[1,1.5],[0,0]]]},\"properties\":{\"name\":\"a\",\"b\":[1,"
         "null]}},"
         "{\"type\":\"Feature\",\"geometry\":{\"type\":\"GeometryCollection\",\"geometries\":[{\"type\":"
         "\"Point\","
         "\"coordinates\":[1,2,3]},{\"type\":\"MultiLineString\",\"coordinates\":[[[0,0],[1,1]]]}]},"
         "\"properties\":null}]}"}};
}

class HostileFiles : public ReaderTest, public ::testing::WithParamInterface<HostileFile>
{
protected:
    void TearDown() override { LogTrap::take(); } // what a damaged file still gives is told in warnings

    // Reads the bytes or has them refused for a reason of one line; anything else, a crash above all, fails.
    // From memory: tens of thousands of files would take their time on a disk.
    bool isRead(QByteArray bytes)
    {
        ++m_tries;
        QBuffer buffer(&bytes);
        EXPECT_TRUE(buffer.open(QIODevice::ReadOnly));
        try {
            const auto meshes =
                parserOf(GetParam().extension)(buffer, folder.filePath("file"), ksp::StagedProgress::dummy());
            EXPECT_FALSE(meshes.empty());
            for (const MeshData& mesh : meshes)
                checkSound(mesh);
            return true;
        } catch (const ksp::CommonError& error) {
            EXPECT_FALSE(error.text().isEmpty());
            EXPECT_FALSE(error.text().contains('\n'));
            EXPECT_LT(error.text().size(), 400);
            ++m_refusals;
        }
        return false;
    }

    int m_tries = 0;
    int m_refusals = 0;
};

INSTANTIATE_TEST_SUITE_P(Formats, HostileFiles, ::testing::ValuesIn(samples()),
                         [](const auto& sample) { return std::string(sample.param.name); });

} // namespace

TEST_P(HostileFiles, TheSampleItselfIsRead)
{
    EXPECT_TRUE(isRead(GetParam().bytes));
}

TEST_P(HostileFiles, EveryTruncation)
{
    for (int size = 0; size < GetParam().bytes.size(); ++size)
        isRead(GetParam().bytes.left(size));
    EXPECT_GT(m_refusals, 0);
}

TEST_P(HostileFiles, ThreeThousandMutations)
{
    std::mt19937 random(20240607);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 3000; ++i) {
        QByteArray bytes = GetParam().bytes;
        for (int change = below(4); change >= 0; --change) {
            const int at = below(bytes.size());
            switch (below(6)) {
            case 0:
                bytes[at] = static_cast<char>(below(256));
                break;
            case 1:
                bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
                break;
            case 2:
                bytes[at] = "0123456789-+.eE/ \n\\{}[],:\"#nif"[below(31)];
                break;
            case 3:
                bytes.insert(at, bytes.mid(below(bytes.size()), 1 + below(40)));
                break;
            case 4:
                if (bytes.size() > 50) bytes.remove(at, 1 + below(8));
                break;
            default:
                bytes.replace(at, 4, QByteArray(4, below(2) ? '\xff' : '\x7f'));
            }
        }
        isRead(bytes);
    }
    EXPECT_EQ(m_tries, 3000);
    EXPECT_GT(m_refusals, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST_P(HostileFiles, NumbersReplacedByExtremes)
{
    const QByteArray& bytes = GetParam().bytes;
    for (const char* number : {"2147483648", "4294967295", "-2147483649", "9223372036854775808", "1e999",
                               "nan", "-inf", "1e308", "0x10", "1e-999", ""}) {
        for (int at = 0; at < bytes.size(); ++at) {
            if (!isdigit(static_cast<unsigned char>(bytes[at]))) continue;
            isRead(QByteArray(bytes).replace(at, 1, number));
        }
    }
    for (const QByteArray& number : {packed(0x80000000u), packed(0xffffffffu), packed(0x7fffffff), packed(0),
                                     packed(std::numeric_limits<float>::infinity()), packed(1e38f)}) {
        for (int at = 0; at + 4 <= bytes.size(); ++at)
            isRead(QByteArray(bytes).replace(at, 4, number));
    }
    EXPECT_GT(m_refusals, 0);
}

TEST_P(HostileFiles, WhatIsNotAFileOfTheFormatIsRefused)
{
    std::mt19937 random(7);
    QByteArray noise;
    for (int i = 0; i < 100'000; ++i)
        noise += static_cast<char>(random());
    EXPECT_FALSE(isRead(noise));
    EXPECT_FALSE(isRead(QByteArray(100'000, '\0')));
    EXPECT_FALSE(isRead(QByteArray(100'000, '\xff')));
    EXPECT_FALSE(isRead("\n\n\n"));
    EXPECT_FALSE(isRead(" "));
}

TEST_P(HostileFiles, ThreeMillionBracketsAreRefusedAtOnce)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(isRead(QByteArray(3'000'000, '[')));
    EXPECT_FALSE(isRead(QByteArray("{\"a\":").repeated(600'000)));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST_P(HostileFiles, CancelIsObeyed)
{
    ksp::StagedProgress progress = ksp::StagedProgress::dummy();
    progress.cancel();
    const QString path = write(QString("file.") + GetParam().extension, GetParam().bytes);
    if (GetParam().extension == std::string("geojson"))
        EXPECT_THROW(readers::readGeoJson(path, progress), ksp::Canceled);
    else
        EXPECT_THROW(readers::readMeshFile(path, parserOf(GetParam().extension), progress), ksp::Canceled);
}

TEST_P(HostileFiles, ProgressReachesTheEnd)
{
    double last = 0.0;
    const QString path = write(QString("file.") + GetParam().extension, GetParam().bytes);
    const ksp::StagedProgress progress([&last](double percentage, const QString&) { last = percentage; });
    if (GetParam().extension == std::string("geojson"))
        readers::readGeoJson(path, progress);
    else
        readers::readMeshFile(path, parserOf(GetParam().extension), progress);
    EXPECT_DOUBLE_EQ(last, 100.0);
}

TEST_P(HostileFiles, WhatCannotBeOpenedIsRefusedByName)
{
    const auto reasonOf = [this](const QString& name) {
        const QString path = folder.filePath(name);
        try {
            readers::readMeshFile(path, parserOf(GetParam().extension), ksp::StagedProgress::dummy());
        } catch (const ksp::CommonError& error) {
            EXPECT_TRUE(error.text().startsWith(path + ": "));
            return error.text().mid(path.size() + 2);
        }
        return QString();
    };
    EXPECT_EQ(reasonOf("gone"), "there is no such file");
    ASSERT_TRUE(QDir(folder.path()).mkdir("sub"));
    EXPECT_EQ(reasonOf("sub"), "is a folder, not a file");
    ASSERT_EQ(mkfifo(folder.filePath("pipe").toLocal8Bit().constData(), 0600), 0);
    EXPECT_EQ(reasonOf("pipe"), "is not a regular file");
    write("empty", "");
    EXPECT_EQ(reasonOf("empty"), "is empty");
}

TEST_F(ReaderTest, FileWithoutPermissionIsRefusedByName)
{
    const QString path = write("locked", "v 0 0 0\n");
    ASSERT_TRUE(QFile::setPermissions(path, {}));
    // root may read everything, so it becomes somebody else meanwhile
    const uid_t user = geteuid();
    constexpr uid_t nobody = 65534;
    ASSERT_EQ(chmod(folder.path().toLocal8Bit().constData(), 0755), 0);
    if (user == 0) {
        ASSERT_EQ(seteuid(nobody), 0);
    }
    QString line;
    try {
        readers::readMeshFile(path, parserOf("obj"), ksp::StagedProgress::dummy());
    } catch (const ksp::CommonError& error) {
        line = error.text();
    }
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(line, path + ": cannot be opened: Permission denied");
}
