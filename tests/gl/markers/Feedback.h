#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <cstddef>
#include <vector>

/// Draws without pixels and returns what the program that is bound gives out; its varyings must make up
/// Vertex.
/// @param output  the primitive that its last stage before the rasteriser makes: GL_POINTS, GL_TRIANGLES
/// @param room    vertices that are expected at most
template <typename Vertex>
std::vector<Vertex> captureFeedback(OpenGLFunctions& gl, unsigned output, unsigned mode, int count,
                                    std::size_t room)
{
    unsigned buffer = 0;
    unsigned query = 0;
    gl.glGenBuffers(1, &buffer);
    gl.glGenQueries(1, &query);
    gl.glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
    gl.glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, static_cast<GLsizeiptr>(room * sizeof(Vertex)), nullptr,
                    GL_STATIC_READ);
    gl.glEnable(GL_RASTERIZER_DISCARD);
    gl.glBeginQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN, query);
    gl.glBeginTransformFeedback(output);
    gl.glDrawArrays(mode, 0, count);
    gl.glEndTransformFeedback();
    gl.glEndQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN);
    gl.glDisable(GL_RASTERIZER_DISCARD);

    unsigned written = 0;
    gl.glGetQueryObjectuiv(query, GL_QUERY_RESULT, &written);
    std::vector<Vertex> vertices(written * (output == GL_TRIANGLES ? 3u : 1u));
    if (!vertices.empty())
        gl.glGetBufferSubData(GL_TRANSFORM_FEEDBACK_BUFFER, 0,
                              static_cast<GLsizeiptr>(vertices.size() * sizeof(Vertex)), vertices.data());
    gl.glDeleteQueries(1, &query);
    gl.glDeleteBuffers(1, &buffer);
    return vertices;
}
