#include <viewer/ElevationDrawers.h>

#include <viewer/ElevationColors.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/FeatureDrawers.h>
#include <viewer/elements/MarkDrawer.h>
#include <viewer/elements/PipeItem.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/PolygonModeDrawer.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/host/CGraphics3dExtension.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProjectModel.h>

namespace {

const char* const byHeight = "RX_USE_ELEVATION_COLOR";
const char* const perVertexColor = "RX_USE_PER_VERTEX_COLOR"; // which by height needs, too
const char* const perVertexNormal = "RX_USE_PER_VERTEX_NORMAL";
const char* const perVertexTexCoords = "RX_USE_PER_VERTEX_TEX_COORDS";

struct Recipe
{
    QStringList stages;
    std::vector<std::string> defines;
};

/// The programs of drawers, by their types, that can colour by height.
std::map<int, Recipe> recipes()
{
    const Recipe mono = {{"common.vertex", "mono.fragment"}, {perVertexColor, byHeight}};
    return {
        {DrawerType::Mono, mono},
        {DrawerType::VertexColor, mono},
        {DrawerType::WideLines,
         {{"common.vertex", "WideLines.geom", "mono.fragment"}, {perVertexColor, byHeight}}},
        {DrawerType::DashedLines,
         {{"dashedLines.vertex", "dashedLines.fragment"}, {perVertexColor, byHeight}}},
        {DrawerType::SolidRegularLines,
         {{"dummy.vertex", "SolidRegularLines.geom", "mesh.fragment"},
          {perVertexColor, perVertexNormal, byHeight}}},
        {DrawerType::Mesh,
         {{"common.vertex", "mesh.fragment"},
          {perVertexColor, perVertexNormal, perVertexTexCoords, byHeight}}},
        {DrawerType::ShaderSphere,
         {{"sphere.vertex", "sphereCube.tesc", "sphereCube.tese", "sphereCube.geom", "sphereCube.fragment"},
          {perVertexColor, byHeight}}},
        {DrawerType::ShaderCylinder,
         {{"sphere.vertex", "cylinder.geom", "sphereCube.fragment"}, {perVertexColor, byHeight}}}};
}

/// Whether its shapes are made of points and may be wires.
bool isOfShapes(int type)
{
    return type == DrawerType::ShaderSphere || type == DrawerType::ShaderCylinder;
}

QOpenGLShaderProgram* makeProgram(Scene3d& scene, const Recipe& recipe)
{
    QStringList files;
    for (const QString& stage : recipe.stages)
        files.append(QStringLiteral("shader:Viewer3dModule/%1.glsl").arg(stage));
    return scene.createProgram(files, recipe.defines, {});
}

/// The levels in scene units, as the shaders want them: the height that is not above the first level that it
/// is not beyond has a colour between the two about it.
ElevationColors::Levels shaderLevels(const ElevationColors& colors, const Scene3d& scene)
{
    // What the transform does to heights: it neither turns nor shears.
    const auto toScene = [&scene](double height) {
        return scene.mapFromModel(glm::dvec3(0.0, 0.0, height)).z;
    };
    const ElevationColors::Levels& levels = colors.levels();
    ElevationColors::Levels result;
    if (!colors.isDiscrete() || levels.size() == 1) {
        for (const auto& [height, color] : levels)
            result.emplace_back(toScene(height), color);
        return result;
    }
    // Each step between two levels is one of no height. What lies at a level shall have its colour, so the
    // step is lower by more than drawn heights are rounded by: floats near a thousand are 2^-14 apart.
    constexpr double rounding = 2.0 / (1 << 14);
    for (std::size_t i = 1; i < levels.size(); ++i) {
        const double step = toScene(levels[i].first) - rounding;
        result.emplace_back(step, levels[i - 1].second);
        result.emplace_back(step, levels[i].second);
    }
    return result;
}

} // namespace

ElevationDrawers::ElevationDrawers(Scene3d& scene)
    : m_scene(scene)
{
    const CurrentContextGuard callers;
    for (const auto& [type, recipe] : recipes())
        m_programs[type] = makeProgram(scene, recipe);
    CProjectModel* model = scene.getModel();
    for (const CModelElementManager* manager : model->getItemManagers())
        if (CGraphics3dExtension::isItemTypeDrawable(manager->getType(), model))
            for (const auto& entry : m_programs)
                scene.addDrawer(manager->getType(), entry.first, makeDrawer(entry.first));
    addFeatureDrawers();
}

std::unique_ptr<Item3dDrawer> ElevationDrawers::makeDrawer(int type) const
{
    QOpenGLShaderProgram* program = m_programs.at(type);
    if (isOfShapes(type)) return std::make_unique<PolygonModeDrawer>(&m_scene, program);
    return std::make_unique<SequentialItem3dDrawer>(&m_scene, program);
}

void ElevationDrawers::addFeatureDrawers() const
{
    m_scene.addDrawer(element_types::Feature, MarkDrawer::Type, makeDrawer(DrawerType::Mono));
    m_scene.addDrawer(element_types::Feature, PipeItem::Type,
                      PipeItem::makeDrawer(m_scene, makeDrawer(DrawerType::ShaderCylinder),
                                           makeDrawer(DrawerType::ShaderSphere)));
    for (const int lineType : {DrawerType::WideLines, DrawerType::DashedLines})
        m_scene.addDrawer(element_types::Feature, feature_drawers::withPoints(lineType),
                          feature_drawers::make(m_scene, makeDrawer(lineType), makeDrawer(DrawerType::Mono)));
    for (const int lineType : {DrawerType::Mono, DrawerType::WideLines, DrawerType::DashedLines})
        m_scene.addDrawer(element_types::Feature, feature_drawers::withAreas(lineType),
                          feature_drawers::make(m_scene, makeDrawer(lineType), makeDrawer(DrawerType::Mono),
                                                makeDrawer(DrawerType::Mesh)));
}

void ElevationDrawers::setColors(const ElevationColors& colors)
{
    const CurrentContextGuard callers;
    m_scene.makeCurrent();
    const ElevationColors::Levels levels = shaderLevels(colors, m_scene);
    for (const auto& entry : m_programs)
        Item3dDrawer::setColorLevels(entry.second, levels, 0.0f, false);
}
