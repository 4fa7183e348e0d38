#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/TexturedCaption3dPrimitive.h>

#include <memory>
#include <vector>

/// Captions at points, drawn one after the other in the order in which they were added. They are made,
/// changed and destroyed while a context of the scene's share group is current.
class VIEWER3DMODULE_EXPORT CaptionsDrawable3dItem : public Drawable3dItem
{
public:
    using Captions = std::vector<std::unique_ptr<TexturedCaption3dPrimitive>>;

    /// drawerId is the visibility type of the scene drawer that setSceneDrawer binds to; 0: the default
    /// drawer of the type.
    explicit CaptionsDrawable3dItem(int drawerId);
    ~CaptionsDrawable3dItem() override;

    /// DrawerType::Caption.
    int getDefaultDrawerType() const override;
    /// The item whose highlight this one shows; not owned, may be null.
    void setOwner(const Drawable3dItem* owner) { m_owner = owner; }
    bool isHighlighted() const override;

    /// Binds the item to the scene's drawer; nothing for null.
    void setSceneDrawer(Scene3d* scene);
    /// Adds a caption; position in item coordinates, the rest as TexturedCaption3dPrimitive has it. The
    /// item's pixelReach grows so that it holds the caption; who changes captions later sees to that himself.
    void addCaption(const glm::vec3& position, const QImage& image);
    void addCaption(const glm::vec3& position, const QString& text, const QFont& font, const QColor& color,
                    double size, Qt::Alignment alignment);
    const Captions& captions() const { return m_captions; }
    /// Destroys all captions.
    void clear();

    /// Draws the captions; public for elements' items that draw some as a part of theirs, with a program of a
    /// caption drawer.
    using Drawable3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    TexturedCaption3dPrimitive& append(const glm::vec3& position);
    void growReach(const TexturedCaption3dPrimitive& caption);

    Captions m_captions;
    int m_drawerId;
    const Drawable3dItem* m_owner = nullptr;
};
