#include <Viewer3dModule/scene/ViewCulling.h>

#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/ItemIndex.h>
#include <Viewer3dModule/scene/PictureVolume.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <memory>
#include <utility>

namespace {

/// What a filter needs; copies of it share this.
struct CulledPass
{
    ItemIndex::Seen seen;
    Scene3d::ItemFilter filter;
};

bool isShown(Drawable3dItem* item)
{
    return item && item->isVisible();
}

} // namespace

bool ViewCulling::canLeaveOut(const PaintContext& context) const
{
    return m_isEnabled && context.drawMode != DrawMode::GeometryCapture && !context.program &&
           !context.viewportRect.isEmpty() && !m_scene.isInGroupOperation();
}

Scene3d::ItemFilter ViewCulling::filter(const PaintContext& context, Scene3d::ItemFilter filter) const
{
    if (!canLeaveOut(context)) return filter;
    m_scene.flushBounds();
    if (!m_scene.itemIndex().mayLeaveOut()) return filter ? std::move(filter) : isShown;
    const QSize size = context.viewportRect.size();
    const PictureVolume volume(glm::dmat4(context.projection) * glm::dmat4(context.view), size,
                               QRect(QPoint(0, 0), size));
    auto pass =
        std::make_shared<const CulledPass>(CulledPass{m_scene.itemIndex().find(volume), std::move(filter)});
    if (pass->filter)
        return
            [pass](Drawable3dItem* item) { return item && pass->seen.isSeen(*item) && pass->filter(item); };
    return [pass](Drawable3dItem* item) { return isShown(item) && pass->seen.isSeen(*item); };
}
