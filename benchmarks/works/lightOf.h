#pragma once

#include <benchmarks/scene/View.h>

#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>

/// The unit vector towards the light of a scene whose lighting nobody has changed, eye coordinates; the view
/// does not scale.
inline glm::vec3 lightOf(const View& view)
{
    return glm::normalize(glm::mat3(view.view) * Scene3dViewLightingSettings::ViewData().getLightDirection());
}
