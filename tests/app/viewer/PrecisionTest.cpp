#include "ViewerProcess.h"

#include "../../support/ImageCheck.h"

#include <QtGui/QImage>

#include <glm/glm.hpp>

#include <cmath>

// Large coordinates lose nothing on their way into pictures.

namespace {

QByteArray preciseNumber(double value)
{
    return QByteArray::number(value, 'f', 7);
}

QByteArray point(const glm::dvec3& p, char separator)
{
    return preciseNumber(p.x) + separator + preciseNumber(p.y) + separator + preciseNumber(p.z);
}

/// Waves of coloured triangles, about 40 m wide.
QByteArray hillsAt(const glm::dvec3& origin)
{
    const int n = 40;
    QByteArray obj;
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i) {
            const glm::dvec3 p(i, j, 2.0 * std::sin(i / 4.0) * std::cos(j / 5.0));
            obj += "v " + point(origin + p, ' ') +
                   (((i / 5 + j / 5) % 2) != 0 ? " 0.9 0.2 0.1\n" : " 0.2 0.4 0.9\n");
        }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const int a = j * (n + 1) + i + 1;
            obj += QStringLiteral("f %1 %2 %3\nf %1 %3 %4\n")
                       .arg(a)
                       .arg(a + 1)
                       .arg(a + n + 2)
                       .arg(a + n + 1)
                       .toLatin1();
        }
    return obj;
}

QByteArray lineFeature(const glm::dvec3& from, const glm::dvec3& to)
{
    return R"({"type":"Feature","properties":{"stroke":"#ffffff"},"geometry":{"type":"LineString","coordinates":[[)" +
           point(from, ',') + "],[" + point(to, ',') + "]]}}";
}

/// Whether the pixel's colour is found in the other picture at the same place or one pixel beside it.
bool isNearby(const QImage& image, int x, int y, QRgb wanted)
{
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
            if (!image.valid(x + dx, y + dy)) continue;
            const QRgb p = image.pixel(x + dx, y + dy);
            if (std::abs(qRed(p) - qRed(wanted)) <= 12 && std::abs(qGreen(p) - qGreen(wanted)) <= 12 &&
                std::abs(qBlue(p) - qBlue(wanted)) <= 12)
                return true;
        }
    return false;
}

int countStrays(const QImage& image, const QImage& other)
{
    int strays = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            strays += !isNearby(other, x, y, image.pixel(x, y));
    return strays;
}

/// Where along the row dark becomes bright, in pixels and parts of a pixel.
double edgeOf(const QImage& image, int row)
{
    const double bright = qGreen(image.pixel(image.width() - 1, row));
    for (int x = 0; x < image.width(); ++x)
        if (qGreen(image.pixel(x, row)) > 0)
            return x + 1.0 - std::min(1.0, qGreen(image.pixel(x, row)) / bright);
    return std::nan("");
}

/// The middle of what is bright along the row.
double middleOf(const QImage& image, int row)
{
    double sum = 0.0, weight = 0.0;
    for (int x = 0; x < image.width(); ++x) {
        sum += (x + 0.5) * qGreen(image.pixel(x, row));
        weight += qGreen(image.pixel(x, row));
    }
    return weight > 0.0 ? sum / weight : std::nan("");
}

constexpr double tenMillimetres = 0.01;
/// Pixels of a picture of 720 rows that a millimetre covers at 10 mm from an eye with 45 degrees of view.
const double pixelsOfAMillimetre = 0.001 * 720.0 / (2.0 * tenMillimetres * std::tan(M_PI / 8.0));

} // namespace

class Precision : public ViewerTest
{
protected:
    QImage render(const QString& file, const QStringList& options)
    {
        const ViewerRun run =
            runViewer(QStringList{"render", file, "-o", path("out.png"), "--background", "black"} + options);
        EXPECT_EQ(run.status, 0) << run.error.constData();
        return QImage(path("out.png"));
    }
    /// Looks straight down from 10 mm above the place, north up.
    QImage lookFromTenMillimetres(const QString& file, const glm::dvec3& place)
    {
        return render(file, {"--eye", point(place + glm::dvec3(0, 0, tenMillimetres), ','), "--target",
                             point(place, ','), "--up", "0,1,0"});
    }
};

TEST_F(Precision, MovedSceneGivesTheSamePicture)
{
    const QString here = write("here.obj", hillsAt(glm::dvec3(0.0)));
    const QString there = write("there.obj", hillsAt(faraway));
    for (const QStringList& options :
         {QStringList{"--view", "iso"}, {"--view", "front", "--projection", "parallel"}}) {
        const QImage first = render(here, options), second = render(there, options);
        EXPECT_EQ(countStrays(first, second), 0);
        EXPECT_EQ(countStrays(second, first), 0);
        EXPECT_GT(countPixels(first, [](QRgb p) { return p != qRgb(0, 0, 0); }), 20'000);
    }
}

TEST_F(Precision, MovedSceneSeenByAMovedEyeGivesTheSamePicture)
{
    const QString here = write("here.obj", hillsAt(glm::dvec3(0.0)));
    const QString there = write("there.obj", hillsAt(faraway));
    const glm::dvec3 eye(55.0, -20.0, 25.0), target(20.0, 20.0, 0.0);
    const QImage first = render(here, {"--eye", point(eye, ','), "--target", point(target, ',')});
    const QImage second =
        render(there, {"--eye", point(eye + faraway, ','), "--target", point(target + faraway, ',')});
    EXPECT_EQ(countStrays(first, second), 0);
    EXPECT_EQ(countStrays(second, first), 0);
}

// A field of 100 m whose western edge is looked at from 10 mm: the edge lies in the middle of the picture,
// and a millimetre further east that much to the right.
TEST_F(Precision, MeshMovedByAMillimetreMovesInThePicture)
{
    double edges[2];
    for (int moved = 0; moved < 2; ++moved) {
        const glm::dvec3 corner = faraway + glm::dvec3(0.001 * moved, -50.0, 0.0);
        QByteArray obj;
        for (const glm::dvec3& p : {glm::dvec3(0, 0, 0), {100, 0, 0}, {100, 100, 0}, {0, 100, 0}})
            obj += "v " + point(corner + p, ' ') + '\n';
        const QString file = write("field.obj", obj + "f 1 2 3\nf 1 3 4\n");
        edges[moved] = edgeOf(lookFromTenMillimetres(file, faraway), 360);
    }
    EXPECT_NEAR(edges[0], 640.0, 1.0);
    EXPECT_NEAR(edges[1] - edges[0], pixelsOfAMillimetre, 1.0);
}

TEST_F(Precision, LineMovedByAMillimetreMovesInThePicture)
{
    double middles[2];
    for (int moved = 0; moved < 2; ++moved) {
        const glm::dvec3 start = faraway + glm::dvec3(0.001 * moved, -50.0, 0.0);
        const QString file = write("line.geojson", lineFeature(start, start + glm::dvec3(0, 100, 0)));
        middles[moved] = middleOf(lookFromTenMillimetres(file, faraway), 360);
    }
    EXPECT_NEAR(middles[0], 640.0, 1.0);
    EXPECT_NEAR(middles[1] - middles[0], pixelsOfAMillimetre, 1.0);
}

TEST_F(Precision, FeaturesAMillimetreApartStaySo)
{
    const glm::dvec3 start = faraway + glm::dvec3(0, -50, 0), along(0, 100, 0), millimetre(0.001, 0, 0);
    const QString file = write(
        "two.geojson", R"({"type":"FeatureCollection","features":[)" + lineFeature(start, start + along) +
                           "," + lineFeature(start + millimetre, start + millimetre + along) + "]}");
    const QImage image = lookFromTenMillimetres(file, faraway + 0.5 * millimetre);
    QList<int> columns;
    for (int x = 0; x < image.width(); ++x)
        if (qGreen(image.pixel(x, 360)) > 60) columns.append(x);
    ASSERT_GE(columns.size(), 2);
    EXPECT_NEAR(columns.last() - columns.first(), pixelsOfAMillimetre, 2.0);
    EXPECT_LE(columns.size(), 4); // two lines and nothing between them
}
