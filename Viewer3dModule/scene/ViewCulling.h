#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/scene/Scene3d.h>

struct PaintContext;

/// Leaves out of a pass what its picture does not show: makes item filters for Scene3d::drawFrame and
/// Scene3d::drawElements that reject items whose boxes, and what is drawn around them
/// (Drawable3dItem::pixelReach), lie wholly outside of the pass's view volume. The picture, the masks and the
/// identifiers in it stay the same, to the bit.
///
/// Never left out are items that stand for no element or have no box, captions, labels and what has an
/// infinite reach, and items whose drawer draws all of its items at once (ItemReach). An item's box is the
/// one of its last update; see Drawable3dItem::boundsChanged for other changes.
///
/// A view keeps one, or makes one for each pass: it holds no more than whether it is on. The boxes are the
/// scene's, which keeps them for all views.
class VIEWER3DMODULE_EXPORT ViewCulling
{
public:
    /// The scene is not owned.
    explicit ViewCulling(Scene3d& scene)
        : m_scene(scene)
    {
    }

    /// Whether anything is left out; true at first.
    bool isEnabled() const { return m_isEnabled; }
    void setEnabled(bool enabled) { m_isEnabled = enabled; }

    /// A filter for one pass, made right before it: accepts what `filter` accepts (empty: visible items) and
    /// the pass may show. What changes in the scene after it was made is not left out. It lives at most as
    /// long as the scene. Brings the scene's bounds up to date, as the pass itself would; leaves the caller's
    /// context current.
    ///
    /// Nothing is left out, and `filter` comes back as it was, when culling is off, in geometry capture,
    /// where the context has a program of the caller's, which may put vertices elsewhere, or no viewport, and
    /// inside of a group operation, in which the boxes do not belong to what is drawn.
    Scene3d::ItemFilter filter(const PaintContext& context, Scene3d::ItemFilter filter = {}) const;

private:
    bool canLeaveOut(const PaintContext& context) const;

    Scene3d& m_scene;
    bool m_isEnabled = true;
};
