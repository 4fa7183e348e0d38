#pragma once

#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/drawers/SelectionMask.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <cstdint>
#include <memory>

class ShaderStorageBufferObject;

/// The selection by two storage buffers: the items' bits at binding point 8 ("items_selection_buffer") and
/// the mask of the selected area at 9 ("mask_selection_buffer"), which stay bound there after a pass.
///
/// The buffers are made in the first pass, in the context that is current, and serve its whole share group.
/// The object is destroyed while a context of the group is current; without one the buffers are left to it.
class VIEWER3DMODULE_EXPORT Item3dSelectionProvider : public IItem3dSelectionProvider
{
public:
    static constexpr std::int32_t DefaultItemsBufferSize = 33554432;

    /// @param itemsBufferSize  bytes for the items' bits, a multiple of 4; each holds 8. Where the driver
    ///                         gives a storage block less, the buffer has as much as it gives, and a line in
    ///                         the log says so once.
    explicit Item3dSelectionProvider(std::int32_t itemsBufferSize = DefaultItemsBufferSize);
    ~Item3dSelectionProvider() override;

    void setSelectionPolygon(const QPolygonF& polygon) override;
    /// From the next pass on: looks for items with fragments in the viewport outside of the polygon's pixels.
    void setInverted(bool inverted) { m_inverted = inverted; }

    /// Does nothing but forget the last pass where the buffers cannot be made or mapped: nothing is selected
    /// then.
    void beginSelection(const PaintContext& context) override;
    /// False for a program that lacks "item_index", "selection_rect" or one of the two blocks, and after a
    /// beginSelection that failed.
    bool bindProgram(const PaintContext& context) override;
    void addItemId(LONGID id) override;
    void addItemIds(const std::vector<LONGID>& ids) override;
    /// Waits for the graphics processor. Items for which the buffer has no bit are not among those returned;
    /// how many there were says a line in the log.
    std::vector<LONGID> selectedItems() override;

    /// How many indices have a bit, index 0 included, which stands for no item; final from the first pass on.
    std::size_t capacity() const;

private:
    bool makeItemsBuffer(OpenGLFunctions& gl);
    bool writeMask(const SelectionMask& mask);
    bool clearUpTo(std::size_t words);
    void useIndices(std::size_t first, std::size_t count);

    std::int32_t m_itemsBufferSize;
    std::vector<LONGID> m_ids; // by index; that of index 0 is 0
    std::unique_ptr<ShaderStorageBufferObject> m_itemsBuffer;
    std::unique_ptr<ShaderStorageBufferObject> m_maskBuffer;
    std::int32_t m_itemIndexLocation = -1;
    QPolygonF m_polygon;

    bool m_inverted = false;
    bool m_ready = false;           // since the last beginSelection
    QRectF m_rect;                  // of the pass, pixels, y down
    std::size_t m_clearedWords = 0; // of the items' bits, in this pass
};
