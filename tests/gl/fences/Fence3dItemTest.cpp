// What the element of the fence hands to a program, read back from the program and the buffer.
#include "tests/support/SceneTest.h"

#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/PrismFence.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/host/Fence3dItem.h>

#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned binding = 10;

const char* const vertexSource = "#version 430 core\nvoid main() { gl_Position = vec4(0.0); }\n";
const char* const fencedSource = R"(#version 430 core
layout(std430) buffer prism_fence_buffer { vec4 box_min; vec4 box_max; mat4 to_fence; vec3 z; uint count; vec2 fence[]; };
uniform int fence_to_use;
uniform bool fence_gray_preview;
uniform vec3 sphere_fence_center;
uniform float sphere_fence_radius;
out vec4 color;
void main()
{
    color = vec4(sphere_fence_center, sphere_fence_radius);
    if (fence_to_use == 1) color = box_min + box_max + to_fence * vec4(z, fence[count].x);
    if (fence_gray_preview) color *= 0.5;
}
)";
const char* const spheresOnlySource = R"(#version 430 core
uniform int fence_to_use;
uniform vec3 sphere_fence_center;
uniform float sphere_fence_radius;
out vec4 color;
void main() { color = vec4(sphere_fence_center, sphere_fence_radius * float(fence_to_use)); }
)";
const char* const plainSource = R"(#version 430 core
uniform bool fence_gray_preview;
out vec4 color;
void main() { color = vec4(fence_gray_preview ? 1.0 : 0.5); }
)";

class Fence3dItemTest : public SceneTest
{
protected:
    void TearDown() override
    {
        scene->makeCurrent();
        gl->glUseProgram(0);
        gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, binding, 0);
        program.reset();
        item.reset();
        SceneTest::TearDown();
    }
    /// A context of a pass with a program of these fragments, which is in use.
    PaintContext with(const char* fragments)
    {
        program = std::make_unique<QOpenGLShaderProgram>();
        EXPECT_TRUE(program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexSource));
        EXPECT_TRUE(program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragments));
        EXPECT_TRUE(program->link()) << qPrintable(program->log());
        EXPECT_TRUE(program->bind());
        PaintContext context = paintContext(8, 8);
        context.program = program.get();
        return context;
    }
    int integer(const char* name)
    {
        GLint value = -1;
        gl->glGetUniformiv(program->programId(), program->uniformLocation(name), &value);
        return value;
    }
    void setInteger(const char* name, int value) { gl->glUniform1i(program->uniformLocation(name), value); }
    glm::vec3 center()
    {
        glm::vec3 value(-1.0f);
        gl->glGetUniformfv(program->programId(), program->uniformLocation("sphere_fence_center"), &value.x);
        return value;
    }
    float radius()
    {
        float value = -1.0f;
        gl->glGetUniformfv(program->programId(), program->uniformLocation("sphere_fence_radius"), &value);
        return value;
    }
    GLint boundBuffer()
    {
        GLint buffer = -1;
        gl->glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, binding, &buffer);
        return buffer;
    }
    /// All bytes of the buffer at the binding point.
    std::vector<char> record()
    {
        GLint64 size = 0;
        gl->glBindBuffer(GL_COPY_READ_BUFFER, GLuint(boundBuffer()));
        gl->glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &size);
        std::vector<char> bytes(std::size_t(size), '\x55');
        gl->glGetBufferSubData(GL_COPY_READ_BUFFER, 0, GLsizeiptr(size), bytes.data());
        gl->glBindBuffer(GL_COPY_READ_BUFFER, 0);
        return bytes;
    }
    /// A square about the axis of sight at a world point, looking along +z.
    void setFrustum(const glm::dvec3& eye, double zFar, int corners = 4)
    {
        std::vector<glm::dvec3> points;
        for (int i = 0; i < corners; ++i) {
            const double a = (1.0 + 2.0 * i) * 3.14159265358979 / corners;
            points.push_back(eye + glm::dvec3(std::cos(a), std::sin(a), 2.0));
        }
        points.push_back(points.front());
        glm::dmat4 fromWorld(1.0);
        fromWorld[3] = glm::dvec4(-eye, 1.0);
        const auto fence =
            std::static_pointer_cast<Frustum3D>(item->getCreateFence(Fence3DObject::Frustum3D));
        fence->setFence(eye, {0.0, 0.0, 1.0}, 0.5, 1.0, zFar, points, fromWorld);
        ASSERT_FALSE(item->empty());
    }
    void setSphere(const glm::dvec3& at, double size)
    {
        std::static_pointer_cast<SphereFence>(item->getCreateFence(Fence3DObject::SphereFence))
            ->setFence(at, size);
    }
    /// About a centre, scaled by an eighth, heights by twice as much.
    void setTransform(const glm::dvec3& middle)
    {
        scene->setModelToSceneTransform({{0.125, 0.0, 0.0, 0.0},
                                         {0.0, 0.125, 0.0, 0.0},
                                         {0.0, 0.0, 0.25, 0.0},
                                         {middle * glm::dvec3(-0.125, -0.125, -0.25), 1.0}});
    }

    std::unique_ptr<Fence3dItem> item = std::make_unique<Fence3dItem>();
    std::unique_ptr<QOpenGLShaderProgram> program;
};

float floatAt(const std::vector<char>& bytes, std::size_t offset)
{
    float value = nanf("");
    if (offset + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

std::uint32_t countIn(const std::vector<char>& bytes)
{
    std::uint32_t value = 0;
    if (bytes.size() >= 112) std::memcpy(&value, bytes.data() + 108, sizeof value);
    return value;
}

TEST_F(Fence3dItemTest, AProgramThatKnowsNoFencesIsLeftAsItIs)
{
    const PaintContext context = with(plainSource);
    item->setInteractionMode(true);
    setSphere({0.0, 0.0, 0.0}, 1.0);
    EXPECT_FALSE(item->bind(context));
    EXPECT_EQ(integer("fence_gray_preview"), 0);
    setFrustum(glm::dvec3(0.0), 4.0);
    EXPECT_FALSE(item->bind(context));
    EXPECT_EQ(boundBuffer(), 0);
}

TEST_F(Fence3dItemTest, WithoutFenceTheProgramIsToldSo)
{
    const PaintContext context = with(fencedSource);
    setInteger("fence_to_use", 7);
    EXPECT_FALSE(item->bind(context));
    EXPECT_EQ(integer("fence_to_use"), 0);
    EXPECT_EQ(integer("fence_gray_preview"), 0);
    EXPECT_EQ(boundBuffer(), 0);
}

TEST_F(Fence3dItemTest, AnEmptyFenceIsNone)
{
    const PaintContext context = with(fencedSource);
    for (const auto type :
         {Fence3DObject::Frustum3D, Fence3DObject::SphereFence, Fence3DObject::PrismFence}) {
        item->getCreateFence(type);
        setInteger("fence_to_use", 7);
        EXPECT_FALSE(item->bind(context));
        EXPECT_EQ(integer("fence_to_use"), 0);
    }
}

TEST_F(Fence3dItemTest, InteractionModeGoesAlong)
{
    const PaintContext context = with(fencedSource);
    item->setInteractionMode(true);
    item->bind(context);
    EXPECT_EQ(integer("fence_gray_preview"), 1);
    item->setInteractionMode(false);
    item->bind(context);
    EXPECT_EQ(integer("fence_gray_preview"), 0);
}

TEST_F(Fence3dItemTest, ASphereIsHandedOverInTheScene)
{
    const PaintContext context = with(fencedSource);
    for (const glm::dvec3& middle : {glm::dvec3(0.0), glm::dvec3(2.7e6, 5.4e5, 4.9e6)}) {
        setTransform(middle);
        setSphere(middle + glm::dvec3(8.0, 16.0, 24.0), 12.0);
        EXPECT_TRUE(item->bind(context));
        EXPECT_EQ(integer("fence_to_use"), 2);
        EXPECT_EQ(center(), glm::vec3(1.0f, 2.0f, 6.0f));
        EXPECT_EQ(radius(), 3.0f); // as a height of 12 is in the scene
    }
}

TEST_F(Fence3dItemTest, ASphereNeedsNoStorageBlock)
{
    setSphere({0.0, 0.0, 0.0}, 1.0);
    EXPECT_TRUE(item->bind(with(spheresOnlySource)));
    EXPECT_EQ(integer("fence_to_use"), 2);
    EXPECT_EQ(boundBuffer(), 0);
}

TEST_F(Fence3dItemTest, AFrustumIsHandedOverInTheScene)
{
    const PaintContext context = with(fencedSource);
    for (const glm::dvec3& eye : {glm::dvec3(0.0), glm::dvec3(2.7e6, 5.4e5, 4.9e6)}) {
        SCOPED_TRACE(eye.x);
        setTransform(eye - glm::dvec3(8.0, 0.0, 0.0)); // the eye is at (1, 0, 0) of the scene
        setFrustum(eye, 4.0);
        EXPECT_TRUE(item->bind(context));
        EXPECT_EQ(integer("fence_to_use"), 1);
        const std::vector<char> bytes = record();
        ASSERT_EQ(bytes.size(), 144u + 8u * 5u);
        EXPECT_EQ(countIn(bytes), 5u);
        // corners at (1, 1) / sqrt(2) in depth 2: half as far from the axis at depth 1, twice at depth 4
        const double half = 2.0 * std::sqrt(0.5) * 0.125;
        const double expected[] = {1.0 - half, -half, 0.25, 1.0, 1.0 + half, half, 1.0, 1.0};
        for (std::size_t i = 0; i < 8; ++i)
            EXPECT_NEAR(floatAt(bytes, 4 * i), expected[i], 1e-6) << i;
        // scene to fence frame: 8, 8 and 4 times as large, about the eye
        const double matrix[] = {8, 0, 0, 0, 0, 8, 0, 0, 0, 0, 4, 0, -8, 0, 0, 1};
        for (std::size_t i = 0; i < 16; ++i)
            EXPECT_NEAR(floatAt(bytes, 32 + 4 * i), matrix[i], 1e-6) << i;
        EXPECT_EQ(floatAt(bytes, 96), 1.0f);
        EXPECT_EQ(floatAt(bytes, 100), 4.0f);
        EXPECT_EQ(floatAt(bytes, 104), 0.5f);
        const float corner = float(std::sqrt(0.5));
        const float polygon[] = {corner,  corner, -corner, corner, -corner,
                                 -corner, corner, -corner, corner, corner};
        for (std::size_t i = 0; i < 10; ++i)
            EXPECT_NEAR(floatAt(bytes, 112 + 4 * i), polygon[i], 1e-6) << i;
        EXPECT_TRUE(std::all_of(bytes.begin() + 112 + 40, bytes.end(), [](char byte) { return byte == 0; }));
    }
}

TEST_F(Fence3dItemTest, TheBufferHasTheSizeOfItsFence)
{
    const PaintContext context = with(fencedSource);
    for (const int corners : {4, 999, 3, 3}) {
        setFrustum(glm::dvec3(0.0), 4.0, corners);
        EXPECT_TRUE(item->bind(context));
        const std::vector<char> bytes = record();
        EXPECT_EQ(bytes.size(), 144u + 8u * std::size_t(corners + 1));
        EXPECT_EQ(countIn(bytes), std::uint32_t(corners + 1));
    }
}

TEST_F(Fence3dItemTest, AFrustumWithoutEndKeepsItsFarDepthInTheRecord)
{
    setFrustum(glm::dvec3(0.0), 0.0);
    EXPECT_TRUE(item->bind(with(fencedSource)));
    const std::vector<char> bytes = record();
    EXPECT_LE(floatAt(bytes, 100), floatAt(bytes, 96));
}

TEST_F(Fence3dItemTest, TheProgramsBlockIsBoundToTheBuffersPoint)
{
    setFrustum(glm::dvec3(0.0), 4.0);
    EXPECT_TRUE(item->bind(with(fencedSource)));
    const GLuint block =
        gl->glGetProgramResourceIndex(program->programId(), GL_SHADER_STORAGE_BLOCK, "prism_fence_buffer");
    const GLenum property = GL_BUFFER_BINDING;
    GLint point = -1;
    gl->glGetProgramResourceiv(program->programId(), GL_SHADER_STORAGE_BLOCK, block, 1, &property, 1, nullptr,
                               &point);
    EXPECT_EQ(point, 10);
    EXPECT_NE(boundBuffer(), 0);
}

TEST_F(Fence3dItemTest, AFrustumIsNotLimitedByAProgramWithoutItsBlock)
{
    setFrustum(glm::dvec3(0.0), 4.0);
    EXPECT_FALSE(item->bind(with(spheresOnlySource)));
    EXPECT_EQ(boundBuffer(), 0);
}

TEST_F(Fence3dItemTest, WhatIsNoSuchFenceIsNotBound)
{
    const PaintContext context = with(fencedSource);
    EXPECT_FALSE(item->bindFrustumPrism(context));
    EXPECT_FALSE(item->bindSphere(context));
    setFrustum(glm::dvec3(0.0), 4.0);
    EXPECT_FALSE(item->bindSphere(context));
    setSphere({0.0, 0.0, 0.0}, 1.0);
    EXPECT_FALSE(item->bindFrustumPrism(context));
}

TEST_F(Fence3dItemTest, WithoutProgramSceneOrContextNothingIsBound)
{
    PaintContext context = with(fencedSource);
    setFrustum(glm::dvec3(0.0), 4.0);
    PaintContext withoutProgram = context, withoutScene = context;
    withoutProgram.program = nullptr;
    withoutScene.scene = nullptr;
    EXPECT_FALSE(item->bind(withoutProgram));
    EXPECT_FALSE(item->bindFrustumPrism(withoutProgram));
    EXPECT_FALSE(item->bind(withoutScene));
    scene->getContext().doneCurrent();
    EXPECT_FALSE(item->bind(context));
    EXPECT_FALSE(item->bindFrustumPrism(context));
    setSphere({0.0, 0.0, 0.0}, 1.0);
    EXPECT_FALSE(item->bind(context));
    EXPECT_FALSE(item->bindSphere(context));
    scene->makeCurrent();
    withoutScene.program = program.get();
    EXPECT_FALSE(item->bindSphere(withoutScene));
}

TEST_F(Fence3dItemTest, TheBufferGoesWithTheElement)
{
    setFrustum(glm::dvec3(0.0), 4.0);
    EXPECT_TRUE(item->bind(with(fencedSource)));
    const GLuint buffer = GLuint(boundBuffer());
    EXPECT_TRUE(gl->glIsBuffer(buffer));
    item = std::make_unique<Fence3dItem>();
    EXPECT_FALSE(gl->glIsBuffer(buffer));
}

TEST_F(Fence3dItemTest, ARecordThatIsThereIsNotWrittenAgain)
{
    const PaintContext context = with(fencedSource);
    setFrustum(glm::dvec3(0.0), 4.0);
    EXPECT_TRUE(item->bind(context));
    const std::vector<char> before = record();
    const char mark = 77;
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, GLuint(boundBuffer()));
    gl->glBufferSubData(GL_COPY_WRITE_BUFFER, 0, 1, &mark);
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    EXPECT_TRUE(item->bind(context));
    EXPECT_EQ(record().front(), mark);
    setFrustum(glm::dvec3(0.0), 5.0); // another one of the same size
    EXPECT_TRUE(item->bind(context));
    EXPECT_EQ(floatAt(record(), 100), 5.0f);
    setFrustum(glm::dvec3(0.0), 4.0);
    EXPECT_TRUE(item->bind(context));
    EXPECT_EQ(record(), before);
}

TEST_F(Fence3dItemTest, ABufferThatCannotBeMappedIsWrittenInALaterPass)
{
    const PaintContext context = with(fencedSource);
    setFrustum(glm::dvec3(0.0), 4.0);
    EXPECT_TRUE(item->bind(context));
    const auto buffer = GLuint(boundBuffer());
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, buffer);
    EXPECT_NE(gl->glMapBuffer(GL_COPY_WRITE_BUFFER, GL_READ_ONLY), nullptr);
    setFrustum(glm::dvec3(0.0), 5.0);
    EXPECT_TRUE(item->bind(context)); // to what is there
    EXPECT_FALSE(debug->take().isEmpty());
    EXPECT_EQ(GLuint(boundBuffer()), buffer);
    gl->glUnmapBuffer(GL_COPY_WRITE_BUFFER);
    gl->glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    EXPECT_TRUE(item->bind(context));
    EXPECT_EQ(floatAt(record(), 100), 5.0f);
}

TEST_F(Fence3dItemTest, APrismIsHandedOverInItsOwnFrame)
{
    const PaintContext context = with(fencedSource);
    const glm::dvec3 at(2.7e6, 5.4e5, 4.9e6);
    setTransform(at);
    const auto fence = std::static_pointer_cast<PrismFence>(item->getCreateFence(Fence3DObject::PrismFence));
    std::vector<glm::dvec3> points = {at + glm::dvec3(-2, -2, 0), at + glm::dvec3(2, -2, 0),
                                      at + glm::dvec3(2, 2, 0), at + glm::dvec3(-2, 2, 0)};
    points.push_back(points.front());
    fence->prism().setFence({}, {0.0, 0.0, 1.0}, 0.0, 0.0, 8.0, points);
    EXPECT_TRUE(item->bind(context));
    EXPECT_EQ(integer("fence_to_use"), 3);
    const std::vector<char> bytes = record();
    ASSERT_EQ(bytes.size(), 144u + 8u * 5u);
    const float box[] = {-0.25f, -0.25f, 0.0f, 1.0f, 0.25f, 0.25f, 2.0f, 1.0f};
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_NEAR(floatAt(bytes, 4 * i), box[i], 1e-6) << i;
    const float matrix[] = {8, 0, 0, 0, 0, 8, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1};
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(floatAt(bytes, 32 + 4 * i), matrix[i], 1e-6) << i;
    EXPECT_EQ(floatAt(bytes, 96), 0.0f);
    EXPECT_EQ(floatAt(bytes, 100), 8.0f);
    EXPECT_EQ(floatAt(bytes, 104), 0.0f);
    const float polygon[] = {-2, -2, 2, -2, 2, 2, -2, 2, -2, -2};
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_NEAR(floatAt(bytes, 112 + 4 * i), polygon[i], 1e-6) << i;
}

TEST_F(Fence3dItemTest, AFenceOfAFarNaNMatrixIsBoundWithoutHarm)
{
    setFrustum(glm::dvec3(0.0), 4.0);
    std::static_pointer_cast<Frustum3D>(item->getFence())->setFromWorldMatrix(glm::dmat4(nan));
    EXPECT_TRUE(item->bind(with(fencedSource)));
    EXPECT_EQ(countIn(record()), 5u);
}

} // namespace
