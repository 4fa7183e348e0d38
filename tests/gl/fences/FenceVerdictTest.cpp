// What the shaders leave out, pixel by pixel, against what the fences say of the points that the pixels show.
#include "FencedScene.h"

#include "tests/support/VertexItem.h"

#include <glm/gtc/matrix_transform.hpp>

#include <cstdio>

namespace {

constexpr int verdictWidth = 56, verdictHeight = 40;

/// The plane of a flat item and the view of it: where in the scene a place of the picture lies.
class Sight
{
public:
    Sight(const PaintContext& context, const std::vector<glm::vec3>& corners)
        : m_toScene(glm::inverse(glm::dmat4(context.projection) * glm::dmat4(context.view)))
        , m_origin(corners[0])
        , m_normal(glm::cross(glm::dvec3(corners[1]) - m_origin, glm::dvec3(corners[2]) - m_origin))
    {
    }
    glm::dvec3 at(double x, double y) const
    {
        const glm::dvec2 ndc(2.0 * x / verdictWidth - 1.0, 1.0 - 2.0 * y / verdictHeight);
        const glm::dvec4 nearEnd = m_toScene * glm::dvec4(ndc, -1.0, 1.0);
        const glm::dvec4 farEnd = m_toScene * glm::dvec4(ndc, 1.0, 1.0);
        const glm::dvec3 from(nearEnd / nearEnd.w), to(farEnd / farEnd.w);
        const double t = glm::dot(m_origin - from, m_normal) / glm::dot(to - from, m_normal);
        return glm::mix(from, to, t);
    }

private:
    glm::dmat4 m_toScene;
    glm::dvec3 m_origin;
    glm::dvec3 m_normal;
};

class FenceVerdictTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        fence = std::make_unique<FenceSetter>(*project);
    }
    /// A view of the origin of the scene.
    PaintContext anyView(Dice& dice)
    {
        PaintContext context = paintContext(verdictWidth, verdictHeight);
        m_sight = dice.direction();
        const glm::dvec3 up = std::abs(m_sight.z) < 0.9 ? glm::dvec3(0, 0, 1) : glm::dvec3(1, 0, 0);
        const double distance = dice.between(30.0, 300.0);
        context.view = glm::mat4(glm::lookAt(-distance * m_sight, glm::dvec3(0.0), up));
        const double aspect = double(verdictWidth) / verdictHeight;
        if (dice.oneIn(3))
            context.projection =
                glm::mat4(glm::ortho(-25.0 * aspect, 25.0 * aspect, -25.0, 25.0, 0.1, 2000.0));
        else
            context.projection =
                glm::mat4(glm::perspective(2.0 * std::atan(25.0 / distance), aspect, 0.1, 2000.0));
        return context;
    }
    /// A square through a point near the origin that the view sees at 60 degrees at most.
    std::vector<glm::vec3> anySquare(Dice& dice)
    {
        glm::dvec3 normal = m_sight;
        do
            normal = dice.direction();
        while (std::abs(glm::dot(normal, m_sight)) < 0.5);
        const glm::dvec3 u = glm::normalize(glm::cross(normal, dice.direction()));
        const glm::dvec3 v = glm::cross(normal, u), at = dice.point(-10.0, 10.0);
        const auto corner = [&](double x, double y) { return glm::vec3(at + 100.0 * (x * u + y * v)); };
        return {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, -1), corner(1, 1), corner(-1, 1)};
    }
    /// About the origin of the scene, which is `origin` in the model, in scene units of `unit` model units.
    void setAnyFence(Dice& dice, int kind, const glm::dvec3& origin, double unit)
    {
        const glm::dvec3 about = origin + unit * dice.point(-10.0, 10.0);
        Frame frame = Frame::random(dice, about);
        const Ring ring = randomRing(dice, dice.between(3, 12), 1.0);
        if (kind == 0) {
            fence->set(about, unit * dice.between(5.0, 30.0));
        } else if (kind == 1) {
            const double away = unit * dice.between(20.0, 500.0);
            frame.eye = about - away * frame.look;
            const double end = dice.oneIn(3) ? 0.0 : away + unit * dice.between(-5.0, 20.0);
            fence->set(frustum(frame, ring, away - unit * dice.between(2.0, 20.0), end, 25.0 * unit / away));
        } else {
            Ring larger;
            for (const glm::dvec2& point : ring)
                larger.push_back(25.0 * unit * point);
            frame.eye = about - unit * dice.between(0.0, 15.0) * frame.look;
            fence->set(prism(frame, larger, dice.oneIn(3) ? 0.0 : unit * dice.between(5.0, 30.0)));
        }
        ASSERT_FALSE(fence->item().empty());
    }
    /// Whether all places within a pixel of this one get the same answer; they are asked at some of them.
    bool isDecided(const Sight& sight, int x, int y, bool verdict, int steps)
    {
        for (int dy = -steps; dy <= steps; ++dy)
            for (int dx = -steps; dx <= steps; ++dx)
                if (isInside(sight, x + 0.5 + double(dx) / steps, y + 0.5 + double(dy) / steps) != verdict)
                    return false;
        return true;
    }
    bool isInside(const Sight& sight, double x, double y)
    {
        return fence->fence().contains(scene->mapToModel(sight.at(x, y)));
    }

    std::unique_ptr<FenceSetter> fence;

private:
    glm::dvec3 m_sight{0.0};
};

TEST_F(FenceVerdictTest, IsThatOfTheFencesOwnClasses)
{
    constexpr int count = 200;
    int compared = 0, inside = 0, closeToBorder = 0, differing = 0;
    std::vector<QImage> wholes;
    // First all without a fence, then all with: programs are built anew when a fence comes or goes.
    for (int run = 0; run < 2 * count; ++run) {
        const int i = run % count, kind = 3 * i / count;
        Dice dice(unsigned(100 + i));
        const double unit = i % 4 < 2 ? 1.0 : 4.0;
        const glm::dvec3 origin = i % 2 == 0 ? glm::dvec3(0.0) : farAway;
        scene->setModelToSceneTransform(
            glm::translate(glm::scale(glm::dmat4(1.0), glm::dvec3(1.0 / unit)), -origin));
        const PaintContext context = anyView(dice);
        const std::vector<glm::vec3> corners = anySquare(dice);
        auto made = std::make_unique<VertexItem>(GL_TRIANGLES, corners);
        const VertexItem* item = made.get();
        scene->addLocalItem(std::move(made));
        if (run >= count) setAnyFence(dice, kind, origin, unit);
        const QImage picture = drawFrame(context);
        scene->deleteLocalItem(item);
        if (run < count) {
            wholes.push_back(picture);
            continue;
        }
        const Sight sight(context, corners);
        for (int y = 0; y < verdictHeight; ++y)
            for (int x = 0; x < verdictWidth; ++x) {
                const bool isDrawn = qRed(picture.pixel(x, y)) != 0;
                if (qRed(wholes[std::size_t(i)].pixel(x, y)) == 0) {
                    ASSERT_FALSE(isDrawn);
                    continue;
                }
                const bool verdict = isInside(sight, x + 0.5, y + 0.5);
                ++compared;
                inside += verdict;
                if (isDrawn == verdict) continue;
                if (!isDecided(sight, x, y, verdict, 1) || !isDecided(sight, x, y, verdict, 12)) {
                    ++closeToBorder;
                    continue;
                }
                ++differing;
                ADD_FAILURE() << "fence " << i << ", pixel " << x << ", " << y;
                if (differing > 9) return;
            }
    }
    std::printf(
        "%d fences: %d pixels compared, %d inside, %d differ within a pixel of the border, %d others\n",
        count, compared, inside, closeToBorder, differing);
    EXPECT_GT(compared, count * verdictWidth * verdictHeight / 2);
    EXPECT_GT(inside, compared / 12);
    EXPECT_LT(inside, compared * 7 / 8);
    EXPECT_LT(closeToBorder, compared / 2000);
}

// The even-odd rule where an edge's end lies on a pixel's row, and what lies on edges: the left and lower
// ones are inside, the right and upper ones are not.
TEST_F(FenceVerdictTest, EdgesAndCornersBelongToOneSide)
{
    PaintContext context = paintContext(8, 8); // pixel centres at odd eighths
    scene->addLocalItem(std::make_unique<VertexItem>(GL_TRIANGLES, squareVertices(-1, -1, 1, 1)));
    Frame frame;
    frame.eye = {0.0, 0.0, -1.0};
    const double low = -0.625, high = 0.375;
    fence->set(prism(frame, closed({{low, low}, {high, low}, {high, high}, {low, high}}), 0.0));
    const QImage image = drawFrame(context);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const double px = (x + 0.5) / 4.0 - 1.0, py = 1.0 - (y + 0.5) / 4.0;
            const bool expected = px >= low && px < high && py >= low && py < high;
            EXPECT_EQ(qRed(image.pixel(x, y)) != 0, expected) << px << ", " << py;
            EXPECT_EQ(fence->fence().contains({px, py, 0.0}), expected);
        }
}

TEST_F(FenceVerdictTest, EndsOfDepthBelongToTheFence)
{
    const PaintContext context = paintContext(8, 8);
    Frame frame;
    const auto covers = [&](float z) {
        auto item = std::make_unique<VertexItem>(GL_TRIANGLES, squareVertices(-1, -1, 1, 1, z));
        const VertexItem* made = item.get();
        scene->addLocalItem(std::move(item));
        const bool isDrawn = qRed(drawFrame(context).pixel(3, 3)) != 0;
        scene->deleteLocalItem(made);
        return isDrawn;
    };
    for (const bool isPrism : {true, false}) {
        SCOPED_TRACE(isPrism);
        frame.eye = {0.0, 0.0, isPrism ? -0.5 : -1.5}; // both begin at z = -0.5 and end at z = 0.25
        isPrism ? fence->set(prism(frame, square(4.0), 0.75))
                : fence->set(frustum(frame, square(4.0), 1.0, 1.75, 1.0));
        EXPECT_FALSE(covers(-0.5001f));
        EXPECT_TRUE(covers(-0.5f));
        EXPECT_TRUE(covers(0.25f));
        EXPECT_FALSE(covers(0.2501f));
        isPrism ? fence->set(prism(frame, square(4.0), -1.0))
                : fence->set(frustum(frame, square(4.0), 1.0, 1.0, 1.0)); // without end
        EXPECT_FALSE(covers(-0.5001f));
        EXPECT_TRUE(covers(0.99f));
    }
    frame.eye = glm::dvec3(0.0);
    fence->set(frustum(frame, square(4.0), 0.0, 0.0, 1.0)); // nothing is seen at the eye and behind it
    EXPECT_FALSE(covers(0.0f));
    EXPECT_FALSE(covers(-0.5f));
    EXPECT_TRUE(covers(0.25f));
}

TEST_F(FenceVerdictTest, SpheresOfOddRadii)
{
    const PaintContext context = paintContext(9, 9); // a pixel's centre lies at the origin
    scene->addLocalItem(std::make_unique<VertexItem>(GL_TRIANGLES, squareVertices(-1, -1, 1, 1)));
    const auto pixels = [&](double radius) {
        fence->set(glm::dvec3(0.0), radius);
        const QImage image = drawFrame(context);
        int count = 0;
        for (int i = 0; i < 81; ++i)
            count += qRed(image.pixel(i % 9, i / 9)) != 0;
        return count;
    };
    EXPECT_EQ(pixels(1e-6), 1); // its centre, which interpolation meets nearly
    EXPECT_EQ(pixels(0.23), 5);
    EXPECT_EQ(pixels(-1.0), 0);
    EXPECT_EQ(pixels(std::nan("")), 0);
    EXPECT_EQ(pixels(2.0), 81);
}

} // namespace
