#include "DepthMap.h"
#include "RayCaster.h"
#include "Shapes.h"
#include "SolidsTest.h"

#include <Viewer3dModule/camera/CentralProjection.h>
#include <Viewer3dModule/camera/ParallelProjection.h>
#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>

#include <QtCore/QSizeF>
#include <QtGui/QOpenGLContext>

#include <algorithm>
#include <cstdio>
#include <string>
#include <tuple>

namespace {

const glm::dvec3 geodetic(2.7e6, 1.2e6, 431.0);

/// Depth maps in model units, and what they may differ by from what a ray caster finds.
class DepthMapAccuracyTest : public SolidsTest
{
protected:
    void SetUp() override
    {
        SolidsTest::SetUp();
        GLuint texture = 0;
        gl->glGenTextures(1, &texture);
        gl->glBindTexture(GL_TEXTURE_2D, texture);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, 4, 4, 0, GL_DEPTH_COMPONENT, GL_FLOAT,
                         nullptr);
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_DEPTH_SIZE, &depthBits);
        gl->glDeleteTextures(1, &texture);
        gl->glGetIntegerv(GL_SUBPIXEL_BITS, &subpixelBits);
        ASSERT_GE(depthBits, 24);
        ASSERT_GE(subpixelBits, 4);
    }

    glm::dmat4 projectionOf(const TestCamera& camera) const
    {
        const double scale = sceneScale();
        const QSizeF size(camera.width, camera.height);
        if (camera.isParallel) {
            ParallelProjection projection;
            projection.setZoom(camera.pixel * scale);
            return projection.calcProjectionMatrix(size, camera.farDistance * scale,
                                                   camera.nearDistance * scale);
        }
        CentralProjection projection;
        projection.setZoom(1.0 / std::tan(camera.fov)); // which is tan(45 degrees) / tan(fov)
        return projection.calcProjectionMatrix(size, camera.farDistance * scale, camera.nearDistance * scale);
    }

    /// The map of the item, distances in scene units.
    QImage map(SolidItem* item, const TestCamera& camera) const
    {
        SceneDepthMapGenerator generator(QSize(camera.width, camera.height));
        return generator.generate({item}, viewToScene(*scene, camera.eye, camera.target, camera.up),
                                  projectionOf(camera));
    }

    /// What a distance may be off by, model units, computed beforehand.
    ///
    /// The depth buffer: four steps of 2^-B of the depth range, B being its bits but no more than the 24 that
    /// the floats which depths are interpolated in resolve near 1. Half a step is rounding to the buffer, the
    /// others are the roundings of the projection (matrix entries, product, division by w) and of the
    /// interpolation. A step is the wider the farther away: (f - n) / 0.999 * 2^-B in a parallel projection,
    /// times d^2 / (f n) in a central one.
    double depthTolerance(const TestCamera& camera, double distance) const
    {
        const double step = std::ldexp(1.0, -std::min(depthBits, 24)) / 0.999;
        const double range = camera.farDistance - camera.nearDistance;
        const double widening =
            camera.isParallel ? 1.0 : distance * distance / (camera.farDistance * camera.nearDistance);
        return 4.0 * step * range * widening;
    }
    /// What a point that is drawn may be off by, model units: coordinates and matrices are floats, so each of
    /// some four products and sums rounds by 2^-24 of the largest number that takes part, which is a scene
    /// coordinate of the content or of the eye.
    double pointTolerance(const TestCamera& camera) const
    {
        const gmx::BoundingBox box = scene->getBounds();
        const double largest = std::max({glm::length(box.getMin()), glm::length(box.getMax()),
                                         glm::length(scene->mapFromModel(camera.eye))});
        return 4.0 * std::ldexp(largest, -24) / sceneScale();
    }
    /// How far beside its place a pixel may look, pixels: rasterisers round places to their sub-pixels, 2^-8
    /// of a pixel for most of them, and the points themselves may be off.
    double placeTolerance(const TestCamera& camera, double distance) const
    {
        const double pixel =
            camera.isParallel ? camera.pixel : distance * std::tan(camera.fov / 2.0) / (camera.height / 2.0);
        return std::ldexp(1.0, -subpixelBits) + pointTolerance(camera) / pixel;
    }

    GLint depthBits = 0; ///< that the driver gives the depth buffer of a map
    GLint subpixelBits = 0;
};

// --- against the ray caster

enum class Shape { Sphere, Box, Triangles };

std::vector<glm::vec3> cornersOf(Shape shape)
{
    switch (shape) {
    case Shape::Sphere:
        return shapes::sphere(5.0, 20, 10);
    case Shape::Box:
        return shapes::box(glm::vec3(5, 3, 4));
    case Shape::Triangles:
        return shapes::randomTriangles(60, 5.0f);
    }
    return {};
}

/// Parallel or central, tilted or along -z, at the origin or at geodetic coordinates.
using Case = std::tuple<Shape, bool, bool, bool>;

class RayCastTest : public DepthMapAccuracyTest, public ::testing::WithParamInterface<Case>
{
protected:
    static TestCamera cameraOf(const glm::dvec3& origin, bool isParallel, bool isTilted)
    {
        TestCamera camera;
        const glm::dvec3 away = isTilted ? glm::dvec3(11, -13, 9) : glm::dvec3(0, 0, 20);
        camera.eye = origin + away;
        camera.target = origin + (isTilted ? glm::dvec3(0.5, 0.25, -0.5) : glm::dvec3(0.0));
        camera.up = isTilted ? glm::dvec3(0.1, 0.2, 1.0) : glm::dvec3(0, 1, 0);
        camera.isParallel = isParallel;
        camera.pixel = 0.15;
        camera.nearDistance = 5.0;
        camera.farDistance = 40.0;
        return camera;
    }
    /// The hits at a pixel's centre and about it at the places that the pixel may be looking at.
    std::vector<Hit> hitsAt(const RayCaster& caster, const TestCamera& camera, int x, int y) const
    {
        const double reach = placeTolerance(camera, camera.nearDistance);
        std::vector<Hit> hits;
        for (const glm::dvec2& offset : {glm::dvec2(0, 0), glm::dvec2(reach, 0), glm::dvec2(-reach, 0),
                                         glm::dvec2(0, reach), glm::dvec2(0, -reach)})
            hits.push_back(caster.cast(rayThrough(camera, x + 0.5 + offset.x, y + 0.5 + offset.y),
                                       camera.nearDistance, camera.farDistance));
        return hits;
    }
};

bool agree(const std::vector<Hit>& hits)
{
    return std::all_of(hits.begin(), hits.end(),
                       [&](const Hit& hit) { return hit.triangle == hits[0].triangle; });
}

TEST_P(RayCastTest, EveryPixelWhoseNeighboursAgreeHasItsDistance)
{
    const auto [shape, isParallel, isTilted, isGeodetic] = GetParam();
    const glm::dvec3 origin = isGeodetic ? geodetic : glm::dvec3(0.0);
    const std::vector<glm::vec3> corners = cornersOf(shape);
    SolidItem* item = add(corners, Qt::white, First, origin);
    const TestCamera camera = cameraOf(origin, isParallel, isTilted);
    const QImage image = map(item, camera);
    ASSERT_EQ(image.size(), QSize(camera.width, camera.height));

    const RayCaster caster(corners, origin);
    int compared = 0, covered = 0;
    double worst = 0.0, worstShare = 0.0;
    for (int y = 0; y < camera.height; ++y)
        for (int x = 0; x < camera.width; ++x) {
            const std::vector<Hit> hits = hitsAt(caster, camera, x, y);
            covered += hits[0].triangle >= 0;
            if (!agree(hits)) continue;
            const double distance = static_cast<double>(distanceAt(image, x, y)) / sceneScale();
            ASSERT_EQ(std::isnan(distance), hits[0].triangle < 0) << x << ' ' << y;
            if (std::isnan(distance)) continue;
            double tolerance = depthTolerance(camera, hits[0].distance) + pointTolerance(camera);
            double slope = 0.0;
            for (const Hit& hit : hits)
                slope = std::max(slope, std::abs(hit.distance - hits[0].distance));
            tolerance += slope;
            const double error = std::abs(distance - hits[0].distance);
            ASSERT_LE(error, tolerance) << x << ' ' << y;
            worst = std::max(worst, error);
            worstShare = std::max(worstShare, error / tolerance);
            ++compared;
        }
    EXPECT_GT(covered, camera.width * camera.height / 10);
    EXPECT_GT(compared, covered / 2);
    std::printf("%d of %d pixels, largest error %.2g m, at most %.2f of what is allowed\n", compared, covered,
                worst, worstShare);
}

std::string nameOf(const ::testing::TestParamInfo<Case>& info)
{
    const auto [shape, isParallel, isTilted, isGeodetic] = info.param;
    const char* const names[] = {"Sphere", "Box", "Triangles"};
    return std::string(names[static_cast<int>(shape)]) + (isParallel ? "Parallel" : "Central") +
           (isTilted ? "Tilted" : "Straight") + (isGeodetic ? "Geodetic" : "Local");
}

INSTANTIATE_TEST_SUITE_P(, RayCastTest,
                         ::testing::Combine(::testing::Values(Shape::Sphere, Shape::Box, Shape::Triangles),
                                            ::testing::Bool(), ::testing::Bool(), ::testing::Bool()),
                         nameOf);

// --- a plane

/// Extent of the plane in metres, tilted or not, at geodetic coordinates or not.
class PlaneTest : public DepthMapAccuracyTest,
                  public ::testing::WithParamInterface<std::tuple<double, bool, bool>>
{
};

// One model unit is a metre. The camera looks at the middle of the plane, square to it, from 10 m.
TEST_P(PlaneTest, IsTenMetresAwayToATenthOfAMillimetre)
{
    const auto [extent, isTilted, isGeodetic] = GetParam();
    const glm::dvec3 origin = isGeodetic ? geodetic : glm::dvec3(0.0);
    const glm::dvec3 normal = glm::normalize(isTilted ? glm::dvec3(0.3, -0.5, 0.6) : glm::dvec3(0, 0, 1));
    const glm::dvec3 across = glm::normalize(glm::cross(glm::dvec3(0.1, 1.0, 0.2), normal));
    const glm::dvec3 along = glm::cross(normal, across);
    const auto at = [&, half = extent / 2.0](double s, double t) {
        return glm::vec3(half * s * across + half * t * along);
    };
    const glm::vec3 a = at(-1, -1), b = at(1, -1), c = at(1, 1), d = at(-1, 1);
    SolidItem* item = add({a, b, c, a, c, d}, Qt::white, First, origin);

    TestCamera camera;
    camera.eye = origin + 10.0 * normal;
    camera.target = origin;
    camera.up = along;
    camera.width = 160;
    camera.height = 120;
    camera.fov = extent < 10.0 ? 0.07 : 0.7853981633974483; // the plane fills the raster
    const QImage image = map(item, camera);
    ASSERT_EQ(coveredCount(image), 160 * 120);
    double worst = 0.0;
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 160; ++x)
            worst =
                std::max(worst, std::abs(static_cast<double>(distanceAt(image, x, y)) / sceneScale() - 10.0));
    EXPECT_LT(worst, 1e-4);
    std::printf("largest error %.2g m\n", worst);
}

std::string planeName(const ::testing::TestParamInfo<std::tuple<double, bool, bool>>& info)
{
    const auto [extent, isTilted, isGeodetic] = info.param;
    return std::string(extent < 10.0 ? "OneMetre" : "OneKilometre") + (isTilted ? "Tilted" : "Straight") +
           (isGeodetic ? "Geodetic" : "Local");
}

INSTANTIATE_TEST_SUITE_P(, PlaneTest,
                         ::testing::Combine(::testing::Values(1.0, 1000.0), ::testing::Bool(),
                                            ::testing::Bool()),
                         planeName);

// --- a sphere

// A million triangles inscribed in a sphere of 5 m, seen from 20 m from its middle. A facet lies at most
// 5 m * (1 - cos(pi / 1024)) * 2 = 47 micrometres within the sphere; a ray that meets it at an angle finds it
// 1 / cos of that later.
class SphereTest : public DepthMapAccuracyTest
{
protected:
    struct Place
    {
        double distance = std::numeric_limits<double>::quiet_NaN(); // of the sphere; NaN beside it
        double facing = 0.0; // cosine of the angle between the ray and the sphere's normal
    };
    static TestCamera camera()
    {
        TestCamera camera;
        camera.eye = geodetic + glm::dvec3(12, -16, 0);
        camera.target = geodetic;
        camera.up = glm::dvec3(0, 0, 1);
        camera.width = 640;
        camera.height = 480;
        camera.farDistance = 40.0;
        return camera;
    }
    static Place sphereAt(const TestCamera& camera, double x, double y)
    {
        const Ray ray = rayThrough(camera, x, y);
        const glm::dvec3 toEye = ray.origin - geodetic;
        const double a = glm::dot(ray.direction, ray.direction), b = glm::dot(ray.direction, toEye);
        const double root = std::sqrt(b * b - a * (glm::dot(toEye, toEye) - 25.0));
        const Place place{(-b - root) / a, 0.0};
        const glm::dvec3 normal = (toEye + place.distance * ray.direction) / 5.0;
        return {place.distance, -glm::dot(normal, ray.direction) / std::sqrt(a)};
    }
    /// How many of a pixel and its eight neighbours see the sphere.
    static int seenAround(const TestCamera& camera, int x, int y)
    {
        int seen = 0;
        for (int i = 0; i < 9; ++i)
            seen += !std::isnan(sphereAt(camera, x + i % 3 - 0.5, y + i / 3 - 0.5).distance);
        return seen;
    }
    double tolerance(const TestCamera& camera, int x, int y) const
    {
        const Place place = sphereAt(camera, x + 0.5, y + 0.5);
        const double reach = placeTolerance(camera, place.distance);
        const double slope =
            std::max(std::abs(sphereAt(camera, x + 0.5 + reach, y + 0.5).distance - place.distance),
                     std::abs(sphereAt(camera, x + 0.5, y + 0.5 + reach).distance - place.distance));
        return depthTolerance(camera, place.distance) + (pointTolerance(camera) + 47e-6) / place.facing +
               2.0 * slope;
    }
};

TEST_F(SphereTest, IsItsDistanceAway)
{
    SolidItem* item = add(shapes::sphere(5.0, 1024, 512), Qt::white, First, geodetic);
    const TestCamera camera = SphereTest::camera();
    const QImage image = map(item, camera);
    double largest = 0.0, sum = 0.0;
    int count = 0;
    for (int y = 0; y < camera.height; ++y)
        for (int x = 0; x < camera.width; ++x) {
            const int seen = seenAround(camera, x, y);
            const double distance = static_cast<double>(distanceAt(image, x, y)) / sceneScale();
            if (seen == 0) {
                ASSERT_TRUE(std::isnan(distance)) << x << ' ' << y;
            }
            if (seen < 9) continue;
            const double error = std::abs(distance - sphereAt(camera, x + 0.5, y + 0.5).distance);
            ASSERT_LE(error, tolerance(camera, x, y)) << x << ' ' << y;
            largest = std::max(largest, error);
            sum += error;
            ++count;
        }
    EXPECT_GT(count, 50000);
    std::printf("%d pixels, largest error %.3g m, mean error %.3g m, depth buffer of %d bits\n", count,
                largest, sum / count, depthBits);
}

} // namespace
