#pragma once

#include <framework/HostFramework_export.h>
#include <framework/gmx/BoundingBox.h>
#include <framework/ksp/CGuardedObject.h>
#include <framework/ksp/IIdentifiable.h>
#include <framework/model/IObserver.h>

#include <glm/glm.hpp>

#include <vector>

class CModelElement;
class InteractiveGraphicsScene;

/// An item of a scene that stands for one model element: the host's side of it. Points and boxes are in scene
/// units. The element is guarded, not owned.
class HOSTFRAMEWORK_EXPORT InteractiveGraphicsItem : public IObserver,
                                                     public ksp::IIdentifiable,
                                                     public ksp::CGuardedObject
{
public:
    explicit InteractiveGraphicsItem(CModelElement* element);
    ~InteractiveGraphicsItem() override;

    /// The element's identifier; it stays when the element is gone.
    LONGID getId() const override { return m_id; }
    /// The element, or null when it is gone.
    CModelElement* getModelElement() const;

    void updateData(ISubject* subject) override = 0;
    /// The element's type; 0 without an element.
    virtual int type() const;
    /// Asks for a repaint.
    virtual void update() = 0;
    /// The key by which views show and hide groups of items; the element's type.
    virtual int getVisibilityType() const;
    virtual bool isVisible() const = 0;
    /// Whether the node point may be removed by editing; false.
    virtual bool isPointCanBeDeleted(int index) const;
    /// Starts editing; does nothing.
    virtual void edit();
    virtual unsigned int getGlueMask() const = 0;
    /// Higher wins where items lie over each other; 0.
    virtual int getSelectionPriority() const;
    /// Marks the element as chosen or not.
    virtual void choose(bool chosen);
    /// Whether the element is chosen.
    virtual bool isHighlighted() const;
    /// How a chosen item is shown; 0, by the selection colour.
    virtual int getHighliteType() const;
    /// The scene, or null.
    virtual InteractiveGraphicsScene* getIScene() const = 0;
    /// The box of what the item draws, in scene units; null when it draws nothing.
    virtual gmx::BoundingBox sceneBoundingBox() const = 0;
    /// The item's own transform.
    virtual glm::dmat4 getTransform() const = 0;
    virtual glm::dmat4 sceneToModelTransform() const = 0;
    /// The number of points that the user may take hold of; the size of getNodePoints().
    virtual int getNodePointsCount() const;
    virtual glm::dvec3 getNodePoint(int index) const = 0;
    virtual std::vector<glm::dvec3> getNodePoints() const = 0;
    /// The node points by the part they belong to; one group by default.
    virtual std::vector<std::vector<glm::dvec3>> getGroupedNodePoints() const;
    /// Editing of node points, in scene units; each returns false when the item cannot (the default).
    virtual bool setNodePoints(const std::vector<glm::dvec3>& points);
    virtual bool setNodePoint(int index, const glm::dvec3& point);
    virtual bool addNodePoint(int index, const glm::dvec3& point);

private:
    ksp::GuardedPtr<CModelElement> m_element;
    LONGID m_id;
};
