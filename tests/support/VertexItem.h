#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtGui/QColor>
#include <QtGui/QOpenGLShaderProgram>

#include <vector>

/// An item with a buffer of positions, drawn as points, lines or triangles in one colour: the plainest thing
/// that a drawer can draw.
class VertexItem : public Drawable3dItem
{
public:
    VertexItem(GLenum mode, std::vector<glm::vec3> vertices, const QColor& color = Qt::white)
        : m_mode(mode)
        , m_vertices(std::move(vertices))
        , m_color(color)
    {
    }
    ~VertexItem() override
    {
        if (OpenGLFunctions* gl = getGLFunctions()) gl->glDeleteBuffers(1, &m_buffer);
    }
    using Drawable3dItem::draw;
    using Drawable3dItem::setDrawer;

    GeometryInfo getGeometryInfo() override
    {
        const auto count = static_cast<std::uint32_t>(m_vertices.size());
        GeometryInfo info;
        if (m_mode == GL_POINTS)
            info.pointCount = count;
        else if (m_mode == GL_LINES)
            info.lineCount = count / 2;
        else
            info.triangleCount = count / 3;
        return info;
    }
    bool isHighlighted() const override { return highlighted; }
    unsigned int getGlueMask() const override { return glueMask; }

    int draws = 0;
    bool highlighted = false;
    unsigned int glueMask = 0xFFFFFFFFu;
    PaintContext lastContext;

protected:
    void draw(const PaintContext& context) override
    {
        ++draws;
        lastContext = context;
        OpenGLFunctions& gl = *getGLFunctions();
        uniforms::set(gl, context.program->uniformLocation("item_color"), m_color);
        gl.glBindVertexArray(context.vertexArray);
        if (m_buffer == 0) gl.glGenBuffers(1, &m_buffer);
        gl.glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
        gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(m_vertices.size() * sizeof(glm::vec3)),
                        m_vertices.data(), GL_STATIC_DRAW);
        gl.glEnableVertexAttribArray(0);
        gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        gl.glDrawArrays(m_mode, 0, static_cast<GLsizei>(m_vertices.size()));
        gl.glDisableVertexAttribArray(0);
        gl.glBindVertexArray(0);
    }

private:
    GLenum m_mode;
    std::vector<glm::vec3> m_vertices;
    QColor m_color;
    unsigned int m_buffer = 0;
};

/// A square of two triangles from (left, bottom) to (right, top) at depth z.
inline std::vector<glm::vec3> squareVertices(float left, float bottom, float right, float top, float z = 0.0f)
{
    const glm::vec3 a(left, bottom, z), b(right, bottom, z), c(right, top, z), d(left, top, z);
    return {a, b, c, a, c, d};
}
