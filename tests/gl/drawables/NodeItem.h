#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/IDrawableNode3d.h>

#include <memory>

/// Draws a node, as local items do.
class NodeItem : public Drawable3dItem
{
public:
    explicit NodeItem(std::unique_ptr<IDrawableNode3d> shown)
        : node(std::move(shown))
    {
    }
    int getDefaultDrawerType() const override { return node->getDrawerType(); }
    bool isHighlighted() const override { return highlighted; }
    GeometryInfo getGeometryInfo() override { return node->getGeometryInfo(); }

    std::unique_ptr<IDrawableNode3d> node;
    bool highlighted = false;

protected:
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override { node->draw(context, 1); }
};
