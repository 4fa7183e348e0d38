#pragma once

#include "tests/support/GlTest.h"

#include <Viewer3dModule/drawers/PaintContext.h>

#include <QtGui/QOpenGLShaderProgram>

#include <functional>
#include <set>
#include <vector>

/// A test that looks at what is drawn by transform feedback, with programs of its own.
class CaptureTest : public GlTest
{
protected:
    void SetUp() override;
    void TearDown() override;

    /// Links a program that puts out one vec4 a vertex (or, with a geometry stage, what that emits).
    std::unique_ptr<QOpenGLShaderProgram> link(const char* vertex, const char* geometry, const char* output);
    /// What a call draws with the program, mode being points, lines or triangles.
    std::vector<glm::vec4> capture(QOpenGLShaderProgram& program, GLenum mode,
                                   const std::function<void()>& draw);
    /// Positions that a call draws, as they are in the buffers; x is raised by 1000 an instance.
    std::vector<glm::vec3> capture(GLenum mode, const std::function<void()>& draw);

    /// A pass with the test's vertex array and the given kinds of primitives.
    PaintContext pass(int primitives);
    /// Names of all buffers that there are.
    std::set<unsigned> buffers();
    /// The value of a float uniform of up to four components.
    glm::vec4 uniform(const QOpenGLShaderProgram& program, const char* name);
    /// Expects that no vertex array is bound, and that the test's has nothing enabled and no indices.
    void expectCleanVertexArray();

    std::unique_ptr<QOpenGLShaderProgram> plain;
};
