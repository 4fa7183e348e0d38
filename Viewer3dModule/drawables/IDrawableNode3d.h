#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <framework/gmx/BoundingBox.h>

#include <QtCore/QString>

#include <memory>
#include <vector>

class Drawable3dItem;
struct ItemDrawing;

/// What a reader makes of a file: geometry that draws itself, relative to an origin in model coordinates.
///
/// A node keeps its vertices as floats relative to getOrigin(); whoever draws it sets the model matrix to
/// model-to-scene * translate(origin), composed in doubles, so that large coordinates lose nothing.
class VIEWER3DMODULE_EXPORT IDrawableNode3d
{
public:
    virtual ~IDrawableNode3d() = default;

    /// Draws the node through the context's drawer, which must not be null; its model matrix takes the node's
    /// local coordinates to the scene. The pass's context must be current. A node of several parts draws
    /// those that were not taken.
    virtual void draw(const PaintContext& context, int instances) = 0;

    /// Tells what draw draws, where all of it is of one kind: see Drawable3dItem::describeDrawing, by which
    /// an item that draws nothing else calls this. The pass's context, or one of its share group, is current.
    virtual bool describeDrawing(ItemDrawing&) { return false; }

    /// Model coordinates of the node's local (0, 0, 0).
    virtual glm::dvec3 getOrigin() const { return glm::dvec3(0.0); }
    /// Box of all vertices, in model coordinates; null when there are none.
    virtual gmx::BoundingBox getBounds() const { return {}; }
    /// What draw draws.
    virtual Drawable3dPrimitive::GeometryInfo getGeometryInfo() const { return {}; }
    /// The drawer type whose program the node draws with.
    virtual int getDrawerType() const;
    /// The name that the file gives to this part; may be empty.
    virtual QString getName() const { return {}; }
    /// Parts that are to be elements of their own (objects, groups), handed over: the node draws, counts and
    /// bounds them no more. None for a node that is one thing.
    virtual std::vector<std::unique_ptr<IDrawableNode3d>> takeChildren() { return {}; }

    /// The positions of the vertices, relative to getOrigin(); none by default. A node whose vertices are on
    /// the graphics processor reads them back in a current context of the share group, and has none without
    /// one.
    virtual std::vector<glm::vec3> getVertices() const { return {}; }
    /// The number of vertices, which needs no context.
    virtual int getVertexCount() const { return 0; }
    /// Draws points of this size from now on, in pixels, above 0; nothing by default.
    virtual void setPointSize(float) {}
    /// Whether nothing of the node is left out for its colour, see Drawable3dItem::isSolid.
    virtual bool isSolid() const { return false; }
    /// Whether all of it is opaque, see Drawable3dItem::isOpaque.
    virtual bool isOpaque() const { return false; }
    /// Whether it has no colours of vertices, no texture and no material, see
    /// Drawable3dItem::showsItemColors; and whether it draws by the module's primitives alone, see
    /// Drawable3dItem::drawsByPrimitives.
    virtual bool showsItemColors() const { return false; }
    /// Whether it has no texture and no material.
    virtual bool isUntextured() const { return false; }
    /// Whether nothing of it is lit.
    virtual bool isUnlit() const { return false; }
    /// Whether all of it is triangles, and many, see Drawable3dItem::isLargeSurface.
    virtual bool isLargeSurface() const { return false; }
    virtual bool drawsByPrimitives() const { return false; }

    /// Has the item promise what the node keeps: for an item that draws this node and nothing else. In its
    /// constructor, or in a function of a class that no other derives from.
    void promiseFor(Drawable3dItem& item) const;
};
