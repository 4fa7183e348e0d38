#pragma once

#include <Viewer3dModule/drawers/InstancedViewerOrientedTextureDrawer.h>

#include <memory>

class SequentialItem3dDrawer;

/// Draws the point features that have no look of their own, all in one call, as round marks of one colour and
/// size. What is captured of them they draw themselves, one by one.
class MarkDrawer : public InstancedViewerOrientedTextureDrawer
{
public:
    static constexpr int Type = 0x36FFD110;

    /// Registers a drawer of marks as the default of its type, if there is none; where marks cannot be drawn,
    /// the plain one that items draw themselves with. size: pixels. The scene's context is current
    /// afterwards.
    static void addTo(Scene3d& scene, const QColor& color, float size);

    ~MarkDrawer() override;

    void draw(const PaintContext& context, Filter filter) override;
    /// With the same colour and size.
    std::unique_ptr<Item3dDrawer> clone() const override;
    using InstancedViewerOrientedTextureDrawer::getItemParams;
    /// Vertex 0 of the item, moved by its matrix.
    glm::vec3 getItemParams(int index) override;

private:
    MarkDrawer(Scene3d* scene, const QColor& color, float size);
    MarkDrawer(const MarkDrawer& other);
    void addPlain();
    void capture(const PaintContext& context, const Filter& filter);

    float m_size;
    std::unique_ptr<SequentialItem3dDrawer> m_plain; // of the same items
    std::size_t m_lastCaptured = 0;
};
