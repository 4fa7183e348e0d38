#include "tests/support/GlTest.h"
#include "tests/support/LogTrap.h"
#include "tests/support/ProgramList.h"
#include "tests/support/RenderTarget.h"

#include <Viewer3dModule/drawers/Item3dSelectionProvider.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtGui/QOpenGLShaderProgram>
#include <QtGui/QPainter>

#include <algorithm>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace {

/// A pass of the Mono program whose every item is one fragment: the point at a pixel's centre.
class Item3dSelectionProviderTest : public GlTest
{
protected:
    static constexpr int Width = 40;
    static constexpr int Height = 30;

    void SetUp() override
    {
        GlTest::SetUp();
        mapShaderPrefix();
        program = build(defaultPrograms().front());
        target = std::make_unique<RenderTarget>(*gl, QSize(Width, Height));
        target->bind();
        context.setViewport(QRect(0, 0, Width, Height));
        context.drawMode = 3;
        context.program = program.get();
        gl->glGenBuffers(1, &m_points);
        gl->glBindVertexArray(vao);
        gl->glBindBuffer(GL_ARRAY_BUFFER, m_points);
        gl->glEnableVertexAttribArray(0);
        gl->glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        gl->glEnable(GL_PROGRAM_POINT_SIZE);
    }
    void TearDown() override
    {
        makeCurrent();
        provider.reset();
        program.reset();
        target.reset();
        gl->glDeleteBuffers(1, &m_points);
        GlTest::TearDown();
    }

    std::unique_ptr<QOpenGLShaderProgram> build(const ProgramRecipe& recipe)
    {
        std::unique_ptr<QOpenGLShaderProgram> built(
            buildShaderProgram(nullptr, recipe.files, recipe.defines, {}));
        EXPECT_TRUE(built->isLinked());
        return built;
    }

    void begin(const QPolygonF& polygon)
    {
        provider->setSelectionPolygon(polygon);
        provider->beginSelection(context);
        EXPECT_TRUE(program->bind());
        uniforms::set(*gl, program->uniformLocation("item_color"), glm::vec4(1.0f));
        uniforms::set(*gl, program->uniformLocation("draw_mode"), context.drawMode);
    }
    /// Draws the one pixel, counted from the top left.
    void drawPixel(int x, int y)
    {
        const glm::vec3 point((2.0f * float(x) + 1.0f) / Width - 1.0f,
                              1.0f - (2.0f * float(y) + 1.0f) / Height, 0.0f);
        gl->glBindVertexArray(vao);
        gl->glBindBuffer(GL_ARRAY_BUFFER, m_points);
        gl->glBufferData(GL_ARRAY_BUFFER, sizeof(point), &point, GL_STREAM_DRAW);
        gl->glDrawArrays(GL_POINTS, 0, 1);
    }
    void drawItem(LONGID id, int x, int y)
    {
        provider->addItemId(id);
        drawPixel(x, y);
    }
    template <typename T>
    std::vector<T> uniformValues(const char* name, std::size_t count)
    {
        std::vector<T> values(count);
        const int location = program->uniformLocation(name);
        if constexpr (std::is_same_v<T, float>)
            gl->glGetUniformfv(program->programId(), location, values.data());
        else
            gl->glGetUniformiv(program->programId(), location, values.data());
        return values;
    }
    int itemIndex() { return uniformValues<int>("item_index", 1).front(); }
    std::vector<std::uint32_t> bufferAt(GLuint binding)
    {
        GLint name = 0;
        GLint64 bytes = 0;
        gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, binding, &name);
        gl->glBindBuffer(GL_COPY_READ_BUFFER, static_cast<GLuint>(name));
        gl->glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &bytes);
        std::vector<std::uint32_t> words(static_cast<std::size_t>(bytes) / 4);
        gl->glGetBufferSubData(GL_COPY_READ_BUFFER, 0, static_cast<GLsizeiptr>(words.size() * 4),
                               words.data());
        return words;
    }
    /// Writes into the buffer of the items' bits, behind the provider's back.
    void setWord(std::size_t index, std::uint32_t value)
    {
        GLint name = 0;
        gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, 8, &name);
        gl->glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(name));
        gl->glBufferSubData(GL_COPY_WRITE_BUFFER, static_cast<GLintptr>(index * 4), 4, &value);
    }

    static QPolygonF rectangle(double left, double top, double width, double height)
    {
        return QPolygonF(
            {{left, top}, {left + width, top}, {left + width, top + height}, {left, top + height}});
    }
    const QPolygonF everything = rectangle(0, 0, Width, Height);

    std::unique_ptr<Item3dSelectionProvider> provider = std::make_unique<Item3dSelectionProvider>();
    std::unique_ptr<QOpenGLShaderProgram> program;
    std::unique_ptr<RenderTarget> target;
    PaintContext context;

private:
    unsigned m_points = 0;
};

using Ids = std::vector<LONGID>;

TEST_F(Item3dSelectionProviderTest, GivesTheItemsWithFragmentsInTheArea)
{
    begin(rectangle(10, 10, 5, 5));
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(100, 12, 12);
    drawItem(200, 20, 12);
    drawItem(300, 10, 14);
    drawItem(400, 15, 12);
    EXPECT_EQ(provider->selectedItems(), (Ids{100, 300}));
}

TEST_F(Item3dSelectionProviderTest, CountsIndicesFromOne)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    provider->addItemId(7);
    EXPECT_EQ(itemIndex(), 1);
    provider->addItemId(8);
    EXPECT_EQ(itemIndex(), 2);
    provider->addItemIds({1, 2, 3});
    EXPECT_EQ(itemIndex(), 3);
    provider->addItemIds({});
    EXPECT_EQ(itemIndex(), 6) << "also for an empty list";
    provider->addItemId(9);
    EXPECT_EQ(itemIndex(), 6);
}

TEST_F(Item3dSelectionProviderTest, StartsAnewWithEachPass)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(5, 3, 3);
    begin(everything);
    EXPECT_EQ(provider->selectedItems(), Ids());
    ASSERT_TRUE(provider->bindProgram(context));
    provider->addItemId(6);
    EXPECT_EQ(itemIndex(), 1);
    EXPECT_EQ(provider->selectedItems(), Ids()) << "nothing was drawn";
}

TEST_F(Item3dSelectionProviderTest, KeepsTheResultUntilTheNextPass)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(5, 3, 3);
    EXPECT_EQ(provider->selectedItems(), Ids{5});
    EXPECT_EQ(provider->selectedItems(), Ids{5});
}

TEST_F(Item3dSelectionProviderTest, AnItemThatCameTwiceHasTwoIndices)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(5, 3, 3);
    drawItem(6, 4, 3);
    drawItem(5, 5, 3);
    EXPECT_EQ(provider->selectedItems(), (Ids{5, 6, 5}));
}

TEST_F(Item3dSelectionProviderTest, IndexZeroIsNeverReported)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(5, 3, 3);
    uniforms::set(*gl, program->uniformLocation("item_index"), 0);
    drawPixel(4, 4);
    EXPECT_EQ(bufferAt(8)[0], 3u) << "its bit is set";
    EXPECT_EQ(provider->selectedItems(), Ids{5});
}

TEST_F(Item3dSelectionProviderTest, WhatHasNoIdentifierIsNotReported)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(0, 3, 3);
    drawItem(4, 4, 3);
    EXPECT_EQ(provider->selectedItems(), Ids{4});
}

TEST_F(Item3dSelectionProviderTest, BitsBeyondTheIdentifiersAreIgnored)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    for (LONGID id = 1; id <= 40; ++id)
        drawItem(id, 1, 1);
    setWord(1, 0xFFFFFFFFu);
    setWord(2, 0xFFFFFFFFu);
    Ids expected(40);
    for (LONGID id = 1; id <= 40; ++id)
        expected[static_cast<std::size_t>(id - 1)] = id;
    EXPECT_EQ(provider->selectedItems(), expected);
}

// As if the whole buffer were cleared: what others left in it, however far behind, selects nothing.
TEST_F(Item3dSelectionProviderTest, EveryWordInUseWasCleared)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    for (const std::size_t word : {0u, 1u, 4095u, 4096u, 8191u, 8192u, 20000u, 1048575u})
        setWord(word, 0xFFFFFFFFu);
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    provider->addItemId(1);
    provider->addItemIds(Ids(1000000, 2));
    drawItem(3, 1, 1);
    EXPECT_EQ(provider->selectedItems(), Ids{3});
}

TEST_F(Item3dSelectionProviderTest, ManyIndicesOneByOneKeepTheirBits)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    Ids expected;
    for (LONGID id = 1; id <= 300000; ++id) {
        provider->addItemId(id);
        if (id % 1000 != 0) continue;
        drawPixel(int(id / 1000 % Width), 5);
        expected.push_back(id);
    }
    EXPECT_EQ(provider->selectedItems(), expected);
}

TEST_F(Item3dSelectionProviderTest, MaskHasHeaderAndRowsFromTheTop)
{
    QPolygonF polygon({{5.0, 2.0}, {33.0, 8.5}, {20.25, 27.0}});
    begin(polygon);
    ASSERT_TRUE(provider->bindProgram(context));
    const std::vector<std::uint32_t> words = bufferAt(9);
    ASSERT_EQ(words.size(), 4u + 2u * Height);
    EXPECT_EQ(words[0], 1u);
    EXPECT_EQ(words[1], unsigned(Width));
    EXPECT_EQ(words[2], unsigned(Height));
    EXPECT_EQ(words[3], 2u) << "(40 + 31) / 32";
    QImage painted(Width, Height, QImage::Format_ARGB32);
    painted.fill(Qt::black);
    QPainter painter(&painted);
    painter.setPen(Qt::white);
    painter.setBrush(Qt::white);
    painter.drawPolygon(polygon, Qt::OddEvenFill);
    painter.end();
    int inside = 0;
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x) {
            const bool set = ((words[std::size_t(4 + 2 * y + x / 32)] >> (x % 32)) & 1u) != 0;
            EXPECT_EQ(set, painted.pixelColor(x, y) == QColor(Qt::white)) << x << ' ' << y;
            inside += set;
        }
    // Half of base times height is 280 or so, and the outline adds half of its length.
    EXPECT_GT(inside, 250);
    EXPECT_LT(inside, 420);
}

TEST_F(Item3dSelectionProviderTest, MaskFollowsTheViewport)
{
    for (const QSize& size : {QSize(1, 1), QSize(33, 7), QSize(64, 5), QSize(500, 300)}) {
        context.setViewport(QRect(QPoint(17, 9), size));
        begin(everything);
        ASSERT_TRUE(provider->bindProgram(context));
        const std::vector<std::uint32_t> words = bufferAt(9);
        const auto stride = static_cast<std::size_t>((size.width() + 31) / 32);
        ASSERT_EQ(words.size(), 4 + stride * static_cast<std::size_t>(size.height()));
        EXPECT_EQ(words[1], unsigned(size.width()));
        EXPECT_EQ(words[2], unsigned(size.height()));
        EXPECT_EQ(words[3], stride);
        EXPECT_EQ(words[4] & 1u, 1u);
    }
}

TEST_F(Item3dSelectionProviderTest, TwoPointsLeaveTheRectangleOnly)
{
    begin(QPolygonF(QVector<QPointF>{{10, 10}, {20, 15}}));
    ASSERT_TRUE(provider->bindProgram(context));
    EXPECT_EQ(bufferAt(9)[0], 0u);
    drawItem(1, 10, 14);
    drawItem(2, 19, 10);
    drawItem(3, 20, 12);
    drawItem(4, 12, 15);
    drawItem(5, 12, 9);
    EXPECT_EQ(provider->selectedItems(), (Ids{1, 2}));
}

TEST_F(Item3dSelectionProviderTest, RectangleIsUploadedFromTheBottom)
{
    begin(QPolygonF(QVector<QPointF>{{10.5, 4}, {20, 7.25}, {12, 15}}));
    ASSERT_TRUE(provider->bindProgram(context));
    EXPECT_EQ(uniformValues<float>("selection_rect", 4),
              (std::vector<float>{10.5f, Height - 15.0f, 20.0f, Height - 4.0f}));
}

TEST_F(Item3dSelectionProviderTest, InvertedLooksAroundThePolygon)
{
    provider->setInverted(true);
    begin(rectangle(10, 10, 5, 5));
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(1, 12, 12);
    drawItem(2, 15, 12);
    drawItem(3, 0, 0);
    drawItem(4, Width - 1, Height - 1);
    drawItem(5, 10, 14);
    EXPECT_EQ(provider->selectedItems(), (Ids{2, 3, 4}));
}

// Every pixel an item; random polygons, concave and crossing themselves.
TEST_F(Item3dSelectionProviderTest, SelectsThePixelsOfTheMask)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> x(-20, Width + 20), y(-20, Height + 20);
    std::size_t selected = 0;
    for (int run = 0; run < 5; ++run) {
        QPolygonF polygon;
        for (int i = 0; i < 3 + run * 2; ++i)
            polygon << QPointF(x(random), y(random));
        begin(polygon);
        ASSERT_TRUE(provider->bindProgram(context));
        const SelectionMask mask(polygon, QSize(Width, Height));
        Ids expected;
        for (int row = 0; row < Height; ++row)
            for (int column = 0; column < Width; ++column) {
                const LONGID id = 1 + row * Width + column;
                drawItem(id, column, row);
                if (mask.contains(column, row)) expected.push_back(id);
            }
        EXPECT_EQ(provider->selectedItems(), expected);
        selected += expected.size();
    }
    EXPECT_GT(selected, 500u);
}

TEST_F(Item3dSelectionProviderTest, IdentifiersHave64Bits)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    const Ids ids = {(LONGID(1) << 32) + 1, 1, std::numeric_limits<LONGID>::max(), -5};
    for (const LONGID id : ids)
        drawItem(id, 2, 2);
    EXPECT_EQ(provider->selectedItems(), ids);
}

TEST_F(Item3dSelectionProviderTest, ProgramsWithoutTheUniformsTakeNoPart)
{
    begin(everything);
    const auto without = [this](const char* fragment) {
        auto other = std::make_unique<QOpenGLShaderProgram>();
        EXPECT_TRUE(other->addShaderFromSourceCode(
            QOpenGLShader::Vertex, "#version 430 core\nvoid main() { gl_Position = vec4(0); }"));
        EXPECT_TRUE(other->addShaderFromSourceCode(QOpenGLShader::Fragment, fragment));
        EXPECT_TRUE(other->link());
        return other;
    };
    const auto plain = without("#version 430 core\nout vec4 color; void main() { color = vec4(1); }");
    const auto noRect = without("#version 430 core\nuniform int item_index; out vec4 color; "
                                "void main() { color = vec4(item_index); }");
    const auto noBlocks =
        without("#version 430 core\nuniform int item_index; uniform vec4 selection_rect; out vec4 color; "
                "void main() { color = selection_rect * item_index; }");
    for (QOpenGLShaderProgram* other : {plain.get(), noRect.get(), noBlocks.get()}) {
        ASSERT_TRUE(provider->bindProgram(context));
        ASSERT_TRUE(other->bind());
        PaintContext otherContext = context;
        otherContext.program = other;
        EXPECT_FALSE(provider->bindProgram(otherContext));
        provider->addItemId(99);
        provider->addItemIds({98, 97});
        ASSERT_TRUE(program->bind());
    }
    ASSERT_TRUE(provider->bindProgram(context));
    provider->addItemId(5);
    EXPECT_EQ(itemIndex(), 1) << "nobody got an index";
    context.program = nullptr;
    EXPECT_FALSE(provider->bindProgram(context));
}

TEST_F(Item3dSelectionProviderTest, BeforeTheFirstPassNothingIsBound)
{
    ASSERT_TRUE(program->bind());
    EXPECT_FALSE(provider->bindProgram(context));
    provider->addItemId(5);
    EXPECT_EQ(itemIndex(), 0);
    EXPECT_EQ(provider->selectedItems(), Ids());
}

TEST_F(Item3dSelectionProviderTest, WithoutAContextNothingIsSelected)
{
    GlTest::context.doneCurrent();
    provider->setSelectionPolygon(everything);
    provider->beginSelection(context);
    EXPECT_FALSE(provider->bindProgram(context));
    provider->addItemId(5);
    provider->addItemIds({6});
    EXPECT_EQ(provider->selectedItems(), Ids());
    makeCurrent();
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(5, 1, 1);
    EXPECT_EQ(provider->selectedItems(), Ids{5});
}

TEST_F(Item3dSelectionProviderTest, BuffersThatCannotBeMappedSelectNothing)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(5, 1, 1);
    for (const GLuint binding : {8u, 9u}) {
        GLint name = 0;
        gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, binding, &name);
        gl->glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(name));
        ASSERT_NE(gl->glMapBuffer(GL_COPY_WRITE_BUFFER, GL_READ_ONLY), nullptr);
        if (binding == 8) {
            EXPECT_EQ(provider->selectedItems(), Ids());
        } else {
            provider->beginSelection(context);
            EXPECT_FALSE(provider->bindProgram(context)) << "the mask would be another one";
            EXPECT_EQ(provider->selectedItems(), Ids());
        }
        EXPECT_FALSE(debug->take().isEmpty());
        gl->glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(name));
        gl->glUnmapBuffer(GL_COPY_WRITE_BUFFER);
        gl->glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    }
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(6, 1, 1);
    EXPECT_EQ(provider->selectedItems(), Ids{6}) << "and all is well again";
}

TEST_F(Item3dSelectionProviderTest, BufferIsOf32MiBWhereTheDriverGivesThem)
{
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    GLint64 most = 0;
    gl->glGetInteger64v(GL_MAX_SHADER_STORAGE_BLOCK_SIZE, &most);
    const GLint64 bytes = std::min<GLint64>(most, 33554432);
    EXPECT_EQ(GLint64(bufferAt(8).size()) * 4, bytes);
    EXPECT_EQ(provider->capacity(), std::size_t(bytes) * 8);
    EXPECT_EQ(LogTrap::take().size(), most < 33554432 ? 1 : 0);
}

TEST_F(Item3dSelectionProviderTest, TakesWhatTheDriverGivesAndSaysSoOnce)
{
    GLint64 most = 0;
    gl->glGetInteger64v(GL_MAX_SHADER_STORAGE_BLOCK_SIZE, &most);
    const std::int32_t asked = std::numeric_limits<std::int32_t>::max() - 3;
    if (most >= asked) GTEST_SKIP() << "this driver gives all that can be asked for";
    provider = std::make_unique<Item3dSelectionProvider>(asked);
    begin(everything);
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.front().contains(QString::number(most))) << lines.front().toStdString();
    EXPECT_EQ(provider->capacity(), std::size_t(most) * 8);
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    drawItem(5, 1, 1);
    EXPECT_EQ(provider->selectedItems(), Ids{5});
    EXPECT_TRUE(LogTrap::take().isEmpty()) << "once";
}

TEST_F(Item3dSelectionProviderTest, ItemsBeyondTheBufferAreReported)
{
    provider = std::make_unique<Item3dSelectionProvider>(8);
    EXPECT_EQ(provider->capacity(), 64u);
    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    for (LONGID id = 1; id <= 70; ++id)
        drawItem(id, 1, 1);
    Ids expected(63);
    for (LONGID id = 1; id <= 63; ++id)
        expected[static_cast<std::size_t>(id - 1)] = id;
    EXPECT_EQ(provider->selectedItems(), expected);
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.front().contains(QLatin1String("7 of 70"))) << lines.front().toStdString();

    begin(everything);
    ASSERT_TRUE(provider->bindProgram(context));
    for (LONGID id = 1; id <= 63; ++id)
        drawItem(id, 1, 1);
    EXPECT_EQ(provider->selectedItems(), expected) << "so many fit";
}

} // namespace
