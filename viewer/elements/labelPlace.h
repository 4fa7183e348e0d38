#pragma once

#include <framework/model/FeatureElement.h>

/// Where the name of a feature is written, in model coordinates: well inside its largest area, else half-way
/// along its longest line, else at its first point. Of a feature without points the origin.
glm::dvec3 labelPlace(const std::vector<FeatureElement::Part>& parts);
