#pragma once

#include <benchmarks/data/GroundMesh.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/scene/View.h>

#include <QtGui/QColor>

/// One lit mesh of one colour: interleaved vertices, one indexed draw call.
class PlainMesh
{
public:
    /// light: the unit vector towards it, eye coordinates
    PlainMesh(PlainContext& context, const GroundMesh& mesh, const View& view, const glm::vec3& light,
              const QColor& color);
    void draw();

private:
    PlainContext& m_context;
    View m_view;
    glm::vec3 m_light;
    QColor m_color;
    GLsizei m_indexCount;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
};
