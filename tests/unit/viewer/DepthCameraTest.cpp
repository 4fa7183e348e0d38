#include "../../support/DepthMapFiles.h"

#include <viewer/DepthCamera.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

const glm::dvec3 faraway(2.7e6, 1.2e6, 400.0);
const QSize pictureSize(1280, 720);

DepthCamera cameraOf(const Viewpoint& viewpoint, const gmx::BoundingBox& box)
{
    return DepthCamera(viewpoint, pictureSize, box, 0.1);
}

DepthCamera cameraAt(const glm::dvec3& place, IProjection::Projection type)
{
    return cameraOf(Viewpoint::looking(place + glm::dvec3(30, -40, 20), place + glm::dvec3(1, 2, 3),
                                       glm::dvec3(0.1, 0.2, 1.0), type, pictureSize),
                    gmx::BoundingBox(place - glm::dvec3(5.0), place + glm::dvec3(5.0)));
}

} // namespace

class DepthCameraJson : public ::testing::TestWithParam<IProjection::Projection>
{
};

// Each corner of a box goes through the matrices to a pixel and a distance, and by the formula back.
TEST_P(DepthCameraJson, TurnsPixelsIntoPoints)
{
    for (const glm::dvec3& place : {glm::dvec3(0.0), faraway}) {
        const DepthCamera camera = cameraAt(place, GetParam());
        const DepthCameraFile file(camera.toJson());
        for (int i = 0; i < 8; ++i) {
            const glm::dvec3 point = place + glm::dvec3(i & 1 ? 5 : -5, i & 2 ? 5 : -5, i & 4 ? 5 : -5);
            const glm::dvec4 eye = camera.view() * glm::dvec4(point, 1.0);
            const glm::dvec4 clip = camera.projection() * eye;
            const double column = (clip.x / clip.w + 1.0) / 2.0 * pictureSize.width() - 0.5;
            const double row = (1.0 - clip.y / clip.w) / 2.0 * pictureSize.height() - 0.5;
            EXPECT_LT(glm::distance(file.point(column, row, -eye.z), point), 1e-8);
        }
    }
}

TEST_P(DepthCameraJson, SaysWhereItStands)
{
    const DepthCameraFile file(cameraAt(faraway, GetParam()).toJson());
    EXPECT_EQ(file.isParallel(), GetParam() == IProjection::Parallel);
    EXPECT_EQ(file.object["projection"].toString() == "central", GetParam() == IProjection::Central);
    EXPECT_EQ(file.eye, faraway + glm::dvec3(30, -40, 20));
    EXPECT_EQ(file.vector("target"), faraway + glm::dvec3(1, 2, 3));
    EXPECT_EQ(file.vector("up"), glm::dvec3(0.1, 0.2, 1.0));
    EXPECT_EQ(file.width, 1280);
    EXPECT_EQ(file.height, 720);
}

TEST_P(DepthCameraJson, NumbersReadBackAsTheyAre)
{
    const DepthCamera camera = cameraAt(faraway, GetParam());
    const DepthCameraFile file(camera.toJson());
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column) {
            EXPECT_EQ(file.view[row][column], camera.view()[column][row]);
            EXPECT_EQ(file.projection[row][column], camera.projection()[column][row]);
        }
}

TEST_P(DepthCameraJson, NearAndFarEncloseTheBox)
{
    const DepthCamera camera = cameraAt(faraway, GetParam());
    const DepthCameraFile file(camera.toJson());
    double nearest = 1e9, farthest = -1e9;
    for (const glm::dvec3& corner :
         gmx::BoundingBox(faraway - glm::dvec3(5.0), faraway + glm::dvec3(5.0)).getCorners()) {
        const double distance = -(camera.view() * glm::dvec4(corner, 1.0)).z;
        nearest = std::min(nearest, distance);
        farthest = std::max(farthest, distance);
    }
    EXPECT_LT(file.object["near"].toDouble(), nearest);
    EXPECT_GT(file.object["far"].toDouble(), farthest);
    EXPECT_NEAR(file.object["near"].toDouble(), nearest, 0.1);
    EXPECT_NEAR(file.object["far"].toDouble(), farthest, 0.1);
}

// What lies on the planes comes to the ends of the depth range.
TEST_P(DepthCameraJson, NearAndFarAreThePlanesOfTheProjection)
{
    const DepthCamera camera = cameraAt(glm::dvec3(0.0), GetParam());
    for (const auto& [distance, depth] :
         {std::pair(camera.nearDistance(), -1.0), {camera.farDistance(), 1.0}}) {
        const glm::dvec4 clip = camera.projection() * glm::dvec4(0.0, 0.0, -distance, 1.0);
        EXPECT_NEAR(clip.z / clip.w, depth, 1e-9);
    }
}

INSTANTIATE_TEST_SUITE_P(Projections, DepthCameraJson,
                         ::testing::Values(IProjection::Central, IProjection::Parallel),
                         [](const auto& type) {
                             return type.param == IProjection::Central ? "central" : "parallel";
                         });

TEST(DepthCameraFields, CentralOnesTellTheirFieldOfView)
{
    const QJsonObject object = DepthCameraFile(cameraAt(faraway, IProjection::Central).toJson()).object;
    EXPECT_NEAR(object["fieldOfView"].toArray()[1].toDouble(), M_PI / 4.0, 1e-12);
    EXPECT_NEAR(std::tan(object["fieldOfView"].toArray()[0].toDouble() / 2.0),
                std::tan(M_PI / 8.0) * 1280.0 / 720.0, 1e-12);
    EXPECT_FALSE(object.contains("extents"));
}

TEST(DepthCameraFields, ParallelOnesTellTheirExtents)
{
    Viewpoint viewpoint =
        Viewpoint::looking({0, 0, 10}, {0, 0, 0}, {0, 1, 0}, IProjection::Parallel, pictureSize);
    viewpoint.projection().setZoom(0.25); // model units a pixel
    const QJsonObject object =
        DepthCameraFile(cameraOf(viewpoint, gmx::BoundingBox({-1, -1, -1}, {1, 1, 1})).toJson()).object;
    EXPECT_NEAR(object["extents"].toArray()[0].toDouble(), 320.0, 1e-9);
    EXPECT_NEAR(object["extents"].toArray()[1].toDouble(), 180.0, 1e-9);
    EXPECT_FALSE(object.contains("fieldOfView"));
}

// A plane that faces the camera has no depth of its own; what single precision does to it stays between the
// planes.
TEST(DepthCameraFields, FlatBoxHasRoomBetweenItsPlanes)
{
    for (const IProjection::Projection type : {IProjection::Central, IProjection::Parallel}) {
        const DepthCamera camera =
            cameraOf(Viewpoint::looking({0, 0, 10}, {0, 0, 0}, {0, 1, 0}, type, pictureSize),
                     gmx::BoundingBox({-500, -500, 0}, {500, 500, 0}));
        EXPECT_LT(camera.nearDistance(), 10.0 - 1e-3);
        EXPECT_GT(camera.farDistance(), 10.0 + 1e-3);
    }
}
