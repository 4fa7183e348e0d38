#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

class Item3dDrawer;
struct PaintContext;

/// A drawer and a paint context bound together. Neither is owned; both must outlive it.
class VIEWER3DMODULE_EXPORT ContextualItem3dDrawer
{
public:
    ContextualItem3dDrawer(Item3dDrawer* drawer, const PaintContext& context);
    /// The drawer is the one that the context names: how an item's drawing reaches the drawer that draws it.
    static ContextualItem3dDrawer fromContext(const PaintContext& context);

    Item3dDrawer* operator->() const { return m_drawer; }
    Item3dDrawer& operator*() const { return *m_drawer; }

    /// The drawer's model matrix, widened to double.
    glm::dmat4 getTransform() const;
    void setTransform(const glm::mat4& matrix, bool multiply) const;
    void translate(const glm::vec3& offset) const;
    void scale(const glm::vec3& factors) const;
    /// angle in radians.
    void rotate(float angle, const glm::vec3& axis) const;
    void saveTransformState() const;
    void restoreTransformState() const;

private:
    Item3dDrawer* m_drawer;
    const PaintContext* m_context;
};
