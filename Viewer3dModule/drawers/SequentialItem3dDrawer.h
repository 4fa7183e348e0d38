#pragma once

#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/fences/FenceSides.h>

#include <vector>

/// Draws its items one after another with one program, each with its own model matrix and per-item uniforms.
/// In geometry capture the vertices, transformed to scene coordinates, go to the transform-feedback buffer
/// that the caller bound. Of a fence only those items are aware whose boxes it cuts: the others are left out,
/// or drawn before these as if there were none. A pass for depths alone draws solid items first, with the
/// scene's depth program where that stands for the default one. While dashes are drawn the first vertex of
/// each segment provokes; afterwards that does which did so when dashes were first drawn in the context.
class VIEWER3DMODULE_EXPORT SequentialItem3dDrawer : public Item3dDrawer
{
public:
    /// defaultProgram serves where the context names none; it is not owned and may be null.
    SequentialItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* defaultProgram);
    ~SequentialItem3dDrawer() override;

    /// Those of a scene's default drawers are built when they are first drawn with, or asked for here.
    QOpenGLShaderProgram* getDefaultProgram() const;
    /// The same, which may still be to be built: to give it to another sequential drawer.
    QOpenGLShaderProgram* getProgramToShare() const { return m_defaultProgram; }
    /// The program of geometry capture; not owned. Without one it is built when it is first needed.
    void setGeometryProgram(QOpenGLShaderProgram* program) { m_geometryProgram = program; }

    void draw(const PaintContext& context, Filter filter) override;
    std::unique_ptr<Item3dDrawer> clone() const override;

    /// Draws one item of the registry as draw does, a hidden one not at all, without walking the registry.
    void drawOnly(Drawable3dItem* item, const PaintContext& context);
    /// Likewise several, in this order, and at once.
    void drawOnly(const std::vector<Drawable3dItem*>& items, const PaintContext& context);

    /// Draws an item for which everything is set; a subclass may draw it differently.
    virtual void drawItem(Drawable3dItem* item, const PaintContext& context);

protected:
    /// Draws those of the visible items that pass the filter, in the order of the registry; what draw does
    /// once for each side of the fence and each program that the pass takes.
    virtual void drawItems(const PaintContext& context, const Filter& filter);
    /// Makes the context that of items' draws and prepares its program; false when it cannot be drawn with.
    bool beginPass(PaintContext& context);
    /// Draws one item after beginPass.
    void drawWithUniforms(Drawable3dItem* item, const PaintContext& context);

private:
    bool findSides(const PaintContext& context);
    FenceSide sideOf(const Drawable3dItem& item) const;
    bool hasItems(FenceSide side) const;
    void drawAll(const PaintContext& context, const Filter& filter);
    void drawEach(const std::vector<Drawable3dItem*>& items, const PaintContext& pass, const Filter& filter);
    QOpenGLShaderProgram* depthProgram(const PaintContext& context) const;

    QOpenGLShaderProgram* m_defaultProgram;
    QOpenGLShaderProgram* m_geometryProgram = nullptr;
    std::vector<FenceSide> m_sides; ///< of the items, in a pass with a fence
};
