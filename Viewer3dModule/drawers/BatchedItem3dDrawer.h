#pragma once

#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>

#include <cstdint>
#include <memory>

class RecordPass;

/// Draws what the sequential drawer draws, to the last bit and in the same order, with few draw calls: items
/// that tell what they draw (Drawable3dItem::describeDrawing) and follow one another in the registry with the
/// same kind of vertices are drawn by one call. It keeps a record of each such item (matrix, colour, flags,
/// identifier) and copies of its vertices on the graphics processor; an edit rewrites the record, and
/// highlighting and moving nothing else. A pass in which nothing has changed uploads nothing.
///
/// All other items, and those of more than 20,000 vertices or indices, are drawn one by one, in their places
/// in the order, and so are those of short runs. All items are in passes whose program has no variant that
/// reads records (see ProgramVariant): other vertex stages than common.vertex, dashes; in geometry capture;
/// and where the pass asks for other strips than lines.
///
/// Takes more memory than the sequential drawer: some 500 bytes an item and its vertices once more. Worth it
/// for a thousand items and more that change little between frames.
///
/// Destroyed while a context of the scene's share group is current.
class VIEWER3DMODULE_EXPORT BatchedItem3dDrawer : public SequentialItem3dDrawer
{
public:
    /// As the sequential drawer; take its default program to draw in its place.
    BatchedItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* defaultProgram);
    ~BatchedItem3dDrawer() override;

    std::unique_ptr<Item3dDrawer> clone() const override;
    using SequentialItem3dDrawer::updateItem;
    void updateItem(int index) override;

    /// Runs of fewer items are drawn one by one; 8 at first.
    void setLeastRun(int items);
    /// How many items all passes so far have drawn together with others; the rest was drawn one by one.
    std::uint64_t drawnTogether() const { return m_drawnTogether; }

protected:
    void drawItems(const PaintContext& context, const Filter& filter) override;

private:
    struct Batches;
    struct Run;

    void plan(OpenGLFunctions& gl, const RecordPass& pass, const Filter& filter);
    void drawRuns(OpenGLFunctions& gl, PaintContext& alone);
    void drawAlone(const PaintContext& context, const Run& run);
    void drawTogether(OpenGLFunctions& gl, const RecordPass& pass, const Run& run);
    void giveIndices(OpenGLFunctions& gl, const RecordPass& pass, const Run& run);

    std::unique_ptr<Batches> m_batches;
    int m_leastRun = 8;
    std::uint64_t m_drawnTogether = 0;
};
