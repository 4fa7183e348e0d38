#pragma once

#include <framework/model/CFilterElement.h>

/// Identifiers under which the module registers with the host.
namespace TypeIds {

constexpr int GraphicsExtension = 0x36FF0500; ///< the extension of element managers that makes scene items
constexpr int ViewSettings = 0x36FF0700;      ///< View3dSettings, among the application's settings
constexpr int Fence = 0x36FF1100;             ///< the fence element
constexpr int SceneFilter = CFilterElement::Type; ///< the scene's filter element
constexpr int Module = 0x36FFC100;                ///< the module and its model initializer
constexpr int LightingSettings = 0x36FFCE00;      ///< Scene3dViewLightingSettings, among a project's settings

} // namespace TypeIds
