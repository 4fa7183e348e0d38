// What a volume says of boxes, against points of them that are projected one by one.
#include <Viewer3dModule/scene/PictureVolume.h>

#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

class PictureVolumeTest : public ::testing::Test
{
protected:
    static constexpr double width = 300.0, height = 200.0; // pixels

    double real(double from, double to) { return std::uniform_real_distribution<double>(from, to)(m_random); }
    bool chance() { return real(0.0, 1.0) < 0.5; }

    void look()
    {
        const glm::dvec3 eye(real(-60, 60), real(-60, 60), real(-60, 60));
        const glm::dvec3 at(real(-20, 20), real(-20, 20), real(-20, 20));
        const double zoom = real(2, 60);
        const glm::dmat4 projection = chance() ? glm::perspective(real(0.2, 2.0), 1.5, real(0.1, 30), 120.0)
                                               : glm::ortho(-zoom, zoom, -zoom, zoom, real(-50, 30), 120.0);
        toClip = projection * glm::lookAt(eye, at, glm::dvec3(0.1, 0.2, 1.0));
    }
    void take()
    {
        const glm::dvec3 low(real(-50, 50), real(-50, 50), real(-50, 50));
        const double size = chance() ? 4.0 : 60.0;
        box = gmx::BoundingBox(low, low + glm::dvec3(real(0, size), real(0, size), real(0, size)));
        const auto corners = box.getCorners();
        points.assign(corners.begin(), corners.end());
        for (int i = 0; i < 24; ++i)
            points.push_back(box.getMin() + box.getSize() * glm::dvec3(real(0, 1), real(0, 1), real(0, 1)));
    }
    PictureVolume volume(const QRect& pixels) const
    {
        return {toClip, QSize(int(width), int(height)), pixels};
    }
    glm::dvec4 clip(const glm::dvec3& point) const { return toClip * glm::dvec4(point, 1.0); }
    static glm::dvec2 pixelOf(const glm::dvec4& clip)
    {
        return {(clip.x / clip.w + 1.0) / 2.0 * width, (1.0 - clip.y / clip.w) / 2.0 * height};
    }
    /// Whether the point is seen in the pixels, or so many pixels beside them.
    bool isSeen(const glm::dvec3& point, const QRect& pixels, double reach) const
    {
        const glm::dvec4 at = clip(point);
        if (!(at.w > 0.0) || std::abs(at.z) > at.w) return false;
        const glm::dvec2 pixel = pixelOf(at);
        return pixel.x >= pixels.left() - reach && pixel.x <= pixels.right() + 1 + reach &&
               pixel.y >= pixels.top() - reach && pixel.y <= pixels.bottom() + 1 + reach;
    }
    QRect anyPixels()
    {
        if (chance()) return QRect(0, 0, int(width), int(height));
        return QRect(int(real(0, 250)), int(real(0, 150)), int(real(1, 50)), int(real(1, 50)));
    }

    glm::dmat4 toClip{1.0};
    gmx::BoundingBox box;
    std::vector<glm::dvec3> points;

private:
    std::mt19937 m_random{15};
};

TEST_F(PictureVolumeTest, ReachesWhateverIsSeen)
{
    int reached = 0, missed = 0;
    for (int i = 0; i < 4000; ++i) {
        look();
        take();
        const QRect pixels = anyPixels();
        const double reach = chance() ? 0.0 : real(0, 40);
        const bool isReached = volume(pixels).reaches(box, reach);
        const bool isAnySeen = std::any_of(points.begin(), points.end(), [&](const glm::dvec3& point) {
            return isSeen(point, pixels, reach);
        });
        ASSERT_TRUE(isReached || !isAnySeen) << "box " << i;
        ++(isReached ? reached : missed);
    }
    EXPECT_GT(reached, 400);
    EXPECT_GT(missed, 1500);
}

TEST_F(PictureVolumeTest, AReachBelowZeroTakesNothingAway)
{
    toClip = glm::dmat4(1.0);
    box = gmx::BoundingBox(glm::dvec3(0.99, -0.1, -0.1), glm::dvec3(1.5, 0.1, 0.1));
    EXPECT_TRUE(volume(QRect(0, 0, 300, 200)).reaches(box, -10.0));
}

TEST_F(PictureVolumeTest, HoldsBoxesAllOfWhichIsSeen)
{
    int held = 0;
    for (int i = 0; i < 4000; ++i) {
        look();
        take();
        const QRect pixels = anyPixels();
        const bool isAllSeen = std::all_of(points.begin(), points.end(), [&](const glm::dvec3& point) {
            return isSeen(point, pixels, 0.0);
        });
        const bool isHeld = volume(pixels).holds(box);
        ASSERT_TRUE(isHeld || !isAllSeen) << "box " << i;
        if (!isHeld) continue;
        ++held;
        for (const glm::dvec3& point : points)
            ASSERT_TRUE(isSeen(point, pixels, 0.1)) << "box " << i;
    }
    EXPECT_GT(held, 100);
}

TEST_F(PictureVolumeTest, TellsThePixelsAroundTheCorners)
{
    int told = 0, behind = 0;
    for (int i = 0; i < 4000; ++i) {
        look();
        take();
        const double reach = chance() ? 0.0 : real(0, 40);
        const QRect pixels = volume(QRect(0, 0, 300, 200)).pixelsOf(box, reach);
        const bool isBefore = std::all_of(points.begin(), points.begin() + 8,
                                          [&](const glm::dvec3& corner) { return clip(corner).w > 1e-9; });
        if (!isBefore) {
            ASSERT_TRUE(pixels.isEmpty()) << "box " << i;
            ++behind;
            continue;
        }
        glm::dvec2 low(1e9), high(-1e9);
        for (int corner = 0; corner < 8; ++corner) {
            low = glm::min(low, pixelOf(clip(points[std::size_t(corner)])));
            high = glm::max(high, pixelOf(clip(points[std::size_t(corner)])));
        }
        if (std::max(high.x - low.x, high.y - low.y) > 1e5) continue; // at the eye
        ++told;
        ASSERT_NEAR(pixels.left(), low.x - reach - 0.5, 0.5 + 1e-6) << "box " << i;
        ASSERT_NEAR(pixels.top(), low.y - reach - 0.5, 0.5 + 1e-6) << "box " << i;
        ASSERT_NEAR(pixels.right(), high.x + reach + 0.5, 0.5 + 1e-6) << "box " << i;
        ASSERT_NEAR(pixels.bottom(), high.y + reach + 0.5, 0.5 + 1e-6) << "box " << i;
    }
    EXPECT_GT(told, 1000);
    EXPECT_GT(behind, 200);
}

} // namespace
