#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/DrawableShaderSphere.h>

#include <QtGui/QColor>

#include <memory>

/// Marks a point of the model with a translucent sphere, of a radius in the model's units or in pixels. Drawn
/// in ordinary passes only, and not before it has a position. Its own transform is not looked at: the
/// position is a place of the model, which the scene's transform leads to.
///
/// Destroyed while a context of the scene's share group is current.
class VIEWER3DMODULE_EXPORT Node3dItem : public Drawable3dItem
{
public:
    /// Joins the scene's drawer for spheres; scene may be null. The colour is that of nodes in the settings,
    /// half transparent.
    /// @param sphereType  see DrawableShaderSphere
    Node3dItem(Scene3d* scene, int sphereType);
    ~Node3dItem() override;

    void setModelPos(const glm::dvec3& position);
    /// Model units. Counts where there is no pixel radius; such nodes are drawn as wires.
    void setModelRadius(double radius) { m_modelRadius = radius; }
    /// Pixels, at any distance; 0: none.
    void setPixelRadius(double radius) { m_pixelRadius = radius; }
    void setColor(const QColor& color) { m_color = color; }

    int getDefaultDrawerType() const override;
    bool hasTransparency() const override;

protected:
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    std::unique_ptr<DrawableShaderSphere> m_sphere;
    glm::dvec3 m_modelPos = glm::dvec3(0.0);
    bool m_hasPosition = false;
    double m_modelRadius = 0.0;
    double m_pixelRadius = 0.0;
    QColor m_color;
};
