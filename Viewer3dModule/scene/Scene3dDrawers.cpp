// The scene's registry of drawers.

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DeferredProgram.h>

void Scene3d::addDrawer(int visibilityType, int drawerType, std::unique_ptr<Item3dDrawer> drawer)
{
    if (!drawer) return;
    drawer->setObeysFence(m_unfenced.count(visibilityType) == 0);
    drawer->setForeground(isForeground(visibilityType));
    m_drawers.emplace(std::make_pair(visibilityType, drawerType), std::move(drawer));
}

void Scene3d::addDrawer(int type, std::unique_ptr<Item3dDrawer> drawer)
{
    addDrawer(type, type, std::move(drawer));
}

void Scene3d::addDefaultDrawer(int type, std::unique_ptr<Item3dDrawer> drawer)
{
    addDrawer(type, type, std::move(drawer));
}

void Scene3d::addDrawer(int visibilityType, int drawerType)
{
    if (!isHasDrawer(visibilityType, drawerType))
        addDrawer(visibilityType, drawerType, getDrawer(drawerType, drawerType)->clone());
}

Item3dDrawer* Scene3d::getDrawer(int visibilityType, int drawerType) const
{
    auto entry = m_drawers.find({visibilityType, drawerType});
    if (entry == m_drawers.end()) entry = m_drawers.find({DrawerType::Mono, DrawerType::Mono});
    return entry->second.get();
}

bool Scene3d::isHasDrawer(int visibilityType, int drawerType) const
{
    return m_drawers.count({visibilityType, drawerType}) != 0;
}

void Scene3d::addAlwaysVisibleDrawer(int visibilityType)
{
    m_alwaysVisible.insert(visibilityType);
}

Item3dDrawer* Scene3d::getLocalDrawer(int drawerType)
{
    std::unique_ptr<Item3dDrawer>& drawer = m_localDrawers[drawerType];
    if (!drawer) drawer = getDrawer(drawerType, drawerType)->clone();
    return drawer.get();
}

Item3dDrawer* Scene3d::getLocalForegroundDrawer(int drawerType)
{
    std::unique_ptr<Item3dDrawer>& drawer = m_localForegroundDrawers[drawerType];
    if (!drawer) {
        drawer = getDrawer(drawerType, drawerType)->clone();
        drawer->setObeysFence(false);
        drawer->setForeground(true);
    }
    return drawer.get();
}

namespace {

struct DefaultDrawer
{
    int type;
    const char* vertex;
    const char* geometry; // null: no such stage
    const char* fragment;
    std::vector<std::string> defines;
};

const char* const usePerVertexColor = "RX_USE_PER_VERTEX_COLOR";
const char* const usePerVertexNormal = "RX_USE_PER_VERTEX_NORMAL";
const char* const usePerVertexTexCoords = "RX_USE_PER_VERTEX_TEX_COORDS";

std::vector<DefaultDrawer> defaultDrawers()
{
    return {
        {DrawerType::Mono, "common.vertex", nullptr, "mono.fragment", {}},
        {DrawerType::VertexColor, "common.vertex", nullptr, "mono.fragment", {usePerVertexColor}},
        {DrawerType::Texture, "common.vertex", nullptr, "texture.fragment", {usePerVertexTexCoords}},
        {DrawerType::WideLines, "common.vertex", "WideLines.geom", "mono.fragment", {}},
        {DrawerType::DashedLines, "dashedLines.vertex", nullptr, "dashedLines.fragment", {}},
        {DrawerType::SolidRegularLines,
         "dummy.vertex",
         "SolidRegularLines.geom",
         "mesh.fragment",
         {usePerVertexNormal}},
        {DrawerType::Caption, "common.vertex", "caption.geom", "texture.fragment", {}},
        {DrawerType::Mesh,
         "common.vertex",
         nullptr,
         "mesh.fragment",
         {usePerVertexColor, usePerVertexNormal, usePerVertexTexCoords}},
    };
}

/// Those whose fragments lie where their vertices say, and are left out for their alpha alone.
bool hasDepthProgram(int type)
{
    return type == DrawerType::Mono || type == DrawerType::VertexColor || type == DrawerType::Mesh;
}

} // namespace

void Scene3d::addDefaultDrawers()
{
    for (const DefaultDrawer& entry : defaultDrawers()) {
        QStringList files;
        for (const char* name : {entry.vertex, entry.geometry, entry.fragment})
            if (name) files.append(QStringLiteral("shader:Viewer3dModule/%1.glsl").arg(QLatin1String(name)));
        auto* program = new DeferredProgram(this, files, withColorsOnly(entry.defines));
        if (hasDepthProgram(entry.type)) m_plainPrograms.insert(program);
        addDefaultDrawer(entry.type, std::make_unique<SequentialItem3dDrawer>(this, program));
    }
}

// One vertex stage places the vertices of all of them, invariantly; without a fragment stage depths are all
// that is drawn, and drivers need no colours to know them.
QOpenGLShaderProgram* Scene3d::getDepthProgram(const QOpenGLShaderProgram* program)
{
    if (m_plainPrograms.count(program) == 0) return nullptr;
    if (!m_depthProgram) {
        const CurrentContextGuard callers;
        m_depthProgram = createProgram({QStringLiteral("shader:Viewer3dModule/common.vertex.glsl")}, {}, {});
    }
    return m_depthProgram->isLinked() ? m_depthProgram : nullptr;
}
