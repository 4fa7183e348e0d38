#pragma once

#include <Viewer3dModule/drawers/Item3dDrawer.h>

class IItem3dSelectionProvider;

/// A pass of another drawer with a program that reads items from records (see ItemRecords), which keeps its
/// uniforms apart from those of the drawer's own program. It draws nothing itself.
class RecordPass : public Item3dDrawer
{
public:
    RecordPass(Item3dDrawer& owner, ProgramColors colors);
    void draw(const PaintContext&, Filter) override {}
    std::unique_ptr<Item3dDrawer> clone() const override { return nullptr; }

    /// Prepares the variant of the context's program that reads records. False when there is none that does
    /// without uniforms of items: these are then drawn one by one.
    bool begin(const PaintContext& context, bool isLimitedByFence);

    /// That of the items' draw calls: the variant, and the primitives that it takes.
    const PaintContext& context() const { return m_context; }
    /// Whether it reads normal matrices.
    bool hasNormals() const { return m_hasNormals; }
    /// Uniforms; -1 where the program has none.
    int penWidth() const { return m_penWidth; }
    int firstItem() const { return m_firstItem; }
    bool showsOwnAlphas() const { return passUniforms().showsOwnAlphas; }

    /// Goes on in a prepared context after another program was in use.
    static void useAgain(const PaintContext& context);
    /// The provider that items of the pass report to, with its part of the program set up; null where they
    /// report to none.
    static IItem3dSelectionProvider* providerOf(const PaintContext& context);

private:
    PaintContext m_context;
    ProgramColors m_colors;
    bool m_hasNormals = false;
    int m_penWidth = -1;
    int m_firstItem = -1;
};
