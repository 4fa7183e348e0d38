#include "CaptureTest.h"

#include <Viewer3dModule/drawables/Polyline3dPrimitive.h>
#include <Viewer3dModule/drawables/VertexPool.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace {

using vertex_pool::Slice;

constexpr vertex_pool::Layout onePosition = {sizeof(glm::vec3)};

std::vector<glm::vec3> pooledVertices(int count, float value)
{
    std::vector<glm::vec3> vertices;
    for (int i = 0; i < count; ++i)
        vertices.emplace_back(value, static_cast<float>(i), -value);
    return vertices;
}

class VertexPoolTest : public CaptureTest
{
protected:
    Slice take(std::size_t count) { return Slice(*gl, onePosition, count); }
    Slice filled(int count, float value)
    {
        Slice slice = take(static_cast<std::size_t>(count));
        const std::vector<glm::vec3> vertices = pooledVertices(count, value);
        slice.write(*gl, 0, 0, vertices.data(), vertices.size());
        return slice;
    }
    std::vector<glm::vec3> contents(const Slice& slice)
    {
        std::vector<glm::vec3> vertices(slice.count());
        slice.read(*gl, 0, 0, vertices.data(), vertices.size());
        return vertices;
    }
};

} // namespace

TEST_F(VertexPoolTest, SlicesOfOneBufferKeepTheirValues)
{
    const Slice first = filled(5, 1.0f), second = filled(7, 2.0f);
    EXPECT_EQ(first.buffer(0), second.buffer(0));
    EXPECT_EQ(contents(first), pooledVertices(5, 1.0f));
    EXPECT_EQ(contents(second), pooledVertices(7, 2.0f));
    const glm::vec3 other(9.0f, 8.0f, 7.0f);
    second.write(*gl, 0, 2, &other, 1);
    EXPECT_EQ(contents(second)[2], other);
    EXPECT_EQ(contents(second)[1], pooledVertices(7, 2.0f)[1]);
    EXPECT_EQ(contents(first), pooledVertices(5, 1.0f));
}

TEST_F(VertexPoolTest, AnEmptySliceHasNoBuffer)
{
    const std::set<unsigned> before = buffers();
    const Slice none = take(0);
    EXPECT_EQ(none.count(), 0u);
    EXPECT_EQ(none.buffer(0), 0u);
    EXPECT_EQ(buffers(), before);
}

TEST_F(VertexPoolTest, WhatIsGivenBackIsUsedAgain)
{
    const Slice before = filled(10, 1.0f);
    std::optional<Slice> gap = filled(10, 2.0f);
    const Slice after = filled(10, 3.0f);
    const std::uint32_t place = gap->first();
    gap.reset();
    const Slice again = filled(10, 4.0f);
    EXPECT_EQ(again.first(), place);
    EXPECT_EQ(contents(before), pooledVertices(10, 1.0f));
    EXPECT_EQ(contents(after), pooledVertices(10, 3.0f));
}

TEST_F(VertexPoolTest, FurtherBuffersAreMadeAndAllGoInAnyOrder)
{
    const std::set<unsigned> before = buffers();
    std::vector<Slice> slices;
    for (int i = 0; i < 600; ++i)
        slices.push_back(filled(20, static_cast<float>(i)));
    EXPECT_GT(vertex_pool::bufferCount(), 1u);
    EXPECT_LT(vertex_pool::bufferCount(), 6u) << "12,000 vertices, pages double from 2,048 on";
    for (std::size_t i = 0; i < slices.size(); i += 7)
        EXPECT_EQ(contents(slices[i]), pooledVertices(20, static_cast<float>(i)));
    std::shuffle(slices.begin(), slices.end(), std::mt19937(4));
    while (!slices.empty())
        slices.pop_back();
    EXPECT_EQ(buffers(), before);
    EXPECT_EQ(vertex_pool::bufferCount(), 0u);
}

TEST_F(VertexPoolTest, ALargeSliceHasABufferToItself)
{
    const Slice small = filled(3, 1.0f);
    std::optional<Slice> large = take(200000);
    EXPECT_NE(large->buffer(0), small.buffer(0));
    EXPECT_EQ(large->first(), 0u);
    EXPECT_EQ(take(10).buffer(0), small.buffer(0));
    gl->glBindBuffer(GL_ARRAY_BUFFER, large->buffer(0));
    GLint size = 0;
    gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
    EXPECT_EQ(size, 200000 * 12);
    const unsigned name = large->buffer(0);
    large.reset();
    EXPECT_FALSE(gl->glIsBuffer(name));
}

TEST_F(VertexPoolTest, StreamsOfOneLayoutShareTheirPlaces)
{
    const vertex_pool::Layout layout = {12, 0, 4};
    const Slice first(*gl, layout, 4), second(*gl, layout, 2);
    EXPECT_EQ(first.buffer(1), 0u);
    EXPECT_NE(first.buffer(0), first.buffer(2));
    EXPECT_NE(first.buffer(0), take(1).buffer(0));
    const std::vector<std::uint32_t> colors = {11, 12};
    second.write(*gl, 2, 0, colors.data(), 2);
    std::vector<std::uint32_t> read(2);
    gl->glBindBuffer(GL_ARRAY_BUFFER, second.buffer(2));
    gl->glGetBufferSubData(GL_ARRAY_BUFFER, second.first() * 4, 8, read.data());
    EXPECT_EQ(read, colors);
}

TEST_F(VertexPoolTest, GivenBackWithNothingCurrentTheRoomStays)
{
    std::optional<Slice> slice = filled(5, 1.0f);
    const unsigned name = slice->buffer(0);
    context.doneCurrent();
    slice.reset();
    makeCurrent();
    EXPECT_TRUE(gl->glIsBuffer(name));
    EXPECT_EQ(take(5).buffer(0), name);
    EXPECT_FALSE(gl->glIsBuffer(name)) << "the last slice went with the context current";
}

TEST_F(VertexPoolTest, ASliceMayOutliveItsContexts)
{
    Slice slice;
    {
        QOffscreenSurface surface;
        surface.setFormat(context.format());
        surface.create();
        QOpenGLContext lonely;
        lonely.setFormat(context.format());
        ASSERT_TRUE(lonely.create());
        ASSERT_TRUE(lonely.makeCurrent(&surface));
        slice = Slice(*currentGLFunctions(), onePosition, 5);
        EXPECT_NE(slice.buffer(0), 0u);
        lonely.doneCurrent();
    }
    makeCurrent();
    const Slice other = filled(5, 1.0f);
    EXPECT_EQ(slice.buffer(0), 0u);
    slice = Slice();
    EXPECT_EQ(contents(other), pooledVertices(5, 1.0f));
}

TEST_F(VertexPoolTest, PrimitivesOfSharedBuffersReadDrawAndChangeTheirOwnVertices)
{
    constexpr auto shared = Polyline3dPrimitive::Storage::Shared;
    Polyline3dPrimitive first(shared), second(shared);
    first.setVertices(pooledVertices(3, 1.0f));
    second.setVertices(pooledVertices(4, 2.0f));
    EXPECT_EQ(vertex_pool::bufferCount(), 1u);
    second.setVertex(1, {5, 6, 7});
    first.setVertex(3, {0, 0, 0});
    std::vector<glm::vec3> expected = pooledVertices(4, 2.0f);
    expected[1] = {5, 6, 7};
    EXPECT_EQ(second.getVertices(), expected);
    EXPECT_EQ(second.getVertex(1), glm::vec3(5, 6, 7));
    EXPECT_TRUE(std::isnan(second.getVertex(4).x));
    EXPECT_EQ(first.getVertices(), pooledVertices(3, 1.0f));
    EXPECT_EQ(second.getVBO(), 0u);
    EXPECT_EQ(second.getVertexCount(), 4);
    EXPECT_EQ(capture(GL_LINES, [&] { second.drawRange(pass(7), 1, 2, 1); }),
              (std::vector<glm::vec3>{expected[1], expected[2]}));
    expectCleanVertexArray();
    // A length of its own again, elsewhere.
    second.setVertices(pooledVertices(40, 3.0f));
    EXPECT_EQ(second.getVertices(), pooledVertices(40, 3.0f));
    EXPECT_EQ(first.getVertices(), pooledVertices(3, 1.0f));
    Polyline3dPrimitive moved(std::move(second));
    EXPECT_EQ(moved.getVertices(), pooledVertices(40, 3.0f));
    EXPECT_TRUE(second.getVertices().empty()); // NOLINT: what is left of it
}
