#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <Viewer3dModule/drawables/GlBuffer.h>

/// The square from (0, 0, 0) to (1, 1, 0), always filled, with texture coordinates such that an image whose
/// rows are stored from the top down stands upright. It has no texture and no colour of its own: whoever owns
/// it binds the texture and sets the program up.
class VIEWER3DMODULE_EXPORT Rect3dPrimitive : public Drawable3dPrimitive
{
public:
    /// A context of the share group must be current; without one the square stays without buffers.
    Rect3dPrimitive();
    /// Deletes the buffers; a context of the share group must be current.
    ~Rect3dPrimitive() override = default;
    Rect3dPrimitive(const Rect3dPrimitive&) = delete;
    Rect3dPrimitive& operator=(const Rect3dPrimitive&) = delete;

    /// Draws one square, whatever the kinds of primitives, the draw mode and the number of instances; nothing
    /// where the program takes points or lines only.
    void draw(const PaintContext& context, int instances) override;

    int getVertexCount() const override { return 4; }
    unsigned int getVBO() const override { return m_positions.name(); }

private:
    GlBuffer m_positions;
    GlBuffer m_texCoords;
};
