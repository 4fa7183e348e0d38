#include <Viewer3dModule/drawers/CompositeDrawer.h>

#include <Viewer3dModule/scene/Scene3d.h>

CompositeDrawer::CompositeDrawer(Scene3d* scene)
    : Item3dDrawer(scene)
{
}

CompositeDrawer::~CompositeDrawer() = default;

void CompositeDrawer::addStage(int stage, std::unique_ptr<Item3dDrawer> drawer)
{
    addChildDrawer(drawer.get());
    m_stages.emplace_back(stage, std::move(drawer));
}

void CompositeDrawer::addStage(int stage, int drawerType)
{
    addStage(stage, scene()->getDrawer(drawerType, drawerType)->clone());
}

void CompositeDrawer::draw(const PaintContext& context, Filter filter)
{
    for (auto& [stage, drawer] : m_stages) {
        PaintContext pass = context;
        pass.stage = stage;
        pass.drawer = this;
        drawer->draw(pass, filter);
    }
}

void CompositeDrawer::updateItem(int index)
{
    for (auto& stage : m_stages)
        stage.second->updateItem(index);
}

std::unique_ptr<Item3dDrawer> CompositeDrawer::clone() const
{
    auto copy = std::make_unique<CompositeDrawer>(scene());
    for (const auto& stage : m_stages)
        copy->addStage(stage.first, stage.second->clone());
    return copy;
}
