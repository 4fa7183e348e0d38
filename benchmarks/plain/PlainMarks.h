#pragma once

#include <benchmarks/plain/ItemUniforms.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/scene/View.h>

#include <vector>

/// Round marks of one colour and size, all in one instanced draw call, with flags and an identifier each.
class PlainMarks
{
public:
    PlainMarks(PlainContext& context, const std::vector<glm::vec3>& places, const View& view);
    void draw();

private:
    PlainContext& m_context;
    View m_view;
    GLsizei m_count;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
};
