#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <framework/gmx/BoundingBox.h>

#include <cstdint>

class CModelElement;

/// How much a model element holds, without any scene.
struct ElementSummary
{
    std::uint64_t points = 0;
    std::uint64_t lines = 0; ///< segments
    std::uint64_t triangles = 0;
    gmx::BoundingBox bounds; ///< model coordinates; null when it has no extent

    /// Of a mesh element whose node no scene has taken, a feature, a city object, an orthophoto or
    /// a station, which has no more than a place; nothing of other elements.
    static ElementSummary of(const CModelElement& element);
    /// Adds the other's counts and box.
    void add(const ElementSummary& other);
};
