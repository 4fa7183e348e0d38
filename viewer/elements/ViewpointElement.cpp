#include <viewer/elements/ViewpointElement.h>

#include <viewer/elements/ElementTypes.h>

namespace {

constexpr unsigned shadingVersion = 2; // of the stored object, from which on it tells the shading

}

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
    if (isParallel != m_viewpoint.isParallel())
        projection = makeProjection(isParallel ? IProjection::Parallel : IProjection::Central);
    projection->serialize(archive);
    archive.endObject(1);
    std::int32_t shading = archive.isLoading() ? 0 : static_cast<std::int32_t>(m_shading);
    if (archive.checkVersion(shadingVersion)) archive.value(shading);
    archive.finish();
    if (!archive.isLoading()) return;
    m_viewpoint = Viewpoint(camera, std::move(projection));
    const bool isKnown = shading >= 0 && shading < eyeDomeShadingNames().size();
    m_shading = isKnown ? static_cast<EyeDomeShading>(shading) : EyeDomeShading::Off;
}
