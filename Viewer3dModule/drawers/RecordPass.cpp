#include <Viewer3dModule/drawers/RecordPass.h>

#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DeferredProgram.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>

#include <QtCore/QVariant>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>

namespace {

// Programs have stages after the first that may want to know more of an item than is handed on to them.
bool readsRecordsOnly(const PassUniforms& uniforms)
{
    const int others[] = {uniforms.model,    uniforms.normalMatrix,  uniforms.items.itemColor,
                          uniforms.itemId,   uniforms.itemFlags,     uniforms.items.colorMode,
                          uniforms.glueMask, uniforms.items.dashSize};
    return uniforms.readsModels &&
           std::none_of(std::begin(others), std::end(others), [](int location) { return location >= 0; });
}

} // namespace

RecordPass::RecordPass(Item3dDrawer& owner, ProgramColors colors)
    : Item3dDrawer(owner.scene())
    , m_colors(colors)
{
    setParentDrawer(&owner);
    setReadsRecords(true);
    setOwnsItemUniforms(true);
    setProgramColors(colors);
}

bool RecordPass::begin(const PaintContext& context, bool isLimitedByFence)
{
    m_context = context;
    OpenGLFunctions* gl = currentGLFunctions();
    QOpenGLShaderProgram* plain = m_context.program;
    if (!gl || !plain || m_context.drawMode == DrawMode::GeometryCapture) return false;
    if (!plain->isLinked() && !DeferredProgram::isWaiting(plain)) return false;
    if (!mayReadRecords(*plain)) return false;
    setInsideFence(!isLimitedByFence);
    if (!prepareProgram(m_context) || !readsRecordsOnly(passUniforms())) return false;
    const QVariant primitives = m_context.program->property("primitives");
    if (primitives.isValid()) m_context.primitives = primitives.toInt();
    // What items of records leave to the pass: the view's light, no texture, no material.
    setShaderLightMode(true);
    for (const int location :
         {itemUniforms().texture0, itemUniforms().filledTextureBack, itemUniforms().materialMode})
        uniforms::set(*gl, location, 0);
    m_hasNormals = passUniforms().readsNormalMatrices;
    m_penWidth = itemUniforms().penWidth;
    m_firstItem = passUniforms().firstItem;
    return true;
}

IItem3dSelectionProvider* RecordPass::providerOf(const PaintContext& context)
{
    Scene3d* scene = context.drawer->scene();
    if (context.drawMode != DrawMode::SelectionBufferDraw || !scene || !scene->isHasItemSelectionProvider())
        return nullptr;
    IItem3dSelectionProvider* provider = scene->getItemSelectionProvider();
    return provider->bindProgram(context) ? provider : nullptr;
}

void RecordPass::useAgain(const PaintContext& context)
{
    context.program->bind();
    providerOf(context);
}
