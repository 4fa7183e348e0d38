#pragma once

#include <QtCore/QtPlugin>

class Scene3d;

/// A plug-in that shows elements of types of its own in 3D scenes, found by qobject_cast among the plug-in
/// objects.
class IScene3dExtension
{
public:
    virtual ~IScene3dExtension() = default;
    /// Called by the host for every scene that it makes, before elements are shown in it; the scene's context
    /// is current. The place for CGraphics3dExtension::registerElementType and for drawers of the plug-in's
    /// own.
    virtual void extendScene(Scene3d* scene) = 0;
};

Q_DECLARE_INTERFACE(IScene3dExtension, "org.photomodel.Viewer3dModule.IScene3dExtension/1.0")
