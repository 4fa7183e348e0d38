#pragma once

#include <benchmarks/data/BoxSet.h>
#include <benchmarks/plain/ItemUniforms.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/scene/View.h>

/// Lit boxes, one draw call each: slices of one shared buffer, five uniforms an item.
class PlainBoxes
{
public:
    /// light: the unit vector towards it, eye coordinates
    PlainBoxes(PlainContext& context, const BoxSet& set, const View& view, const glm::vec3& light);
    void draw();

private:
    PlainContext& m_context;
    View m_view;
    glm::vec3 m_light;
    std::vector<PlainItem> m_items;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
    PlainItemUniforms m_uniforms;
};
