#include "SurfaceTest.h"

#include <Viewer3dModule/drawables/Prism3dSurfacePrimitive.h>
#include <Viewer3dModule/drawables/Rect3dPrimitive.h>

namespace {

using Positions = std::vector<glm::vec3>;

// against the clock, closed
const Positions closedSquare = {{0, 0, 5}, {4, 0, 6}, {4, 4, 7}, {0, 4, 8}, {0, 0, 5}};

class PrismTest : public SurfaceTest
{
protected:
    void SetUp() override
    {
        SurfaceTest::SetUp();
        primitive = std::make_unique<Prism3dSurfacePrimitive>();
    }
    void TearDown() override
    {
        makeCurrent();
        primitive.reset();
        SurfaceTest::TearDown();
    }
    /// The normal of each wall, which all its six vertices must have.
    Positions wallNormals()
    {
        Positions result;
        const std::vector<glm::vec4> all = normals(*primitive);
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (i % 6 == 0) result.emplace_back(all[i]);
            EXPECT_EQ(glm::vec3(all[i]), result.back()) << i;
        }
        return result;
    }

    std::unique_ptr<Prism3dSurfacePrimitive> primitive;
};

class RectTest : public SurfaceTest
{
protected:
    void SetUp() override
    {
        SurfaceTest::SetUp();
        primitive = std::make_unique<Rect3dPrimitive>();
    }
    void TearDown() override
    {
        makeCurrent();
        primitive.reset();
        SurfaceTest::TearDown();
    }
    std::unique_ptr<Rect3dPrimitive> primitive;
};

} // namespace

TEST_F(PrismTest, AWallIsTwoTrianglesFromZeroToTheHeight)
{
    primitive->setVertices(Positions{{1, 2, 99}, {3, 5, -99}}, 7.0f);
    const Positions expected = {{3, 5, 0}, {1, 2, 0}, {1, 2, 7}, {1, 2, 7}, {3, 5, 7}, {3, 5, 0}};
    EXPECT_EQ(primitive->getVertices(), expected);
    EXPECT_EQ(triangles(*primitive), expected);
    EXPECT_EQ(primitive->getGeometryInfo().triangleCount, 2u);
    EXPECT_EQ(primitive->getGeometryInfo().lineCount, 0u);
}

TEST_F(PrismTest, FlatBasesDoTheSame)
{
    primitive->setVertices(std::vector<glm::vec2>{{1, 2}, {3, 5}}, -7.0f);
    EXPECT_EQ(primitive->getVertex(0), glm::vec3(3, 5, 0));
    EXPECT_EQ(primitive->getVertex(2), glm::vec3(1, 2, -7));
}

TEST_F(PrismTest, ABaseOfOnePointUploadsNothing)
{
    primitive->setVertices(Positions{{1, 2, 3}}, 7.0f);
    EXPECT_EQ(primitive->getVBO(), 0u);
    primitive->setVertices(closedSquare, 1.0f);
    primitive->setVertices(Positions{{1, 2, 3}}, 7.0f);
    primitive->setVertices(Positions(), 7.0f);
    EXPECT_EQ(primitive->getVertexCount(), 24);
}

TEST_F(PrismTest, AnOpenBaseStaysOpen)
{
    primitive->setVertices(Positions(closedSquare.begin(), closedSquare.end() - 1), 2.0f);
    EXPECT_EQ(primitive->getVertexCount(), 18);
}

TEST_F(PrismTest, NormalsPointOutwards)
{
    primitive->setVertices(closedSquare, 2.0f);
    EXPECT_EQ(wallNormals(), (Positions{{0, -1, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}}));
    primitive->setVertices(Positions{{0, 0, 0}, {3, 4, 0}}, 2.0f);
    EXPECT_LT(glm::distance(wallNormals().at(0), glm::vec3(0.8f, -0.6f, 0)), 1e-6f);
}

TEST_F(PrismTest, AWallWithoutLengthLooksAlongTheBase)
{
    primitive->setVertices(Positions{{0, 0, 0}, {0, 0, 0}, {0, 5, 0}, {5, 5, 0}, {5, 0, 0}}, 2.0f);
    EXPECT_EQ(wallNormals().at(0), glm::vec3(0, -1, 0)); // from the first to the last point: along x
}

TEST_F(PrismTest, AWallWithoutLengthInAClosedBaseLooksAlongTheLastSegment)
{
    primitive->setVertices(Positions{{0, 0, 0}, {4, 0, 0}, {4, 0, 0}, {0, 3, 0}, {0, 0, 0}}, 2.0f);
    EXPECT_EQ(wallNormals().at(1), glm::vec3(-1, 0, 0)); // along -y
}

TEST_F(PrismTest, ABaseInOnePlaceHasNormalsAllTheSame)
{
    primitive->setVertices(Positions(3, {1, 1, 1}), 2.0f);
    for (const glm::vec3& normal : wallNormals())
        EXPECT_FLOAT_EQ(glm::length(normal), 1.0f);
}

TEST_F(PrismTest, AskedForPointsItDrawsNothing)
{
    primitive->setVertices(closedSquare, 2.0f);
    EXPECT_TRUE(capture(GL_POINTS, [&] { primitive->draw(pass(Points), 1); }).empty());
}

TEST_F(PrismTest, AskedForLinesItDrawsAStripThroughTheWalls)
{
    primitive->setVertices(closedSquare, 2.0f);
    const Positions walls = primitive->getVertices();
    Positions expected;
    for (std::size_t i = 0; i + 1 < walls.size(); ++i)
        expected.insert(expected.end(), {walls[i], walls[i + 1]});
    EXPECT_EQ(lines(*primitive), expected);
}

TEST_F(PrismTest, AskedForAnythingElseItDrawsTrianglesOnly)
{
    primitive->setVertices(closedSquare, 2.0f);
    for (const int primitives : {0, 3, 4, 5, 6, 7})
        EXPECT_EQ(triangles(*primitive, primitives).size(), 24u) << primitives;
    EXPECT_EQ(triangles(*primitive, All, 2).size(), 48u);
}

TEST_F(PrismTest, IsLeftOutWhereTheProgramTakesNoTriangles)
{
    primitive->setVertices(closedSquare, 2.0f);
    for (const int kinds : {Points, Lines | Adjacency})
        EXPECT_TRUE(capture(GL_LINES, [&] { primitive->draw(passOfProgram(kinds), 1); }).empty()) << kinds;
}

TEST_F(PrismTest, TakesTextureCoordinatesForAllItsVertices)
{
    primitive->setVertices(Positions{{0, 0, 0}, {4, 0, 0}}, 2.0f);
    primitive->setTexture(makeTexture({0, 0, 1, 1}), {{1, 0}, {0, 0}, {0, 1}, {0, 1}, {1, 1}, {1, 0}});
    primitive->setTexture(makeTexture({1, 0, 0, 1}), std::vector<glm::vec2>(5));
    EXPECT_EQ(textureColor(*primitive), glm::vec4(0, 0, 1, 1));
    EXPECT_EQ(texCoords(*primitive).at(4), glm::vec4(4, 0, 1, 1));
    primitive->setVertices(closedSquare, 2.0f);
    EXPECT_EQ(textureColor(*primitive).b, 0.0f);
}

TEST_F(PrismTest, MovesAVertex)
{
    primitive->setVertices(closedSquare, 2.0f);
    primitive->setVertex(23, {9, 9, 9});
    primitive->setVertex(24, {7, 7, 7});
    EXPECT_EQ(primitive->getVertex(23), glm::vec3(9, 9, 9));
}

TEST_F(PrismTest, LeavesNothingBoundAndDeletesItsBuffers)
{
    primitive->setVertices(closedSquare, 2.0f);
    primitive->setTexture(makeTexture({1, 0, 0, 1}), std::vector<glm::vec2>(24));
    triangles(*primitive);
    expectCleanVertexArray();
    EXPECT_EQ(boundTexture(), 0);
    const unsigned name = primitive->getVBO();
    primitive.reset();
    EXPECT_EQ(gl->glIsBuffer(name), GL_FALSE);
}

TEST_F(RectTest, IsTheUnitSquareWithAnUprightImage)
{
    EXPECT_EQ(primitive->getVertexCount(), 4);
    EXPECT_EQ(primitive->getVertices(), (Positions{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}}));
    const std::vector<glm::vec4> seen = texCoords(*primitive);
    ASSERT_EQ(seen.size(), 6u);
    for (const glm::vec4& v : seen)
        EXPECT_EQ(glm::vec2(v.z, v.w), glm::vec2(v.x, 1.0f - v.y));
}

TEST_F(RectTest, IsTheSameWhateverIsAskedFor)
{
    const Positions expected = triangles(*primitive);
    EXPECT_EQ(expected.size(), 6u);
    for (int primitives = 0; primitives <= All; ++primitives)
        for (const int instances : {0, 1, 5})
            EXPECT_EQ(triangles(*primitive, primitives, instances), expected)
                << primitives << ' ' << instances;
}

TEST_F(RectTest, IsLeftOutWhereTheProgramTakesNoTriangles)
{
    for (const int kinds : {Points, Lines, Lines | Adjacency})
        EXPECT_TRUE(capture(GL_LINES, [&] { primitive->draw(passOfProgram(kinds), 1); }).empty()) << kinds;
    EXPECT_EQ(capture(GL_TRIANGLES, [&] { primitive->draw(passOfProgram(Triangles), 1); }).size(), 6u);
}

TEST_F(RectTest, LeavesNothingBoundAndDeletesItsBuffers)
{
    triangles(*primitive);
    expectCleanVertexArray();
    const unsigned name = primitive->getVBO();
    EXPECT_EQ(gl->glIsBuffer(name), GL_TRUE);
    primitive.reset();
    EXPECT_EQ(gl->glIsBuffer(name), GL_FALSE);
}

TEST_F(RectTest, MadeWithNothingCurrentItDrawsNothing)
{
    context.doneCurrent();
    Rect3dPrimitive lonely;
    ASSERT_TRUE(makeCurrent());
    EXPECT_EQ(lonely.getVBO(), 0u);
    EXPECT_TRUE(triangles(lonely).empty());
    EXPECT_TRUE(lonely.getVertices().empty());
}
