// The scene's selection of items by areas of a view.

#include <Viewer3dModule/drawers/Item3dSelectionProvider.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/ItemSelection.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/scene/SelectionStore.h>

IItem3dSelectionProvider* Scene3d::getItemSelectionProvider()
{
    return &selectionProvider();
}

Item3dSelectionProvider& Scene3d::selectionProvider()
{
    if (!m_selectionProvider) m_selectionProvider = std::make_unique<Item3dSelectionProvider>();
    return *m_selectionProvider;
}

std::vector<LONGID> Scene3d::selectItems(const PaintContext& view, const QRectF& rect,
                                         const SelectionOptions& options)
{
    const QRectF area = rect.normalized();
    return selectItems(
        view, QPolygonF({area.topLeft(), area.topRight(), area.bottomRight(), area.bottomLeft()}), options);
}

std::vector<LONGID> Scene3d::selectItems(const PaintContext& view, const QPolygonF& polygon,
                                         const SelectionOptions& options)
{
    const CurrentContextGuard callers;
    flushBounds(); // the boxes and the transform must belong together
    OpenGLFunctions* gl = makeCurrent() ? getGLFunctions() : nullptr;
    if (!gl || view.viewportRect.isEmpty()) return {};
    if (!m_selectionStore) m_selectionStore = std::make_unique<SelectionStore>();
    return ItemSelection(*this, selectionProvider(), *m_selectionStore, view, polygon, options).run(*gl);
}
