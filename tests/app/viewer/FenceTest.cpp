#include "ViewerProcess.h"

#include "../../support/DepthMapFiles.h"
#include "../../support/ImageCheck.h"

#include <viewer/cli/CommandLine.h>
#include <viewer/cli/Commands.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

#include <cmath>

// What a fence leaves out is not there for any command.

namespace {

const glm::dvec3 base(2'700'000.0, 1'200'000.0, 400.0);

struct Square
{
    const char* name;
    double x;     // of its middle
    QColor color; // all of it
};

const std::vector<Square> squares = {
    {"red", 0.0, Qt::red}, {"green", 4.0, Qt::green}, {"blue", 8.0, Qt::blue}, {"yellow", 12.0, Qt::yellow}};

QString point(double x, double y, double z)
{
    return QStringLiteral("[%1, %2, %3]")
        .arg(base.x + x, 0, 'f', 3)
        .arg(base.y + y, 0, 'f', 3)
        .arg(base.z + z, 0, 'f', 3);
}

/// Fences that hold the red and the green square, cut the blue one and have nothing of the yellow one. The
/// sphere reaches to x = 7.5, the others to x = 8.
QByteArray fenceText(const QString& kind)
{
    if (kind == "sphere")
        return QString(R"({"type": "sphere", "center": %1, "radius": 5.5})").arg(point(2, 0, 0)).toUtf8();
    if (kind == "prism")
        return QString(
                   R"({"type": "prism", "points": [%1, %2, %3, %4], "direction": [0, 1, 0], "height": 2})")
            .arg(point(-3, -1, -2), point(8, -1, -2), point(8, -1, 2), point(-3, -1, 2))
            .toUtf8();
    return QString(R"({"type": "frustum", "eye": %1, "target": %2, "fov": 90, "near": 10, "far": 30,
                       "polygon": [[-0.35, -0.2], [0.2, -0.2], [0.2, 0.2], [-0.35, 0.2]]})")
        .arg(point(4, -20, 0), point(4, 0, 0))
        .toUtf8();
}

} // namespace

/// Squares of side 2 across the view, of which a unit is 10 pixels and x = 6 the middle of 320 x 200 pixels.
class FencedFiles : public ViewerTest, public ::testing::WithParamInterface<const char*>
{
protected:
    void SetUp() override
    {
        ViewerTest::SetUp();
        QByteArray text;
        for (const Square& square : squares) {
            text += QByteArray("o ") + square.name + '\n';
            for (const auto& corner : {std::pair(-1, -1), {1, -1}, {1, 1}, {-1, 1}})
                text += QStringLiteral("v %1 %2 %3 %4 %5 %6\n")
                            .arg(base.x + square.x + corner.first, 0, 'f', 1)
                            .arg(base.y, 0, 'f', 1)
                            .arg(base.z + corner.second, 0, 'f', 1)
                            .arg(square.color.redF())
                            .arg(square.color.greenF())
                            .arg(square.color.blueF())
                            .toLatin1();
            text += "f -4 -3 -2 -1\n";
        }
        m_file = write("squares.obj", text);
        if (GetParam()) m_fence = QStringList{"--fence", write("fence.json", fenceText(GetParam()))};
    }
    template <typename Options>
    Options parse(const QStringList& words, bool withCamera = true) const
    {
        QStringList arguments = words + QStringList(m_file) + m_fence;
        const auto place = [](double y) {
            return QStringLiteral("%1,%2,%3")
                .arg(base.x + 6.0, 0, 'f', 1)
                .arg(base.y + y, 0, 'f', 1)
                .arg(base.z);
        };
        if (withCamera)
            arguments += {"--eye", place(-20.0),         "--target", place(0.0),
                          "--fov", "53.130102354155978", "--size",   "320x200"};
        return std::get<Options>(parseCommandLine(arguments));
    }
    static int column(double x) { return static_cast<int>(std::floor((x - 6.0) * 10.0 + 160.0)); }

    QStringList selected(const QStringList& words) const
    {
        const QByteArray text = commands::select(
            parse<SelectOptions>(QStringList{"select", "--rect", "0,0,320,200", "--json"} + words));
        QStringList names;
        for (const QJsonValue& value : QJsonDocument::fromJson(text).object()["elements"].toArray())
            names.append(value.toObject()["name"].toString());
        return names;
    }
    QImage rendered(const QStringList& words = {}) const
    {
        commands::render(parse<RenderOptions>(
            QStringList{"render", "-o", path("out.png"), "--background", "black"} + words));
        return QImage(path("out.png"));
    }
    /// Vertices and faces.
    std::pair<int, int> exported() const
    {
        commands::exportScene(parse<ExportOptions>({"export", "-o", path("out.ply"), "--ascii"}, false));
        const QString text = read("out.ply");
        const auto count = [&text](const char* element) {
            const QRegularExpression line(QString("element %1 (\\d+)").arg(element));
            return line.match(text).captured(1).toInt();
        };
        return {count("vertex"), count("face")};
    }

private:
    QString m_file;
    QStringList m_fence;
};

TEST_P(FencedFiles, AreTheSameForAllCommands)
{
    const bool isFenced = GetParam();
    const QImage picture = rendered();
    saveTestImage(isFenced ? GetParam() : "no_fence", picture);
    const QStringList seen =
        isFenced ? QStringList{"red", "green", "blue"} : QStringList{"red", "green", "blue", "yellow"};
    for (const Square& square : squares)
        EXPECT_EQ(countPixels(picture, square.color, 40) > 0, seen.contains(square.name)) << square.name;
    EXPECT_EQ(selected({}), seen);
    EXPECT_EQ(selected({"--mode", "visible"}), seen);

    commands::depth(parse<DepthOptions>({"depth", "-o", path("out.pfm")}));
    const DepthMapFile depths = DepthMapFile(read("out.pfm"));
    int covered = 0;
    for (int x = 0; x < 320; ++x) {
        const bool isDrawn = picture.pixel(x, 100) != qRgb(0, 0, 0);
        const bool isEdge = x > 0 && x < 319 && // smoothed in the picture, sampled in the map
                            (picture.pixel(x - 1, 100) != picture.pixel(x, 100) ||
                             picture.pixel(x + 1, 100) != picture.pixel(x, 100));
        if (!isEdge) {
            EXPECT_EQ(!std::isnan(depths.at(x, 100)), isDrawn) << x;
        }
        covered += isDrawn;
    }
    EXPECT_NEAR(covered, isFenced ? 2 * 20 + (QString(GetParam()) == "sphere" ? 5 : 10) : 4 * 20, 2);

    // of the blue square both triangles have a part inside
    const int faces = 2 * static_cast<int>(seen.size());
    EXPECT_EQ(exported(), std::make_pair(3 * faces, faces));
}

TEST_P(FencedFiles, ShowWhatLiesOutsideInGreyOnDemand)
{
    if (!GetParam()) return; // nothing lies outside
    const QImage picture = rendered({"--fence-preview"});
    saveTestImage((std::string(GetParam()) + "_preview").c_str(), picture);
    const QColor yellow = picture.pixelColor(column(12.5), 97);
    EXPECT_GT(yellow.value(), 20); // it is there
    EXPECT_LT(yellow.saturation(), 20);
    EXPECT_LT(picture.pixelColor(column(8.3), 97).saturation(), 20);
    EXPECT_GT(picture.pixelColor(column(0.0), 97).saturation(), 200);
    // the outline, and the points to take hold of
    EXPECT_GT(
        countPixels(picture,
                    [](QRgb p) { return qRed(p) > 200 && qAbs(qGreen(p) - 130) < 30 && qBlue(p) < 60; }),
        100);
}

INSTANTIATE_TEST_SUITE_P(Fences, FencedFiles,
                         ::testing::Values(static_cast<const char*>(nullptr), "sphere", "prism", "frustum"),
                         [](const auto& test) { return std::string(test.param ? test.param : "none"); });

// --- what can go wrong

TEST_F(ViewerTest, WrongFenceIsToldInOneLine)
{
    const QString file = write("point.obj", "v 0 0 0\nv 1 0 0\nv 0 0 1\nf 1 2 3\n");
    const QString fence = write("fence.json", R"({"type": "sphere", "center": [0, 0, 0], "radius": -1})");
    const ViewerRun run = runViewer({"render", file, "--fence", fence, "-o", path("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(),
              QStringList("viewer3d: " + fence + ": \"radius\": a number above 0, at most 1e12, is wanted"));
    EXPECT_FALSE(QFile::exists(path("out.png")));
}

TEST_F(ViewerTest, NothingIsExportedWhereTheFenceHasNothing)
{
    const QString file = write("far.obj", "v 0 0 0\nv 1 0 0\nv 0 0 1\nf 1 2 3\n");
    const QString fence = write("fence.json", R"({"type": "sphere", "center": [50, 0, 0], "radius": 1})");
    try {
        commands::exportScene(std::get<ExportOptions>(
            parseCommandLine({"export", file, "--fence", fence, "-o", path("out.ply")})));
        FAIL() << "exported";
    } catch (const ksp::CommonError& error) {
        EXPECT_EQ(error.text(),
                  path("out.ply") + ": not written: the files hold nothing that is drawn inside the fence");
    }
}

TEST_F(ViewerTest, NothingIsWrittenOverAFence)
{
    const QString file = write("point.obj", "v 0 0 0\nv 1 0 0\nv 0 0 1\nf 1 2 3\n");
    const QString fence = write("fence.json", R"({"type": "sphere", "center": [0, 0, 0], "radius": 5})");
    ASSERT_TRUE(QFile::link(fence, path("link.ply")));
    EXPECT_THROW(commands::exportScene(std::get<ExportOptions>(
                     parseCommandLine({"export", file, "--fence", fence, "-o", path("link.ply")}))),
                 ksp::CommonError);
}
