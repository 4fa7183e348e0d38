#include "CaptureTest.h"

#include <Viewer3dModule/drawables/Polyline3dPrimitive.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using Positions = std::vector<glm::vec3>;

constexpr int Points = 1;
constexpr int Lines = 2;
constexpr int Triangles = 4;
constexpr int Adjacency = 8;
constexpr int All = 7;

// v(i) = (i, 10 i, -i)
glm::vec3 v(int i)
{
    const auto number = static_cast<float>(i);
    return {number, 10 * number, -number};
}

Positions numbered(int count)
{
    Positions result;
    for (int i = 0; i < count; ++i)
        result.push_back(v(i));
    return result;
}

bool isNotANumber(const glm::vec3& vertex)
{
    return std::isnan(vertex.x) && std::isnan(vertex.y) && std::isnan(vertex.z);
}

class Polyline3dPrimitiveTest : public CaptureTest
{
protected:
    void SetUp() override
    {
        CaptureTest::SetUp();
        primitive = std::make_unique<Polyline3dPrimitive>();
        before = buffers();
    }
    void TearDown() override
    {
        makeCurrent();
        primitive.reset();
        CaptureTest::TearDown();
    }
    Positions lines(int first, int count)
    {
        return capture(GL_LINES, [&] { primitive->drawRange(pass(All), first, count, 1); });
    }
    unsigned onlyNewBuffer()
    {
        std::set<unsigned> names = buffers();
        for (const unsigned name : before)
            names.erase(name);
        EXPECT_EQ(names.size(), 1u);
        return names.empty() ? 0 : *names.begin();
    }
    GLint bufferParameter(unsigned buffer, GLenum parameter)
    {
        GLint value = 0;
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
        gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, parameter, &value);
        return value;
    }

    std::unique_ptr<Polyline3dPrimitive> primitive;
    std::set<unsigned> before;
};

// A primitive whose buffer and count are the test's.
struct GivenBuffer : Drawable3dPrimitive
{
    GivenBuffer(unsigned buffer, int vertices)
        : name(buffer)
        , count(vertices)
    {
    }
    void draw(const PaintContext&, int) override {}
    unsigned name;
    int count;

private:
    unsigned getVBO() const override { return name; }
    int getVertexCount() const override { return count; }
};

} // namespace

// --- reading ---------------------------------------------------------------------------------------------

TEST_F(Polyline3dPrimitiveTest, ReadsBackWhatWasUploaded)
{
    primitive->setVertices(numbered(4));
    EXPECT_EQ(primitive->getVertices(), numbered(4));
    EXPECT_EQ(primitive->getVertex(0), v(0));
    EXPECT_EQ(primitive->getVertex(3), v(3));
}

TEST_F(Polyline3dPrimitiveTest, AVertexOutOfRangeIsNotANumber)
{
    primitive->setVertices(numbered(4));
    EXPECT_TRUE(isNotANumber(primitive->getVertex(-1)));
    EXPECT_TRUE(isNotANumber(primitive->getVertex(4)));
    std::uint32_t bits = 0;
    const float x = primitive->getVertex(-1).x;
    std::memcpy(&bits, &x, sizeof bits);
    EXPECT_EQ(bits, 0x7FC00000u);
}

TEST_F(Polyline3dPrimitiveTest, WithNothingCurrentNothingIsReadOrChanged)
{
    primitive->setVertices(numbered(4));
    context.doneCurrent();
    EXPECT_TRUE(primitive->getVertices().empty());
    EXPECT_TRUE(isNotANumber(primitive->getVertex(0)));
    primitive->setVertices(numbered(9));
    primitive->setVertex(0, v(100));
    primitive->draw(pass(All), 1);
    makeCurrent();
    EXPECT_EQ(primitive->getVertices(), numbered(4));
}

TEST_F(Polyline3dPrimitiveTest, WithoutABufferThereAreNoVertices)
{
    GivenBuffer noBuffer(0, 5);
    EXPECT_TRUE(noBuffer.getVertices().empty());
    EXPECT_TRUE(isNotANumber(noBuffer.getVertex(0)));
    EXPECT_TRUE(primitive->getVertices().empty());
}

TEST_F(Polyline3dPrimitiveTest, ABufferWithoutVerticesGivesNone)
{
    primitive->setVertices(numbered(4));
    GivenBuffer noVertices(onlyNewBuffer(), 0);
    EXPECT_TRUE(noVertices.getVertices().empty());
    EXPECT_TRUE(isNotANumber(noVertices.getVertex(0)));
}

// --- uploading -------------------------------------------------------------------------------------------

TEST_F(Polyline3dPrimitiveTest, TheSameNumberOfVerticesKeepsTheStorage)
{
    primitive->setVertices(numbered(4));
    const unsigned buffer = onlyNewBuffer();
    EXPECT_EQ(bufferParameter(buffer, GL_BUFFER_SIZE), 48);
    EXPECT_EQ(bufferParameter(buffer, GL_BUFFER_USAGE), GL_DYNAMIC_DRAW);
    // A mark on the storage that goes when it is made anew.
    gl->glBufferData(GL_ARRAY_BUFFER, 48, nullptr, GL_STATIC_COPY);
    primitive->setVertices({v(7), v(8), v(9), v(10)});
    EXPECT_EQ(bufferParameter(buffer, GL_BUFFER_USAGE), GL_STATIC_COPY);
    EXPECT_EQ(primitive->getVertices(), (Positions{v(7), v(8), v(9), v(10)}));

    primitive->setVertices(numbered(3));
    EXPECT_EQ(onlyNewBuffer(), buffer);
    EXPECT_EQ(bufferParameter(buffer, GL_BUFFER_USAGE), GL_DYNAMIC_DRAW);
    EXPECT_EQ(bufferParameter(buffer, GL_BUFFER_SIZE), 36);
    EXPECT_EQ(primitive->getVertices(), numbered(3));
}

TEST_F(Polyline3dPrimitiveTest, NoVerticesAreFine)
{
    primitive->setVertices({});
    EXPECT_TRUE(primitive->getVertices().empty());
    primitive->setVertices(numbered(2));
    primitive->setVertices({});
    EXPECT_TRUE(primitive->getVertices().empty());
    EXPECT_TRUE(lines(0, 2).empty());
}

TEST_F(Polyline3dPrimitiveTest, ChangesOneVertex)
{
    primitive->setVertex(0, v(100));
    primitive->setVertices(numbered(3));
    primitive->setVertex(1, v(50));
    primitive->setVertex(-1, v(60));
    primitive->setVertex(3, v(70));
    EXPECT_EQ(primitive->getVertices(), (Positions{v(0), v(50), v(2)}));
}

// --- drawing ranges --------------------------------------------------------------------------------------

TEST_F(Polyline3dPrimitiveTest, DrawsAllAsAStrip)
{
    primitive->setVertices(numbered(4));
    EXPECT_EQ(capture(GL_LINES, [&] { primitive->draw(pass(All), 1); }),
              (Positions{v(0), v(1), v(1), v(2), v(2), v(3)}));
}

TEST_F(Polyline3dPrimitiveTest, DrawsARange)
{
    primitive->setVertices(numbered(6));
    EXPECT_EQ(lines(2, 3), (Positions{v(2), v(3), v(3), v(4)}));
}

TEST_F(Polyline3dPrimitiveTest, ARangeFromBeforeTheStartLosesWhatIsNotThere)
{
    primitive->setVertices(numbered(6));
    EXPECT_EQ(lines(-2, 5), (Positions{v(0), v(1), v(1), v(2)}));
    EXPECT_TRUE(lines(-2, 2).empty());
    EXPECT_TRUE(lines(-5, 2).empty());
    EXPECT_TRUE(lines(std::numeric_limits<int>::min(), std::numeric_limits<int>::min()).empty());
    EXPECT_EQ(lines(-1, std::numeric_limits<int>::max()).size(), 10u);
}

TEST_F(Polyline3dPrimitiveTest, ARangeBeyondTheEndIsClamped)
{
    primitive->setVertices(numbered(4));
    EXPECT_EQ(lines(1, 100), (Positions{v(1), v(2), v(2), v(3)}));
    EXPECT_EQ(lines(1, std::numeric_limits<int>::max()).size(), 4u);
    EXPECT_TRUE(lines(4, 2).empty());
    EXPECT_TRUE(lines(1000, 5).empty());
    EXPECT_TRUE(lines(std::numeric_limits<int>::max(), std::numeric_limits<int>::max()).empty());
    EXPECT_TRUE(lines(0, 0).empty());
    EXPECT_TRUE(lines(1, -3).empty());
}

TEST_F(Polyline3dPrimitiveTest, WithoutVerticesNothingIsDrawn)
{
    EXPECT_TRUE(lines(0, 5).empty());
}

TEST_F(Polyline3dPrimitiveTest, ASingleVertexIsAPoint)
{
    primitive->setVertices(numbered(3));
    EXPECT_EQ(capture(GL_POINTS, [&] { primitive->drawRange(pass(All), 1, 1, 1); }), (Positions{v(1)}));
    EXPECT_EQ(capture(GL_POINTS, [&] { primitive->drawRange(pass(Points), 2, 7, 1); }), (Positions{v(2)}))
        << "one is left of the range";
    EXPECT_TRUE(capture(GL_LINES, [&] { primitive->drawRange(pass(Lines), 1, 1, 1); }).empty());
}

TEST_F(Polyline3dPrimitiveTest, StripsAreNoPoints)
{
    primitive->setVertices(numbered(3));
    EXPECT_TRUE(capture(GL_POINTS, [&] { primitive->draw(pass(Points), 1); }).empty());
}

TEST_F(Polyline3dPrimitiveTest, WithTrianglesOnlyItIsAStripOfTriangles)
{
    primitive->setVertices(numbered(4));
    EXPECT_EQ(capture(GL_TRIANGLES, [&] { primitive->draw(pass(Triangles), 1); }).size(), 6u);
    EXPECT_TRUE(capture(GL_LINES, [&] { primitive->draw(pass(0), 1); }).empty());
    EXPECT_TRUE(capture(GL_LINES, [&] { primitive->draw(pass(Adjacency), 1); }).empty());
    EXPECT_TRUE(capture(GL_TRIANGLES, [&] { primitive->draw(pass(Triangles | Adjacency), 1); }).empty())
        << "a strip of points has no triangles with neighbours";
}

TEST_F(Polyline3dPrimitiveTest, DrawsInstances)
{
    primitive->setVertices({{1, 0, 0}, {2, 0, 0}});
    EXPECT_EQ(capture(GL_LINES, [&] { primitive->draw(pass(All), 3); }),
              (Positions{{1, 0, 0}, {2, 0, 0}, {1001, 0, 0}, {1002, 0, 0}, {2001, 0, 0}, {2002, 0, 0}}));
}

TEST_F(Polyline3dPrimitiveTest, DrawsStripsOneAfterTheOther)
{
    primitive->setVertices(numbered(7));
    EXPECT_EQ(capture(GL_LINES,
                      [&] {
                          primitive->drawStrips(pass(Lines), {2, 0, 3, 1, 1});
                      }),
              (Positions{v(0), v(1), v(2), v(3), v(3), v(4)}));
    EXPECT_EQ(capture(GL_LINES,
                      [&] {
                          primitive->drawStrips(pass(Lines), {5, 9});
                      })
                  .size(),
              10u)
        << "the counts go beyond the buffer";
    EXPECT_TRUE(capture(GL_LINES, [&] { primitive->drawStrips(pass(Lines), {}); }).empty());
}

TEST_F(Polyline3dPrimitiveTest, LeavesTheVertexArrayAsItWas)
{
    primitive->setVertices(numbered(4));
    for (const int kinds : {Lines, 0}) {
        capture(GL_LINES, [&] { primitive->draw(pass(kinds), 1); });
        expectCleanVertexArray();
    }
}

// --- adjacency -------------------------------------------------------------------------------------------

namespace {

const char* const adjacencyVertex = R"(#version 430 core
layout(location = 0) in vec3 point;
out float number;
flat out int vertex_id;
void main() { gl_Position = vec4(point, 1.0); number = point.x; vertex_id = gl_VertexID; }
)";

// One point a segment: the numbers of its four vertices.
const char* const adjacencyGeometry = R"(#version 430 core
layout(lines_adjacency) in;
layout(points, max_vertices=1) out;
in float number[];
flat in int vertex_id[];
out vec4 segment;
void main()
{
    segment = vec4(number[0], number[1], number[2], number[3]);
    for (int i = 0; i < 4; ++i)
        if (vertex_id[i] != int(number[i])) segment = vec4(-1.0);
    EmitVertex();
}
)";

class AdjacencyTest : public Polyline3dPrimitiveTest
{
protected:
    std::vector<glm::vec4> segments(int first, int count, int instances = 1)
    {
        const auto program = link(adjacencyVertex, adjacencyGeometry, "segment");
        return capture(*program, GL_POINTS,
                       [&] { primitive->drawRange(pass(Lines | Adjacency), first, count, instances); });
    }
};

} // namespace

TEST_F(AdjacencyTest, EverySegmentIsDrawnAndTheEndsAreTheirOwnNeighbours)
{
    primitive->setVertices(numbered(5));
    EXPECT_EQ(segments(0, 5),
              (std::vector<glm::vec4>{{0, 0, 1, 2}, {0, 1, 2, 3}, {1, 2, 3, 4}, {2, 3, 4, 4}}));
}

TEST_F(AdjacencyTest, ShortStrips)
{
    primitive->setVertices(numbered(6));
    EXPECT_TRUE(segments(0, 1).empty());
    EXPECT_EQ(segments(0, 2), (std::vector<glm::vec4>{{0, 0, 1, 1}}));
    EXPECT_EQ(segments(0, 3), (std::vector<glm::vec4>{{0, 0, 1, 2}, {0, 1, 2, 2}}));
    EXPECT_EQ(segments(0, 4), (std::vector<glm::vec4>{{0, 0, 1, 2}, {0, 1, 2, 3}, {1, 2, 3, 3}}));
}

TEST_F(AdjacencyTest, RangesDoNotSeeTheirNeighbours)
{
    primitive->setVertices(numbered(9));
    EXPECT_EQ(segments(3, 2), (std::vector<glm::vec4>{{3, 3, 4, 4}}));
    EXPECT_EQ(segments(2, 4), (std::vector<glm::vec4>{{2, 2, 3, 4}, {2, 3, 4, 5}, {3, 4, 5, 5}}));
    EXPECT_EQ(segments(-1, 4), (std::vector<glm::vec4>{{0, 0, 1, 2}, {0, 1, 2, 2}}));
    EXPECT_EQ(segments(7, 50), (std::vector<glm::vec4>{{7, 7, 8, 8}}));
}

TEST_F(AdjacencyTest, DrawsInstances)
{
    primitive->setVertices(numbered(5));
    EXPECT_EQ(segments(0, 5, 2).size(), 8u);
}

TEST_F(AdjacencyTest, TheIndicesAreMadeOnceAndLeftUnbound)
{
    primitive->setVertices(numbered(4));
    EXPECT_EQ(buffers().size(), before.size() + 1);
    segments(0, 4);
    EXPECT_EQ(buffers().size(), before.size() + 2);
    primitive->setVertices(numbered(40));
    EXPECT_EQ(segments(0, 40).size(), 39u);
    EXPECT_EQ(buffers().size(), before.size() + 2);
    expectCleanVertexArray();
    primitive.reset();
    EXPECT_EQ(buffers(), before);
}

// --- life ------------------------------------------------------------------------------------------------

TEST_F(Polyline3dPrimitiveTest, HasNoBufferUntilTheFirstUploadAndDeletesIt)
{
    EXPECT_EQ(buffers(), before);
    primitive->setVertices(numbered(2));
    EXPECT_EQ(buffers().size(), before.size() + 1);
    primitive.reset();
    EXPECT_EQ(buffers(), before);
}

TEST_F(Polyline3dPrimitiveTest, MovingTakesTheBufferOver)
{
    primitive->setVertices(numbered(3));
    Polyline3dPrimitive taken(std::move(*primitive));
    EXPECT_EQ(taken.getVertices(), numbered(3));
    EXPECT_TRUE(primitive->getVertices().empty());
    EXPECT_EQ(primitive->getGeometryInfo().lineCount, 0u);

    Polyline3dPrimitive other;
    other.setVertices(numbered(7));
    other = std::move(taken);
    EXPECT_EQ(other.getVertices(), numbered(3));
    EXPECT_TRUE(taken.getVertices().empty());
    EXPECT_EQ(buffers().size(), before.size() + 1) << "the buffer that was replaced is deleted";
}

TEST_F(Polyline3dPrimitiveTest, CountsItsSegmentsOrItsPoint)
{
    primitive->setVertices(numbered(1));
    EXPECT_EQ(primitive->getGeometryInfo().pointCount, 1u);
    EXPECT_EQ(primitive->getGeometryInfo().lineCount, 0u);
    primitive->setVertices(numbered(5));
    EXPECT_EQ(primitive->getGeometryInfo().pointCount, 0u);
    EXPECT_EQ(primitive->getGeometryInfo().lineCount, 4u);
    EXPECT_EQ(primitive->getGeometryInfo().triangleCount, 0u);
}

// --- pens ------------------------------------------------------------------------------------------------

namespace {

const char* const dashVertex = R"(#version 430 core
layout(location = 0) in vec3 point;
uniform vec4 item_color;
uniform float pen_width;
uniform float u_dashSize;
uniform float u_gapSize;
uniform vec2 u_resolution;
out vec4 all;
void main() { all = item_color + vec4(pen_width, u_dashSize, u_gapSize, u_resolution.x * u_resolution.y) + point.x; }
)";

const char* const onlyColorVertex = R"(#version 430 core
layout(location = 0) in vec3 point;
uniform vec4 item_color;
out vec4 all;
void main() { all = item_color + point.x; }
)";

} // namespace

class PenTest : public Polyline3dPrimitiveTest
{
protected:
    std::unique_ptr<QOpenGLShaderProgram> setPen(const char* vertex, const std::vector<QPen>& pens)
    {
        auto program = link(vertex, nullptr, "all");
        program->bind();
        PaintContext paint = pass(All);
        paint.program = program.get();
        for (const QPen& pen : pens)
            primitive->setPen(paint, pen);
        return program;
    }
    static QPen pen(Qt::PenStyle style) { return QPen(QColor::fromRgb(51, 102, 153, 204), 2.5, style); }
};

TEST_F(PenTest, SetsColourAndWidth)
{
    const auto program = setPen(dashVertex, {pen(Qt::SolidLine)});
    EXPECT_LT(glm::distance(uniform(*program, "item_color"), glm::vec4(0.2f, 0.4f, 0.6f, 0.8f)), 1e-4f);
    EXPECT_EQ(uniform(*program, "pen_width").x, 2.5f);
}

TEST_F(PenTest, DashesHaveFixedLengthsWhateverThePattern)
{
    for (const Qt::PenStyle style :
         {Qt::DashLine, Qt::DotLine, Qt::DashDotLine, Qt::CustomDashLine, Qt::NoPen}) {
        const auto program = setPen(dashVertex, {pen(style)});
        EXPECT_EQ(uniform(*program, "u_dashSize").x, 10.0f);
        EXPECT_EQ(uniform(*program, "u_gapSize").x, 10.0f);
        EXPECT_EQ(glm::vec2(uniform(*program, "u_resolution")), glm::vec2(320, 200));
    }
}

TEST_F(PenTest, ASolidPenOnlyEndsTheDashes)
{
    const auto program = setPen(dashVertex, {pen(Qt::DashLine), pen(Qt::SolidLine)});
    EXPECT_EQ(uniform(*program, "u_dashSize").x, 0.0f);
    EXPECT_EQ(uniform(*program, "u_gapSize").x, 10.0f);
    EXPECT_EQ(glm::vec2(uniform(*program, "u_resolution")), glm::vec2(320, 200));
}

TEST_F(PenTest, UniformsThatTheProgramLacksAreSkipped)
{
    const auto program = setPen(onlyColorVertex, {pen(Qt::DashLine)});
    EXPECT_LT(glm::distance(uniform(*program, "item_color"), glm::vec4(0.2f, 0.4f, 0.6f, 0.8f)), 1e-4f);
}

TEST_F(PenTest, WithoutAProgramNothingHappens)
{
    primitive->setPen(pass(All), pen(Qt::DashLine));
}
