#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <glm/glm.hpp>

#include <cstdint>
#include <tuple>
#include <vector>

struct PaintContext;

/// A piece of geometry on the graphics processor that draws itself.
///
/// A primitive owns its OpenGL objects and is destroyed while a context of the scene's share group is
/// current. Everything that touches OpenGL does nothing without a current 4.3 core function table.
class VIEWER3DMODULE_EXPORT Drawable3dPrimitive
{
public:
    /// How much a primitive draws.
    struct GeometryInfo
    {
        std::uint32_t pointCount = 0;
        std::uint32_t lineCount = 0;     ///< segments, 2 vertices each
        std::uint32_t triangleCount = 0; ///< 3 vertices each
    };
    /// Names of buffers of captured points, lines and triangles, in this order, 0 where there is none; four
    /// floats a vertex. Whoever receives the tuple deletes the buffers.
    using Geometry = std::tuple<unsigned int, unsigned int, unsigned int>;

    virtual ~Drawable3dPrimitive() = default;

    /// Draws; the meaning of the number is the subclass's (mostly the number of instances).
    virtual void draw(const PaintContext& context, int instances) = 0;
    /// All vertex positions, read back from the vertex buffer; empty without one or without a context. Leaves
    /// the buffer bound.
    virtual std::vector<glm::vec3> getVertices();
    /// One vertex position, read back; three quiet NaNs when there is none. Leaves the buffer bound.
    virtual glm::vec3 getVertex(int index);
    /// What draw draws; all 0 by default.
    virtual GeometryInfo getGeometryInfo();
    /// Buffers that the primitive makes itself; all 0 by default: the scene then captures them.
    virtual Geometry generateGeometry();
    /// Whether it lets what is behind shine through; false by default.
    virtual bool hasTransparency() const;

    /// Function table of the current context, or null.
    static OpenGLFunctions* getGLFunctions() { return currentGLFunctions(); }

private:
    /// Number of positions in the vertex buffer; 0 by default.
    virtual int getVertexCount() const;
    /// The vertex buffer, which begins with positions as packed float triples; 0 by default.
    virtual unsigned int getVBO() const;
};
