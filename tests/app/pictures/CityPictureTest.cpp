#include "../viewer/ViewerProcess.h"

#include <viewer/elements/CityColors.h>

#include <QtGui/QImage>

#include <cmath>

// What is filled, as the program draws it: city objects, polygons, pictures on the ground.

namespace {

// A block of 20 m x 10 m x 6 m with a roof, walls and a ground, in centimetres about a geodetic place.
const QByteArray block = R"({"type":"CityJSON","version":"2.0","transform":{"scale":[0.01,0.01,0.01],
    "translate":[2600000,1200000,400]},"CityObjects":{"b":{"type":"Building","geometry":[{"type":"Solid","lod":"2",
    "boundaries":[[[[0,3,2,1]],[[4,5,6,7]],[[0,1,5,4]],[[1,2,6,5]],[[2,3,7,6]],[[3,0,4,7]]]],
    "semantics":{"surfaces":[{"type":"GroundSurface"},{"type":"RoofSurface"},{"type":"WallSurface"}],
    "values":[[0,1,2,2,2,2]]}}]}},"vertices":[[0,0,0],[2000,0,0],[2000,1000,0],[0,1000,0],
    [0,0,600],[2000,0,600],[2000,1000,600],[0,1000,600]]})";

// Its base as a polygon, raised; beside it two opaque squares, with a gap of 10 m.
const QByteArray squares = R"({"type":"FeatureCollection","features":[
    {"type":"Feature","properties":{"fill":"#ff0000","fill-opacity":1,"stroke":"#ff0000"},"geometry":{"type":"Polygon",
     "coordinates":[[[2600000,1200000],[2600020,1200000],[2600020,1200020],[2600000,1200020],[2600000,1200000]],
                    [[2600005,1200005],[2600010,1200005],[2600010,1200010],[2600005,1200010],[2600005,1200005]]]}},
    {"type":"Feature","properties":{"fill":"#0000ff","fill-opacity":1,"stroke":"#0000ff"},"geometry":{"type":"Polygon",
     "coordinates":[[[2600030,1200000],[2600050,1200000],[2600050,1200020],[2600030,1200020],[2600030,1200000]]]}}]})";

// A roof of 30 m x 10 m that shows a picture, its place in it from -1 to 2 from west to east.
QByteArray pictured(const QByteArray& wrapping)
{
    return R"({"type":"CityJSON","version":"2.0","transform":{"scale":[1,1,1],"translate":[0,0,0]},"CityObjects":{"b":
        {"type":"Building","geometry":[{"type":"MultiSurface","lod":"2","boundaries":[[[0,1,2,3]]],
        "texture":{"t":{"values":[[[0,0,1,2,3]]]}}}]}},"vertices":[[0,0,0],[30,0,0],[30,10,0],[0,10,0]],
        "appearance":{"textures":[{"type":"PNG",)" +
           wrapping + R"("image":"halves.png"}],"vertices-texture":[[-1,0],[2,0],[2,1],[-1,1]]}})";
}

// Of the same hue, whatever the light makes of its value.
bool isLike(QRgb pixel, const QColor& color)
{
    const QColor seen(pixel);
    return std::abs(seen.hslHue() - color.hslHue()) <= 8 && seen.hslSaturation() > 10;
}

} // namespace

class CityPicture : public ViewerTest
{
protected:
    QImage render(const QStringList& arguments)
    {
        const ViewerRun run =
            runViewer(QStringList{"render", "--background", "white", "-o", path("out.png")} + arguments);
        EXPECT_EQ(run.status, 0) << run.error.constData();
        EXPECT_EQ(run.error, "");
        return QImage(path("out.png"));
    }
    QImage fromAbove(const QString& file)
    {
        return render({file, "--view", "top", "--projection", "parallel", "--gsd", "0.5"});
    }
    /// The pixel at a place of the model, by the world file of the picture.
    QColor at(const QImage& image, double x, double y)
    {
        const QList<QByteArray> lines = read("out.pgw").split('\n');
        const double size = lines.value(0).toDouble();
        return QColor(image.pixel(static_cast<int>(std::lround((x - lines.value(4).toDouble()) / size)),
                                  static_cast<int>(std::lround((lines.value(5).toDouble() - y) / size))));
    }
};

TEST_F(CityPicture, SurfacesHaveTheColoursOfTheirKinds)
{
    const QString file = write("block.city.json", block);
    const auto most = [&](const char* view, const char* kind) {
        const QImage image = render({file, "--view", view, "--projection", "parallel", "--size", "200x200"});
        return isLike(image.pixel(100, 100), CityColors::of(QLatin1String(kind), {}));
    };
    EXPECT_TRUE(most("top", "RoofSurface"));
    EXPECT_TRUE(most("front", "WallSurface"));
    EXPECT_TRUE(most("left", "WallSurface"));
    EXPECT_TRUE(most("bottom", "GroundSurface"));
}

TEST_F(CityPicture, BlockCoversWhatItShould)
{
    const QImage image = fromAbove(write("block.city.json", block));
    int covered = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            covered += image.pixel(x, y) != qRgb(255, 255, 255);
    EXPECT_EQ(covered, 40 * 20) << "20 m x 10 m in pixels of half a metre";
}

TEST_F(CityPicture, CityIsSelectedAndExported)
{
    const QString file = write("block.city.json", block);
    EXPECT_EQ(runViewer({"select", file, "--rect", "600,340,80,40"}).out, "1\n");
    EXPECT_EQ(runViewer({"export", file, "-o", path("out.ply")}).status, 0);
    EXPECT_TRUE(runViewer({"info", path("out.ply")}).out.contains("0 lines, 12 triangles"));
}

// The block's roof, 200 by 100 pixels, has nothing as dark as letters.
TEST_F(CityPicture, ObjectsHaveLabels)
{
    const QByteArray named = QByteArray(block).replace(
        "\"Building\",", "\"Building\",\"attributes\":{\"name\":\"WW\",\"use\":\"WWWW\"},");
    const auto letters = [this](const QByteArray& json, const QStringList& labels) {
        const QImage image = render(QStringList{write("block.city.json", json), "--view", "top",
                                                "--projection", "parallel", "--gsd", "0.1"} +
                                    labels);
        QRect box;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qGray(image.pixel(x, y)) < 70) box |= QRect(x, y, 1, 1);
        return box;
    };
    EXPECT_TRUE(letters(named, {}).isEmpty());
    const QRect name = letters(named, {"--labels"});
    ASSERT_FALSE(name.isEmpty());
    EXPECT_NEAR(name.center().x(), 100, 2);
    EXPECT_NEAR(name.center().y(), 50, 3);
    EXPECT_GT(letters(named, {"--labels", "use"}).width(), name.width() * 3 / 2);
    EXPECT_TRUE(letters(named, {"--labels", "year"}).isEmpty());
    EXPECT_TRUE(letters(block, {"--labels"}).isEmpty()) << "its identifier is no name";
}

// The picture's left half is red, its right one blue.
TEST_F(CityPicture, TexturesGoOnBeyondTheirBordersAsTheySay)
{
    QImage halves(64, 64, QImage::Format_RGB32);
    halves.fill(Qt::red);
    for (int y = 0; y < 64; ++y)
        for (int x = 32; x < 64; ++x)
            halves.setPixel(x, y, qRgb(0, 0, 255));
    ASSERT_TRUE(halves.save(path("halves.png")));
    const auto seen = [this](const QByteArray& wrapping) {
        const QImage image = fromAbove(write("pictured.city.json", pictured(wrapping)));
        std::string letters;
        for (double x = 2.5; x < 30.0; x += 5.0) {
            const QRgb pixel = at(image, x, 5.0).rgb();
            letters += pixel == qRgb(255, 255, 255) ? '-'
                       : isLike(pixel, Qt::red)     ? 'r'
                       : isLike(pixel, Qt::blue)    ? 'b'
                       : isLike(pixel, Qt::green)   ? 'g'
                                                    : '?';
        }
        return letters;
    };
    EXPECT_EQ(seen(""), "rbrbrb");
    EXPECT_EQ(seen(R"("wrapMode":"wrap",)"), "rbrbrb");
    EXPECT_EQ(seen(R"("wrapMode":"mirror",)"), "brrbbr");
    EXPECT_EQ(seen(R"("wrapMode":"clamp",)"), "rrrbbb");
    EXPECT_EQ(seen(R"("wrapMode":"border","borderColor":[0,1,0,1],)"), "ggrbgg");
    EXPECT_EQ(seen(R"("wrapMode":"none",)"), "--rb--");
}

TEST_F(CityPicture, PolygonsAreFilledButForTheirHoles)
{
    const QImage image = fromAbove(write("squares.geojson", squares));
    EXPECT_TRUE(isLike(at(image, 2600002, 1200002).rgb(), Qt::red));
    EXPECT_TRUE(isLike(at(image, 2600015, 1200015).rgb(), Qt::red));
    EXPECT_EQ(at(image, 2600007.5, 1200007.5), QColor(Qt::white)) << "the hole";
    EXPECT_EQ(at(image, 2600025, 1200010), QColor(Qt::white)) << "the gap";
    EXPECT_TRUE(isLike(at(image, 2600040, 1200010).rgb(), Qt::blue));
}

TEST_F(CityPicture, RaisedPolygonsStandAsHighAsTheySay)
{
    QByteArray raised = squares;
    raised.replace("\"fill\":\"#0000ff\"", "\"height\":\"40\",\"fill\":\"#0000ff\"");
    const QImage image = render({write("raised.geojson", raised), "--view", "front", "--projection",
                                 "parallel", "--size", "300x300"});
    int left = 300, right = -1, top = 300, bottom = -1;
    for (int y = 0; y < 300; ++y)
        for (int x = 0; x < 300; ++x)
            if (isLike(image.pixel(x, y), Qt::blue)) {
                left = std::min(left, x), right = std::max(right, x);
                top = std::min(top, y), bottom = std::max(bottom, y);
            }
    ASSERT_GT(right, left);
    const double width = right - left + 1, height = bottom - top + 1;
    EXPECT_NEAR(height / width, 40.0 / 20.0, 0.04);
}

// Both lie at height 0 unless somebody says otherwise.
TEST_F(CityPicture, PolygonsLieOverAPictureAtTheirHeight)
{
    const QString file = write("squares.geojson", squares);
    QImage field(40, 30, QImage::Format_RGB32);
    field.fill(Qt::darkGreen);
    ASSERT_TRUE(field.save(path("field.png")));
    write("field.pgw", "5\n0\n0\n-5\n2599925\n1200085\n");
    for (const char* eye : {"2600025,1200010,90", "2600025,1199900,60", "2600140,1199950,9"}) {
        const QStringList from = {"--eye", eye,       "--target", "2600025,1200010,0",
                                  "--up",  "0,1,0.1", "--size",   "300x200"};
        const QImage alone = render(QStringList{file} + from);
        const QImage over = render(QStringList{file, path("field.png")} + from);
        int inside = 0, hidden = 0; // pixels with nothing of an edge
        for (int y = 1; y < 199; ++y)
            for (int x = 1; x < 299; ++x) {
                bool isInside = isLike(alone.pixel(x, y), Qt::red) || isLike(alone.pixel(x, y), Qt::blue);
                for (int i = 0; i < 9; ++i)
                    isInside = isInside && alone.pixel(x - 1 + i % 3, y - 1 + i / 3) == alone.pixel(x, y);
                inside += isInside;
                hidden += isInside && over.pixel(x, y) != alone.pixel(x, y);
            }
        EXPECT_GT(inside, 20) << eye;
        EXPECT_EQ(hidden, 0) << eye;
    }
}

TEST_F(CityPicture, PictureOnTheGroundIsWhatItWasMadeOf)
{
    const QImage plan = fromAbove(write("squares.geojson", squares));
    QFile::rename(path("out.png"), path("plan.png"));
    QFile::rename(path("out.pgw"), path("plan.pgw"));
    const QImage again = render({path("plan.png"), "--ground-height", "12", "--view", "top", "--projection",
                                 "parallel", "--gsd", "0.5"});
    // by the world files of both: the same colours at the same places
    const QByteArray world = read("out.pgw");
    for (const auto& [x, y] : {std::pair(2600002.25, 1200002.25),
                               {2600015.25, 1200015.25},
                               {2600007.75, 1200007.75},
                               {2600025.25, 1200010.25},
                               {2600040.25, 1200010.25},
                               {2600049.25, 1200019.25}}) {
        const QColor shown = at(again, x, y);
        QFile::remove(path("out.pgw"));
        QFile::copy(path("plan.pgw"), path("out.pgw"));
        EXPECT_EQ(shown.name().toStdString(), at(plan, x, y).name().toStdString()) << x << ' ' << y;
        write("out.pgw", world);
    }
    EXPECT_TRUE(runViewer({"info", path("plan.png"), "--ground-height", "12"}).out.contains(" 12 to "));
}
