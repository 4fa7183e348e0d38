#pragma once

#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/IObserver.h>

class Fence3dItem;

/// Keeps the fence of the scene's project at hand and has views drawn again when it changes.
class Scene3d::FenceObserver : public IObserver
{
public:
    /// The scene is not owned.
    explicit FenceObserver(Scene3d& scene);

    /// The element; null when there is none.
    Fence3dItem* fence();
    void updateData(ISubject* subject) override;

private:
    Scene3d& m_scene;
    ksp::GuardedPtr<Fence3dItem> m_fence;
};
