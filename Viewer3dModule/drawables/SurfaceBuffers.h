#pragma once

#include <Viewer3dModule/drawables/GlBuffer.h>

#include <QtGui/QColor>
#include <glm/glm.hpp>

#include <functional>
#include <vector>

class VertexArrayBinding;
struct PaintContext;

/// What surface primitives have in common: positions, normals, a texture with its coordinates, and how a pass
/// draws them. A context of the share group must be current wherever a function table is asked for.
class SurfaceBuffers
{
public:
    /// Draw calls, with everything bound.
    using Calls = std::function<void(VertexArrayBinding& binding)>;

    /// Replaces all vertices. Texture and coordinates are out of use once the number of the owner's vertices
    /// changes.
    /// @param positions, normals  one a vertex
    /// @param vertexCount         how many of the vertices are the owner's; those after them are made ones
    void upload(OpenGLFunctions& gl, const std::vector<glm::vec3>& positions,
                const std::vector<glm::vec3>& normals, int vertexCount);
    /// Changes the position of one of the owner's vertices; an index that is not there is ignored.
    void setVertex(int index, const glm::vec3& vertex);
    /// @param texture  an OpenGL name, not owned; 0 for none
    /// @param coords   one a vertex, made ones included
    void setTexture(OpenGLFunctions& gl, unsigned int texture, const std::vector<glm::vec2>& coords);

    /// Of the owner's vertices.
    int vertexCount() const { return m_vertexCount; }
    /// Of the positions.
    unsigned int name() const { return m_positions.name(); }

    /// Draws what the pass asks for: nothing where it asks for points only, lines where for lines only, else
    /// the surface, if the program takes triangles.
    void draw(const PaintContext& context, const Calls& drawLines, const Calls& drawSurface) const;

    /// Sets the surface's colour in the context's program, which must be in use; plain, without a material.
    static void setColor(const PaintContext& context, const QColor& color);
    /// Whether surfaces can be drawn with the context's program: not when its geometry stage takes points or
    /// lines, or triangles with their neighbours.
    static bool takesSurfaces(const PaintContext& context);

private:
    GlBuffer m_positions;
    GlBuffer m_normals;
    GlBuffer m_texCoords;
    unsigned int m_texture = 0;
    int m_vertexCount = 0;
    std::size_t m_totalCount = 0;    // of vertices, made ones included
    std::size_t m_texCoordCount = 0; // in the buffer
};
