#pragma once

#include <functional>

class CFilterElement;
class Drawable3dItem;

enum class SelectionMode {
    Through, ///< whatever is drawn in the area, behind other things too
    Visible  ///< what is seen there: what the picture shows in at least one pixel
};

enum class SelectionRule {
    Touching, ///< a part of the item lies in the area
    Inside    ///< that, and no part of it lies elsewhere: neither in other pixels nor outside of the picture
};

/// How a scene selects items, see Scene3d::selectItems.
struct SelectionOptions
{
    SelectionMode mode = SelectionMode::Through;
    SelectionRule rule = SelectionRule::Touching;
    /// As for Scene3d::drawElements: what the two reject is not in the picture. It is not selected, and it
    /// hides nothing. Null and empty: what is visible.
    const CFilterElement* visibilityFilter = nullptr;
    std::function<bool(Drawable3dItem*)> itemFilter = {};
};
