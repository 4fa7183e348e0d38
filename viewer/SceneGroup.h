#pragma once

#include <Viewer3dModule/scene/Scene3d.h>

/// A group operation of a scene for the length of a scope: items that come and change meanwhile are updated
/// once, at its end.
class SceneGroup
{
public:
    /// Nothing for null; the scene is not owned.
    explicit SceneGroup(Scene3d* scene)
        : m_scene(scene)
    {
        if (m_scene) m_scene->startGroupOperation();
    }
    ~SceneGroup()
    {
        if (m_scene) m_scene->finishGroupOperation(ksp::StagedProgress::dummy());
    }
    SceneGroup(const SceneGroup&) = delete;
    SceneGroup& operator=(const SceneGroup&) = delete;

private:
    Scene3d* m_scene;
};
