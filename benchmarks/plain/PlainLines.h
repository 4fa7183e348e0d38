#pragma once

#include <benchmarks/data/LineSet.h>
#include <benchmarks/plain/ItemUniforms.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/plain/Sphere.h>
#include <benchmarks/scene/View.h>

#include <unordered_map>
#include <vector>

/// Polylines, one draw call each: slices of one shared buffer, five uniforms an item.
class PlainLines
{
public:
    enum Technique {
        Thin,  ///< the driver's lines, 1 pixel wide
        Stage, ///< a geometry stage makes a hexagon of each segment
        Quads  ///< the vertex stage does, six vertices an instance, the segment's ends being its attributes
    };

    /// width: of the pens, pixels
    PlainLines(PlainContext& context, const View& view, Technique technique, float width);
    ~PlainLines();
    PlainLines(const PlainLines&) = delete;
    PlainLines& operator=(const PlainLines&) = delete;

    /// Takes the polylines of the set in place of those that it has; their identifiers begin at 1.
    void load(const LineSet& set);
    void clear();

    /// All of them, to the bound target.
    void draw();
    /// Only those that a sphere around each tells to be in view.
    void drawVisible();

    /// Changes the colour and the vertices of one.
    void edit(std::uint32_t id, const QColor& color, const std::vector<glm::vec3>& vertices);

private:
    void beginPass();
    void drawLine(std::size_t line);

    PlainContext& m_context;
    View m_view;
    Technique m_technique;
    std::vector<PlainItem> m_items;
    std::vector<Sphere> m_spheres;
    std::unordered_map<std::uint32_t, std::size_t> m_indices; // of items, by identifier
    float m_width;
    GLuint m_program = 0;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
    GLuint m_buffer = 0;
    PlainItemUniforms m_uniforms;
};
