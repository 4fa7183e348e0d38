#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>

#include <memory>

class DrawableShaderSphereImpl;
class DrawerShaderSphereCube;
class Item3dDrawer;
class Scene3d;

/// A sphere of radius 1 around the origin that the graphics processor makes of one point, by tessellation.
/// The item that draws it places and scales it by its model matrix and sets its colour.
///
/// Its buffer is made at the first draw; it is destroyed while a context of the scene's share group is
/// current.
class VIEWER3DMODULE_EXPORT DrawableShaderSphere : public Drawable3dPrimitive
{
public:
    /// @param drawerType  visibility type of the drawer, see getDrawer; 0: DrawerType::ShaderSphere
    explicit DrawableShaderSphere(int drawerType = 0);
    ~DrawableShaderSphere() override;

    /// DrawerType::ShaderSphere, whatever the visibility type.
    int getDrawerType() const;
    /// The scene's drawer for such spheres, under the key (drawer type, DrawerType::ShaderSphere). At the
    /// first request it is made, with its program, in the scene's context, which is current afterwards.
    Item3dDrawer* getDrawer(Scene3d* scene) const;

    /// Segments around the sphere and from pole to pole, at its seam and inside; 32 each at first. A level up
    /// to 1 stands for 32.
    void setTessLevel(float outer, float inner);
    /// The heights, 1 at the upper pole and -1 at the lower one, between which the texture lies; 1 and -1 at
    /// first. Equal ones are not guarded against.
    void setTextureFovY(float top, float bottom);
    /// The edges of its triangles alone.
    void setWireMode(bool wire);

    /// Draws with the context's program, which is in use. The number is not used.
    void draw(const PaintContext& context, int instances) override;

private:
    DrawerShaderSphereCube& cube() const;

    std::unique_ptr<DrawableShaderSphereImpl> m_impl;
    int m_drawerType;
};
