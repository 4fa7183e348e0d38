#include "BatchedTest.h"

#include "tests/support/GlCalls.h"
#include "tests/support/GlObjects.h"
#include "tests/support/ImageCheck.h"

#include <Viewer3dModule/drawables/SliceAllocator.h>
#include <Viewer3dModule/drawers/CompositeDrawer.h>

#include <QtGui/QOffscreenSurface>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <random>

namespace {

/// A tetrahedron with light.
std::unique_ptr<MeshNode3d> litBody(const QColor& color)
{
    MeshData data;
    data.positions = {{-0.5f, -0.5f, -0.5f}, {0.5f, -0.5f, 0.5f}, {-0.5f, 0.5f, 0.5f}, {0.5f, 0.5f, -0.5f}};
    data.indices = {0, 1, 2, 0, 3, 1, 0, 2, 3, 1, 3, 2};
    MeshData::Part part;
    part.indexCount = 12;
    part.color = color;
    data.parts = {part};
    return std::make_unique<MeshNode3d>(std::move(data));
}

class BatchedItem3dDrawerTest : public BatchedTest
{
protected:
    /// As many lines as a run needs, from the bottom of the view to its top.
    void addLines(int count, int type = DrawerType::Mono)
    {
        for (int i = 0; i < count; ++i)
            addLine(type, i + 1, -1.0f + (2.0f * float(i) + 1.0f) / float(count));
    }
    ToldItem& told(std::size_t index) { return dynamic_cast<ToldItem&>(*items[index]); }
    BatchedItem3dDrawer& batched(int type = DrawerType::Mono) { return pair(type).batched; }
    /// Bytes that a pass uploads.
    std::size_t uploads(const PaintContext& context, int type = DrawerType::Mono,
                        const Item3dDrawer::Filter& filter = {})
    {
        GlCalls calls(*gl);
        batched(type).draw(context, filter);
        return calls.uploadedBytes();
    }
    QImage picture() { return drawn(batched(), view()).images[0]; }
};

TEST_F(BatchedItem3dDrawerTest, DrawsItemsTogetherInTheirColours)
{
    addLines(9);
    told(4).setPen(QPen(QColor(200, 100, 50)));
    const QImage image = picture();
    EXPECT_EQ(countPixels(image, QColor(Qt::white)), 8 * Size.width());
    EXPECT_EQ(countPixels(image, QColor(200, 100, 50)), Size.width());
    EXPECT_EQ(image.pixelColor(12, 9), QColor(200, 100, 50));
    EXPECT_EQ(batched().drawnTogether(), 9u);
    EXPECT_EQ(told(4).draws, 0);
}

TEST_F(BatchedItem3dDrawerTest, ShortRunsAreDrawnOneByOne)
{
    addLines(7);
    picture();
    EXPECT_EQ(batched().drawnTogether(), 0u);
    EXPECT_EQ(told(0).draws, 1);
    addLines(1);
    picture();
    EXPECT_EQ(batched().drawnTogether(), 8u);
    batched().setLeastRun(9);
    picture();
    EXPECT_EQ(batched().drawnTogether(), 8u);
}

TEST_F(BatchedItem3dDrawerTest, AnUnchangedPassUploadsNothing)
{
    addLines(20);
    EXPECT_GT(uploads(view()), 0u);
    EXPECT_EQ(uploads(view()), 0u);
    PaintContext selection = view();
    const auto odd = [](Drawable3dItem* item) { return dynamic_cast<ToldItem&>(*item).getId() % 2 != 0; };
    batched().setLeastRun(2);
    uploads(view(), DrawerType::Mono, odd);
    for (int frame = 0; frame < 3; ++frame) { // passes in turns, as a frame has them
        EXPECT_EQ(uploads(view()), 0u);
        EXPECT_EQ(uploads(view(), DrawerType::Mono, odd), 0u);
    }
}

TEST_F(BatchedItem3dDrawerTest, AnEditRewritesOneRecord)
{
    addLines(100);
    picture();
    constexpr std::size_t record = 100;
    told(50).setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(0.1f, 0, 0)), false);
    EXPECT_EQ(uploads(view()), record);
    told(20).highlighted = true;
    EXPECT_EQ(uploads(view()), record);
    told(70).setPen(QPen(Qt::red));
    EXPECT_EQ(uploads(view()), record);
    told(70).highlighted = true;
    told(3).setTransform(glm::scale(glm::mat4(1.0f), glm::vec3(0.5f)), false);
    EXPECT_EQ(uploads(view()), 2 * record);
    EXPECT_EQ(uploads(view()), 0u);
    EXPECT_EQ(told(50).descriptions, 1);
    EXPECT_EQ(told(70).descriptions, 2);
}

TEST_F(BatchedItem3dDrawerTest, NormalsFollowTheViewAndTheItem)
{
    for (int i = 0; i < 40; ++i) {
        ToldItem* item = addTold(DrawerType::Mesh, i + 1);
        item->mesh = litBody(Qt::cyan);
        item->setTransform(glm::rotate(glm::mat4(1.0f), 0.1f * float(i), glm::vec3(1, 1, 0)), false);
    }
    uploads(view(), DrawerType::Mesh);
    EXPECT_EQ(uploads(view(), DrawerType::Mesh), 0u);
    told(7).setTransform(glm::mat4(1.0f), false);
    EXPECT_EQ(uploads(view(), DrawerType::Mesh), 100u + 36u);
    PaintContext turned = view();
    turned.view = glm::rotate(glm::mat4(1.0f), 0.7f, glm::vec3(0, 1, 0));
    const Drawn together = drawn(batched(DrawerType::Mesh), turned);
    const Drawn alone = drawn(pair(DrawerType::Mesh).sequential, turned);
    EXPECT_EQ(together.images, alone.images);
    EXPECT_GT(countPixels(together.images[0], [](QRgb pixel) { return qRed(pixel) != 10; }), 50);
    EXPECT_EQ(uploads(turned, DrawerType::Mesh), 0u);
}

TEST_F(BatchedItem3dDrawerTest, PartsOfAMeshHaveRecordsOfTheirOwn)
{
    const QColor colors[] = {QColor(255, 0, 0), QColor(0, 255, 0)};
    for (int i = 0; i < 8; ++i) {
        MeshData data;
        const float y = -1.0f + (2.0f * float(i) + 1.0f) / 8.0f;
        data.positions = {{-1, y, 0}, {0, y, 0}, {1, y, 0}};
        data.indices = {0, 1, 1, 2};
        for (std::uint32_t k = 0; k < 2; ++k) {
            MeshData::Part part;
            part.kind = MeshData::Part::Lines;
            part.firstIndex = 2 * k;
            part.indexCount = 2;
            part.color = colors[k];
            data.parts.push_back(part);
        }
        addTold(DrawerType::Mesh, i + 1)->mesh = std::make_unique<MeshNode3d>(std::move(data));
    }
    const QImage image = drawn(batched(DrawerType::Mesh), view()).images[0];
    EXPECT_EQ(batched(DrawerType::Mesh).drawnTogether(), 8u);
    EXPECT_EQ(countPixels(image, colors[0]), 8 * Size.width() / 2);
    EXPECT_EQ(countPixels(image, colors[1]), 8 * Size.width() / 2);
    told(3).highlighted = true;
    items.erase(items.begin());
    EXPECT_EQ(drawn(batched(DrawerType::Mesh), view()).images,
              drawn(pair(DrawerType::Mesh).sequential, view()).images);
}

TEST_F(BatchedItem3dDrawerTest, TheMatrixOfTheDrawerComesAfterThoseOfItems)
{
    addLines(9);
    picture();
    told(4).setTransform(glm::scale(glm::mat4(1.0f), glm::vec3(0.5f)), false);
    const glm::mat4 halfUp = glm::translate(glm::mat4(1.0f), glm::vec3(0.0f, 1.0f, 0.0f));
    for (const glm::mat4& matrix : {halfUp, glm::mat4(1.0f)}) {
        batched().setTransform(PaintContext(), matrix, false);
        pair(DrawerType::Mono).sequential.setTransform(PaintContext(), matrix, false);
        const Drawn together = drawn(batched(), view());
        EXPECT_EQ(together.images, drawn(pair(DrawerType::Mono).sequential, view()).images);
        EXPECT_EQ(countPixels(together.images[0].copy(0, 10, Size.width(), 8), QColor(Qt::white)) == 0,
                  matrix == halfUp);
    }
}

TEST_F(BatchedItem3dDrawerTest, ItemsOfSeveralPensAreDrawnOneByOne)
{
    struct TwoPens : ToldItem
    {
        using ToldItem::ToldItem;
        bool describeDrawing(ItemDrawing& drawing) override
        {
            ToldItem::describeDrawing(drawing);
            drawing.looks.push_back(drawing.looks[0]);
            drawing.looks[1].penWidth = 5.0f;
            drawing.stretches[1].look = 1;
            return true;
        }
    };
    for (int i = 0; i < 9; ++i) {
        auto item = std::make_unique<TwoPens>(element, i + 1);
        item->setStrips({{-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}}, {2, 2});
        item->setDrawer(&batched(DrawerType::WideLines));
        items.push_back(std::move(item));
    }
    batched(DrawerType::WideLines).draw(view(), {});
    EXPECT_EQ(batched(DrawerType::WideLines).drawnTogether(), 0u);
    EXPECT_EQ(told(8).draws, 1);
}

TEST_F(BatchedItem3dDrawerTest, WhatChangesWithoutATraceIsToldByUpdateItem)
{
    addLines(10);
    picture();
    told(5).line.setVertices({{-1, 5, 0}, {1, 5, 0}}); // out of view, and says nothing
    EXPECT_EQ(countPixels(picture(), QColor(Qt::white)), 10 * Size.width());
    batched().updateItem(&told(5));
    EXPECT_EQ(countPixels(picture(), QColor(Qt::white)), 9 * Size.width());
}

TEST_F(BatchedItem3dDrawerTest, ItemsComeAndGoInAnyOrder)
{
    Dice dice(3);
    LONGID id = 0;
    for (int step = 0; step < 60; ++step) {
        const int count = dice.between(0, 6);
        for (int i = 0; i < count; ++i) {
            ToldItem* item = addTold(DrawerType::Mono, ++id);
            std::vector<glm::vec3> points(static_cast<std::size_t>(dice.between(2, 40)));
            for (glm::vec3& point : points)
                point = dice.point(-1.0, 1.0);
            item->setStrips(points, {static_cast<int>(points.size())});
            item->setPen(QPen(QColor(dice.between(0, 255), dice.between(0, 255), 255)));
        }
        for (int i = dice.between(0, 6); i > 0 && !items.empty(); --i)
            items.erase(items.begin() + dice.between(0, static_cast<int>(items.size()) - 1));
        if (dice.oneIn(3)) continue; // without a frame between
        ASSERT_EQ(drawn(batched(), view()).images, drawn(pair(DrawerType::Mono).sequential, view()).images)
            << step;
    }
    EXPECT_GT(batched().drawnTogether(), 200u);
}

TEST_F(BatchedItem3dDrawerTest, AnItemThatMovesInMemoryKeepsItsPlace)
{
    class Movable : public Drawable3dItem
    {
    public:
        Movable() = default;
        Movable(Movable&& other) noexcept
            : Drawable3dItem(std::move(other))
            , line(std::move(other.line))
        {
        }
        using Drawable3dItem::setDrawer;
        bool describeDrawing(ItemDrawing& drawing) override
        {
            line.describe(drawing, QPen(Qt::green));
            return true;
        }
        Polyline3dPrimitive line;
    };
    addLines(10);
    auto first = std::make_unique<Movable>();
    first->line.setVertices({{-1, 0.01f, 0}, {1, 0.01f, 0}});
    first->setDrawer(&batched());
    EXPECT_EQ(countPixels(picture(), QColor(Qt::green)), Size.width());
    auto second = std::make_unique<Movable>(std::move(*first));
    first.reset();
    EXPECT_EQ(countPixels(picture(), QColor(Qt::green)), Size.width());
    second.reset();
    EXPECT_EQ(countPixels(picture(), QColor(Qt::green)), 0);
}

TEST_F(BatchedItem3dDrawerTest, DashesAreDrawnOneByOne)
{
    addLines(10, DrawerType::DashedLines);
    for (std::size_t i = 0; i < 10; ++i)
        told(i).setPen(QPen(Qt::white, 1.0, Qt::DashLine));
    EXPECT_EQ(drawn(batched(DrawerType::DashedLines), view()).images,
              drawn(pair(DrawerType::DashedLines).sequential, view()).images);
    EXPECT_EQ(batched(DrawerType::DashedLines).drawnTogether(), 0u);
}

TEST_F(BatchedItem3dDrawerTest, CapturesAsTheSequentialDrawer)
{
    addLines(10);
    picture();
    told(3).setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(2, 3, 4)), false);
    const auto [points, lines, triangles] = scene->generateItemGeometry(&told(3));
    ASSERT_NE(lines, 0u);
    EXPECT_EQ(points, 0u);
    EXPECT_EQ(triangles, 0u);
    glm::vec4 ends[2];
    gl->glBindBuffer(GL_ARRAY_BUFFER, lines);
    gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, sizeof(ends), ends);
    gl->glDeleteBuffers(1, &lines);
    EXPECT_FLOAT_EQ(ends[0].x, 1.0f);
    EXPECT_FLOAT_EQ(ends[1].x, 3.0f);
    EXPECT_FLOAT_EQ(ends[1].z, 4.0f);
}

TEST_F(BatchedItem3dDrawerTest, ClonesAreBatched)
{
    batched().setLeastRun(3);
    const std::unique_ptr<Item3dDrawer> copy = batched().clone();
    auto* own = dynamic_cast<BatchedItem3dDrawer*>(copy.get());
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own->getDefaultProgram(), batched().getDefaultProgram());
    EXPECT_TRUE(own->getItems().empty());
    for (int i = 0; i < 3; ++i)
        addLine(DrawerType::Mono, i + 1, 0.0f)->setDrawer(own);
    own->draw(view(), {});
    EXPECT_EQ(own->drawnTogether(), 3u);
    items.clear();
}

TEST_F(BatchedItem3dDrawerTest, IsAStageOfACompositeDrawer)
{
    CompositeDrawer both(scene.get());
    both.addStage(0, std::make_unique<BatchedItem3dDrawer>(scene.get(), pair(DrawerType::Mono).program));
    for (int i = 0; i < 9; ++i)
        addLine(DrawerType::Mono, i + 1, -0.9f + 0.2f * float(i))->setDrawer(&both);
    EXPECT_EQ(countPixels(drawn(both, view()).images[0], QColor(Qt::white)), 9 * Size.width());
    items.erase(items.begin() + 3);
    items.erase(items.begin());
    told(2).setPen(QPen(Qt::red));
    const QImage image = drawn(both, view()).images[0];
    EXPECT_EQ(countPixels(image, QColor(Qt::white)), 6 * Size.width());
    EXPECT_EQ(countPixels(image, QColor(Qt::red)), Size.width());
    items.clear();
}

TEST_F(BatchedItem3dDrawerTest, DrawsInTheContextOfAView)
{
    addLines(9);
    const QImage expected = picture();
    QOpenGLContext own;
    own.setFormat(scene->getContext().format());
    own.setShareContext(&scene->getContext());
    ASSERT_TRUE(own.create());
    ASSERT_TRUE(own.makeCurrent(scene->getSurface()));
    OpenGLFunctions& functions = *currentGLFunctions();
    Scene3d::initializeGLCommon(&functions);
    {
        RenderTarget ownTarget(functions, Size);
        ownTarget.bind();
        ownTarget.clear(QColor(10, 20, 30));
        PaintContext context = view();
        functions.glGenVertexArrays(1, &context.vertexArray);
        batched().draw(context, {});
        EXPECT_EQ(ownTarget.image(), expected);
        functions.glDeleteVertexArrays(1, &context.vertexArray);
        EXPECT_EQ(functions.glGetError(), 0u);
    }
    own.doneCurrent();
    scene->makeCurrent();
    EXPECT_EQ(picture(), expected);
}

TEST_F(BatchedItem3dDrawerTest, LeavesNoObjectsBehind)
{
    addLines(9);
    picture();
    items.clear();
    pairs.clear();
    const GlObjects before = GlObjects::count(*gl);
    for (int round = 0; round < 20; ++round) {
        addLines(9);
        picture();
        items.clear();
        pairs.clear();
    }
    EXPECT_EQ(GlObjects::count(*gl), before);
}

TEST(SliceAllocatorTest, GivesOutEveryPlaceOnce)
{
    Dice dice(11);
    SliceAllocator allocator;
    std::vector<SliceAllocator::Slice> taken;
    std::vector<char> isTaken(4000, 0);
    for (int step = 0; step < 20000; ++step) {
        if (taken.size() < 30 || dice.oneIn(2)) {
            if (taken.size() > 60) continue;
            const SliceAllocator::Slice slice =
                allocator.take(static_cast<std::uint32_t>(dice.between(1, 20)));
            for (std::uint32_t place = slice.first; place < slice.first + slice.count; ++place) {
                ASSERT_LT(place, isTaken.size()) << "gaps are not used again";
                ASSERT_EQ(isTaken[place], 0);
                isTaken[place] = 1;
            }
            taken.push_back(slice);
        } else {
            const auto chosen = static_cast<std::size_t>(dice.between(0, static_cast<int>(taken.size()) - 1));
            const SliceAllocator::Slice slice = taken[chosen];
            std::fill_n(isTaken.begin() + slice.first, slice.count, 0);
            allocator.giveBack(slice);
            taken[chosen] = taken.back();
            taken.pop_back();
        }
        if (step > 10000 && !dice.oneIn(10)) continue; // what is given back is put into the books when asked
        const auto last = std::find(isTaken.rbegin(), isTaken.rend(), 1);
        ASSERT_EQ(allocator.end(), static_cast<std::uint32_t>(isTaken.rend() - last));
    }
}

TEST(SliceAllocatorTest, WhatIsGivenBackAtOnceBecomesOneGap)
{
    SliceAllocator allocator;
    std::vector<SliceAllocator::Slice> slices;
    for (int i = 0; i < 1000; ++i)
        slices.push_back(allocator.take(3));
    const auto last = allocator.take(1);
    std::shuffle(slices.begin(), slices.end(), std::mt19937(2));
    for (const SliceAllocator::Slice& slice : slices)
        allocator.giveBack(slice);
    EXPECT_EQ(allocator.end(), 3001u);
    EXPECT_EQ(allocator.take(3000).first, 0u);
    allocator.giveBack({0, 3000});
    allocator.giveBack(last);
    EXPECT_EQ(allocator.end(), 0u);
    EXPECT_EQ(allocator.take(1).first, 0u);
}

TEST(SliceAllocatorTest, TakesTheSmallestGapAndForgetsTheLast)
{
    SliceAllocator allocator;
    const auto a = allocator.take(10), b = allocator.take(1), c = allocator.take(4), d = allocator.take(1);
    allocator.giveBack(a);
    allocator.giveBack(c);
    EXPECT_EQ(allocator.take(3).first, 11u);
    EXPECT_EQ(allocator.take(0).count, 0u);
    EXPECT_EQ(allocator.take(10).first, 0u);
    allocator.giveBack({11, 3});
    allocator.giveBack(d);
    EXPECT_EQ(allocator.end(), 11u);
    allocator.giveBack(b);
    EXPECT_EQ(allocator.end(), 10u);
}

} // namespace
