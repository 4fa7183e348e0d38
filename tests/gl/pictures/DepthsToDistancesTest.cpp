#include <Viewer3dModule/camera/CentralProjection.h>
#include <Viewer3dModule/camera/ParallelProjection.h>
#include <Viewer3dModule/scene/depthsToDistances.h>

#include <gtest/gtest.h>

#include <QtCore/QSizeF>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <vector>

namespace {

const QSize smallSize(5, 3);

std::vector<float> converted(std::vector<float> depths, const glm::dmat4& projection)
{
    depths.resize(15, 1.0f);
    depthsToDistances(depths.data(), smallSize, projection);
    return depths;
}

/// -Z / W of a pixel by the whole formula: the pixel's corner, rows counted down from the height.
double expected(float depth, int col, int row, const glm::dmat4& projection)
{
    const double share = depth < 0.001 ? depth / 0.001 : (depth - 0.001) / 0.999;
    const double x = 2.0 * (col / 5.0 - 0.5), y = 2.0 * ((3.0 - row) / 3.0 - 0.5);
    const glm::dvec4 place = glm::inverse(projection) * glm::dvec4(x, y, 2.0 * share - 1.0, 1.0);
    return -place.z / place.w;
}

std::vector<float> someDepths()
{
    std::vector<float> depths;
    for (int i = 0; i < 15; ++i)
        depths.push_back(0.0f + static_cast<float>(i) / 15.0f);
    depths[1] = 0.0005f;
    depths[2] = 0.001f;
    return depths;
}

void expectFormula(const glm::dmat4& projection)
{
    const std::vector<float> depths = someDepths();
    const std::vector<float> distances = converted(depths, projection);
    for (int i = 0; i < 15; ++i) {
        const double distance = expected(depths[static_cast<std::size_t>(i)], i % 5, i / 5, projection);
        // A float, of numbers up to 100 in doubles.
        EXPECT_NEAR(distances[static_cast<std::size_t>(i)], distance, 6e-8 * std::abs(distance) + 1e-12) << i;
    }
}

TEST(DepthsToDistances, TheEndsOfTheDepthRangeAreTheNearAndTheFarPlane)
{
    const glm::dmat4 projection = CentralProjection().calcProjectionMatrix(QSizeF(smallSize), 100.0, 2.0);
    // 0.001f lies 4.7e-11 above 0.001.
    const std::vector<float> distances = converted({0.001f, std::nextafter(1.0f, 0.0f)}, projection);
    EXPECT_NEAR(distances[0], 2.0f, 1e-6f);
    EXPECT_NEAR(distances[1], 100.0f, 1e-3f);
}

TEST(DepthsToDistances, ForegroundItemsHaveARangeOfTheirOwn)
{
    const glm::dmat4 projection = ParallelProjection().calcProjectionMatrix(QSizeF(smallSize), 100.0, 0.0);
    const std::vector<float> distances = converted({0.0f, 0.0005f, 0.00099f}, projection);
    EXPECT_NEAR(distances[0], 0.0f, 1e-5f);
    EXPECT_NEAR(distances[1], 50.0f, 1e-5f);
    EXPECT_NEAR(distances[2], 99.0f, 1e-5f);
}

TEST(DepthsToDistances, NothingDrawnIsNaN)
{
    const std::vector<float> distances =
        converted({1.0f, std::nextafter(1.0f, 0.0f)}, CentralProjection().calcProjectionMatrix({5, 3}, 9, 1));
    EXPECT_TRUE(std::isnan(distances[0]));
    EXPECT_FALSE(std::isnan(distances[1]));
}

TEST(DepthsToDistances, CentralProjectionsFollowTheFormula)
{
    expectFormula(CentralProjection().calcProjectionMatrix(QSizeF(smallSize), 100.0, 2.0));
}

TEST(DepthsToDistances, ParallelProjectionsFollowTheFormula)
{
    ParallelProjection projection;
    projection.setZoom(0.37);
    expectFormula(projection.calcProjectionMatrix(QSizeF(smallSize), 100.0, 0.0));
}

TEST(DepthsToDistances, OffCentreProjectionsFollowTheFormula)
{
    expectFormula(glm::frustum(-0.3, 1.1, -0.2, 0.7, 1.5, 80.0));
}

// A clip plane that is not square to the axis: the distance depends on the pixel.
TEST(DepthsToDistances, ObliqueProjectionsFollowTheFormulaPixelByPixel)
{
    glm::dmat4 projection = CentralProjection().calcProjectionMatrix(QSizeF(smallSize), 100.0, 2.0);
    projection[0][2] = 0.2;
    projection[1][2] = -0.1;
    const std::vector<float> same = converted(std::vector<float>(15, 0.5f), projection);
    EXPECT_NE(same[0], same[4]);
    EXPECT_NE(same[0], same[10]);
    expectFormula(projection);
}

TEST(DepthsToDistances, ProjectionsThatTurnTheCameraFollowTheFormula)
{
    expectFormula(CentralProjection().calcProjectionMatrix(QSizeF(smallSize), 100.0, 2.0) *
                  glm::rotate(glm::dmat4(1.0), 0.3, glm::dvec3(1, 2, 0.5)));
}

TEST(DepthsToDistances, NoPixelsAreNoWork)
{
    depthsToDistances(nullptr, QSize(0, 0), glm::dmat4(1.0));
}

} // namespace
