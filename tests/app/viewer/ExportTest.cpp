#include "ViewerProcess.h"

#include "../../support/GlObjects.h"
#include "../../support/SceneTest.h"

#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/SceneExporter.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/ViewpointElement.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <framework/ksp/Canceled.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/FeatureElement.h>

#include <QtCore/QBuffer>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QThread>
#include <QtCore/QtEndian>

#include <algorithm>
#include <csignal>

// The geometry that is drawn, as a file.

namespace {

/// A PLY file as the tests know it: plain text or little endian, elements in this order.
struct PlyFile
{
    std::vector<glm::dvec3> vertices;
    std::vector<std::array<int, 3>> faces;
    std::vector<std::array<int, 2>> edges;
    std::vector<int> points;

    explicit PlyFile(const QByteArray& bytes)
        : m_isText(bytes.startsWith("ply\nformat ascii 1.0\n"))
    {
        const int end = bytes.indexOf("end_header\n") + 11;
        m_rest = bytes.mid(end);
        for (const QByteArray& line : bytes.left(end).split('\n')) {
            const int count = line.mid(line.lastIndexOf(' ') + 1).toInt();
            if (line.startsWith("element vertex")) vertices.resize(static_cast<std::size_t>(count));
            if (line.startsWith("element face")) faces.resize(static_cast<std::size_t>(count));
            if (line.startsWith("element edge")) edges.resize(static_cast<std::size_t>(count));
            if (line.startsWith("element point")) points.resize(static_cast<std::size_t>(count));
        }
        for (glm::dvec3& vertex : vertices)
            for (int i = 0; i < 3; ++i)
                vertex[i] = next<double>();
        for (auto& face : faces) {
            EXPECT_EQ(m_isText ? next<int>() : int(next<quint8>()), 3);
            for (int& corner : face)
                corner = next<int>();
        }
        for (auto& edge : edges)
            for (int& corner : edge)
                corner = next<int>();
        for (int& point : points)
            point = next<int>();
        EXPECT_EQ(m_at, m_rest.size()) << "there is more in the file than its head says";
    }

private:
    template <typename Number>
    Number next()
    {
        if (m_isText) {
            int end = m_at;
            while (end < m_rest.size() && m_rest[end] != ' ' && m_rest[end] != '\n')
                ++end;
            const QByteArray word = m_rest.mid(m_at, end - m_at);
            m_at = end + 1;
            bool isNumber = false;
            const double number = word.toDouble(&isNumber);
            EXPECT_TRUE(isNumber) << word.constData();
            return static_cast<Number>(number);
        }
        const auto number = qFromLittleEndian<Number>(m_rest.constData() + m_at);
        m_at += int(sizeof(Number));
        return number;
    }

    bool m_isText;
    QByteArray m_rest;
    int m_at = 0;
};

QByteArray number(double value)
{
    return QByteArray::number(value, 'f', 6);
}

/// A field of n by n squares, two triangles each, metres; the heights go up and down by 5.
struct Field
{
    int n;
    glm::dvec3 place;

    glm::dvec3 vertex(int i, int j) const
    {
        return place + glm::dvec3(i * 0.37, j * 0.41, 5.0 * std::sin(i / 3.0) * std::cos(j / 4.0));
    }
    QByteArray obj() const
    {
        QByteArray text;
        for (int j = 0; j <= n; ++j)
            for (int i = 0; i <= n; ++i) {
                const glm::dvec3 p = vertex(i, j);
                text += "v " + number(p.x) + ' ' + number(p.y) + ' ' + number(p.z) + '\n';
            }
        for (const auto& triangle : triangles())
            text += "f " + QByteArray::number(triangle[0] + 1) + ' ' + QByteArray::number(triangle[1] + 1) +
                    ' ' + QByteArray::number(triangle[2] + 1) + '\n';
        return text;
    }
    std::vector<std::array<int, 3>> triangles() const
    {
        std::vector<std::array<int, 3>> all;
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i) {
                const int a = j * (n + 1) + i;
                all.push_back({a, a + 1, a + n + 2});
                all.push_back({a, a + n + 2, a + n + 1});
            }
        return all;
    }
    glm::dvec3 vertex(int number) const { return vertex(number % (n + 1), number / (n + 1)); }
};

const QByteArray mixture = R"({"type":"FeatureCollection","features":[
    {"type":"Feature","properties":{"stroke-width":7},
     "geometry":{"type":"LineString","coordinates":[[2700000,1200000,400],[2700030,1200001,410],[2700031,1200002,420]]}},
    {"type":"Feature","properties":{"stroke-dasharray":"4 4"},"geometry":{"type":"GeometryCollection","geometries":[
        {"type":"LineString","coordinates":[[2700001,1200005,401],[2700002,1200006,402]]},
        {"type":"Point","coordinates":[2700003,1200007,403]}]}},
    {"type":"Feature","properties":{},
     "geometry":{"type":"Polygon","coordinates":[[[2700000,1200000,1],[2700010,1200000,2],[2700010,1200010,3],[2700000,1200000,1]]]}},
    {"type":"Feature","properties":{},
     "geometry":{"type":"MultiPoint","coordinates":[[2700020,1200020,400],[2700021,1200021,401]]}}]})";

} // namespace

class Export : public ViewerTest
{
protected:
    QByteArray exported(const QStringList& arguments)
    {
        const ViewerRun run =
            runViewer(QStringList{"export"} + arguments + QStringList{"-o", path("out.ply")});
        EXPECT_EQ(run.status, 0) << run.error.constData();
        EXPECT_EQ(run.error, "");
        EXPECT_EQ(run.out, "");
        return read("out.ply");
    }
    /// The one line with which the export is refused; nothing may lie there afterwards.
    QString refusal(const QStringList& arguments, int status = 1)
    {
        const ViewerRun run = runViewer(QStringList{"export"} + arguments);
        EXPECT_EQ(run.status, status);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.errorLines().size(), 1) << run.error.constData();
        return run.errorLines().value(0);
    }
    /// Whether the process has begun to fill a file of the folder, which has no name before it is whole.
    bool isWriting(qint64 process) const
    {
        const QDir open(QStringLiteral("/proc/%1/fd").arg(process));
        for (const QFileInfo& file : open.entryInfoList(QDir::Files | QDir::System))
            if (file.symLinkTarget().contains(path("#")) && QFileInfo(file.filePath()).size() > 0)
                return true;
        return false;
    }
    QString counts(const QString& file)
    {
        const ViewerRun run = runViewer({"info", file});
        EXPECT_EQ(run.status, 0) << run.error.constData();
        return QString::fromUtf8(run.out).section('\n', -2, -2).section(": ", 1).section(';', 0, 0);
    }
};

// The coordinates are kept and drawn in single precision about an origin, twice: within the mesh, and in the
// scene, whose larger extent is its unit of a thousandth.
TEST_F(Export, CoordinatesAreWithinTheSpacingOfTheSceneFarFromTheOrigin)
{
    const Field field{60, faraway};
    const PlyFile ply(exported({write("field.obj", field.obj())}));
    const auto triangles = field.triangles();
    ASSERT_EQ(ply.faces.size(), triangles.size());
    ASSERT_EQ(ply.vertices.size(), 3 * triangles.size());
    EXPECT_TRUE(ply.edges.empty());
    EXPECT_TRUE(ply.points.empty());
    const double extent = 60 * 0.41;
    // half a spacing of floats below 512 scene units, and of floats below 32 m, for what is rounded: the
    // coordinates of the mesh, their scale, the shift, their sum
    const double tolerance = 2.0 * 512.0 / (1 << 24) * extent / 1000.0 + 2.0 * 32.0 / (1 << 24);
    double largest = 0.0;
    for (std::size_t i = 0; i < triangles.size(); ++i)
        for (std::size_t k = 0; k < 3; ++k) {
            const auto corner = static_cast<std::size_t>(ply.faces[i][k]);
            ASSERT_EQ(corner, 3 * i + k);
            const glm::dvec3 off = ply.vertices[corner] - field.vertex(triangles[i][k]);
            largest = std::max({largest, std::abs(off.x), std::abs(off.y), std::abs(off.z)});
        }
    std::printf("export: %zu vertices at 2.7e6 m, largest difference %.2e m, tolerance %.2e m\n",
                ply.vertices.size(), largest, tolerance);
    EXPECT_LT(largest, tolerance);
}

TEST_F(Export, LinesAndPointsAreAsTheFeaturesHaveThem)
{
    const PlyFile ply(exported({write("mixture.geojson", mixture)}));
    EXPECT_EQ(ply.faces.size(), 1u); // the ring is filled
    EXPECT_EQ(ply.edges.size(), 2u + 1u + 3u);
    EXPECT_EQ(ply.points.size(), 3u);
    ASSERT_EQ(ply.vertices.size(), 2 * 6u + 3u + 3u);
    const auto vertex = [&](int index) { return ply.vertices.at(static_cast<std::size_t>(index)); };
    const auto near = [](const glm::dvec3& a, const glm::dvec3& b) { return glm::length(a - b) < 1e-4; };
    EXPECT_PRED2(near, vertex(ply.edges[0][0]), glm::dvec3(2700000, 1200000, 400));
    EXPECT_PRED2(near, vertex(ply.edges[1][1]), glm::dvec3(2700031, 1200002, 420));
    EXPECT_PRED2(near, vertex(ply.edges[2][0]), glm::dvec3(2700001, 1200005, 401));
    EXPECT_PRED2(near, vertex(ply.edges[5][1]), glm::dvec3(2700000, 1200000, 1)); // the ring closes
    EXPECT_PRED2(near, vertex(ply.points[0]), glm::dvec3(2700003, 1200007, 403));
    EXPECT_PRED2(near, vertex(ply.points[2]), glm::dvec3(2700021, 1200021, 401));
}

TEST_F(Export, OurReaderReadsItBack)
{
    const QStringList files = {write("mixture.geojson", mixture),
                               write("field.obj", Field{5, faraway}.obj())};
    for (const QStringList& format : {QStringList(), QStringList{"--ascii"}}) {
        exported(files + format);
        EXPECT_EQ(counts(path("out.ply")), "3 points, 6 lines, 51 triangles");
    }
}

TEST_F(Export, PointSetOfNothingElseIsReadBackToo)
{
    const QString points =
        write("points.xyz.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty double x\n"
                                "property double y\nproperty double z\nend_header\n"
                                "2700000 1200000 1\n2700001 1200000 2\n2700000 1200001 3\n");
    const PlyFile ply(exported({points}));
    EXPECT_TRUE(ply.points.empty()); // that all are points goes without saying
    EXPECT_EQ(ply.vertices.size(), 3u);
    EXPECT_EQ(counts(path("out.ply")), "3 points, 0 lines, 0 triangles");
}

TEST_F(Export, ExportOfAnExportIsTheSame)
{
    exported({write("mixture.geojson", mixture), write("field.obj", Field{5, faraway}.obj())});
    const PlyFile once(read("out.ply"));
    QFile::rename(path("out.ply"), path("once.ply"));
    const PlyFile twice(exported({path("once.ply")}));
    EXPECT_EQ(twice.faces.size(), once.faces.size());
    EXPECT_EQ(twice.edges.size(), once.edges.size());
    ASSERT_EQ(twice.points.size(), once.points.size());
    const auto corners = [](const PlyFile& ply) {
        std::vector<glm::dvec3> all;
        for (const auto& face : ply.faces)
            for (const int corner : face)
                all.push_back(ply.vertices.at(static_cast<std::size_t>(corner)));
        return all;
    };
    const auto first = corners(once), second = corners(twice);
    // of floats below 512 thousandths of the extent, from the polygon near 0 m to the line at 420 m
    const double spacing = 512.0 / (1 << 24) * 420.0 / 1000.0 * 2.0;
    for (std::size_t i = 0; i < first.size(); ++i)
        EXPECT_LT(glm::length(first[i] - second[i]), spacing);
}

TEST_F(Export, TextAndBinaryHoldTheSameNumbers)
{
    const QString file = write("field.obj", Field{5, faraway}.obj());
    const PlyFile binary(exported({file}));
    const PlyFile text(exported({file, "--ascii"}));
    EXPECT_TRUE(read("out.ply").startsWith("ply\nformat ascii 1.0\n"));
    EXPECT_EQ(text.vertices, binary.vertices);
    EXPECT_EQ(text.faces, binary.faces);
}

TEST_F(Export, MoreThanIsMappedAtOnce)
{
    const Field field{110, glm::dvec3(0.0)}; // 72,600 vertices, mapped by 32,768
    const PlyFile ply(exported({write("field.obj", field.obj())}));
    const auto triangles = field.triangles();
    ASSERT_EQ(ply.faces.size(), triangles.size());
    for (std::size_t i = 0; i < triangles.size(); i += 7)
        EXPECT_LT(glm::length(ply.vertices[3 * i + 1] - field.vertex(triangles[i][1])), 1e-4) << i;
}

// --- what is refused

TEST_F(Export, NothingToDrawIsNoFile)
{
    {
        Host host(Host::Settings::InMemory);
        const std::unique_ptr<CProject> project = host.createProject();
        project->getModel()
            ->getCreateItemManager(element_types::Viewpoint)
            ->addItem(std::make_unique<ViewpointElement>());
        FileOpener(host, *project, nullptr).save(path("empty.v3d"), ksp::StagedProgress::dummy());
    }
    const QString empty = path("empty.v3d");
    EXPECT_EQ(refusal({empty, "-o", path("out.ply")}),
              "viewer3d: " + path("out.ply") + ": not written: the files hold nothing that is drawn");
    EXPECT_FALSE(QFile::exists(path("out.ply")));
}

TEST_F(Export, WrongUsage)
{
    const QString file = write("field.obj", Field{1, faraway}.obj());
    EXPECT_EQ(refusal({}, 2), "viewer3d: export: no files; usage: viewer3d export FILES... -o OUT.ply");
    EXPECT_EQ(refusal({file}, 2), "viewer3d: export: no output; add -o OUT.ply");
    EXPECT_EQ(refusal({file, "-o", "out.obj"}, 2),
              "viewer3d: -o out.obj: export writes PLY; the name must end in .ply");
}

TEST_F(Export, AnInputIsNotReplaced)
{
    exported({write("field.obj", Field{1, faraway}.obj())});
    const QByteArray before = read("out.ply");
    EXPECT_EQ(refusal({path("out.ply"), "-o", path("out.ply")}),
              "viewer3d: " + path("out.ply") + ": cannot be written: it is one of the files that are read");
    EXPECT_EQ(read("out.ply"), before);
}

TEST_F(Export, FolderThatIsNotThere)
{
    const QString file = write("field.obj", Field{1, faraway}.obj());
    EXPECT_EQ(refusal({file, "-o", path("none/out.ply")}), "viewer3d: " + path("none/out.ply") +
                                                               ": cannot be written: there is no folder " +
                                                               path("none"));
}

// No process may write more than 8 KiB to a file, which fails as a full disk does.
TEST_F(Export, FullDiskLeavesTheOldFile)
{
    write("out.ply", "old");
    const QString file = write("field.obj", Field{30, faraway}.obj());
    const ViewerRun run =
        runProgram("bash", {"-c", QString("trap '' XFSZ; ulimit -f 8; exec '%1' export '%2' -o '%3'")
                                      .arg(viewerProgram(), file, path("out.ply"))});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(),
              QStringList("viewer3d: " + path("out.ply") + ": cannot be written: File too large"));
    EXPECT_EQ(read("out.ply"), "old");
    EXPECT_EQ(QDir(path(".")).entryList(QDir::Files), QStringList({"field.obj", "out.ply"}));
}

TEST_F(Export, ControlCLeavesNothing)
{
    const QString file = write("field.obj", Field{500, faraway}.obj()); // 500,000 triangles
    QProcess process;
    process.start(viewerProgram(), {"export", file, "-o", path("out.ply"), "--ascii"});
    ASSERT_TRUE(process.waitForStarted());
    while (process.state() == QProcess::Running && !isWriting(process.processId()))
        process.waitForFinished(2);
    ASSERT_EQ(process.state(), QProcess::Running);
    QElapsedTimer timer;
    timer.start();
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_EQ(process.readAllStandardError(), "viewer3d: cancelled\n");
    EXPECT_EQ(QDir(path(".")).entryList(QDir::Files), QStringList("field.obj"));
}

// --- in the scene

/// Features in a scene, without any program.
class SceneExport : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        element_types::registerItems(*scene);
    }
    Graphics3dItem& addPoint(double x)
    {
        auto element = std::make_unique<FeatureElement>();
        FeatureElement::Part part;
        part.kind = FeatureElement::Part::Point;
        part.points = {glm::dvec3(x, 0.0, 0.0)};
        element->setParts({part});
        CModelElementManager* manager = project->getModel()->getCreateItemManager(element->getType());
        return *scene->getItems().at(manager->addItem(std::move(element))->getId());
    }
    PlyFile exported()
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        scene->flushBounds();
        SceneExporter(*scene).write(buffer, PlyWriter::Format::Binary, ksp::StagedProgress::dummy());
        return PlyFile(buffer.data());
    }
};

TEST_F(SceneExport, HiddenItemsAreLeftOut)
{
    addPoint(1.0);
    addPoint(2.0).setVisible(false);
    addPoint(3.0);
    const PlyFile ply = exported();
    ASSERT_EQ(ply.vertices.size(), 2u);
    EXPECT_NEAR(ply.vertices[0].x, 1.0, 1e-6);
    EXPECT_NEAR(ply.vertices[1].x, 3.0, 1e-6);
}

TEST_F(SceneExport, BuffersAreDeleted)
{
    addPoint(1.0);
    exported();
    const GlObjects before = GlObjects::count(*gl);
    for (int i = 0; i < 20; ++i)
        exported();
    EXPECT_EQ(GlObjects::count(*gl), before);
}

TEST_F(SceneExport, CancellationEndsIt)
{
    addPoint(1.0);
    scene->flushBounds();
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    ksp::StagedProgress progress = ksp::StagedProgress::dummy();
    progress.cancel();
    EXPECT_THROW(SceneExporter(*scene).write(buffer, PlyWriter::Format::Binary, progress), ksp::Canceled);
}
