// What the batched drawer costs when it first sees items, when they change and when they go, an item at sizes
// that grow. Disabled in the suite; benchmarks/ compares frames.
#include "BatchedTest.h"

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <random>

namespace {

class BatchedSpeedTest : public BatchedTest
{
protected:
    static double processorSeconds()
    {
        timespec now{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return double(now.tv_sec) + 1e-9 * double(now.tv_nsec);
    }
    template <class Work>
    double microseconds(const Work& work)
    {
        const double before = processorSeconds();
        work();
        gl->glFinish();
        return 1e6 * (processorSeconds() - before);
    }
    double frame(Item3dDrawer& drawer)
    {
        return microseconds([&] { drawer.draw(view(), {}); });
    }
    void addStrips(int count)
    {
        std::vector<glm::vec3> points(32);
        for (int i = 0; i < count; ++i) {
            for (glm::vec3& point : points)
                point = 0.05f * glm::vec3(dice.point(-1.0, 1.0));
            auto item = std::make_unique<LocalStrips>();
            item->setPoints(points, {32});
            item->setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(dice.point(-1.0, 1.0))), false);
            item->setDrawer(&pair(DrawerType::Mono).batched);
            items.push_back(std::move(item));
        }
    }

    Dice dice{5};
};

TEST_F(BatchedSpeedTest, DISABLED_CostsAnItemAtSizesThatGrow)
{
    std::printf("microseconds of the processor an item; edit: a frame after one of them moved, in all\n");
    std::printf("%8s %8s %8s %8s %8s %8s %10s %10s\n", "items", "first", "again", "alone", "updated",
                "removed", "unchanged", "edit");
    target->bind();
    for (const int count : {1000, 10000, 100000}) {
        addStrips(count);
        DrawerPair& drawers = pair(DrawerType::Mono);
        const double first = frame(drawers.batched);
        double again = 1e30, alone = 1e30, edit = 1e30;
        for (int i = 0; i < 7; ++i) {
            again = std::min(again, frame(drawers.batched));
            items[7]->setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(0.01f * float(i))), false);
            edit = std::min(edit, frame(drawers.batched));
            alone = std::min(alone, frame(drawers.sequential));
        }
        for (const auto& item : items)
            drawers.batched.updateItem(item.get());
        const double updated = frame(drawers.batched);
        std::shuffle(items.begin(), items.end(), std::mt19937(1));
        const double removed = microseconds([&] {
            while (!items.empty()) {
                items.pop_back();
                if (items.size() % static_cast<std::size_t>(count / 10) == 0)
                    drawers.batched.draw(view(), {});
            }
        });
        const auto each = [count](double all) { return all / count; };
        std::printf("%8d %8.2f %8.2f %8.2f %8.2f %8.2f %10.0f %10.0f\n", count, each(first), each(again),
                    each(alone), each(updated), each(removed), again, edit);
        EXPECT_LT(edit, 1.1 * again);
        pairs.clear();
    }
}

} // namespace
