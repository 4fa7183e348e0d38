#pragma once

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/host/Graphics3dItem.h>

#include <QtCore/QObject>

#include <memory>

class Fence3dItem;

/// Shows the project's fence in a scene: its outline, and its node points, which the host lets the user drag
/// (getNodePoints, setNodePoint, in scene units). A local item in the scene's foreground: no fence cuts it,
/// nothing hides it, nor does the view's far plane; of its lines, not of its points, what lies before the
/// near plane is left out. It takes part in pictures only: no pass for selections, gluing, depths or geometry
/// has it.
class VIEWER3DMODULE_EXPORT Fence3dOutlineItem : public Graphics3dItem
{
public:
    /// Adds an item for the element to the scene, which owns it, and has it follow the element; neither is
    /// null. It shows nothing when the element is gone.
    static Fence3dOutlineItem* addTo(Scene3d* scene, Fence3dItem* element);
    /// The context of the scene must be current.
    ~Fence3dOutlineItem() override;

    void updateDataImpl() override;
    int getDefaultDrawerType() const override;
    /// Nothing: what is captured are elements.
    GeometryInfo getGeometryInfo() override { return {}; }
    gmx::BoundingBox sceneBoundingBox() const override;

    int getNodePointsCount() const override { return static_cast<int>(m_nodes.size()); }
    glm::dvec3 getNodePoint(int index) const override;
    std::vector<glm::dvec3> getNodePoints() const override;
    /// Moves the fence's plane or surface there, see fence_outline::moveNode, and notifies the element's
    /// observers. False for an index that is not there.
    bool setNodePoint(int index, const glm::dvec3& point) override;

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    class Nodes;

    explicit Fence3dOutlineItem(Fence3dItem* element);
    void bindTo(Scene3d* scene);
    Fence3dItem* element() const;
    double endlessLength() const;
    void place();

    PolyPolyline3dItem m_lines;
    std::unique_ptr<Nodes> m_nodeMarks;
    std::vector<glm::dvec3> m_nodes; // model coordinates
    gmx::BoundingBox m_bounds;       // model coordinates
    glm::dvec3 m_origin{0.0};        // of what is drawn, model coordinates
    glm::dmat4 m_placedBy{0.0};      // the scene's transform when it was placed
    QObject m_listener;
};
