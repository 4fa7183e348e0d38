#include "InstancedTest.h"

#include <Viewer3dModule/scene/SelectionOptions.h>

#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

// Marks of five pixels at the first vertex of each item.
namespace {

constexpr LONGID largeId = (LONGID(0x7ABBCCDD) << 32) | 0x11223344;
const QColor markRed(255, 0, 0);
const QColor markHighlight(Qt::yellow); // of a host without settings

class MarksTest : public InstancedTest
{
protected:
    /// Checks that exactly these pixels have a mark's square around them.
    static void expectMarks(const QImage& image, const std::vector<std::pair<QPoint, QColor>>& marks)
    {
        for (const auto& [at, color] : marks)
            for (int y = -2; y <= 2; ++y)
                for (int x = -2; x <= 2; ++x)
                    ASSERT_EQ(image.pixelColor(at + QPoint(x, y)), color) << at.x() << ", " << at.y();
        EXPECT_EQ(countPixels(image, [](QRgb p) { return (p & 0xFFFFFFu) != 0; }), 25 * int(marks.size()));
    }
    /// An item of the scene's, on a drawer of marks of the scene's.
    MarkItem* addToScene(LONGID id, const glm::vec3& place)
    {
        if (!scene->isHasDrawer(MarkItem::DrawerKind, MarkItem::DrawerKind))
            scene->addDrawer(MarkItem::DrawerKind, std::make_unique<MarkDrawer>(scene.get()));
        auto* item = new MarkItem(id, place);
        scene->addElement(item);
        return item;
    }
    std::vector<LONGID> select(const QRectF& area)
    {
        std::vector<LONGID> found = scene->selectItems(view(), area, SelectionOptions());
        std::sort(found.begin(), found.end());
        return found;
    }
};

TEST_F(MarksTest, AreSquaresOfFivePixelsInTheirColour)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(40, 50, 0.5f)});
    EXPECT_EQ(drawer.getDefaultColor(), QColor(Qt::red));
    expectMarks(shown(drawer), {{{10, 20}, markRed}, {{40, 50}, markRed}});
    drawer.setDefaultColor(QColor(10, 200, 30));
    EXPECT_EQ(drawer.getDefaultColor(), QColor(10, 200, 30));
    expectMarks(shown(drawer), {{{10, 20}, QColor(10, 200, 30)}, {{40, 50}, QColor(10, 200, 30)}});
}

TEST_F(MarksTest, AreDrawnInOneCallHoweverMany)
{
    MarkDrawer drawer(scene.get());
    Items items = itemsAt(drawer, {atPixel(10, 20)});
    GlCalls calls(*gl);
    for (const int count : {1, 2, 1000}) {
        while (int(items.size()) < count) {
            items.push_back(std::make_unique<MarkItem>(LONGID(items.size()) + 1, atPixel(10, 20)));
            items.back()->setDrawer(&drawer);
        }
        calls.reset();
        shown(drawer);
        ASSERT_EQ(calls.draws.size(), 1u);
        EXPECT_EQ(calls.draws[0].mode, GLenum(GL_POINTS));
        EXPECT_EQ(calls.draws[0].vertices, 1);
        EXPECT_EQ(calls.draws[0].instances, count);
    }
}

TEST_F(MarksTest, HiddenAndFilteredOnesLeaveNoTraceAndHighlightedOnesShow)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(20, 20), atPixel(30, 20), atPixel(40, 20)});
    items[0]->setVisible(false);
    items[1]->highlighted = true;
    const auto butTheThird = [&](Drawable3dItem* item) { return item != items[2].get(); };
    expectMarks(shown(drawer, view(), butTheThird), {{{20, 20}, markHighlight}, {{40, 20}, markRed}});
}

TEST_F(MarksTest, ItemsWithoutElementOrVertexAreNowhere)
{
    MarkDrawer drawer(scene.get());
    TestItem plain;
    plain.setDrawer(&drawer);
    TestElement element;
    struct Bare : TestGraphicsItem
    {
        using Drawable3dItem::setDrawer;
        using TestGraphicsItem::TestGraphicsItem;
    } bare(&element);
    bare.setDrawer(&drawer);
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    for (const std::size_t slot : {0u, 1u})
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(std::isnan(drawer.getItemParams()[slot][i]));
    expectMarks(shown(drawer), {{{10, 20}, markRed}});
    plain.setDrawer(nullptr);
    bare.setDrawer(nullptr);
}

// The record of what stands for no element is not that of the item whose slot it came into.
TEST_F(MarksTest, AnItemWithoutElementTakesASlotOverAndStaysNowhere)
{
    MarkDrawer drawer(scene.get());
    Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(20, 20)});
    TestItem plain;
    plain.setDrawer(&drawer);
    shown(drawer);
    items.erase(items.begin());
    EXPECT_EQ(drawer.getItems()[0], &plain);
    expectMarks(shown(drawer), {{{20, 20}, markRed}});
    plain.setDrawer(nullptr);
}

TEST_F(MarksTest, APassWithoutPointsDrawsNone)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    PaintContext context = view();
    GlCalls calls(*gl);
    context.primitives = PrimitiveBit::All & ~PrimitiveBit::Points;
    expectMarks(shown(drawer, context), {});
    EXPECT_TRUE(calls.draws.empty());
    context.primitives = PrimitiveBit::Points;
    expectMarks(shown(drawer, context), {{{10, 20}, markRed}});
}

TEST_F(MarksTest, MasksHoldWholeIdentifiers)
{
    MarkDrawer drawer(scene.get());
    const Items items = itemsAt(drawer, {atPixel(10, 20), atPixel(40, 50)});
    items[0]->id = largeId;
    items[1]->id = 0x01000001; // beyond what a float counts
    drawer.updateItem(0);
    drawer.updateItem(1);
    PaintContext context = view();
    context.drawMode = DrawMode::SelectionMaskDraw;
    RenderTarget target(*gl, context.viewportRect.size(), 4);
    target.bind();
    target.clear(QColor(0, 0, 0));
    gl->glDisable(GL_BLEND);
    drawer.draw(context, {});
    gl->glEnable(GL_BLEND);
    const auto word = [&](int attachment, int x, int y) {
        const QImage image = target.image(attachment);
        const uchar* bytes = image.constScanLine(y) + 4 * x;
        return unsigned(bytes[0]) | unsigned(bytes[1]) << 8 | unsigned(bytes[2]) << 16 |
               unsigned(bytes[3]) << 24;
    };
    EXPECT_EQ(word(1, 10, 20), 0x11223344u);
    EXPECT_EQ(word(2, 10, 20), 0x7ABBCCDDu);
    EXPECT_EQ(word(1, 40, 50), 0x01000001u);
    EXPECT_EQ(word(2, 40, 50), 0u);
    EXPECT_EQ(word(1, 0, 0), 0u);
}

TEST_F(MarksTest, AreSelectedOneByOne)
{
    addToScene(1, atPixel(10, 20));
    addToScene(largeId, atPixel(20, 20));
    MarkItem* hidden = addToScene(3, atPixel(30, 20));
    addToScene(0x01000001, atPixel(40, 20))->highlighted = true;
    hidden->setVisible(false);
    EXPECT_EQ(select(QRectF(0, 0, Size, Size)), (std::vector<LONGID>{1, 0x01000001, largeId}));
    EXPECT_EQ(select(QRectF(15, 15, 10, 10)), (std::vector<LONGID>{largeId}));
    EXPECT_EQ(select(QRectF(12, 20, 1, 1)), (std::vector<LONGID>{1})) << "the last pixel of its square";
    EXPECT_TRUE(select(QRectF(13, 20, 1, 1)).empty());
    scene->removeElement(1);
    EXPECT_EQ(select(QRectF(0, 0, Size, Size)), (std::vector<LONGID>{0x01000001, largeId}));
}

TEST_F(MarksTest, FramesOfTheSceneDrawThem)
{
    addToScene(1, atPixel(10, 20));
    addToScene(2, atPixel(40, 50));
    GlCalls calls(*gl);
    expectMarks(drawFrame(view()), {{{10, 20}, markRed}, {{40, 50}, markRed}});
    EXPECT_EQ(calls.draws.size(), 1u);
}

TEST_F(MarksTest, ACloneIsOfTheSameKindWithoutItemsAndRed)
{
    MarkDrawer drawer(scene.get());
    drawer.setDefaultColor(Qt::green);
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    const std::unique_ptr<Item3dDrawer> clone = drawer.clone();
    auto* marks = dynamic_cast<MarkDrawer*>(clone.get());
    ASSERT_NE(marks, nullptr);
    EXPECT_TRUE(marks->getItems().empty());
    EXPECT_EQ(marks->getBuffersSize(), 0);
    EXPECT_EQ(marks->getDefaultColor(), QColor(Qt::red));
    EXPECT_EQ(marks->scene(), scene.get());
    const Items others = itemsAt(*marks, {atPixel(40, 50)});
    expectMarks(shown(*marks), {{{40, 50}, markRed}});
    EXPECT_EQ(shown(drawer).pixelColor(10, 20), QColor(0, 255, 0));
}

TEST_F(MarksTest, AHostWithoutTheFragmentStageReadsOfItOnce)
{
    mapShaderPrefix(); // without the folder of marks
    MarkDrawer drawer(scene.get());
    const QStringList messages = LogTrap::take();
    ASSERT_FALSE(messages.isEmpty());
    debug->take(); // the driver's own of the empty source
    EXPECT_TRUE(messages.join(' ').contains(QLatin1String("ExtraPoint.fragment.glsl")))
        << qPrintable(messages.join('\n'));
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    expectMarks(shown(drawer), {});
    expectMarks(shown(drawer), {});
    const std::unique_ptr<Item3dDrawer> clone = drawer.clone();
    const Items others = itemsAt(*clone, {atPixel(40, 50)});
    expectMarks(shown(*clone), {});
    EXPECT_EQ(LogTrap::take(), QStringList());
}

TEST_F(MarksTest, WithoutASceneThereAreNoMarks)
{
    MarkDrawer drawer(nullptr);
    EXPECT_EQ(drawer.getProgram(), nullptr);
    const Items items = itemsAt(drawer, {atPixel(10, 20)});
    expectMarks(shown(drawer), {});
}

// --- many operations, against plain vectors
// ------------------------------------------------------------------------------------

class MarkChurn : public MarksTest
{
protected:
    struct Expected
    {
        std::vector<glm::vec3> places;
        std::vector<std::uint64_t> ids;
        std::vector<int> flags;
    };
    Expected expected(const std::vector<MarkItem*>& order, int filter) const
    {
        Expected e;
        for (const MarkItem* item : order) {
            e.places.push_back(item->place);
            e.ids.push_back(std::uint64_t(item->id));
            const bool shows = item->Drawable3dItem::isVisible() && passes(*item, filter);
            e.flags.push_back(!shows ? -3 : item->highlighted ? -2 : -1);
        }
        return e;
    }
    static bool passes(const MarkItem& item, int filter) { return filter == 0 || item.id % filter != 0; }

    int random(int below) { return std::uniform_int_distribution<int>(0, below - 1)(m_numbers); }
    glm::vec3 randomPlace() { return glm::vec3(random(1000), -random(1000), random(1000)) * 1e-3f; }

private:
    std::mt19937 m_numbers{20240817};
};

TEST_F(MarkChurn, AHundredThousandOperationsLeaveWhatPlainVectorsHold)
{
    MarkDrawer drawer(scene.get());
    Items items;
    std::vector<MarkItem*> order; // as the registry is to be
    std::vector<int> lastFlags;
    LONGID nextId = LONGID(1) << 40;
    int filter = 0, draws = 0;
    bool changed = true;
    std::vector<unsigned int> buffers;
    RenderTarget target(*gl, QSize(16, 16));
    target.bind();
    PaintContext context = paintContext(16, 16);
    GlCalls calls(*gl);

    for (int step = 0; step < 100000; ++step) {
        const int what = random(20);
        MarkItem* one = order.empty() ? nullptr : order[std::size_t(random(int(order.size())))];
        if (what < 4) {
            items.push_back(std::make_unique<MarkItem>(++nextId, randomPlace()));
            items.back()->setDrawer(&drawer);
            order.push_back(items.back().get());
            changed = true;
        } else if (what < 8 && one) {
            *std::find(order.begin(), order.end(), one) = order.back();
            order.pop_back();
            items.erase(std::find_if(items.begin(), items.end(),
                                     [one](const auto& item) { return item.get() == one; }));
            changed = true;
        } else if (what < 10 && one) {
            one->place = randomPlace();
            drawer.updateItem(one);
            changed = true;
        } else if (what == 10 && one) {
            one->id = ++nextId;
            drawer.updateItem(one);
            changed = true;
        } else if (what < 13 && one) {
            one->setVisible(!one->Drawable3dItem::isVisible());
        } else if (what < 15 && one) {
            one->highlighted = !one->highlighted;
        } else if (what == 15) {
            filter = random(4) == 0 ? 0 : 2 + random(3);
        } else if (what == 16 && one) {
            drawer.setItemFlag(random(int(order.size())), -1 - random(3));
        }
        if (what < 17 || order.empty()) continue;

        const Expected e = expected(order, filter);
        calls.reset();
        const bool selects = random(3) == 0;
        context.drawMode = selects ? DrawMode::SelectionMaskDraw : DrawMode::OrdinalDraw;
        drawer.draw(
            context, filter == 0 ? Item3dDrawer::Filter() : [&](Drawable3dItem* item) {
                return passes(static_cast<MarkItem&>(*item), filter);
            });
        ++draws;
        ASSERT_EQ(drawer.getItemParams(), e.places) << step;
        ASSERT_EQ(calls.draws.size(), 1u) << step;
        ASSERT_EQ(calls.draws[0].instances, int(order.size())) << step;
        const std::size_t n = order.size();
        if (changed) {
            ASSERT_EQ(calls.uploads.size(), 3u) << step;
            ASSERT_EQ(calls.uploadedBytes(), 24 * n) << step;
            if (buffers.empty())
                for (const GlCalls::Upload& upload : calls.uploads)
                    buffers.push_back(upload.buffer);
        } else if (!calls.uploads.empty()) {
            ASSERT_EQ(calls.uploads.size(), 1u) << step;
            ASSERT_EQ(calls.uploads[0].buffer, buffers[2]) << step;
            ASSERT_EQ(calls.uploadedBytes(), 4 * n) << step;
        } else {
            ASSERT_EQ(e.flags, lastFlags) << step;
        }
        ASSERT_EQ(contentsOf<glm::vec3>(buffers[0]), e.places) << step;
        ASSERT_EQ(contentsOf<std::uint64_t>(buffers[1]), e.ids) << step;
        ASSERT_EQ(contentsOf<int>(buffers[2]), e.flags) << step;
        lastFlags = e.flags;
        changed = false;
    }
    EXPECT_GT(draws, 10000);
}

// --- very many
// ------------------------------------------------------------------------------------

class ManyMarks : public MarksTest
{
protected:
    /// What a program would do that draws these points and nothing else.
    class PlainPoints
    {
    public:
        PlainPoints(OpenGLFunctions& gl, const std::vector<glm::vec3>& places)
            : m_gl(gl)
            , m_count(GLsizei(places.size()))
        {
            m_program.addShaderFromSourceCode(QOpenGLShader::Vertex,
                                              "#version 430 core\n"
                                              "layout(location = 0) in vec3 place;\n"
                                              "uniform mat4 matrix;\n"
                                              "void main() { gl_Position = matrix * vec4(place, 1.0);\n"
                                              "gl_PointSize = 5.0; }");
            m_program.addShaderFromSourceCode(QOpenGLShader::Fragment,
                                              "#version 430 core\n"
                                              "layout(location = 0) out vec4 color;\n"
                                              "void main() { color = vec4(1.0, 0.0, 0.0, 1.0); }");
            EXPECT_TRUE(m_program.link());
            gl.glGenVertexArrays(1, &m_array);
            gl.glGenBuffers(1, &m_buffer);
            gl.glBindVertexArray(m_array);
            gl.glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
            gl.glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(places.size() * sizeof(glm::vec3)), places.data(),
                            GL_STATIC_DRAW);
            gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 12, nullptr);
            gl.glEnableVertexAttribArray(0);
            gl.glBindVertexArray(0);
        }
        ~PlainPoints()
        {
            m_gl.glDeleteBuffers(1, &m_buffer);
            m_gl.glDeleteVertexArrays(1, &m_array);
        }
        void draw(const glm::mat4& matrix)
        {
            m_program.bind();
            uniforms::set(m_gl, m_program.uniformLocation("matrix"), matrix);
            m_gl.glBindVertexArray(m_array);
            m_gl.glDrawArrays(GL_POINTS, 0, m_count);
            m_gl.glBindVertexArray(0);
            m_program.release();
        }

    private:
        OpenGLFunctions& m_gl;
        GLsizei m_count;
        QOpenGLShaderProgram m_program;
        unsigned int m_array = 0, m_buffer = 0;
    };

    /// Milliseconds of one run, until the driver has finished.
    double timeOf(RenderTarget& target, const std::function<void()>& draw)
    {
        target.clear(QColor(0, 0, 0));
        gl->glFinish();
        QElapsedTimer timer;
        timer.start();
        draw();
        gl->glFinish();
        return double(timer.nsecsElapsed()) * 1e-6;
    }
    static double median(std::vector<double> times)
    {
        std::sort(times.begin(), times.end());
        return times[times.size() / 2];
    }
};

// 100,000 marks, or as many as V3D_TEST_MARKS says. The times are printed, and nothing is asserted of them.
TEST_F(ManyMarks, HidingOneUploadsTheFlagsOnceAndMovingTheViewNothing)
{
    const int told = qEnvironmentVariableIntValue("V3D_TEST_MARKS");
    const std::size_t count = told > 0 ? std::size_t(told) : 100000;
    std::mt19937 numbers(7);
    std::uniform_real_distribution<float> spread(-1.0f, 1.0f);
    std::vector<glm::vec3> places(count);
    for (glm::vec3& place : places)
        place = {spread(numbers), spread(numbers), spread(numbers)};
    MarkDrawer drawer(scene.get());
    QElapsedTimer timer;
    timer.start();
    Items items = itemsAt(drawer, places);
    const double built = double(timer.nsecsElapsed()) * 1e-6;

    PaintContext context = paintContext(640, 480);
    RenderTarget target(*gl, context.viewportRect.size());
    target.bind();
    GlCalls calls(*gl);
    const double first = timeOf(target, [&] { drawer.draw(context, {}); });
    EXPECT_EQ(calls.uploadedBytes(), 24 * count);
    calls.reset();
    items[count / 2]->setVisible(false);
    const double hiding = timeOf(target, [&] { drawer.draw(context, {}); });
    ASSERT_EQ(calls.uploads.size(), 1u);
    EXPECT_EQ(calls.uploads[0].bytes, 4 * count);
    calls.reset();

    PlainPoints plain(*gl, places);
    calls.reset();
    std::vector<double> own, others;
    for (int frame = 0; frame < (told > 0 ? 7 : 1); ++frame) {
        context.view[3][0] = float(frame) * 1e-3f;
        others.push_back(timeOf(target, [&] { plain.draw(context.projection * context.view); }));
        own.push_back(timeOf(target, [&] { drawer.draw(context, {}); }));
    }
    EXPECT_TRUE(calls.uploads.empty()) << "a view that moves changes no records";
    std::printf("%zu marks: %.1f ms a frame, %.1f ms by a plain program, ratio %.2f; built in %.1f ms, first "
                "frame %.1f ms, hiding one %.1f ms\n",
                count, median(own), median(others), median(own) / median(others), built, first, hiding);
    items.clear();
}

} // namespace
