#pragma once

#include "tests/gl/drawables/CaptureTest.h"

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>

#include <vector>

/// A test that looks at the attributes of the vertices that a surface primitive draws.
class SurfaceTest : public CaptureTest
{
protected:
    static constexpr int Points = 1;
    static constexpr int Lines = 2;
    static constexpr int Triangles = 4;
    static constexpr int Adjacency = 8;
    static constexpr int All = 7;

    using Positions = std::vector<glm::vec3>;

    Positions triangles(Drawable3dPrimitive& primitive, int primitives = All, int instances = 1)
    {
        return capture(GL_TRIANGLES, [&] { primitive.draw(pass(primitives), instances); });
    }
    Positions lines(Drawable3dPrimitive& primitive)
    {
        return capture(GL_LINES, [&] { primitive.draw(pass(Lines), 1); });
    }
    /// Normals of the vertices of the triangles.
    std::vector<glm::vec4> normals(Drawable3dPrimitive& primitive)
    {
        const auto program = link(R"(#version 430 core
layout(location = 0) in vec3 point;
layout(location = 2) in vec3 normal;
out vec4 seen;
void main() { seen = vec4(normal, 0.0); gl_Position = vec4(point, 1.0); }
)",
                                  nullptr, "seen");
        return capture(*program, GL_TRIANGLES, [&] { primitive.draw(pass(All), 1); });
    }
    /// Position x, y and texture coordinates of the vertices of the triangles.
    std::vector<glm::vec4> texCoords(Drawable3dPrimitive& primitive)
    {
        const auto program = link(R"(#version 430 core
layout(location = 0) in vec3 point;
layout(location = 3) in vec2 coords;
out vec4 seen;
void main() { seen = vec4(point.xy, coords); gl_Position = vec4(point, 1.0); }
)",
                                  nullptr, "seen");
        return capture(*program, GL_TRIANGLES, [&] { primitive.draw(pass(All), 1); });
    }
    /// The colour of the texture that is bound to unit 0 during the draw; transparent black without one.
    glm::vec4 textureColor(Drawable3dPrimitive& primitive)
    {
        const auto program = link(R"(#version 430 core
layout(location = 0) in vec3 point;
layout(binding = 0) uniform sampler2D image;
out vec4 seen;
void main() { seen = textureLod(image, vec2(0.5), 0.0); gl_Position = vec4(point, 1.0); }
)",
                                  nullptr, "seen");
        const auto seen = capture(*program, GL_TRIANGLES, [&] { primitive.draw(pass(All), 1); });
        EXPECT_FALSE(seen.empty());
        return seen.empty() ? glm::vec4(-1.0f) : seen.front();
    }
    /// A texture of one texel; deleted by the test's end.
    unsigned makeTexture(const glm::vec4& color)
    {
        unsigned name = 0;
        gl->glGenTextures(1, &name);
        gl->glBindTexture(GL_TEXTURE_2D, name);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, 1, 1, 0, GL_RGBA, GL_FLOAT, &color.x);
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl->glBindTexture(GL_TEXTURE_2D, 0);
        m_textures.push_back(name);
        return name;
    }
    /// A pass with a program whose geometry stage takes these kinds, as drawers hand it on.
    PaintContext passOfProgram(int kinds)
    {
        plain->setProperty("primitives", kinds);
        PaintContext paint = pass(kinds);
        paint.program = plain.get();
        return paint;
    }
    int boundTexture()
    {
        int name = -1;
        gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
        return name;
    }
    void TearDown() override
    {
        makeCurrent();
        if (!m_textures.empty()) gl->glDeleteTextures(int(m_textures.size()), m_textures.data());
        CaptureTest::TearDown();
    }

private:
    std::vector<unsigned> m_textures;
};
