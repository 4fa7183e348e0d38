#pragma once

#include <framework/gmx/BoundingBox.h>
#include <framework/model/FeatureElement.h>

/// What the items share that make solids of a feature's lines.
namespace LinePaths {

/// Whether the feature has lines and nothing else.
bool areAll(const FeatureElement& element);
/// Scene units a model unit.
double scaleOf(const glm::dmat4& modelToScene);
/// The box and what lies within the distance of it; a box that is not valid stays so.
gmx::BoundingBox grown(const gmx::BoundingBox& box, double distance);
/// How many times as far as elsewhere a mitred solid reaches at the sharpest bend, 1 to 4.
double longestMitre(const FeatureElement& element);

} // namespace LinePaths
