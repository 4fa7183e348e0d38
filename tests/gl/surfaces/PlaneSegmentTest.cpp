#include "SurfaceTest.h"
#include "tests/support/LogTrap.h"

#include <Viewer3dModule/drawables/Plane3dSegmentPrimitive.h>

#include <cmath>
#include <limits>

namespace {

using Positions = std::vector<glm::vec3>;

const Positions square = {{0, 0, 1}, {4, 0, 1}, {4, 4, 1}, {0, 4, 1}};
const Positions squareWithHole = {{0, 0, 1}, {4, 0, 1}, {4, 4, 1}, {0, 4, 1},
                                  {1, 1, 1}, {2, 1, 1}, {1, 2, 1}};
const Positions bow = {{0, 0, 0}, {4, 4, 0}, {4, 0, 0}, {0, 4, 0}};

/// Area of triangles, counter-clockwise in x and y.
float areaOf(const Positions& triangles)
{
    float sum = 0.0f;
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3)
        sum += 0.5f * glm::cross(triangles[i + 1] - triangles[i], triangles[i + 2] - triangles[i]).z;
    return sum;
}

/// What the 1,000 cases of points without a region have in turn.
Positions withoutRegion(int number)
{
    const auto n = static_cast<float>(number);
    switch (number % 8) {
    case 0:
        return {{n, 0, 0}};
    case 1:
        return {{n, 0, 0}, {0, n, 0}};
    case 2:
        return Positions(5, {n, n, n});
    case 3:
        return {{0, 0, 0}, {n, n, n}, {2 * n, 2 * n, 2 * n}, {3 * n, 3 * n, 3 * n}};
    case 4:
        return {
            {0.1f * n, 0.2f * n, 0}, {0.3f * n, 0.6f * n, 0}, {0.7f * n, 1.4f * n, 0}}; // but for rounding
    case 5:
        return {{0, 0, 0}, {n, 0, 0}, {n, n, 0}, {n, 0, 0}};
    case 6:
        return {{0, 0, 0}, {n, std::numeric_limits<float>::quiet_NaN(), 0}, {n, n, 0}};
    default:
        return {{0, 0, 0}, {n, 0, std::numeric_limits<float>::infinity()}, {n, n, 0}};
    }
}

class PlaneSegmentTest : public SurfaceTest
{
protected:
    void SetUp() override
    {
        SurfaceTest::SetUp();
        primitive = std::make_unique<Plane3dSegmentPrimitive>();
    }
    void TearDown() override
    {
        makeCurrent();
        primitive.reset();
        SurfaceTest::TearDown();
    }
    std::uint32_t triangleCount() { return primitive->getGeometryInfo().triangleCount; }

    std::unique_ptr<Plane3dSegmentPrimitive> primitive;
};

} // namespace

TEST_F(PlaneSegmentTest, BeginsEmpty)
{
    EXPECT_EQ(primitive->getVertexCount(), 0);
    EXPECT_EQ(primitive->getVBO(), 0u);
    EXPECT_EQ(triangleCount(), 0u);
    EXPECT_TRUE(triangles(*primitive).empty());
}

TEST_F(PlaneSegmentTest, FillsAContour)
{
    primitive->setVertices(square, {4});
    EXPECT_EQ(primitive->getVertices(), square);
    const Drawable3dPrimitive::GeometryInfo info = primitive->getGeometryInfo();
    EXPECT_EQ(info.pointCount, 0u);
    EXPECT_EQ(info.lineCount, 0u);
    EXPECT_EQ(info.triangleCount, 2u);
    const Positions drawn = triangles(*primitive);
    EXPECT_EQ(drawn.size(), 6u);
    EXPECT_FLOAT_EQ(areaOf(drawn), 16.0f);
}

TEST_F(PlaneSegmentTest, LeavesHolesOpen)
{
    primitive->setVertices(squareWithHole, {4, 3});
    EXPECT_FLOAT_EQ(areaOf(triangles(*primitive)), 15.5f);
}

TEST_F(PlaneSegmentTest, FlatPointsLieAtZero)
{
    primitive->setVertices(std::vector<glm::vec2>{{0, 0}, {2, 0}, {0, 2}}, {3});
    EXPECT_EQ(primitive->getVertices(), (Positions{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}));
    EXPECT_FLOAT_EQ(areaOf(triangles(*primitive)), 2.0f);
}

TEST_F(PlaneSegmentTest, AskedForPointsItDrawsNothing)
{
    primitive->setVertices(square, {4});
    EXPECT_TRUE(capture(GL_POINTS, [&] { primitive->draw(pass(Points), 1); }).empty());
}

TEST_F(PlaneSegmentTest, AskedForLinesItDrawsALoopAContour)
{
    primitive->setVertices(squareWithHole, {4, 3});
    const Positions& p = squareWithHole;
    EXPECT_EQ(lines(*primitive), (Positions{p[0], p[1], p[1], p[2], p[2], p[3], p[3], p[0], p[4], p[5], p[5],
                                            p[6], p[6], p[4]}));
}

TEST_F(PlaneSegmentTest, AskedForAnythingElseItDrawsTrianglesOnly)
{
    primitive->setVertices(square, {4});
    for (const int primitives : {0, 3, 4, 5, 6, 7})
        EXPECT_EQ(triangles(*primitive, primitives).size(), 6u) << primitives;
}

TEST_F(PlaneSegmentTest, DrawsEachInstance)
{
    primitive->setVertices(square, {4});
    const Positions drawn = triangles(*primitive, All, 3);
    ASSERT_EQ(drawn.size(), 18u);
    EXPECT_GE(drawn[17].x, 2000.0f);
}

TEST_F(PlaneSegmentTest, IsLeftOutWhereTheProgramTakesNoTriangles)
{
    primitive->setVertices(square, {4});
    for (const int kinds : {Points, Points | Lines, Lines | Adjacency})
        EXPECT_TRUE(capture(GL_LINES, [&] { primitive->draw(passOfProgram(kinds), 1); }).empty()) << kinds;
    EXPECT_EQ(capture(GL_LINES, [&] { primitive->draw(passOfProgram(Lines), 1); }).size(), 8u);
    EXPECT_EQ(capture(GL_TRIANGLES, [&] { primitive->draw(passOfProgram(Triangles), 1); }).size(), 6u);
}

TEST_F(PlaneSegmentTest, AllNormalsAreThePlanes)
{
    // from (1, 2, 2) / 3, against the clock as seen from there
    const glm::vec3 u(2, 1, -2), v(-2, 2, -1), n(1, 2, 2);
    primitive->setVertices(Positions{u, v, -u, -v}, {4});
    const std::vector<glm::vec4> seen = normals(*primitive);
    ASSERT_EQ(seen.size(), 6u);
    for (const glm::vec4& normal : seen)
        EXPECT_LT(glm::distance(glm::vec3(normal), n / 3.0f), 1e-6f);
    primitive->setVertices(Positions{-v, -u, v, u}, {4});
    EXPECT_LT(glm::distance(glm::vec3(normals(*primitive).front()), -n / 3.0f), 1e-6f);
}

TEST_F(PlaneSegmentTest, MovingAVertexKeepsTheTriangles)
{
    primitive->setVertices(square, {4});
    primitive->setVertex(2, {9, 9, 9});
    primitive->setVertex(-1, {7, 7, 7});
    primitive->setVertex(4, {7, 7, 7});
    EXPECT_EQ(primitive->getVertices(), (Positions{square[0], square[1], {9, 9, 9}, square[3]}));
    EXPECT_EQ(triangleCount(), 2u);
}

TEST_F(PlaneSegmentTest, ReplacingVerticesKeepsTheBuffer)
{
    primitive->setVertices(square, {4});
    const unsigned name = primitive->getVBO();
    primitive->setVertices(squareWithHole, {4, 3});
    EXPECT_EQ(primitive->getVBO(), name);
    EXPECT_EQ(primitive->getVertexCount(), 7);
    primitive->setVertices(Positions(), {});
    EXPECT_EQ(primitive->getVertexCount(), 0);
    EXPECT_EQ(triangleCount(), 0u);
}

TEST_F(PlaneSegmentTest, DeletesItsBuffers)
{
    primitive->setVertices(square, {4});
    const unsigned name = primitive->getVBO();
    EXPECT_EQ(gl->glIsBuffer(name), GL_TRUE);
    primitive.reset();
    EXPECT_EQ(gl->glIsBuffer(name), GL_FALSE);
}

TEST_F(PlaneSegmentTest, WithNothingCurrentNothingChanges)
{
    primitive->setVertices(square, {4});
    context.doneCurrent();
    primitive->setVertices(squareWithHole, {4, 3});
    primitive->setVertex(0, {9, 9, 9});
    primitive->setTexture(1, std::vector<glm::vec2>(4));
    primitive->draw(PaintContext(), 1);
    ASSERT_TRUE(makeCurrent());
    EXPECT_EQ(primitive->getVertices(), square);
    EXPECT_EQ(triangleCount(), 2u);
    EXPECT_EQ(textureColor(*primitive).r, 0.0f);
}

TEST_F(PlaneSegmentTest, LeavesNothingBound)
{
    primitive->setVertices(square, {4});
    primitive->setTexture(makeTexture({1, 0, 0, 1}), std::vector<glm::vec2>(4));
    for (const int primitives : {Lines, All}) {
        plain->bind();
        primitive->draw(pass(primitives), 1);
        plain->release();
        expectCleanVertexArray();
        EXPECT_EQ(boundTexture(), 0);
    }
}

TEST_F(PlaneSegmentTest, ATextureComesWithCoordinates)
{
    primitive->setVertices(Positions{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, {3});
    primitive->setTexture(makeTexture({0.25f, 0.5f, 0.75f, 1}), {{0, 0}, {0.5f, 0}, {0, 0.25f}});
    EXPECT_EQ(textureColor(*primitive), glm::vec4(0.25f, 0.5f, 0.75f, 1));
    const std::vector<glm::vec4> seen = texCoords(*primitive);
    ASSERT_EQ(seen.size(), 3u);
    for (const glm::vec4& v : seen)
        EXPECT_EQ(glm::vec2(v.z, v.w), glm::vec2(v.x / 4, v.y / 8));
}

TEST_F(PlaneSegmentTest, OneTextureCoordinateTooFewChangesNothing)
{
    primitive->setVertices(square, {4});
    primitive->setTexture(makeTexture({1, 0, 0, 1}), std::vector<glm::vec2>(4, {0.5f, 0.5f}));
    primitive->setTexture(makeTexture({0, 1, 0, 1}), std::vector<glm::vec2>(3));
    EXPECT_EQ(textureColor(*primitive), glm::vec4(1, 0, 0, 1));
    EXPECT_EQ(texCoords(*primitive).front().z, 0.5f);
}

TEST_F(PlaneSegmentTest, ATextureEndsWithTheNumberOfPoints)
{
    primitive->setVertices(square, {4});
    primitive->setTexture(makeTexture({1, 0, 0, 1}), std::vector<glm::vec2>(4, {0.5f, 0.5f}));
    primitive->setVertices(bow, {4}); // a crossing more, but no point
    EXPECT_EQ(textureColor(*primitive).r, 1.0f);
    primitive->setVertices(squareWithHole, {4, 3});
    EXPECT_EQ(textureColor(*primitive).r, 0.0f);
    EXPECT_EQ(texCoords(*primitive).front().z, 0.0f);
}

TEST_F(PlaneSegmentTest, ACrossingIsDrawnButIsNoVertexOfTheOwners)
{
    primitive->setVertices(bow, {4});
    EXPECT_EQ(primitive->getVertices(), bow);
    primitive->setTexture(makeTexture({1, 0, 0, 1}), {{0, 0}, {1, 0.5f}, {1, 0}, {0, 0.5f}});
    const std::vector<glm::vec4> seen = texCoords(*primitive);
    ASSERT_EQ(seen.size(), 6u);
    int crossings = 0;
    for (const glm::vec4& v : seen) {
        EXPECT_NEAR(v.z, v.x / 4, 1e-6f);
        EXPECT_NEAR(v.w, v.y / 8, 1e-6f);
        crossings += v.x == 2.0f && v.y == 2.0f;
    }
    EXPECT_EQ(crossings, 2);
    EXPECT_EQ(lines(*primitive).size(), 8u);
}

TEST_F(PlaneSegmentTest, ColorIsPlain)
{
    const auto program = link(R"(#version 430 core
uniform vec4 item_color;
uniform int uColorMode;
uniform int uMaterialMode;
void main() { gl_Position = item_color + vec4(uColorMode, uMaterialMode, 0.0, 0.0); }
)",
                              nullptr, "gl_Position");
    program->bind();
    program->setUniformValue("uColorMode", 2);
    program->setUniformValue("uMaterialMode", 1);
    PaintContext paint = pass(All);
    primitive->setColor(paint, Qt::blue); // without a program
    paint.program = program.get();
    primitive->setColor(paint, QColor(255, 0, 0, 51));
    EXPECT_LT(glm::distance(uniform(*program, "item_color"), glm::vec4(1, 0, 0, 0.2f)), 1e-6f);
    for (const char* name : {"uColorMode", "uMaterialMode"}) {
        int value = -1;
        gl->glGetUniformiv(program->programId(), program->uniformLocation(name), &value);
        EXPECT_EQ(value, 0) << name;
    }
    program->release();
}

TEST_F(PlaneSegmentTest, AThousandDegenerateOnesLeaveALineEachAndDrawNothing)
{
    for (int number = 1; number <= 1000; ++number) {
        const Positions points = withoutRegion(number);
        primitive->setName(QStringLiteral("plot %1").arg(number));
        primitive->setVertices(points, {static_cast<int>(points.size())});
        const QStringList log = LogTrap::take();
        ASSERT_EQ(log.size(), 1) << number;
        EXPECT_TRUE(log[0].startsWith(QStringLiteral("polygon \"plot %1\": ").arg(number)))
            << qPrintable(log[0]);
        EXPECT_EQ(triangleCount(), 0u);
        EXPECT_TRUE(triangles(*primitive).empty()) << number;
        EXPECT_TRUE(lines(*primitive).empty()) << number;
    }
}

TEST_F(PlaneSegmentTest, ContoursOfMorePointsThanThereAreAreRefused)
{
    primitive->setVertices(square, {4, 1});
    EXPECT_EQ(
        LogTrap::take(),
        QStringList{"polygon \"plane segment of 4 points\": its contours have 5 points, but there are 4"});
    EXPECT_EQ(triangleCount(), 0u);
    primitive->setVertices(square, std::vector<int>(3, std::numeric_limits<int>::max()));
    EXPECT_EQ(LogTrap::take().size(), 1);
    EXPECT_TRUE(lines(*primitive).empty());
}

TEST_F(PlaneSegmentTest, ANegativeCountIsAContourOfNoPoints)
{
    primitive->setVertices(squareWithHole, {4, -2, 3});
    EXPECT_FLOAT_EQ(areaOf(triangles(*primitive)), 15.5f);
    EXPECT_EQ(lines(*primitive).size(), 14u);
}
