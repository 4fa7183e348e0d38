#pragma once

#include <Viewer3dModule/drawers/InstancedItem3dDrawer.h>

#include <QtGui/QColor>

/// Draws a point of 5 pixels, facing the viewer, at vertex 0 of each item, all in one call. Tie points and
/// other marks of which there are very many.
///
/// Its fragment stage, "shader:TerrainKit/ExtraPoint.fragment.glsl", is no resource of this module: a host
/// that wants marks registers one under that name. Without it the builder's messages come once, at
/// construction, and nothing is drawn. Items that stand for no model element are not shown. Its vertex stage
/// reads no vertices, a mark is where its record is: a subclass that draws some brings a program of its own.
class VIEWER3DMODULE_EXPORT InstancedViewerOrientedTextureDrawer : public InstancedItem3dDrawer<glm::vec3>
{
public:
    /// Builds its program in the scene's context, which is current afterwards; for a null scene it has none.
    /// A pass that brings a program of its own sets the colour and the size in that itself.
    explicit InstancedViewerOrientedTextureDrawer(Scene3d* scene);
    ~InstancedViewerOrientedTextureDrawer() override;

    /// The colour of all marks; red at first.
    QColor getDefaultColor() const { return m_defaultColor; }
    void setDefaultColor(const QColor& color) { m_defaultColor = color; }

    void draw(const PaintContext& context, Filter filter) override;
    /// The new drawer has the default colour that a new one has.
    std::unique_ptr<Item3dDrawer> clone() const override;
    using InstancedItem3dDrawer<glm::vec3>::getItemParams;
    /// Vertex 0 of the item, which its own transform does not move; NaN, which is nowhere, for an item that
    /// stands for no element or has no vertex, and for an index that no item has.
    glm::vec3 getItemParams(int index) override;
    void drawItems(const PaintContext& context) override;

protected:
    /// With a program that is there already, as clones have it.
    InstancedViewerOrientedTextureDrawer(Scene3d* scene, QOpenGLShaderProgram* program);

private:
    void programPrepared() override;

    QColor m_defaultColor = Qt::red;
    bool m_setsLook = false; ///< in the pass that is drawn
};
