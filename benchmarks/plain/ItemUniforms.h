#pragma once

#include <benchmarks/plain/PlainContext.h>

#include <QtGui/QColor>
#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <cstdint>

/// What one item of a plain program is drawn with.
struct PlainItem
{
    glm::mat4 matrix;
    glm::vec4 color;
    glm::uvec2 id;
    std::int32_t flags; ///< 1: chosen by the user
    float width;        ///< pixels
};

inline glm::vec4 plainColor(const QColor& color)
{
    return {color.redF(), color.greenF(), color.blueF(), color.alphaF()};
}

/// Where a program has its uniforms of items, and how they are set.
class PlainItemUniforms
{
public:
    PlainItemUniforms(PlainContext::Functions& gl, GLuint program)
        : m_gl(gl)
        , m_model(gl.glGetUniformLocation(program, "model"))
        , m_color(gl.glGetUniformLocation(program, "color"))
        , m_id(gl.glGetUniformLocation(program, "id"))
        , m_flags(gl.glGetUniformLocation(program, "flags"))
        , m_width(gl.glGetUniformLocation(program, "width"))
    {
    }
    void set(const PlainItem& item) const
    {
        m_gl.glUniformMatrix4fv(m_model, 1, GL_FALSE, glm::value_ptr(item.matrix));
        m_gl.glUniform4fv(m_color, 1, glm::value_ptr(item.color));
        m_gl.glUniform2uiv(m_id, 1, glm::value_ptr(item.id));
        m_gl.glUniform1i(m_flags, item.flags);
        m_gl.glUniform1f(m_width, item.width);
    }

private:
    PlainContext::Functions& m_gl;
    GLint m_model, m_color, m_id, m_flags, m_width;
};
