#include "InstancedTest.h"

#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <random>

// Many operations on marks, against plain vectors, and very many marks.
namespace {

class MarkChurn : public InstancedTest
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

class ManyMarks : public InstancedTest
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
