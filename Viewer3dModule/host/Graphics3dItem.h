#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <framework/graphics/InteractiveGraphicsItem.h>

/// The scene item of a model element. Subclasses make their geometry in updateDataImpl and draw it in draw;
/// what they compose of further drawables they draw themselves there, or hand out by getDrawableChildren to
/// be bound to drawers of their own.
class VIEWER3DMODULE_EXPORT Graphics3dItem : public Drawable3dItem, public InteractiveGraphicsItem
{
public:
    explicit Graphics3dItem(CModelElement* element);
    ~Graphics3dItem() override;

    // --- drawable side
    // ---------------------------------------------------------------------------------------------

    /// The item's vertices in its own coordinates; none by default.
    std::vector<glm::vec3> getVertices() override;
    /// Vertex of getVertices(); three quiet NaNs when there is none.
    glm::vec3 getVertex(int index) override;
    bool isHighlighted() const override;
    /// By the number of node points: 0 everything but cloud points, 1 points, 2 edges and nodes, 3 and more
    /// faces too. Asked for every item of a glue-mask pass: a subclass with vertices overrides
    /// getNodePointsCount, whose default makes them all.
    unsigned int getGlueMask() const override;

    /// Makes the item's geometry from its element, in doubles until after scene()->mapFromModel. Called with
    /// the scene's context current. Does nothing by default.
    virtual void updateDataImpl();
    /// Called after updateDataImpl of all items of one update. Does nothing by default.
    virtual void updateDataFinished();
    /// Visible: the element's own visibility and, where the scene has a filter, the filter's verdict.
    /// Children follow.
    virtual void updateVisibility();
    /// Drawables that belong to the item and are drawn by drawers of their own, not owned by the caller; none
    /// by default. They share the item's visibility, and their drawers are of the item's visibility type.
    virtual std::vector<Drawable3dItem*> getDrawableChildren();

    /// Brings the item and its children to the drawers for their visibility and drawer types and tells the
    /// drawers of the change.
    void updateDrawer();

    // --- host side
    // -------------------------------------------------------------------------------------------------

    /// The element has changed: updates this item and those of all elements that depend on it.
    void updateData(ISubject* subject) override;
    void update() override;
    bool isVisible() const override;
    InteractiveGraphicsScene* getIScene() const override;
    glm::dmat4 getTransform() const override;
    glm::dmat4 sceneToModelTransform() const override;
    glm::dvec3 getNodePoint(int index) const override;
    std::vector<glm::dvec3> getNodePoints() const override;

    using Drawable3dItem::draw;

protected:
    friend class Scene3d;
    void draw(const PaintContext& context) override;

private:
    void bindToSceneDrawer(Drawable3dItem& item);
};
