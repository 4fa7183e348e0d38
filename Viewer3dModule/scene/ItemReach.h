#pragma once

class Drawable3dItem;
class Item3dDrawer;

/// Tells how far beyond their boxes items draw. Remembers what it found out about the last item's drawer,
/// because items come drawer by drawer; so it is for the moment, and drawers outlive it.
class ItemReach
{
public:
    /// Pixels. Infinity for captions and labels of glyphs, which are as long as their texts are, of which
    /// their items know nothing.
    double of(const Drawable3dItem& item);
    /// Whether the item's drawer draws its items one by one. Others keep what is shown of all of them in
    /// buffers, and would change these with every view that leaves out another part.
    bool isDrawnByItself(const Drawable3dItem& item);

private:
    void look(const Item3dDrawer* drawer);

    const Item3dDrawer* m_drawer = nullptr;
    bool m_drawsLabels = false;
    bool m_drawsOneByOne = false;
};
