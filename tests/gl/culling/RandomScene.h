#pragma once

#include "EitherWayDrawer.h"

#include "tests/gl/fences/FencedScene.h"
#include "tests/gl/selection/KindsOfItems.h"

#include <memory>
#include <vector>

/// What a scene holds that is made at random: items of every kind, some of them many of one drawer; markers,
/// labels, nodes, a fence of any kind or none, and a transform from the model. Most drawers
/// of elements are EitherWayDrawers. The same seed makes the same, whatever the scene has held before; it
/// must be empty.
class RandomScene
{
public:
    /// Kinds beside those of KindsOfItems: lines and meshes of all looks, of which there are many.
    enum Kind { LineKind = KindsOfItems::KindCount, MeshKind, KindCount };

    /// An item that may be left out, and where it stands.
    struct Placed
    {
        DrawnItem* item;
        int kind;               ///< of KindsOfItems, or a Kind
        gmx::BoundingBox box;   ///< as it was made
        glm::dvec3 margin{0.0}; ///< around it, of what is drawn in scene units whatever the transform
        glm::dmat4 own{1.0};    ///< from the item's vertices to where it was made
        glm::dmat4 place{1.0};  ///< from there to where it has been moved
        std::unique_ptr<PolyPolyline3dItem> line; ///< what a line draws, or
        std::unique_ptr<MeshNode3d> mesh;         ///< a mesh
    };

    /// What may be in a scene. Each drawer has programs of its own for masks, for spheres and for the swept
    /// fences, frustums and prisms, which take long to build.
    enum Variety {
        SomeInSweptFences, ///< kinds of all primitives where there are swept fences, else all
        AllInAllFences
    };
    /// The drawers that the items need; once in a scene.
    static void addDrawers(Scene3d& scene, OpenGLFunctions& gl, Variety variety);

    RandomScene(Scene3d& scene, OpenGLFunctions& gl, FenceSetter& fence, Variety variety, unsigned seed);
    /// Empties the scene, whose context is current.
    ~RandomScene();
    RandomScene(const RandomScene&) = delete;
    RandomScene& operator=(const RandomScene&) = delete;

    Dice& dice() { return m_dice; }
    const std::vector<std::unique_ptr<Placed>>& items() const { return m_items; }
    /// 0 for none, else a Fence3DObject::Type.
    int fenceKind() const;
    /// Whether no fence and no masks are to be tried.
    bool isForPictures() const { return m_isForPictures; }
    /// Whether there is a fence that holds some of the items by their middles, and others not.
    bool isCut() const;

    enum Change { Hidden, Highlighted, Removed, Added, Fenced, Updated, Redrawn, Moved, ChangeCount };
    /// Changes an item that tells what it draws, if any does, or another one; or the fence.
    /// @return  what has become of one that tells, or of the fence; ChangeCount otherwise
    Change change();
    /// Looks at the scene from within or from afar, in perspective or in parallel, also so that the near
    /// plane cuts items; the viewport is set. Brings the scene's bounds up to date, as a view does.
    void look(PaintContext& context);

private:
    class Mark;
    class Label;
    static constexpr int HostLines = 4715;  ///< of no drawer that scenes have by themselves
    static constexpr double Extent = 100.0; ///< items are made so far around the origin

    glm::dmat4 toScene() const { return m_scene.modelToSceneTransform() * m_toModel; }
    void setTransforms();
    void addKinds();
    void addMarksAndLabels();
    void addNodes();
    void addLocalLines();
    void addAlike();
    int anyElement();
    int anyDrawer();
    glm::dmat4 anyPlace();
    void setPen(Placed& placed);
    void setPoints(Placed& placed);
    void setMesh(Placed& placed);
    void setVertices(Placed& placed, const std::vector<glm::vec3>& vertices);
    Placed& add(DrawnItem& item, int kind);
    void place(Placed& placed);
    void move(Placed& placed, bool isUpdated);
    void redraw(Placed& placed);
    void remove(std::size_t index);
    std::size_t anyIndex();
    void setFence();

    Scene3d& m_scene;
    OpenGLFunctions& m_gl;
    FenceSetter& m_fence;
    Dice m_dice;
    bool m_hasAllKinds = true;
    bool m_hasSweptFences = true;
    bool m_isForPictures = false;
    glm::dmat4 m_toModel{
        1.0}; ///< from where items are made, within 150 units around the origin; keeps angles
    // of most of the items that are alike
    int m_usualElement = 0, m_usualDrawer = 0; ///< types
    double m_usualWidth = 1.0;                 ///< pixels
    glm::dvec3 m_usualPlace{0.0};
    LONGID m_lastAlike = 9000;
    std::vector<std::unique_ptr<TestElement>> m_elements;
    std::unique_ptr<KindsOfItems> m_kinds;
    std::vector<std::unique_ptr<Placed>> m_items;
    std::size_t m_lookedAt = 0; ///< of these
    std::vector<const Drawable3dItem*> m_local;
    std::vector<PolyPolyline3dItem*> m_localLines; ///< of these
};
