#pragma once

#include <cstdint>

/// What a pass draws (PaintContext::drawMode). The first four are also the values of the shaders' uniform
/// "draw_mode" and stand in DrawModes.glsl.
struct DrawMode
{
    static constexpr std::int32_t OrdinalDraw = 0;       ///< colours
    static constexpr std::int32_t SelectionMaskDraw = 1; ///< depth and 64-bit item id, as bytes
    static constexpr std::int32_t GlueMaskDraw = 2; ///< item ids, and coordinates by programs of their own
    static constexpr std::int32_t SelectionBufferDraw = 3; ///< one bit an item in a storage buffer, no pixels
    static constexpr std::int32_t GeometryCapture = 4;     ///< transform feedback, nothing is rasterised
};

/// Bits of a set of primitive kinds: PaintContext::primitives and the program property "primitives".
struct PrimitiveBit
{
    static constexpr std::int32_t Points = 1;
    static constexpr std::int32_t Lines = 2;
    static constexpr std::int32_t Triangles = 4;
    static constexpr std::int32_t Adjacency = 8; ///< together with Lines or Triangles
    static constexpr std::int32_t All = Points | Lines | Triangles;
};

/// Values of the shaders' "item_flags", in DrawModes.glsl.
struct ItemFlag
{
    static constexpr std::int32_t Normal = -1;
    static constexpr std::int32_t Highlighted = -2; ///< drawn in the selection colour
    static constexpr std::int32_t Invisible = -3;   ///< leaves no trace in any mode
};

/// Layers of the glue mask, in GluePriority.glsl: where several lie at a pixel, the highest number wins. An
/// item's "glue_mask" has a bit for each of them, see bit().
struct GlueLayer
{
    static constexpr std::int32_t Empty = 0;
    static constexpr std::int32_t RawCoords = 1; ///< any place of a surface
    static constexpr std::int32_t Face = 2;      ///< the plane of a face
    static constexpr std::int32_t FaceEdge = 3;
    static constexpr std::int32_t FaceNode = 4;
    static constexpr std::int32_t CloudPoint = 5;
    static constexpr std::int32_t Edge = 6;
    static constexpr std::int32_t MidNode = 7; ///< the middle of an edge
    static constexpr std::int32_t Node = 8;
    static constexpr std::int32_t PointItem = 9;

    /// The layer's bit in masks.
    static constexpr std::uint32_t bit(std::int32_t layer) { return std::uint32_t(1) << layer; }
};

/// Where the colour of a surface comes from: values of the shaders' "uColorMode", in DrawModes.glsl.
struct ColorMode
{
    static constexpr std::int32_t Item = 0;
    static constexpr std::int32_t Vertices = 1;
    static constexpr std::int32_t Texture = 2;
};

/// The most levels that gradient.fragment.glsl has room for.
constexpr std::int32_t maxColorLevels = 256;
