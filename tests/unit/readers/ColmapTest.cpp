#include "ReaderTest.h"

#include <framework/ksp/CQtArchive.h>
#include <framework/ksp/Canceled.h>
#include <framework/ksp/CommonError.h>
#include <readers/colmap/ColmapPointsParser.h>
#include <readers/colmap/readColmap.h>

#include <QtCore/QBuffer>

#include <cmath>

namespace {

const QByteArray pinhole = "1 PINHOLE 640 480 500 510 320 240\n";
const QByteArray straight = "1 1 0 0 0 0 0 0 1 a.jpg\n\n";

class ColmapTest : public ReaderTest
{
protected:
    readers::ColmapImagesParser::Stations stationsOf(const QByteArray& images,
                                                     const QByteArray& cameras = pinhole) const
    {
        write("cameras.txt", cameras);
        return readers::readColmapStations(write("images.txt", images), ksp::StagedProgress::dummy());
    }
    std::string imagesRefusal(const QByteArray& images, const QByteArray& cameras = pinhole) const
    {
        return reasonOf(folder.filePath("images.txt"), [&] { stationsOf(images, cameras); });
    }
    std::string camerasRefusal(const QByteArray& cameras) const { return imagesRefusal(straight, cameras); }
    MeshData pointsOf(const QByteArray& text) const { return meshesOf(text).at(0); }
    std::vector<MeshData> meshesOf(const QByteArray& text) const
    {
        const auto parse = [](QIODevice& device, const QString& path, ksp::StagedProgress progress) {
            return readers::ColmapPointsParser(device, path, std::move(progress)).parse();
        };
        return readers::readMeshFile(write("points3D.txt", text), parse, ksp::StagedProgress::dummy());
    }
    std::string pointsRefusal(const QByteArray& text) const
    {
        return reasonOf(folder.filePath("points3D.txt"), [&] { meshesOf(text); });
    }

private:
    template <typename Work>
    static std::string reasonOf(const QString& path, const Work& work)
    {
        try {
            work();
        } catch (const ksp::CommonError& error) {
            EXPECT_TRUE(error.text().startsWith(path + ": ")) << qPrintable(error.text());
            EXPECT_FALSE(error.text().contains('\n'));
            return error.text().mid(path.size() + 2).toStdString();
        }
        return "was read";
    }
};

double distanceTo(const StationElement& station, const glm::dvec3& place)
{
    return glm::distance(station.getCenter(), place);
}

} // namespace

TEST_F(ColmapTest, StationHasItsNameCameraAndPose)
{
    const auto stations = stationsOf("# two lines a picture\n"
                                     "7 1 0 0 0 -1 -2 -3 1 north/a b.jpg\n"
                                     "10.5 20 -1 30 40 12\n");
    ASSERT_EQ(stations.size(), 1u);
    const StationElement& station = *stations[0];
    EXPECT_EQ(station.getName(), "north/a b.jpg");
    EXPECT_EQ(station.getSourceId(), "7");
    EXPECT_EQ(station.getCamera().model, "PINHOLE");
    EXPECT_EQ(station.getCamera().width, 640);
    EXPECT_EQ(station.getCamera().height, 480);
    EXPECT_EQ(station.getCamera().parameters, (QVector<double>{500, 510, 320, 240}));
    EXPECT_EQ(station.getCenter(), glm::dvec3(1, 2, 3)) << "-t where nothing is turned";
}

TEST_F(ColmapTest, PosesLeadFromTheWorldToTheCamera)
{
    // A quarter turn about z takes (x, y) to (-y, x). The centre c is where R c + t = 0: of t = (5, 6, 7)
    // the one with (-c.y, c.x, c.z) = (-5, -6, -7).
    const double half = std::sqrt(0.5);
    const QByteArray quarter =
        QByteArray::number(half, 'g', 17) + " 0 0 " + QByteArray::number(half, 'g', 17);
    const auto stations = stationsOf("1 " + quarter + " 5 6 7 1 a\n\n" + "2 3 0 0 3 5 6 7 1 b\n\n");
    ASSERT_EQ(stations.size(), 2u);
    EXPECT_LT(distanceTo(*stations[0], {-6, 5, -7}), 1e-12);
    EXPECT_LT(distanceTo(*stations[1], {-6, 5, -7}), 1e-12) << "a quaternion of any length is one";
    EXPECT_NEAR(glm::length(stations[1]->getPose().rotation), 1.0, 1e-15);
    EXPECT_EQ(stations[1]->getPose().translation, glm::dvec3(5, 6, 7));
}

TEST_F(ColmapTest, SecondLineOfAPictureMayBeEmptyOrMissing)
{
    EXPECT_EQ(stationsOf("1 1 0 0 0 0 0 0 1 a\n\n2 1 0 0 0 0 0 0 1 b").size(), 2u);
    EXPECT_EQ(stationsOf("\r\n1 1 0 0 0 0 0 0 1 a\r\n1 2 3\r\n\r\n# end\r\n").size(), 1u);
}

TEST_F(ColmapTest, EveryModelHasItsParameters)
{
    const std::pair<const char*, int> models[] = {{"SIMPLE_PINHOLE", 3},
                                                  {"PINHOLE", 4},
                                                  {"SIMPLE_RADIAL", 4},
                                                  {"RADIAL", 5},
                                                  {"OPENCV", 8},
                                                  {"OPENCV_FISHEYE", 8},
                                                  {"FULL_OPENCV", 12},
                                                  {"FOV", 5},
                                                  {"SIMPLE_RADIAL_FISHEYE", 4},
                                                  {"RADIAL_FISHEYE", 5},
                                                  {"THIN_PRISM_FISHEYE", 12},
                                                  {"RAD_TAN_THIN_PRISM_FISHEYE", 16}};
    for (const auto& [model, count] : models) {
        const auto camera = [name = QByteArray(model)](int parameters) {
            return "1 " + name + " 100 100" + QByteArray(" 1.5").repeated(parameters) + "\n";
        };
        const auto stations = stationsOf(straight, camera(count));
        EXPECT_EQ(stations.at(0)->getCamera().parameters, QVector<double>(count, 1.5)) << model;
        const std::string start = "its cameras.txt: line 1: a camera of model " + std::string(model) +
                                  " has " + std::to_string(count) + " parameters, and not ";
        EXPECT_EQ(camerasRefusal(camera(count - 1)), start + std::to_string(count - 1));
        EXPECT_EQ(camerasRefusal(camera(count + 1)), start + std::to_string(count + 1));
        EXPECT_EQ(camerasRefusal(camera(count + 2)), start + "more");
    }
}

TEST_F(ColmapTest, WrongCamerasAreRefusedWithTheirLine)
{
    EXPECT_EQ(camerasRefusal("# first\n1 MAGIC 1 1 1\n"),
              "its cameras.txt: line 2: unknown camera model \"MAGIC\"");
    EXPECT_EQ(camerasRefusal(pinhole + pinhole), "its cameras.txt: line 2: there is a camera 1 already");
    EXPECT_EQ(camerasRefusal("1 PINHOLE 0 480 1 1 1 1"),
              "its cameras.txt: line 1: the width of its pictures is "
              "no whole number from 1 to 1000000: \"0\"");
    EXPECT_EQ(camerasRefusal("1 PINHOLE 4"),
              "its cameras.txt: line 1: the height of its pictures is missing");
    EXPECT_EQ(camerasRefusal("1 PINHOLE 4 4 1 nan 1 1"),
              "its cameras.txt: line 1: a parameter is no number of at most 1e15: \"nan\"");
    EXPECT_EQ(camerasRefusal("# none\n"), "line 1: there is no camera 1");
    EXPECT_EQ(camerasRefusal(""), "its cameras.txt: is empty");
}

TEST_F(ColmapTest, WrongPicturesAreRefusedWithTheirLine)
{
    EXPECT_EQ(imagesRefusal(straight + straight), "line 3: there is a picture 1 already");
    EXPECT_EQ(imagesRefusal("1 1 0 0 0 0 0 0 2 a\n"), "line 1: there is no camera 2");
    EXPECT_EQ(imagesRefusal("1 1 0 0 0 0 0 0 1\n"), "line 1: the picture's name is missing");
    EXPECT_EQ(imagesRefusal("1 0 0 0 0 0 0 0 1 a\n"), "line 1: the rotation is a quaternion of length 0");
    EXPECT_EQ(imagesRefusal("1 1 0 x 0 0 0 0 1 a\n"),
              "line 1: the rotation is no number of at most 1e15: \"x\"");
    EXPECT_EQ(imagesRefusal("1 1 0 0 0 0 1e16 0 1 a\n"),
              "line 1: the translation is no number of at most 1e15: \"1e16\"");
    EXPECT_EQ(imagesRefusal("-1 1 0 0 0 0 0 0 1 a\n"),
              "line 1: the picture's identifier is no whole number from 0 to 4611686018427387904: \"-1\"");
    EXPECT_EQ(imagesRefusal("1 1 0 0 0 0 0 0 1 a\n1 2 3 4 5\n"), "line 2: the point's identifier is missing");
    EXPECT_EQ(imagesRefusal("1 1 0 0 0 0 0 0 1 a\n1 2 -2\n").substr(0, 33),
              "line 2: the point's identifier is");
    EXPECT_EQ(imagesRefusal("# none\n"), "has no pictures");
}

TEST_F(ColmapTest, CamerasThatAreMissingAreTold)
{
    const QString path = write("images.txt", straight);
    try {
        readers::readColmapStations(path, ksp::StagedProgress::dummy());
        FAIL();
    } catch (const ksp::CommonError& error) {
        EXPECT_EQ(error.text(), path + ": its cameras.txt: there is no such file");
    }
}

TEST_F(ColmapTest, PointsAreOneMeshWithColours)
{
    const MeshData mesh = pointsOf("# points\n"
                                   "9 600000.125 5000000.25 -3 255 0 128 0.5 1 2 3 4\n"
                                   "4 600001.125 5000000.25 -3 1 2 3 0.1\n");
    checkSound(mesh);
    EXPECT_EQ(mesh.name, QFileInfo(folder.path()).fileName());
    ASSERT_EQ(mesh.parts.size(), 1u);
    EXPECT_EQ(countOf(mesh, MeshData::Part::Points), 2u);
    const std::vector<glm::dvec3> corners = cornersOf(mesh);
    EXPECT_EQ(corners.at(0), glm::dvec3(600000.125, 5000000.25, -3));
    EXPECT_EQ(corners.at(1), glm::dvec3(600001.125, 5000000.25, -3));
    EXPECT_EQ(mesh.colors, (std::vector<std::uint32_t>{0xff8000ff, 0xff030201})) << "red in the lowest byte";
}

TEST_F(ColmapTest, WrongPointsAreRefusedWithTheirLine)
{
    const QByteArray good = "1 0 0 0 1 2 3 0.5\n";
    EXPECT_EQ(pointsRefusal(good + "2 0 0 inf 1 2 3 0.5\n"),
              "line 2: a coordinate is no number of at most 1e15: \"inf\"");
    EXPECT_EQ(pointsRefusal(good + "\n2 0 0 0 1 256 3 0.5\n"),
              "line 3: the colour is no whole number from 0 to 255: \"256\"");
    EXPECT_EQ(pointsRefusal("1 0 0 0 1 2 3\n"), "line 1: the error is missing");
    EXPECT_EQ(pointsRefusal("1 0 0 0 1 2 3 0.5 8\n"),
              "line 1: the place in that picture's points is missing");
    EXPECT_EQ(pointsRefusal("x 0 0 0 1 2 3 0.5\n").substr(0, 31), "line 1: the point's identifier ");
    EXPECT_EQ(pointsRefusal("# none\n"), "has nothing to draw");
}

TEST_F(ColmapTest, SmallFilesWithVeryManyPicturesAreRefused)
{
    QByteArray images;
    for (int i = 0; i < 150000; ++i)
        images += QByteArray::number(i) + " 1 0 0 0 0 0 0 1 a\n\n";
    EXPECT_EQ(imagesRefusal(images), "unfolds to far more than a file of its size should");
}

TEST_F(ColmapTest, ProgressGoesToItsEndAndCanBeStopped)
{
    QByteArray images;
    for (int i = 0; i < 3000; ++i)
        images += QByteArray::number(i) + " 1 0 0 0 0 0 0 1 a picture with a long name\n\n";
    write("cameras.txt", pinhole);
    const QString path = write("images.txt", images);
    double done = 0.0;
    readers::readColmapStations(path,
                                ksp::StagedProgress([&](double share, const QString&) { done = share; }));
    EXPECT_EQ(done, 100.0);

    auto progress = ksp::StagedProgress::dummy();
    progress.cancel();
    EXPECT_THROW(readers::readColmapStations(path, progress), ksp::Canceled);
}

TEST(StationElementTest, IsStoredWholly)
{
    StationElement station;
    station.setName("a.jpg");
    station.setSourceId("12");
    station.setPose({glm::dquat(0.5, -0.5, 0.5, 0.5), {1, 2, 3}});
    station.setCamera({"RADIAL", 640, 480, {1, 2, 3, 4, 5}});
    CQtArchive storing;
    station.serialize(storing);
    CQtArchive loading(storing.data());
    StationElement loaded;
    loaded.serialize(loading);
    EXPECT_EQ(loaded.getName(), "a.jpg");
    EXPECT_EQ(loaded.getSourceId(), "12");
    EXPECT_EQ(loaded.getPose().rotation, station.getPose().rotation);
    EXPECT_EQ(loaded.getPose().translation, glm::dvec3(1, 2, 3));
    EXPECT_EQ(loaded.getCamera().model, "RADIAL");
    EXPECT_EQ(loaded.getCamera().width, 640);
    EXPECT_EQ(loaded.getCamera().height, 480);
    EXPECT_EQ(loaded.getCamera().parameters, (QVector<double>{1, 2, 3, 4, 5}));
}
