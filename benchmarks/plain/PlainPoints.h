#pragma once

#include <benchmarks/data/PointSet.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/scene/View.h>

/// Coloured points of 2 pixels in one draw call.
class PlainPoints
{
public:
    PlainPoints(PlainContext& context, const PointSet& set, const View& view);
    void draw();

private:
    PlainContext& m_context;
    View m_view;
    GLsizei m_count;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
};
