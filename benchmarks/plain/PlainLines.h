#pragma once

#include <benchmarks/data/LineSet.h>
#include <benchmarks/plain/ItemUniforms.h>
#include <benchmarks/scene/View.h>

#include <functional>

/// Polylines, one draw call each: slices of one shared buffer, five uniforms an item.
class PlainLines
{
public:
    enum Technique {
        Thin,  ///< the driver's lines, 1 pixel wide
        Stage, ///< a geometry stage makes a hexagon of each segment
        Quads  ///< the vertex stage does, six vertices an instance, the segment's ends being its attributes
    };

    PlainLines(PlainContext& context, const LineSet& set, const View& view, Technique technique, float width);

    /// All of them, to the bound target.
    void draw();
    /// Only those that a sphere around each tells to be in view.
    void drawVisible();

    /// Changes the colour of one.
    void setColor(std::size_t line, const QColor& color) { m_items[line].color = plainColor(color); }

private:
    struct Sphere
    {
        glm::vec3 center;
        float radius;
    };
    void beginPass();
    void drawLine(std::size_t line);
    bool isVisible(const Sphere& sphere, const glm::vec4 (&planes)[4]) const;

    PlainContext& m_context;
    View m_view;
    Technique m_technique;
    std::vector<PlainItem> m_items;
    std::vector<Sphere> m_spheres;
    GLuint m_program = 0;
    GLuint m_vertexArray = 0;
    PlainItemUniforms m_uniforms;
    GLint m_viewProjection, m_pixels, m_chosenColor;
};
