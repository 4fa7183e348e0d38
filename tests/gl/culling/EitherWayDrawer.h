#pragma once

#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>

#include <cstdint>
#include <memory>

/// Draws its items together or one by one, as the test says, by two drawers of one registry.
class EitherWayDrawer : public BatchedItem3dDrawer
{
public:
    /// How all of them draw.
    static inline bool isTogether = false;
    static inline int leastRun = 1; ///< together

    /// Items that have been drawn together with at least one other, and those of them by a program that
    /// obeys the fence.
    static inline std::uint64_t inRuns = 0, inFencedRuns = 0;

    EitherWayDrawer(Scene3d* scene, QOpenGLShaderProgram* program)
        : BatchedItem3dDrawer(scene, program)
        , m_sequential(scene, program)
    {
        addChildDrawer(&m_sequential);
    }
    std::unique_ptr<Item3dDrawer> clone() const override
    {
        return std::make_unique<EitherWayDrawer>(scene(), getProgramToShare());
    }
    void draw(const PaintContext& context, Filter filter) override
    {
        if (!isTogether) return m_sequential.draw(context, filter);
        setLeastRun(leastRun);
        BatchedItem3dDrawer::draw(context, filter);
    }

protected:
    void drawItems(const PaintContext& context, const Filter& filter) override
    {
        const std::uint64_t before = drawnTogether();
        BatchedItem3dDrawer::drawItems(context, filter);
        if (leastRun < 2) return;
        inRuns += drawnTogether() - before;
        if (isFenced()) inFencedRuns += drawnTogether() - before;
    }

private:
    SequentialItem3dDrawer m_sequential;
};
