#include <viewer/PlyWriter.h>

#include <framework/ksp/Canceled.h>
#include <framework/ksp/CommonError.h>

#include <QtCore/QBuffer>

#include <gtest/gtest.h>

namespace {

using Counts = PlyWriter::Counts;

/// A file of these parts whose vertices are (n, n + 0.5, -n), n from 0.
QByteArray written(PlyWriter::Format format, const std::vector<Counts>& parts)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    PlyWriter writer(buffer, format, parts);
    double n = 0.0;
    for (const Counts& part : parts)
        for (std::uint64_t i = 0; i < part.vertices(); ++i, n += 1.0)
            writer.addVertex({n, n + 0.5, -n});
    writer.finish(ksp::StagedProgress::dummy());
    return buffer.data();
}

const QByteArray head =
    "ply\nformat ascii 1.0\ncomment what a scene of viewer3d draws, in model coordinates\n";
const QByteArray xyz = "property double x\nproperty double y\nproperty double z\n";

/// Takes so many bytes and no more.
class SmallDevice : public QIODevice
{
public:
    explicit SmallDevice(qint64 bytes)
        : m_left(bytes)
    {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 size) override
    {
        const qint64 taken = std::min(size, m_left);
        m_left -= taken;
        if (taken > 0) return taken;
        setErrorString("No space left on device");
        return -1;
    }

private:
    qint64 m_left;
};

QString refusal(const std::function<void()>& work)
{
    try {
        work();
    } catch (const ksp::CommonError& error) {
        return error.text();
    }
    return {};
}

} // namespace

TEST(PlyWriter, TriangleAsText)
{
    EXPECT_EQ(written(PlyWriter::Format::Ascii, {{0, 0, 1}}),
              head + "element vertex 3\n" + xyz +
                  "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                  "0 0.5 -0\n1 1.5 -1\n2 2.5 -2\n3 0 1 2\n");
}

TEST(PlyWriter, OnlyPointsNeedNoNames)
{
    EXPECT_EQ(written(PlyWriter::Format::Ascii, {{1, 0, 0}, {1, 0, 0}}),
              head + "element vertex 2\n" + xyz + "end_header\n0 0.5 -0\n1 1.5 -1\n");
}

// Two parts: vertices 0 to 5 are a point, a line and a triangle; 6 to 9 two lines; 10 is a point.
TEST(PlyWriter, PartsNameTheirOwnVertices)
{
    const QByteArray text = written(PlyWriter::Format::Ascii, {{1, 1, 1}, {0, 2, 0}, {1, 0, 0}});
    EXPECT_TRUE(text.startsWith(head + "element vertex 11\n" + xyz +
                                "element face 1\nproperty list uchar int vertex_indices\n"
                                "element edge 3\nproperty int vertex1\nproperty int vertex2\n"
                                "element point 2\nproperty int vertex_index\nend_header\n"))
        << text.constData();
    EXPECT_TRUE(text.endsWith("\n10 10.5 -10\n3 3 4 5\n1 2\n6 7\n8 9\n0\n10\n")) << text.constData();
}

TEST(PlyWriter, BinaryIsLittleEndian)
{
    const QByteArray bytes = written(PlyWriter::Format::Binary, {{0, 1, 0}});
    const int end = bytes.indexOf("end_header\n") + 11;
    EXPECT_TRUE(bytes.startsWith("ply\nformat binary_little_endian 1.0\n"));
    const QByteArray vertices = QByteArray::fromHex("0000000000000000000000000000e03f0000000000000080"
                                                    "000000000000f03f000000000000f83f000000000000f0bf");
    EXPECT_EQ(bytes.mid(end).toHex(), (vertices + QByteArray::fromHex("0000000001000000")).toHex());
}

TEST(PlyWriter, TextKeepsEveryDouble)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    PlyWriter writer(buffer, PlyWriter::Format::Ascii, {{1, 0, 0}});
    const glm::dvec3 point(2'700'000.1, std::nextafter(1.2e6, 2e6), -1.0 / 3.0);
    writer.addVertex(point);
    writer.finish(ksp::StagedProgress::dummy());
    const QList<QByteArray> lines = buffer.data().trimmed().split('\n');
    const QList<QByteArray> numbers = lines.last().split(' ');
    ASSERT_EQ(numbers.size(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(numbers[i].toDouble(), point[i]);
}

TEST(PlyWriter, MoreVerticesThanNumbersAreRefused)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_EQ(refusal([&] {
                  PlyWriter(buffer, PlyWriter::Format::Binary, {{0, 0, 715'827'882}, {2, 0, 0}});
              }),
              "2147483648 vertices are more than the 2147483647 that PLY files number");
    EXPECT_EQ(buffer.size(), 0);
    EXPECT_EQ(refusal([&] {
                  PlyWriter(buffer, PlyWriter::Format::Binary, {{0, 0, 715'827'882}, {1, 0, 0}});
              }),
              "");
}

TEST(PlyWriter, FullDeviceIsTold)
{
    for (const std::uint64_t triangles : {1u, 20'000u}) {
        SmallDevice device(600);
        EXPECT_EQ(refusal([&] {
                      PlyWriter writer(device, PlyWriter::Format::Binary, {{0, 0, triangles}});
                      for (std::uint64_t i = 0; i < 3 * triangles; ++i)
                          writer.addVertex(glm::dvec3(0.0));
                      writer.finish(ksp::StagedProgress::dummy());
                      EXPECT_EQ(triangles, 1u);
                  }),
                  triangles == 1 ? "" : "No space left on device");
    }
}

TEST(PlyWriter, CancellationEndsTheNaming)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    PlyWriter writer(buffer, PlyWriter::Format::Binary, {{0, 0, 50'000}});
    for (int i = 0; i < 150'000; ++i)
        writer.addVertex(glm::dvec3(0.0));
    ksp::StagedProgress progress = ksp::StagedProgress::dummy();
    progress.cancel();
    EXPECT_THROW(writer.finish(progress), ksp::Canceled);
}
