#include <readers/common/MeshPlugin.h>

#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>
#include <Viewer3dModule/drawables/GroupNode3d.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>

namespace readers {

namespace {

std::unique_ptr<IDrawableNode3d> makeNode(std::vector<MeshData> meshes)
{
    std::vector<std::unique_ptr<IDrawableNode3d>> nodes;
    nodes.reserve(meshes.size());
    for (MeshData& mesh : meshes)
        nodes.push_back(std::make_unique<MeshNode3d>(std::move(mesh)));
    if (nodes.size() == 1) return std::move(nodes.front());
    return std::make_unique<GroupNode3d>(std::move(nodes));
}

} // namespace

MeshPlugin::MeshPlugin(std::vector<QString> extensions, MeshParser parse)
    : m_extensions(std::move(extensions))
    , m_parse(std::move(parse))
{
}

bool MeshPlugin::extendApplication(Application*, const std::vector<int>&)
{
    constexpr int last = 99;
    const MeshParser parse = m_parse;
    const auto create = [parse](QString path, ksp::StagedProgress progress) {
        return makeNode(readMeshFile(path, parse, std::move(progress)));
    };
    DrawableNode3dFactory::instance().registerNodeCreator(m_extensions, create, last);
    return true;
}

} // namespace readers
