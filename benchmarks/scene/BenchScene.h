#pragma once

#include <benchmarks/scene/View.h>

#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CProject.h>

#include <QtGui/QImage>

#include <memory>
#include <vector>

class RenderTarget;

/// A project and a scene of it as a host has them, with the element types of the workloads, and a target that
/// its frames are drawn to.
class BenchScene
{
public:
    /// How items of lines and meshes are drawn.
    enum Drawers {
        Sequential, ///< as scenes do by themselves
        Batched     ///< by BatchedItem3dDrawer
    };
    explicit BenchScene(const View& view, Drawers drawers = Sequential);
    ~BenchScene();
    BenchScene(const BenchScene&) = delete;
    BenchScene& operator=(const BenchScene&) = delete;

    CProjectModel& model() { return *m_project->getModel(); }
    Scene3d& scene() { return *m_scene; }
    OpenGLFunctions& gl() { return *m_scene->getGLFunctions(); }

    /// Adds elements of one type in one batch and lets the scene settle; returns them, owned by the model.
    std::vector<CModelElement*> add(std::vector<std::unique_ptr<CModelElement>> elements);
    /// Removes and destroys all elements of the type.
    void removeAll(int type);
    /// Makes the context current and runs what the scene has queued, so that nothing of it is in a frame's
    /// time.
    void prepare();
    /// The view's pass.
    PaintContext context() const;
    /// Brings the bounds up to date, clears the target, draws all and waits for the end, as a view does.
    void drawFrame();
    /// What the last frame drew.
    QImage picture();
    /// What a host's view hands to the scene: which items a frame of this pass draws.
    Scene3d::ItemFilter frameFilter(const PaintContext& context);

private:
    void registerType(int type);
    void addBatched(int visibilityType, int drawerType);

    View m_view;
    Drawers m_drawers;
    std::unique_ptr<CProject> m_project;
    std::unique_ptr<Scene3d> m_scene;
    std::unique_ptr<RenderTarget> m_target;
};
