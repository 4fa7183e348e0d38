#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>

#include <memory>

class Item3dDrawer;
class Scene3d;

/// The side of a cylinder of radius 1 around the z axis, from z = -1 to z = 1, in 36 segments, that the
/// graphics processor makes of one point. The item that draws it places and scales it by its model matrix and
/// sets its colour.
///
/// Its buffer is made at the first draw; it is destroyed while a context of the scene's share group is
/// current.
class VIEWER3DMODULE_EXPORT DrawableShaderCylinder : public Drawable3dPrimitive
{
public:
    DrawableShaderCylinder();
    ~DrawableShaderCylinder() override;

    /// DrawerType::ShaderCylinder.
    int getDrawerType() const;
    /// The scene's drawer for cylinders, under the key (DrawerType::ShaderCylinder,
    /// DrawerType::ShaderCylinder). At the first request it is made, with its program, in the scene's
    /// context, which is current afterwards.
    Item3dDrawer* getDrawer(Scene3d* scene) const;

    /// The edges of its triangles alone, in the item's plain colour.
    void setWireMode(bool wire);

    /// Draws with the context's program, which is in use, so many instances.
    void draw(const PaintContext& context, int instances) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
