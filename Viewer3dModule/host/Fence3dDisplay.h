#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>

class Fence3dOutlineItem;
class Scene3d;

/// Shows the fence of a scene's project in the scene for as long as this lives, also when the project's
/// element is replaced by another. Scene thread only.
class VIEWER3DMODULE_EXPORT Fence3dDisplay
{
public:
    /// The scene is guarded, not owned; its context becomes current. The scene goes before its project, or
    /// this does.
    explicit Fence3dDisplay(Scene3d& scene);
    ~Fence3dDisplay();
    Fence3dDisplay(const Fence3dDisplay&) = delete;
    Fence3dDisplay& operator=(const Fence3dDisplay&) = delete;

    /// The item that shows it, owned by the scene; null without scene, and in a project without the element.
    Fence3dOutlineItem* item() const;

private:
    void follow();

    QPointer<Scene3d> m_scene;
    Fence3dOutlineItem* m_item = nullptr;
    QObject m_listener;
};
