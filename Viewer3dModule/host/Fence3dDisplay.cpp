#include <Viewer3dModule/host/Fence3dDisplay.h>

#include <Viewer3dModule/enums/TypeIds.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Fence3dOutlineItem.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

Fence3dDisplay::Fence3dDisplay(Scene3d& scene)
    : m_scene(&scene)
{
    follow();
    CProject* project = scene.getModel() ? scene.getModel()->getProject() : nullptr;
    if (!project) return;
    QObject::connect(project, &CProject::projectSettingsReplaced, &m_listener, [this](int type) {
        if (type == TypeIds::Fence) follow();
    });
}

Fence3dDisplay::~Fence3dDisplay()
{
    if (m_scene) m_scene->deleteLocalItem(m_item);
}

Fence3dOutlineItem* Fence3dDisplay::item() const
{
    return m_scene ? m_item : nullptr;
}

void Fence3dDisplay::follow()
{
    if (!m_scene) return;
    m_scene->deleteLocalItem(m_item);
    Fence3dItem* element = Fence3dItem::find(m_scene->getModel());
    m_item = element ? Fence3dOutlineItem::addTo(m_scene, element) : nullptr;
}
