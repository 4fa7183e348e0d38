#pragma once

#include <QtCore/QString>

#include <optional>

class CProjectModel;
class Scene3d;

/// What the viewer knows of the types of its elements, in one place.
namespace element_types {

constexpr int Mesh = 0x36FFD000;       ///< MeshElement
constexpr int Feature = 0x36FFD100;    ///< FeatureElement
constexpr int Viewpoint = 0x36FFD200;  ///< ViewpointElement
constexpr int CityObject = 0x36FFD300; ///< CityObjectElement
constexpr int Orthophoto = 0x36FFD400; ///< OrthophotoElement
constexpr int Station = 0x36FFD500;    ///< StationElement

/// Lets the model load elements of these types from project files.
void registerCreators(CProjectModel& model);
/// Shows elements of these types in the scene, whose context must be current. pointSize (pixels) is that of
/// points that say none of their own; without it 2 pixels for points of meshes and 6 for those of features
/// and city objects.
void registerItems(Scene3d& scene, std::optional<float> pointSize = {});
/// The word for a type in listings: "mesh", "feature", "viewpoint", "city object", "orthophoto",
/// "station"; "0x..." for others.
QString name(int type);

} // namespace element_types
