// What limits the scene's drawing, and what lies before everything else.

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/fences/Fence3DObject.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/scene/FencedGeometry.h>
#include <Viewer3dModule/scene/Scene3dFenceObserver.h>

Scene3d::FenceObserver::FenceObserver(Scene3d& scene)
    : m_scene(scene)
{
}

// Asking for the element is one look-up; it is done until there is one, and again when that is gone.
Fence3dItem* Scene3d::FenceObserver::fence()
{
    if (Fence3dItem* known = m_fence.get()) return known;
    Fence3dItem* found = Fence3dItem::find(m_scene.getModel());
    m_fence = found;
    if (found) found->addObserver(this);
    return found;
}

void Scene3d::FenceObserver::updateData(ISubject*)
{
    Q_EMIT m_scene.updateView();
}

Fence3dItem* Scene3d::getFence()
{
    return m_fenceObserver->fence();
}

bool Scene3d::isFenced()
{
    const Fence3dItem* fence = getFence();
    return fence && !fence->empty();
}

std::tuple<unsigned, unsigned, unsigned> Scene3d::inFence(const Drawable3dItem& item,
                                                          std::tuple<unsigned, unsigned, unsigned> captured)
{
    OpenGLFunctions* gl = getGLFunctions();
    const Item3dDrawer* drawer = item.getDrawer();
    if (!gl || !isFenced() || (drawer && !drawer->obeysFence())) return captured;
    const Fence3DObject& fence = *getFence()->getFence();
    const glm::dmat4 toModel = sceneToModelTransform();
    const auto [points, lines, triangles] = captured;
    return {leaveOutUnfenced(*gl, points, 1, fence, toModel), leaveOutUnfenced(*gl, lines, 2, fence, toModel),
            leaveOutUnfenced(*gl, triangles, 3, fence, toModel)};
}

void Scene3d::setObeysFence(int visibilityType, bool obeys)
{
    if (obeys)
        m_unfenced.erase(visibilityType);
    else
        m_unfenced.insert(visibilityType);
    for (const auto& [key, drawer] : m_drawers)
        if (key.first == visibilityType) drawer->setObeysFence(obeys);
    Q_EMIT updateView();
}

void Scene3d::setForeground(int visibilityType, bool foreground)
{
    if (foreground)
        m_foreground.insert(visibilityType);
    else
        m_foreground.erase(visibilityType);
    for (const auto& [key, drawer] : m_drawers)
        if (key.first == visibilityType) drawer->setForeground(foreground);
    Q_EMIT updateView();
}
