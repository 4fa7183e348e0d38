#pragma once

#include <Viewer3dModule/drawables/DrawableShaderSphereImpl.h>
#include <Viewer3dModule/drawables/GlBuffer.h>

class DrawableShaderSphere;

/// A sphere by tessellation of a patch of one point.
class DrawerShaderSphereCube final : public DrawableShaderSphereImpl
{
public:
    explicit DrawerShaderSphereCube(DrawableShaderSphere* sphere);

    QStringList getShaderFiles(int drawerType) const override;
    void draw(const PaintContext& context) override;

    DrawableShaderSphere* const sphere; // what it draws; not owned
    float tessLevelOuter = 32.0f;
    float tessLevelInner = 32.0f;
    float textureFovTop = 1.0f;
    float textureFovBottom = -1.0f;
    bool wireMode = false;

private:
    GlBuffer m_vertexBuffer;
};
