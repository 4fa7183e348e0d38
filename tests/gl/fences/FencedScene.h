#pragma once

#include "tests/support/SceneTest.h"
#include "tests/unit/fences/FenceShapes.h"

#include <Viewer3dModule/fences/PrismFence.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>

/// What sets the fence of a test's project.
class FenceSetter
{
public:
    explicit FenceSetter(CProject& project)
    {
        project.addProjectSettings(new COrdinaryItemCreator<Fence3dItem>, CProject::StoredSettings);
        m_item = Fence3dItem::find(project.getModel());
    }
    Fence3dItem& item() { return *m_item; }
    const Fence3DObject& fence() const { return *m_item->getFence(); }

    void set(const glm::dvec3& center, double radius)
    {
        std::static_pointer_cast<SphereFence>(m_item->getCreateFence(Fence3DObject::SphereFence))
            ->setFence(center, radius);
        m_item->notifyObservers();
    }
    void set(const Frustum3D& frustum)
    {
        *std::static_pointer_cast<Frustum3D>(m_item->getCreateFence(Fence3DObject::Frustum3D)) = frustum;
        m_item->notifyObservers();
    }
    void set(const Prism3D& prism)
    {
        std::static_pointer_cast<PrismFence>(m_item->getCreateFence(Fence3DObject::PrismFence))->prism() =
            prism;
        m_item->notifyObservers();
    }
    void reset() { m_item->reset(); }

private:
    Fence3dItem* m_item;
};
