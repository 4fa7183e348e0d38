#include <readers/gltf/GltfPlugin.h>

#include <readers/gltf/GltfParser.h>

namespace {

std::vector<MeshData> parse(QIODevice& device, const QString& path, ksp::StagedProgress progress)
{
    return readers::GltfParser(device, path, std::move(progress)).parse();
}

} // namespace

GltfPlugin::GltfPlugin()
    : MeshPlugin({QStringLiteral("glb"), QStringLiteral("gltf")}, &parse)
{
}
