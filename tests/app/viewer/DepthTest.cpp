#include "ViewerProcess.h"

#include "../../support/DepthMapFiles.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QThread>
#include <QtCore/QtEndian>
#include <QtGui/QImage>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>

#include <tiffio.h>

// Depth maps, compared with geometry that is known beforehand.

namespace {

const QString centralView = "central", parallelView = "parallel";

QByteArray digits(double value)
{
    return QByteArray::number(value, 'f', 9);
}

QString coordinates(const glm::dvec3& p)
{
    return QString::fromLatin1(digits(p.x) + ',' + digits(p.y) + ',' + digits(p.z));
}

QByteArray vertex(const glm::dvec3& p)
{
    return "v " + digits(p.x) + ' ' + digits(p.y) + ' ' + digits(p.z) + '\n';
}

/// A square as OBJ: its middle, and its half sides.
QByteArray square(const glm::dvec3& middle, const glm::dvec3& right, const glm::dvec3& up)
{
    return vertex(middle - right - up) + vertex(middle + right - up) + vertex(middle + right + up) +
           vertex(middle - right + up) + "f 1 2 3\nf 1 3 4\n";
}

/// A box as OBJ, whose faces are seen from both sides.
QByteArray box(const glm::dvec3& middle, const glm::dvec3& half)
{
    QByteArray obj;
    for (int i = 0; i < 8; ++i)
        obj += vertex(middle + half * glm::dvec3(i & 1 ? 1 : -1, i & 2 ? 1 : -1, i & 4 ? 1 : -1));
    return obj + "f 1 2 4 3\nf 5 6 8 7\nf 1 2 6 5\nf 3 4 8 7\nf 1 3 7 5\nf 2 4 8 6\n";
}

/// A sphere as little endian PLY, of rings of triangles from pole to pole; its corners lie on the sphere.
QByteArray sphere(const glm::dvec3& middle, double radius, int rings)
{
    const int around = 2 * rings;
    QByteArray corners, faces;
    const auto append = [](QByteArray& bytes, auto number) {
        char raw[sizeof number];
        qToLittleEndian(number, raw);
        bytes.append(raw, sizeof raw);
    };
    for (int ring = 0; ring <= rings; ++ring)
        for (int i = 0; i < around; ++i) {
            const double polar = M_PI * ring / rings, angle = 2.0 * M_PI * i / around;
            for (const double x :
                 {middle.x + radius * std::sin(polar) * std::cos(angle),
                  middle.y + radius * std::sin(polar) * std::sin(angle), middle.z + radius * std::cos(polar)})
                append(corners, x);
        }
    int count = 0;
    for (int ring = 0; ring < rings; ++ring)
        for (int i = 0; i < around; ++i) {
            const qint32 a = ring * around + i, b = ring * around + (i + 1) % around;
            for (const auto& face : {std::array{a, b, b + around}, std::array{a, b + around, a + around}}) {
                faces.append('\3');
                for (const qint32 corner : face)
                    append(faces, corner);
                ++count;
            }
        }
    return "ply\nformat binary_little_endian 1.0\nelement vertex " +
           QByteArray::number((rings + 1) * around) +
           "\nproperty double x\nproperty double y\nproperty double z\nelement face " +
           QByteArray::number(count) + "\nproperty list uchar int vertex_indices\nend_header\n" + corners +
           faces;
}

/// The floats of a TIFF file, top row first.
std::vector<float> readTiff(const QString& path)
{
    TIFF* tiff = TIFFOpen(qPrintable(path), "r");
    if (!tiff) return {};
    std::uint32_t width = 0, height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    std::vector<float> values(static_cast<std::size_t>(width) * height);
    for (std::uint32_t row = 0; row < height; ++row)
        EXPECT_EQ(TIFFReadScanline(tiff, values.data() + static_cast<std::size_t>(row) * width, row, 0), 1);
    TIFFClose(tiff);
    return values;
}

/// Largest and mean of the numbers that are added.
struct Errors
{
    double largest = 0.0, sum = 0.0;
    int count = 0;

    void add(double error)
    {
        largest = std::max(largest, std::abs(error));
        sum += std::abs(error);
        ++count;
    }
    double mean() const { return sum / std::max(count, 1); }
    void report(const std::string& name) const
    {
        std::printf("%s: largest error %.3g m, mean %.3g m, of %d pixels\n", name.c_str(), largest, mean(),
                    count);
    }
};

} // namespace

class Depth : public ViewerTest
{
protected:
    struct Result
    {
        DepthMapFile map;
        DepthCameraFile camera;
    };
    /// Makes a map and reads it with its camera.
    Result makeMap(const QString& file, const QStringList& options)
    {
        const ViewerRun run = runViewer(
            QStringList{"depth", file, "-o", path("map.pfm"), "--json", path("map.json")} + options);
        EXPECT_EQ(run.status, 0) << run.error.constData();
        EXPECT_EQ(run.error, "");
        EXPECT_EQ(run.out, "");
        if (run.status != 0) return {};
        return {DepthMapFile(read("map.pfm")), DepthCameraFile(read("map.json"))};
    }
    static QStringList looking(const glm::dvec3& eye, const glm::dvec3& target, const QString& projection)
    {
        return {"--eye", coordinates(eye), "--target", coordinates(target), "--projection", projection};
    }
    /// Wrong use or failed work: one line, and nothing written.
    void expectFailure(const QStringList& arguments, int status, const QString& line)
    {
        const QStringList before = QDir(path(".")).entryList(QDir::Files);
        const ViewerRun run = runViewer(QStringList("depth") + arguments);
        EXPECT_EQ(run.status, status);
        EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + line));
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(QDir(path(".")).entryList(QDir::Files), before);
    }
    QString plane() const { return write("plane.obj", square(glm::dvec3(0.0), {5, 0, 0}, {0, 5, 0})); }
};

// --- numbers

struct PlaneCase
{
    const char* name;
    double extent; // metres
    glm::dvec3 origin;
    glm::dvec3 direction; // that the camera looks to, and the plane faces
    QString projection;
};

class DepthOfAPlane : public Depth, public ::testing::WithParamInterface<PlaneCase>
{
};

TEST_P(DepthOfAPlane, AtTenMetresIsTen)
{
    const PlaneCase& plane = GetParam();
    const glm::dvec3 forward = glm::normalize(plane.direction);
    const glm::dvec3 right = glm::normalize(glm::cross(forward, glm::dvec3(0.3, 0.5, 0.2)));
    const glm::dvec3 up = glm::cross(right, forward);
    const double half = plane.extent / 2.0;
    const QString file = write("plane.obj", square(plane.origin, half * right, half * up));
    const Result result =
        makeMap(file, looking(plane.origin - 10.0 * forward, plane.origin, plane.projection));
    Errors errors;
    for (const float distance : result.map.distances)
        if (!std::isnan(distance)) errors.add(static_cast<double>(distance) - 10.0);
    errors.report(plane.name);
    EXPECT_LT(errors.largest, 1e-4);
    // 720 pixels are 20 tan(22.5 degrees) metres at the plane
    const double pixels = std::min(plane.extent, 1e3) / (20.0 * std::tan(M_PI / 8.0)) * 720.0;
    const double expected = plane.extent > 100.0 ? 1280.0 * 720.0 : pixels * pixels;
    EXPECT_NEAR(errors.count, expected, 0.03 * expected);
}

INSTANTIATE_TEST_SUITE_P(
    Depth, DepthOfAPlane,
    ::testing::Values(PlaneCase{"OneMetre", 1, glm::dvec3(0.0), {0, 0, -1}, centralView},
                      PlaneCase{"OneMetreParallel", 1, glm::dvec3(0.0), {0, 0, -1}, parallelView},
                      PlaneCase{"OneMetreOblique", 1, glm::dvec3(0.0), {1, 2, -2}, centralView},
                      PlaneCase{"OneMetreFarAway", 1, faraway, {0, 0, -1}, centralView},
                      PlaneCase{"OneMetreFarAwayOblique", 1, faraway, {1, 2, -2}, centralView},
                      PlaneCase{"OneMetreFarAwayObliqueParallel", 1, faraway, {1, 2, -2}, parallelView},
                      PlaneCase{"OneKilometre", 1000, glm::dvec3(0.0), {0, 0, -1}, centralView},
                      PlaneCase{"OneKilometreParallel", 1000, glm::dvec3(0.0), {0, 0, -1}, parallelView},
                      PlaneCase{"OneKilometreOblique", 1000, glm::dvec3(0.0), {1, 2, -2}, centralView},
                      PlaneCase{"OneKilometreFarAway", 1000, faraway, {0, 0, -1}, centralView},
                      PlaneCase{"OneKilometreFarAwayParallel", 1000, faraway, {0, 0, -1}, parallelView},
                      PlaneCase{"OneKilometreFarAwayOblique", 1000, faraway, {1, 2, -2}, centralView},
                      PlaneCase{
                          "OneKilometreFarAwayObliqueParallel", 1000, faraway, {1, 2, -2}, parallelView}),
    [](const auto& plane) { return std::string(plane.param.name); });

// A mesh lies within its sphere: chords of 500 rings are 5 m * (1 - cos(pi / 500)) = 0.1 mm off it, and the
// two directions add up. Along the line of sight that grows as the sphere turns away from it.
TEST_F(Depth, SphereOfFiveMetresFromTwenty)
{
    const double radius = 5.0, chord = 2.0 * radius * (1.0 - std::cos(M_PI / 500.0));
    const QString file = write("sphere.ply", sphere(faraway, radius, 500));
    for (const QString& projection : {centralView, parallelView}) {
        const glm::dvec3 forward = glm::normalize(glm::dvec3(2, 1, -1));
        const Result result = makeMap(file, looking(faraway - 20.0 * forward, faraway, projection));
        Errors errors;
        int covered = 0;
        for (int row = 0; row < result.map.height; ++row)
            for (int column = 0; column < result.map.width; ++column) {
                const double distance = result.map.at(column, row);
                covered += std::isnan(distance) ? 0 : 1;
                // the ray of the pixel through two of its points, and where it meets the sphere
                const glm::dvec3 first = result.camera.point(column, row, 1.0) - faraway;
                const glm::dvec3 ray = result.camera.point(column, row, 2.0) - faraway - first;
                const double a = glm::dot(ray, ray), b = glm::dot(first, ray);
                const double root = b * b - a * (glm::dot(first, first) - radius * radius);
                if (root <= 0.0) continue;
                const double expected = 1.0 + (-b - std::sqrt(root)) / a;
                const double cosine = std::sqrt(root) / (radius * std::sqrt(a));
                if (cosine < 0.1) continue; // at the rim the mesh may end beside the sphere
                ASSERT_FALSE(std::isnan(distance)) << column << ' ' << row;
                errors.add(distance - expected);
                EXPECT_LT(std::abs(distance - expected), chord / cosine + 1e-4) << column << ' ' << row;
            }
        errors.report("sphere, " + projection.toStdString());
        RecordProperty("largest_" + projection.toStdString(), std::to_string(errors.largest));
        RecordProperty("mean_" + projection.toStdString(), std::to_string(errors.mean()));
        EXPECT_GT(errors.count, 100'000);
        EXPECT_LT(errors.count, covered);
        EXPECT_LT(errors.mean(), 2e-4);
    }
}

// Whoever reads the map and its camera gets the points of the box's surface, and all of those that face the
// camera.
TEST_F(Depth, PixelsBecomePointsOfTheModel)
{
    const glm::dvec3 half(3.0, 2.0, 1.0);
    for (const glm::dvec3& middle : {glm::dvec3(0.0), faraway})
        for (const QString& projection : {centralView, parallelView})
            for (const QStringList& view :
                 {QStringList{"--view", "iso"},
                  {"--eye", coordinates(middle + glm::dvec3(9, -7, 6)), "--target",
                   coordinates(middle + glm::dvec3(0.5, 0.5, 0.0)), "--up", "0.2,0.1,1"}}) {
                const Result result =
                    makeMap(write("box.obj", box(middle, half)),
                            view + QStringList{"--projection", projection, "--size", "400x300"});
                glm::dvec3 low(1e9), high(-1e9);
                Errors errors;
                for (int row = 0; row < result.map.height; ++row)
                    for (int column = 0; column < result.map.width; ++column) {
                        const float distance = result.map.at(column, row);
                        if (std::isnan(distance)) continue;
                        const glm::dvec3 point =
                            result.camera.point(column, row, static_cast<double>(distance)) - middle;
                        const glm::dvec3 outside = glm::abs(point) - half;
                        errors.add(std::max({outside.x, outside.y, outside.z}));
                        low = glm::min(low, point);
                        high = glm::max(high, point);
                    }
                EXPECT_LT(errors.largest, 1e-4);
                EXPECT_GT(errors.count, 15'000);
                // to its farthest corners, but for a pixel, which is some 5 cm
                for (int i = 0; i < 3; ++i) {
                    EXPECT_NEAR(low[i], -half[i], 0.08);
                    EXPECT_NEAR(high[i], half[i], 0.08);
                }
                EXPECT_GT(result.camera.object["far"].toDouble(), result.camera.object["near"].toDouble());
            }
}

// Two poles above a plane, seen by their distances: left is left and up is up.
TEST_F(Depth, RowsAndColumnsLieAsInAPicture)
{
    const QString file = write(
        "points.xyz.ply", "ply\nformat ascii 1.0\nelement vertex 2\nproperty double x\nproperty double y\n"
                          "property double z\nend_header\n-2 0 1\n2 0 -1\n");
    const Result result = makeMap(file, {"--view", "front", "--projection", "parallel", "--size", "90x60"});
    std::vector<std::pair<int, int>> seen;
    for (int row = 0; row < 60; ++row)
        for (int column = 0; column < 90; ++column)
            if (!std::isnan(result.map.at(column, row))) seen.emplace_back(column, row);
    ASSERT_FALSE(seen.empty());
    EXPECT_LT(seen.front().first, 45); // the first in reading order is the upper left one
    EXPECT_LT(seen.front().second, 30);
    EXPECT_GT(seen.back().first, 45);
    EXPECT_GT(seen.back().second, 30);
}

TEST_F(Depth, PointsAndLinesHaveTheirDistances)
{
    const QString file = write("features.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","properties":{"marker-size":8},
         "geometry":{"type":"Point","coordinates":[2700000,1200000,405]}},
        {"type":"Feature","properties":{"stroke-width":4},
         "geometry":{"type":"LineString","coordinates":[[2699990,1200005,402],[2700010,1200005,402]]}}]})");
    const Result result = makeMap(file, looking(faraway + glm::dvec3(0, 0, 30), faraway, centralView) +
                                            QStringList{"--up", "0,1,0"});
    int points = 0, lines = 0;
    for (const float distance : result.map.distances) {
        if (std::isnan(distance)) continue;
        const bool isPoint = std::abs(distance - 25.0f) < 1e-4f;
        points += isPoint ? 1 : 0;
        if (isPoint) continue;
        EXPECT_NEAR(distance, 28.0, 1e-4);
        ++lines;
    }
    EXPECT_NEAR(points, 64, 14);
    // 20 m at 28 m, where 720 pixels are 56 tan(22.5 degrees) metres
    EXPECT_NEAR(lines, 4 * 20.0 / (56.0 * std::tan(M_PI / 8.0)) * 720.0, 200.0);
}

// Areas are drawn a little behind their outlines in pictures, but not in maps.
TEST_F(Depth, TiltedAreasHaveTheirDistances)
{
    const QString file = write("area.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","properties":{},"geometry":{"type":"Polygon","coordinates":
         [[[2699990,1199990,390],[2700010,1199990,410],[2700010,1200010,410],[2699990,1200010,390],
           [2699990,1199990,390]]]}}]})");
    const Result result = makeMap(file, looking(faraway + glm::dvec3(0, 0, 30), faraway, parallelView) +
                                            QStringList{"--up", "0,1,0"});
    double sum = 0.0;
    for (const int x : {639, 640})
        for (const int y : {359, 360})
            sum += static_cast<double>(result.map.at(x, y));
    EXPECT_NEAR(sum / 4.0, 30.0, 1e-4);
    EXPECT_GT(std::abs(result.map.at(639, 359) - result.map.at(640, 359)), 0.005f) << "not tilted";
}

// The eye stands in a room of 8 x 6 x 4 m.
TEST_F(Depth, CameraInsideSeesTheWalls)
{
    for (const glm::dvec3& middle : {glm::dvec3(0.0), faraway}) {
        const Result result = makeMap(write("room.obj", box(middle, {4, 3, 2})),
                                      looking(middle, middle + glm::dvec3(1, 0, 0), centralView));
        int covered = 0;
        for (const float distance : result.map.distances)
            covered += distance > 0.0f && distance < 4.0f + 1e-4f;
        EXPECT_EQ(covered, 1280 * 720);
        EXPECT_NEAR(result.map.at(640, 360), 4.0, 1e-4);
        // the wall ahead is the nearest of what is seen, and the near plane comes close to it
        EXPECT_NEAR(result.camera.object["near"].toDouble(), 0.8 * 4.0, 0.01);
    }
}

// A parallel projection shows what lies behind the eye, too, as render does.
TEST_F(Depth, BehindTheEyeOfAParallelViewDistancesAreNegative)
{
    const QString file = write("floor.obj", square(faraway, {50, 0, 0}, {0, 50, 0}));
    const Result result =
        makeMap(file, looking(faraway - glm::dvec3(0, 0, 3), faraway - glm::dvec3(0, 0, 4), parallelView));
    EXPECT_NEAR(result.map.at(640, 360), -3.0, 1e-4);
}

TEST_F(Depth, NothingInSightIsNaNThroughout)
{
    const ViewerRun run = runViewer({"depth", plane(), "-o", path("map.pfm"), "--preview", path("map.png"),
                                     "--eye", "0,0,10", "--target", "0,0,20", "--size", "64x48"});
    EXPECT_EQ(run.status, 0) << run.error.constData();
    const DepthMapFile map(read("map.pfm"));
    EXPECT_EQ(map.distances.size(), 64u * 48u);
    for (const float distance : map.distances)
        EXPECT_TRUE(std::isnan(distance));
    EXPECT_EQ(QImage(path("map.png")).pixel(32, 24), qRgba(0, 0, 0, 0));
}

TEST_F(Depth, OnePixel)
{
    const Result result =
        makeMap(plane(), looking({0, 0, 10}, {0, 0, 0}, centralView) + QStringList{"--size", "1x1"});
    ASSERT_EQ(result.map.distances.size(), 1u);
    EXPECT_NEAR(result.map.at(0, 0), 10.0, 1e-4);
}

// --- size

// A slope, drawn in several tiles: no seam of theirs is out of the plane, and each pixel is what it is in a
// map of one tile that has every third of them.
TEST_F(Depth, TilesHaveNoSeams)
{
    const glm::dvec3 up = glm::normalize(glm::dvec3(0, 1, 0.8)), right(1, 0, 0);
    const glm::dvec3 normal = glm::cross(right, up);
    const QString file = write("slope.obj", square(faraway, 200.0 * right, 200.0 * up));
    const QStringList view = looking(faraway + glm::dvec3(0, -20, 40), faraway, centralView);
    const Result large = makeMap(file, view + QStringList{"--size", "2400x1500"});
    Errors errors;
    for (int row = 0; row < 1500; ++row)
        for (int column = 0; column < 2400; ++column) {
            const double distance = large.map.at(column, row);
            ASSERT_FALSE(std::isnan(distance)) << column << ' ' << row;
            errors.add(glm::dot(large.camera.point(column, row, distance) - faraway, normal));
        }
    errors.report("slope in tiles");
    EXPECT_LT(errors.largest, 1e-4);
    const Result small = makeMap(file, view + QStringList{"--size", "800x500"});
    for (int row = 0; row < 500; ++row)
        for (int column = 0; column < 800; ++column)
            ASSERT_NEAR(small.map.at(column, row), large.map.at(3 * column + 1, 3 * row + 1), 1e-4)
                << column << ' ' << row;
}

// A point of 200 pixels is as large in a map of several tiles, wherever their borders are.
TEST_F(Depth, PointsReachAcrossTiles)
{
    const QString file = write("point.ply", "ply\nformat ascii 1.0\nelement vertex 1\nproperty double x\n"
                                            "property double y\nproperty double z\nend_header\n0 0 0\n");
    const QStringList view = looking({0, 0, 10}, {0, 0, 0}, centralView) + QStringList{"--point-size", "200"};
    const auto covered = [this, &file, &view](const char* size) {
        const Result result = makeMap(file, view + QStringList{"--size", size});
        return std::count_if(result.map.distances.begin(), result.map.distances.end(),
                             [](float distance) { return std::abs(distance - 10.0f) < 1e-4f; });
    };
    const auto expected = covered("601x601");
    EXPECT_GT(expected, 30'000);
    EXPECT_EQ(covered("4097x2561"), expected); // the middle lies where tiles of 2048 x 1280 meet
    EXPECT_EQ(covered("4301x601"), expected);
}

// --- files

TEST_F(Depth, TiffHoldsTheSameBitsAsPfm)
{
    const QString file = write("box.obj", box(faraway, {3, 2, 1}));
    ASSERT_EQ(runViewer({"depth", file, "-o", path("map.pfm"), "--size", "3000x200"}).status, 0);
    for (const char* name : {"map.tiff", "map.tif"}) {
        ASSERT_EQ(runViewer({"depth", file, "-o", path(name), "--size", "3000x200"}).status, 0);
        const std::vector<float> pixels = readTiff(path(name));
        const DepthMapFile map(read("map.pfm"));
        ASSERT_EQ(pixels.size(), map.distances.size());
        EXPECT_EQ(std::memcmp(pixels.data(), map.distances.data(), pixels.size() * sizeof(float)), 0);
    }
}

TEST_F(Depth, SameMapTwiceIsTheSameFile)
{
    const QString file = write("box.obj", box(faraway, {3, 2, 1}));
    for (const char* name : {"a.pfm", "b.pfm"})
        ASSERT_EQ(runViewer({"depth", file, "-o", path(name), "--size", "300x200"}).status, 0);
    EXPECT_EQ(read("a.pfm"), read("b.pfm"));
}

TEST_F(Depth, PreviewIsTransparentWhereNothingIsAndBrighterWhereNear)
{
    const QString file = write("box.obj", box(faraway, {3, 2, 1}));
    const ViewerRun run = runViewer({"depth", file, "-o", path("map.pfm"), "--preview", path("map.png"),
                                     "--size", "320x200", "--point-size", "4"});
    ASSERT_EQ(run.status, 0) << run.error.constData();
    const DepthMapFile map(read("map.pfm"));
    const QImage preview(path("map.png"));
    ASSERT_EQ(preview.size(), QSize(320, 200));
    std::vector<std::pair<float, int>> greys;
    for (int row = 0; row < 200; ++row)
        for (int column = 0; column < 320; ++column) {
            const QRgb pixel = preview.pixel(column, row);
            ASSERT_EQ(qAlpha(pixel), std::isnan(map.at(column, row)) ? 0 : 255) << column << ' ' << row;
            if (qAlpha(pixel) == 0) continue;
            EXPECT_TRUE(qRed(pixel) == qGreen(pixel) && qRed(pixel) == qBlue(pixel));
            greys.emplace_back(map.at(column, row), qRed(pixel));
        }
    std::sort(greys.begin(), greys.end());
    EXPECT_EQ(greys.front().second, 255);
    EXPECT_EQ(greys.back().second, 40);
    for (std::size_t i = 1; i < greys.size(); ++i)
        ASSERT_LE(greys[i].second, greys[i - 1].second);
}

TEST_F(Depth, MapFromAboveHasItsWorldFile)
{
    const QString file = write("floor.obj", square(faraway, {50, 0, 0}, {0, 50, 0}));
    const ViewerRun run = runViewer({"depth", file, "-o", path("map.tiff"), "--json", path("map.json"),
                                     "--view", "top", "--projection", "parallel", "--gsd", "0.5"});
    ASSERT_EQ(run.status, 0) << run.error.constData();
    const QList<QByteArray> world = read("map.tfw").split('\n');
    ASSERT_GE(world.size(), 6);
    EXPECT_EQ(world[0].toDouble(), 0.5);
    EXPECT_EQ(world[3].toDouble(), -0.5);
    const DepthCameraFile camera(read("map.json"));
    const glm::dvec3 point = camera.point(0, 0, 1.0);
    EXPECT_NEAR(point.x, world[4].toDouble(), 1e-6);
    EXPECT_NEAR(point.y, world[5].toDouble(), 1e-6);
    EXPECT_EQ(readTiff(path("map.tiff")).size(), static_cast<std::size_t>(camera.width * camera.height));
}

TEST_F(Depth, ReplacesAnOldMap)
{
    write("map.pfm", "old");
    const Result result = makeMap(plane(), {"--size", "16x16"});
    EXPECT_EQ(result.map.width, 16);
}

// --- several cameras

class DepthOfCameras : public Depth
{
protected:
    static constexpr const char* north = R"({"name": "north", "view": "back", "size": [90, 60]})";
    static constexpr const char* above =
        R"({"name": "above", "view": "top", "projection": "parallel", "size": [70, 80]})";
    static constexpr const char* inside =
        R"({"name": "inside", "eye": [2700000, 1200000, 400], "target": [2700001, 1200000, 400],
            "fov": 80, "size": [90, 60]})";

    void SetUp() override
    {
        Depth::SetUp();
        m_box = write("box.obj", box(faraway, {3, 2, 1}));
    }
    /// Makes maps, cameras and previews of a list into a folder.
    ViewerRun makeMaps(const QString& folder, const QByteArray& list)
    {
        QDir(path(".")).mkdir(folder);
        const QString pattern = path(folder + "/{name}");
        return runViewer({"depth", m_box, "--cameras", write("list.json", list), "-o", pattern + ".pfm",
                          "--json", pattern + ".json", "--preview", pattern + ".png"});
    }
    QString m_box;
};

TEST_F(DepthOfCameras, EachHasItsFiles)
{
    const ViewerRun run = makeMaps("all", QByteArray("[") + north + "," + above + "," + inside + "]");
    EXPECT_EQ(run.status, 0) << run.error.constData();
    EXPECT_EQ(QDir(path("all")).entryList(QDir::Files).size(), 9);
    ASSERT_EQ(runViewer({"depth", m_box, "-o", path("one.pfm"), "--json", path("one.json"), "--preview",
                         path("one.png"), "--view", "back", "--size", "90x60"})
                  .status,
              0);
    for (const char* extension : {".pfm", ".json", ".png"})
        EXPECT_EQ(read(QString("all/north") + extension), read(QString("one") + extension)) << extension;
    const QJsonObject wide = DepthCameraFile(read("all/inside.json")).object;
    EXPECT_NEAR(wide["fieldOfView"].toArray()[1].toDouble(), 80.0 / 180.0 * M_PI, 1e-12);
}

TEST_F(DepthOfCameras, PartsOfAListGiveTheSameFiles)
{
    ASSERT_EQ(makeMaps("all", QByteArray("[") + north + "," + above + "," + inside + "]").status, 0);
    ASSERT_EQ(makeMaps("parts", QByteArray("[") + inside + "]").status, 0);
    ASSERT_EQ(makeMaps("parts", QByteArray("[") + above + "," + north + "]").status, 0);
    const QStringList names = QDir(path("all")).entryList(QDir::Files);
    EXPECT_EQ(QDir(path("parts")).entryList(QDir::Files), names);
    for (const QString& name : names)
        EXPECT_EQ(read("parts/" + name), read("all/" + name)) << qPrintable(name);
}

TEST_F(DepthOfCameras, OutputsOfTheListAreMaps)
{
    const QString list = write("list.json", R"([{"output": "a.tiff", "size": [8, 8]},
                                                {"output": "b.pfm", "size": [8, 8]}])");
    const ViewerRun run = runViewer({"depth", m_box, "--cameras", list});
    EXPECT_EQ(run.status, 0) << run.error.constData();
    EXPECT_EQ(readTiff(path("a.tiff")).size(), 64u);
    EXPECT_EQ(DepthMapFile(read("b.pfm")).width, 8);
}

TEST_F(DepthOfCameras, WrongListsAreRefusedBeforeAnythingIsDrawn)
{
    const QString unnamed = write("a.json", R"([{"output": "a.pfm"}])");
    expectFailure({m_box, "--cameras", unnamed, "--json", "{name}.json"}, 1,
                  unnamed + ": camera 1 of 1: no \"name\", which {name}.json wants");
    const QString picture = write("b.json", R"([{"name": "x", "output": "a.pfm"}, {"output": "a.png"}])");
    expectFailure({m_box, "--cameras", picture}, 1,
                  picture + ": camera 2 of 2: \"output\": the name must end in .pfm or .tiff or .tif");
    const QString same = write("c.json", R"([{"name": "x"}, {"name": "y", "output": "x.pfm"}])");
    expectFailure({m_box, "--cameras", same, "-o", path("{name}.pfm")}, 1,
                  same + ": camera 2 of 2: its output " + path("x.pfm") + " is that of camera 1, too");
    const QString list = write("d.json", R"([{"name": "d"}])");
    expectFailure({m_box, "--cameras", list, "-o", path("{name}.pfm"), "--json", path("{name}.json")}, 1,
                  list + ": cannot be written: it is one of the files that are read");
}

// --- wrong use

TEST_F(Depth, WrongNamesAreRefused)
{
    const QString file = plane();
    expectFailure({file}, 2, "depth: no output; add -o OUT.pfm or -o OUT.tiff");
    expectFailure({"-o", "a.pfm"}, 2, "depth: no files; usage: viewer3d depth FILES... -o OUT.pfm");
    expectFailure({file, "-o", "a.png"}, 2, "--output a.png: the name must end in .pfm or .tiff or .tif");
    expectFailure({file, "-o", path("a.pfm"), "--preview", "a.jpg"}, 2,
                  "--preview a.jpg: the name must end in .png");
    expectFailure({file, "-o", path("a.pfm"), "--json", "camera"}, 2,
                  "--json camera: the name must end in .json");
}

TEST_F(Depth, WrongCamerasAreRefused)
{
    const QStringList start = {plane(), "-o", path("a.pfm")};
    expectFailure(start + QStringList{"--eye", "1,2,3", "--target", "1,2,3"}, 2,
                  "--eye and --target are the same point; they must differ");
    expectFailure(start + QStringList{"--eye", "1,2,3", "--target", "1,2,8", "--up", "0,0,1"}, 2,
                  "--up lies along the line from --eye to --target; it must point elsewhere");
    expectFailure(start + QStringList{"--size", "0x48"}, 2,
                  "--size 0x48: width and height must be at least 1 pixel");
}

TEST_F(Depth, TooLargeASizeIsRefusedWithTheMemoryThatItTakes)
{
    const ViewerRun run = runViewer({"depth", plane(), "-o", path("a.pfm"), "--size", "100000x100000"});
    EXPECT_EQ(run.status, 2);
    ASSERT_EQ(run.errorLines().size(), 1);
    EXPECT_TRUE(run.error.contains("37.3 GiB")) << run.error.constData();
}

TEST_F(Depth, UpAlongTheViewWithoutBeingAskedForIsTurned)
{
    const Result result = makeMap(plane(), looking({0, 0, 10}, {0, 0, 0}, centralView));
    EXPECT_EQ(result.camera.vector("up"), glm::dvec3(0, 1, 0));
    EXPECT_NEAR(result.map.at(640, 360), 10.0, 1e-4);
}

// --- failures

TEST_F(Depth, OutputsThatCannotBeWrittenAreRefused)
{
    const QString file = plane();
    expectFailure({file, "-o", "/proc/map.pfm"}, 1,
                  "/proc/map.pfm: cannot be written: No such file or directory");
    expectFailure({file, "-o", path("a.pfm"), "--json", path("none/a.json")}, 1,
                  path("none/a.json") + ": cannot be written: there is no folder " + path("none"));
    expectFailure({file, "-o", path("a.pfm"), "--preview", "/proc/a.png"}, 1,
                  "/proc/a.png: cannot be written: No such file or directory");
}

TEST_F(Depth, InputsAreNeverOverwritten)
{
    const QString file = plane();
    write("house.obj", "mtllib house.mtl\nusemtl m\n" + read("plane.obj"));
    write("house.mtl", "newmtl m\nmap_Kd roof.png\n");
    QImage(2, 2, QImage::Format_RGB32).save(path("roof.png"));
    ASSERT_TRUE(QFile::link(file, path("link.pfm")));
    ASSERT_TRUE(QFile::link(file, path("link.json")));
    const QString reason = ": cannot be written: it is one of the files that are read";
    expectFailure({file, "-o", path("link.pfm")}, 1, path("link.pfm") + reason);
    expectFailure({file, "-o", path("a.pfm"), "--json", path("link.json")}, 1, path("link.json") + reason);
    expectFailure({path("house.obj"), "-o", path("a.pfm"), "--preview", path("roof.png")}, 1,
                  path("roof.png") + reason);
}

TEST_F(Depth, TwoOutputsAreTwoFiles)
{
    const QString file = plane();
    write("a.json", "old");
    ASSERT_TRUE(QFile::link(path("a.json"), path("a.png")));
    expectFailure({file, "-o", path("a.pfm"), "--preview", path("a.png"), "--json", path("a.json")}, 2,
                  path("a.json") + ": another output is the same file; give each one of its own");
    ASSERT_TRUE(QFile::link(path("b.json"), path("b.pfm"))); // which leads to what is not there yet
    expectFailure({file, "-o", path("b.pfm"), "--json", path("b.json")}, 2,
                  path("b.json") + ": another output is the same file; give each one of its own");
}

// No process may write more than 64 KiB to a file, which fails as a full disk does.
TEST_F(Depth, FullDiskLeavesEverythingAsItWas)
{
    const QString file = plane();
    for (const char* name : {"map.pfm", "map.tiff"}) {
        write(name, "old");
        const ViewerRun run = runProgram(
            "bash", {"-c", QString("trap '' XFSZ; ulimit -f 64; exec '%1' depth '%2' -o '%3' --json '%4'")
                               .arg(viewerProgram(), file, path(name), path("map.json"))});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errorLines(),
                  QStringList("viewer3d: " + path(name) + ": cannot be written: File too large"));
        EXPECT_EQ(read(name), "old");
        EXPECT_TRUE(read("map.json").isEmpty());
    }
    EXPECT_EQ(QDir(path(".")).entryList(QDir::Files), QStringList({"map.pfm", "map.tiff", "plane.obj"}));
}

TEST_F(Depth, ControlCEndsWithinASecondAndLeavesNothing)
{
    const QString file = write("sphere.ply", sphere(faraway, 5.0, 300));
    for (const int delay : {100, 400, 800}) {
        QProcess process;
        process.start(viewerProgram(), {"depth", file, "-o", path("map.pfm"), "--preview", path("map.png"),
                                        "--json", path("map.json"), "--size", "20000x20000"});
        ASSERT_TRUE(process.waitForStarted());
        ASSERT_TRUE(waitForWork(process));
        QThread::msleep(static_cast<unsigned long>(delay));
        ASSERT_EQ(process.state(), QProcess::Running);
        QElapsedTimer timer;
        timer.start();
        ::kill(static_cast<pid_t>(process.processId()), SIGINT);
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_LT(timer.elapsed(), 1000);
        EXPECT_EQ(process.exitCode(), 1);
        EXPECT_EQ(process.readAllStandardError(), "viewer3d: cancelled\n");
        EXPECT_EQ(QDir(path(".")).entryList(QDir::Files), QStringList("sphere.ply"));
    }
}

TEST_F(Depth, BadFilesStopTheWork)
{
    expectFailure({path("none.obj"), "-o", path("a.pfm")}, 1, path("none.obj") + ": there is no such file");
}
