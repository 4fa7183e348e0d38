#pragma once

#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/drawers/SelectionMask.h>
#include <Viewer3dModule/scene/ItemIndex.h>
#include <Viewer3dModule/scene/ItemReach.h>
#include <Viewer3dModule/scene/PictureVolume.h>
#include <Viewer3dModule/scene/SelectionOptions.h>
#include <Viewer3dModule/scene/SelectionTarget.h>
#include <framework/ksp/LONGID.h>

#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

class Drawable3dItem;
class Item3dDrawer;
class Item3dSelectionProvider;
class Scene3d;
class SequentialItem3dDrawer;
struct SelectionStore;

/// One selection of a scene's items; see Scene3d::selectItems. The scene's context is current.
///
/// What is decided by boxes, without drawing:
/// - An item whose box, and what is drawn around it, does not reach the area is not selected, and hides
///   nothing there.
/// - Through: an item whose box lies wholly in the area and in the picture is selected, provided that drawing
///   would find it: it promises to draw lines or points, with an alpha that counts, that its drawer's program
///   takes and marks (Drawable3dItem::drawsOpaque). Surfaces are drawn, because a narrow one may cover no
///   pixel's centre; and so are lines within a pixel or two. Nothing but the picture's border cuts items off
///   here: where a fence leaves out more, none is selected by its box.
/// - Visible: none is selected by its box, because another item may hide it.
/// - Inside: no part of an item whose box lies so lies outside of the area, pens and captions included.
class ItemSelection
{
public:
    /// The scene, the provider and the store are not owned. The scene's bounds must be up to date.
    ItemSelection(Scene3d& scene, Item3dSelectionProvider& provider, SelectionStore& store,
                  const PaintContext& view, const QPolygonF& polygon, const SelectionOptions& options);

    /// The identifiers, each once.
    std::vector<LONGID> run(OpenGLFunctions& gl);

private:
    using Ids = std::unordered_set<LONGID>;
    using Drawing = std::function<void(const PaintContext&)>;

    /// What drawers are to draw of the candidates.
    struct Handed
    {
        SequentialItem3dDrawer* drawer;
        bool isTypeDrawn;
        std::vector<Drawable3dItem*> items;
    };
    struct Pass
    {
        std::vector<Handed> handed;
        std::vector<Item3dDrawer*> asked; ///< of all their items

        bool isEmpty() const;
    };

    bool isAllInArea(const QRect& pixels) const;
    bool reachesArea(const Drawable3dItem& item, const gmx::BoundingBox& box);
    bool isChosen(Drawable3dItem* item) const;
    /// The kinds of primitives (PrimitiveBit) of which drawing by the drawer sets the item's bit.
    int kindsMarkedBy(const Item3dDrawer* drawer);
    int findKindsMarkedBy(const Item3dDrawer* drawer);
    bool isSelectedByBox(Drawable3dItem& item, const gmx::BoundingBox& box);
    /// Whether the area and the item's box do not decide about it. Of the items of a pass it is asked after
    /// findInArea.
    bool isCandidate(Drawable3dItem* item);
    void findInArea();
    Pass candidatesByDrawer();
    void hand(Pass& pass);

    std::vector<LONGID> touched(OpenGLFunctions& gl);
    std::vector<LONGID> seen(OpenGLFunctions& gl);
    /// What of what is drawn has fragments in the polygon (or, inverted, outside of it). Draws at most within
    /// the pixels.
    std::vector<LONGID> draw(OpenGLFunctions& gl, const PaintContext& pass, const QPolygonF& polygon,
                             bool inverted, const QRect& pixels, const Drawing& drawing);
    void draw(const Pass& candidates, const PaintContext& context);
    /// Of the items of these identifiers, which outlive it.
    Drawing drawingOf(const Ids& ids);

    void keepInside(OpenGLFunctions& gl, std::vector<LONGID>& found);
    void drop(std::vector<LONGID>& found, const std::vector<LONGID>& outside);
    bool isInsideByBox(LONGID id);
    bool isInPictureByBox(LONGID id);
    std::vector<LONGID> outsideOfArea(OpenGLFunctions& gl, const std::vector<LONGID>& found);
    std::vector<LONGID> aroundPicture(OpenGLFunctions& gl, const std::vector<LONGID>& found);
    std::vector<LONGID> withVerticesOutside(OpenGLFunctions& gl, const std::vector<LONGID>& found);

    Scene3d& m_scene;
    Item3dSelectionProvider& m_provider;
    SelectionStore& m_store;
    const SelectionOptions& m_options;
    QPolygonF m_polygon;
    PaintContext m_pass;
    SelectionMask m_area;
    bool m_areaIsRectangle;
    PictureVolume m_areaVolume;
    PictureVolume m_picture;
    bool m_isFenced;
    bool m_countsHighlight;
    ItemReach m_reach;
    ItemIndex::Seen m_inArea; // of the last findInArea()
    std::vector<LONGID> m_selectedByBox;
    std::unordered_map<const Item3dDrawer*, int> m_kinds;
    std::pair<const Item3dDrawer*, int> m_lastKinds{nullptr, 0};
    std::unordered_map<LONGID, Drawable3dItem*> m_items; // those found or drawn; only for the rule Inside
};
