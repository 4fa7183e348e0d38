#include "tests/gl/drawers/CallCounter.h"
#include "tests/support/GlDebug.h"
#include "tests/support/ProgramList.h"

#include <Viewer3dModule/Viewer3dModule.h>
#include <benchmarks/data/Dice.h>
#include <benchmarks/scene/MarkElement.h>
#include <benchmarks/works/addElements.h>
#include <framework/app/Application.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>

// What each item adds to a frame of the scenes that the benchmarks measure, drawn as a host's view draws
// them: bounds, culling, drawers, items. Not timed: a frame must not ask, allocate or emit anything for an
// item, and call as little as is reached.

namespace {

struct AddedByItem
{
    double calls, queries, allocations, signalCount;
};

class FrameCostTest : public ::testing::Test
{
protected:
    static constexpr int Few = 20, Many = 40;

    void SetUp() override
    {
        mapShaderPrefix();
        m_application.addExtension(&m_module);
        QDir::addSearchPath(QStringLiteral("shader"),
                            QStringLiteral(V3D_SOURCE_DIR "/tests/gl/instanced/shaders"));
    }
    /// @param add  fills the scene with so many items
    AddedByItem addedByItem(BenchScene::Drawers drawers, const std::function<void(BenchScene&, int)>& add)
    {
        const Counts few = countsOf(drawers, Few, add), many = countsOf(drawers, Many, add);
        EXPECT_GT(few.calls, 10) << "nothing is drawn";
        EXPECT_LE(many.queries, 0) << "in the whole frame";
        EXPECT_LE(many.signalCount, 0) << "in the whole frame";
        EXPECT_LE(many.allocations, 9)
            << "in the whole frame: the filter, what it knows, and what is known of programs";
        const auto each = [](int more) { return double(more) / (Many - Few); };
        return {each(many.calls - few.calls), each(many.queries - few.queries),
                each(many.allocations - few.allocations), each(many.signalCount - few.signalCount)};
    }
    static void expectAtMost(double calls, const AddedByItem& added)
    {
        EXPECT_LE(added.calls, calls);
        EXPECT_LE(added.queries, 0.0);
        EXPECT_LE(added.allocations, 0.0);
        EXPECT_LE(added.signalCount, 0.0);
    }
    /// Polylines of this width; their set lives as long as the test.
    auto lines(float width)
    {
        return [this, width](BenchScene& scene, int count) {
            m_sets.push_back(std::make_unique<LineSet>(count));
            addLines(scene, *m_sets.back(), width);
        };
    }

private:
    struct Counts
    {
        int calls, queries, allocations, signalCount;
    };
    static Counts countsOf(BenchScene::Drawers drawers, int count,
                           const std::function<void(BenchScene&, int)>& add)
    {
        BenchScene scene(View::whole(), drawers);
        const GlDebug debug(scene.scene().getContext());
        add(scene, count);
        for (int i = 0; i < 2; ++i) { // uploads, and what else first frames do
            scene.prepare();
            scene.drawFrame();
        }
        scene.prepare();
        const CallCounter counter(scene.gl());
        scene.drawFrame();
        return {counter.calls(), counter.queries(), counter.allocations() + counter.plainAllocations(),
                counter.signalCount()};
    }

    Application m_application;
    Viewer3dModule m_module;
    std::vector<std::unique_ptr<LineSet>> m_sets;
};

// The matrix, the colour, the identifier, the draw call.
TEST_F(FrameCostTest, ALineAddsFourCalls)
{
    expectAtMost(4.0, addedByItem(BenchScene::Sequential, lines(1.0f)));
    expectAtMost(4.0, addedByItem(BenchScene::Sequential, lines(5.0f)));
}

// Two matrices, the colour, the identifier, the texture unit, the draw call.
TEST_F(FrameCostTest, ABoxInTheLightAddsSixCalls)
{
    const auto boxes = [](BenchScene& scene, int count) { addBoxes(scene, BoxSet(count)); };
    expectAtMost(6.0, addedByItem(BenchScene::Sequential, boxes));
    expectAtMost(0.0, addedByItem(BenchScene::Batched, boxes));
}

TEST_F(FrameCostTest, ALineAmongOthersOfABatchAddsNothing)
{
    expectAtMost(0.0, addedByItem(BenchScene::Batched, lines(1.0f)));
    expectAtMost(0.0, addedByItem(BenchScene::Batched, lines(5.0f)));
}

TEST_F(FrameCostTest, AMarkAddsNothing)
{
    expectAtMost(0.0, addedByItem(BenchScene::Sequential, [](BenchScene& scene, int count) {
                     Dice dice;
                     std::vector<std::unique_ptr<CModelElement>> elements;
                     for (int i = 0; i < count; ++i)
                         elements.push_back(std::make_unique<MarkElement>(dice.place()));
                     scene.add(std::move(elements));
                 }));
}

} // namespace
