#pragma once

#include <Viewer3dModule/drawers/Item3dDrawer.h>

/// Draws one registry of items several times, once a stage, each stage by a drawer of its own.
class VIEWER3DMODULE_EXPORT CompositeDrawer : public Item3dDrawer
{
public:
    explicit CompositeDrawer(Scene3d* scene);
    ~CompositeDrawer() override;

    /// Appends a stage; the drawer becomes a child of this one, which owns it, and shares its registry.
    void addStage(int stage, std::unique_ptr<Item3dDrawer> drawer);
    /// Appends a stage drawn by a clone of the scene's drawer under (drawerType, drawerType).
    void addStage(int stage, int drawerType);
    /// The stages' numbers and drawers, in order.
    const std::vector<std::pair<int, std::unique_ptr<Item3dDrawer>>>& getStages() const { return m_stages; }

    void draw(const PaintContext& context, Filter filter) override;
    void updateItem(int index) override;
    std::unique_ptr<Item3dDrawer> clone() const override;

private:
    std::vector<std::pair<int, std::unique_ptr<Item3dDrawer>>> m_stages;
};
