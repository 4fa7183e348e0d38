#pragma once

/// Identifiers of drawer types. The scene has a default drawer of each of the first eight from its
/// construction on.
namespace DrawerType {

constexpr int Mono = 0x36FF1C00;              ///< one colour an item
constexpr int VertexColor = 0x36FF1C01;       ///< a colour a vertex
constexpr int Texture = 0x36FF1C02;           ///< textured, unlit
constexpr int WideLines = 0x36FF1C03;         ///< lines of a width in pixels
constexpr int DashedLines = 0x36FF1C04;       ///< lines dashed in pixels
constexpr int SolidRegularLines = 0x36FF1C05; ///< a cross-section swept along lines
constexpr int Caption = 0x36FF1C06;           ///< screen-aligned pictures at points
constexpr int Mesh = 0x36FF1C07;              ///< lit meshes: colour, vertex colours, texture

constexpr int ShaderSphere = 0x36FF2100;
constexpr int ShaderCylinder = 0x36FFBA00;

} // namespace DrawerType
