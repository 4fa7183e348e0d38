#include <Viewer3dModule/drawables/CaptionsDrawable3dItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/Scene3d.h>

#include <algorithm>
#include <cmath>

CaptionsDrawable3dItem::CaptionsDrawable3dItem(int drawerId)
    : m_drawerId(drawerId)
{
}

CaptionsDrawable3dItem::~CaptionsDrawable3dItem() = default;

int CaptionsDrawable3dItem::getDefaultDrawerType() const
{
    return DrawerType::Caption;
}

bool CaptionsDrawable3dItem::isHighlighted() const
{
    return m_owner && m_owner->isHighlighted();
}

void CaptionsDrawable3dItem::setSceneDrawer(Scene3d* scene)
{
    if (!scene) return;
    const int type = getDefaultDrawerType();
    if (m_drawerId != 0) scene->addDrawer(m_drawerId, type);
    setDrawer(scene->getDrawer(m_drawerId != 0 ? m_drawerId : type, type));
}

TexturedCaption3dPrimitive& CaptionsDrawable3dItem::append(const glm::vec3& position)
{
    m_captions.push_back(std::make_unique<TexturedCaption3dPrimitive>());
    m_captions.back()->setPosition(position);
    return *m_captions.back();
}

void CaptionsDrawable3dItem::addCaption(const glm::vec3& position, const QImage& image)
{
    TexturedCaption3dPrimitive& caption = append(position);
    caption.setImage(image);
    growReach(caption);
}

void CaptionsDrawable3dItem::addCaption(const glm::vec3& position, const QString& text, const QFont& font,
                                        const QColor& color, double size, Qt::Alignment alignment)
{
    TexturedCaption3dPrimitive& caption = append(position);
    caption.setText(text, font, color, size, alignment);
    growReach(caption);
}

void CaptionsDrawable3dItem::growReach(const TexturedCaption3dPrimitive& caption)
{
    const glm::vec2 from = caption.offset();
    const glm::vec2 to = from + glm::vec2(caption.imageSize().width(), caption.imageSize().height());
    setPixelReach(
        std::max({pixelReach(), std::abs(from.x), std::abs(from.y), std::abs(to.x), std::abs(to.y)}));
}

void CaptionsDrawable3dItem::clear()
{
    m_captions.clear();
}

void CaptionsDrawable3dItem::draw(const PaintContext& context)
{
    OpenGLFunctions* gl = getGLFunctions();
    if (!gl || !context.program || m_captions.empty()) return;
    const ItemUniforms locations = Item3dDrawer::itemUniforms(context);
    uniforms::set(*gl, locations.texture, 0);
    uniforms::set(*gl, locations.textureTop, 0.0f);
    uniforms::set(*gl, locations.textureBottom, 1.0f);
    for (const auto& caption : m_captions) {
        const QColor& color = caption->getData().color;
        uniforms::set(*gl, locations.itemColor, color.isValid() ? color : QColor(Qt::white));
        uniforms::set(*gl, locations.offset, caption->offset());
        caption->draw(context, 1);
    }
}
