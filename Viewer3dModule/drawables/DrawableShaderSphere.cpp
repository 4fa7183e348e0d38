#include <Viewer3dModule/drawables/DrawableShaderSphere.h>

#include <Viewer3dModule/drawables/DrawerShaderSphereCube.h>
#include <Viewer3dModule/drawables/ShaderShape.h>
#include <Viewer3dModule/drawers/DrawerType.h>

DrawableShaderSphere::DrawableShaderSphere(int drawerType)
    : m_impl(std::make_unique<DrawerShaderSphereCube>(this))
    , m_drawerType(drawerType)
{
}

DrawableShaderSphere::~DrawableShaderSphere() = default;

int DrawableShaderSphere::getDrawerType() const
{
    return DrawerType::ShaderSphere;
}

Item3dDrawer* DrawableShaderSphere::getDrawer(Scene3d* scene) const
{
    const int visibilityType = m_drawerType == 0 ? DrawerType::ShaderSphere : m_drawerType;
    return shader_shape::getDrawer(scene, visibilityType, DrawerType::ShaderSphere,
                                   m_impl->getShaderFiles(m_drawerType));
}

// The one form of spheres that there is.
DrawerShaderSphereCube& DrawableShaderSphere::cube() const
{
    return static_cast<DrawerShaderSphereCube&>(*m_impl);
}

void DrawableShaderSphere::setTessLevel(float outer, float inner)
{
    cube().tessLevelOuter = outer;
    cube().tessLevelInner = inner;
}

void DrawableShaderSphere::setTextureFovY(float top, float bottom)
{
    cube().textureFovTop = top;
    cube().textureFovBottom = bottom;
}

void DrawableShaderSphere::setWireMode(bool wire)
{
    cube().wireMode = wire;
}

void DrawableShaderSphere::draw(const PaintContext& context, int)
{
    m_impl->draw(context);
}
