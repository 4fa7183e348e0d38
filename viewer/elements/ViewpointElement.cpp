#include <viewer/elements/ViewpointElement.h>

#include <viewer/elements/ElementTypes.h>

#include <Viewer3dModule/camera/CentralProjection.h>
#include <Viewer3dModule/camera/ParallelProjection.h>

ViewpointElement::ViewpointElement(CModelElement* owner)
    : CModelElement(owner)
{
}

ViewpointElement::~ViewpointElement() = default;

int ViewpointElement::getType() const
{
    return element_types::Viewpoint;
}

void ViewpointElement::setViewpoint(const Viewpoint& viewpoint)
{
    m_viewpoint = viewpoint;
    notifyObservers();
}

void ViewpointElement::serialize(CQtArchive& archive)
{
    CModelElement::serialize(archive);
    archive.beginObject();
    CCamera camera = m_viewpoint.camera();
    camera.serialize(archive);
    bool isParallel = m_viewpoint.isParallel();
    archive.value(isParallel);
    std::unique_ptr<IProjection> projection = m_viewpoint.projection().clone();
    if (isParallel != m_viewpoint.isParallel()) {
        if (isParallel)
            projection = std::make_unique<ParallelProjection>();
        else
            projection = std::make_unique<CentralProjection>();
    }
    projection->serialize(archive);
    archive.endObject(1);
    archive.finish();
    if (archive.isLoading()) m_viewpoint = Viewpoint(camera, std::move(projection));
}
