#include <Viewer3dModule/drawers/InstancedViewerOrientedTextureDrawer.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <limits>
#include <utility>

namespace {

constexpr int firstInstanceAttribute = 4; // item_pos of common.vertex
constexpr float markSize = 5.0f;          // pixels

QOpenGLShaderProgram* createProgram(Scene3d* scene)
{
    if (!scene) return nullptr;
    return scene->createProgram(
        {QStringLiteral("shader:Viewer3dModule/common.vertex.glsl"),
         QStringLiteral("shader:TerrainKit/ExtraPoint.fragment.glsl")},
        {"RX_USE_INSTANCED_DRAW", "RX_USE_INSTANCE_POSITION", "RX_NO_USE_PER_VERTEX_COORDS"}, {});
}

} // namespace

InstancedViewerOrientedTextureDrawer::InstancedViewerOrientedTextureDrawer(Scene3d* scene)
    : InstancedViewerOrientedTextureDrawer(scene, createProgram(scene))
{
}

InstancedViewerOrientedTextureDrawer::InstancedViewerOrientedTextureDrawer(Scene3d* scene,
                                                                           QOpenGLShaderProgram* program)
    : InstancedItem3dDrawer<glm::vec3>(scene, program, firstInstanceAttribute)
{
}

InstancedViewerOrientedTextureDrawer::~InstancedViewerOrientedTextureDrawer() = default;

// The program is the scene's and lives as long as it does, so clones share it: a host without the fragment
// stage reads of it once.
std::unique_ptr<Item3dDrawer> InstancedViewerOrientedTextureDrawer::clone() const
{
    return std::unique_ptr<Item3dDrawer>(new InstancedViewerOrientedTextureDrawer(scene(), getProgram()));
}

void InstancedViewerOrientedTextureDrawer::draw(const PaintContext& context, Filter filter)
{
    if ((context.primitives & PrimitiveBit::Points) == 0) return;
    // Of another program the host says what it shows.
    m_setsLook = !context.program || context.program == getProgram();
    setOwnsItemUniforms(m_setsLook);
    InstancedItem3dDrawer<glm::vec3>::draw(context, std::move(filter));
    setOwnsItemUniforms(false);
    m_setsLook = false;
}

glm::vec3 InstancedViewerOrientedTextureDrawer::getItemParams(int index)
{
    const auto slot = static_cast<std::size_t>(index);
    Drawable3dItem* item = index >= 0 && slot < getItems().size() ? getItems()[slot] : nullptr;
    if (item && item->hostItem()) return item->getVertex(0);
    return glm::vec3(std::numeric_limits<float>::quiet_NaN());
}

void InstancedViewerOrientedTextureDrawer::programPrepared()
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !m_setsLook) return;
    uniforms::set(*gl, itemUniforms().itemColor, m_defaultColor);
    uniforms::set(*gl, itemUniforms().penWidth, markSize);
}

void InstancedViewerOrientedTextureDrawer::drawItems(const PaintContext&)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    gl->glDrawArraysInstanced(GL_POINTS, 0, 1, static_cast<GLsizei>(getItems().size()));
}
