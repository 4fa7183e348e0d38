#pragma once

#include <benchmarks/data/BoxSet.h>
#include <benchmarks/data/LineSet.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/plain/PlainRecords.h>
#include <benchmarks/scene/View.h>

#include <optional>

/// All polylines of 1 pixel, or all lit boxes, by one draw call; everything else is as in PlainLines and
/// PlainBoxes.
class PlainAtOnce
{
public:
    PlainAtOnce(PlainContext& context, const LineSet& set, const View& view);
    /// light: the unit vector towards it, eye coordinates
    PlainAtOnce(PlainContext& context, const BoxSet& set, const View& view, const glm::vec3& light);
    void draw();

private:
    PlainContext& m_context;
    View m_view;
    glm::vec3 m_light{0.0f};
    bool m_isBoxes;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
    std::optional<PlainRecords> m_records;
};
