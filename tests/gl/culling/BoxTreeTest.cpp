// Boxes in a tree against a plain list of them.
#include <Viewer3dModule/scene/BoxTree.h>
#include <Viewer3dModule/scene/PictureVolume.h>

#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

class BoxTreeTest : public ::testing::Test
{
protected:
    struct Entry
    {
        gmx::BoundingBox box;
        float reach = 0.0f;
    };

    double real(double from, double to) { return std::uniform_real_distribution<double>(from, to)(m_random); }
    int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }

    gmx::BoundingBox anyBox()
    {
        if (whole(0, 9) == 0) return gmx::BoundingBox();
        const glm::dvec3 low(real(-100, 100), real(-100, 100), real(-100, 100));
        const double size = whole(0, 9) == 0 ? 80.0 : 4.0;
        return gmx::BoundingBox(low, low + glm::dvec3(real(0, size), real(0, size), real(0, size)));
    }
    PictureVolume anyVolume()
    {
        const glm::dvec3 eye(real(-150, 150), real(-150, 150), real(-150, 150));
        const glm::dvec3 at(real(-80, 80), real(-80, 80), real(-80, 80));
        const double zoom = real(2, 150);
        const glm::dmat4 projection = whole(0, 1) == 0
                                          ? glm::perspective(real(0.05, 2.0), 1.5, real(0.1, 50), 400.0)
                                          : glm::ortho(-zoom, zoom, -zoom, zoom, real(-50, 50), 300.0);
        const QRect pixels =
            whole(0, 1) == 0 ? QRect(0, 0, 300, 200) : QRect(whole(0, 250), whole(0, 150), whole(1, 50), 50);
        return PictureVolume(projection * glm::lookAt(eye, at, glm::dvec3(0.1, 0.2, 1.0)), QSize(300, 200),
                             pixels);
    }
    int add()
    {
        const int number = tree.add();
        EXPECT_EQ(list.count(number), 0u) << "given twice";
        list[number];
        return number;
    }
    void remove(int number)
    {
        tree.remove(number);
        list.erase(number);
    }
    void set(int number, const gmx::BoundingBox& box, float reach)
    {
        tree.set(number, box, reach);
        list[number] = {box, reach};
    }
    int anyNumber() { return std::next(list.begin(), whole(0, static_cast<int>(list.size()) - 1))->first; }
    void change()
    {
        switch (whole(0, 5)) {
        case 0:
        case 1:
            return set(add(), anyBox(), static_cast<float>(real(0, 40)));
        case 2:
            add();
            return;
        case 3:
            if (!list.empty()) remove(anyNumber());
            return;
        case 4:
            if (!list.empty()) set(anyNumber(), anyBox(), static_cast<float>(real(0, 40)));
            return;
        default:
            if (list.empty()) return;
            const int number = anyNumber(); // a little, as items are moved
            const Entry entry = list[number];
            const glm::dvec3 step(real(-2, 2), 0.0, real(-2, 2));
            if (entry.box.isValid())
                set(number, gmx::BoundingBox(entry.box.getMin() + step, entry.box.getMax() + step),
                    entry.reach);
        }
    }
    void check(const char* when)
    {
        const PictureVolume volume = anyVolume();
        std::vector<std::uint8_t> found;
        tree.find(volume, found);
        ASSERT_EQ(found.size(), tree.size());
        std::vector<std::uint8_t> expected(tree.size(), 0);
        gmx::BoundingBox bounds;
        for (const auto& [number, entry] : list) {
            ASSERT_LT(static_cast<std::size_t>(number), tree.size());
            bounds.unite(entry.box);
            const bool isReached =
                entry.box.isValid() && volume.reaches(entry.box, static_cast<double>(entry.reach));
            expected[static_cast<std::size_t>(number)] = isReached ? 1 : 0;
            reached += isReached;
            ++asked;
        }
        EXPECT_EQ(found, expected) << when << ", " << list.size() << " boxes";
        EXPECT_EQ(tree.bounds(), bounds) << when << ", " << list.size() << " boxes";
    }

    BoxTree tree;
    std::map<int, Entry> list;
    std::size_t reached = 0, asked = 0;

private:
    std::mt19937 m_random{8};
};

TEST_F(BoxTreeTest, IsEmptyAtFirst)
{
    check("at first");
    EXPECT_EQ(tree.size(), 0u);
    EXPECT_TRUE(tree.bounds().isNull());
}

TEST_F(BoxTreeTest, FindsWhatAPlainListFinds)
{
    for (int round = 0; round < 400; ++round) {
        for (int i = whole(0, round % 20 == 0 ? 60 : 3); i > 0; --i)
            change();
        check("after some changes");
    }
    EXPECT_GT(list.size(), 256u) << "more than two levels";
    EXPECT_GT(reached, asked / 20) << "or nothing is found";
    EXPECT_LT(reached, asked / 2) << "or nothing is left out";
}

TEST_F(BoxTreeTest, FollowsMovesOfAll)
{
    for (int i = 0; i < 5000; ++i)
        set(add(), anyBox(), static_cast<float>(real(0, 40)));
    check("as they are");
    const glm::dmat4 move =
        glm::translate(glm::scale(glm::dmat4(1.0), glm::dvec3(0.3)), glm::dvec3(90, 0, -40));
    for (auto& [number, entry] : std::map<int, Entry>(list))
        set(number, entry.box.transformed(move), entry.reach);
    for (int i = 0; i < 20; ++i)
        check("after a move of all");
}

TEST_F(BoxTreeTest, RemovesAllInAnyOrderAndGivesNumbersAgain)
{
    for (int i = 0; i < 1000; ++i)
        set(add(), anyBox(), 1.0f);
    const std::size_t size = tree.size();
    while (!list.empty()) {
        remove(anyNumber());
        if (list.size() % 50 == 0) check("while they go");
    }
    check("when all are gone");
    for (std::size_t i = 0; i < size; ++i)
        add();
    EXPECT_EQ(tree.size(), size);
    set(anyNumber(), gmx::BoundingBox(glm::dvec3(1.0), glm::dvec3(2.0)), 0.0f);
    check("when there is one again");
}

TEST_F(BoxTreeTest, TakesNoBoxThatIsNone)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    set(add(), gmx::BoundingBox(glm::dvec3(1.0), glm::dvec3(2.0)), 0.0f);
    tree.set(tree.add(), gmx::BoundingBox(glm::dvec3(nan), glm::dvec3(3.0)), 5.0f);
    tree.set(tree.add(), gmx::BoundingBox(glm::dvec3(4.0), glm::dvec3(3.0)), 5.0f);
    EXPECT_EQ(tree.bounds(), gmx::BoundingBox(glm::dvec3(1.0), glm::dvec3(2.0)));
    const PictureVolume all(glm::ortho(-9.0, 9.0, -9.0, 9.0, -9.0, 9.0), QSize(10, 10), QRect(0, 0, 10, 10));
    std::vector<std::uint8_t> found;
    tree.find(all, found);
    EXPECT_EQ(found, (std::vector<std::uint8_t>{1, 0, 0}));
}

} // namespace
