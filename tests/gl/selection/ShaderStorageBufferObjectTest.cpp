#include "tests/support/GlTest.h"

#include <Viewer3dModule/shaders/ShaderStorageBufferObject.h>

#include <QtGui/QOpenGLShaderProgram>

#include <cstring>
#include <memory>
#include <vector>

namespace {

class ShaderStorageBufferObjectTest : public GlTest
{
protected:
    /// The words of a buffer, read without it.
    std::vector<std::uint32_t> words(unsigned buffer)
    {
        GLint64 bytes = 0;
        gl->glBindBuffer(GL_COPY_READ_BUFFER, buffer);
        gl->glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &bytes);
        std::vector<std::uint32_t> values(static_cast<std::size_t>(bytes) / 4);
        gl->glGetBufferSubData(GL_COPY_READ_BUFFER, 0, static_cast<GLsizeiptr>(values.size() * 4),
                               values.data());
        gl->glBindBuffer(GL_COPY_READ_BUFFER, 0);
        return values;
    }
    GLint64 storage(unsigned buffer)
    {
        GLint64 bytes = -1;
        gl->glBindBuffer(GL_COPY_READ_BUFFER, buffer);
        gl->glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &bytes);
        gl->glBindBuffer(GL_COPY_READ_BUFFER, 0);
        return bytes;
    }
    GLint boundBuffer()
    {
        GLint buffer = -1;
        gl->glGetIntegerv(GL_SHADER_STORAGE_BUFFER_BINDING, &buffer);
        return buffer;
    }
    GLint bufferAt(GLuint binding)
    {
        GLint buffer = -1;
        gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, binding, &buffer);
        return buffer;
    }
};

TEST_F(ShaderStorageBufferObjectTest, IsMadeWithoutAnyContext)
{
    context.doneCurrent();
    ShaderStorageBufferObject buffer(3, "some_block", 16);
    EXPECT_EQ(buffer.getBlockName(), "some_block");
    EXPECT_EQ(buffer.getSSBO(), 0u);
    EXPECT_EQ(buffer.size(), 0u) << "no buffer yet";
    makeCurrent();
    EXPECT_TRUE(buffer.init());
    EXPECT_NE(buffer.getSSBO(), 0u);
    EXPECT_EQ(buffer.size(), 16u);
    EXPECT_EQ(storage(buffer.getSSBO()), 16);
}

TEST_F(ShaderStorageBufferObjectTest, InitTwiceKeepsTheBuffer)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    ASSERT_TRUE(buffer.init());
    const unsigned name = buffer.getSSBO();
    EXPECT_TRUE(buffer.init());
    EXPECT_EQ(buffer.getSSBO(), name);
}

TEST_F(ShaderStorageBufferObjectTest, OfSizeZeroHasOneByteAndFailsToInit)
{
    ShaderStorageBufferObject buffer(3, "block", 0);
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_FALSE(buffer.init());
    EXPECT_NE(buffer.getSSBO(), 0u);
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_EQ(storage(buffer.getSSBO()), 1);
    EXPECT_FALSE(buffer.init()) << "nor the second time";
    EXPECT_FALSE(buffer.fill(0));
    EXPECT_EQ(buffer.map(true), nullptr);
    ASSERT_TRUE(buffer.resize(8));
    EXPECT_TRUE(buffer.init());
}

TEST_F(ShaderStorageBufferObjectTest, ResizedToNothingKeepsOneByte)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    ASSERT_TRUE(buffer.init());
    EXPECT_TRUE(buffer.resize(0));
    EXPECT_EQ(storage(buffer.getSSBO()), 1);
    EXPECT_FALSE(buffer.init());
}

TEST_F(ShaderStorageBufferObjectTest, HasUsageDynamicCopy)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    ASSERT_TRUE(buffer.init());
    GLint usage = 0;
    gl->glBindBuffer(GL_COPY_READ_BUFFER, buffer.getSSBO());
    gl->glGetBufferParameteriv(GL_COPY_READ_BUFFER, GL_BUFFER_USAGE, &usage);
    EXPECT_EQ(usage, 0x88EA);
}

TEST_F(ShaderStorageBufferObjectTest, ResizeBeforeInitOnlyNotesTheSize)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    context.doneCurrent();
    EXPECT_TRUE(buffer.resize(32));
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_EQ(buffer.getSSBO(), 0u);
    makeCurrent();
    ASSERT_TRUE(buffer.init());
    EXPECT_EQ(storage(buffer.getSSBO()), 32);
}

// Contents would be lost if it did anything, and without a context it would fail.
TEST_F(ShaderStorageBufferObjectTest, ResizeToTheSameSizeDoesNothing)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    ASSERT_TRUE(buffer.fill(7));
    EXPECT_TRUE(buffer.resize(16));
    EXPECT_EQ(words(buffer.getSSBO()), std::vector<std::uint32_t>(4, 7));
    context.doneCurrent();
    EXPECT_TRUE(buffer.resize(16));
    makeCurrent();
}

TEST_F(ShaderStorageBufferObjectTest, ResizeGivesNewStorageUnderTheSameName)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    ASSERT_TRUE(buffer.init());
    const unsigned name = buffer.getSSBO();
    EXPECT_TRUE(buffer.resize(64));
    EXPECT_EQ(buffer.getSSBO(), name);
    EXPECT_EQ(buffer.size(), 64u);
    EXPECT_EQ(storage(name), 64);
    EXPECT_EQ(boundBuffer(), 0);
}

TEST_F(ShaderStorageBufferObjectTest, FillSetsEveryWord)
{
    ShaderStorageBufferObject buffer(3, "block", 4 * 1000);
    ASSERT_TRUE(buffer.fill(0xFFFFFFFFu));
    EXPECT_EQ(words(buffer.getSSBO()), std::vector<std::uint32_t>(1000, 0xFFFFFFFFu));
    ASSERT_TRUE(buffer.fill(0x01020304u));
    EXPECT_EQ(words(buffer.getSSBO()), std::vector<std::uint32_t>(1000, 0x01020304u));
    EXPECT_EQ(boundBuffer(), 0);
}

TEST_F(ShaderStorageBufferObjectTest, FillOfAPartLeavesTheRest)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    ASSERT_TRUE(buffer.fill(1));
    ASSERT_TRUE(buffer.fill(2, 4, 8));
    EXPECT_EQ(words(buffer.getSSBO()), (std::vector<std::uint32_t>{1, 2, 2, 1}));
}

TEST_F(ShaderStorageBufferObjectTest, MapsForWritingAndForReading)
{
    ShaderStorageBufferObject buffer(3, "block", 8);
    const std::uint32_t values[] = {11, 22};
    void* memory = buffer.map(false);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(boundBuffer(), GLint(buffer.getSSBO())) << "until unmap";
    std::memcpy(memory, values, sizeof(values));
    buffer.unmap();
    EXPECT_EQ(boundBuffer(), 0);
    memory = buffer.map(true);
    ASSERT_NE(memory, nullptr);
    GLint access = 0;
    gl->glGetBufferParameteriv(GL_SHADER_STORAGE_BUFFER, GL_BUFFER_ACCESS, &access);
    EXPECT_EQ(access, 0x88B8);
    EXPECT_EQ(std::memcmp(memory, values, sizeof(values)), 0);
    buffer.unmap();
    EXPECT_EQ(words(buffer.getSSBO()), (std::vector<std::uint32_t>{11, 22}));
}

TEST_F(ShaderStorageBufferObjectTest, MapsAPart)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    ASSERT_TRUE(buffer.fill(5));
    ASSERT_TRUE(buffer.fill(6, 8, 4));
    const auto* part = static_cast<const std::uint32_t*>(buffer.map(true, 4, 8));
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(part[0], 5u);
    EXPECT_EQ(part[1], 6u);
    buffer.unmap();
}

TEST_F(ShaderStorageBufferObjectTest, ThatIsMappedAlreadyGivesNull)
{
    ShaderStorageBufferObject buffer(3, "block", 16);
    ASSERT_NE(buffer.map(false), nullptr);
    EXPECT_EQ(buffer.map(true), nullptr);
    EXPECT_EQ(buffer.map(true, 0, 4), nullptr);
    EXPECT_FALSE(debug->take().isEmpty());
    gl->glBindBuffer(GL_SHADER_STORAGE_BUFFER, buffer.getSSBO());
    buffer.unmap();
    EXPECT_NE(buffer.map(true), nullptr);
    buffer.unmap();
}

TEST_F(ShaderStorageBufferObjectTest, DoesNothingWithoutAContext)
{
    ShaderStorageBufferObject unmade(3, "block", 16);
    ShaderStorageBufferObject made(3, "block", 16);
    ASSERT_TRUE(made.fill(9));
    context.doneCurrent();
    for (ShaderStorageBufferObject* buffer : {&unmade, &made}) {
        EXPECT_FALSE(buffer->fill(1));
        EXPECT_FALSE(buffer->fill(1, 0, 4));
        EXPECT_EQ(buffer->map(true), nullptr);
        EXPECT_EQ(buffer->map(false, 0, 4), nullptr);
        EXPECT_FALSE(buffer->bind(0));
        buffer->unmap();
    }
    EXPECT_FALSE(unmade.init());
    EXPECT_FALSE(made.resize(32));
    makeCurrent();
    EXPECT_EQ(made.size(), 16u) << "that of its storage";
    EXPECT_EQ(words(made.getSSBO()), std::vector<std::uint32_t>(4, 9));
}

TEST_F(ShaderStorageBufferObjectTest, DestroyedWithoutAContextLeavesItsBuffer)
{
    auto buffer = std::make_unique<ShaderStorageBufferObject>(3, "block", 16);
    ASSERT_TRUE(buffer->init());
    unsigned name = buffer->getSSBO();
    context.doneCurrent();
    buffer.reset();
    makeCurrent();
    EXPECT_TRUE(gl->glIsBuffer(name));
    gl->glDeleteBuffers(1, &name);
}

TEST_F(ShaderStorageBufferObjectTest, DestroyedWithAContextDeletesIt)
{
    auto buffer = std::make_unique<ShaderStorageBufferObject>(3, "block", 16);
    ASSERT_TRUE(buffer->init());
    const unsigned name = buffer->getSSBO();
    buffer.reset();
    EXPECT_FALSE(gl->glIsBuffer(name));
}

TEST_F(ShaderStorageBufferObjectTest, CopiesNameTheSameBuffer)
{
    ShaderStorageBufferObject first(3, "block", 16);
    ASSERT_TRUE(first.init());
    const ShaderStorageBufferObject copy(first);
    ShaderStorageBufferObject assigned(4, "other", 8);
    assigned = first;
    for (const ShaderStorageBufferObject* buffer :
         {&copy, const_cast<const ShaderStorageBufferObject*>(&assigned)}) {
        EXPECT_EQ(buffer->getSSBO(), first.getSSBO());
        EXPECT_EQ(buffer->getBlockName(), "block");
        EXPECT_EQ(buffer->size(), 16u);
    }
    ASSERT_TRUE(assigned.bind(0));
    EXPECT_EQ(bufferAt(3), GLint(first.getSSBO()));
}

TEST_F(ShaderStorageBufferObjectTest, BindFailsBeforeInitAndTouchesNothing)
{
    ShaderStorageBufferObject other(3, "block", 16);
    ASSERT_TRUE(other.init());
    ASSERT_TRUE(other.bind(0));
    const ShaderStorageBufferObject buffer(3, "block", 16);
    EXPECT_FALSE(buffer.bind(0));
    EXPECT_EQ(bufferAt(3), GLint(other.getSSBO()));
}

TEST_F(ShaderStorageBufferObjectTest, BindConnectsTheProgramsBlock)
{
    QOpenGLShaderProgram program;
    ASSERT_TRUE(program.addShaderFromSourceCode(QOpenGLShader::Compute, R"(#version 430 core
layout(local_size_x = 1) in;
layout(std430, binding = 0) buffer numbers { uint data[]; };
void main() { data[0] = uint(data.length()); data[1] = 77u; }
)"));
    ASSERT_TRUE(program.link());
    ShaderStorageBufferObject buffer(5, "numbers", 12);
    ASSERT_TRUE(buffer.fill(0));
    ASSERT_TRUE(buffer.bind(program.programId()));
    EXPECT_EQ(bufferAt(5), GLint(buffer.getSSBO()));
    ASSERT_TRUE(program.bind());
    gl->glDispatchCompute(1, 1, 1);
    gl->glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
    const auto* values = static_cast<const std::uint32_t*>(buffer.map(true));
    ASSERT_NE(values, nullptr);
    EXPECT_EQ(values[0], 3u);
    EXPECT_EQ(values[1], 77u);
    buffer.unmap();
    program.release();

    // A program without the block: nothing is bound.
    ShaderStorageBufferObject stranger(6, "letters", 12);
    ASSERT_TRUE(stranger.init());
    EXPECT_FALSE(stranger.bind(program.programId()));
    EXPECT_EQ(bufferAt(6), 0);
}

TEST_F(ShaderStorageBufferObjectTest, BindWithoutAProgramUsesTheFixedPoint)
{
    ShaderStorageBufferObject buffer(5, "numbers", 12);
    ASSERT_TRUE(buffer.init());
    EXPECT_TRUE(buffer.bind(0));
    EXPECT_EQ(bufferAt(5), GLint(buffer.getSSBO()));
}

} // namespace
