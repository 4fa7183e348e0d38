#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawers/PaintContext.h>

#include <utility>

/// Draws a mesh and nothing else, under the drawer that the test sets, and notes by which program. It
/// promises nothing: tests that want that derive from it.
class NotingMeshItem : public Drawable3dItem
{
public:
    explicit NotingMeshItem(MeshData data)
        : node(std::move(data))
    {
    }
    using Drawable3dItem::setDrawer;
    bool isHighlighted() const override { return highlighted; }

    MeshNode3d node;
    bool highlighted = false;
    const QOpenGLShaderProgram* lastProgram = nullptr;

protected:
    void draw(const PaintContext& context) override
    {
        lastProgram = context.program;
        node.draw(context, 1);
    }
};
