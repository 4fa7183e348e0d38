#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <Viewer3dModule/drawables/GlTexture.h>

#include <QtCore/QSize>
#include <QtCore/QString>
#include <glm/glm.hpp>

class QIcon;
class QImage;

/// A picture that faces the viewer at a point, in its own size in pixels whatever the distance. The caption
/// drawer (DrawerType::Caption) draws it; where the point is, the item tells that draws it, by the vertex
/// attribute of positions in the pass's vertex array.
///
/// Made and destroyed while a context of the scene's share group is current; made without one, it has a size
/// and no texture. What cannot be loaded has neither. A picture larger than the driver takes is scaled down,
/// with its proportions kept.
class VIEWER3DMODULE_EXPORT IconTexture : public Drawable3dPrimitive
{
public:
    /// The icon, normal and off, scaled to fit into size with its proportions kept.
    IconTexture(const QIcon& icon, const QSize& size);
    /// The image in its own size.
    explicit IconTexture(const QImage& image);
    /// The image of a file, scaled to fit into size with its proportions kept, or as it is when size is null.
    /// A file that cannot be read gives no texture.
    IconTexture(const QString& fileName, const QSize& size);
    IconTexture(IconTexture&& other) noexcept;
    ~IconTexture() override;

    /// 0 when there is none.
    unsigned int getTextureId() const { return m_texture.name(); }
    /// The place in the picture, in pixels from its lower left corner, y up, that lies on the point; at first
    /// the middle.
    glm::vec2 getOffset() const { return m_offset; }
    void setOffset(const glm::vec2& offset) { m_offset = offset; }
    /// Pixels of the picture; not valid when there is none.
    QSize size() const { return m_size; }

    /// Draws in passes that ask for points; attribute 0 is off afterwards.
    void draw(const PaintContext& context, int instances) override;

private:
    void create(const QImage& image);

    GlTexture m_texture;
    glm::vec2 m_offset = glm::vec2(0.0f);
    QSize m_size;
};
