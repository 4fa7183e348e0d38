#include <readers/ply/PlyPlugin.h>

#include <readers/ply/PlyParser.h>

namespace {

std::vector<MeshData> parse(QIODevice& device, const QString& path, ksp::StagedProgress progress)
{
    return readers::PlyParser(device, path, std::move(progress)).parse();
}

} // namespace

PlyPlugin::PlyPlugin()
    : MeshPlugin({QStringLiteral("ply")}, &parse)
{
}
