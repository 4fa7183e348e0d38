#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/drawables/ItemPass.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtGui/QColor>

struct PaintContext;

/// Sets the uniforms of an item's look in the context's program, which must be in use; only those that differ
/// from the item's before, where the pass keeps them (see ItemPass). Without a program nothing is set.
class VIEWER3DMODULE_EXPORT ItemLook
{
public:
    ItemLook(OpenGLFunctions& gl, const PaintContext& context);

    void setColor(const glm::vec4& color)
    {
        set(&ItemPass::Uniforms::itemColor, m_locations.itemColor, color);
    }
    void setColor(const QColor& color) { setColor(uniforms::vectorOf(color)); }
    /// Pixels.
    void setPenWidth(float width) { set(&ItemPass::Uniforms::penWidth, m_locations.penWidth, width); }
    /// Pixels; below 1 lines are solid.
    void setDashSize(float size) { set(&ItemPass::Uniforms::dashSize, m_locations.dashSize, size); }
    /// See ColorMode.
    void setColorMode(std::int32_t mode) { set(&ItemPass::Uniforms::colorMode, m_locations.colorMode, mode); }
    void setMaterialMode(std::int32_t mode)
    {
        set(&ItemPass::Uniforms::materialMode, m_locations.materialMode, mode);
    }
    /// Texture unit 0, without the item's colour behind transparent texels.
    void setPlainTexture()
    {
        set(&ItemPass::Uniforms::texture0, m_locations.texture0, 0);
        set(&ItemPass::Uniforms::filledTextureBack, m_locations.filledTextureBack, 0);
    }

    const ItemUniforms& locations() const { return m_locations; }

private:
    template <class T>
    void set(ItemPass::Known<T> ItemPass::Uniforms::*known, int location, const T& value)
    {
        if (location < 0 || (m_kept && !(m_kept->*known).change(value))) return;
        uniforms::set(m_gl, location, value);
    }

    OpenGLFunctions& m_gl;
    ItemUniforms m_locations;
    ItemPass::Uniforms* m_kept;
};
