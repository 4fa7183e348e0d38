#include <Viewer3dModule/drawers/InstancedItem3dDrawer.h>

#include <Viewer3dModule/drawables/vertex_attributes.h>
#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/drawers/itemFlag.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/graphics/InteractiveGraphicsItem.h>

#include <cstddef>

namespace {

struct ParamAttribute
{
    int components;
    std::vector<std::size_t> offsets; // bytes, one a location
};

template <class T>
ParamAttribute paramAttribute();

template <>
ParamAttribute paramAttribute<glm::vec3>()
{
    return {3, {0}};
}

// Four floats each that begin one float after another: the attributes overlap, and programs count on it.
template <>
ParamAttribute paramAttribute<glm::mat4>()
{
    return {4, {0, 4, 8, 12}};
}

} // namespace

template <class T>
InstancedItem3dDrawer<T>::InstancedItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* program,
                                                int firstAttribute)
    : Item3dDrawer(scene)
    , m_program(program)
    , m_firstAttribute(firstAttribute)
{
}

template <class T>
InstancedItem3dDrawer<T>::~InstancedItem3dDrawer() = default;

template <class T>
void InstancedItem3dDrawer<T>::setItemFlag(int index, int flag)
{
    const auto slot = static_cast<std::size_t>(index);
    if (index < 0 || slot >= m_flags.size() || m_flags[slot] == flag) return;
    m_flags[slot] = flag;
    m_flagsChanged = true;
}

template <class T>
void InstancedItem3dDrawer<T>::updateItem(int index)
{
    const std::vector<Drawable3dItem*>& items = getItems();
    m_params.resize(items.size(), T(0.0f));
    m_ids.resize(items.size());
    m_flags.resize(items.size());
    if (index >= 0 && static_cast<std::size_t>(index) < items.size()) {
        const auto slot = static_cast<std::size_t>(index);
        const InteractiveGraphicsItem* hostItem = items[slot]->hostItem();
        m_params[slot] = getItemParams(index);
        m_ids[slot] = hostItem ? hostItem->getId() : 0;
    }
    m_needsUpdate = true;
}

template <class T>
void InstancedItem3dDrawer<T>::draw(const PaintContext& context, Filter filter)
{
    if (getItems().empty() || context.drawMode == DrawMode::GeometryCapture) return;
    PaintContext pass = context;
    if (!pass.program) pass.program = m_program;
    pass.drawer = this;
    if (prepareProgram(pass)) {
        programPrepared();
        drawImpl(pass, filter);
    }
    if (m_program && currentGLFunctions()) m_program->release();
}

template <class T>
void InstancedItem3dDrawer<T>::drawImpl(const PaintContext& context, const Filter& filter)
{
    const bool isSelection = context.drawMode == DrawMode::SelectionBufferDraw;
    if (isSelection && scene() && scene()->isHasItemSelectionProvider())
        scene()->getItemSelectionProvider()->addItemIds(m_ids);
    findFlags(filter);
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    if (m_needsUpdate)
        update(*gl);
    else if (m_flagsChanged)
        updateFlags(*gl);
    bind(context.vertexArray, 1);
    gl->glBindVertexArray(context.vertexArray);
    drawItems(context);
    gl->glBindVertexArray(0);
    unbind(context.vertexArray);
}

template <class T>
void InstancedItem3dDrawer<T>::findFlags(const Filter& filter)
{
    const std::vector<Drawable3dItem*>& items = getItems();
    for (std::size_t slot = 0; slot < items.size(); ++slot) {
        if (!items[slot]->hostItem()) continue;
        const std::int32_t flag = itemFlag(*items[slot], filter);
        if (m_flags[slot] == flag) continue;
        m_flags[slot] = flag;
        m_flagsChanged = true;
    }
}

template <class T>
void InstancedItem3dDrawer<T>::update(OpenGLFunctions& gl)
{
    m_paramBuffer.upload(gl, m_params, GL_STATIC_DRAW);
    m_idBuffer.upload(gl, m_ids, GL_STATIC_DRAW);
    updateFlags(gl);
    m_needsUpdate = false;
}

template <class T>
void InstancedItem3dDrawer<T>::updateFlags(OpenGLFunctions& gl)
{
    m_flagBuffer.upload(gl, m_flags, GL_STATIC_DRAW);
    m_flagsChanged = false;
}

template <class T>
void InstancedItem3dDrawer<T>::bind(unsigned int vertexArray, int divisor)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    const auto step = static_cast<unsigned int>(divisor);
    const ParamAttribute param = paramAttribute<T>();
    auto location = static_cast<unsigned int>(m_firstAttribute);
    gl->glBindVertexArray(vertexArray);
    for (const std::size_t offset : param.offsets)
        vertex_attributes::setFloats(*gl, location++, m_paramBuffer,
                                     {param.components, static_cast<int>(sizeof(T)), offset, step});
    vertex_attributes::setIntegers(*gl, location++, m_flagBuffer, {1, 0, 0, step});
    vertex_attributes::setUnsignedIntegers(*gl, location, m_idBuffer, {2, 0, 0, step});
    gl->glBindVertexArray(0);
}

template <class T>
void InstancedItem3dDrawer<T>::unbind(unsigned int vertexArray)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    const std::size_t count = paramAttribute<T>().offsets.size() + 2;
    gl->glBindVertexArray(vertexArray);
    for (std::size_t i = 0; i < count; ++i)
        vertex_attributes::disable(*gl, static_cast<unsigned int>(m_firstAttribute) +
                                            static_cast<unsigned int>(i));
    gl->glBindVertexArray(0);
}

template class InstancedItem3dDrawer<glm::vec3>;
template class InstancedItem3dDrawer<glm::mat4>;
