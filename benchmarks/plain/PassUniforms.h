#pragma once

#include <benchmarks/plain/PlainContext.h>

#include <glm/gtc/type_ptr.hpp>

/// Where a program has what holds for a whole frame, looked up once; -1: it has none of the name.
struct PlainPassUniforms
{
    PlainPassUniforms(PlainContext::Functions& gl, GLuint program)
        : viewProjection(gl.glGetUniformLocation(program, "viewProjection"))
        , view(gl.glGetUniformLocation(program, "view"))
        , projection(gl.glGetUniformLocation(program, "projection"))
        , light(gl.glGetUniformLocation(program, "light"))
        , color(gl.glGetUniformLocation(program, "color"))
        , chosenColor(gl.glGetUniformLocation(program, "chosenColor"))
        , width(gl.glGetUniformLocation(program, "width"))
        , pixels(gl.glGetUniformLocation(program, "pixels"))
    {
    }

    GLint viewProjection, view, projection;
    GLint light; ///< the unit vector towards it, eye coordinates
    GLint color; ///< of all, where items have none of their own
    GLint chosenColor;
    GLint width;
    GLint pixels; ///< half of the picture's size
};
