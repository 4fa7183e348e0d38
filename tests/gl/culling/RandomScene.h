#pragma once

#include "tests/gl/fences/FencedScene.h"
#include "tests/gl/selection/KindsOfItems.h"

#include <memory>
#include <vector>

/// What a scene holds that is made at random: items of every kind, lines of wide pens, some drawn with others
/// at once, markers, labels, nodes, a fence of any kind or none, and a transform from the model. The same
/// seed makes the same, whatever the scene has held before; it must be empty.
class RandomScene
{
public:
    /// A line in place of one of KindsOfItems.
    static constexpr int LineKind = KindsOfItems::KindCount;

    /// An item that may be left out, and where it stands.
    struct Placed
    {
        DrawnItem* item;
        int kind;               ///< of KindsOfItems, or LineKind
        gmx::BoundingBox box;   ///< as it was made
        glm::dvec3 margin{0.0}; ///< around it, of what is drawn in scene units whatever the transform
        glm::dmat4 own{1.0};    ///< from the item's vertices to where it was made
        glm::dmat4 place{1.0};  ///< from there to where it has been moved
    };

    /// The drawers that the items need; once in a scene.
    static void addDrawers(Scene3d& scene);
    /// How many items these have drawn with others at once.
    static std::uint64_t drawnTogether(const Scene3d& scene);

    /// What may be in a scene. Each kind of items has programs of its own for spheres and for the swept
    /// fences, frustums and prisms, which take long to build.
    enum Variety {
        SomeInSweptFences, ///< kinds of all primitives where there are swept fences, else all
        AllInAllFences
    };
    RandomScene(Scene3d& scene, OpenGLFunctions& gl, FenceSetter& fence, Variety variety, unsigned seed);
    /// Empties the scene, whose context is current.
    ~RandomScene();
    RandomScene(const RandomScene&) = delete;
    RandomScene& operator=(const RandomScene&) = delete;

    Dice& dice() { return m_dice; }
    const std::vector<std::unique_ptr<Placed>>& items() const { return m_items; }
    /// 0 for none, else a Fence3DObject::Type.
    int fenceKind() const;
    /// Whether there is a fence that holds some of the items by their middles, and others not.
    bool isCut() const;

    /// Moves, hides, highlights, updates, adds or removes an item, or sets another fence.
    void change();
    /// Looks at the scene from within or from afar, in perspective or in parallel, also so that the near
    /// plane cuts items; the viewport is set. Brings the scene's bounds up to date, as a view does.
    void look(PaintContext& context);

private:
    class Mark;
    class Label;

    glm::dmat4 toScene() const { return m_scene.modelToSceneTransform() * m_toModel; }
    void setTransforms();
    void addKinds();
    void addMarksAndLabels();
    void addNodes();
    void addLine();
    Placed& add(DrawnItem& item, int kind);
    void place(Placed& placed);
    void remove(std::size_t index);
    void setFence();

    Scene3d& m_scene;
    OpenGLFunctions& m_gl;
    FenceSetter& m_fence;
    Dice m_dice;
    bool m_hasAllKinds = true;
    bool m_hasSweptFences = true;
    glm::dmat4 m_toModel{
        1.0}; ///< from where items are made, within 150 units around the origin; keeps angles
    LONGID m_lastLine = 9000;
    std::vector<std::unique_ptr<TestElement>> m_elements;
    std::unique_ptr<KindsOfItems> m_kinds;
    std::vector<std::unique_ptr<PolyPolyline3dItem>> m_parts;
    std::vector<std::unique_ptr<Placed>> m_items;
    std::vector<const Drawable3dItem*> m_nodes;
};
