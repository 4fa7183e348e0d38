#include "RecordingArchive.h"

#include <Viewer3dModule/camera/CentralProjection.h>

#include <framework/ksp/CFileException.h>
#include <framework/ksp/CQtArchive.h>

#include <QtCore/QSizeF>

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace {

constexpr double degree = 3.14159265358979323846 / 180.0;

CentralProjection centralOf(double fov)
{
    CentralProjection projection;
    projection.setZoom(1.0 / std::tan(fov));
    return projection;
}

TEST(CentralProjection, StartsAt45Degrees)
{
    const CentralProjection projection;
    EXPECT_EQ(projection.getType(), IProjection::Central);
    EXPECT_EQ(int(IProjection::Projection::Central), 1);
    EXPECT_DOUBLE_EQ(projection.getFov(), 0.78539816339744830962);
    EXPECT_EQ(projection.getZoom(), 1.0);
}

TEST(CentralProjection, ZoomIsTheRatioOfTangents)
{
    CentralProjection projection;
    projection.setZoom(2.0);
    EXPECT_DOUBLE_EQ(projection.getFov(), 0.46364760900080611621); // atan(1/2)
    EXPECT_DOUBLE_EQ(projection.getZoom(), 2.0);
    projection.setZoom(0.25);
    EXPECT_DOUBLE_EQ(projection.getFov(), 1.3258176636680324651); // atan(4)
    EXPECT_DOUBLE_EQ(projection.getZoom(), 0.25);
}

TEST(CentralProjection, StepsAreTwoDegrees)
{
    CentralProjection projection;
    projection.zoomIn();
    EXPECT_NEAR(projection.getFov(), 43.0 * degree, 1e-15);
    projection.zoomOut();
    projection.zoomOut();
    EXPECT_NEAR(projection.getFov(), 47.0 * degree, 1e-15);
}

TEST(CentralProjection, ZoomInStopsOnceItIsAtTenDegreesOrBelow)
{
    CentralProjection projection = centralOf(10.5 * degree);
    projection.zoomIn();
    EXPECT_NEAR(projection.getFov(), 8.5 * degree, 1e-14); // not clamped
    const double fov = projection.getFov();
    projection.zoomIn();
    EXPECT_EQ(projection.getFov(), fov);
    projection.zoom(-0.01);
    EXPECT_EQ(projection.getFov(), fov);
    projection.zoom(0.01);
    EXPECT_EQ(projection.getFov(), fov + 0.01);
}

TEST(CentralProjection, ZoomOutStopsOnceItIsAt85DegreesOrAbove)
{
    CentralProjection projection = centralOf(84.5 * degree);
    projection.zoomOut();
    EXPECT_NEAR(projection.getFov(), 86.5 * degree, 1e-13);
    const double fov = projection.getFov();
    projection.zoomOut();
    EXPECT_EQ(projection.getFov(), fov);
    projection.zoomIn();
    EXPECT_NEAR(projection.getFov(), 84.5 * degree, 1e-13);
}

TEST(CentralProjection, ZoomMayEndBeyondTheBoundAndIsRefusedThere)
{
    CentralProjection projection = centralOf(84.0 * degree);
    projection.zoom(0.5);
    EXPECT_NEAR(projection.getFov(), 84.0 * degree + 0.5, 1e-13);
    const double fov = projection.getFov();
    projection.zoom(0.5);
    EXPECT_EQ(projection.getFov(), fov);
    projection.zoom(-0.25);
    EXPECT_DOUBLE_EQ(projection.getFov(), fov - 0.25);
}

TEST(CentralProjection, ZoomByNothingDoesNothing)
{
    CentralProjection projection;
    projection.zoom(0.0);
    projection.zoom(std::nan(""));
    EXPECT_EQ(projection.getFov(), CentralProjection().getFov());
}

TEST(CentralProjection, MatrixFollowsItsFormula)
{
    const double fovs[] = {10.0, 45.0, 60.0, 84.0};
    for (const double fov : fovs) {
        SCOPED_TRACE(fov);
        const double zFar = 5000.0;
        const double zNear = 0.25;
        const glm::dmat4 m = centralOf(fov * degree).calcProjectionMatrix(QSizeF(1280.0, 720.0), zFar, zNear);
        const double t = std::tan(fov * degree / 2.0);
        double expected[4][4] = {};
        expected[0][0] = 720.0 / (1280.0 * t);
        expected[1][1] = 1.0 / t;
        expected[2][2] = (zFar + zNear) / (zNear - zFar);
        expected[2][3] = -1.0;
        expected[3][2] = 2.0 * zFar * zNear / (zNear - zFar);
        for (int column = 0; column < 4; ++column) {
            for (int row = 0; row < 4; ++row) {
                EXPECT_NEAR(m[column][row], expected[column][row],
                            1e-12 * (1.0 + std::abs(expected[column][row])));
            }
        }
    }
}

TEST(CentralProjection, MapsTheNearPlaneToMinusOneAndTheFarPlaneToOne)
{
    const glm::dmat4 m = CentralProjection().calcProjectionMatrix(QSizeF(200.0, 100.0), 100.0, 2.0);
    const glm::dvec4 nearPoint = m * glm::dvec4(0.0, 0.0, -2.0, 1.0);
    const glm::dvec4 farPoint = m * glm::dvec4(0.0, 0.0, -100.0, 1.0);
    EXPECT_NEAR(nearPoint.z / nearPoint.w, -1.0, 1e-14);
    EXPECT_NEAR(farPoint.z / farPoint.w, 1.0, 1e-14);
    // Half of 45 degrees above the line of sight lies the upper edge.
    const glm::dvec4 edge = m * glm::dvec4(0.0, 10.0 * std::tan(22.5 * degree), -10.0, 1.0);
    EXPECT_NEAR(edge.y / edge.w, 1.0, 1e-14);
}

TEST(CentralProjection, ViewportWithoutHeightHasAnInfiniteAspect)
{
    const glm::dmat4 m = CentralProjection().calcProjectionMatrix(QSizeF(100.0, 0.0), 10.0, 1.0);
    EXPECT_EQ(m[0][0], 0.0); // 1 / infinity
    EXPECT_NEAR(m[1][1], 1.0 / std::tan(22.5 * degree), 1e-14);
}

TEST(CentralProjection, StoresTheFieldOfViewOnly)
{
    CentralProjection projection;
    projection.setZoom(2.0);
    RecordingArchive archive;
    projection.serialize(archive);
    EXPECT_EQ(archive.steps, (std::vector<std::string>{"begin", "double", "end 1", "finish"}));
    EXPECT_EQ(archive.doubles, (std::vector<double>{projection.getFov()}));
}

TEST(CentralProjection, ComesBackFromAnArchiveAndNotFromATruncatedOne)
{
    CentralProjection projection;
    projection.setZoom(3.0);
    CQtArchive storing;
    projection.serialize(storing);
    const QByteArray bytes = storing.data();

    CentralProjection other;
    for (int size = 0; size < bytes.size(); ++size) {
        EXPECT_THROW(
            {
                CQtArchive archive(bytes.left(size));
                other.serialize(archive);
            },
            ksp::CFileException);
        EXPECT_EQ(other.getFov(), CentralProjection().getFov());
    }
    CQtArchive archive(bytes);
    other.serialize(archive);
    EXPECT_EQ(other.getFov(), projection.getFov());
}

TEST(CentralProjection, ClonesCopiesAndMoves)
{
    CentralProjection projection;
    projection.setZoom(3.0);
    const std::unique_ptr<IProjection> clone = projection.clone();
    EXPECT_EQ(clone->getType(), IProjection::Central);
    EXPECT_EQ(clone->getZoom(), projection.getZoom());
    clone->zoomIn(); // the step and the bounds came along, and the original stays
    EXPECT_NEAR(static_cast<const CentralProjection&>(*clone).getFov(), projection.getFov() - 2.0 * degree,
                1e-15);

    CentralProjection copy;
    copy = projection;
    EXPECT_EQ(copy.getFov(), projection.getFov());
    const CentralProjection moved(std::move(copy));
    EXPECT_EQ(moved.getFov(), projection.getFov());
}

} // namespace
