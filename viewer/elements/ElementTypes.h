#pragma once

#include <QtCore/QString>

class CProjectModel;
class Scene3d;

/// What the viewer knows of the types of its elements, in one place.
namespace element_types {

constexpr int Mesh = 0x36FFD000;      ///< MeshElement
constexpr int Feature = 0x36FFD100;   ///< FeatureElement
constexpr int Viewpoint = 0x36FFD200; ///< ViewpointElement

/// Lets the model load elements of these types from project files.
void registerCreators(CProjectModel& model);
/// Shows elements of these types in the scene, whose context must be current.
void registerItems(Scene3d& scene);
/// The word for a type in listings: "mesh", "feature", "viewpoint"; "0x..." for others.
QString name(int type);

} // namespace element_types
