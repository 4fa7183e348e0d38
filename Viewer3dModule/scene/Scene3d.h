#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>
#include <framework/gmx/BoundingBox.h>
#include <framework/graphics/InteractiveGraphicsScene.h>
#include <framework/ksp/CGuardedObject.h>
#include <framework/ksp/LONGID.h>
#include <framework/ksp/StagedProgress.h>
#include <framework/model/CFilterElement.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <glm/glm.hpp>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class CProjectModel;
class Drawable3dItem;
class Fence3dItem;
class Graphics3dItem;
class IItem3dSelectionProvider;
class InteractiveGraphicsItem;
class Item3dDrawer;
class Item3dSelectionProvider;
class ItemIndex;
class QImage;
class QOpenGLShaderProgram;
class QPolygonF;
class QRect;
class QRectF;
struct PaintContext;
struct SelectionOptions;
struct SelectionStore;

/// The scene of one project model: the items that mirror its elements, the drawers that draw them, an OpenGL
/// context of its own, and the transform that keeps what is drawn near the origin.
///
/// Coordinates: *model* coordinates are the project's, in its length unit, in double precision, of any size.
/// *Scene* coordinates are what is drawn, within +-maxCoordsLimit() of the origin where the scene has
/// recentred itself.
///
/// Everything runs on the thread that made the scene. The application object must share OpenGL contexts
/// (Qt::AA_ShareOpenGLContexts) with a format that offers the 4.3 core profile, and the search path "shader"
/// must lead to the root of Qt's resources (the plug-in's extendApplication sees to that); without either the
/// scene keeps its books and draws nothing, with lines in the log.
///
/// Unless a comment says otherwise, operations on items, drawers and programs make the scene's context
/// current and leave it so.
class VIEWER3DMODULE_EXPORT Scene3d : public QObject,
                                      public InteractiveGraphicsScene,
                                      public ksp::CGuardedObject
{
    Q_OBJECT
public:
    using ItemFilter = std::function<bool(Drawable3dItem*)>;

    /// Creates the context and the default drawers; the context is current afterwards. model is not owned,
    /// outlives the scene and may be null (a scene of local items only).
    Scene3d(CProjectModel* model, QObject* parent);
    /// Frees every OpenGL object of the scene, its items and programs with its context current. Leaves no
    /// context current, unless another one was.
    ~Scene3d() override;

    // --- context
    // ---------------------------------------------------------------------------------------------------

    /// Makes the scene's context current on its off-screen surface.
    bool makeCurrent();
    /// Leaves no context current on this thread, if it was the scene's.
    void doneCurrent();
    QOpenGLContext& getContext() { return m_context; }
    /// The off-screen surface, owned by the scene.
    QSurface* getSurface() const;
    /// The vertex array object of the scene's context. Views with a context of their own use one of their
    /// own.
    unsigned int getDefaultVao() const { return m_defaultVao; }
    /// Function table of the context that is current, whichever that is; null when none is.
    OpenGLFunctions* getGLFunctions() const { return currentGLFunctions(); }
    /// Sets the fixed state that every context used for drawing must have: depth test (less or equal), depth
    /// range 0.001 to 1, program point size, blending by source alpha, polygon offset 1, 1.
    static void initializeGLCommon(OpenGLFunctions* functions);
    /// The project model; may be null.
    CProjectModel* getModel() const { return m_model; }

    // --- drawers
    // ---------------------------------------------------------------------------------------------------

    /// Registers a drawer under a key; a key that is there keeps its drawer and the new one is destroyed.
    void addDrawer(int visibilityType, int drawerType, std::unique_ptr<Item3dDrawer> drawer);
    /// Under (type, type).
    void addDrawer(int type, std::unique_ptr<Item3dDrawer> drawer);
    void addDefaultDrawer(int type, std::unique_ptr<Item3dDrawer> drawer);
    /// Registers a clone of the default drawer of the type (of the Mono drawer when there is none, so
    /// register types of your own first); a key that is there is left alone.
    void addDrawer(int visibilityType, int drawerType);
    /// The drawer under the key, else the Mono drawer. Never null.
    Item3dDrawer* getDrawer(int visibilityType, int drawerType) const;
    Item3dDrawer* getDefaultDrawer(int type) const { return getDrawer(type, type); }
    /// Whether there is a drawer under exactly this key.
    bool isHasDrawer(int visibilityType, int drawerType) const;
    bool isHasDefaultDrawer(int type) const { return isHasDrawer(type, type); }
    /// Drawers of this visibility type are drawn even where the visibility filter rejects it.
    void addAlwaysVisibleDrawer(int visibilityType);
    /// The drawer of the type for local items, a clone of the default one, made at the first request.
    Item3dDrawer* getLocalDrawer(int drawerType);

    /// Builds a program from shader files ("shader:Viewer3dModule/mono.fragment.glsl"), defines for their
    /// preprocessor and names of outputs to capture. The stage of a file is told by its name. Always returns
    /// a new program, owned by the scene; what failed is logged, and the program then is not linked. It marks
    /// nothing in the selection buffer and knows no fence: passes that need this take variants of it, see
    /// beginProgramVariant; drawers' prepareProgram does so.
    QOpenGLShaderProgram* createProgram(const QStringList& files, const std::vector<std::string>& defines,
                                        const std::vector<std::string>& varyings);
    /// A program that leaves the same depths as this one and no colours, for items that are solid
    /// (Drawable3dItem::isSolid); null where there is none. Those of the default drawers Mono, VertexColor
    /// and Mesh have one, built when it is first asked for. Owned by the scene. Leaves the caller's context
    /// current.
    QOpenGLShaderProgram* getDepthProgram(const QOpenGLShaderProgram* program);

    // --- elements
    // --------------------------------------------------------------------------------------------------

    /// Takes an item. An identifier that is there keeps its item and the new one is destroyed. Outside of
    /// group operations the item is updated at once; inside, at the end.
    void addElement(Graphics3dItem* item);
    /// Destroys the element's item and emits elementRemoved. An unknown identifier only marks the bounds
    /// dirty.
    void removeElement(LONGID id);
    InteractiveGraphicsItem* findGraphicsItem(LONGID id) const override;
    /// The items by their elements' identifiers, owned by the scene.
    const std::unordered_map<LONGID, Graphics3dItem*>& getItems() const { return m_items; }
    /// Destroys all items of elements, without a signal for each, and forgets their pending updates.
    void clear();

    /// Updates items, those that others depend on first; inside a group operation at its end. A queued
    /// sceneChanged follows.
    void updateGraphicsItems(std::vector<Graphics3dItem*>& items);
    /// Updates all items.
    void updateGraphicsItems();
    /// Orders items so that each comes after those of the vector whose elements its own element observes.
    void sortItemsByUpdateOrder(std::vector<Graphics3dItem*>& items);
    void updateGraphicsViews() { Q_EMIT updateView(); }
    /// What the item draws, in scene coordinates (x, y, z, w of model * vertex), in buffers of points, lines
    /// and triangles, 0 where it draws none. The caller deletes the buffers, with a context of the share
    /// group current. A buffer has room for what getGeometryInfo tells, and zeros where the item draws less.
    ///
    /// Where a fence limits the item, the buffers hold the primitives of which any part lies in it, whole
    /// also where they straddle its border, and are just as large: 0 where there is none, whatever
    /// getGeometryInfo tells. (A line or a triangle that is cut would be another one, with corners that no
    /// item has.) This is so in the interaction mode too.
    std::tuple<unsigned, unsigned, unsigned> generateItemGeometry(Drawable3dItem* item);

    // --- local items
    // -----------------------------------------------------------------------------------------------

    /// Takes an item that stands for no element.
    void addLocalItem(std::unique_ptr<Drawable3dItem> item);
    /// Destroys a local item; null and unknown pointers are ignored.
    void deleteLocalItem(const Drawable3dItem* item);

    // --- drawing
    // ---------------------------------------------------------------------------------------------------

    /// Draws the items of elements that pass the item filter (empty: visible ones), drawer by drawer in
    /// ascending order of visibility type and drawer type; the visibility filter (null: none) skips
    /// visibility types. The caller has made a context of the share group current, with initializeGLCommon's
    /// state, and bound the target; the same context is current afterwards.
    void drawElements(const PaintContext& context, const CFilterElement* filter, ItemFilter itemFilter);
    /// A whole frame: drawElements, then the local items. What views and picture commands call.
    void drawFrame(const PaintContext& context, const CFilterElement* filter, ItemFilter itemFilter);

    // --- fence and foreground
    // -------------------------------------------------------------------------------------------

    /// The fence that all passes of the scene obey: the element among the settings of the model's project;
    /// null without project or element. To set one, fill the element's fence and notify its observers; the
    /// scene is one of them and emits updateView.
    ///
    /// What lies outside is not drawn, in no mode, and so is not selected, snapped to, measured in depth maps
    /// or captured. Surfaces, lines and what is swept along them are cut where they cross the border. What is
    /// anchored in one point and keeps its size on the screen, points, markers, captions and glyphs, is drawn
    /// whole or not at all, by its anchor; the width of lines is no part of the geometry either and follows
    /// the line's axis. With the element's interaction mode on, ordinary passes show in grey what lies
    /// outside; in all others, those for depths alone included, nothing of it takes part.
    Fence3dItem* getFence();
    /// Whether there is a fence that limits something.
    bool isFenced();
    /// Drawers of a visibility type that does not obey draw as if there were no fence. All obey at first.
    void setObeysFence(int visibilityType, bool obeys);
    /// Drawers of this visibility type draw into the depths below getForegroundItemsZRange(), before
    /// everything that is not in the foreground, however near that is: outlines, handles, marks. Depth maps
    /// leave them out. Frames draw them in the ordinary order of types.
    void setForeground(int visibilityType, bool foreground);
    bool isForeground(int visibilityType) const { return m_foreground.count(visibilityType) != 0; }
    /// The drawer of the type for local items in the foreground, which obey no fence; made at the first
    /// request. An item is bound to it before addLocalItem.
    Item3dDrawer* getLocalForegroundDrawer(int drawerType);

    // --- pictures
    // --------------------------------------------------------------------------------------------------

    // Pictures are drawn off screen in the scene's context, into a frame buffer of their own that is gone
    // afterwards. They are of QImage::Format_ARGB32, top row first, transparent black where nothing was
    // drawn; the alpha of what was drawn stays. The caller's context is current afterwards, and in the
    // scene's context the bound frame buffers, the viewport and the clear values are as they were. A size
    // that the driver cannot draw is refused with a line in the log and gives a null picture.

    /// The items (null pointers are passed over; only visible ones draw) as the pass shows them, at the size
    /// of context.viewportRect: first those that are not highlighted, then over them, however far away, the
    /// highlighted ones. The vertex array of the pass is the scene's, whatever the context names. A null
    /// picture for an empty rectangle and without OpenGL.
    QImage createItemsImage(const std::vector<Graphics3dItem*>& items, const PaintContext& context);
    /// The items from above: looking along -z of the model with y up, as a parallel projection that shows
    /// all of the region and holds all heights of the items.
    /// @param modelRect  region in model coordinates, QRectF::top() being the least y; where it is not
    ///                   valid, the items' box is the region
    /// @param imageRect  its size is the picture's. Where it is not valid, a region whose longer side is
    ///                   below 800 model units gets 800 pixels for that side, and a larger one a pixel a
    ///                   unit; at least one pixel each way.
    /// @param filter     for the items' own drawing, which finds it in PaintContext::extra2; not owned, may
    ///                   be null. It decides nothing about which of the items are drawn.
    QImage createItemsImage(const std::vector<Graphics3dItem*>& items, const QRectF& modelRect,
                            const QRect& imageRect, const IElementFilter* filter);
    /// The first of createItemsImages(draw, context, 1), or a null picture.
    QImage createItemsImage(std::function<void()> draw, const PaintContext& context);
    /// What draw draws into count colour attachments and a depth buffer of the size of context.viewportRect,
    /// one picture an attachment, in their order. draw is called once, with the scene's context current and
    /// the frame buffer bound, cleared, and drawn to through all attachments; a program that writes fewer
    /// outputs leaves the others undefined, so whoever draws with it names fewer draw buffers. A picture for
    /// which there is no memory is left out. No pictures, and no call of draw, for an empty rectangle, a
    /// count below 1 or beyond the driver's attachments (with a line in the log) and without OpenGL.
    std::vector<QImage> createItemsImages(std::function<void()> draw, const PaintContext& context, int count);

    // --- selection
    // -------------------------------------------------------------------------------------------------

    // The items in an area of a view, by drawing them: what a view does not draw it cannot select. An item
    // takes part with its fragments of an alpha of at least 0.5, also where its colour is that of the
    // highlight. Only items that stand for model elements are selected, each once however many drawers draw
    // it, and none for what its drawable children draw. They come in no particular order.
    //
    // The view is the context of its frame; of its viewportRect only the size matters. The area is given in
    // pixels of the viewport, (0, 0) being the top left corner of its top left pixel, y down, and may reach
    // beyond it; SelectionMask tells which pixels belong to it. An empty list for an area without pixels,
    // without OpenGL, and for a viewport that the driver cannot draw (with a line in the log).
    //
    // Drawn off screen in the scene's context; the caller's is current afterwards, and in the scene's the
    // frame buffers, the viewport and what else the pass changes are as they were. Items whose boxes are
    // farther from the area than they may draw beyond them (Drawable3dItem::pixelReach) are not drawn, and
    // neither are those that the area holds wholly where their boxes decide (Drawable3dItem::drawsOpaque);
    // of many items, these promises are what makes a selection cheap.
    //
    // SelectionRule::Inside tells of parts outside of the picture by the item's box, by 64 pixels around the
    // picture, and by the vertices that generateItemGeometry gives. An item whose box reaches out of the
    // picture and that gives no vertices counts as lying partly outside.

    std::vector<LONGID> selectItems(const PaintContext& view, const QRectF& rect,
                                    const SelectionOptions& options);
    /// What a polygon that crosses itself encloses is told by the odd-even rule; its outline belongs to it.
    std::vector<LONGID> selectItems(const PaintContext& view, const QPolygonF& polygon,
                                    const SelectionOptions& options);
    /// Through which drawers take part in passes of draw mode DrawMode::SelectionBufferDraw; made at the
    /// first request, owned by the scene.
    IItem3dSelectionProvider* getItemSelectionProvider();
    bool isHasItemSelectionProvider() const { return m_selectionProvider != nullptr; }

    // --- transform and bounds
    // --------------------------------------------------------------------------------------

    glm::dmat4 modelToSceneTransform() const { return m_modelToScene; }
    /// The inverse of modelToSceneTransform().
    glm::dmat4 sceneToModelTransform() const;
    /// Replaces the transform, updates all items and emits updateView. A matrix whose first element is not a
    /// normal positive single-precision number is refused with a line in the log, and nothing changes.
    /// Local items and cameras stay where they are: this is for hosts that choose the transform themselves.
    void setModelToSceneTransform(const glm::dmat4& matrix);
    /// x, y, z of modelToScene * (p, 1), with no division by w.
    glm::dvec3 mapFromModel(const glm::dvec3& point) const;
    /// x, y, z of sceneToModel * (p, 1), with no division by w.
    glm::dvec3 mapToModel(const glm::dvec3& point) const;

    /// Scene bounds, scene units.
    gmx::BoundingBox getBounds() const { return m_bounds; }
    glm::dvec3 getMin() const { return m_bounds.getMin(); }
    glm::dvec3 getMax() const { return m_bounds.getMax(); }
    glm::dvec3 getCenter() const { return m_bounds.getCenter(); }
    /// The box of the visible items, no larger than it is, scene units; null without any.
    gmx::BoundingBox visibleBounds();
    /// Recomputes the bounds from the visible items, asking all of them, and corrects the transform.
    void resetBounds();
    /// Says that boxes of items may have changed that were not updated, see Drawable3dItem::boundsChanged.
    void setBoundsDirty();
    /// resetBounds when the bounds are dirty, asking those items only whose boxes may have changed; nothing
    /// inside a group operation. A view calls it before it computes its matrices, so that they and the
    /// transform belong together. Leaves the caller's context current.
    void flushBounds();
    /// The box of the visible items that reach the plane z = 0 of the frame that planeTransform maps to,
    /// within the tolerance; null when none does.
    gmx::BoundingBox getBoundingBoxByPlane(const glm::dmat4& planeTransform, double tolerance) const;

    /// Depth-buffer value to z in normalised device coordinates; depths below 0.001 belong to foreground
    /// items, which have a range of their own.
    static double depthValueToFrustumZ(float depth);
    static double maxCoordsLimit() { return 1000.0; }
    static double getForegroundItemsZRange() { return 0.001; }

    // --- groups and filters
    // ----------------------------------------------------------------------------------------

    void startGroupOperation() override { ++m_groupDepth; }
    /// Runs the updates that the group collected when it is the outermost one; nothing without a start.
    void finishGroupOperation(ksp::StagedProgress progress) override;
    bool isInGroupOperation() override { return m_groupDepth != 0; }
    SceneType getType() override { return Scene3dType; }

    /// The filter that decides which elements are visible; guarded, not owned, may be null. Items follow
    /// at their next update, see updateGraphicsItems.
    void setVisibilityFilter(CFilterElement* filter) { m_visibilityFilter = filter; }
    CFilterElement* getVisibilityFilter() const { return m_visibilityFilter.get(); }

Q_SIGNALS:
    /// Views should draw again.
    void updateView();
    /// The item of the element is gone.
    void elementRemoved(LONGID item_id);
    /// For items that load data in the background to say that it is there.
    void asyncDataLoaded();
    /// The scene has recentred itself: additional_transform maps old scene coordinates to new ones. Cameras
    /// move along.
    void modelToSceneTransformChanged(const glm::dmat4& additional_transform);

public Q_SLOTS:
    /// Brings the bounds up to date and emits updateView.
    void sceneChanged();

private:
    friend class Drawable3dItem;
    friend class ItemSelection;
    friend class ViewCulling;

    ItemIndex& itemIndex() { return *m_itemIndex; }
    void stayCurrent();
    void addDefaultDrawers();
    static std::vector<std::string> withColorsOnly(std::vector<std::string> defines);
    Item3dSelectionProvider& selectionProvider();
    bool isTypeDrawn(int visibilityType, const CFilterElement* filter) const;
    void drawLocalItems(const PaintContext& context, ItemFilter itemFilter);
    void drawWith(Item3dDrawer& drawer, const PaintContext& context, const ItemFilter& itemFilter);
    void setBounds(const gmx::BoundingBox& bounds);
    void takeBounds();
    void correctTransform();
    void applyCorrection(const glm::dmat4& correction);
    void runUpdates(std::vector<Graphics3dItem*>& items);
    void addPending(Graphics3dItem* item);
    std::vector<Graphics3dItem*> takePending();
    /// The item is about to go: no update, running or pending, will touch it.
    void forgetUpdate(Graphics3dItem* item);
    std::tuple<unsigned, unsigned, unsigned> inFence(const Drawable3dItem& item,
                                                     std::tuple<unsigned, unsigned, unsigned> captured);
    unsigned captureGeometry(Drawable3dItem* item, PaintContext& context, int primitive,
                             std::size_t vertexCount);

    /// Ascending by address; finds an item by its plain pointer.
    struct ByAddress
    {
        using is_transparent = void;
        using Owned = std::unique_ptr<Drawable3dItem>;
        bool operator()(const Owned& a, const Owned& b) const { return std::less<>()(a.get(), b.get()); }
        bool operator()(const Owned& a, const Drawable3dItem* b) const { return std::less<>()(a.get(), b); }
        bool operator()(const Drawable3dItem* a, const Owned& b) const { return std::less<>()(a, b.get()); }
    };

    std::set<std::unique_ptr<Drawable3dItem>, ByAddress> m_localItems;
    std::unordered_map<int, std::unique_ptr<Item3dDrawer>> m_localDrawers;
    std::unordered_map<int, std::unique_ptr<Item3dDrawer>> m_localForegroundDrawers;
    CProjectModel* m_model;
    std::unordered_map<LONGID, Graphics3dItem*> m_items;
    std::unique_ptr<ItemIndex> m_itemIndex;
    std::map<std::pair<int, int>, std::unique_ptr<Item3dDrawer>> m_drawers;
    std::unordered_set<int> m_alwaysVisible;
    std::unordered_set<int> m_foreground;
    std::unordered_set<int> m_unfenced;                              // visibility types
    std::unordered_set<const QOpenGLShaderProgram*> m_plainPrograms; // nothing between vertices and colours
    QOpenGLShaderProgram* m_depthProgram = nullptr;
    gmx::BoundingBox m_bounds{glm::dvec3(0.0), glm::dvec3(1.0)};
    glm::dmat4 m_modelToScene = glm::dmat4(1.0);
    bool m_boundsDirty = true;
    std::unique_ptr<QOffscreenSurface> m_surface;
    QOpenGLContext m_context;
    unsigned int m_defaultVao = 0;
    std::unique_ptr<Item3dSelectionProvider> m_selectionProvider;
    std::unique_ptr<SelectionStore> m_selectionStore;
    unsigned int m_groupDepth = 0;
    std::vector<Graphics3dItem*> m_pending;                       // with addresses of items that are gone:
    std::unordered_map<const Graphics3dItem*, int> m_pendingGone; // how often each, before any that is there
    ksp::GuardedPtr<CFilterElement> m_visibilityFilter;

    class FenceObserver;
    std::unique_ptr<FenceObserver> m_fenceObserver;

    struct UpdateRun;
    UpdateRun* m_updateRun = nullptr;
};

Q_DECLARE_METATYPE(glm::dmat4)
