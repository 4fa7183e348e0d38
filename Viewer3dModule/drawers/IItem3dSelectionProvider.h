#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <framework/ksp/LONGID.h>

#include <QtGui/QPolygonF>

#include <vector>

struct PaintContext;

/// How drawers take part in a selection on the graphics processor. In a pass of draw mode
/// DrawMode::SelectionBufferDraw every item gets a selection index, and each of its fragments that lies in
/// the selected area sets the bit of that index in a buffer.
///
/// The order of a pass: setSelectionPolygon, beginSelection; then, for each drawer, bindProgram and for each
/// of its items addItemId, or addItemIds once for a draw call of many; then selectedItems. All of it on the
/// thread of the context, which is current.
class VIEWER3DMODULE_EXPORT IItem3dSelectionProvider
{
public:
    virtual ~IItem3dSelectionProvider() = default;

    /// The selected area, in pixels of the viewport: (0, 0) is the top left corner of its first pixel, y
    /// down. A rectangle is a polygon of four points; what a polygon that crosses itself encloses is told by
    /// the odd-even rule. One of two points or fewer stands for its bounding rectangle.
    virtual void setSelectionPolygon(const QPolygonF& polygon) = 0;
    /// Forgets the last pass. The size of context.viewportRect is that of the target.
    virtual void beginSelection(const PaintContext& context) = 0;
    /// Prepares context.program, which is in use; false when it takes no part.
    virtual bool bindProgram(const PaintContext& context) = 0;
    /// Gives the next item that is drawn a selection index. 0: the item reports nothing.
    virtual void addItemId(LONGID id) = 0;
    /// Gives the instances of the next draw call consecutive selection indices; 0 for those that report
    /// nothing.
    virtual void addItemIds(const std::vector<LONGID>& ids) = 0;
    /// The identifiers of the items with a fragment in the area, in the order in which they got their
    /// indices; one that got several may be there as often.
    virtual std::vector<LONGID> selectedItems() = 0;
};
