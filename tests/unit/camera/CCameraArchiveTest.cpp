#include "CameraChecks.h"
#include "RecordingArchive.h"

#include <framework/ksp/CFileException.h>
#include <framework/ksp/CQtArchive.h>

#include <numeric>
#include <utility>

namespace {

QByteArray stored(CCamera camera)
{
    CQtArchive archive;
    camera.serialize(archive);
    return archive.data();
}

void load(CCamera& camera, const QByteArray& bytes)
{
    CQtArchive archive(bytes);
    camera.serialize(archive);
}

/// The camera's fields are 1, 2, 3, ... in the order of the archive; version and further parts as stated.
QByteArray countedArchive(unsigned version)
{
    CQtArchive archive;
    archive.beginObject();
    double values[19];
    std::iota(std::begin(values), std::end(values), 1.0);
    archive.writeBlock(values, 24);
    archive.writeBlock(values + 3, 24);
    archive.writeBlock(values + 6, 24);
    archive.writeDouble(values[9]);
    archive.writeDouble(values[10]);
    archive.writeBlock(values + 11, 24);
    archive.writeBlock(values + 14, 24);
    archive.writeDouble(values[17]);
    archive.writeDouble(values[18]);
    archive.endObject(1);
    if (version > 1) {
        archive.checkVersion(version);
        archive.writeDouble(-1.0);
    }
    archive.finish();
    archive.writeDouble(99.0);
    return archive.data();
}

CCamera countedCamera()
{
    CCamera camera;
    load(camera, countedArchive(1));
    return camera;
}

TEST(CCameraArchive, StoresTheFieldsInOrder)
{
    CCamera camera(15.0, 16.0, 17.0);
    camera.setPositionCamera({1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 9.0});
    camera.setScale({12.0, 13.0, 14.0});
    camera.multCamSpeed(18.0);
    camera.multRotateSpeed(20.0 * 19.0);
    RecordingArchive archive;
    camera.serialize(archive);
    const std::vector<std::string> steps{"begin",    "block 24", "block 24", "block 24", "double", "double",
                                         "block 24", "block 24", "double",   "double",   "end 1",  "finish"};
    EXPECT_EQ(archive.steps, steps);
    const std::vector<double> doubles{1.0,
                                      2.0,
                                      3.0,
                                      4.0,
                                      5.0,
                                      6.0,
                                      7.0,
                                      8.0,
                                      9.0,
                                      100.0,
                                      100.0,
                                      12.0,
                                      13.0,
                                      14.0,
                                      15.0,
                                      16.0,
                                      17.0,
                                      18.0,
                                      0.05 * (20.0 * 19.0)};
    EXPECT_EQ(archive.doubles, doubles);
}

TEST(CCameraArchive, LoadsTheFieldsInOrder)
{
    const CCamera camera = countedCamera();
    EXPECT_EQ(camera.getPosition(), glm::dvec3(1.0, 2.0, 3.0));
    EXPECT_EQ(camera.getView(), glm::dvec3(4.0, 5.0, 6.0));
    EXPECT_EQ(camera.getUp(), glm::dvec3(7.0, 8.0, 9.0));
    EXPECT_EQ(camera.getScale(), glm::dvec3(12.0, 13.0, 14.0));
    EXPECT_EQ(camera.getCenter(), glm::dvec3(15.0, 16.0, 17.0));
    EXPECT_EQ(camera.getCamSpeed(), 18.0);
    EXPECT_EQ(camera.getRotateSpeed(), 19.0);
}

TEST(CCameraArchive, RandomCamerasComeBackBitByBit)
{
    reference::RandomCameras cameras;
    for (int i = 0; i < 50; ++i) {
        SCOPED_TRACE(i);
        CCamera camera = cameras.next();
        camera.setScale(reference::toGlm(cameras.point(10.0)));
        camera.multCamSpeed(cameras.number(0.1, 10.0));
        camera.multRotateSpeed(cameras.number(0.1, 10.0));
        CCamera other;
        load(other, stored(camera));
        expectSame(other, camera);
    }
}

TEST(CCameraArchive, CopiesAndMovesTakeTheTwoParametersToo)
{
    const CCamera source = countedCamera();
    const QByteArray bytes = stored(source);
    CCamera copied;
    copied = source;
    EXPECT_EQ(stored(copied), bytes);
    CCamera moved;
    moved = std::move(copied);
    EXPECT_EQ(stored(moved), bytes);
    EXPECT_EQ(stored(CCamera(source)), bytes);
    EXPECT_NE(stored(CCamera()), bytes);
}

TEST(CCameraArchive, EveryTruncationIsRefusedAndChangesNothing)
{
    const QByteArray bytes = stored(countedCamera());
    CCamera camera;
    camera.setDefaultCamera();
    const CCamera before = camera;
    for (int size = 0; size < bytes.size(); ++size) {
        SCOPED_TRACE(size);
        EXPECT_THROW(load(camera, bytes.left(size)), ksp::CFileException);
        expectSame(camera, before);
    }
}

TEST(CCameraArchive, ObjectThatIsTooShortIsRefusedAndChangesNothing)
{
    CQtArchive archive; // a whole object, but of two fields and a half
    archive.beginObject();
    const double values[] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0};
    archive.writeBlock(values, sizeof(values));
    archive.endObject(1);
    archive.finish();
    CCamera camera;
    camera.setDefaultCamera();
    const CCamera before = camera;
    EXPECT_THROW(load(camera, archive.data()), ksp::CFileException);
    expectSame(camera, before);
}

TEST(CCameraArchive, SkipsWhatANewerProgramAdded)
{
    CQtArchive archive(countedArchive(7));
    CCamera camera;
    camera.serialize(archive);
    expectSame(camera, countedCamera());
    EXPECT_EQ(archive.readDouble(), 99.0);
}

} // namespace
