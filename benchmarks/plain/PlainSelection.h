#pragma once

#include <benchmarks/data/LineSet.h>
#include <benchmarks/plain/ItemUniforms.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/plain/Sphere.h>
#include <benchmarks/scene/View.h>

#include <QtCore/QRect>

#include <vector>

/// Which polylines of 1 pixel lie in a rectangle of the view, hidden ones too: spheres tell of most, the rest
/// is drawn and leaves a bit each.
class PlainSelection
{
public:
    PlainSelection(PlainContext& context, const LineSet& set, const View& view);

    /// rect: pixels, origin top left. The identifiers, from 1, ascending.
    std::vector<std::uint32_t> select(const QRect& rect);

private:
    std::vector<std::uint32_t> drawAndRead(const QRect& rect, const std::vector<std::size_t>& straddling);

    PlainContext& m_context;
    View m_view;
    std::vector<glm::mat4> m_matrices;
    std::vector<Sphere> m_spheres;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLint m_model, m_number;
    GLuint m_vertexArray = 0;
    GLuint m_bits = 0;
};
