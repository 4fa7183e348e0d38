#pragma once

#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

/// A sequential drawer for items whose primitives change the polygon mode: it asks for the mode once a pass,
/// where each of them would have to.
class VIEWER3DMODULE_EXPORT PolygonModeDrawer : public SequentialItem3dDrawer
{
public:
    using SequentialItem3dDrawer::SequentialItem3dDrawer;

    void draw(const PaintContext& context, Filter filter) override;
    std::unique_ptr<Item3dDrawer> clone() const override;

private:
    friend class PolygonModeScope;
    unsigned int m_modeBefore = 0; // while it draws; 0 is no mode
};

/// Sets how polygons are filled for as long as it lives, then sets what was before.
class VIEWER3DMODULE_EXPORT PolygonModeScope
{
public:
    /// @param mode  GL_FILL or GL_LINE
    PolygonModeScope(OpenGLFunctions& gl, const PaintContext& context, unsigned int mode);
    ~PolygonModeScope();
    PolygonModeScope(const PolygonModeScope&) = delete;
    PolygonModeScope& operator=(const PolygonModeScope&) = delete;

private:
    OpenGLFunctions& m_gl;
    unsigned int m_before;
};
