#pragma once

#include <benchmarks/data/LineSet.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/scene/View.h>

/// Polylines of 1 pixel that cannot be moved or chosen: their vertices are placed beforehand, and all that an
/// item has of its own is a colour of four bytes. One indirect call draws all of them, with blending off:
/// what is left of drawing them when nothing is asked of the items.
class PlainPlaced
{
public:
    PlainPlaced(PlainContext& context, const LineSet& set, const View& view);
    void draw();

private:
    PlainContext& m_context;
    View m_view;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
    GLuint m_commands = 0;
    GLsizei m_count;
};
