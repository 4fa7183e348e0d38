#pragma once

#include <QtCore/QStringList>

struct PaintContext;

/// How a sphere is made of one point: the shader sources and the draw call.
class DrawableShaderSphereImpl
{
public:
    virtual ~DrawableShaderSphereImpl() = default;
    /// The sources of the program for spheres of this drawer type.
    virtual QStringList getShaderFiles(int drawerType) const = 0;
    /// Draws with the context's program, which is in use.
    virtual void draw(const PaintContext& context) = 0;
};
