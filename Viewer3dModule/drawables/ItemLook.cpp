#include <Viewer3dModule/drawables/ItemLook.h>

#include <Viewer3dModule/drawers/Item3dDrawer.h>

ItemLook::ItemLook(OpenGLFunctions& gl, const PaintContext& context)
    : m_gl(gl)
    , m_locations(Item3dDrawer::itemUniforms(context))
{
    ItemPass* pass = ItemPass::of(context);
    m_kept = pass ? &pass->uniforms() : nullptr;
}
