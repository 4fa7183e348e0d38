#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/IDrawableNode3d.h>

#include <exception>

/// A local item that shows one file, read at construction by the readers of DrawableNode3dFactory. It draws
/// the node as it is: whoever wants the node at its origin sets the transform.
class VIEWER3DMODULE_EXPORT ObjFile3DGraphicsItem : public Drawable3dItem
{
public:
    /// Never throws: a failure leaves an item that draws nothing, see getError.
    explicit ObjFile3DGraphicsItem(const QString& path);
    /// Frees the node; a context of the share group must be current.
    ~ObjFile3DGraphicsItem() override;

    /// The node, or null.
    IDrawableNode3d* getNode() const { return m_node.get(); }
    /// The node's, so that it is lit and textured as a local item; without a node DrawerType::Mono.
    int getDefaultDrawerType() const override;
    /// What a reader threw, or null.
    std::exception_ptr getError() const { return m_error; }

protected:
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    std::unique_ptr<IDrawableNode3d> m_node;
    std::exception_ptr m_error;
};
