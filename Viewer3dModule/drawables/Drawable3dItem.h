#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <framework/ksp/CGuardedObject.h>

#include <QtCore/QPointF>

#include <functional>
#include <limits>
#include <typeinfo>

class InteractiveGraphicsItem;
class Item3dDrawer;
class QPainter;
class Scene3d;
struct ItemDrawing;

/// Something that a drawer draws: a model matrix, visibility, and the drawer that it is registered with.
class VIEWER3DMODULE_EXPORT Drawable3dItem : public Drawable3dPrimitive
{
public:
    /// Unbound, visible, identity transform.
    Drawable3dItem();
    /// Takes over the source's place in its drawer, its scene, transform and visibility; the source is
    /// unbound.
    Drawable3dItem(Drawable3dItem&& other) noexcept;
    Drawable3dItem& operator=(Drawable3dItem&&) = delete;
    Drawable3dItem(const Drawable3dItem&) = delete;
    Drawable3dItem& operator=(const Drawable3dItem&) = delete;
    /// Leaves the drawer.
    ~Drawable3dItem() override;

    /// Draws the item by itself; the number means nothing here.
    void draw(const PaintContext& context, int instances) override;
    /// The type of drawer for an item that is added to a scene without one; DrawerType::Mono.
    virtual int getDefaultDrawerType() const;
    /// Whether the item is shown as chosen; false.
    virtual bool isHighlighted() const;
    /// What glues to the item, by bits; everything.
    virtual unsigned int getGlueMask() const;
    /// Draws the item with a painter: toPainter maps scene points to painter points, scale is painter units a
    /// scene unit. Draws nothing by default.
    virtual void draw2d(QPainter& painter, std::function<QPointF(glm::dvec3)> toPainter, double scale) const;

    /// Tells what draw draws, for drawers that draw many items by one call; false, as by default: draw is
    /// called instead. Asked for before the item's next draw when it has joined a drawer, its drawer was told
    /// of a change (Item3dDrawer::updateItem) or drawingChanged() was called, with a context of the share
    /// group current. True promises that draw draws no more and no less than that in all passes but geometry
    /// capture, of the kinds that the pass takes; a subclass with another draw overrides this too.
    /// @param drawing  as a new one is
    virtual bool describeDrawing(ItemDrawing& drawing);

    /// Draws the item; what drawers call.
    void drawElement(const PaintContext& context) { draw(context); }

    /// The drawer and its scene; null when unset or gone.
    Item3dDrawer* getDrawer() const;
    Scene3d* scene() const;

    /// Model matrix: item to scene coordinates, scene units.
    glm::mat4 getTransform() const { return m_transform; }
    /// Replaces the model matrix, or applies the matrix after it (matrix * old).
    void setTransform(const glm::mat4& matrix, bool combine);

    /// Other numbers whenever the transform was set, and whenever the item draws something else.
    std::uint32_t transformRevision() const { return m_transformRevision; }
    std::uint32_t drawingRevision() const { return m_drawingRevision; }

    bool isVisible() const { return m_visible; }
    /// Triggers nothing by itself.
    void setVisible(bool visible);

    /// The host's side of an item that stands for a model element, else null. Not to be asked before the item
    /// is complete (in constructors).
    const InteractiveGraphicsItem* hostItem() const;
    /// How far beyond its box the item may draw, in pixels: half of a pen's width, the size of a caption.
    /// Whoever needs a part of the picture only leaves out items that are farther away from it. Infinity: the
    /// item is never left out, which holds in any case for items of drawer type DrawerType::Caption.
    float pixelReach() const { return m_pixelReach; }
    void setPixelReach(float pixels);
    /// Says that the box that hostItem() tells is another one now. Called by updates of the scene
    /// (Scene3d::updateGraphicsItems), setTransform, setVisible and setPixelReach; an item calls it that
    /// changes its box otherwise, or views would leave it out by its old one. Cheap.
    void boundsChanged();
    /// Whether the item promises that it draws what getGeometryInfo tells, all of it with an alpha of at
    /// least 0.5 unless it is highlighted. A selection need not draw such an item to know that it lies in an
    /// area that holds its box. False at first.
    bool drawsOpaque() const { return m_drawsOpaque; }
    void setDrawsOpaque(bool opaque) { m_drawsOpaque = opaque; }
    /// Whether the item promises to draw by the module's lines, meshes and surfaces alone
    /// (Polyline3dPrimitive, MeshNode3d, Plane3dSegmentPrimitive, Prism3dSurfacePrimitive, Rect3dPrimitive),
    /// whose looks are set by their own functions: its draw binds no vertex array, program or texture and
    /// sets no uniform of items itself. What such items have bound is then kept from one to the next. False
    /// at first. A class promises in its constructor, and not for classes derived from it, which may draw
    /// otherwise.
    bool drawsByPrimitives() const { return m_promisingType && *m_promisingType == typeid(*this); }
    void setDrawsByPrimitives(bool draws) { m_promisingType = draws ? &typeid(*this) : nullptr; }
    /// Whether the item promises to show no colours of vertices, no texture and no material; its own colour
    /// may differ from part to part. A pass of such items takes a simpler program. False at first.
    bool showsItemColors() const { return m_promises.showsItemColors; }
    void setShowsItemColors(bool shows) { m_promises.showsItemColors = shows; }
    /// Whether the item promises to show no texture and no material, but colours of vertices perhaps.
    /// Likewise.
    bool isUntextured() const { return m_promises.isUntextured || m_promises.showsItemColors; }
    void setUntextured(bool untextured) { m_promises.isUntextured = untextured; }
    /// Whether the item promises that nothing it draws is lit, as lines and points of meshes are not. False
    /// at first.
    bool isUnlit() const { return m_promises.isUnlit; }
    void setUnlit(bool unlit) { m_promises.isUnlit = unlit; }
    /// Whether the item promises to draw triangles and nothing else, all of them lit where the view is, and
    /// thousands for each change of its look. A lit pass over such items, none of which is highlighted, takes
    /// a program that spares each triangle a little, at some microseconds for each look. Where a host shows
    /// triangles by their corners (GL_POINT), these are as large as OpenGL's own points, at first 1 pixel.
    /// False at first.
    bool isLargeSurface() const { return m_promises.isLargeSurface; }
    void setLargeSurface(bool large) { m_promises.isLargeSurface = large; }
    /// Whether the item promises that none of its fragments is left out for its colour: unless it is
    /// highlighted, no alpha of its parts, vertices and texels is 0. A pass for depths alone draws it without
    /// looking at colours. False at first.
    bool isSolid() const { return m_alphas != Alphas::Any; }
    void setSolid(bool solid)
    {
        if (solid != isSolid()) m_alphas = solid ? Alphas::AboveZero : Alphas::Any;
    }
    /// Whether the item promises that all of these are 1: what is behind it need not be mixed in, see
    /// PaintContext::blends. An opaque item is solid. False at first.
    bool isOpaque() const { return m_alphas == Alphas::One; }
    void setOpaque(bool opaque)
    {
        if (opaque != isOpaque()) m_alphas = opaque ? Alphas::One : Alphas::AboveZero;
    }

protected:
    friend class Scene3d;
    friend class Graphics3dItem;

    /// Leaves the old drawer and joins the new one, which may be null; with a null one the scene is kept.
    void setDrawer(Item3dDrawer* drawer);
    /// The item's own drawing; nothing by default.
    virtual void draw(const PaintContext& context);
    /// Says that describeDrawing has something else to tell. Cheap.
    void drawingChanged() { ++m_drawingRevision; }

private:
    friend class Item3dDrawer;
    friend class ItemIndex;
    enum class Alphas : std::uint8_t { Any, AboveZero, One };
    struct Promises // in one byte
    {
        bool showsItemColors : 1;
        bool isUntextured : 1;
        bool isUnlit : 1;
        bool isLargeSurface : 1;
    };
    static constexpr int NoIndexPlace = std::numeric_limits<int>::min();

    /// What tells the item from others in masks: the LONGID of an item that stands for a model element, else
    /// its address.
    std::uint64_t drawId() const;

    /// What hostItem() finds, told by who knows it: it takes a while to find.
    void setHostItem(const InteractiveGraphicsItem& item);

    ksp::GuardedPtr<Item3dDrawer> m_drawer;
    ksp::GuardedPtr<Scene3d> m_scene;
    glm::mat4 m_transform = glm::mat4(1.0f);
    int m_drawerIndex = -1;
    int m_indexPlace = NoIndexPlace; // where the scene's ItemIndex has it
    int m_indexWaiting = -1;         // and among those that changed
    std::uint32_t m_transformRevision = 0;
    std::uint32_t m_drawingRevision = 0;
    float m_pixelReach = 32.0f; // pens and points up to 64 pixels wide
    const std::type_info* m_promisingType = nullptr;
    mutable const InteractiveGraphicsItem* m_hostItem = nullptr; // found at the first call and kept
    mutable bool m_hostItemKnown = false;
    bool m_visible = true;
    bool m_drawsOpaque = false;
    Alphas m_alphas = Alphas::Any;
    Promises m_promises{};
    bool m_isPending = false; // for the end of the scene's group operation, to be updated
};
