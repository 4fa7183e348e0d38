#pragma once

#include <benchmarks/plain/ItemUniforms.h>
#include <benchmarks/plain/PassUniforms.h>
#include <benchmarks/scene/View.h>

#include <QtGui/QImage>

#include <vector>

/// Texts as quads of glyphs that face the viewer, all in one instanced draw call from one texture.
class PlainLabels
{
public:
    struct Glyph
    {
        glm::vec3 anchor; ///< of its text, scene coordinates
        glm::vec2 offset; ///< of the image's lower left corner from the anchor, pixels, y up
        int image;        ///< index into images
        std::uint32_t id; ///< of its text
    };

    /// glyphs: in the order in which they are drawn
    PlainLabels(PlainContext& context, const std::vector<Glyph>& glyphs, const std::vector<QImage>& images,
                const View& view);
    void draw();

private:
    std::vector<QRect> uploadImages(const std::vector<QImage>& images);

    PlainContext& m_context;
    View m_view;
    GLsizei m_count;
    GLuint m_program;
    PlainPassUniforms m_passUniforms;
    GLuint m_vertexArray = 0;
    GLuint m_texture = 0;
};
