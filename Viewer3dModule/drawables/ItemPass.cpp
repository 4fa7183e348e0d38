#include <Viewer3dModule/drawables/ItemPass.h>

#include <Viewer3dModule/drawers/Item3dDrawer.h>

void ItemPass::beginItem(bool drawsByPrimitives)
{
    const bool isActive = m_keeps && drawsByPrimitives;
    if (m_isActive && !isActive) forget();
    m_isActive = isActive;
}

void ItemPass::end()
{
    forget();
    m_keeps = false;
    m_isActive = false;
    m_vertexArray.setOffsetsFills(false);
}

void ItemPass::forget()
{
    m_vertexArray.close();
    m_uniforms = Uniforms();
}

ItemPass* ItemPass::of(const PaintContext& context)
{
    return context.drawer ? context.drawer->activePass(context) : nullptr;
}
