#include <readers/stl/StlPlugin.h>

#include <readers/stl/StlParser.h>

namespace {

std::vector<MeshData> parse(QIODevice& device, const QString& path, ksp::StagedProgress progress)
{
    return readers::StlParser(device, path, std::move(progress)).parse();
}

} // namespace

StlPlugin::StlPlugin()
    : MeshPlugin({QStringLiteral("stl")}, &parse)
{
}
